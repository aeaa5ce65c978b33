// Green stage: a gradient-corrected green at the B and R sites.
//
//          A(y-2)         Along each axis: the neighbours' sum less half the sum at distance 2.
//          A(y-1)         Where one gradient is above the threshold and the other below it, the
//   A(x-2) A(x-1) . ...   axis of the smaller one alone counts.
//
// In: five mosaic lines. Out: the green line, and A - G at the line's B or R sites.
#pragma once

#include "kernels/chains/mosaic_lines.inl.h"

namespace ppl::TARGET {
namespace {

// Words of A - G, one per cell, with a reflected one at either end.
inline void reflect_differences(Word *differences, int cells) {
  differences[-1] = differences[0];
  differences[cells] = differences[cells - 1];
}

// `odd` for odd lines, whose sites stand in the odd columns.
template <bool odd>
void green_line(uint8_t *green, Word *differences, const uint8_t *const in[5], int width,
                Vec::type threshold) {
  for (int x = 0; x < width; x += Vec::size) {
    const auto site = [&](int line, int dx) {
      return Vec::columns<odd>(Vec::load(in[2 + line] + x + dx));
    };
    // An axis: estimate and gradient from its four samples.
    const auto up = site(-1, 0), down = site(1, 0);
    const auto left = site(0, -1), right = site(0, 1);
    const auto V = Vec::subtract_words(
        Vec::add_words(up, down),
        Vec::shift_right_signed_words<1>(Vec::add_words(site(-2, 0), site(2, 0))));
    const auto H = Vec::subtract_words(
        Vec::add_words(left, right),
        Vec::shift_right_signed_words<1>(Vec::add_words(site(0, -2), site(0, 2))));
    const auto V_gradient = Vec::absolute_words(Vec::subtract_words(up, down));
    const auto H_gradient = Vec::absolute_words(Vec::subtract_words(left, right));
    const auto larger = Vec::max_words(V_gradient, H_gradient);
    const auto smaller = Vec::min_words(V_gradient, H_gradient);
    const auto directional =
        Vec::bit_and(Vec::greater_words(larger, threshold), Vec::greater_words(threshold, smaller));
    // A quarter of V + H, or of 2 V or 2 H: what makes one of the other is their difference.
    const auto other_axis = Vec::bit_and(directional, Vec::subtract_words(H, V));
    const auto takes_V = Vec::equal_words(larger, H_gradient);
    const auto moved = Vec::subtract_words(Vec::bit_xor(other_axis, takes_V), takes_V);
    const auto D = Vec::shift_right_signed_words<2>(Vec::add_words(Vec::add_words(V, H), moved));

    const auto own = Vec::load(in[2] + x);
    const auto A = Vec::columns<odd>(own);
    const auto G = Vec::clamp_words_to_byte(Vec::add_words(Vec::shift_right_words<1>(A), D));
    Vec::store(green + x, odd ? Vec::join_columns(Vec::columns<false>(own), G)
                              : Vec::bit_or(G, Vec::and_not(Vec::even_columns(), own)));
    Vec::store_words(differences + x / 2, Vec::subtract_words(A, G));
  }
  reflect_differences(differences, width / 2);
}

// A - G alone, from a mosaic line and its green line.
template <bool odd>
void difference_line(Word *differences, const uint8_t *mosaic, const uint8_t *green, int width) {
  for (int x = 0; x < width; x += Vec::size) {
    Vec::store_words(differences + x / 2,
                     Vec::subtract_words(Vec::columns<odd>(Vec::load(mosaic + x)),
                                         Vec::columns<odd>(Vec::load(green + x))));
  }
  reflect_differences(differences, width / 2);
}

}  // namespace
}  // namespace ppl::TARGET
