// The thresholds of the filters: limits, defaults and derived entries.
#include <limits.h>

#include "controls_fixture.h"

namespace ppl::controls_test {
namespace {

struct Threshold {
  const char *name;
  int32_t (*get)(const PplContext *);
  uint8_t (*set)(PplContext *, int32_t);
  int32_t default_value;
  const char *entry;
  int shift;            // of the value in its entry
  int32_t limit;        // refused above it, unsigned; -1 where there is no limit
  int32_t fit_min = 0;  // without a limit: what the entry takes
  int32_t fit_max = 0;
};

std::ostream &operator<<(std::ostream &out, const Threshold &threshold) {
  return out << threshold.name;
}

const std::vector<Threshold> thresholds = {
    {"hot_pixel_threshold", ppl_medium_filter_hot_pixel_threshold,
     ppl_set_medium_filter_hot_pixel_threshold, 240, "medium_hot_vec", 0, -1, -32768, 32767},
    {"dead_pixel_threshold", ppl_medium_filter_dead_pixel_threshold,
     ppl_set_medium_filter_dead_pixel_threshold, 16, "medium_dead_vec", 0, -1, -32768, 32767},
    {"hot_pixel_percentage", ppl_nf88_medium_filter_hot_pixel_threshold_percentage,
     ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage, 80, "medium_hot_pct_vec", 2, -1,
     -65536, 65535},
    {"dead_pixel_percentage", ppl_nf88_medium_filter_dead_pixel_threshold_percentage,
     ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage, 48, "medium_dead_pct_vec", 2, -1,
     -65536, 65535},
    {"edge_threshold", ppl_edge_threshold, ppl_set_edge_threshold, 100, "edge_threshold_vec", 0,
     1530},
    {"edge_threshold2", ppl_edge_threshold2, ppl_set_edge_threshold2, 1530, "edge_threshold2_vec",
     0, 1530},
    {"edge_enhance_factor", ppl_nf88_edge_enhance_factor, ppl_set_nf88_edge_enhance_factor, 32,
     "edge_enhance_factor_vec", 2, 256},
    {"noise_filter_G_12T", ppl_noise_filter_G_12T_threshold, ppl_set_noise_filter_G_12T_threshold,
     60, "noise_G_12T_vec", 0, 3060},
    {"noise_filter_R_8T", ppl_noise_filter_R_8T_threshold, ppl_set_noise_filter_R_8T_threshold, 40,
     "noise_R_8T_vec", 0, 2040},
    {"noise_filter_B_8T", ppl_noise_filter_B_8T_threshold, ppl_set_noise_filter_B_8T_threshold, 40,
     "noise_B_8T_vec", 0, 2040},
    {"CFA_T0", ppl_CFA_T0_threshold, ppl_set_CFA_T0_threshold, 10, "CFA_T0_vec", 0, 255},
    {"CFA_T1", ppl_CFA_T1_threshold, ppl_set_CFA_T1_threshold, 15, "CFA_T1_vec", 0, 63},
    {"intl_3T", ppl_intl_3T_threshold, ppl_set_intl_3T_threshold, 50, "intl_3T_vec", 0, 765},
};

class Thresholds : public ControlsTest, public testing::WithParamInterface<Threshold> {
 protected:
  void expect_entry_of(int32_t value) { expect_value(GetParam().entry, value >> GetParam().shift); }

  bool limited() const { return GetParam().limit >= 0; }
};

TEST_P(Thresholds, StartsAtItsDefault) {
  EXPECT_EQ(GetParam().get(context), GetParam().default_value);
  expect_entry_of(GetParam().default_value);
}

TEST_P(Thresholds, TakesTheLowestValue) {
  const int32_t lowest = limited() ? 0 : GetParam().fit_min;
  EXPECT_EQ(GetParam().set(context, lowest), 1);
  EXPECT_EQ(GetParam().get(context), lowest);
  expect_entry_of(lowest);
}

TEST_P(Thresholds, TakesTheHighestValue) {
  const int32_t highest = limited() ? GetParam().limit : GetParam().fit_max;
  ASSERT_EQ(GetParam().set(context, 1), 1);
  EXPECT_EQ(GetParam().set(context, highest), 1);
  EXPECT_EQ(GetParam().get(context), highest);
  expect_entry_of(highest);
}

TEST_P(Thresholds, TakesEveryValueOfASmallRange) {
  const int32_t highest = limited() ? GetParam().limit : 300;
  for (int32_t value = 0; value <= highest; value += 1 + highest / 64) {
    SCOPED_TRACE(value);
    EXPECT_EQ(GetParam().set(context, value), 1);
    EXPECT_EQ(GetParam().get(context), value);
    expect_entry_of(value);
  }
}

TEST_P(Thresholds, OutsideItsRangeRefusesOrKeepsTheOldEntry) {
  const Threshold &threshold = GetParam();
  const int32_t below = limited() ? -1 : threshold.fit_min - 1;
  const int32_t above = (limited() ? threshold.limit : threshold.fit_max) + 1;
  for (const int32_t value : {below, above, INT_MIN, INT_MAX}) {
    SCOPED_TRACE(value);
    ASSERT_EQ(threshold.set(context, 5), 1);
    test_hooks::reset_counts();
    EXPECT_EQ(threshold.set(context, value), 0);
    EXPECT_EQ(threshold.get(context), limited() ? 5 : value);
    EXPECT_EQ(test_hooks::save_count(), limited() ? 0u : 1u);
    expect_entry_of(5);
  }
}

INSTANTIATE_TEST_SUITE_P(All, Thresholds, testing::ValuesIn(thresholds),
                         [](const testing::TestParamInfo<Threshold> &info) {
                           return std::string(info.param.name);
                         });

using ThresholdControls = ControlsTest;

TEST_F(ThresholdControls, EdgeThresholdsAreTwoControls) {
  ppl_set_edge_threshold(context, 3);
  ppl_set_edge_threshold2(context, 4);
  EXPECT_EQ(ppl_edge_threshold(context), 3);
  EXPECT_EQ(ppl_edge_threshold2(context), 4);
}

TEST_F(ThresholdControls, FullEdgeEnhanceFactorIs64In8Point6) {
  EXPECT_EQ(ppl_set_nf88_edge_enhance_factor(context, 256), 1);
  expect_value("edge_enhance_factor_vec", 64);
  EXPECT_EQ(ppl_set_nf88_edge_enhance_factor(context, 257), 0);
  expect_value("edge_enhance_factor_vec", 64);
}

TEST_F(ThresholdControls, NegativePercentagesShiftArithmetically) {
  EXPECT_EQ(ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage(context, -1), 1);
  expect_value("medium_hot_pct_vec", -1);
  EXPECT_EQ(ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage(context, -65536), 1);
  expect_value("medium_dead_pct_vec", -16384);
}

TEST_F(ThresholdControls, HotPixelThresholdThatDoesNotFitKeepsTheOldEntry) {
  EXPECT_EQ(ppl_set_medium_filter_hot_pixel_threshold(context, 40000), 0);
  EXPECT_EQ(ppl_medium_filter_hot_pixel_threshold(context), 40000);
  expect_value("medium_hot_vec", 240);
}

// ---- The difference threshold, whose own entry is never written ----

TEST_F(ThresholdControls, DiffThresholdStartsAt24) {
  EXPECT_EQ(ppl_medium_filter_diff_threshold(context), 24);
}

TEST_F(ThresholdControls, DiffThresholdTakesAnyValue) {
  for (const int32_t value : {0, -1, 32768, 70000, INT_MIN, INT_MAX}) {
    SCOPED_TRACE(value);
    EXPECT_EQ(ppl_set_medium_filter_diff_threshold(context, value), 1);
    EXPECT_EQ(ppl_medium_filter_diff_threshold(context), value);
  }
}

TEST_F(ThresholdControls, DiffThresholdRewritesTheHotEntryFromTheHotThreshold) {
  ppl_set_medium_filter_hot_pixel_threshold(context, 123);
  poison_derived(context);
  EXPECT_EQ(ppl_set_medium_filter_diff_threshold(context, 77), 1);
  expect_written({"medium_hot_vec"});
  expect_value("medium_hot_vec", 123);
}

TEST_F(ThresholdControls, DiffThresholdReturnsTheResultOfTheHotRefresher) {
  ppl_set_medium_filter_hot_pixel_threshold(context, 40000);
  EXPECT_EQ(ppl_set_medium_filter_diff_threshold(context, 5), 0);
  EXPECT_EQ(ppl_medium_filter_diff_threshold(context), 5);
  expect_value("medium_hot_vec", 240);
}

TEST_F(ThresholdControls, DiffEntryStaysZero) {
  ppl_set_medium_filter_diff_threshold(context, 77);
  ppl_reset_all_controls(context);
  expect_value("medium_diff_vec", 0);
}

// ---- The switch ----

TEST_F(ThresholdControls, MediumFilterIsSwitchedOnAndOff) {
  EXPECT_EQ(ppl_medium_filter_enabled(context), 0);
  EXPECT_EQ(ppl_enable_medium_filter(context), 1);
  EXPECT_EQ(ppl_medium_filter_enabled(context), 1);
  EXPECT_EQ(ppl_disable_medium_filter(context), 1);
  EXPECT_EQ(ppl_medium_filter_enabled(context), 0);
}

}  // namespace
}  // namespace ppl::controls_test
