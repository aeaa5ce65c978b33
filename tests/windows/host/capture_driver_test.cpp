// The example of a capture driver, loaded beside the driver that it imports from.
#include <gtest/gtest.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include "host/hosted_driver.h"

namespace ppl_test {
namespace {

std::vector<std::string> lines;

// What the kernel shows to a debugger. Its callers align the stack as they like.
extern "C" __attribute__((force_align_arg_pointer)) uint32_t debug_print(const char *format, ...) {
  char text[256];
  va_list arguments;
  va_start(arguments, format);
  vsnprintf(text, sizeof(text), format, arguments);
  va_end(arguments);
  lines.emplace_back(text);
  return 0;
}

const void *find_import(const char *library, const char *name) {
  if (strcmp(library, "ppl.sys") == 0) return HostedDriver::get().image().find_export(name);
  if (strcmp(library, "ntoskrnl.exe") == 0 && strcmp(name, "DbgPrint") == 0) {
    return reinterpret_cast<const void *>(&debug_print);
  }
  return nullptr;
}

class CaptureDriver : public testing::Test {
 protected:
  CaptureDriver() : capture_(PPL_CAPTURE, find_import) {
    HostedDriver::get().reload();
    kernel_calls = {};
    kernel_save_fails = false;
    lines.clear();
  }

  // The system's record of a driver, of which we know one field.
  struct DriverObject {
    uint8_t before[0x34];
    void(__attribute__((stdcall)) * unload)(DriverObject *);
    uint8_t after[0x70];
  };

  uint32_t count(const std::string &ending) {
    uint32_t found = 0;
    for (const std::string &line : lines) found += line.ends_with(ending) ? 1 : 0;
    return found;
  }

  HostedImage capture_;
  DriverObject object_ = {};
};

TEST_F(CaptureDriver, FindsEveryPictureRightAndUnloads) {
  EXPECT_EQ(capture_.load(&object_, nullptr), 0);
  EXPECT_EQ(count(" right\n"), 5u) << testing::PrintToString(lines);
  EXPECT_EQ(count(" fallback\n"), 0u);
  EXPECT_EQ(kernel_calls.saves, kernel_calls.restores);
  ASSERT_NE(object_.unload, nullptr);
  object_.unload(&object_);
  EXPECT_EQ(lines.back(), "capture: unloaded\n");
}

TEST_F(CaptureDriver, KeepsItsStreamGoingWhenSavesFail) {
  kernel_save_fails = true;
  EXPECT_EQ(capture_.load(&object_, nullptr), 0);
  EXPECT_EQ(count(" fallback\n"), 5u) << testing::PrintToString(lines);
}

TEST_F(CaptureDriver, GivesItsContextBack) {
  for (int i = 0; i < 20; ++i) EXPECT_EQ(capture_.load(&object_, nullptr), 0);
}

}  // namespace
}  // namespace ppl_test
