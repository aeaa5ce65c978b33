// Qualities 3 and 13.
#pragma once

#include "model/output.h"

namespace ppl_model {

void run_quality_3(PplContext *ctx, Tier tier, Format format, uint8_t *src, Output &output);
// I420 and RGB24 only.
void run_quality_13(PplContext *ctx, Tier tier, Format format, uint8_t *src, Output &output);

}  // namespace ppl_model
