// The seam to the machine: one small source file per platform implements it.
#pragma once

#include <stdint.h>

namespace ppl::platform {

// Room for what a platform saves; 16-byte aligned because some save with aligned stores.
struct alignas(16) FloatingPointState {
  uint8_t bytes[32];
};

// No SIMD or floating-point instruction may run after a failed save.
bool save_floating_point(FloatingPointState &state);
void restore_floating_point(FloatingPointState &state);

struct CpuidResult {
  uint32_t eax, ebx, ecx, edx;
};

// All four are 0 on a processor without the instruction.
CpuidResult cpuid(uint32_t leaf);

}  // namespace ppl::platform
