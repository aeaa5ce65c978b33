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

}  // namespace
}  // namespace ppl::TIER
