// The default pipeline at decimation 1, 2 and minus 1, and black lines.
#include <gtest/gtest.h>

#include <vector>

#include "kernels/neutral_picture.h"
#include "support/combinations.h"
#include "support/raw_frame.h"

namespace ppl_test {
namespace {

using Line = std::vector<uint8_t>;
using Plane = std::vector<Line>;

uint8_t average(uint8_t a, uint8_t b) { return static_cast<uint8_t>((a + b + 1) / 2); }

Line average(const Line &a, const Line &b) {
  Line result(a.size());
  for (size_t i = 0; i < a.size(); ++i) result[i] = average(a[i], b[i]);
  return result;
}

// Doubling along a line: the first value twice, then averages before each value.
Line doubled_a(const Line &f) {
  Line out;
  for (size_t k = 0; k < f.size(); ++k) {
    out.push_back(k == 0 ? f[0] : average(f[k - 1], f[k]));
    out.push_back(f[k]);
  }
  return out;
}

// Doubling along a line: averages behind each value, the last value twice.
Line doubled_b(const Line &f) {
  Line out;
  for (size_t k = 0; k < f.size(); ++k) {
    out.push_back(f[k]);
    out.push_back(k + 1 == f.size() ? f[k] : average(f[k], f[k + 1]));
  }
  return out;
}

TEST(DoublingRules, ByHand) {
  EXPECT_EQ(doubled_a({10, 13, 20}), (Line{10, 10, 12, 13, 17, 20}));
  EXPECT_EQ(doubled_b({10, 13, 20}), (Line{10, 12, 13, 17, 20, 20}));
}

class Scaling : public RawFrameTierTest {
 protected:
  void SetUp() override {
    RawFrameTierTest::SetUp();
    if (!IsSkipped()) make_colour_neutral();
  }
  Picture run_at(int32_t decimation, Format format, const Mosaic &frame) {
    // The P3 tier's RGB24 passes garble their picture while they gather.
    ppl_set_mean_collection(ctx, format != Format::rgb24);
    Run how;
    how.decimation = decimation;
    return run(format, frame, how);
  }
  static Plane luma_plane(const Mosaic &frame) {
    const NeutralPicture neutral{frame};
    Plane plane(frame.height, Line(frame.width));
    for (size_t y = 0; y < frame.height; ++y)
      for (size_t x = 0; x < frame.width; ++x) plane[y][x] = neutral.y(x, y);
    return plane;
  }
  static Plane u_plane(const Mosaic &frame) {
    const NeutralPicture neutral{frame};
    Plane plane(frame.height / 2, Line(frame.width / 2));
    for (size_t y = 0; y < frame.height / 2; ++y)
      for (size_t x = 0; x < frame.width / 2; ++x) plane[y][x] = neutral.u(x, y);
    return plane;
  }
  static Plane v_plane(const Mosaic &frame) {
    const NeutralPicture neutral{frame};
    Plane plane(frame.height / 2, Line(frame.width / 2));
    for (size_t y = 0; y < frame.height / 2; ++y)
      for (size_t x = 0; x < frame.width / 2; ++x) plane[y][x] = neutral.v(x, y);
    return plane;
  }
  static size_t mirrored(bool mirror, size_t i, size_t count) { return mirror ? count - 1 - i : i; }
  void set_mirrors(bool h, bool v) {
    ASSERT_EQ(ppl_set_h_mirror(ctx, h), 1);
    ASSERT_EQ(ppl_set_v_mirror(ctx, v), 1);
  }
};
INSTANTIATE_TEST_SUITE_P(Tiers, Scaling, ::testing::ValuesIn(both_tiers), tier_name);

struct Mirrors {
  bool h, v;
};
constexpr std::array<Mirrors, 4> all_mirrors = {
    {{false, false}, {true, false}, {false, true}, {true, true}}};

// ---- 2:1 down

TEST_P(Scaling, HalfTakesTheBPixelOfEveryCellInLuma) {
  constexpr FrameSize sizes[] = {{160, 24}, {132, 22}, {128, 26}, {1280, 20}};
  for (const auto &[size, mirrors, format] :
       combinations(sizes, all_mirrors, std::array{Format::i420, Format::yuyv, Format::uyvy})) {
    const auto [h, v] = mirrors;
    SCOPED_TRACE(std::string(name_of(format)) + " " + std::to_string(size.width) + (h ? " h" : "") +
                 (v ? " v" : ""));
    set_mirrors(h, v);
    const Mosaic frame = textured_mosaic(size.width, size.height);
    const NeutralPicture neutral{frame};
    const Picture picture = run_at(1, format, frame);
    ASSERT_EQ(picture.result, 1);
    const size_t lines = size.height / 2, columns = size.width / 2;
    for (size_t j = 0; j < lines; ++j)
      for (size_t i = 0; i < columns; ++i)
        ASSERT_EQ(picture.y(mirrored(h, i, columns), mirrored(v, j, lines)),
                  neutral.y(2 * i, 2 * j))
            << i << ", " << j;
  }
}

TEST_P(Scaling, HalfTakesEveryFourthCellsChromaInI420) {
  for (const auto &[h, v] : all_mirrors) {
    SCOPED_TRACE(std::string(h ? " h" : "") + (v ? " v" : ""));
    set_mirrors(h, v);
    const Mosaic frame = textured_mosaic(160, 24);
    const NeutralPicture neutral{frame};
    const Picture picture = run_at(1, Format::i420, frame);
    for (size_t j = 0; j < 6; ++j)
      for (size_t i = 0; i < 40; ++i) {
        ASSERT_EQ(picture.u(mirrored(h, i, 40), mirrored(v, j, 6)), neutral.u(2 * i, 2 * j));
        ASSERT_EQ(picture.v(mirrored(h, i, 40), mirrored(v, j, 6)), neutral.v(2 * i, 2 * j));
      }
  }
}

TEST_P(Scaling, HalfKeepsChromaOnEveryLineInPackedFormats) {
  for (const auto &[h, v] : all_mirrors)
    for (const Format format : {Format::yuyv, Format::uyvy}) {
      set_mirrors(h, v);
      const Mosaic frame = textured_mosaic(160, 22);
      const NeutralPicture neutral{frame};
      const Picture picture = run_at(1, format, frame);
      for (size_t j = 0; j < 11; ++j)
        for (size_t k = 0; k < 40; ++k) {
          ASSERT_EQ(picture.u(mirrored(h, k, 40), mirrored(v, j, 11)), neutral.u(2 * k, j));
          ASSERT_EQ(picture.v(mirrored(h, k, 40), mirrored(v, j, 11)), neutral.v(2 * k, j));
        }
    }
}

TEST_P(Scaling, HalfOfAnOddNumberOfCellsLeavesTheLastPixelWithOneChromaByte) {
  // 65 pixels a line. The last one has a U alone; mirrored, it is the first one and has a V.
  const Mosaic frame = textured_mosaic(130, 22);
  const NeutralPicture neutral{frame};
  for (const Format format : {Format::yuyv, Format::uyvy})
    for (const bool h : {false, true}) {
      set_mirrors(h, false);
      const Picture picture = run_at(1, format, frame);
      const size_t luma = format == Format::yuyv ? 0 : 1;
      for (size_t j = 0; j < 11; ++j) {
        const uint8_t *const lone = &picture.bytes[2 * (65 * j + (h ? 0 : 64))];
        ASSERT_EQ(lone[luma], neutral.y(128, 2 * j)) << name_of(format) << ", line " << j;
        ASSERT_EQ(lone[1 - luma], h ? neutral.v(64, j) : neutral.u(64, j))
            << name_of(format) << ", line " << j;
      }
    }
}

TEST_P(Scaling, HalfTakesTheBPixelOfEveryCellInRgb) {
  constexpr FrameSize sizes[] = {{160, 24}, {130, 22}, {134, 26}};
  for (const auto &[size, mirrors, format] :
       combinations(sizes, all_mirrors, std::array{Format::rgb24, Format::rgb32})) {
    const auto [h, v] = mirrors;
    SCOPED_TRACE(std::string(name_of(format)) + " " + std::to_string(size.width) + (h ? " h" : "") +
                 (v ? " v" : ""));
    set_mirrors(h, v);
    const Mosaic frame = textured_mosaic(size.width, size.height);
    const NeutralPicture neutral{frame};
    const Picture picture = run_at(1, format, frame);
    const size_t lines = size.height / 2, columns = size.width / 2;
    for (size_t j = 0; j < lines; ++j)
      for (size_t i = 0; i < columns; ++i)
        ASSERT_EQ(picture.pixel(mirrored(h, i, columns), mirrored(v, j, lines)),
                  neutral.pixel(2 * i, 2 * j))
            << i << ", " << j;
  }
}

TEST_P(Scaling, HalfConsumesTheWholeFrame) {
  ASSERT_EQ(ppl_set_rgb_delta(ctx, 1, 1, 1), 1);
  for (const Format format : all_formats)
    for (const auto &[width, height] : {std::pair{160u, 24u}, {148u, 22u}}) {
      const Picture picture = run_at(1, format, flat_mosaic(width, height, 100));
      EXPECT_TRUE(all_equal(picture.consumed.data(), picture.consumed.size(), 101))
          << name_of(format);
    }
}

TEST_P(Scaling, AnOddLastPairGivesItsLineAndNoChromaInI420) {
  // 132 by 22 becomes 66 by 11: U at 726 with lines of 33, V at 726 + 181. Five chroma lines fit.
  const Mosaic frame = textured_mosaic(132, 22);
  const NeutralPicture neutral{frame};
  const Picture picture = run_at(1, Format::i420, frame);
  for (size_t i = 0; i < 66; ++i) ASSERT_EQ(picture.y(i, 10), neutral.y(2 * i, 20));
  for (size_t j = 0; j < 5; ++j)
    for (size_t i = 0; i < 33; ++i) {
      ASSERT_EQ(picture.u(i, j), neutral.u(2 * i, 2 * j));
      ASSERT_EQ(picture.v(i, j), neutral.v(2 * i, 2 * j));
    }
  EXPECT_TRUE(all_equal(&picture.bytes[726 + 165], 181 - 165, untouched));
  EXPECT_TRUE(all_equal(&picture.bytes[726 + 181 + 165], picture.bytes.size() - 726 - 181 - 165,
                        untouched));
}

// ---- Flat frames

TEST_P(Scaling, AFlatFrameStaysFlat) {
  for (const int32_t decimation : {1, -1})
    for (const Format format : all_formats) {
      const Picture plain = run_at(0, format, flat_mosaic(128, 24, 137));
      const Picture scaled = run_at(decimation, format, flat_mosaic(128, 24, 137));
      const size_t unit = format == Format::i420 ? 1 : is_rgb(format) ? plain.bytes_per_pixel() : 4;
      for (size_t i = 0; i < scaled.bytes.size(); ++i) {
        if (format == Format::rgb32 && decimation == -1 && scaled.bytes[i] == untouched) continue;
        const uint8_t expected = format != Format::i420      ? plain.bytes[i % unit]
                                 : i < scaled.size()         ? plain.bytes[0]
                                 : i < scaled.size() * 5 / 4 ? plain.u(0, 0)
                                                             : plain.v(0, 0);
        ASSERT_EQ(scaled.bytes[i], expected)
            << name_of(format) << " at " << decimation << ", byte " << i;
      }
    }
}

// ---- 1:2 up

TEST_P(Scaling, DoubledI420InterpolatesEachPlane) {
  for (const auto &[width, height] : {std::pair{128u, 24u}, {150u, 22u}, {160u, 14u}}) {
    const Mosaic frame = textured_mosaic(width, height);
    const Plane planes[3] = {luma_plane(frame), u_plane(frame), v_plane(frame)};
    for (const auto &[h, v] : all_mirrors) {
      SCOPED_TRACE(std::to_string(width) + (h ? " h" : "") + (v ? " v" : ""));
      set_mirrors(h, v);
      const Picture picture = run_at(-1, Format::i420, frame);
      for (int p = 0; p < 3; ++p) {
        const Plane &plane = planes[p];
        const size_t lines = 2 * plane.size(), columns = 2 * plane[0].size();
        for (size_t line = 0; line < lines; ++line) {
          const size_t m = line / 2;
          Line expected = doubled_a(plane[m]);
          if (line % 2 == 1 && m + 1 < plane.size())
            expected = average(expected, doubled_a(plane[m + 1]));
          for (size_t x = 0; x < columns; ++x) {
            const size_t ox = mirrored(h, x, columns), oy = mirrored(v, line, lines);
            const uint8_t actual = p == 0   ? picture.y(ox, oy)
                                   : p == 1 ? picture.u(ox, oy)
                                            : picture.v(ox, oy);
            ASSERT_EQ(actual, expected[x]) << "plane " << p << " at " << x << ", " << line;
          }
        }
      }
    }
  }
}

TEST_P(Scaling, DoubledI420RepeatsItsFirstColumnAndItsLastLine) {
  const Picture picture = run_at(-1, Format::i420, textured_mosaic(128, 24));
  for (size_t line = 0; line < 48; ++line) ASSERT_EQ(picture.y(0, line), picture.y(1, line));
  for (size_t x = 0; x < 256; ++x) ASSERT_EQ(picture.y(x, 47), picture.y(x, 46));
}

TEST_P(Scaling, DoubledRgb24PutsItsAveragesAboveTheSourceLines) {
  for (const auto &[width, height] : {std::pair{128u, 24u}, {150u, 22u}}) {
    const Mosaic frame = textured_mosaic(width, height);
    const NeutralPicture neutral{frame};
    for (const auto &[h, v] : all_mirrors) {
      SCOPED_TRACE(std::to_string(width) + (h ? " h" : "") + (v ? " v" : ""));
      set_mirrors(h, v);
      const Picture picture = run_at(-1, Format::rgb24, frame);
      for (int channel = 0; channel < 3; ++channel) {
        const auto part = [channel](const Pixel &p) {
          return channel == 0 ? p.r : channel == 1 ? p.g : p.b;
        };
        Line above;
        for (size_t m = 0; m < height; ++m) {
          Line source(width);
          for (size_t x = 0; x < width; ++x) source[x] = part(neutral.pixel(x, m));
          const Line line = doubled_a(source);
          const Line between = m == 0 ? line : average(above, line);
          for (size_t x = 0; x < 2 * width; ++x) {
            const size_t ox = mirrored(h, x, 2 * width);
            ASSERT_EQ(part(picture.pixel(ox, mirrored(v, 2 * m, 2 * height))), between[x])
                << x << ", " << 2 * m;
            ASSERT_EQ(part(picture.pixel(ox, mirrored(v, 2 * m + 1, 2 * height))), line[x])
                << x << ", " << 2 * m + 1;
          }
          above = line;
        }
      }
    }
  }
}

TEST_P(Scaling, DoubledRgb24RepeatsItsFirstLineAndColumn) {
  const Picture picture = run_at(-1, Format::rgb24, textured_mosaic(128, 24));
  for (size_t x = 0; x < 256; ++x) ASSERT_EQ(picture.pixel(x, 0), picture.pixel(x, 1));
  for (size_t line = 0; line < 48; ++line)
    ASSERT_EQ(picture.pixel(0, line), picture.pixel(1, line));
}

TEST_P(Scaling, DoubledYuyvHasSourceLumaOnEvenLinesAndChromaInGroupsOfFour) {
  const Mosaic frame = textured_mosaic(144, 22);
  const Plane luma = luma_plane(frame), u = u_plane(frame), v = v_plane(frame);
  for (const auto &[h_flag, v_flag] : all_mirrors) {
    SCOPED_TRACE(std::string(h_flag ? " h" : "") + (v_flag ? " v" : ""));
    set_mirrors(h_flag, v_flag);
    const Picture picture = run_at(-1, Format::yuyv, frame);
    for (size_t m = 0; m < 22; ++m) {
      const Line expected = doubled_b(luma[m]);
      for (size_t x = 0; x < 288; ++x)
        ASSERT_EQ(picture.y(mirrored(h_flag, x, 288), mirrored(v_flag, 2 * m, 44)), expected[x])
            << x << ", " << 2 * m;
    }
    for (size_t line = 0; line < 44; ++line) {
      const size_t m = line / 4;
      Line expected_u = doubled_b(u[m]), expected_v = doubled_b(v[m]);
      if (line % 4 == 3 && m + 1 < u.size()) {
        expected_u = average(expected_u, doubled_b(u[m + 1]));
        expected_v = average(expected_v, doubled_b(v[m + 1]));
      }
      for (size_t k = 0; k < 144; ++k) {
        const size_t ok = mirrored(h_flag, k, 144), oy = mirrored(v_flag, line, 44);
        ASSERT_EQ(picture.u(ok, oy), expected_u[k]) << k << ", " << line;
        ASSERT_EQ(picture.v(ok, oy), expected_v[k]) << k << ", " << line;
      }
    }
  }
}

TEST_P(Scaling, DoubledPackedLinesBetweenSourceLinesAreAverages) {
  for (const Format format : {Format::yuyv, Format::uyvy}) {
    const Picture picture = run_at(-1, format, textured_mosaic(144, 22));
    for (size_t line = 1; line < 43; line += 2)
      for (size_t x = 0; x < 288; ++x)
        ASSERT_EQ(picture.y(x, line), average(picture.y(x, line - 1), picture.y(x, line + 1)))
            << x << ", " << line;
    for (size_t x = 0; x < 288; ++x) ASSERT_EQ(picture.y(x, 43), picture.y(x, 42)) << x;
  }
}

TEST_P(Scaling, DoubledUyvyIsDoubledYuyvWithTheBytesOfItsPairsSwapped) {
  const Mosaic frame = textured_mosaic(144, 22);
  for (const auto &[h, v] : all_mirrors) {
    set_mirrors(h, v);
    const Picture yuyv = run_at(-1, Format::yuyv, frame);
    const Picture uyvy = run_at(-1, Format::uyvy, frame);
    for (size_t i = 0; i < yuyv.bytes.size(); ++i) ASSERT_EQ(uyvy.bytes[i ^ 1], yuyv.bytes[i]) << i;
  }
}

TEST_P(Scaling, Rgb32HasNoDoublingPass) {
  // 128 by 48 in a buffer of 256 by 96: a line pair moves by two and a half lines, and every
  // source line takes half of an output line.
  const Mosaic frame = textured_mosaic(128, 48);
  const NeutralPicture neutral{frame};
  const Picture picture = run_at(-1, Format::rgb32, frame);
  std::vector<bool> written(256 * 96);
  for (size_t p = 0; p < 24; ++p)
    for (size_t i = 0; i < 2; ++i)
      for (size_t x = 0; x < 128; ++x) {
        // Pair 0 stands on lines 95 and 94 at the left, pair 1 on 92 and 91 at the right.
        const size_t line = 95 - i - (p % 2 == 0 ? p / 2 * 5 : p / 2 * 5 + 3);
        const size_t column = x + (p % 2 == 0 ? 0 : 128);
        ASSERT_EQ(picture.memory_pixel(column, line), neutral.pixel(x, 2 * p + i))
            << column << ", " << line;
        ASSERT_EQ(picture.fourth_byte(column, line), 0);
        written[line * 256 + column] = true;
      }
  EXPECT_TRUE(written[95 * 256] && written[94 * 256] && !written[93 * 256 + 128]);
  EXPECT_TRUE(written[92 * 256 + 128] && written[91 * 256 + 128] && written[90 * 256]);
  for (size_t i = 0; i < written.size(); ++i) {
    if (!written[i]) {
      ASSERT_TRUE(all_equal(&picture.bytes[4 * i], 4, untouched)) << i;
    }
  }
}

// ---- Decimation 2

TEST_P(Scaling, DecimationTwoWritesHalfLinesAtAQuarterPitch) {
  // 128 by 48: the output is declared as 32 by 12, 576 bytes; a row of four lines writes two lines
  // of 64 that stand 32 apart and one chroma line of 32 per plane, and the next row starts 64 + 32
  // and 32 bytes on. Stores go in steps of two blocks: first line, second line, U, V.
  const Mosaic frame = textured_mosaic(128, 48);
  const NeutralPicture neutral{frame};
  const size_t step = GetParam() == Tier::p3 ? 16 : 32;
  std::vector<uint8_t> expected(2048, untouched);
  for (size_t row = 0; row < 12; ++row)
    for (size_t s = 0; s < 64; s += step) {
      for (size_t line = 0; line < 2; ++line)
        for (size_t i = s; i < s + step; ++i)
          expected[96 * row + 32 * line + i] = neutral.y(2 * i, 4 * row + 2 * line);
      for (size_t i = s / 2; i < (s + step) / 2; ++i)
        expected[384 + 32 * row + i] = neutral.u(2 * i, 2 * row);
      for (size_t i = s / 2; i < (s + step) / 2; ++i)
        expected[480 + 32 * row + i] = neutral.v(2 * i, 2 * row);
    }
  Run how;
  how.decimation = 2;
  how.bytes_behind = 2048 - 576;
  const Picture picture = run(Format::i420, frame, how);
  EXPECT_NE(expected[1151], untouched);
  EXPECT_EQ(expected[1152], untouched);
  for (size_t i = 0; i < 2048; ++i) ASSERT_EQ(picture.bytes[i], expected[i]) << i;
}

// ---- Black lines

TEST_P(Scaling, BlackLinesAreLeftToTheCallerAtDecimation1) {
  const Mosaic frame = textured_mosaic(128, 48);
  const NeutralPicture neutral{frame};
  ASSERT_EQ(ppl_new_frame_size(ctx, 128, 48, 128), 1);
  ASSERT_EQ(ppl_set_decimation(ctx, 1, 2, 4), 1);
  black_lines_in_force = 6;
  Run how;
  how.set_size = false;
  const Picture picture = run(Format::i420, frame, how);
  ASSERT_EQ(picture.bytes.size(), 64u * 30 * 3 / 2);
  for (size_t j = 0; j < 24; ++j)
    for (size_t i = 0; i < 64; ++i) ASSERT_EQ(picture.bytes[j * 64 + i], neutral.y(2 * i, 2 * j));
  EXPECT_TRUE(all_equal(&picture.bytes[24 * 64], 6 * 64, untouched));
  for (size_t j = 0; j < 12; ++j)
    for (size_t i = 0; i < 32; ++i) {
      ASSERT_EQ(picture.bytes[64 * 30 + j * 32 + i], neutral.u(2 * i, 2 * j));
      ASSERT_EQ(picture.bytes[64 * 30 + 16 * 30 + j * 32 + i], neutral.v(2 * i, 2 * j));
    }
  EXPECT_TRUE(all_equal(&picture.bytes[64 * 30 + 12 * 32], 3 * 32, untouched));
  EXPECT_TRUE(all_equal(&picture.bytes[64 * 30 + 16 * 30 + 12 * 32], 3 * 32, untouched));
}

TEST_P(Scaling, BlackLinesOfRgbAreTheFirstInMemory) {
  ppl_set_mean_collection(ctx, 0);
  const Mosaic frame = textured_mosaic(128, 48);
  const NeutralPicture neutral{frame};
  for (const Format format : {Format::rgb24, Format::rgb32}) {
    ASSERT_EQ(ppl_new_frame_size(ctx, 128, 48, 128), 1);
    ASSERT_EQ(ppl_set_decimation(ctx, 0, 0, 0), 1);
    ASSERT_EQ(ppl_set_decimation(ctx, 0, 2, 4), 1);
    black_lines_in_force = 6;
    Run how;
    how.set_size = false;
    const Picture picture = run(format, frame, how);
    EXPECT_TRUE(all_equal(picture.bytes.data(), 6 * 128 * picture.bytes_per_pixel(), untouched));
    for (size_t line = 0; line < 48; ++line)
      for (size_t x = 0; x < 128; ++x)
        ASSERT_EQ(picture.pixel(x, line), neutral.pixel(x, line)) << x << ", " << line;
  }
}

TEST_P(Scaling, BlackLinesOfPackedFormatsAreTheLastInMemory) {
  const Mosaic frame = textured_mosaic(128, 48);
  const NeutralPicture neutral{frame};
  for (const Format format : {Format::yuyv, Format::uyvy}) {
    ASSERT_EQ(ppl_new_frame_size(ctx, 128, 48, 128), 1);
    ASSERT_EQ(ppl_set_decimation(ctx, 0, 0, 0), 1);
    ASSERT_EQ(ppl_set_decimation(ctx, 0, 2, 4), 1);
    black_lines_in_force = 6;
    Run how;
    how.set_size = false;
    const Picture picture = run(format, frame, how);
    for (size_t line = 0; line < 48; ++line)
      for (size_t x = 0; x < 128; ++x) ASSERT_EQ(picture.y(x, line), neutral.y(x, line));
    EXPECT_TRUE(all_equal(&picture.bytes[48 * 256], 6 * 256, untouched));
  }
}

}  // namespace
}  // namespace ppl_test
