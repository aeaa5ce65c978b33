// The smoothing of flat cells in qualities 10 and 11, and what qualities 0 and 1 find of it.
#include <set>
#include <utility>

#include "chains/chains.h"
#include "support/combinations.h"

namespace ppl_test::chains {
namespace {

using Places = std::set<std::pair<int, int>>;

class ChainFlatCells : public Chains {
 protected:
  // Quality 10 sharpens and has no RGB without a detour; luma shows it channel by channel.
  void SetUp() override {
    Chains::SetUp();
    if (!IsSkipped()) ppl_set_nf88_edge_enhance_factor(ctx, 0);
  }

  // Cells of quality 10 start on odd lines, those of quality 11 on even ones.
  static int first_line(uint32_t quality) { return quality == 10 ? 1 : 0; }

  // Values of `quality` in all three channels.
  std::vector<Pixel> demosaiced(uint32_t quality) {
    std::vector<Pixel> pixels(static_cast<size_t>(W * H));
    const auto fetch = [&](Channel channel, uint8_t Pixel::*value) {
      show_in_luma(channel);
      const Picture picture = run(quality, Format::i420);
      for (size_t i = 0; i < pixels.size(); ++i)
        pixels[i].*value = static_cast<uint8_t>(picture.bytes[i] - 16);
    };
    fetch(Channel::red, &Pixel::r);
    fetch(Channel::green, &Pixel::g);
    fetch(Channel::blue, &Pixel::b);
    return pixels;
  }

  // Four greens alike stand for smoothed cells, in frames where others have none.
  Places sharp_cells(uint32_t quality) {
    show_in_luma(Channel::green);
    const Picture picture = run(quality, Format::i420);
    Places places;
    for (int y = first_line(quality); y + 1 < H; y += 2)
      for (int x = 0; x < W; x += 2) {
        const uint8_t value = picture.y(x, y);
        if (value != picture.y(x + 1, y) || value != picture.y(x, y + 1) ||
            value != picture.y(x + 1, y + 1))
          places.insert({x, y});
      }
    return places;
  }

  uint8_t sample(int x, int y) { return raw(reflect(x, W), reflect(y, H)); }
};
INSTANTIATE_TEST_SUITE_P(, ChainFlatCells, ::testing::ValuesIn(implementations),
                         implementation_name);

// ---- What a cell becomes

TEST_P(ChainFlatCells, BecomeTheAveragesOfTheirPhases) {
  ppl_set_CFA_T0_threshold(ctx, 0);
  paint_cells(40, 80, 90, 120);  // Gb and Gr are never compared with one another
  for (const uint32_t quality : {10u, 11u}) {
    const std::vector<Pixel> pixels = demosaiced(quality);
    for (int y = first_line(quality); y < H - first_line(quality); ++y)
      for (int x = 0; x < W; ++x)
        ASSERT_EQ(pixels[static_cast<size_t>(y * W + x)], (Pixel{120, 85, 40})) << x << ", " << y;
  }
}

TEST_P(ChainFlatCells, AtThreshold255EveryCellIsOneTripleOfRoundedAverages) {
  ppl_set_CFA_T0_threshold(ctx, 255);
  paint([](int x, int y) { return (x * 37 + y * 101 + (x * y) % 53 * 3) % 200; });
  const auto down = [&](int x, int y) { return average(sample(x, y - 1), sample(x, y + 1)); };
  for (const uint32_t quality : {10u, 11u}) {
    const std::vector<Pixel> pixels = demosaiced(quality);
    for (int r = first_line(quality); r + 1 < H; r += 2)
      for (int x = 0; x < W; x += 2) {
        // The cell's upper line has Gr and R in quality 10, B and Gb in quality 11.
        const bool upper_has_red = quality == 10;
        const int red_line = upper_has_red ? r : r + 1, blue_line = upper_has_red ? r + 1 : r;
        // Lines above and below of the other kind: R over the B line, and so on.
        const uint8_t red = average(down(x + 1, blue_line), down(x - 1, blue_line));
        const uint8_t blue = average(down(x + 2, red_line), down(x, red_line));
        const uint8_t gb = average(down(x + 1, red_line), down(x - 1, red_line));
        const uint8_t gr = average(down(x + 2, blue_line), down(x, blue_line));
        for (const int y : {r, r + 1})
          for (const int column : {x, x + 1})
            ASSERT_EQ(pixels[static_cast<size_t>(y * W + column)],
                      (Pixel{red, average(gb, gr), blue}))
                << "quality " << quality << " at " << column << ", " << y;
      }
  }
}

TEST_P(ChainFlatCells, LieOneLineOffInQuality10SoThatItsOuterLinesHaveNone) {
  ppl_set_CFA_T0_threshold(ctx, 255);
  paint_cells(40, 80, 90, 120);
  std::vector<Pixel> pixels = demosaiced(10);
  const auto at = [&](int x, int y) { return pixels[static_cast<size_t>(y * W + x)]; };
  EXPECT_EQ(at(51, 0).g, 80) << "native";
  EXPECT_EQ(at(50, H - 1).g, 90);
  EXPECT_EQ(at(51, 2).g, 85);
  pixels = demosaiced(11);
  EXPECT_EQ(at(51, 0).g, 85);
  EXPECT_EQ(at(50, H - 1).g, 85);
}

TEST_P(ChainFlatCells, AHotBlueOrRedSampleEntersTheAverageAlone) {
  ppl_set_CFA_T0_threshold(ctx, 0);
  raw(40, 20) = 180;  // B
  raw(61, 31) = 180;  // R
  const std::vector<Pixel> pixels = demosaiced(11);
  const auto at = [&](int x, int y) { return pixels[static_cast<size_t>(y * W + x)]; };
  // Blue of a cell comes from its own line and the next of its kind, and from its own column and
  // the next: a quarter each.
  for (const int x : {38, 40})
    for (const int y : {18, 20}) EXPECT_EQ(at(x + 1, y + 1), (Pixel{100, 100, 120}));
  EXPECT_EQ(at(42, 20), (Pixel{100, 100, 100}));
  EXPECT_EQ(at(40, 22), (Pixel{100, 100, 100}));
  // Red from the line above and its own.
  for (const int x : {60, 62})
    for (const int y : {30, 32}) EXPECT_EQ(at(x, y), (Pixel{120, 100, 100}));
  EXPECT_EQ(at(58, 30), (Pixel{100, 100, 100}));
  EXPECT_EQ(at(60, 28), (Pixel{100, 100, 100}));
}

// ---- Which cells are flat

TEST_P(ChainFlatCells, OneHotGreenBreaksTheCellsThatCompareIt) {
  paint_cells(40, 80, 90, 120);
  raw(31, 20) += 20;  // Gb
  raw(60, 33) += 20;  // Gr
  const auto around = [](int x, int y, const Places &offsets) {
    Places places;
    for (const auto &[dx, dy] : offsets) places.insert({x + dx, y + dy});
    return places;
  };
  const auto both = [](Places a, const Places &b) {
    a.insert(b.begin(), b.end());
    return a;
  };
  ppl_set_CFA_T0_threshold(ctx, 19);
  EXPECT_EQ(
      sharp_cells(11),
      both(around(31, 20, {{-3, 0}, {-1, 0}, {1, 0}, {-3, -2}, {-1, -2}, {1, -2}, {-1, 2}, {1, 2}}),
           around(60, 33,
                  {{-2, 1}, {0, 1}, {2, 1}, {-2, -1}, {0, -1}, {2, -1}, {-2, -3}, {0, -3}})));
  EXPECT_EQ(
      sharp_cells(10),
      both(around(31, 20,
                  {{-3, 1}, {-1, 1}, {1, 1}, {-3, -1}, {-1, -1}, {1, -1}, {-1, -3}, {1, -3}}),
           around(60, 33, {{-2, 0}, {0, 0}, {2, 0}, {-2, -2}, {0, -2}, {2, -2}, {-2, 2}, {0, 2}})));
  ppl_set_CFA_T0_threshold(ctx, 20);
  EXPECT_EQ(sharp_cells(11), Places{});
  EXPECT_EQ(sharp_cells(10), Places{});
}

// (line, column) from the cell's upper left corner, pair by pair.
using Pairs = int[12][2][2];
constexpr Pairs pairs_of_quality_10 = {
    {{-2, 0}, {0, 0}}, {{-2, 2}, {0, 2}}, {{0, 2}, {2, 2}},    {{2, 0}, {2, 2}},
    {{2, 0}, {2, -2}}, {{0, 0}, {0, -2}}, {{-1, 1}, {-1, -1}}, {{-1, 1}, {-1, 3}},
    {{1, 1}, {1, 3}},  {{1, 1}, {3, 1}},  {{1, -1}, {3, -1}},  {{-1, -1}, {1, -1}}};
constexpr Pairs pairs_of_quality_11 = {{{-1, 0}, {-1, 2}}, {{-1, 0}, {-1, -2}}, {{1, 0}, {1, -2}},
                                       {{-1, 2}, {1, 2}},  {{1, 2}, {3, 2}},    {{1, 0}, {3, 0}},
                                       {{-2, 1}, {0, 1}},  {{-2, -1}, {0, -1}}, {{0, -1}, {2, -1}},
                                       {{0, 1}, {0, 3}},   {{2, 1}, {2, 3}},    {{2, 1}, {2, -1}}};

TEST_P(ChainFlatCells, EachPairDecidesByItself) {
  // The pairs tie samples to chains. What hangs on one end of a pair is raised, so that this pair
  // alone differs.
  ppl_set_CFA_T0_threshold(ctx, 10);
  for (const uint32_t quality : {10u, 11u})
    for (const auto &cut : quality == 10 ? pairs_of_quality_10 : pairs_of_quality_11) {
      const int x = 40, r = 20 + first_line(quality);
      paint_cells(40, 80, 90, 120);
      Places raised = {{cut[0][1], cut[0][0]}};
      for (size_t before = 0; before != raised.size();) {
        before = raised.size();
        for (const auto &pair : quality == 10 ? pairs_of_quality_10 : pairs_of_quality_11) {
          const Places ends = {{pair[0][1], pair[0][0]}, {pair[1][1], pair[1][0]}};
          if (&pair == &cut) continue;
          for (const auto &end : ends)
            if (raised.count(end) != 0) raised.insert(ends.begin(), ends.end());
        }
      }
      for (const auto &[dx, dy] : raised) raw(x + dx, r + dy) += 11;
      EXPECT_EQ(sharp_cells(quality).count({x, r}), 1u)
          << quality << ": " << cut[0][0] << ", " << cut[0][1];
    }
}

TEST_P(ChainFlatCells, TwelvePairsOfGreensDecide) {
  // Each cell's twelve pairs in a frame of scattered steps of 11, against a threshold of 10.
  ppl_set_CFA_T0_threshold(ctx, 10);
  paint([](int x, int y) {
    const int phase = y % 2 == 0 ? (x % 2 == 0 ? 40 : 80) : (x % 2 == 0 ? 100 : 120);
    return phase + ((x * 7 + y * 11 + x * y) % 19 == 0 ? 11 : 0);
  });
  for (const uint32_t quality : {10u, 11u}) {
    const Pairs &pairs = quality == 10 ? pairs_of_quality_10 : pairs_of_quality_11;
    Places expected;
    for (int r = first_line(quality); r + 1 < H; r += 2)
      for (int x = 0; x < W; x += 2)
        for (const auto &[p, q] : pairs)
          if (std::abs(sample(x + p[1], r + p[0]) - sample(x + q[1], r + q[0])) > 10)
            expected.insert({x, r});
    EXPECT_GT(expected.size(), 300u);
    EXPECT_LT(expected.size(), 1400u);
    EXPECT_EQ(sharp_cells(quality), expected) << quality;
  }
}

TEST_P(ChainFlatCells, ComparesStepsOfTwoSamplesSoThatASlowRampIsFlat) {
  // 4 a column: 8 between neighbours of a colour, however far the cell's surroundings reach.
  paint([](int x, int) { return 4 * (x % 50); });
  const auto is_sharp = [&](uint32_t quality, int32_t threshold) {
    ppl_set_CFA_T0_threshold(ctx, threshold);
    return sharp_cells(quality).count({20, 20 + first_line(quality)}) != 0;
  };
  for (const uint32_t quality : {10u, 11u}) {
    EXPECT_FALSE(is_sharp(quality, 8));
    EXPECT_TRUE(is_sharp(quality, 7));
  }
}

TEST_P(ChainFlatCells, TheAccurateValuesStandWhereACellIsNotFlat) {
  ppl_set_CFA_T0_threshold(ctx, 0);
  paint_texture();
  set_default_matrices();
  for (const Format format : all_formats)
    EXPECT_EQ(run(11, format).bytes, run(1, format).bytes) << name_of(format);
  for (const Format format : all_formats)
    EXPECT_EQ(run(10, format).bytes, run(0, format).bytes) << name_of(format);
}

// ---- What is left behind

TEST_P(ChainFlatCells, QualitiesWithoutATestUseTheMaskThatTheLastOneLeft) {
  // Without one before it is empty.
  fill(101);
  EXPECT_EQ(run(1, Format::rgb24).pixel(20, 20), (Pixel{101, 100, 101}));
  // Smoothed cells of 60; an edge in the last column breaks the last two of each block.
  for (const auto &[left_by, used_by, filter] :
       combinations(std::array{10u, 11u}, std::array{0u, 1u}, std::array{false, true})) {
    fill(60);
    for (int y = 0; y < H; ++y) raw(W - 1, y) = 200;
    run(left_by, Format::uyvy);
    filter ? ppl_enable_medium_filter(ctx) : ppl_disable_medium_filter(ctx);
    fill(100);
    show(Channel::green);
    const Picture picture = run(used_by, Format::rgb24);
    for (int y = 0; y < H; ++y)
      for (int x = 0; x < W; ++x)
        ASSERT_EQ(picture.pixel(x, y).g, x % B() < B() - 4 ? 60 : 100)
            << used_by << " after " << left_by << " at " << x << ", " << y;
  }
}

TEST_P(ChainFlatCells, TheMaskIsThatOfTheLastCellRow) {
  // No pair of the last row reaches line H - 6.
  for (const uint32_t quality : {10u, 11u})
    for (const bool touching : {false, true}) {
      fill(60);
      for (int x = 0; x < W; ++x) raw(x, H - (touching ? 2 : 6)) = 200;
      run(quality, Format::i420);
      fill(100);
      EXPECT_EQ(run(1, Format::rgb24).pixel(20, 20).g, touching ? 100 : 60) << quality;
    }
}

TEST_P(ChainFlatCells, OtherQualitiesNeitherUseNorClearTheMask) {
  fill(60);
  run(11, Format::rgb32);
  for (const uint32_t quality : {2u, 12u}) {
    fill(100);
    EXPECT_EQ(run(quality, Format::rgb24).pixel(20, 20), (Pixel{100, 100, 100})) << quality;
  }
  run(14, Format::i420);
  EXPECT_EQ(run(1, Format::rgb24).pixel(20, 20), (Pixel{60, 60, 60}));
}

TEST_P(ChainFlatCells, TheMaskOutlivesItsContextsOwner) {
  fill(60);
  run(11, Format::i420);
  change_owner();
  EXPECT_EQ(run(1, Format::rgb24).pixel(20, 20), (Pixel{60, 60, 60}));
  // Another frame does not: here no cell of the last block is flat.
  paint_texture();
  run(11, Format::i420);
  fill(100);
  EXPECT_EQ(run(1, Format::rgb24).pixel(20, 20), (Pixel{100, 100, 100}));
}

TEST_P(ChainFlatCells, TheMaskBelongsToItsTier) {
  const Tier other = GetParam().tier == Tier::p3 ? Tier::sse2 : Tier::p3;
  if (other == Tier::sse2 && !GetParam().model && !has_tier(Tier::sse2))
    GTEST_SKIP() << "no SSE2 tier on this processor";
  fill(60);
  run(11, Format::i420);
  fill(100);
  run_tier(other);
  EXPECT_EQ(run(1, Format::rgb24).pixel(20, 20), (Pixel{100, 100, 100}));
  run_tier(GetParam().tier);
  EXPECT_EQ(run(1, Format::rgb24).pixel(20, 20), (Pixel{60, 60, 60}));
}

TEST_P(ChainFlatCells, TheLastBlockOfAnOddWidthGoesOnOverReflectedSamples) {
  // The last block holds columns 128 and 129. An edge in column 123 breaks the cells that see it
  // mirrored, at 135: that of lane 6, and that of lane 4, whose window ends there.
  set_size(130, 48);
  fill(60);
  for (int y = 0; y < H; ++y) raw(123, y) = 200;
  run(11, Format::i420);
  fill(100);
  const Picture picture = run(1, Format::rgb24);
  for (int lane = 0; lane < 8; lane += 2)
    EXPECT_EQ(picture.pixel(48 + lane, 20).g, lane < 4 ? 60 : 100) << lane;
}

}  // namespace
}  // namespace ppl_test::chains
