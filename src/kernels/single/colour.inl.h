// From the four samples of a cell to luma and chroma, or to red, green and blue.
//
//   B  Gb     every pixel takes its cell's R and B; the green of the Gb and Gr sites is their own,
//   Gr R      that of the B and R sites is Ga, the rounded average of both
#pragma once

#include "kernels/single/front_end.inl.h"

namespace ppl::TIER {
namespace {

// A register of cells, one word each.
struct Cells {
  Vec::type B, Gb, Gr, R, Ga;

  // `even_columns` is 0x00FF in each word, but for the one pass that loses it.
  static Cells split(const Group &samples, Vec::type even_columns) {
    Cells c;
    c.B = Vec::bit_and(samples.line[0], even_columns);
    c.Gb = Vec::shift_right_words<8>(samples.line[0]);
    c.Gr = Vec::bit_and(samples.line[1], even_columns);
    c.R = Vec::shift_right_words<8>(samples.line[1]);
    c.Ga = Vec::average_words(c.Gb, c.Gr);
    return c;
  }
};

// A row of a matrix in Q6 with its rounding term. Sums wrap in 16 bits.
struct MatrixRow {
  Vec::type r, g, b, rounding;

  static MatrixRow load(const WordVector<TIER_BYTES> *row, int rounding) {
    return {Vec::words(row[0].lane[0]), Vec::words(row[1].lane[0]), Vec::words(row[2].lane[0]),
            Vec::words(rounding)};
  }

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

// Luma: 0..255, then 16 more, held at 235.
inline Vec::type to_studio_luma(Vec::type y) {
  return Vec::subtract_saturated_u8(Vec::add_saturated_u8(y, Vec::bytes_all(36)),
                                    Vec::bytes_all(20));
}

// Chroma: signed bytes to -112..112, then 128 more.
inline Vec::type to_studio_chroma(Vec::type c) {
  const auto below = Vec::add_saturated_s8(c, Vec::bytes_all(15));
  const auto held = Vec::subtract_saturated_s8(below, Vec::bytes_all(31));
  return Vec::add_u8(held, Vec::bytes_all(144));
}

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
      : y(MatrixRow::load(p.studio_base1_vec, p.offset_studio_vec.lane[0])),
        u(MatrixRow::load(p.studio_base1_vec + 3, 32)),
        v(MatrixRow::load(p.studio_base1_vec + 6, 32)) {}

  // The luma of both lines, one byte a pixel.
  void luma(const Cells &c, Vec::type &line0, Vec::type &line1) const {
    const auto rest = y.without_green(c);
    interleave_sites(y.with_green(rest, c.Ga), y.with_green(rest, c.Gb), y.with_green(rest, c.Gr),
                     line0, line1);
    line0 = to_studio_luma(line0);
    line1 = to_studio_luma(line1);
  }

  // The luma of the B sites, one byte a cell in the low half.
  Vec::type luma_of_cells(const Cells &c) const {
    const auto at_Ga = y.of_cell(c);
    return to_studio_luma(Vec::pack_u8(at_Ga, at_Ga));
  }

  // U in the low half, V in the high half, one byte a cell.
  Vec::type chroma(const Cells &c) const {
    return to_studio_chroma(Vec::pack_s8(u.of_cell(c), v.of_cell(c)));
  }
};

struct RgbMatrix {
  MatrixRow r, g, b;

  explicit RgbMatrix(const Parameters &p)
      : r(MatrixRow::load(p.rgb_base1_vec, p.offset_rgb_vec.lane[0])),
        g(MatrixRow::load(p.rgb_base1_vec + 3, p.offset_rgb_vec.lane[0])),
        b(MatrixRow::load(p.rgb_base1_vec + 6, p.offset_rgb_vec.lane[0])) {}

  // B in the low half, R in the high half, one byte a cell.
  Vec::type blue_and_red(const Cells &c) const { return Vec::pack_u8(b.of_cell(c), r.of_cell(c)); }

  // The green of both lines, one byte a pixel.
  void green(const Cells &c, Vec::type &line0, Vec::type &line1) const {
    const auto rest = g.without_green(c);
    interleave_sites(g.with_green(rest, c.Ga), g.with_green(rest, c.Gb), g.with_green(rest, c.Gr),
                     line0, line1);
  }

  // The green of the B sites, one byte a cell in the low half.
  Vec::type green_of_cells(const Cells &c) const {
    const auto at_Ga = g.of_cell(c);
    return Vec::pack_u8(at_Ga, at_Ga);
  }
};

}  // namespace
}  // namespace ppl::TIER
