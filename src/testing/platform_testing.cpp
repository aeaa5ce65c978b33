// User mode for tests: the save can be made to fail and the processor to look older.
#include <cpuid.h>

#include "context/pool.h"
#include "platform/platform.h"
#include "processor/processor.h"
#include "testing/test_hooks.h"
namespace ppl {
namespace {

test_hooks::CpuidFunction injected_cpuid;
uint32_t saves, restores;
uint32_t saves_before_failure, failing_saves;

}  // namespace

namespace platform {

bool save_floating_point(FloatingPointState &) {
  ++saves;
  if (saves_before_failure > 0) {
    --saves_before_failure;
    return true;
  }
  if (failing_saves > 0) {
    --failing_saves;
    return false;
  }
  return true;
}

void restore_floating_point(FloatingPointState &) { ++restores; }

CpuidResult cpuid(uint32_t leaf) {
  if (injected_cpuid != nullptr) {
    const auto r = injected_cpuid(leaf);
    return {r.eax, r.ebx, r.ecx, r.edx};
  }
  CpuidResult result = {0, 0, 0, 0};
  __get_cpuid(leaf, &result.eax, &result.ebx, &result.ecx, &result.edx);
  return result;
}

}  // namespace platform

namespace test_hooks {

void set_cpuid(CpuidFunction function) {
  injected_cpuid = function;
  forget_processor();
}

uint32_t processor_flags() { return ppl::processor_flags(); }

void fail_saves(uint32_t skip, uint32_t count) {
  saves_before_failure = skip;
  failing_saves = count;
}

uint32_t save_count() { return saves; }

uint32_t restore_count() { return restores; }

void reset_counts() { saves = restores = saves_before_failure = failing_saves = 0; }

void reload_pool() { zero_pool(); }

}  // namespace test_hooks
}  // namespace ppl
