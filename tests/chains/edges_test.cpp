// What qualities 0, 10, 12 and 14 sharpen.
#include "chains/chains.h"

namespace ppl_test::chains {
namespace {

struct Band {
  int low = 100, high = 1530, factor = 8;  // the defaults; Q6
};

// A step of `slope` over `measure`, in 16 bits.
int step(int measure, int slope, const Band &band) {
  return measure > band.low && band.high > measure ? wrap16(slope * band.factor) >> 6 : 0;
}

// The gradient form in the middle of a window; at(x, y) need not look after the frame's ends.
template <class At>
uint8_t relief(At at, int x, int y, const Band &band) {
  int across = 0, down = 0;
  for (int i = -1; i <= 1; ++i) {
    across += at(x + 1, y + i) - at(x - 1, y + i);
    down += at(x + i, y + 1) - at(x + i, y - 1);
  }
  return clamp(at(x, y) + step(std::abs(across) + std::abs(down), across + down, band));
}

class ChainEdges : public Chains {
 protected:
  void set_band(const Band &band) {
    ASSERT_EQ(ppl_set_edge_threshold(ctx, band.low), 1);
    ASSERT_EQ(ppl_set_edge_threshold2(ctx, band.high), 1);
    ASSERT_EQ(ppl_set_nf88_edge_enhance_factor(ctx, 4 * band.factor), 1);
  }

  struct Spot {
    int x, y;
    uint8_t level;
  };
  // The pixel at (x, y) of a frame of 100 with a few other samples. RGB output of quality 12 is the
  // gradient form on the samples themselves.
  uint8_t sharpened(std::initializer_list<Spot> spots, int x, int y) {
    fill(100);
    for (const Spot &spot : spots) raw(spot.x, spot.y) = spot.level;
    return run(12, Format::rgb24).pixel(x, y).g;
  }
};
INSTANTIATE_TEST_SUITE_P(, ChainEdges, ::testing::ValuesIn(implementations), implementation_name);

class ChainFeedback : public ChainEdges {};
INSTANTIATE_TEST_SUITE_P(, ChainFeedback, ::testing::ValuesIn(implementations),
                         implementation_name);
class ChainLaplacian : public ChainEdges {};
INSTANTIATE_TEST_SUITE_P(, ChainLaplacian, ::testing::ValuesIn(implementations),
                         implementation_name);

// ---- The gradient form

TEST_P(ChainEdges, GradientFormAddsTheSlopeAlongOneDiagonal) {
  // Lower right alone: both gradients 60, measure 120, step (120 * 8) >> 6.
  EXPECT_EQ(sharpened({{21, 21, 160}}, 20, 20), 115);
  EXPECT_EQ(sharpened({{19, 19, 160}}, 20, 20), 85);
  // In the other two corners the gradients cancel, however strong.
  EXPECT_EQ(sharpened({{21, 19, 160}}, 20, 20), 100);
  EXPECT_EQ(sharpened({{19, 21, 255}}, 20, 20), 100);
  // The direct neighbours count once.
  EXPECT_EQ(sharpened({{21, 20, 220}}, 20, 20), 115);
  EXPECT_EQ(sharpened({{20, 21, 220}}, 20, 20), 115);
  EXPECT_EQ(sharpened({{19, 20, 220}}, 20, 20), 85);
  EXPECT_EQ(sharpened({{20, 19, 220}}, 20, 20), 85);
}

TEST_P(ChainEdges, ARampGrowsAlongTheMainDiagonalAndStaysAlongTheOther) {
  set_band({40, 1530, 8});
  // 4 a column and 4 a line: gradients of 24.
  paint([](int x, int y) { return x < 32 && y < 32 ? 4 * (x + y) : 0; });
  EXPECT_EQ(run(12, Format::rgb24).pixel(10, 10).g, 80 + (48 * 8 >> 6));
  paint([](int x, int y) { return x < 32 && y < 32 ? 4 * (x - y + 31) : 0; });
  EXPECT_EQ(run(12, Format::rgb24).pixel(10, 10).g, 124);
  EXPECT_EQ(run(12, Format::rgb24).pixel(20, 5).g, 184);
}

TEST_P(ChainEdges, GradientFormMirrorsAtTheBorder) {
  // Column -1 is column 1, so nothing is left across; downwards it counts twice.
  EXPECT_EQ(sharpened({{1, 21, 160}}, 0, 20), 115);
  EXPECT_EQ(sharpened({{W - 2, 21, 160}}, W - 1, 20), 115);
  EXPECT_EQ(sharpened({{21, 1, 160}}, 20, 0), 115);
  EXPECT_EQ(sharpened({{21, H - 2, 160}}, 20, H - 1), 115);
  // In the corners nothing is left at all.
  EXPECT_EQ(sharpened({{1, 1, 255}}, 0, 0), 100);
  EXPECT_EQ(sharpened({{W - 2, H - 2, 255}}, W - 1, H - 1), 100);
}

TEST_P(ChainEdges, TheMeasureMustLieBetweenTheThresholds) {
  EXPECT_EQ(sharpened({{21, 21, 150}}, 20, 20), 100) << "100 is not above the lower one";
  EXPECT_EQ(sharpened({{21, 21, 151}}, 20, 20), 112);
  set_band({100, 120, 8});
  EXPECT_EQ(sharpened({{21, 21, 160}}, 20, 20), 100) << "120 is not below the upper one";
  set_band({100, 121, 8});
  EXPECT_EQ(sharpened({{21, 21, 160}}, 20, 20), 115);
}

TEST_P(ChainEdges, WithoutABandOrAFactorNothingChanges) {
  paint_texture();
  for (const Band &band : {Band{100, 101, 64}, Band{100, 100, 64}, Band{500, 100, 64},
                           Band{0, 1530, 0}, Band{1530, 1530, 8}}) {
    set_band(band);
    const Picture grey = run(12, Format::rgb24);
    for (int y = 0; y < H; ++y)
      for (int x = 0; x < W; ++x) ASSERT_EQ(grey.pixel(x, y).g, raw(x, y));
    EXPECT_EQ(run(0, Format::i420).bytes, run(1, Format::i420).bytes);
  }
}

TEST_P(ChainEdges, TheStepWrapsIn16Bits) {
  // 1020 * 64 is 65280: -256 in 16 bits.
  set_band({100, 1530, 64});
  EXPECT_EQ(
      sharpened(
          {{19, 19, 0}, {20, 19, 0}, {19, 20, 0}, {21, 20, 255}, {20, 21, 255}, {21, 21, 255}}, 20,
          20),
      100 - 4);
}

TEST_P(ChainEdges, TheResultIsHeldInAByte) {
  set_band({100, 1530, 31});
  EXPECT_EQ(sharpened({{20, 20, 250}, {21, 21, 160}}, 20, 20), 255);
  EXPECT_EQ(sharpened({{20, 20, 5}, {19, 19, 160}}, 20, 20), 0);
}

TEST_P(ChainEdges, Quality1IsQuality0BeforeSharpening) {
  paint_texture();
  set_default_matrices();
  const Band band{20, 400, 24};
  set_band(band);
  const Picture before = run(1, Format::i420);
  const Picture after = run(0, Format::i420);
  const auto luma = [&](int x, int y) { return before.y(reflect(x, W), reflect(y, H)); };
  int out_of_studio_range = 0;
  for (int y = 0; y < H; ++y)
    for (int x = 0; x < W; ++x) {
      ASSERT_EQ(after.y(x, y), relief(luma, x, y, band)) << x << ", " << y;
      out_of_studio_range += after.y(x, y) < 16 || after.y(x, y) > 235;
    }
  EXPECT_GT(out_of_studio_range, 10) << "no clamp follows";
  // Chroma is not touched.
  EXPECT_TRUE(
      std::equal(before.bytes.begin() + W * H, before.bytes.end(), after.bytes.begin() + W * H));
}

TEST_P(ChainEdges, Quality10SharpensWhatItsFlatCellsLeave) {
  paint_texture();
  ppl_set_CFA_T0_threshold(ctx, 60);
  set_band({20, 400, 0});
  const Picture before = run(10, Format::i420);
  const Band band{20, 400, 24};
  set_band(band);
  const Picture after = run(10, Format::i420);
  const auto luma = [&](int x, int y) { return before.y(reflect(x, W), reflect(y, H)); };
  for (int y = 0; y < H; ++y)
    for (int x = 0; x < W; ++x) ASSERT_EQ(after.y(x, y), relief(luma, x, y, band));
}

TEST_P(ChainEdges, InRgbTheFullRangeLumaIsSharpened) {
  // With one channel in all three, luma is that channel and chroma 0.
  paint_texture();
  show(Channel::green);
  const Band band{20, 400, 24};
  set_band(band);
  const Picture before = run(1, Format::rgb32);
  const Picture after = run(0, Format::rgb32);
  const auto luma = [&](int x, int y) { return before.pixel(reflect(x, W), reflect(y, H)).g; };
  for (int y = 0; y < H; ++y)
    for (int x = 0; x < W; ++x) {
      const uint8_t value = relief(luma, x, y, band);
      ASSERT_EQ(after.pixel(x, y), (Pixel{value, value, value})) << x << ", " << y;
    }
}

// ---- Quality 12: in place

TEST_P(ChainFeedback, FinishedLumaFeedsBackAboveAndLeftOfTheBlock) {
  set_default_matrices();
  set_band({10, 1530, 8});
  fill(200);
  const Picture picture = run(12, Format::i420);
  // 200 becomes (54 * 200 + 32) >> 6, 16 added: 185.
  EXPECT_EQ(picture.y(0, 0), 185);
  EXPECT_EQ(picture.y(B() - 1, 1), 185);
  // Left of the block 185 in all three lines (line -1 is line 1): 45 across, (45 * 8) >> 6 is 5.
  EXPECT_EQ(picture.y(B(), 0), 189);  // (54 * 205 + 32) >> 6 is 173
  EXPECT_EQ(picture.y(B(), 1), 189);  // 30 across and 15 down
  EXPECT_EQ(picture.y(B() + 1, 0), 185);
  // 185 above: 45 down.
  EXPECT_EQ(picture.y(0, 2), 189);
  EXPECT_EQ(picture.y(1, 2), 189);
  // 185 and 189 above and to the left: 26 both ways.
  EXPECT_EQ(picture.y(B(), 2), 190);
  EXPECT_EQ(picture.y(1, 3), 185);
}

TEST_P(ChainFeedback, RunsBlockByBlockThroughTheWholePicture) {
  set_default_matrices();
  // In the second band many a measure stands on a threshold, in the third many a product wraps.
  for (const Band &band : {Band{20, 700, 24}, Band{60, 80, 24}, Band{20, 1530, 64}}) {
    set_band(band);
    paint_texture();
    if (band.high == 80) paint([this](int x, int y) { return 100 + raw(x, y) % 32; });
    const Picture picture = run(12, Format::i420);
    Bytes plane = frame;
    const auto at = [&](int x, int y) -> uint8_t & {
      return plane[static_cast<size_t>(reflect(y, H) * W + reflect(x, W))];
    };
    for (int y = 0; y < H; y += 2)
      for (int block = 0; block < W; block += B()) {
        Bytes sharpened;
        for (const int line : {y, y + 1})
          for (int x = block; x < block + B(); ++x) sharpened.push_back(relief(at, x, line, band));
        const uint8_t *value = sharpened.data();
        for (const int line : {y, y + 1})
          for (int x = block; x < block + B(); ++x)
            at(x, line) = static_cast<uint8_t>(((54 * *value++ + 32) >> 6) + 16);
      }
    for (int y = 0; y < H; ++y)
      for (int x = 0; x < W; ++x) ASSERT_EQ(picture.y(x, y), at(x, y)) << x << ", " << y;
  }
}

TEST_P(ChainFeedback, AGreyGradientDiffersFromOneWithoutFeedback) {
  set_default_matrices();
  set_band({10, 1530, 8});
  paint([](int x, int y) { return 160 + (x + y) / 2; });
  const Picture picture = run(12, Format::i420);
  const auto sample = [&](int x, int y) { return raw(reflect(x, W), reflect(y, H)); };
  for (int y = 2; y < H - 2; ++y)
    for (int x = 1; x < W - 1; ++x) {
      const int without = ((54 * relief(sample, x, y, {10, 1530, 8}) + 32) >> 6) + 16;
      if (y % 2 == 0 && x % B() == 0) {
        ASSERT_NE(picture.y(x, y), without) << x << ", " << y;
      } else if (y % 2 == 1 && x % B() != 0) {
        ASSERT_EQ(picture.y(x, y), without) << x << ", " << y;
      }
    }
}

TEST_P(ChainFeedback, RgbHasNone) {
  set_band({10, 1530, 8});
  paint_texture();
  const Picture picture = run(12, Format::rgb24);
  const auto sample = [&](int x, int y) { return raw(reflect(x, W), reflect(y, H)); };
  for (int y = 0; y < H; ++y)
    for (int x = 0; x < W; ++x) {
      const uint8_t value = relief(sample, x, y, {10, 1530, 8});
      ASSERT_EQ(picture.pixel(x, y), (Pixel{value, value, value})) << x << ", " << y;
    }
}

TEST_P(ChainFeedback, ChromaIsTheTintOfTheBaseRows) {
  set_default_matrices();
  set_band({100, 1530, 0});
  paint([](int x, int y) { return x / 2 + 2 * y; });
  const Picture picture = run(12, Format::i420);
  for (int y = 0; y < H / 2; ++y)
    for (int x = 0; x < W / 2; ++x) {  // rows that sum to 1 and 0
      ASSERT_EQ(picture.u(x, y), 128 + ((raw(2 * x, 2 * y) + 32) >> 6));
      ASSERT_EQ(picture.v(x, y), 128);
    }
}

// ---- Quality 14

TEST_P(ChainLaplacian, HasItsExceptionsAtTheRightEnd) {
  show_in_luma(Channel::green);
  paint([](int x, int y) { return (x * 37 + y * 101 + (x * y) % 53 * 3) % 256 < 200 ? 0 : 255; });
  set_band({20, 1000, 0});
  const Picture before = run(14, Format::i420);
  const Band band{20, 1000, 60};
  set_band(band);
  const Picture after = run(14, Format::i420);
  const auto luma = [&](int x, int y) { return before.y(reflect(x, W), reflect(y, H)); };
  int wrapped = 0;
  for (int y = 0; y < H; ++y)
    for (int x = 0; x < W; ++x) {
      // The model leaves these three open.
      const bool open = (y >= H - 2 && x == W - B() - 1) || (y == H - 1 && x == W - 1);
      if (GetParam().model && open) continue;
      // Of the last line its own first pixel.
      const int east = x == W - 1 ? luma(0, std::min(y + 1, H - 1)) : luma(x + 1, y);
      const int west = x == W - B() ? east : luma(x - 1, y);
      const int laplacian = 4 * luma(x, y) - (luma(x, y - 1) + luma(x, y + 1) + west + east);
      const int change = step(std::abs(laplacian), laplacian, band);
      wrapped += laplacian * change < 0;
      ASSERT_EQ(after.y(x, y), clamp(luma(x, y) + change)) << x << ", " << y;
    }
  EXPECT_GT(wrapped, 0) << "no product wrapped in 16 bits";
}

TEST_P(ChainLaplacian, TheLastPixelTakesTheFirstOfItsOwnLineForItsEastNeighbour) {
  if (GetParam().model) {
    SUCCEED() << "the model leaves that pixel open";
    return;
  }
  show_in_luma(Channel::green);
  set_band({20, 1530, 8});
  raw(0, H - 1) = 180;
  EXPECT_EQ(run(14, Format::i420).y(W - 1, H - 1), 116 - (80 * 8 >> 6));
}

TEST_P(ChainLaplacian, SharpensAtThePixelAlone) {
  // A bright column of 160 in green on 100, where horizontal neighbours follow the column:
  // luma is 116, 176 at the column, and 116 + 60 / 2 next to it at B and R sites.
  show_in_luma(Channel::green);
  ppl_set_CFA_T1_threshold(ctx, 0);
  set_band({55, 1530, 8});
  for (int y = 0; y < H; y += 2) raw(41, y) = 160;
  const Picture picture = run(14, Format::i420);
  // Gb: 4 * 176 - (2 * 146 + luma of the R sites above and below).
  const int r_site = 116 + 60 / 2;
  const int b_site = 116 + (60 >> 2);
  EXPECT_EQ(picture.y(41, 20), 176 + ((4 * 176 - 2 * r_site - 2 * b_site) * 8 >> 6));
}

TEST_P(ChainLaplacian, ThresholdsAreStrict) {
  show_in_luma(Channel::green);
  raw(41, 20) = 180;
  const Picture before = [&] {
    set_band({0, 1530, 0});
    return run(14, Format::i420);
  }();
  const int measure = std::abs(4 * before.y(41, 20) - before.y(40, 20) - before.y(42, 20) -
                               before.y(41, 19) - before.y(41, 21));
  const auto changed = [&](int low, int high) {
    set_band({low, high, 8});
    return run(14, Format::i420).y(41, 20) != before.y(41, 20);
  };
  EXPECT_TRUE(changed(measure - 1, measure + 1));
  EXPECT_FALSE(changed(measure, measure + 1));
  EXPECT_FALSE(changed(measure - 1, measure));
}

TEST_P(ChainLaplacian, TheMedianNeverFires) {
  // Not at the widest thresholds, on a lone bright pixel that any median would take away.
  paint_texture();
  raw(41, 20) = 180;
  set_band({0, 1530, 0});
  const Picture open = run(14, Format::i420);
  set_band({1530, 1530, 0});
  ppl_set_medium_filter_diff_threshold(ctx, 32767);
  EXPECT_EQ(run(14, Format::i420).bytes, open.bytes);
  fill(100);
  show_in_luma(Channel::green);
  raw(41, 20) = 180;
  EXPECT_EQ(run(14, Format::i420).y(41, 20), 196);
}

}  // namespace
}  // namespace ppl_test::chains
