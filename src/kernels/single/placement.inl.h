// Where the lines of the output stand.
#pragma once

#include "frame/context.h"
#include "kernels/lanes/vec.inl.h"

namespace ppl::TIER {
namespace {

// The first pixel in memory of picture line y, counted in pixels. The RGB formats are bottom-up;
// the vertical mirror turns either order around.
int line_start(const PplContext &ctx, int y, bool bottom_up) {
  const bool from_end = (ctx.v_mirror != 0) != bottom_up;
  return from_end ? ctx.out_size - (y + 1) * ctx.out_width : y * ctx.out_width;
}

// The first sample in memory of line y of a chroma plane.
int chroma_line_start(const PplContext &ctx, int y) {
  const int width = ctx.out_width / 2;
  return ctx.v_mirror != 0 ? ctx.out_size_4 - (y + 1) * width : y * width;
}

// RGB32 at decimation minus 1: the place of the first pixel of line 0 or 1 of a pair. Lines are
// neither scaled nor the gaps filled: each takes half of an output line, and line pairs move by 2.5
// output lines with equal mirror flags and by 1.5 with one.
int spread_line_origin(const PplContext &ctx, int pair, int line, bool mirrored) {
  const int width = ctx.out_width;
  const bool v = ctx.v_mirror != 0;
  const int sx = mirrored ? -1 : 1;
  const int sy = v ? -1 : 1;
  const int pair_step = sx * (width / 2) - (2 * sy + sx) * width;
  const int first_pair = v ? 0 : ctx.out_size - 2 * width;
  const bool is_upper_in_memory = (line == 0) == v;
  return first_pair + pair * pair_step + (mirrored ? width - 1 : 0) +
         (is_upper_in_memory ? 0 : width);
}

}  // namespace
}  // namespace ppl::TIER
