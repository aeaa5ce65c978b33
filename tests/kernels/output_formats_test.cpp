// The five output formats of the default pipeline at no scaling: layout, line direction, mirrors.
#include <gtest/gtest.h>

#include "kernels/neutral_picture.h"
#include "support/raw_frame.h"

namespace ppl_test {
namespace {

class OutputFormats : public RawFrameFormatTest {
 protected:
  void SetUp() override {
    RawFrameFormatTest::SetUp();
    if (IsSkipped()) return;
    make_colour_neutral();
    // Off, since the P3 tier's RGB24 pass garbles its picture while it gathers.
    if (tier() == Tier::p3 && format() == Format::rgb24) ppl_set_mean_collection(ctx, 0);
  }

  void set_mirrors(bool h, bool v) {
    ASSERT_EQ(ppl_set_h_mirror(ctx, h), 1);
    ASSERT_EQ(ppl_set_v_mirror(ctx, v), 1);
  }

  // Every pixel of the picture against the definition. Output position (x, line) shows the pixel
  // that the mirrors bring there.
  void expect_whole_picture(const Mosaic &frame, bool h, bool v) {
    const Picture picture = run(format(), frame);
    ASSERT_EQ(picture.result, 1);
    const NeutralPicture expected{frame};
    const size_t width = frame.width, height = frame.height;
    const auto from_x = [&](size_t x) { return h ? width - 1 - x : x; };
    const auto from_line = [&](size_t line) { return v ? height - 1 - line : line; };
    for (size_t line = 0; line < height; ++line)
      for (size_t x = 0; x < width; ++x) {
        const size_t sx = from_x(x), sy = from_line(line);
        if (is_rgb(format())) {
          ASSERT_EQ(picture.pixel(x, line), expected.pixel(sx, sy)) << x << ", " << line;
          if (format() == Format::rgb32) {
            ASSERT_EQ(picture.fourth_byte(x, line), 0);
          }
          continue;
        }
        ASSERT_EQ(picture.y(x, line), expected.y(sx, sy)) << x << ", " << line;
        if (format() != Format::i420 && x % 2 == 0) {
          ASSERT_EQ(picture.u(x / 2, line), expected.u(sx / 2, sy / 2)) << x << ", " << line;
          ASSERT_EQ(picture.v(x / 2, line), expected.v(sx / 2, sy / 2)) << x << ", " << line;
        }
      }
    if (format() == Format::i420) {
      for (size_t line = 0; line < height / 2; ++line)
        for (size_t x = 0; x < width / 2; ++x) {
          const size_t cx = h ? width / 2 - 1 - x : x, cy = v ? height / 2 - 1 - line : line;
          ASSERT_EQ(picture.u(x, line), expected.u(cx, cy)) << x << ", " << line;
          ASSERT_EQ(picture.v(x, line), expected.v(cx, cy)) << x << ", " << line;
        }
    }
    EXPECT_EQ(picture.consumed, frame.samples) << "neutral controls leave the samples as they are";
  }
};
INSTANTIATE_TEST_SUITE_P(Formats, OutputFormats,
                         ::testing::Combine(::testing::ValuesIn(both_tiers),
                                            ::testing::ValuesIn(all_formats)),
                         tier_format_name);

TEST_P(OutputFormats, WholePicture) {
  expect_whole_picture(textured_mosaic(160, 22), false, false);
}

TEST_P(OutputFormats, HMirrorReversesThePixelsOfEveryLine) {
  set_mirrors(true, false);
  expect_whole_picture(textured_mosaic(160, 22), true, false);
}

TEST_P(OutputFormats, VMirrorReversesTheLines) {
  set_mirrors(false, true);
  expect_whole_picture(textured_mosaic(160, 22), false, true);
}

TEST_P(OutputFormats, BothMirrorsReverseBothWays) {
  if (format() == Format::i420) {
    SUCCEED() << "its chroma is displaced: see I420Mirrors";
    return;
  }
  set_mirrors(true, true);
  expect_whole_picture(textured_mosaic(160, 22), true, true);
}

TEST_P(OutputFormats, AnyMirrorFlagButZeroIsSet) {
  ASSERT_EQ(ppl_set_h_mirror(ctx, 2), 1);
  ASSERT_EQ(ppl_set_v_mirror(ctx, 0), 1);
  expect_whole_picture(textured_mosaic(160, 22), true, false);
}

TEST_P(OutputFormats, EveryEvenWidthGivesACleanPicture) {
  for (uint32_t width = 128; width <= 194; width += 2)
    for (const auto &[h, v] : {std::pair{false, false}, {true, false}, {false, true}}) {
      SCOPED_TRACE("width " + std::to_string(width) + (h ? " h" : "") + (v ? " v" : ""));
      set_mirrors(h, v);
      expect_whole_picture(textured_mosaic(width, 14), h, v);
    }
}

TEST_P(OutputFormats, TheLargestFrame) {
  expect_whole_picture(textured_mosaic(1280, 1024), false, false);
}

TEST_P(OutputFormats, ALineIsReadAtTheStrideThatTheCallerGives) {
  const Mosaic frame = textured_mosaic(144, 22);
  const Picture expected = run(format(), frame);
  for (const uint32_t stride : {160u, 288u, 1280u}) {
    Run how;
    how.stride = stride;
    const Picture picture = run(format(), frame, how);
    EXPECT_EQ(picture.bytes, expected.bytes);
    for (size_t line = 0; line + 1 < 22; ++line)
      ASSERT_TRUE(all_equal(&picture.consumed[line * stride + 144], stride - 144, untouched));
  }
}

TEST_P(OutputFormats, BothPlacementsAgainstAGuardPage) {
  for (const uint32_t width : {128u, 130u, 142u, 176u}) {
    const Mosaic frame = textured_mosaic(width, 14);
    Run how;
    const Picture first = run(format(), frame, how);
    how.placement = Placement::begins_behind_guard;
    const Picture second = run(format(), frame, how);
    EXPECT_EQ(first.bytes, second.bytes);
    EXPECT_EQ(first.consumed, second.consumed);
  }
}

// ---- What the layouts look like in memory, by hand

class FormatLayout : public RawFrameTierTest {
 protected:
  void SetUp() override {
    RawFrameTierTest::SetUp();
    if (IsSkipped()) return;
    make_colour_neutral();
    ppl_set_mean_collection(ctx, 0);
  }
};
INSTANTIATE_TEST_SUITE_P(Tiers, FormatLayout, ::testing::ValuesIn(both_tiers), tier_name);

// Cells of B = Gb = 200 and Gr = R = 100: Y is 136 161 on even lines and 111 136 on odd ones,
// U is 159 and V is 105; RGB is (100, green, 200).
Mosaic layout_frame() { return cell_mosaic(128, 24, 200, 200, 100, 100); }

TEST_P(FormatLayout, Yuyv) {
  const Picture picture = run(Format::yuyv, layout_frame());
  const std::vector<uint8_t> even{136, 159, 161, 105}, odd{111, 159, 136, 105};
  for (size_t i = 0; i < picture.bytes.size(); ++i)
    ASSERT_EQ(picture.bytes[i], (i / 256 % 2 == 0 ? even : odd)[i % 4]) << i;
}

TEST_P(FormatLayout, Uyvy) {
  const Picture picture = run(Format::uyvy, layout_frame());
  const std::vector<uint8_t> even{159, 136, 105, 161}, odd{159, 111, 105, 136};
  for (size_t i = 0; i < picture.bytes.size(); ++i)
    ASSERT_EQ(picture.bytes[i], (i / 256 % 2 == 0 ? even : odd)[i % 4]) << i;
}

TEST_P(FormatLayout, I420) {
  const Picture picture = run(Format::i420, layout_frame());
  for (size_t i = 0; i < 128 * 24; ++i)
    ASSERT_EQ(picture.bytes[i],
              i / 128 % 2 == 0 ? (i % 2 == 0 ? 136 : 161) : (i % 2 == 0 ? 111 : 136));
  EXPECT_TRUE(all_equal(&picture.bytes[128 * 24], 64 * 12, 159));
  EXPECT_TRUE(all_equal(&picture.bytes[128 * 24 + 64 * 12], 64 * 12, 105));
}

TEST_P(FormatLayout, RgbStandsBottomUpWithBlueFirst) {
  // 24 lines: the last in memory is picture line 0, an even one: green 150 then 200.
  const Picture rgb24 = run(Format::rgb24, layout_frame());
  const std::vector<uint8_t> even{200, 150, 100, 200, 200, 100}, odd{200, 100, 100, 200, 150, 100};
  for (size_t i = 0; i < rgb24.bytes.size(); ++i)
    ASSERT_EQ(rgb24.bytes[i], (i / 384 % 2 == 1 ? even : odd)[i % 6]) << i;
  const Picture rgb32 = run(Format::rgb32, layout_frame());
  const std::vector<uint8_t> even32{200, 150, 100, 0, 200, 200, 100, 0},
      odd32{200, 100, 100, 0, 200, 150, 100, 0};
  for (size_t i = 0; i < rgb32.bytes.size(); ++i)
    ASSERT_EQ(rgb32.bytes[i], (i / 512 % 2 == 1 ? even32 : odd32)[i % 8]) << i;
}

TEST_P(FormatLayout, TheTopLineOfAnRgbPictureIsTheLastInMemory) {
  // Line 0 bright: only its B and Gb samples, so green of its odd columns is 255 alone there.
  const Mosaic frame = mosaic(128, 24, [](uint32_t, uint32_t y) { return y == 0 ? 255 : 0; });
  const Picture picture = run(Format::rgb24, frame);
  const size_t last = 23 * 128 * 3;
  EXPECT_EQ(picture.bytes[last + 3 + 1], 255) << "green of column 1 in the last line of memory";
  EXPECT_EQ(picture.bytes[last - 128 * 3 + 3 + 1], 128) << "line 1 has the average of its cell";
  EXPECT_TRUE(all_equal(picture.bytes.data(), 22 * 128 * 3, 0));
}

TEST_P(FormatLayout, WithVMirrorRgbStandsTopDown) {
  ppl_set_v_mirror(ctx, 1);
  const Mosaic frame = mosaic(128, 24, [](uint32_t, uint32_t y) { return y == 0 ? 255 : 0; });
  const Picture picture = run(Format::rgb24, frame);
  EXPECT_EQ(picture.bytes[3 + 1], 255);
  EXPECT_TRUE(all_equal(&picture.bytes[2 * 128 * 3], 22 * 128 * 3, 0));
}

TEST_P(FormatLayout, HMirrorPutsTheFirstPixelLast) {
  ppl_set_h_mirror(ctx, 1);
  const Mosaic frame = textured_mosaic(128, 24);
  const Picture picture = run(Format::i420, frame);
  const NeutralPicture expected{frame};
  EXPECT_EQ(picture.y(127, 0), expected.y(0, 0));
  EXPECT_EQ(picture.y(0, 23), expected.y(127, 23));
}

TEST_P(FormatLayout, HMirrorKeepsAPairWithItsCell) {
  ppl_set_h_mirror(ctx, 1);
  const Mosaic frame = textured_mosaic(128, 24);
  const Picture picture = run(Format::uyvy, frame);
  const NeutralPicture expected{frame};
  // Output pair at columns 0 and 1 holds the cell at columns 126 and 127.
  EXPECT_EQ(picture.bytes[0], expected.u(63, 0));
  EXPECT_EQ(picture.bytes[1], expected.y(127, 0));
  EXPECT_EQ(picture.bytes[2], expected.v(63, 0));
  EXPECT_EQ(picture.bytes[3], expected.y(126, 0));
}

TEST_P(FormatLayout, TheFourthByteOfRgb32IsZero) {
  for (const uint8_t mirror : {uint8_t{0}, uint8_t{1}}) {
    ppl_set_h_mirror(ctx, mirror);
    const Picture picture = run(Format::rgb32, flat_mosaic(128, 24, 255));
    for (size_t i = 3; i < picture.bytes.size(); i += 4) ASSERT_EQ(picture.bytes[i], 0) << i;
  }
}

using I420Mirrors = FormatLayout;
INSTANTIATE_TEST_SUITE_P(Tiers, I420Mirrors, ::testing::ValuesIn(both_tiers), tier_name);

TEST_P(I420Mirrors, BothMirrorsDisplaceChromaByOneLine) {
  ppl_set_h_mirror(ctx, 1);
  ppl_set_v_mirror(ctx, 1);
  for (const uint32_t width : {128u, 130u, 148u}) {
    const Mosaic frame = textured_mosaic(width, 22);
    const NeutralPicture expected{frame};
    const Picture picture = run(Format::i420, frame);
    const size_t size = size_t{width} * 22, pitch = width / 2, plane = size / 4;
    // Chroma line j of the mirrored picture starts one line before its place.
    for (size_t j = 0; j < 11; ++j)
      for (size_t x = 0; x < pitch; ++x) {
        const size_t cx = pitch - 1 - x, cy = 10 - j;
        ASSERT_EQ(picture.bytes[size + j * pitch + x - pitch], expected.u(cx, cy))
            << x << ", " << j;
        ASSERT_EQ(picture.bytes[size + plane + j * pitch + x - pitch], expected.v(cx, cy));
      }
    // Luma is in place, but for the second half of its last line, where U now begins.
    for (size_t line = 0; line < 22; ++line)
      for (size_t x = 0; x < width; ++x) {
        if (line == 21 && x >= width - pitch) continue;
        ASSERT_EQ(picture.bytes[line * width + x], expected.y(width - 1 - x, 21 - line));
      }
    // The last line of V is the caller's.
    EXPECT_TRUE(all_equal(&picture.bytes[size + 2 * plane - pitch], pitch, untouched));
  }
}

}  // namespace
}  // namespace ppl_test
