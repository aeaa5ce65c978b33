// The front end of all raw kernels as look-ups.
#pragma once

#include "context/context.h"

namespace ppl {

// Composes black level, gain, delta and the two curves, from the parameters (which keep their old
// values when a new one is refused). Every writer of an ingredient calls it. Plain byte work, which
// needs no bracket.
void compose_curves(PplContext &ctx);

}  // namespace ppl
