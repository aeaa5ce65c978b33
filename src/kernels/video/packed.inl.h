// Packed 4:2:2 lines taken apart, and the arithmetic from Y, U, V to R, G, B.
#pragma once

#include "kernels/common/colour.inl.h"
#include "kernels/common/lines.inl.h"

namespace ppl::TARGET {
namespace {

// Source pixels are pairs of bytes, luma and chroma.
template <PackedOrder order>
struct PackedPixels {
  static constexpr bool luma_is_odd = order == PackedOrder::uyvy;

  static Vec::type chroma(Vec::type pairs) { return Vec::columns<!luma_is_odd>(pairs); }

  // A register of pixels, from two of pairs.
  static Vec::type luma_bytes(const uint8_t *p) { return bytes<luma_is_odd>(p); }
  // U and V in turn.
  static Vec::type chroma_bytes(const uint8_t *p) { return bytes<!luma_is_odd>(p); }

 private:
  template <bool odd>
  static Vec::type bytes(const uint8_t *p) {
    const auto a = Vec::load(p);
    const auto b = Vec::load(p + Vec::size);
    return odd ? Vec::odd_bytes(a, b) : Vec::even_bytes(a, b);
  }
};

// U of a register of U and V in turn to each block's low half, V to its high half.
inline Vec::type separate_chroma(Vec::type u_and_v) {
  return Vec::pack_u8(Vec::columns<false>(u_and_v), Vec::columns<true>(u_and_v));
}

// 16-bit arithmetic that wraps, Q6 without rounding: a very bright pixel of strong colour comes out
// wrong. Meant so: docs/oddities.md, "Bright colours of video". The coefficients are those of ITU-R
// BT.601, studio range.
struct YuvToRgb {
  Vec::type b, g, r;  // the chroma's share of each channel

  YuvToRgb(Vec::type U, Vec::type V) {
    const auto u = Vec::subtract_words(U, Vec::splat_words(128));
    const auto v = Vec::subtract_words(V, Vec::splat_words(128));
    b = times(u, 129);
    g = Vec::add_words(times(u, 25), times(v, 52));
    r = times(v, 102);
  }

  static Vec::type scaled_luma(Vec::type Y) {
    return times(Vec::subtract_saturated_u16(Y, Vec::splat_words(16)), 74);
  }
  Vec::type blue(Vec::type y) const { return finish(Vec::add_words(y, b)); }
  Vec::type green(Vec::type y) const { return finish(Vec::subtract_words(y, g)); }
  Vec::type red(Vec::type y) const { return finish(Vec::add_words(y, r)); }

 private:
  static Vec::type times(Vec::type v, int factor) {
    return Vec::multiply_low(v, Vec::splat_words(factor));
  }
  static Vec::type finish(Vec::type v) { return Vec::shift_right_signed_words<6>(v); }
};

// A register of pixels to RGB24, from luma bytes and the chroma of the even and of the odd pixels.
inline void put_rgb24(uint8_t *out, Vec::type luma, const YuvToRgb &even, const YuvToRgb &odd) {
  const auto y0 = YuvToRgb::scaled_luma(Vec::columns<false>(luma));
  const auto y1 = YuvToRgb::scaled_luma(Vec::columns<true>(luma));
  Vec::store_bgr<3, false>(out, Vec::pack_columns_u8(even.blue(y0), odd.blue(y1)),
                           Vec::pack_columns_u8(even.green(y0), odd.green(y1)),
                           Vec::pack_columns_u8(even.red(y0), odd.red(y1)));
}

}  // namespace
}  // namespace ppl::TARGET
