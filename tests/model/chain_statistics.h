// Statistics of the chains: windows instead of whole-frame sums, sampled on the sweep's own
// counters.
#pragma once

#include "model/chain_table.h"

namespace ppl_model {

void gather_chain(PplContext *ctx, Tier tier, const FrontEnd &front_end, Gathering gathering,
                  const SampledSteps &steps);

}  // namespace ppl_model
