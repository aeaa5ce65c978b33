// Progressive YUYV and UYVY to I420 and RGB24.
#pragma once

#include "kernels/single/placement.inl.h"
#include "kernels/yuv/packed.inl.h"

namespace ppl::TIER {
namespace {

// Two packed lines to two of luma and one each of U and V, which take the rounded average of both.
// The planes' lines run from their origins, to lower addresses where mirrored.
template <bool luma_first, bool mirrored>
void unpack_pair(const uint8_t *line0, const uint8_t *line1, int width, uint8_t *const luma[2],
                 uint8_t *u, uint8_t *v) {
  using Pixels = PackedPixels<luma_first>;
  constexpr int n = Vec::bytes;
  const auto put = [](uint8_t *origin, int x, Vec::type value) {
    Vec::store(place<mirrored>(origin, 1, x, n), mirrored ? reverse_u8(value) : value);
  };
  int x = 0;
  for (; x + n <= width; x += n) {
    put(luma[0], x, Pixels::luma_bytes(line0 + 2 * x));
    put(luma[1], x, Pixels::luma_bytes(line1 + 2 * x));
    const auto chroma = separate_chroma(
        Vec::average_u8(Pixels::chroma_bytes(line0 + 2 * x), Pixels::chroma_bytes(line1 + 2 * x)));
    uint8_t *const to_u = place<mirrored>(u, 1, x / 2, n / 2);
    uint8_t *const to_v = place<mirrored>(v, 1, x / 2, n / 2);
    const auto both = mirrored ? Vec::swap_halves(reverse_u8(chroma)) : chroma;
    Vec::store_low_half(to_u, both);
    Vec::store_low_half(to_v, Vec::swap_halves(both));
  }
  for (; x < width; x += 2) {
    constexpr int Y = luma_first ? 0 : 1;
    constexpr int C = 1 - Y;
    const uint8_t *const p0 = line0 + 2 * x;
    const uint8_t *const p1 = line1 + 2 * x;
    for (int i = 0; i < 2; ++i) {
      *place<mirrored>(luma[0], 1, x + i, 1) = p0[2 * i + Y];
      *place<mirrored>(luma[1], 1, x + i, 1) = p1[2 * i + Y];
    }
    *place<mirrored>(u, 1, x / 2, 1) = static_cast<uint8_t>((p0[C] + p1[C] + 1) >> 1);
    *place<mirrored>(v, 1, x / 2, 1) = static_cast<uint8_t>((p0[2 + C] + p1[2 + C] + 1) >> 1);
  }
}

// What of a plane the picture leaves is black: behind it, or before it with the vertical mirror.
void blacken_rest(const PplContext &ctx, uint8_t *plane, int size, int picture, int value) {
  if (picture >= size) return;
  fill(ctx.v_mirror != 0 ? plane : plane + picture, value, size - picture);
}

bool has_black_lines(const PplContext &ctx) { return ctx.out_height > ctx.frame_height; }

template <bool luma_first, bool mirrored>
void run_progressive_i420(const PplContext &ctx, const uint8_t *src, uint8_t *dst) {
  uint8_t *const u_plane = dst + ctx.out_size;
  uint8_t *const v_plane = u_plane + ctx.out_size_4;
  const int width = ctx.frame_width & ~1;
  const int last = mirrored ? ctx.out_width - 1 : 0;
  const int last_chroma = mirrored ? ctx.out_width / 2 - 1 : 0;
  const int pitch = 2 * ctx.frame_width;
  for (int p = 0; p < ctx.frame_height / 2; ++p, src += 2 * pitch) {
    uint8_t *const luma[2] = {dst + line_start(ctx, 2 * p, false) + last,
                              dst + line_start(ctx, 2 * p + 1, false) + last};
    const int chroma = chroma_line_start(ctx, p) + last_chroma;
    unpack_pair<luma_first, mirrored>(src, src + pitch, width, luma, u_plane + chroma,
                                      v_plane + chroma);
  }
  if (!has_black_lines(ctx)) return;
  const int picture = ctx.frame_height * ctx.out_width;
  const int picture_chroma = ctx.frame_height / 2 * (ctx.out_width / 2);
  blacken_rest(ctx, dst, ctx.out_size, picture, black_luma);
  blacken_rest(ctx, u_plane, ctx.out_size_4, picture_chroma, neutral_chroma);
  blacken_rest(ctx, v_plane, ctx.out_size_4, picture_chroma, neutral_chroma);
}

// Only the unscaled size converts.
template <bool luma_first>
void progressive_i420(PplContext &ctx, const uint8_t *src, uint8_t *dst) {
  if (ctx.decimation != 0) return;
  ctx.h_mirror != 0 ? run_progressive_i420<luma_first, true>(ctx, src, dst)
                    : run_progressive_i420<luma_first, false>(ctx, src, dst);
}

// A packed line to RGB24; both pixels of a pair share its chroma.
template <bool luma_first>
void packed_line_to_rgb24(uint8_t *out, const uint8_t *in, int width) {
  using Pixels = PackedPixels<luma_first>;
  const auto convert = [](uint8_t *to, const uint8_t *from) {
    const auto u_and_v = Pixels::chroma_bytes(from);
    const YuvToRgb shares(Vec::bit_and(u_and_v, Vec::words(0x00FF)),
                          Vec::shift_right_words<8>(u_and_v));
    put_rgb24(to, Pixels::luma_bytes(from), shares, shares);
  };
  int x = 0;
  for (; x + Vec::bytes <= width; x += Vec::bytes) convert(out + 3 * x, in + 2 * x);
  if (x < width) {
    uint8_t from[2 * Vec::bytes] = {}, to[3 * Vec::bytes];
    for (int i = 0; i < 2 * (width - x); ++i) from[i] = in[2 * x + i];
    convert(to, from);
    for (int i = 0; i < 3 * (width - x); ++i) out[3 * x + i] = to[i];
  }
}

// Bottom-up. Neither the mirrors nor the scale take part: at another decimation the picture still
// has the input's size, and stands where that puts it.
template <bool luma_first>
void progressive_rgb24(PplContext &ctx, const uint8_t *src, uint8_t *dst) {
  const int width = ctx.frame_width;
  const int height = ctx.frame_height & ~1;
  const int lines = ctx.decimation == 0 ? ctx.out_height : ctx.frame_height;
  for (int y = 0; y < height; ++y) {
    packed_line_to_rgb24<luma_first>(dst + 3 * width * (lines - 1 - y), src + 2 * width * y,
                                     width & ~1);
  }
  if (ctx.decimation == 0 && has_black_lines(ctx)) {
    fill(dst, 0, 3 * width * (ctx.out_height - ctx.frame_height));
  }
}

// The packing of 1.5 bytes a pixel: 24 bytes make 16 pixels. What it does to the luma of the last
// quarter, and to chroma, is what the format requires.
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
void unpack_yyyy(PplContext &ctx, const uint8_t *src, uint8_t *dst) {
  if (ctx.decimation != 0) return;
  constexpr int pixels = 16;
  uint8_t *const u_plane = dst + ctx.out_size;
  const int width = ctx.frame_width & ~1;
  const int pitch = 3 * ctx.frame_width / 2;
  const bool mirrored = ctx.h_mirror != 0;
  for (int y = 0; y < (ctx.frame_height & ~1); ++y) {
    const uint8_t *const line = src + pitch * y;
    uint8_t *const luma = dst + line_start(ctx, y, false);
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
}  // namespace ppl::TIER
