// Contents for test frames: ordinary ones, and those at which kernels break.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <array>
#include <span>

#include "support/random.h"

namespace ppl_test {

enum class Fill {
  random,
  zero,
  full,        // 255
  checker,     // 0 and 255 by column and line
  ramp,        // grows along the line and down the picture, wraps
  hot_pixel,   // one 255 on black
  dead_pixel,  // one 0 on white
  grey_cells,  // every 2 by 2 cell nearly grey, levels from cell to cell
  flat_cells,  // every cell alike, its four samples free
  extremes     // only 0, 1, 127, 128, 254, 255
};

inline constexpr std::array all_fills = {
    Fill::random,    Fill::zero,       Fill::full,       Fill::checker,    Fill::ramp,
    Fill::hot_pixel, Fill::dead_pixel, Fill::grey_cells, Fill::flat_cells, Fill::extremes};

const char *name_of(Fill fill);

// Fills lines of `width` samples that stand `stride` apart, and what lies between and behind them.
void fill_frame(std::span<uint8_t> bytes, size_t width, size_t stride, Fill fill, Random &random);

}  // namespace ppl_test
