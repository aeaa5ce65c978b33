// The stored gamma curves against the rule that they follow. The library itself has no floating
// point; the rule is carried out here, at double precision.
#include "controls/gamma_data.h"

#include <gtest/gtest.h>
#include <math.h>

#include <algorithm>
#include <vector>

namespace ppl {
namespace {

// The power section's offset per index, from -32 to 32.
constexpr double power_offset[65] = {
    -0.000820, -0.001010, -0.001220, -0.001434, -0.001660, -0.001895, -0.002139, -0.002308,
    -0.002450, -0.002545, -0.002520, -0.002400, -0.002100, -0.001634, -0.000946, 0,
    0.001311,  0.002920,  0.004936,  0.007385,  0.010320,  0.013780,  0.017822,  0.022424,
    0.027750,  0.033796,  0.040560,  0.048045,  0.056468,  0.065716,  0.075970,  0.087112,
    0.099296,  0.112520,  0.126771,  0.142274,  0.158900,  0.176852,  0.196011,  0.216555,
    0.238476,  0.261845,  0.286737,  0.313189,  0.341196,  0.371020,  0.402598,  0.436000,
    0.471248,  0.508631,  0.548022,  0.589590,  0.633431,  0.679644,  0.728295,  0.779640,
    0.833508,  0.890227,  0.950022,  1.012812,  1.078627,  1.148116,  1.220685,  1.297464,
    1.377240};

double exponent(int index) { return 0.45 * exp(-3.0 * index / 64); }

double curve(int index, double t) {
  const double a = power_offset[index + 32], g = exponent(index), toe_end = 0.018;
  const auto power = [&](double x) { return (1 + a) * pow(x, g) - a; };
  return t < toe_end ? power(toe_end) / toe_end * t : power(t);
}

template <class Test>
void for_every_index(Test test) {
  for (int index = gamma_index_min; index <= gamma_index_max; ++index) {
    SCOPED_TRACE(index);
    test(index);
  }
}

const uint8_t *full_range(int index) { return gamma_tables65x256[index + 32]; }
const uint8_t *studio_range(int index) { return gamma_tables65x256_16_235[index + 32]; }

std::vector<int> values(const uint8_t *row, int first, int count) {
  return {row + first, row + first + count};
}

TEST(GammaData, ThereAre65Curves) {
  EXPECT_EQ(gamma_curve_count, 65);
  EXPECT_EQ(sizeof gamma_tables65x256, 16640u);
  EXPECT_EQ(sizeof gamma_tables65x256_16_235, 16640u);
}

TEST(GammaData, FullRangeRowsFollowTheRule) {
  for_every_index([](int index) {
    for (int x = 0; x < 256; ++x) {
      const double value = floor(256 * curve(index, x / 256.0));
      EXPECT_EQ(full_range(index)[x], std::clamp(value, 0.0, 255.0)) << "entry " << x;
    }
  });
}

TEST(GammaData, StudioRangeRowsFollowTheRule) {
  for_every_index([](int index) {
    for (int x = 0; x < 256; ++x) {
      const double value = 16 + floor(220 * curve(index, std::max(x - 16, 0) / 220.0));
      EXPECT_EQ(studio_range(index)[x], std::clamp(value, 16.0, 235.0)) << "entry " << x;
    }
  });
}

TEST(GammaData, ExponentsFollowTheRule) {
  for_every_index([](int index) {
    EXPECT_EQ(gamma_nf20_12_values[index + 32], floor(4096 * exponent(index)));
  });
}

TEST(GammaData, ExponentsOfTheMiddleAndTheEnds) {
  EXPECT_EQ(gamma_nf20_12_values[0], 8260);
  EXPECT_EQ(gamma_nf20_12_values[32], 1843);
  EXPECT_EQ(gamma_nf20_12_values[64], 411);
}

TEST(GammaData, IndexMinus17IsTheIdentity) {
  for (int x = 0; x < 256; ++x) {
    EXPECT_EQ(full_range(-17)[x], x);
    EXPECT_EQ(studio_range(-17)[x], std::clamp(x, 16, 235));
  }
}

TEST(GammaData, Index0InFullRange) {
  EXPECT_EQ(values(full_range(0), 0, 10), (std::vector<int>{0, 4, 9, 13, 18, 22, 26, 30, 33, 36}));
  EXPECT_EQ(full_range(0)[128], 180);
  EXPECT_EQ(values(full_range(0), 250, 6), (std::vector<int>{253, 253, 254, 254, 255, 255}));
}

TEST(GammaData, Index0InStudioRange) {
  EXPECT_EQ(values(studio_range(0), 16, 6), (std::vector<int>{16, 20, 25, 29, 33, 38}));
}

TEST(GammaData, LowestIndexStaysBlackUpTo14AndEndsBelowWhite) {
  EXPECT_EQ(full_range(-32)[14], 0);
  EXPECT_EQ(full_range(-32)[15], 1);
  EXPECT_EQ(full_range(-32)[255], 253);
}

TEST(GammaData, HighestIndexRisesSteeplyAndReachesWhiteEarly) {
  EXPECT_EQ(values(full_range(32), 0, 8), (std::vector<int>{0, 11, 23, 35, 46, 57, 64, 71}));
  EXPECT_EQ(full_range(32)[251], 254);
  EXPECT_EQ(full_range(32)[252], 255);
}

TEST(GammaData, CurvesNeverFall) {
  for_every_index([](int index) {
    EXPECT_TRUE(std::is_sorted(full_range(index), full_range(index) + 256));
    EXPECT_TRUE(std::is_sorted(studio_range(index), studio_range(index) + 256));
  });
}

TEST(GammaData, StudioRowsHoldBlackBelow16AndWhiteAbove235) {
  for_every_index([](int index) {
    for (int x = 0; x <= 16; ++x) EXPECT_EQ(studio_range(index)[x], 16) << "entry " << x;
    for (int x = 236; x < 256; ++x) EXPECT_EQ(studio_range(index)[x], 235) << "entry " << x;
  });
}

}  // namespace
}  // namespace ppl
