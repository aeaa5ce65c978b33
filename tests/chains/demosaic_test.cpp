// Green, red and blue of the multi-pass qualities.
#include "chains/chains.h"

namespace ppl_test::chains {
namespace {

PPL_CHAINS_SUITE(ChainGreen);
PPL_CHAINS_SUITE(ChainDifferences);
PPL_CHAINS_SUITE(ChainAverages);

// ---- Green, as quality 1 shows it

TEST_P(ChainGreen, OddLevelsLoseOneAtInterpolatedSites) {
  fill(101);
  const Picture picture = run(1, Format::rgb24);
  // At B and R sites 2 * (101 >> 1); the difference of 1 comes back on top of native green.
  for (int y = 0; y < H; ++y)
    for (int x = 0; x < W; ++x)
      ASSERT_EQ(picture.pixel(x, y),
                x % 2 == y % 2 ? (Pixel{101, 100, 101}) : (Pixel{102, 101, 102}))
          << x << ", " << y;
}

TEST_P(ChainGreen, FollowsTheSmallerGradientWhereTheThresholdLiesBetween) {
  for (const bool upright : {true, false}) {
    paint([=](int x, int y) { return (upright ? x : y) < 20 ? 40 : 90; });
    const auto green = [&](int32_t threshold) {
      EXPECT_EQ(ppl_set_CFA_T1_threshold(ctx, threshold), 1);
      return run(1, Format::rgb24).pixel(20, 20).g;
    };
    // Along the edge 90 with gradient 0, across it 65 with gradient 50.
    EXPECT_EQ(green(30), 45 + (90 >> 1));
    EXPECT_EQ(green(49), 45 + (90 >> 1));
    EXPECT_EQ(green(1), 45 + (90 >> 1));
    EXPECT_EQ(green(0), 45 + ((90 + 65) >> 2)) << "nothing lies below 0";
    EXPECT_EQ(green(50), 45 + ((90 + 65) >> 2)) << "nothing lies above 50";
  }
}

TEST_P(ChainGreen, IsHeldInAByte) {
  // 127 + (510 + 510 >> 2), and 0 + (-255 - 255 >> 2).
  paint_cells(0, 255, 255, 0);
  raw(20, 20) = 255;
  EXPECT_EQ(run(1, Format::rgb24).pixel(20, 20).g, 255);
  paint_cells(255, 0, 0, 0);
  raw(20, 20) = 0;
  EXPECT_EQ(run(1, Format::rgb24).pixel(20, 20).g, 0);
}

TEST_P(ChainGreen, FirstLineHasNoVerticalGradient) {
  // Both vertical neighbours are line 1: gradient 0, estimate 360 - 100. Horizontally 50.
  raw(20, 1) = 180;
  raw(21, 0) = 150;
  EXPECT_EQ(run(1, Format::rgb24).pixel(20, 0).g, 50 + (260 >> 1));
}

TEST_P(ChainGreen, LinesAboveTheFrameMirrorAboutTheLineComputed) {
  for (int x = 1; x < W; x += 2) raw(x, 3) = 180;
  const Picture picture = run(1, Format::rgb24);
  // R sites of line 1: vertical 200 - 180, for line -1 is line 3; horizontal 100.
  EXPECT_EQ(picture.pixel(21, 1).g, 50 + ((20 + 100) >> 2));
  // Of line 3: vertical 100, horizontal 200 - 180, and half of its own sample.
  EXPECT_EQ(picture.pixel(21, 3).g, 90 + ((100 + 20) >> 2));
}

TEST_P(ChainGreen, LinesBelowTheFrameMirrorAboutTheLastLine) {
  for (int x = 0; x < W; x += 2) raw(x, H - 2) = 180;
  const Picture picture = run(1, Format::rgb24);
  // Line H - 4 sees it once below. Line H - 2 sees line H - 4 above and itself below.
  EXPECT_EQ(picture.pixel(20, H - 4).g, 50 + ((200 - ((100 + 180) >> 1) + 100) >> 2));
  EXPECT_EQ(picture.pixel(20, H - 2).g, 90 + ((200 - ((100 + 180) >> 1) + 200 - 180) >> 2));
}

TEST_P(ChainGreen, ColumnsMirrorAboutTheOutermost) {
  for (int y = 0; y < H; ++y) raw(1, y) = raw(W - 2, y) = 140;
  const Picture picture = run(1, Format::rgb24);
  // Both horizontal neighbours are the same column: 280 - 100. Vertically 100.
  EXPECT_EQ(picture.pixel(0, 10).g, 50 + ((100 + 180) >> 2));
  EXPECT_EQ(picture.pixel(W - 1, 11).g, 50 + ((100 + 180) >> 2));
}

// ---- Red and blue by their differences from green

TEST_P(ChainDifferences, OneBlueSampleSpreadsOnTopOfGreen) {
  // Its own green is 70 + (100 + 100 >> 2), that of the four next B sites 50 + (100 + 80 >> 2):
  // differences of 20, 5, and of 0 at the diagonal ones.
  raw(20, 20) = 140;
  Picture picture = run(1, Format::rgb24);
  EXPECT_EQ(picture.pixel(20, 20), (Pixel{120, 120, 140}));
  EXPECT_EQ(picture.pixel(22, 20), (Pixel{95, 95, 100}));
  EXPECT_EQ(picture.pixel(21, 20).b, 100 + (25 >> 1));
  EXPECT_EQ(picture.pixel(20, 21).b, 100 + (25 >> 1));
  EXPECT_EQ(picture.pixel(21, 21).b, 100 + (30 >> 2));
  EXPECT_EQ(picture.pixel(21, 21).g, 100);
  // The other way round every shift goes down: -20 and -5.
  raw(20, 20) = 60;
  picture = run(1, Format::rgb24);
  EXPECT_EQ(picture.pixel(20, 20), (Pixel{80, 80, 60}));
  EXPECT_EQ(picture.pixel(21, 20).b, 100 - 13);
  EXPECT_EQ(picture.pixel(20, 21).b, 100 - 13);
  EXPECT_EQ(picture.pixel(21, 21).b, 100 - 8);
}

TEST_P(ChainDifferences, OneRedSampleSpreadsOnTopOfGreen) {
  raw(21, 21) = 140;
  const Picture picture = run(1, Format::rgb24);
  EXPECT_EQ(picture.pixel(21, 21), (Pixel{140, 120, 120}));
  EXPECT_EQ(picture.pixel(20, 21).r, 100 + (25 >> 1));
  EXPECT_EQ(picture.pixel(21, 20).r, 100 + (25 >> 1));
  EXPECT_EQ(picture.pixel(20, 20).r, 100 + (30 >> 2));
}

TEST_P(ChainDifferences, AreHeldInAByteOnTopOfGreen) {
  // Green at the R sites is 127 + (-255 >> 1), held at 0: differences of 255 on top of 200.
  paint_cells(0, 0, 0, 255);
  raw(20, 21) = 200;
  EXPECT_EQ(run(1, Format::rgb24).pixel(20, 21), (Pixel{255, 200, 200}));
  // 0 + (510 >> 1): differences of -255 on top of 50.
  paint_cells(255, 255, 255, 0);
  raw(20, 21) = 50;
  EXPECT_EQ(run(1, Format::rgb24).pixel(20, 21).r, 0);
}

TEST_P(ChainDifferences, BordersMirrorInBothDirections) {
  // Top left R: estimates 100 and 80, green 70 + 45. Its difference of 25 stands on all four sides.
  raw(1, 1) = 140;
  Picture picture = run(1, Format::rgb24);
  EXPECT_EQ(picture.pixel(0, 0), (Pixel{125, 100, 100}));
  EXPECT_EQ(picture.pixel(1, 0).r, 125);
  EXPECT_EQ(picture.pixel(0, 1).r, 125);
  // Bottom right B: estimates 80 and 80, green 70 + 40.
  fill(100);
  raw(W - 2, H - 2) = 140;
  picture = run(1, Format::rgb24);
  EXPECT_EQ(picture.pixel(W - 1, H - 1), (Pixel{100, 100, 130}));
  EXPECT_EQ(picture.pixel(W - 2, H - 1).b, 130);
  EXPECT_EQ(picture.pixel(W - 1, H - 2).b, 130);
}

// ---- Rounded averages, as quality 2 shows them

TEST_P(ChainAverages, OneBlueSampleSpreadsByRoundedAverages) {
  raw(20, 10) = 200;
  Picture picture = run(2, Format::rgb24);
  EXPECT_EQ(picture.pixel(20, 10), (Pixel{100, 100, 200}));
  EXPECT_EQ(picture.pixel(21, 10), (Pixel{100, 100, 150}));
  EXPECT_EQ(picture.pixel(20, 11), (Pixel{100, 100, 150}));
  EXPECT_EQ(picture.pixel(19, 9), (Pixel{100, 100, 125}));
  fill(0);
  raw(20, 10) = 1;
  picture = run(2, Format::rgb24);
  EXPECT_EQ(picture.pixel(19, 9).b, 1) << "every average rounds up";
}

TEST_P(ChainAverages, GreenIsTheAverageOfBothDirections) {
  // Across 80 and 81, down 90 and 90: 81 and 90 give 86. Between Gr alone and Gb alone.
  paint_cells(0, 80, 90, 0);
  raw(21, 20) = 81;
  const Picture picture = run(2, Format::rgb24);
  EXPECT_EQ(picture.pixel(20, 20).g, 86);
  EXPECT_EQ(picture.pixel(30, 20).g, 85);
  EXPECT_EQ(picture.pixel(31, 21).g, 85);
  EXPECT_EQ(picture.pixel(31, 20).g, 80);
  EXPECT_EQ(picture.pixel(30, 21).g, 90);
}

TEST_P(ChainAverages, BordersMirrorAboutTheOutermost) {
  raw(1, 1) = 201;
  raw(W - 2, H - 2) = 201;
  const Picture picture = run(2, Format::rgb24);
  EXPECT_EQ(picture.pixel(0, 0).r, 201);
  EXPECT_EQ(picture.pixel(1, 0).r, 201);
  EXPECT_EQ(picture.pixel(0, 1).r, 201);
  EXPECT_EQ(picture.pixel(2, 0).r, 151);
  EXPECT_EQ(picture.pixel(W - 1, H - 1).b, 201);
  EXPECT_EQ(picture.pixel(W - 2, H - 1).b, 201);
  EXPECT_EQ(picture.pixel(W - 1, H - 2).b, 201);
  EXPECT_EQ(picture.pixel(W - 1, H - 3).b, 151);
}

TEST_P(ChainAverages, Quality14TakesRedAndBlueFromTheAveragesAndGreenFromTheAccurateStage) {
  ppl_set_nf88_edge_enhance_factor(ctx, 0);
  paint([](int x, int) { return x < 20 ? 40 : 90; });
  show_in_luma(Channel::green);
  ppl_set_CFA_T1_threshold(ctx, 30);
  EXPECT_EQ(run(14, Format::i420).y(20, 10), 16 + 90);
  ppl_set_CFA_T1_threshold(ctx, 0);
  EXPECT_EQ(run(14, Format::i420).y(20, 10), 16 + 83);

  fill(100);
  raw(20, 10) = 200;
  raw(31, 31) = 200;
  show_in_luma(Channel::blue);
  Picture picture = run(14, Format::i420);
  EXPECT_EQ(picture.y(20, 10), 16 + 200);
  EXPECT_EQ(picture.y(21, 10), 16 + 150);
  EXPECT_EQ(picture.y(20, 11), 16 + 150);
  EXPECT_EQ(picture.y(19, 9), 16 + 125);
  show_in_luma(Channel::red);
  picture = run(14, Format::i420);
  EXPECT_EQ(picture.y(31, 31), 16 + 200);
  EXPECT_EQ(picture.y(30, 31), 16 + 150);
  EXPECT_EQ(picture.y(31, 32), 16 + 150);
  EXPECT_EQ(picture.y(32, 30), 16 + 125);
}

}  // namespace
}  // namespace ppl_test::chains
