// What the single passes gather on their way, and what becomes of it.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <vector>

#include "support/raw_frame.h"
#include "support/tier_state.h"

namespace ppl_test {
namespace {

class Statistics : public RawFrameTierTest {
 protected:
  void SetUp() override {
    RawFrameTierTest::SetUp();
    if (!IsSkipped()) make_colour_neutral();
  }

  // Both lines of the group that a tier saved last.
  using Group = std::vector<uint8_t>;
  std::array<Group, 2> saved_group(Tier tier) {
    const auto &lines = tier_state(ctx, tier).memory.stat_group_copy;
    const size_t columns = tier == Tier::p3 ? 8 : 16;
    return {Group(lines[0], lines[0] + columns), Group(lines[1], lines[1] + columns)};
  }
  void expect_saved(Tier tier, uint8_t level) {
    for (const Group &line : saved_group(tier)) EXPECT_EQ(line, Group(line.size(), level));
  }

  // Cells that a sampled vector joins, and so the weight of a histogram entry.
  uint32_t vector_cells() const { return GetParam() == Tier::p3 ? 4 : 8; }

  using Bins = std::map<int, uint32_t>;
  static Bins bins(const uint32_t *histogram) {
    Bins filled;
    for (int i = 0; i < 256; ++i)
      if (histogram[i] != 0) filled[i] = histogram[i];
    return filled;
  }
  void expect_triple(const PplTriple *triple, uint32_t r, uint32_t g, uint32_t b) {
    EXPECT_EQ(triple->r, r);
    EXPECT_EQ(triple->g, g);
    EXPECT_EQ(triple->b, b);
  }
  void set_curve(int from, uint8_t to) {  // identity, but for one entry
    uint8_t table[256];
    for (int i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(i);
    table[from] = to;
    ppl_copy_rgb_gamma_table(ctx, table);
  }

  // 128 by 20: line pairs 1, 3, 5, 7 and 9 are sampled, at columns 2, 6 ... 126: 160 cells.
  static constexpr uint32_t width = 128, height = 20, sampled_cells = 160;

  static void set_cell(Mosaic &frame, uint32_t x, uint32_t pair, uint8_t b, uint8_t gb, uint8_t gr,
                       uint8_t r) {
    uint8_t *even = &frame.samples[size_t{2 * pair} * frame.width + x];
    even[0] = b;
    even[1] = gb;
    even[frame.width] = gr;
    even[frame.width + 1] = r;
  }
};
INSTANTIATE_TEST_SUITE_P(Tiers, Statistics, ::testing::ValuesIn(both_tiers), tier_name);

TEST_P(Statistics, WithoutCollectionNothingIsGathered) {
  ppl_set_mean_collection(ctx, 0);
  for (const Format format : all_formats)
    for (const uint32_t quality : {3u, 13u}) {
      ppl_set_quality(ctx, quality);
      run(format, textured_mosaic(width, height));
      expect_triple(ppl_rgb_means_whole_frame(ctx), 0, 0, 0);
      EXPECT_TRUE(bins(ppl_r_histogram(ctx)).empty());
      EXPECT_TRUE(bins(ppl_g_histogram(ctx)).empty());
      EXPECT_TRUE(bins(ppl_b_histogram(ctx)).empty());
      EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), 0u);
      EXPECT_EQ(ppl_n_qual_2x2_whole_frame(ctx), 0u);
    }
  for (const Tier tier : both_tiers) expect_saved(tier, 0);
}

TEST_P(Statistics, AnyCollectionFlagButZeroIsSet) {
  ppl_set_mean_collection(ctx, 128);
  run(Format::i420, flat_mosaic(width, height, 100));
  expect_triple(ppl_rgb_means_whole_frame(ctx), 25600, 25600, 25600);
}

TEST_P(Statistics, AFlatFrameFillsOneBinPerChannel) {
  for (const int level : {0, 1, 100, 255}) {
    run(Format::i420, flat_mosaic(width, height, static_cast<uint8_t>(level)));
    EXPECT_EQ(bins(ppl_r_histogram(ctx)), (Bins{{level, sampled_cells}}));
    EXPECT_EQ(bins(ppl_g_histogram(ctx)), (Bins{{level, 2 * sampled_cells}}));
    EXPECT_EQ(bins(ppl_b_histogram(ctx)), (Bins{{level, sampled_cells}}));
    EXPECT_EQ(ppl_n_qual_2x2_whole_frame(ctx), 4 * sampled_cells);
    EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), 4 * sampled_cells);
  }
}

TEST_P(Statistics, OnlyTheLatticeIsSampled) {
  // Everything off the lattice is 255; the sampled cells are 10, 20, 30, 40 (no cell is grey).
  Mosaic frame = flat_mosaic(width, height, 255);
  for (uint32_t pair = 1; pair < height / 2; pair += 2)
    for (uint32_t x = 2; x < width; x += 4) set_cell(frame, x, pair, 10, 20, 30, 40);
  for (const Format format : {Format::i420, Format::yuyv, Format::uyvy, Format::rgb32}) {
    run(format, frame);
    expect_triple(ppl_rgb_means_whole_frame(ctx), 40 * 256, 25 * 256, 10 * 256);
    expect_triple(ppl_qAE_rgb_means_whole_frame(ctx), 40 * 256, 25 * 256, 10 * 256);
    // D0 = -10, D1 = -10: sum -20 and difference 0 are inside the default bands.
    EXPECT_EQ(ppl_n_qual_2x2_whole_frame(ctx), 4 * sampled_cells);
    expect_triple(ppl_qual_rgb_means_whole_frame(ctx), 40 * 256, 25 * 256, 10 * 256);
    EXPECT_EQ(bins(ppl_r_histogram(ctx)), (Bins{{40, sampled_cells}}));
    EXPECT_EQ(bins(ppl_g_histogram(ctx)), (Bins{{20, sampled_cells}, {30, sampled_cells}}));
    EXPECT_EQ(bins(ppl_b_histogram(ctx)), (Bins{{10, sampled_cells}}));
  }
}

TEST_P(Statistics, ADisqualifiedCellCountsAsZeroInItsVector) {
  // One cell of the first vector is red: R = 160 where the others have 100. Three of four cells
  // leave 300 >> 2 = 75, seven of eight 700 >> 3 = 87.
  Mosaic frame = flat_mosaic(width, height, 100);
  set_cell(frame, 2, 1, 100, 100, 100, 160);
  run(Format::i420, frame);
  const int bin = GetParam() == Tier::p3 ? 75 : 87;
  const uint32_t weight = vector_cells();
  EXPECT_EQ(bins(ppl_r_histogram(ctx)), (Bins{{bin, weight}, {100, sampled_cells - weight}}));
  EXPECT_EQ(bins(ppl_g_histogram(ctx)),
            (Bins{{bin, 2 * weight}, {100, 2 * (sampled_cells - weight)}}));
  EXPECT_EQ(bins(ppl_b_histogram(ctx)), (Bins{{bin, weight}, {100, sampled_cells - weight}}));
  EXPECT_EQ(ppl_n_qual_2x2_whole_frame(ctx), 4 * (sampled_cells - 1));
  expect_triple(ppl_qual_rgb_means_whole_frame(ctx), 25600, 25600, 25600);
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), 4 * sampled_cells) << "exposure has bands of its own";
}

TEST_P(Statistics, AVectorWithoutAQualifyingCellFillsBinZero) {
  run(Format::i420, cell_mosaic(width, height, 100, 100, 100, 160));
  EXPECT_EQ(bins(ppl_r_histogram(ctx)), (Bins{{0, sampled_cells}}));
  EXPECT_EQ(bins(ppl_g_histogram(ctx)), (Bins{{0, 2 * sampled_cells}}));
  EXPECT_EQ(ppl_n_qual_2x2_whole_frame(ctx), 0u);
  expect_triple(ppl_qual_rgb_means_whole_frame(ctx), 0, 0, 0);
}

TEST_P(Statistics, AHistogramEntryIsTheMeanOfItsVector) {
  // One grey cell of 14 among cells of 10 in the first vector: 44 >> 2 = 11, 84 >> 3 = 10.
  Mosaic frame = flat_mosaic(width, height, 10);
  set_cell(frame, 2, 1, 14, 14, 14, 14);
  run(Format::i420, frame);
  const uint32_t weight = vector_cells();
  EXPECT_EQ(bins(ppl_b_histogram(ctx)), GetParam() == Tier::p3
                                            ? (Bins{{10, sampled_cells - weight}, {11, weight}})
                                            : (Bins{{10, sampled_cells}}));
}

// ---- The bands of the qualification

struct BandRow {
  const char *name;
  int b, gb, gr, r;      // a cell just inside the default bands
  int b2, gb2, gr2, r2;  // and the cell one step further
};

TEST_P(Statistics, EveryQualBandIncludesItsLimits) {
  // Defaults: both differences in -25..25, their sum and difference in -30..30.
  for (const BandRow &row : {
           BandRow{"B minus Gb, upper", 125, 100, 100, 100, 126, 100, 100, 100},
           {"B minus Gb, lower", 75, 100, 100, 100, 74, 100, 100, 100},
           {"Gr minus R, upper", 100, 100, 125, 100, 100, 100, 126, 100},
           {"Gr minus R, lower", 100, 100, 75, 100, 100, 100, 74, 100},
           {"sum, upper", 120, 100, 110, 100, 120, 100, 111, 100},
           {"sum, lower", 80, 100, 90, 100, 80, 100, 89, 100},
           {"difference, upper", 120, 100, 90, 100, 120, 100, 89, 100},
           {"difference, lower", 80, 100, 110, 100, 80, 100, 111, 100},
       }) {
    const auto byte = [](int v) { return static_cast<uint8_t>(v); };
    run(Format::i420,
        cell_mosaic(width, height, byte(row.b), byte(row.gb), byte(row.gr), byte(row.r)));
    EXPECT_EQ(ppl_n_qual_2x2_whole_frame(ctx), 4 * sampled_cells) << row.name;
    run(Format::i420,
        cell_mosaic(width, height, byte(row.b2), byte(row.gb2), byte(row.gr2), byte(row.r2)));
    EXPECT_EQ(ppl_n_qual_2x2_whole_frame(ctx), 0u) << row.name;
  }
}

TEST_P(Statistics, LevelBandsIncludeTheirLimits) {
  ASSERT_EQ(ppl_set_qual_BmGb_min_max(ctx, -255, 255), 1);
  ASSERT_EQ(ppl_set_qual_GrmR_min_max(ctx, -255, 255), 1);
  ASSERT_EQ(ppl_set_qual_BmGb_p_GrmR_min_max(ctx, -510, 510), 1);
  ASSERT_EQ(ppl_set_qual_BmGb_m_GrmR_min_max(ctx, -510, 510), 1);
  ASSERT_EQ(ppl_set_qual_RGB_min_max(ctx, 40, 60, 80, 100, 120, 140), 1);
  const auto qualifies = [&](int b, int gb, int gr, int r) {
    const auto byte = [](int v) { return static_cast<uint8_t>(v); };
    run(Format::i420, cell_mosaic(width, height, byte(b), byte(gb), byte(gr), byte(r)));
    const uint32_t count = ppl_n_qual_2x2_whole_frame(ctx);
    EXPECT_TRUE(count == 0 || count == 4 * sampled_cells) << count;
    return count != 0;
  };
  EXPECT_TRUE(qualifies(120, 80, 80, 40));
  EXPECT_TRUE(qualifies(140, 100, 100, 60));
  EXPECT_FALSE(qualifies(119, 80, 80, 40));
  EXPECT_FALSE(qualifies(141, 80, 80, 40));
  EXPECT_FALSE(qualifies(120, 79, 80, 40));
  EXPECT_FALSE(qualifies(120, 101, 80, 40));
  EXPECT_FALSE(qualifies(120, 80, 79, 40));
  EXPECT_FALSE(qualifies(120, 80, 101, 40));
  EXPECT_FALSE(qualifies(120, 80, 80, 39));
  EXPECT_FALSE(qualifies(120, 80, 80, 61));
  EXPECT_FALSE(qualifies(0, 80, 80, 40));
  EXPECT_FALSE(qualifies(255, 80, 80, 40));
}

TEST_P(Statistics, QualificationLooksAtSamplesAfterBlackAndBeforeGain) {
  ASSERT_EQ(ppl_set_optical_black_b_gb_gr_r(ctx, 10, 20, 30, 40), 1);
  ASSERT_EQ(ppl_set_rgb_gain(ctx, 1024, 128, 300), 1);
  ASSERT_EQ(ppl_set_rgb_delta(ctx, 50, 60, 70), 1);
  run(Format::i420, cell_mosaic(width, height, 110, 120, 130, 140));
  EXPECT_EQ(ppl_n_qual_2x2_whole_frame(ctx), 4 * sampled_cells);
  expect_triple(ppl_qual_rgb_means_whole_frame(ctx), 25600, 25600, 25600);
  EXPECT_EQ(bins(ppl_r_histogram(ctx)), (Bins{{100, sampled_cells}}));
  EXPECT_EQ(bins(ppl_g_histogram(ctx)), (Bins{{100, 2 * sampled_cells}}));
  EXPECT_EQ(bins(ppl_b_histogram(ctx)), (Bins{{100, sampled_cells}}));
}

TEST_P(Statistics, ThePairGainsOfTheQualTestHaveNoEffect) {
  run(Format::i420, flat_mosaic(width, height, 100));
  const Bins before = bins(ppl_r_histogram(ctx));
  ppl_set_quals_rgb_gain(ctx, 1000, 1, 0);
  run(Format::i420, flat_mosaic(width, height, 100));
  EXPECT_EQ(bins(ppl_r_histogram(ctx)), before);
  EXPECT_EQ(ppl_n_qual_2x2_whole_frame(ctx), 4 * sampled_cells);
  expect_triple(ppl_qual_rgb_means_whole_frame(ctx), 25600, 25600, 25600);
}

// ---- Exposure

TEST_P(Statistics, TheFullExposureBandTakesEveryCell) {
  for (const int level : {0, 255}) {
    run(Format::i420, flat_mosaic(width, height, static_cast<uint8_t>(level)));
    EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), 4 * sampled_cells);
  }
}

TEST_P(Statistics, ACellIsOutsideTheExposureBandOnlyWhollyBelowOrWhollyAbove) {
  ASSERT_EQ(ppl_set_qAE_RGB_min_max(ctx, 60, 200), 1);
  const auto inside = [&](uint8_t b, uint8_t gb, uint8_t gr, uint8_t r) {
    run(Format::i420, cell_mosaic(width, height, b, gb, gr, r));
    const uint32_t count = ppl_n_qAE_2x2_whole_frame(ctx);
    EXPECT_TRUE(count == 0 || count == 4 * sampled_cells) << count;
    return count != 0;
  };
  EXPECT_FALSE(inside(59, 59, 59, 59));
  EXPECT_TRUE(inside(59, 59, 59, 60));
  EXPECT_TRUE(inside(60, 59, 59, 59));
  EXPECT_TRUE(inside(10, 10, 250, 250)) << "samples on both sides";
  EXPECT_TRUE(inside(250, 10, 10, 250));
  EXPECT_FALSE(inside(0, 0, 0, 0));
  EXPECT_FALSE(inside(201, 201, 201, 201));
  EXPECT_FALSE(inside(255, 255, 255, 255));
  EXPECT_TRUE(inside(201, 200, 201, 201));
  EXPECT_TRUE(inside(60, 60, 60, 60));
  EXPECT_TRUE(inside(200, 200, 200, 200));
}

TEST_P(Statistics, AnOpenEndOfTheExposureBandExcludesNothing) {
  ASSERT_EQ(ppl_set_qAE_RGB_min_max(ctx, 0, 100), 1);
  run(Format::i420, flat_mosaic(width, height, 0));
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), 4 * sampled_cells);
  run(Format::i420, flat_mosaic(width, height, 101));
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), 0u);
  ASSERT_EQ(ppl_set_qAE_RGB_min_max(ctx, 100, 255), 1);
  run(Format::i420, flat_mosaic(width, height, 255));
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), 4 * sampled_cells);
  run(Format::i420, flat_mosaic(width, height, 99));
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), 0u);
}

TEST_P(Statistics, ExposureSeesGroup0AfterTheCurveAndGroup1BeforeIt) {
  // Level 50 becomes 200 in the curve. Half the cells read 200, half 50: 125 on average.
  set_curve(50, 200);
  run(Format::i420, flat_mosaic(width, height, 50));
  expect_triple(ppl_rgb_means_whole_frame(ctx), 125 * 256, 125 * 256, 125 * 256);
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), 4 * sampled_cells);
  // A band that holds the one and not the other.
  ASSERT_EQ(ppl_set_qAE_RGB_min_max(ctx, 60, 255), 1);
  run(Format::i420, flat_mosaic(width, height, 50));
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), 4 * sampled_cells / 2);
  expect_triple(ppl_qAE_rgb_means_whole_frame(ctx), 200 * 256, 200 * 256, 200 * 256);
  ASSERT_EQ(ppl_set_qAE_RGB_min_max(ctx, 0, 60), 1);
  run(Format::i420, flat_mosaic(width, height, 50));
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), 4 * sampled_cells / 2);
  expect_triple(ppl_qAE_rgb_means_whole_frame(ctx), 50 * 256, 50 * 256, 50 * 256);
  // Qualification comes before both.
  EXPECT_EQ(bins(ppl_r_histogram(ctx)), (Bins{{50, sampled_cells}}));
}

TEST_P(Statistics, ExposureSeesGainAndDelta) {
  ASSERT_EQ(ppl_set_rgb_gain(ctx, 512, 256, 128), 1);
  ASSERT_EQ(ppl_set_rgb_delta(ctx, 1, 2, 3), 1);
  run(Format::i420, flat_mosaic(width, height, 60));
  expect_triple(ppl_rgb_means_whole_frame(ctx), 121 * 256, 62 * 256, 33 * 256);
  expect_triple(ppl_qAE_rgb_means_whole_frame(ctx), 121 * 256, 62 * 256, 33 * 256);
}

TEST_P(Statistics, TheMeansAreOverAllCellsWhateverTheBands) {
  ASSERT_EQ(ppl_set_qAE_RGB_min_max(ctx, 250, 251), 1);
  ASSERT_EQ(ppl_set_qual_R_min_max(ctx, 250, 251), 1);
  run(Format::i420, cell_mosaic(width, height, 10, 20, 40, 80));
  expect_triple(ppl_rgb_means_whole_frame(ctx), 80 * 256, 30 * 256, 10 * 256);
}

// ---- The left neighbour

TEST_P(Statistics, TheGroupLeftOfASampledOneIsKeptAfterBlack) {
  ASSERT_EQ(ppl_set_optical_black_b_gb_gr_r(ctx, 1, 2, 3, 4), 1);
  ASSERT_EQ(ppl_set_rgb_gain(ctx, 512, 512, 512), 1);
  const Mosaic frame = textured_mosaic(width, height);
  run(Format::i420, frame);
  // The last group saved is the next-to-last of line pair 9.
  const std::array<Group, 2> saved = saved_group(GetParam());
  const size_t left = width - 2 * saved[0].size();
  for (size_t line = 0; line < 2; ++line) {
    for (size_t i = 0; i < saved[line].size(); ++i) {
      const int black = static_cast<int>(2 * line + 1 + i % 2);
      ASSERT_EQ(saved[line][i], std::max(0, frame.at(left + i, 18 + line) - black))
          << line << ", " << i;
    }
  }
}

TEST_P(Statistics, EachTierKeepsAGroupOfItsOwn) {
  run(Format::i420, flat_mosaic(width, height, 77));
  for (const Tier tier : both_tiers) expect_saved(tier, tier == GetParam() ? 77 : 0);
  for (const auto &line : tier_state(ctx, Tier::p3).memory.stat_group_copy) {
    EXPECT_TRUE(all_equal(line + 8, sizeof line - 8, 0)) << "a group of 8 columns";
  }
}

TEST_P(Statistics, TheKeptGroupOutlivesTheFrame) {
  run(Format::i420, flat_mosaic(width, height, 77));
  ppl_set_mean_collection(ctx, 0);
  run(Format::i420, flat_mosaic(width, height, 88));
  expect_saved(GetParam(), 77);
}

// ---- Which passes gather

TEST_P(Statistics, PackedPassesAtDecimation1GatherNothing) {
  Run how;
  how.decimation = 1;
  for (const Format format : {Format::yuyv, Format::uyvy}) {
    ASSERT_EQ(run(format, flat_mosaic(width, height, 100), how).result, 1);
    expect_triple(ppl_rgb_means_whole_frame(ctx), 0, 0, 0);
    expect_triple(ppl_qAE_rgb_means_whole_frame(ctx), 0, 0, 0);
    EXPECT_EQ(ppl_n_qual_2x2_whole_frame(ctx), 0u);
    EXPECT_TRUE(bins(ppl_r_histogram(ctx)).empty());
    for (const Tier tier : both_tiers) expect_saved(tier, 0);
  }
}

TEST_P(Statistics, AllOtherScaledPassesGatherAsUnscaledOnes) {
  struct Row {
    Format format;
    int32_t decimation;
  };
  for (const Row &row : {Row{Format::i420, 1},
                         {Format::rgb24, 1},
                         {Format::rgb32, 1},
                         {Format::i420, -1},
                         {Format::yuyv, -1},
                         {Format::uyvy, -1},
                         {Format::rgb32, -1}}) {
    SCOPED_TRACE(std::string(name_of(row.format)) + " at " + std::to_string(row.decimation));
    Run how;
    how.decimation = row.decimation;
    ASSERT_EQ(run(row.format, flat_mosaic(width, height, 100), how).result, 1);
    expect_triple(ppl_rgb_means_whole_frame(ctx), 25600, 25600, 25600);
    expect_triple(ppl_qAE_rgb_means_whole_frame(ctx), 25600, 25600, 25600);
    EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), 4 * sampled_cells);
    EXPECT_EQ(ppl_n_qual_2x2_whole_frame(ctx), 4 * sampled_cells);
    EXPECT_EQ(bins(ppl_g_histogram(ctx)), (Bins{{100, 2 * sampled_cells}}));
  }
}

// ---- Widths that leave a part of a block

TEST_P(Statistics, AMissingRightHalfStandsAsZeroInTheVector) {
  // The last group is an even one, so its vector has no right half: 2 of 4 cells and 4 of 8.
  // P3: 136 columns, group 16 of 8. SSE2: 144 columns, group 8 of 16.
  const uint32_t odd_width = GetParam() == Tier::p3 ? 136 : 144;
  const uint32_t weight = vector_cells();
  const uint32_t cells = 5 * odd_width / 4;
  run(Format::i420, flat_mosaic(odd_width, height, 100));
  EXPECT_EQ(ppl_n_qual_2x2_whole_frame(ctx), 4 * cells);
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), 4 * cells);
  const uint32_t whole_vectors = 5 * 128 / 4;
  EXPECT_EQ(bins(ppl_r_histogram(ctx)), (Bins{{50, 5 * weight}, {100, whole_vectors}}));
}

TEST_P(Statistics, ALastGroupOfTwoColumnsAddsZerosToTheHistogramsAlone) {
  // Columns 128 and 129 hold no sampled cell, but their vector counts: five line pairs of it.
  run(Format::i420, flat_mosaic(130, height, 100));
  EXPECT_EQ(ppl_n_qual_2x2_whole_frame(ctx), 4 * sampled_cells);
  const uint32_t weight = vector_cells();
  EXPECT_EQ(bins(ppl_r_histogram(ctx)), (Bins{{0, 5 * weight}, {100, sampled_cells}}));
  EXPECT_EQ(bins(ppl_g_histogram(ctx)), (Bins{{0, 10 * weight}, {100, 2 * sampled_cells}}));
}

}  // namespace
}  // namespace ppl_test
