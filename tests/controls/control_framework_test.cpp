// What all controls have in common: the setter pattern, its bracket, its results, and which derived
// entries a call writes.
#include <limits.h>

#include "controls_fixture.h"

namespace ppl::controls_test {
namespace {

using Call = std::function<uint8_t(PplContext *)>;
using Stored = std::function<bool(const PplContext *)>;

// A call on a context as ppl_init hands it out.
struct Operation {
  const char *name;
  Call call;
  Stored stored;    // do the getters show what the call asked for?
  Entries written;  // the derived entries that it writes
  uint8_t result = 1;
};

std::ostream &operator<<(std::ostream &out, const Operation &operation) {
  return out << operation.name;
}

template <class Row>
std::string row_name(const testing::TestParamInfo<Row> &info) {
  return info.param.name;
}

const int32_t other_matrices[18] = {300, -20, -30, 7,  250, 9, -11, 12,  270,
                                    400, -70, -80, -9, 350, 1, -3,  -44, 303};

bool sensor_matrix_is(const PplContext *context, const int32_t (&expected)[18]) {
  int32_t matrices[18] = {};
  ppl_sensor_matrix(context, matrices);
  return std::equal(expected, expected + 18, matrices);
}

bool optical_black_is(const PplContext *context, const std::vector<uint32_t> &expected) {
  std::vector<uint32_t> values(4, 99999);
  ppl_optical_black_b_gb_gr_r(context, &values[0], &values[1], &values[2], &values[3]);
  return values == expected;
}

#define CALL(expression) [](PplContext *c) -> uint8_t { return expression; }
#define STORED(expression) [](const PplContext *c) { return expression; }

std::vector<Operation> setters() {
  return {
      {"set_optical_black",
       CALL(ppl_set_optical_black_b_gb_gr_r(c, 1, 2, 3, 255)),
       STORED(optical_black_is(c, {1, 2, 3, 255})),
       {"optical_black_BG_vec", "optical_black_GR_vec"}},
      {"set_rgb_delta",
       CALL(ppl_set_rgb_delta(c, -5, 6, 7)),
       STORED(ppl_r_delta(c) == -5 && ppl_g_delta(c) == 6 && ppl_b_delta(c) == 7),
       {"rgb_delta_BG_vec", "rgb_delta_GR_vec"}},
      {"set_r_delta",
       CALL(ppl_set_r_delta(c, -5)),
       STORED(ppl_r_delta(c) == -5),
       {"rgb_delta_GR_vec"}},
      {"set_g_delta",
       CALL(ppl_set_g_delta(c, -6)),
       STORED(ppl_g_delta(c) == -6),
       {"rgb_delta_BG_vec", "rgb_delta_GR_vec"}},
      {"set_b_delta",
       CALL(ppl_set_b_delta(c, -7)),
       STORED(ppl_b_delta(c) == -7),
       {"rgb_delta_BG_vec"}},
      {"set_rgb_gain",
       CALL(ppl_set_rgb_gain(c, 300, 400, 500)),
       STORED(ppl_nf88_r_gain(c) == 300 && ppl_nf88_g_gain(c) == 400 && ppl_nf88_b_gain(c) == 500),
       {"rgb_gain_BG_vec", "rgb_gain_GR_vec"}},
      {"set_r_gain",
       CALL(ppl_set_r_gain(c, 300)),
       STORED(ppl_nf88_r_gain(c) == 300),
       {"rgb_gain_GR_vec"}},
      {"set_g_gain",
       CALL(ppl_set_g_gain(c, 400)),
       STORED(ppl_nf88_g_gain(c) == 400),
       {"rgb_gain_BG_vec", "rgb_gain_GR_vec"}},
      {"set_b_gain",
       CALL(ppl_set_b_gain(c, 500)),
       STORED(ppl_nf88_b_gain(c) == 500),
       {"rgb_gain_BG_vec"}},
      {"copy_sensor_matrix", CALL(ppl_copy_sensor_matrix(c, other_matrices)),
       STORED(sensor_matrix_is(c, other_matrices)), colour_entries},
      {"set_sensor_matrix_index_upper_bound", CALL(ppl_set_sensor_matrix_index_upper_bound(c, 20)),
       STORED(ppl_sensor_matrix_index_upper_bound(c) == 20), colour_entries},
      // Nothing is derived from these three.
      {"set_h_mirror", CALL(ppl_set_h_mirror(c, 1)), STORED(ppl_h_mirror(c) == 1), no_entries},
      {"set_v_mirror", CALL(ppl_set_v_mirror(c, 1)), STORED(ppl_v_mirror(c) == 1), no_entries},
      {"set_decimation", CALL(ppl_set_decimation(c, 1, 2, 3)),
       STORED(ppl_decimation(c) == 1 && ppl_decimation_top_black_lines(c) == 2 &&
              ppl_decimation_bottom_black_lines(c) == 3),
       no_entries},
      // The difference threshold has no entry that is ever written: its setter writes the hot one.
      {"set_medium_filter_diff_threshold",
       CALL(ppl_set_medium_filter_diff_threshold(c, 30)),
       STORED(ppl_medium_filter_diff_threshold(c) == 30),
       {"medium_hot_vec"}},
      {"set_medium_filter_hot_pixel_threshold",
       CALL(ppl_set_medium_filter_hot_pixel_threshold(c, 31)),
       STORED(ppl_medium_filter_hot_pixel_threshold(c) == 31),
       {"medium_hot_vec"}},
      {"set_medium_filter_dead_pixel_threshold",
       CALL(ppl_set_medium_filter_dead_pixel_threshold(c, 32)),
       STORED(ppl_medium_filter_dead_pixel_threshold(c) == 32),
       {"medium_dead_vec"}},
      {"set_medium_filter_hot_pixel_percentage",
       CALL(ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage(c, 33)),
       STORED(ppl_nf88_medium_filter_hot_pixel_threshold_percentage(c) == 33),
       {"medium_hot_pct_vec"}},
      {"set_medium_filter_dead_pixel_percentage",
       CALL(ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage(c, 34)),
       STORED(ppl_nf88_medium_filter_dead_pixel_threshold_percentage(c) == 34),
       {"medium_dead_pct_vec"}},
      {"set_edge_threshold",
       CALL(ppl_set_edge_threshold(c, 35)),
       STORED(ppl_edge_threshold(c) == 35),
       {"edge_threshold_vec"}},
      {"set_edge_threshold2",
       CALL(ppl_set_edge_threshold2(c, 36)),
       STORED(ppl_edge_threshold2(c) == 36),
       {"edge_threshold2_vec"}},
      {"set_edge_enhance_factor",
       CALL(ppl_set_nf88_edge_enhance_factor(c, 37)),
       STORED(ppl_nf88_edge_enhance_factor(c) == 37),
       {"edge_enhance_factor_vec"}},
      {"set_noise_filter_G",
       CALL(ppl_set_noise_filter_G_12T_threshold(c, 38)),
       STORED(ppl_noise_filter_G_12T_threshold(c) == 38),
       {"noise_G_12T_vec"}},
      {"set_noise_filter_R",
       CALL(ppl_set_noise_filter_R_8T_threshold(c, 39)),
       STORED(ppl_noise_filter_R_8T_threshold(c) == 39),
       {"noise_R_8T_vec"}},
      {"set_noise_filter_B",
       CALL(ppl_set_noise_filter_B_8T_threshold(c, 41)),
       STORED(ppl_noise_filter_B_8T_threshold(c) == 41),
       {"noise_B_8T_vec"}},
      {"set_CFA_T0_threshold",
       CALL(ppl_set_CFA_T0_threshold(c, 42)),
       STORED(ppl_CFA_T0_threshold(c) == 42),
       {"CFA_T0_vec"}},
      {"set_CFA_T1_threshold",
       CALL(ppl_set_CFA_T1_threshold(c, 43)),
       STORED(ppl_CFA_T1_threshold(c) == 43),
       {"CFA_T1_vec"}},
      {"set_intl_3T_threshold",
       CALL(ppl_set_intl_3T_threshold(c, 44)),
       STORED(ppl_intl_3T_threshold(c) == 44),
       {"intl_3T_vec"}},
      {"set_contrast_c", CALL(ppl_set_contrast_c(c, 10, nullptr, nullptr)),
       STORED(ppl_contrast_table(c)[10] == 0 && ppl_contrast_table(c)[11] != 0), colour_entries},
      {"set_contrast_xy", CALL(ppl_set_contrast_xy(c, 0, 9)), STORED(ppl_contrast_table(c)[0] == 9),
       colour_entries},
      {"set_sat_hue", CALL(ppl_set_sat_hue(c, 300, 40)),
       STORED(ppl_nf88_sat(c) == 300 && ppl_hue_degree(c) == 40), colour_entries},
      {"set_sat", CALL(ppl_set_sat(c, 301)), STORED(ppl_nf88_sat(c) == 301), colour_entries},
      {"set_hue", CALL(ppl_set_hue(c, 41)), STORED(ppl_hue_degree(c) == 41), colour_entries},
      {"set_qual_BmGb",
       CALL(ppl_set_qual_BmGb_min_max(c, -3, 4)),
       STORED(ppl_qual_BmGb_min(c) == -3 && ppl_qual_BmGb_max(c) == 4),
       {"qual_BmGb_lo_vec", "qual_BmGb_hi_vec"}},
      {"set_qual_GrmR",
       CALL(ppl_set_qual_GrmR_min_max(c, -5, 6)),
       STORED(ppl_qual_GrmR_min(c) == -5 && ppl_qual_GrmR_max(c) == 6),
       {"qual_GrmR_lo_vec", "qual_GrmR_hi_vec"}},
      {"set_qual_BmGb_p_GrmR",
       CALL(ppl_set_qual_BmGb_p_GrmR_min_max(c, -7, 8)),
       STORED(ppl_qual_BmGb_p_GrmR_min(c) == -7 && ppl_qual_BmGb_p_GrmR_max(c) == 8),
       {"qual_BmGb_p_GrmR_lo_vec", "qual_BmGb_p_GrmR_hi_vec"}},
      {"set_qual_BmGb_m_GrmR",
       CALL(ppl_set_qual_BmGb_m_GrmR_min_max(c, -9, 10)),
       STORED(ppl_qual_BmGb_m_GrmR_min(c) == -9 && ppl_qual_BmGb_m_GrmR_max(c) == 10),
       {"qual_BmGb_m_GrmR_lo_vec", "qual_BmGb_m_GrmR_hi_vec"}},
      {"set_qual_R", CALL(ppl_set_qual_R_min_max(c, 11, 100)),
       STORED(ppl_qual_R_min(c) == 11 && ppl_qual_R_max(c) == 100), GR_band_entries},
      {"set_qual_G", CALL(ppl_set_qual_G_min_max(c, 12, 101)),
       STORED(ppl_qual_G_min(c) == 12 && ppl_qual_G_max(c) == 101),
       GR_band_entries + BG_band_entries},
      {"set_qual_B", CALL(ppl_set_qual_B_min_max(c, 13, 102)),
       STORED(ppl_qual_B_min(c) == 13 && ppl_qual_B_max(c) == 102), BG_band_entries},
      {"set_qual_RGB", CALL(ppl_set_qual_RGB_min_max(c, 1, 101, 2, 102, 3, 103)),
       STORED(ppl_qual_R_min(c) == 1 && ppl_qual_R_max(c) == 101 && ppl_qual_G_min(c) == 2 &&
              ppl_qual_G_max(c) == 102 && ppl_qual_B_min(c) == 3 && ppl_qual_B_max(c) == 103),
       GR_band_entries + BG_band_entries},
      {"set_qAE_RGB", CALL(ppl_set_qAE_RGB_min_max(c, 14, 103)),
       STORED(ppl_qAE_RGB_min(c) == 14 && ppl_qAE_RGB_max(c) == 103), qAE_entries},
      // The gains of the qual test report 0 whatever happened.
      {"set_quals_rgb_gain",
       CALL(ppl_set_quals_rgb_gain(c, 300, 400, 500)),
       STORED(ppl_nf88_quals_r_gain(c) == 300 && ppl_nf88_quals_g_gain(c) == 400 &&
              ppl_nf88_quals_b_gain(c) == 500),
       {"quals_gain_BG_vec", "quals_gain_GR_vec"},
       0},
      {"set_quals_r_gain",
       CALL(ppl_set_quals_r_gain(c, 300)),
       STORED(ppl_nf88_quals_r_gain(c) == 300),
       {"quals_gain_GR_vec"},
       0},
      {"set_quals_g_gain",
       CALL(ppl_set_quals_g_gain(c, 400)),
       STORED(ppl_nf88_quals_g_gain(c) == 400),
       {"quals_gain_BG_vec", "quals_gain_GR_vec"},
       0},
      {"set_quals_b_gain",
       CALL(ppl_set_quals_b_gain(c, 500)),
       STORED(ppl_nf88_quals_b_gain(c) == 500),
       {"quals_gain_BG_vec"},
       0},
  };
}

class ControlSetter : public ControlsTest, public testing::WithParamInterface<Operation> {};

TEST_P(ControlSetter, StoresThePlainValueAndReturnsItsResult) {
  const Operation &setter = GetParam();
  ASSERT_FALSE(setter.stored(context));
  EXPECT_EQ(setter.call(context), setter.result);
  EXPECT_TRUE(setter.stored(context));
}

TEST_P(ControlSetter, WritesItsEntriesAndNoOther) {
  poison_derived(context);
  GetParam().call(context);
  expect_written(GetParam().written);
}

TEST_P(ControlSetter, SavesAndRestoresTheFloatingPointStateOnce) {
  GetParam().call(context);
  EXPECT_EQ(test_hooks::save_count(), 1u);
  EXPECT_EQ(test_hooks::restore_count(), 1u);
}

TEST_P(ControlSetter, AfterAFailedSaveStoresThePlainValueAndLeavesTheEntries) {
  const Operation &setter = GetParam();
  poison_derived(context);
  test_hooks::fail_saves(0, 1);
  EXPECT_EQ(setter.call(context), setter.result);
  EXPECT_TRUE(setter.stored(context));
  expect_written(no_entries);
  EXPECT_EQ(test_hooks::save_count(), 1u);
  EXPECT_EQ(test_hooks::restore_count(), 0u);
}

TEST_P(ControlSetter, WritesItsEntriesWhicheverTierTheProcessorHas) {
  for (const ProcessorLook &look : {p3_processor, sse2_without_p3_processor}) {
    restart_on(look);
    poison_derived(context);
    EXPECT_EQ(GetParam().call(context), GetParam().result);
    expect_written(GetParam().written);
  }
}

TEST_P(ControlSetter, WritesItsEntriesAlsoIfEverySaveOfTheFirstInitFailed) {
  restart_on(sse2_processor, UINT32_MAX);
  poison_derived(context);
  EXPECT_EQ(GetParam().call(context), GetParam().result);
  expect_written(GetParam().written);
}

TEST_P(ControlSetter, StoresAndSavesButWritesNothingOnAProcessorWithoutATier) {
  restart_on(no_tier_processor);
  poison_derived(context);
  EXPECT_EQ(GetParam().call(context), GetParam().result);
  EXPECT_TRUE(GetParam().stored(context));
  expect_written(no_entries);
  EXPECT_EQ(test_hooks::save_count(), 1u);
  EXPECT_EQ(test_hooks::restore_count(), 1u);
}

TEST_P(ControlSetter, WritesItsEntriesAlsoWhileTheContextIsHeldToTheP3Tier) {
  ppl_set_P3_only(context, 1);
  poison_derived(context);
  GetParam().call(context);
  expect_written(GetParam().written);
}

INSTANTIATE_TEST_SUITE_P(All, ControlSetter, testing::ValuesIn(setters()), row_name<Operation>);

// ---- Stores without a bracket ----

uint8_t copy_table(uint8_t (*copy)(PplContext *, const uint8_t *), PplContext *context) {
  return copy(context, scrambled_table().data());
}

bool table_is_scrambled(const uint8_t *table) {
  const std::vector<uint8_t> expected = scrambled_table();
  return std::equal(expected.begin(), expected.end(), table);
}

std::vector<Operation> plain_stores() {
  return {
      {"set_quality", CALL(ppl_set_quality(c, 14)), STORED(ppl_quality(c) == 14), no_entries},
      {"set_mean_collection", CALL(ppl_set_mean_collection(c, 0)),
       STORED(ppl_mean_collection(c) == 0), no_entries},
      {"set_P3_only", CALL(ppl_set_P3_only(c, 1)), STORED(ppl_P3_only(c) == 1), no_entries},
      {"enable_medium_filter", CALL(ppl_enable_medium_filter(c)),
       STORED(ppl_medium_filter_enabled(c) != 0), no_entries},
      // The copies of the dekneel tables report 0 although they always succeed.
      {"copy_r_dekneel_table", CALL(copy_table(ppl_copy_r_dekneel_table, c)),
       STORED(table_is_scrambled(ppl_r_dekneel_table(c))), no_entries, 0},
      {"copy_g_dekneel_table", CALL(copy_table(ppl_copy_g_dekneel_table, c)),
       STORED(table_is_scrambled(ppl_g_dekneel_table(c))), no_entries, 0},
      {"copy_b_dekneel_table", CALL(copy_table(ppl_copy_b_dekneel_table, c)),
       STORED(table_is_scrambled(ppl_b_dekneel_table(c))), no_entries, 0},
      {"set_gamma", CALL(ppl_set_gamma(c, 5)), STORED(ppl_rgb_gamma_table(c)[1] > 4), no_entries},
      {"copy_yuv_gamma_table", CALL(copy_table(ppl_copy_yuv_gamma_table, c)),
       STORED(table_is_scrambled(ppl_yuv_gamma_table(c))), no_entries},
      {"copy_rgb_gamma_table", CALL(copy_table(ppl_copy_rgb_gamma_table, c)),
       STORED(table_is_scrambled(ppl_rgb_gamma_table(c))), no_entries},
      {"copy_contrast_table", CALL(copy_table(ppl_copy_contrast_table, c)),
       STORED(table_is_scrambled(ppl_contrast_table(c))), no_entries},
  };
}

class PlainStore : public ControlsTest, public testing::WithParamInterface<Operation> {};

TEST_P(PlainStore, StoresAndReturnsItsResult) {
  ASSERT_FALSE(GetParam().stored(context));
  EXPECT_EQ(GetParam().call(context), GetParam().result);
  EXPECT_TRUE(GetParam().stored(context));
}

TEST_P(PlainStore, TakesNoBracketAndWritesNoEntry) {
  poison_derived(context);
  GetParam().call(context);
  EXPECT_EQ(test_hooks::save_count(), 0u);
  EXPECT_EQ(test_hooks::restore_count(), 0u);
  expect_written(no_entries);
}

TEST_P(PlainStore, WorksWhereNoSaveEverSucceeds) {
  test_hooks::fail_saves(0, UINT32_MAX);
  EXPECT_EQ(GetParam().call(context), GetParam().result);
  EXPECT_TRUE(GetParam().stored(context));
}

INSTANTIATE_TEST_SUITE_P(All, PlainStore, testing::ValuesIn(plain_stores()), row_name<Operation>);

TEST_F(ControlsTest, DisablingTheMediumFilterIsAPlainStoreToo) {
  ppl_enable_medium_filter(context);
  poison_derived(context);
  EXPECT_EQ(ppl_disable_medium_filter(context), 1);
  EXPECT_EQ(ppl_medium_filter_enabled(context), 0);
  EXPECT_EQ(test_hooks::save_count(), 0u);
  expect_written(no_entries);
}

// ---- Refused arguments ----

struct Refusal {
  const char *name;
  Call call;
};

std::ostream &operator<<(std::ostream &out, const Refusal &refusal) { return out << refusal.name; }

std::vector<Refusal> refusals() {
  return {
      {"quality_15", CALL(ppl_set_quality(c, 15))},
      {"quality_minus_1", CALL(ppl_set_quality(c, UINT32_MAX))},
      {"sensor_type_unknown", CALL(ppl_set_sensor_type(c, 22357))},
      {"decimation_minus_2", CALL(ppl_set_decimation(c, -2, 0, 0))},
      {"decimation_3", CALL(ppl_set_decimation(c, 3, 0, 0))},
      {"gamma_minus_33", CALL(ppl_set_gamma(c, -33))},
      {"gamma_33", CALL(ppl_set_gamma(c, 33))},
      {"contrast_c_minus_128", CALL(ppl_set_contrast_c(c, -128, nullptr, nullptr))},
      {"contrast_c_128", CALL(ppl_set_contrast_c(c, 128, nullptr, nullptr))},
      {"contrast_x_128", CALL(ppl_set_contrast_xy(c, 128, 0))},
      {"contrast_x_minus_1", CALL(ppl_set_contrast_xy(c, UINT32_MAX, 0))},
      {"sat_hue_513", CALL(ppl_set_sat_hue(c, 513, 77))},
      {"sat_513", CALL(ppl_set_sat(c, 513))},
      {"sat_minus_1", CALL(ppl_set_sat(c, UINT32_MAX))},
      {"qual_BmGb_reversed", CALL(ppl_set_qual_BmGb_min_max(c, 5, 4))},
      {"qual_GrmR_reversed", CALL(ppl_set_qual_GrmR_min_max(c, 0, -1))},
      {"qual_BmGb_p_GrmR_reversed", CALL(ppl_set_qual_BmGb_p_GrmR_min_max(c, -4, -5))},
      {"qual_BmGb_m_GrmR_reversed", CALL(ppl_set_qual_BmGb_m_GrmR_min_max(c, INT_MAX, INT_MIN))},
      {"qual_R_reversed", CALL(ppl_set_qual_R_min_max(c, 5, 4))},
      {"qual_R_below_0", CALL(ppl_set_qual_R_min_max(c, -1, 4))},
      {"qual_R_above_255", CALL(ppl_set_qual_R_min_max(c, 5, 256))},
      {"qual_G_reversed", CALL(ppl_set_qual_G_min_max(c, 5, 4))},
      {"qual_G_below_0", CALL(ppl_set_qual_G_min_max(c, -1, 4))},
      {"qual_G_above_255", CALL(ppl_set_qual_G_min_max(c, 5, 256))},
      {"qual_B_reversed", CALL(ppl_set_qual_B_min_max(c, 5, 4))},
      {"qual_B_below_0", CALL(ppl_set_qual_B_min_max(c, -1, 4))},
      {"qual_B_above_255", CALL(ppl_set_qual_B_min_max(c, 5, 256))},
      {"qual_RGB_bad_R", CALL(ppl_set_qual_RGB_min_max(c, -1, 9, 1, 9, 1, 9))},
      {"qual_RGB_bad_G", CALL(ppl_set_qual_RGB_min_max(c, 1, 9, 9, 1, 1, 9))},
      {"qual_RGB_bad_B", CALL(ppl_set_qual_RGB_min_max(c, 1, 9, 1, 9, 1, 256))},
      {"qAE_reversed", CALL(ppl_set_qAE_RGB_min_max(c, 5, 4))},
      {"qAE_below_0", CALL(ppl_set_qAE_RGB_min_max(c, -1, 4))},
      {"qAE_above_255", CALL(ppl_set_qAE_RGB_min_max(c, 5, 256))},
  };
}

class Refused : public ControlsTest, public testing::WithParamInterface<Refusal> {};

TEST_P(Refused, ReturnsZeroChangesNothingAndUsesNoSave) {
  const std::vector<uint8_t> before = bytes_of(context);
  EXPECT_EQ(GetParam().call(context), 0);
  EXPECT_TRUE(bytes_of(context) == before);
  EXPECT_EQ(test_hooks::save_count(), 0u);
}

INSTANTIATE_TEST_SUITE_P(All, Refused, testing::ValuesIn(refusals()), row_name<Refusal>);

// ---- Values that are stored but fit no entry ----

std::vector<Operation> unfit_values() {
  return {
      {"optical_black_b_256", CALL(ppl_set_optical_black_b_gb_gr_r(c, 256, 1, 2, 3)),
       STORED(optical_black_is(c, {256, 1, 2, 3})), no_entries},
      {"optical_black_gb_256", CALL(ppl_set_optical_black_b_gb_gr_r(c, 1, 256, 2, 3)),
       STORED(optical_black_is(c, {1, 256, 2, 3})), no_entries},
      {"optical_black_gr_256", CALL(ppl_set_optical_black_b_gb_gr_r(c, 1, 2, 256, 3)),
       STORED(optical_black_is(c, {1, 2, 256, 3})), no_entries},
      {"optical_black_r_minus_1", CALL(ppl_set_optical_black_b_gb_gr_r(c, 1, 2, 3, UINT32_MAX)),
       STORED(optical_black_is(c, {1, 2, 3, UINT32_MAX})), no_entries},
      {"rgb_delta_r_32768", CALL(ppl_set_rgb_delta(c, 32768, 1, 2)),
       STORED(ppl_r_delta(c) == 32768 && ppl_g_delta(c) == 1 && ppl_b_delta(c) == 2), no_entries},
      {"rgb_delta_g_minus_32769", CALL(ppl_set_rgb_delta(c, 1, -32769, 2)),
       STORED(ppl_r_delta(c) == 1 && ppl_g_delta(c) == -32769 && ppl_b_delta(c) == 2), no_entries},
      {"rgb_delta_b_32768", CALL(ppl_set_rgb_delta(c, 1, 2, 32768)),
       STORED(ppl_r_delta(c) == 1 && ppl_g_delta(c) == 2 && ppl_b_delta(c) == 32768), no_entries},
      {"r_delta_minus_32769", CALL(ppl_set_r_delta(c, -32769)), STORED(ppl_r_delta(c) == -32769),
       no_entries},
      {"g_delta_32768", CALL(ppl_set_g_delta(c, 32768)), STORED(ppl_g_delta(c) == 32768),
       no_entries},
      {"b_delta_32768", CALL(ppl_set_b_delta(c, 32768)), STORED(ppl_b_delta(c) == 32768),
       no_entries},
      {"rgb_gain_r_2048", CALL(ppl_set_rgb_gain(c, 2048, 1, 2)),
       STORED(ppl_nf88_r_gain(c) == 2048 && ppl_nf88_g_gain(c) == 1 && ppl_nf88_b_gain(c) == 2),
       no_entries},
      {"rgb_gain_g_minus_1", CALL(ppl_set_rgb_gain(c, 1, -1, 2)),
       STORED(ppl_nf88_r_gain(c) == 1 && ppl_nf88_g_gain(c) == -1 && ppl_nf88_b_gain(c) == 2),
       no_entries},
      {"rgb_gain_b_2048", CALL(ppl_set_rgb_gain(c, 1, 2, 2048)),
       STORED(ppl_nf88_r_gain(c) == 1 && ppl_nf88_g_gain(c) == 2 && ppl_nf88_b_gain(c) == 2048),
       no_entries},
      {"r_gain_2048", CALL(ppl_set_r_gain(c, 2048)), STORED(ppl_nf88_r_gain(c) == 2048),
       no_entries},
      {"g_gain_minus_1", CALL(ppl_set_g_gain(c, -1)), STORED(ppl_nf88_g_gain(c) == -1), no_entries},
      {"b_gain_2048", CALL(ppl_set_b_gain(c, 2048)), STORED(ppl_nf88_b_gain(c) == 2048),
       no_entries},
      {"hot_pixel_threshold_32768", CALL(ppl_set_medium_filter_hot_pixel_threshold(c, 32768)),
       STORED(ppl_medium_filter_hot_pixel_threshold(c) == 32768), no_entries},
      {"dead_pixel_threshold_minus_32769",
       CALL(ppl_set_medium_filter_dead_pixel_threshold(c, -32769)),
       STORED(ppl_medium_filter_dead_pixel_threshold(c) == -32769), no_entries},
      {"hot_pixel_percentage_65536",
       CALL(ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage(c, 65536)),
       STORED(ppl_nf88_medium_filter_hot_pixel_threshold_percentage(c) == 65536), no_entries},
      {"dead_pixel_percentage_minus_65537",
       CALL(ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage(c, -65537)),
       STORED(ppl_nf88_medium_filter_dead_pixel_threshold_percentage(c) == -65537), no_entries},
      {"qual_BmGb_minus_32768", CALL(ppl_set_qual_BmGb_min_max(c, -32768, 0)),
       STORED(ppl_qual_BmGb_min(c) == -32768 && ppl_qual_BmGb_max(c) == 0), no_entries},
      {"qual_GrmR_32767", CALL(ppl_set_qual_GrmR_min_max(c, 0, 32767)),
       STORED(ppl_qual_GrmR_min(c) == 0 && ppl_qual_GrmR_max(c) == 32767), no_entries},
      {"qual_BmGb_p_GrmR_40000", CALL(ppl_set_qual_BmGb_p_GrmR_min_max(c, 40000, 50000)),
       STORED(ppl_qual_BmGb_p_GrmR_min(c) == 40000 && ppl_qual_BmGb_p_GrmR_max(c) == 50000),
       no_entries},
      {"qual_BmGb_m_GrmR_minus_40000", CALL(ppl_set_qual_BmGb_m_GrmR_min_max(c, -50000, -40000)),
       STORED(ppl_qual_BmGb_m_GrmR_min(c) == -50000 && ppl_qual_BmGb_m_GrmR_max(c) == -40000),
       no_entries},
  };
}

class UnfitValue : public ControlsTest, public testing::WithParamInterface<Operation> {};

TEST_P(UnfitValue, IsStoredKeepsTheOldEntriesAndReturnsZero) {
  poison_derived(context);
  EXPECT_EQ(GetParam().call(context), 0);
  EXPECT_TRUE(GetParam().stored(context));
  expect_written(no_entries);
}

TEST_P(UnfitValue, RestoresTheFloatingPointState) {
  GetParam().call(context);
  EXPECT_EQ(test_hooks::save_count(), 1u);
  EXPECT_EQ(test_hooks::restore_count(), 1u);
}

TEST_P(UnfitValue, ReturnsOneAfterAFailedSave) {
  poison_derived(context);
  test_hooks::fail_saves(0, 1);
  EXPECT_EQ(GetParam().call(context), 1);
  EXPECT_TRUE(GetParam().stored(context));
  expect_written(no_entries);
}

TEST_P(UnfitValue, ReturnsZeroWhicheverTierTheProcessorHas) {
  for (const ProcessorLook &look : {p3_processor, sse2_without_p3_processor}) {
    restart_on(look);
    EXPECT_EQ(GetParam().call(context), 0);
  }
}

// Only the refreshers test the fit, and there is none.
TEST_P(UnfitValue, ReturnsOneOnAProcessorWithoutATier) {
  restart_on(no_tier_processor);
  EXPECT_EQ(GetParam().call(context), 1);
  EXPECT_TRUE(GetParam().stored(context));
}

INSTANTIATE_TEST_SUITE_P(All, UnfitValue, testing::ValuesIn(unfit_values()), row_name<Operation>);

// ---- The pattern's rarer turns ----

TEST_F(ControlsTest, ALaterGoodValueBringsPlainAndDerivedTogetherAgain) {
  EXPECT_EQ(ppl_set_r_delta(context, 32768), 0);
  expect_pair("rgb_delta_GR_vec", 0, 0);
  EXPECT_EQ(ppl_set_r_delta(context, 7), 1);
  expect_pair("rgb_delta_GR_vec", 0, 7);
}

TEST_F(ControlsTest, ALaterSetAfterAFailedSaveRefreshesTheEntry) {
  test_hooks::fail_saves(0, 1);
  EXPECT_EQ(ppl_set_edge_threshold(context, 200), 1);
  expect_value("edge_threshold_vec", 100);
  EXPECT_EQ(ppl_set_edge_threshold(context, 201), 1);
  expect_value("edge_threshold_vec", 201);
}

TEST_F(ControlsTest, ASetterDetectsTheProcessorIfNothingDidSo) {
  processor.emplace(no_tier_processor);
  poison_derived(context);
  ppl_set_edge_threshold(context, 200);
  expect_written(no_entries);
  processor.emplace(p3_processor);
  ppl_set_edge_threshold(context, 201);
  expect_written({"edge_threshold_vec"});
}

TEST_F(ControlsTest, ContextsKeepTheirControlsApart) {
  PplContext *const other = ppl_init();
  ASSERT_NE(other, nullptr);
  poison_derived(other);
  ppl_set_rgb_gain(context, 300, 400, 500);
  EXPECT_EQ(ppl_nf88_r_gain(other), 256);
  EXPECT_EQ(written_entries(other), no_entries);
}

TEST_F(ControlsTest, NoResetTouchesWhatFramesLeaveBehind) {
  for (const Tier tier : both_tiers) {
    memset(&tier_state(context, tier).memory, poison, sizeof(TierMemory));
  }
  ppl_reset_all_controls(context);
  const std::vector<uint8_t> untouched(sizeof(TierMemory), poison);
  for (const Tier tier : both_tiers) {
    EXPECT_EQ(memcmp(&tier_state(context, tier).memory, untouched.data(), untouched.size()), 0);
  }
}

}  // namespace
}  // namespace ppl::controls_test
