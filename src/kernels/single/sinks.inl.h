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

  void write(int x, const Cells &cells) const {
    constexpr int n = Vec::bytes;
    Vec::type line0, line1;
    matrix.luma(cells, line0, line1);
    const auto chroma = matrix.chroma(cells);
    uint8_t *const u = place<mirrored>(plane[2], 1, x / 2, n / 2);
    uint8_t *const v = place<mirrored>(plane[3], 1, x / 2, n / 2);
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

  void write(int x, const Cells &cells) const {
    Vec::type luma[2];
    matrix.luma(cells, luma[0], luma[1]);
    const auto chroma = matrix.chroma(cells);
    // A pair keeps its order of U and V also where the line is mirrored.
    auto uv = Vec::interleave_low_u8(chroma, Vec::swap_halves(chroma));
    if constexpr (mirrored) uv = Vec::reverse_words(uv);
    for (int line = 0; line < 2; ++line) {
      const auto y = mirrored ? reverse_u8(luma[line]) : luma[line];
      const auto first = luma_first ? y : uv;
      const auto second = luma_first ? uv : y;
      uint8_t *const out = place<mirrored>(plane[line], unit_bytes, x, Vec::bytes);
      Vec::store(out, Vec::interleave_low_u8(first, second));
      Vec::store(out + Vec::bytes, Vec::interleave_high_u8(first, second));
    }
  }
};

// RGB24 and RGB32: B, G, R, and a zero in RGB32. Both pixels of both lines take the cell's B and R.
template <int pixel_bytes, bool is_mirrored>
struct RgbSink {
  static constexpr bool mirrored = is_mirrored;
  static constexpr int unit_bytes = pixel_bytes;
  static constexpr int planes = 2;
  static constexpr int columns_per_unit[planes] = {1, 1};

  RgbMatrix matrix;
  uint8_t *plane[planes];

  explicit RgbSink(const Parameters &p) : matrix(p) {}

  void write(int x, const Cells &cells) const {
    const auto BR = Vec::pack_u8(matrix.b.of_cell(cells), matrix.r.of_cell(cells));
    const auto B = Vec::interleave_low_u8(BR, BR);
    const auto R = Vec::interleave_high_u8(BR, BR);
    const auto R0_low = Vec::interleave_low_u8(R, Vec::zero());
    const auto R0_high = Vec::interleave_high_u8(R, Vec::zero());

    const auto rest = matrix.g.without_green(cells);
    const auto at_Ga = matrix.g.with_green(rest, cells.Ga);
    const auto Ga_twice = Vec::pack_u8(at_Ga, at_Ga);
    const auto Gb_and_Gr =
        Vec::pack_u8(matrix.g.with_green(rest, cells.Gb), matrix.g.with_green(rest, cells.Gr));
    const Vec::type G[2] = {Vec::interleave_low_u8(Ga_twice, Gb_and_Gr),
                            Vec::interleave_high_u8(Gb_and_Gr, Ga_twice)};
    for (int line = 0; line < 2; ++line) {
      const auto BG_low = Vec::interleave_low_u8(B, G[line]);
      const auto BG_high = Vec::interleave_high_u8(B, G[line]);
      uint8_t *const out = place<mirrored>(plane[line], pixel_bytes, x, Vec::bytes);
      store_pixels(out, Vec::interleave_low_words(BG_low, R0_low),
                   Vec::interleave_high_words(BG_low, R0_low),
                   Vec::interleave_low_words(BG_high, R0_high),
                   Vec::interleave_high_words(BG_high, R0_high));
    }
  }

  static void store_pixels(uint8_t *out, Vec::type a, Vec::type b, Vec::type c, Vec::type d) {
    if constexpr (mirrored) {
      store_in_order(out, Vec::reverse_dwords(d), Vec::reverse_dwords(c), Vec::reverse_dwords(b),
                     Vec::reverse_dwords(a));
    } else {
      store_in_order(out, a, b, c, d);
    }
  }

  static void store_in_order(uint8_t *out, Vec::type a, Vec::type b, Vec::type c, Vec::type d) {
    constexpr int step = pixel_bytes * Vec::bytes / 4;
    if constexpr (pixel_bytes == 4) {
      Vec::store(out, a);
      Vec::store(out + step, b);
      Vec::store(out + 2 * step, c);
      Vec::store(out + 3 * step, d);
    } else {
      // What a store writes too much, the next one corrects.
      Vec::store_bgr_loosely(out, a);
      Vec::store_bgr_loosely(out + step, b);
      Vec::store_bgr_loosely(out + 2 * step, c);
      Vec::store_bgr(out + 3 * step, d);
    }
  }
};

}  // namespace
}  // namespace ppl::TIER
