// The default pipeline: black level, gain, delta, curve, cell demosaic, colour matrix.
#include <gtest/gtest.h>

#include <array>

#include "kernels/neutral_picture.h"
#include "support/random.h"
#include "support/raw_frame.h"

namespace ppl_test {
namespace {

class SinglePass : public RawFrameTierTest {
 protected:
  void SetUp() override {
    RawFrameTierTest::SetUp();
    if (!IsSkipped()) make_colour_neutral();
  }
  void set_identity_curve_alone() {
    uint8_t table[256];
    for (int i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(i);
    ppl_reset_sensor_matrix(ctx);
    ppl_copy_rgb_gamma_table(ctx, table);
  }
  // The consumed frame must hold these four values in every cell.
  void expect_consumed(const Picture &picture, size_t width, uint8_t b, uint8_t gb, uint8_t gr,
                       uint8_t r) {
    for (size_t i = 0; i < picture.consumed.size(); ++i) {
      const size_t x = i % width, y = i / width;
      const uint8_t expected = y % 2 == 0 ? (x % 2 == 0 ? b : gb) : (x % 2 == 0 ? gr : r);
      ASSERT_EQ(picture.consumed[i], expected) << "at " << x << ", " << y;
    }
  }
};
INSTANTIATE_TEST_SUITE_P(Tiers, SinglePass, ::testing::ValuesIn(both_tiers), tier_name);

TEST_P(SinglePass, EqualCellsGiveOneChromaAndARepeatingLuma) {
  // B = Gb = 200, Gr = R = 100: Ga = 150.
  // Y with Ga: (1700 + 4800 + 1200 + 32) >> 6 = 120; with Gb: (1700 + 6400 + 1200 + 32) >> 6 = 145;
  // with Gr: (1700 + 3200 + 1200 + 32) >> 6 = 95; each plus 16.
  // U: (-900 - 2700 + 5600 + 32) >> 6 = 31; V: (2800 - 3450 - 800 + 32) >> 6 = -23; plus 128.
  const Picture picture = run(Format::i420, cell_mosaic(128, 24, 200, 200, 100, 100));
  for (size_t line = 0; line < 24; ++line)
    for (size_t x = 0; x < 128; ++x)
      ASSERT_EQ(picture.y(x, line), x % 2 == line % 2 ? 136 : line % 2 == 0 ? 161 : 111);
  for (size_t line = 0; line < 12; ++line)
    for (size_t x = 0; x < 64; ++x) {
      ASSERT_EQ(picture.u(x, line), 159);
      ASSERT_EQ(picture.v(x, line), 105);
    }
}

TEST_P(SinglePass, TheDefaultMatrixIsTheSecondSensorMatrix) {
  // Rows in Q6: Y (12, 46, -3), U (-17, -44, 62), V (55, -43, -13); R = 100, Ga = 150, B = 200.
  // Y: (1200 + 6900 - 600 + 32) >> 6 = 117, with Gb = 200: 9832 >> 6 = 153, with Gr = 100:
  // 5232 >> 6 = 81. U: 4132 >> 6 = 64. V: -3518 >> 6 = -55.
  set_identity_curve_alone();
  const Picture picture = run(Format::i420, cell_mosaic(128, 24, 200, 200, 100, 100));
  for (size_t line = 0; line < 24; ++line)
    for (size_t x = 0; x < 128; ++x)
      ASSERT_EQ(picture.y(x, line), x % 2 == line % 2 ? 133 : line % 2 == 0 ? 169 : 97);
  for (size_t line = 0; line < 12; ++line)
    for (size_t x = 0; x < 64; ++x) {
      ASSERT_EQ(picture.u(x, line), 192);
      ASSERT_EQ(picture.v(x, line), 73);
    }
}

TEST_P(SinglePass, TheDefaultRgbMatrixIsTheSecondSensorMatrix) {
  // Rows in Q6: (103, -14, -24), (-24, 106, -18), (-21, -36, 122). R' = 3432 >> 6 = 53;
  // B' = 16932 >> 6 = 264, held at 255; G' with Ga 9932 >> 6 = 155, with Gb 15232 >> 6 = 238,
  // with Gr 4632 >> 6 = 72.
  set_identity_curve_alone();
  ppl_set_mean_collection(ctx, 0);
  for (const Format format : {Format::rgb24, Format::rgb32}) {
    const Picture picture = run(format, cell_mosaic(128, 24, 200, 200, 100, 100));
    for (size_t line = 0; line < 24; ++line)
      for (size_t x = 0; x < 128; ++x) {
        const uint8_t g = x % 2 == line % 2 ? 155 : line % 2 == 0 ? 238 : 72;
        ASSERT_EQ(picture.pixel(x, line), (Pixel{53, g, 255}));
      }
  }
}

TEST_P(SinglePass, BlackIsSubtractedByPositionAndStopsAtZero) {
  ASSERT_EQ(ppl_set_optical_black_b_gb_gr_r(ctx, 10, 20, 30, 255), 1);
  expect_consumed(run(Format::i420, flat_mosaic(128, 24, 25)), 128, 15, 5, 0, 0);
  expect_consumed(run(Format::i420, flat_mosaic(128, 24, 255)), 128, 245, 235, 225, 0);
  expect_consumed(run(Format::i420, flat_mosaic(128, 24, 9)), 128, 0, 0, 0, 0);
}

TEST_P(SinglePass, GainHasFiveFractionalBits) {
  struct Row {
    int32_t gain;
    uint8_t sample, expected;
  };
  // The multiplier is gain >> 3; the product is shifted right by 5.
  for (const Row &row : {Row{255, 64, 62},
                         {256, 64, 64},
                         {263, 64, 64},
                         {264, 64, 66},
                         {7, 255, 0},
                         {8, 255, 7},
                         {0, 255, 0},
                         {128, 255, 127},
                         {2047, 32, 255},
                         {2047, 31, 247},
                         {2047, 255, 255},
                         {2040, 31, 247}}) {
    ASSERT_EQ(ppl_set_rgb_gain(ctx, row.gain, row.gain, row.gain), 1);
    SCOPED_TRACE("gain " + std::to_string(row.gain));
    expect_consumed(run(Format::i420, flat_mosaic(128, 24, row.sample)), 128, row.expected,
                    row.expected, row.expected, row.expected);
  }
}

TEST_P(SinglePass, GainAndDeltaBelongToTheColour) {
  ASSERT_EQ(ppl_set_rgb_gain(ctx, 512, 256, 128), 1);
  expect_consumed(run(Format::i420, flat_mosaic(128, 24, 60)), 128, 30, 60, 60, 120);
  ASSERT_EQ(ppl_set_rgb_gain(ctx, 256, 256, 256), 1);
  ASSERT_EQ(ppl_set_rgb_delta(ctx, 5, -10, 20), 1);
  expect_consumed(run(Format::i420, flat_mosaic(128, 24, 60)), 128, 80, 50, 50, 65);
}

TEST_P(SinglePass, DeltaWorksOnTheUnclampedProduct) {
  // 255 times 255 >> 5 is 2032; minus 1900 is 132.
  ASSERT_EQ(ppl_set_rgb_gain(ctx, 2047, 2047, 2047), 1);
  ASSERT_EQ(ppl_set_rgb_delta(ctx, -1900, -1900, -1900), 1);
  expect_consumed(run(Format::i420, flat_mosaic(128, 24, 255)), 128, 132, 132, 132, 132);
}

TEST_P(SinglePass, DeltaWrapsIn16Bits) {
  ASSERT_EQ(ppl_set_rgb_delta(ctx, 32767, 32767, 32767), 1);
  // 0 + 32767 is held at 255; 1 + 32767 wraps to -32768 and becomes 0.
  expect_consumed(run(Format::i420, flat_mosaic(128, 24, 0)), 128, 255, 255, 255, 255);
  expect_consumed(run(Format::i420, flat_mosaic(128, 24, 1)), 128, 0, 0, 0, 0);
}

TEST_P(SinglePass, ADeltaOfMinus300LeavesTheFirstEntryOfTheCurve) {
  uint8_t table[256];
  for (int i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(255 - i / 2);
  table[0] = 77;
  ppl_copy_rgb_gamma_table(ctx, table);
  ASSERT_EQ(ppl_set_r_delta(ctx, -300), 1);
  for (const int level : {0, 128, 255}) {
    const uint8_t others = table[level];
    expect_consumed(run(Format::i420, flat_mosaic(128, 24, static_cast<uint8_t>(level))), 128,
                    others, others, others, 77);
  }
}

TEST_P(SinglePass, EverySampleGoesThroughTheCurveAfterDelta) {
  uint8_t table[256];
  for (int i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(i * 167 + 13);
  ppl_copy_rgb_gamma_table(ctx, table);
  ASSERT_EQ(ppl_set_rgb_delta(ctx, 3, 3, 3), 1);
  const Mosaic frame = textured_mosaic(160, 26);
  for (const Format format : all_formats) {
    const Picture picture = run(format, frame);
    for (size_t i = 0; i < frame.samples.size(); ++i)
      ASSERT_EQ(picture.consumed[i], table[std::min(frame.samples[i] + 3, 255)])
          << name_of(format) << " at " << i;
  }
}

TEST_P(SinglePass, OtherTablesTakeNoPart) {
  const Mosaic frame = textured_mosaic(128, 24);
  const Picture before = run(Format::i420, frame);
  uint8_t table[256];
  for (int i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(255 - i);
  ppl_copy_r_dekneel_table(ctx, table);
  ppl_copy_g_dekneel_table(ctx, table);
  ppl_copy_b_dekneel_table(ctx, table);
  ppl_copy_contrast_table(ctx, table);
  ppl_copy_yuv_gamma_table(ctx, table);
  const Picture after = run(Format::i420, frame);
  EXPECT_EQ(before.bytes, after.bytes);
  EXPECT_EQ(before.consumed, after.consumed);
}

TEST_P(SinglePass, GreenAveragesRoundUp) {
  // Ga of 100 and 101 is 101, so the B and R pixels show it; R and B come from the cell.
  ppl_set_mean_collection(ctx, 0);
  const Picture picture = run(Format::rgb24, cell_mosaic(128, 24, 7, 100, 101, 9));
  EXPECT_EQ(picture.pixel(0, 0), (Pixel{9, 101, 7}));
  EXPECT_EQ(picture.pixel(1, 0), (Pixel{9, 100, 7}));
  EXPECT_EQ(picture.pixel(0, 1), (Pixel{9, 101, 7}));
  EXPECT_EQ(picture.pixel(1, 1), (Pixel{9, 101, 7}));
}

TEST_P(SinglePass, ColourSumsWrapIn16Bits) {
  // 2048 on the diagonal is 512 in Q6. 512 * 60 + 32 = 30752: 480, held at 255. 512 * 64 + 32
  // wraps negative: 0. 512 * 128 + 32 wraps to 32: 0. 512 * 129 + 32 wraps to 544: 8.
  ppl_set_mean_collection(ctx, 0);
  static constexpr int32_t steep[18] = {2048, 0, 0, 0, 2048, 0, 0, 0, 2048,
                                        2048, 0, 0, 0, 2048, 0, 0, 0, 2048};
  ASSERT_EQ(ppl_copy_sensor_matrix(ctx, steep), 1);
  for (const auto &[sample, expected] : {std::pair{60, 255}, {64, 0}, {128, 0}, {129, 8}})
    for (const Format format : {Format::rgb24, Format::rgb32}) {
      const auto level = static_cast<uint8_t>(sample), result = static_cast<uint8_t>(expected);
      const Picture picture = run(format, flat_mosaic(128, 24, level));
      for (size_t x = 0; x < 128; ++x)
        ASSERT_EQ(picture.pixel(x, 5), (Pixel{result, result, result})) << sample;
    }
}

TEST_P(SinglePass, LumaSumsWrapIn16Bits) {
  // 16 times the identity: the luma row is (264, 516, 100) in Q6, and the chroma rows are
  // (-152, -296, 448) and (448, -376, -72). Level 37: 880 * 37 + 32 = 32592: 509, held at 255, so
  // Y is 235. Level 38: 33472 wraps to -32064: Y is 16. Level 75: 66032 wraps to 496: 7, so 23.
  static constexpr int32_t steep[18] = {4096, 0, 0, 0, 4096, 0, 0, 0, 4096,
                                        4096, 0, 0, 0, 4096, 0, 0, 0, 4096};
  ASSERT_EQ(ppl_copy_sensor_matrix(ctx, steep), 1);
  for (const auto &[sample, expected] : {std::pair{37, 235}, {38, 16}, {75, 23}})
    for (const Format format : {Format::i420, Format::yuyv, Format::uyvy}) {
      const Picture picture = run(format, flat_mosaic(128, 24, static_cast<uint8_t>(sample)));
      for (size_t x = 0; x < 128; ++x) ASSERT_EQ(picture.y(x, 3), expected) << sample;
    }
}

TEST_P(SinglePass, ContrastShiftsLumaAloneByItsOffset) {
  // Contrast 64 scales the luma row by 1.5: (25, 49, 10) in Q6, with an offset of -4064 in place of
  // 32. Grey 128: (84 * 128 - 4064) >> 6 = 104, so Y = 120. The chroma of grey 128 is
  // (128 + 32) >> 6 = 2 for U and V alike, with the plain rounding term.
  int32_t x = 0, y = 0;
  ASSERT_EQ(ppl_set_contrast_c(ctx, 64, &x, &y), 1);
  const Picture picture = run(Format::i420, flat_mosaic(128, 24, 128));
  EXPECT_EQ(picture.y(5, 5), 120);
  EXPECT_EQ(picture.u(5, 5), 130);
  EXPECT_EQ(picture.v(5, 5), 130);
  ASSERT_EQ(ppl_set_contrast_c(ctx, 0, &x, &y), 1);
  const Picture plain = run(Format::i420, flat_mosaic(128, 24, 128));
  EXPECT_EQ(plain.y(5, 5), 126);
  EXPECT_EQ(plain.u(5, 5), 130);
  EXPECT_EQ(plain.v(5, 5), 130);
}

TEST_P(SinglePass, LumaAndChromaKeepTheirRangesWithAnyMatrix) {
  Random random(7);
  for (int round = 0; round < 40; ++round) {
    int32_t matrices[18];
    for (int32_t &entry : matrices) entry = random.between(-3000, 3000);
    ASSERT_EQ(ppl_copy_sensor_matrix(ctx, matrices), 1);
    const Mosaic frame = mosaic(128, 24, [&](uint32_t, uint32_t) { return random.byte(); });
    const Picture picture = run(Format::i420, frame);
    for (size_t i = 0; i < picture.size(); ++i) {
      ASSERT_GE(picture.bytes[i], 16);
      ASSERT_LE(picture.bytes[i], 235);
    }
    for (size_t i = picture.size(); i < picture.bytes.size(); ++i) {
      ASSERT_GE(picture.bytes[i], 16);
      ASSERT_LE(picture.bytes[i], 240);
    }
  }
}

TEST_P(SinglePass, ChromaReachesBothEndsOfItsRange) {
  // Default matrices: U of a blue cell is (62 * 255 + 32) >> 6 = 247, held at 112; of a red and
  // green one it is far below -112.
  set_identity_curve_alone();
  EXPECT_EQ(run(Format::i420, cell_mosaic(128, 24, 255, 0, 0, 0)).u(3, 3), 240);
  EXPECT_EQ(run(Format::i420, cell_mosaic(128, 24, 0, 255, 255, 255)).u(3, 3), 16);
  EXPECT_EQ(run(Format::i420, cell_mosaic(128, 24, 0, 0, 0, 255)).v(3, 3), 240);
  EXPECT_EQ(run(Format::i420, cell_mosaic(128, 24, 255, 255, 255, 0)).v(3, 3), 16);
}

TEST_P(SinglePass, TheBAndRPixelsOfACellHaveOneLuma) {
  const Picture picture = run(Format::yuyv, textured_mosaic(128, 24));
  for (size_t cy = 0; cy < 12; ++cy)
    for (size_t cx = 0; cx < 64; ++cx)
      ASSERT_EQ(picture.y(2 * cx, 2 * cy), picture.y(2 * cx + 1, 2 * cy + 1));
}

TEST_P(SinglePass, ASecondRunOnTheSameBufferGivesAnotherPicture) {
  ASSERT_EQ(ppl_set_rgb_gain(ctx, 300, 300, 300), 1);
  const Picture first = run(Format::i420, textured_mosaic(128, 24));
  const Mosaic consumed{128, 24, first.consumed};
  const Picture second = run(Format::i420, consumed);
  EXPECT_NE(first.bytes, second.bytes);
}

TEST_P(SinglePass, AFlatFrameGivesAFlatPictureAtTheFrameEdgesToo) {
  ppl_set_mean_collection(ctx, 0);
  for (const auto &[width, height] : {std::pair{128u, 14u}, {1280u, 22u}, {130u, 1024u}})
    for (const Format format : all_formats) {
      const Picture picture = run(format, flat_mosaic(width, height, 137));
      for (size_t line = 0; line < height; ++line)
        for (size_t x = 0; x < width; ++x) {
          if (is_rgb(format)) {
            ASSERT_EQ(picture.pixel(x, line), (Pixel{137, 137, 137})) << x << ", " << line;
          } else {
            ASSERT_EQ(picture.y(x, line), NeutralPicture::luma(137, 137, 137));
          }
        }
    }
}

TEST_P(SinglePass, AnOddLastLineIsNeitherReadNorWritten) {
  const Mosaic frame = textured_mosaic(128, 25);
  for (const Format format : all_formats) {
    const Picture picture = run(format, frame);
    for (size_t x = 0; x < 128; ++x)
      ASSERT_EQ(picture.consumed[24 * 128 + x], frame.at(x, 24)) << name_of(format);
    switch (format) {
      case Format::i420:
        EXPECT_TRUE(all_equal(&picture.bytes[24 * 128], 128, untouched));
        break;
      case Format::yuyv:
      case Format::uyvy:
        EXPECT_TRUE(all_equal(&picture.bytes[24 * 256], 256, untouched));
        break;
      case Format::rgb24:
        EXPECT_TRUE(all_equal(&picture.bytes[0], 128 * 3, untouched));
        break;
      case Format::rgb32:
        EXPECT_TRUE(all_equal(&picture.bytes[0], 128 * 4, untouched));
        break;
    }
  }
}

TEST_P(SinglePass, ARefusedGainStaysOutOfThePicture) {
  const Mosaic frame = textured_mosaic(128, 24);
  const Picture before = run(Format::i420, frame);
  EXPECT_EQ(ppl_set_rgb_gain(ctx, 300, 300, 2048), 0);
  EXPECT_EQ(ppl_nf88_r_gain(ctx), 300);
  EXPECT_EQ(run(Format::i420, frame).bytes, before.bytes);
  EXPECT_EQ(ppl_set_optical_black_b_gb_gr_r(ctx, 1, 2, 3, 256), 0);
  EXPECT_EQ(run(Format::i420, frame).bytes, before.bytes);
}

}  // namespace
}  // namespace ppl_test
