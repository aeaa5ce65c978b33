// Quality 3: demosaic within the cell, constant colour matrix. Unscaled, in five formats.
#pragma once

#include "kernels/passes.h"
#include "kernels/single/sweep.inl.h"

namespace ppl::TARGET {
namespace {

// Sets a sink's planes to the two lines of line pair p.
template <bool mirrored>
void aim(PlanarYuvSink<mirrored> &sink, const PplContext &ctx, const Buffers &b, int p) {
  const int last = mirrored ? ctx.out_width - 1 : 0;
  const int last_chroma = mirrored ? ctx.out_width / 2 - 1 : 0;
  for (int line = 0; line < 2; ++line) {
    sink.plane[line] = b.dst + line_start(ctx, 2 * p + line, LineOrder::top_down) + last;
  }
  // With both mirrors the chroma stands one line too low in memory: U's first line falls on the
  // last line of Y, V's on the last of U. Meant so: docs/oddities.md, "Displaced chroma".
  const int displaced = mirrored && ctx.v_mirror != 0 ? ctx.out_width / 2 : 0;
  sink.plane[2] = b.dst_chroma + chroma_line_start(ctx, p) - displaced + last_chroma;
  sink.plane[3] = sink.plane[2] + ctx.out_size_4;
}

template <class Sink>
void aim_lines(Sink &sink, const PplContext &ctx, const Buffers &b, int p, LineOrder order) {
  const int last = Sink::mirrored ? ctx.out_width - 1 : 0;
  for (int line = 0; line < 2; ++line) {
    sink.plane[line] = b.dst + Sink::unit_bytes * (line_start(ctx, 2 * p + line, order) + last);
  }
}

template <PackedOrder order, bool mirrored>
void aim(PackedYuvSink<order, mirrored> &sink, const PplContext &ctx, const Buffers &b, int p) {
  aim_lines(sink, ctx, b, p, LineOrder::top_down);
}

template <int pixel_bytes, bool mirrored>
void aim(RgbSink<pixel_bytes, mirrored> &sink, const PplContext &ctx, const Buffers &b, int p) {
  if (pixel_bytes == 4 && ctx.decimation < 0) {
    for (int line = 0; line < 2; ++line) {
      sink.plane[line] = b.dst + pixel_bytes * spread_line_origin(ctx, p, line, mirrored);
    }
    return;
  }
  aim_lines(sink, ctx, b, p, LineOrder::bottom_up);
}

template <class Sink, Gathering gathering>
void run_plain(PplContext &ctx, const Buffers &b) {
  SinglePass<Sink, gathering> pass(ctx, ctx.params.curves);
  const CellGrid grid(ctx);
  for (int p = 0; p < grid.pairs; ++p) {
    aim(pass.sink, ctx, b, p);
    pass.run(line_pair(ctx, b, p), 0, grid.width, grid.samples(p));
  }
  if (grid.collects) pass.statistics.flush();
}

// Takes the direction of the line.
template <Pass straight, Pass mirrored>
void either_way(PplContext &ctx, const Buffers &b) {
  ctx.h_mirror != 0 ? mirrored(ctx, b) : straight(ctx, b);
}

constexpr bool rgb24_loses_mask = block == p3_block;
constexpr Gathering rgb24_gathering = {.judges_cells = true, .loses_mask = rgb24_loses_mask};

// A pass for both directions, by its sinks.
template <class Straight, class Mirrored, Gathering gathering = Gathering{}>
constexpr Pass plain = either_way<run_plain<Straight, gathering>, run_plain<Mirrored, gathering>>;

constexpr Pass plain_i420 = plain<PlanarYuvSink<false>, PlanarYuvSink<true>>;
template <PackedOrder order>
constexpr Pass plain_packed = plain<PackedYuvSink<order, false>, PackedYuvSink<order, true>>;
constexpr Pass plain_rgb24 = plain<RgbSink<3, false>, RgbSink<3, true>, rgb24_gathering>;
constexpr Pass plain_rgb32 = plain<RgbSink<4, false>, RgbSink<4, true>>;

}  // namespace
}  // namespace ppl::TARGET
