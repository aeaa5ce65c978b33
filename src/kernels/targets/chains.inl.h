// The chains of a target: qualities 0, 1, 2, 10, 11, 12 and 14.
#pragma once

#include "kernels/chains/chain.inl.h"
#include "kernels/passes.h"

namespace ppl::TARGET {

constinit const ChainPasses chain_passes = {.run = run_chain};

}  // namespace ppl::TARGET
