// The contrast curve and its products with the gamma curves.
#pragma once

#include "context/context.h"

namespace ppl {

// Contrast first, gamma after it; then the front end, which reads both. To be called after any
// change of contrast_table, yuv_gamma_table or rgb_gamma_table.
void compose_contrast_gamma(PplContext &ctx);

}  // namespace ppl
