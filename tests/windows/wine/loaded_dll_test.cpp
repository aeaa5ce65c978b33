// The golden frames through ppl.dll, loaded anew for each.
#include <gtest/gtest.h>
#include <windows.h>

#include "loader/golden_replay.h"
#include "support/x87.h"

namespace ppl_test {
namespace {

// The functions of the library while it is loaded.
struct Loaded {
  using Context = PplContext;
#define PPL_FUNCTION(name) static inline decltype(&::name) name;
#include "every_function.inc"
#undef PPL_FUNCTION
};

class LoadedDll : public testing::TestWithParam<Tier> {
 protected:
  void SetUp() override {
    library_ = LoadLibraryA("ppl.dll");
    ASSERT_NE(library_, nullptr) << "error " << GetLastError();
#define PPL_FUNCTION(name) find(#name, Loaded::name);
#include "every_function.inc"
#undef PPL_FUNCTION
  }
  void TearDown() override {
    FreeLibrary(library_);
    EXPECT_EQ(GetModuleHandleA("ppl.dll"), nullptr);
  }

 private:
  template <class Function>
  void find(const char *name, Function &function) {
    const auto address = reinterpret_cast<uintptr_t>(GetProcAddress(library_, name));
    ASSERT_NE(address, 0u) << name;
    function = reinterpret_cast<Function>(address);
  }

  HMODULE library_ = nullptr;
};

TEST_P(LoadedDll, GoldenFramesAreRight) {
  uint32_t cases = 0;
  for (uint32_t i = 0; i < golden::case_count; ++i) {
    if (golden::cases[i].tier != GetParam()) continue;
    ++cases;
    TearDown();
    SetUp();
    EXPECT_TRUE(is_golden(golden::run<Loaded>(golden::cases[i], golden_source, golden_output), i))
        << "case " << i << " of tests/golden/golden_cases.h";
    EXPECT_TRUE(x87_is_clean());
  }
  EXPECT_GT(cases, 0u);
}

INSTANTIATE_TEST_SUITE_P(Tiers, LoadedDll, testing::ValuesIn(both_tiers),
                         [](const auto &tier) { return name_of(tier.param); });

}  // namespace
}  // namespace ppl_test
