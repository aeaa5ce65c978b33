// Quality 3: demosaic within the cell, constant colour matrix. Unscaled, in five formats.
#pragma once

#include "kernels/single/sweep.inl.h"
#include "kernels/tier.h"

namespace ppl::TIER {
namespace {

// Sets a sink's planes to the two lines of line pair p.
template <bool mirrored>
void aim(PlanarYuvSink<mirrored> &sink, const PplContext &ctx, const Buffers &b, int p) {
  const int width = ctx.out_width;
  const int half = width / 2;
  const bool v = ctx.v_mirror != 0;
  for (int line = 0; line < 2; ++line) {
    const int y = 2 * p + line;
    sink.plane[line] = b.dst + (v ? ctx.out_size - (y + 1) * width : y * width);
  }
  // With both mirrors the chroma stands a line lower than it should, V's first line on U's last.
  // Required behaviour.
  const int displaced = v && mirrored ? half : 0;
  sink.plane[2] = b.dst_chroma + (v ? ctx.out_size_4 - (p + 1) * half : p * half) - displaced;
  if (mirrored) {
    sink.plane[0] += width - 1;
    sink.plane[1] += width - 1;
    sink.plane[2] += half - 1;
  }
  sink.plane[3] = sink.plane[2] + ctx.out_size_4;
}

template <bool luma_first, bool mirrored>
void aim(PackedYuvSink<luma_first, mirrored> &sink, const PplContext &ctx, const Buffers &b,
         int p) {
  const int width = ctx.out_width;
  for (int line = 0; line < 2; ++line) {
    const int y = 2 * p + line;
    const int first = ctx.v_mirror != 0 ? ctx.out_size - (y + 1) * width : y * width;
    sink.plane[line] = b.dst + 2 * (first + (mirrored ? width - 1 : 0));
  }
}

// Bottom-up; the vertical mirror makes it top-down.
template <int pixel_bytes, bool mirrored>
void aim(RgbSink<pixel_bytes, mirrored> &sink, const PplContext &ctx, const Buffers &b, int p) {
  const int width = ctx.out_width;
  for (int line = 0; line < 2; ++line) {
    const int y = 2 * p + line;
    const int first = ctx.v_mirror != 0 ? y * width : ctx.out_size - (y + 1) * width;
    sink.plane[line] = b.dst + pixel_bytes * (first + (mirrored ? width - 1 : 0));
  }
}

template <class Sink, Sampling sampling>
void run_plain(PplContext &ctx, const Buffers &b) {
  SinglePass<Sink, sampling> pass(ctx, parameters_of(ctx).front_end);
  const int width = ctx.frame_width & ~1;
  const int pairs = ctx.frame_height / 2;
  const bool collects = ctx.mean_collection != 0;
  uint8_t *line = b.src;
  for (int p = 0; p < pairs; ++p, line += 2 * ctx.frame_stride) {
    aim(pass.sink, ctx, b, p);
    pass.run({{line, line + ctx.frame_stride}}, width, collects && is_sampled_pair(p));
  }
  if (collects) pass.statistics.flush();
}

// Takes the sink for either horizontal direction.
template <class Straight, class Mirrored, Sampling sampling = Sampling::as_stated>
void plain(PplContext &ctx, const Buffers &b) {
  if (ctx.h_mirror != 0) {
    run_plain<Mirrored, sampling>(ctx, b);
  } else {
    run_plain<Straight, sampling>(ctx, b);
  }
}

constexpr Sampling rgb24_sampling =
    TIER_BYTES == 8 ? Sampling::losing_the_mask : Sampling::as_stated;

constexpr auto plain_i420 = plain<PlanarYuvSink<false>, PlanarYuvSink<true>>;
constexpr auto plain_yuyv = plain<PackedYuvSink<true, false>, PackedYuvSink<true, true>>;
constexpr auto plain_uyvy = plain<PackedYuvSink<false, false>, PackedYuvSink<false, true>>;
constexpr auto plain_rgb24 = plain<RgbSink<3, false>, RgbSink<3, true>, rgb24_sampling>;
constexpr auto plain_rgb32 = plain<RgbSink<4, false>, RgbSink<4, true>>;

}  // namespace
}  // namespace ppl::TIER
