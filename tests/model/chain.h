// The multi-pass qualities: 0, 1, 2, 10, 11, 12 and 14.
#pragma once

#include "model/output.h"

namespace ppl_model {

// One frame through the chain of the context's quality: consumes src, writes the picture, gathers
// the sums.
void run_chain(PplContext *ctx, Tier tier, Format format, uint8_t *src, Output &output);

}  // namespace ppl_model
