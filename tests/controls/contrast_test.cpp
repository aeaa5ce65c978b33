// The contrast curve, its compositions with the gamma tables, and the luma gain.
#include "colour_model.h"
#include "controls_fixture.h"

namespace ppl::controls_test {
namespace {

// The curve from its anchors, in 32 bits that wrap; coordinates carry four fractional bits.
std::vector<int> curve(uint32_t x, uint32_t y) {
  struct Point {
    int32_t x, y;
  };
  std::vector<Point> points;
  const auto add = [&](int64_t px, int64_t py) {
    points.push_back({wrap32(px * 16), wrap32(py * 16)});
  };
  if (x == 0) {
    add(0, y);
    add(255, 255 - int64_t{y});
  } else {
    add(0, 0);
    add(x, y);
    add(255 - int64_t{x}, 255 - int64_t{y});
    add(255, 255);
  }
  std::vector<int> table;
  for (int32_t i = 0; i < 256; ++i) {
    const int32_t t = 16 * i;
    size_t end = 1;
    while (t > points[end].x && end + 1 < points.size()) ++end;
    const Point from = points[end - 1], to = points[end];
    const int32_t rise = wrap32(int64_t{to.y} - from.y);
    const int32_t slope = wrap32(int64_t{rise} << 12) / (to.x - from.x);
    const int32_t climbed = wrap32(int64_t{t - from.x} * slope) >> 12;
    table.push_back((wrap32(int64_t{climbed} + from.y) >> 4) & 255);
  }
  return table;
}

class Contrast : public ControlsTest {
 protected:
  std::vector<int> table() { return bytes_as_ints(ppl_contrast_table(context)); }

  void expect_composed() {
    for (int i = 0; i < 256; ++i) {
      const uint8_t c = ppl_contrast_table(context)[i];
      EXPECT_EQ(ppl_yuv_contrast_gamma_table(context)[i], ppl_yuv_gamma_table(context)[c]) << i;
      EXPECT_EQ(ppl_rgb_contrast_gamma_table(context)[i], ppl_rgb_gamma_table(context)[c]) << i;
    }
  }

  void expect_luma_gain(int32_t contrast_c) {
    SCOPED_TRACE(contrast_c);
    const ColourSets sets = colour_sets(256, 0, contrast_c);
    EXPECT_TRUE(
        std::equal(sets.yuv_studio.begin(), sets.yuv_studio.end(), context->colour_yuv_studio));
    EXPECT_TRUE(std::equal(sets.yuv_full.begin(), sets.yuv_full.end(), context->colour_yuv_full));
    EXPECT_TRUE(std::equal(sets.rgb.begin(), sets.rgb.end(), context->colour_rgb));
    EXPECT_EQ(context->offset_yuv_studio, sets.offset_yuv_studio);
    expect_value("offset_studio_vec", offset_entry(sets.offset_yuv_studio));
  }
};

// ---- Curves known by heart ----

TEST_F(Contrast, NewContextHasTheIdentity) {
  EXPECT_EQ(table(), identity_table());
  expect_composed();
}

TEST_F(Contrast, AnchorsAtZeroGiveTheIdentity) {
  ppl_set_contrast_c(context, 50, nullptr, nullptr);
  EXPECT_EQ(ppl_set_contrast_xy(context, 0, 0), 1);
  EXPECT_EQ(table(), identity_table());
}

TEST_F(Contrast, HighestContrastIsAStep) {
  EXPECT_EQ(ppl_set_contrast_c(context, 127, nullptr, nullptr), 1);
  std::vector<int> expected(256, 0);
  std::fill(expected.begin() + 128, expected.end(), 255);
  EXPECT_EQ(table(), expected);
}

TEST_F(Contrast, LowestContrastIsFlat) {
  EXPECT_EQ(ppl_set_contrast_c(context, -127, nullptr, nullptr), 1);
  EXPECT_EQ(table(), std::vector<int>(256, 127));
}

TEST_F(Contrast, Contrast64IsBlackThenSteepThenWhite) {
  EXPECT_EQ(ppl_set_contrast_c(context, 64, nullptr, nullptr), 1);
  const std::vector<int> t = table();
  for (size_t i = 0; i <= 64; ++i) EXPECT_EQ(t[i], 0) << i;
  EXPECT_EQ(t[65], 2);
  EXPECT_EQ(t[128], 128);
  EXPECT_EQ(t[190], 252);
  for (size_t i = 192; i < 256; ++i) EXPECT_EQ(t[i], 255) << i;
}

TEST_F(Contrast, ContrastMinus64CompressesTheRange) {
  EXPECT_EQ(ppl_set_contrast_c(context, -64, nullptr, nullptr), 1);
  const std::vector<int> t = table();
  EXPECT_EQ(t[0], 64);
  EXPECT_EQ(t[128], 127);
  EXPECT_EQ(t[255], 190);
}

TEST_F(Contrast, BothAnchorsGiveACurveWithTwoKnees) {
  EXPECT_EQ(ppl_set_contrast_xy(context, 64, 32), 1);
  const std::vector<int> t = table();
  EXPECT_EQ(t[0], 0);
  EXPECT_EQ(t[32], 16);
  EXPECT_EQ(t[64], 32);
  EXPECT_EQ(t[128], 128);
  EXPECT_EQ(t[255], 255);
}

// ---- All curves ----

TEST_F(Contrast, EveryContrastHasItsCurve) {
  for (int32_t c = -127; c <= 127; ++c) {
    SCOPED_TRACE(c);
    EXPECT_EQ(ppl_set_contrast_c(context, c, nullptr, nullptr), 1);
    const auto x = static_cast<uint32_t>(std::max(c, 0));
    const auto y = static_cast<uint32_t>(std::max(-c, 0));
    EXPECT_EQ(table(), curve(x, y));
  }
}

TEST_F(Contrast, AnyTwoAnchorsHaveTheirCurve) {
  for (const uint32_t x : {0u, 1u, 2u, 31u, 64u, 100u, 126u, 127u}) {
    for (const uint32_t y : {0u, 1u, 30u, 64u, 127u, 128u, 200u, 254u, 255u}) {
      SCOPED_TRACE(testing::Message() << "x " << x << ", y " << y);
      EXPECT_EQ(ppl_set_contrast_xy(context, x, y), 1);
      EXPECT_EQ(table(), curve(x, y));
    }
  }
}

TEST_F(Contrast, AYAbove255WrapsInTheEntries) {
  for (const uint32_t x : {0u, 5u, 127u}) {
    for (const uint32_t y : {256u, 300u, 1000u, 5000u, 60000u}) {
      SCOPED_TRACE(testing::Message() << "x " << x << ", y " << y);
      EXPECT_EQ(ppl_set_contrast_xy(context, x, y), 1);
      EXPECT_EQ(table(), curve(x, y));
    }
  }
}

TEST_F(Contrast, AHugeYWrapsOnTheWay) {
  for (const uint32_t y : {0x01000000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(y);
    EXPECT_EQ(ppl_set_contrast_xy(context, 0, y), 1);
    EXPECT_EQ(table(), curve(0, y));
    EXPECT_EQ(ppl_set_contrast_xy(context, 40, y), 1);
    EXPECT_EQ(table(), curve(40, y));
  }
}

// ---- Arguments ----

TEST_F(Contrast, PositiveContrastIsAnX) {
  int32_t x = -1, y = -1;
  EXPECT_EQ(ppl_set_contrast_c(context, 33, &x, &y), 1);
  EXPECT_EQ(x, 33);
  EXPECT_EQ(y, 0);
  EXPECT_EQ(context->contrast_c, 33);
  EXPECT_EQ(context->contrast_x, 33u);
  EXPECT_EQ(context->contrast_y, 0u);
}

TEST_F(Contrast, NegativeContrastIsAY) {
  int32_t x = -1, y = -1;
  EXPECT_EQ(ppl_set_contrast_c(context, -44, &x, &y), 1);
  EXPECT_EQ(x, 0);
  EXPECT_EQ(y, 44);
  EXPECT_EQ(context->contrast_c, -44);
  EXPECT_EQ(context->contrast_x, 0u);
  EXPECT_EQ(context->contrast_y, 44u);
}

TEST_F(Contrast, ZeroContrastHasBothAnchorsAtZero) {
  int32_t x = -1, y = -1;
  EXPECT_EQ(ppl_set_contrast_c(context, 0, &x, &y), 1);
  EXPECT_EQ(x, 0);
  EXPECT_EQ(y, 0);
}

TEST_F(Contrast, EachPointerMayBeNull) {
  int32_t x = -1, y = -1;
  EXPECT_EQ(ppl_set_contrast_c(context, 5, &x, nullptr), 1);
  EXPECT_EQ(x, 5);
  EXPECT_EQ(ppl_set_contrast_c(context, -6, nullptr, &y), 1);
  EXPECT_EQ(y, 6);
  EXPECT_EQ(ppl_set_contrast_c(context, 7, nullptr, nullptr), 1);
  EXPECT_EQ(table(), curve(7, 0));
}

TEST_F(Contrast, OutOfRangeContrastWritesNoPointer) {
  for (const int32_t c : {-128, 128, INT32_MIN, INT32_MAX}) {
    int32_t x = 91, y = 92;
    EXPECT_EQ(ppl_set_contrast_c(context, c, &x, &y), 0) << c;
    EXPECT_EQ(x, 91);
    EXPECT_EQ(y, 92);
    EXPECT_EQ(context->contrast_c, 0);
  }
}

TEST_F(Contrast, AnchorXGoesUpTo127) {
  EXPECT_EQ(ppl_set_contrast_xy(context, 127, 1), 1);
  const std::vector<int> before = table();
  EXPECT_EQ(ppl_set_contrast_xy(context, 128, 2), 0);
  EXPECT_EQ(table(), before);
  EXPECT_EQ(context->contrast_x, 127u);
  EXPECT_EQ(context->contrast_y, 1u);
}

// ---- Luma gain ----

TEST_F(Contrast, EveryContrastHasItsLumaGain) {
  for (int32_t c = -127; c <= 127; ++c) {
    ppl_set_contrast_c(context, c, nullptr, nullptr);
    expect_luma_gain(c);
  }
}

TEST_F(Contrast, LumaGainRunsFrom129To510) {
  // The offset is 32768 less 128 times the gain.
  ppl_set_contrast_c(context, -127, nullptr, nullptr);
  EXPECT_EQ(context->offset_yuv_full, 32768 - 128 * 129);
  ppl_set_contrast_c(context, 127, nullptr, nullptr);
  EXPECT_EQ(context->offset_yuv_full, 32768 - 128 * 510);
}

TEST_F(Contrast, AnchorsAloneLeaveTheLumaGain) {
  ppl_set_contrast_c(context, 20, nullptr, nullptr);
  EXPECT_EQ(ppl_set_contrast_xy(context, 100, 0), 1);
  EXPECT_EQ(table(), curve(100, 0));
  EXPECT_EQ(context->contrast_c, 20);
  expect_luma_gain(20);
}

TEST_F(Contrast, AnchorsRebuildTheColourFromTheStoredSaturationAndHue) {
  ppl_set_sat_hue(context, 300, 50);
  const ColourSets sets = colour_sets(300, 50, 0);
  memset(context->colour_rgb, 0, sizeof context->colour_rgb);
  EXPECT_EQ(ppl_set_contrast_xy(context, 0, 1), 1);
  EXPECT_TRUE(std::equal(sets.rgb.begin(), sets.rgb.end(), context->colour_rgb));
}

// ---- Composition, copy, reset ----

TEST_F(Contrast, CurveAppliesBeforeGamma) {
  const std::vector<uint8_t> yuv = scrambled_table(1), rgb = scrambled_table(2);
  ppl_copy_yuv_gamma_table(context, yuv.data());
  ppl_copy_rgb_gamma_table(context, rgb.data());
  ppl_set_contrast_c(context, 64, nullptr, nullptr);
  EXPECT_EQ(ppl_yuv_contrast_gamma_table(context)[65], yuv[2]);
  EXPECT_EQ(ppl_rgb_contrast_gamma_table(context)[65], rgb[2]);
  expect_composed();
}

TEST_F(Contrast, CopiedCurveIsComposedAndLeavesContrastAndColourAlone) {
  const std::vector<uint8_t> curve_in = scrambled_table();
  ppl_set_contrast_c(context, 30, nullptr, nullptr);
  poison_derived(context);
  test_hooks::reset_counts();
  EXPECT_EQ(ppl_copy_contrast_table(context, curve_in.data()), 1);
  EXPECT_TRUE(std::equal(curve_in.begin(), curve_in.end(), ppl_contrast_table(context)));
  expect_composed();
  EXPECT_EQ(context->contrast_c, 30);
  EXPECT_EQ(context->contrast_x, 30u);
  expect_written(no_entries);
  EXPECT_EQ(test_hooks::save_count(), 0u);
}

TEST_F(Contrast, TablesAreReadInPlace) {
  EXPECT_EQ(ppl_contrast_table(context), context->contrast_table);
  EXPECT_EQ(ppl_yuv_contrast_gamma_table(context), context->yuv_contrast_gamma_table);
  EXPECT_EQ(ppl_rgb_contrast_gamma_table(context), context->rgb_contrast_gamma_table);
}

TEST_F(Contrast, AfterAFailedSaveTablesAndSetsAreNewAndTheEntriesOld) {
  poison_derived(context);
  test_hooks::fail_saves(0, 1);
  EXPECT_EQ(ppl_set_contrast_c(context, 64, nullptr, nullptr), 1);
  EXPECT_EQ(table(), curve(64, 0));
  expect_composed();
  const ColourSets sets = colour_sets(256, 0, 64);
  EXPECT_TRUE(std::equal(sets.rgb.begin(), sets.rgb.end(), context->colour_rgb));
  expect_written(no_entries);
}

TEST_F(Contrast, ResetBringsBackIdentityAndUnityGain) {
  ppl_set_contrast_c(context, -90, nullptr, nullptr);
  ppl_set_contrast_xy(context, 80, 20);
  test_hooks::reset_counts();
  EXPECT_EQ(ppl_reset_contrast(context), 1);
  EXPECT_EQ(test_hooks::save_count(), 1u);
  EXPECT_EQ(table(), identity_table());
  EXPECT_EQ(context->contrast_c, 0);
  EXPECT_EQ(context->contrast_x, 0u);
  EXPECT_EQ(context->contrast_y, 0u);
  expect_luma_gain(0);
}

}  // namespace
}  // namespace ppl::controls_test
