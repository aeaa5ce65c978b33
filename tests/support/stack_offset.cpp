#include "support/stack_offset.h"

#if PPL_TEST_HAS_STACK_OFFSETS

extern "C" uint32_t ppl_test_call_at_stack_offset(const void *function, const uint32_t *arguments,
                                                  uint32_t count, uint32_t offset);

// Room for the arguments is opened below a 16-byte boundary, then `offset` bytes up from it: the
// stack pointer is exactly there when the call instruction runs.
asm(R"(
  .text
  .globl ppl_test_call_at_stack_offset
  .type ppl_test_call_at_stack_offset, @function
ppl_test_call_at_stack_offset:
  pushl %ebp
  movl %esp, %ebp
  pushl %esi
  pushl %edi
  pushl %ebx
  movl 16(%ebp), %ecx
  leal 32(,%ecx,4), %eax
  movl %esp, %edi
  subl %eax, %edi
  andl $-16, %edi
  addl 20(%ebp), %edi
  movl %edi, %esp
  movl 12(%ebp), %esi
  cld
  rep movsl
  call *8(%ebp)
  leal -12(%ebp), %esp
  popl %ebx
  popl %edi
  popl %esi
  popl %ebp
  ret
  .size ppl_test_call_at_stack_offset, .-ppl_test_call_at_stack_offset
)");

namespace ppl_test {

uint32_t call_at_stack_offset(const void *function, const uint32_t *arguments, uint32_t count,
                              uint32_t offset) {
  return ppl_test_call_at_stack_offset(function, arguments, count, offset);
}

}  // namespace ppl_test

#endif
