// 1:2 passes: averages between neighbours of finished output values, first along the line, then
// between lines. Everything happens in picture order; the result is mirrored.
#pragma once

#include "kernels/single/default_pipeline.inl.h"
#include "kernels/single/lines.inl.h"

namespace ppl::TIER {
namespace {

// A line of the doubled picture that is being completed, beside the one before it.
struct DoubledLine {
  uint8_t *previous, *current, *between;

  DoubledLine(LineMemory &memory, int length)
      : previous(memory.line(length)), current(memory.line(length)), between(memory.line(length)) {}

  // Makes `current` the one before the next.
  void advance() {
    uint8_t *const older = previous;
    previous = current;
    current = older;
  }

  void average_with_previous(int length) const { average(between, previous, current, length); }
};

// The place of unit 0 of a line that starts at unit `start`.
template <bool mirrored>
uint8_t *line_origin(uint8_t *plane, int unit_bytes, int start, int width) {
  return plane + unit_bytes * (start + (mirrored ? width - 1 : 0));
}

template <bool mirrored, class Line>
void put_whole_line(uint8_t *plane, int start, int width, const Line &line, int count) {
  uint8_t *const origin = line_origin<mirrored>(plane, Line::unit_bytes, start, width);
  line.template put<mirrored>(place<mirrored>(origin, Line::unit_bytes, 0, count), 0, count);
}

// One plane of I420: source line m stands on output line 2m, the averages between; the last
// repeats.
template <bool mirrored>
struct EnlargedPlane {
  DoubledLine lines;
  int count = 0;  // source lines so far

  EnlargedPlane(LineMemory &memory, int length) : lines(memory, 2 * length) {}

  // `start` gives the first place of an output line.
  template <class Start>
  void add(uint8_t *source, int length, uint8_t *plane, int width, Start start) {
    double_leading(lines.current, source, length);
    if (count > 0) {
      lines.average_with_previous(2 * length);
      put_whole_line<mirrored>(plane, start(2 * count - 1), width, PlaneLine{lines.between},
                               2 * length);
    }
    put_whole_line<mirrored>(plane, start(2 * count), width, PlaneLine{lines.current}, 2 * length);
    lines.advance();
    ++count;
  }

  template <class Start>
  void finish(int length, uint8_t *plane, int width, Start start) const {
    put_whole_line<mirrored>(plane, start(2 * count - 1), width, PlaneLine{lines.previous},
                             2 * length);
  }
};

// What the planar YUV sink fills for one line pair.
struct PairPlanes {
  uint8_t *plane[4];

  PairPlanes(LineMemory &memory, int width)
      : plane{memory.line(width), memory.line(width), memory.line(width / 2),
              memory.line(width / 2)} {}
};

template <bool mirrored>
void enlarge_planar(PplContext &ctx, const Buffers &b) {
  SinglePass<PlanarYuvSink<false>, Gathering{}> pass(ctx, parameters_of(ctx).front_end);
  const CellGrid grid(ctx);
  const int width = grid.width;
  LineMemory memory(ctx);
  const PairPlanes source(memory, width);
  for (int i = 0; i < 4; ++i) pass.sink.plane[i] = source.plane[i];
  EnlargedPlane<mirrored> y(memory, width), u(memory, width / 2), v(memory, width / 2);

  const auto luma_start = [&ctx](int line) { return line_start(ctx, line, false); };
  const auto chroma_start = [&ctx](int line) { return chroma_line_start(ctx, line); };
  const int out_width = ctx.out_width;
  uint8_t *const u_plane = b.dst_chroma;
  uint8_t *const v_plane = u_plane + ctx.out_size_4;
  for (int p = 0; p < grid.pairs; ++p) {
    pass.run(line_pair(ctx, b, p), 0, width, grid.samples(p));
    y.add(source.plane[0], width, b.dst, out_width, luma_start);
    y.add(source.plane[1], width, b.dst, out_width, luma_start);
    u.add(source.plane[2], width / 2, u_plane, out_width / 2, chroma_start);
    v.add(source.plane[3], width / 2, v_plane, out_width / 2, chroma_start);
  }
  y.finish(width, b.dst, out_width, luma_start);
  u.finish(width / 2, u_plane, out_width / 2, chroma_start);
  v.finish(width / 2, v_plane, out_width / 2, chroma_start);
  if (grid.collects) pass.statistics.flush();
}

// Packed YUV: source line m stands on output line 2m, averages between. The chroma of cell line m
// stands on output lines 4m to 4m + 2, the average with the next on 4m + 3.
template <bool luma_first, bool mirrored>
void enlarge_packed(PplContext &ctx, const Buffers &b) {
  SinglePass<PlanarYuvSink<false>, Gathering{}> pass(ctx, parameters_of(ctx).front_end);
  const CellGrid grid(ctx);
  const int width = grid.width;
  LineMemory memory(ctx);
  const PairPlanes source(memory, width);
  for (int i = 0; i < 4; ++i) pass.sink.plane[i] = source.plane[i];
  DoubledLine y(memory, 2 * width), u(memory, width), v(memory, width);

  const auto put = [&](int line, const uint8_t *luma, const uint8_t *u_line,
                       const uint8_t *v_line) {
    put_whole_line<mirrored>(b.dst, line_start(ctx, line, false), ctx.out_width,
                             PackedLine<luma_first>{luma, u_line, v_line}, 2 * width);
  };
  for (int p = 0; p < grid.pairs; ++p) {
    pass.run(line_pair(ctx, b, p), 0, width, grid.samples(p));
    double_trailing(u.current, source.plane[2], width / 2);
    double_trailing(v.current, source.plane[3], width / 2);
    double_trailing(y.current, source.plane[0], width);
    if (p > 0) {
      y.average_with_previous(2 * width);
      u.average_with_previous(width);
      v.average_with_previous(width);
      put(4 * p - 1, y.between, u.between, v.between);
    }
    put(4 * p, y.current, u.current, v.current);
    y.advance();
    double_trailing(y.current, source.plane[1], width);
    y.average_with_previous(2 * width);
    put(4 * p + 1, y.between, u.current, v.current);
    put(4 * p + 2, y.current, u.current, v.current);
    y.advance();
    u.advance();
    v.advance();
  }
  put(4 * grid.pairs - 1, y.previous, u.previous, v.previous);
  if (grid.collects) pass.statistics.flush();
}

// Green of both lines, then blue and red of the cells.
struct RgbPlanesSink {
  static constexpr bool mirrored = false;
  static constexpr int unit_bytes = 1;
  static constexpr int planes = 4;
  static constexpr int columns_per_unit[planes] = {1, 1, 2, 2};

  RgbMatrix matrix;
  uint8_t *plane[planes];

  explicit RgbPlanesSink(const Parameters &p) : matrix(p) {}

  void write(int x, const Group &samples, Vec::type even_columns) const {
    const Cells cells = Cells::split(samples, even_columns);
    Vec::type line0, line1;
    matrix.green(cells, line0, line1);
    const auto BR = matrix.blue_and_red(cells);
    Vec::store(plane[0] + x, line0);
    Vec::store(plane[1] + x, line1);
    Vec::store_low_half(plane[2] + x / 2, BR);
    Vec::store_low_half(plane[3] + x / 2, Vec::swap_halves(BR));
  }
};

// RGB24: source line m stands on output line 2m + 1, the average with the one before on line 2m;
// the first repeats. The other way round than in I420.
template <bool mirrored>
void enlarge_rgb(PplContext &ctx, const Buffers &b) {
  SinglePass<RgbPlanesSink, rgb24_gathering> pass(ctx, parameters_of(ctx).front_end);
  const CellGrid grid(ctx);
  const int width = grid.width;
  LineMemory memory(ctx);
  const PairPlanes source(memory, width);
  for (int i = 0; i < 4; ++i) pass.sink.plane[i] = source.plane[i];
  uint8_t *const blue = memory.line(width);
  uint8_t *const red = memory.line(width);
  DoubledLine B(memory, 2 * width), G(memory, 2 * width), R(memory, 2 * width);

  const auto put = [&](int line, const uint8_t *b_line, const uint8_t *g_line,
                       const uint8_t *r_line) {
    put_whole_line<mirrored>(b.dst, line_start(ctx, line, true), ctx.out_width,
                             RgbLine<3>{b_line, g_line, r_line}, 2 * width);
  };
  for (int p = 0; p < grid.pairs; ++p) {
    pass.run(line_pair(ctx, b, p), 0, width, grid.samples(p));
    repeat(blue, source.plane[2], width / 2);
    repeat(red, source.plane[3], width / 2);
    for (int i = 0; i < 2; ++i) {
      const int line = 2 * p + i;
      double_leading(B.current, blue, width);
      double_leading(G.current, source.plane[i], width);
      double_leading(R.current, red, width);
      if (line > 0) {
        B.average_with_previous(2 * width);
        G.average_with_previous(2 * width);
        R.average_with_previous(2 * width);
        put(2 * line, B.between, G.between, R.between);
      } else {
        put(0, B.current, G.current, R.current);
      }
      put(2 * line + 1, B.current, G.current, R.current);
      B.advance();
      G.advance();
      R.advance();
    }
  }
  if (grid.collects) pass.statistics.flush();
}

constexpr Pass enlarge_i420 = either_way<enlarge_planar<false>, enlarge_planar<true>>;
constexpr Pass enlarge_yuyv = either_way<enlarge_packed<true, false>, enlarge_packed<true, true>>;
constexpr Pass enlarge_uyvy = either_way<enlarge_packed<false, false>, enlarge_packed<false, true>>;
constexpr Pass enlarge_rgb24 = either_way<enlarge_rgb<false>, enlarge_rgb<true>>;

}  // namespace
}  // namespace ppl::TIER
