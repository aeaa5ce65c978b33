// Which tier a frame runs on. Chosen anew for each frame; nothing is remembered.
#pragma once

#include <stdint.h>

#include "frame/context.h"
#include "frame/processor.h"

namespace ppl {

inline bool is_aligned(const void *pointer, uintptr_t alignment) {
  return reinterpret_cast<uintptr_t>(pointer) % alignment == 0;
}

// All pointers of a call.
template <int Count>
bool are_aligned(const void *const (&pointers)[Count], uintptr_t alignment) {
  for (const void *pointer : pointers) {
    if (!is_aligned(pointer, alignment)) return false;
  }
  return true;
}

// The SSE2 tier wants 16-byte alignment; a frame without it runs on the P3 tier.
template <int Count>
bool uses_sse2_tier(const PplContext &ctx, const void *const (&pointers)[Count]) {
  return are_aligned(pointers, 16) && (processor_flags() & processor_sse2_tier) != 0 &&
         ctx.P3_only == 0;
}

}  // namespace ppl
