// Repair of hot and dead pixels between the front end and the demosaic.
#pragma once

#include "model/context.h"
#include "model/plane.h"

namespace ppl_model {

// Decides on unrepaired samples throughout. The first and the last block column and the two
// outermost lines at the top and at the bottom stay as they are.
Plane repair_pixels(const Parameters &params, const Plane &samples, int B);

}  // namespace ppl_model
