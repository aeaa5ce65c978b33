// The bands of the statistics and the gains of the qual test.
#include <limits.h>

#include "controls_fixture.h"

namespace ppl::controls_test {
namespace {

struct BandControl {
  const char *name;
  uint8_t (*set)(PplContext *, int32_t, int32_t);
  int32_t (*min)(const PplContext *);
  int32_t (*max)(const PplContext *);
  Band PplContext::*band;
  int32_t default_min, default_max;
};

std::ostream &operator<<(std::ostream &out, const BandControl &band) { return out << band.name; }

std::string band_name(const testing::TestParamInfo<BandControl> &info) { return info.param.name; }

class BandTest : public ControlsTest, public testing::WithParamInterface<BandControl> {
 protected:
  uint8_t set(int32_t min, int32_t max) { return GetParam().set(context, min, max); }

  void expect_band(int32_t min, int32_t max, int32_t span) {
    EXPECT_EQ(GetParam().min(context), min);
    EXPECT_EQ(GetParam().max(context), max);
    EXPECT_EQ((context->*GetParam().band).span, span);
  }
};

// ---- Bands on differences ----

class WordBand : public BandTest {
 protected:
  void expect_limits(int lo, int hi) {
    expect_value(std::string(GetParam().name) + "_lo_vec", lo);
    expect_value(std::string(GetParam().name) + "_hi_vec", hi);
  }
};

TEST_P(WordBand, StartsAtItsDefault) {
  const auto [min, max] = std::pair(GetParam().default_min, GetParam().default_max);
  expect_band(min, max, max - min + 1);
  expect_limits(min - 1, max + 1);
}

TEST_P(WordBand, EntriesStandOneOutsideTheLimits) {
  EXPECT_EQ(set(-100, 200), 1);
  expect_band(-100, 200, 301);
  expect_limits(-101, 201);
}

TEST_P(WordBand, OneValueIsABandOfSpanOne) {
  EXPECT_EQ(set(5, 5), 1);
  expect_band(5, 5, 1);
  expect_limits(4, 6);
}

TEST_P(WordBand, ReversedLimitsAreRefused) {
  set(5, 5);
  EXPECT_EQ(set(5, 4), 0);
  EXPECT_EQ(set(0, -1), 0);
  EXPECT_EQ(set(INT_MAX, INT_MIN), 0);
  expect_band(5, 5, 1);
  expect_limits(4, 6);
}

TEST_P(WordBand, TakesTheWholeRangeOfAWord) {
  EXPECT_EQ(set(-32767, 32766), 1);
  expect_band(-32767, 32766, 65534);
  expect_limits(-32768, 32767);
}

TEST_P(WordBand, LimitsThatDoNotFitAreStoredAndKeepBothEntries) {
  const struct {
    int32_t min, max;
  } cases[] = {{-32768, 0}, {0, 32767}, {-32769, 0}, {0, 32768}, {40000, 50000}, {-50000, -40000}};
  for (const auto &[min, max] : cases) {
    SCOPED_TRACE(testing::Message() << min << " to " << max);
    ASSERT_EQ(set(5, 6), 1);
    EXPECT_EQ(set(min, max), 0);
    expect_band(min, max, max - min + 1);
    expect_limits(4, 7);
  }
}

TEST_P(WordBand, TheWidestLimitsWrapInTheirSpan) {
  ASSERT_EQ(set(5, 6), 1);
  EXPECT_EQ(set(INT_MIN, INT_MAX), 0);
  expect_band(INT_MIN, INT_MAX, 0);
  expect_limits(4, 7);
}

INSTANTIATE_TEST_SUITE_P(
    All, WordBand,
    testing::Values(BandControl{"qual_BmGb", ppl_set_qual_BmGb_min_max, ppl_qual_BmGb_min,
                                ppl_qual_BmGb_max, &PplContext::qual_BmGb, -25, 25},
                    BandControl{"qual_GrmR", ppl_set_qual_GrmR_min_max, ppl_qual_GrmR_min,
                                ppl_qual_GrmR_max, &PplContext::qual_GrmR, -25, 25},
                    BandControl{"qual_BmGb_p_GrmR", ppl_set_qual_BmGb_p_GrmR_min_max,
                                ppl_qual_BmGb_p_GrmR_min, ppl_qual_BmGb_p_GrmR_max,
                                &PplContext::qual_BmGb_p_GrmR, -30, 30},
                    BandControl{"qual_BmGb_m_GrmR", ppl_set_qual_BmGb_m_GrmR_min_max,
                                ppl_qual_BmGb_m_GrmR_min, ppl_qual_BmGb_m_GrmR_max,
                                &PplContext::qual_BmGb_m_GrmR, -30, 30}),
    band_name);

// ---- Bands on levels ----

class LevelBand : public BandTest {};

TEST_P(LevelBand, StartsWideOpen) { expect_band(0, 255, 256); }

TEST_P(LevelBand, TakesLimitsInsideABytesRange) {
  const struct {
    int32_t min, max;
  } cases[] = {{0, 0}, {0, 255}, {255, 255}, {60, 200}, {128, 128}};
  for (const auto &[min, max] : cases) {
    SCOPED_TRACE(testing::Message() << min << " to " << max);
    EXPECT_EQ(set(min, max), 1);
    expect_band(min, max, max - min + 1);
  }
}

TEST_P(LevelBand, RefusesAllOthersAndKeepsTheOldBand) {
  set(60, 200);
  const struct {
    int32_t min, max;
  } cases[] = {{5, 4},       {-1, 4},     {0, 256},           {-1, 256},
               {256, 256},   {-2, -1},    {INT_MIN, INT_MAX}, {255, 254},
               {0, INT_MAX}, {INT_MIN, 0}};
  for (const auto &[min, max] : cases) {
    SCOPED_TRACE(testing::Message() << min << " to " << max);
    EXPECT_EQ(set(min, max), 0);
    expect_band(60, 200, 141);
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, LevelBand,
    testing::Values(BandControl{"qual_R", ppl_set_qual_R_min_max, ppl_qual_R_min, ppl_qual_R_max,
                                &PplContext::qual_R, 0, 255},
                    BandControl{"qual_G", ppl_set_qual_G_min_max, ppl_qual_G_min, ppl_qual_G_max,
                                &PplContext::qual_G, 0, 255},
                    BandControl{"qual_B", ppl_set_qual_B_min_max, ppl_qual_B_min, ppl_qual_B_max,
                                &PplContext::qual_B, 0, 255},
                    BandControl{"qAE_RGB", ppl_set_qAE_RGB_min_max, ppl_qAE_RGB_min,
                                ppl_qAE_RGB_max, &PplContext::qAE_RGB, 0, 255}),
    band_name);

class Bands : public ControlsTest {
 protected:
  void expect_levels(const Values &GR_base, const Values &GR_span, const Values &BG_base,
                     const Values &BG_span) {
    EXPECT_EQ(entry_values(context, "qual_GR_base_vec"), GR_base);
    EXPECT_EQ(entry_values(context, "qual_GR_span_vec"), GR_span);
    EXPECT_EQ(entry_values(context, "qual_BG_base_vec"), BG_base);
    EXPECT_EQ(entry_values(context, "qual_BG_span_vec"), BG_span);
  }
};

TEST_F(Bands, OpenLevelBandsHaveASpanOf255) {
  EXPECT_EQ(ppl_set_qual_R_min_max(context, 0, 255), 1);
  expect_levels({0, 0}, {255, 255}, {0, 0}, {255, 255});
}

TEST_F(Bands, LevelPairsJoinTwoChannelsPerLineKind) {
  EXPECT_EQ(ppl_set_qual_RGB_min_max(context, 10, 30, 40, 80, 100, 255), 1);
  expect_levels({40, 10}, {40, 20}, {100, 40}, {155, 40});
}

TEST_F(Bands, ARedBandWritesTheRedPairAlone) {
  ppl_set_qual_RGB_min_max(context, 10, 30, 40, 80, 100, 255);
  EXPECT_EQ(ppl_set_qual_R_min_max(context, 11, 12), 1);
  expect_levels({40, 11}, {40, 1}, {100, 40}, {155, 40});
}

TEST_F(Bands, AGreenBandWritesBothPairs) {
  ppl_set_qual_RGB_min_max(context, 10, 30, 40, 80, 100, 255);
  EXPECT_EQ(ppl_set_qual_G_min_max(context, 11, 12), 1);
  expect_levels({11, 10}, {1, 20}, {100, 11}, {155, 1});
}

TEST_F(Bands, ABlueBandWritesTheBluePairAlone) {
  ppl_set_qual_RGB_min_max(context, 10, 30, 40, 80, 100, 255);
  EXPECT_EQ(ppl_set_qual_B_min_max(context, 11, 12), 1);
  expect_levels({40, 10}, {40, 20}, {11, 40}, {1, 40});
}

// The pair is rebuilt whole, so it takes up what an earlier failed save left behind.
TEST_F(Bands, ARedBandBringsTheStoredGreenBandIntoItsPair) {
  test_hooks::fail_saves(0, 1);
  ppl_set_qual_G_min_max(context, 40, 80);
  expect_levels({0, 0}, {255, 255}, {0, 0}, {255, 255});
  ppl_set_qual_R_min_max(context, 10, 30);
  expect_levels({40, 10}, {40, 20}, {0, 0}, {255, 255});
}

TEST_F(Bands, AllThreeLevelBandsAreStoredWithTheirSpans) {
  ppl_set_qual_RGB_min_max(context, 10, 30, 40, 80, 100, 255);
  EXPECT_EQ(context->qual_R.span, 21);
  EXPECT_EQ(context->qual_G.span, 41);
  EXPECT_EQ(context->qual_B.span, 156);
}

TEST_F(Bands, ABadBlueBandLeavesRedAndGreenAsTheyWere) {
  EXPECT_EQ(ppl_set_qual_RGB_min_max(context, 10, 30, 40, 80, 100, 99), 0);
  EXPECT_EQ(ppl_qual_R_min(context), 0);
  EXPECT_EQ(ppl_qual_R_max(context), 255);
  EXPECT_EQ(ppl_qual_G_min(context), 0);
  EXPECT_EQ(ppl_qual_G_max(context), 255);
  expect_levels({0, 0}, {255, 255}, {0, 0}, {255, 255});
}

TEST_F(Bands, EachLimitOfTheCombinedSetterIsTested) {
  const int32_t good[6] = {10, 30, 40, 80, 100, 255};
  for (int i = 0; i < 6; ++i) {
    for (const int32_t bad : {-1, 256}) {
      SCOPED_TRACE(testing::Message() << "argument " << i << " is " << bad);
      int32_t v[6];
      std::copy(good, good + 6, v);
      v[i] = bad;
      EXPECT_EQ(ppl_set_qual_RGB_min_max(context, v[0], v[1], v[2], v[3], v[4], v[5]), 0);
      EXPECT_EQ(ppl_qual_R_min(context), 0);
      EXPECT_EQ(ppl_qual_B_max(context), 255);
    }
  }
}

// ---- Exposure band ----

TEST_F(Bands, ExposureEntriesHoldTheLimitsAndTheirNeighbours) {
  EXPECT_EQ(ppl_set_qAE_RGB_min_max(context, 60, 200), 1);
  expect_value("qAE_min_vec", 60);
  expect_value("qAE_lo_vec", 59);
  expect_value("qAE_max_vec", 200);
  expect_value("qAE_hi_vec", 201);
}

TEST_F(Bands, ExposureEntriesWrapAtTheEnds) {
  EXPECT_EQ(ppl_set_qAE_RGB_min_max(context, 0, 255), 1);
  expect_value("qAE_min_vec", 0);
  expect_value("qAE_lo_vec", 255);
  expect_value("qAE_max_vec", 255);
  expect_value("qAE_hi_vec", 0);
}

// ---- Gains of the qual test ----

TEST_F(Bands, QualsGainsMakePairsWithSixFractionalBits) {
  EXPECT_EQ(ppl_set_quals_rgb_gain(context, 256, 512, 1023), 0);
  EXPECT_EQ(ppl_nf88_quals_r_gain(context), 256);
  EXPECT_EQ(ppl_nf88_quals_g_gain(context), 512);
  EXPECT_EQ(ppl_nf88_quals_b_gain(context), 1023);
  expect_pair("quals_gain_BG_vec", 255, 128);
  expect_pair("quals_gain_GR_vec", 128, 64);
}

TEST_F(Bands, QualsGainsStartAtOne) {
  EXPECT_EQ(ppl_nf88_quals_r_gain(context), 256);
  EXPECT_EQ(ppl_nf88_quals_g_gain(context), 256);
  EXPECT_EQ(ppl_nf88_quals_b_gain(context), 256);
  expect_pair("quals_gain_BG_vec", 64, 64);
  expect_pair("quals_gain_GR_vec", 64, 64);
}

TEST_F(Bands, QualsGainsTake0To1023) {
  const struct {
    int32_t gain;
    int value;
  } cases[] = {{0, 0}, {3, 0}, {4, 1}, {1020, 255}, {1023, 255}};
  for (const auto &[gain, value] : cases) {
    SCOPED_TRACE(gain);
    EXPECT_EQ(ppl_set_quals_r_gain(context, gain), 0);
    expect_pair("quals_gain_GR_vec", 64, value);
  }
}

TEST_F(Bands, QualsGainsThatDoNotFitAreStoredAndKeepThePairs) {
  for (const int32_t bad : {-1, 1024, INT_MAX, INT_MIN}) {
    SCOPED_TRACE(bad);
    EXPECT_EQ(ppl_set_quals_rgb_gain(context, bad, 300, 400), 0);
    EXPECT_EQ(ppl_set_quals_rgb_gain(context, 200, bad, 400), 0);
    EXPECT_EQ(ppl_set_quals_rgb_gain(context, 200, 300, bad), 0);
    EXPECT_EQ(ppl_nf88_quals_r_gain(context), 200);
    EXPECT_EQ(ppl_nf88_quals_g_gain(context), 300);
    EXPECT_EQ(ppl_nf88_quals_b_gain(context), bad);
    EXPECT_EQ(ppl_set_quals_r_gain(context, bad), 0);
    EXPECT_EQ(ppl_nf88_quals_r_gain(context), bad);
    expect_pair("quals_gain_BG_vec", 64, 64);
    expect_pair("quals_gain_GR_vec", 64, 64);
  }
}

TEST_F(Bands, ASingleQualsGainWritesItsOwnColumnsAlone) {
  ppl_set_quals_rgb_gain(context, 4, 8, 12);
  ppl_set_quals_r_gain(context, 40);
  expect_pair("quals_gain_BG_vec", 3, 2);
  expect_pair("quals_gain_GR_vec", 2, 10);
  ppl_set_quals_g_gain(context, 80);
  expect_pair("quals_gain_BG_vec", 3, 20);
  expect_pair("quals_gain_GR_vec", 20, 10);
  ppl_set_quals_b_gain(context, 120);
  expect_pair("quals_gain_BG_vec", 30, 20);
  expect_pair("quals_gain_GR_vec", 20, 10);
}

TEST_F(Bands, ASingleQualsGainIgnoresAnotherChannelThatDoesNotFit) {
  ppl_set_quals_rgb_gain(context, 4, 8, 12);
  ppl_set_quals_rgb_gain(context, 4, 5000, 12);
  EXPECT_EQ(ppl_set_quals_r_gain(context, 40), 0);
  expect_pair("quals_gain_GR_vec", 2, 10);
}

}  // namespace
}  // namespace ppl::controls_test
