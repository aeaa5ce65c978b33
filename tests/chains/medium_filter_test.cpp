// Repair of hot and dead pixels in qualities 0, 1 and 2, as it shows in the frame.
#include <set>
#include <utility>

#include "chains/chains.h"

namespace ppl_test::chains {
namespace {

using Places = std::set<std::pair<int, int>>;

class ChainFilter : public Chains {
 protected:
  void SetUp() override {
    Chains::SetUp();
    if (!IsSkipped()) ppl_enable_medium_filter(ctx);
  }

  // What becomes of `sample` at (x, y) among samples of `level`.
  uint8_t repaired(int level, int sample, int x = 40, int y = 20) {
    fill(static_cast<uint8_t>(level));
    raw(x, y) = static_cast<uint8_t>(sample);
    return after(run(1, Format::i420), x, y);
  }
};
INSTANTIATE_TEST_SUITE_P(, ChainFilter, ::testing::ValuesIn(implementations), implementation_name);

TEST_P(ChainFilter, RepairsHotAndDeadPixelsInsideItsRegion) {
  raw(40, 20) = raw(51, 20) = raw(40, 31) = raw(51, 31) = 255;
  raw(40, 26) = raw(51, 26) = raw(40, 35) = raw(51, 35) = 0;
  raw(B(), 22) = raw(W - B() - 1, 26) = raw(60, 2) = raw(60, H - 3) = 255;  // its corners
  const Places outside = {{40, 1}, {41, H - 2}, {B() - 1, 20}, {W - B(), 24}};
  for (const auto &[x, y] : outside) raw(x, y) = 255;
  for (const uint32_t quality : {0u, 1u, 2u})
    for (const Format format : all_formats) {
      const Picture picture = run(quality, format);
      Places left;
      for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x)
          if (after(picture, x, y) != 100) left.insert({x, y});
      EXPECT_EQ(left, outside) << "quality " << quality << ", " << name_of(format);
    }
}

TEST_P(ChainFilter, ThePictureIsMadeOfTheRepairedFrame) {
  raw(41, 20) = 255;
  raw(40, 1) = 255;  // stays, and spreads
  for (const uint32_t quality : {0u, 1u, 2u}) {
    show(Channel::green);
    const Picture picture = run(quality, Format::rgb24);
    for (int x = 40; x < 43; ++x)
      for (int y = 19; y < 22; ++y) EXPECT_EQ(picture.pixel(x, y).g, 100) << quality;
    EXPECT_EQ(picture.pixel(40, 1).g, 255) << quality;
    EXPECT_GT(picture.pixel(40, 0).g, 150) << quality;
  }
}

TEST_P(ChainFilter, LevelsAreComparedStrictly) {
  EXPECT_EQ(repaired(100, 240), 240);
  EXPECT_EQ(repaired(100, 241), 100);
  EXPECT_EQ(repaired(100, 16), 16);
  EXPECT_EQ(repaired(100, 15), 100);
  // Four times 196 times 20 / 64 is 245; four times 20 times 12 / 64 is 15.
  EXPECT_EQ(repaired(196, 245), 245);
  EXPECT_EQ(repaired(196, 246), 196);
  EXPECT_EQ(repaired(20, 15), 15);
  EXPECT_EQ(repaired(20, 14), 20);
}

TEST_P(ChainFilter, ComparesGreenAlongTheDiagonalsAndTheOthersAlongTheCross) {
  // Neighbours 60, 95, 97 and 99 in turn: the second smallest takes the place of the hot pixel.
  const auto replacement = [&](int x, int y, const std::array<std::pair<int, int>, 4> &neighbours) {
    for (int first = 0; first < 4; ++first) {
      fill(100);
      for (int i = 0; i < 4; ++i) {
        const auto &[dx, dy] = neighbours[static_cast<size_t>((first + i) % 4)];
        raw(x + dx, y + dy) = std::array<uint8_t, 4>{60, 95, 97, 99}[static_cast<size_t>(i)];
      }
      raw(x, y) = 255;
      EXPECT_EQ(after(run(1, Format::i420), x, y), 95) << x << ", " << y << " turned " << first;
    }
  };
  constexpr std::array<std::pair<int, int>, 4> cross = {{{0, -2}, {2, 0}, {0, 2}, {-2, 0}}};
  constexpr std::array<std::pair<int, int>, 4> diagonals = {{{-1, -1}, {1, -1}, {1, 1}, {-1, 1}}};
  replacement(40, 20, cross);
  replacement(41, 21, cross);
  replacement(41, 20, diagonals);
  replacement(40, 21, diagonals);
}

TEST_P(ChainFilter, TheLowerMedianSurvivesASecondHotNeighbour) {
  raw(40, 20) = raw(42, 20) = 255;
  const Picture picture = run(1, Format::i420);
  EXPECT_EQ(after(picture, 40, 20), 100);
  EXPECT_EQ(after(picture, 42, 20), 100);
}

TEST_P(ChainFilter, NoDecisionSeesARepairedNeighbour) {
  // 245 is not above (255 + 3 * 180) * 20 / 64, which is 248, but would be above 4 * 180 * 20 / 64.
  fill(180);
  raw(40, 20) = 255;
  raw(42, 20) = 245;
  raw(40, 30) = 255;
  raw(40, 32) = 245;
  const Picture picture = run(1, Format::i420);
  EXPECT_EQ(after(picture, 40, 20), 180);
  EXPECT_EQ(after(picture, 42, 20), 245);
  EXPECT_EQ(after(picture, 40, 30), 180);
  EXPECT_EQ(after(picture, 40, 32), 245);
}

TEST_P(ChainFilter, ProductsWrapIn16Bits) {
  // 340 >> 2 is 85: 4 * 100 * 85 is 34000, negative in 16 bits. So the limit stands alone for hot
  // pixels, and no pixel is dead.
  ASSERT_EQ(ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage(ctx, 340), 1);
  ASSERT_EQ(ppl_set_medium_filter_hot_pixel_threshold(ctx, 90), 1);
  EXPECT_EQ(repaired(100, 101), 100);
  ASSERT_EQ(ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage(ctx, 324), 1);
  EXPECT_EQ(repaired(100, 101), 101) << "81 still fits";
  ASSERT_EQ(ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage(ctx, 340), 1);
  EXPECT_EQ(repaired(100, 0), 0);
  ASSERT_EQ(ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage(ctx, 324), 1);
  EXPECT_EQ(repaired(100, 0), 100);
}

TEST_P(ChainFilter, ThresholdsAreSigned) {
  ASSERT_EQ(ppl_set_medium_filter_dead_pixel_threshold(ctx, -1), 1);
  EXPECT_EQ(repaired(100, 0), 0);
  ASSERT_EQ(ppl_set_medium_filter_hot_pixel_threshold(ctx, -1), 1);
  EXPECT_EQ(repaired(100, 126), 100) << "above 125, and above -1";
  EXPECT_EQ(repaired(100, 125), 125);
}

TEST_P(ChainFilter, TheDifferenceThresholdTakesNoPart) {
  ppl_set_medium_filter_diff_threshold(ctx, 255);
  EXPECT_EQ(repaired(100, 241), 100);
  EXPECT_EQ(repaired(100, 240), 240);
}

}  // namespace
}  // namespace ppl_test::chains
