// A 5 by 7 dot font: capital letters (small ones are shown as capitals), digits, some signs.
#pragma once

#include <cstdint>

namespace ppl::simulator {

inline constexpr int glyph_width = 5, glyph_height = 7;

// The seven rows of a glyph from top to bottom; bit 4 is the leftmost dot. Characters that the font
// lacks are blank.
const uint8_t *glyph_rows(char character);

}  // namespace ppl::simulator
