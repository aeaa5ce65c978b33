// Qualities 4 and 9: the mosaic as grey pixels, unprocessed; mirrors are ignored. What is read and
// written goes by whole pairs of blocks, so that a contiguous run reaches up to such a pair past
// its end.
#pragma once

#include "kernels/common/colour.inl.h"
#include "kernels/common/lines.inl.h"

namespace ppl::TARGET {
namespace {

constexpr int copy_step = 2 * block;

// A rectangle of the second chroma plane, one cell of a grid of 5 by 6 further with each frame.
void paint_marker(PplContext &ctx, uint8_t *dst_chroma) {
  const int width = ctx.out_width / 10;
  const int height = ctx.out_height / 12;
  if (width % block != 0) return;
  int32_t &cell = tier_state(ctx).memory.marker_cell;
  uint8_t *line =
      dst_chroma + ctx.out_size_4 + ctx.out_width * (cell / 5) * height / 2 + cell % 5 * width;
  for (int y = 0; y < height; ++y, line += ctx.out_width / 2) fill(line, 255, width);
  cell = cell == 29 ? 0 : cell + 1;
}

void fill_chroma(const PplContext &ctx, uint8_t *dst_chroma) {
  for_each_block(round_up(ctx.out_size / 2, block),
                 [=]<class R>(int i) { R::store(dst_chroma + i, R::splat_u8(neutral_chroma)); });
}

// Half-size lines: every second sample of the first line of each pair. put(line, x, sample) writes
// one pixel. A run of `step` samples that reaches past a line's end writes its rest only where no
// other line stands.
template <class Put>
void copy_half_lines(const PplContext &ctx, const uint8_t *src, int first_column, int step,
                     int last_line_in_memory, Put put) {
  const int lines = ctx.frame_height / 2;
  for (int y = 0; y < lines; ++y, src += 2 * ctx.frame_stride) {
    const int rounded = round_up(ctx.frame_width, step) / 2;
    const int pixels = y == last_line_in_memory ? rounded : ctx.out_width;
    for (int x = 0; x < pixels; ++x) put(y, x, src[2 * x + first_column]);
  }
}

void copy_i420(PplContext &ctx, const Buffers &b) {
  if (ctx.decimation == 0) {
    for_each_block(round_up(ctx.frame_size, copy_step),
                   [&]<class R>(int i) { R::store(b.dst + i, R::load(b.src + i)); });
    fill_chroma(ctx, b.dst_chroma);
  } else if (ctx.decimation == 1) {
    copy_half_lines(ctx, b.src, 0, copy_step, ctx.out_height - 1,
                    [&](int y, int x, uint8_t s) { b.dst[y * ctx.out_width + x] = s; });
    fill_chroma(ctx, b.dst_chroma);
  }
  paint_marker(ctx, b.dst_chroma);
}

// At half size UYVY takes the odd columns where YUYV takes the even.
template <PackedOrder order>
void copy_packed(PplContext &ctx, const Buffers &b) {
  constexpr int luma = luma_byte(order);
  if (ctx.decimation == 0) {
    for_each_block(round_up(ctx.frame_size, copy_step), [&]<class R>(int i) {
      put_packed_register<R, order, false>(b.dst + 2 * i, R::load(b.src + i),
                                           R::splat_u8(neutral_chroma));
    });
  } else if (ctx.decimation == 1) {
    copy_half_lines(ctx, b.src, luma, copy_step, ctx.out_height - 1, [&](int y, int x, uint8_t s) {
      uint8_t *const pixel = b.dst + 2 * (y * ctx.out_width + x);
      pixel[luma] = s;
      pixel[1 - luma] = neutral_chroma;
    });
  }
}

template <int pixel_bytes>
void put_grey(uint8_t *pixel, uint8_t s) {
  pixel[0] = pixel[1] = pixel[2] = s;
  if (pixel_bytes == 4) pixel[3] = 0;
}

// Lines from the last output line upwards, in steps of four samples.
template <int pixel_bytes>
void copy_rgb(PplContext &ctx, const Buffers &b) {
  constexpr int step = 4;
  const auto line = [&](int y) {
    return b.dst + pixel_bytes * (ctx.out_size - (y + 1) * ctx.out_width);
  };
  if (ctx.decimation == 0) {
    const uint8_t *src = b.src;
    for (int y = 0; y < ctx.frame_height; ++y, src += ctx.frame_width) {
      const int pixels = y == 0 ? round_up(ctx.frame_width, step) : ctx.frame_width;
      uint8_t *const out = line(y);
      for (int x = 0; x < pixels; ++x) put_grey<pixel_bytes>(out + pixel_bytes * x, src[x]);
    }
  } else if (ctx.decimation == 1 && pixel_bytes == 4) {
    copy_half_lines(ctx, b.src, 0, step, 0, [&](int y, int x, uint8_t s) {
      put_grey<pixel_bytes>(line(y) + pixel_bytes * x, s);
    });
  }
}

}  // namespace
}  // namespace ppl::TARGET
