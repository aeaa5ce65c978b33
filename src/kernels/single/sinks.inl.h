// The last step of a pass: colour, and the output's layout in memory. A sink takes a register of
// samples of two lines at a time and writes the pixels that they make.
#pragma once

#include "kernels/single/colour.inl.h"

namespace ppl::TIER {
namespace {

// Where units (pixels, or cells of a chroma plane) `first` to `first + count - 1` of a line stand.
// `origin` is the place of unit 0; a mirrored line runs from there to lower addresses.
template <bool mirrored>
uint8_t *place(uint8_t *origin, int unit_bytes, int first, int count) {
  return mirrored ? origin - unit_bytes * (first + count - 1) : origin + unit_bytes * first;
}

// A register of pixels to packed 4:2:2: `luma` a byte a pixel, `chroma` U and V of each pair in
// turn.
template <bool luma_first, bool mirrored>
void put_register(uint8_t *out, Vec::type luma, Vec::type chroma) {
  // A pair keeps its order of U and V also where the line is mirrored.
  const auto y = mirrored ? reverse_u8(luma) : luma;
  const auto uv = mirrored ? Vec::reverse_words(chroma) : chroma;
  const auto first = luma_first ? y : uv;
  const auto second = luma_first ? uv : y;
  Vec::store(out, Vec::interleave_low_u8(first, second));
  Vec::store(out + Vec::bytes, Vec::interleave_high_u8(first, second));
}

// A quarter of a register of pixels, with a zero in each. What a store but the last writes too
// much, the next one corrects.
template <int pixel_bytes, bool is_last>
void put_rgb_quarter(uint8_t *out, Vec::type pixels) {
  if constexpr (pixel_bytes == 4) {
    Vec::store(out, pixels);
  } else if constexpr (is_last) {
    Vec::store_bgr(out, pixels);
  } else {
    Vec::store_bgr_loosely(out, pixels);
  }
}

// A register of pixels to RGB24 or RGB32: B, G, R, and a zero in RGB32.
template <int pixel_bytes, bool mirrored>
void put_rgb_register(uint8_t *out, Vec::type b, Vec::type g, Vec::type r) {
  const auto BG_low = Vec::interleave_low_u8(b, g);
  const auto BG_high = Vec::interleave_high_u8(b, g);
  const auto R0_low = Vec::interleave_low_u8(r, Vec::zero());
  const auto R0_high = Vec::interleave_high_u8(r, Vec::zero());
  const auto first = Vec::interleave_low_words(BG_low, R0_low);
  const auto second = Vec::interleave_high_words(BG_low, R0_low);
  const auto third = Vec::interleave_low_words(BG_high, R0_high);
  const auto fourth = Vec::interleave_high_words(BG_high, R0_high);
  constexpr int step = pixel_bytes * Vec::bytes / 4;
  put_rgb_quarter<pixel_bytes, false>(out, mirrored ? Vec::reverse_dwords(fourth) : first);
  put_rgb_quarter<pixel_bytes, false>(out + step, mirrored ? Vec::reverse_dwords(third) : second);
  put_rgb_quarter<pixel_bytes, false>(out + 2 * step,
                                      mirrored ? Vec::reverse_dwords(second) : third);
  put_rgb_quarter<pixel_bytes, true>(out + 3 * step,
                                     mirrored ? Vec::reverse_dwords(first) : fourth);
}

// I420: luma of both lines, then U and V.
template <bool is_mirrored>
struct PlanarYuvSink {
  static constexpr bool mirrored = is_mirrored;
  static constexpr int unit_bytes = 1;
  static constexpr int planes = 4;
  static constexpr int columns_per_unit[planes] = {1, 1, 2, 2};

  YuvMatrix matrix;
  uint8_t *plane[planes];

  explicit PlanarYuvSink(const Parameters &p) : matrix(p) {}

  void write(int x, const Group &samples, Vec::type even_columns) const {
    const Cells cells = Cells::split(samples, even_columns);
    constexpr int n = Vec::bytes;
    Vec::type line0, line1;
    matrix.luma(cells, line0, line1);
    const auto chroma = matrix.chroma(cells);
    uint8_t *const u = place<mirrored>(plane[2], 1, x >> 1, n / 2);
    uint8_t *const v = place<mirrored>(plane[3], 1, x >> 1, n / 2);
    if constexpr (mirrored) {
      const auto reversed = reverse_u8(chroma);
      Vec::store(place<true>(plane[0], 1, x, n), reverse_u8(line0));
      Vec::store(place<true>(plane[1], 1, x, n), reverse_u8(line1));
      Vec::store_low_half(u, Vec::swap_halves(reversed));
      Vec::store_low_half(v, reversed);
    } else {
      Vec::store(place<false>(plane[0], 1, x, n), line0);
      Vec::store(place<false>(plane[1], 1, x, n), line1);
      Vec::store_low_half(u, chroma);
      Vec::store_low_half(v, Vec::swap_halves(chroma));
    }
  }
};

// YUYV (luma first) and UYVY. Both lines of a cell carry its chroma.
template <bool luma_first, bool is_mirrored>
struct PackedYuvSink {
  static constexpr bool mirrored = is_mirrored;
  static constexpr int unit_bytes = 2;
  static constexpr int planes = 2;
  static constexpr int columns_per_unit[planes] = {1, 1};

  YuvMatrix matrix;
  uint8_t *plane[planes];

  explicit PackedYuvSink(const Parameters &p) : matrix(p) {}

  void write(int x, const Group &samples, Vec::type even_columns) const {
    const Cells cells = Cells::split(samples, even_columns);
    Vec::type luma0, luma1;
    matrix.luma(cells, luma0, luma1);
    const auto u_and_v = matrix.chroma(cells);
    const auto chroma = Vec::interleave_low_u8(u_and_v, Vec::swap_halves(u_and_v));
    put_register<luma_first, mirrored>(place<mirrored>(plane[0], 2, x, Vec::bytes), luma0, chroma);
    put_register<luma_first, mirrored>(place<mirrored>(plane[1], 2, x, Vec::bytes), luma1, chroma);
  }
};

// RGB24 and RGB32. Both pixels of both lines take the cell's B and R.
template <int pixel_bytes, bool is_mirrored>
struct RgbSink {
  static constexpr bool mirrored = is_mirrored;
  static constexpr int unit_bytes = pixel_bytes;
  static constexpr int planes = 2;
  static constexpr int columns_per_unit[planes] = {1, 1};

  RgbMatrix matrix;
  uint8_t *plane[planes];

  explicit RgbSink(const Parameters &p) : matrix(p) {}

  void write(int x, const Group &samples, Vec::type even_columns) const {
    const Cells cells = Cells::split(samples, even_columns);
    const auto BR = matrix.blue_and_red(cells);
    const auto B = Vec::interleave_low_u8(BR, BR);
    const auto R = Vec::interleave_high_u8(BR, BR);
    Vec::type G0, G1;
    matrix.green(cells, G0, G1);
    uint8_t *const line0 = place<mirrored>(plane[0], pixel_bytes, x, Vec::bytes);
    uint8_t *const line1 = place<mirrored>(plane[1], pixel_bytes, x, Vec::bytes);
    put_rgb_register<pixel_bytes, mirrored>(line0, B, G0, R);
    put_rgb_register<pixel_bytes, mirrored>(line1, B, G1, R);
  }
};

}  // namespace
}  // namespace ppl::TIER
