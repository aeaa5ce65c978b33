// A fixture with a fresh context on the real processor.
#pragma once

#include <gtest/gtest.h>
#include <stdint.h>

#include <ostream>
#include <string>

#include "ppl.h"
#include "support/machine.h"

namespace ppl_test {

// For the messages of GoogleTest.
inline void PrintTo(Tier tier, std::ostream *out) { *out << name_of(tier); }

inline std::string tier_name(const ::testing::TestParamInfo<Tier> &info) {
  return name_of(info.param);
}

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
    return tier == Tier::p3 || has_tier(Tier::sse2);
  }

  PplContext *ctx = nullptr;
};

}  // namespace ppl_test
