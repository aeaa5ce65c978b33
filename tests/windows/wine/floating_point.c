/* The kernel's two floating-point functions, for a Wine that has none. Beside taking the registers
   away and bringing them back they check what they are given; one mistake, and every later save
   fails. */
#include <ntddk.h>

#define AREA_BYTES 32
#define DEEPEST 4

static DECLSPEC_ALIGN(16) UCHAR registers[DEEPEST][512];
static UCHAR *areas[DEEPEST];
static ULONG depth;
static BOOLEAN broken;

static UCHAR mark(ULONG index) { return (UCHAR)(0x51 + 7 * index); }

static NTSTATUS refuse(const char *why) {
  DbgPrint("floating point: %s\n", why);
  broken = TRUE;
  return STATUS_UNSUCCESSFUL;
}

NTSTATUS NTAPI save_floating_point(UCHAR *area) {
  ULONG i;
#ifdef SAVE_FAILS
  return STATUS_INSUFFICIENT_RESOURCES;
#endif
  if (broken) return STATUS_UNSUCCESSFUL;
  if ((ULONG_PTR)area % 16 != 0) return refuse("save area not on a 16-byte boundary");
  if (depth == DEEPEST) return refuse("saved too often");
  __asm__ volatile("fxsave %0\n\tfninit" : "=m"(registers[depth]));
  for (i = 0; i < AREA_BYTES; ++i) area[i] = mark(i);
  areas[depth++] = area;
  return STATUS_SUCCESS;
}

NTSTATUS NTAPI restore_floating_point(UCHAR *area) {
  ULONG i;
  if (depth == 0 || areas[depth - 1] != area) return refuse("restored what was not saved last");
  for (i = 0; i < AREA_BYTES; ++i) {
    if (area[i] != mark(i)) return refuse("save area written to");
  }
  __asm__ volatile("fxrstor %0" : : "m"(registers[--depth]));
  return STATUS_SUCCESS;
}

NTSTATUS NTAPI DriverEntry(DRIVER_OBJECT *driver, UNICODE_STRING *registry_path) {
  UNREFERENCED_PARAMETER(driver);
  UNREFERENCED_PARAMETER(registry_path);
  return STATUS_SUCCESS;
}
