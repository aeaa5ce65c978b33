// Everything that can be read from a stream between calls, compared on both sides.
#pragma once

#include <string>

#include "compare/sides.h"

namespace ppl_compare {

// Empty if all getters, tables, statistics, derived vectors and plans agree, else what does not.
std::string compare_streams(const Pair &pair);

// The same for the process-wide curve families.
std::string compare_gamma_families();

}  // namespace ppl_compare
