// Quality 13: every sample is the brightness of its own pixel.
#include <gtest/gtest.h>

#include <vector>

#include "support/raw_frame.h"
#include "support/tier_state.h"

namespace ppl_test {
namespace {

class Mono : public RawFrameTierTest {
 protected:
  void SetUp() override {
    RawFrameTierTest::SetUp();
    if (IsSkipped()) return;
    ASSERT_EQ(ppl_set_quality(ctx, 13), 1);
    set_curve([](int i) { return i; });
  }
  template <class Curve>
  void set_curve(Curve curve) {
    uint8_t table[256];
    for (int i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(curve(i));
    ASSERT_EQ(ppl_copy_yuv_gamma_table(ctx, table), 1);
  }
  static int luma(int value) { return std::min(value + 16, 235); }
  static size_t mirrored(bool mirror, size_t i, size_t count) { return mirror ? count - 1 - i : i; }
  size_t block() const { return GetParam() == Tier::p3 ? 8 : 16; }
  Picture run_at(int32_t decimation, Format format, const Mosaic &frame) {
    Run how;
    how.decimation = decimation;
    return run(format, frame, how);
  }
};
INSTANTIATE_TEST_SUITE_P(Tiers, Mono, ::testing::ValuesIn(both_tiers), tier_name);

TEST_P(Mono, ASampleIsItsPixelInI420) {
  for (const auto &[width, height] : {std::pair{128u, 24u}, {130u, 22u}, {176u, 26u}, {1280u, 14u}})
    for (const int mirrors : {0, 1, 2, 3}) {
      const bool h = (mirrors & 1) != 0, v = (mirrors & 2) != 0;
      SCOPED_TRACE(std::to_string(width) + (h ? " h" : "") + (v ? " v" : ""));
      ppl_set_h_mirror(ctx, h);
      ppl_set_v_mirror(ctx, v);
      const Mosaic frame = textured_mosaic(width, height);
      const Picture picture = run(Format::i420, frame);
      ASSERT_EQ(picture.result, 1);
      for (size_t line = 0; line < height; ++line)
        for (size_t x = 0; x < width; ++x)
          ASSERT_EQ(picture.y(mirrored(h, x, width), mirrored(v, line, height)),
                    luma(frame.at(x, line)));
      // In place with both mirrors too.
      EXPECT_TRUE(all_equal(&picture.bytes[picture.size()], picture.size() / 2, 128));
      EXPECT_EQ(picture.consumed, frame.samples);
    }
}

TEST_P(Mono, ASampleIsItsPixelInRgb24) {
  for (const auto &[width, height] : {std::pair{128u, 24u}, {130u, 22u}, {176u, 26u}})
    for (const int mirrors : {0, 1, 2, 3}) {
      const bool h = (mirrors & 1) != 0, v = (mirrors & 2) != 0;
      ppl_set_h_mirror(ctx, h);
      ppl_set_v_mirror(ctx, v);
      const Mosaic frame = textured_mosaic(width, height);
      const Picture picture = run(Format::rgb24, frame);
      for (size_t line = 0; line < height; ++line)
        for (size_t x = 0; x < width; ++x) {
          const uint8_t s = frame.at(x, line);
          ASSERT_EQ(picture.pixel(mirrored(h, x, width), mirrored(v, line, height)),
                    (Pixel{s, s, s}));
        }
    }
}

TEST_P(Mono, TheDefaultBlackIs32InI420And16InRgb24) {
  ppl_reset_gamma(ctx);  // the studio curve starts at 16
  EXPECT_EQ(run(Format::i420, flat_mosaic(128, 24, 0)).y(3, 3), 32);
  EXPECT_EQ(run(Format::rgb24, flat_mosaic(128, 24, 0)).pixel(3, 3), (Pixel{16, 16, 16}));
}

TEST_P(Mono, AFlatFrameOf100ReadsItsTableEntryPlus16) {
  ppl_reset_gamma(ctx);
  const Picture picture = run(Format::i420, flat_mosaic(128, 24, 100));
  const int expected = ppl_yuv_contrast_gamma_table(ctx)[100] + 16;
  EXPECT_TRUE(all_equal(picture.bytes.data(), picture.size(), static_cast<uint8_t>(expected)));
  EXPECT_TRUE(all_equal(&picture.bytes[picture.size()], picture.size() / 2, 128));
}

TEST_P(Mono, LumaIsHeldAt235) {
  for (const auto &[value, expected] :
       {std::pair{235, 235}, {219, 235}, {218, 234}, {255, 235}, {240, 235}}) {
    const Picture picture = run(Format::i420, flat_mosaic(128, 24, static_cast<uint8_t>(value)));
    EXPECT_TRUE(all_equal(picture.bytes.data(), picture.size(), static_cast<uint8_t>(expected)));
  }
  EXPECT_EQ(run(Format::rgb24, flat_mosaic(128, 24, 255)).pixel(1, 1), (Pixel{255, 255, 255}));
}

TEST_P(Mono, ItsCurveIsContrastThenStudioGamma) {
  set_curve([](int i) { return i / 2; });
  uint8_t contrast[256];
  for (int i = 0; i < 256; ++i) contrast[i] = static_cast<uint8_t>(255 - i);
  ASSERT_EQ(ppl_copy_contrast_table(ctx, contrast), 1);
  const Mosaic frame = textured_mosaic(128, 24);
  const Picture picture = run(Format::rgb24, frame);
  for (size_t i = 0; i < frame.samples.size(); ++i)
    ASSERT_EQ(picture.consumed[i], (255 - frame.samples[i]) / 2);
  // The full-range curve takes no part.
  uint8_t reversed[256];
  for (int i = 0; i < 256; ++i) reversed[i] = static_cast<uint8_t>(i ^ 0x55);
  ppl_copy_rgb_gamma_table(ctx, reversed);
  EXPECT_EQ(run(Format::rgb24, frame).bytes, picture.bytes);
}

TEST_P(Mono, BlackGainAndDeltaWorkAsInTheDefaultPipeline) {
  ASSERT_EQ(ppl_set_optical_black_b_gb_gr_r(ctx, 10, 20, 30, 40), 1);
  ASSERT_EQ(ppl_set_rgb_gain(ctx, 512, 256, 128), 1);
  ASSERT_EQ(ppl_set_rgb_delta(ctx, 1, 2, 3), 1);
  const Picture picture = run(Format::rgb24, flat_mosaic(128, 24, 60));
  // B (60 - 10) / 2 + 3, Gb 40 + 2, Gr 30 + 2, R (60 - 40) * 2 + 1.
  EXPECT_EQ(picture.pixel(0, 0), (Pixel{28, 28, 28}));
  EXPECT_EQ(picture.pixel(1, 0), (Pixel{42, 42, 42}));
  EXPECT_EQ(picture.pixel(0, 1), (Pixel{32, 32, 32}));
  EXPECT_EQ(picture.pixel(1, 1), (Pixel{41, 41, 41}));
}

TEST_P(Mono, GathersWholeFrameMeansAlone) {
  // Level 50 becomes 200: group 0 of a block counts after the curve, group 1 before it.
  set_curve([](int i) { return i == 50 ? 200 : i; });
  const Picture picture = run(Format::i420, flat_mosaic(128, 24, 50));
  EXPECT_EQ(picture.y(0, 0), 216);
  EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->r, 125u * 256);
  EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->g, 125u * 256);
  EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->b, 125u * 256);
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), 0u);
  EXPECT_EQ(ppl_n_qual_2x2_whole_frame(ctx), 0u);
  EXPECT_EQ(ppl_qAE_rgb_means_whole_frame(ctx)->g, 0u);
  EXPECT_EQ(ppl_qual_rgb_means_whole_frame(ctx)->g, 0u);
  for (int i = 0; i < 256; ++i) ASSERT_EQ(ppl_g_histogram(ctx)[i], 0u);
  // The copy of the left neighbour goes on.
  for (const auto &line : tier_state(ctx, GetParam()).memory.stat_group_copy)
    EXPECT_TRUE(all_equal(line, block(), 50));
}

// ---- Scaling

TEST_P(Mono, HalfShowsTheBSamplesAlone) {
  ppl_set_mean_collection(ctx, 0);
  for (const auto &[width, height] : {std::pair{160u, 24u}, {132u, 26u}})
    for (const int mirrors : {0, 1, 2, 3}) {
      const bool h = (mirrors & 1) != 0, v = (mirrors & 2) != 0;
      SCOPED_TRACE(std::to_string(width) + (h ? " h" : "") + (v ? " v" : ""));
      ppl_set_h_mirror(ctx, h);
      ppl_set_v_mirror(ctx, v);
      const Mosaic frame = textured_mosaic(width, height);
      const Picture i420 = run_at(1, Format::i420, frame);
      const Picture rgb24 = run_at(1, Format::rgb24, frame);
      for (size_t j = 0; j < height / 2; ++j)
        for (size_t i = 0; i < width / 2; ++i) {
          const uint8_t s = frame.at(2 * i, 2 * j);
          const size_t x = mirrored(h, i, width / 2), y = mirrored(v, j, height / 2);
          ASSERT_EQ(i420.y(x, y), luma(s));
          ASSERT_EQ(rgb24.pixel(x, y), (Pixel{s, s, s}));
        }
      if (height % 4 == 0) {
        EXPECT_TRUE(all_equal(&i420.bytes[i420.size()], i420.size() / 2, 128));
      }
    }
}

TEST_P(Mono, AtHalfOtherSamplesReachTheMeansAlone) {
  const Picture first = run_at(1, Format::i420, cell_mosaic(128, 24, 10, 20, 40, 80));
  EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->r, 80u * 256);
  EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->g, 30u * 256);
  EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->b, 10u * 256);
  const Picture second = run_at(1, Format::i420, cell_mosaic(128, 24, 10, 120, 140, 180));
  EXPECT_EQ(first.bytes, second.bytes);
  EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->r, 180u * 256);
  EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->g, 130u * 256);
}

TEST_P(Mono, DoublingLeavesGapsInI420) {
  // 128 by 24 in a buffer of 256 by 48: runs of one block with gaps of one block; the two lines of
  // a row stand two lines apart, rows three and a half; chroma rows one and a half of their lines.
  const size_t B = block(), out_width = 256, size = 256 * 48;
  const Mosaic frame = textured_mosaic(128, 24);
  std::vector<int> expected(size * 3 / 2, untouched);
  for (size_t row = 0; row < 6; ++row) {
    for (size_t line = 0; line < 2; ++line)
      for (size_t i = 0; i < 64; ++i)
        expected[row * 7 * out_width / 2 + line * 2 * out_width + i / B * 2 * B + i % B] =
            luma(frame.at(2 * i, 4 * row + 2 * line));
    for (size_t i = 0; i < 32; ++i) {
      const size_t at = size + row * 3 * out_width / 4 + i / B * 2 * B + i % B;
      expected[at] = 128;
      expected[at + size / 4] = 128;
    }
  }
  const Picture picture = run_at(-1, Format::i420, frame);
  for (size_t i = 0; i < expected.size(); ++i) ASSERT_EQ(picture.bytes[i], expected[i]) << i;
}

TEST_P(Mono, DoublingWithHMirrorFillsTheLowerHalfOfEachSlotReversed) {
  // Rows four and a half lines apart, chroma rows two and a half.
  ppl_set_h_mirror(ctx, 1);
  const size_t B = block(), out_width = 256, size = 256 * 48;
  const Mosaic frame = textured_mosaic(128, 24);
  std::vector<int> expected(size * 3 / 2, untouched);
  for (size_t row = 0; row < 6; ++row) {
    for (size_t line = 0; line < 2; ++line)
      for (size_t i = 0; i < 64; ++i)
        expected[row * 9 * out_width / 2 + line * 2 * out_width + out_width - (i / B + 1) * 2 * B +
                 (B - 1 - i % B)] = luma(frame.at(2 * i, 4 * row + 2 * line));
    for (size_t i = 0; i < 32; ++i) {
      const size_t at =
          size + row * 5 * out_width / 4 + out_width / 2 - (i / B + 1) * 2 * B + i % B;
      expected[at] = 128;
      expected[at + size / 4] = 128;
    }
  }
  const Picture picture = run_at(-1, Format::i420, frame);
  for (size_t i = 0; i < expected.size(); ++i) ASSERT_EQ(picture.bytes[i], expected[i]) << i;
}

TEST_P(Mono, DoublingLeavesGapsInRgb24) {
  // The even line of row 0 stands on memory line 46, the odd one on 44; rows four and a half lines
  // apart, upwards.
  ppl_set_mean_collection(ctx, 0);
  const size_t B = block(), out_width = 256;
  const Mosaic frame = textured_mosaic(128, 24);
  std::vector<int> expected(256 * 48 * 3, untouched);
  for (size_t row = 0; row < 6; ++row)
    for (size_t line = 0; line < 2; ++line)
      for (size_t i = 0; i < 64; ++i) {
        const size_t start = (46 - 2 * line) * out_width - row * 9 * out_width / 2;
        for (size_t byte = 0; byte < 3; ++byte)
          expected[(start + i / B * 2 * B + i % B) * 3 + byte] =
              frame.at(2 * i, 4 * row + 2 * line);
      }
  const Picture picture = run_at(-1, Format::rgb24, frame);
  for (size_t i = 0; i < expected.size(); ++i) ASSERT_EQ(picture.bytes[i], expected[i]) << i;
}

TEST_P(Mono, OtherFormatsLeaveBothBuffersAndTheNormaliserAlone) {
  for (const Format format : {Format::rgb32, Format::yuyv, Format::uyvy}) {
    ctx->mean_normaliser = 5;
    const Mosaic frame = textured_mosaic(128, 24);
    const Picture picture = run(format, frame);
    EXPECT_EQ(picture.result, 1);
    EXPECT_TRUE(all_equal(picture.bytes.data(), picture.bytes.size(), untouched));
    EXPECT_EQ(picture.consumed, frame.samples);
    EXPECT_EQ(ctx->mean_normaliser, 5u);
  }
}

}  // namespace
}  // namespace ppl_test
