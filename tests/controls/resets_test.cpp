// Every reset by itself, and the one that runs them all in its fixed order.
#include "colour_model.h"
#include "controls/gamma_data.h"
#include "controls_fixture.h"

namespace ppl::controls_test {
namespace {

struct Getter {
  const char *name;
  int64_t (*get)(const PplContext *);
  int64_t default_value;
};

#define GETTER(name, default_value)                                                  \
  Getter {                                                                           \
#name, [](const PplContext *c) { return int64_t{ppl_##name(c)}; }, default_value \
  }

const std::vector<Getter> getters = {
    GETTER(decimation, 0),
    GETTER(decimation_top_black_lines, 0),
    GETTER(decimation_bottom_black_lines, 0),
    GETTER(quality, 3),
    GETTER(mean_collection, 1),
    GETTER(P3_only, 0),
    GETTER(sensor_type, 0),
    GETTER(r_delta, 0),
    GETTER(g_delta, 0),
    GETTER(b_delta, 0),
    GETTER(nf88_r_gain, 256),
    GETTER(nf88_g_gain, 256),
    GETTER(nf88_b_gain, 256),
    GETTER(sensor_matrix_index_upper_bound, 12),
    GETTER(h_mirror, 0),
    GETTER(v_mirror, 0),
    GETTER(medium_filter_enabled, 0),
    GETTER(medium_filter_diff_threshold, 24),
    GETTER(medium_filter_hot_pixel_threshold, 240),
    GETTER(medium_filter_dead_pixel_threshold, 16),
    GETTER(nf88_medium_filter_hot_pixel_threshold_percentage, 80),
    GETTER(nf88_medium_filter_dead_pixel_threshold_percentage, 48),
    GETTER(edge_threshold, 100),
    GETTER(edge_threshold2, 1530),
    GETTER(nf88_edge_enhance_factor, 32),
    GETTER(noise_filter_G_12T_threshold, 60),
    GETTER(noise_filter_R_8T_threshold, 40),
    GETTER(noise_filter_B_8T_threshold, 40),
    GETTER(CFA_T0_threshold, 10),
    GETTER(CFA_T1_threshold, 15),
    GETTER(intl_3T_threshold, 50),
    GETTER(nf88_sat, 256),
    GETTER(hue_degree, 0),
    GETTER(qual_BmGb_min, -25),
    GETTER(qual_BmGb_max, 25),
    GETTER(qual_GrmR_min, -25),
    GETTER(qual_GrmR_max, 25),
    GETTER(qual_BmGb_p_GrmR_min, -30),
    GETTER(qual_BmGb_p_GrmR_max, 30),
    GETTER(qual_BmGb_m_GrmR_min, -30),
    GETTER(qual_BmGb_m_GrmR_max, 30),
    GETTER(qual_R_min, 0),
    GETTER(qual_R_max, 255),
    GETTER(qual_G_min, 0),
    GETTER(qual_G_max, 255),
    GETTER(qual_B_min, 0),
    GETTER(qual_B_max, 255),
    GETTER(qAE_RGB_min, 0),
    GETTER(qAE_RGB_max, 255),
    GETTER(nf88_quals_r_gain, 256),
    GETTER(nf88_quals_g_gain, 256),
    GETTER(nf88_quals_b_gain, 256),
};

class Resets : public ControlsTest {
 protected:
  // Moves every control away from its default.
  void disturb_all_controls() {
    const std::vector<uint8_t> table = scrambled_table();
    const int32_t matrices[18] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18};
    ppl_set_decimation(context, 1, 2, 3);
    ppl_set_quality(context, 7);
    ppl_set_mean_collection(context, 0);
    ppl_set_P3_only(context, 1);
    ppl_copy_r_dekneel_table(context, table.data());
    ppl_copy_g_dekneel_table(context, table.data());
    ppl_copy_b_dekneel_table(context, table.data());
    ppl_set_rgb_delta(context, 1, 2, 3);
    ppl_set_medium_filter_diff_threshold(context, 1);
    ppl_set_medium_filter_hot_pixel_threshold(context, 2);
    ppl_set_medium_filter_dead_pixel_threshold(context, 3);
    ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage(context, 4);
    ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage(context, 5);
    ppl_enable_medium_filter(context);
    ppl_set_rgb_gain(context, 400, 500, 600);
    ppl_copy_sensor_matrix(context, matrices);
    ppl_set_sensor_matrix_index_upper_bound(context, 99);
    ppl_set_quals_rgb_gain(context, 400, 500, 600);
    ppl_set_qual_BmGb_min_max(context, 1, 2);
    ppl_set_qual_GrmR_min_max(context, 1, 2);
    ppl_set_qual_BmGb_p_GrmR_min_max(context, 1, 2);
    ppl_set_qual_BmGb_m_GrmR_min_max(context, 1, 2);
    ppl_set_qual_RGB_min_max(context, 1, 2, 1, 2, 1, 2);
    ppl_set_qAE_RGB_min_max(context, 1, 2);
    ppl_set_edge_threshold(context, 1);
    ppl_set_edge_threshold2(context, 2);
    ppl_set_nf88_edge_enhance_factor(context, 3);
    ppl_set_noise_filter_G_12T_threshold(context, 4);
    ppl_set_noise_filter_R_8T_threshold(context, 5);
    ppl_set_noise_filter_B_8T_threshold(context, 6);
    ppl_set_CFA_T0_threshold(context, 7);
    ppl_set_CFA_T1_threshold(context, 8);
    ppl_set_intl_3T_threshold(context, 9);
    ppl_set_sat_hue(context, 100, 200);
    ppl_set_contrast_c(context, 77, nullptr, nullptr);
    ppl_set_gamma(context, -20);
    ppl_set_v_mirror(context, 1);
    ppl_set_h_mirror(context, 1);
    ppl_set_optical_black_b_gb_gr_r(context, 1, 2, 3, 4);
    test_hooks::reset_counts();
  }

  void expect_defaults() {
    for (const Getter &getter : getters) {
      EXPECT_EQ(getter.get(context), getter.default_value) << getter.name;
    }
    uint32_t b = 9, gb = 9, gr = 9, r = 9;
    EXPECT_EQ(ppl_optical_black_b_gb_gr_r(context, &b, &gb, &gr, &r), 0u);
    EXPECT_EQ(b | gb | gr | r, 0u);
    EXPECT_EQ(ppl_nf20_12_gamma(context, nullptr, nullptr, nullptr), 1843);
    EXPECT_EQ(bytes_as_ints(ppl_r_dekneel_table(context)), identity_table());
    EXPECT_EQ(bytes_as_ints(ppl_g_dekneel_table(context)), identity_table());
    EXPECT_EQ(bytes_as_ints(ppl_b_dekneel_table(context)), identity_table());
    EXPECT_EQ(bytes_as_ints(ppl_contrast_table(context)), identity_table());
    EXPECT_EQ(bytes_as_ints(ppl_rgb_gamma_table(context)), bytes_as_ints(gamma_tables65x256[32]));
    EXPECT_EQ(bytes_as_ints(ppl_yuv_gamma_table(context)),
              bytes_as_ints(gamma_tables65x256_16_235[32]));
    const std::vector<int32_t> expected = {177, 88,  -9,  24,  232, -1,  29,  62,   166,
                                           410, -57, -97, -98, 423, -71, -84, -143, 486};
    std::vector<int32_t> matrices(18);
    ppl_sensor_matrix(context, matrices.data());
    EXPECT_EQ(matrices, expected);
  }
};

TEST_F(Resets, NewContextHasEveryDefault) { expect_defaults(); }

TEST_F(Resets, ResetAllControlsBringsBackEveryDefault) {
  disturb_all_controls();
  for (const Getter &getter : getters) {
    if (std::string(getter.name) == "sensor_type") continue;
    EXPECT_NE(getter.get(context), getter.default_value) << getter.name << " was not disturbed";
  }
  EXPECT_EQ(ppl_reset_all_controls(context), 1);
  expect_defaults();
}

TEST_F(Resets, ResetAllControlsLeavesNothingOfTheOldControlsBehind) {
  const std::vector<uint8_t> fresh = bytes_of(context);
  disturb_all_controls();
  EXPECT_NE(bytes_of(context), fresh);
  ppl_reset_all_controls(context);
  EXPECT_TRUE(bytes_of(context) == fresh);
}

TEST_F(Resets, ResetAllControlsRewritesEveryEntryButTheDiffThreshold) {
  poison_derived(context);
  ppl_reset_all_controls(context);
  Entries all;
  for (const Entry &entry : entries()) all.insert(entry.name);
  all.erase("medium_diff_vec");
  expect_written(all);
}

TEST_F(Resets, ResetAllControlsKeepsSensorTypeAndGeometry) {
  ppl_new_frame_size(context, 320, 240, 320);
  context->sensor_type = 5;
  ppl_reset_all_controls(context);
  EXPECT_EQ(ppl_sensor_type(context), 5);
  EXPECT_EQ(context->frame_width, 320);
  EXPECT_EQ(context->frame_height, 240);
}

// ---- The order of ppl_reset_all_controls, seen through failing saves ----

struct SaveStep {
  const char *name;
  Entries stale;  // what stays unwritten if the save of this step fails
};

// One row per save. The steps that rebuild the colour entries hide each other, the hot pixel entry
// is written twice in a row, and nothing is derived from the mirrors.
const std::vector<SaveStep> save_steps = {
    {"delta", {"rgb_delta_BG_vec", "rgb_delta_GR_vec"}},
    {"medium_diff_threshold", no_entries},
    {"hot_pixel_threshold", no_entries},
    {"dead_pixel_threshold", {"medium_dead_vec"}},
    {"hot_pixel_percentage", {"medium_hot_pct_vec"}},
    {"dead_pixel_percentage", {"medium_dead_pct_vec"}},
    {"gain", {"rgb_gain_BG_vec", "rgb_gain_GR_vec"}},
    {"sensor_matrix", no_entries},
    {"index_bound", no_entries},
    {"quals_gain", {"quals_gain_BG_vec", "quals_gain_GR_vec"}},
    {"qual_BmGb", {"qual_BmGb_lo_vec", "qual_BmGb_hi_vec"}},
    {"qual_GrmR", {"qual_GrmR_lo_vec", "qual_GrmR_hi_vec"}},
    {"qual_BmGb_p_GrmR", {"qual_BmGb_p_GrmR_lo_vec", "qual_BmGb_p_GrmR_hi_vec"}},
    {"qual_BmGb_m_GrmR", {"qual_BmGb_m_GrmR_lo_vec", "qual_BmGb_m_GrmR_hi_vec"}},
    {"qual_RGB", GR_band_entries + BG_band_entries},
    {"qAE", qAE_entries},
    {"edge_threshold", {"edge_threshold_vec"}},
    {"edge_threshold2", {"edge_threshold2_vec"}},
    {"edge_enhance_factor", {"edge_enhance_factor_vec"}},
    {"noise_filter_G", {"noise_G_12T_vec"}},
    {"noise_filter_R", {"noise_R_8T_vec"}},
    {"noise_filter_B", {"noise_B_8T_vec"}},
    {"CFA_T0", {"CFA_T0_vec"}},
    {"CFA_T1", {"CFA_T1_vec"}},
    {"intl_3T", {"intl_3T_vec"}},
    {"sat_hue", no_entries},
    {"contrast", no_entries},
    {"v_mirror", no_entries},
    {"h_mirror", no_entries},
    {"optical_black", {"optical_black_BG_vec", "optical_black_GR_vec"}},
};

Entries all_entries_but(const Entries &missing) {
  Entries all;
  for (const Entry &entry : entries()) all.insert(entry.name);
  all.erase("medium_diff_vec");
  for (const std::string &name : missing) all.erase(name);
  return all;
}

TEST_F(Resets, ResetAllControlsSavesOncePerSetter) {
  ppl_reset_all_controls(context);
  EXPECT_EQ(test_hooks::save_count(), save_steps.size());
  EXPECT_EQ(test_hooks::restore_count(), save_steps.size());
}

TEST_F(Resets, ResetAllControlsSavesOnceMoreWhereTheDecimationMoves) {
  ppl_set_decimation(context, 2, 0, 0);
  test_hooks::reset_counts();
  ppl_reset_all_controls(context);
  EXPECT_EQ(test_hooks::save_count(), save_steps.size() + 1);
}

TEST_F(Resets, ResetAllControlsRunsItsStepsInTheirOrder) {
  for (uint32_t step = 0; step < save_steps.size(); ++step) {
    SCOPED_TRACE(save_steps[step].name);
    poison_derived(context);
    test_hooks::reset_counts();
    test_hooks::fail_saves(step, 1);
    EXPECT_EQ(ppl_reset_all_controls(context), 1);
    expect_written(all_entries_but(save_steps[step].stale));
    expect_defaults();
  }
}

TEST_F(Resets, TheHotEntryIsWrittenByTheSecondAndTheThirdStep) {
  poison_derived(context);
  test_hooks::fail_saves(1, 2);
  ppl_reset_all_controls(context);
  expect_written(all_entries_but({"medium_hot_vec"}));
}

TEST_F(Resets, EitherOfTheLastTwoColourStepsMakesTheEntriesRight) {
  for (const uint32_t failing : {25u, 26u}) {
    SCOPED_TRACE(save_steps[failing].name);
    poison_derived(context);
    test_hooks::reset_counts();
    test_hooks::fail_saves(failing, 1);
    ppl_reset_all_controls(context);
    expect_value("index_bound_vec", 12);
    expect_matrix("studio_base0_vec", {15, 36, 3, -5, -13, 19, 17, -13, -4});
  }
}

TEST_F(Resets, TheMatrixAndTheBoundStillMeetTheOldCoefficientSets) {
  disturb_all_controls();
  const ColourSets old_sets = colour_sets(100, 200, 77);
  const int32_t matrices[18] = {177, 88,  -9,  24,  232, -1,  29,  62,   166,
                                410, -57, -97, -98, 423, -71, -84, -143, 486};
  // One more save than usual: the decimation moves.
  test_hooks::fail_saves(26, 2);
  ppl_reset_all_controls(context);
  for (const auto &[name, coefficients] : colour_groups(old_sets, matrices, 12)) {
    expect_matrix(name, coefficients);
  }
}

TEST_F(Resets, ANewContextGetsItsColourOnlyFromSaturationOn) {
  test_hooks::reload_pool();
  test_hooks::fail_saves(25, 2);
  context = ppl_init();
  ASSERT_NE(context, nullptr);
  // The matrices and the bound met sets that were all zero.
  expect_matrix("studio_base0_vec", std::vector<int>(9, 0));
  expect_value("index_bound_vec", 12);
  EXPECT_EQ(context->colour_rgb[0], 256);
}

TEST_F(Resets, ANewContextHasItsColourFromSaturationAlone) {
  test_hooks::reload_pool();
  test_hooks::fail_saves(26, 1);
  context = ppl_init();
  ASSERT_NE(context, nullptr);
  expect_matrix("studio_base0_vec", {15, 36, 3, -5, -13, 19, 17, -13, -4});
}

TEST_F(Resets, SaturationStillMeetsThePreviousContrast) {
  ppl_set_contrast_c(context, 100, nullptr, nullptr);
  test_hooks::reset_counts();
  test_hooks::fail_saves(26, 1);
  ppl_reset_all_controls(context);
  const ColourSets old_contrast = colour_sets(256, 0, 100);
  expect_value("offset_studio_vec", offset_entry(old_contrast.offset_yuv_studio));
  EXPECT_EQ(context->offset_yuv_studio, 0);
}

TEST_F(Resets, GammaIsComposedWithTheNewContrastTable) {
  disturb_all_controls();
  ppl_reset_all_controls(context);
  EXPECT_EQ(bytes_as_ints(ppl_yuv_contrast_gamma_table(context)),
            bytes_as_ints(gamma_tables65x256_16_235[32]));
  EXPECT_EQ(bytes_as_ints(ppl_rgb_contrast_gamma_table(context)),
            bytes_as_ints(gamma_tables65x256[32]));
}

TEST_F(Resets, TheMirrorsAreResetWhateverTheirSavesDo) {
  ppl_set_h_mirror(context, 1);
  ppl_set_v_mirror(context, 1);
  test_hooks::reset_counts();
  test_hooks::fail_saves(0, 1);
  EXPECT_EQ(ppl_reset_mirrors(context), 1);
  EXPECT_EQ(ppl_h_mirror(context), 0);
  EXPECT_EQ(ppl_v_mirror(context), 0);
  EXPECT_EQ(test_hooks::save_count(), 2u);
  EXPECT_EQ(test_hooks::restore_count(), 1u);
}

// ---- Single resets ----

struct Reset {
  const char *name;
  uint8_t (*reset)(PplContext *);
  Entries written;
  uint32_t saves;
  uint8_t result = 1;
};

std::ostream &operator<<(std::ostream &out, const Reset &reset) { return out << reset.name; }

const std::vector<Reset> resets = {
    {"decimation", ppl_reset_decimation, no_entries, 1},
    {"quality", ppl_reset_quality, no_entries, 0},
    {"mean_collection", ppl_reset_mean_collection, no_entries, 0},
    {"P3_only", ppl_reset_P3_only, no_entries, 0},
    {"optical_black",
     ppl_reset_optical_black_b_gb_gr_r,
     {"optical_black_BG_vec", "optical_black_GR_vec"},
     1},
    {"rgb_dekneel_table", ppl_reset_rgb_dekneel_table, no_entries, 0},
    {"rgb_delta", ppl_reset_rgb_delta, {"rgb_delta_BG_vec", "rgb_delta_GR_vec"}, 1},
    {"medium_filter",
     ppl_reset_medium_filter,
     {"medium_hot_vec", "medium_dead_vec", "medium_hot_pct_vec", "medium_dead_pct_vec"},
     5},
    {"rgb_gain", ppl_reset_rgb_gain, {"rgb_gain_BG_vec", "rgb_gain_GR_vec"}, 1},
    {"sensor_matrix", ppl_reset_sensor_matrix, colour_entries, 1},
    {"sensor_matrix_index_upper_bound", ppl_reset_sensor_matrix_index_upper_bound, colour_entries,
     1},
    {"quals_rgb_gain", ppl_reset_quals_rgb_gain, {"quals_gain_BG_vec", "quals_gain_GR_vec"}, 1, 0},
    {"qual_min_max", ppl_reset_qual_min_max, word_band_entries + GR_band_entries + BG_band_entries,
     5},
    {"qAE_min_max", ppl_reset_qAE_min_max, qAE_entries, 1},
    {"edge_threshold", ppl_reset_edge_threshold, {"edge_threshold_vec"}, 1},
    {"edge_threshold2", ppl_reset_edge_threshold2, {"edge_threshold2_vec"}, 1},
    {"edge_enhance_factor", ppl_reset_nf88_edge_enhance_factor, {"edge_enhance_factor_vec"}, 1},
    {"noise_filter_G", ppl_reset_noise_filter_G_12T_threshold, {"noise_G_12T_vec"}, 1},
    {"noise_filter_R", ppl_reset_noise_filter_R_8T_threshold, {"noise_R_8T_vec"}, 1},
    {"noise_filter_B", ppl_reset_noise_filter_B_8T_threshold, {"noise_B_8T_vec"}, 1},
    {"CFA_T0", ppl_reset_CFA_T0_threshold, {"CFA_T0_vec"}, 1},
    {"CFA_T1", ppl_reset_CFA_T1_threshold, {"CFA_T1_vec"}, 1},
    {"intl_3T", ppl_reset_intl_3T_threshold, {"intl_3T_vec"}, 1},
    {"sat_hue", ppl_reset_sat_hue, colour_entries, 1},
    {"contrast", ppl_reset_contrast, colour_entries, 1},
    {"mirrors", ppl_reset_mirrors, no_entries, 2},
    {"gamma", ppl_reset_gamma, no_entries, 0},
};

// The getters that a reset brings to their defaults; those left out have tests of their own.
const std::vector<std::pair<std::string, std::vector<std::string>>> getters_of_resets = {
    {"decimation", {"decimation", "decimation_top_black_lines", "decimation_bottom_black_lines"}},
    {"quality", {"quality"}},
    {"mean_collection", {"mean_collection"}},
    {"P3_only", {"P3_only"}},
    {"rgb_delta", {"r_delta", "g_delta", "b_delta"}},
    {"medium_filter",
     {"medium_filter_enabled", "medium_filter_diff_threshold", "medium_filter_hot_pixel_threshold",
      "medium_filter_dead_pixel_threshold", "nf88_medium_filter_hot_pixel_threshold_percentage",
      "nf88_medium_filter_dead_pixel_threshold_percentage"}},
    {"rgb_gain", {"nf88_r_gain", "nf88_g_gain", "nf88_b_gain"}},
    {"sensor_matrix_index_upper_bound", {"sensor_matrix_index_upper_bound"}},
    {"quals_rgb_gain", {"nf88_quals_r_gain", "nf88_quals_g_gain", "nf88_quals_b_gain"}},
    {"qual_min_max",
     {"qual_BmGb_min", "qual_BmGb_max", "qual_GrmR_min", "qual_GrmR_max", "qual_BmGb_p_GrmR_min",
      "qual_BmGb_p_GrmR_max", "qual_BmGb_m_GrmR_min", "qual_BmGb_m_GrmR_max", "qual_R_min",
      "qual_R_max", "qual_G_min", "qual_G_max", "qual_B_min", "qual_B_max"}},
    {"qAE_min_max", {"qAE_RGB_min", "qAE_RGB_max"}},
    {"edge_threshold", {"edge_threshold"}},
    {"edge_threshold2", {"edge_threshold2"}},
    {"edge_enhance_factor", {"nf88_edge_enhance_factor"}},
    {"noise_filter_G", {"noise_filter_G_12T_threshold"}},
    {"noise_filter_R", {"noise_filter_R_8T_threshold"}},
    {"noise_filter_B", {"noise_filter_B_8T_threshold"}},
    {"CFA_T0", {"CFA_T0_threshold"}},
    {"CFA_T1", {"CFA_T1_threshold"}},
    {"intl_3T", {"intl_3T_threshold"}},
    {"sat_hue", {"nf88_sat", "hue_degree"}},
    {"mirrors", {"h_mirror", "v_mirror"}},
};

std::vector<std::string> getters_of(const std::string &reset) {
  for (const auto &[name, own] : getters_of_resets) {
    if (name == reset) return own;
  }
  return {};
}

class SingleReset : public Resets, public testing::WithParamInterface<Reset> {};

TEST_P(SingleReset, ReturnsItsResultAndSavesOncePerSetter) {
  disturb_all_controls();
  EXPECT_EQ(GetParam().reset(context), GetParam().result);
  EXPECT_EQ(test_hooks::save_count(), GetParam().saves);
  EXPECT_EQ(test_hooks::restore_count(), GetParam().saves);
}

TEST_P(SingleReset, BringsBackItsOwnControlsAndNoOther) {
  disturb_all_controls();
  std::vector<int64_t> disturbed;
  for (const Getter &getter : getters) disturbed.push_back(getter.get(context));
  GetParam().reset(context);
  const std::vector<std::string> own = getters_of(GetParam().name);
  for (size_t i = 0; i < getters.size(); ++i) {
    const bool is_own = std::find(own.begin(), own.end(), getters[i].name) != own.end();
    EXPECT_EQ(getters[i].get(context), is_own ? getters[i].default_value : disturbed[i])
        << getters[i].name;
  }
}

TEST_P(SingleReset, WritesItsEntriesAndNoOther) {
  disturb_all_controls();
  poison_derived(context);
  GetParam().reset(context);
  expect_written(GetParam().written);
}

TEST_P(SingleReset, AfterFailedSavesReturnsTheSameAndWritesNothing) {
  disturb_all_controls();
  poison_derived(context);
  test_hooks::fail_saves(0, UINT32_MAX);
  EXPECT_EQ(GetParam().reset(context), GetParam().result);
  expect_written(no_entries);
  EXPECT_EQ(test_hooks::save_count(), GetParam().saves);
  EXPECT_EQ(test_hooks::restore_count(), 0u);
  for (const std::string &own : getters_of(GetParam().name)) {
    for (const Getter &getter : getters) {
      if (own != getter.name) continue;
      EXPECT_EQ(getter.get(context), getter.default_value) << own;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, SingleReset, testing::ValuesIn(resets),
                         [](const testing::TestParamInfo<Reset> &info) {
                           return std::string(info.param.name);
                         });

TEST_F(Resets, DecimationAtItsDefaultIsNotRebuilt) {
  poison_derived(context);
  EXPECT_EQ(ppl_reset_decimation(context), 1);
  EXPECT_EQ(test_hooks::save_count(), 0u);
  expect_written(no_entries);
}

TEST_F(Resets, OpticalBlackGoesToZero) {
  ppl_set_optical_black_b_gb_gr_r(context, 1, 2, 3, 4);
  ppl_reset_optical_black_b_gb_gr_r(context);
  uint32_t b = 9, gb = 9, gr = 9, r = 9;
  ppl_optical_black_b_gb_gr_r(context, &b, &gb, &gr, &r);
  EXPECT_EQ(b | gb | gr | r, 0u);
  expect_pair("optical_black_BG_vec", 0, 0);
  expect_pair("optical_black_GR_vec", 0, 0);
}

TEST_F(Resets, DekneelTablesGoToTheIdentity) {
  disturb_all_controls();
  ppl_reset_rgb_dekneel_table(context);
  EXPECT_EQ(bytes_as_ints(ppl_r_dekneel_table(context)), identity_table());
  EXPECT_EQ(bytes_as_ints(ppl_g_dekneel_table(context)), identity_table());
  EXPECT_EQ(bytes_as_ints(ppl_b_dekneel_table(context)), identity_table());
}

TEST_F(Resets, QualBandsComeBackWithTheirSpans) {
  disturb_all_controls();
  ppl_reset_qual_min_max(context);
  EXPECT_EQ(context->qual_BmGb.span, 51);
  EXPECT_EQ(context->qual_GrmR.span, 51);
  EXPECT_EQ(context->qual_BmGb_p_GrmR.span, 61);
  EXPECT_EQ(context->qual_BmGb_m_GrmR.span, 61);
  EXPECT_EQ(context->qual_R.span, 256);
  EXPECT_EQ(context->qual_G.span, 256);
  EXPECT_EQ(context->qual_B.span, 256);
}

TEST_F(Resets, QualBandsAreResetInOrderWithTheLevelsInABracketOfTheirOwn) {
  const Entries steps[5] = {{"qual_BmGb_lo_vec", "qual_BmGb_hi_vec"},
                            {"qual_GrmR_lo_vec", "qual_GrmR_hi_vec"},
                            {"qual_BmGb_p_GrmR_lo_vec", "qual_BmGb_p_GrmR_hi_vec"},
                            {"qual_BmGb_m_GrmR_lo_vec", "qual_BmGb_m_GrmR_hi_vec"},
                            GR_band_entries + BG_band_entries};
  for (uint32_t good = 0; good < 5; ++good) {
    SCOPED_TRACE(good);
    poison_derived(context);
    test_hooks::reset_counts();
    test_hooks::fail_saves(good, UINT32_MAX);
    EXPECT_EQ(ppl_reset_qual_min_max(context), 1);
    Entries written;
    for (uint32_t step = 0; step < good; ++step) written = written + steps[step];
    expect_written(written);
  }
}

TEST_F(Resets, MediumFilterIsResetInOrder) {
  const Entries after[5] = {{},
                            {"medium_hot_vec"},
                            {"medium_hot_vec"},
                            {"medium_hot_vec", "medium_dead_vec"},
                            {"medium_hot_vec", "medium_dead_vec", "medium_hot_pct_vec"}};
  for (uint32_t good = 0; good < 5; ++good) {
    SCOPED_TRACE(good);
    ppl_enable_medium_filter(context);
    poison_derived(context);
    test_hooks::reset_counts();
    test_hooks::fail_saves(good, UINT32_MAX);
    EXPECT_EQ(ppl_reset_medium_filter(context), 1);
    expect_written(after[good]);
    EXPECT_EQ(ppl_medium_filter_enabled(context), 0);
  }
}

// The difference threshold comes first, while the hot threshold still does not fit.
TEST_F(Resets, MediumFilterResetReturnsOneThoughOneOfItsStepsIsRefused) {
  ppl_set_medium_filter_hot_pixel_threshold(context, 40000);
  EXPECT_EQ(ppl_reset_medium_filter(context), 1);
  EXPECT_EQ(ppl_medium_filter_hot_pixel_threshold(context), 240);
  expect_value("medium_hot_vec", 240);
}

TEST_F(Resets, WithoutATierResetAllControlsStoresEveryDefault) {
  restart_on(no_tier_processor);
  disturb_all_controls();
  poison_derived(context);
  EXPECT_EQ(ppl_reset_all_controls(context), 1);
  expect_defaults();
  expect_written(no_entries);
}

}  // namespace
}  // namespace ppl::controls_test
