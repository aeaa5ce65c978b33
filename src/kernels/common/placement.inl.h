// Where the lines of the output stand.
#pragma once

#include "kernels/common/tier.inl.h"
#include "kernels/passes.h"

namespace ppl::TARGET {
namespace {

enum class LineOrder { top_down, bottom_up };

// Where units (pixels, or cells of a chroma plane) `first` to `first + count - 1` of a line stand.
// `origin` is the place of unit 0; a mirrored line runs from there to lower addresses.
template <bool mirrored>
uint8_t *place(uint8_t *origin, int unit_bytes, int first, int count) {
  return mirrored ? origin - unit_bytes * (first + count - 1) : origin + unit_bytes * first;
}

// The first pixel in memory of picture line y, counted in pixels. The vertical mirror turns either
// order around.
inline int line_start(const PplContext &ctx, int y, LineOrder order) {
  const bool from_end = (ctx.v_mirror != 0) != (order == LineOrder::bottom_up);
  return from_end ? ctx.out_size - (y + 1) * ctx.out_width : y * ctx.out_width;
}

// The first sample in memory of line y of a chroma plane.
inline int chroma_line_start(const PplContext &ctx, int y) {
  const int width = ctx.out_width / 2;
  return ctx.v_mirror != 0 ? ctx.out_size_4 - (y + 1) * width : y * width;
}

// RGB32 at decimation minus 1: the place of the first pixel of line 0 or 1 of a pair. Lines are
// neither scaled nor the gaps filled: each takes half of an output line, and line pairs move by 2.5
// output lines with equal mirror flags and by 1.5 with one.
inline int spread_line_origin(const PplContext &ctx, int pair, int line, bool mirrored) {
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

// Where the rows of a 2:1 pass stand. They serve decimation 2 as well: there is no 4:1 pass, so
// that lines twice as long as the output's overlap, and what is stored later wins.
struct RowPlacement {
  const PplContext &ctx;
  bool mirrored;
  LineOrder order;
  int slip;  // pixels that a row moves beyond its place: the line's excess over the output's width

  RowPlacement(const PplContext &context, bool is_mirrored, LineOrder line_order)
      : ctx(context),
        mirrored(is_mirrored),
        order(line_order),
        slip((context.frame_width >> 1) - context.out_width) {}

  // The place of pixel 0 of line y.
  int line(int y) const {
    const int moved = y / 2 * slip;
    const int start = line_start(ctx, y, order);
    return mirrored ? start + ctx.out_width - 1 - moved : start + moved;
  }

  // A chroma row begins where the row before ended, a quarter of the frame's width further, and
  // then takes the step of the mirrors. Half the slip would be a sample short of that where
  // out_width is odd.
  int chroma_line(int row) const {
    const int width = ctx.out_width / 2;
    const int moved = row * (ctx.frame_width / 4 - width);
    const int start = chroma_line_start(ctx, row);
    return mirrored ? start + width - 1 - moved : start + moved;
  }
};

// The same as `place`, as bytes from the output's start: a line that begins before it has no
// address.
template <bool mirrored>
constexpr int place(int origin, int unit_bytes, int first, int count) {
  return mirrored ? origin - unit_bytes * (first + count - 1) : origin + unit_bytes * first;
}

// Writes units of a line without what would lie before the output's start. Pieces go through the
// stack.
template <bool mirrored, class Line>
[[gnu::noinline]] void put_clipped(uint8_t *dst, int origin, const Line &line, int first,
                                   int count) {
  constexpr int most = 2 * block;
  uint8_t bytes[most * Line::unit_bytes];
  for (; count > 0; first += most, count -= most) {
    const int n = count < most ? count : most;
    const int to = place<mirrored>(origin, Line::unit_bytes, first, n);
    line.template put<mirrored>(bytes, first, n);
    for (int i = to < 0 ? -to : 0; i < n * Line::unit_bytes; ++i) dst[to + i] = bytes[i];
  }
}

// Writes units of a line whose unit 0 stands `origin` bytes behind the output's start. Only at
// decimation 2 can a line begin before it: what would stand there is dropped.
template <bool mirrored, class Line>
void put_line(const PplContext &ctx, uint8_t *dst, int origin, const Line &line, int first,
              int count) {
  if (ctx.decimation == 2) {
    put_clipped<mirrored>(dst, origin, line, first, count);
  } else {
    line.template put<mirrored>(dst + place<mirrored>(origin, Line::unit_bytes, first, count),
                                first, count);
  }
}

}  // namespace
}  // namespace ppl::TARGET
