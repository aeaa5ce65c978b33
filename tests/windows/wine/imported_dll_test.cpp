// A program that imports all of ppl.dll.
#include <gtest/gtest.h>
#include <windows.h>

#include "host/any_call.h"
#include "support/x87.h"

namespace ppl_test {
namespace {

TEST(ImportedDll, GivesEveryFunctionByItsPlainName) {
  const HMODULE library = GetModuleHandleA("ppl.dll");
  ASSERT_NE(library, nullptr);
  for_each_function([&](const char *name, auto *function) {
    EXPECT_EQ(reinterpret_cast<void *>(GetProcAddress(library, name)),
              reinterpret_cast<void *>(function))
        << name;
  });
}

class ImportedDllTier : public testing::TestWithParam<bool> {};  // whether on the P3 tier only

TEST_P(ImportedDllTier, EveryFunctionLeavesTheCallersArithmeticAlone) {
  AnyArguments arguments;
  for_each_function([&](const char *name, auto *function) {
    arguments.prepare(GetParam());
    arguments.call(name, function);
    EXPECT_TRUE(x87_is_clean()) << name;
    arguments.finish();
  });
}

INSTANTIATE_TEST_SUITE_P(Tiers, ImportedDllTier, testing::Bool(),
                         [](const auto &tier) { return tier.param ? "P3Only" : "AnyTier"; });

}  // namespace
}  // namespace ppl_test
