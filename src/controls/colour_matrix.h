// Sensor matrices and coefficient sets, multiplied out for the kernels.
#pragma once

#include "frame/context.h"

namespace ppl {

// Rebuilds the colour matrix entries of each tier, with a setter's result.
uint8_t refresh_colour_matrices(PplContext &ctx);

}  // namespace ppl
