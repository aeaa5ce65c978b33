// The second half of every setter: bring the derived state up to date.
#pragma once

#include "model/arithmetic.h"
#include "model/context.h"
#include "model/machine.h"

namespace ppl_model {

// A failed save leaves the derived state as it was and counts as success, and so does a processor
// without any tier.
template <typename Refresher>
uint8_t refresh(PplContext *ctx, Refresher refresher) {
  if (!machine::save() || !machine::has_any_tier()) return 1;
  return refresher(ctx->params) ? 1 : 0;
}

inline Pair<uint8_t> byte_pair(int32_t even, int32_t odd) {
  return {low_byte(even), low_byte(odd)};
}

}  // namespace ppl_model
