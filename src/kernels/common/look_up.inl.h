// Black level, gain, delta and curve, by composed look-up tables.
#pragma once

#include "kernels/common/tier.inl.h"

namespace ppl::TARGET {
namespace {

// A register of samples of each line of a pair.
template <class R>
struct Samples {
  typename R::type line[2];

  static Samples load(const uint8_t *line0, const uint8_t *line1) {
    return {{R::load(line0), R::load(line1)}};
  }
};

// A register of samples of one line through its line kind's tables. Byte by byte through general
// registers: stores of single bytes could alias the tables and would stall the next look-up.
template <class R>
inline typename R::type look_up(const CurveTable &table, const uint8_t *samples) {
  return R::from_dwords([&](int i) {
    return table.column[0][samples[4 * i]] | table.column[1][samples[4 * i + 1]] |
           table.column[2][samples[4 * i + 2]] | table.column[3][samples[4 * i + 3]];
  });
}

}  // namespace
}  // namespace ppl::TARGET
