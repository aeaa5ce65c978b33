// What follows from the windows' means, with the arithmetic of the library's readers. Those write
// to memory of the process, which two threads would share.
#include "ppl.hpp"

namespace ppl {
namespace {

constexpr uint32_t window_count = 48;

constexpr bool is_central(size_t row, size_t column) {
  return (row == 2 || row == 3) && (column == 3 || column == 4);
}

constexpr bool is_at_the_edge(size_t row, size_t column) {
  return row == 0 || row == 5 || column == 0 || column == 7;
}

struct Sums {
  Mean central, ring;
};

void add(Mean &sum, const Mean &mean) {
  sum.r += mean.r;
  sum.g += mean.g;
  sum.b += mean.b;
}

Sums sums_of(const Statistics &statistics) {
  Sums sums;
  for (size_t row = 0; row < 6; ++row) {
    for (size_t column = 0; column < 8; ++column) {
      if (is_at_the_edge(row, column)) continue;
      add(is_central(row, column) ? sums.central : sums.ring, statistics.windows[row][column]);
    }
  }
  return sums;
}

}  // namespace

Mean Statistics::centre() const {
  if (quality == 3) return whole_frame;
  const Mean sum = sums_of(*this).central;
  return {sum.r / 4, sum.g / 4, sum.b / 4};
}

Mean Statistics::weighted_to_centre(uint32_t central_weight) const {
  if (quality == 3 || central_weight == 0) return whole_frame;
  const Sums sums = sums_of(*this);
  // Every window once, the ring once more, the centre as often as it is to count more.
  const uint32_t more = central_weight - 1;
  const auto divisor = static_cast<int32_t>(4 * more + window_count + 20);
  const auto mean = [&](uint32_t central, uint32_t ring, uint32_t all) {
    const uint32_t total = more * central + ring + window_count * all;
    return static_cast<uint32_t>(static_cast<int32_t>(total) / divisor);
  };
  return {mean(sums.central.r, sums.ring.r, all_windows.r),
          mean(sums.central.g, sums.ring.g, all_windows.g),
          mean(sums.central.b, sums.ring.b, all_windows.b)};
}

}  // namespace ppl
