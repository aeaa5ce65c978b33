// Adaptive colour matrix: the stronger a pixel's colour, the further each coefficient moves from
// its base along its slope. Sums wrap in 16 bits.
#pragma once

#include "kernels/chains/demosaic.inl.h"

namespace ppl::TIER {
namespace {

struct Pixels {
  Vec::type r, g, b;

  // |R - G| + |G - B| + |B - R| is twice the span, so its quarter is half the span. The bound acts
  // through its complement, unsigned.
  Vec::type index(Vec::type index_mask) const {
    const auto largest = Vec::max_words(Vec::max_words(r, g), b);
    const auto smallest = Vec::min_words(Vec::min_words(r, g), b);
    const auto index = Vec::shift_right_words<1>(Vec::sub_words(largest, smallest));
    return Vec::subtract_saturated_u16(Vec::add_saturated_u16(index, index_mask), index_mask);
  }
};

// Three rows of slopes and bases. `shift` is the slopes' scale against the bases.
template <int shift>
struct AdaptiveRows {
  const WordVector<TIER_BYTES> *slope, *base;

  Vec::type coefficient(int i, Vec::type index) const {
    const auto moved =
        Vec::add_words(Vec::multiply_low(index, load(slope[i])), Vec::words(1 << (shift - 1)));
    return Vec::add_words(Vec::shift_right_signed_words<shift>(moved), load(base[i]));
  }

  // A row applied to pixels; leaves Q6.
  Vec::type apply(int row, const Pixels &p, Vec::type index, Vec::type rounding) const {
    const auto r = Vec::multiply_low(coefficient(3 * row, index), p.r);
    const auto g = Vec::multiply_low(coefficient(3 * row + 1, index), p.g);
    const auto b = Vec::multiply_low(coefficient(3 * row + 2, index), p.b);
    return Vec::shift_right_signed_words<6>(
        Vec::add_words(Vec::add_words(r, g), Vec::add_words(b, rounding)));
  }
};

// Bytes of both columns from words of either, clamped to 0..255.
inline Vec::type join_clamped(Vec::type even, Vec::type odd) {
  const auto packed = Vec::pack_u8(even, odd);
  return Vec::interleave_low_u8(packed, Vec::swap_halves(packed));
}

// The same, as signed bytes.
inline Vec::type join_signed(Vec::type even, Vec::type odd) {
  const auto packed = Vec::pack_s8(even, odd);
  return Vec::interleave_low_u8(packed, Vec::swap_halves(packed));
}

template <bool odd>
Pixels pixels_at(const ColourLines &in, int x) {
  return {columns<odd>(Vec::load(in.r + x)), columns<odd>(Vec::load(in.g + x)),
          columns<odd>(Vec::load(in.b + x))};
}

// Where U and V of a line go.
enum class ChromaSites {
  none,          // odd lines: no chroma
  even_columns,  // one value a cell
  all,
};

// Luma in the studio range and signed chroma.
template <ChromaSites sites>
void studio_line(uint8_t *y, uint8_t *u, uint8_t *v, const ColourLines &in, int width,
                 const Parameters &p) {
  const AdaptiveRows<8> rows = {p.studio_slope_vec, p.studio_base0_vec};
  const auto mask = load(p.index_mask_vec);
  const auto luma_rounding = load(p.offset_studio_vec);
  const auto chroma_rounding = Vec::words(32);
  for (int x = 0; x < width; x += Vec::bytes) {
    const Pixels even = pixels_at<false>(in, x);
    const Pixels odd = pixels_at<true>(in, x);
    const auto even_index = even.index(mask);
    const auto odd_index = odd.index(mask);
    Vec::store(y + x, to_studio_luma(join_clamped(rows.apply(0, even, even_index, luma_rounding),
                                                  rows.apply(0, odd, odd_index, luma_rounding))));
    if constexpr (sites == ChromaSites::even_columns) {
      const auto chroma = Vec::pack_s8(rows.apply(1, even, even_index, chroma_rounding),
                                       rows.apply(2, even, even_index, chroma_rounding));
      Vec::store_low_half(u + x / 2, chroma);
      Vec::store_low_half(v + x / 2, Vec::swap_halves(chroma));
    } else if constexpr (sites == ChromaSites::all) {
      Vec::store(u + x, join_signed(rows.apply(1, even, even_index, chroma_rounding),
                                    rows.apply(1, odd, odd_index, chroma_rounding)));
      Vec::store(v + x, join_signed(rows.apply(2, even, even_index, chroma_rounding),
                                    rows.apply(2, odd, odd_index, chroma_rounding)));
    }
  }
}

// Luma in the full range and signed chroma of every pixel, for RGB output with enhancement.
void full_range_line(uint8_t *const out[3], const ColourLines &in, int width, const Parameters &p) {
  const AdaptiveRows<8> rows = {p.full_slope_vec, p.full_base0_vec};
  const auto mask = load(p.index_mask_vec);
  const auto luma_rounding = load(p.offset_full_vec);
  const auto chroma_rounding = Vec::words(32);
  for (int x = 0; x < width; x += Vec::bytes) {
    const Pixels even = pixels_at<false>(in, x);
    const Pixels odd = pixels_at<true>(in, x);
    const auto even_index = even.index(mask);
    const auto odd_index = odd.index(mask);
    Vec::store(out[0] + x, join_clamped(rows.apply(0, even, even_index, luma_rounding),
                                        rows.apply(0, odd, odd_index, luma_rounding)));
    for (int row = 1; row < 3; ++row) {
      Vec::store(out[row] + x, join_signed(rows.apply(row, even, even_index, chroma_rounding),
                                           rows.apply(row, odd, odd_index, chroma_rounding)));
    }
  }
}

// R, G and B. All three rows round alike.
void rgb_line(uint8_t *const out[3], const ColourLines &in, int width, const Parameters &p) {
  const AdaptiveRows<5> rows = {p.rgb_slope_vec, p.rgb_base0_vec};
  const auto mask = load(p.index_mask_vec);
  const auto rounding = load(p.offset_rgb_vec);
  for (int x = 0; x < width; x += Vec::bytes) {
    const Pixels even = pixels_at<false>(in, x);
    const Pixels odd = pixels_at<true>(in, x);
    const auto even_index = even.index(mask);
    const auto odd_index = odd.index(mask);
    for (int row = 0; row < 3; ++row) {
      Vec::store(out[row] + x, join_clamped(rows.apply(row, even, even_index, rounding),
                                            rows.apply(row, odd, odd_index, rounding)));
    }
  }
}

// Bytes of a half line as words with their sign.
inline Vec::type low_signed(Vec::type v) {
  return Vec::shift_right_signed_words<8>(Vec::interleave_low_u8(Vec::zero(), v));
}
inline Vec::type high_signed(Vec::type v) {
  return Vec::shift_right_signed_words<8>(Vec::interleave_high_u8(Vec::zero(), v));
}

// Y, U, V of a line to R, G, B, in place: R takes Y's line, G takes U's, B takes V's. Q7; sums
// saturate from left to right.
void full_range_to_rgb(uint8_t *const plane[3], const uint8_t *luma, int width) {
  for (int x = 0; x < width; x += Vec::bytes) {
    const auto Y = Vec::load(luma + x);
    const auto U = Vec::load(plane[1] + x);
    const auto V = Vec::load(plane[2] + x);
    Vec::type rgb[3][2];
    for (int half = 0; half < 2; ++half) {
      const auto y = half == 0 ? Vec::interleave_low_u8(Y, Vec::zero())
                               : Vec::interleave_high_u8(Y, Vec::zero());
      const auto u = half == 0 ? low_signed(U) : high_signed(U);
      const auto v = half == 0 ? low_signed(V) : high_signed(V);
      const auto y128 = Vec::shift_left_words<7>(y);
      const auto finish = [](Vec::type sum) {
        return Vec::shift_right_signed_words<7>(Vec::add_saturated_words(sum, Vec::words(32)));
      };
      const auto times = [](Vec::type c, int factor) {
        return Vec::multiply_low(c, Vec::words(factor));
      };
      rgb[0][half] = finish(Vec::add_saturated_words(y128, times(v, 175)));
      rgb[1][half] = finish(Vec::subtract_saturated_words(
          Vec::subtract_saturated_words(y128, times(u, 43)), times(v, 89)));
      rgb[2][half] = finish(Vec::add_saturated_words(y128, times(u, 222)));
    }
    for (int i = 0; i < 3; ++i) Vec::store(plane[i] + x, Vec::pack_u8(rgb[i][0], rgb[i][1]));
  }
}

}  // namespace
}  // namespace ppl::TIER
