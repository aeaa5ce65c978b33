// The model against values worked out by hand.
#include "model/model.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <vector>

namespace ppl_model {
namespace {

constexpr uint32_t both_tiers = 1u | 1u << 24 | 1u << 25 | 1u << 26;
constexpr uint32_t p3_alone = 1u | 1u << 24 | 1u << 25;

// A buffer whose first byte stands `misalignment` bytes behind a 16-byte boundary.
class Buffer {
 public:
  explicit Buffer(size_t size, uint8_t fill = 0, size_t misalignment = 0)
      : storage_(size + 32, fill) {
    const size_t address = reinterpret_cast<size_t>(storage_.data());
    start_ = (16 - address % 16) % 16 + misalignment;
  }
  uint8_t *data() { return storage_.data() + start_; }
  uint8_t &operator[](size_t i) { return storage_[start_ + i]; }

 private:
  std::vector<uint8_t> storage_;
  size_t start_;
};

class Model : public testing::Test {
 protected:
  Model() {
    machine::set_flags(both_tiers);
    machine::reset_counts();
    machine::reload_pool();
    ctx = ppl_init();
  }
  ~Model() override {
    machine::set_flags(both_tiers);
    machine::reset_counts();
  }

  void set_size(uint32_t width, uint32_t height) {
    ASSERT_EQ(ppl_new_frame_size(ctx, width, height, width), 1);
  }
  void use_identity_table() {
    std::vector<uint8_t> identity(256);
    std::iota(identity.begin(), identity.end(), uint8_t{0});
    ppl_copy_rgb_gamma_table(ctx, identity.data());
  }

  PplContext *ctx;
};

using Gamma = Model;
using Contrast = Model;
using Colour = Model;
using Geometry = Model;
using Controls = Model;
using Frames = Model;
using Statistics = Model;
using Copies = Model;

std::vector<uint8_t> head(const uint8_t *table, size_t count) { return {table, table + count}; }
std::vector<uint8_t> tail(const uint8_t *table, size_t count) {
  return {table + 256 - count, table + 256};
}
using Bytes = std::vector<uint8_t>;

// ---- Gamma

TEST_F(Gamma, IndexMinus17IsTheIdentity) {
  ASSERT_EQ(ppl_set_gamma(ctx, -17), 1);
  for (int x = 0; x < 256; ++x) {
    EXPECT_EQ(ppl_rgb_gamma_table(ctx)[x], x);
    EXPECT_EQ(ppl_yuv_gamma_table(ctx)[x], std::clamp(x, 16, 235));
  }
}

TEST_F(Gamma, Index0HasTheTellingEntries) {
  const uint8_t *full = ppl_rgb_gamma_table(ctx);
  EXPECT_EQ(head(full, 10), (Bytes{0, 4, 9, 13, 18, 22, 26, 30, 33, 36}));
  EXPECT_EQ(tail(full, 6), (Bytes{253, 253, 254, 254, 255, 255}));
  EXPECT_EQ(full[128], 180);
  EXPECT_EQ(head(ppl_yuv_gamma_table(ctx) + 16, 6), (Bytes{16, 20, 25, 29, 33, 38}));
}

TEST_F(Gamma, TheOutermostIndicesHaveTheTellingEntries) {
  ASSERT_EQ(ppl_set_gamma(ctx, -32), 1);
  EXPECT_EQ(ppl_nf20_12_gamma(ctx, nullptr, nullptr, nullptr), 8260);
  for (int x = 0; x <= 14; ++x) EXPECT_EQ(ppl_rgb_gamma_table(ctx)[x], 0);
  EXPECT_GT(ppl_rgb_gamma_table(ctx)[15], 0);
  EXPECT_EQ(ppl_rgb_gamma_table(ctx)[255], 253);

  ASSERT_EQ(ppl_set_gamma(ctx, 32), 1);
  EXPECT_EQ(ppl_nf20_12_gamma(ctx, nullptr, nullptr, nullptr), 411);
  EXPECT_EQ(head(ppl_rgb_gamma_table(ctx), 8), (Bytes{0, 11, 23, 35, 46, 57, 64, 71}));
  EXPECT_LT(ppl_rgb_gamma_table(ctx)[251], 255);
  EXPECT_EQ(ppl_rgb_gamma_table(ctx)[252], 255);

  EXPECT_EQ(ppl_set_gamma(ctx, 33), 0);
  EXPECT_EQ(ppl_set_gamma(ctx, -33), 0);
  EXPECT_EQ(ppl_nf20_12_gamma(ctx, nullptr, nullptr, nullptr), 411);
  ppl_reset_gamma(ctx);
  EXPECT_EQ(ppl_nf20_12_gamma(ctx, nullptr, nullptr, nullptr), 1843);
}

// ---- Contrast

TEST_F(Contrast, CurvesHaveTheTellingEntries) {
  const uint8_t *table = ppl_contrast_table(ctx);
  int32_t x = -1, y = -1;
  ASSERT_EQ(ppl_set_contrast_c(ctx, 127, &x, &y), 1);
  EXPECT_EQ(x, 127);
  EXPECT_EQ(y, 0);
  for (int i = 0; i < 256; ++i) EXPECT_EQ(table[i], i <= 127 ? 0 : 255);

  ASSERT_EQ(ppl_set_contrast_c(ctx, -127, &x, &y), 1);
  EXPECT_EQ(x, 0);
  EXPECT_EQ(y, 127);
  for (int i = 0; i < 256; ++i) EXPECT_EQ(table[i], 127);

  ASSERT_EQ(ppl_set_contrast_c(ctx, 64, nullptr, nullptr), 1);
  EXPECT_EQ(table[64], 0);
  EXPECT_EQ(table[65], 2);
  EXPECT_EQ(table[128], 128);
  EXPECT_EQ(table[190], 252);
  EXPECT_EQ(table[192], 255);

  ASSERT_EQ(ppl_set_contrast_c(ctx, -64, nullptr, nullptr), 1);
  EXPECT_EQ(table[0], 64);
  EXPECT_EQ(table[128], 127);
  EXPECT_EQ(table[255], 190);

  EXPECT_EQ(ppl_set_contrast_c(ctx, -128, nullptr, nullptr), 0);
  EXPECT_EQ(ppl_set_contrast_c(ctx, 128, nullptr, nullptr), 0);
  ASSERT_EQ(ppl_set_contrast_xy(ctx, 0, 0), 1);
  for (int i = 0; i < 256; ++i) EXPECT_EQ(table[i], i);
}

// ---- Colour

TEST_F(Colour, NeutralControlsGiveTheNeutralSets) {
  const PlainState &state = plain(ctx);
  using Set = std::array<int32_t, 9>;
  EXPECT_EQ(state.colour_rgb, (Set{256, 0, 0, 0, 256, 0, 0, 0, 256}));
  EXPECT_EQ(state.colour_yuv_full, (Set{77, 150, 29, -44, -87, 131, 131, -110, -21}));
  EXPECT_EQ(state.colour_yuv_studio, (Set{66, 129, 25, -38, -74, 112, 112, -94, -18}));
  EXPECT_EQ(state.offset_rgb, 0);
  EXPECT_EQ(state.offset_yuv_full, 0);
  EXPECT_EQ(state.offset_yuv_studio, 0);
}

TEST_F(Colour, DefaultMatrixHasTheTellingBaseAndSlope) {
  const std::array<int, 9> base = {15, 36, 3, -5, -13, 19, 17, -13, -4};
  const std::array<int, 9> slope = {-66, 207, -142, -260, -658, 924, 825, -635, -188};
  const Parameters &params = derived(ctx);
  for (size_t i = 0; i < 9; ++i) {
    EXPECT_EQ(params.studio_base0_vec[i], base[i]) << i;
    EXPECT_EQ(params.studio_slope_vec[i], slope[i]) << i;
  }
  EXPECT_EQ(params.index_bound_vec, 12);
  EXPECT_EQ(params.offset_studio_vec, 32);
  ASSERT_EQ(ppl_set_sensor_matrix_index_upper_bound(ctx, 0), 1);
  EXPECT_EQ(params.index_bound_vec, 1);
}

TEST_F(Colour, HueIsNormalisedAndSaturationIsLimited) {
  EXPECT_EQ(ppl_set_hue(ctx, -90), 1);
  EXPECT_EQ(ppl_hue_degree(ctx), 270);
  EXPECT_EQ(ppl_set_hue(ctx, 720), 1);
  EXPECT_EQ(ppl_hue_degree(ctx), 0);
  EXPECT_EQ(ppl_set_sat_hue(ctx, 513, 5), 0);
  EXPECT_EQ(ppl_nf88_sat(ctx), 256u);
  EXPECT_EQ(ppl_hue_degree(ctx), 0);
  ASSERT_EQ(ppl_set_sat_hue(ctx, 256, 180), 1);
  const std::array<int32_t, 4> flipped = {-256, 0, 0, -256};
  EXPECT_EQ(plain(ctx).chroma_matrix, flipped);
}

// ---- Geometry

TEST_F(Geometry, RefusesWhatItCannotPlan) {
  set_size(640, 480);
  EXPECT_EQ(ppl_new_frame_size(ctx, 1281, 480, 1280), 0);
  EXPECT_EQ(ppl_new_frame_size(ctx, 640, 1025, 640), 0);
  EXPECT_EQ(ppl_new_frame_size(ctx, 64, 480, 1281), 0);
  EXPECT_EQ(ppl_new_frame_size(ctx, 127, 480, 127), 0);
  for (uint32_t height : {0u, 11u, 12u, 16u})
    EXPECT_EQ(ppl_new_frame_size(ctx, 640, height, 640), 0);
  EXPECT_EQ(plain(ctx).frame_width, 640);
  for (uint32_t height : {13u, 14u, 15u, 17u})
    EXPECT_EQ(ppl_new_frame_size(ctx, 640, height, 640), 1);
  machine::set_flags(p3_alone);
  EXPECT_EQ(ppl_new_frame_size(ctx, 64, 480, 64), 1);
  EXPECT_EQ(ppl_new_frame_size(ctx, 63, 480, 63), 0);
}

TEST_F(Geometry, ModesKeepTheirBlackLines) {
  EXPECT_EQ(ppl_new_frame_sizes(ctx, 704, 576, 352, 300), 1);
  EXPECT_EQ(ppl_decimation(ctx), 1);
  EXPECT_EQ(ppl_decimation_top_black_lines(ctx), 6);
  EXPECT_EQ(ppl_decimation_bottom_black_lines(ctx), 6);
  EXPECT_EQ(plain(ctx).out_height, 300);
  // The same mode again loses them: the second step finds nothing to change.
  EXPECT_EQ(ppl_new_frame_sizes(ctx, 704, 576, 352, 300), 1);
  EXPECT_EQ(plain(ctx).out_height, 288);
  EXPECT_EQ(ppl_new_frame_sizes(ctx, 704, 480, 352, 239), 0);
  EXPECT_EQ(ppl_new_frame_sizes(ctx, 480, 576, 480, 480), 0);
  EXPECT_EQ(ppl_new_frame_sizes(ctx, 640, 480, 352, 288), 1);
  EXPECT_EQ(plain(ctx).out_width, 640);
  EXPECT_EQ(plain(ctx).out_height, 480);
}

TEST_F(Geometry, WindowScalesFitTheWiderTier) {
  set_size(352, 288);
  EXPECT_EQ(plan(ctx, Tier::p3).cell_width, 5);
  EXPECT_EQ(plan(ctx, Tier::sse2).cell_width, 2);
  EXPECT_EQ(plain(ctx).r_window_scale, 0x100000u / (8 * 2 * 24));
}

// ---- Controls and machine

TEST_F(Controls, FailedSaveKeepsWhatWasDerived) {
  machine::reset_counts();
  machine::fail_saves(0, 1);
  EXPECT_EQ(ppl_set_r_gain(ctx, 512), 1);
  EXPECT_EQ(ppl_nf88_r_gain(ctx), 512);
  EXPECT_EQ(derived(ctx).rgb_gain_GR_vec.odd, 32);
  EXPECT_EQ(ppl_set_r_gain(ctx, 2047), 1);
  EXPECT_EQ(derived(ctx).rgb_gain_GR_vec.odd, 255);
  EXPECT_EQ(machine::save_count(), 2u);
  EXPECT_EQ(ppl_set_rgb_gain(ctx, 2048, 0, 0), 0);
  EXPECT_EQ(ppl_nf88_g_gain(ctx), 0);
  EXPECT_EQ(derived(ctx).rgb_gain_GR_vec.even, 32);
}

TEST_F(Controls, AnyTierKeepsTheParametersUpToDateAndNoneLeavesThem) {
  for (const uint32_t flags : {p3_alone, both_tiers, 1u | 1u << 26}) {
    machine::set_flags(flags);
    EXPECT_EQ(ppl_set_edge_threshold(ctx, 100), 1);
    EXPECT_EQ(ppl_set_edge_threshold(ctx, 700), 1);
    EXPECT_EQ(derived(ctx).edge_threshold_vec, 700);
    EXPECT_EQ(ppl_set_r_delta(ctx, 40000), 0);
  }
  machine::set_flags(1);
  EXPECT_EQ(ppl_set_edge_threshold(ctx, 100), 1);
  EXPECT_EQ(derived(ctx).edge_threshold_vec, 700);
  EXPECT_EQ(ppl_set_r_delta(ctx, 40000), 1);
}

TEST_F(Controls, MirrorsAndScaleTryASaveAlthoughNothingIsDerivedFromThem) {
  machine::reset_counts();
  machine::fail_saves(1, 1);
  EXPECT_EQ(ppl_set_h_mirror(ctx, 1), 1);
  EXPECT_EQ(ppl_set_h_mirror(ctx, 1), 1);
  EXPECT_EQ(ppl_set_v_mirror(ctx, 2), 1);
  EXPECT_EQ(machine::save_count(), 3u);
  ppl_reset_mirrors(ctx);
  EXPECT_EQ(machine::save_count(), 5u);
  EXPECT_EQ(ppl_set_decimation(ctx, 1, 0, 0), 1);
  EXPECT_EQ(ppl_set_decimation(ctx, 1, 0, 0), 1);  // nothing to change
  EXPECT_EQ(ppl_set_decimation(ctx, 3, 0, 0), 0);
  EXPECT_EQ(machine::save_count(), 6u);
}

TEST_F(Controls, GroupResetsSaveFiveTimes) {
  machine::reset_counts();
  ppl_reset_medium_filter(ctx);
  EXPECT_EQ(machine::save_count(), 5u);
  ppl_reset_qual_min_max(ctx);
  EXPECT_EQ(machine::save_count(), 10u);
  ppl_set_contrast_c(ctx, 3, nullptr, nullptr);
  EXPECT_EQ(machine::save_count(), 11u);
}

TEST_F(Controls, DetectionReadsTheLeaves) {
  using machine::CpuidRegisters;
  const auto flags = [](uint32_t highest, const char *vendor, uint32_t edx, uint32_t extended) {
    return machine::detect([=](uint32_t leaf) {
      const auto word = [&](int i) {
        return static_cast<uint32_t>(vendor[i]) | static_cast<uint32_t>(vendor[i + 1]) << 8 |
               static_cast<uint32_t>(vendor[i + 2]) << 16 |
               static_cast<uint32_t>(vendor[i + 3]) << 24;
      };
      if (leaf == 0) return CpuidRegisters{highest, word(0), word(8), word(4)};
      if (leaf == 1) return CpuidRegisters{0, 0, 0, edx};
      if (leaf == 0x80000000u) return CpuidRegisters{0x80000001u, 0, 0, 0};
      return CpuidRegisters{0, 0, 0, extended};
    });
  };
  EXPECT_EQ(flags(0, "AuthenticAMD", ~0u, ~0u), 1u);
  EXPECT_EQ(flags(1, "GenuineIntel", 1u << 25, 0), 1u | 1u << 24 | 1u << 25);
  EXPECT_EQ(flags(1, "AuthenticAMD", 0, ~0u), 0xC0400001u | 1u << 24);
  EXPECT_EQ(flags(1, "AuthenticAMd", 0, ~0u), 0x80000001u);
}

// ---- Frames

TEST_F(Frames, Decimation2RunsPastTheDeclaredEnd) {
  set_size(128, 48);
  ppl_set_decimation(ctx, 2, 0, 0);
  for (uint8_t P3_only : {uint8_t{0}, uint8_t{1}}) {
    ppl_set_P3_only(ctx, P3_only);
    Buffer src(128 * 48, 60), dst(4096, 0xEE);
    ASSERT_EQ(ppl_process_blrtoi420(ctx, src.data(), dst.data(), 128, 48, 128), 1);
    for (size_t i = 0; i < 1152; ++i) ASSERT_NE(dst[i], 0xEE) << i;
    for (size_t i = 1152; i < 4096; ++i) ASSERT_EQ(dst[i], 0xEE) << i;
  }
}

TEST_F(Frames, UnscaledRgb32FallsOnTheDoubledTable) {
  set_size(128, 48);
  ppl_set_decimation(ctx, -1, 0, 0);
  Buffer src(128 * 48, 60), dst(256 * 96 * 4, 0xEE);
  ASSERT_EQ(ppl_process_blrtorgb32(ctx, src.data(), dst.data(), 128, 48, 128), 1);
  const auto half = [&](size_t line, size_t right) {
    return dst[(line * 256 + right * 128) * 4] != 0xEE;
  };
  for (size_t right : {0u, 1u}) {
    EXPECT_EQ(half(95, right), right == 0);
    EXPECT_EQ(half(94, right), right == 0);
    EXPECT_FALSE(half(93, right));
    EXPECT_EQ(half(92, right), right == 1);
    EXPECT_EQ(half(91, right), right == 1);
    EXPECT_EQ(half(90, right), right == 0);
    EXPECT_EQ(half(89, right), right == 0);
  }
}

TEST_F(Frames, BothMirrorsMoveChromaOneLineEarly) {
  set_size(128, 48);
  ppl_set_h_mirror(ctx, 1);
  ppl_set_v_mirror(ctx, 1);
  Buffer src(128 * 48, 60), dst(128 * 72, 0xEE);
  ASSERT_EQ(ppl_process_blrtoi420(ctx, src.data(), dst.data(), 128, 48, 128), 1);
  const size_t S = 128 * 48, Q = S / 4;
  EXPECT_EQ(dst[S - 64], dst[S]);          // U over the last luma line
  EXPECT_NE(dst[S - 65], dst[S]);          // luma before it
  EXPECT_EQ(dst[S + Q - 64], dst[S + Q]);  // V over U's last line
  EXPECT_NE(dst[S + 2 * Q - 65], 0xEE);
  for (size_t i = S + 2 * Q - 64; i < S + 2 * Q; ++i) EXPECT_EQ(dst[i], 0xEE);
}

TEST_F(Frames, BlackLinesStayUntouched) {
  set_size(128, 48);
  ppl_set_decimation(ctx, 1, 2, 4);
  Buffer src(128 * 48, 60), dst(64 * 45, 0xEE);
  ASSERT_EQ(ppl_process_blrtoi420(ctx, src.data(), dst.data(), 128, 48, 128), 1);
  EXPECT_EQ(plain(ctx).out_height, 30);
  EXPECT_NE(dst[24 * 64 - 1], 0xEE);
  for (size_t i = 24 * 64; i < 30 * 64; ++i) EXPECT_EQ(dst[i], 0xEE);
  EXPECT_NE(dst[30 * 64], 0xEE);

  ppl_set_decimation(ctx, 0, 2, 4);
  Buffer rgb(128 * 54 * 3, 0xEE);
  ASSERT_EQ(ppl_process_blrtorgb24(ctx, src.data(), rgb.data(), 128, 48, 128), 1);
  for (size_t i = 0; i < 6 * 128 * 3; ++i) EXPECT_EQ(rgb[i], 0xEE);
  EXPECT_NE(rgb[6 * 128 * 3], 0xEE);
}

TEST_F(Frames, GreyFrameKeepsItsLevelThroughTheDefaults) {
  set_size(128, 48);
  use_identity_table();
  Buffer src(128 * 48, 100), dst(128 * 72);
  ASSERT_EQ(ppl_process_blrtoi420(ctx, src.data(), dst.data(), 128, 48, 128), 1);
  const WordMatrix &matrix = derived(ctx).studio_base1_vec;
  const int row_sum = matrix[0] + matrix[1] + matrix[2];
  EXPECT_EQ(dst[0], ((100 * row_sum + 32) >> 6) + 16);
  EXPECT_EQ(src[0], 100);
}

TEST_F(Frames, LumaIsMirroredAndGreenFollowsTheMosaic) {
  set_size(128, 48);
  use_identity_table();
  ppl_set_h_mirror(ctx, 1);
  Buffer src(128 * 48), dst(128 * 72);
  src[1] = 64;  // Gb of the first cell
  ASSERT_EQ(ppl_process_blrtoi420(ctx, src.data(), dst.data(), 128, 48, 128), 1);
  const int g = derived(ctx).studio_base1_vec[1];
  EXPECT_EQ(dst[127], ((32 * g + 32) >> 6) + 16);
  EXPECT_EQ(dst[126], ((64 * g + 32) >> 6) + 16);
  EXPECT_EQ(dst[125], 16);
  EXPECT_EQ(dst[128 + 127], 16);
}

TEST_F(Frames, DoublingFollowsItsRules) {
  set_size(128, 48);
  ppl_set_decimation(ctx, -1, 0, 0);
  const auto ramp = [](Buffer &src) {
    for (size_t i = 0; i < 128 * 48; ++i) src[i] = static_cast<uint8_t>(i * 37 + i / 128 * 11);
  };
  Buffer src(128 * 48), i420(256 * 144), rgb(256 * 96 * 3);
  ramp(src);
  ASSERT_EQ(ppl_process_blrtoi420(ctx, src.data(), i420.data(), 128, 48, 128), 1);
  for (size_t line = 0; line < 96; ++line) EXPECT_EQ(i420[line * 256], i420[line * 256 + 1]);
  EXPECT_TRUE(std::equal(i420.data() + 95 * 256, i420.data() + 96 * 256, i420.data() + 94 * 256));
  ramp(src);
  ASSERT_EQ(ppl_process_blrtorgb24(ctx, src.data(), rgb.data(), 128, 48, 128), 1);
  const uint8_t *top = rgb.data() + 95 * 256 * 3;
  EXPECT_TRUE(std::equal(top, top + 256 * 3, top - 256 * 3));
}

TEST_F(Frames, InvertedTestDropsTheFrameThatBringsASize) {
  Buffer src(128 * 48, 60), dst(128 * 48 * 3, 0xEE);
  EXPECT_EQ(ppl_process_blrtoi420(ctx, src.data(), dst.data(), 128, 48, 128), 0);
  EXPECT_EQ(dst[0], 0xEE);
  EXPECT_EQ(ppl_n_frame(ctx), 0u);
  EXPECT_EQ(ppl_process_blrtoi420(ctx, src.data(), dst.data(), 128, 48, 128), 1);
  EXPECT_NE(dst[0], 0xEE);
  EXPECT_EQ(ppl_process_blrtorgb24(ctx, src.data(), dst.data(), 128, 20, 128), 1);
  EXPECT_EQ(ppl_process_blrtorgb24(ctx, src.data(), dst.data(), 1288, 20, 1280), 0);
  EXPECT_EQ(ppl_n_frame(ctx), 2u);
}

TEST_F(Frames, MisalignedFramesFallBack) {
  Buffer src(64 * 16, 7, 4), dst(64 * 24, 0xEE);
  machine::reset_counts();
  EXPECT_EQ(BaylorToI420MMX_deci_2_1(ctx, src.data(), dst.data(), 64, 16), 0);
  EXPECT_EQ(machine::save_count(), 0u);
  EXPECT_EQ(dst[0], 7);
  EXPECT_EQ(dst[255], 7);
  EXPECT_EQ(dst[256], 128);
  EXPECT_EQ(dst[383], 128);
  EXPECT_EQ(dst[384], 0xEE);
}

TEST_F(Frames, StalePlanLeavesThePictureFree) {
  set_size(160, 48);
  machine::fail_saves(0, 1);
  set_size(128, 48);
  Buffer src(128 * 48, 60), dst(128 * 72, 0xEE);
  EXPECT_EQ(ppl_process_blrtoi420(ctx, src.data(), dst.data(), 128, 48, 128), 1);
  EXPECT_TRUE(picture_is_free());
  set_size(128, 48);
  EXPECT_EQ(ppl_process_blrtoi420(ctx, src.data(), dst.data(), 128, 48, 128), 1);
  EXPECT_FALSE(picture_is_free());
  EXPECT_TRUE(free_bytes().empty());
}

TEST_F(Frames, FailedSavesOfScaleAndMirrorsLeaveNothingFree) {
  set_size(128, 48);
  machine::fail_saves(0, 2);
  EXPECT_EQ(ppl_set_decimation(ctx, 1, 0, 0), 1);
  EXPECT_EQ(ppl_set_v_mirror(ctx, 1), 1);
  Buffer src(128 * 48, 60), dst(64 * 36, 0xEE);
  src[0] = 200;
  EXPECT_EQ(ppl_process_blrtoi420(ctx, src.data(), dst.data(), 128, 48, 128), 1);
  EXPECT_FALSE(picture_is_free());
  EXPECT_TRUE(free_bytes().empty());
  EXPECT_NE(dst[64 * 23], dst[0]);  // the first line at the bottom
  EXPECT_EQ(dst[64 * 23 + 1], dst[0]);
}

TEST_F(Frames, Quality13ShowsTheSamples) {
  set_size(128, 48);
  ppl_set_quality(ctx, 13);
  Buffer src(128 * 48, 100), dst(128 * 72);
  ASSERT_EQ(ppl_process_blrtoi420(ctx, src.data(), dst.data(), 128, 48, 128), 1);
  EXPECT_EQ(dst[5], std::min(ppl_yuv_contrast_gamma_table(ctx)[100] + 16, 235));
  EXPECT_EQ(dst[128 * 48], 128);
  EXPECT_EQ(dst[128 * 72 - 1], 128);
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), 0u);
  EXPECT_EQ(plain(ctx).mean_normaliser, 0u);
}

TEST_F(Frames, BothTiersGiveTheSamePictureAtEveryEvenWidth) {
  ppl_set_mean_collection(ctx, 0);
  for (uint32_t width = 128; width < 164; width += 2) {
    set_size(width, 22);
    for (int32_t d : {-1, 0, 1}) {
      ppl_set_decimation(ctx, d, 0, 0);
      for (auto driver : {ppl_model::ppl_process_blrtoi420, ppl_model::ppl_process_blrtorgb24}) {
        std::vector<Bytes> pictures, sources;
        for (uint8_t P3_only : {uint8_t{0}, uint8_t{1}}) {
          ppl_set_P3_only(ctx, P3_only);
          Buffer src(width * 22), dst(width * 22 * 12, 0xEE);
          for (size_t i = 0; i < width * 22; ++i) src[i] = static_cast<uint8_t>(i * i / 7);
          ASSERT_EQ(driver(ctx, src.data(), dst.data(), width, 22, width), 1);
          EXPECT_TRUE(free_bytes().empty());
          pictures.emplace_back(dst.data(), dst.data() + width * 22 * 12);
          sources.emplace_back(src.data(), src.data() + width * 22);
        }
        EXPECT_EQ(pictures[0], pictures[1]) << width << " at " << d;
        EXPECT_EQ(sources[0], sources[1]) << width << " at " << d;
      }
    }
  }
}

TEST_F(Frames, OddSizesLeaveTheLastLineAndColumn) {
  set_size(129, 21);
  Buffer src(129 * 21, 60), dst(129 * 21 * 3, 0xEE);
  ASSERT_EQ(ppl_process_blrtorgb24(ctx, src.data(), dst.data(), 129, 21, 129), 1);
  EXPECT_NE(src[127], 60);
  EXPECT_EQ(src[128], 60);
  for (size_t x = 0; x < 129; ++x) EXPECT_EQ(src[20 * 129 + x], 60);
  // Bottom to top: picture line 0 is the last in memory, the line left out the first.
  for (size_t i = 0; i < 129 * 3; ++i) EXPECT_EQ(dst[i], 0xEE);
  EXPECT_NE(dst[(20 * 129 + 127) * 3], 0xEE);
  EXPECT_EQ(dst[(20 * 129 + 128) * 3], 0xEE);
}

TEST_F(Frames, OpenBytesAreTheLonePixelAndTheDoubledPackedLines) {
  set_size(130, 20);
  ppl_set_decimation(ctx, 1, 0, 0);
  Buffer src(130 * 20, 60), dst(130 * 20 * 8, 0xEE);
  ASSERT_EQ(ppl_process_blrtoyuyv(ctx, src.data(), dst.data(), 130, 20, 130), 1);
  ASSERT_EQ(free_bytes().size(), 10u);
  EXPECT_EQ(free_bytes()[0], (FreeRange{128, 2}));
  EXPECT_EQ(free_bytes()[9], (FreeRange{9 * 130 + 128, 2}));
  ppl_set_h_mirror(ctx, 1);
  ASSERT_EQ(ppl_process_blrtoyuyv(ctx, src.data(), dst.data(), 130, 20, 130), 1);
  EXPECT_EQ(free_bytes()[1], (FreeRange{130, 2}));

  ppl_set_h_mirror(ctx, 0);
  ppl_set_decimation(ctx, -1, 0, 0);
  ASSERT_EQ(ppl_process_blrtoyuyv(ctx, src.data(), dst.data(), 130, 20, 130), 1);
  ASSERT_EQ(free_bytes().size(), 20u * 260);  // every luma byte of the odd lines
  EXPECT_EQ(free_bytes()[0], (FreeRange{520, 1}));
  EXPECT_EQ(free_bytes()[1], (FreeRange{522, 1}));
  ASSERT_EQ(ppl_process_blrtouyvy(ctx, src.data(), dst.data(), 130, 20, 130), 1);
  EXPECT_EQ(free_bytes(), (std::vector<FreeRange>{{0, 260 * 40 * 2}}));
}

TEST_F(Frames, P3Rgb24LosesItsMaskAtTheFirstSampledGroup) {
  set_size(128, 48);
  use_identity_table();
  ppl_set_quality(ctx, 13);
  ppl_set_decimation(ctx, 1, 0, 0);
  ppl_set_contrast_c(ctx, 0, nullptr, nullptr);
  ppl_set_P3_only(ctx, 1);
  Buffer src(128 * 48, 100), dst(64 * 24 * 3);
  const uint8_t v = ppl_yuv_contrast_gamma_table(ctx)[100];
  ASSERT_EQ(ppl_process_blrtorgb24(ctx, src.data(), dst.data(), 128, 48, 128), 1);
  const auto pixel = [&](size_t line, size_t x) { return dst[((23 - line) * 64 + x) * 3]; };
  const unsigned sum_of_R = 2u * v + 2 * 100;  // left group behind the table, right group before it
  const unsigned garbled = std::min((v + 256u * v) & sum_of_R, 255u);
  // A step is two lines by sixteen pixels; its first line goes before the first sampled group.
  for (size_t x = 0; x < 16; ++x) EXPECT_EQ(pixel(0, x), v);
  for (size_t x = 0; x < 4; ++x) EXPECT_EQ(pixel(1, x), v);
  for (size_t x = 4; x < 64; ++x) EXPECT_EQ(pixel(1, x), x % 4 == 0 ? garbled : 0) << x;
  for (size_t x = 16; x < 64; ++x) EXPECT_EQ(pixel(0, x), x % 4 == 0 ? garbled : 0) << x;
  EXPECT_EQ(src[300], v);

  ppl_set_mean_collection(ctx, 0);
  std::fill_n(src.data(), 128 * 48, uint8_t{100});
  ASSERT_EQ(ppl_process_blrtorgb24(ctx, src.data(), dst.data(), 128, 48, 128), 1);
  for (size_t x = 0; x < 64; ++x) EXPECT_EQ(pixel(1, x), v);
}

TEST_F(Frames, DoublingAtMinus1InQuality13LeavesGaps) {
  set_size(128, 48);
  ppl_set_quality(ctx, 13);
  ppl_set_decimation(ctx, -1, 0, 0);
  for (uint8_t P3_only : {uint8_t{0}, uint8_t{1}}) {
    ppl_set_P3_only(ctx, P3_only);
    const size_t B = P3_only != 0 ? 8 : 16;
    Buffer src(128 * 48, 100), dst(256 * 144, 0xEE);
    ASSERT_EQ(ppl_process_blrtoi420(ctx, src.data(), dst.data(), 128, 48, 128), 1);
    for (size_t x = 0; x < 256; ++x) {
      const bool written = x < 128 && x / B % 2 == 0;
      EXPECT_EQ(dst[x] != 0xEE, written) << x;            // first line of row 0
      EXPECT_EQ(dst[2 * 256 + x] != 0xEE, written) << x;  // its second, two lines on
      EXPECT_EQ(dst[256 + x], 0xEE) << x;
    }
    EXPECT_NE(dst[3 * 256 + 128], 0xEE);  // row 1 starts 3.5 lines on
    EXPECT_EQ(dst[3 * 256 + 127], 0xEE);
  }
}

// ---- Copies

TEST_F(Copies, MarkerWalksThroughItsGrid) {
  set_size(640, 480);
  ppl_set_quality(ctx, 4);
  Buffer src(640 * 480, 9), dst(640 * 720);
  EXPECT_EQ(ppl_process_blrtoi420(ctx, src.data(), dst.data(), 640, 480, 640), 0);
  const size_t v_plane = 640 * 600;
  EXPECT_EQ(dst[0], 9);
  EXPECT_EQ(dst[640 * 480], 128);
  EXPECT_EQ(dst[v_plane], 255);
  EXPECT_EQ(dst[v_plane + 63], 255);
  EXPECT_EQ(dst[v_plane + 64], 128);
  EXPECT_EQ(dst[v_plane + 39 * 320], 255);
  EXPECT_EQ(dst[v_plane + 40 * 320], 128);
  EXPECT_EQ(plan(ctx, Tier::sse2).marker_cell, 1);
  EXPECT_EQ(plan(ctx, Tier::p3).marker_cell, 0);
  for (int i = 0; i < 29; ++i) ppl_process_blrtoi420(ctx, src.data(), dst.data(), 640, 480, 640);
  EXPECT_EQ(plan(ctx, Tier::sse2).marker_cell, 0);
}

TEST_F(Copies, RunsAreRoundedUpToWholeGroups) {
  set_size(130, 19);
  ppl_set_quality(ctx, 9);
  const size_t pixels = 130 * 19;  // 2470
  for (uint8_t P3_only : {uint8_t{0}, uint8_t{1}}) {
    ppl_set_P3_only(ctx, P3_only);
    Buffer src(pixels + 64, 9), dst(pixels * 4 + 128, 0xEE);
    EXPECT_EQ(ppl_process_blrtoyuyv(ctx, src.data(), dst.data(), 130, 19, 130), 0);
    const size_t written = P3_only != 0 ? 2480 : 2496;
    EXPECT_EQ(dst[2 * written - 1], 128);
    EXPECT_EQ(dst[2 * written - 2], 9);
    EXPECT_EQ(dst[2 * written], 0xEE);
    // By lines: only the buffer's last line runs over.
    EXPECT_EQ(ppl_process_blrtorgb32(ctx, src.data(), dst.data(), 130, 19, 130), 0);
    EXPECT_EQ(dst[4 * pixels], 9);
    EXPECT_EQ(dst[4 * pixels + 7], 0);
    EXPECT_EQ(dst[4 * pixels + 8], 0xEE);
  }
}

// ---- Statistics

TEST_F(Statistics, FlatFrameReadsItsLevel) {
  set_size(640, 480);
  use_identity_table();
  Buffer src(640 * 480, 60), dst(640 * 720);
  ASSERT_EQ(ppl_process_blrtoi420(ctx, src.data(), dst.data(), 640, 480, 640), 1);
  const PplTriple &whole = *ppl_rgb_means_whole_frame(ctx);
  EXPECT_EQ(whole.r, 60u * 256);
  EXPECT_EQ(whole.g, 60u * 256);
  EXPECT_EQ(whole.b, 60u * 256);
  EXPECT_EQ(ppl_n_qual_2x2_whole_frame(ctx), 640u * 480 / 4);
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), 640u * 480 / 4);
  // One vector of 8 cells for every 32 columns of every second line pair.
  EXPECT_EQ(ppl_r_histogram(ctx)[60], 20u * 120 * 8);
  EXPECT_EQ(ppl_g_histogram(ctx)[60], 2 * 20u * 120 * 8);
  EXPECT_EQ(ppl_rgb_means_sub_windows(ctx)[0].r, 0u);
}

TEST_F(Statistics, SampledCellsStandAtColumn2OfEveryFour) {
  set_size(128, 48);
  use_identity_table();
  ppl_set_qAE_RGB_min_max(ctx, 60, 200);
  const auto cell_counts = [&](size_t line, size_t column) {
    Buffer src(128 * 48, 0), dst(128 * 72);
    src[line * 128 + column] = 60;
    ppl_process_blrtoi420(ctx, src.data(), dst.data(), 128, 48, 128);
    return ppl_n_qAE_2x2_whole_frame(ctx) == 4;  // one cell sampled stands for four
  };
  for (uint8_t P3_only : {uint8_t{0}, uint8_t{1}}) {
    ppl_set_P3_only(ctx, P3_only);
    EXPECT_TRUE(cell_counts(2, 2));
    EXPECT_TRUE(cell_counts(3, 127));
    EXPECT_TRUE(cell_counts(47, 66));
    EXPECT_FALSE(cell_counts(2, 1));
    EXPECT_FALSE(cell_counts(2, 4));
    EXPECT_FALSE(cell_counts(0, 2));
    EXPECT_FALSE(cell_counts(4, 2));
  }
}

TEST_F(Statistics, ExposureLooksAtTheTableInTheLeftGroupOnly) {
  set_size(128, 48);
  std::vector<uint8_t> table(256, 200);
  ppl_copy_rgb_gamma_table(ctx, table.data());
  Buffer src(128 * 48, 10), dst(128 * 72);
  ppl_process_blrtoi420(ctx, src.data(), dst.data(), 128, 48, 128);
  EXPECT_EQ(ppl_qAE_rgb_means_whole_frame(ctx)->r, (200u + 10) * 256 / 2);
  EXPECT_EQ(ppl_qual_rgb_means_whole_frame(ctx)->r, 10u * 256);
}

TEST_F(Statistics, P3Rgb24TakesGbIntoTheRedTotal) {
  set_size(128, 48);
  use_identity_table();
  ppl_set_P3_only(ctx, 1);
  Buffer src(128 * 48), dst(128 * 48 * 3);
  for (size_t y = 0; y < 48; ++y)
    for (size_t x = 0; x < 128; ++x)
      src[y * 128 + x] =
          static_cast<uint8_t>(y % 2 == 0 ? (x % 2 == 0 ? 50 : 40) : (x % 2 == 0 ? 30 : 20));
  ASSERT_EQ(ppl_process_blrtorgb24(ctx, src.data(), dst.data(), 128, 48, 128), 1);
  EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->r, 40u * 256);
  EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->g, 35u * 256);
  EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->b, 50u * 256);
}

TEST_F(Statistics, LoneLastGroupIsHalfAVector) {
  use_identity_table();
  for (uint32_t width : {136u, 144u, 130u}) {
    set_size(width, 20);
    std::array<uint32_t, 2> bins{}, cells{};
    for (uint8_t P3_only : {uint8_t{0}, uint8_t{1}}) {
      ppl_set_P3_only(ctx, P3_only);
      Buffer src(width * 20, 80), dst(width * 30);
      ASSERT_EQ(ppl_process_blrtoi420(ctx, src.data(), dst.data(), width, 20, width), 1);
      cells[P3_only] = ppl_n_qual_2x2_whole_frame(ctx);
      bins[P3_only] = std::accumulate(ppl_r_histogram(ctx), ppl_r_histogram(ctx) + 256, 0u);
    }
    EXPECT_EQ(cells[0], cells[1]) << width;
    EXPECT_EQ(cells[0], width / 4 * 5 * 4) << width;
    const uint32_t vectors_p3 = (width + 15) / 16, vectors_sse2 = (width + 31) / 32;
    EXPECT_EQ(bins[0], vectors_sse2 * 5 * 8) << width;
    EXPECT_EQ(bins[1], vectors_p3 * 5 * 4) << width;
  }
}

TEST_F(Statistics, HalvedPackedFormatsGatherNothing) {
  set_size(128, 48);
  ppl_set_decimation(ctx, 1, 0, 0);
  Buffer src(128 * 48, 80), dst(128 * 48);
  ASSERT_EQ(ppl_process_blrtoyuyv(ctx, src.data(), dst.data(), 128, 48, 128), 1);
  EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->g, 0u);
  EXPECT_EQ(ppl_g_histogram(ctx)[0], 0u);
  ASSERT_EQ(ppl_process_blrtorgb32(ctx, src.data(), dst.data(), 128, 48, 128), 1);
  EXPECT_NE(ppl_rgb_means_whole_frame(ctx)->g, 0u);
}

}  // namespace
}  // namespace ppl_model
