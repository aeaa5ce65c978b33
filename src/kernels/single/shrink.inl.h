// 2:1 passes: one output pixel a cell, that of its B site, with nothing averaged between cells.
//
// Four source lines make a row: two output lines, and in I420 one line of each chroma plane.
#pragma once

#include "kernels/single/default_pipeline.inl.h"

namespace ppl::TARGET {
namespace {

// A cell's results, each to a plane of its own.
struct CellSink {
  static constexpr bool mirrored = false;
  static constexpr int unit_bytes = 1;
  static constexpr int planes = 3;
  static constexpr int columns_per_unit[planes] = {2, 2, 2};

  uint8_t *plane[planes] = {};

  void store(int x, Vec::type first, Vec::type second_and_third) const {
    Vec::store_low_halves(plane[0] + x / 2, first);
    Vec::store_low_halves(plane[1] + x / 2, second_and_third);
    Vec::store_high_halves(plane[2] + x / 2, second_and_third);
  }
};

// Y, U, V.
struct YuvCellSink : CellSink {
  YuvMatrix matrix;

  explicit YuvCellSink(const Parameters &p) : matrix(p) {}

  void write(int x, const VecSamples &samples, Vec::type even_columns) const {
    const Cells cells = Cells::split(samples, even_columns);
    store(x, matrix.luma_of_cells(cells), matrix.chroma(cells));
  }
};

// G, B, R.
struct RgbCellSink : CellSink {
  RgbMatrix matrix;

  explicit RgbCellSink(const Parameters &p) : matrix(p) {}

  void write(int x, const VecSamples &samples, Vec::type even_columns) const {
    const Cells cells = Cells::split(samples, even_columns);
    store(x, matrix.green_of_cells(cells), matrix.blue_and_red(cells));
  }
};

// The lines of a row, as the cells' planes hold them, and every second cell's chroma.
struct RowWorkspace {
  uint8_t *plane[2][3];
  uint8_t *u, *v;

  constexpr RowWorkspace(LineMemory &memory, int cells)
      : plane{{memory.line(cells), memory.line(cells), memory.line(cells)},
              {memory.line(cells), memory.line(cells), memory.line(cells)}},
        u(memory.line(cells)),
        v(memory.line(cells)) {}
};
static_assert(fits_line_memory([](LineMemory &memory) { RowWorkspace(memory, widest_line / 2); }));

// A step of a row: its line pairs' pixels `first` to `first + count - 1`.
struct RowStep {
  int row, pairs, first, count;
};

// How a row's pixels reach the output, for each format.
template <bool mirrored>
struct PlanarRow {
  static constexpr LineOrder order = LineOrder::top_down;

  static void put(const PplContext &ctx, const Buffers &b, const RowPlacement &at,
                  const RowWorkspace &lines, const RowStep &step) {
    const auto &[row, pairs, first, count] = step;
    for (int i = 0; i < pairs; ++i) {
      put_line<mirrored>(ctx, b.dst, at.line(2 * row + i), PlaneLine{lines.plane[i][0]}, first,
                         count);
    }
    // A last pair without a partner has no chroma line: it would lie half a line behind the plane.
    if (pairs < 2) return;
    take_even(lines.u + first / 2, lines.plane[0][1] + first, count / 2);
    take_even(lines.v + first / 2, lines.plane[0][2] + first, count / 2);
    put_chroma(ctx, b, at, row, PlaneLine{lines.u}, PlaneLine{lines.v}, first / 2, count / 2);
  }

  static void put_chroma(const PplContext &ctx, const Buffers &b, const RowPlacement &at, int row,
                         const PlaneLine &u, const PlaneLine &v, int first, int count) {
    const int origin = ctx.out_size + at.chroma_line(row);
    put_line<mirrored>(ctx, b.dst, origin, u, first, count);
    put_line<mirrored>(ctx, b.dst, origin + ctx.out_size_4, v, first, count);
  }
};

template <PackedOrder packed_order, bool mirrored>
struct PackedRow {
  static constexpr LineOrder order = LineOrder::top_down;

  static void put(const PplContext &ctx, const Buffers &b, const RowPlacement &at,
                  const RowWorkspace &lines, const RowStep &step) {
    const auto &[row, pairs, first, count] = step;
    for (int i = 0; i < pairs; ++i) {
      const int partners = (count + 1) / 2;
      take_even(lines.u + first / 2, lines.plane[i][1] + first, partners);
      take_even(lines.v + first / 2, lines.plane[i][2] + first, partners);
      put_line<mirrored>(ctx, b.dst, 2 * at.line(2 * row + i),
                         PackedLine<packed_order>{lines.plane[i][0], lines.u, lines.v}, first,
                         count);
    }
  }
};

template <int pixel_bytes, bool mirrored>
struct RgbRow {
  static constexpr LineOrder order = LineOrder::bottom_up;

  static void put(const PplContext &ctx, const Buffers &b, const RowPlacement &at,
                  const RowWorkspace &lines, const RowStep &step) {
    for (int i = 0; i < step.pairs; ++i) {
      uint8_t *const *const plane = lines.plane[i];
      put_line<mirrored>(ctx, b.dst, pixel_bytes * at.line(2 * step.row + i),
                         RgbLine<pixel_bytes>{plane[1], plane[0], plane[2]}, step.first,
                         step.count);
    }
  }
};

// Sweeps the frame in rows: first the upper pair of a row, then its lower. Where it can be seen it
// goes in steps of two pairs of blocks, otherwise a whole line at a time. After each step `Row`
// takes its pixels.
template <class Sink, Gathering gathering, class Row>
[[gnu::noinline]] void run_rows(PplContext &ctx, const Buffers &b, const CurveTables &curves,
                                const CellGrid &grid, bool mirrored) {
  LineMemory memory(ctx);
  const RowWorkspace lines(memory, grid.width / 2);
  const RowPlacement at(ctx, mirrored, Row::order);
  SinglePass<Sink, gathering> pass(ctx, curves);
  const bool steps_show = ctx.decimation != 1 || gathering.loses_mask;
  const int width = steps_show ? 4 * block : grid.width;
  for (int row = 0; 2 * row < grid.pairs; ++row) {
    const int pairs = grid.pairs - 2 * row < 2 ? 1 : 2;
    for (int x = 0; x < grid.width; x += width) {
      const int end = x + width < grid.width ? x + width : grid.width;
      for (int i = 0; i < pairs; ++i) {
        const int p = 2 * row + i;
        for (int j = 0; j < Sink::planes; ++j) pass.sink.plane[j] = lines.plane[i][j];
        pass.run(line_pair(ctx, b, p), x, end, grid.samples(p));
      }
      Row::put(ctx, b, at, lines, {row, pairs, x / 2, (end - x) / 2});
    }
  }
  if (grid.collects) pass.statistics.flush();
}

// The default pipeline's 2:1 passes. Those of packed YUV gather nothing and save nothing.
template <class Sink, class Straight, class Mirrored, bool gathers>
void shrink(PplContext &ctx, const Buffers &b) {
  CellGrid grid(ctx);
  grid.collects = grid.collects && gathers;
  if (ctx.h_mirror != 0) {
    run_rows<Sink, Gathering{}, Mirrored>(ctx, b, ctx.params.curves, grid, true);
  } else {
    run_rows<Sink, Gathering{}, Straight>(ctx, b, ctx.params.curves, grid, false);
  }
}

constexpr Pass shrink_i420 = shrink<YuvCellSink, PlanarRow<false>, PlanarRow<true>, true>;
template <PackedOrder order>
constexpr Pass shrink_packed =
    shrink<YuvCellSink, PackedRow<order, false>, PackedRow<order, true>, false>;
constexpr Pass shrink_rgb24 = shrink<RgbCellSink, RgbRow<3, false>, RgbRow<3, true>, true>;
constexpr Pass shrink_rgb32 = shrink<RgbCellSink, RgbRow<4, false>, RgbRow<4, true>, true>;

}  // namespace
}  // namespace ppl::TARGET
