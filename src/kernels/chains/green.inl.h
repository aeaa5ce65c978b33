// Green stage: a gradient-corrected green at the B and R sites.
//
//          A(y-2)         Along each axis: the neighbours' sum less half the sum at distance 2.
//          A(y-1)         Where one gradient is above the threshold and the other below it, the
//   A(x-2) A(x-1) . ...   axis of the smaller one alone counts.
//
// In: five mosaic lines. Out: the green line, and A - G at the line's B or R sites.
#pragma once

#include "kernels/chains/frame_lines.inl.h"

namespace ppl::TIER {
namespace {

// Words of A - G, one per cell, with a reflected one at either end.
void reflect_differences(int16_t *differences, int cells) {
  differences[-1] = differences[0];
  differences[cells] = differences[cells - 1];
}

inline Vec::type load_words(const int16_t *p) {
  return Vec::load(reinterpret_cast<const uint8_t *>(p));
}
inline void store_words(int16_t *p, Vec::type v) { Vec::store(reinterpret_cast<uint8_t *>(p), v); }

inline Vec::type absolute(Vec::type v) { return Vec::max_words(v, Vec::sub_words(Vec::zero(), v)); }

inline Vec::type clamp_to_byte(Vec::type v) {
  return Vec::max_words(Vec::min_words(v, Vec::words(255)), Vec::zero());
}

// Words of the columns of one parity: the even ones, or the odd ones.
template <bool odd>
Vec::type columns(Vec::type v) {
  return odd ? Vec::shift_right_words<8>(v) : Vec::bit_and(v, Vec::words(0x00FF));
}

// Both columns of each pair, as bytes, from words of either.
inline Vec::type join_columns(Vec::type even, Vec::type odd) {
  return Vec::bit_or(even, Vec::shift_left_words<8>(odd));
}

// `odd` for odd lines, whose sites stand in the odd columns.
template <bool odd>
void green_line(uint8_t *green, int16_t *differences, const uint8_t *const in[5], int width,
                Vec::type threshold) {
  for (int x = 0; x < width; x += Vec::bytes) {
    const auto site = [&](int line, int dx) {
      return columns<odd>(Vec::load(in[2 + line] + x + dx));
    };
    // An axis: estimate and gradient from its four samples.
    const auto up = site(-1, 0), down = site(1, 0);
    const auto left = site(0, -1), right = site(0, 1);
    const auto V =
        Vec::sub_words(Vec::add_words(up, down),
                       Vec::shift_right_signed_words<1>(Vec::add_words(site(-2, 0), site(2, 0))));
    const auto H =
        Vec::sub_words(Vec::add_words(left, right),
                       Vec::shift_right_signed_words<1>(Vec::add_words(site(0, -2), site(0, 2))));
    const auto V_gradient = absolute(Vec::sub_words(up, down));
    const auto H_gradient = absolute(Vec::sub_words(left, right));
    const auto larger = Vec::max_words(V_gradient, H_gradient);
    const auto smaller = Vec::min_words(V_gradient, H_gradient);
    const auto directional =
        Vec::bit_and(Vec::greater_words(larger, threshold), Vec::greater_words(threshold, smaller));
    // A quarter of V + H, or of 2 V or 2 H: what makes one of the other is their difference.
    const auto other_axis = Vec::bit_and(directional, Vec::sub_words(H, V));
    const auto takes_V = Vec::equal_words(larger, H_gradient);
    const auto moved = Vec::sub_words(Vec::bit_xor(other_axis, takes_V), takes_V);
    const auto D = Vec::shift_right_signed_words<2>(Vec::add_words(Vec::add_words(V, H), moved));

    const auto own = Vec::load(in[2] + x);
    const auto A = columns<odd>(own);
    const auto G = clamp_to_byte(Vec::add_words(Vec::shift_right_words<1>(A), D));
    Vec::store(green + x, odd ? join_columns(columns<false>(own), G)
                              : Vec::bit_or(G, Vec::and_not(Vec::words(0x00FF), own)));
    store_words(differences + x / 2, Vec::sub_words(A, G));
  }
  reflect_differences(differences, width / 2);
}

// A - G alone, from a mosaic line and its green line.
template <bool odd>
void difference_line(int16_t *differences, const uint8_t *mosaic, const uint8_t *green, int width) {
  for (int x = 0; x < width; x += Vec::bytes) {
    store_words(differences + x / 2, Vec::sub_words(columns<odd>(Vec::load(mosaic + x)),
                                                    columns<odd>(Vec::load(green + x))));
  }
  reflect_differences(differences, width / 2);
}

}  // namespace
}  // namespace ppl::TIER
