/* One stub for each function of ppl.h. What a stub pushes is the function's number. */
  .text
  .set number, 0
  .macro PPL_STUB name
  .globl \name
\name:
  push $number
  jmp call_driver
  .set number, number + 1
  .endm

#define PPL_FUNCTION(name) PPL_STUB name
#include "every_function.inc"
#undef PPL_FUNCTION

  .bss
  .globl driver_functions
  .balign 4
driver_functions:
  .skip 4 * number

  .section .rodata
  .globl driver_function_count
  .balign 4
driver_function_count:
  .long number
  .globl driver_function_names
driver_function_names:
  .macro PPL_NAME name
  .pushsection .rodata.str, "a"
1:
  .string "\name"
  .popsection
  .long 1b
  .endm
#define PPL_FUNCTION(name) PPL_NAME name
#include "every_function.inc"

  .section .note.GNU-stack, "", @progbits
