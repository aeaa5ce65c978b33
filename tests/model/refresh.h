// The second half of every setter: bring the derived state of each tier up to date.
#pragma once

#include "model/arithmetic.h"
#include "model/context.h"
#include "model/machine.h"

namespace ppl_model {

// A failed save leaves the derived state as it was and counts as success. Otherwise the refresher
// runs for each tier that the processor has, and the results are joined.
template <typename Refresher>
uint8_t refresh_each_tier(PplContext *ctx, Refresher refresher) {
  if (!machine::save()) return 1;
  bool done = true;
  for (Tier tier : all_tiers)
    if (machine::has_tier(tier)) done = refresher(ctx->tier(tier).params) && done;
  return done ? 1 : 0;
}

inline WordLanes word_broadcast(int32_t value) {
  WordLanes lanes;
  lanes.fill(wrap16(value));
  return lanes;
}

inline ByteLanes byte_broadcast(int32_t value) {
  ByteLanes lanes;
  lanes.fill(low_byte(value));
  return lanes;
}

// Lanes that alternate between the even and the odd column of a mosaic line.
inline ByteLanes byte_pair(int32_t even, int32_t odd) {
  ByteLanes lanes;
  for (size_t i = 0; i < lanes.size(); ++i) lanes[i] = low_byte(i % 2 == 0 ? even : odd);
  return lanes;
}

inline void set_even_lanes(WordLanes &lanes, int32_t value) { lanes[0] = lanes[2] = wrap16(value); }
inline void set_odd_lanes(WordLanes &lanes, int32_t value) { lanes[1] = lanes[3] = wrap16(value); }

// A tested word broadcast: refuses what does not fit 16 bits.
inline bool refresh_word(WordLanes &lanes, int32_t value) {
  if (!fits_word(value)) return false;
  lanes = word_broadcast(value);
  return true;
}

}  // namespace ppl_model
