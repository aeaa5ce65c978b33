#include "frame/processor.h"

namespace ppl {
namespace {

uint32_t flags;

bool is_vendor_amd(const platform::CpuidResult &leaf0) {
  // "AuthenticAMD" as the leaf spells it: EBX, EDX, ECX.
  return leaf0.ebx == 0x68747541 && leaf0.edx == 0x69746e65 && leaf0.ecx == 0x444d4163;
}

void read_cpuid_leaves() {
  const auto leaf0 = platform::cpuid(0);
  if (leaf0.eax == 0) return;

  flags |= platform::cpuid(1).edx &
           (processor_sse2_tier | processor_sse | processor_mmx | processor_time_stamp);

  constexpr uint32_t extended = 0x80000000;
  if (platform::cpuid(extended).eax <= extended) return;
  const uint32_t edx = platform::cpuid(extended + 1).edx;
  flags |= edx & processor_3dnow;
  if (is_vendor_amd(leaf0)) flags |= edx & (processor_amd_3dnow_extended | processor_amd_mmx);
}

}  // namespace

uint32_t processor_flags() {
  if (flags == 0) {
    // The first bit is set before the work is done: a second thread may for an instant see a
    // processor without tiers, and its frame then takes the plain copy.
    flags |= processor_detected;
    read_cpuid_leaves();
    if ((flags & (processor_sse | processor_amd_mmx)) != 0) flags |= processor_p3_tier;
  }
  return flags;
}

void forget_processor() { flags = 0; }

}  // namespace ppl
