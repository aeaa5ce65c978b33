# The last 64 KB of the machine's only ROM: from the reset vector straight to flat 32-bit protected
# mode, then to the kernel, which stands in the ROM before this and is copied to 1 MB.
  .code16
  .set rom, 0xF0000

  .org 0xFF00
begin:
  cli
  inb $0x92, %al                # let address bit 20 through
  orb $2, %al
  outb %al, $0x92
  lgdtl %cs:descriptors_pointer
  movl %cr0, %eax
  orb $1, %al
  movl %eax, %cr0
  ljmpl $8, $rom + flat

  .code32
flat:
  movw $16, %ax
  movw %ax, %ds
  movw %ax, %es
  movw %ax, %fs
  movw %ax, %gs
  movw %ax, %ss
  movl $0xFFFD0000, %esi
  movl $0x100000, %edi
  movl $0x20000 / 4, %ecx
  cld
  rep movsl
  movl $0x100000, %eax
  jmp *%eax

  .balign 8
descriptors:
  .quad 0
  .quad 0x00CF9A000000FFFF      # all memory, code
  .quad 0x00CF92000000FFFF      # all memory, data
descriptors_pointer:
  .word . - descriptors - 1
  .long rom + descriptors

  .code16
  .org 0xFFF0                   # where the processor begins
  jmp begin
  .org 0x10000
