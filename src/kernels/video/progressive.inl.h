// Progressive YUYV and UYVY to I420 and RGB24.
#pragma once

#include "kernels/video/packed.inl.h"

namespace ppl::TARGET {
namespace {

// Two packed lines to two of luma and one each of U and V, which take the rounded average of both.
// The planes' lines run from their origins, to lower addresses where mirrored.
template <PackedOrder order, bool mirrored>
void unpack_pair(const uint8_t *line0, const uint8_t *line1, int width, uint8_t *const luma[2],
                 uint8_t *u, uint8_t *v) {
  using Pixels = PackedPixels<order>;
  constexpr int n = Vec::size;
  cover_with_registers(width, [&](int x) {
    const auto put = [&](uint8_t *origin, Vec::type value) {
      Vec::store(place<mirrored>(origin, 1, x, n), mirrored ? Vec::reverse_u8(value) : value);
    };
    put(luma[0], Pixels::luma_bytes(line0 + 2 * x));
    put(luma[1], Pixels::luma_bytes(line1 + 2 * x));
    const auto chroma = separate_chroma(
        Vec::average_u8(Pixels::chroma_bytes(line0 + 2 * x), Pixels::chroma_bytes(line1 + 2 * x)));
    uint8_t *const to_u = place<mirrored>(u, 1, x / 2, n / 2);
    uint8_t *const to_v = place<mirrored>(v, 1, x / 2, n / 2);
    if constexpr (mirrored) {
      const auto reversed = Vec::reverse_u8(chroma);  // V comes to be the lower half
      Vec::store_high_halves(to_u, reversed);
      Vec::store_low_halves(to_v, reversed);
    } else {
      Vec::store_low_halves(to_u, chroma);
      Vec::store_high_halves(to_v, chroma);
    }
  });
}

// What of a plane the picture leaves is black: behind it, or before it with the vertical mirror.
inline void blacken_rest(const PplContext &ctx, uint8_t *plane, int size, int picture, int value) {
  if (picture >= size) return;
  fill(ctx.v_mirror != 0 ? plane : plane + picture, value, size - picture);
}

inline bool has_black_lines(const PplContext &ctx) { return ctx.out_height > ctx.frame_height; }

template <PackedOrder order, bool mirrored>
void run_progressive_i420(const PplContext &ctx, const uint8_t *src, uint8_t *dst) {
  uint8_t *const u_plane = dst + ctx.out_size;
  uint8_t *const v_plane = u_plane + ctx.out_size_4;
  const int width = whole_cells(ctx.frame_width);
  const int last = mirrored ? ctx.out_width - 1 : 0;
  const int last_chroma = mirrored ? ctx.out_width / 2 - 1 : 0;
  const int pitch = 2 * ctx.frame_width;
  for (int p = 0; p < ctx.frame_height / 2; ++p, src += 2 * pitch) {
    uint8_t *const luma[2] = {dst + line_start(ctx, 2 * p, LineOrder::top_down) + last,
                              dst + line_start(ctx, 2 * p + 1, LineOrder::top_down) + last};
    const int chroma = chroma_line_start(ctx, p) + last_chroma;
    unpack_pair<order, mirrored>(src, src + pitch, width, luma, u_plane + chroma, v_plane + chroma);
  }
  if (!has_black_lines(ctx)) return;
  const int picture = ctx.frame_height * ctx.out_width;
  const int picture_chroma = ctx.frame_height / 2 * (ctx.out_width / 2);
  blacken_rest(ctx, dst, ctx.out_size, picture, black_luma);
  blacken_rest(ctx, u_plane, ctx.out_size_4, picture_chroma, neutral_chroma);
  blacken_rest(ctx, v_plane, ctx.out_size_4, picture_chroma, neutral_chroma);
}

// Only the unscaled size converts.
inline void progressive_i420(PplContext &ctx, PackedOrder order, const uint8_t *src, uint8_t *dst) {
  if (ctx.decimation != 0) return;
  using enum PackedOrder;
  if (order == yuyv) {
    ctx.h_mirror != 0 ? run_progressive_i420<yuyv, true>(ctx, src, dst)
                      : run_progressive_i420<yuyv, false>(ctx, src, dst);
  } else {
    ctx.h_mirror != 0 ? run_progressive_i420<uyvy, true>(ctx, src, dst)
                      : run_progressive_i420<uyvy, false>(ctx, src, dst);
  }
}

// A packed line to RGB24; both pixels of a pair share its chroma.
template <PackedOrder order>
void packed_line_to_rgb24(uint8_t *out, const uint8_t *in, int width) {
  using Pixels = PackedPixels<order>;
  cover_with_registers(width, [=](int x) {
    const auto u_and_v = Pixels::chroma_bytes(in + 2 * x);
    const YuvToRgb shares(Vec::columns<false>(u_and_v), Vec::columns<true>(u_and_v));
    put_rgb24(out + 3 * x, Pixels::luma_bytes(in + 2 * x), shares, shares);
  });
}

// Bottom-up. Neither the mirrors nor the scale take part: at another decimation the picture still
// has the input's size, and stands where that puts it.
inline void progressive_rgb24(PplContext &ctx, PackedOrder order, const uint8_t *src,
                              uint8_t *dst) {
  const int width = ctx.frame_width;
  const int height = whole_cells(ctx.frame_height);
  const int lines = ctx.decimation == 0 ? ctx.out_height : ctx.frame_height;
  for (int y = 0; y < height; ++y) {
    uint8_t *const out = dst + 3 * width * (lines - 1 - y);
    const uint8_t *const in = src + 2 * width * y;
    order == PackedOrder::yuyv
        ? packed_line_to_rgb24<PackedOrder::yuyv>(out, in, whole_cells(width))
        : packed_line_to_rgb24<PackedOrder::uyvy>(out, in, whole_cells(width));
  }
  if (ctx.decimation == 0 && has_black_lines(ctx)) {
    fill(dst, 0, 3 * width * (ctx.out_height - ctx.frame_height));
  }
}

// The packing of 1.5 bytes a pixel: 24 bytes make 16 pixels. What it does to the luma of the last
// quarter, and to chroma, is meant so: docs/oddities.md, "YYYY".
struct YyyyGroup {
  uint8_t luma[16], chroma[8];

  explicit YyyyGroup(const uint8_t *q) {
    // Low and high bytes of eight pairs: bytes 0 to 7 and 12 to 19.
    for (int i = 0; i < 8; ++i) {
      const uint8_t *const pair = q + (i < 4 ? 2 * i : 4 + 2 * i);
      luma[i < 4 ? i : i + 4] = pair[0];
      chroma[i] = pair[1];
    }
    // Bytes 8 to 15 with the last eight ORed in, of which the even ones are lost.
    for (int i = 0; i < 8; ++i) {
      const uint8_t first = i < 4 ? q[8 + i] : 0;
      const uint8_t odd = i % 2 != 0 ? q[16 + i] : 0;
      luma[i < 4 ? 4 + i : 8 + i] = static_cast<uint8_t>(first | odd);
    }
  }
};

// Both source lines of a pair store their chroma at the same place, unseparated: the odd line's
// stays. The V plane is not written.
inline void unpack_yyyy(PplContext &ctx, const uint8_t *src, uint8_t *dst) {
  if (ctx.decimation != 0) return;
  constexpr int pixels = 16;
  uint8_t *const u_plane = dst + ctx.out_size;
  const int width = whole_cells(ctx.frame_width);
  const int pitch = 3 * ctx.frame_width / 2;
  const bool mirrored = ctx.h_mirror != 0;
  for (int y = 0; y < whole_cells(ctx.frame_height); ++y) {
    const uint8_t *const line = src + pitch * y;
    uint8_t *const luma = dst + line_start(ctx, y, LineOrder::top_down);
    uint8_t *const chroma = u_plane + chroma_line_start(ctx, y / 2);
    for (int x = 0; x < width; x += pixels) {
      const int n = width - x < pixels ? width - x : pixels;
      uint8_t bytes[24] = {};
      for (int i = 0; i < 3 * n / 2; ++i) bytes[i] = line[3 * x / 2 + i];
      const YyyyGroup group(bytes);
      for (int i = 0; i < n; ++i)
        luma[mirrored ? ctx.out_width - 1 - x - i : x + i] = group.luma[i];
      // Mirrored groups run from the right end; the bytes of one keep their order.
      uint8_t *const c = chroma + (mirrored ? ctx.out_width / 2 - x / 2 - n / 2 : x / 2);
      for (int i = 0; i < n / 2; ++i) c[i] = group.chroma[i];
    }
  }
  if (!has_black_lines(ctx)) return;
  blacken_rest(ctx, dst, ctx.out_size, ctx.frame_height * ctx.out_width, black_luma);
  blacken_rest(ctx, u_plane, ctx.out_size_4, ctx.frame_height / 2 * (ctx.out_width / 2),
               neutral_chroma);
}

}  // namespace
}  // namespace ppl::TARGET
