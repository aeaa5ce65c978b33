// Kernel mode of 32-bit Windows. A driver may use MMX and XMM registers only between the two calls
// that put the interrupted program's registers away and bring them back.
#include <cpuid.h>

#include "platform/platform.h"

// Declared here because wdm.h is not C++. A negative status is a failure; the save area is
// KFLOATING_SAVE, 32 bytes on this platform.
extern "C" {
__attribute__((dllimport, stdcall)) int32_t KeSaveFloatingPointState(void *save_area);
__attribute__((dllimport, stdcall)) int32_t KeRestoreFloatingPointState(void *save_area);
}

namespace ppl::platform {

bool save_floating_point(FloatingPointState &state) {
  static_assert(sizeof(state.bytes) == 32);
  return KeSaveFloatingPointState(state.bytes) >= 0;
}

void restore_floating_point(FloatingPointState &state) { KeRestoreFloatingPointState(state.bytes); }

CpuidResult cpuid(uint32_t leaf) {
  CpuidResult result = {0, 0, 0, 0};
  // Does not ask beyond the highest leaf of the leaf's range, nor a processor that has none.
  __get_cpuid(leaf, &result.eax, &result.ebx, &result.ecx, &result.edx);
  return result;
}

}  // namespace ppl::platform
