// What a test may change about the machine. Compiled into the test build of the library only.
#pragma once
#include <stdint.h>

namespace ppl::test_hooks {

struct CpuidResult {
  uint32_t eax, ebx, ecx, edx;
};
using CpuidFunction = CpuidResult (*)(uint32_t leaf);

// Replaces the CPUID instruction (nullptr: the real one) and forgets what was detected.
void set_cpuid(CpuidFunction function);

// The processor flag word; runs detection first if it has not run.
uint32_t processor_flags();

// After `skip` further saves that succeed, the next `count` saves of the floating-point state fail.
void fail_saves(uint32_t skip, uint32_t count);

// Saves tried and restores made since the last reset_counts.
uint32_t save_count();
uint32_t restore_count();

// Zeroes both counts and cancels fail_saves.
void reset_counts();

// What the load entry does: zeroes the pool of contexts.
void reload_pool();

}  // namespace ppl::test_hooks
