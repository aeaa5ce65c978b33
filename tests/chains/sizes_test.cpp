// Frames of every size and stride through the multi-pass qualities.
#include "chains/chains.h"
#include "support/combinations.h"

namespace ppl_test::chains {
namespace {

PPL_CHAINS_SUITE(ChainSizes);
PPL_CHAINS_SUITE(ChainStride);

TEST_P(ChainSizes, EveryEvenWidthGivesAFullPicture) {
  constexpr std::array widths = {128, 130, 132, 136, 142, 158};
  for (const auto &[width, quality, format] : combinations(widths, all_chains, all_formats)) {
    if (!has_chain(quality, format)) continue;
    set_size(width, 14 + 4 * (width % 3));
    const Picture picture = run(quality, format);
    const auto end = picture.bytes.begin() +
                     static_cast<ptrdiff_t>(picture_bytes(format, picture.width, picture.height));
    EXPECT_EQ(std::count(picture.bytes.begin(), end, untouched), 0) << width << " " << quality;
    EXPECT_EQ(std::count(end, picture.bytes.end(), untouched), picture.bytes.end() - end);
  }
}

TEST_P(ChainSizes, TheLastLineAndColumnOfOddSizesAreNeitherReadNorWritten) {
  ppl_set_optical_black_b_gb_gr_r(ctx, 10, 10, 10, 10);
  for (const uint32_t quality : all_chains) {
    set_size(131, 35);
    for (int y = 0; y < H; ++y) raw(130, y) = 255;
    for (int x = 0; x < W; ++x) raw(x, 34) = 255;
    show(Channel::green);
    const Format format = quality == 14 ? Format::i420 : Format::rgb24;
    const Picture picture = run(quality, format);
    for (int y = 0; y < H; ++y)
      for (int x = 0; x < W; ++x)
        ASSERT_EQ(after(picture, x, y), y < 34 && x < 130 ? 90 : 255) << quality;
    if (format == Format::i420) {
      EXPECT_EQ(picture.y(129, 33), picture.y(20, 20));
      EXPECT_EQ(picture.y(130, 20), untouched);
      EXPECT_EQ(picture.y(20, 34), untouched);
    } else {
      EXPECT_EQ(picture.pixel(129, 33).g, 90) << quality;
      EXPECT_EQ(picture.pixel(130, 20).g, untouched);
      EXPECT_EQ(picture.pixel(20, 34).g, untouched);
    }
  }
}

// A frame that goes on past its ends as windows see it, seen through one that is far from its own.
class ChainSmallest : public Chains {
 protected:
  void expect_reflection(int width, int height) {
    for (const uint32_t quality : {2u, 1u, 11u}) {
      const auto value = [](int x, int y) { return x * 37 + y * 101 + x * y % 53 * 3; };
      set_size(width, height);
      paint(value);
      const Picture small = run(quality, Format::rgb24);
      const int w = W & ~1, h = H & ~1;
      set_size(width + 64, h + 32);
      paint([&](int x, int y) { return value(reflect(x - 32, w), reflect(y - 16, h)); });
      const Picture large = run(quality, Format::rgb24);
      // Green has a rule of its own above the frame: line 1 is affected, and who looks at it.
      for (int y = quality == 2 ? 0 : 3; y < h; ++y)
        for (int x = 0; x < w; ++x)
          ASSERT_EQ(small.pixel(x, y + height % 2), large.pixel(x + 32, y + 16))
              << quality << " at " << x << ", " << y;
    }
  }
};
INSTANTIATE_TEST_SUITE_P(, ChainSmallest, ::testing::ValuesIn(implementations),
                         implementation_name);

TEST_P(ChainSmallest, TheSmallestFrameSeesItsOwnReflection) {
  expect_reflection(128, 14);
  expect_reflection(130, 18);
}

// A processor without the wide tier takes smaller ones.
class ChainSmallestP3 : public ChainSmallest {};
INSTANTIATE_TEST_SUITE_P(, ChainSmallestP3,
                         ::testing::Values(Implementation{false, Tier::p3},
                                           Implementation{true, Tier::p3}),
                         implementation_name);

TEST_P(ChainSmallestP3, TheSmallestFrameOfTheNarrowTierSeesItsOwnReflection) {
  FakeProcessor without_sse2(p3_processor);
  if (GetParam().model) ppl_model::machine::set_flags(flags_of_p3_alone);
  start();
  expect_reflection(64, 14);
  expect_reflection(66, 18);
}

TEST_P(ChainSizes, TheWidestFramesLinesAreUnharmed) {
  // With a period of 32 along the line, all but the ends is as in a narrow frame.
  const auto value = [](int x, int y) { return x % 32 * 37 + y * 101 + x % 32 * y % 53 * 3; };
  for (const uint32_t quality : all_chains) {
    // The feedback of quality 12, which RGB lacks, runs along the whole line.
    const Format format = quality == 12 ? Format::rgb24 : Format::yuyv;
    set_size(160, 40);
    paint(value);
    const Picture narrow = run(quality, format);
    set_size(1280, 40);
    paint(value);
    const Picture wide = run(quality, format);
    for (int y = 0; y < H; ++y)
      for (int x = 32; x < W - 32; ++x) {
        const int same = 32 + x % 32;
        if (is_rgb(format)) {
          ASSERT_EQ(wide.pixel(x, y), narrow.pixel(same, y)) << quality << " at " << x << ", " << y;
        } else {
          ASSERT_EQ(wide.y(x, y), narrow.y(same, y)) << quality << " at " << x << ", " << y;
          ASSERT_EQ(wide.u(x / 2, y), narrow.u(same / 2, y)) << quality;
        }
      }
  }
}

TEST_P(ChainSizes, BothTiersGiveTheSamePictureWhereBlocksHaveNoPart) {
  if (!GetParam().model && !has_tier(Tier::sse2)) GTEST_SKIP() << "no SSE2 tier on this processor";
  for (const auto &[width, quality, format] :
       combinations(std::array{128, 144, 150}, std::array{0u, 1u, 2u, 10u, 11u}, all_formats)) {
    start();
    set_default_matrices();
    set_size(width, 32);
    paint_texture();
    run_tier(Tier::sse2);
    const Picture wide = run(quality, format);
    run_tier(Tier::p3);
    EXPECT_TRUE(same_picture(wide, run(quality, format))) << width << " " << quality;
  }
}

TEST_P(ChainSizes, CollectingStatisticsLeavesThePictureAlone) {
  paint_texture();
  ppl_set_CFA_T0_threshold(ctx, 40);
  for (const uint32_t quality : all_chains)
    for (const Format format : all_formats) {
      if (!has_chain(quality, format)) continue;
      ppl_set_mean_collection(ctx, 0);
      const Picture without = run(quality, format);
      ppl_set_mean_collection(ctx, 1);
      EXPECT_TRUE(same_picture(run(quality, format), without)) << quality << " " << name_of(format);
    }
}

// ---- Lines further apart than their width. Pair p starts at p * (W + S).

TEST_P(ChainStride, TheFrontEndConsumesItsOwnLinesAlone) {
  ppl_set_optical_black_b_gb_gr_r(ctx, 10, 10, 10, 10);
  set_size(128, 48, 160);
  for (const auto &[quality, lead] :
       {std::pair{0u, 4}, {1u, 4}, {2u, 2}, {10u, 4}, {11u, 4}, {12u, 2}, {14u, 4}}) {
    Bytes expected(frame.size(), 100);
    const auto consume = [&](int offset) {
      std::fill_n(expected.begin() + offset, W, uint8_t{90});
    };
    for (int i = 0; i < lead + 2; ++i) consume(i * S);
    for (int p = 1; 2 * p + lead < H; ++p)
      for (int i = lead; i < lead + 2; ++i) consume(p * (W + S) + i * S);
    EXPECT_EQ(run(quality, Format::i420).consumed, expected) << quality;
  }
}

class ChainStrideBytes : public Chains {
 protected:
  void SetUp() override {
    Chains::SetUp();
    if (IsSkipped()) return;
    ppl_set_nf88_edge_enhance_factor(ctx, 0);
    set_size(128, 48, 160);
    for (size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<uint8_t>(i % 199);
  }
  uint8_t byte(int pair, int offset) const {
    return frame[static_cast<size_t>(pair * (W + S) + offset)];
  }
};
INSTANTIATE_TEST_SUITE_P(, ChainStrideBytes, ::testing::ValuesIn(implementations),
                         implementation_name);

TEST_P(ChainStrideBytes, TheAveragesStepByTheWidth) {
  const Picture picture = run(2, Format::rgb24);
  for (int p = 0; p < H / 2; ++p)
    for (int x = 2; x < W - 2; x += 2) {
      // Line k from the pair's first: one above, the pair, one below. Before the frame's start lies
      // the line mirrored about the first, below its last line the one above that.
      const auto at = [&](int k, int column) {
        if (k == 2 && p == H / 2 - 1) k = 0;
        if (p * (W + S) + k * W + column < 0) k = -k;
        return byte(p, k * W + column);
      };
      const auto down = [&](int k, int column) {
        return average(at(k - 1, column), at(k + 1, column));
      };
      const auto across = [&](int k, int column) {
        return average(at(k, column - 1), at(k, column + 1));
      };
      const int y = 2 * p;
      ASSERT_EQ(picture.pixel(x, y), (Pixel{average(down(0, x - 1), down(0, x + 1)),
                                            average(across(0, x), down(0, x)), at(0, x)}));
      ASSERT_EQ(picture.pixel(x + 1, y), (Pixel{down(0, x + 1), at(0, x + 1), across(0, x + 1)}));
      ASSERT_EQ(picture.pixel(x, y + 1), (Pixel{across(1, x), at(1, x), down(1, x)}));
      ASSERT_EQ(picture.pixel(x + 1, y + 1),
                (Pixel{at(1, x + 1), average(across(1, x + 1), down(1, x + 1)),
                       average(down(1, x), down(1, x + 2))}));
    }
}

TEST_P(ChainStrideBytes, GreenComesFromWhereItsStageWasAndTheRestFromWhereTheColourStageIs) {
  // Lines of the green stage stand two ahead of the pair emitted, those of the colour stage in it;
  // both step by the stride.
  const Picture picture = run(1, Format::rgb24);
  for (int y = 0; y < H; ++y) {
    const int p = y / 2, i = y % 2;
    for (int x = 8; x < W - 8; ++x) {
      if (x % 2 != i) {
        const uint8_t green = p == 0 ? byte(0, i * S + x) : byte(p - 1, (2 + i) * S + x);
        ASSERT_EQ(picture.pixel(x, y).g, green) << x << ", " << y;
      } else {
        const uint8_t native = byte(p, i * S + x);
        ASSERT_EQ(i == 0 ? picture.pixel(x, y).b : picture.pixel(x, y).r, native) << x << ", " << y;
      }
    }
  }
}

TEST_P(ChainStrideBytes, Quality14StepsByTheStrideInGreenAndByTheWidthInRedAndBlue) {
  // Both stages work on the pair's second line and the one behind it.
  const auto place = [&](int y) {
    return y == 0 ? std::pair{0, 0} : std::pair{(y - 1) / 2, 2 - y % 2};
  };
  show_in_luma(Channel::green);
  const Picture green = run(14, Format::i420);
  show_in_luma(Channel::red);
  const Picture red = run(14, Format::i420);
  show_in_luma(Channel::blue);
  const Picture blue = run(14, Format::i420);
  for (int y = 0; y < H; ++y) {
    const auto [p, i] = place(y);
    for (int x = 16; x < W - 32; ++x) {
      if (x % 2 != y % 2) {
        ASSERT_EQ(green.y(x, y), 16 + byte(p, i * S + x)) << x << ", " << y;
      } else {
        ASSERT_EQ((y % 2 == 0 ? blue : red).y(x, y), 16 + byte(p, i * W + x)) << x << ", " << y;
      }
    }
  }
}

TEST_P(ChainStrideBytes, Quality12LooksAtItsOwnCopy) {
  // Lines written two ahead, by the stride.
  const Picture picture = run(12, Format::rgb24);
  for (int y = 0; y < H; ++y)
    for (int x = 0; x < W; ++x)
      ASSERT_EQ(picture.pixel(x, y).g,
                y < 4 ? byte(0, y * S + x) : byte(y / 2 - 1, (2 + y % 2) * S + x))
          << x << ", " << y;
}

TEST_P(ChainStrideBytes, FlatCellsTestByTheStrideAndAverageByTheWidth) {
  // All are flat at 255: red is the average of the lines above and below by the width.
  ppl_set_CFA_T0_threshold(ctx, 255);
  const Picture picture = run(11, Format::rgb24);
  for (int p = 1; p < H / 2 - 1; ++p)
    for (int x = 2; x < W - 2; x += 2) {
      const auto down = [&](int column) {
        return average(byte(p, column - W), byte(p, column + W));
      };
      ASSERT_EQ(picture.pixel(x, 2 * p).r, average(down(x - 1), down(x + 1))) << x << ", " << p;
    }
  // One green sample of another level: by the stride it is in column 40 of pair 10's second line
  // and in column 72 of the line before pair 11, by the width the other way round.
  ppl_set_CFA_T0_threshold(ctx, 10);
  std::fill(frame.begin(), frame.end(), uint8_t{101});
  frame[static_cast<size_t>(10 * (W + S) + S + 40)] = 121;
  const Picture spot = run(11, Format::rgb24);
  const auto green = [&](int x, int pair) { return spot.pixel(x, 2 * pair).g; };
  // Cells that it breaks: interpolated green of an odd level is one less.
  for (const auto &[x, pair] : {std::pair{40, 10}, {42, 10}, {72, 11}, {74, 11}})
    EXPECT_EQ(green(x, pair), 100) << x << ", " << pair;
  // Cells that are flat, with a quarter of the step in one phase.
  EXPECT_EQ(green(72, 10), average(101, average(101, 111)));
  EXPECT_EQ(green(40, 11), average(101, average(101, 111)));
  EXPECT_EQ(green(46, 10), 101);
}

TEST_P(ChainStrideBytes, ALineBeforeTheFramesStartIsMirroredAboutThePairsFirst) {
  // Pair 1 is 288 bytes in, and two strides above it lies before the frame for columns below 32.
  // Green of column 21 on is raised in the pair's first line, as it is two strides above.
  ppl_set_CFA_T0_threshold(ctx, 10);
  std::fill(frame.begin(), frame.end(), uint8_t{100});
  for (int x = 21; x < W; x += 2) frame[static_cast<size_t>(W + S + x)] = 120;
  // The frame's first line is raised, too: it does not stand in for what lies before the frame.
  for (int x = 21; x < W; x += 2) frame[static_cast<size_t>(x)] = 120;
  const auto is_smooth = [](const Picture &picture, int x) {
    return picture.pixel(x, 2) == picture.pixel(x + 1, 2) &&
           picture.pixel(x, 2) == picture.pixel(x, 3) &&
           picture.pixel(x, 2) == picture.pixel(x + 1, 3);
  };
  // Line 2 behind the first is not raised, so the cell at the step is not flat.
  EXPECT_FALSE(is_smooth(run(11, Format::rgb24), 20));
  ppl_set_CFA_T0_threshold(ctx, 20);
  EXPECT_TRUE(is_smooth(run(11, Format::rgb24), 20));
}

}  // namespace
}  // namespace ppl_test::chains
