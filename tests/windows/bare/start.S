# What the kernel stands on: a stack, zeroed memory, an exception table, the floating-point unit.
  .section .start, "ax"
  .globl _start
_start:
  movl $stack_end, %esp
  cld
  movl $bss_begin, %edi
  movl $bss_end, %ecx
  subl %edi, %ecx
  xorl %eax, %eax
  rep stosb

  movl $gates, %edi
  movl $exception_stubs, %edx
  movl $32, %ecx
1:
  movl %edx, %eax
  movw %ax, (%edi)
  movw $8, 2(%edi)
  movw $0x8E00, 4(%edi)
  shrl $16, %eax
  movw %ax, 6(%edi)
  addl $8, %edi
  addl $exception_stub_size, %edx
  loop 1b
  lidt gates_pointer

  movl %cr0, %eax               # no emulation, errors as exceptions
  andl $~0xC, %eax
  orl $0x22, %eax
  movl %eax, %cr0
  fninit
  movl $1, %eax                 # every processor that we emulate has CPUID
  cpuid
  testl $1 << 24, %edx          # FXSR: XMM registers need the system's consent
  jz 2f
  movl %cr4, %eax
  orl $0x600, %eax
  movl %eax, %cr4
2:
  call kernel_main
  ud2

  .set exception_stub_size, 16
  .balign 16
exception_stubs:
  .set number, 0
  .rept 32
  .balign exception_stub_size
  pushl $number
  jmp exception
  .set number, number + 1
  .endr
exception:                      # above the number stand an error code, or not, and the place
  call kernel_exception
  ud2

  .data
gates_pointer:
  .word 8 * 32 - 1
  .long gates

  .bss
  .balign 16
gates:
  .skip 8 * 32
  .balign 16
  .skip 0x4000
stack_end:

  .section .note.GNU-stack, "", @progbits
