// What a frame driver makes of the sums when the last pass has returned.
#include <gtest/gtest.h>

#include "support/raw_frame.h"

namespace ppl_test {
namespace {

class Aggregation : public RawFrameTierTest {
 protected:
  void SetUp() override {
    RawFrameTierTest::SetUp();
    if (!IsSkipped()) make_colour_neutral();
  }
  void expect_triple(const PplTriple *triple, uint32_t r, uint32_t g, uint32_t b) {
    EXPECT_EQ(triple->r, r);
    EXPECT_EQ(triple->g, g);
    EXPECT_EQ(triple->b, b);
  }
  void expect_no_windows() {
    for (int i = 0; i < 48; ++i) expect_triple(ppl_rgb_means_sub_windows(ctx) + i, 0, 0, 0);
    expect_triple(ppl_rgb_means_outside_all_sub_windows(ctx), 0, 0, 0);
    expect_triple(ppl_rgb_means_all_sub_windows(ctx), 0, 0, 0);
  }
};
INSTANTIATE_TEST_SUITE_P(Tiers, Aggregation, ::testing::ValuesIn(both_tiers), tier_name);

TEST_P(Aggregation, AFlatFrameAtQuality3Reads256TimesItsLevel) {
  for (const int level : {0, 1, 100, 254, 255}) {
    // RGB24 stays out of this: its P3 pass counts green as red.
    for (const Format format : {Format::i420, Format::yuyv, Format::uyvy, Format::rgb32}) {
      ASSERT_EQ(run(format, flat_mosaic(640, 480, static_cast<uint8_t>(level))).result, 1);
      const auto mean = static_cast<uint32_t>(256 * level);
      expect_triple(ppl_rgb_means_whole_frame(ctx), mean, mean, mean);
      expect_no_windows();
    }
  }
}

TEST_P(Aggregation, AnOddNumberOfLinePairsSamplesHalfOfThemRoundedDown) {
  // 128 by 26: pairs 1, 3, 5, 7, 9 and 11 of 13 are sampled, 32 cells each, with weight 4:
  // 768 times the level, over 832 cells. Level 100: 100 * 768 * 256 = 19660800; (that + 416) / 832
  // = 23631 for red and blue; (2 * that + 832) / 1664 = 23631 for green.
  ASSERT_EQ(run(Format::i420, flat_mosaic(128, 26, 100)).result, 1);
  expect_triple(ppl_rgb_means_whole_frame(ctx), 23631, 23631, 23631);
}

TEST_P(Aggregation, MeansRoundToTheNearest) {
  // 130 by 22: 715 cells; pairs 1, 3, 5, 7 and 9 of 11; sampled columns 2, 6 ... 126: 32 of 65
  // cells in a line pair: 160 cells, and 640 with their weight. frame_size 2860, a quarter 715, an
  // eighth 357, a half 1430.
  // Red 7: (7 * 640 * 256 + 357) / 715 = (1146880 + 357) / 715 = 1604.5 -> 1604.
  // Green 9 and 10: (19 * 640 * 256 + 715) / 1430 = (3112960 + 715) / 1430 = 2177.4 -> 2177.
  // Blue 3: (3 * 640 * 256 + 357) / 715 = (491520 + 357) / 715 = 687.9 -> 687.
  ASSERT_EQ(run(Format::i420, cell_mosaic(130, 22, 3, 9, 10, 7)).result, 1);
  expect_triple(ppl_rgb_means_whole_frame(ctx), 1604, 2177, 687);
}

TEST_P(Aggregation, GreenCountsBothOfItsSamples) {
  ASSERT_EQ(run(Format::i420, cell_mosaic(128, 24, 10, 20, 40, 80)).result, 1);
  expect_triple(ppl_rgb_means_whole_frame(ctx), 80 * 256, 30 * 256, 10 * 256);
  expect_triple(ppl_qAE_rgb_means_whole_frame(ctx), 80 * 256, 30 * 256, 10 * 256);
}

TEST_P(Aggregation, WithoutCollectionEveryResultIsZero) {
  ppl_set_mean_collection(ctx, 0);
  for (const uint32_t quality : {3u, 13u, 5u, 4u})
    for (const Format format : all_formats) {
      ppl_set_quality(ctx, quality);
      run(format, flat_mosaic(128, 24, 100));
      expect_triple(ppl_rgb_means_whole_frame(ctx), 0, 0, 0);
      expect_triple(ppl_qAE_rgb_means_whole_frame(ctx), 0, 0, 0);
      expect_triple(ppl_qual_rgb_means_whole_frame(ctx), 0, 0, 0);
      EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), 0u);
      EXPECT_EQ(ppl_n_qual_2x2_whole_frame(ctx), 0u);
      expect_no_windows();
      for (int bin = 0; bin < 256; ++bin)
        ASSERT_EQ(ppl_r_histogram(ctx)[bin] + ppl_g_histogram(ctx)[bin] + ppl_b_histogram(ctx)[bin],
                  0u);
    }
}

TEST_P(Aggregation, CountsGrowByTheDensityOfTheLattice) {
  // 160 by 20: five odd line pairs of 40 sampled cells. One hundred of them are put out of the
  // band: the first 20 of each pair.
  ASSERT_EQ(ppl_set_qAE_RGB_min_max(ctx, 50, 255), 1);
  const Mosaic frame = mosaic(160, 20, [](uint32_t x, uint32_t) { return x < 80 ? 10 : 100; });
  ASSERT_EQ(run(Format::i420, frame).result, 1);
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), 400u);
  // The means are those of the hundred cells alone.
  expect_triple(ppl_qAE_rgb_means_whole_frame(ctx), 25600, 25600, 25600);
  // All cells of the frame count in the whole-frame means: (10 + 100) / 2.
  expect_triple(ppl_rgb_means_whole_frame(ctx), 55 * 256, 55 * 256, 55 * 256);
  // Both halves are grey.
  EXPECT_EQ(ppl_n_qual_2x2_whole_frame(ctx), 800u);
  expect_triple(ppl_qual_rgb_means_whole_frame(ctx), 55 * 256, 55 * 256, 55 * 256);
}

TEST_P(Aggregation, MeansOfCellsRoundToTheNearest) {
  // 200 cells, one sampled cell reads one more in red and Gr: red (20001 * 256 + 100) / 200
  // = 25601.78 -> 25601; green (40001 * 256 + 200) / 400 = 25601.14 -> 25601; blue 25600.
  Mosaic frame = flat_mosaic(160, 20, 100);
  frame.samples[3 * 160 + 2] = 101;  // Gr of the cell at column 2 of pair 1
  frame.samples[3 * 160 + 3] = 101;  // its R
  ASSERT_EQ(run(Format::i420, frame).result, 1);
  expect_triple(ppl_qAE_rgb_means_whole_frame(ctx), 25601, 25601, 25600);
  expect_triple(ppl_qual_rgb_means_whole_frame(ctx), 25601, 25601, 25600);
}

TEST_P(Aggregation, AnEmptyBandLeavesTripleAndCountAtZero) {
  ASSERT_EQ(ppl_set_qAE_RGB_min_max(ctx, 200, 255), 1);
  ASSERT_EQ(ppl_set_qual_R_min_max(ctx, 200, 255), 1);
  ASSERT_EQ(run(Format::i420, flat_mosaic(128, 24, 100)).result, 1);
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), 0u);
  EXPECT_EQ(ppl_n_qual_2x2_whole_frame(ctx), 0u);
  expect_triple(ppl_qAE_rgb_means_whole_frame(ctx), 0, 0, 0);
  expect_triple(ppl_qual_rgb_means_whole_frame(ctx), 0, 0, 0);
  expect_triple(ppl_rgb_means_whole_frame(ctx), 25600, 25600, 25600);
}

TEST_P(Aggregation, Quality13HasWholeFrameMeansAndNoCounts) {
  uint8_t identity[256];
  for (int i = 0; i < 256; ++i) identity[i] = static_cast<uint8_t>(i);
  ppl_copy_yuv_gamma_table(ctx, identity);
  ppl_set_quality(ctx, 13);
  ASSERT_EQ(run(Format::i420, cell_mosaic(128, 24, 10, 20, 40, 80)).result, 1);
  expect_triple(ppl_rgb_means_whole_frame(ctx), 80 * 256, 30 * 256, 10 * 256);
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), 0u);
  EXPECT_EQ(ppl_n_qual_2x2_whole_frame(ctx), 0u);
  expect_no_windows();
}

TEST_P(Aggregation, ReadersOfTheCentreFollowTheQualityAtTheTimeOfTheCall) {
  ASSERT_EQ(run(Format::i420, flat_mosaic(128, 24, 100)).result, 1);
  const PplTriple *whole = ppl_rgb_means_whole_frame(ctx);
  EXPECT_EQ(ppl_rgb_means_whole_frame_4pts(ctx), whole);
  EXPECT_EQ(ppl_rgb_means_whole_frame_central4(ctx), whole);
  EXPECT_EQ(ppl_rgb_means_whole_frame_central8(ctx), whole);
  EXPECT_EQ(ppl_rgb_means_whole_frame_central16(ctx), whole);
  ppl_set_quality(ctx, 13);
  expect_triple(ppl_rgb_means_whole_frame_4pts(ctx), 0, 0, 0);
  expect_triple(ppl_rgb_means_whole_frame_central8(ctx), 0, 0, 0);
  expect_triple(whole, 25600, 25600, 25600);
}

}  // namespace
}  // namespace ppl_test
