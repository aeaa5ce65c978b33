// User mode: the operating system keeps each thread's registers, so a save cannot fail and saves
// nothing. The kernels leave the MMX state clean by themselves.
#include <cpuid.h>

#include "platform/platform.h"

namespace ppl::platform {

bool save_floating_point(FloatingPointState &) { return true; }

void restore_floating_point(FloatingPointState &) {}

CpuidResult cpuid(uint32_t leaf) {
  CpuidResult result = {0, 0, 0, 0};
  // Does not ask beyond the highest leaf of the leaf's range.
  __get_cpuid(leaf, &result.eax, &result.ebx, &result.ecx, &result.edx);
  return result;
}

}  // namespace ppl::platform
