// 2:1 passes: one output pixel a cell, that of its B site, with nothing averaged between cells.
// They serve decimation 2 as well: there is no 4:1 pass, so that lines twice as long as the
// output's overlap, and what is stored later wins.
//
// Four source lines make a row: two output lines, and in I420 one line of each chroma plane.
#pragma once

#include "kernels/single/default_pipeline.inl.h"
#include "kernels/single/lines.inl.h"

namespace ppl::TIER {
namespace {

// A cell's results, each to a plane of its own.
struct CellSink {
  static constexpr bool mirrored = false;
  static constexpr int unit_bytes = 1;
  static constexpr int planes = 3;
  static constexpr int columns_per_unit[planes] = {2, 2, 2};

  uint8_t *plane[planes];

  void store(int x, Vec::type first, Vec::type second_and_third) const {
    Vec::store_low_half(plane[0] + x / 2, first);
    Vec::store_low_half(plane[1] + x / 2, second_and_third);
    Vec::store_low_half(plane[2] + x / 2, Vec::swap_halves(second_and_third));
  }
};

// Y, U, V.
struct YuvCellSink : CellSink {
  YuvMatrix matrix;

  explicit YuvCellSink(const Parameters &p) : CellSink(), matrix(p) {}

  void write(int x, const Group &samples, Vec::type even_columns) const {
    const Cells cells = Cells::split(samples, even_columns);
    store(x, matrix.luma_of_cells(cells), matrix.chroma(cells));
  }
};

// G, B, R.
struct RgbCellSink : CellSink {
  RgbMatrix matrix;

  explicit RgbCellSink(const Parameters &p) : CellSink(), matrix(p) {}

  void write(int x, const Group &samples, Vec::type even_columns) const {
    const Cells cells = Cells::split(samples, even_columns);
    store(x, matrix.green_of_cells(cells), matrix.blue_and_red(cells));
  }
};

// Where the rows of a 2:1 pass stand.
struct RowPlacement {
  const PplContext &ctx;
  bool mirrored, bottom_up;
  int slip;  // pixels that a row moves beyond its place: the line's excess over the output's width

  RowPlacement(const PplContext &context, bool is_mirrored, bool is_bottom_up)
      : ctx(context),
        mirrored(is_mirrored),
        bottom_up(is_bottom_up),
        slip((context.frame_width >> 1) - context.out_width) {}

  // The place of pixel 0 of line y.
  int line(int y) const {
    const int moved = y / 2 * slip;
    const int start = line_start(ctx, y, bottom_up);
    return mirrored ? start + ctx.out_width - 1 - moved : start + moved;
  }

  int chroma_line(int row) const {
    const int moved = row * (slip / 2);
    const int start = chroma_line_start(ctx, row);
    return mirrored ? start + ctx.out_width / 2 - 1 - moved : start + moved;
  }
};

// Writes what of a run of units does not lie before the output's start.
template <bool mirrored, class Line>
[[gnu::noinline]] void put_clipped(const uint8_t *start_of_output, uint8_t *to, const Line &line,
                                   int first, int count) {
  constexpr int longest_run = 2 * Vec::bytes * 4;
  uint8_t bytes[longest_run];
  line.template put<mirrored>(bytes, first, count);
  for (int i = 0; i < count * Line::unit_bytes; ++i) {
    if (reinterpret_cast<uintptr_t>(to + i) >= reinterpret_cast<uintptr_t>(start_of_output)) {
      to[i] = bytes[i];
    }
  }
}

// Writes units of a line whose unit 0 stands at `origin`. At decimation 2 a line may begin before
// the output: what would stand there is dropped.
template <bool mirrored, class Line>
void put_line(const PplContext &ctx, uint8_t *start_of_output, uint8_t *origin, const Line &line,
              int first, int count) {
  uint8_t *const to = place<mirrored>(origin, Line::unit_bytes, first, count);
  if (ctx.decimation == 2) {
    put_clipped<mirrored>(start_of_output, to, line, first, count);
  } else {
    line.template put<mirrored>(to, first, count);
  }
}

// The lines of a row, as the cells' planes hold them.
struct RowLines {
  uint8_t *plane[2][3];

  RowLines(LineMemory &memory, int cells) {
    for (auto &pair : plane) {
      for (uint8_t *&p : pair) p = memory.line(cells);
    }
  }
};

// How a row's pixels `first` to `first + count - 1` reach the output, for each format.
template <bool mirrored>
struct PlanarRow {
  static constexpr bool bottom_up = false;
  uint8_t *u, *v;  // every second cell's chroma

  PlanarRow(LineMemory &memory, int cells) : u(memory.line(cells)), v(memory.line(cells)) {}

  void put(const PplContext &ctx, const Buffers &b, const RowPlacement &at, const RowLines &lines,
           int row, int pairs, int first, int count) const {
    for (int i = 0; i < pairs; ++i) {
      put_line<mirrored>(ctx, b.dst, b.dst + at.line(2 * row + i), PlaneLine{lines.plane[i][0]},
                         first, count);
    }
    // A last pair without a partner has no chroma line: it would lie half a line behind the plane.
    if (pairs < 2) return;
    take_even(u + first / 2, lines.plane[0][1] + first, count / 2);
    take_even(v + first / 2, lines.plane[0][2] + first, count / 2);
    uint8_t *const origin = b.dst_chroma + at.chroma_line(row);
    put_line<mirrored>(ctx, b.dst, origin, PlaneLine{u}, first / 2, count / 2);
    put_line<mirrored>(ctx, b.dst, origin + ctx.out_size_4, PlaneLine{v}, first / 2, count / 2);
  }
};

template <bool luma_first, bool mirrored>
struct PackedRow {
  static constexpr bool bottom_up = false;
  uint8_t *u, *v;

  PackedRow(LineMemory &memory, int cells) : u(memory.line(cells)), v(memory.line(cells)) {}

  void put(const PplContext &ctx, const Buffers &b, const RowPlacement &at, const RowLines &lines,
           int row, int pairs, int first, int count) const {
    for (int i = 0; i < pairs; ++i) {
      const int partners = (count + 1) / 2;
      take_even(u + first / 2, lines.plane[i][1] + first, partners);
      take_even(v + first / 2, lines.plane[i][2] + first, partners);
      put_line<mirrored>(ctx, b.dst, b.dst + 2 * at.line(2 * row + i),
                         PackedLine<luma_first>{lines.plane[i][0], u, v}, first, count);
    }
  }
};

template <int pixel_bytes, bool mirrored>
struct RgbRow {
  static constexpr bool bottom_up = true;

  RgbRow(LineMemory &, int) {}

  void put(const PplContext &ctx, const Buffers &b, const RowPlacement &at, const RowLines &lines,
           int row, int pairs, int first, int count) const {
    for (int i = 0; i < pairs; ++i) {
      uint8_t *const *const plane = lines.plane[i];
      put_line<mirrored>(ctx, b.dst, b.dst + pixel_bytes * at.line(2 * row + i),
                         RgbLine<pixel_bytes>{plane[1], plane[0], plane[2]}, first, count);
    }
  }
};

// Sweeps the frame in rows: first the upper pair of a row, then its lower. Where it can be seen it
// goes in steps of two blocks, otherwise a whole line at a time. After each step `put(row, pairs,
// first, count)` takes the step's pixels.
template <class Sink, Gathering gathering, class Put>
void sweep_rows(PplContext &ctx, const Buffers &b, const FrontEndTables &tables,
                const CellGrid &grid, const RowLines &lines, Put put) {
  SinglePass<Sink, gathering> pass(ctx, tables);
  const bool steps_show = ctx.decimation != 1 || gathering.loses_mask;
  const int step = steps_show ? 2 * decltype(pass)::block : grid.width;
  for (int row = 0; 2 * row < grid.pairs; ++row) {
    const int pairs = grid.pairs - 2 * row < 2 ? 1 : 2;
    for (int x = 0; x < grid.width; x += step) {
      const int end = x + step < grid.width ? x + step : grid.width;
      for (int i = 0; i < pairs; ++i) {
        const int p = 2 * row + i;
        for (int j = 0; j < Sink::planes; ++j) pass.sink.plane[j] = lines.plane[i][j];
        pass.run(line_pair(ctx, b, p), x, end, grid.samples(p));
      }
      put(row, pairs, x / 2, (end - x) / 2);
    }
  }
  if (grid.collects) pass.statistics.flush();
}

template <class Sink, Gathering gathering, class Row>
[[gnu::noinline]] void run_shrinking(PplContext &ctx, const Buffers &b,
                                     const FrontEndTables &tables, const CellGrid &grid,
                                     bool mirrored) {
  LineMemory memory(ctx);
  const RowLines lines(memory, grid.width / 2);
  const Row out(memory, grid.width / 2);
  const RowPlacement at(ctx, mirrored, Row::bottom_up);
  sweep_rows<Sink, gathering>(ctx, b, tables, grid, lines,
                              [&](int row, int pairs, int first, int count) {
                                out.put(ctx, b, at, lines, row, pairs, first, count);
                              });
}

// The default pipeline's 2:1 passes. Those of packed YUV gather nothing and save nothing.
template <class Sink, class Straight, class Mirrored, bool gathers>
void shrink(PplContext &ctx, const Buffers &b) {
  CellGrid grid(ctx);
  grid.collects = grid.collects && gathers;
  const FrontEndTables &tables = parameters_of(ctx).front_end;
  if (ctx.h_mirror != 0) {
    run_shrinking<Sink, Gathering{}, Mirrored>(ctx, b, tables, grid, true);
  } else {
    run_shrinking<Sink, Gathering{}, Straight>(ctx, b, tables, grid, false);
  }
}

constexpr auto shrink_i420 = shrink<YuvCellSink, PlanarRow<false>, PlanarRow<true>, true>;
constexpr auto shrink_yuyv =
    shrink<YuvCellSink, PackedRow<true, false>, PackedRow<true, true>, false>;
constexpr auto shrink_uyvy =
    shrink<YuvCellSink, PackedRow<false, false>, PackedRow<false, true>, false>;
constexpr auto shrink_rgb24 = shrink<RgbCellSink, RgbRow<3, false>, RgbRow<3, true>, true>;
constexpr auto shrink_rgb32 = shrink<RgbCellSink, RgbRow<4, false>, RgbRow<4, true>, true>;

}  // namespace
}  // namespace ppl::TIER
