// Black level, gain, delta and curve, by composed look-up tables.
#pragma once

#include "frame/context.h"
#include "kernels/lanes/vec.inl.h"

namespace ppl::TIER {
namespace {

using Parameters = ParameterBlock<TIER_BYTES>;

Parameters &parameters_of(PplContext &ctx) {
#if TIER_BYTES == 8
  return ctx.p3_params;
#else
  return ctx.sse2_params;
#endif
}

// A register of samples of each line of a pair.
struct Group {
  Vec::type line[2];

  static Group load(const uint8_t *line0, const uint8_t *line1) {
    return {{Vec::load(line0), Vec::load(line1)}};
  }
};

// A register of samples of one line through its line kind's tables. Byte by byte through general
// registers: stores of single bytes could alias the tables and would stall the next look-up.
inline Vec::type look_up(const FrontEndTable &table, const uint8_t *samples) {
  const auto run = [&](int i) {
    return table.column[0][samples[4 * i]] | table.column[1][samples[4 * i + 1]] |
           table.column[2][samples[4 * i + 2]] | table.column[3][samples[4 * i + 3]];
  };
#if TIER_BYTES == 8
  return Vec::from_dwords(run(0), run(1));
#else
  return Vec::from_dwords(run(0), run(1), run(2), run(3));
#endif
}

}  // namespace
}  // namespace ppl::TIER
