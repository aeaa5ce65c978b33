// From a frame and the quality control to the kernels.
#pragma once

#include "kernels/tier.h"

namespace ppl {

// Runs what `quality` asks for, counts the frame and leaves the MMX state clear. Returns 0 for the
// copy qualities, otherwise 1.
uint8_t dispatch_quality(PplContext &ctx, const FramePlan &plan, const TierKernels &kernels,
                         Format format, const Buffers &buffers);

}  // namespace ppl
