// From planes at decimation 0 to the picture of a format at another scale.
#pragma once

#include "model/colour_stage.h"
#include "model/picture.h"

namespace ppl_model {

Picture unscaled_picture(const ColourPlanes &planes, Format format);
// 2:1: the pixel at the B position of each cell.
Picture halved_picture(const ColourPlanes &planes, Format format);
// 1:2. RGB32 has none.
Picture doubled_picture(const ColourPlanes &planes, Format format, Tier tier);

// Doubling along a line. Rule A puts value k at 2k + 1 and averages before it; rule B puts it at 2k
// and averages behind it.
Plane double_along_lines_rule_a(const Plane &plane);
Plane double_along_lines_rule_b(const Plane &plane);
// Doubling of lines: source lines on the even (odd) output lines, averages between them; the
// outermost line repeats its neighbour.
Plane double_lines_on_even(const Plane &plane);
Plane double_lines_on_odd(const Plane &plane);

// Chroma lines of packed video doubled: cell line m on output lines 4m to 4m + 2, its average with
// the next on 4m + 3.
Plane spread_cell_lines(const Plane &plane);

}  // namespace ppl_model
