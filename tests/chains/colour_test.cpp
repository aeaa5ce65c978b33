// Adaptive matrices, chroma and the chroma box of the multi-pass qualities. Quality 2 makes flat
// planes of a frame of equal cells, so that each pixel's R, G and B are known.
#include "chains/chains.h"

namespace ppl_test::chains {
namespace {

PPL_CHAINS_SUITE(ChainMatrix);
PPL_CHAINS_SUITE(ChainChroma);

struct Yuv {
  int y, u, v;
  bool operator==(const Yuv &) const = default;
};
std::ostream &operator<<(std::ostream &out, const Yuv &c) {
  return out << c.y << " " << c.u << " " << c.v;
}
Yuv yuv(const Picture &picture, int x = 40, int y = 20) {
  return {picture.y(x, y), picture.u(x / 2, y / 2), picture.v(x / 2, y / 2)};
}

// ---- Coefficients

TEST_P(ChainMatrix, GreyTakesTheFirstMatrixAndKeepsItsTint) {
  // Rows that sum to 54, 1 and 0.
  set_default_matrices();
  for (const auto &[level, expected] :
       {std::pair{0, Yuv{16, 128, 128}}, {100, Yuv{100, 130, 128}}, {255, Yuv{231, 132, 128}}}) {
    fill(static_cast<uint8_t>(level));
    EXPECT_EQ(yuv(run(2, Format::i420)), expected);
  }
}

TEST_P(ChainMatrix, TheIndexIsAQuarterOfTheThreeDifferencesUpToTheBound) {
  // Row V starts at 17, -13, -4 and moves by 825, -635, -188 a step of 1 / 256.
  set_default_matrices();
  const auto v = [&](int r, int g, int b) {
    paint_cells(b, g, g, r);
    return yuv(run(2, Format::i420)).v - 128;
  };
  // 20 + 0 + 20: 10. (10 * 825 + 128) >> 8 is 32.
  EXPECT_EQ(v(20, 0, 0), ((17 + 32) * 20 + 32) >> 6);
  // 8 + 4 + 12: 6. (6 * 825 + 128) >> 8 is 19, -3682 >> 8 is -15, -1000 >> 8 is -4.
  EXPECT_EQ(v(20, 12, 8), ((17 + 19) * 20 + (-13 - 15) * 12 + (-4 - 4) * 8 + 32) >> 6);
  // 48 and 40 stand at the bound of 12: 39, and (12 * -188 + 128) >> 8 is -9.
  EXPECT_EQ(v(24, 0, 0), ((17 + 39) * 24 + 32) >> 6);
  EXPECT_EQ(v(40, 0, 40), ((17 + 39) * 40 + (-4 - 9) * 40 + 32) >> 6);
  // 254 >> 2 is 63; bounds far above leave it alone, and the slopes are smaller.
  ASSERT_EQ(ppl_set_sensor_matrix_index_upper_bound(ctx, 200), 1);
  // 39598 / 200 is 197, plus 2, >> 2: 49. (63 * 49 + 128) >> 8 is 12.
  EXPECT_EQ(v(127, 0, 0), ((17 + 12) * 127 + 32) >> 6);
}

TEST_P(ChainMatrix, ABoundOfZeroActsAsOne) {
  // The slope is then 39598 + 2 >> 2, 9900: (9900 + 128) >> 8 is 39 from index 1 on.
  set_default_matrices();
  ASSERT_EQ(ppl_set_sensor_matrix_index_upper_bound(ctx, 0), 1);
  paint_cells(0, 0, 0, 8);
  EXPECT_EQ(yuv(run(2, Format::i420)).v, 128 + (((17 + 39) * 8 + 32) >> 6));
  fill(200);
  EXPECT_EQ(yuv(run(2, Format::i420)).v, 128) << "grey has index 0 all the same";
}

TEST_P(ChainMatrix, RgbCoefficientsMoveWithAShiftOf5) {
  // Red row from 64 to 128 in Q6 with a bound of 12: a slope of 256 * 8 / 12, 170.
  set_matrices({256, 0, 0, 0, 256, 0, 0, 0, 256}, {512, 0, 0, 0, 256, 0, 0, 0, 256});
  paint_cells(0, 0, 0, 6);  // index 3
  EXPECT_EQ(run(2, Format::rgb24).pixel(40, 20),
            (Pixel{static_cast<uint8_t>((6 * (64 + ((3 * 170 + 16) >> 5)) + 32) >> 6), 0, 0}));
  paint_cells(0, 0, 0, 100);
  EXPECT_EQ(run(2, Format::rgb24).pixel(40, 20).r, (100 * (64 + 64) + 32) >> 6);
}

TEST_P(ChainMatrix, TheLargestIndexIs127) {
  // A slope of 400 * 8 / 200: (127 * 16 + 16) >> 5 is 64, one index less would give 63.
  set_matrices({}, {400, 0, 0, 0, 0, 0, 0, 0, 0});
  ASSERT_EQ(ppl_set_sensor_matrix_index_upper_bound(ctx, 200), 1);
  paint_cells(0, 0, 0, 255);
  EXPECT_EQ(run(2, Format::rgb24).pixel(40, 20).r, 255);
}

TEST_P(ChainMatrix, IndexTimesSlopeWrapsIn16Bits) {
  // Luma: 132000 / 12 is 11000, + 2 >> 2 a slope of 2750. At the bound 33000, -32536 in 16 bits.
  set_matrices({}, {600, 0, 0, 600, 0, 0, 600, 0, 0});
  paint_cells(0, 0, 0, 24);
  EXPECT_EQ(run(2, Format::i420).y(40, 20), 16);
  paint_cells(0, 0, 0, 22);  // index 11: (30250 + 128) >> 8 is 118
  EXPECT_EQ(run(2, Format::i420).y(40, 20), 16 + ((118 * 22 + 32) >> 6));
  // RGB: 4200 * 8 / 12 is 2800. At the bound 33600, -31936 in 16 bits; at 11 30800.
  // The green row keeps within 16 bits, with a slope of 170.
  set_matrices({}, {4200, 0, 0, 256, 0, 0, 0, 0, 0});
  paint_cells(0, 0, 0, 24);
  EXPECT_EQ(run(2, Format::rgb24).pixel(40, 20).r, 0);
  paint_cells(0, 0, 0, 6);  // index 3: (8400 + 16) >> 5 is 263, (510 + 16) >> 5 is 16
  EXPECT_EQ(run(2, Format::rgb24).pixel(40, 20),
            (Pixel{(263 * 6 + 32) >> 6, (16 * 6 + 32) >> 6, 0}));
}

TEST_P(ChainMatrix, SumsWrapIn16Bits) {
  // 256 in Q6: 127 * 256 still fits, 128 * 256 is negative, 255 * 256 + 32 is -224.
  show(Channel::red, 1024);
  for (const auto &[red, expected] : {std::pair{127, 255}, {128, 0}, {255, 0}, {40, 160}}) {
    paint_cells(0, 0, 0, red);
    const auto value = static_cast<uint8_t>(expected);
    EXPECT_EQ(run(2, Format::rgb24).pixel(40, 20), (Pixel{value, value, value})) << red;
  }
  // (220 * 1192 + 512) >> 10 is 256.
  show(Channel::red, 1192);
  for (const auto &[red, expected] : {std::pair{127, 235}, {128, 16}, {40, 176}}) {
    paint_cells(0, 0, 0, red);
    EXPECT_EQ(run(2, Format::i420).y(40, 20), expected) << red;
  }
  // V: (112 * 1170 + 512) >> 10 is 128.
  set_matrices({1170, 0, 0, 0, 0, 0, 0, 0, 0});
  for (const auto &[red, expected] : {std::pair{255, 240}, {56, 240}, {50, 228}}) {
    paint_cells(0, 0, 0, red);
    EXPECT_EQ(yuv(run(2, Format::i420)).v, expected) << red;
  }
  set_matrices({2340, 0, 0, 0, 0, 0, 0, 0, 0});  // 256
  paint_cells(0, 0, 0, 128);
  EXPECT_EQ(yuv(run(2, Format::i420)).v, 16) << "32800 is negative in 16 bits";
}

TEST_P(ChainMatrix, LumaIsHeldBeforeAndAfterItsOffset) {
  show(Channel::green, -298);
  EXPECT_EQ(run(2, Format::i420).y(40, 20), 16) << "negative sums are black";
  show_in_luma(Channel::green);
  for (const auto &[level, expected] : {std::pair{218, 234}, {219, 235}, {220, 235}, {255, 235}}) {
    fill(static_cast<uint8_t>(level));
    EXPECT_EQ(run(2, Format::i420).y(40, 20), expected);
  }
}

TEST_P(ChainMatrix, ContrastMovesTheRoundingOfLumaAndRgb) {
  // A gain of 276 / 256 around 128: offset 32768 - 128 * 276, -2560, which is -608 in Q6 with the
  // half. The rows of grey sum to 60 for luma, 1 for chroma and 70 in RGB.
  ppl_set_contrast_c(ctx, 10, nullptr, nullptr);
  for (const int level : {4, 100, 200}) {
    fill(static_cast<uint8_t>(level));
    const int tint = 128 + ((level + 32) >> 6);
    EXPECT_EQ(yuv(run(2, Format::i420)), (Yuv{16 + clamp((60 * level - 608) >> 6), tint, tint}));
    const uint8_t value = clamp((70 * level - 608) >> 6);
    EXPECT_EQ(run(2, Format::rgb24).pixel(40, 20), (Pixel{value, value, value}));
  }
}

// ---- The full-range form of qualities 0 and 10

TEST_P(ChainMatrix, FullRangeRgbRoundsLumaWithContrastAndChromaWithTheHalf) {
  // Rows of grey: 70, 0 and 1. Luma of 200 is (14000 - 608) >> 6, 209; V is (200 + 32) >> 6, 3.
  ppl_set_contrast_c(ctx, 10, nullptr, nullptr);
  fill(200);
  for (const uint32_t quality : {0u, 10u})
    for (const int x : {40, 41})
      EXPECT_EQ(run(quality, Format::rgb24).pixel(x, 20),
                (Pixel{(128 * 209 + 175 * 3 + 32) >> 7, (128 * 209 - 89 * 3 + 32) >> 7, 209}));
}

TEST_P(ChainMatrix, FullRangeLumaHasNoStudioOffset) {
  show(Channel::green);
  for (const int level : {0, 2, 100, 254}) {
    fill(static_cast<uint8_t>(level));
    const auto value = static_cast<uint8_t>(level);
    EXPECT_EQ(run(0, Format::rgb32).pixel(40, 20), (Pixel{value, value, value}));
  }
}

TEST_P(ChainMatrix, FullRangeSumsSaturateFromLeftToRight) {
  // Four times red: luma (77 * 240 + 32) >> 6 is held at 255, U -165 at -128, V 491 at 127.
  set_matrices({1024, 0, 0, 0, 0, 0, 0, 0, 0});
  paint_cells(0, 0, 0, 240);
  const Pixel expected{255,                           // 32640 + 175 * 127 is held at 32767
                       (32767 - 89 * 127 + 32) >> 7,  // 32640 + 43 * 128 too, before V comes off
                       (32640 - 222 * 128 + 32) >> 7};
  for (const uint32_t quality : {0u, 10u}) {
    EXPECT_EQ(run(quality, Format::rgb24).pixel(41, 21), expected);
    EXPECT_EQ(run(quality, Format::rgb32).pixel(40, 20), expected);
  }
}

TEST_P(ChainMatrix, FullRangeSumsRoundUpFromThreeQuarters) {
  // Red alone: rows 19, -11 and 33. Of 62 luma is 18 and V 32, of 157 they are 47 and 81.
  paint_cells(0, 0, 0, 62);
  EXPECT_EQ(run(0, Format::rgb24).pixel(40, 20).r, 62);  // 18 * 128 + 32 * 175 + 32 is 62 * 128
  paint_cells(0, 0, 0, 157);
  EXPECT_EQ(run(0, Format::rgb24).pixel(40, 20).r, 157);  // one less than 158 * 128
}

// ---- Chroma

TEST_P(ChainChroma, IsThatOfTheBSitesWithoutAveraging) {
  // Q6 rows (17, 32, 6), (-9, -18, 28) and (28, -23, -4) on the values that RGB shows.
  paint_texture();
  for (const uint32_t quality : {1u, 2u, 11u}) {
    const Picture rgb = run(quality, Format::rgb24), planes = run(quality, Format::i420);
    const auto chroma = [](int sum) { return 128 + std::clamp((sum + 32) >> 6, -112, 112); };
    for (int y = 0; y < H; ++y)
      for (int x = 0; x < W; ++x) {
        const auto [r, g, b] = rgb.pixel(x, y);
        ASSERT_EQ(planes.y(x, y), std::min(16 + ((17 * r + 32 * g + 6 * b + 32) >> 6), 235));
        if (x % 2 != 0 || y % 2 != 0) continue;
        ASSERT_EQ(planes.u(x / 2, y / 2), chroma(-9 * r - 18 * g + 28 * b));
        ASSERT_EQ(planes.v(x / 2, y / 2), chroma(28 * r - 23 * g - 4 * b));
      }
  }
}

TEST_P(ChainChroma, IsHeldIn16To240) {
  set_default_matrices();
  paint_cells(0, 0, 0, 255);  // (12 * -260 + 128) >> 8 is -12: -17 * 255 + 32 is -4303
  EXPECT_EQ(yuv(run(2, Format::i420)), (Yuv{16 + ((12 * 255 + 32) >> 6), 128 - 68, 240}));
  set_matrices({-512, 0, 0, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(yuv(run(2, Format::i420)).v, 16);
}

// ---- The 3 by 3 box of quality 14

class ChainBox : public Chains {
 protected:
  // Chroma of blue alone: U (28 B + 32) >> 6, V (-4 B + 32) >> 6.
  void SetUp() override {
    Chains::SetUp();
    if (!IsSkipped()) set_matrices({0, 0, 0, 0, 0, 0, 0, 0, 256});
  }
};
INSTANTIATE_TEST_SUITE_P(, ChainBox, ::testing::ValuesIn(implementations), implementation_name);

TEST_P(ChainBox, TakesALittleSaturationAway) {
  paint_cells(200, 0, 0, 0);  // 88 and -12
  const Picture picture = run(14, Format::i420);
  for (int y = 0; y < H / 2; ++y)
    for (int x = 0; x < W / 2; ++x) {
      // Neither in the outer blocks nor in the first line pair.
      const bool boxed = y > 0 && x >= B() / 2 && x < (W - B()) / 2;
      ASSERT_EQ(picture.u(x, y), 128 + (boxed ? 9 * 88 * 28 / 256 : 88)) << x << ", " << y;
      ASSERT_EQ(picture.v(x, y), 128 - 12);  // -3024 >> 8 is -12 again
    }
}

TEST_P(ChainBox, LinePairOneHasLineOneInItsWindow) {
  // Blue of lines 0 to 2: 0, 100, 200. U of 0, 44 and 88; V of 0, -6 and -12.
  paint([](int x, int y) { return x % 2 == 0 && y % 2 == 0 && y > 0 ? 200 : 0; });
  const Picture picture = run(14, Format::i420);
  EXPECT_EQ(picture.u(30, 0), 128);
  EXPECT_EQ(picture.u(30, 1), 128 + (3 * (44 + 88 + 88) * 28 >> 8));
  EXPECT_EQ(picture.v(30, 1), 128 + (-3 * (6 + 12 + 12) * 28 >> 8));
  EXPECT_EQ(picture.u(30, 2), 128 + (9 * 88 * 28 >> 8));
}

TEST_P(ChainBox, WindowHasEveryColumnOnceThoughOddOnesAreNotKept) {
  // One blue column: U of 88 there and of 44 on either side.
  for (int y = 0; y < H; y += 2)
    for (int x = 0; x < W; x += 2) raw(x, y) = x == 64 ? 200 : 0;
  const Picture picture = run(14, Format::i420);
  EXPECT_EQ(picture.u(30, 10), 128);
  EXPECT_EQ(picture.u(31, 10), 128 + (3 * 44 * 28 >> 8));
  EXPECT_EQ(picture.u(32, 10), 128 + (3 * (44 + 88 + 44) * 28 >> 8));
  EXPECT_EQ(picture.u(33, 10), 128 + (3 * 44 * 28 >> 8));
  EXPECT_EQ(picture.u(34, 10), 128);
}

TEST_P(ChainBox, OneDarkLineIsAThird) {
  // Blue of 0 on the line pair in the middle: 44, 0, 44 in the three lines of its window.
  paint([](int x, int y) { return x % 2 == 0 && y % 2 == 0 && y != 20 ? 200 : 0; });
  const Picture picture = run(14, Format::i420);
  EXPECT_EQ(picture.u(30, 10), 128 + (3 * (44 + 0 + 44) * 28 >> 8));
  EXPECT_EQ(picture.u(30, 11), 128 + (3 * (44 + 88 + 88) * 28 >> 8));
}

}  // namespace
}  // namespace ppl_test::chains
