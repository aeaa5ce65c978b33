// Progressive YUYV and UYVY frames to I420 and RGB24.
#include <gtest/gtest.h>

#include "packed_video/packed_video_fixture.h"

namespace ppl_test {
namespace {

class Progressive : public PackedVideoTierTest {};
INSTANTIATE_TEST_SUITE_P(Tiers, Progressive, testing::ValuesIn(both_tiers), tier_name);

TEST_P(Progressive, LumaOfI420IsTheSources) {
  use_size(144, 18);
  const Video video = textured_video(144, 18);
  for (const FrameConversion &conversion : {yuyv_to_i420, uyvy_to_i420}) {
    const Picture picture = run(conversion, video);
    EXPECT_EQ(picture.result, 1);
    for (size_t line = 0; line < 18; ++line)
      for (size_t x = 0; x < 144; ++x) ASSERT_EQ(picture.y(x, line), video.y(x, line));
  }
}

TEST_P(Progressive, ChromaOfALinePairIsAveragedRoundingUp) {
  use_size(128, 14);
  Video video = flat_video(128, 14, 50, 1, 1);
  for (size_t x = 0; x < 128; ++x) video.c(x, 1) = 2;  // 1 and 2
  video.c(6, 2) = 4;                                   // the third pair's u: 4 and 1
  video.c(9, 3) = 254;                                 // the fourth pair's v: 1 and 254
  video.c(127, 12) = 255;
  video.c(127, 13) = 255;
  for (const FrameConversion &conversion : {yuyv_to_i420, uyvy_to_i420}) {
    const Picture picture = run(conversion, video);
    for (size_t pair = 0; pair < 64; ++pair) {
      EXPECT_EQ(picture.u(pair, 0), 2);
      EXPECT_EQ(picture.v(pair, 0), 2);
    }
    EXPECT_EQ(picture.u(3, 1), 3);
    EXPECT_EQ(picture.v(3, 1), 1);
    EXPECT_EQ(picture.v(4, 1), 128);
    EXPECT_EQ(picture.u(4, 1), 1);
    EXPECT_EQ(picture.v(63, 6), 255);
    EXPECT_EQ(picture.u(63, 6), 1);
  }
}

TEST_P(Progressive, MirrorsTurnEachPlaneOfI420) {
  use_size(136, 14);
  const Video video = textured_video(136, 14);
  for (const FrameConversion &conversion : {yuyv_to_i420, uyvy_to_i420})
    for (const int mirrors : {1, 2, 3}) {
      ppl_set_h_mirror(ctx, mirrors & 1);
      ppl_set_v_mirror(ctx, static_cast<uint8_t>(mirrors & 2));
      const Picture picture = run(conversion, video);
      const auto column = [&](size_t x, size_t width) { return mirrors & 1 ? width - 1 - x : x; };
      const auto place = [&](size_t line, size_t lines) {
        return mirrors & 2 ? lines - 1 - line : line;
      };
      for (size_t line = 0; line < 14; ++line)
        for (size_t x = 0; x < 136; ++x)
          ASSERT_EQ(picture.y(column(x, 136), place(line, 14)), video.y(x, line));
      for (size_t line = 0; line < 7; ++line)
        for (size_t pair = 0; pair < 68; ++pair) {
          const int u = video.u(pair, 2 * line) + video.u(pair, 2 * line + 1) + 1;
          const int v = video.v(pair, 2 * line) + video.v(pair, 2 * line + 1) + 1;
          ASSERT_EQ(picture.u(column(pair, 68), place(line, 7)), u / 2);
          ASSERT_EQ(picture.v(column(pair, 68), place(line, 7)), v / 2);
        }
    }
}

TEST_P(Progressive, OtherDecimationsLeaveI420AloneAndCount) {
  for (const int32_t d : {1, 2, -1}) {
    use_size(128, 24, d, 2, 4);
    for (const FrameConversion &conversion : {yuyv_to_i420, uyvy_to_i420}) {
      const uint32_t before = ppl_n_frame(ctx);
      const Picture picture = run(conversion, textured_video(128, 24));
      EXPECT_EQ(picture.result, 1);
      EXPECT_TRUE(picture.all(0, picture.bytes.size(), untouched)) << "decimation " << d;
      EXPECT_EQ(ppl_n_frame(ctx), before + 1);
    }
  }
}

// B, G, R of a picture of one colour.
std::array<int, 3> expect_one_colour(const Picture &picture) {
  const std::array<int, 3> colour = picture.bgr(0, 0);
  for (size_t line = 0; line < picture.height; ++line)
    for (size_t x = 0; x < picture.width; ++x) EXPECT_EQ(picture.bgr(x, line), colour);
  return colour;
}

TEST_P(Progressive, RgbFollowsItsArithmetic) {
  use_size(128, 14);
  struct {
    uint8_t y, u, v;
    std::array<int, 3> bgr;
  } const colours[] = {
      // Black is not darker than a luma of 16.
      {0, 128, 128, {0, 0, 0}},
      {15, 128, 128, {0, 0, 0}},
      {16, 128, 128, {0, 0, 0}},
      {17, 128, 128, {1, 1, 1}},  // 74 >> 6
      {126, 128, 128, {127, 127, 127}},
      {236, 128, 128, {254, 254, 254}},  // 16280 >> 6
      {255, 128, 128, {255, 255, 255}},
      // y = 6216, u = -38, v = 72: 1314, 3422 and 13560 in 1/64.
      {100, 90, 200, {20, 53, 211}},
      // Below 0: y = 0, u = -128, v = 127: -16512, -3404, 12954.
      {10, 0, 255, {0, 0, 202}},
      {235, 0, 0, {0, 255, 49}},  // y = 16206, u = v = -128: -306, 26062, 3150
      // Sums that leave 16 bits wrap: 17686 + 16383 = 34069 is -31467.
      {255, 255, 128, {0, 226, 255}},
      {255, 245, 128, {0, 230, 255}},    // 32779
      {255, 244, 128, {255, 231, 255}},  // 32650 does not
      {255, 128, 255, {255, 173, 255}},  // nor does 30640
  };
  for (const auto &colour : colours)
    for (const FrameConversion &conversion : {yuyv_to_rgb24, uyvy_to_rgb24}) {
      SCOPED_TRACE(testing::Message() << int{colour.y} << " " << int{colour.u} << " "
                                      << int{colour.v} << " " << conversion.name);
      const Picture picture = run(conversion, flat_video(128, 14, colour.y, colour.u, colour.v));
      EXPECT_EQ(expect_one_colour(picture), colour.bgr);
    }
}

TEST_P(Progressive, RgbStandsBottomUpAndPairsShareTheirChroma) {
  use_size(130, 14);
  // Grey that grows with line and column; one pair of strong colour.
  Video video = flat_video(130, 14, 0, 128, 128);
  for (size_t line = 0; line < 14; ++line)
    for (size_t x = 0; x < 130; ++x) video.y(x, line) = static_cast<uint8_t>(16 + x + 4 * line);
  video.c(20, 5) = 148;  // u = 20, v = -20
  video.c(21, 5) = 108;
  for (const FrameConversion &conversion : {yuyv_to_rgb24, uyvy_to_rgb24}) {
    const Picture picture = run(conversion, video);
    for (int line = 0; line < 14; ++line)
      for (int x = 0; x < 130; ++x) {
        const int y = 74 * (x + 4 * line);
        std::array<int, 3> expected;
        expected.fill(std::min(y >> 6, 255));
        if (line == 5 && (x == 20 || x == 21))  // 129, -25 + 52 and -102 times 20
          expected = {(y + 2580) >> 6, (y + 540) >> 6, (y - 2040) >> 6};
        ASSERT_EQ(picture.bgr(static_cast<size_t>(x), static_cast<size_t>(line)), expected)
            << x << " " << line;
      }
  }
}

TEST_P(Progressive, MirrorsDoNotActOnRgb) {
  use_size(128, 14);
  const Video video = textured_video(128, 14);
  const Picture plain = run(yuyv_to_rgb24, video);
  ppl_set_h_mirror(ctx, 1);
  ppl_set_v_mirror(ctx, 1);
  EXPECT_TRUE(run(yuyv_to_rgb24, video).bytes == plain.bytes);
}

TEST_P(Progressive, RgbKeepsTheInputsSizeAtEveryDecimation) {
  use_size(128, 24);
  const Video video = textured_video(128, 24);
  const Picture plain = run(yuyv_to_rgb24, video);
  Buffers how;
  how.output_bytes = 128 * 24 * 3;
  for (const int32_t d : {1, 2, -1}) {
    use_size(128, 24, d);
    EXPECT_TRUE(run(yuyv_to_rgb24, video.bytes(Packing::yuyv), how).bytes == plain.bytes) << d;
  }
}

TEST_P(Progressive, BlackLinesFollowThePictureInEachPlaneOfI420) {
  const Video video = textured_video(128, 14);
  use_size(128, 14);
  for (const bool upside_down : {false, true}) {
    use_size(128, 14);
    ppl_set_v_mirror(ctx, upside_down);
    const Picture plain = run(yuyv_to_i420, video);
    use_size(128, 14, 0, 3, 2);
    const Picture framed = run(yuyv_to_i420, video);
    ASSERT_EQ(framed.height, 19u);
    // 19 lines of 128, twice 608 bytes of chroma: 9.5 lines.
    const auto expect_plane = [&](size_t from, size_t bytes, size_t plain_from,
                                  size_t picture_bytes, uint8_t black) {
      const size_t picture_from = from + (upside_down ? bytes - picture_bytes : 0);
      EXPECT_EQ(memcmp(&framed.bytes[picture_from], &plain.bytes[plain_from], picture_bytes), 0);
      EXPECT_TRUE(framed.all(from, picture_from, black));
      EXPECT_TRUE(framed.all(picture_from + picture_bytes, from + bytes, black));
    };
    expect_plane(0, 2432, 0, 1792, 16);
    expect_plane(2432, 608, 1792, 448, 128);
    expect_plane(3040, 608, 2240, 448, 128);
  }
}

TEST_P(Progressive, BlackLinesOfRgbComeFirstInMemory) {
  const Video video = textured_video(128, 14);
  use_size(128, 14);
  const Picture plain = run(uyvy_to_rgb24, video);
  use_size(128, 14, 0, 3, 2);
  const Picture framed = run(uyvy_to_rgb24, video);
  EXPECT_TRUE(framed.all(0, 5 * 128 * 3, 0));
  EXPECT_EQ(memcmp(&framed.bytes[5 * 128 * 3], plain.bytes.data(), plain.bytes.size()), 0);
}

TEST_P(Progressive, BlackLinesThatTheHeightLacksAreNotWritten) {
  const Video video = textured_video(128, 14);
  use_size(128, 14);
  for (const FrameConversion &conversion : progressive_conversions) {
    use_size(128, 14);
    const Picture plain = run(conversion, video);
    ASSERT_EQ(ppl_set_decimation(ctx, 0, 3, 2), 1);
    ASSERT_EQ(ppl_new_frame_size(ctx, 128, 14, 128), 1);  // takes them out of the height
    EXPECT_TRUE(run(conversion, video).bytes == plain.bytes) << conversion.name;
  }
}

TEST_P(Progressive, CallTakesItsSizesItself) {
  sizes = {320, 240, 320, 240};
  const Video video = textured_video(320, 240);
  const Picture picture = run(yuyv_to_i420, video);
  EXPECT_EQ(picture.result, 1);
  EXPECT_EQ(picture.y(319, 239), video.y(319, 239));
  EXPECT_EQ(ctx->frame_width, 320);
  EXPECT_EQ(ctx->frame_stride, 320);
  EXPECT_EQ(ppl_n_frame(ctx), 1u);
  // Lower the output, and the decimation changes with it.
  sizes = {320, 240, 160, 120};
  EXPECT_EQ(run(yuyv_to_i420, video).result, 1);
  EXPECT_EQ(ppl_decimation(ctx), 1);
  EXPECT_EQ(ppl_n_frame(ctx), 2u);
}

TEST_P(Progressive, RefusedSizesStopTheFrame) {
  use_size(128, 14);
  const struct {
    uint32_t width, height, out_width, out_height;
  } refused[] = {{320, 240, 320, 241}, {100, 100, 100, 100}, {480, 576, 480, 480}, {0, 0, 0, 0}};
  for (const FrameConversion &conversion : progressive_conversions)
    for (const auto &size : refused) {
      sizes = {size.width, size.height, size.out_width, size.out_height};
      Buffers how;
      how.output_bytes = 16;
      const Picture picture = run(conversion, std::vector<uint8_t>(16), how);
      EXPECT_EQ(picture.result, 0);
      EXPECT_TRUE(picture.all(0, 16, untouched));
      EXPECT_EQ(ppl_n_frame(ctx), 0u);
      EXPECT_EQ(ctx->frame_width, 128);
    }
}

TEST_P(Progressive, BroadcastWidthsAreConvertedToTheirLastColumn) {
  for (const auto &[width, height, out_height] :
       {std::array{720u, 480u, 576u}, {704u, 480u, 483u}, {480u, 480u, 480u}, {720u, 576u, 576u}}) {
    sizes = {width, height, width, out_height};
    const Video video = textured_video(width, height);
    const Picture picture = run(uyvy_to_i420, video);
    for (size_t line = 0; line < height; ++line)
      for (size_t x = 0; x < width; ++x) ASSERT_EQ(picture.y(x, line), video.y(x, line));
    EXPECT_TRUE(picture.all(size_t{width} * height, size_t{width} * out_height, 16));
    EXPECT_EQ(picture.v(width / 2 - 1, height / 2 - 1),
              (video.v(width / 2 - 1, height - 2) + video.v(width / 2 - 1, height - 1) + 1) / 2);
  }
}

TEST_P(Progressive, Size352IsConvertedUnscaled) {
  sizes = {640, 480, 352, 288};
  Buffers how;
  how.output_bytes = 640 * 480 * 3 / 2;
  const Video video = textured_video(640, 480);
  for (int call = 0; call < 2; ++call) {  // each takes the sizes anew
    const Picture picture = run(yuyv_to_i420, video.bytes(Packing::yuyv), how);
    EXPECT_EQ(picture.result, 1);
    for (size_t i = 0; i < 640 * 480; ++i) ASSERT_EQ(picture.bytes[i], video.luma[i]);
  }
  EXPECT_EQ(ppl_n_frame(ctx), 2u);
}

TEST_P(Progressive, StrideOfRawFramesIsNotRead) {
  const Video video = textured_video(128, 14);
  use_size(128, 14);
  const Picture plain = run(yuyv_to_i420, video);
  ASSERT_EQ(ppl_new_frame_size(ctx, 128, 14, 256), 1);
  EXPECT_TRUE(run(yuyv_to_i420, video).bytes == plain.bytes);
  EXPECT_EQ(ctx->frame_stride, 256);
}

TEST_P(Progressive, OddSizesAreConvertedToTheirEvenPart) {
  use_size(131, 15);
  const Video video = textured_video(131, 15);
  const Picture picture = run(yuyv_to_i420, video);
  for (size_t line = 0; line < 15; ++line)
    for (size_t x = 0; x < 131; ++x)
      ASSERT_EQ(picture.y(x, line), x < 130 && line < 14 ? video.y(x, line) : untouched);
}

TEST_P(Progressive, ControlsOfRawFramesDoNotAct) {
  use_size(128, 14);
  const Video video = textured_video(128, 14);
  for (const FrameConversion &conversion : progressive_conversions) {
    ppl_reset_all_controls(ctx);
    const Picture plain = run(conversion, video);
    ppl_set_gamma(ctx, 12);
    ppl_set_contrast_c(ctx, 50, nullptr, nullptr);
    ppl_set_sat_hue(ctx, 400, 90);
    ppl_set_rgb_gain(ctx, 400, 300, 500);
    ppl_set_optical_black_b_gb_gr_r(ctx, 9, 9, 9, 9);
    ppl_set_quality(ctx, 5);
    EXPECT_TRUE(run(conversion, video).bytes == plain.bytes) << conversion.name;
  }
}

}  // namespace
}  // namespace ppl_test
