// What a frame runs on. Chosen anew for each frame; nothing is remembered.
#pragma once

#include <stdint.h>

#include "context/context.h"
#include "kernels/passes.h"
#include "processor/processor.h"

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

// A tier's kernels, and what it knows of the frame's size.
struct Machine {
  const Kernels &kernels;
  const FramePlan &plan;
};

// The SSE2 tier wants 16-byte alignment; a frame without it runs on the P3 tier.
template <int Count>
Machine machine_for(const PplContext &ctx, const void *const (&pointers)[Count]) {
  const bool on_sse2 = are_aligned(pointers, 16) &&
                       (processor_flags() & processor_sse2_tier) != 0 && ctx.P3_only == 0;
  return on_sse2 ? Machine{sse2::kernels, ctx.sse2.plan} : Machine{p3::kernels, ctx.p3.plan};
}

}  // namespace ppl
