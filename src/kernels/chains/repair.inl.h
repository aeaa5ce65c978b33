// Repair stage: hot and dead pixels give way to the lower median of their neighbours.
//
//   B and R sites     n1             green sites   n1 . n3     same colour all;
//                  n3  c  n4                       .  c .      reach: 2 lines, 2 columns
//                     n2                           n2 . n4
//
// In: front end output, unrepaired in all five lines. Out: the mosaic line in the frame.
#pragma once

#include "kernels/chains/mosaic_lines.inl.h"

namespace ppl::TARGET {
namespace {

struct RepairThresholds {
  Vec::type hot, dead, hot_factor, dead_factor;  // factors in 8.6

  explicit RepairThresholds(const Parameters &p)
      : hot(Vec::splat_words(p.medium_hot_vec)),
        dead(Vec::splat_words(p.medium_dead_vec)),
        hot_factor(Vec::splat_words(p.medium_hot_pct_vec)),
        dead_factor(Vec::splat_words(p.medium_dead_pct_vec)) {}

  // Words set where a sample is hot or dead. The products wrap in 16 bits.
  Vec::type is_defect(Vec::type c, Vec::type sum_of_neighbours) const {
    const auto scaled = [&](Vec::type factor) {
      return Vec::shift_right_signed_words<6>(Vec::multiply_low(sum_of_neighbours, factor));
    };
    return Vec::bit_or(Vec::greater_words(c, Vec::max_words(scaled(hot_factor), hot)),
                       Vec::greater_words(Vec::min_words(scaled(dead_factor), dead), c));
  }
};

// `in` holds lines y - 2 to y + 2. Only columns from the second block to the last but one are
// looked at; the caller leaves out the first and last two lines. Those pass unchanged.
inline void repair_line(uint8_t *out, const uint8_t *const in[5], int y, int width,
                        const RepairThresholds &thresholds) {
  const auto even = Vec::even_columns();
  // B and R sites stand in the columns of the line's own parity.
  const auto is_site = y % 2 == 0 ? even : Vec::splat_words(0xFF00);
  const auto repaired = [&](int x) {
    const auto neighbour = [&](int cross_line, int cross_x, int diagonal_line, int diagonal_x) {
      return Vec::blend(is_site, Vec::load(in[2 + cross_line] + x + cross_x),
                        Vec::load(in[2 + diagonal_line] + x + diagonal_x));
    };
    const auto n1 = neighbour(-2, 0, -1, -1);
    const auto n2 = neighbour(2, 0, 1, -1);
    const auto n3 = neighbour(0, -2, -1, 1);
    const auto n4 = neighbour(0, 2, 1, 1);
    const auto c = Vec::load(in[2] + x);
    const auto sum_of_even =
        Vec::add_words(Vec::add_words(Vec::columns<false>(n1), Vec::columns<false>(n2)),
                       Vec::add_words(Vec::columns<false>(n3), Vec::columns<false>(n4)));
    const auto sum_of_odd =
        Vec::add_words(Vec::add_words(Vec::columns<true>(n1), Vec::columns<true>(n2)),
                       Vec::add_words(Vec::columns<true>(n3), Vec::columns<true>(n4)));
    const auto even_defect = thresholds.is_defect(Vec::columns<false>(c), sum_of_even);
    const auto odd_defect = thresholds.is_defect(Vec::columns<true>(c), sum_of_odd);
    const auto median = Vec::min_u8(Vec::max_u8(Vec::min_u8(n1, n2), Vec::min_u8(n3, n4)),
                                    Vec::min_u8(Vec::max_u8(n1, n2), Vec::max_u8(n3, n4)));
    return Vec::blend(Vec::blend(even, even_defect, odd_defect), median, c);
  };

  Block::store(out, Block::load(in[2]));
  cover_with_registers(width - 2 * block,
                       [&](int i) { Vec::store(out + block + i, repaired(block + i)); });
  Block::store(out + width - block, Block::load(in[2] + width - block));
}

}  // namespace
}  // namespace ppl::TARGET
