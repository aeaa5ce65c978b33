// The golden frames through the image.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <string>

#include "host/hosted_driver.h"
#include "loader/golden_replay.h"

namespace ppl_test {
namespace {

class Golden : public testing::Test {
 protected:
  Golden() : driver_(HostedDriver::get()) {
    kernel_calls = {};
    kernel_save_fails = false;
    set_stack_offset(each_in_turn);
  }

  golden::Checksums run(uint32_t index) {
    driver_.reload();
    const KernelBracket bracket;
    return run_golden_case(golden::cases[index]);
  }

  // Compares all cases of a tier, and what the calls left behind.
  void replay(Tier tier) {
    uint32_t cases = 0;
    measure_stack(true);
    for (uint32_t i = 0; i < golden::case_count; ++i) {
      if (golden::cases[i].tier != tier) continue;
      ++cases;
      EXPECT_TRUE(is_golden(run(i), i)) << "case " << i << " of tests/golden/golden_cases.h";
    }
    RecordProperty("stack", static_cast<int>(deepest_stack()));
    EXPECT_LT(deepest_stack(), most_stack);
    measure_stack(false);
    EXPECT_GT(cases, 0u);
    EXPECT_EQ(kernel_calls.unclean, 0u);
    EXPECT_EQ(kernel_calls.misaligned + kernel_calls.mismatched, 0u);
  }

  bool has_sse2_tier() { return run(case_on_p3).statistics != run(case_on_sse2).statistics; }

  // Whether the entry functions find any tier.
  bool has_tier() {
    driver_.reload();
    PplContext *const context = ppl_init();
    ppl_new_frame_size(context, 128, 24, 128);
    return BaylorToI420MMX(context, golden_source, golden_output, 128, 24) != 0;
  }

  HostedDriver &driver_;
};

TEST_F(Golden, FramesOfTheP3TierAreRight) {
  if (!has_tier()) GTEST_SKIP() << "this processor has no tier";
  replay(Tier::p3);
}

TEST_F(Golden, FramesOfTheSse2TierAreRight) {
  if (!has_tier() || !has_sse2_tier()) GTEST_SKIP() << "this processor has no SSE2 tier";
  replay(Tier::sse2);
}

// Emulated processors come with the tier that they must have in PPL_EXPECTED_TIER.
std::string expected_tier() {
  if (const char *const tier = getenv("PPL_EXPECTED_TIER")) return tier;
  return __builtin_cpu_supports("sse2") ? "sse2" : __builtin_cpu_supports("sse") ? "p3" : "none";
}

TEST_F(Golden, TierIsTheProcessors) {
  EXPECT_EQ(!has_tier() ? "none" : has_sse2_tier() ? "sse2" : "p3", expected_tier());
}

}  // namespace
}  // namespace ppl_test
