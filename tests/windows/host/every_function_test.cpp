// What holds for every exported function.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <string_view>

#include "host/any_call.h"
#include "host/hosted_driver.h"

namespace ppl_test {
namespace {

constexpr uint32_t offsets[] = {0, 4, 8, 12};

class EveryFunction : public testing::TestWithParam<bool> {  // whether on the P3 tier only
 protected:
  EveryFunction() {
    HostedDriver::get().reload();
    kernel_calls = {};
    kernel_save_fails = false;
  }

  AnyArguments arguments_;
};

// A driver is promised a stack aligned to 4. What the library keeps on it for vectors, and the area
// that the kernel saves to, must stand right all the same.
TEST_P(EveryFunction, WorksWithTheStackAtEachOffset) {
  uint32_t calls = 0;
  for_each_function([&](const char *name, auto *function) {
    AnyResult first{};
    for (const uint32_t offset : offsets) {
      set_stack_offset(offset);
      arguments_.prepare(GetParam());
      const AnyResult result = arguments_.call(name, function);
      arguments_.finish();
      if (offset == 0) first = result;
      EXPECT_EQ(result, first) << name << " at " << offset;
      ++calls;
    }
  });
  EXPECT_EQ(calls, 4 * driver_function_count);
  if (HostedDriver::get().is_driver()) {
    EXPECT_GT(kernel_calls.saves, driver_function_count);
  }
  EXPECT_EQ(kernel_calls.misaligned, 0u);
}

TEST_P(EveryFunction, RestoresWhatItSavedAndKeepsNoMmxRegister) {
  set_stack_offset(each_in_turn);
  for_each_function([&](const char *name, auto *function) {
    arguments_.prepare(GetParam());
    arguments_.call(name, function);
    arguments_.finish();
    EXPECT_EQ(kernel_calls.unclean, 0u) << name;
    EXPECT_EQ(kernel_calls.restores, kernel_calls.saves) << name;
    kernel_calls.unclean = 0;
  });
  EXPECT_EQ(kernel_calls.mismatched, 0u);
}

TEST_P(EveryFunction, LeavesMostOfTheStackToOthers) {
  set_stack_offset(each_in_turn);
  std::string hungriest;
  uint32_t most = 0;
  for_each_function([&](const char *name, auto *function) {
    arguments_.prepare(GetParam());
    measure_stack(true);
    arguments_.call(name, function);
    if (deepest_stack() > most) {
      most = deepest_stack();
      hungriest = name;
    }
    measure_stack(false);
    arguments_.finish();
  });
  RecordProperty("stack", static_cast<int>(most));
  EXPECT_GT(most, 0u);
  EXPECT_LT(most, most_stack) << hungriest;
}

// All registers that the bracket protects, as FXSAVE lays them out.
struct Registers {
  alignas(16) uint8_t image[512];

  void take() { asm volatile("fxsave %0" : "=m"(image)); }
  void put() const { asm volatile("fxrstor %0" : : "m"(image)); }

  // Controls and tags; then ST0 to ST7, 10 bytes each, and XMM0 to XMM7.
  uint64_t content() const {
    uint64_t hash = fingerprint({image, 5});
    hash = fingerprint({image + 24, 4}, hash);
    for (int i = 0; i < 8; ++i) hash = fingerprint({image + 32 + 16 * i, 10}, hash);
    return fingerprint({image + 160, 128}, hash);
  }
};

// An interrupted program's numbers: all eight x87 registers in use, something in every XMM one.
Registers registers_of_a_program() {
  Registers registers;
  asm volatile("fninit; fld1; fldpi; fldl2e; fldl2t; fldlg2; fldln2; fldz; fld1");
  registers.take();
  for (int i = 0; i < 128; ++i) registers.image[160 + i] = static_cast<uint8_t>(37 * i + 11);
  return registers;
}

class FloatingPointState : public EveryFunction {
 protected:
  FloatingPointState() {
    set_stack_offset(each_in_turn);
    before_ = registers_of_a_program();
    arguments_.before_call = [] { before_.put(); };
    arguments_.after_call = [] {
      after_.take();
      asm volatile("fninit");
    };
  }

  // Calls the function with a program's numbers in the registers, and compares them afterwards.
  template <class Function>
  bool survives(const char *name, Function *function) {
    arguments_.prepare(GetParam());
    arguments_.call(name, function);
    arguments_.finish();
    return before_.content() == after_.content();
  }

  static Registers before_, after_;
};

Registers FloatingPointState::before_, FloatingPointState::after_;

// The frame drivers run inside their caller's bracket.
bool has_bracket_of_its_own(std::string_view name) { return !name.starts_with("ppl_process_"); }

TEST_P(FloatingPointState, IsTouchedBetweenSaveAndRestoreOnly) {
  if (!HostedDriver::get().is_driver() || !processor_has_fxsr()) GTEST_SKIP();
  for_each_function([&](const char *name, auto *function) {
    if (has_bracket_of_its_own(name)) {
      EXPECT_TRUE(survives(name, function)) << name;
    }
  });
  EXPECT_GT(kernel_calls.saves, 0u);
}

TEST_P(FloatingPointState, IsNotTouchedAfterAFailedSave) {
  if (!HostedDriver::get().is_driver() || !processor_has_fxsr()) GTEST_SKIP();
  kernel_save_fails = true;
  for_each_function([&](const char *name, auto *function) {
    if (has_bracket_of_its_own(name)) {
      EXPECT_TRUE(survives(name, function)) << name;
    }
  });
  EXPECT_GT(kernel_calls.failed_saves, 0u);
  EXPECT_EQ(kernel_calls.restores, 0u);
}

std::string name_of(const testing::TestParamInfo<bool> &info) {
  return info.param ? "P3Only" : "AnyTier";
}

INSTANTIATE_TEST_SUITE_P(Tiers, EveryFunction, testing::Bool(), name_of);
INSTANTIATE_TEST_SUITE_P(Tiers, FloatingPointState, testing::Bool(), name_of);

}  // namespace
}  // namespace ppl_test
