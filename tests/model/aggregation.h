#pragma once

#include "model/context.h"

namespace ppl_model {

// Before a frame: zeroes every sum, histogram and count.
void clear_statistics(PplContext *ctx);

// After a frame: turns the sums into means, in 8.8, and the counts into counts of the whole frame.
void aggregate_statistics(PplContext *ctx);

}  // namespace ppl_model
