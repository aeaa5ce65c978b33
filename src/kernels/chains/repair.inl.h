// Medium stage: hot and dead pixels give way to the lower median of their neighbours.
//
//   B and R sites     n1             green sites   n1 . n3     same colour all;
//                  n3  c  n4                       .  c .      reach: 2 lines, 2 columns
//                     n2                           n2 . n4
//
// In: front end output, unrepaired in all five lines. Out: the mosaic line in the frame.
#pragma once

#include "kernels/chains/frame_lines.inl.h"

namespace ppl::TIER {
namespace {

struct RepairThresholds {
  Vec::type hot, dead, hot_factor, dead_factor;  // factors in 8.6

  explicit RepairThresholds(const Parameters &p)
      : hot(load(p.medium_hot_vec)),
        dead(load(p.medium_dead_vec)),
        hot_factor(load(p.medium_hot_pct_vec)),
        dead_factor(load(p.medium_dead_pct_vec)) {}

  // Words set where a sample is hot or dead. The products wrap in 16 bits.
  Vec::type is_defect(Vec::type c, Vec::type sum_of_neighbours) const {
    const auto h =
        Vec::shift_right_signed_words<6>(Vec::multiply_low(sum_of_neighbours, hot_factor));
    const auto d =
        Vec::shift_right_signed_words<6>(Vec::multiply_low(sum_of_neighbours, dead_factor));
    return Vec::bit_or(Vec::greater_words(c, Vec::max_words(h, hot)),
                       Vec::greater_words(Vec::min_words(d, dead), c));
  }
};

// `in` holds lines y - 2 to y + 2. Only columns from the second block to the last but one are
// looked at; the caller leaves out the first and last two lines. Those pass unchanged.
void repair_line(uint8_t *out, const uint8_t *const in[5], int y, int width,
                 const RepairThresholds &thresholds) {
  const auto even = Vec::words(0x00FF);
  // B and R sites stand in the columns of the line's own parity.
  const auto is_site = y % 2 == 0 ? even : Vec::words(0xFF00);
  const int end = width - Vec::bytes;
  const auto repaired = [&](int x) {
    const auto neighbour = [&](int cross_line, int cross_x, int diagonal_line, int diagonal_x) {
      return blend(is_site, Vec::load(in[2 + cross_line] + x + cross_x),
                   Vec::load(in[2 + diagonal_line] + x + diagonal_x));
    };
    const auto n1 = neighbour(-2, 0, -1, -1);
    const auto n2 = neighbour(2, 0, 1, -1);
    const auto n3 = neighbour(0, -2, -1, 1);
    const auto n4 = neighbour(0, 2, 1, 1);
    const auto c = Vec::load(in[2] + x);
    const auto sum_of_even =
        Vec::add_words(Vec::add_words(Vec::bit_and(n1, even), Vec::bit_and(n2, even)),
                       Vec::add_words(Vec::bit_and(n3, even), Vec::bit_and(n4, even)));
    const auto sum_of_odd = Vec::add_words(
        Vec::add_words(Vec::shift_right_words<8>(n1), Vec::shift_right_words<8>(n2)),
        Vec::add_words(Vec::shift_right_words<8>(n3), Vec::shift_right_words<8>(n4)));
    const auto even_defect = thresholds.is_defect(Vec::bit_and(c, even), sum_of_even);
    const auto odd_defect = thresholds.is_defect(Vec::shift_right_words<8>(c), sum_of_odd);
    const auto median = Vec::min_u8(Vec::max_u8(Vec::min_u8(n1, n2), Vec::min_u8(n3, n4)),
                                    Vec::min_u8(Vec::max_u8(n1, n2), Vec::max_u8(n3, n4)));
    return blend(blend(even, even_defect, odd_defect), median, c);
  };

  int x = 0;
  for (; x < Vec::bytes; ++x) out[x] = in[2][x];
  for (; x + Vec::bytes <= end; x += Vec::bytes) Vec::store(out + x, repaired(x));
  if (x < end) {
    uint8_t last[Vec::bytes];
    Vec::store(last, repaired(x));
    for (int i = 0; x < end; ++x, ++i) out[x] = last[i];
  }
  for (; x < width; ++x) out[x] = in[2][x];
}

}  // namespace
}  // namespace ppl::TIER
