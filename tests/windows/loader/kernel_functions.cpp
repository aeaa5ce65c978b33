#include "loader/kernel_functions.h"

#include <cpuid.h>

namespace ppl_test {

KernelCalls kernel_calls;
bool kernel_save_fails;

namespace {

// A geometry operation in an entry function's bracket saves once more.
constexpr uint32_t deepest = 4;

struct SavedState {
  alignas(16) uint8_t registers[512];
  uint8_t *area;
};

SavedState saved[deepest];
uint32_t depth;

constexpr uint32_t area_bytes = 32;
constexpr int32_t status_success = 0;
constexpr auto status_failure = static_cast<int32_t>(0xC000009Au);

uint8_t mark(uint32_t index) { return static_cast<uint8_t>(0x51 + 7 * index + depth); }

// The interrupted program's registers go away and the driver finds new ones, with the exceptions
// masked.
__attribute__((stdcall, force_align_arg_pointer)) int32_t save_floating_point(uint8_t *area) {
  if (reinterpret_cast<uintptr_t>(area) % 16 != 0) ++kernel_calls.misaligned;
  if (kernel_save_fails || depth == deepest) {
    ++kernel_calls.failed_saves;
    return status_failure;
  }
  ++kernel_calls.saves;
  SavedState &state = saved[depth];
  if (processor_has_fxsr()) {
    asm volatile("fxsave %0" : "=m"(state.registers));
  } else {
    asm volatile("fnsave %0" : "=m"(state.registers));
  }
  asm volatile("fninit");
  state.area = area;
  for (uint32_t i = 0; i < area_bytes; ++i) area[i] = mark(i);
  ++depth;
  return status_success;
}

__attribute__((stdcall, force_align_arg_pointer)) int32_t restore_floating_point(uint8_t *area) {
  ++kernel_calls.restores;
  if (!floating_point_is_clean()) ++kernel_calls.unclean;
  if (depth == 0 || saved[depth - 1].area != area) {
    ++kernel_calls.mismatched;
    return status_failure;
  }
  const SavedState &state = saved[--depth];
  bool kept = true;
  for (uint32_t i = 0; i < area_bytes; ++i) kept &= area[i] == mark(i);
  if (!kept) ++kernel_calls.mismatched;
  if (processor_has_fxsr()) {
    asm volatile("fxrstor %0" : : "m"(state.registers));
  } else {
    asm volatile("frstor %0" : : "m"(state.registers));
  }
  return status_success;
}

bool equal(const char *a, const char *b) {
  for (; *a == *b; ++a, ++b) {
    if (*a == '\0') return true;
  }
  return false;
}

}  // namespace

const void *find_kernel_function(const char *library, const char *name) {
  if (!equal(library, "ntoskrnl.exe")) return nullptr;
  if (equal(name, "KeSaveFloatingPointState")) {
    return reinterpret_cast<const void *>(&save_floating_point);
  }
  if (equal(name, "KeRestoreFloatingPointState")) {
    return reinterpret_cast<const void *>(&restore_floating_point);
  }
  return nullptr;
}

KernelBracket::KernelBracket() { save_floating_point(area_); }

KernelBracket::~KernelBracket() { restore_floating_point(area_); }

bool floating_point_is_clean() {
  struct {
    uint32_t control, status, tag, rest[4];
  } environment;
  // fnstenv masks the exceptions as a side effect; loading it back undoes that.
  asm volatile("fnstenv %0\n\tfldenv %0" : "+m"(environment));
  return (environment.tag & 0xFFFF) == 0xFFFF;
}

bool processor_has_fxsr() {
  uint32_t eax, ebx, ecx, edx;
  return __get_cpuid(1, &eax, &ebx, &ecx, &edx) != 0 && (edx & (1u << 24)) != 0;
}

}  // namespace ppl_test
