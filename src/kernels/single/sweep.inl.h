// One line pair through the single-pass pipeline: front end in place, statistics, sink.
#pragma once

#include "kernels/common/statistics.inl.h"
#include "kernels/single/sinks.inl.h"

namespace ppl::TARGET {
namespace {

// A line pair of the mosaic.
struct LinePair {
  uint8_t *line[2];

  LinePair from(int column) const { return {{line[0] + column, line[1] + column}}; }

  template <class R>
  Samples<R> load(int column) const {
    return Samples<R>::load(line[0] + column, line[1] + column);
  }
};

// The state of a pass over a frame.
template <class Sink, Gathering gathering>
struct SinglePass {
  // The lattice takes blocks by pairs, and a register holds one block or whole pairs.
  static constexpr int pair_of_blocks = 2 * block;
  static constexpr int step = Vec::size < pair_of_blocks ? pair_of_blocks : Vec::size;
  static_assert(Vec::size == block || Vec::size % pair_of_blocks == 0);
  // A lost mask is a register of the pass: in wider ones it would have to be lost block by block.
  static_assert(!gathering.loses_mask || Vec::size == block);

  const CurveTables &tables;
  Sink sink;
  Statistics statistics;
  Vec::type even_columns = Vec::even_columns();

  SinglePass(PplContext &ctx, const CurveTables &curves)
      : tables(curves), sink(ctx.params), statistics(ctx) {}

  // Columns `x` to `end`: both even, and `x` at the start of a pair of blocks. `sampled` for the
  // line pairs of the lattice.
  void run(const LinePair &pair, int x, int end, bool sampled) {
    const int rest = sampled ? run_sampled(pair, x, end) : run_unsampled(pair, x, end);
    if (rest < end) run_tail(pair.from(rest), rest, end - rest, sampled);
  }

 private:
  // What the samples of a step's first register were before the curve took their place.
  struct RawBlocks {
    BlockSamples at[Vec::size / block];

    explicit RawBlocks(const LinePair &pair) {
      for (int i = 0; i < Vec::size / block; ++i) at[i] = pair.template load<Block>(i * block);
    }
  };

  // Puts a register of samples through the curve, in the frame too.
  static VecSamples front_end(const CurveTables &tables, const LinePair &at) {
    const VecSamples samples = {
        {look_up<Vec>(tables.line[0], at.line[0]), look_up<Vec>(tables.line[1], at.line[1])}};
    Vec::store(at.line[0], samples.line[0]);
    Vec::store(at.line[1], samples.line[1]);
    return samples;
  }

  // Samples the pairs of blocks whose even one is in `after_curve`, the first register of a step
  // that starts at `at`, as far as they have columns.
  void sample(const RawBlocks &raw, const VecSamples &after_curve, const LinePair &at,
              int columns) {
    for (int i = 0; i < step / pair_of_blocks && i * pair_of_blocks < columns; ++i) {
      const int rest = columns - i * pair_of_blocks;
      const auto valid = rest >= pair_of_blocks ? every_cell() : cells_within(rest);
      BlockSamples right, left_after_curve;
      if constexpr (Vec::size == block) {
        right = at.template load<Block>(block);
        left_after_curve = after_curve;
      } else {
        right = raw.at[2 * i + 1];
        left_after_curve = at.template load<Block>(i * pair_of_blocks);
      }
      const auto R =
          statistics.template sample<gathering>(raw.at[2 * i], right, left_after_curve, valid);
      if constexpr (gathering.loses_mask) even_columns = R;
    }
  }

  // The last even block of `columns` columns from the step's start on.
  void save_last(const RawBlocks &raw, int columns) {
    statistics.save(raw.at[(columns - 1) / pair_of_blocks * 2]);
  }

  // These two return where the whole steps, or registers, end. They are only fast in one piece:
  // look-ups and vector work overlap. Both use copies of what no store can alias then.
  [[gnu::noinline, gnu::flatten]] int run_unsampled(const LinePair &lines, int x, int end) const {
    const Sink out = sink;
    const LinePair pair = lines;
    const CurveTables &curves = tables;
    const Vec::type even = even_columns;
    for (; x + Vec::size <= end; x += Vec::size) {
      out.write(x, front_end(curves, pair.from(x)), even);
    }
    return x;
  }

  [[gnu::noinline, gnu::flatten]] int run_sampled(const LinePair &lines, int x, int end) {
    const Sink out = sink;
    const LinePair pair = lines;
    const CurveTables &curves = tables;
    for (; x + step <= end; x += step) {
      const LinePair at = pair.from(x);
      const RawBlocks raw(at);
      const VecSamples after_curve = front_end(curves, at);
      out.write(x, after_curve, even_columns);
      sample(raw, after_curve, at, step);
      if constexpr (Vec::size < step) {
        out.write(x + Vec::size, front_end(curves, at.from(Vec::size)), even_columns);
      }
      if (x + step + pair_of_blocks > end) save_last(raw, step);
    }
    return x;
  }

  // The last columns, fewer than a step: through a copy, so that nothing behind them is touched.
  [[gnu::noinline]] void run_tail(const LinePair &pair, int x, int columns, bool sampled) {
    uint8_t samples[2][step] = {};
    for (int line = 0; line < 2; ++line) copy_bytes(samples[line], pair.line[line], columns);
    uint8_t out[Sink::planes][step * Sink::unit_bytes];
    Sink local = sink;
    for (int i = 0; i < Sink::planes; ++i) {
      const int units = step / Sink::columns_per_unit[i];
      local.plane[i] = out[i] + (Sink::mirrored ? Sink::unit_bytes * (units - 1) : 0);
    }

    const LinePair at = {{samples[0], samples[1]}};
    const RawBlocks raw(at);
    const VecSamples after_curve = front_end(tables, at);
    // A last block without a right neighbour is sampled before its own output is made.
    const bool samples_first = columns <= block;
    if (!samples_first) local.write(0, after_curve, even_columns);
    if (sampled) {
      sample(raw, after_curve, at, columns);
      save_last(raw, columns);
    }
    if (samples_first) local.write(0, after_curve, even_columns);
    if constexpr (Vec::size < step) {
      if (columns > Vec::size) {
        local.write(Vec::size, front_end(tables, at.from(Vec::size)), even_columns);
      }
    }

    for (int line = 0; line < 2; ++line) copy_bytes(pair.line[line], samples[line], columns);
    for (int i = 0; i < Sink::planes; ++i) {
      const int units = columns / Sink::columns_per_unit[i];
      const int first = x / Sink::columns_per_unit[i];
      copy_bytes(place<Sink::mirrored>(sink.plane[i], Sink::unit_bytes, first, units),
                 place<Sink::mirrored>(local.plane[i], Sink::unit_bytes, 0, units),
                 units * Sink::unit_bytes);
    }
  }
};

// The size of a frame in whole cells, and whether its lattice is sampled.
struct CellGrid {
  int width, pairs;
  bool collects;

  explicit CellGrid(const PplContext &ctx)
      : width(whole_cells(ctx.frame_width)),
        pairs(ctx.frame_height / 2),
        collects(ctx.mean_collection != 0) {}

  bool samples(int pair) const { return collects && pair % 2 != 0; }
};

inline LinePair line_pair(const PplContext &ctx, const Buffers &b, int p) {
  uint8_t *const line = b.src + 2 * p * ctx.frame_stride;
  return {{line, line + ctx.frame_stride}};
}

}  // namespace
}  // namespace ppl::TARGET
