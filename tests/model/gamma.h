#pragma once

#include "model/context.h"

namespace ppl_model {

// Composes the contrast curve with both gamma tables: contrast first, gamma after it.
void recompose_contrast_and_gamma(PplContext *ctx);

}  // namespace ppl_model
