#include "loader/driver_calls.h"

#include "loader/kernel_functions.h"

extern "C" {

extern const void *driver_functions[];  // beside the stubs
uint32_t driver_stack_offset;           // at this call

void driver_call_begins(void);
void driver_call_ends(void);
}

namespace ppl_test {
namespace {

uint32_t chosen_offset;
bool clean_before;
uint32_t unclean;

}  // namespace

const char *connect_driver(const PeImage &image) {
  unclean = 0;
  for (uint32_t i = 0; i < driver_function_count; ++i) {
    driver_functions[i] = image.find_export(driver_function_names[i]);
    if (driver_functions[i] == nullptr) return driver_function_names[i];
  }
  return nullptr;
}

void set_stack_offset(uint32_t offset) { chosen_offset = offset; }

uint32_t unclean_calls() { return unclean; }

}  // namespace ppl_test

void driver_call_begins() {
  using namespace ppl_test;
  driver_stack_offset =
      chosen_offset == each_in_turn ? (driver_stack_offset + 4) % 16 : chosen_offset;
  clean_before = floating_point_is_clean();
}

void driver_call_ends() {
  using namespace ppl_test;
  if (clean_before && !floating_point_is_clean()) {
    ++unclean;
    asm volatile("fninit");  // one failure is reported once
  }
}

// The stub has pushed the function's number; above it are the return address and the arguments.
// Copies the arguments to the offset asked for, more of them than any function has.
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
  call driver_call_begins
  leal -80(%esp), %edi
  addl driver_stack_offset, %edi
  movl %edi, %esp
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
