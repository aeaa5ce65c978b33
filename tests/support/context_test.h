// A fixture with a fresh context on the real processor.
#pragma once

#include <gtest/gtest.h>
#include <stdint.h>

#include <array>
#include <string>

#include "platform/test_hooks.h"
#include "ppl.h"

namespace ppl_test {

enum class Tier { p3, sse2 };
inline constexpr std::array both_tiers = {Tier::p3, Tier::sse2};
inline const char *name_of(Tier tier) { return tier == Tier::p3 ? "P3" : "SSE2"; }
inline std::string tier_name(const ::testing::TestParamInfo<Tier> &info) {
  return name_of(info.param);
}

inline bool has_sse2_tier() { return (ppl::test_hooks::processor_flags() & (1u << 26)) != 0; }

class ContextTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ppl::test_hooks::set_cpuid(nullptr);
    ppl::test_hooks::reset_counts();
    ppl::test_hooks::reload_pool();
    ctx = ppl_init();
    ASSERT_NE(ctx, nullptr);
  }
  void TearDown() override {
    ppl::test_hooks::reset_counts();
    ppl::test_hooks::set_cpuid(nullptr);
    if (ctx != nullptr) ppl_free(ctx);
  }

  // False if this processor lacks the tier: the caller then skips.
  bool use_tier(Tier tier) {
    ppl_set_P3_only(ctx, tier == Tier::p3);
    return tier == Tier::p3 || has_sse2_tier();
  }

  PplContext *ctx = nullptr;
};

}  // namespace ppl_test
