// The entry functions of raw frames: what stands between a caller and the frame drivers.
#include <gtest/gtest.h>

#include <vector>

#include "context/context.h"
#include "support/combinations.h"
#include "support/raw_frame.h"
#include "support/stack_offset.h"

namespace ppl_test {
namespace {

namespace hooks = ppl::test_hooks;

// What a fallback reads and writes, in bytes.
struct FallbackSizes {
  size_t copied, grey, white;
};

// By hand: n / 4 and n / 8 truncate on their own.
FallbackSizes fallback_sizes(Format format, Variant variant, size_t n) {
  const bool down = variant == Variant::deci_2_1;
  const bool up = !down && variant != Variant::plain;
  switch (format) {
    case Format::rgb24:
      return {0, 0, down ? n / 4 * 3 : up ? n * 12 : n * 3};
    case Format::rgb32:
      return {0, 0, down ? n / 4 * 4 : up ? n * 16 : n * 4};
    default:
      return {down ? n / 4 : up ? 4 * n : n, down ? n / 8 : up ? 2 * n : n / 2, 0};
  }
}

class RawEntryTest : public RawFrameTest {
 protected:
  struct Buffers {
    GuardedBuffer source, output;
  };

  // Buffers of exactly the bytes that the fallback uses.
  static Buffers fallback_buffers(const FallbackSizes &sizes, unsigned source_alignment,
                                  unsigned output_alignment) {
    Buffers buffers{GuardedBuffer(std::max<size_t>(sizes.copied, 16),
                                  Placement::begins_behind_guard, source_alignment),
                    GuardedBuffer(sizes.copied + sizes.grey + sizes.white,
                                  Placement::begins_behind_guard, output_alignment)};
    for (size_t i = 0; i < buffers.source.size(); ++i)
      buffers.source[i] = static_cast<uint8_t>(i * 7 + i / 256);
    return buffers;
  }

  static void expect_fallback(const Buffers &buffers, const FallbackSizes &sizes) {
    const uint8_t *output = buffers.output.data();
    EXPECT_EQ(memcmp(output, buffers.source.data(), sizes.copied), 0) << "copied part";
    EXPECT_TRUE(all_equal(output + sizes.copied, sizes.grey, 128)) << "grey part";
    EXPECT_TRUE(all_equal(output + sizes.copied + sizes.grey, sizes.white, 255)) << "white part";
    EXPECT_FALSE(buffers.output.slack_damage());
    for (size_t i = 0; i < buffers.source.size(); ++i)
      ASSERT_EQ(buffers.source[i], static_cast<uint8_t>(i * 7 + i / 256)) << "source byte " << i;
    EXPECT_TRUE(x87_is_clean());
  }

  // What no fallback may change.
  struct Untouched {
    int32_t decimation;
    uint32_t n_frame, mean_r, n_qual, histogram_sum;
    int32_t frame_width, frame_height, frame_stride, out_width, out_height;
    bool operator==(const Untouched &) const = default;
  };
  Untouched look() const {
    uint32_t histogram_sum = 0;
    for (int i = 0; i < 256; ++i) histogram_sum += ppl_g_histogram(ctx)[i];
    return {ppl_decimation(ctx),
            ppl_n_frame(ctx),
            ppl_rgb_means_whole_frame(ctx)->r,
            ppl_n_qual_2x2_whole_frame(ctx),
            histogram_sum,
            ctx->frame_width,
            ctx->frame_height,
            ctx->frame_stride,
            ctx->out_width,
            ctx->out_height};
  }

  // Leaves statistics, a count and decimation 1 behind, so that a change would show.
  void run_one_frame() {
    Run how;
    how.decimation = 1;
    ASSERT_EQ(run(Format::i420, flat_mosaic(128, 24, 90), how).result, 1);
    ASSERT_NE(ppl_rgb_means_whole_frame(ctx)->r, 0u);
  }
};

TEST_F(RawEntryTest, SourceAlignedTo4OnlyTakesTheFallback) {
  const FallbackSizes sizes = fallback_sizes(Format::i420, Variant::plain, 128 * 24);
  Buffers buffers = fallback_buffers(sizes, 4, 0);
  EXPECT_EQ(BaylorToI420MMX(ctx, buffers.source.data(), buffers.output.data(), 128, 24), 0);
  expect_fallback(buffers, sizes);
}

TEST_F(RawEntryTest, OutputAlignedTo4OnlyTakesTheFallback) {
  const FallbackSizes sizes = fallback_sizes(Format::yuyv, Variant::plain, 128 * 24);
  Buffers buffers = fallback_buffers(sizes, 0, 4);
  EXPECT_EQ(BaylorToYUYVMMX(ctx, buffers.source.data(), buffers.output.data(), 128, 24), 0);
  expect_fallback(buffers, sizes);
}

TEST_F(RawEntryTest, EveryEntryFallsBackWithItsOwnSizes) {
  run_one_frame();
  const Untouched before = look();
  // 130 by 13 is 1690 pixels: n / 4 = 422, n / 8 = 211, and 4 (n / 4) = 1688 is not n.
  constexpr FrameSize frames[] = {{128, 24}, {130, 13}, {7, 3}, {1, 1}};
  struct Alignments {
    unsigned source, output;
  };
  constexpr Alignments alignments[] = {{4, 0}, {0, 4}, {1, 8}};
  for (const auto &[frame, format, variant, alignment] :
       combinations(frames, all_formats, all_variants, alignments)) {
    SCOPED_TRACE(testing::Message() << name_of(format) << " " << name_of(variant) << " "
                                    << frame.width << " by " << frame.height);
    const FallbackSizes sizes = fallback_sizes(format, variant, frame.width * frame.height);
    Buffers buffers = fallback_buffers(sizes, alignment.source, alignment.output);
    EXPECT_EQ(raw_entry(format, variant)(ctx, buffers.source.data(), buffers.output.data(),
                                         frame.width, frame.height),
              0);
    expect_fallback(buffers, sizes);
    EXPECT_EQ(look(), before) << "the fallback touched the context";
  }
}

TEST_F(RawEntryTest, FallbackOfDeci21HoldsTheFirstQuarterUnscaled) {
  GuardedBuffer source(128 * 24, Placement::ends_at_guard, 4);
  GuardedBuffer output(128 * 24 / 4 + 128 * 24 / 8, Placement::ends_at_guard);
  for (size_t i = 0; i < source.size(); ++i) source[i] = static_cast<uint8_t>(i ^ (i >> 8));
  EXPECT_EQ(BaylorToI420MMX_deci_2_1(ctx, source.data(), output.data(), 128, 24), 0);
  for (size_t i = 0; i < 768; ++i) ASSERT_EQ(output[i], source[i]) << i;
  for (size_t i = 768; i < 768 + 384; ++i) ASSERT_EQ(output[i], 128) << i;
}

TEST_F(RawEntryTest, WithoutTheP3TierRgb24IsWhite) {
  const FakeProcessor old(no_tier_processor);
  GuardedBuffer source(128 * 24, Placement::ends_at_guard);
  GuardedBuffer output(128 * 24 * 3, Placement::ends_at_guard);
  EXPECT_EQ(BaylorToRGB24MMX(ctx, source.data(), output.data(), 128, 24), 0);
  EXPECT_TRUE(all_equal(output.data(), output.size(), 255));
  EXPECT_FALSE(output.slack_damage());
}

TEST_F(RawEntryTest, AFailedSaveIsLikeAMissingTier) {
  run_one_frame();
  const Untouched before = look();
  for (const Format format : all_formats)
    for (const Variant variant : all_variants) {
      SCOPED_TRACE(std::string(name_of(format)) + " " + name_of(variant));
      const FallbackSizes sizes = fallback_sizes(format, variant, 128 * 24);
      Buffers buffers = fallback_buffers(sizes, 0, 0);
      hooks::reset_counts();
      hooks::fail_saves(0, 1);
      EXPECT_EQ(
          raw_entry(format, variant)(ctx, buffers.source.data(), buffers.output.data(), 128, 24),
          0);
      expect_fallback(buffers, sizes);
      EXPECT_EQ(look(), before);
      EXPECT_EQ(hooks::save_count(), 1u);
      EXPECT_EQ(hooks::restore_count(), 0u) << "a save that failed must not be restored";
    }
}

TEST_F(RawEntryTest, AlignmentIsTestedBeforeTheSave) {
  const FallbackSizes sizes = fallback_sizes(Format::i420, Variant::plain, 128 * 24);
  Buffers misaligned = fallback_buffers(sizes, 4, 0);
  hooks::reset_counts();
  BaylorToI420MMX(ctx, misaligned.source.data(), misaligned.output.data(), 128, 24);
  EXPECT_EQ(hooks::save_count(), 0u);
}

TEST_F(RawEntryTest, TheTierIsTestedBeforeTheSave) {
  const FakeProcessor old(no_tier_processor);
  const FallbackSizes sizes = fallback_sizes(Format::i420, Variant::plain, 128 * 24);
  Buffers buffers = fallback_buffers(sizes, 0, 0);
  hooks::reset_counts();
  BaylorToI420MMX(ctx, buffers.source.data(), buffers.output.data(), 128, 24);
  EXPECT_EQ(hooks::save_count(), 0u);
}

TEST_F(RawEntryTest, OneFrameIsOneSaveAndOneRestore) {
  ASSERT_EQ(ppl_new_frame_size(ctx, 128, 24, 128), 1);
  GuardedBuffer source(128 * 24, Placement::ends_at_guard);
  GuardedBuffer output(128 * 24 * 4, Placement::ends_at_guard);
  for (const Format format : all_formats) {
    hooks::reset_counts();
    EXPECT_EQ(raw_entry(format, Variant::plain)(ctx, source.data(), output.data(), 128, 24), 1);
    EXPECT_EQ(hooks::save_count(), 1u) << name_of(format);
    EXPECT_EQ(hooks::restore_count(), 1u) << name_of(format);
  }
}

TEST_F(RawEntryTest, GeometryChangesInsideAFrameSaveOnTheirOwn) {
  GuardedBuffer source(128 * 24, Placement::ends_at_guard);
  GuardedBuffer output(128 * 24 * 3, Placement::ends_at_guard);
  hooks::reset_counts();
  // The bracket, then decimation 1, then the new size.
  EXPECT_EQ(BaylorToRGB24MMX_deci_2_1(ctx, source.data(), output.data(), 128, 24), 1);
  EXPECT_EQ(hooks::save_count(), 3u);
  EXPECT_EQ(hooks::restore_count(), 3u);
}

TEST_F(RawEntryTest, Intp14StrideRunsAtTheDecimationInForce) {
  GuardedBuffer source(128 * 4 * 24, Placement::ends_at_guard);
  GuardedBuffer output(128 * 24 * 2, Placement::ends_at_guard);
  // Twice each: the first frame of a new size is dropped.
  BaylorToYUYVMMX_deci_2_1(ctx, source.data(), output.data(), 128, 24);
  EXPECT_EQ(BaylorToYUYVMMX_deci_2_1(ctx, source.data(), output.data(), 128, 24), 1);
  BaylorToYUYVMMX_intp_1_4_stride(ctx, source.data(), output.data(), 128, 24);
  EXPECT_EQ(ctx->frame_stride, 512);
  EXPECT_EQ(ppl_decimation(ctx), 1);
  EXPECT_EQ(ctx->out_width, 64);
  output.fill_with_poison();
  EXPECT_EQ(BaylorToYUYVMMX_intp_1_4_stride(ctx, source.data(), output.data(), 128, 24), 1);
  EXPECT_EQ(ppl_decimation(ctx), 1);
  // 64 by 12 pixels of two bytes; nothing behind them.
  EXPECT_NE(output[64 * 12 * 2 - 1], untouched);
  EXPECT_TRUE(all_equal(output.data() + 64 * 12 * 2, 128 * 24 * 2 - 64 * 12 * 2, untouched));
}

TEST_F(RawEntryTest, StrideVariantsReadLinesTwoAndFourWidthsApart) {
  make_colour_neutral();
  ppl_set_mean_collection(ctx, 0);  // the P3 tier's RGB24 pass garbles its picture while it gathers
  // The lines of the picture hold 10, 20, 30 ..., all else in the buffer 200.
  for (const uint32_t factor : {2u, 4u}) {
    const uint32_t height = 14, stride = 128 * factor;
    GuardedBuffer source(size_t{stride} * height, Placement::ends_at_guard);
    memset(source.data(), 200, source.size());
    for (uint32_t line = 0; line < height; ++line)
      memset(source.data() + size_t{line} * stride, static_cast<int>(10 * (line + 1)), 128);
    GuardedBuffer output(size_t{128} * height * 3, Placement::ends_at_guard);
    EXPECT_EQ(ppl_process_blrtorgb24(ctx, source.data(), output.data(), 128, height, stride), 1);
    for (uint32_t pair = 0; pair < height / 2; ++pair) {
      // Line 0 of the picture is the last in memory. B of a cell comes from its even line, R from
      // its odd one.
      const uint8_t *pixel = output.data() + size_t{height - 1 - 2 * pair} * 128 * 3;
      EXPECT_EQ(pixel[0], 10 * (2 * pair + 1)) << "stride " << stride << ", pair " << pair;
      EXPECT_EQ(pixel[2], 10 * (2 * pair + 2)) << "stride " << stride << ", pair " << pair;
    }
    EXPECT_TRUE(all_equal(source.data() + 128, stride - 128, 200)) << "wrote between the lines";
  }
}

TEST_F(RawEntryTest, EveryEntrySetsItsDecimationAndStride) {
  for (const Format format : all_formats)
    for (const Variant variant : all_variants) {
      SCOPED_TRACE(std::string(name_of(format)) + " " + name_of(variant));
      ASSERT_EQ(ppl_set_decimation(ctx, 0, 3, 5), 1);
      GuardedBuffer source(size_t{128} * 24 * 4, Placement::ends_at_guard);
      GuardedBuffer output(size_t{256} * 48 * 4 + 4096, Placement::ends_at_guard);
      raw_entry(format, variant)(ctx, source.data(), output.data(), 128, 24);
      EXPECT_EQ(ppl_decimation(ctx), decimation_of(variant));
      EXPECT_EQ(ctx->frame_stride, static_cast<int32_t>(128 * stride_factor(variant)));
      // The refused minus 2 leaves the black lines alone, all others set none.
      const bool refused = variant == Variant::intp_1_4_stride;
      EXPECT_EQ(ppl_decimation_top_black_lines(ctx), refused ? 3 : 0);
      EXPECT_EQ(ppl_decimation_bottom_black_lines(ctx), refused ? 5 : 0);
      EXPECT_TRUE(x87_is_clean());
    }
}

TEST_F(RawEntryTest, EightByteAlignedBuffersAreProcessed) {
  ASSERT_EQ(ppl_new_frame_size(ctx, 128, 24, 128), 1);
  for (const auto &[source_alignment, output_alignment] : {std::pair{8u, 0u}, {0u, 8u}, {8u, 8u}}) {
    GuardedBuffer source(128 * 24, Placement::ends_at_guard, source_alignment);
    GuardedBuffer output(128 * 24 * 3 / 2, Placement::ends_at_guard, output_alignment);
    EXPECT_EQ(BaylorToI420MMX(ctx, source.data(), output.data(), 128, 24), 1);
    EXPECT_TRUE(x87_is_clean());
  }
}

TEST_F(RawEntryTest, WorksAtEveryStackAlignment) {
#if PPL_TEST_HAS_STACK_OFFSETS
  for (const auto &[tier, format, variant] : combinations(both_tiers, all_formats, all_variants)) {
    if (!use_tier(tier)) continue;
    const uint32_t stride = 128 * stride_factor(variant);
    ASSERT_EQ(ppl_set_decimation(ctx, decimation_of(variant), 0, 0), 1);
    ASSERT_EQ(ppl_new_frame_size(ctx, 128, 24, stride), 1);
    std::vector<uint8_t> first;
    for (uint32_t offset = 0; offset < 16; offset += 4) {
      SCOPED_TRACE(testing::Message() << name_of(tier) << " " << name_of(format) << " "
                                      << name_of(variant) << " stack offset " << offset);
      GuardedBuffer source(size_t{stride} * 24, Placement::ends_at_guard);
      GuardedBuffer output(picture_bytes(format, 256, 48), Placement::ends_at_guard);
      for (size_t i = 0; i < source.size(); ++i) source[i] = static_cast<uint8_t>(i * 11);
      EXPECT_EQ(call_with_stack_offset(offset, raw_entry(format, variant), ctx, source.data(),
                                       output.data(), 128u, 24u),
                1);
      EXPECT_TRUE(x87_is_clean());
      if (offset == 0) first.assign(output.begin(), output.end());
      EXPECT_TRUE(std::equal(first.begin(), first.end(), output.begin()));
    }
  }
#else

  GTEST_SKIP() << "only 32-bit callers may misalign the stack";
#endif
}

}  // namespace
}  // namespace ppl_test
