// All there is of an operating system: loads the driver as the system's loader would, runs it in
// ring 0 on this very processor, and reports in lines of text.
#include "loader/driver_calls.h"
#include "loader/golden_replay.h"
#include "loader/kernel_functions.h"
#include "loader/pe_file.h"
#include "ppl.h"
#include "processor/processor.h"

namespace ppl_test {
namespace {

// Where the driver's file stands in the ROM; how long it is at most.
const auto *const driver_file = reinterpret_cast<const uint8_t *>(0xFFE00000);
constexpr uint32_t driver_file_size = 0x1D0000;

constexpr uint32_t image_room = 0x400000;
alignas(4096) uint8_t image_memory[image_room];

void write_port(uint16_t port, char value) {
  asm volatile("outb %0, %1" : : "a"(value), "d"(port));
}

// The emulator prints what comes out of this port.
void print(const char *text) {
  for (; *text != '\0'; ++text) write_port(0xE9, *text);
}

void print(uint32_t value, uint32_t base = 10) {
  char digits[11] = {};
  char *first = digits + 10;
  do {
    *--first = "0123456789abcdef"[value % base];
    value /= base;
  } while (value != 0);
  print(first);
}

[[noreturn]] void power_off() {
  for (const char *text = "Shutdown"; *text != '\0'; ++text) write_port(0x8900, *text);
  for (;;) asm volatile("cli; hlt");
}

[[noreturn]] void give_up(const char *what, const char *name = "") {
  print("failed: ");
  print(what);
  print(name);
  print("\n");
  power_off();
}

void require(bool holds, const char *what) {
  if (!holds) give_up(what);
}

const PeFile *file;
const PeImage *image;

void load_driver() {
  using Entry = int32_t(__attribute__((stdcall)) *)(void *, void *);
  require(reinterpret_cast<Entry>(image->entry())(nullptr, nullptr) == 0, "the load entry");
}

// As after a load, but quick on an emulated processor: zeroes what the image's file does not hold.
void reload_driver() {
  for (uint32_t i = 0; i < file->header().section_count; ++i) {
    const PeSection section = file->section(i);
    if (section.file_size != 0) continue;
    uint8_t *from = image->base() + section.address;
    uint32_t count = section.memory_size;
    asm volatile("cld; rep stosb" : "+D"(from), "+c"(count) : "a"(0) : "memory");
  }
}

golden::Checksums run(uint32_t index) {
  reload_driver();
  const KernelBracket bracket;
  return run_golden_case(golden::cases[index]);
}

constexpr uint32_t width = 128, height = 24, samples = width * height;

bool is_filled(const uint8_t *from, uint8_t value, uint32_t count) {
  for (uint32_t i = 0; i < count; ++i) {
    if (from[i] != value) return false;
  }
  return true;
}

// The frame that comes out where no tier can run.
void check_fallback(PplContext *context) {
  golden::make_frame(golden::cases[0], 0, golden_source);
  require(BaylorToI420MMX(context, golden_source, golden_output, width, height) == 0,
          "the fallback's result");
  for (uint32_t i = 0; i < samples; ++i) {
    require(golden_output[i] == golden_source[i], "the fallback's luma");
  }
  require(is_filled(golden_output + samples, 128, samples / 2), "the fallback's chroma");
  require(BaylorToRGB24MMX(context, golden_source, golden_output, width, height) == 0 &&
              is_filled(golden_output, 255, 3 * samples),
          "the white fallback");
  require(ppl_n_frame(context) == 0, "a fallback that counts as a frame");
}

bool finds_a_tier() {
  load_driver();
  PplContext *const context = ppl_init();
  require(ppl_new_frame_size(context, width, height, width) == 1, "the frame's size");
  kernel_calls = {};
  if (BaylorToI420MMX(context, golden_source, golden_output, width, height) != 0) return true;
  check_fallback(context);
  require(kernel_calls.saves == 0, "a save although there is no tier");
  require(ppl_set_rgb_gain(context, 300, 310, 320) == 1, "a setter without a tier");
  return false;
}

// Large frames take an emulated processor seconds, and no instruction is in them alone.
constexpr uint32_t large = 65536;

void replay(bool sse2) {
  uint32_t cases = 0, wrong = 0;
  for (uint32_t i = 0; i < golden::case_count; ++i) {
    const golden::Case &c = golden::cases[i];
    if ((c.tier == golden::Tier::sse2 && !sse2) || golden::source_bytes(c) > large) continue;
    ++cases;
    if (is_golden(run(i), i)) continue;
    ++wrong;
    print("wrong: case ");
    print(i);
    print("\n");
  }
  print("golden cases: ");
  print(cases);
  print(", wrong: ");
  print(wrong);
  print("\n");
}

void check_failing_saves() {
  load_driver();
  PplContext *const context = ppl_init();
  require(ppl_new_frame_size(context, width, height, width) == 1, "the frame's size");
  kernel_calls = {};
  kernel_save_fails = true;
  check_fallback(context);
  require(ppl_set_rgb_gain(context, 300, 310, 320) == 1, "a setter after a failed save");
  require(kernel_calls.failed_saves == 3 && kernel_calls.restores == 0, "the count of saves");
  kernel_save_fails = false;
  print("failing saves: right\n");
}

void place_driver() {
  static const PeFile driver(driver_file, driver_file_size);
  file = &driver;
  if (driver.error() != nullptr) give_up(driver.error());
  require(driver.header().image_size <= image_room, "the driver needs more memory");
  if (const char *const error = driver.map(image_memory)) give_up(error);
  static const PeImage placed(driver, image_memory);
  image = &placed;
  if (const char *const name = placed.bind_imports(find_kernel_function)) {
    give_up("the driver imports ", name);
  }
  if (const char *const name = connect_driver(placed)) {
    give_up("the driver does not export ", name);
  }
}

void run_driver() {
  // The driver does not show its own; this is the same detection, in the kernel.
  print("flags: ");
  print(ppl::processor_flags(), 16);
  print("\n");
  place_driver();
  set_stack_offset(each_in_turn);
  print("loaded\n");

  if (finds_a_tier()) {
    const bool sse2 = run(case_on_p3).statistics != run(case_on_sse2).statistics;
    print(sse2 ? "tier: sse2\n" : "tier: p3\n");
    replay(sse2);
    check_failing_saves();
  } else {
    print("tier: none\n");
  }
  require(kernel_calls.misaligned == 0, "a save area that is not aligned");
  require(kernel_calls.mismatched == 0, "restores that do not match their saves");
  require(kernel_calls.unclean == 0, "an MMX register in use after a call");
  require(DllUnload() == 0, "unloading");
  print("finished\n");
}

}  // namespace
}  // namespace ppl_test

extern "C" void kernel_main() {
  ppl_test::run_driver();
  ppl_test::power_off();
}

// The processor pushes an error code for some exceptions, and then the place.
extern "C" void kernel_exception(uint32_t number, uint32_t word0, uint32_t word1) {
  using namespace ppl_test;
  const bool has_code = number == 8 || (number >= 10 && number <= 14) || number == 17;
  const uint32_t place = has_code ? word1 : word0;
  const auto base = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(image_memory));
  print("exception ");
  print(number);
  if (place - base < image_room) {
    print(" in the driver at ");
    print(place - base);
  } else {
    print(" in the kernel at ");
    print(place);
  }
  print("\n");
  power_off();
}
