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
  const auto pair = [&](int i) {
    return table.even_column[samples[2 * i]] | table.odd_column[samples[2 * i + 1]];
  };
#if TIER_BYTES == 8
  return Vec::from_words(pair(0), pair(1), pair(2), pair(3));
#else
  return Vec::from_words(pair(0), pair(1), pair(2), pair(3), pair(4), pair(5), pair(6), pair(7));
#endif
}

}  // namespace
}  // namespace ppl::TIER
