// Sensor, quality, black level, gain, delta, dekneel tables, sensor matrices and mirrors.
#include <limits.h>

#include "controls_fixture.h"

namespace ppl::controls_test {
namespace {

using FrontEndControls = ControlsTest;

// ---- Sensor type ----

TEST_F(FrontEndControls, KnownSensorTypesAreAcceptedAndNotStored) {
  for (const int32_t code : {22356, 22856, 4347471, 122965837}) {
    SCOPED_TRACE(code);
    EXPECT_EQ(ppl_set_sensor_type(context, code), 1);
    EXPECT_EQ(ppl_sensor_type(context), 0);
  }
}

TEST_F(FrontEndControls, OtherSensorTypesAreRefused) {
  for (const int32_t known : {22356, 22856, 4347471, 122965837}) {
    for (const int32_t code : {known - 1, known + 1, -known}) {
      SCOPED_TRACE(code);
      EXPECT_EQ(ppl_set_sensor_type(context, code), 0);
      EXPECT_EQ(ppl_sensor_type(context), 0);
    }
  }
  for (const int32_t code : {0, 1, -1, INT_MAX, INT_MIN}) {
    EXPECT_EQ(ppl_set_sensor_type(context, code), 0) << code;
  }
}

TEST_F(FrontEndControls, SensorTypeIsReadFromTheContextAndKeptByASet) {
  context->sensor_type = 4711;
  EXPECT_EQ(ppl_set_sensor_type(context, 22356), 1);
  EXPECT_EQ(ppl_sensor_type(context), 4711);
}

// ---- Quality, statistics, tier ----

TEST_F(FrontEndControls, EveryQualityBelow15IsStored) {
  for (uint32_t quality = 0; quality < 15; ++quality) {
    EXPECT_EQ(ppl_set_quality(context, quality), 1);
    EXPECT_EQ(ppl_quality(context), quality);
  }
}

TEST_F(FrontEndControls, QualityFrom15OnIsRefusedAndTheOldOneStays) {
  ppl_set_quality(context, 14);
  for (const uint32_t quality : {15u, 16u, 0x80000000u, UINT32_MAX}) {
    EXPECT_EQ(ppl_set_quality(context, quality), 0) << quality;
    EXPECT_EQ(ppl_quality(context), 14u);
  }
}

TEST_F(FrontEndControls, MeanCollectionIsStoredAsGiven) {
  for (const uint8_t value : {uint8_t{0}, uint8_t{1}, uint8_t{2}, uint8_t{255}}) {
    EXPECT_EQ(ppl_set_mean_collection(context, value), 1);
    EXPECT_EQ(ppl_mean_collection(context), value);
  }
}

TEST_F(FrontEndControls, P3OnlyIsStoredAsGiven) {
  for (const uint8_t value : {uint8_t{2}, uint8_t{255}, uint8_t{1}, uint8_t{0}}) {
    EXPECT_EQ(ppl_set_P3_only(context, value), 1);
    EXPECT_EQ(ppl_P3_only(context), value);
  }
}

// ---- Black level ----

TEST_F(FrontEndControls, OpticalBlackGetterWritesFourValuesAndReturnsRed) {
  ppl_set_optical_black_b_gb_gr_r(context, 11, 22, 33, 44);
  uint32_t b = 0, gb = 0, gr = 0, r = 0;
  EXPECT_EQ(ppl_optical_black_b_gb_gr_r(context, &b, &gb, &gr, &r), 44u);
  EXPECT_EQ(b, 11u);
  EXPECT_EQ(gb, 22u);
  EXPECT_EQ(gr, 33u);
  EXPECT_EQ(r, 44u);
}

TEST_F(FrontEndControls, OpticalBlackMakesPairsPerLineKind) {
  EXPECT_EQ(ppl_set_optical_black_b_gb_gr_r(context, 11, 22, 33, 44), 1);
  expect_pair("optical_black_BG_vec", 11, 22);
  expect_pair("optical_black_GR_vec", 33, 44);
}

TEST_F(FrontEndControls, OpticalBlackTakes0And255) {
  EXPECT_EQ(ppl_set_optical_black_b_gb_gr_r(context, 255, 0, 255, 0), 1);
  expect_pair("optical_black_BG_vec", 255, 0);
  expect_pair("optical_black_GR_vec", 255, 0);
}

TEST_F(FrontEndControls, OneBlackLevelOf256KeepsAllPairs) {
  ppl_set_optical_black_b_gb_gr_r(context, 11, 22, 33, 44);
  for (int bad = 0; bad < 4; ++bad) {
    SCOPED_TRACE(bad);
    uint32_t level[4] = {1, 2, 3, 4};
    level[bad] = 256;
    EXPECT_EQ(ppl_set_optical_black_b_gb_gr_r(context, level[0], level[1], level[2], level[3]), 0);
    uint32_t stored[4] = {};
    ppl_optical_black_b_gb_gr_r(context, &stored[0], &stored[1], &stored[2], &stored[3]);
    EXPECT_TRUE(std::equal(level, level + 4, stored));
    expect_pair("optical_black_BG_vec", 11, 22);
    expect_pair("optical_black_GR_vec", 33, 44);
  }
}

// ---- Delta ----

TEST_F(FrontEndControls, DeltasMakePairsPerLineKind) {
  EXPECT_EQ(ppl_set_rgb_delta(context, -300, 20, 32767), 1);
  expect_pair("rgb_delta_BG_vec", 32767, 20);
  expect_pair("rgb_delta_GR_vec", 20, -300);
}

TEST_F(FrontEndControls, DeltasTakeTheWholeRangeOfAWord) {
  EXPECT_EQ(ppl_set_rgb_delta(context, -32768, 32767, -32768), 1);
  expect_pair("rgb_delta_BG_vec", -32768, 32767);
  expect_pair("rgb_delta_GR_vec", 32767, -32768);
}

TEST_F(FrontEndControls, ASingleDeltaWritesItsOwnColumnsAlone) {
  ppl_set_rgb_delta(context, 1, 2, 3);
  EXPECT_EQ(ppl_set_r_delta(context, 10), 1);
  expect_pair("rgb_delta_BG_vec", 3, 2);
  expect_pair("rgb_delta_GR_vec", 2, 10);
  EXPECT_EQ(ppl_set_g_delta(context, 20), 1);
  expect_pair("rgb_delta_BG_vec", 3, 20);
  expect_pair("rgb_delta_GR_vec", 20, 10);
  EXPECT_EQ(ppl_set_b_delta(context, 30), 1);
  expect_pair("rgb_delta_BG_vec", 30, 20);
  expect_pair("rgb_delta_GR_vec", 20, 10);
}

TEST_F(FrontEndControls, ASingleDeltaIgnoresAnotherChannelThatDoesNotFit) {
  ppl_set_rgb_delta(context, 1, 2, 3);
  EXPECT_EQ(ppl_set_rgb_delta(context, 5, 40000, 6), 0);
  EXPECT_EQ(ppl_set_r_delta(context, 10), 1);
  expect_pair("rgb_delta_GR_vec", 2, 10);
  EXPECT_EQ(ppl_set_b_delta(context, 30), 1);
  expect_pair("rgb_delta_BG_vec", 30, 2);
  EXPECT_EQ(ppl_g_delta(context), 40000);
}

// ---- Gain ----

TEST_F(FrontEndControls, GainsMakePairsWithFiveFractionalBits) {
  EXPECT_EQ(ppl_set_rgb_gain(context, 256, 512, 1024), 1);
  expect_pair("rgb_gain_BG_vec", 128, 64);
  expect_pair("rgb_gain_GR_vec", 64, 32);
}

TEST_F(FrontEndControls, GainsLoseTheirLowThreeBits) {
  const struct {
    int32_t gain;
    int value;
  } cases[] = {{0, 0},    {7, 0},    {8, 1},    {15, 1},     {255, 31},
               {256, 32}, {263, 32}, {264, 33}, {2040, 255}, {2047, 255}};
  for (const auto &[gain, value] : cases) {
    SCOPED_TRACE(gain);
    EXPECT_EQ(ppl_set_r_gain(context, gain), 1);
    expect_pair("rgb_gain_GR_vec", 32, value);
  }
}

TEST_F(FrontEndControls, OneGainOf2048KeepsAllPairsAndStoresAllThree) {
  ppl_set_rgb_gain(context, 8, 16, 24);
  for (int bad = 0; bad < 3; ++bad) {
    SCOPED_TRACE(bad);
    int32_t gain[3] = {100, 200, 300};
    gain[bad] = 2048;
    EXPECT_EQ(ppl_set_rgb_gain(context, gain[0], gain[1], gain[2]), 0);
    EXPECT_EQ(ppl_nf88_r_gain(context), gain[0]);
    EXPECT_EQ(ppl_nf88_g_gain(context), gain[1]);
    EXPECT_EQ(ppl_nf88_b_gain(context), gain[2]);
    expect_pair("rgb_gain_BG_vec", 3, 2);
    expect_pair("rgb_gain_GR_vec", 2, 1);
  }
}

TEST_F(FrontEndControls, ASingleGainWritesItsOwnColumnsAlone) {
  ppl_set_rgb_gain(context, 8, 16, 24);
  EXPECT_EQ(ppl_set_r_gain(context, 80), 1);
  expect_pair("rgb_gain_BG_vec", 3, 2);
  expect_pair("rgb_gain_GR_vec", 2, 10);
  EXPECT_EQ(ppl_set_g_gain(context, 160), 1);
  expect_pair("rgb_gain_BG_vec", 3, 20);
  expect_pair("rgb_gain_GR_vec", 20, 10);
  EXPECT_EQ(ppl_set_b_gain(context, 240), 1);
  expect_pair("rgb_gain_BG_vec", 30, 20);
  expect_pair("rgb_gain_GR_vec", 20, 10);
}

TEST_F(FrontEndControls, ASingleGainIgnoresAnotherChannelThatDoesNotFit) {
  ppl_set_rgb_gain(context, 8, 16, 24);
  EXPECT_EQ(ppl_set_rgb_gain(context, 40, 5000, 48), 0);
  EXPECT_EQ(ppl_set_r_gain(context, 80), 1);
  expect_pair("rgb_gain_GR_vec", 2, 10);
  EXPECT_EQ(ppl_set_b_gain(context, 240), 1);
  expect_pair("rgb_gain_BG_vec", 30, 2);
}

TEST_F(FrontEndControls, ATripleWritesNothingWhileOneOfItsValuesIsBad) {
  ppl_set_rgb_gain(context, 8, 16, 24);
  EXPECT_EQ(ppl_set_rgb_gain(context, 80, 160, -1), 0);
  expect_pair("rgb_gain_BG_vec", 3, 2);
  expect_pair("rgb_gain_GR_vec", 2, 1);
}

// ---- Dekneel tables ----

TEST_F(FrontEndControls, EachDekneelTableIsCopiedByItsOwnFunction) {
  const std::vector<uint8_t> r = scrambled_table(1), g = scrambled_table(2), b = scrambled_table(3);
  EXPECT_EQ(ppl_copy_r_dekneel_table(context, r.data()), 0);
  EXPECT_EQ(ppl_copy_g_dekneel_table(context, g.data()), 0);
  EXPECT_EQ(ppl_copy_b_dekneel_table(context, b.data()), 0);
  EXPECT_TRUE(std::equal(r.begin(), r.end(), ppl_r_dekneel_table(context)));
  EXPECT_TRUE(std::equal(g.begin(), g.end(), ppl_g_dekneel_table(context)));
  EXPECT_TRUE(std::equal(b.begin(), b.end(), ppl_b_dekneel_table(context)));
}

TEST_F(FrontEndControls, DekneelTablesAreReadInPlace) {
  EXPECT_EQ(ppl_r_dekneel_table(context), context->r_dekneel_table);
  EXPECT_EQ(ppl_g_dekneel_table(context), context->g_dekneel_table);
  EXPECT_EQ(ppl_b_dekneel_table(context), context->b_dekneel_table);
}

// ---- Sensor matrices ----

TEST_F(FrontEndControls, SensorMatricesStartWithTheirDefaults) {
  const std::vector<int32_t> expected = {177, 88,  -9,  24,  232, -1,  29,  62,   166,
                                         410, -57, -97, -98, 423, -71, -84, -143, 486};
  std::vector<int32_t> matrices(18);
  EXPECT_EQ(ppl_sensor_matrix(context, matrices.data()), 1);
  EXPECT_EQ(matrices, expected);
}

TEST_F(FrontEndControls, SensorMatricesAreCopiedOutInTheLayoutTheyCameIn) {
  std::vector<int32_t> in(18), out(18);
  for (size_t i = 0; i < in.size(); ++i) in[i] = static_cast<int32_t>(i * i) * 1000 - 70000;
  EXPECT_EQ(ppl_copy_sensor_matrix(context, in.data()), 1);
  EXPECT_EQ(ppl_sensor_matrix(context, out.data()), 1);
  EXPECT_EQ(out, in);
}

TEST_F(FrontEndControls, AnyIndexBoundIsStored) {
  for (const int32_t bound : {0, 1, -1, 255, 70000, INT_MAX, INT_MIN}) {
    EXPECT_EQ(ppl_set_sensor_matrix_index_upper_bound(context, bound), 1) << bound;
    EXPECT_EQ(ppl_sensor_matrix_index_upper_bound(context), bound);
  }
}

// ---- Mirrors ----

TEST_F(FrontEndControls, MirrorFlagsAreStoredAsGivenAndApart) {
  EXPECT_EQ(ppl_set_h_mirror(context, 2), 1);
  EXPECT_EQ(ppl_h_mirror(context), 2);
  EXPECT_EQ(ppl_v_mirror(context), 0);
  EXPECT_EQ(ppl_set_v_mirror(context, 255), 1);
  EXPECT_EQ(ppl_h_mirror(context), 2);
  EXPECT_EQ(ppl_v_mirror(context), 255);
}

TEST_F(FrontEndControls, AMirrorSavesAlsoWhereItsFlagStays) {
  EXPECT_EQ(ppl_set_h_mirror(context, 0), 1);
  EXPECT_EQ(ppl_set_v_mirror(context, 0), 1);
  EXPECT_EQ(test_hooks::save_count(), 2u);
  EXPECT_EQ(test_hooks::restore_count(), 2u);
}

}  // namespace
}  // namespace ppl::controls_test
