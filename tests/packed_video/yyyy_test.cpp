// The packing of 1.5 bytes a pixel, and the conversion that converts nothing.
#include <gtest/gtest.h>

#include "packed_video/packed_video_fixture.h"

namespace ppl_test {
namespace {

constexpr uint32_t width = 160, height = 14;
constexpr size_t line_bytes = width * 3 / 2, groups = width / 16;

class Yyyy : public PackedVideoTierTest {
 protected:
  // No byte of a group like another, and every line another.
  static std::vector<uint8_t> source() {
    std::vector<uint8_t> bytes(line_bytes * height);
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(i * 11 + i / 240);
    return bytes;
  }
  static const uint8_t *group(const std::vector<uint8_t> &bytes, size_t line, size_t number) {
    return &bytes[line * line_bytes + number * 24];
  }
  static std::array<int, 16> luma_of(const uint8_t *q) {
    return {q[0],  q[2],  q[4],  q[6],  q[8], q[9] | q[17], q[10], q[11] | q[19],
            q[12], q[14], q[16], q[18], 0,    q[21],        0,     q[23]};
  }
  static std::array<int, 8> chroma_of(const uint8_t *q) {
    return {q[1], q[3], q[5], q[7], q[13], q[15], q[17], q[19]};
  }

  // The picture in its planes, turned as the mirrors are set, and the V plane as it was.
  void expect_picture(const Picture &picture, const std::vector<uint8_t> &bytes) {
    const bool h = ppl_h_mirror(ctx) != 0, v = ppl_v_mirror(ctx) != 0;
    const size_t luma = picture.size(), quarter = luma / 4;
    const auto line_start = [&](size_t line, size_t pitch, size_t plane) {
      return v ? plane - (line + 1) * pitch : line * pitch;
    };
    for (size_t line = 0; line < height; ++line)
      for (size_t x = 0; x < width; ++x)
        ASSERT_EQ(picture.bytes[line_start(line, width, luma) + (h ? width - 1 - x : x)],
                  luma_of(group(bytes, line, x / 16))[x % 16])
            << "line " << line << ", column " << x;
    for (size_t pair = 0; pair < height / 2; ++pair)
      for (size_t g = 0; g < groups; ++g)
        for (size_t i = 0; i < 8; ++i)
          ASSERT_EQ(picture.bytes[luma + line_start(pair, width / 2, quarter) +
                                  8 * (h ? groups - 1 - g : g) + i],
                    chroma_of(group(bytes, 2 * pair + 1, g))[i])
              << "pair " << pair << ", group " << g;
    EXPECT_TRUE(picture.all(luma + quarter, luma + 2 * quarter, untouched)) << "V plane";
  }
};

INSTANTIATE_TEST_SUITE_P(Tiers, Yyyy, testing::ValuesIn(both_tiers), tier_name);

TEST_P(Yyyy, GroupsOf24BytesMake16PixelsAndTheOddLinesChromaStays) {
  use_size(width, height);
  for (const FrameConversion &conversion : {yuyv_yyyy, uyvy_yyyy}) {
    const uint32_t before = ppl_n_frame(ctx);
    const Picture picture = run(conversion, source());
    EXPECT_EQ(picture.result, 1);
    EXPECT_EQ(ppl_n_frame(ctx), before + 1);
    expect_picture(picture, source());
  }
}

TEST_P(Yyyy, MirrorsTurnLumaAndTheOrderOfChromaGroups) {
  use_size(width, height);
  for (const int mirrors : {1, 2, 3}) {
    ppl_set_h_mirror(ctx, mirrors & 1);
    ppl_set_v_mirror(ctx, static_cast<uint8_t>(mirrors & 2));
    expect_picture(run(yuyv_yyyy, source()), source());
  }
}

TEST_P(Yyyy, BothNamesDoTheSame) {
  use_size(width, height);
  const std::vector<uint8_t> bytes = source();
  EXPECT_TRUE(run(yuyv_yyyy, bytes).bytes == run(uyvy_yyyy, bytes).bytes);
  // The entry functions, too: the same frame through both.
  GuardedBuffer frame(bytes.size(), Placement::ends_at_guard);
  memcpy(frame.data(), bytes.data(), bytes.size());
  std::vector<uint8_t> pictures[2];
  for (const size_t i : {0u, 1u}) {
    GuardedBuffer output(width * height * 3 / 2, Placement::ends_at_guard);
    const FrameFunction entry = i == 0 ? UYVYYYYYToI420MMX : YUYVYYYYToI420MMX;
    EXPECT_EQ(entry(ctx, frame.data(), output.data(), width, height, width, height), 1);
    pictures[i].assign(output.begin(), output.end());
  }
  EXPECT_TRUE(pictures[0] == pictures[1]);
}

TEST_P(Yyyy, BlackLinesFollowThePicture) {
  for (const bool v_mirror : {false, true}) {
    ppl_set_v_mirror(ctx, v_mirror);
    use_size(width, height, 0, 1, 3);
    const Picture picture = run(yuyv_yyyy, source());
    expect_picture(picture, source());
    const size_t luma = width * 18, rest = width * 4;
    const size_t black = v_mirror ? 0 : luma - rest;
    EXPECT_TRUE(picture.all(black, black + rest, 16));
    const size_t chroma = luma + (v_mirror ? 0 : luma / 4 - rest / 4);
    EXPECT_TRUE(picture.all(chroma, chroma + rest / 4, 128));
  }
}

TEST_P(Yyyy, OtherDecimationsLeaveTheOutputAloneAndCount) {
  for (const int32_t d : {1, 2, -1}) {
    use_size(width, height, d, 2, 2);
    const uint32_t before = ppl_n_frame(ctx);
    const Picture picture = run(uyvy_yyyy, source());
    EXPECT_EQ(picture.result, 1);
    EXPECT_TRUE(picture.all(0, picture.bytes.size(), untouched));
    EXPECT_EQ(ppl_n_frame(ctx), before + 1);
  }
}

TEST_P(Yyyy, SizesOutsideTheTableStayInsideTheirLines) {
  // Ten whole groups and nine bytes; what would come behind them counts as 0.
  use_size(166, height);
  std::vector<uint8_t> bytes(249 * height);
  for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(i * 7 + 1);
  const Picture picture = run(yuyv_yyyy, bytes);
  for (size_t line = 0; line < height; ++line) {
    const uint8_t *q = &bytes[line * 249 + 240];
    for (const size_t k : {0u, 1u, 2u, 3u}) ASSERT_EQ(picture.y(160 + k, line), q[2 * k]);
    ASSERT_EQ(picture.y(164, line), q[8]);
    ASSERT_EQ(picture.y(165, line), 0);
    ASSERT_EQ(picture.y(159, line), q[-1]);
  }
  for (size_t pair = 0; pair < height / 2; ++pair)
    for (const size_t k : {0u, 1u, 2u})
      ASSERT_EQ(picture.u(80 + k, pair), bytes[(2 * pair + 1) * 249 + 240 + 2 * k + 1]);
}

TEST_P(Yyyy, RefusedSizesStopTheFrame) {
  use_size(width, height);
  sizes.out_width = width + 2;
  for (const FrameConversion &conversion : {yuyv_yyyy, uyvy_yyyy, rgb24_to_rgb32}) {
    const Picture picture = run(conversion, source());
    EXPECT_EQ(picture.result, 0);
    EXPECT_TRUE(picture.all(0, picture.bytes.size(), untouched));
  }
  EXPECT_EQ(ppl_n_frame(ctx), 0u);
}

TEST_P(Yyyy, Rgb24ToRgb32CountsAndConvertsNothing) {
  sizes = {320, 240, 320, 240};
  const Picture picture = run(rgb24_to_rgb32, std::vector<uint8_t>(320 * 240 * 3, 7));
  EXPECT_EQ(picture.result, 0);
  EXPECT_TRUE(picture.all(0, picture.bytes.size(), untouched));
  EXPECT_EQ(ppl_n_frame(ctx), 1u);
  EXPECT_EQ(ctx->frame_width, 320);
}

}  // namespace
}  // namespace ppl_test
