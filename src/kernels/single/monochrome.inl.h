// Quality 13: each sample is the brightness of its own pixel. The front end, through
// yuv_contrast_gamma_table, and nothing after it. I420 and RGB24 alone.
#pragma once

#include "kernels/single/shrink.inl.h"

namespace ppl::TARGET {
namespace {

constexpr Gathering mono_gathering = {.judges_cells = false, .loses_mask = false};

// Luma of both lines. 16 comes on top of the table, which by default has it already. Meant so:
// docs/oddities.md, "Quality 13 is never black".
template <bool is_mirrored>
struct MonoLumaSink {
  static constexpr bool mirrored = is_mirrored;
  static constexpr int unit_bytes = 1;
  static constexpr int planes = 2;
  static constexpr int columns_per_unit[planes] = {1, 1};

  uint8_t *plane[planes] = {};

  explicit MonoLumaSink(const Parameters &) {}

  void write(int x, const VecSamples &samples, Vec::type) const {
    for (int line = 0; line < 2; ++line) {
      const auto y = to_studio_luma(samples.line[line]);
      Vec::store(place<mirrored>(plane[line], 1, x, Vec::size), mirrored ? Vec::reverse_u8(y) : y);
    }
  }
};

// B, G and R of a pixel all equal.
template <bool is_mirrored>
struct MonoRgbSink {
  static constexpr bool mirrored = is_mirrored;
  static constexpr int unit_bytes = 3;
  static constexpr int planes = 2;
  static constexpr int columns_per_unit[planes] = {1, 1};

  uint8_t *plane[planes] = {};

  explicit MonoRgbSink(const Parameters &) {}

  void write(int x, const VecSamples &samples, Vec::type) const {
    put(place<mirrored>(plane[0], 3, x, Vec::size), samples.line[0]);
    put(place<mirrored>(plane[1], 3, x, Vec::size), samples.line[1]);
  }

  static void put(uint8_t *out, Vec::type v) { Vec::store_bgr<3, mirrored>(out, v, v, v); }
};

// The B sites alone. With the mask lost, a value may exceed a byte and is held at 255.
template <bool is_luma>
struct MonoCellSink {
  static constexpr bool mirrored = false;
  static constexpr int unit_bytes = 1;
  static constexpr int planes = 1;
  static constexpr int columns_per_unit[planes] = {2};

  uint8_t *plane[planes] = {};

  explicit MonoCellSink(const Parameters &) {}

  void write(int x, const VecSamples &samples, Vec::type even_columns) const {
    const auto site = Vec::bit_and(samples.line[0], even_columns);
    const auto value = Vec::pack_u8(site, site);
    Vec::store_low_halves(plane[0] + x / 2, is_luma ? to_studio_luma(value) : value);
  }
};

template <bool mirrored>
void mono_i420(PplContext &ctx, const Buffers &b) {
  SinglePass<MonoLumaSink<mirrored>, mono_gathering> pass(ctx, ctx.params.curves_mono);
  const CellGrid grid(ctx);
  for (int p = 0; p < grid.pairs; ++p) {
    aim_lines(pass.sink, ctx, b, p, LineOrder::top_down);
    pass.run(line_pair(ctx, b, p), 0, grid.width, grid.samples(p));
    // In place with both mirrors, too, unlike the default pipeline's chroma.
    const int cells = grid.width / 2;
    uint8_t *const u = place<mirrored>(
        b.dst_chroma + chroma_line_start(ctx, p) + (mirrored ? ctx.out_width / 2 - 1 : 0), 1, 0,
        cells);
    fill(u, neutral_chroma, cells);
    fill(u + ctx.out_size_4, neutral_chroma, cells);
  }
  if (grid.collects) pass.statistics.flush();
}

template <bool mirrored>
void mono_rgb24(PplContext &ctx, const Buffers &b) {
  SinglePass<MonoRgbSink<mirrored>, mono_gathering> pass(ctx, ctx.params.curves_mono);
  const CellGrid grid(ctx);
  for (int p = 0; p < grid.pairs; ++p) {
    aim_lines(pass.sink, ctx, b, p, LineOrder::bottom_up);
    pass.run(line_pair(ctx, b, p), 0, grid.width, grid.samples(p));
  }
  if (grid.collects) pass.statistics.flush();
}

// A row at decimation 1 and 2.
template <bool mirrored>
struct MonoPlanarRow {
  static constexpr LineOrder order = LineOrder::top_down;

  static void put(const PplContext &ctx, const Buffers &b, const RowPlacement &at,
                  const RowWorkspace &lines, const RowStep &step) {
    for (int i = 0; i < step.pairs; ++i) {
      put_line<mirrored>(ctx, b.dst, at.line(2 * step.row + i), PlaneLine{lines.plane[i][0]},
                         step.first, step.count);
    }
    if (step.pairs < 2) return;
    const PlaneLine neutral = {lines.u};
    fill(lines.u + step.first / 2, neutral_chroma, step.count / 2);
    PlanarRow<mirrored>::put_chroma(ctx, b, at, step.row, neutral, neutral, step.first / 2,
                                    step.count / 2);
  }
};

template <bool mirrored>
struct MonoRgbRow {
  static constexpr LineOrder order = LineOrder::bottom_up;

  static void put(const PplContext &ctx, const Buffers &b, const RowPlacement &at,
                  const RowWorkspace &lines, const RowStep &step) {
    for (int i = 0; i < step.pairs; ++i) {
      const uint8_t *const grey = lines.plane[i][0];
      put_line<mirrored>(ctx, b.dst, 3 * at.line(2 * step.row + i), RgbLine<3>{grey, grey, grey},
                         step.first, step.count);
    }
  }
};

// At decimation minus 1 the 2:1 pass runs on the steps of a doubled size, and nothing fills the
// gaps. A step's pixels stand in two runs of a block each, with gaps as wide; mirrored runs lie in
// the lower half of their room, reversed. Distances are in pixels.
template <bool mirrored, LineOrder order>
struct SpreadPlacement {
  int start, row_step, line[2];

  explicit SpreadPlacement(const PplContext &ctx) {
    const int W = ctx.out_width;
    const int S = ctx.out_size;
    const bool v = ctx.v_mirror != 0;
    const int sx = mirrored ? -1 : 1;
    const int sy = v ? -1 : 1;
    if (order == LineOrder::bottom_up) {
      start = mirrored ? (v ? W - 4 * block : S - 4 * block - 3 * W) : (v ? 0 : S - 4 * W);
      row_step = sx * (W / 2) - (4 * sy + sx) * W;
      line[0] = v ? 0 : 2 * W;
    } else {
      start = mirrored ? (v ? S - 4 * block - 2 * W : W - 4 * block) : (v ? S - 4 * W : 0);
      row_step = sx * (W / 2) + (4 * sy - sx) * W;
      line[0] = v ? 2 * W : 0;
    }
    line[1] = 2 * W - line[0];
  }

  // The lowest pixel of the room of the step's run 0 or 1.
  int run(int row, int in_row, int first, int which) const {
    const int step = 4 * block * (first / (2 * block));
    const int room = mirrored == (which == 0) ? 2 * block : 0;
    return start + row * row_step + line[in_row] + (mirrored ? -step : step) + room;
  }

  template <class Line>
  void put(uint8_t *dst, const Line &grey, int row, int in_row, int first, int count) const {
    for (int which = 0; which < 2 && count > 0; ++which, first += block, count -= block) {
      const int length = count < block ? count : block;
      const int lowest = run(row, in_row, first, which) + (mirrored ? block - length : 0);
      grey.template put<mirrored>(dst + Line::unit_bytes * lowest, first, length);
    }
  }
};

template <bool mirrored>
struct SpreadPlanarRow {
  static constexpr LineOrder order = LineOrder::top_down;

  static void put(const PplContext &ctx, const Buffers &b, const RowPlacement &,
                  const RowWorkspace &lines, const RowStep &step) {
    const SpreadPlacement<mirrored, order> at(ctx);
    for (int i = 0; i < step.pairs; ++i) {
      at.put(b.dst, PlaneLine{lines.plane[i][0]}, step.row, i, step.first, step.count);
    }
    if (step.pairs < 2) return;
    const int cells = step.count / 2;
    uint8_t *const u = b.dst_chroma + chroma_run(ctx, step) + (mirrored ? block - cells : 0);
    fill(u, neutral_chroma, cells);
    fill(u + ctx.out_size_4, neutral_chroma, cells);
  }

 private:
  static int chroma_run(const PplContext &ctx, const RowStep &step) {
    const int W = ctx.out_width / 2;
    const int Q = ctx.out_size_4;
    const bool v = ctx.v_mirror != 0;
    const int sx = mirrored ? -1 : 1;
    const int sy = v ? -1 : 1;
    const int start = mirrored ? (v ? Q - 2 * block - W : W - 2 * block) : (v ? Q - 2 * W : 0);
    const int row_step = sx * (W / 2) + (2 * sy - sx) * W;
    return start + step.row * row_step + sx * (step.first / (2 * block)) * (2 * block);
  }
};

template <bool mirrored>
struct SpreadRgbRow {
  static constexpr LineOrder order = LineOrder::bottom_up;

  static void put(const PplContext &ctx, const Buffers &b, const RowPlacement &,
                  const RowWorkspace &lines, const RowStep &step) {
    const SpreadPlacement<mirrored, order> at(ctx);
    for (int i = 0; i < step.pairs; ++i) {
      const uint8_t *const grey = lines.plane[i][0];
      at.put(b.dst, RgbLine<3>{grey, grey, grey}, step.row, i, step.first, step.count);
    }
  }
};

// One pass for both signs of the decimation.
template <class Sink, Gathering gathering, class Straight, class Mirrored, class SpreadStraight,
          class SpreadMirrored>
void mono_resample(PplContext &ctx, const Buffers &b) {
  const CurveTables &curves = ctx.params.curves_mono;
  const CellGrid grid(ctx);
  const bool spreads = ctx.decimation < 0;
  if (ctx.h_mirror != 0) {
    spreads ? run_rows<Sink, gathering, SpreadMirrored>(ctx, b, curves, grid, true)
            : run_rows<Sink, gathering, Mirrored>(ctx, b, curves, grid, true);
  } else {
    spreads ? run_rows<Sink, gathering, SpreadStraight>(ctx, b, curves, grid, false)
            : run_rows<Sink, gathering, Straight>(ctx, b, curves, grid, false);
  }
}

constexpr Pass mono_plain_i420 = either_way<mono_i420<false>, mono_i420<true>>;
constexpr Pass mono_plain_rgb24 = either_way<mono_rgb24<false>, mono_rgb24<true>>;

constexpr Gathering mono_rgb24_gathering = {.judges_cells = false, .loses_mask = rgb24_loses_mask};

constexpr Pass mono_resample_i420 =
    mono_resample<MonoCellSink<true>, mono_gathering, MonoPlanarRow<false>, MonoPlanarRow<true>,
                  SpreadPlanarRow<false>, SpreadPlanarRow<true>>;
constexpr Pass mono_resample_rgb24 =
    mono_resample<MonoCellSink<false>, mono_rgb24_gathering, MonoRgbRow<false>, MonoRgbRow<true>,
                  SpreadRgbRow<false>, SpreadRgbRow<true>>;

}  // namespace
}  // namespace ppl::TARGET
