// Saturation and hue, the coefficient sets, and what they and the sensor matrices make of the
// colour entries.
#include <limits.h>

#include <random>

#include "colour_model.h"
#include "controls_fixture.h"

namespace ppl::controls_test {
namespace {

const int32_t default_matrices[18] = {177, 88,  -9,  24,  232, -1,  29,  62,   166,
                                      410, -57, -97, -98, 423, -71, -84, -143, 486};

class SaturationHue : public ControlsTest {
 protected:
  static std::vector<int32_t> row_major(const int32_t (&set)[9]) { return {set, set + 9}; }
  static std::vector<int32_t> row_major(const Matrix &set) { return {set.begin(), set.end()}; }

  void expect_sets(uint32_t sat, int32_t hue, int32_t contrast_c) {
    SCOPED_TRACE(testing::Message()
                 << "saturation " << sat << ", hue " << hue << ", contrast " << contrast_c);
    const ColourSets sets = colour_sets(sat, hue, contrast_c);
    EXPECT_EQ(row_major(context->colour_rgb), row_major(sets.rgb));
    EXPECT_EQ(row_major(context->colour_yuv_full), row_major(sets.yuv_full));
    EXPECT_EQ(row_major(context->colour_yuv_studio), row_major(sets.yuv_studio));
    EXPECT_EQ(context->offset_rgb, sets.offset_rgb);
    EXPECT_EQ(context->offset_yuv_full, sets.offset_yuv_full);
    EXPECT_EQ(context->offset_yuv_studio, sets.offset_yuv_studio);
  }

  // All sixteen colour entries, from what the context holds.
  void expect_colour_entries() {
    ColourSets sets{};
    std::copy_n(context->colour_rgb, 9, sets.rgb.begin());
    std::copy_n(context->colour_yuv_full, 9, sets.yuv_full.begin());
    std::copy_n(context->colour_yuv_studio, 9, sets.yuv_studio.begin());
    int32_t sensor[18];
    ppl_sensor_matrix(context, sensor);
    const int32_t bound = ppl_sensor_matrix_index_upper_bound(context);
    for (const auto &[name, coefficients] : colour_groups(sets, sensor, bound)) {
      expect_matrix(name, coefficients);
    }
    expect_value("index_bound_vec", index_bound(bound));
    expect_value("offset_rgb_vec", offset_entry(context->offset_rgb));
    expect_value("offset_full_vec", offset_entry(context->offset_yuv_full));
    expect_value("offset_studio_vec", offset_entry(context->offset_yuv_studio));
  }

  // Both sensor matrices with one value in the corner and one on the rest of the diagonal.
  void set_corner(int32_t first, int32_t second) {
    const int32_t matrices[18] = {first,  0, 0, 0, 256, 0, 0, 0, 256,
                                  second, 0, 0, 0, 256, 0, 0, 0, 256};
    ppl_copy_sensor_matrix(context, matrices);
  }

  int corner(const std::string &name) { return entry_values(context, name)[0]; }
};

// ---- Plain values ----

TEST_F(SaturationHue, StartAtNeutral) {
  EXPECT_EQ(ppl_nf88_sat(context), 256u);
  EXPECT_EQ(ppl_hue_degree(context), 0);
}

TEST_F(SaturationHue, HueIsStoredWithinOneTurn) {
  const struct {
    int32_t given, stored;
  } cases[] = {{0, 0},      {1, 1},      {359, 359},     {360, 0},      {361, 1},
               {720, 0},    {-1, 359},   {-90, 270},     {-359, 1},     {-360, 0},
               {-361, 359}, {7300, 100}, {INT_MAX, 127}, {INT_MIN, 232}};
  for (const auto &[given, stored] : cases) {
    SCOPED_TRACE(given);
    EXPECT_EQ(ppl_set_hue(context, given), 1);
    EXPECT_EQ(ppl_hue_degree(context), stored);
    expect_sets(256, stored, 0);
    EXPECT_EQ(ppl_set_sat_hue(context, 256, given), 1);
    EXPECT_EQ(ppl_hue_degree(context), stored);
  }
}

TEST_F(SaturationHue, SaturationGoesUpTo512) {
  EXPECT_EQ(ppl_set_sat(context, 512), 1);
  EXPECT_EQ(ppl_nf88_sat(context), 512u);
  expect_sets(512, 0, 0);
  EXPECT_EQ(ppl_set_sat(context, 513), 0);
  EXPECT_EQ(ppl_nf88_sat(context), 512u);
}

TEST_F(SaturationHue, RefusedSaturationLosesTheHueOfTheCall) {
  ppl_set_sat_hue(context, 200, 30);
  EXPECT_EQ(ppl_set_sat_hue(context, 513, 99), 0);
  EXPECT_EQ(ppl_nf88_sat(context), 200u);
  EXPECT_EQ(ppl_hue_degree(context), 30);
  expect_sets(200, 30, 0);
}

TEST_F(SaturationHue, SettingOneKeepsTheOther) {
  ppl_set_sat_hue(context, 200, 30);
  EXPECT_EQ(ppl_set_sat(context, 100), 1);
  EXPECT_EQ(ppl_hue_degree(context), 30);
  expect_sets(100, 30, 0);
  EXPECT_EQ(ppl_set_hue(context, 45), 1);
  EXPECT_EQ(ppl_nf88_sat(context), 100u);
  expect_sets(100, 45, 0);
}

// ---- Coefficient sets ----

TEST_F(SaturationHue, NeutralSets) {
  EXPECT_EQ(row_major(context->colour_rgb),
            (std::vector<int32_t>{256, 0, 0, 0, 256, 0, 0, 0, 256}));
  EXPECT_EQ(row_major(context->colour_yuv_full),
            (std::vector<int32_t>{77, 150, 29, -44, -87, 131, 131, -110, -21}));
  EXPECT_EQ(row_major(context->colour_yuv_studio),
            (std::vector<int32_t>{66, 129, 25, -38, -74, 112, 112, -94, -18}));
  EXPECT_EQ(context->offset_rgb, 0);
  EXPECT_EQ(context->offset_yuv_full, 0);
  EXPECT_EQ(context->offset_yuv_studio, 0);
}

TEST_F(SaturationHue, NoSaturationLeavesLumaAlone) {
  EXPECT_EQ(ppl_set_sat_hue(context, 0, 0), 1);
  EXPECT_EQ(row_major(context->colour_yuv_full),
            (std::vector<int32_t>{77, 150, 29, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(row_major(context->colour_yuv_studio),
            (std::vector<int32_t>{66, 129, 25, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(row_major(context->colour_rgb),
            (std::vector<int32_t>{77, 150, 29, 77, 150, 29, 77, 150, 29}));
}

TEST_F(SaturationHue, HalfATurnFlipsBothChromaAxes) {
  EXPECT_EQ(ppl_set_sat_hue(context, 256, 180), 1);
  EXPECT_EQ(row_major(context->colour_yuv_full),
            (std::vector<int32_t>{77, 150, 29, 44, 87, -131, -131, 110, 21}));
  expect_sets(256, 180, 0);
}

TEST_F(SaturationHue, OneDegreePastHalfATurnHasTheSineOfOneDegreeNegated) {
  EXPECT_EQ(ppl_set_sat_hue(context, 256, 181), 1);
  // U is turned by a cosine of -4095 and a sine of -71 in Q12: the red one is
  // (-4095 * -707 + 71 * 2095 + 2048) >> 12, 743, and in Q8 (743 + 8) >> 4.
  EXPECT_EQ(row_major(context->colour_yuv_full)[3], 46);
  EXPECT_EQ(row_major(context->colour_yuv_full)[4], 85);
  EXPECT_EQ(row_major(context->colour_yuv_full)[5], -131);
  expect_sets(256, 181, 0);
}

TEST_F(SaturationHue, EveryDegreeAtTellingSaturations) {
  for (const uint32_t sat : {0u, 1u, 100u, 256u, 257u, 511u, 512u}) {
    for (int32_t hue = 0; hue < 360; ++hue) {
      EXPECT_EQ(ppl_set_sat_hue(context, sat, hue), 1);
      expect_sets(sat, hue, 0);
    }
  }
}

TEST_F(SaturationHue, ContrastScalesTheLumaRow) {
  for (const int32_t c : {-127, -64, -1, 1, 64, 127}) {
    ppl_set_contrast_c(context, c, nullptr, nullptr);
    for (const int32_t hue : {0, 77, 200}) {
      EXPECT_EQ(ppl_set_sat_hue(context, 300, hue), 1);
      expect_sets(300, hue, c);
    }
  }
}

TEST_F(SaturationHue, ContrastOutsideItsBoundsStopsHalfWay) {
  for (const int32_t c : {-129, 129, INT_MIN, INT_MAX}) {
    SCOPED_TRACE(c);
    context->contrast_c = 0;
    ppl_set_sat_hue(context, 256, 0);
    context->contrast_c = c;
    poison_derived(context);
    test_hooks::reset_counts();
    EXPECT_EQ(ppl_set_sat_hue(context, 300, 40), 0);
    EXPECT_EQ(ppl_nf88_sat(context), 300u);
    EXPECT_EQ(ppl_hue_degree(context), 40);
    expect_sets(256, 0, 0);
    expect_written(no_entries);
    EXPECT_EQ(test_hooks::save_count(), 0u);
  }
}

TEST_F(SaturationHue, ContrastOf128EitherWayIsStillTaken) {
  for (const int32_t c : {-128, 128}) {
    context->contrast_c = c;
    EXPECT_EQ(ppl_set_sat_hue(context, 300, 40), 1) << c;
    expect_sets(300, 40, c);
  }
}

TEST_F(SaturationHue, AfterAFailedSaveTheSetsAreNewAndTheEntriesOld) {
  poison_derived(context);
  test_hooks::fail_saves(0, 1);
  EXPECT_EQ(ppl_set_sat_hue(context, 100, 100), 1);
  expect_sets(100, 100, 0);
  expect_written(no_entries);
}

// ---- Colour entries ----

TEST_F(SaturationHue, DefaultStudioEntries) {
  expect_matrix("studio_base0_vec", {15, 36, 3, -5, -13, 19, 17, -13, -4});
  expect_matrix("studio_slope_vec", {-66, 207, -142, -260, -658, 924, 825, -635, -188});
  expect_value("index_bound_vec", 12);
  expect_value("offset_studio_vec", 32);
  expect_value("offset_full_vec", 32);
  expect_value("offset_rgb_vec", 32);
}

TEST_F(SaturationHue, DefaultRgbEntriesAreTheSensorMatricesInQ6) {
  expect_matrix("rgb_base0_vec", {44, 22, -2, 6, 58, 0, 7, 16, 42});
  expect_matrix("rgb_base1_vec", {103, -14, -24, -24, 106, -18, -21, -36, 122});
}

TEST_F(SaturationHue, DefaultColourEntriesFollowTheDefinitions) { expect_colour_entries(); }

TEST_F(SaturationHue, ColourEntriesFollowSaturationHueAndContrast) {
  for (const uint32_t sat : {0u, 255u, 512u}) {
    for (const int32_t hue : {0, 10, 95, 180, 181, 300}) {
      for (const int32_t c : {-127, 0, 90}) {
        SCOPED_TRACE(testing::Message() << sat << " " << hue << " " << c);
        ppl_set_sat_hue(context, sat, hue);
        ppl_set_contrast_c(context, c, nullptr, nullptr);
        expect_colour_entries();
      }
    }
  }
}

TEST_F(SaturationHue, ColourEntriesFollowTheSensorMatrices) {
  std::mt19937 random(1);
  std::uniform_int_distribution<int32_t> coefficient(-2048, 2047), bound(1, 255);
  for (int round = 0; round < 50; ++round) {
    SCOPED_TRACE(round);
    int32_t matrices[18];
    for (int32_t &entry : matrices) entry = coefficient(random);
    EXPECT_EQ(ppl_copy_sensor_matrix(context, matrices), 1);
    EXPECT_EQ(ppl_set_sensor_matrix_index_upper_bound(context, bound(random)), 1);
    expect_colour_entries();
  }
}

TEST_F(SaturationHue, ColourEntriesWrapIn32BitsAtAnyMatrixAndBound) {
  std::mt19937 random(2);
  std::uniform_int_distribution<int32_t> any(INT_MIN, INT_MAX);
  for (int round = 0; round < 50; ++round) {
    SCOPED_TRACE(round);
    int32_t matrices[18];
    for (int32_t &entry : matrices) entry = any(random) >> (round % 16);
    ppl_copy_sensor_matrix(context, matrices);
    ppl_set_sensor_matrix_index_upper_bound(context, any(random) >> (round % 20));
    expect_colour_entries();
  }
}

TEST_F(SaturationHue, NegativeBoundsDivideTruncating) {
  for (const int32_t bound : {-1, -2, -7, -12, INT_MIN}) {
    SCOPED_TRACE(bound);
    EXPECT_EQ(ppl_set_sensor_matrix_index_upper_bound(context, bound), 1);
    expect_colour_entries();
  }
}

TEST_F(SaturationHue, BoundZeroActsAsOneAndStaysZero) {
  EXPECT_EQ(ppl_set_sensor_matrix_index_upper_bound(context, 1), 1);
  const std::vector<int> slopes = entry_values(context, "studio_slope_vec");
  EXPECT_EQ(ppl_set_sensor_matrix_index_upper_bound(context, 0), 1);
  EXPECT_EQ(ppl_sensor_matrix_index_upper_bound(context), 0);
  EXPECT_EQ(entry_values(context, "studio_slope_vec"), slopes);
  expect_value("index_bound_vec", 1);
  expect_colour_entries();
}

TEST_F(SaturationHue, TheOneQuotientThatDoesNotFitWraps) {
  // The neutral studio set has 66 in its corner: 66 times 2^30 is 2^31 in 32 bits, the one number
  // whose negative there is none of.
  set_corner(0, 1 << 30);
  EXPECT_EQ(ppl_set_sensor_matrix_index_upper_bound(context, -1), 1);
  EXPECT_EQ(corner("studio_slope_vec"), -32768);
  expect_colour_entries();
}

// Values within 17 bits keep their low 16, all others are held at a word's ends.
TEST_F(SaturationHue, BasesWrapWithin17BitsAndSaturateBeyond) {
  // The neutral set carries a corner v of the sensor matrix over as it is; the base is (v + 2)
  // >> 2.
  const struct {
    int32_t base;
    int word;
  } cases[] = {{32767, 32767}, {32768, -32768},  {40000, -25536},  {65535, -1},
               {65536, 32767}, {70000, 32767},   {-32768, -32768}, {-32769, 32767},
               {-65536, 0},    {-65537, -32768}, {-70000, -32768}};
  for (const auto &[base, word] : cases) {
    SCOPED_TRACE(base);
    set_corner(4 * base, 4 * base);
    EXPECT_EQ(corner("rgb_base0_vec"), word);
    EXPECT_EQ(corner("rgb_base1_vec"), word);
    expect_colour_entries();
  }
}

TEST_F(SaturationHue, SlopesWrapWithin17BitsAndSaturateBeyond) {
  ppl_set_sensor_matrix_index_upper_bound(context, 1);
  const struct {
    int32_t step;  // an eighth of the slope
    int word;
  } cases[] = {{4095, 32760},   {4096, -32768}, {5000, -25536}, {8191, -8},     {8192, 32767},
               {-4096, -32768}, {-4097, 32760}, {-8192, 0},     {-8193, -32768}};
  for (const auto &[step, word] : cases) {
    SCOPED_TRACE(step);
    set_corner(0, step);
    EXPECT_EQ(corner("rgb_slope_vec"), word);
    expect_colour_entries();
  }
}

TEST_F(SaturationHue, SlopesDivideTowardsZero) {
  ppl_set_sensor_matrix_index_upper_bound(context, 16);
  set_corner(0, 3);
  EXPECT_EQ(corner("rgb_slope_vec"), 1);  // 24 / 16
  set_corner(3, 0);
  EXPECT_EQ(corner("rgb_slope_vec"), -1);
}

TEST_F(SaturationHue, IndexBoundIsTheLowWordOfTheControl) {
  const struct {
    int32_t bound;
    int word;
  } cases[] = {{1, 1},      {12, 12},   {255, 255}, {32768, -32768},
               {65535, -1}, {65536, 0}, {-1, -1},   {-2, -2}};
  for (const auto &[bound, word] : cases) {
    SCOPED_TRACE(bound);
    ppl_set_sensor_matrix_index_upper_bound(context, bound);
    expect_value("index_bound_vec", word);
  }
}

TEST_F(SaturationHue, OffsetsCarryTheHalfOfTheKernelsShift) {
  // Contrast 64: a gain of 384, an offset of 32768 - 128 * 384 = -16384.
  ppl_set_contrast_c(context, 64, nullptr, nullptr);
  expect_value("offset_studio_vec", -4096 + 32);
  expect_value("offset_full_vec", -4096 + 32);
  expect_value("offset_rgb_vec", -4096 + 32);
}

TEST_F(SaturationHue, SensorMatrixAndBoundResetToTheirDefaults) {
  set_corner(1, 2);
  ppl_set_sensor_matrix_index_upper_bound(context, 99);
  EXPECT_EQ(ppl_reset_sensor_matrix(context), 1);
  EXPECT_EQ(ppl_reset_sensor_matrix_index_upper_bound(context), 1);
  int32_t matrices[18];
  ppl_sensor_matrix(context, matrices);
  EXPECT_TRUE(std::equal(matrices, matrices + 18, default_matrices));
  EXPECT_EQ(ppl_sensor_matrix_index_upper_bound(context), 12);
  expect_matrix("studio_base0_vec", {15, 36, 3, -5, -13, 19, 17, -13, -4});
}

}  // namespace
}  // namespace ppl::controls_test
