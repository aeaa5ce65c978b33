// Sizes, scale and what follows from them.
#pragma once

#include "context/context.h"

namespace ppl {

// Halves or doubles without rounding: an odd width loses its last column.
inline int32_t scale_by_decimation(int32_t value, int32_t decimation) {
  return decimation >= 0 ? value >> (decimation & 31)
                         : static_cast<int32_t>(static_cast<uint32_t>(value) << -decimation);
}

}  // namespace ppl
