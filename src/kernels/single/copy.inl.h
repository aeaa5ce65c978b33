// Qualities 4 and 9: the mosaic as grey pixels, unprocessed; mirrors are ignored. The vector loops
// run in whole groups of two registers, so a contiguous run is read and written up to a group past
// its end.
#pragma once

#include "frame/context.h"
#include "kernels/lanes/bytes.inl.h"
#include "kernels/tier.h"

namespace ppl::TIER {
namespace {

FramePlan &plan_of(PplContext &ctx) { return TIER_BYTES == 8 ? ctx.p3_plan : ctx.sse2_plan; }

int round_up(int value, int step) { return (value + step - 1) / step * step; }

// A block of the second chroma plane, one cell of a grid of 5 by 6 further with each frame.
void paint_marker(PplContext &ctx, uint8_t *dst_chroma) {
  const int width = ctx.out_width / 10;
  const int height = ctx.out_height / 12;
  if (width % Vec::bytes != 0) return;
  int32_t &cell = plan_of(ctx).marker_cell;
  uint8_t *line =
      dst_chroma + ctx.out_size_4 + ctx.out_width * (cell / 5) * height / 2 + cell % 5 * width;
  for (int y = 0; y < height; ++y, line += ctx.out_width / 2) fill(line, 255, width);
  cell = cell == 29 ? 0 : cell + 1;
}

void fill_chroma(const PplContext &ctx, uint8_t *dst_chroma) {
  const auto neutral = Vec::bytes_all(neutral_chroma);
  for (int i = 0; i < ctx.out_size / 2; i += Vec::bytes) Vec::store(dst_chroma + i, neutral);
}

// Half-size lines: every second sample of the first line of each pair. put(line, x, sample) writes
// one pixel. A group that reaches past a line's end writes its rest only where no other line
// stands.
template <class Put>
void copy_half_lines(const PplContext &ctx, const uint8_t *src, int first_column, int group,
                     int last_line_in_memory, Put put) {
  const int lines = ctx.frame_height / 2;
  for (int y = 0; y < lines; ++y, src += 2 * ctx.frame_stride) {
    const int rounded = round_up(ctx.frame_width, group) / 2;
    const int pixels = y == last_line_in_memory ? rounded : ctx.out_width;
    for (int x = 0; x < pixels; ++x) put(y, x, src[2 * x + first_column]);
  }
}

constexpr int copy_group = 2 * Vec::bytes;

void copy_i420(PplContext &ctx, const Buffers &b) {
  if (ctx.decimation == 0) {
    for (int i = 0; i < ctx.frame_size; i += copy_group) {
      const auto low = Vec::load(b.src + i);
      const auto high = Vec::load(b.src + i + Vec::bytes);
      Vec::store(b.dst + i, low);
      Vec::store(b.dst + i + Vec::bytes, high);
    }
    fill_chroma(ctx, b.dst_chroma);
  } else if (ctx.decimation == 1) {
    copy_half_lines(ctx, b.src, 0, copy_group, ctx.out_height - 1,
                    [&](int y, int x, uint8_t s) { b.dst[y * ctx.out_width + x] = s; });
    fill_chroma(ctx, b.dst_chroma);
  }
  paint_marker(ctx, b.dst_chroma);
}

// The sample's place in its byte pair; UYVY also takes the odd columns where YUYV takes the even.
template <int luma>
void copy_packed(PplContext &ctx, const Buffers &b) {
  const auto neutral = Vec::bytes_all(neutral_chroma);
  if (ctx.decimation == 0) {
    for (int i = 0; i < round_up(ctx.frame_size, copy_group); i += Vec::bytes) {
      const auto s = Vec::load(b.src + i);
      const auto first = luma == 0 ? s : neutral;
      const auto second = luma == 0 ? neutral : s;
      Vec::store(b.dst + 2 * i, Vec::interleave_low_u8(first, second));
      Vec::store(b.dst + 2 * i + Vec::bytes, Vec::interleave_high_u8(first, second));
    }
  } else if (ctx.decimation == 1) {
    copy_half_lines(ctx, b.src, luma, copy_group, ctx.out_height - 1, [&](int y, int x, uint8_t s) {
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
  constexpr int group = 4;
  const auto line = [&](int y) {
    return b.dst + pixel_bytes * (ctx.out_size - (y + 1) * ctx.out_width);
  };
  if (ctx.decimation == 0) {
    const uint8_t *src = b.src;
    for (int y = 0; y < ctx.frame_height; ++y, src += ctx.frame_width) {
      const int pixels = y == 0 ? round_up(ctx.frame_width, group) : ctx.frame_width;
      uint8_t *const out = line(y);
      for (int x = 0; x < pixels; ++x) put_grey<pixel_bytes>(out + pixel_bytes * x, src[x]);
    }
  } else if (ctx.decimation == 1 && pixel_bytes == 4) {
    copy_half_lines(ctx, b.src, 0, group, 0, [&](int y, int x, uint8_t s) {
      put_grey<pixel_bytes>(line(y) + pixel_bytes * x, s);
    });
  }
}

}  // namespace
}  // namespace ppl::TIER
