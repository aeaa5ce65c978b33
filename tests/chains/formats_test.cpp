// Output formats, mirrors and scaling of the multi-pass qualities.
#include "chains/chains.h"

namespace ppl_test::chains {
namespace {

PPL_CHAINS_SUITE(ChainFormats);
PPL_CHAINS_SUITE(ChainScaling);

TEST_P(ChainFormats, AFlatFrameIsFlatInEveryQualityAndFormat) {
  // The base rows sum to 54, 1 and 0: (54 * 100 + 32) >> 6 is 84, (100 + 32) >> 6 is 2.
  set_default_matrices();
  for (const uint32_t quality : all_chains)
    for (const Format format : all_formats) {
      if (!has_chain(quality, format)) continue;
      SCOPED_TRACE(testing::Message() << "quality " << quality << " " << name_of(format));
      const Picture picture = run(quality, format);
      EXPECT_EQ(picture.consumed, frame);
      const Pixel corner = is_rgb(format) ? picture.pixel(0, 0) : Pixel{};
      for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) {
          if (is_rgb(format)) {
            ASSERT_EQ(picture.pixel(x, y), corner);
            continue;
          }
          ASSERT_EQ(picture.y(x, y), 84 + 16);
          const int line = format == Format::i420 ? y / 2 : y;
          // The chroma box takes a little saturation away: 9 * 2 * 28 / 256 is 1.
          const bool boxed = quality == 14 && y >= 2 && x >= B() && x < W - B();
          ASSERT_EQ(picture.u(x / 2, line), 128 + (boxed ? 1 : 2)) << x << ", " << y;
          ASSERT_EQ(picture.v(x / 2, line), 128);
        }
    }
}

TEST_P(ChainFormats, PackedFormatsCarryTheChromaOfTheEvenLineOnBoth) {
  paint_texture();
  for (const uint32_t quality : all_chains) {
    const Picture planar = run(quality, Format::i420);
    for (const Format format : {Format::yuyv, Format::uyvy}) {
      const Picture packed = run(quality, format);
      for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) {
          ASSERT_EQ(packed.y(x, y), planar.y(x, y));
          ASSERT_EQ(packed.u(x / 2, y), planar.u(x / 2, y / 2));
          ASSERT_EQ(packed.v(x / 2, y), planar.v(x / 2, y / 2));
        }
    }
  }
}

TEST_P(ChainFormats, Rgb32IsRgb24WithAZeroToEachPixel) {
  paint_texture();
  for (const uint32_t quality : {0u, 1u, 2u, 10u, 11u, 12u}) {
    const Picture three = run(quality, Format::rgb24), four = run(quality, Format::rgb32);
    for (int y = 0; y < H; ++y)
      for (int x = 0; x < W; ++x) {
        ASSERT_EQ(four.pixel(x, y), three.pixel(x, y));
        ASSERT_EQ(four.fourth_byte(x, y), 0);
      }
  }
}

TEST_P(ChainFormats, RgbStandsBottomUpWithBlueFirst) {
  paint_cells(30, 60, 60, 90);
  for (int x = 0; x < W; ++x) raw(x, 0) = raw(x, 1) = 200;
  for (const Format format : {Format::rgb24, Format::rgb32}) {
    const Picture picture = run(2, format);
    EXPECT_EQ(picture.bytes[0], 30);
    EXPECT_EQ(picture.bytes[1], 60);
    EXPECT_EQ(picture.bytes[2], 90);
    const size_t line = picture.bytes_per_pixel() * static_cast<size_t>(W);
    EXPECT_EQ(picture.bytes[line * static_cast<size_t>(H - 1)], 200);
  }
}

// Calls check(x, y, mirrored x, mirrored y) for all places of a W by H plane.
template <class Check>
void each_place(int width, int height, int mirrors, Check check) {
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      check(x, y, (mirrors & 1) != 0 ? width - 1 - x : x, (mirrors & 2) != 0 ? height - 1 - y : y);
}

// That `turned` is `plain` mirrored.
void expect_mirrored(const Picture &plain, const Picture &turned, int mirrors) {
  const int W = static_cast<int>(plain.width), H = static_cast<int>(plain.height);
  each_place(W, H, mirrors, [&](int x, int y, int mx, int my) {
    if (is_rgb(plain.format)) {
      ASSERT_EQ(turned.pixel(mx, my), plain.pixel(x, y));
    } else {
      ASSERT_EQ(turned.y(mx, my), plain.y(x, y));
    }
  });
  if (is_rgb(plain.format)) return;
  each_place(W / 2, plain.format == Format::i420 ? H / 2 : H, mirrors,
             [&](int x, int y, int mx, int my) {
               ASSERT_EQ(turned.u(mx, my), plain.u(x, y));
               ASSERT_EQ(turned.v(mx, my), plain.v(x, y));
             });
}

TEST_P(ChainFormats, MirrorsReverseThePicture) {
  paint_texture();
  for (const uint32_t quality : all_chains)
    for (const Format format : all_formats) {
      if (!has_chain(quality, format)) continue;
      SCOPED_TRACE(testing::Message() << "quality " << quality << " " << name_of(format));
      mirror(0);
      const Picture plain = run(quality, format);
      for (const int mirrors : {1, 2, 3}) {
        mirror(mirrors);
        expect_mirrored(plain, run(quality, format), mirrors);
      }
    }
}

TEST_P(ChainFormats, WithBothMirrorsTheFirstBlockStandsAtTheEnd) {
  paint_texture();
  const Picture plain = run(0, Format::i420);
  mirror(3);
  const Picture turned = run(0, Format::i420);
  for (int x = 0; x < B(); ++x)
    EXPECT_EQ(turned.bytes[static_cast<size_t>(W * H - 1 - x)], plain.y(x, 0));
}

// ---- Decimation 1

TEST_P(ChainScaling, HalfTakesEverySecondPixelOfEverySecondLine) {
  paint_texture();
  for (const uint32_t quality : all_chains)
    for (const Format format : all_formats) {
      if (!has_chain(quality, format)) continue;
      SCOPED_TRACE(testing::Message() << "quality " << quality << " " << name_of(format));
      decimate(0);
      const Picture full = run(quality, format);
      decimate(1);
      const Picture half = run(quality, format);
      for (int y = 0; y < H / 2; ++y)
        for (int x = 0; x < W / 2; ++x) {
          if (is_rgb(format)) {
            ASSERT_EQ(half.pixel(x, y), full.pixel(2 * x, 2 * y));
            continue;
          }
          ASSERT_EQ(half.y(x, y), full.y(2 * x, 2 * y));
          if (x % 2 != 0 || (format == Format::i420 && y % 2 != 0)) continue;
          // I420 takes the odd one of two chroma lines, packed formats the line's own.
          const int line = format == Format::i420 ? y + 1 : 2 * y;
          const int half_line = format == Format::i420 ? y / 2 : y;
          ASSERT_EQ(half.u(x / 2, half_line), full.u(x, line)) << x << ", " << y;
          ASSERT_EQ(half.v(x / 2, half_line), full.v(x, line)) << x << ", " << y;
        }
    }
}

TEST_P(ChainScaling, HalfOfAnOddNumberOfLinePairsHasNoHalfChromaLine) {
  set_default_matrices();
  set_size(128, 50);
  decimate(1);
  const Picture picture = run(2, Format::i420);
  // 25 lines of 64; 12 lines of 32 chroma in a plane of 400.
  const auto byte = [&](int offset) { return picture.bytes[static_cast<size_t>(offset)]; };
  EXPECT_EQ(byte(64 * 25 + 12 * 32 - 1), 130);
  EXPECT_EQ(byte(64 * 25 + 12 * 32), untouched);
  EXPECT_EQ(byte(64 * 25 + 400 - 1), untouched);
  EXPECT_EQ(byte(64 * 25 + 400), 128);
  EXPECT_EQ(byte(64 * 25 + 800 - 1), untouched);
}

TEST_P(ChainScaling, MirrorsReverseTheHalvedPicture) {
  paint_texture();
  decimate(1);
  for (const Format format : all_formats) {
    mirror(0);
    const Picture plain = run(1, format);
    for (const int mirrors : {1, 2, 3}) {
      mirror(mirrors);
      expect_mirrored(plain, run(1, format), mirrors);
    }
  }
}

// ---- Decimation -1

// Sample x of a line doubled by the rule that puts the source on odd places; source(k) is its
// sample k.
template <class Source>
uint8_t doubled(Source source, int x) {
  return x % 2 == 1 || x == 0 ? source(x / 2) : average(source(x / 2 - 1), source(x / 2));
}
// The same both ways: source lines on even lines, the last one twice. source(k, line).
template <class Source>
uint8_t doubled(Source source, int x, int y, int lines) {
  const auto line = [&](int m) { return doubled([&](int k) { return source(k, m); }, x); };
  return y % 2 == 0 || y == 2 * lines - 1 ? line(y / 2) : average(line(y / 2), line(y / 2 + 1));
}

TEST_P(ChainScaling, DoublingPutsSourceLinesOnEvenLinesInEveryPlane) {
  paint_texture();
  for (const uint32_t quality : all_chains) {
    decimate(0);
    const Picture full = run(quality, Format::i420);
    decimate(-1);
    const Picture twice = run(quality, Format::i420);
    for (int y = 0; y < 2 * H; ++y)
      for (int x = 0; x < 2 * W; ++x) {
        // What quality 14 leaves open stands in two columns of the last lines.
        if (quality == 14 && y >= 2 * H - 6) continue;
        ASSERT_EQ(twice.y(x, y), doubled([&](int k, int m) { return full.y(k, m); }, x, y, H))
            << quality << " at " << x << ", " << y;
        if (x >= W || y >= H) continue;
        ASSERT_EQ(twice.u(x, y), doubled([&](int k, int m) { return full.u(k, m); }, x, y, H / 2));
        ASSERT_EQ(twice.v(x, y), doubled([&](int k, int m) { return full.v(k, m); }, x, y, H / 2));
      }
  }
}

TEST_P(ChainScaling, DoubledRgb24CountsItsLinesInPictureOrder) {
  paint_texture();
  for (const uint32_t quality : {0u, 1u, 2u, 10u, 11u, 12u})
    for (const int mirrors : {0, 3}) {
      mirror(0);
      decimate(0);
      const Picture full = run(quality, Format::rgb24);
      mirror(mirrors);
      decimate(-1);
      const Picture twice = run(quality, Format::rgb24);
      for (int y = 0; y < 2 * H; ++y)
        for (int x = 0; x < 2 * W; ++x) {
          const auto channel = [&](uint8_t Pixel::*value) {
            return doubled([&](int k, int m) { return full.pixel(k, m).*value; }, x, y, H);
          };
          const Pixel expected{channel(&Pixel::r), channel(&Pixel::g), channel(&Pixel::b)};
          ASSERT_EQ(mirrors == 0 ? twice.pixel(x, y) : twice.pixel(2 * W - 1 - x, 2 * H - 1 - y),
                    expected)
              << quality << " at " << x << ", " << y;
        }
    }
}

TEST_P(ChainScaling, MirrorsReverseTheDoubledPicture) {
  paint_texture();
  decimate(-1);
  for (const Format format : {Format::i420, Format::yuyv, Format::uyvy}) {
    mirror(0);
    const Picture plain = run(1, format);
    for (const int mirrors : {1, 2, 3}) {
      mirror(mirrors);
      expect_mirrored(plain, run(1, format), mirrors);
    }
  }
}

TEST_P(ChainScaling, DoubledRgb24WritesOverHalfOfEachRowWithOneMirror) {
  paint_texture();
  const Picture full = run(11, Format::rgb24);
  decimate(-1);
  for (const int mirrors : {1, 2}) {
    mirror(mirrors);
    const Picture twice = run(11, Format::rgb24);
    // Line m of the picture, unmirrored again; green(m, x).
    const auto green = [&](int x, int m) {
      return mirrors == 1 ? twice.pixel(2 * W - 1 - x, m).g : twice.pixel(x, 2 * H - 1 - m).g;
    };
    const auto source = [&](int x, int m) {
      return doubled([&](int k) { return full.pixel(k, m).g; }, x);
    };
    for (int x = 0; x < 2 * W; ++x) {
      for (int m = 0; m < H; m += 2) ASSERT_EQ(green(x, m), source(x, m));
      for (int m = 1; m < H - 2; m += 2)
        ASSERT_EQ(green(x, m), average(source(x, m - 1), source(x, m + 1)));
      ASSERT_EQ(green(x, H - 1), source(x, H - 2));
      ASSERT_EQ(green(x, H), source(x, H - 1));
      for (int m = H + 1; m < 2 * H; ++m) ASSERT_EQ(green(x, m), untouched);
    }
  }
}

TEST_P(ChainScaling, DoubledPackedFormatsSpreadChromaOverFourLines) {
  paint_texture();
  const Picture full = run(11, Format::i420);
  decimate(-1);
  for (const Format format : {Format::yuyv, Format::uyvy}) {
    const Picture twice = run(11, format);
    for (int y = 0; y < 2 * H; ++y)
      for (int x = 0; x < 2 * W; ++x)
        ASSERT_EQ(twice.y(x, y), doubled([&](int k, int m) { return full.y(k, m); }, x, y, H));
    for (int y = 0; y < 2 * H; ++y)
      for (int x = 0; x < W; ++x) {
        const auto line = [&](int m) { return doubled([&](int k) { return full.u(k, m); }, x); };
        const bool between = y % 4 == 3 && y / 4 + 1 < H / 2;
        ASSERT_EQ(twice.u(x, y), between ? average(line(y / 4), line(y / 4 + 1)) : line(y / 4));
      }
  }
}

TEST_P(ChainScaling, DoubledRgb32MovesUnscaledRowsByTwoAndAHalfLines) {
  paint_texture();
  const Picture full = run(1, Format::rgb32);
  decimate(-1);
  for (const int mirrors : {0, 1, 2, 3}) {
    mirror(mirrors);
    const Picture twice = run(1, Format::rgb32);
    const bool left = (mirrors & 1) != 0, down = (mirrors & 2) != 0;
    // In memory: from the last line upwards or the first downwards, from the left end or the right.
    const int first = down ? 0 : (2 * H - 1) * 2 * W;
    const int direction = down ? 1 : -1;
    const int halves_between_rows = left == down ? 5 : 3;
    Bytes expected(static_cast<size_t>(W * H * 16), untouched);
    for (int y = 0; y < H; ++y)
      for (int x = 0; x < W; ++x) {
        const int halves = y / 2 * halves_between_rows + y % 2 * 2;
        const int place = first + direction * halves * W + (left ? 2 * W - 1 - x : x);
        const Pixel pixel = full.pixel(x, y);
        uint8_t *target = &expected[static_cast<size_t>(4 * place)];
        target[0] = pixel.b;
        target[1] = pixel.g;
        target[2] = pixel.r;
        target[3] = 0;
      }
    EXPECT_EQ(twice.bytes, expected) << mirrors;
  }
}

// ---- Decimation 2 and black lines

TEST_P(ChainScaling, AQuarterWritesHalfLinesThatRunIntoEachOther) {
  for (int y = 0; y < H; ++y)
    for (int x = 0; x < W; ++x) raw(x, y) = static_cast<uint8_t>(4 * y);
  decimate(2);
  const auto byte = [](const Picture &picture, int offset) {
    return picture.bytes[static_cast<size_t>(offset)];
  };
  // 24 lines of 64 pixels, each 32 pixels below the one before and 32 to the right: line y starts
  // at (12 - 1 - y) * 32 + 32 y, always the same place, and the last one stays.
  const Picture rgb = run(12, Format::rgb24);
  const int start = 11 * 32;
  for (int x = 0; x < 64; ++x) EXPECT_EQ(byte(rgb, 3 * (start + x) + 1), 4 * 46);
  EXPECT_EQ(byte(rgb, 3 * start - 1), untouched);
  EXPECT_EQ(byte(rgb, 3 * (start + 64)), untouched);
  // The same number of lines one behind the other: twice the declared 32 by 12 pixels.
  const Picture yuyv = run(12, Format::yuyv);
  EXPECT_NE(byte(yuyv, 2 * 64 * 24 - 1), untouched);
  EXPECT_EQ(byte(yuyv, 2 * 64 * 24), untouched);
  decimate(1);
  const Picture half = run(12, Format::yuyv);
  EXPECT_TRUE(std::equal(half.bytes.begin(), half.bytes.begin() + 2 * 64 * 24, yuyv.bytes.begin()));
}

TEST_P(ChainScaling, BlackLinesStayUntouched) {
  set_default_matrices();
  decimate(0, 2, 4);
  const Picture planar = run(1, Format::i420);
  EXPECT_EQ(planar.y(W - 1, H - 1), 100);
  for (int x = 0; x < 6 * W; ++x) ASSERT_EQ(planar.y(x, H), untouched);
  EXPECT_EQ(planar.u(0, 0), 130);
  EXPECT_EQ(planar.u(0, H / 2), untouched);
  const Picture rgb = run(1, Format::rgb24);
  for (int i = 0; i < 3 * W * 6; ++i) ASSERT_EQ(rgb.bytes[static_cast<size_t>(i)], untouched);
  EXPECT_NE(rgb.bytes[static_cast<size_t>(3 * W * 6)], untouched);
}

}  // namespace
}  // namespace ppl_test::chains
