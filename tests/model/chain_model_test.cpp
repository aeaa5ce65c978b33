// The chains of the model against values worked out by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <set>
#include <vector>

#include "model/arithmetic.h"
#include "model/chain_edge.h"
#include "model/chain_flat_cells.h"
#include "model/chain_green.h"
#include "model/chain_medium_filter.h"
#include "model/model.h"

namespace ppl_model {
namespace {

using Bytes = std::vector<uint8_t>;
using RawFunction = uint8_t (*)(PplContext *, uint8_t *, uint8_t *, uint32_t, uint32_t, uint32_t);

constexpr uint32_t both_tiers = 1u | 1u << 24 | 1u << 25 | 1u << 26;
constexpr Format all_formats[] = {Format::i420, Format::yuyv, Format::uyvy, Format::rgb24,
                                  Format::rgb32};
constexpr uint32_t all_chains[] = {0, 1, 2, 10, 11, 12, 14};
constexpr uint8_t untouched = 0xA5;

RawFunction function_of(Format format) {
  constexpr RawFunction functions[] = {ppl_process_blrtoi420, ppl_process_blrtoyuyv,
                                       ppl_process_blrtouyvy, ppl_process_blrtorgb24,
                                       ppl_process_blrtorgb32};
  return functions[static_cast<size_t>(format)];
}

bool has_chain(uint32_t quality, Format format) { return quality != 14 || !is_rgb(format); }

// A frame of W by H samples and the output that it gives; tables and matrices leave samples alone.
class Chains : public testing::Test {
 protected:
  Chains() {
    machine::set_flags(both_tiers);
    machine::reset_counts();
    machine::reload_pool();
    ctx = ppl_init();
    Bytes identity(256);
    std::iota(identity.begin(), identity.end(), uint8_t{0});
    ppl_copy_rgb_gamma_table(ctx, identity.data());
    set_size(128, 48);
  }

  void set_size(int width, int height, int stride = 0) {
    W = width;
    H = height;
    pitch = stride == 0 ? width : stride;
    ASSERT_EQ(ppl_new_frame_size(ctx, static_cast<uint32_t>(W), static_cast<uint32_t>(H),
                                 static_cast<uint32_t>(pitch)),
              1);
    fill(100);
  }
  void fill(uint8_t level) { frame.assign(static_cast<size_t>(pitch * H), level); }
  uint8_t &raw(int y, int x) { return frame[static_cast<size_t>(y * pitch + x)]; }

  // RGB output shows demosaiced values as they are.
  void use_identity_matrices() {
    constexpr std::array<int32_t, 18> identity = {256, 0, 0, 0, 256, 0, 0, 0, 256,
                                                  256, 0, 0, 0, 256, 0, 0, 0, 256};
    ASSERT_EQ(ppl_copy_sensor_matrix(ctx, identity.data()), 1);
  }

  void run(uint32_t quality, Format format) {
    ASSERT_EQ(ppl_set_quality(ctx, quality), 1);
    const size_t room = static_cast<size_t>(W * H) * 16 + 16;
    // Both tiers want vectors at 16-byte boundaries.
    output_storage.assign(room + 16, untouched);
    frame_storage.assign(frame.size() + 16, 0);
    uint8_t *src = aligned(frame_storage);
    output = aligned(output_storage);
    std::copy(frame.begin(), frame.end(), src);
    ASSERT_EQ(function_of(format)(ctx, src, output, static_cast<uint32_t>(W),
                                  static_cast<uint32_t>(H), static_cast<uint32_t>(pitch)),
              1);
    std::copy_n(src, frame.size(), frame.begin());
  }

  static uint8_t *aligned(Bytes &storage) {
    const size_t address = reinterpret_cast<size_t>(storage.data());
    return storage.data() + (16 - address % 16) % 16;
  }

  // RGB24 pixel of the unmirrored picture at decimation 0.
  Rgb rgb(int y, int x) const {
    const uint8_t *pixel = output + 3 * ((H - 1 - y) * W + x);
    return {pixel[2], pixel[1], pixel[0]};
  }
  uint8_t luma(int y, int x) const { return output[y * W + x]; }
  uint8_t u(int y, int x) const { return output[W * H + y * (W / 2) + x]; }
  uint8_t v(int y, int x) const { return output[W * H * 5 / 4 + y * (W / 2) + x]; }

  const DerivedBlock &params(Tier tier = Tier::p3) const { return derived(ctx, tier); }

  PplContext *ctx;
  int W = 0, H = 0, pitch = 0;
  Bytes frame;
  uint8_t *output = nullptr;

 private:
  Bytes output_storage, frame_storage;
};

using ChainFormats = Chains;
using ChainGreen = Chains;
using ChainAverages = Chains;
using ChainMatrix = Chains;
using ChainFlatCells = Chains;
using ChainFilter = Chains;
using ChainEdges = Chains;
using ChainGrey = Chains;
using ChainChroma = Chains;
using ChainScaling = Chains;
using ChainStatistics = Chains;
using ChainStride = Chains;
using ChainSizes = Chains;

// ---- Formats

TEST_F(ChainFormats, FlatFrameIsFlatInEveryQualityAndFormat) {
  // The base rows sum to 54, 1 and 0: (54 * 100 + 32) >> 6 is 84, (100 + 32) >> 6 is 2.
  const uint8_t y = 84 + 16, chroma_u = 128 + 2, chroma_v = 128;
  for (const uint32_t quality : all_chains) {
    for (const Format format : all_formats) {
      if (!has_chain(quality, format)) continue;
      SCOPED_TRACE(testing::Message() << "quality " << quality << " format " << int(format));
      fill(100);
      run(quality, format);
      EXPECT_EQ(frame, Bytes(frame.size(), 100));
      const int size = W * H;
      // The chroma box takes a little saturation away: 9 * 2 * 28 / 256 is 1.
      const auto is_u = [&](uint8_t value) {
        return value == chroma_u || (quality == 14 && value == 129);
      };
      if (format == Format::i420) {
        EXPECT_EQ(std::count(output, output + size, y), size);
        EXPECT_EQ(std::count_if(output + size, output + size * 5 / 4, is_u), size / 4);
        EXPECT_EQ(std::count(output + size * 5 / 4, output + size * 3 / 2, chroma_v), size / 4);
        EXPECT_EQ(output[size * 3 / 2], untouched);
      } else if (is_packed(format)) {
        const int first_y = format == Format::yuyv ? 0 : 1;
        for (int i = 0; i < size; ++i) {
          ASSERT_EQ(output[2 * i + first_y], y);
          const uint8_t chroma = output[2 * i + 1 - first_y];
          ASSERT_TRUE(i % 2 == 0 ? is_u(chroma) : chroma == chroma_v) << i;
        }
        EXPECT_EQ(output[2 * size], untouched);
      } else {
        const int unit = format == Format::rgb24 ? 3 : 4;
        const Bytes first(output, output + unit);
        for (int i = 0; i < size; ++i)
          ASSERT_TRUE(std::equal(first.begin(), first.end(), output + unit * i)) << i;
        EXPECT_TRUE(format == Format::rgb24 || first[3] == 0);
        EXPECT_EQ(output[unit * size], untouched);
      }
    }
  }
}

TEST_F(ChainFormats, FullScaleDoesNotReachTheTopOfTheStudioRange) {
  fill(255);
  run(2, Format::i420);
  EXPECT_EQ(luma(10, 10), 231);  // (54 * 255 + 32) >> 6 is 215
  fill(0);
  run(2, Format::i420);
  EXPECT_EQ(luma(10, 10), 16);
}

TEST_F(ChainFormats, PackedFormatsCarryTheChromaOfTheEvenLineOnBoth) {
  for (size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<uint8_t>(i * i * 7 >> 3);
  const Bytes original = frame;
  for (const uint32_t quality : all_chains) {
    frame = original;
    run(quality, Format::i420);
    const Bytes planar(output, output + W * H * 3 / 2);
    for (const Format format : {Format::yuyv, Format::uyvy}) {
      frame = original;
      run(quality, format);
      const int first_y = format == Format::yuyv ? 0 : 1;
      for (int y = 0; y < H; ++y) {
        for (int x = 0; x < W; ++x) {
          const uint8_t *pixel = output + 2 * (y * W + x);
          ASSERT_EQ(pixel[first_y], planar[static_cast<size_t>(y * W + x)]);
          const int plane = W * H + (x % 2 == 0 ? 0 : W * H / 4);
          ASSERT_EQ(pixel[1 - first_y],
                    planar[static_cast<size_t>(plane + y / 2 * (W / 2) + x / 2)]);
        }
      }
    }
  }
}

TEST_F(ChainFormats, MirrorsReverseThePicture) {
  for (size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<uint8_t>(i * i * 7 >> 3);
  const Bytes original = frame;
  run(0, Format::i420);
  const Bytes plain(output, output + W * H * 3 / 2);
  for (const int mirrors : {1, 2, 3}) {
    const bool h = mirrors % 2 != 0;
    const bool v = mirrors / 2 != 0;
    ppl_set_h_mirror(ctx, h ? 1 : 0);
    ppl_set_v_mirror(ctx, v ? 1 : 0);
    frame = original;
    run(0, Format::i420);
    const auto turned = [&](int start, int width, int height) {
      for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
          ASSERT_EQ(output[start + (v ? height - 1 - y : y) * width + (h ? width - 1 - x : x)],
                    plain[static_cast<size_t>(start + y * width + x)]);
    };
    turned(0, W, H);
    turned(W * H, W / 2, H / 2);
    turned(W * H * 5 / 4, W / 2, H / 2);
  }
}

TEST_F(ChainFormats, Quality14HasNoRgb) {
  run(14, Format::rgb24);
  EXPECT_EQ(output[0], untouched);
}

// ---- Green, red and blue

TEST_F(ChainGreen, OddLevelsLoseOneAtInterpolatedSites) {
  use_identity_matrices();
  fill(101);
  run(1, Format::rgb24);
  // At B and R sites 2 * (101 >> 1); the difference of 1 comes back on top of native green.
  EXPECT_EQ(rgb(10, 20), (Rgb{101, 100, 101}));
  EXPECT_EQ(rgb(10, 21), (Rgb{102, 101, 102}));
  EXPECT_EQ(rgb(11, 20), (Rgb{102, 101, 102}));
  EXPECT_EQ(rgb(11, 21), (Rgb{101, 100, 101}));
  EXPECT_EQ(rgb(0, 0), (Rgb{101, 100, 101}));
  EXPECT_EQ(rgb(H - 1, W - 1), (Rgb{101, 100, 101}));
}

TEST_F(ChainGreen, FollowsTheSmallerGradientBetweenTheThresholds) {
  use_identity_matrices();
  const auto green_at_edge = [&](int32_t threshold) {
    EXPECT_EQ(ppl_set_CFA_T1_threshold(ctx, threshold), 1);
    for (int y = 0; y < H; ++y)
      for (int x = 0; x < W; ++x) raw(y, x) = x < 20 ? 40 : 90;
    run(1, Format::rgb24);
    return rgb(10, 20).G;
  };
  // Vertical estimate 90 with gradient 0, horizontal estimate 65 with gradient 50.
  EXPECT_EQ(green_at_edge(30), 45 + 45);
  EXPECT_EQ(green_at_edge(0), 45 + 38);  // nothing lies below 0
  EXPECT_EQ(green_at_edge(49), 45 + 45);
  EXPECT_EQ(green_at_edge(50), 45 + 38);  // nor above
}

TEST_F(ChainGreen, LinesAboveTheFrameMirrorAboutTheLineComputed) {
  use_identity_matrices();
  for (int x = 1; x < W; x += 2) raw(3, x) = 180;
  run(1, Format::rgb24);
  // R sites of line 1: vertical 200 - 180, for line -1 is line 3; horizontal 100. 50 + (120 >> 2).
  EXPECT_EQ(rgb(1, 21).G, 80);
  // Of line 3: vertical 100, horizontal 200 - 180; its own half sample counts.
  EXPECT_EQ(rgb(3, 21).G, 90 + 30);
}

TEST_F(ChainGreen, LinesBelowTheFrameMirrorAboutTheLastLine) {
  use_identity_matrices();
  for (int x = 0; x < W; x += 2) raw(H - 2, x) = 180;  // B sites
  run(1, Format::rgb24);
  // Line H - 4 sees it once below, line H - 2 sees line H - 4 above and itself below.
  EXPECT_EQ(rgb(H - 4, 20).G, 50 + ((200 - ((100 + 180) >> 1) + 100) >> 2));
  EXPECT_EQ(rgb(H - 2, 20).G, 90 + ((200 - ((100 + 180) >> 1) + 200 - 180) >> 2));
}

TEST_F(ChainGreen, ColumnsMirrorAboutTheOutermost) {
  use_identity_matrices();
  for (int y = 0; y < H; ++y) raw(y, 1) = 140;
  run(1, Format::rgb24);
  // B site of column 0: both horizontal neighbours are column 1. Vertical 100, horizontal 180.
  EXPECT_EQ(rgb(10, 0).G, 50 + ((100 + 180) >> 2));
}

TEST_F(ChainAverages, OneBrightBlueSampleSpreadsByRoundedAverages) {
  use_identity_matrices();
  raw(10, 20) = 200;
  run(2, Format::rgb24);
  EXPECT_EQ(rgb(10, 20), (Rgb{100, 100, 200}));
  EXPECT_EQ(rgb(10, 21), (Rgb{100, 100, 150}));
  EXPECT_EQ(rgb(11, 20), (Rgb{100, 100, 150}));
  EXPECT_EQ(rgb(9, 19), (Rgb{100, 100, 125}));

  fill(0);
  raw(10, 20) = 1;
  run(2, Format::rgb24);
  EXPECT_EQ(rgb(9, 19).B, 1);  // every average rounds up
}

TEST_F(ChainAverages, BordersReflect) {
  use_identity_matrices();
  raw(1, 1) = 201;  // R
  run(2, Format::rgb24);
  // Lines -1 and columns -1 are line 1 and column 1: the B site of the corner sees nothing else.
  EXPECT_EQ(rgb(0, 0).R, 201);
  EXPECT_EQ(rgb(0, 1).R, 201);
  EXPECT_EQ(rgb(1, 0).R, 201);
  EXPECT_EQ(rgb(0, 2).R, 151);
}

TEST_F(ChainAverages, Quality14TakesGreenFromTheAccurateStage) {
  // Luma is the green coefficient's share; compare it with qualities of the same green and chroma.
  for (size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<uint8_t>(i * i * 7 >> 3);
  ppl_set_nf88_edge_enhance_factor(ctx, 0);
  uint8_t *src = frame.data();
  const StageLines lines(ctx, src, 1, LineStep::frame_stride);
  const Plane green = interpolate_green(params(), lines);
  const RgbImage averaged = demosaic_by_averages(lines);
  run(14, Format::i420);
  for (const auto &[y, x] : {std::pair{0, 0}, {7, 31}, {20, 64}, {H - 1, 5}}) {
    const Rgb pixel{averaged.at(y, x).R, green.at(y, x), averaged.at(y, x).B};
    EXPECT_EQ(luma(y, x), studio_yuv(params(), pixel).y) << y << " " << x;
  }
}

// ---- Matrix

TEST_F(ChainMatrix, StrongColourMovesTheCoefficientsToTheBound) {
  // Index 127 is held at 12. (12 * -66 + 128) >> 8 is -3: Y row 12, so (12 * 255 + 32) >> 6 is 48.
  const Yuv red = studio_yuv(params(), Rgb{255, 0, 0});
  EXPECT_EQ(red.y, 48 + 16);
  EXPECT_EQ(red.u, -68);  // (12 * -260 + 128) >> 8 is -12, -17 * 255 + 32 is -4303
  EXPECT_EQ(red.v, 127);  // 17 + 39 = 56, which gives 223
  const Yuv grey = studio_yuv(params(), Rgb{100, 100, 100});
  EXPECT_EQ(grey.y, 100);
  EXPECT_EQ(grey.u, 2);
  EXPECT_EQ(grey.v, 0);
}

TEST_F(ChainMatrix, BoundOfZeroActsAsOne) {
  ASSERT_EQ(ppl_set_sensor_matrix_index_upper_bound(ctx, 0), 1);
  const int slope = params().studio_slope_vec[6][0];
  const int coefficient = (wrap16(slope + 128) >> 8) + params().studio_base0_vec[6][0];
  EXPECT_EQ(studio_yuv(params(), Rgb{8, 0, 0}).v, (coefficient * 8 + 32) >> 6);
  EXPECT_NE(coefficient, params().studio_base0_vec[6][0]);
}

TEST_F(ChainMatrix, FullRangeFormGoesBackByItsOwnSaturatingSums) {
  YuvImage image(4, 1);
  const auto set = [&](int x, uint8_t y, int u, int v) {
    image.y.at(0, x) = y;
    image.u.at(0, x) = static_cast<int8_t>(u);
    image.v.at(0, x) = static_cast<int8_t>(v);
  };
  set(0, 100, 0, 0);
  set(1, 100, 10, -10);
  set(2, 255, 127, 127);
  set(3, 0, -128, -128);
  const ColourPlanes planes = rgb_of_full_range(image);
  EXPECT_EQ(planes.r.at(0, 0), 100);
  EXPECT_EQ(planes.r.at(0, 1), (12800 - 1750 + 32) / 128);
  EXPECT_EQ(planes.g.at(0, 1), (12800 - 430 + 890 + 32) / 128);
  EXPECT_EQ(planes.b.at(0, 1), (12800 + 2220 + 32) / 128);
  EXPECT_EQ(planes.r.at(0, 2), 255);  // saturated at 32767, not wrapped
  EXPECT_EQ(planes.g.at(0, 2), (32640 - 43 * 127 - 89 * 127 + 32) / 128);
  EXPECT_EQ(planes.r.at(0, 3), 0);
  EXPECT_EQ(planes.g.at(0, 3), (43 * 128 + 89 * 128 + 32) / 128);
}

// ---- Flat cells

TEST_F(ChainFlatCells, ReplacementAveragesEachPhase) {
  use_identity_matrices();
  ppl_set_CFA_T0_threshold(ctx, 0);
  const auto fill_phases = [&] {
    for (int y = 0; y < H; ++y)
      for (int x = 0; x < W; ++x)
        raw(y, x) = y % 2 == 0 ? (x % 2 == 0 ? 40 : 80) : (x % 2 == 0 ? 90 : 120);
  };
  fill_phases();
  run(11, Format::rgb24);
  for (int y = 0; y < H; ++y)
    for (int x = 0; x < W; ++x) ASSERT_EQ(rgb(y, x), (Rgb{120, 85, 40})) << y << " " << x;
}

TEST_F(ChainFlatCells, LieOneLineOffInQuality10) {
  const StageLines lines(ctx, frame.data(), 1, LineStep::frame_stride);
  for (size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<uint8_t>(i * i * 7 >> 3);
  ppl_set_CFA_T0_threshold(ctx, 255);  // every cell is flat
  const Rgb sentinel{1, 2, 3};
  for (const FlatCells cells : {FlatCells::odd_lines, FlatCells::even_lines}) {
    RgbImage image(W, H);
    for (int y = 0; y < H; ++y)
      for (int x = 0; x < W; ++x) image.at(y, x) = sentinel;
    FlatCellScratch scratch{};
    smooth_flat_cells(params(), cells, {lines, lines}, 8, image, scratch);
    const int first = cells == FlatCells::odd_lines ? 1 : 0;
    for (int r = first; r + 1 < H; r += 2)
      for (int x = 0; x < W; x += 2) {
        ASSERT_EQ(image.at(r, x), image.at(r + 1, x + 1));
        ASSERT_EQ(image.at(r, x), image.at(r, x + 1));
        ASSERT_EQ(image.at(r, x), image.at(r + 1, x));
      }
    EXPECT_EQ(image.at(0, 50) == sentinel, cells == FlatCells::odd_lines);
    EXPECT_EQ(image.at(H - 1, 50) == sentinel, cells == FlatCells::odd_lines);
  }
}

TEST_F(ChainFlatCells, OneHotGreenBreaksTheCellsThatCompareIt) {
  const StageLines lines(ctx, frame.data(), 0, LineStep::frame_stride);
  raw(20, 31) = 120;  // Gb
  raw(20, 60) = 120;  // B: not compared
  ppl_set_CFA_T0_threshold(ctx, 19);
  const Rgb sentinel{1, 2, 3};
  const auto broken = [&](FlatCells cells) {
    RgbImage image(W, H);
    for (int y = 0; y < H; ++y)
      for (int x = 0; x < W; ++x) image.at(y, x) = sentinel;
    FlatCellScratch scratch{};
    smooth_flat_cells(params(), cells, {lines, lines}, 8, image, scratch);
    std::set<std::pair<int, int>> places;
    for (int r = cells == FlatCells::odd_lines ? 1 : 0; r + 1 < H; r += 2)
      for (int x = 0; x < W; x += 2)
        if (image.at(r, x) == sentinel) places.insert({20 - r, 31 - x});
    return places;
  };
  using Places = std::set<std::pair<int, int>>;
  EXPECT_EQ(broken(FlatCells::even_lines),
            (Places{{-2, -1}, {-2, 1}, {0, -1}, {0, 1}, {0, 3}, {2, -1}, {2, 1}, {2, 3}}));
  EXPECT_EQ(broken(FlatCells::odd_lines),
            (Places{{-1, -1}, {-1, 1}, {-1, 3}, {1, -1}, {1, 1}, {1, 3}, {3, -1}, {3, 1}}));
  ppl_set_CFA_T0_threshold(ctx, 20);
  EXPECT_TRUE(broken(FlatCells::even_lines).empty());
}

TEST_F(ChainFlatCells, LeftOverMaskOverridesQualities0And1OfItsTier) {
  use_identity_matrices();
  ppl_set_P3_only(ctx, 1);
  // Lane 0 of a block is flat at 60; an edge in the last block breaks the rest.
  fill(60);
  for (int y = 0; y < H; ++y) raw(y, W - 1) = 200;
  run(11, Format::i420);

  fill(100);
  run(1, Format::rgb24);
  EXPECT_EQ(rgb(20, 40), (Rgb{60, 60, 60}));
  EXPECT_EQ(rgb(0, 1), (Rgb{60, 60, 60}));
  EXPECT_EQ(rgb(H - 1, 0), (Rgb{60, 60, 60}));
  EXPECT_EQ(rgb(20, 46), (Rgb{100, 100, 100}));  // lanes 6 and 7
  EXPECT_EQ(rgb(20, 47), (Rgb{100, 100, 100}));

  fill(100);
  run(2, Format::rgb24);
  EXPECT_EQ(rgb(20, 40), (Rgb{100, 100, 100}));

  ppl_set_P3_only(ctx, 0);
  fill(100);
  run(1, Format::rgb24);
  EXPECT_EQ(rgb(20, 40), (Rgb{100, 100, 100}));
}

TEST_F(ChainFlatCells, LastBlockOfAnOddWidthGoesOnOverReflectedSamples) {
  use_identity_matrices();
  ppl_set_P3_only(ctx, 1);
  // The last block holds columns 128 and 129. An edge in column 123 breaks the cells that see it
  // mirrored, at 135: that of lane 6, and that of lane 4, whose window ends there.
  set_size(130, 48);
  fill(60);
  for (int y = 0; y < H; ++y) raw(y, 123) = 200;
  run(11, Format::i420);
  fill(100);
  run(1, Format::rgb24);
  for (int lane = 0; lane < 8; lane += 2)
    EXPECT_EQ(rgb(20, 40 + lane), lane < 4 ? (Rgb{60, 60, 60}) : (Rgb{100, 100, 100})) << lane;
}

TEST_F(ChainFlatCells, FrameLeftOpenLeavesTheMaskOpen) {
  ppl_set_P3_only(ctx, 1);
  // Lines that overlap.
  ASSERT_EQ(ppl_new_frame_size(ctx, 128, 48, 64), 1);
  ppl_set_quality(ctx, 10);
  Bytes out(128 * 48 * 3);
  ppl_process_blrtoi420(ctx, frame.data(), out.data(), 128, 48, 64);
  EXPECT_TRUE(picture_is_free());

  set_size(128, 48);
  run(1, Format::i420);
  EXPECT_TRUE(picture_is_free());
  EXPECT_FALSE(source_is_free());
  fill(100);
  run(2, Format::i420);
  EXPECT_FALSE(picture_is_free());
  fill(100);
  run(11, Format::i420);
  fill(100);
  run(1, Format::i420);
  EXPECT_FALSE(picture_is_free());
}

// ---- Medium filter

TEST_F(ChainFilter, RepairsHotAndDeadPixelsInsideItsRegion) {
  ppl_enable_medium_filter(ctx);
  for (const uint32_t quality : {0u, 1u, 2u}) {
    for (const bool p3 : {false, true}) {
      ppl_set_P3_only(ctx, p3 ? 1 : 0);
      const int B = p3 ? 8 : 16;
      fill(100);
      raw(20, 40) = 255;
      raw(20, 51) = 255;
      raw(30, 40) = 0;
      raw(1, 40) = 255;  // outermost lines and blocks stay
      raw(H - 2, 41) = 0;
      raw(20, B - 1) = 255;
      raw(22, B) = 255;
      raw(24, W - B) = 255;
      raw(26, W - B - 1) = 255;
      run(quality, Format::yuyv);
      std::set<std::pair<int, int>> left;
      for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x)
          if (raw(y, x) != 100) left.insert({y, x});
      EXPECT_EQ(left,
                (std::set<std::pair<int, int>>{{1, 40}, {H - 2, 41}, {20, B - 1}, {24, W - B}}));
    }
  }
}

TEST_F(ChainFilter, OtherQualitiesIgnoreIt) {
  ppl_enable_medium_filter(ctx);
  for (const uint32_t quality : {10u, 11u, 12u, 14u}) {
    fill(100);
    raw(20, 40) = 255;
    run(quality, Format::i420);
    EXPECT_EQ(raw(20, 40), 255);
  }
}

TEST_F(ChainFilter, LevelsAreComparedStrictly) {
  const auto repaired = [&](uint8_t level, uint8_t sample) {
    Plane plane(64, 16);
    for (int y = 0; y < 16; ++y)
      for (int x = 0; x < 64; ++x) plane.at(y, x) = level;
    plane.at(8, 20) = sample;
    return repair_pixels(params(), plane, 8).at(8, 20);
  };
  EXPECT_EQ(repaired(100, 240), 240);
  EXPECT_EQ(repaired(100, 241), 100);
  EXPECT_EQ(repaired(100, 16), 16);
  EXPECT_EQ(repaired(100, 15), 100);
  EXPECT_EQ(repaired(196, 245), 245);  // four times 196 times 20 / 64 is 245
  EXPECT_EQ(repaired(196, 246), 196);
  EXPECT_EQ(repaired(20, 15), 15);  // not below 80 * 12 / 64
  EXPECT_EQ(repaired(20, 14), 20);
}

TEST_F(ChainFilter, LowerMedianSurvivesASecondHotNeighbour) {
  Plane plane(64, 16);
  for (int y = 0; y < 16; ++y)
    for (int x = 0; x < 64; ++x) plane.at(y, x) = 100;
  plane.at(8, 20) = plane.at(8, 22) = 255;
  const Plane repaired = repair_pixels(params(), plane, 8);
  EXPECT_EQ(repaired.at(8, 20), 100);
  EXPECT_EQ(repaired.at(8, 22), 100);
  // Green looks along the diagonals and takes the second smallest.
  plane.at(8, 20) = plane.at(8, 22) = 100;
  plane.at(5, 30) = 90;
  plane.at(7, 30) = 95;
  plane.at(5, 32) = 97;
  plane.at(7, 32) = 99;
  plane.at(6, 31) = 240;
  EXPECT_EQ(repair_pixels(params(), plane, 8).at(6, 31), 240);
  plane.at(6, 31) = 255;
  EXPECT_EQ(repair_pixels(params(), plane, 8).at(6, 31), 95);
}

TEST_F(ChainFilter, FactorAbove32Wraps) {
  // 340 >> 2 is 85; 4 * 100 * 85 = 34000 is negative in 16 bits, so the limit of 240 stands alone.
  ASSERT_EQ(ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage(ctx, 340), 1);
  ASSERT_EQ(ppl_set_medium_filter_hot_pixel_threshold(ctx, 90), 1);
  ppl_enable_medium_filter(ctx);
  raw(20, 40) = 101;
  run(1, Format::i420);
  EXPECT_EQ(raw(20, 40), 100);
}

TEST_F(ChainFilter, PaddedLinesLeaveTheFrameOpen) {
  set_size(128, 48, 160);
  ppl_enable_medium_filter(ctx);
  run(1, Format::i420);
  EXPECT_TRUE(picture_is_free());
  EXPECT_TRUE(source_is_free());
  EXPECT_TRUE(statistics_are_free());
  run(11, Format::i420);
  EXPECT_FALSE(picture_is_free());
}

// ---- Edges

// A flat plane of 100 with a few other pixels.
struct Spot {
  int y, x;
  uint8_t level;
};
Plane plane_with(std::initializer_list<Spot> spots, int width = 64, int height = 16) {
  Plane plane(width, height);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) plane.at(y, x) = 100;
  for (const Spot &spot : spots) plane.at(spot.y, spot.x) = spot.level;
  return plane;
}

TEST_F(ChainEdges, GradientFormAddsTheSlopeAlongOneDiagonal) {
  // i alone is 160: both gradients 60, measure 120, step (120 * 8) >> 6.
  EXPECT_EQ(enhance_by_gradient(params(), plane_with({{5, 21, 160}})).at(4, 20), 115);
  // a alone: minus 120.
  EXPECT_EQ(enhance_by_gradient(params(), plane_with({{3, 19, 160}})).at(4, 20), 85);
  // c or g alone: the gradients cancel.
  EXPECT_EQ(enhance_by_gradient(params(), plane_with({{3, 21, 160}})).at(4, 20), 100);
  EXPECT_EQ(enhance_by_gradient(params(), plane_with({{5, 19, 160}})).at(4, 20), 100);
  // Measure 100 is not above the lower threshold.
  EXPECT_EQ(enhance_by_gradient(params(), plane_with({{5, 21, 150}})).at(4, 20), 100);
  EXPECT_EQ(enhance_by_gradient(params(), plane_with({{5, 21, 151}})).at(4, 20), 112);
}

TEST_F(ChainEdges, GradientFormReflectsAtTheBorder) {
  // Column -1 is column 1: no gradient across, so i and g alike; down: 60 twice.
  EXPECT_EQ(enhance_by_gradient(params(), plane_with({{5, 1, 160}})).at(4, 0), 115);
  // In the corner everything is reflected.
  EXPECT_EQ(enhance_by_gradient(params(), plane_with({{1, 1, 255}})).at(0, 0), 100);
}

TEST_F(ChainEdges, ThresholdsAndFactorAreObeyed) {
  ppl_set_edge_threshold2(ctx, 120);
  EXPECT_EQ(enhance_by_gradient(params(), plane_with({{5, 21, 160}})).at(4, 20), 100);
  ppl_set_edge_threshold2(ctx, 121);
  EXPECT_EQ(enhance_by_gradient(params(), plane_with({{5, 21, 160}})).at(4, 20), 115);
  ppl_set_nf88_edge_enhance_factor(ctx, 0);
  EXPECT_EQ(enhance_by_gradient(params(), plane_with({{5, 21, 160}})).at(4, 20), 100);
  // 1020 * 64 = 65280 wraps to -256.
  ppl_set_edge_threshold2(ctx, 1530);
  ASSERT_EQ(ppl_set_nf88_edge_enhance_factor(ctx, 256), 1);
  const Plane steep =
      plane_with({{3, 19, 0}, {3, 20, 0}, {4, 19, 0}, {4, 21, 255}, {5, 20, 255}, {5, 21, 255}});
  EXPECT_EQ(enhance_by_gradient(params(), steep).at(4, 20), 100 - 4);
}

TEST_F(ChainEdges, Quality1IsQuality0BeforeEnhancement) {
  for (size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<uint8_t>(i * i * 7 >> 3);
  const Bytes original = frame;
  run(1, Format::i420);
  Plane before(W, H);
  for (int y = 0; y < H; ++y)
    for (int x = 0; x < W; ++x) before.at(y, x) = luma(y, x);
  const Plane after = enhance_by_gradient(params(), before);
  frame = original;
  run(0, Format::i420);
  int changed = 0;
  for (int y = 0; y < H; ++y)
    for (int x = 0; x < W; ++x) {
      ASSERT_EQ(luma(y, x), after.at(y, x));
      changed += luma(y, x) != before.at(y, x);
    }
  EXPECT_GT(changed, 100);
}

TEST_F(ChainEdges, LaplacianHasItsExceptionsAtTheRightEnd) {
  ppl_set_edge_threshold(ctx, 55);
  const auto enhanced = [&](std::initializer_list<Spot> spots, int y, int x) {
    return enhance_by_laplacian(params(), plane_with(spots), 8).at(y, x);
  };
  // One neighbour of 150 gives -50 and is left alone; as both sides it gives -100: (-800 >> 6).
  EXPECT_EQ(enhanced({{4, 21, 150}}, 4, 20), 100);
  EXPECT_EQ(enhanced({{4, 57, 150}}, 4, 56), 87);   // first column of the last block
  EXPECT_EQ(enhanced({{4, 55, 200}}, 4, 56), 100);  // whose west is not looked at
  EXPECT_EQ(enhanced({{4, 1, 150}}, 4, 0), 87);
  // East of the last column lies the next line's first.
  EXPECT_EQ(enhanced({{5, 0, 160}}, 4, 63), 92);
  EXPECT_EQ(enhanced({{4, 62, 150}}, 4, 63), 100);
  // Above the frame and below it the neighbour counts twice.
  EXPECT_EQ(enhanced({{1, 20, 150}}, 0, 20), 87);
  EXPECT_EQ(enhanced({{14, 20, 150}}, 15, 20), 87);
}

TEST_F(ChainEdges, LaplacianLeavesThreePixelsOpen) {
  ppl_set_P3_only(ctx, 1);
  const size_t w = static_cast<size_t>(W), h = static_cast<size_t>(H);
  run(14, Format::i420);
  EXPECT_EQ(free_bytes(),
            (std::vector<FreeRange>{
                {(h - 2) * w + w - 9, 1}, {(h - 1) * w + w - 9, 1}, {(h - 1) * w + w - 1, 1}}));
  ppl_set_P3_only(ctx, 0);
  fill(100);
  run(14, Format::uyvy);
  EXPECT_EQ(free_bytes(), (std::vector<FreeRange>{{2 * ((h - 2) * w + w - 17) + 1, 1},
                                                  {2 * ((h - 1) * w + w - 17) + 1, 1},
                                                  {2 * ((h - 1) * w + w - 1) + 1, 1}}));
  // Halving takes even lines and columns; doubling spreads them over 5 by 3 and 3 by 2 pixels.
  ppl_set_decimation(ctx, 1, 0, 0);
  fill(100);
  run(14, Format::i420);
  EXPECT_TRUE(free_bytes().empty());
  ppl_set_decimation(ctx, -1, 0, 0);
  fill(100);
  run(14, Format::i420);
  size_t bytes = 0;
  for (const FreeRange &range : free_bytes()) bytes += range.length;
  EXPECT_EQ(bytes, 5 * 3 + 3 * 2);
}

// ---- Quality 12

TEST_F(ChainGrey, FinishedLumaFeedsBackAboveAndLeftOfTheBlock) {
  ppl_set_edge_threshold(ctx, 10);
  for (const int B : {8, 16}) {
    ppl_set_P3_only(ctx, B == 8 ? 1 : 0);
    fill(200);
    run(12, Format::i420);
    // 200 becomes (54 * 200 + 32) >> 6, 16 added: 185.
    EXPECT_EQ(luma(0, 0), 185);
    EXPECT_EQ(luma(1, B - 1), 185);
    // Left of the block 185 in all three lines (line -1 is line 1): 45 across, (45 * 8) >> 6 is 5.
    EXPECT_EQ(luma(0, B), 189);  // (54 * 205 + 32) >> 6 is 173
    EXPECT_EQ(luma(1, B), 189);  // 30 across and 15 down
    EXPECT_EQ(luma(0, B + 1), 185);
    // 185 above: 45 down.
    EXPECT_EQ(luma(2, 0), 189);
    EXPECT_EQ(luma(2, 1), 189);
    // 26 both ways: a 185, b 189, c 185, d 189, g 185.
    EXPECT_EQ(luma(2, B), 190);
    EXPECT_EQ(luma(3, 1), 185);
  }
}

TEST_F(ChainGrey, RgbHasNoFeedback) {
  use_identity_matrices();
  ppl_set_edge_threshold(ctx, 10);
  fill(200);
  run(12, Format::rgb24);
  for (int y = 0; y < H; ++y)
    for (int x = 0; x < W; ++x) ASSERT_EQ(rgb(y, x), (Rgb{200, 200, 200}));
  raw(20, 41) = 230;  // 30 at i: 60, (60 * 8) >> 6
  run(12, Format::rgb24);
  EXPECT_EQ(rgb(19, 40).G, 207);
  EXPECT_EQ(rgb(20, 41).G, 230);
}

TEST_F(ChainGrey, ChromaIsTheTintOfTheBaseRows) {
  fill(200);
  ppl_set_nf88_edge_enhance_factor(ctx, 0);
  run(12, Format::i420);
  EXPECT_EQ(u(5, 5), 128 + 3);  // (200 + 32) >> 6
  EXPECT_EQ(v(5, 5), 128);
}

// ---- Chroma of quality 14

TEST_F(ChainChroma, BoxTakesNineButNotInTheOuterBlocksAndFirstPair) {
  SignedPlane chroma(64, 16);
  for (int y = 0; y < 16; ++y)
    for (int x = 0; x < 64; ++x) chroma.at(y, x) = 100;
  const SignedPlane box = box_filtered(chroma, 8);
  EXPECT_EQ(box.at(2, 8), 98);  // 900 * 28 / 256
  EXPECT_EQ(box.at(15, 55), 98);
  EXPECT_EQ(box.at(1, 20), 100);
  EXPECT_EQ(box.at(8, 7), 100);
  EXPECT_EQ(box.at(8, 56), 100);
  // Line pair 1 has line 1 in its window; below the last line the one above it counts twice.
  chroma.at(1, 20) = 0;
  chroma.at(14, 30) = 0;
  EXPECT_EQ(box_filtered(chroma, 8).at(2, 20), 87);   // 800 * 28 / 256
  EXPECT_EQ(box_filtered(chroma, 8).at(15, 30), 76);  // 700 * 28 / 256
}

// ---- Scaling

TEST_F(ChainScaling, HalvedChromaIsThatOfTheOddLine) {
  for (size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<uint8_t>(i * i * 7 >> 3);
  const Bytes original = frame;
  run(2, Format::i420);
  const Bytes plain(output, output + W * H * 3 / 2);
  const auto at = [&](int offset) { return plain[static_cast<size_t>(offset)]; };
  ppl_set_decimation(ctx, 1, 0, 0);
  frame = original;
  run(2, Format::i420);
  for (int y = 0; y < H / 2; ++y)
    for (int x = 0; x < W / 2; ++x) ASSERT_EQ(output[y * W / 2 + x], at(2 * y * W + 2 * x));
  for (int plane = 0; plane < 2; ++plane)
    for (int y = 0; y < H / 4; ++y)
      for (int x = 0; x < W / 4; ++x)
        ASSERT_EQ(output[W * H / 4 + plane * W * H / 16 + y * W / 4 + x],
                  at(W * H + plane * W * H / 4 + (2 * y + 1) * (W / 2) + 2 * x));
  // Packed: line 2j, pair 2k.
  frame = original;
  run(2, Format::yuyv);
  for (int y = 0; y < H / 2; ++y)
    for (int k = 0; k < W / 4; ++k)
      ASSERT_EQ(output[y * W + 4 * k + 1], at(W * H + y * (W / 2) + 2 * k));
}

TEST_F(ChainScaling, OddNumberOfLinePairsGivesNoHalfChromaLine) {
  set_size(128, 50);
  ppl_set_decimation(ctx, 1, 0, 0);
  run(2, Format::i420);
  // 25 lines of 64; 12 lines of 32 chroma in a plane of 400.
  EXPECT_EQ(output[64 * 25 + 12 * 32 - 1], 130);
  EXPECT_EQ(output[64 * 25 + 12 * 32], untouched);
  EXPECT_EQ(output[64 * 25 + 400], 128);
}

TEST_F(ChainScaling, DoubledRgb24HasSourceLinesOnEvenLinesInPictureOrder) {
  use_identity_matrices();
  const auto paint = [&] {
    for (int y = 0; y < H; ++y)
      for (int x = 0; x < W; ++x) raw(y, x) = static_cast<uint8_t>(2 * y);
  };
  const auto source = [](int y) { return static_cast<uint8_t>(2 * y); };
  ppl_set_decimation(ctx, -1, 0, 0);
  paint();
  run(2, Format::rgb24);
  // Green of odd columns on even lines is native; so is green of even columns on odd lines.
  const auto green = [&](int line, int x) {
    return output[3 * ((2 * H - 1 - line) * 2 * W + x) + 1];
  };
  // Native green of line 10 stands at output column 2 * 21 + 1.
  EXPECT_EQ(green(20, 43), source(10));
  EXPECT_EQ(green(0, 3), source(0));
  // A line's last value twice less: its first value twice.
  EXPECT_EQ(green(20, 0), green(20, 1));
  for (int x = 0; x < 2 * W; ++x) {
    ASSERT_EQ(green(21, x), average(green(20, x), green(22, x)));
    ASSERT_EQ(green(2 * H - 1, x), green(2 * H - 2, x));
  }
}

TEST_F(ChainScaling, DoubledRgb24OverlapsItselfWithOneMirror) {
  use_identity_matrices();
  for (const bool h : {true, false}) {
    for (int y = 0; y < H; ++y)
      for (int x = 0; x < W; ++x) raw(y, x) = static_cast<uint8_t>(y + 100 + x % 2 + 2 * (y % 2));
    ppl_set_decimation(ctx, 0, 0, 0);
    ppl_set_h_mirror(ctx, 0);
    ppl_set_v_mirror(ctx, 0);
    const Bytes original = frame;
    run(11, Format::rgb24);
    Plane source(W, H);
    for (int y = 0; y < H; ++y)
      for (int x = 0; x < W; ++x) source.at(y, x) = rgb(y, x).G;

    ppl_set_h_mirror(ctx, h ? 1 : 0);
    ppl_set_v_mirror(ctx, h ? 0 : 1);
    ppl_set_decimation(ctx, -1, 0, 0);
    frame = original;
    run(11, Format::rgb24);
    // Upwards from the buffer's end with h alone, downwards from its start with v alone.
    const auto green = [&](int line, int k) {
      const int column = h ? 2 * W - 2 - 2 * k : 2 * k + 1;
      return output[3 * ((h ? 2 * H - 1 - line : line) * 2 * W + column) + 1];
    };
    for (int k = 0; k < W; ++k) {
      ASSERT_EQ(green(0, k), source.at(0, k));
      ASSERT_EQ(green(20, k), source.at(20, k));
      ASSERT_EQ(green(21, k), average(source.at(20, k), source.at(22, k)));
      ASSERT_EQ(green(H - 2, k), source.at(H - 2, k));
      ASSERT_EQ(green(H - 3, k), average(source.at(H - 4, k), source.at(H - 2, k)));
      ASSERT_EQ(green(H - 1, k), source.at(H - 2, k));
      ASSERT_EQ(green(H, k), source.at(H - 1, k));
      ASSERT_EQ(green(H + 1, k), untouched);
    }
  }
}

TEST_F(ChainScaling, UnscaledRgb32RowsMoveTwoAndAHalfLines) {
  for (const bool h : {false, true}) {
    ppl_set_decimation(ctx, -1, 0, 0);
    ppl_set_h_mirror(ctx, h ? 1 : 0);
    fill(100);
    run(1, Format::rgb32);
    const auto is_written = [&](int line, bool right_half) {
      return output[4 * ((2 * H - 1 - line) * 2 * W + (right_half ? W : 0))] != untouched;
    };
    if (!h) {
      for (const auto &[line, right] :
           {std::pair{0, false}, {1, false}, {3, true}, {4, true}, {5, false}, {6, false}})
        EXPECT_TRUE(is_written(line, right)) << line;
      for (const auto &[line, right] : {std::pair{0, true}, {2, false}, {2, true}, {3, false}})
        EXPECT_FALSE(is_written(line, right)) << line;
    } else {
      // Row 1 starts 1.5 lines further up, mirrored: the left half of line 2.
      EXPECT_TRUE(is_written(0, true));
      EXPECT_TRUE(is_written(1, true));
      EXPECT_FALSE(is_written(0, false));
    }
  }
}

TEST_F(ChainScaling, DoubledPackedFormats) {
  for (size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<uint8_t>(i * i * 7 >> 3);
  const Bytes original = frame;
  run(11, Format::i420);
  const Bytes plain(output, output + W * H * 3 / 2);
  const auto at = [&](int offset) { return plain[static_cast<size_t>(offset)]; };
  ppl_set_decimation(ctx, -1, 0, 0);
  for (const Format format : {Format::yuyv, Format::uyvy}) {
    frame = original;
    run(11, format);
    EXPECT_TRUE(free_bytes().empty());
    const int first_y = format == Format::yuyv ? 0 : 1;
    const auto y_at = [&](int line, int x) { return output[2 * (line * 2 * W + x) + first_y]; };
    const auto u_at = [&](int line, int pair) {
      return output[2 * (line * 2 * W + 2 * pair) + 1 - first_y];
    };
    for (int k = 1; k < W; ++k) {
      ASSERT_EQ(y_at(20, 2 * k + 1), at(10 * W + k));
      ASSERT_EQ(y_at(20, 2 * k), average(at(10 * W + k - 1), at(10 * W + k)));
      ASSERT_EQ(y_at(21, k), average(y_at(20, k), y_at(22, k)));
    }
    for (int k = 0; k < W / 2; ++k) {
      for (int line = 20; line < 23; ++line)
        ASSERT_EQ(u_at(line, 2 * k + 1), at(W * H + 5 * (W / 2) + k));
      ASSERT_EQ(u_at(23, 2 * k + 1),
                average(at(W * H + 5 * (W / 2) + k), at(W * H + 6 * (W / 2) + k)));
      ASSERT_EQ(u_at(2 * H - 1, k), u_at(2 * H - 2, k));
    }
  }
}

TEST_F(ChainScaling, Decimation2SlipsLineByLine) {
  use_identity_matrices();
  for (int y = 0; y < H; ++y)
    for (int x = 0; x < W; ++x) raw(y, x) = static_cast<uint8_t>(4 * y);
  ppl_set_decimation(ctx, 2, 0, 0);
  run(12, Format::rgb24);
  // 24 lines of 64 pixels, each 32 pixels below the one before and 32 to the right: line y starts
  // at (12 - 1 - y) * 32 + 32 y, always the same place, and the last one wins.
  const int start = 11 * 32;
  for (int x = 0; x < 64; ++x) EXPECT_EQ(output[3 * (start + x) + 1], 4 * 46);
  EXPECT_EQ(output[3 * start - 1], untouched);
  EXPECT_EQ(output[3 * (start + 64)], untouched);

  for (int y = 0; y < H; ++y)
    for (int x = 0; x < W; ++x) raw(y, x) = static_cast<uint8_t>(4 * y);
  run(12, Format::yuyv);
  // Lines of 64 pixels stand one behind the other: 24 of them, and nothing behind.
  EXPECT_NE(output[2 * 64 * 24 - 1], untouched);
  EXPECT_EQ(output[2 * 64 * 24], untouched);
}

TEST_F(ChainScaling, BlackLinesStayUntouched) {
  ppl_set_decimation(ctx, 0, 2, 4);
  run(1, Format::i420);
  EXPECT_EQ(output[W * H - 1], 100);
  EXPECT_EQ(output[W * H], untouched);
  EXPECT_EQ(output[W * (H + 6)], 130);
  fill(100);
  run(1, Format::rgb24);
  EXPECT_EQ(output[3 * W * 6 - 1], untouched);
  EXPECT_NE(output[3 * W * 6], untouched);
}

// ---- Statistics

TEST_F(ChainStatistics, FlatFrameReadsAboutItsLevelInEveryWindow) {
  set_size(640, 480);
  for (const uint32_t quality : {0u, 10u}) {
    for (const bool p3 : {false, true}) {
      ppl_set_P3_only(ctx, p3 ? 1 : 0);
      fill(100);
      run(quality, Format::i420);
      // 119 line pairs stand for four lines each, where the normaliser reckons with 468 lines.
      const PplTriple &whole = *ppl_rgb_means_whole_frame(ctx);
      for (const uint32_t mean : {whole.r, whole.g, whole.b}) EXPECT_NEAR(mean, 26035, 30) << p3;
      EXPECT_EQ(ppl_qAE_rgb_means_whole_frame(ctx)->g, 25600u);
      EXPECT_EQ(ppl_rgb_means_outside_all_sub_windows(ctx)->r, 0u);
    }
  }
}

TEST_F(ChainStatistics, FirstSampledCellDependsOnTheChain) {
  ppl_set_P3_only(ctx, 1);
  ppl_set_qual_BmGb_min_max(ctx, -255, 255);
  ppl_set_qual_GrmR_min_max(ctx, -255, 255);
  ppl_set_qual_BmGb_p_GrmR_min_max(ctx, -510, 510);
  ppl_set_qual_BmGb_m_GrmR_min_max(ctx, -510, 510);
  struct Row {
    uint32_t quality;
    bool filter;
    int first_group, first_pair, sampled;
  };
  // 128 by 48 has 16 block columns and 24 line pairs. p up to 21, 22, 20 or 21, c up to 12 or 14.
  for (const Row &row :
       {Row{0, false, 3, 3, 11 * 6}, Row{1, false, 3, 3, 11 * 6}, Row{2, false, 2, 2, 11 * 7},
        Row{0, true, 4, 4, 10 * 6}, Row{1, true, 4, 4, 10 * 6}, Row{2, true, 3, 3, 11 * 6},
        Row{10, true, 3, 3, 11 * 6}, Row{11, false, 3, 3, 11 * 6}, Row{14, false, 3, 3, 11 * 6}}) {
    SCOPED_TRACE(testing::Message() << "quality " << row.quality << " filter " << row.filter);
    row.filter ? ppl_enable_medium_filter(ctx) : ppl_disable_medium_filter(ctx);
    const auto n_qual_with = [&](int pair, int group) {
      // One cell falls out of the band, if it is looked at.
      fill(100);
      ppl_set_qual_B_min_max(ctx, 0, 200);
      raw(2 * pair, group * 8 + 2) = 250;
      run(row.quality, Format::i420);
      return ppl_n_qual_2x2_whole_frame(ctx);
    };
    const uint32_t all = n_qual_with(0, 0);
    const uint32_t m = plain(ctx).mean_normaliser;
    EXPECT_EQ(all, m * static_cast<uint32_t>(4 * row.sampled) >> 8);
    const uint32_t less_one = m * static_cast<uint32_t>(4 * row.sampled - 1) >> 8;
    EXPECT_EQ(n_qual_with(row.first_pair, row.first_group), less_one);
    EXPECT_EQ(n_qual_with(row.first_pair, row.first_group + 1), less_one);  // a left neighbour
    EXPECT_EQ(n_qual_with(row.first_pair - 1, row.first_group), all);
    EXPECT_EQ(n_qual_with(row.first_pair + 1, row.first_group), all);
    EXPECT_EQ(n_qual_with(row.first_pair, row.first_group - 1), all);  // stale, not this one
  }
}

TEST_F(ChainStatistics, FirstGroupOfALineHasAStaleLeftNeighbour) {
  ppl_set_P3_only(ctx, 1);
  // In a fresh context zeros: (100 + 100) >> 2 in every histogram, once.
  run(0, Format::i420);
  EXPECT_EQ(ppl_r_histogram(ctx)[50], 4u);
  EXPECT_EQ(ppl_g_histogram(ctx)[50], 8u);
  EXPECT_EQ(ppl_r_histogram(ctx)[100], 4u * (11 * 6 - 1));
  fill(60);
  run(0, Format::i420);
  EXPECT_EQ(ppl_r_histogram(ctx)[80], 4u);
  EXPECT_EQ(ppl_r_histogram(ctx)[60], 4u * (11 * 6 - 1));
  // Quality 12 saves as well, though it looks at the whole sums alone.
  fill(20);
  run(12, Format::i420);
  EXPECT_EQ(ppl_n_qual_2x2_whole_frame(ctx), 0u);
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(ctx), 0u);
  // 7 by 11 steps with 4 cells, times 4, of 1536 cells.
  EXPECT_NEAR(ppl_rgb_means_whole_frame(ctx)->r, 20 * 256 * 77 * 16 / 1536, 4);
  fill(60);
  run(0, Format::i420);
  EXPECT_EQ(ppl_r_histogram(ctx)[40], 4u);
  // The other tier has its own.
  ppl_set_P3_only(ctx, 0);
  fill(60);
  run(0, Format::i420);
  EXPECT_EQ(ppl_r_histogram(ctx)[30], 8u);
}

TEST_F(ChainStatistics, WindowsAreChosenByTheCounters) {
  ppl_set_P3_only(ctx, 1);
  // Cells of 2 columns and 4 rows: counters 3, 3 belong to window 1 of the first row. They sample
  // group 5 of pair 5.
  fill(0);
  ppl_reset_optical_black_b_gb_gr_r(ctx);
  raw(11, 5 * 8 + 3) = 200;
  run(0, Format::i420);
  for (int i = 0; i < 48; ++i) EXPECT_EQ(ppl_rgb_means_sub_windows(ctx)[i].r != 0, i == 1) << i;
  // Counter column 11 is window 5, row 23 would be window row 5; row counters end at 21.
  fill(0);
  raw(2 * 23 + 1, 13 * 8 + 7) = 200;
  run(0, Format::i420);
  for (int i = 0; i < 48; ++i)
    EXPECT_EQ(ppl_rgb_means_sub_windows(ctx)[i].r != 0, i == 8 * 5 + 5) << i;
}

TEST_F(ChainStatistics, ExposureLooksAtTheTableInTheLeftGroupOnly) {
  ppl_set_P3_only(ctx, 1);
  Bytes inverted(256);
  for (size_t i = 0; i < 256; ++i) inverted[i] = static_cast<uint8_t>(255 - i);
  ppl_copy_rgb_gamma_table(ctx, inverted.data());
  fill(100);
  run(0, Format::i420);
  EXPECT_EQ(ppl_qAE_rgb_means_whole_frame(ctx)->r, (155u + 100) * 128);
  EXPECT_EQ(frame, Bytes(frame.size(), 155));
}

TEST_F(ChainStatistics, FilterLooksAtUnrepairedSamples) {
  ppl_set_P3_only(ctx, 1);
  ppl_enable_medium_filter(ctx);
  raw(2 * 4 + 1, 4 * 8 + 3) = 255;  // R of a sampled cell
  run(1, Format::i420);
  EXPECT_EQ(raw(9, 35), 100);
  EXPECT_GT(ppl_qAE_rgb_means_whole_frame(ctx)->r, 25600u);
}

TEST_F(ChainStatistics, NothingIsGatheredWithoutCollection) {
  ppl_set_mean_collection(ctx, 0);
  run(0, Format::i420);
  EXPECT_EQ(ppl_rgb_means_whole_frame(ctx)->r, 0u);
  EXPECT_EQ(ppl_r_histogram(ctx)[100], 0u);
}

// ---- Lines further apart than their width

TEST_F(ChainStride, StagesStepFromThePairByTheirOwnStep) {
  set_size(128, 48, 160);
  for (size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<uint8_t>(i % 251);
  const auto byte = [&](int offset) { return frame[static_cast<size_t>(offset)]; };
  const int pair = 128 + 160;
  const StageLines green(ctx, frame.data(), 2, LineStep::frame_stride);
  EXPECT_EQ(green.at(3, -2, 7), byte(160 + 7));                // top phase, from pair 0
  EXPECT_EQ(green.at(5, 0, 7), byte(1 * pair + 3 * 160 + 7));  // pair 1
  EXPECT_EQ(green.at(5, 2, 7), byte(1 * pair + 5 * 160 + 7));
  const StageLines averages(ctx, frame.data(), 0, LineStep::frame_width);
  EXPECT_EQ(averages.at(5, 1, 9), byte(2 * pair + 2 * 128 + 9));
  EXPECT_EQ(averages.at(0, -1, 9), byte(128 + 9));
  EXPECT_EQ(averages.at(47, 1, 9), byte(23 * pair + 9));
  // Two strides above pair 1 lies before the frame for the first 32 columns: mirrored about the
  // pair's first line.
  const StageLines cells(ctx, frame.data(), 0, LineStep::frame_stride);
  EXPECT_EQ(cells.at(2, -2, 31), byte(pair + 2 * 160 + 31));
  EXPECT_EQ(cells.at(2, -2, 32), byte(pair - 2 * 160 + 32));
}

TEST_F(ChainStride, FrontEndConsumesItsOwnLinesAlone) {
  set_size(128, 48, 160);
  ppl_set_optical_black_b_gb_gr_r(ctx, 10, 10, 10, 10);
  const int pair = 128 + 160;
  for (const auto &[quality, lead] : {std::pair{1u, 4}, {2u, 2}, {12u, 2}, {14u, 4}}) {
    fill(100);
    run(quality, Format::i420);
    Bytes expected(frame.size(), 100);
    const auto consume = [&](int offset) {
      std::fill_n(expected.begin() + offset, 128, uint8_t{90});
    };
    for (int i = 0; i < lead + 2; ++i) consume(i * 160);
    for (int p = 1; 2 * p + lead < H; ++p)
      for (int i = lead; i < lead + 2; ++i) consume(p * pair + i * 160);
    EXPECT_EQ(frame, expected) << quality;
  }
}

// ---- Sizes

TEST_F(ChainSizes, EveryEvenWidthGivesAFullPicture) {
  for (const int width : {128, 130, 132, 136, 142, 158}) {
    for (const uint32_t quality : all_chains) {
      for (const Format format : all_formats) {
        if (!has_chain(quality, format)) continue;
        set_size(width, 14 + 4 * (width % 3));
        run(quality, format);
        const int bytes = W * H *
                          (format == Format::i420    ? 3
                           : is_packed(format)       ? 4
                           : format == Format::rgb24 ? 6
                                                     : 8) /
                          2;
        EXPECT_EQ(std::count(output, output + bytes, untouched), 0) << width << " " << quality;
        EXPECT_EQ(output[bytes], untouched);
      }
    }
  }
}

TEST_F(ChainSizes, OddSizesLeaveTheLastLineAndColumn) {
  set_size(131, 35);
  ppl_set_optical_black_b_gb_gr_r(ctx, 10, 10, 10, 10);
  run(0, Format::rgb24);
  for (int y = 0; y < 35; ++y)
    for (int x = 0; x < 131; ++x)
      ASSERT_EQ(raw(y, x), y < 34 && x < 130 ? 90 : 100) << y << " " << x;
  EXPECT_EQ(output[3 * (1 * 131 + 130)], untouched);
  EXPECT_EQ(output[3 * (0 * 131 + 5)], untouched);  // the first line in memory would be the last
  EXPECT_NE(output[3 * (1 * 131 + 129)], untouched);
}

TEST_F(ChainSizes, BothTiersGiveTheSamePictureInTheSharedQualities) {
  ppl_set_mean_collection(ctx, 0);
  for (const int width : {128, 144, 150}) {
    for (const uint32_t quality : {0u, 1u, 2u, 10u, 11u}) {
      for (const Format format : all_formats) {
        machine::reload_pool();
        ctx = ppl_init();
        set_size(width, 32);
        for (size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<uint8_t>(i * i * 7 >> 3);
        const Bytes original = frame;
        run(quality, format);
        const Bytes sse2(output, output + W * H * 4);
        ppl_set_P3_only(ctx, 1);
        frame = original;
        run(quality, format);
        EXPECT_EQ(sse2, Bytes(output, output + W * H * 4)) << width << " " << quality;
      }
    }
  }
}

}  // namespace
}  // namespace ppl_model
