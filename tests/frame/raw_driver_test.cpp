// The frame drivers of raw frames: geometry test, clearing, tier choice, result.
#include <gtest/gtest.h>

#include <vector>

#include "context/context.h"
#include "support/raw_frame.h"

namespace ppl_test {
namespace {

namespace hooks = ppl::test_hooks;

class RawDriverTest : public RawFrameTest {
 protected:
  // Flat at 100, but for the sampled cell at column 2 of line pair 1, which is far from grey. It
  // counts as 0 in a mean of four cells on the P3 tier (bin 75) and of eight on the SSE2 tier (87).
  static Mosaic frame_that_tells_the_tier() {
    Mosaic frame = flat_mosaic(128, 24, 100);
    frame.samples[3 * 128 + 3] = 200;
    return frame;
  }
  Tier tier_that_ran() const {
    const bool p3 = ppl_r_histogram(ctx)[75] != 0, sse2 = ppl_r_histogram(ctx)[87] != 0;
    EXPECT_NE(p3, sse2);
    return p3 ? Tier::p3 : Tier::sse2;
  }

  struct Statistics {
    std::vector<uint32_t> words;
    bool operator==(const Statistics &) const = default;
  };
  Statistics statistics() const {
    Statistics all;
    const auto add = [&](const PplTriple *triple) {
      all.words.insert(all.words.end(), {triple->r, triple->g, triple->b});
    };
    for (int i = 0; i < 48; ++i) add(ppl_rgb_means_sub_windows(ctx) + i);
    add(ppl_rgb_means_outside_all_sub_windows(ctx));
    add(ppl_rgb_means_all_sub_windows(ctx));
    add(ppl_rgb_means_whole_frame(ctx));
    add(ppl_qAE_rgb_means_whole_frame(ctx));
    add(ppl_qual_rgb_means_whole_frame(ctx));
    all.words.push_back(ppl_n_qAE_2x2_whole_frame(ctx));
    all.words.push_back(ppl_n_qual_2x2_whole_frame(ctx));
    for (const uint32_t *histogram :
         {ppl_r_histogram(ctx), ppl_g_histogram(ctx), ppl_b_histogram(ctx)})
      all.words.insert(all.words.end(), histogram, histogram + 256);
    return all;
  }
  bool all_statistics_are_zero() const {
    for (const uint32_t word : statistics().words)
      if (word != 0) return false;
    return true;
  }
};

bool drops_first_frame(Format format) { return !is_rgb(format); }

TEST_F(RawDriverTest, YuvFormatsDropTheFrameThatBringsANewSize) {
  for (const Format format : {Format::i420, Format::yuyv, Format::uyvy}) {
    SCOPED_TRACE(name_of(format));
    ASSERT_EQ(ppl_new_frame_size(ctx, 256, 48, 256), 1);
    const Statistics before = statistics();
    const uint32_t n_frame = ppl_n_frame(ctx);
    Run how;
    how.set_size = false;
    const Mosaic frame = flat_mosaic(128, 24, 90);
    const Picture dropped = run(format, frame, how);
    EXPECT_EQ(dropped.result, 0);
    EXPECT_TRUE(all_equal(dropped.bytes.data(), dropped.bytes.size(), untouched));
    EXPECT_EQ(dropped.consumed, frame.samples);
    EXPECT_EQ(ppl_n_frame(ctx), n_frame);
    EXPECT_EQ(statistics(), before) << "a stopped frame leaves the statistics of the last one";
    EXPECT_EQ(ctx->frame_width, 128);

    const Picture second = run(format, frame, how);
    EXPECT_EQ(second.result, 1);
    EXPECT_EQ(ppl_n_frame(ctx), n_frame + 1);
    for (size_t line = 0; line < 24; ++line)
      for (size_t x = 0; x < 128; ++x) ASSERT_EQ(second.y(x, line), second.y(0, 0));
    EXPECT_NE(second.bytes, dropped.bytes);
  }
}

TEST_F(RawDriverTest, RgbFormatsRunTheFrameThatBringsANewSize) {
  for (const Format format : {Format::rgb24, Format::rgb32}) {
    SCOPED_TRACE(name_of(format));
    ASSERT_EQ(ppl_new_frame_size(ctx, 256, 48, 256), 1);
    make_colour_neutral();
    const uint32_t n_frame = ppl_n_frame(ctx);
    Run how;
    how.set_size = false;
    const Picture picture = run(format, flat_mosaic(128, 24, 90), how);
    EXPECT_EQ(picture.result, 1);
    EXPECT_EQ(ppl_n_frame(ctx), n_frame + 1);
    EXPECT_EQ(ctx->frame_width, 128);
    EXPECT_EQ(picture.pixel(0, 0), (Pixel{90, 90, 90}));
  }
}

TEST_F(RawDriverTest, YuvFormatsRunARefusedSizeWithTheOldGeometry) {
  for (const Format format : {Format::i420, Format::yuyv, Format::uyvy})
    for (const auto &[width, height, stride] :
         {std::tuple{1288u, 24u, 1288u}, {128u, 1026u, 128u}, {128u, 24u, 1281u}}) {
      SCOPED_TRACE(std::string(name_of(format)) + " " + std::to_string(width));
      const Mosaic frame = textured_mosaic(128, 24);
      const Picture expected = run(format, frame);
      ASSERT_EQ(expected.result, 1);

      // The same samples at the start of the larger buffer: the old geometry finds them there.
      GuardedBuffer source(size_t{std::max(width, stride)} * height, Placement::ends_at_guard);
      memcpy(source.data(), frame.samples.data(), frame.samples.size());
      GuardedBuffer output(picture_bytes(format, width, height), Placement::ends_at_guard);
      const uint32_t n_frame = ppl_n_frame(ctx);
      EXPECT_EQ(raw_driver(format)(ctx, source.data(), output.data(), width, height, stride), 1);
      EXPECT_EQ(ppl_n_frame(ctx), n_frame + 1);
      EXPECT_EQ(ctx->frame_width, 128);
      EXPECT_EQ(ctx->frame_height, 24);
      EXPECT_EQ(ctx->frame_stride, 128);
      EXPECT_EQ(memcmp(output.data(), expected.bytes.data(), expected.bytes.size()), 0);
      EXPECT_TRUE(all_equal(output.data() + expected.bytes.size(),
                            output.size() - expected.bytes.size(), untouched));
    }
}

TEST_F(RawDriverTest, RgbFormatsRefuseASizeAboveTheLimits) {
  for (const Format format : {Format::rgb24, Format::rgb32})
    for (const auto &[width, height, stride] :
         {std::tuple{1288u, 24u, 1288u}, {128u, 1026u, 128u}, {128u, 24u, 1281u}}) {
      ASSERT_EQ(run(format, flat_mosaic(128, 24, 90)).result, 1);
      const Statistics before = statistics();
      const uint32_t n_frame = ppl_n_frame(ctx);
      GuardedBuffer source(size_t{std::max(width, stride)} * height, Placement::ends_at_guard);
      GuardedBuffer output(picture_bytes(format, width, height), Placement::ends_at_guard);
      EXPECT_EQ(raw_driver(format)(ctx, source.data(), output.data(), width, height, stride), 0);
      EXPECT_TRUE(all_equal(output.data(), output.size(), untouched));
      EXPECT_TRUE(all_equal(source.data(), source.size(), untouched)) << "the raw frame changed";
      EXPECT_EQ(statistics(), before);
      EXPECT_EQ(ppl_n_frame(ctx), n_frame);
    }
}

TEST_F(RawDriverTest, ASizeWithoutAPlanNeverProducesAFrame) {
  // 60 columns leave no cell of the statistics grid on any tier, 10 lines neither; 12 and 16 lines
  // leave nothing between the margins of some chain.
  for (const auto &[width, height] : {std::pair{60u, 24u}, {128u, 10u}, {128u, 12u}, {128u, 16u}})
    for (const Format format : all_formats) {
      SCOPED_TRACE(std::string(name_of(format)) + " " + std::to_string(width) + " by " +
                   std::to_string(height));
      ASSERT_EQ(run(format, flat_mosaic(128, 24, 90)).result, 1);
      const Statistics before = statistics();
      const uint32_t n_frame = ppl_n_frame(ctx);
      GuardedBuffer source(size_t{128} * 24, Placement::ends_at_guard);
      GuardedBuffer output(picture_bytes(format, 128, 24), Placement::ends_at_guard);
      EXPECT_EQ(raw_driver(format)(ctx, source.data(), output.data(), width, height, width), 0);
      EXPECT_TRUE(all_equal(output.data(), output.size(), untouched));
      EXPECT_TRUE(all_equal(source.data(), source.size(), untouched));
      EXPECT_EQ(statistics(), before);
      EXPECT_EQ(ppl_n_frame(ctx), n_frame);
      EXPECT_EQ(ctx->frame_width, 128);
    }
}

TEST_F(RawDriverTest, AContextWithoutASizeTouchesNothing) {
  ctx->rgb_means_whole_frame.r = 77;  // would be cleared
  for (const Format format : all_formats)
    for (const uint32_t width : {0u, 2000u}) {
      SCOPED_TRACE(std::string(name_of(format)) + " asked for " + std::to_string(width));
      GuardedBuffer source(4096, Placement::ends_at_guard);
      GuardedBuffer output(4096, Placement::ends_at_guard);
      EXPECT_EQ(raw_driver(format)(ctx, source.data(), output.data(), width, width, width), 0);
      EXPECT_TRUE(all_equal(output.data(), output.size(), untouched));
      EXPECT_TRUE(all_equal(source.data(), source.size(), untouched));
      EXPECT_EQ(ppl_n_frame(ctx), 0u);
      EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->r, 77u);
      EXPECT_TRUE(x87_is_clean());
    }
}

TEST_F(RawDriverTest, AlignedBuffersRunTheSse2Tier) {
  if (!has_tier(Tier::sse2)) GTEST_SKIP() << "no SSE2 tier on this processor";
  for (const Format format : all_formats) {
    ASSERT_EQ(run(format, frame_that_tells_the_tier()).result, 1);
    EXPECT_EQ(tier_that_ran(), Tier::sse2) << name_of(format);
  }
}

TEST_F(RawDriverTest, EightByteAlignmentOfEitherBufferRunsTheP3Tier) {
  for (const auto &[source_alignment, output_alignment] : {std::pair{8u, 0u}, {0u, 8u}, {8u, 8u}})
    for (const Format format : all_formats) {
      Run how;
      how.source_alignment = source_alignment;
      how.output_alignment = output_alignment;
      ASSERT_EQ(run(format, frame_that_tells_the_tier(), how).result, 1);
      EXPECT_EQ(tier_that_ran(), Tier::p3) << name_of(format);
    }
}

TEST_F(RawDriverTest, P3OnlyRunsTheP3Tier) {
  for (const int flag : {1, 2, 255})
    for (const Format format : all_formats) {
      ppl_set_P3_only(ctx, static_cast<uint8_t>(flag));
      ASSERT_EQ(run(format, frame_that_tells_the_tier()).result, 1);
      EXPECT_EQ(tier_that_ran(), Tier::p3) << name_of(format);
    }
}

TEST_F(RawDriverTest, AProcessorWithoutSse2RunsTheP3Tier) {
  const FakeProcessor old(p3_processor);
  for (const Format format : all_formats) {
    ASSERT_EQ(run(format, frame_that_tells_the_tier()).result, 1);
    EXPECT_EQ(tier_that_ran(), Tier::p3) << name_of(format);
  }
}

TEST_F(RawDriverTest, TheTierIsChosenAnewForEachFrame) {
  if (!has_tier(Tier::sse2)) GTEST_SKIP() << "no SSE2 tier on this processor";
  for (const int flag : {0, 1, 0, 1}) {
    ppl_set_P3_only(ctx, static_cast<uint8_t>(flag));
    ASSERT_EQ(run(Format::i420, frame_that_tells_the_tier()).result, 1);
    EXPECT_EQ(tier_that_ran(), flag != 0 ? Tier::p3 : Tier::sse2);
  }
}

TEST_F(RawDriverTest, AlignmentOfTheChromaPlanesPlaysNoPart) {
  if (!has_tier(Tier::sse2)) GTEST_SKIP() << "no SSE2 tier on this processor";
  // 130 by 22 is 2860, which is 12 modulo 16: so the U plane stands off the boundary.
  Mosaic frame = flat_mosaic(130, 22, 100);
  frame.samples[3 * 130 + 3] = 200;
  ASSERT_EQ(run(Format::i420, frame).result, 1);
  EXPECT_EQ(tier_that_ran(), Tier::sse2);
}

TEST_F(RawDriverTest, AnEmptyQualityClearsAllStatistics) {
  for (const Format format : all_formats)
    for (const uint32_t quality : {5u, 6u, 7u, 8u}) {
      ppl_set_quality(ctx, 3);
      ASSERT_EQ(run(Format::i420, flat_mosaic(128, 24, 90)).result, 1);
      ASSERT_FALSE(all_statistics_are_zero());
      ppl_set_quality(ctx, quality);
      EXPECT_EQ(run(format, flat_mosaic(128, 24, 90)).result, 1);
      EXPECT_TRUE(all_statistics_are_zero()) << name_of(format) << " at quality " << quality;
    }
}

TEST_F(RawDriverTest, StatisticsAreThoseOfTheLastFrameAlone) {
  for (int repeat = 0; repeat < 3; ++repeat) {
    ASSERT_EQ(run(Format::i420, flat_mosaic(128, 24, 90)).result, 1);
    const Statistics first = statistics();
    ASSERT_EQ(run(Format::i420, flat_mosaic(128, 24, 200)).result, 1);
    ASSERT_EQ(run(Format::i420, flat_mosaic(128, 24, 90)).result, 1);
    EXPECT_EQ(statistics(), first);
  }
}

TEST_F(RawDriverTest, AStrideVariantIsANewSizeForThePlainEntry) {
  GuardedBuffer source(128 * 2 * 24, Placement::ends_at_guard);
  GuardedBuffer output(256 * 48 * 3 / 2, Placement::ends_at_guard);
  const auto stride_entry = BaylorToI420MMX_intp_1_2_stride;
  EXPECT_EQ(stride_entry(ctx, source.data(), output.data(), 128, 24), 0);
  EXPECT_EQ(ctx->frame_stride, 256);
  EXPECT_EQ(stride_entry(ctx, source.data(), output.data(), 128, 24), 1);
  EXPECT_EQ(BaylorToI420MMX(ctx, source.data(), output.data(), 128, 24), 0) << "a size change";
  EXPECT_EQ(ctx->frame_stride, 128);
  EXPECT_EQ(BaylorToI420MMX(ctx, source.data(), output.data(), 128, 24), 1);
}

TEST_F(RawDriverTest, DriversDoNotBracket) {
  for (const Format format : all_formats) {
    ASSERT_EQ(run(format, flat_mosaic(128, 24, 90)).result, 1);
    hooks::reset_counts();
    Run how;
    how.set_size = false;
    ASSERT_EQ(run(format, flat_mosaic(128, 24, 90), how).result, 1);
    EXPECT_EQ(hooks::save_count(), 0u) << name_of(format);
  }
}

TEST_F(RawDriverTest, ASizeChangeInADriverSavesOnce) {
  for (const Format format : all_formats) {
    ASSERT_EQ(ppl_new_frame_size(ctx, 256, 48, 256), 1);
    hooks::reset_counts();
    Run how;
    how.set_size = false;
    EXPECT_EQ(run(format, flat_mosaic(128, 24, 90), how).result, drops_first_frame(format) ? 0 : 1);
    EXPECT_EQ(hooks::save_count(), 1u) << name_of(format);
    EXPECT_EQ(hooks::restore_count(), 1u) << name_of(format);
  }
}

TEST_F(RawDriverTest, BlackLinesMoveThePlanesApartAndStayUntouched) {
  // With 2 and 4 black lines the luma plane has 30 lines of 128; the picture has 24, at its start.
  for (const Tier tier : both_tiers) {
    if (!use_tier(tier)) continue;
    ASSERT_EQ(ppl_new_frame_size(ctx, 128, 24, 128), 1);
    ASSERT_EQ(ppl_set_decimation(ctx, 0, 2, 4), 1);
    black_lines_in_force = 6;
    Run how;
    how.set_size = false;
    const Picture picture = run(Format::i420, flat_mosaic(128, 24, 90), how);
    ASSERT_EQ(picture.height, 30u);
    ASSERT_EQ(picture.bytes.size(), 128u * 30 * 3 / 2);
    EXPECT_FALSE(all_equal(&picture.bytes[23 * 128], 128, untouched));
    EXPECT_TRUE(all_equal(&picture.bytes[24 * 128], 6 * 128, untouched));
    for (const size_t plane : {size_t{128 * 30}, size_t{128 * 30 + 32 * 30}}) {
      EXPECT_FALSE(all_equal(&picture.bytes[plane + 11 * 64], 64, untouched));
      EXPECT_TRUE(all_equal(&picture.bytes[plane + 12 * 64], 3 * 64, untouched));
    }
    EXPECT_EQ(ppl_new_frame_size(ctx, 128, 24, 128), 1);
    ASSERT_EQ(ppl_set_decimation(ctx, 0, 0, 0), 1);
    black_lines_in_force = 0;
  }
}

}  // namespace
}  // namespace ppl_test
