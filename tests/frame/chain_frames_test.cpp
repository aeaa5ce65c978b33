// What dispatcher and aggregation do around the multi-pass chains.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "support/raw_frame.h"
#include "support/tier_state.h"

namespace ppl_test {
namespace {

class ChainFrames : public RawFrameTierTest {
 protected:
  void SetUp() override {
    RawFrameTierTest::SetUp();
    if (!IsSkipped()) make_colour_neutral();
  }
  const ppl::FramePlan &plan() const { return tier_state(ctx, GetParam()).plan; }
};
INSTANTIATE_TEST_SUITE_P(Tiers, ChainFrames, ::testing::ValuesIn(both_tiers), tier_name);

TEST_P(ChainFrames, EveryChainRecordsTheNormaliserOfItsMargins) {
  struct Row {
    uint32_t quality;
    bool filter;
    size_t entry;
  };
  for (const Row &row : {Row{0, false, 0},
                         {0, true, 14},
                         {1, false, 4},
                         {1, true, 15},
                         {2, false, 5},
                         {2, true, 16},
                         {10, false, 11},
                         {10, true, 11},
                         {11, false, 12},
                         {11, true, 12},
                         {12, false, 7},
                         {12, true, 7},
                         {14, false, 13},
                         {14, true, 13}})
    for (const Format format : all_formats) {
      if (row.quality == 14 && is_rgb(format)) continue;
      SCOPED_TRACE(std::string(name_of(format)) + " at quality " + std::to_string(row.quality));
      ppl_set_quality(ctx, row.quality);
      row.filter ? ppl_enable_medium_filter(ctx) : ppl_disable_medium_filter(ctx);
      ctx->mean_normaliser = 5;
      const uint32_t before = ppl_n_frame(ctx);
      EXPECT_EQ(run(format, textured_mosaic(256, 48)).result, 1);
      EXPECT_EQ(ctx->mean_normaliser, plan().chain_normaliser[row.entry]);
      EXPECT_EQ(ppl_n_frame(ctx), before + 1);
    }
}

TEST_P(ChainFrames, OnlyQualities0To2LookAtTheFilterFlag) {
  for (const uint32_t quality : {3u, 10u, 11u, 12u, 13u, 14u}) {
    ppl_set_quality(ctx, quality);
    const Mosaic frame = textured_mosaic(256, 48);
    ppl_disable_medium_filter(ctx);
    // Once before, since the scratch of a frame may reach the next one.
    run(Format::i420, frame);
    const Picture without = run(Format::i420, frame);
    ppl_enable_medium_filter(ctx);
    const Picture with = run(Format::i420, frame);
    EXPECT_EQ(without.bytes, with.bytes) << quality;
    EXPECT_EQ(without.consumed, with.consumed) << quality;
  }
}

TEST_P(ChainFrames, WithoutCollectionEveryResultIsZero) {
  ppl_set_mean_collection(ctx, 0);
  for (const uint32_t quality : {0u, 1u, 2u, 10u, 11u, 12u, 14u}) {
    ppl_set_quality(ctx, quality);
    run(Format::i420, flat_mosaic(256, 48, 100));
    const uint32_t *words = &ppl_rgb_means_sub_windows(ctx)->r;
    EXPECT_TRUE(std::all_of(words, words + 49 * 3, [](uint32_t word) { return word == 0; }));
    EXPECT_EQ(ppl_rgb_means_all_sub_windows(ctx)->g, 0u);
    EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->g, 0u);
    EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), 0u);
    EXPECT_EQ(ppl_n_qual_2x2_whole_frame(ctx), 0u);
  }
}

// A flat frame of 640 by 480 at quality 0. The steady phase samples at odd row counters from 1 to
// 237 and odd column counters from 1 to 75 (P3 tier, 80 block columns) or 35 (SSE2 tier, 40).
TEST_P(ChainFrames, AFlatFrameAtQuality0FillsAllWindows) {
  // Samples per window column: the P3 windows are 10 block columns wide, the SSE2 windows 5.
  const std::array<uint32_t, 8> columns = GetParam() == Tier::p3
                                              ? std::array<uint32_t, 8>{5, 5, 5, 5, 5, 5, 5, 3}
                                              : std::array<uint32_t, 8>{2, 3, 2, 3, 2, 3, 2, 1};
  const std::array<uint32_t, 6> rows{20, 20, 20, 20, 20, 19};  // windows of 40 rows
  const uint32_t cells = GetParam() == Tier::p3 ? 4 : 8;
  // (640 * 480 * 256) / ((608 * 468) / 4) and / ((576 * 468) / 4).
  const uint32_t normaliser = GetParam() == Tier::p3 ? 1105 : 1166;
  // 1600 cells in a window: 2 to the 20 over 1600, and over 3200 for green.
  const uint32_t red_scale = 655, green_scale = 327;
  const uint32_t level = 100;

  ppl_set_quality(ctx, 0);
  ASSERT_EQ(run(Format::i420, flat_mosaic(640, 480, level)).result, 1);
  uint32_t red_sum = 0, red_total = 0, green_sum = 0, green_total = 0;
  for (size_t row = 0; row < 6; ++row)
    for (size_t column = 0; column < 8; ++column) {
      const uint32_t sampled = rows[row] * columns[column] * cells;
      const uint32_t red = (sampled * level * normaliser) >> 8;
      const uint32_t green = (2 * sampled * level * normaliser) >> 8;
      const PplTriple &window = ppl_rgb_means_sub_windows(ctx)[row * 8 + column];
      ASSERT_EQ(window.r, (red_scale * red) >> 12) << row << ", " << column;
      ASSERT_EQ(window.g, (green_scale * green) >> 12);
      ASSERT_EQ(window.b, window.r);
      red_sum += window.r;
      green_sum += window.g;
      red_total += red;
      green_total += green;
    }
  EXPECT_EQ(ppl_rgb_means_all_sub_windows(ctx)->r, (red_sum * 341) >> 14);
  EXPECT_EQ(ppl_rgb_means_all_sub_windows(ctx)->g, (green_sum * 341) >> 14);
  // frame_size is 307200: an eighth 38400, a quarter 76800, a half 153600.
  EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->r, (uint64_t{red_total} * 256 + 38400) / 76800);
  EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->g, (uint64_t{green_total} * 256 + 76800) / 153600);
  // The grid covers the whole frame.
  EXPECT_EQ(ppl_rgb_means_outside_all_sub_windows(ctx)->g, 0u);
}

TEST_P(ChainFrames, WhatTheGridLeavesOutGoesToTheOutsideTriple) {
  // 352 columns: the SSE2 grid covers 16 of 22 block columns, the P3 grid 40 of 44.
  ppl_set_quality(ctx, 0);
  ASSERT_EQ(run(Format::i420, flat_mosaic(352, 48, 100)).result, 1);
  if (GetParam() == Tier::sse2) {
    EXPECT_NE(ppl_rgb_means_outside_all_sub_windows(ctx)->g, 0u);
  } else {
    // Column counters end at 40: even, so the last sampled one is 39, inside.
    EXPECT_EQ(ppl_rgb_means_outside_all_sub_windows(ctx)->g, 0u);
  }
}

TEST_P(ChainFrames, TheOutsideTriplesProductWrapsIn32Bits) {
  // 23 block columns and 23 line pairs: windows of 2 by 3. Of odd counters up to 19 and 20, columns
  // 17 and 19 stand outside in all ten rows, and the last row stands outside with its other eight.
  const bool p3 = GetParam() == Tier::p3;
  const uint32_t cells = (10 * 2 + 8) * (p3 ? 4 : 8);
  // (184 * 46 * 256) / ((152 * 34) / 4), or twice both.
  const uint32_t red = (cells * 255 * 1677) >> 8;
  const uint32_t scale = (1u << 20) / (p3 ? 24 : 48);
  ppl_set_quality(ctx, 0);
  ASSERT_EQ(run(Format::i420, flat_mosaic(p3 ? 184 : 368, 46, 255)).result, 1);
  EXPECT_GT(uint64_t{scale} * red, 1ull << 32);
  EXPECT_EQ(ppl_rgb_means_outside_all_sub_windows(ctx)->r, (scale * red) >> 12);
}

TEST_P(ChainFrames, EmptyAndCopyQualitiesLeaveTheWindowsAtZero) {
  ppl_set_quality(ctx, 0);
  ASSERT_EQ(run(Format::i420, flat_mosaic(256, 48, 100)).result, 1);
  ASSERT_NE(ppl_rgb_means_all_sub_windows(ctx)->g, 0u);
  for (const uint32_t quality : {3u, 4u, 5u, 13u}) {
    ppl_set_quality(ctx, quality);
    run(Format::i420, flat_mosaic(256, 48, 100));
    EXPECT_EQ(ppl_rgb_means_all_sub_windows(ctx)->g, 0u) << quality;
    EXPECT_EQ(ppl_rgb_means_sub_windows(ctx)[27].g, 0u) << quality;
  }
}

}  // namespace
}  // namespace ppl_test
