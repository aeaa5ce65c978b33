// What the single-pass picture of a frame is when the controls change nothing: identity curve,
// identity sensor matrices (RawFrameTest::make_colour_neutral).
#pragma once

#include <algorithm>

#include "support/raw_frame.h"

namespace ppl_test {

struct NeutralPicture {
  const Mosaic &frame;

  static int floor_shift(int value, int bits) { return value >> bits; }
  static uint8_t luma(int r, int g, int b) {
    const int y = std::clamp(floor_shift(17 * r + 32 * g + 6 * b + 32, 6), 0, 255);
    return static_cast<uint8_t>(std::min(y + 16, 235));
  }
  static uint8_t chroma_u(int r, int g, int b) {
    return static_cast<uint8_t>(
        std::clamp(floor_shift(-9 * r - 18 * g + 28 * b + 32, 6), -112, 112) + 128);
  }
  static uint8_t chroma_v(int r, int g, int b) {
    return static_cast<uint8_t>(
        std::clamp(floor_shift(28 * r - 23 * g - 4 * b + 32, 6), -112, 112) + 128);
  }

  uint8_t average_green(size_t cx, size_t cy) const {
    return static_cast<uint8_t>((frame.gb(cx, cy) + frame.gr(cx, cy) + 1) / 2);
  }
  // Green of a pixel: its own sample where it is one, else the average of its cell.
  uint8_t green(size_t x, size_t y) const {
    return x % 2 == y % 2 ? average_green(x / 2, y / 2) : frame.at(x, y);
  }
  uint8_t y(size_t x, size_t line) const {
    return luma(frame.r(x / 2, line / 2), green(x, line), frame.b(x / 2, line / 2));
  }
  uint8_t u(size_t cx, size_t cy) const {
    return chroma_u(frame.r(cx, cy), average_green(cx, cy), frame.b(cx, cy));
  }
  uint8_t v(size_t cx, size_t cy) const {
    return chroma_v(frame.r(cx, cy), average_green(cx, cy), frame.b(cx, cy));
  }
  Pixel pixel(size_t x, size_t line) const {
    return {frame.r(x / 2, line / 2), green(x, line), frame.b(x / 2, line / 2)};
  }
};

}  // namespace ppl_test
