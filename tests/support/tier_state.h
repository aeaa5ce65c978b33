// What the library's record of a stream keeps for one tier.
#pragma once

#include "context/context.h"
#include "support/tier.h"

namespace ppl_test {

inline ppl::TierState &tier_state(PplContext *ctx, Tier tier) {
  return tier == Tier::p3 ? ctx->p3 : ctx->sse2;
}

}  // namespace ppl_test
