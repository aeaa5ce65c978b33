// The stored families of gamma curves. Process-wide: one set, shared by all contexts. Meant so:
// docs/oddities.md, "Gamma families".
#pragma once

#include <stdint.h>

namespace ppl {

inline constexpr int gamma_index_min = -32;
inline constexpr int gamma_index_max = 32;
inline constexpr int gamma_curve_count = gamma_index_max - gamma_index_min + 1;

// Row index - gamma_index_min is the curve of a gamma index. Writable: a caller may replace a whole
// family, and every context sees the new curves from its next choice of an index on.
extern uint8_t gamma_tables65x256[gamma_curve_count][256];         // full range
extern uint8_t gamma_tables65x256_16_235[gamma_curve_count][256];  // output held to 16..235

// The curves' exponents, 20.12.
extern const int32_t gamma_nf20_12_values[gamma_curve_count];

}  // namespace ppl
