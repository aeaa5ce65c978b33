// Packed 4:2:2 lines taken apart, and the arithmetic from Y, U, V to R, G, B.
#pragma once

#include "kernels/lanes/bytes.inl.h"
#include "kernels/single/lines.inl.h"

namespace ppl::TIER {
namespace {

// Source pixels are pairs of bytes: luma first in YUYV, second in UYVY.
template <bool luma_first>
struct PackedPixels {
  static Vec::type luma(Vec::type pairs) {
    return luma_first ? Vec::bit_and(pairs, Vec::words(0x00FF)) : Vec::shift_right_words<8>(pairs);
  }
  static Vec::type chroma(Vec::type pairs) {
    return luma_first ? Vec::shift_right_words<8>(pairs) : Vec::bit_and(pairs, Vec::words(0x00FF));
  }

  // A register of pixels, from two of pairs.
  static Vec::type luma_bytes(const uint8_t *p) {
    return Vec::pack_u8(luma(Vec::load(p)), luma(Vec::load(p + Vec::bytes)));
  }
  // U and V in turn.
  static Vec::type chroma_bytes(const uint8_t *p) {
    return Vec::pack_u8(chroma(Vec::load(p)), chroma(Vec::load(p + Vec::bytes)));
  }
};

// U of a register of U and V in turn to its low half, V to its high half.
inline Vec::type separate_chroma(Vec::type u_and_v) {
  return Vec::pack_u8(Vec::bit_and(u_and_v, Vec::words(0x00FF)),
                      Vec::shift_right_words<8>(u_and_v));
}

// 16-bit arithmetic that wraps, Q6 without rounding: a very bright pixel of strong colour comes out
// wrong, which is meant to stay. The coefficients are those of ITU-R BT.601, studio range.
struct YuvToRgb {
  Vec::type b, g, r;  // the chroma's share of each channel

  YuvToRgb(Vec::type U, Vec::type V) {
    const auto u = Vec::sub_words(U, Vec::words(128));
    const auto v = Vec::sub_words(V, Vec::words(128));
    b = times(u, 129);
    g = Vec::add_words(times(u, 25), times(v, 52));
    r = times(v, 102);
  }

  static Vec::type scaled_luma(Vec::type Y) {
    return times(Vec::subtract_saturated_u16(Y, Vec::words(16)), 74);
  }
  Vec::type blue(Vec::type y) const { return finish(Vec::add_words(y, b)); }
  Vec::type green(Vec::type y) const { return finish(Vec::sub_words(y, g)); }
  Vec::type red(Vec::type y) const { return finish(Vec::add_words(y, r)); }

 private:
  static Vec::type times(Vec::type v, int factor) {
    return Vec::multiply_low(v, Vec::words(factor));
  }
  static Vec::type finish(Vec::type v) { return Vec::shift_right_signed_words<6>(v); }
};

// A register of pixels to RGB24, from luma bytes and the chroma of the even and of the odd pixels.
inline void put_rgb24(uint8_t *out, Vec::type luma, const YuvToRgb &even, const YuvToRgb &odd) {
  const auto y0 = YuvToRgb::scaled_luma(Vec::bit_and(luma, Vec::words(0x00FF)));
  const auto y1 = YuvToRgb::scaled_luma(Vec::shift_right_words<8>(luma));
  const auto join = [](Vec::type a, Vec::type b) {
    const auto packed = Vec::pack_u8(a, b);
    return Vec::interleave_low_u8(packed, Vec::swap_halves(packed));
  };
  put_rgb_register<3, false>(out, join(even.blue(y0), odd.blue(y1)),
                             join(even.green(y0), odd.green(y1)), join(even.red(y0), odd.red(y1)));
}

}  // namespace
}  // namespace ppl::TIER
