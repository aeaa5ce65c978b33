// Frame plans: the statistics grid and the normalisers of each tier.
#pragma once

#include "model/context.h"

namespace ppl_model {

// True if a plan of this size divides by zero on a tier of block width B.
bool plan_divides_by_zero(Tier tier, uint32_t width, uint32_t height);

void build_plan(PplContext *ctx, Tier tier);

// True if the tier's plan is not that of the stored size.
bool plan_is_stale(const PplContext *ctx, Tier tier);

}  // namespace ppl_model
