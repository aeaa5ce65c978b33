// What the model's other files ask the machine.
#pragma once

#include "model/model.h"

namespace ppl_model::machine {

bool has_tier(Tier tier);
bool has_any_tier();

// Tries a save of the floating-point state; false when it failed.
bool save();

}  // namespace ppl_model::machine
