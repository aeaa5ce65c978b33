// Quality 3: the loops of plain_loop.h.
#pragma once

#include "plain_arithmetic.inl.h"

namespace ppl::bench::PLAIN_BUILD {
namespace {

// A cell's samples, and what red and blue give to a row of a matrix. All sums wrap in 16 bits.
struct Cell {
  int16_t B, Gb, Gr, R, Ga;

  Cell(const uint8_t *line0, const uint8_t *line1, int c)
      : B(line0[2 * c]),
        Gb(line0[2 * c + 1]),
        Gr(line1[2 * c]),
        R(line1[2 * c + 1]),
        Ga(word((Gb + Gr + 1) >> 1)) {}

  int16_t without_green(const PlainMatrixRow &row) const {
    return word(row.r * R + row.b * B + row.rounding);
  }
};

int16_t with_green(int16_t rest, const PlainMatrixRow &row, int16_t green) {
  return word(word(rest + row.g * green) >> 6);
}

uint8_t chroma_of(const Cell &cell, const PlainMatrixRow &row) {
  return to_chroma(with_green(cell.without_green(row), row, cell.Ga));
}

void line_pair_to_planes(const uint8_t *RESTRICT line0, const uint8_t *RESTRICT line1, int cells,
                         const PlainTables &tables, uint8_t *RESTRICT y0, uint8_t *RESTRICT y1,
                         uint8_t *RESTRICT u, uint8_t *RESTRICT v) {
  const PlainMatrixRow Y = tables.yuv[0], U = tables.yuv[1], V = tables.yuv[2];
  for (int c = 0; c < cells; ++c) {
    const Cell cell(line0, line1, c);
    const int16_t rest = cell.without_green(Y);
    const uint8_t at_Ga = to_luma(with_green(rest, Y, cell.Ga));
    y0[2 * c] = at_Ga;
    y0[2 * c + 1] = to_luma(with_green(rest, Y, cell.Gb));
    y1[2 * c] = to_luma(with_green(rest, Y, cell.Gr));
    y1[2 * c + 1] = at_Ga;
    u[c] = chroma_of(cell, U);
    v[c] = chroma_of(cell, V);
  }
}

void line_pair_to_packed(const uint8_t *RESTRICT line0, const uint8_t *RESTRICT line1, int cells,
                         const PlainTables &tables, uint8_t *RESTRICT out0,
                         uint8_t *RESTRICT out1) {
  const PlainMatrixRow Y = tables.yuv[0], U = tables.yuv[1], V = tables.yuv[2];
  for (int c = 0; c < cells; ++c) {
    const Cell cell(line0, line1, c);
    const int16_t rest = cell.without_green(Y);
    const uint8_t at_Ga = to_luma(with_green(rest, Y, cell.Ga));
    const uint8_t u = chroma_of(cell, U);
    const uint8_t v = chroma_of(cell, V);
    out0[4 * c] = at_Ga;
    out0[4 * c + 1] = u;
    out0[4 * c + 2] = to_luma(with_green(rest, Y, cell.Gb));
    out0[4 * c + 3] = v;
    out1[4 * c] = to_luma(with_green(rest, Y, cell.Gr));
    out1[4 * c + 1] = u;
    out1[4 * c + 2] = at_Ga;
    out1[4 * c + 3] = v;
  }
}

// Pixels of four bytes: B, G, R and a zero.
void line_pair_to_rgb32(const uint8_t *RESTRICT line0, const uint8_t *RESTRICT line1, int cells,
                        const PlainTables &tables, uint32_t *RESTRICT out0,
                        uint32_t *RESTRICT out1) {
  const PlainMatrixRow R = tables.rgb[0], G = tables.rgb[1], B = tables.rgb[2];
  for (int c = 0; c < cells; ++c) {
    const Cell cell(line0, line1, c);
    const int16_t rest = cell.without_green(G);
    const uint32_t r = to_byte(with_green(cell.without_green(R), R, cell.Ga));
    const uint32_t b = to_byte(with_green(cell.without_green(B), B, cell.Ga));
    const uint32_t at_Ga = to_byte(with_green(rest, G, cell.Ga));
    const uint32_t at_Gb = to_byte(with_green(rest, G, cell.Gb));
    const uint32_t at_Gr = to_byte(with_green(rest, G, cell.Gr));
    const uint32_t red_and_blue = r << 16 | b;
    out0[2 * c] = out1[2 * c + 1] = red_and_blue | at_Ga << 8;
    out0[2 * c + 1] = red_and_blue | at_Gb << 8;
    out1[2 * c] = red_and_blue | at_Gr << 8;
  }
}

// Each store writes a byte too much, which the next one corrects.
void drop_fourth_bytes(const uint32_t *RESTRICT pixels, int count, uint8_t *RESTRICT out) {
  const int last = count - 1;
  for (int i = 0; i < last; ++i) __builtin_memcpy(out + 3 * i, pixels + i, 4);
  __builtin_memcpy(out + 3 * last, pixels + last, 3);
}

void line_pair_to_rgb24(const uint8_t *RESTRICT line0, const uint8_t *RESTRICT line1, int cells,
                        const PlainTables &tables, uint8_t *RESTRICT out0, uint8_t *RESTRICT out1) {
  uint32_t pixels[2][longest_line];
  line_pair_to_rgb32(line0, line1, cells, tables, pixels[0], pixels[1]);
  drop_fourth_bytes(pixels[0], 2 * cells, out0);
  drop_fourth_bytes(pixels[1], 2 * cells, out1);
}

// One sweep over the frame; `emit(p, line0, line1)` makes the output of line pair p.
template <class LookUp, class Emit>
void sweep(const PlainTables &tables, uint8_t *src, int width, int height, Emit emit) {
  for (int p = 0; p < height / 2; ++p) {
    uint8_t *const line0 = src + static_cast<ptrdiff_t>(2 * p) * width;
    uint8_t *const line1 = line0 + width;
    LookUp::look_up(line0, width, tables.sample[0][0], tables.sample[0][1]);
    LookUp::look_up(line1, width, tables.sample[1][0], tables.sample[1][1]);
    emit(p, line0, line1);
  }
}

template <class LookUp>
void to_i420(const PlainTables &tables, uint8_t *src, uint8_t *dst, int width, int height) {
  const ptrdiff_t w = width, size = w * height;
  sweep<LookUp>(tables, src, width, height, [&](int p, const uint8_t *l0, const uint8_t *l1) {
    uint8_t *const y = dst + 2 * p * w;
    uint8_t *const u = dst + size + p * (w / 2);
    line_pair_to_planes(l0, l1, width / 2, tables, y, y + w, u, u + size / 4);
  });
}

template <class LookUp>
void to_yuyv(const PlainTables &tables, uint8_t *src, uint8_t *dst, int width, int height) {
  const ptrdiff_t w = width;
  sweep<LookUp>(tables, src, width, height, [&](int p, const uint8_t *l0, const uint8_t *l1) {
    uint8_t *const out = dst + 2 * (2 * p * w);
    line_pair_to_packed(l0, l1, width / 2, tables, out, out + 2 * w);
  });
}

// The RGB formats run from the bottom line to the top.
template <class LookUp>
void to_rgb24(const PlainTables &tables, uint8_t *src, uint8_t *dst, int width, int height) {
  const ptrdiff_t w = width;
  sweep<LookUp>(tables, src, width, height, [&](int p, const uint8_t *l0, const uint8_t *l1) {
    uint8_t *const out = dst + 3 * (height - 1 - 2 * p) * w;
    line_pair_to_rgb24(l0, l1, width / 2, tables, out, out - 3 * w);
  });
}

template <class LookUp>
void to_rgb32(const PlainTables &tables, uint8_t *src, uint8_t *dst, int width, int height) {
  const ptrdiff_t w = width;
  sweep<LookUp>(tables, src, width, height, [&](int p, const uint8_t *l0, const uint8_t *l1) {
    const auto out = reinterpret_cast<uint32_t *>(dst) + (height - 1 - 2 * p) * w;
    line_pair_to_rgb32(l0, l1, width / 2, tables, out, out - w);
  });
}

template <class LookUp>
constexpr PlainLoops loops = {to_i420<LookUp>, to_yuyv<LookUp>, to_rgb24<LookUp>, to_rgb32<LookUp>};

}  // namespace

}  // namespace ppl::bench::PLAIN_BUILD
