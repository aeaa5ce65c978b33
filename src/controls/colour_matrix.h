// Sensor matrices and coefficient sets, multiplied out for the kernels.
#pragma once

#include "context/context.h"

namespace ppl {

// Rebuilds the colour matrix parameters, with a setter's result.
uint8_t refresh_colour_matrices(PplContext &ctx);

}  // namespace ppl
