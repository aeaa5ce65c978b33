// From the four samples of a cell to luma and chroma, or to red, green and blue.
//
//   B  Gb     every pixel takes its cell's R and B; the green of the Gb and Gr sites is their own,
//   Gr R      that of the B and R sites is Ga, the rounded average of both
#pragma once

#include "kernels/common/colour.inl.h"
#include "kernels/common/look_up.inl.h"

namespace ppl::TARGET {
namespace {

using VecSamples = Samples<Vec>;

// A register of cells, one word each.
struct Cells {
  Vec::type B, Gb, Gr, R, Ga;

  // `even_columns` is 0x00FF in each word, but for the one pass that loses it.
  static Cells split(const VecSamples &samples, Vec::type even_columns) {
    Cells c;
    c.B = Vec::bit_and(samples.line[0], even_columns);
    c.Gb = Vec::columns<true>(samples.line[0]);
    c.Gr = Vec::bit_and(samples.line[1], even_columns);
    c.R = Vec::columns<true>(samples.line[1]);
    c.Ga = Vec::average_words(c.Gb, c.Gr);
    return c;
  }
};

// A row of a matrix in Q6 with its rounding term. Sums wrap in 16 bits.
struct MatrixRow {
  Vec::type r, g, b, rounding;

  MatrixRow(const Matrix &matrix, int row, int row_rounding)
      : r(Vec::splat_words(matrix[3 * row])),
        g(Vec::splat_words(matrix[3 * row + 1])),
        b(Vec::splat_words(matrix[3 * row + 2])),
        rounding(Vec::splat_words(row_rounding)) {}

  // The share of red and blue, and the rounding: the same for all pixels of a cell.
  Vec::type without_green(const Cells &c) const {
    return Vec::add_words(Vec::add_words(Vec::multiply_low(r, c.R), Vec::multiply_low(b, c.B)),
                          rounding);
  }

  // Completes it with a green, and leaves Q6.
  Vec::type with_green(Vec::type rest, Vec::type green) const {
    return Vec::shift_right_signed_words<6>(Vec::add_words(rest, Vec::multiply_low(g, green)));
  }

  Vec::type of_cell(const Cells &c) const { return with_green(without_green(c), c.Ga); }
};

// Interleaves a value per pixel from those of the Ga, Gb and Gr sites, clamped to bytes.
inline void interleave_sites(Vec::type at_Ga, Vec::type at_Gb, Vec::type at_Gr, Vec::type &line0,
                             Vec::type &line1) {
  const auto Ga_twice = Vec::pack_u8(at_Ga, at_Ga);
  const auto Gb_and_Gr = Vec::pack_u8(at_Gb, at_Gr);
  line0 = Vec::interleave_low_u8(Ga_twice, Gb_and_Gr);
  line1 = Vec::interleave_high_u8(Gb_and_Gr, Ga_twice);
}

struct YuvMatrix {
  MatrixRow y, u, v;

  explicit YuvMatrix(const Parameters &p)
      : y(p.studio_base1_vec, 0, p.offset_studio_vec),
        u(p.studio_base1_vec, 1, 32),
        v(p.studio_base1_vec, 2, 32) {}

  // The luma of both lines, one byte a pixel.
  void luma(const Cells &c, Vec::type &line0, Vec::type &line1) const {
    const auto rest = y.without_green(c);
    interleave_sites(y.with_green(rest, c.Ga), y.with_green(rest, c.Gb), y.with_green(rest, c.Gr),
                     line0, line1);
    line0 = to_studio_luma(line0);
    line1 = to_studio_luma(line1);
  }

  // The luma of the B sites, one byte a cell in each block's low half.
  Vec::type luma_of_cells(const Cells &c) const {
    const auto at_Ga = y.of_cell(c);
    return to_studio_luma(Vec::pack_u8(at_Ga, at_Ga));
  }

  // U in each block's low half, V in its high half, one byte a cell.
  Vec::type chroma(const Cells &c) const {
    return to_studio_chroma(Vec::pack_s8(u.of_cell(c), v.of_cell(c)));
  }
};

struct RgbMatrix {
  MatrixRow r, g, b;

  explicit RgbMatrix(const Parameters &p)
      : r(p.rgb_base1_vec, 0, p.offset_rgb_vec),
        g(p.rgb_base1_vec, 1, p.offset_rgb_vec),
        b(p.rgb_base1_vec, 2, p.offset_rgb_vec) {}

  // B in each block's low half, R in its high half, one byte a cell.
  Vec::type blue_and_red(const Cells &c) const { return Vec::pack_u8(b.of_cell(c), r.of_cell(c)); }

  // The green of both lines, one byte a pixel.
  void green(const Cells &c, Vec::type &line0, Vec::type &line1) const {
    const auto rest = g.without_green(c);
    interleave_sites(g.with_green(rest, c.Ga), g.with_green(rest, c.Gb), g.with_green(rest, c.Gr),
                     line0, line1);
  }

  // The green of the B sites, one byte a cell in each block's low half.
  Vec::type green_of_cells(const Cells &c) const {
    const auto at_Ga = g.of_cell(c);
    return Vec::pack_u8(at_Ga, at_Ga);
  }
};

}  // namespace
}  // namespace ppl::TARGET
