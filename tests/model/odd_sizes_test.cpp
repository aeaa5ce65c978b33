// Output sizes that scaling makes odd: the model against places and values worked out by hand.
#include <gtest/gtest.h>

#include <vector>

#include "model/model.h"

namespace ppl_model {
namespace {

using Bytes = std::vector<uint8_t>;

class OddSizes : public testing::Test {
 protected:
  static constexpr uint8_t untouched = 0xEE;

  OddSizes() {
    machine::set_flags(1u | 1u << 24 | 1u << 25 | 1u << 26);
    machine::reset_counts();
    machine::reload_pool();
    ctx = ppl_init();
  }

  void set_size(uint32_t width, uint32_t height, int32_t decimation, int32_t top = 0,
                int32_t bottom = 0) {
    ASSERT_EQ(ppl_set_decimation(ctx, 0, 0, 0), 1);
    ASSERT_EQ(ppl_new_frame_size(ctx, width, height, width), 1);
    ASSERT_EQ(ppl_set_decimation(ctx, decimation, top, bottom), 1);
    W = width;
    H = height;
  }

  // Two fields of YUYV without the motion test. All of the first field's line l is luma 50 + l,
  // U 100 + l and V 200 - l.
  Bytes run_fields(FieldsFunction *function, size_t output_bytes) {
    Bytes first(size_t{W} * H + 16), other(first.size(), 7), output(output_bytes + 16, untouched);
    for (size_t i = 0; i < size_t{W} * (H / 2); ++i) {
      const auto line = static_cast<int>(i / W);
      aligned(first)[2 * i] = static_cast<uint8_t>(50 + line);
      aligned(first)[2 * i + 1] = static_cast<uint8_t>(i % 2 == 0 ? 100 + line : 200 - line);
    }
    EXPECT_EQ(function(ctx, aligned(other), aligned(first), aligned(other), aligned(output), W, H,
                       static_cast<uint32_t>(plain(ctx).out_width),
                       static_cast<uint32_t>(plain(ctx).out_height)),
              1);
    EXPECT_TRUE(free_bytes().empty());
    return {aligned(output), aligned(output) + output_bytes};
  }

  // A raw frame of one strong colour, so that no two of Y, U and V are equal.
  Bytes run_raw(size_t output_bytes) {
    Bytes source(size_t{W} * H + 16), output(output_bytes + 16, untouched);
    for (size_t i = 0; i < size_t{W} * H; ++i)
      aligned(source)[i] = i / W % 2 == 0 && i % 2 == 0 ? 120 : 30;
    EXPECT_EQ(ppl_process_blrtoi420(ctx, aligned(source), aligned(output), W, H, W), 1);
    EXPECT_TRUE(free_bytes().empty() && !picture_is_free());
    return {aligned(output), aligned(output) + output_bytes};
  }

  // Bytes from the end of the stretch before, all of one plane; '-': untouched.
  struct Stretch {
    size_t end;
    char plane;
  };
  // 132 by 48 at decimation 2: the output is declared as 33 by 12.
  void expect_at_2(uint32_t quality, bool h, bool v, const std::vector<Stretch> &stretches) {
    SCOPED_TRACE(testing::Message()
                 << "quality " << quality << (h ? ", h" : "") << (v ? ", v" : ""));
    ASSERT_EQ(ppl_set_quality(ctx, quality), 1);
    ppl_reset_mirrors(ctx);
    set_size(132, 48, 1);
    const Bytes half = run_raw(66 * 36);
    const uint8_t y = half[0], u = half[66 * 24], v_level = half[66 * 30];
    ASSERT_TRUE(y != u && y != v_level);
    ASSERT_TRUE(quality == 13 || u != v_level);
    ppl_set_h_mirror(ctx, h);
    ppl_set_v_mirror(ctx, v);
    set_size(132, 48, 2);
    const Bytes output = run_raw(2178);
    size_t at = 0;
    for (const Stretch &stretch : stretches)
      for (; at < stretch.end; ++at)
        ASSERT_EQ(output[at], stretch.plane == 'Y'   ? y
                              : stretch.plane == 'U' ? u
                              : stretch.plane == 'V' ? v_level
                                                     : untouched)
            << at;
    for (; at < output.size(); ++at) ASSERT_EQ(output[at], untouched) << at;
  }

  PplContext *ctx;
  uint32_t W = 0, H = 0;

 private:
  static uint8_t *aligned(Bytes &bytes) {
    return bytes.data() + (16 - reinterpret_cast<uintptr_t>(bytes.data()) % 16) % 16;
  }
};

// ---- Fields scaled down to an odd number of lines

TEST_F(OddSizes, PackedFieldsGiveAllTheirLinesBeforeTheLowerBar) {
  set_size(192, 46, 1, 0, 1);  // 23 lines and a black one
  const Bytes whole = run_fields(IntlYUYVToYUYVMMX_no_motion, 192 * 24);
  EXPECT_EQ(Bytes(whole.begin(), whole.begin() + 4), (Bytes{50, 100, 50, 200}));
  for (const size_t pair : {0u, 47u}) {
    const auto at = whole.begin() + static_cast<ptrdiff_t>(192 * 21 + 4 * pair);
    EXPECT_EQ(Bytes(at, at + 4), (Bytes{71, 121, 71, 179}));
    EXPECT_EQ(Bytes(at + 192, at + 196), (Bytes{72, 122, 72, 178}));
    EXPECT_EQ(Bytes(at + 384, at + 388), (Bytes{16, 128, 16, 128}));
  }

  set_size(192, 44, 2, 1, 0);  // a black line and 11: every second of a field of 22
  const Bytes second = run_fields(IntlYUYVToUYVYMMX, 96 * 12);
  EXPECT_EQ(Bytes(second.begin(), second.begin() + 4), (Bytes{128, 16, 128, 16}));
  EXPECT_EQ(Bytes(second.begin() + 96, second.begin() + 100), (Bytes{100, 50, 200, 50}));
  EXPECT_EQ(Bytes(second.end() - 4, second.end()), (Bytes{120, 70, 180, 70}));
}

TEST_F(OddSizes, PlanarFieldsGiveTheirLastLineAChromaRowOfItsOwn) {
  set_size(192, 46, 1, 0, 1);
  const Bytes output = run_fields(IntlYUYVToI420MMX_no_motion, 96 * 36);
  EXPECT_EQ(output[96 * 22 - 1], 71);
  EXPECT_EQ(output[96 * 22], 72);
  EXPECT_EQ(output[96 * 23 - 1], 72);
  EXPECT_EQ(output[96 * 23], 16);
  EXPECT_EQ(output[96 * 24 - 1], 16);
  // Lines 20 and 21 have U 120 and 121, V 180 and 179; line 22 has 122 and 178.
  EXPECT_EQ(output[96 * 24 + 48 * 10], 121);
  EXPECT_EQ(output[96 * 24 + 48 * 11], 122);
  EXPECT_EQ(output[96 * 24 + 48 * 12 - 1], 122);
  EXPECT_EQ(output[96 * 30 + 48 * 10], 180);
  EXPECT_EQ(output[96 * 30 + 48 * 11], 178);
  EXPECT_EQ(output[96 * 36 - 1], 178);
}

TEST_F(OddSizes, ThatChromaRowEndsWithItsPlane) {
  set_size(192, 46, 1);  // 96 by 23: 552 bytes a plane, eleven and a half rows
  const Bytes output = run_fields(IntlYUYVToI420MMX_no_motion, 3312);
  EXPECT_EQ(output[2207], 72);
  EXPECT_EQ(output[2208 + 527], 121);
  EXPECT_EQ(output[2208 + 528], 122);
  EXPECT_EQ(output[2208 + 551], 122);
  EXPECT_EQ(output[2208 + 552], 200);  // lines 0 and 1 have V 200 and 199
  EXPECT_EQ(output[2760 + 527], 180);
  EXPECT_EQ(output[2760 + 528], 178);
  EXPECT_EQ(output[3311], 178);
}

TEST_F(OddSizes, RgbFieldsGiveAllTheirLinesBesideTheLowerBar) {
  set_size(192, 46, 1, 0, 1);
  const Bytes output = run_fields(IntlYUYVToRGB24MMX_no_motion, 96 * 24 * 3);
  // The bar is the first line in memory, line 22 the next: Y 72, U 122, V 178 have
  // 74 * 56 = 4144, u = -6 and v = 50.
  for (size_t i = 0; i < 288; ++i) ASSERT_EQ(output[i], 0) << i;
  EXPECT_EQ(output[288], 52);   // (4144 - 774) >> 6
  EXPECT_EQ(output[289], 26);   // (4144 + 150 - 2600) >> 6
  EXPECT_EQ(output[290], 144);  // (4144 + 5100) >> 6
  EXPECT_EQ(output[575], 144);
}

// ---- Decimation 2 with an odd output width. Chroma is 33 samples a row, half of the output's
// width is 16: a row starts 33 behind the one before, or mirrored 33 - 2 * 16 before or behind it.

TEST_F(OddSizes, SinglePassChromaRowsAtAQuarterStartWhereTheCursorStands) {
  for (const uint32_t quality : {3u, 13u}) {
    for (const uint8_t P3_only : {uint8_t{0}, uint8_t{1}}) {
      ppl_set_P3_only(ctx, P3_only);
      expect_at_2(quality, false, true,
                  {{429, 'Y'}, {479, '-'}, {523, 'U'}, {578, '-'}, {622, 'V'}});
      expect_at_2(quality, true, true, {{99, 'Y'}, {198, 'U'}, {594, 'V'}});
    }
    // Steps of two blocks decide between the luma of a row and its U where both meet.
    ppl_set_P3_only(ctx, 1);
    expect_at_2(quality, false, false,
                {{585, 'Y'}, {592, 'U'}, {593, 'Y'}, {792, 'U'}, {891, 'V'}, {1188, 'Y'}});
    expect_at_2(
        quality, true, false,
        {{368, 'Y'}, {377, 'U'}, {381, 'Y'}, {385, 'U'}, {429, 'Y'}, {467, '-'}, {511, 'V'}});
    ppl_set_P3_only(ctx, 0);
    expect_at_2(quality, false, false,
                {{577, 'Y'}, {592, 'U'}, {593, 'Y'}, {792, 'U'}, {891, 'V'}, {1188, 'Y'}});
    expect_at_2(
        quality, true, false,
        {{368, 'Y'}, {385, 'U'}, {397, 'Y'}, {401, 'U'}, {429, 'Y'}, {467, '-'}, {511, 'V'}});
  }
}

TEST_F(OddSizes, ChainsChromaRowsAtAQuarterStartWhereTheCursorStands) {
  for (const uint32_t quality : {2u, 0u, 1u}) {
    expect_at_2(quality, false, false, {{495, 'Y'}, {792, 'U'}, {891, 'V'}, {1584, 'Y'}});
    expect_at_2(quality, true, false, {{33, 'Y'}, {368, '-'}, {412, 'U'}, {467, '-'}, {511, 'V'}});
    expect_at_2(quality, false, true,
                {{363, '-'}, {429, 'Y'}, {479, '-'}, {523, 'U'}, {578, '-'}, {622, 'V'}});
    expect_at_2(quality, true, true, {{99, 'Y'}, {198, 'U'}, {594, 'V'}});
  }
}

}  // namespace
}  // namespace ppl_model
