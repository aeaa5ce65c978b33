// Accurate green: gradient-corrected, along the direction of the smaller gradient.
#pragma once

#include "model/chain_front_end.h"

namespace ppl_model {

// Green at every pixel; native where the mosaic has it.
Plane interpolate_green(const Parameters &params, const StageLines &frame);

}  // namespace ppl_model
