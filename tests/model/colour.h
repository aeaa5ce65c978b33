#pragma once

#include "model/context.h"

namespace ppl_model {

// Derives the colour matrices from the sensor matrices and the coefficient sets.
uint8_t refresh_colour_matrix(PplContext *ctx);

}  // namespace ppl_model
