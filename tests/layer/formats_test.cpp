// Names and sizes.
#include <ppl.hpp>  // first, as it needs nothing else

#include "layer/layer_fixture.h"

namespace ppl_test {
namespace {

using ppl::Mosaic;
using ppl::Packing;
using ppl::PixelFormat;
using ppl::RawFormat;
using ppl::VideoFormat;
using ppl::VideoPacking;

TEST(LayerFormats, RawFramesHavePlainNamesAndThoseOfV4L2) {
  struct Row {
    const char *names[4];
    const char *fourcc[4];
    unsigned bits;
    Packing packing;
  };
  const Row rows[] = {
      {{"bggr", "gbrg", "grbg", "rggb"}, {"BA81", "GBRG", "GRBG", "RGGB"}, 8, Packing::plain},
      {{"bggr10", "gbrg10", "grbg10", "rggb10"},
       {"BG10", "GB10", "BA10", "RG10"},
       10,
       Packing::plain},
      {{"bggr10p", "gbrg10p", "grbg10p", "rggb10p"},
       {"pBAA", "pGAA", "pgAA", "pRAA"},
       10,
       Packing::mipi},
      {{"bggr12", "gbrg12", "grbg12", "rggb12"},
       {"BG12", "GB12", "BA12", "RG12"},
       12,
       Packing::plain},
      {{"bggr12p", "gbrg12p", "grbg12p", "rggb12p"},
       {"pBCC", "pGCC", "pgCC", "pRCC"},
       12,
       Packing::mipi},
      {{"bggr14", "gbrg14", "grbg14", "rggb14"},
       {"BG14", "GB14", "GR14", "RG14"},
       14,
       Packing::plain},
      {{"bggr16", "gbrg16", "grbg16", "rggb16"},
       {"BYR2", "GB16", "GR16", "RG16"},
       16,
       Packing::plain}};
  for (const Row &row : rows)
    for (size_t mosaic = 0; mosaic < 4; ++mosaic)
      for (const char *name : {row.names[mosaic], row.fourcc[mosaic]}) {
        const RawFormat format = RawFormat::named(name, 640, 480, 4000);
        const RawFormat expected{.width = 640,
                                 .height = 480,
                                 .mosaic = static_cast<Mosaic>(mosaic),
                                 .bits = row.bits,
                                 .packing = row.packing,
                                 .stride = 4000};
        EXPECT_EQ(format, expected) << name;
        EXPECT_EQ(format.name(), row.names[mosaic]);
        EXPECT_EQ(format.fourcc(), row.fourcc[mosaic]);
        EXPECT_EQ(std::get<RawFormat>(ppl::input_named(name, 640, 480, 4000)), expected);
      }
  EXPECT_EQ(RawFormat::named("BGGR8", 640, 480).bits, 8u);
  EXPECT_EQ(RawFormat::named("RGGB12P", 640, 480).packing, Packing::mipi);
}

TEST(LayerFormats, UnknownNamesAreRefusedWithThoseThatThereAre) {
  const std::string advice =
      "take bggr, gbrg, grbg or rggb with 8, 10, 12, 14 or 16 bits, such as rggb10, with a p for "
      "MIPI's packing of 10 and 12 bits, such as rggb10p, or V4L2's name";
  EXPECT_EQ(sentence_of([] { RawFormat::named("rggb9", 640, 480); }),
            "'rggb9' is no format of raw frames: " + advice);
  EXPECT_EQ(sentence_of([] { ppl::input_named("NV12", 640, 480); }),
            "'NV12' is no format of frames: take yuyv, uyvy or yyyy for packed video; for raw "
            "frames " +
                advice);
  EXPECT_EQ(sentence_of([] { VideoFormat::named("bggr", 640, 480); }),
            "'bggr' is no packed video: take yuyv, uyvy or yyyy");
  EXPECT_EQ(sentence_of([] { ppl::pixel_format_named("nv12"); }),
            "'nv12' is no format of pictures: take i420, yuyv, uyvy, rgb24 or rgb32");
}

TEST(LayerFormats, VideoAndPicturesHaveNames) {
  for (const char *name : {"YUYV", "yuyv", "YUY2"})
    EXPECT_EQ(VideoFormat::named(name, 640, 480).packing, VideoPacking::yuyv);
  EXPECT_EQ(VideoFormat::named("UYVY", 640, 480).packing, VideoPacking::uyvy);
  EXPECT_EQ(VideoFormat::named("yyyy", 640, 480).name(), "yyyy");
  EXPECT_EQ(std::get<VideoFormat>(ppl::input_named("uyvy", 640, 480)).packing, VideoPacking::uyvy);
  for (const PixelFormat format : ppl::all_pixel_formats)
    EXPECT_EQ(ppl::pixel_format_named(ppl::name_of(format)), format);
  EXPECT_EQ(ppl::pixel_format_named("YU12"), PixelFormat::i420);
  EXPECT_EQ(ppl::pixel_format_named("BGR3"), PixelFormat::rgb24);
}

TEST(LayerFormats, FramesEndWithTheirLastLine) {
  EXPECT_EQ(RawFormat::named("rggb", 640, 480).bytes(), 640u * 480);
  EXPECT_EQ(RawFormat::named("rggb", 640, 480, 700).bytes(), 700u * 479 + 640);
  EXPECT_EQ(RawFormat::named("rggb12", 640, 480).bytes(), 1280u * 480);
  EXPECT_EQ(RawFormat::named("rggb10p", 640, 480).bytes(), 800u * 480);
  EXPECT_EQ(RawFormat::named("rggb10p", 642, 1).bytes(), 805u) << "a whole last group";
  EXPECT_EQ(RawFormat::named("rggb12p", 640, 480).bytes(), 960u * 480);
  VideoFormat video = VideoFormat::named("yuyv", 640, 480);
  EXPECT_EQ(video.bytes(), 1280u * 480);
  video.scan = ppl::Scan::separate;
  EXPECT_EQ(video.bytes(), 1280u * 240);
  EXPECT_EQ(video.field_bytes(), 1280u * 240);
  video.stride = 1300;
  EXPECT_EQ(video.bytes(), 1300u * 239 + 1280);
  EXPECT_EQ(VideoFormat::named("yyyy", 640, 480).bytes(), 960u * 480);
}

TEST(LayerFormats, PicturesAreAsLargeAsTheManualSays) {
  const RawFormat raw{.width = 640, .height = 480};
  const auto layout = [&](PixelFormat format, int decimation = 0) {
    return ppl::layout_of(raw, {.format = format, .decimation = decimation});
  };
  EXPECT_EQ(layout(PixelFormat::i420).bytes, 640u * 480 * 3 / 2);
  EXPECT_EQ(layout(PixelFormat::i420).planes[2],
            (ppl::PlaneLayout{640 * 480 + 320 * 240, 320, 240}));
  EXPECT_EQ(layout(PixelFormat::yuyv).bytes, 640u * 480 * 2);
  EXPECT_EQ(layout(PixelFormat::rgb24).bytes, 640u * 480 * 3);
  EXPECT_EQ(layout(PixelFormat::rgb32).planes[0].line_bytes, 2560u);
  EXPECT_EQ(layout(PixelFormat::uyvy, 1).bytes, 320u * 240 * 2);
  EXPECT_EQ(layout(PixelFormat::rgb24, -1).bytes, 1280u * 960 * 3);
  EXPECT_EQ(ppl::layout_of(raw, {.black_lines_top = 4, .black_lines_bottom = 6}).height, 490u);
}

}  // namespace
}  // namespace ppl_test
