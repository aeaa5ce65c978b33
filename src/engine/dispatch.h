// From a frame and the quality control to the kernels.
#pragma once

#include "engine/machine.h"

namespace ppl {

// Runs what `quality` asks for, counts the frame and leaves the registers in order. Returns 0 for
// the copy qualities, otherwise 1.
uint8_t dispatch_quality(PplContext &ctx, const Machine &machine, Format format,
                         const Buffers &buffers);

}  // namespace ppl
