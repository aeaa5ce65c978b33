// Edge enhancement of luma: what lies between two thresholds is amplified, the rest left alone.
//
//   a b c
//   d e f     reach: 1 line, 1 column
//   g h i
#pragma once

#include "kernels/chains/matrix.inl.h"

namespace ppl::TIER {
namespace {

struct Enhancement {
  Vec::type low, high, factor;  // the factor in 1 / 64

  explicit Enhancement(const Parameters &p)
      : low(load(p.edge_threshold_vec)),
        high(load(p.edge_threshold2_vec)),
        factor(load(p.edge_enhance_factor_vec)) {}

  // What to add to a sample. The product wraps in 16 bits.
  Vec::type correction(Vec::type measure, Vec::type detail) const {
    const auto in_band =
        Vec::bit_and(Vec::greater_words(measure, low), Vec::greater_words(high, measure));
    return Vec::bit_and(in_band,
                        Vec::shift_right_signed_words<6>(Vec::multiply_low(detail, factor)));
  }
};

// A half register of bytes as words, from `p` on.
inline Vec::type bytes_as_words(const uint8_t *p) {
  return Vec::interleave_low_u8(Vec::load(p), Vec::zero());
}

// Gradient form. `in` is the line above, the line and the line below, columns reflected. The detail
// is the sum of both gradients, not their size: a relief along one diagonal. Meant so.
void gradient_line(uint8_t *out, const uint8_t *const in[3], int width, const Enhancement &e) {
  const auto enhanced = [&](int x) {
    const auto at = [&](int line, int column) { return bytes_as_words(in[1 + line] + x + column); };
    const auto a = at(-1, -1), b = at(-1, 0), c = at(-1, 1);
    const auto d = at(0, -1), f = at(0, 1);
    const auto g = at(1, -1), h = at(1, 0), i = at(1, 1);
    // Gx + Gy = f + h - b - d + 2 (i - a) and Gx - Gy = f + b - d - h + 2 (c - g); the larger of
    // their sizes is |Gx| + |Gy|.
    const auto f_d = Vec::sub_words(f, d);
    const auto h_b = Vec::sub_words(h, b);
    const auto i_a = Vec::sub_words(i, a);
    const auto c_g = Vec::sub_words(c, g);
    const auto sum = Vec::add_words(Vec::add_words(f_d, h_b), Vec::add_words(i_a, i_a));
    const auto difference = Vec::add_words(Vec::sub_words(f_d, h_b), Vec::add_words(c_g, c_g));
    const auto measure = Vec::max_words(absolute(sum), absolute(difference));
    return Vec::add_words(at(0, 0), e.correction(measure, sum));
  };
  constexpr int half = Vec::bytes / 2;
  for (int x = 0; x < width; x += Vec::bytes) {
    Vec::store(out + x, Vec::pack_u8(enhanced(x), enhanced(x + half)));
  }
}

// Laplacian form, on the four direct neighbours. Two columns at the right end are served otherwise
// than by reflection, which is required: the last block takes its own first pixel's east neighbour
// for the west one too, and the last pixel's east neighbour is the next line's first.
void laplacian_line(uint8_t *out, uint8_t *const in[3], const uint8_t *next_line, int width,
                    const Enhancement &e) {
  const auto enhanced = [&](const uint8_t *above, const uint8_t *line, const uint8_t *below) {
    const auto c = bytes_as_words(line);
    const auto neighbours =
        Vec::add_words(Vec::add_words(bytes_as_words(above), bytes_as_words(below)),
                       Vec::add_words(bytes_as_words(line - 1), bytes_as_words(line + 1)));
    const auto L = Vec::sub_words(Vec::shift_left_words<2>(c), neighbours);
    return Vec::add_words(c, e.correction(absolute(L), L));
  };
  constexpr int half = Vec::bytes / 2;
  const auto block = [&](int x) {
    return Vec::pack_u8(enhanced(in[0] + x, in[1] + x, in[2] + x),
                        enhanced(in[0] + x + half, in[1] + x + half, in[2] + x + half));
  };
  for (int x = 0; x < width; x += Vec::bytes) Vec::store(out + x, block(x));

  const int last = width - Vec::bytes;
  uint8_t *const line = in[1];
  const uint8_t west = line[last - 1];
  const uint8_t east = line[width];
  line[last - 1] = line[last + 1];
  line[width] = next_line[0];
  Vec::store(out + last, block(last));
  line[last - 1] = west;
  line[width] = east;
}

// Chroma box of quality 14: 3 by 3, scaled by 28 / 256, which is a little less than 1 / 9. For the
// even columns; the first and the last block pass unfiltered. `in` is three lines of signed bytes,
// `out` chroma in the studio range.
void box_line(uint8_t *out, const uint8_t *const in[3], int width, bool filters) {
  for (int x = 0; x < width; x += Vec::bytes) {
    const auto at = [&](int line, int column) {
      // Even columns of the shifted line, with their sign.
      return Vec::shift_right_signed_words<8>(
          Vec::shift_left_words<8>(Vec::load(in[1 + line] + x + column)));
    };
    const auto row = [&](int line) {
      return Vec::add_words(Vec::add_words(at(line, -1), at(line, 0)), at(line, 1));
    };
    const auto sum = Vec::add_words(Vec::add_words(row(-1), row(0)), row(1));
    const auto mean = Vec::shift_right_signed_words<8>(Vec::multiply_low(sum, Vec::words(28)));
    const bool inside = filters && x >= Vec::bytes && x + Vec::bytes <= width - Vec::bytes;
    const auto value = inside ? mean : at(0, 0);
    Vec::store_low_half(out + x / 2, to_studio_chroma(Vec::pack_s8(value, value)));
    if (filters && !inside && x >= Vec::bytes && x < width - Vec::bytes) {
      // A block that the last one's border cuts through.
      uint8_t means[Vec::bytes];
      Vec::store(means, to_studio_chroma(Vec::pack_s8(mean, mean)));
      for (int i = 0; x + 2 * i < width - Vec::bytes; ++i) out[x / 2 + i] = means[i];
    }
  }
}

}  // namespace
}  // namespace ppl::TIER
