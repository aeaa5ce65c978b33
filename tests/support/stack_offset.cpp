#include "support/stack_offset.h"

#if PPL_TEST_HAS_STACK_OFFSETS

namespace ppl_test {

// Room for the arguments is opened below a 16-byte boundary, then `offset` bytes up from it.
uint32_t call_at_stack_offset(const void *function, const uint32_t *arguments, uint32_t count,
                              uint32_t offset) {
  uint32_t result;
  asm volatile(
      "movl %%esp, %%ebx\n\t"
      "leal 32(, %%ecx, 4), %%edi\n\t"
      "subl %%edi, %%esp\n\t"
      "andl $-16, %%esp\n\t"
      "addl %%edx, %%esp\n\t"
      "movl %%esp, %%edi\n\t"
      "cld\n\t"
      "rep movsl\n\t"
      "call *%%eax\n\t"
      "movl %%ebx, %%esp"
      : "=a"(result), "+S"(arguments), "+c"(count), "+d"(offset)
      : "a"(function)
      : "ebx", "edi", "memory", "cc");
  return result;
}

}  // namespace ppl_test

#endif
