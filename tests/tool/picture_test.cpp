#include "pictures/picture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "pictures/file_formats.h"
#include "tool/run_tool.h"

namespace ppl_test {
namespace {

using ppl::tool::Bytes;
using ppl::tool::Format;
using ppl::tool::FrameView;
using ppl::tool::Picture;
using ppl::tool::to_picture;
using ppl::tool::y4m_frame;

Bytes pixel(const Picture &picture, uint32_t x, uint32_t y) {
  return Bytes(picture.pixel(x, y), picture.pixel(x, y) + 3);
}

TEST(Picture, StudioRangeColoursAreThoseOfBt601) {
  struct {
    uint8_t y, u, v;
    Bytes rgb;
  } const cases[] = {
      {16, 128, 128, {0, 0, 0}},        {235, 128, 128, {255, 255, 255}},
      {126, 128, 128, {128, 128, 128}}, {82, 90, 240, {255, 1, 0}},
      {144, 54, 34, {0, 255, 0}},       {41, 240, 110, {0, 0, 255}},
      {0, 128, 128, {0, 0, 0}},         {255, 128, 128, {255, 255, 255}},
  };
  for (const auto &c : cases) {
    const uint8_t i420[6] = {c.y, c.y, c.y, c.y, c.u, c.v};
    const Bytes rgb = pixel(to_picture({Format::i420, {2, 2}, i420}), 1, 1);
    for (size_t i = 0; i < 3; ++i) EXPECT_NEAR(rgb[i], c.rgb[i], 1) << int{c.y} << " channel " << i;
  }
}

TEST(Picture, PackedAndPlanarFramesShowTheSamePicture) {
  // Two cells side by side; both lines of a cell have its chroma.
  const uint8_t i420[] = {20, 60, 100, 140, 30, 70, 110, 150, 90, 200, 210, 80};
  const uint8_t yuyv[] = {20, 90, 60, 210, 100, 200, 140, 80, 30, 90, 70, 210, 110, 200, 150, 80};
  const uint8_t uyvy[] = {90, 20, 210, 60, 200, 100, 80, 140, 90, 30, 210, 70, 200, 110, 80, 150};
  const Picture planar = to_picture({Format::i420, {4, 2}, i420});
  EXPECT_EQ(planar.rgb, to_picture({Format::yuyv, {4, 2}, yuyv}).rgb);
  EXPECT_EQ(planar.rgb, to_picture({Format::uyvy, {4, 2}, uyvy}).rgb);
  EXPECT_NE(pixel(planar, 0, 0), pixel(planar, 2, 0));
}

TEST(Picture, RgbFramesAreTurnedOverAndTheirBytesSorted) {
  const uint8_t rgb24[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  EXPECT_EQ(to_picture({Format::rgb24, {2, 2}, rgb24}).rgb,
            (Bytes{9, 8, 7, 12, 11, 10, 3, 2, 1, 6, 5, 4}));
  const uint8_t rgb32[] = {1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 10, 11, 12, 0};
  EXPECT_EQ(to_picture({Format::rgb32, {2, 2}, rgb32}).rgb,
            (Bytes{9, 8, 7, 12, 11, 10, 3, 2, 1, 6, 5, 4}));
}

TEST(Picture, OddFramesLoseTheLineAndColumnWithoutChroma) {
  // Three by three: chroma planes of one by one, two bytes of which lie at 9 and 11.
  const uint8_t i420[13] = {16, 235, 99, 235, 16, 99, 99, 99, 99, 128, 0, 128, 0};
  const Picture picture = to_picture({Format::i420, {3, 3}, i420});
  EXPECT_EQ(picture.size.width, 2u);
  EXPECT_EQ(picture.size.height, 2u);
  EXPECT_EQ(picture.rgb, (Bytes{0, 0, 0, 255, 255, 255, 255, 255, 255, 0, 0, 0}));
}

TEST(PictureFile, PpmHasItsHeaderAndTopDownPixels) {
  Picture picture({2, 1});
  picture.rgb = {1, 2, 3, 4, 5, 6};
  EXPECT_EQ(encode_ppm(picture), bytes_of(std::string("P6\n2 1\n255\n\1\2\3\4\5\6")));
}

TEST(PictureFile, Y4mSortsPackedVideoIntoPlanes) {
  EXPECT_EQ(ppl::tool::y4m_header(Format::yuyv, {4, 2}),
            bytes_of("YUV4MPEG2 W4 H2 F30:1 Ip A1:1 C422 XCOLORRANGE=LIMITED\n"));
  EXPECT_EQ(ppl::tool::y4m_header(Format::i420, {4, 2}),
            bytes_of("YUV4MPEG2 W4 H2 F30:1 Ip A1:1 C420jpeg XCOLORRANGE=LIMITED\n"));
  const uint8_t yuyv[] = {1, 2, 3, 4, 5, 6, 7, 8, 11, 12, 13, 14, 15, 16, 17, 18};
  const uint8_t uyvy[] = {2, 1, 4, 3, 6, 5, 8, 7, 12, 11, 14, 13, 16, 15, 18, 17};
  Bytes expected = bytes_of("FRAME\n");
  for (const int byte : {1, 3, 5, 7, 11, 13, 15, 17, 2, 6, 12, 16, 4, 8, 14, 18})
    expected.push_back(static_cast<uint8_t>(byte));
  EXPECT_EQ(y4m_frame({Format::yuyv, {4, 2}, yuyv}), expected);
  EXPECT_EQ(y4m_frame({Format::uyvy, {4, 2}, uyvy}), expected);
}

class PngFile : public ToolTest {};

TEST_F(PngFile, ReadsBackWhatWasWritten) {
  Picture picture({3, 2});
  for (size_t i = 0; i < picture.rgb.size(); ++i) picture.rgb[i] = static_cast<uint8_t>(i * 14);
  const Bytes png = encode_png(picture);
  write("picture.png", std::string(png.begin(), png.end()));
  const Picture again = ppl::tool::read_png(path("picture.png"));
  EXPECT_EQ(again.size.width, 3u);
  EXPECT_EQ(again.size.height, 2u);
  EXPECT_EQ(again.rgb, picture.rgb);
}

}  // namespace
}  // namespace ppl_test
