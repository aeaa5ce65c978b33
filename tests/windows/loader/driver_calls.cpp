#include "loader/driver_calls.h"

#include "loader/kernel_functions.h"
#include "support/x87.h"

extern "C" {

extern const void *driver_functions[];  // beside the stubs

uint32_t driver_call_begins(uint32_t stack);
void driver_call_ends(void);
}

namespace ppl_test {
namespace {

uint32_t chosen_offset, last_offset;
bool clean_before;

// A stack of its own, painted to see how far down it is used.
constexpr uint32_t paint = 0x5AA5C33C, stack_words = 4096;
alignas(16) uint32_t measured_stack[stack_words];
bool measures;
uint32_t deepest;

uint32_t address_of(const void *pointer) {
  return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(pointer));
}

}  // namespace

const char *connect_driver(const PeImage &image) {
  for (uint32_t i = 0; i < driver_function_count; ++i) {
    driver_functions[i] = image.find_export(driver_function_names[i]);
    if (driver_functions[i] == nullptr) return driver_function_names[i];
  }
  return nullptr;
}

void set_stack_offset(uint32_t offset) { chosen_offset = offset; }

void measure_stack(bool on) {
  measures = on;
  deepest = 0;
}

uint32_t deepest_stack() { return deepest; }

}  // namespace ppl_test

// Gives the stack pointer for the call, with room for the arguments above it.
uint32_t driver_call_begins(uint32_t stack) {
  using namespace ppl_test;
  last_offset = chosen_offset == each_in_turn ? (last_offset + 4) % 16 : chosen_offset;
  clean_before = floating_point_is_clean();
  if (measures) {
    for (uint32_t &word : measured_stack) word = paint;
    stack = address_of(measured_stack + stack_words);
  }
  return stack / 16 * 16 - 80 + last_offset;
}

void driver_call_ends() {
  using namespace ppl_test;
  if (clean_before && !x87_is_clean()) ++kernel_calls.unclean;
  if (measures) {
    uint32_t untouched = 0;
    while (untouched < stack_words && measured_stack[untouched] == paint) ++untouched;
    const uint32_t used = 4 * (stack_words - untouched);
    if (used > deepest) deepest = used;
  }
}

// The stub has pushed the function's number; above it are the return address and the arguments.
// Copies the arguments to the call's own stack, more of them than any function has.
asm(R"(
  .text
  .globl call_driver
call_driver:
  pushl %ebp
  movl %esp, %ebp
  pushl %esi
  pushl %edi
  pushl %ebx
  andl $-16, %esp
  subl $12, %esp
  pushl %esp
  call driver_call_begins
  movl %eax, %edi
  movl %eax, %esp
  leal 12(%ebp), %esi
  movl $12, %ecx
  cld
  rep movsl
  movl %esp, %ebx
  movl 4(%ebp), %ecx
  call *driver_functions(, %ecx, 4)
  cmpl %esp, %ebx
  je 1f
  ud2
1:
  leal -32(%ebp), %esp
  andl $-16, %esp
  movl %eax, %esi
  call driver_call_ends
  movl %esi, %eax
  leal -12(%ebp), %esp
  popl %ebx
  popl %edi
  popl %esi
  popl %ebp
  addl $4, %esp
  ret
)");
