// Why a new frame size was not taken.
#pragma once

#include "model/context.h"

namespace ppl_model {

enum class SizeResult { taken, beyond_limit, zero_divisor };

// ppl_new_frame_size, telling the two refusals apart: a raw driver treats them differently.
SizeResult take_frame_size(PplContext *ctx, uint32_t width, uint32_t height, uint32_t stride);

}  // namespace ppl_model
