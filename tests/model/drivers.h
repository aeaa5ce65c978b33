#pragma once

#include "model/output.h"

namespace ppl_model {

uint8_t process_raw(PplContext *ctx, Format format, uint8_t *src, uint8_t *dst, uint32_t width,
                    uint32_t height, uint32_t stride);

// True if the address is a multiple of `boundary`.
bool is_aligned(const uint8_t *pointer, uintptr_t boundary);

}  // namespace ppl_model
