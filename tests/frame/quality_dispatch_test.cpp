// The quality dispatcher: which pass runs, what counts, and the qualities that run none.
#include <gtest/gtest.h>

#include <vector>

#include "support/raw_frame.h"
#include "support/tier_state.h"

namespace ppl_test {
namespace {

using QualityDispatch = RawFrameFormatTest;

INSTANTIATE_TEST_SUITE_P(Formats, QualityDispatch,
                         ::testing::Combine(::testing::ValuesIn(both_tiers),
                                            ::testing::ValuesIn(all_formats)),
                         tier_format_name);

bool is_empty_quality(Format format, uint32_t quality) {
  if (quality >= 5 && quality <= 8) return true;
  if (quality == 13) return format != Format::i420 && format != Format::rgb24;
  if (quality == 14) return is_rgb(format);
  return false;
}

TEST_P(QualityDispatch, AnEmptyQualityLeavesBothBuffersAloneAndCountsAFrame) {
  for (uint32_t quality = 0; quality < 15; ++quality) {
    if (!is_empty_quality(format(), quality)) continue;
    for (const int32_t decimation : {0, 1, 2, -1}) {
      SCOPED_TRACE("quality " + std::to_string(quality) + " at decimation " +
                   std::to_string(decimation));
      ppl_set_quality(ctx, 3);
      ASSERT_EQ(run(format(), flat_mosaic(128, 24, 90)).result, 1);
      const uint32_t normaliser = ctx->mean_normaliser;
      const uint32_t n_frame = ppl_n_frame(ctx);
      ppl_set_quality(ctx, quality);
      const Mosaic frame = textured_mosaic(128, 24);
      Run how;
      how.decimation = decimation;
      const Picture picture = run(format(), frame, how);
      EXPECT_EQ(picture.result, 1);
      EXPECT_TRUE(all_equal(picture.bytes.data(), picture.bytes.size(), untouched));
      EXPECT_EQ(picture.consumed, frame.samples);
      EXPECT_EQ(ppl_n_frame(ctx), n_frame + 1);
      EXPECT_EQ(ctx->mean_normaliser, normaliser);
    }
  }
}

TEST_P(QualityDispatch, EveryHandledFrameCountsOne) {
  for (const uint32_t quality : {3u, 4u, 5u, 9u, 3u}) {
    ppl_set_quality(ctx, quality);
    const uint32_t before = ppl_n_frame(ctx);
    run(format(), flat_mosaic(128, 24, 90));
    EXPECT_EQ(ppl_n_frame(ctx), before + 1) << "quality " << quality;
  }
}

TEST_P(QualityDispatch, Quality3RecordsItsNormaliser) {
  ctx->mean_normaliser = 5;
  run(format(), flat_mosaic(128, 24, 90));
  EXPECT_EQ(ctx->mean_normaliser, 1024u);
}

TEST_P(QualityDispatch, Quality13RecordsZeroAndStillHasWholeFrameMeans) {
  if (is_empty_quality(format(), 13)) {
    SUCCEED() << "covered by the empty qualities";
    return;
  }
  ctx->mean_normaliser = 5;
  ppl_set_quality(ctx, 13);
  uint8_t identity[256];
  for (int i = 0; i < 256; ++i) identity[i] = static_cast<uint8_t>(i);
  ppl_copy_yuv_gamma_table(ctx, identity);
  EXPECT_EQ(run(format(), flat_mosaic(128, 24, 90)).result, 1);
  EXPECT_EQ(ctx->mean_normaliser, 0u);
  // 12 pairs, an even number: the means of a flat frame are exact.
  EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->r, 90u * 256);
  EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->g, 90u * 256);
  EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->b, 90u * 256);
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), 0u);
  EXPECT_EQ(ppl_n_qual_2x2_whole_frame(ctx), 0u);
}

// ---- The copy qualities ----

TEST_P(QualityDispatch, CopyQualitiesReturnZeroKeepTheFrameAndGatherNothing) {
  for (const uint32_t quality : {4u, 9u})
    for (const int32_t decimation : {0, 1, 2, -1}) {
      ppl_set_quality(ctx, quality);
      ctx->mean_normaliser = 5;
      const Mosaic frame = textured_mosaic(160, 24);
      Run how;
      how.decimation = decimation;
      const Picture picture = run(format(), frame, how);
      EXPECT_EQ(picture.result, 0);
      EXPECT_EQ(picture.consumed, frame.samples);
      EXPECT_EQ(ctx->mean_normaliser, 5u);
      EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->g, 0u);
      EXPECT_EQ(ppl_g_histogram(ctx)[0], 0u);
    }
}

// What the copy of one line of the picture must read, by format; `s` is the source sample.
void expect_grey(const Picture &picture, Format format, size_t x, size_t line, uint8_t s) {
  switch (format) {
    case Format::i420:
      ASSERT_EQ(picture.y(x, line), s) << x << ", " << line;
      break;
    case Format::yuyv:
    case Format::uyvy:
      ASSERT_EQ(picture.y(x, line), s) << x << ", " << line;
      ASSERT_EQ(x % 2 == 0 ? picture.u(x / 2, line) : picture.v(x / 2, line), 128);
      break;
    case Format::rgb32:
      ASSERT_EQ(picture.fourth_byte(x, picture.height - 1 - line), 0);
      [[fallthrough]];
    case Format::rgb24:
      ASSERT_EQ(picture.pixel(x, line), (Pixel{s, s, s})) << x << ", " << line;
      break;
  }
}

TEST_P(QualityDispatch, CopyIsGreyAndIgnoresTheMirrors) {
  // 128 columns: a tenth of the output width is no multiple of the block, so no marker.
  for (const uint32_t quality : {4u, 9u})
    for (const int mirrors : {0, 1, 2, 3}) {
      ppl_set_quality(ctx, quality);
      ppl_set_h_mirror(ctx, mirrors & 1);
      ppl_set_v_mirror(ctx, static_cast<uint8_t>(mirrors / 2));
      const Mosaic frame = textured_mosaic(128, 24);
      const Picture picture = run(format(), frame);
      for (size_t line = 0; line < 24; ++line)
        for (size_t x = 0; x < 128; ++x) expect_grey(picture, format(), x, line, frame.at(x, line));
      if (format() == Format::i420) {
        EXPECT_TRUE(all_equal(&picture.bytes[128 * 24], 128 * 24 / 2, 128));
      }
    }
}

TEST_P(QualityDispatch, CopyReadsOneContiguousRunWhateverTheStride) {
  ppl_set_quality(ctx, 4);
  const uint32_t stride = 256;
  ASSERT_EQ(ppl_new_frame_size(ctx, 128, 24, stride), 1);
  GuardedBuffer source(size_t{stride} * 24, Placement::ends_at_guard);
  for (size_t i = 0; i < source.size(); ++i) source[i] = static_cast<uint8_t>(i * 3 + i / 256);
  GuardedBuffer output(picture_bytes(format(), 128, 24), Placement::ends_at_guard);
  EXPECT_EQ(raw_driver(format())(ctx, source.data(), output.data(), 128, 24, stride), 0);
  const Picture picture{format(), 128, 24, 0, {output.begin(), output.end()}, {}};
  for (size_t line = 0; line < 24; ++line)
    for (size_t x = 0; x < 128; ++x)
      expect_grey(picture, format(), x, line, source[line * 128 + x]);
}

TEST_P(QualityDispatch, CopyAtDecimation1TakesEverySecondSampleOfEverySecondLine) {
  ppl_set_quality(ctx, 9);
  const uint32_t stride = 192;
  const Mosaic frame = textured_mosaic(128, 24);
  Run how;
  how.decimation = 1;
  how.stride = stride;
  const Picture picture = run(format(), frame, how);
  if (format() == Format::rgb24) {  // has no such copy
    EXPECT_TRUE(all_equal(picture.bytes.data(), picture.bytes.size(), untouched));
    return;
  }
  const size_t column = format() == Format::uyvy ? 1 : 0;  // UYVY takes the odd columns
  for (size_t line = 0; line < 12; ++line)
    for (size_t x = 0; x < 64; ++x)
      expect_grey(picture, format(), x, line, frame.at(2 * x + column, 2 * line));
  if (format() == Format::i420) {
    EXPECT_TRUE(all_equal(&picture.bytes[64 * 12], 64 * 12 / 2, 128));
  }
}

TEST_P(QualityDispatch, CopyAtOtherDecimationsWritesNothing) {
  ppl_set_quality(ctx, 4);
  for (const int32_t decimation : {2, -1}) {
    Run how;
    how.decimation = decimation;
    // A tenth of 32 or 256 is 3 or 25: no marker either.
    const Picture picture = run(format(), textured_mosaic(128, 24), how);
    EXPECT_EQ(picture.result, 0);
    EXPECT_TRUE(all_equal(picture.bytes.data(), picture.bytes.size(), untouched)) << decimation;
  }
}

// ---- Groups that a size does not fill ----

using CopyGroups = RawFrameTierTest;
INSTANTIATE_TEST_SUITE_P(Tiers, CopyGroups, ::testing::ValuesIn(both_tiers), tier_name);

TEST_P(CopyGroups, TheLastGroupOfAPackedCopyIsCopiedWhole) {
  // 136 by 13 is 1768 samples: 1776 in groups of 16 (P3 tier), 1792 in groups of 32 (SSE2 tier).
  const size_t copied = GetParam() == Tier::p3 ? 1776 : 1792;
  for (const Format format : {Format::yuyv, Format::uyvy}) {
    ppl_set_quality(ctx, 4);
    ASSERT_EQ(ppl_new_frame_size(ctx, 136, 13, 136), 1);
    GuardedBuffer source(1792, Placement::ends_at_guard);
    for (size_t i = 0; i < source.size(); ++i) source[i] = static_cast<uint8_t>(i * 5 + i / 256);
    GuardedBuffer output(1792 * 2 + 16, Placement::ends_at_guard);
    EXPECT_EQ(raw_driver(format)(ctx, source.data(), output.data(), 136, 13, 136), 0);
    const size_t luma = format == Format::yuyv ? 0 : 1;
    for (size_t i = 0; i < copied; ++i) {
      ASSERT_EQ(output[2 * i + luma], source[i]) << i;
      ASSERT_EQ(output[2 * i + 1 - luma], 128) << i;
    }
    EXPECT_TRUE(all_equal(output.data() + 2 * copied, output.size() - 2 * copied, untouched));
  }
}

TEST_P(CopyGroups, TheChromaFillOfI420IsRoundedUpToItsStep) {
  // U starts at 1768; 884 bytes of 128 become 888 in steps of 8 and 896 in steps of 16. The luma
  // that ran over into U is filled over.
  const size_t filled = GetParam() == Tier::p3 ? 888 : 896;
  ppl_set_quality(ctx, 4);
  ASSERT_EQ(ppl_new_frame_size(ctx, 136, 13, 136), 1);
  GuardedBuffer source(1792, Placement::ends_at_guard);
  for (size_t i = 0; i < source.size(); ++i) source[i] = static_cast<uint8_t>(i * 5 + i / 256);
  GuardedBuffer output(1768 + 896 + 16, Placement::ends_at_guard);
  EXPECT_EQ(ppl_process_blrtoi420(ctx, source.data(), output.data(), 136, 13, 136), 0);
  EXPECT_EQ(memcmp(output.data(), source.data(), 1768), 0);
  EXPECT_TRUE(all_equal(output.data() + 1768, filled, 128));
  EXPECT_TRUE(all_equal(output.data() + 1768 + filled, output.size() - 1768 - filled, untouched));
}

TEST_P(CopyGroups, RgbCopiesFillWholeLinesFromTheLastUpwards) {
  ppl_set_quality(ctx, 4);
  for (const Format format : {Format::rgb24, Format::rgb32}) {
    ASSERT_EQ(ppl_new_frame_size(ctx, 132, 22, 132), 1);
    ASSERT_EQ(ppl_set_decimation(ctx, 0, 1, 2), 1);
    black_lines_in_force = 3;
    Run how;
    how.set_size = false;
    const Mosaic frame = textured_mosaic(132, 22);
    const Picture picture = run(format, frame, how);
    for (size_t line = 0; line < 22; ++line)
      for (size_t x = 0; x < 132; ++x) expect_grey(picture, format, x, line, frame.at(x, line));
    // The black lines are the first in memory, and nothing writes them.
    EXPECT_TRUE(all_equal(picture.bytes.data(), 3 * 132 * picture.bytes_per_pixel(), untouched));
    ASSERT_EQ(ppl_set_decimation(ctx, 0, 0, 0), 1);
  }
}

// ---- The I420 marker ----

class CopyMarker : public RawFrameTierTest {
 protected:
  // Position of the V plane's first byte of value 255, as (x, y) of the plane; checks that the
  // block is `columns` by `lines` and everything else 128.
  std::pair<size_t, size_t> marker_position(const Picture &picture, size_t columns, size_t lines) {
    const size_t pitch = picture.width / 2;
    const uint8_t *plane = &picture.bytes[picture.size() + picture.size() / 4];
    const size_t plane_bytes = picture.size() / 4;
    size_t first = 0;
    while (first < plane_bytes && plane[first] != 255) ++first;
    const size_t left = first % pitch, top = first / pitch;
    for (size_t i = 0; i < plane_bytes; ++i) {
      const size_t x = i % pitch, y = i / pitch;
      const bool inside = x >= left && x < left + columns && y >= top && y < top + lines;
      EXPECT_EQ(plane[i], inside ? 255 : 128) << "V plane at " << x << ", " << y;
      if (plane[i] != (inside ? 255 : 128)) break;
    }
    return {left, top};
  }
  int32_t marker_cell(Tier tier) { return tier_state(ctx, tier).memory.marker_cell; }
  static Tier other(Tier tier) { return tier == Tier::p3 ? Tier::sse2 : Tier::p3; }
};
INSTANTIATE_TEST_SUITE_P(Tiers, CopyMarker, ::testing::ValuesIn(both_tiers), tier_name);

TEST_P(CopyMarker, WalksThroughFiveColumnsAndSixRowsOfTheVPlane) {
  // 160 by 24: a tenth of the width is 16, a twelfth of the height is 2. The V plane is 80 by 12.
  const int32_t other_marker = marker_cell(other(GetParam()));
  for (const uint32_t quality : {4u, 9u}) {
    ppl_set_quality(ctx, quality);
    for (size_t cell = 0; cell < 30; ++cell) {
      const Picture picture = run(Format::i420, flat_mosaic(160, 24, 60));
      EXPECT_EQ(marker_position(picture, 16, 2), (std::pair{cell % 5 * 16, cell / 5 * 2}))
          << "frame " << cell;
      EXPECT_TRUE(all_equal(&picture.bytes[picture.size()], picture.size() / 4, 128)) << "U plane";
    }
    EXPECT_EQ(marker_cell(GetParam()), 0) << "after 30 frames";
  }
  EXPECT_EQ(marker_cell(other(GetParam())), other_marker);
}

TEST_P(CopyMarker, IsPaintedAtAWidthOf640) {
  ppl_set_quality(ctx, 4);
  const Picture picture = run(Format::i420, flat_mosaic(640, 480, 60));
  EXPECT_EQ(marker_position(picture, 64, 40), (std::pair<size_t, size_t>{0, 0}));
  EXPECT_EQ(marker_cell(GetParam()), 1);
}

TEST_P(CopyMarker, IsNotPaintedAtAWidthOf352) {
  ppl_set_quality(ctx, 4);  // a tenth is 35
  const Picture picture = run(Format::i420, flat_mosaic(352, 24, 60));
  EXPECT_TRUE(all_equal(&picture.bytes[picture.size()], picture.size() / 2, 128));
  EXPECT_EQ(marker_cell(GetParam()), 0) << "stands still";
}

TEST_P(CopyMarker, NeedsWholeBlocksOfTheTier) {
  ppl_set_quality(ctx, 4);  // a tenth of 240 is 24: whole blocks of 8, not of 16
  const Picture picture = run(Format::i420, flat_mosaic(240, 24, 60));
  if (GetParam() == Tier::p3) {
    EXPECT_EQ(marker_position(picture, 24, 2), (std::pair<size_t, size_t>{0, 0}));
  } else {
    EXPECT_TRUE(all_equal(&picture.bytes[picture.size()], picture.size() / 2, 128));
  }
  EXPECT_EQ(marker_cell(GetParam()), GetParam() == Tier::p3 ? 1 : 0);
}

TEST_P(CopyMarker, IsAllThatChangesAtDecimation2) {
  // 640 by 48 at decimation 2 is 160 by 12: U at 1920, V at 2400, marker of 16 by 1.
  ppl_set_quality(ctx, 4);
  Run how;
  how.decimation = 2;
  for (size_t cell : {0u, 1u}) {
    const Picture picture = run(Format::i420, flat_mosaic(640, 48, 60), how);
    EXPECT_EQ(picture.result, 0);
    for (size_t i = 0; i < picture.bytes.size(); ++i) {
      const bool marked = i >= 2400 + cell * 16 && i < 2400 + cell * 16 + 16;
      ASSERT_EQ(picture.bytes[i], marked ? 255 : untouched) << i;
    }
  }
}

TEST_P(CopyMarker, IsAllThatChangesAtDecimationMinus1) {
  // 320 by 24 doubled is 640 by 48: U at 30720, V at 38400 with a pitch of 320, marker of 64 by 4.
  ppl_set_quality(ctx, 4);
  Run how;
  how.decimation = -1;
  const Picture picture = run(Format::i420, flat_mosaic(320, 24, 60), how);
  for (size_t i = 0; i < picture.bytes.size(); ++i) {
    const bool marked = i >= 38400 && (i - 38400) / 320 < 4 && (i - 38400) % 320 < 64;
    ASSERT_EQ(picture.bytes[i], marked ? 255 : untouched) << i;
  }
}

TEST_P(CopyMarker, SurvivesASizeChange) {
  ppl_set_quality(ctx, 4);
  run(Format::i420, flat_mosaic(160, 24, 60));
  run(Format::i420, flat_mosaic(320, 48, 60));
  EXPECT_EQ(marker_cell(GetParam()), 2);
}

TEST_P(CopyMarker, BelongsToI420Alone) {
  ppl_set_quality(ctx, 4);
  for (const Format format : {Format::yuyv, Format::uyvy, Format::rgb24, Format::rgb32})
    run(format, flat_mosaic(160, 24, 60));
  EXPECT_EQ(marker_cell(GetParam()), 0);
}

}  // namespace
}  // namespace ppl_test
