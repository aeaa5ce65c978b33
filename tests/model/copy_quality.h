// Qualities 4 and 9: the raw frame as a grey picture.
#pragma once

#include "model/output.h"

namespace ppl_model {

void run_copy(PplContext *ctx, Tier tier, Format format, const uint8_t *src, uint8_t *dst);

}  // namespace ppl_model
