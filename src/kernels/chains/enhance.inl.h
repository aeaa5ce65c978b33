// Edge enhancement of luma: what lies between two thresholds is amplified, the rest left alone.
//
//   a b c
//   d e f     reach: 1 line, 1 column
//   g h i
#pragma once

#include "kernels/chains/matrix.inl.h"

namespace ppl::TARGET {
namespace {

struct Enhancement {
  int low, high, factor;  // the factor in 1 / 64

  explicit Enhancement(const Parameters &p)
      : low(p.edge_threshold_vec), high(p.edge_threshold2_vec), factor(p.edge_enhance_factor_vec) {}

  // One sample with its correction.
  uint8_t apply(int sample, int measure, int detail) const {
    const bool in_band = measure > low && high > measure;
    const int value = sample + (in_band ? static_cast<int16_t>(detail * factor) >> 6 : 0);
    return static_cast<uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
  }

  // The left column of a window, from above.
  struct Left {
    int a, d, g;
  };

  // The gradient form for column x of the middle line of three, with its left column given.
  uint8_t apply_gradient(const Left &left, const uint8_t *const lines[3], int x) const {
    const int b = lines[0][x], e = lines[1][x], h = lines[2][x];
    const int c = lines[0][x + 1], f = lines[1][x + 1], i = lines[2][x + 1];
    const int Gx = c + f + i - left.a - left.d - left.g;
    const int Gy = left.g + h + i - left.a - b - c;
    return apply(e, (Gx < 0 ? -Gx : Gx) + (Gy < 0 ? -Gy : Gy), Gx + Gy);
  }
};

// The same in registers.
struct EnhancementVec {
  Vec::type low, high, factor;

  explicit EnhancementVec(const Enhancement &e)
      : low(Vec::splat_words(e.low)),
        high(Vec::splat_words(e.high)),
        factor(Vec::splat_words(e.factor)) {}

  // What to add to samples. The product wraps in 16 bits.
  Vec::type correction(Vec::type measure, Vec::type detail) const {
    const auto in_band =
        Vec::bit_and(Vec::greater_words(measure, low), Vec::greater_words(high, measure));
    return Vec::bit_and(in_band,
                        Vec::shift_right_signed_words<6>(Vec::multiply_low(detail, factor)));
  }
};

// Bytes from the words that `words_of` makes of either half: widen(v) takes that half of v.
template <class WordsOf>
inline Vec::type in_halves(WordsOf words_of) {
  const auto low = [](Vec::type v) { return Vec::interleave_low_u8(v, Vec::zero()); };
  const auto high = [](Vec::type v) { return Vec::interleave_high_u8(v, Vec::zero()); };
  const auto low_words = words_of(low);
  // Eight MMX registers do not hold a window: there each half loads it by itself.
  if constexpr (Vec::size == 8) asm volatile("" ::: "memory");
  return Vec::pack_u8(low_words, words_of(high));
}

// Gradient form. `in` is the line above, the line and the line below, columns reflected. The detail
// is the sum of both gradients, not their size: a relief along one diagonal. Meant so:
// docs/oddities.md, "Relief".
[[gnu::flatten]] inline void gradient_line(uint8_t *out, const uint8_t *const in[3], int width,
                                           const Enhancement &enhancement) {
  const EnhancementVec e_(enhancement);
  for (int x = 0; x < width; x += Vec::size) {
    const auto enhanced = [&](auto widen) {
      const auto at = [&](int line, int column) {
        return widen(Vec::load(in[1 + line] + x + column));
      };
      const auto a = at(-1, -1), b = at(-1, 0), c = at(-1, 1);
      const auto d = at(0, -1), f = at(0, 1);
      const auto g = at(1, -1), h = at(1, 0), i = at(1, 1);
      // Gx + Gy = f + h - b - d + 2 (i - a) and Gx - Gy = f + b - d - h + 2 (c - g); the larger of
      // their sizes is |Gx| + |Gy|.
      const auto f_d = Vec::subtract_words(f, d);
      const auto h_b = Vec::subtract_words(h, b);
      const auto i_a = Vec::subtract_words(i, a);
      const auto c_g = Vec::subtract_words(c, g);
      const auto sum = Vec::add_words(Vec::add_words(f_d, h_b), Vec::add_words(i_a, i_a));
      const auto difference =
          Vec::add_words(Vec::subtract_words(f_d, h_b), Vec::add_words(c_g, c_g));
      const auto measure =
          Vec::max_words(Vec::absolute_words(sum), Vec::absolute_words(difference));
      return Vec::add_words(at(0, 0), e_.correction(measure, sum));
    };
    Vec::store(out + x, in_halves(enhanced));
  }
}

// Laplacian form, on the four direct neighbours. Two columns at the right end are served otherwise
// than by reflection: the first pixel of the last block takes its east neighbour for the west one
// too, and the last pixel's east neighbour is the next line's first. Meant so: docs/oddities.md,
// "Quality 14 at the right end".
inline void laplacian_line(uint8_t *out, const uint8_t *const in[3], const uint8_t *next_line,
                           int width, const Enhancement &enhancement) {
  const EnhancementVec e(enhancement);
  for (int x = 0; x < width; x += Vec::size) {
    const auto enhanced = [&](auto widen) {
      const auto at = [&](int line, int column) {
        return widen(Vec::load(in[1 + line] + x + column));
      };
      const auto c = at(0, 0);
      const auto neighbours =
          Vec::add_words(Vec::add_words(at(-1, 0), at(1, 0)), Vec::add_words(at(0, -1), at(0, 1)));
      const auto L = Vec::subtract_words(Vec::shift_left_words<2>(c), neighbours);
      return Vec::add_words(c, e.correction(Vec::absolute_words(L), L));
    };
    Vec::store(out + x, in_halves(enhanced));
  }

  const auto patch = [&](int x, int west, int east) {
    const int L = 4 * in[1][x] - in[0][x] - in[2][x] - west - east;
    out[x] = enhancement.apply(in[1][x], L < 0 ? -L : L, L);
  };
  const int last = width - block;
  patch(last, in[1][last + 1], in[1][last + 1]);
  patch(width - 1, in[1][width - 2], next_line[0]);
}

// Chroma box of quality 14: 3 by 3, scaled by 28 / 256, which is a little less than 1 / 9. For the
// even columns; the first and the last block pass unfiltered. `in` is three lines of signed bytes,
// `out` chroma in the studio range.
template <class R>
auto box_cells(const uint8_t *const in[3], int x, bool filters) {
  const auto at = [&](int line, int column) {
    // Even columns of the shifted line, with their sign.
    return R::template shift_right_signed_words<8>(
        R::template shift_left_words<8>(R::load(in[1 + line] + x + column)));
  };
  auto value = at(0, 0);
  if (filters) {
    const auto row = [&](int line) {
      return R::add_words(R::add_words(at(line, -1), at(line, 0)), at(line, 1));
    };
    const auto sum = R::add_words(R::add_words(row(-1), row(0)), row(1));
    value = R::template shift_right_signed_words<8>(R::multiply_low(sum, R::splat_words(28)));
  }
  return to_studio_chroma<R>(R::pack_s8(value, value));
}

inline void box_line(uint8_t *out, const uint8_t *const in[3], int width, bool filters) {
  for (int x = 0; x < width; x += Vec::size) {
    Vec::store_low_halves(out + x / 2, box_cells<Vec>(in, x, filters));
  }
  if (!filters) return;
  const int borders[] = {0, width - block};
  for (const int x : borders) {
    Block::store_low_halves(out + x / 2, box_cells<Block>(in, x, false));
  }
}

}  // namespace
}  // namespace ppl::TARGET
