// The last step of a single pass: colour, and the output's layout in memory. A sink takes a
// register of samples of two lines at a time and writes the pixels that they make.
#pragma once

#include "kernels/common/lines.inl.h"
#include "kernels/single/cells.inl.h"

namespace ppl::TARGET {
namespace {

// I420: luma of both lines, then U and V.
template <bool is_mirrored>
struct PlanarYuvSink {
  static constexpr bool mirrored = is_mirrored;
  static constexpr int unit_bytes = 1;
  static constexpr int planes = 4;
  static constexpr int columns_per_unit[planes] = {1, 1, 2, 2};

  YuvMatrix matrix;
  uint8_t *plane[planes] = {};

  explicit PlanarYuvSink(const Parameters &p) : matrix(p) {}

  void write(int x, const VecSamples &samples, Vec::type even_columns) const {
    const Cells cells = Cells::split(samples, even_columns);
    constexpr int n = Vec::size;
    Vec::type line0, line1;
    matrix.luma(cells, line0, line1);
    const auto chroma = matrix.chroma(cells);
    uint8_t *const u = place<mirrored>(plane[2], 1, x >> 1, n / 2);
    uint8_t *const v = place<mirrored>(plane[3], 1, x >> 1, n / 2);
    if constexpr (mirrored) {
      const auto reversed = Vec::reverse_u8(chroma);  // V comes to be the lower half
      Vec::store(place<true>(plane[0], 1, x, n), Vec::reverse_u8(line0));
      Vec::store(place<true>(plane[1], 1, x, n), Vec::reverse_u8(line1));
      Vec::store_high_halves(u, reversed);
      Vec::store_low_halves(v, reversed);
    } else {
      Vec::store(place<false>(plane[0], 1, x, n), line0);
      Vec::store(place<false>(plane[1], 1, x, n), line1);
      Vec::store_low_halves(u, chroma);
      Vec::store_high_halves(v, chroma);
    }
  }
};

// YUYV and UYVY. Both lines of a cell carry its chroma.
template <PackedOrder order, bool is_mirrored>
struct PackedYuvSink {
  static constexpr bool mirrored = is_mirrored;
  static constexpr int unit_bytes = 2;
  static constexpr int planes = 2;
  static constexpr int columns_per_unit[planes] = {1, 1};

  YuvMatrix matrix;
  uint8_t *plane[planes] = {};

  explicit PackedYuvSink(const Parameters &p) : matrix(p) {}

  void write(int x, const VecSamples &samples, Vec::type even_columns) const {
    const Cells cells = Cells::split(samples, even_columns);
    Vec::type luma[2];
    matrix.luma(cells, luma[0], luma[1]);
    const auto chroma = Vec::interleave_halves(matrix.chroma(cells));
    for (int line = 0; line < 2; ++line) {
      put_packed_register<Vec, order, mirrored>(place<mirrored>(plane[line], 2, x, Vec::size),
                                                luma[line], chroma);
    }
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
  uint8_t *plane[planes] = {};

  explicit RgbSink(const Parameters &p) : matrix(p) {}

  void write(int x, const VecSamples &samples, Vec::type even_columns) const {
    const Cells cells = Cells::split(samples, even_columns);
    const auto BR = matrix.blue_and_red(cells);
    const auto B = Vec::interleave_low_u8(BR, BR);
    const auto R = Vec::interleave_high_u8(BR, BR);
    Vec::type G0, G1;
    matrix.green(cells, G0, G1);
    Vec::store_bgr<pixel_bytes, mirrored>(place<mirrored>(plane[0], pixel_bytes, x, Vec::size), B,
                                          G0, R);
    Vec::store_bgr<pixel_bytes, mirrored>(place<mirrored>(plane[1], pixel_bytes, x, Vec::size), B,
                                          G1, R);
  }
};

}  // namespace
}  // namespace ppl::TARGET
