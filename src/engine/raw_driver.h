// One raw frame, from the size check to the means.
#pragma once

#include "kernels/passes.h"

namespace ppl {

uint8_t process_raw_frame(PplContext &ctx, Format format, uint8_t *src, uint8_t *dst,
                          uint32_t width, uint32_t height, uint32_t stride);

}  // namespace ppl
