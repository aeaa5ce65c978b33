// Adaptive colour matrix: the stronger a pixel's colour, the further each coefficient moves from
// its base along its slope. Sums wrap in 16 bits.
#pragma once

#include "kernels/chains/demosaic.inl.h"
#include "kernels/common/colour.inl.h"

namespace ppl::TARGET {
namespace {

// Pixels of the columns of one parity, a word each, and how strong their colour is.
struct Pixels {
  Vec::type r, g, b, index;
};

// A register of pixels, parted by columns.
struct PixelColumns {
  Pixels even, odd;

  // |R - G| + |G - B| + |B - R| is twice the span, so its quarter is half the span.
  PixelColumns(const ColourLines &in, int x, Vec::type span_limit) {
    const auto r = Vec::load(in.r + x), g = Vec::load(in.g + x), b = Vec::load(in.b + x);
    const auto largest = Vec::max_u8(Vec::max_u8(r, g), b);
    const auto smallest = Vec::min_u8(Vec::min_u8(r, g), b);
    const auto span = Vec::min_u8(Vec::subtract_u8(largest, smallest), span_limit);
    even = {Vec::columns<false>(r), Vec::columns<false>(g), Vec::columns<false>(b),
            Vec::shift_right_words<1>(Vec::columns<false>(span))};
    odd = {Vec::columns<true>(r), Vec::columns<true>(g), Vec::columns<true>(b),
           Vec::shift_right_words<9>(span)};
  }
};

// How a matrix is computed. A coefficient is ((index * slope + half) >> shift) + base.
enum class MatrixForm {
  plain,
  folded,  // the sum cannot leave 16 bits: the base goes into it, before the shift
  grey,    // R, G and B are equal: the index is 0, and the bases of a row make one factor
};

// Three rows of slopes and bases: each a word, twice in a double word, which spreads more quickly.
struct AdaptiveMatrix {
  int32_t slope[9];
  int32_t base[9];  // as the form wants them; of grey pixels' three factors
  int32_t rounding;
  int span_limit;
  int shift;
  MatrixForm form;

  AdaptiveMatrix(const Matrix &slopes, const Matrix &bases, int16_t row_rounding, int slope_shift,
                 bool is_grey, const Parameters &p)
      : rounding(twice(row_rounding)), shift(slope_shift) {
    const int bound = static_cast<uint16_t>(p.index_bound_vec);
    const int highest = bound < 127 ? bound : 127;
    span_limit = 2 * highest + 1;
    form = is_grey ? MatrixForm::grey : MatrixForm::folded;
    for (int i = 0; i < 9 && !is_grey; ++i) {
      if (!folds(slopes[i], bases[i], highest)) form = MatrixForm::plain;
    }
    for (int i = 0; i < 9; ++i) {
      slope[i] = twice(slopes[i]);
      base[i] = twice(form == MatrixForm::folded ? (bases[i] << shift) + half() : bases[i]);
    }
    for (int i = 0; i < 3 && is_grey; ++i) {
      base[i] = twice(bases[3 * i] + bases[3 * i + 1] + bases[3 * i + 2]);
    }
  }

 private:
  int half() const { return 1 << (shift - 1); }

  bool folds(int factor, int plain_base, int highest) const {
    const int moved = highest * factor + half();
    const int at_zero = (plain_base << shift) + half();
    return is_word(moved) && is_word(at_zero) && is_word(moved + (plain_base << shift));
  }
  static bool is_word(int v) { return v == static_cast<int16_t>(v); }
  // Its low 16 bits.
  static int32_t twice(int v) {
    return static_cast<int32_t>(static_cast<uint32_t>(v) << 16 | static_cast<uint16_t>(v));
  }
};

// The matrix at work, spread over registers; `shift` is its slopes' scale against its bases.
template <int shift, MatrixForm form>
struct AdaptiveRows {
  Vec::type slope[9], base[9];
  Vec::type rounding, span_limit;

  explicit AdaptiveRows(const AdaptiveMatrix &m)
      : rounding(Vec::splat_dwords(m.rounding)), span_limit(Vec::splat_u8(m.span_limit)) {
    for (int i = 0; i < 9; ++i) {
      slope[i] = Vec::splat_dwords(m.slope[i]);
      base[i] = Vec::splat_dwords(m.base[i]);
    }
  }

  Vec::type coefficient(int i, Vec::type index) const {
    const auto moved = Vec::multiply_low(index, slope[i]);
    if constexpr (form == MatrixForm::folded) {
      return Vec::shift_right_signed_words<shift>(Vec::add_words(moved, base[i]));
    } else {
      const auto rounded = Vec::add_words(moved, Vec::splat_words(1 << (shift - 1)));
      return Vec::add_words(Vec::shift_right_signed_words<shift>(rounded), base[i]);
    }
  }

  // A row applied to pixels; leaves Q6.
  Vec::type apply(int row, const Pixels &p, Vec::type row_rounding) const {
    if constexpr (form == MatrixForm::grey) {
      return Vec::shift_right_signed_words<6>(
          Vec::add_words(Vec::multiply_low(base[row], p.r), row_rounding));
    }
    const auto r = Vec::multiply_low(coefficient(3 * row, p.index), p.r);
    const auto g = Vec::multiply_low(coefficient(3 * row + 1, p.index), p.g);
    const auto b = Vec::multiply_low(coefficient(3 * row + 2, p.index), p.b);
    return Vec::shift_right_signed_words<6>(
        Vec::add_words(Vec::add_words(r, g), Vec::add_words(b, row_rounding)));
  }
};

// Where U and V of a line go.
enum class ChromaSites {
  none,          // odd lines: no chroma
  even_columns,  // one value a cell, finished
  all,           // signed
};

// Luma, or a row of R, G and B, clamped to bytes.
template <class Rows>
Vec::type clamped_row(const Rows &rows, int row, const PixelColumns &pixels) {
  return Vec::pack_columns_u8(rows.apply(row, pixels.even, rows.rounding),
                              rows.apply(row, pixels.odd, rows.rounding));
}

// A chroma row of every pixel, as signed bytes.
template <class Rows>
Vec::type chroma_row(const Rows &rows, int row, const PixelColumns &pixels) {
  return Vec::pack_columns_s8(rows.apply(row, pixels.even, Vec::splat_words(32)),
                              rows.apply(row, pixels.odd, Vec::splat_words(32)));
}

// Luma in the studio range, and chroma. `out` holds as many lines as the sites need.
template <ChromaSites sites, class Rows>
void studio_line(uint8_t *const out[3], ColourLines in, int width, const Rows &rows) {
  uint8_t *const y = out[0], *const u = out[1], *const v = out[2];
  for (int x = 0; x < width; x += Vec::size) {
    const PixelColumns pixels(in, x, rows.span_limit);
    Vec::store(y + x, to_studio_luma(clamped_row(rows, 0, pixels)));
    if constexpr (sites == ChromaSites::even_columns) {
      const auto chroma =
          to_studio_chroma(Vec::pack_s8(rows.apply(1, pixels.even, Vec::splat_words(32)),
                                        rows.apply(2, pixels.even, Vec::splat_words(32))));
      Vec::store_low_halves(u + x / 2, chroma);
      Vec::store_high_halves(v + x / 2, chroma);
    } else if constexpr (sites == ChromaSites::all) {
      Vec::store(u + x, chroma_row(rows, 1, pixels));
      Vec::store(v + x, chroma_row(rows, 2, pixels));
    }
  }
}

// Luma in the full range and signed chroma of every pixel, for RGB output with enhancement.
template <class Rows>
void full_range_line(uint8_t *const out[3], ColourLines in, int width, const Rows &rows) {
  uint8_t *const first = out[0], *const second = out[1], *const third = out[2];
  for (int x = 0; x < width; x += Vec::size) {
    const PixelColumns pixels(in, x, rows.span_limit);
    Vec::store(first + x, clamped_row(rows, 0, pixels));
    Vec::store(second + x, chroma_row(rows, 1, pixels));
    Vec::store(third + x, chroma_row(rows, 2, pixels));
  }
}

// R, G and B. All three rows round alike.
template <class Rows>
void rgb_line(uint8_t *const out[3], ColourLines in, int width, const Rows &rows) {
  uint8_t *const first = out[0], *const second = out[1], *const third = out[2];
  for (int x = 0; x < width; x += Vec::size) {
    const PixelColumns pixels(in, x, rows.span_limit);
    Vec::store(first + x, clamped_row(rows, 0, pixels));
    Vec::store(second + x, clamped_row(rows, 1, pixels));
    Vec::store(third + x, clamped_row(rows, 2, pixels));
  }
}

// Bytes of either half of each block as words with their sign.
inline Vec::type low_signed(Vec::type v) {
  return Vec::shift_right_signed_words<8>(Vec::interleave_low_u8(Vec::zero(), v));
}
inline Vec::type high_signed(Vec::type v) {
  return Vec::shift_right_signed_words<8>(Vec::interleave_high_u8(Vec::zero(), v));
}

// Words of Y, U, V to R, G and B. Q7; sums saturate from left to right.
struct FullRangeToRgb {
  Vec::type r, g, b;

  FullRangeToRgb(Vec::type y, Vec::type u, Vec::type v) {
    const auto y128 = Vec::shift_left_words<7>(y);
    r = finish(Vec::add_saturated_words(y128, times(v, 175)));
    g = finish(Vec::subtract_saturated_words(Vec::subtract_saturated_words(y128, times(u, 43)),
                                             times(v, 89)));
    b = finish(Vec::add_saturated_words(y128, times(u, 222)));
  }

 private:
  static Vec::type times(Vec::type chroma, int factor) {
    return Vec::multiply_low(chroma, Vec::splat_words(factor));
  }
  static Vec::type finish(Vec::type sum) {
    return Vec::shift_right_signed_words<7>(Vec::add_saturated_words(sum, Vec::splat_words(32)));
  }
};

// Y, U, V of a line to R, G, B, in place: R takes Y's line, G takes U's, B takes V's.
[[gnu::flatten]] inline void full_range_to_rgb(uint8_t *const plane[3], int width) {
  for (int x = 0; x < width; x += Vec::size) {
    const auto Y = Vec::load(plane[0] + x);
    const auto U = Vec::load(plane[1] + x);
    const auto V = Vec::load(plane[2] + x);
    const FullRangeToRgb low(Vec::interleave_low_u8(Y, Vec::zero()), low_signed(U), low_signed(V));
    const FullRangeToRgb high(Vec::interleave_high_u8(Y, Vec::zero()), high_signed(U),
                              high_signed(V));
    Vec::store(plane[0] + x, Vec::pack_u8(low.r, high.r));
    Vec::store(plane[1] + x, Vec::pack_u8(low.g, high.g));
    Vec::store(plane[2] + x, Vec::pack_u8(low.b, high.b));
  }
}

}  // namespace
}  // namespace ppl::TARGET
