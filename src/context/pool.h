// The eight contexts of the process.
#pragma once

#include "context/context.h"

namespace ppl {

// What the loader's entry does: every slot is free and all zero afterwards.
void zero_pool();

}  // namespace ppl
