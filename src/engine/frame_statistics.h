// What surrounds a raw frame: clearing the sums before it, making means of them after it.
#pragma once

#include "context/context.h"

namespace ppl {

void clear_statistics(PplContext &ctx);
void aggregate_statistics(PplContext &ctx);

}  // namespace ppl
