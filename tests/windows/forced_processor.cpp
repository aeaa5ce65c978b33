// The driver's platform with a processor that claims to have what FORCED_FEATURES says, so that a
// tier runs where it cannot. Shows that the tests of old processors are able to fail.
#include <cpuid.h>

#define cpuid cpuid_of_the_machine
#include "platform/platform_windows.cpp"
#undef cpuid

namespace ppl::platform {

CpuidResult cpuid(uint32_t leaf);

CpuidResult cpuid(uint32_t leaf) {
  return leaf == 0 ? CpuidResult{1, 0, 0, 0} : CpuidResult{0, 0, 0, FORCED_FEATURES};
}

}  // namespace ppl::platform
