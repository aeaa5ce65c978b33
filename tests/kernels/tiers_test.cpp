// Where the two kernel tiers agree, and the few places where a caller can tell them apart.
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "kernels/neutral_picture.h"
#include "support/combinations.h"
#include "support/raw_frame.h"

namespace ppl_test {
namespace {

class Tiers : public RawFrameTest {
 protected:
  void SetUp() override {
    RawFrameTest::SetUp();
    if (!has_tier(Tier::sse2)) GTEST_SKIP() << "no SSE2 tier on this processor";
  }
  Picture run_on(Tier tier, Format format, const Mosaic &frame, int32_t decimation = 0) {
    use_tier(tier);
    Run how;
    how.decimation = decimation;
    return run(format, frame, how);
  }
  void expect_equal_pictures(Format format, const Mosaic &frame, int32_t decimation) {
    const Picture p3 = run_on(Tier::p3, format, frame, decimation);
    const Picture sse2 = run_on(Tier::sse2, format, frame, decimation);
    EXPECT_EQ(p3.result, sse2.result);
    const auto picture = first_difference(p3.bytes, sse2.bytes);
    EXPECT_FALSE(picture) << name_of(format) << " at " << decimation << ", " << frame.width << ": "
                          << describe(*picture, sse2.width);
    const auto consumed = first_difference(p3.consumed, sse2.consumed);
    EXPECT_FALSE(consumed) << describe(*consumed, frame.width);
  }
};

TEST_F(Tiers, PicturesAreEqualAtEveryEvenWidth) {
  for (uint32_t width = 128; width < 200; width += 2)
    for (const Format format : all_formats) {
      ppl_set_mean_collection(ctx, format != Format::rgb24);
      expect_equal_pictures(format, textured_mosaic(width, 14), 0);
    }
}

TEST_F(Tiers, MirroredPicturesAreEqual) {
  for (const int mirrors : {1, 2, 3})
    for (const Format format : all_formats) {
      ppl_set_mean_collection(ctx, format != Format::rgb24);
      ppl_set_h_mirror(ctx, mirrors & 1);
      ppl_set_v_mirror(ctx, static_cast<uint8_t>(mirrors / 2));
      for (const uint32_t width : {160u, 142u, 144u, 168u})
        expect_equal_pictures(format, textured_mosaic(width, 22), 0);
    }
}

TEST_F(Tiers, HalvedAndDoubledPicturesAreEqual) {
  for (const auto &[format, decimation, width, height] :
       combinations(all_formats, std::array{1, -1}, std::array{128u, 132u, 144u, 168u, 200u},
                    std::array{22u, 24u})) {
    ppl_set_mean_collection(ctx, format != Format::rgb24);
    expect_equal_pictures(format, textured_mosaic(width, height), decimation);
  }
}

TEST_F(Tiers, MonochromePicturesAreEqualButForDoubling) {
  ppl_set_quality(ctx, 13);
  ppl_set_mean_collection(ctx, 0);
  for (const Format format : {Format::i420, Format::rgb24}) {
    for (const int32_t decimation : {0, 1})
      for (const uint32_t width : {128u, 144u, 168u})
        expect_equal_pictures(format, textured_mosaic(width, 24), decimation);
    const Mosaic frame = textured_mosaic(128, 24);
    EXPECT_NE(run_on(Tier::p3, format, frame, -1).bytes,
              run_on(Tier::sse2, format, frame, -1).bytes)
        << "runs of 8 and of 16";
  }
}

struct Counted {
  uint32_t n_qual, n_qAE;
  std::array<uint32_t, 3> qual, qAE, whole;
  std::vector<uint32_t> histograms;
};

std::array<uint32_t, 3> copy_of(const PplTriple *triple) {
  return {triple->r, triple->g, triple->b};
}

Counted read(PplContext *ctx) {
  Counted counted{ppl_n_qual_2x2_whole_frame(ctx),
                  ppl_n_qAE_2x2_whole_frame(ctx),
                  copy_of(ppl_qual_rgb_means_whole_frame(ctx)),
                  copy_of(ppl_qAE_rgb_means_whole_frame(ctx)),
                  copy_of(ppl_rgb_means_whole_frame(ctx)),
                  {}};
  for (const uint32_t *histogram :
       {ppl_r_histogram(ctx), ppl_g_histogram(ctx), ppl_b_histogram(ctx)})
    counted.histograms.insert(counted.histograms.end(), histogram, histogram + 256);
  return counted;
}

// Mostly near-grey cells, so that some qualify and some do not.
Mosaic greyish_mosaic(uint32_t width, uint32_t height) {
  return mosaic(width, height, [](uint32_t x, uint32_t y) {
    const uint32_t level = (x / 2 * 13 + y / 2 * 29) % 200;
    return level + (x * 7 + y * 11) % 40;
  });
}

TEST_F(Tiers, QualificationAgreesAndHistogramsDifferInTheirWeights) {
  for (const uint32_t width : {128u, 130u, 136u, 144u, 160u, 176u}) {
    const Mosaic frame = greyish_mosaic(width, 26);
    run_on(Tier::p3, Format::i420, frame);
    const Counted p3 = read(ctx);
    run_on(Tier::sse2, Format::i420, frame);
    const Counted sse2 = read(ctx);
    EXPECT_GT(p3.n_qual, 0u);
    EXPECT_LT(p3.n_qual, width / 2 * 13);
    EXPECT_EQ(p3.n_qual, sse2.n_qual) << width;
    EXPECT_EQ(p3.qual, sse2.qual) << width;
    EXPECT_NE(p3.histograms, sse2.histograms);
    for (const uint32_t bin : p3.histograms) ASSERT_EQ(bin % 4, 0u);
    for (const uint32_t bin : sse2.histograms) ASSERT_EQ(bin % 8, 0u);
  }
}

TEST_F(Tiers, WithAnIdentityCurveExposureAgrees) {
  ppl_set_gamma(ctx, -17);
  ASSERT_EQ(ppl_set_qAE_RGB_min_max(ctx, 60, 150), 1);
  for (const uint32_t width : {128u, 130u, 136u, 144u, 160u, 176u}) {
    const Mosaic frame = greyish_mosaic(width, 26);
    run_on(Tier::p3, Format::i420, frame);
    const Counted p3 = read(ctx);
    run_on(Tier::sse2, Format::i420, frame);
    const Counted sse2 = read(ctx);
    EXPECT_GT(p3.n_qAE, 0u);
    EXPECT_EQ(p3.n_qAE, sse2.n_qAE);
    EXPECT_EQ(p3.qAE, sse2.qAE);
    EXPECT_EQ(p3.whole, sse2.whole);
  }
}

TEST_F(Tiers, OtherwiseExposureDependsOnTheGroupWidth) {
  // Columns 8 to 15 of every 32 are 50, which the curve makes 200; all else is 0. They are group 1
  // of a block on the P3 tier, and in group 0 on the SSE2 tier. Of 4 cells in a vector's 16
  // columns two hold 50: per 32 columns the P3 tier adds 2 * 50 of 8 cells, the SSE2 tier 2 * 200.
  uint8_t table[256];
  for (int i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(i == 50 ? 200 : i);
  ppl_copy_rgb_gamma_table(ctx, table);
  const Mosaic frame =
      mosaic(128, 24, [](uint32_t x, uint32_t) { return x % 32 / 8 == 1 ? 50 : 0; });
  run_on(Tier::p3, Format::i420, frame);
  EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->r, 2u * 50 * 256 / 8);
  run_on(Tier::sse2, Format::i420, frame);
  EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->r, 2u * 200 * 256 / 8);
}

// ---- What the P3 tier's RGB24 passes do while they gather

class P3Rgb24 : public RawFrameTest {
 protected:
  void SetUp() override {
    RawFrameTest::SetUp();
    make_colour_neutral();
    uint8_t identity[256];
    for (int i = 0; i < 256; ++i) identity[i] = static_cast<uint8_t>(i);
    ppl_copy_yuv_gamma_table(ctx, identity);
    use_tier(Tier::p3);
  }
  Picture run_at(int32_t decimation, const Mosaic &frame, size_t bytes_behind = 0) {
    Run how;
    how.decimation = decimation;
    how.bytes_behind = bytes_behind;
    return run(Format::rgb24, frame, how);
  }
};

TEST_F(P3Rgb24, CountsTheGreenOfTheBlueLineAsRed) {
  struct Row {
    uint32_t quality;
    int32_t decimation;
    uint32_t red;
  };
  for (const Row &row : {Row{3, 0, 20},
                         {3, -1, 20},
                         {3, 1, 80},
                         {3, 2, 80},
                         {13, 0, 80},
                         {13, 1, 20},
                         {13, 2, 20},
                         {13, -1, 20}}) {
    SCOPED_TRACE("quality " + std::to_string(row.quality) + " at " +
                 std::to_string(row.decimation));
    ppl_set_quality(ctx, row.quality);
    run_at(row.decimation, cell_mosaic(128, 24, 10, 20, 40, 80), 65536);
    EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->r, row.red * 256);
    EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->g, 30u * 256);
    EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->b, 10u * 256);
  }
}

TEST_F(P3Rgb24, OtherSumsAreRight) {
  run_at(0, cell_mosaic(128, 24, 90, 100, 100, 110));
  EXPECT_EQ(ppl_qAE_rgb_means_whole_frame(ctx)->r, 110u * 256);
  EXPECT_EQ(ppl_qual_rgb_means_whole_frame(ctx)->r, 110u * 256);
  EXPECT_EQ(ppl_n_qual_2x2_whole_frame(ctx), 4u * 6 * 32);
}

// A flat level of 65: the sum of four is 260, binary 100000100. An even column's sample becomes
// (65 + 256 * 65) AND 260 = 256 in the first cell of a group of eight columns and 0 in the others.
TEST_F(P3Rgb24, LosesItsMaskAtTheFirstSampledGroup) {
  const Picture picture = run_at(0, flat_mosaic(128, 24, 65));
  for (size_t line = 0; line < 24; ++line)
    for (size_t x = 0; x < 128; ++x) {
      Pixel expected{65, 65, 65};
      const bool garbled = line >= 4 || (line >= 2 && x >= 8);
      if (garbled) {
        // B and Gr are 256 in the first cell: green averages (65 + 256 + 1) / 2 = 161. Elsewhere
        // they are 0, and green averages 33.
        const bool first = x % 8 < 2;
        expected.b = first ? 255 : 0;
        if (x % 2 == line % 2) {
          expected.g = first ? 161 : 33;
        } else if (line % 2 == 1) {
          expected.g = first ? 255 : 0;
        }
      }
      ASSERT_EQ(picture.pixel(x, line), expected) << x << ", " << line;
    }
  EXPECT_TRUE(all_equal(picture.consumed.data(), picture.consumed.size(), 65))
      << "the raw frame is not touched by it";
}

TEST_F(P3Rgb24, SpreadsGarbledValuesAsWholeWords) {
  // Level 255: the sum is 1020, binary 1111111100. B becomes 1020 in the first cell of a group,
  // and 64 * 1020 + 32 wraps negative, so blue is 0 there as elsewhere; green averages
  // (255 + 1020 + 1) / 2 = 638, which wraps too; in other cells it is 128.
  const Picture picture = run_at(0, flat_mosaic(128, 24, 255));
  EXPECT_EQ(picture.pixel(0, 2), (Pixel{255, 255, 255}));
  EXPECT_EQ(picture.pixel(8, 2), (Pixel{255, 0, 0}));
  EXPECT_EQ(picture.pixel(9, 2), (Pixel{255, 255, 0}));
  EXPECT_EQ(picture.pixel(8, 3), (Pixel{255, 0, 0}));
  EXPECT_EQ(picture.pixel(10, 2), (Pixel{255, 128, 0}));
}

TEST_F(P3Rgb24, DoublesTheGarbledPicture) {
  const Picture plain = run_at(0, textured_mosaic(128, 24));
  const Picture doubled = run_at(-1, textured_mosaic(128, 24));
  // Source columns stand on odd columns, source lines on odd lines.
  for (size_t line = 0; line < 24; ++line)
    for (size_t x = 0; x < 128; ++x)
      ASSERT_EQ(doubled.pixel(2 * x + 1, 2 * line + 1), plain.pixel(x, line)) << x << ", " << line;
}

TEST_F(P3Rgb24, StartsEveryFrameWithAFreshMask) {
  const Picture first = run_at(0, flat_mosaic(128, 24, 65));
  EXPECT_EQ(run_at(0, flat_mosaic(128, 24, 65)).bytes, first.bytes);
}

TEST_F(P3Rgb24, IsCleanWithoutCollection) {
  ppl_set_mean_collection(ctx, 0);
  const Picture picture = run_at(0, flat_mosaic(128, 24, 65));
  EXPECT_TRUE(all_equal(picture.bytes.data(), picture.bytes.size(), 65));
}

TEST_F(P3Rgb24, IsCleanAtHalfSizeOfTheDefaultPipeline) {
  const Picture picture = run_at(1, flat_mosaic(128, 24, 65));
  EXPECT_TRUE(all_equal(picture.bytes.data(), picture.bytes.size(), 65));
}

TEST_F(P3Rgb24, IsCleanInUnscaledMonochrome) {
  ppl_set_quality(ctx, 13);
  const Picture picture = run_at(0, flat_mosaic(128, 24, 65));
  EXPECT_TRUE(all_equal(picture.bytes.data(), picture.bytes.size(), 65));
}

TEST_F(P3Rgb24, GarblesHalvedMonochromeInStepsOfTwoBlocks) {
  // A step takes four lines by 32 columns, its first line pair first. The mask goes in the second
  // pair of the first step, at its second group, and stays lost: also for the first pair of the
  // next step. Garbled outputs are 256 held at 255 in the first of four, 0 in the others.
  ppl_set_quality(ctx, 13);
  const Picture picture = run_at(1, flat_mosaic(128, 24, 65));
  for (size_t line = 0; line < 12; ++line)
    for (size_t x = 0; x < 64; ++x) {
      const bool clean = (line == 0 && x < 16) || (line == 1 && x < 4);
      const uint8_t value = clean ? 65 : x % 4 == 0 ? 255 : 0;
      ASSERT_EQ(picture.pixel(x, line), (Pixel{value, value, value})) << x << ", " << line;
    }
}

TEST_F(P3Rgb24, TheSse2TierIsClean) {
  if (!use_tier(Tier::sse2)) GTEST_SKIP() << "no SSE2 tier on this processor";
  const Picture picture = run_at(0, flat_mosaic(128, 24, 65));
  EXPECT_TRUE(all_equal(picture.bytes.data(), picture.bytes.size(), 65));
  run_at(0, cell_mosaic(128, 24, 10, 20, 40, 80));
  EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->r, 80u * 256);
}

TEST_F(P3Rgb24, ALoneLastGroupSetsTheMaskBeforeItsOwnOutput) {
  // Width 130: group 16 of the sampled pair has two columns and no sampled cell, so its vector's R
  // sum is 0: its own first cell loses its even columns, and so does all that follows until the
  // next sampled group.
  const Picture picture = run_at(0, flat_mosaic(130, 24, 65));
  EXPECT_EQ(picture.pixel(120, 2), (Pixel{65, 161, 255})) << "the mask of the group before";
  EXPECT_EQ(picture.pixel(128, 2), (Pixel{65, 33, 0}));
  EXPECT_EQ(picture.pixel(129, 2), (Pixel{65, 65, 0}));
  EXPECT_EQ(picture.pixel(0, 4), (Pixel{65, 33, 0})) << "the next line pair still has mask 0";
  EXPECT_EQ(picture.pixel(128, 4), (Pixel{65, 33, 0}));
  EXPECT_EQ(picture.pixel(0, 6), (Pixel{65, 33, 0})) << "group 0 of the next sampled pair too";
  EXPECT_EQ(picture.pixel(8, 6), (Pixel{65, 161, 255}));
}

}  // namespace
}  // namespace ppl_test
