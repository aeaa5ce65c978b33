// 1:2 passes: averages between neighbours of finished output values, first along the line, then
// between lines. Everything happens in picture order; the result is mirrored.
#pragma once

#include "kernels/single/default_pipeline.inl.h"

namespace ppl::TARGET {
namespace {

template <bool mirrored, class Line>
[[gnu::noinline]] void put_whole_line(uint8_t *plane, int start, int width, const Line &line,
                                      int count) {
  uint8_t *const origin = plane + Line::unit_bytes * (start + (mirrored ? width - 1 : 0));
  line.template put<mirrored>(place<mirrored>(origin, Line::unit_bytes, 0, count), 0, count);
}

// Fills one plane of I420. Source line m stands on output line 2m, the averages between; the last
// repeats.
template <bool mirrored>
struct EnlargedPlane {
  const PplContext &ctx;
  DoubledLine &lines;
  uint8_t *plane;
  bool is_chroma;
  int count = 0;  // source lines so far

  [[gnu::noinline]] void add(const uint8_t *source) {
    double_leading(lines.current, source, doubled_length() / 2);
    if (count > 0) put(2 * count - 1, lines.between(doubled_length()));
    put(2 * count, lines.current);
    lines.advance();
    ++count;
  }

  void finish() const { put(2 * count - 1, lines.previous); }

 private:
  int doubled_length() const { return whole_cells(ctx.frame_width) * (is_chroma ? 1 : 2); }

  void put(int line, const uint8_t *values) const {
    if (is_chroma) {
      put_whole_line<mirrored>(plane, chroma_line_start(ctx, line), ctx.out_width / 2,
                               PlaneLine{values}, doubled_length());
    } else {
      put_whole_line<mirrored>(plane, line_start(ctx, line, LineOrder::top_down), ctx.out_width,
                               PlaneLine{values}, doubled_length());
    }
  }
};

// What the planar YUV sink fills for one line pair, and the lines that it becomes.
struct YuvWorkspace {
  uint8_t *plane[4];
  DoubledLine y, u, v;

  constexpr YuvWorkspace(LineMemory &memory, int width)
      : plane{memory.line(width), memory.line(width), memory.line(width / 2),
              memory.line(width / 2)},
        y(memory, 2 * width),
        u(memory, width),
        v(memory, width) {}
};
static_assert(fits_line_memory([](LineMemory &memory) { YuvWorkspace(memory, widest_line); }));

template <bool mirrored>
void enlarge_planar(PplContext &ctx, const Buffers &b) {
  SinglePass<PlanarYuvSink<false>, Gathering{}> pass(ctx, ctx.params.curves);
  const CellGrid grid(ctx);
  const int width = grid.width;
  LineMemory memory(ctx);
  YuvWorkspace lines(memory, width);
  for (int i = 0; i < 4; ++i) pass.sink.plane[i] = lines.plane[i];

  EnlargedPlane<mirrored> y{ctx, lines.y, b.dst, false};
  EnlargedPlane<mirrored> u{ctx, lines.u, b.dst_chroma, true};
  EnlargedPlane<mirrored> v{ctx, lines.v, b.dst_chroma + ctx.out_size_4, true};
  for (int p = 0; p < grid.pairs; ++p) {
    pass.run(line_pair(ctx, b, p), 0, width, grid.samples(p));
    y.add(lines.plane[0]);
    y.add(lines.plane[1]);
    u.add(lines.plane[2]);
    v.add(lines.plane[3]);
  }
  y.finish();
  u.finish();
  v.finish();
  if (grid.collects) pass.statistics.flush();
}

// Packed YUV: source line m stands on output line 2m, averages between. The chroma of cell line m
// stands on output lines 4m to 4m + 2, the average with the next on 4m + 3.
template <PackedOrder order, bool mirrored>
void enlarge_packed(PplContext &ctx, const Buffers &b) {
  SinglePass<PlanarYuvSink<false>, Gathering{}> pass(ctx, ctx.params.curves);
  const CellGrid grid(ctx);
  const int width = grid.width;
  LineMemory memory(ctx);
  YuvWorkspace lines(memory, width);
  for (int i = 0; i < 4; ++i) pass.sink.plane[i] = lines.plane[i];
  auto &[plane, y, u, v] = lines;

  const auto put = [&](int line, const uint8_t *luma, const uint8_t *u_line,
                       const uint8_t *v_line) {
    put_whole_line<mirrored>(b.dst, line_start(ctx, line, LineOrder::top_down), ctx.out_width,
                             PackedLine<order>{luma, u_line, v_line}, 2 * width);
  };
  for (int p = 0; p < grid.pairs; ++p) {
    pass.run(line_pair(ctx, b, p), 0, width, grid.samples(p));
    double_trailing(u.current, plane[2], width / 2);
    double_trailing(v.current, plane[3], width / 2);
    double_trailing(y.current, plane[0], width);
    if (p > 0) put(4 * p - 1, y.between(2 * width), u.between(width), v.between(width));
    put(4 * p, y.current, u.current, v.current);
    y.advance();
    double_trailing(y.current, plane[1], width);
    put(4 * p + 1, y.between(2 * width), u.current, v.current);
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
  uint8_t *plane[planes] = {};

  explicit RgbPlanesSink(const Parameters &p) : matrix(p) {}

  void write(int x, const VecSamples &samples, Vec::type even_columns) const {
    const Cells cells = Cells::split(samples, even_columns);
    Vec::type line0, line1;
    matrix.green(cells, line0, line1);
    const auto BR = matrix.blue_and_red(cells);
    Vec::store(plane[0] + x, line0);
    Vec::store(plane[1] + x, line1);
    Vec::store_low_halves(plane[2] + x / 2, BR);
    Vec::store_high_halves(plane[3] + x / 2, BR);
  }
};

struct RgbWorkspace {
  uint8_t *plane[4];
  uint8_t *blue, *red;  // of every pixel
  DoubledLine b, g, r;

  constexpr RgbWorkspace(LineMemory &memory, int width)
      : plane{memory.line(width), memory.line(width), memory.line(width / 2),
              memory.line(width / 2)},
        blue(memory.line(width)),
        red(memory.line(width)),
        b(memory, 2 * width),
        g(memory, 2 * width),
        r(memory, 2 * width) {}
};
static_assert(fits_line_memory([](LineMemory &memory) { RgbWorkspace(memory, widest_line); }));

// RGB24: source line m stands on output line 2m + 1, the average with the one before on line 2m;
// the first repeats. The other way round than in I420.
template <bool mirrored>
void enlarge_rgb(PplContext &ctx, const Buffers &b) {
  SinglePass<RgbPlanesSink, rgb24_gathering> pass(ctx, ctx.params.curves);
  const CellGrid grid(ctx);
  const int width = grid.width;
  LineMemory memory(ctx);
  RgbWorkspace lines(memory, width);
  for (int i = 0; i < 4; ++i) pass.sink.plane[i] = lines.plane[i];

  const auto put = [&](int line, const uint8_t *b_line, const uint8_t *g_line,
                       const uint8_t *r_line) {
    put_whole_line<mirrored>(b.dst, line_start(ctx, line, LineOrder::bottom_up), ctx.out_width,
                             RgbLine<3>{b_line, g_line, r_line}, 2 * width);
  };
  for (int p = 0; p < grid.pairs; ++p) {
    pass.run(line_pair(ctx, b, p), 0, width, grid.samples(p));
    repeat(lines.blue, lines.plane[2], width / 2);
    repeat(lines.red, lines.plane[3], width / 2);
    for (int i = 0; i < 2; ++i) {
      const int line = 2 * p + i;
      double_leading(lines.b.current, lines.blue, width);
      double_leading(lines.g.current, lines.plane[i], width);
      double_leading(lines.r.current, lines.red, width);
      if (line > 0) {
        put(2 * line, lines.b.between(2 * width), lines.g.between(2 * width),
            lines.r.between(2 * width));
      } else {
        put(0, lines.b.current, lines.g.current, lines.r.current);
      }
      put(2 * line + 1, lines.b.current, lines.g.current, lines.r.current);
      lines.b.advance();
      lines.g.advance();
      lines.r.advance();
    }
  }
  if (grid.collects) pass.statistics.flush();
}

constexpr Pass enlarge_i420 = either_way<enlarge_planar<false>, enlarge_planar<true>>;
template <PackedOrder order>
constexpr Pass enlarged_packed =
    either_way<enlarge_packed<order, false>, enlarge_packed<order, true>>;
constexpr Pass enlarge_rgb24 = either_way<enlarge_rgb<false>, enlarge_rgb<true>>;

}  // namespace
}  // namespace ppl::TARGET
