#include "processor/processor.h"

namespace ppl {
namespace {

// Process-wide, shared by all contexts. 0 until detection has run.
uint32_t detected_flags;

bool is_vendor_amd(const platform::CpuidResult &leaf0) {
  // "AuthenticAMD" as the leaf spells it: EBX, EDX, ECX.
  return leaf0.ebx == 0x68747541 && leaf0.edx == 0x69746e65 && leaf0.ecx == 0x444d4163;
}

uint32_t flags_of_cpuid_leaves() {
  const auto leaf0 = platform::cpuid(0);
  if (leaf0.eax == 0) return 0;

  uint32_t flags = platform::cpuid(1).edx &
                   (processor_sse2_tier | processor_sse | processor_mmx | processor_time_stamp);
  constexpr uint32_t extended = 0x80000000;
  if (platform::cpuid(extended).eax <= extended) return flags;
  const uint32_t edx = platform::cpuid(extended + 1).edx;
  flags |= edx & processor_3dnow;
  if (is_vendor_amd(leaf0)) flags |= edx & (processor_amd_3dnow_extended | processor_amd_mmx);
  return flags;
}

}  // namespace

uint32_t processor_flags() {
  // Written by one store of the final value: whoever comes in between detects the same once more.
  if (detected_flags == 0) {
    uint32_t flags = processor_detected | flags_of_cpuid_leaves();
    if ((flags & (processor_sse | processor_amd_mmx)) != 0) flags |= processor_p3_tier;
    detected_flags = flags;
  }
  return detected_flags;
}

void forget_processor() { detected_flags = 0; }

}  // namespace ppl
