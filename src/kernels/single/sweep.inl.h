// One line pair through the single-pass pipeline: front end in place, statistics, sink.
#pragma once

#include "kernels/single/sinks.inl.h"
#include "kernels/single/statistics.inl.h"

namespace ppl::TIER {
namespace {

// A line pair of the mosaic.
struct LinePair {
  uint8_t *line[2];

  LinePair from(int column) const { return {{line[0] + column, line[1] + column}}; }
};

// The state of a pass over a frame.
template <class Sink, Gathering gathering>
struct SinglePass {
  static constexpr int group = Vec::bytes;
  static constexpr int block = 2 * group;

  const FrontEndTables &tables;
  Sink sink;
  Statistics statistics;
  Vec::type even_columns = Vec::words(0x00FF);

  SinglePass(PplContext &ctx, const FrontEndTables &front_end)
      : tables(front_end), sink(parameters_of(ctx)), statistics(ctx) {}

  // Puts a group's samples through the curve, in the frame too.
  static Group front_end(const FrontEndTables &tables, const LinePair &at) {
    const Group g = {{look_up(tables.line[0], at.line[0]), look_up(tables.line[1], at.line[1])}};
    Vec::store(at.line[0], g.line[0]);
    Vec::store(at.line[1], g.line[1]);
    return g;
  }

  void sample(const Group &left, const Group &right, const Group &left_after_curve,
              Vec::type valid) {
    const auto R = statistics.template sample<gathering>(left, right, left_after_curve, valid);
    if constexpr (gathering.loses_mask) even_columns = R;
  }

  // Columns `x` to `end`: both even, and `x` at the start of a block. `sampled` for the line pairs
  // of the lattice.
  void run(const LinePair &pair, int x, int end, bool sampled) {
    const int rest = sampled ? run_sampled(pair, x, end) : run_unsampled(pair, x, end);
    if (rest < end) run_tail(pair.from(rest), rest, end - rest, sampled);
  }

 private:
  // These two return where the whole blocks, or groups, end. They are only fast in one piece:
  // look-ups and vector work overlap. Both use copies of what no store can alias then.
  [[gnu::noinline, gnu::flatten]] int run_unsampled(const LinePair &lines, int x, int end) const {
    const Sink out = sink;
    const LinePair pair = lines;
    const FrontEndTables &curve = tables;
    const Vec::type even = even_columns;
    for (; x + group <= end; x += group) out.write(x, front_end(curve, pair.from(x)), even);
    return x;
  }

  [[gnu::noinline, gnu::flatten]] int run_sampled(const LinePair &lines, int x, int end) {
    const Sink out = sink;
    const LinePair pair = lines;
    const FrontEndTables &curve = tables;
    for (; x + block <= end; x += block) {
      const LinePair at = pair.from(x);
      const LinePair next = at.from(group);
      const Group left = Group::load(at.line[0], at.line[1]);
      const Group left_after_curve = front_end(curve, at);
      out.write(x, left_after_curve, even_columns);
      sample(left, Group::load(next.line[0], next.line[1]), left_after_curve, every_cell());
      out.write(x + group, front_end(curve, next), even_columns);
      if (x + 2 * block > end) statistics.save(left);
    }
    return x;
  }

  // The last columns, fewer than a block: through a copy, so that nothing behind them is touched.
  [[gnu::noinline]] void run_tail(const LinePair &pair, int x, int columns, bool sampled) {
    alignas(Vec::bytes) uint8_t samples[2][block];
    for (int line = 0; line < 2; ++line) {
      for (int i = 0; i < block; ++i) samples[line][i] = i < columns ? pair.line[line][i] : 0;
    }
    uint8_t out[Sink::planes][block * Sink::unit_bytes];
    Sink local = sink;
    for (int i = 0; i < Sink::planes; ++i) {
      const int units = block / Sink::columns_per_unit[i];
      local.plane[i] = out[i] + (Sink::mirrored ? Sink::unit_bytes * (units - 1) : 0);
    }

    const LinePair at = {{samples[0], samples[1]}};
    const LinePair next = at.from(group);
    const Group left = Group::load(at.line[0], at.line[1]);
    const Group right = Group::load(next.line[0], next.line[1]);
    const bool has_right = columns > group;
    const Group left_after_curve = front_end(tables, at);
    // A last group without a right neighbour is sampled before its own output is made.
    if (has_right) local.write(0, left_after_curve, even_columns);
    if (sampled) {
      sample(left, right, left_after_curve, cells_within(columns));
      statistics.save(left);
    }
    if (has_right) {
      local.write(group, front_end(tables, next), even_columns);
    } else {
      local.write(0, left_after_curve, even_columns);
    }

    for (int line = 0; line < 2; ++line) {
      for (int i = 0; i < columns; ++i) pair.line[line][i] = samples[line][i];
    }
    for (int i = 0; i < Sink::planes; ++i) {
      const int units = columns / Sink::columns_per_unit[i];
      const int first = x / Sink::columns_per_unit[i];
      const uint8_t *const from = place<Sink::mirrored>(local.plane[i], Sink::unit_bytes, 0, units);
      uint8_t *const to = place<Sink::mirrored>(sink.plane[i], Sink::unit_bytes, first, units);
      for (int j = 0; j < units * Sink::unit_bytes; ++j) to[j] = from[j];
    }
  }
};

// Whether the lattice has cells in line pair p.
inline bool is_sampled_pair(int p) { return p % 2 != 0; }

}  // namespace
}  // namespace ppl::TIER
