// Quality 13: each sample is the brightness of its own pixel. The front end, through
// yuv_contrast_gamma_table, and nothing after it. I420 and RGB24 alone.
#pragma once

#include "kernels/single/copy.inl.h"
#include "kernels/single/shrink.inl.h"

namespace ppl::TIER {
namespace {

constexpr Gathering mono_gathering = {.judges_cells = false, .loses_mask = false};

// Luma of both lines. 16 comes on top of the table, which by default has it already: required.
template <bool is_mirrored>
struct MonoLumaSink {
  static constexpr bool mirrored = is_mirrored;
  static constexpr int unit_bytes = 1;
  static constexpr int planes = 2;
  static constexpr int columns_per_unit[planes] = {1, 1};

  uint8_t *plane[planes];

  explicit MonoLumaSink(const Parameters &) {}

  void write(int x, const Group &samples, Vec::type) const {
    put(place<mirrored>(plane[0], 1, x, Vec::bytes), to_studio_luma(samples.line[0]));
    put(place<mirrored>(plane[1], 1, x, Vec::bytes), to_studio_luma(samples.line[1]));
  }

  static void put(uint8_t *out, Vec::type y) { Vec::store(out, mirrored ? reverse_u8(y) : y); }
};

// B, G and R of a pixel all equal.
template <bool is_mirrored>
struct MonoRgbSink {
  static constexpr bool mirrored = is_mirrored;
  static constexpr int unit_bytes = 3;
  static constexpr int planes = 2;
  static constexpr int columns_per_unit[planes] = {1, 1};

  uint8_t *plane[planes];

  explicit MonoRgbSink(const Parameters &) {}

  void write(int x, const Group &samples, Vec::type) const {
    put(place<mirrored>(plane[0], 3, x, Vec::bytes), samples.line[0]);
    put(place<mirrored>(plane[1], 3, x, Vec::bytes), samples.line[1]);
  }

  static void put(uint8_t *out, Vec::type v) { put_rgb_register<3, mirrored>(out, v, v, v); }
};

// The B sites alone. With the mask lost, a value may exceed a byte and is held at 255.
template <bool is_luma>
struct MonoCellSink {
  static constexpr bool mirrored = false;
  static constexpr int unit_bytes = 1;
  static constexpr int planes = 1;
  static constexpr int columns_per_unit[planes] = {2};

  uint8_t *plane[planes];

  explicit MonoCellSink(const Parameters &) {}

  void write(int x, const Group &samples, Vec::type even_columns) const {
    const auto site = Vec::bit_and(samples.line[0], even_columns);
    const auto value = Vec::pack_u8(site, site);
    Vec::store_low_half(plane[0] + x / 2, is_luma ? to_studio_luma(value) : value);
  }
};

template <bool mirrored>
void mono_i420(PplContext &ctx, const Buffers &b) {
  SinglePass<MonoLumaSink<mirrored>, mono_gathering> pass(ctx, parameters_of(ctx).front_end_mono);
  const CellGrid grid(ctx);
  const int last = mirrored ? ctx.out_width - 1 : 0;
  for (int p = 0; p < grid.pairs; ++p) {
    for (int line = 0; line < 2; ++line) {
      pass.sink.plane[line] = b.dst + line_start(ctx, 2 * p + line, false) + last;
    }
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
  SinglePass<MonoRgbSink<mirrored>, mono_gathering> pass(ctx, parameters_of(ctx).front_end_mono);
  const CellGrid grid(ctx);
  for (int p = 0; p < grid.pairs; ++p) {
    aim_packed(pass.sink, ctx, b, p, true);
    pass.run(line_pair(ctx, b, p), 0, grid.width, grid.samples(p));
  }
  if (grid.collects) pass.statistics.flush();
}

// A row at decimation 1 and 2.
template <bool mirrored>
struct MonoPlanarRow {
  static constexpr bool bottom_up = false;
  uint8_t *neutral;

  MonoPlanarRow(LineMemory &memory, int cells) : neutral(memory.line(cells)) {
    fill(neutral, neutral_chroma, cells);
  }

  void put(const PplContext &ctx, const Buffers &b, const RowPlacement &at, const RowLines &lines,
           int row, int pairs, int first, int count) const {
    for (int i = 0; i < pairs; ++i) {
      put_line<mirrored>(ctx, b.dst, b.dst + at.line(2 * row + i), PlaneLine{lines.plane[i][0]},
                         first, count);
    }
    if (pairs < 2) return;
    uint8_t *const origin = b.dst_chroma + at.chroma_line(row);
    put_line<mirrored>(ctx, b.dst, origin, PlaneLine{neutral}, first / 2, count / 2);
    put_line<mirrored>(ctx, b.dst, origin + ctx.out_size_4, PlaneLine{neutral}, first / 2,
                       count / 2);
  }
};

template <bool mirrored>
struct MonoRgbRow {
  static constexpr bool bottom_up = true;

  MonoRgbRow(LineMemory &, int) {}

  void put(const PplContext &ctx, const Buffers &b, const RowPlacement &at, const RowLines &lines,
           int row, int pairs, int first, int count) const {
    for (int i = 0; i < pairs; ++i) {
      const uint8_t *const grey = lines.plane[i][0];
      put_line<mirrored>(ctx, b.dst, b.dst + 3 * at.line(2 * row + i), RgbLine<3>{grey, grey, grey},
                         first, count);
    }
  }
};

// At decimation minus 1 the 2:1 pass runs on the steps of a doubled size, and nothing fills the
// gaps. A step's pixels stand in two runs of a block width each, with gaps as wide; mirrored runs
// lie in the lower half of their room, reversed. Distances are in pixels.
template <bool mirrored, bool bottom_up>
struct SpreadPlacement {
  static constexpr int B = Vec::bytes;
  int start, row_step, line[2];

  explicit SpreadPlacement(const PplContext &ctx) {
    const int W = ctx.out_width;
    const int S = ctx.out_size;
    const bool v = ctx.v_mirror != 0;
    const int sx = mirrored ? -1 : 1;
    const int sy = v ? -1 : 1;
    if (bottom_up) {
      start = mirrored ? (v ? W - 4 * B : S - 4 * B - 3 * W) : (v ? 0 : S - 4 * W);
      row_step = sx * (W / 2) - (4 * sy + sx) * W;
      line[0] = v ? 0 : 2 * W;
    } else {
      start = mirrored ? (v ? S - 4 * B - 2 * W : W - 4 * B) : (v ? S - 4 * W : 0);
      row_step = sx * (W / 2) + (4 * sy - sx) * W;
      line[0] = v ? 2 * W : 0;
    }
    line[1] = 2 * W - line[0];
  }

  // The lowest pixel of the room of the step's run 0 or 1.
  int run(int row, int in_row, int first, int which) const {
    const int step = 4 * B * (first / (2 * B));
    const int room = mirrored == (which == 0) ? 2 * B : 0;
    return start + row * row_step + line[in_row] + (mirrored ? -step : step) + room;
  }

  template <class Line>
  void put(uint8_t *dst, const Line &grey, int row, int in_row, int first, int count) const {
    for (int which = 0; which < 2 && count > 0; ++which, first += B, count -= B) {
      const int length = count < B ? count : B;
      const int lowest = run(row, in_row, first, which) + (mirrored ? B - length : 0);
      grey.template put<mirrored>(dst + Line::unit_bytes * lowest, first, length);
    }
  }
};

template <bool mirrored>
struct SpreadPlanarRow {
  static constexpr bool bottom_up = false;

  SpreadPlanarRow(LineMemory &, int) {}

  void put(const PplContext &ctx, const Buffers &b, const RowPlacement &, const RowLines &lines,
           int row, int pairs, int first, int count) const {
    const SpreadPlacement<mirrored, false> at(ctx);
    for (int i = 0; i < pairs; ++i) {
      at.put(b.dst, PlaneLine{lines.plane[i][0]}, row, i, first, count);
    }
    if (pairs < 2) return;
    uint8_t *const u = b.dst_chroma + chroma_run(ctx, row, first) + (mirrored ? B - count / 2 : 0);
    fill(u, neutral_chroma, count / 2);
    fill(u + ctx.out_size_4, neutral_chroma, count / 2);
  }

 private:
  static constexpr int B = Vec::bytes;

  static int chroma_run(const PplContext &ctx, int row, int first) {
    const int W = ctx.out_width / 2;
    const int Q = ctx.out_size_4;
    const bool v = ctx.v_mirror != 0;
    const int sx = mirrored ? -1 : 1;
    const int sy = v ? -1 : 1;
    const int start = mirrored ? (v ? Q - 2 * B - W : W - 2 * B) : (v ? Q - 2 * W : 0);
    const int row_step = sx * (W / 2) + (2 * sy - sx) * W;
    return start + row * row_step + sx * (first / (2 * B)) * (2 * B);
  }
};

template <bool mirrored>
struct SpreadRgbRow {
  static constexpr bool bottom_up = true;

  SpreadRgbRow(LineMemory &, int) {}

  void put(const PplContext &ctx, const Buffers &b, const RowPlacement &, const RowLines &lines,
           int row, int pairs, int first, int count) const {
    const SpreadPlacement<mirrored, true> at(ctx);
    for (int i = 0; i < pairs; ++i) {
      const uint8_t *const grey = lines.plane[i][0];
      at.put(b.dst, RgbLine<3>{grey, grey, grey}, row, i, first, count);
    }
  }
};

// One pass for both signs of the decimation.
template <class Sink, Gathering gathering, class Straight, class Mirrored, class SpreadStraight,
          class SpreadMirrored>
void mono_resample(PplContext &ctx, const Buffers &b) {
  const FrontEndTables &tables = parameters_of(ctx).front_end_mono;
  const CellGrid grid(ctx);
  const bool spreads = ctx.decimation < 0;
  if (ctx.h_mirror != 0) {
    spreads ? run_shrinking<Sink, gathering, SpreadMirrored>(ctx, b, tables, grid, true)
            : run_shrinking<Sink, gathering, Mirrored>(ctx, b, tables, grid, true);
  } else {
    spreads ? run_shrinking<Sink, gathering, SpreadStraight>(ctx, b, tables, grid, false)
            : run_shrinking<Sink, gathering, Straight>(ctx, b, tables, grid, false);
  }
}

constexpr Pass mono_plain_i420 = either_way<mono_i420<false>, mono_i420<true>>;
constexpr Pass mono_plain_rgb24 = either_way<mono_rgb24<false>, mono_rgb24<true>>;

constexpr Gathering mono_rgb24_gathering = {.judges_cells = false, .loses_mask = rgb24_loses_mask};

constexpr auto mono_resample_i420 =
    mono_resample<MonoCellSink<true>, mono_gathering, MonoPlanarRow<false>, MonoPlanarRow<true>,
                  SpreadPlanarRow<false>, SpreadPlanarRow<true>>;
constexpr auto mono_resample_rgb24 =
    mono_resample<MonoCellSink<false>, mono_rgb24_gathering, MonoRgbRow<false>, MonoRgbRow<true>,
                  SpreadRgbRow<false>, SpreadRgbRow<true>>;

}  // namespace
}  // namespace ppl::TIER
