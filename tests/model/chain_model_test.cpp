// What the model knows of the multi-pass qualities beyond their results: which bytes, and which
// whole frames, may be anything. The results themselves stand in tests/chains, for library and
// model.
#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "model/model.h"

namespace ppl_model {
namespace {

using Offsets = std::set<size_t>;
enum Layout { planar, packed_luma_first, packed_luma_second };

class OpenChains : public testing::Test {
 protected:
  OpenChains() {
    machine::set_flags(1u | 1u << 24 | 1u << 25 | 1u << 26);
    machine::reset_counts();
    machine::reload_pool();
    ctx = ppl_init();
    set_size(128, 48);
  }

  void set_size(uint32_t width, uint32_t height, uint32_t stride = 0) {
    W = width;
    H = height;
    S = stride == 0 ? width : stride;
    ASSERT_EQ(ppl_new_frame_size(ctx, W, H, S), 1);
  }

  void run(uint32_t quality, Layout layout = planar) {
    ppl_set_quality(ctx, quality);
    std::vector<uint8_t> src(size_t{W} * H * 2 + 16, 100), dst(size_t{W} * H * 16 + 16);
    const auto aligned = [](std::vector<uint8_t> &bytes) {
      return bytes.data() + (16 - reinterpret_cast<uintptr_t>(bytes.data()) % 16) % 16;
    };
    const auto driver = layout == planar              ? ppl_process_blrtoi420
                        : layout == packed_luma_first ? ppl_process_blrtoyuyv
                                                      : ppl_process_blrtouyvy;
    driver(ctx, aligned(src), aligned(dst), W, H, S);
  }

  static Offsets open_offsets() {
    Offsets offsets;
    for (const FreeRange &range : free_bytes())
      for (size_t i = 0; i < range.length; ++i) offsets.insert(range.offset + i);
    return offsets;
  }

  PplContext *ctx;
  uint32_t W = 0, H = 0, S = 0;
};

// ---- Single bytes

TEST_F(OpenChains, Quality14LeavesThreePixelsOfLumaOpenAndDoubledOnes21) {
  for (const uint32_t B : {8u, 16u})
    for (const Layout layout : {planar, packed_luma_first, packed_luma_second})
      for (const int mirrors : {0, 1, 2, 3}) {
        SCOPED_TRACE(testing::Message() << B << " " << layout << " " << mirrors);
        ppl_set_P3_only(ctx, B == 8 ? 1 : 0);
        ppl_set_h_mirror(ctx, mirrors & 1);
        ppl_set_v_mirror(ctx, static_cast<uint8_t>(mirrors >> 1));
        // Where luma (x, y) of a picture `scale` times the frame stands.
        const auto offset = [&](uint32_t x, uint32_t y, uint32_t scale) {
          const size_t column = mirrors & 1 ? scale * W - 1 - x : x;
          const size_t line = mirrors & 2 ? scale * H - 1 - y : y;
          const size_t place = line * scale * W + column;
          return layout == planar ? place : 2 * place + (layout == packed_luma_second);
        };
        const uint32_t x = W - B - 1;
        ppl_set_decimation(ctx, 0, 0, 0);
        run(14, layout);
        EXPECT_EQ(open_offsets(),
                  (Offsets{offset(x, H - 2, 1), offset(x, H - 1, 1), offset(W - 1, H - 1, 1)}));

        // Doubling along the line puts a sample on 2x + 1 and into the averages on either side,
        // down the picture on 2y likewise.
        Offsets doubled;
        for (uint32_t line = 2 * H - 5; line < 2 * H; ++line) {
          for (const uint32_t column : {2 * x, 2 * x + 1, 2 * x + 2})
            doubled.insert(offset(column, line, 2));
          if (line < 2 * H - 3) continue;
          for (const uint32_t column : {2 * W - 2, 2 * W - 1})
            doubled.insert(offset(column, line, 2));
        }
        ASSERT_EQ(doubled.size(), 21u);
        ppl_set_decimation(ctx, -1, 0, 0);
        run(14, layout);
        EXPECT_EQ(open_offsets(), doubled);

        // Halving takes even lines and columns.
        ppl_set_decimation(ctx, 1, 0, 0);
        run(14, layout);
        EXPECT_EQ(open_offsets(), Offsets{});
      }
}

TEST_F(OpenChains, APackedLineOfOddLengthLeavesItsLonePixelOpen) {
  set_size(130, 20);
  ppl_set_decimation(ctx, 1, 0, 0);
  for (const uint32_t quality : {0u, 1u, 2u, 10u, 11u, 12u, 14u})
    for (const Layout layout : {packed_luma_first, packed_luma_second})
      for (const int mirrors : {0, 1, 2, 3}) {
        ppl_set_h_mirror(ctx, mirrors & 1);
        ppl_set_v_mirror(ctx, static_cast<uint8_t>(mirrors >> 1));
        // Pixel 64 of 65; mirrored, the first.
        Offsets expected;
        for (size_t line = 0; line < 10; ++line)
          for (const size_t byte : {0u, 1u})
            expected.insert(line * 130 + (mirrors & 1 ? 0 : 128) + byte);
        run(quality, layout);
        EXPECT_EQ(open_offsets(), expected) << quality << " mirrors " << mirrors;
      }
}

TEST_F(OpenChains, NothingElseIsOpen) {
  for (const uint32_t quality : {0u, 1u, 2u, 10u, 11u, 12u})
    for (const int32_t decimation : {-1, 0, 1, 2})
      for (const Layout layout : {planar, packed_luma_first, packed_luma_second}) {
        ppl_set_decimation(ctx, decimation, 0, 0);
        run(quality, layout);
        EXPECT_EQ(open_offsets(), Offsets{}) << quality << " at " << decimation;
        EXPECT_FALSE(picture_is_free() || source_is_free() || statistics_are_free());
      }
}

// ---- Whole frames

TEST_F(OpenChains, AFrameLeftOpenLeavesTheMaskOpen) {
  ppl_set_P3_only(ctx, 1);
  set_size(128, 48, 64);  // lines that overlap
  run(10);
  EXPECT_TRUE(picture_is_free());

  set_size(128, 48);
  run(1);
  EXPECT_TRUE(picture_is_free());
  EXPECT_FALSE(source_is_free());
  run(2);
  EXPECT_FALSE(picture_is_free());
  run(11);
  run(1);
  EXPECT_FALSE(picture_is_free());
}

TEST_F(OpenChains, PaddedLinesLeaveFramesOfTheMediumFilterOpen) {
  set_size(128, 48, 160);
  ppl_enable_medium_filter(ctx);
  for (const uint32_t quality : {0u, 1u, 2u}) {
    run(quality);
    EXPECT_TRUE(picture_is_free() && source_is_free() && statistics_are_free()) << quality;
  }
  for (const uint32_t quality : {10u, 12u, 14u}) {
    run(quality);
    EXPECT_FALSE(picture_is_free()) << quality;
  }
}

}  // namespace
}  // namespace ppl_model
