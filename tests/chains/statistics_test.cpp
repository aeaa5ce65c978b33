// What the multi-pass qualities gather in their steady phase. Frames are 16 block columns by 24
// line pairs, so that both tiers count alike; a vector has half a block of cells.
#include <map>

#include "chains/chains.h"

namespace ppl_test::chains {
namespace {

using Bins = std::map<int, uint32_t>;

// The gate is on the loop's own counters, line pairs and block columns from 1 to this far from the
// frame's last; the group sampled is `ahead` further right and below. The normaliser reckons with
// margins of its own.
struct Gathering {
  uint32_t quality;
  bool filter;
  int pairs_left_out, columns_left_out, ahead;
  int normaliser_columns, normaliser_lines;
};
constexpr Gathering gatherings[] = {
    {0, false, 3, 4, 2, 4, 12},  {1, false, 3, 4, 2, 3, 12},  {2, false, 2, 2, 1, 2, 8},
    {0, true, 4, 4, 3, 5, 16},   {1, true, 4, 4, 3, 4, 16},   {2, true, 3, 4, 2, 3, 12},
    {10, false, 3, 4, 2, 4, 12}, {11, false, 3, 4, 2, 3, 12}, {14, false, 3, 4, 2, 3, 12},
    {10, true, 3, 4, 2, 4, 12},  {14, true, 3, 4, 2, 3, 12}};

class ChainStatistics : public Chains {
 protected:
  void SetUp() override {
    Chains::SetUp();
    if (IsSkipped()) return;
    set_size(16 * B(), 48);
    open_bands();
  }

  // Every cell qualifies by its differences.
  void open_bands() {
    ppl_set_qual_BmGb_min_max(ctx, -255, 255);
    ppl_set_qual_GrmR_min_max(ctx, -255, 255);
    ppl_set_qual_BmGb_p_GrmR_min_max(ctx, -510, 510);
    ppl_set_qual_BmGb_m_GrmR_min_max(ctx, -510, 510);
  }

  uint32_t cells() const { return static_cast<uint32_t>(B() / 2); }  // of a vector
  uint32_t size() const { return static_cast<uint32_t>(W * H); }

  // Grows by four and by the ratio of the frame to what is left of it.
  uint32_t normaliser(int columns_left_out, int lines_left_out) const {
    const int area = (W - columns_left_out * B()) * (H - lines_left_out) / 4;
    return static_cast<uint32_t>((W * H << 8) / area);
  }

  void use(const Gathering &gathering) {
    gathering.filter ? ppl_enable_medium_filter(ctx) : ppl_disable_medium_filter(ctx);
  }

  // Sample (x, y) of a cell of the group's right half of a vector.
  uint8_t &sample(int group, int pair, int x, int y) {
    return raw(group * B() + 2 + x, 2 * pair + y);
  }

  static Bins bins(const uint32_t *histogram) {
    Bins filled;
    for (int i = 0; i < 256; ++i)
      if (histogram[i] != 0) filled[i] = histogram[i];
    return filled;
  }

  // The window whose red sum is not 0; 48 is what lies outside all, -1 none.
  int window_with_red() {
    int found = -1;
    for (int i = 0; i < 49; ++i) {
      const PplTriple &window =
          i == 48 ? *ppl_rgb_means_outside_all_sub_windows(ctx) : ppl_rgb_means_sub_windows(ctx)[i];
      if (window.r == 0) continue;
      EXPECT_EQ(found, -1) << "two windows";
      found = i;
    }
    return found;
  }
};
INSTANTIATE_TEST_SUITE_P(, ChainStatistics, ::testing::ValuesIn(implementations),
                         implementation_name);

// ---- Which groups are sampled

TEST_P(ChainStatistics, TheLatticeFollowsTheLoopsOwnCounters) {
  for (const auto &[columns, pairs] : {std::pair{16, 24}, {17, 25}})
    for (const Gathering &gathering : gatherings) {
      SCOPED_TRACE(testing::Message() << "quality " << gathering.quality << " filter "
                                      << gathering.filter << ", " << columns << " columns");
      use(gathering);
      set_size(columns * B(), 2 * pairs);
      ppl_set_qual_B_min_max(ctx, 0, 200);
      // How many cells qualify, if one of a group is out of the band.
      const auto qualified = [&](int group, int pair) {
        fill(100);
        sample(group, pair, 0, 0) = 250;
        run(gathering.quality, Format::i420);
        return ppl_n_qual_2x2_whole_frame(ctx);
      };
      // Odd counters: how many, and the last.
      const int lines = (pairs - gathering.pairs_left_out + 1) / 2;
      const int steps = (columns - gathering.columns_left_out + 1) / 2;
      const int ahead = gathering.ahead;
      const int last_group = 2 * steps - 1 + ahead, last_pair = 2 * lines - 1 + ahead;

      const uint32_t m = normaliser(gathering.normaliser_columns, gathering.normaliser_lines);
      const uint32_t sampled = cells() * static_cast<uint32_t>(lines * steps);
      const uint32_t all = (m * sampled) >> 8, less_one = (m * (sampled - 1)) >> 8;
      EXPECT_EQ(qualified(0, 0), all);
      // The first one and its right neighbour, which is the left one of the next.
      EXPECT_EQ(qualified(1 + ahead, 1 + ahead), less_one);
      EXPECT_EQ(qualified(2 + ahead, 1 + ahead), less_one);
      EXPECT_EQ(qualified(1 + ahead, ahead), all);
      EXPECT_EQ(qualified(1 + ahead, 2 + ahead), all);
      EXPECT_EQ(qualified(ahead, 1 + ahead), all) << "what stands there is stale";
      EXPECT_EQ(qualified(last_group, last_pair), less_one);
      if (last_group + 2 < columns) {
        EXPECT_EQ(qualified(last_group + 2, last_pair), all);
      }
      if (last_pair + 2 < pairs) {
        EXPECT_EQ(qualified(last_group, last_pair + 2), all);
      }
    }
}

TEST_P(ChainStatistics, AVectorTakesTheLastTwoColumnsOfEveryFourOfBothGroups) {
  // One red sample a run; column 3 of every four has the R that counts.
  for (int column = 1; column < 2 * B(); column += 2) {
    fill(0);
    raw(4 * B() + column, 2 * 5 + 1) = 200;  // groups 4 and 5, joined at step 3 of pair 3
    run(0, Format::i420);
    EXPECT_EQ(window_with_red(), column % 4 == 3 ? 1 : -1) << column;
  }
}

TEST_P(ChainStatistics, EveryFormatAndDecimationGathersTheSame) {
  paint([](int x, int y) { return x * 7 % 200 + y; });
  for (const uint32_t quality : all_chains) {
    std::vector<PplTriple> first;
    for (const int decimation : {0, 1, 2, -1}) {
      decimate(decimation);
      for (const Format format : all_formats) {
        if (!has_chain(quality, format)) continue;
        run(quality, format);
        std::vector<PplTriple> windows(ppl_rgb_means_sub_windows(ctx),
                                       ppl_rgb_means_sub_windows(ctx) + 48);
        if (first.empty()) first = windows;
        EXPECT_NE(windows[9].g, 0u);
        for (size_t i = 0; i < 48; ++i)
          ASSERT_TRUE(windows[i].r == first[i].r && windows[i].g == first[i].g &&
                      windows[i].b == first[i].b)
              << quality << " " << name_of(format) << " at " << decimation;
      }
    }
  }
}

// ---- The left neighbour

TEST_P(ChainStatistics, TheFirstGroupOfALineHasAStaleLeftNeighbour) {
  // 66 steps: 11 lines of 6. In a fresh context the first of all meets zeros in half its cells.
  run(0, Format::i420);
  const uint32_t weight = cells();
  EXPECT_EQ(bins(ppl_r_histogram(ctx)), (Bins{{50, weight}, {100, 65 * weight}}));
  EXPECT_EQ(bins(ppl_g_histogram(ctx)), (Bins{{50, 2 * weight}, {100, 130 * weight}}));
  // Later ones what the frame before left.
  fill(60);
  run(0, Format::i420);
  EXPECT_EQ(bins(ppl_r_histogram(ctx)), (Bins{{80, weight}, {60, 65 * weight}}));
  // Quality 12 saves as well, though it looks at the sums alone.
  fill(20);
  run(12, Format::i420);
  fill(60);
  run(0, Format::i420);
  EXPECT_EQ(bins(ppl_r_histogram(ctx)), (Bins{{40, weight}, {60, 65 * weight}}));
}

TEST_P(ChainStatistics, TheStaleNeighbourIsTheLastGroupSavedOfTheLineBefore) {
  // Counters 12 of line 3 save group 14 of pair 5, which only line 5 looks at.
  run(0, Format::i420);
  for (int x = 14 * B(); x < 15 * B(); ++x) raw(x, 10) = raw(x, 11) = 40;
  run(0, Format::i420);
  EXPECT_EQ(bins(ppl_r_histogram(ctx)), (Bins{{70, cells()}, {100, 65 * cells()}}));
}

TEST_P(ChainStatistics, ExposureReadsTheFrameAndHasNoStaleNeighbour) {
  run(0, Format::i420);
  fill(60);
  run(0, Format::i420);
  EXPECT_EQ(ppl_qAE_rgb_means_whole_frame(ctx)->r, 60u * 256);
  EXPECT_NE(ppl_qual_rgb_means_whole_frame(ctx)->r, 60u * 256);
}

TEST_P(ChainStatistics, WithoutCollectionNothingIsGatheredOrSaved) {
  ppl_set_mean_collection(ctx, 0);
  fill(60);
  for (const uint32_t quality : all_chains) {
    run(quality, Format::i420);
    EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->r, 0u) << quality;
    EXPECT_EQ(ppl_n_qual_2x2_whole_frame(ctx), 0u);
    EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), 0u);
    EXPECT_TRUE(bins(ppl_r_histogram(ctx)).empty());
  }
  ppl_set_mean_collection(ctx, 1);
  fill(100);
  run(0, Format::i420);
  EXPECT_EQ(ppl_r_histogram(ctx)[50], cells()) << "zeros, not 60";
}

// ---- What is seen where

TEST_P(ChainStatistics, QualificationWorksAfterBlackAndBeforeGain) {
  ppl_set_optical_black_b_gb_gr_r(ctx, 10, 10, 10, 10);
  ppl_set_rgb_gain(ctx, 512, 512, 512);
  for (const Gathering &gathering : gatherings) {
    use(gathering);
    fill(60);
    run(gathering.quality, Format::i420);
    // The second frame's neighbours are all alike.
    run(gathering.quality, Format::i420);
    EXPECT_EQ(ppl_qual_rgb_means_whole_frame(ctx)->g, 50u * 256) << gathering.quality;
    EXPECT_EQ(bins(ppl_r_histogram(ctx)).begin()->first, 50);
    EXPECT_EQ(ppl_qAE_rgb_means_whole_frame(ctx)->g, 100u * 256) << gathering.quality;
  }
}

TEST_P(ChainStatistics, ADisqualifiedCellStandsAsZeroInItsVector) {
  ppl_set_qual_B_min_max(ctx, 0, 200);
  run(0, Format::i420);
  sample(5, 5, 0, 0) = 250;
  run(0, Format::i420);
  // 3 of 4 cells, or 7 of 8.
  const int bin = B() == 8 ? 75 : 87;
  EXPECT_EQ(bins(ppl_r_histogram(ctx)), (Bins{{bin, cells()}, {100, 65 * cells()}}));
  EXPECT_EQ(bins(ppl_g_histogram(ctx)), (Bins{{bin, 2 * cells()}, {100, 130 * cells()}}));
}

TEST_P(ChainStatistics, ExposureLooksAtTheCurveInTheLeftGroupOnly) {
  Bytes inverted(256);
  for (size_t i = 0; i < 256; ++i) inverted[i] = static_cast<uint8_t>(255 - i);
  ppl_copy_rgb_gamma_table(ctx, inverted.data());
  for (const Gathering &gathering : gatherings) {
    use(gathering);
    run(gathering.quality, Format::i420);
    EXPECT_EQ(ppl_qAE_rgb_means_whole_frame(ctx)->r, (155u + 100) * 128) << gathering.quality;
  }
}

TEST_P(ChainStatistics, ACellIsOutsideTheExposureBandOnlyWhollyOutside) {
  ppl_set_qAE_RGB_min_max(ctx, 60, 200);
  const uint32_t m = normaliser(4, 12);
  const auto inside = [&](uint8_t b, uint8_t rest) {
    fill(100);
    sample(5, 5, 0, 0) = b;
    sample(5, 5, 1, 0) = sample(5, 5, 0, 1) = sample(5, 5, 1, 1) = rest;
    run(0, Format::i420);
    return ppl_n_qAE_2x2_whole_frame(ctx) == (m * 66 * cells()) >> 8;
  };
  EXPECT_FALSE(inside(59, 59));
  EXPECT_TRUE(inside(60, 59));
  EXPECT_FALSE(inside(201, 201));
  EXPECT_TRUE(inside(200, 201));
  EXPECT_TRUE(inside(10, 250)) << "on both sides of the band";
}

TEST_P(ChainStatistics, TheFilterChainsLookAtUnrepairedSamples) {
  for (const uint32_t quality : {0u, 1u, 2u}) {
    const int place = quality == 2 ? 3 : 4;
    ppl_enable_medium_filter(ctx);
    fill(100);
    run(quality, Format::i420);  // for the stale neighbours
    sample(place, place, 1, 1) = 255;
    const Picture picture = run(quality, Format::i420);
    EXPECT_EQ(after(picture, place * B() + 3, 2 * place + 1), 100) << "was repaired";
    EXPECT_GT(ppl_qAE_rgb_means_whole_frame(ctx)->r, 25600u) << quality;
    EXPECT_GT(ppl_qual_rgb_means_whole_frame(ctx)->r, 25600u) << quality;
  }
}

TEST_P(ChainStatistics, Quality12SumsWindowsAloneAndReadsALittleLow) {
  fill(100);
  run(12, Format::i420);
  EXPECT_EQ(ppl_n_qual_2x2_whole_frame(ctx), 0u);
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), 0u);
  EXPECT_TRUE(bins(ppl_r_histogram(ctx)).empty());
  // 11 lines of 7 steps, of vectors that stand for four times their cells. Window sums truncate.
  const uint32_t sampled = 11 * 7 * cells() * 4;
  EXPECT_NEAR(ppl_rgb_means_whole_frame(ctx)->r, 100 * 256 * sampled / (size() / 4), 20);
  EXPECT_LT(ppl_rgb_means_whole_frame(ctx)->r, 100u * 256);
  set_size(40 * B(), 480);
  run(0, Format::i420);
  EXPECT_GT(ppl_rgb_means_whole_frame(ctx)->r, 100u * 256) << "quality 0 reads a little high";
  EXPECT_LT(ppl_rgb_means_whole_frame(ctx)->r, 105u * 256);
}

// ---- Windows

TEST_P(ChainStatistics, WindowsAreChosenByTheCountersAndNotByThePlace) {
  // Windows of 2 columns by 4 rows. Counters 3 and 3 stand in window 1 of the first row; what they
  // sample, group 5 of pair 5, lies in window 2 of the second.
  const auto window_of = [&](const Gathering &gathering, int column, int pair) {
    use(gathering);
    fill(0);
    sample(column + gathering.ahead, pair + gathering.ahead, 1, 1) = 200;
    run(gathering.quality, Format::i420);
    return window_with_red();
  };
  for (const Gathering &gathering : gatherings) {
    SCOPED_TRACE(testing::Message()
                 << "quality " << gathering.quality << " filter " << gathering.filter);
    EXPECT_EQ(window_of(gathering, 1, 1), 0);
    EXPECT_EQ(window_of(gathering, 3, 3), 1);
    EXPECT_EQ(window_of(gathering, 3, 5), 8 + 1);
    EXPECT_EQ(window_of(gathering, 11, 19), 4 * 8 + 5);
  }
  EXPECT_EQ(window_of(gatherings[0], 11, 21), 5 * 8 + 5);
}

TEST_P(ChainStatistics, WhatLiesRightOfTheGridOrBelowItGoesToTheOutsideTriple) {
  // 23 columns and 29 pairs: windows of 2 by 4 reach to column 15 and pair 23.
  set_size(23 * B(), 58);
  for (const auto &[column, pair, window] :
       {std::array{15, 3, 7}, {17, 3, 48}, {19, 3, 48}, {3, 23, 41}, {3, 25, 48}, {17, 25, 48}}) {
    fill(0);
    sample(column + 2, pair + 2, 1, 1) = 200;
    run(0, Format::i420);
    EXPECT_EQ(window_with_red(), window) << column << ", " << pair;
    EXPECT_NE(ppl_rgb_means_whole_frame(ctx)->r, 0u) << "the whole frame's mean has them all";
  }
}

TEST_P(ChainStatistics, AWindowSumCountsBothGreens) {
  fill(0);
  sample(5, 5, 1, 0) = 200;  // Gb
  run(0, Format::i420);
  const uint32_t one = ppl_rgb_means_sub_windows(ctx)[1].g;
  sample(5, 5, 0, 1) = 200;  // Gr
  run(0, Format::i420);
  EXPECT_NEAR(ppl_rgb_means_sub_windows(ctx)[1].g, 2 * one, 8);
  EXPECT_GT(one, 0u);
  EXPECT_EQ(window_with_red(), -1);
}

TEST_P(ChainStatistics, NormalisersOfTheLowestFramesWrap) {
  // With the filter 16 lines are left out of 14: a negative number, taken as unsigned.
  set_size(16 * B(), 14);
  ppl_enable_medium_filter(ctx);
  run(0, Format::i420);
  const uint32_t m = normaliser(5, 16);
  EXPECT_GT(m, 1u << 31);
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), (m * (2 * 6 * cells())) >> 8);
}

}  // namespace
}  // namespace ppl_test::chains
