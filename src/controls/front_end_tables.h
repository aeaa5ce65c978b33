// The front end of all raw kernels as look-ups.
#pragma once

#include "frame/context.h"

namespace ppl {

// Composes black level, gain, delta and the two curves for one tier, from the derived entries
// (which keep their old values when a new one is refused). Every writer of an ingredient calls it.
template <int B>
void compose_front_end(const PplContext &ctx, ParameterBlock<B> &params);

// The same for both tiers. A curve needs no bracket: this is plain byte work.
void compose_front_ends(PplContext &ctx);

}  // namespace ppl
