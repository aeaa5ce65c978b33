// The front end of a chain, a line pair at a time, and the statistics on its way.
#pragma once

#include "kernels/chains/mosaic_lines.inl.h"
#include "kernels/common/statistics.inl.h"

namespace ppl::TARGET {
namespace {

// A line through its tables; in place or not.
inline void look_up_line(uint8_t *out, const uint8_t *in, const CurveTable &table, int width) {
  int x = 0;
  for (; x + Vec::size <= width; x += Vec::size) Vec::store(out + x, look_up<Vec>(table, in + x));
  for (; x < width; x += 2) {
    out[x] = static_cast<uint8_t>(table.column[0][in[x]]);
    out[x + 1] = static_cast<uint8_t>(table.column[1][in[x + 1]] >> 8);
  }
}

// Where a chain samples. Only the steady phase does, and its own counters decide: pair p from 1 and
// block column c from 1, both up to a margin, while the block that is then in the front end lies
// `lead` pairs below and `lead` blocks to the right. The window is that of the counters, too.
class ChainLattice {
 public:
  ChainLattice(PplContext &ctx, int lead)
      : ctx_(ctx),
        plan_(tier_state(ctx).plan),
        lead_(lead),
        last_pair_(ctx.frame_height / 2 - 1 - lead),
        last_column_(ctx.frame_width / block - (lead == 1 ? 2 : 4)) {}

  bool samples(int pair) const {
    return ctx_.mean_collection != 0 && pair % 2 != 0 && pair <= last_pair_;
  }

  // The counter while block column b is in the front end, and whether the gate is open for it.
  int column(int b) const { return b - lead_; }
  bool has_column(int c) const { return c >= 1 && c <= last_column_; }

  PplTriple &window(int pair, int c) const {
    if (plan_.cell_width <= 0 || plan_.cell_height <= 0) {
      return ctx_.rgb_means_outside_all_sub_windows;
    }
    const int column = c / plan_.cell_width;
    const int row = pair / plan_.cell_height;
    if (column >= window_columns || row >= window_rows) {
      return ctx_.rgb_means_outside_all_sub_windows;
    }
    return ctx_.rgb_means_sub_windows[row * window_columns + column];
  }

 private:
  PplContext &ctx_;
  const FramePlan &plan_;
  int lead_, last_pair_, last_column_;
};

// A line pair of the mosaic on its way through the tables.
struct PairLines {
  uint8_t *out[2];
  const uint8_t *in[2];
};

// Samples a block of a line pair. The one left of a line's first sampled one is not saved: stage Q
// then finds an older one. Meant so: docs/oddities.md, "Stale neighbour".
template <Gathering gathering>
inline void sample_block(const PairLines &lines, const BlockSamples &raw, int x,
                         Statistics &statistics, const ChainLattice &lattice, int pair) {
  const int c = lattice.column(x / block);
  if (!lattice.has_column(c)) return;
  if (c % 2 == 0) {
    statistics.save(raw);
    return;
  }
  const auto left = BlockSamples::load(lines.out[0] + x - block, lines.out[1] + x - block);
  statistics.template sample_into<gathering>(lattice.window(pair, c), raw, left);
}

// Both lines of a pair, with the sampled blocks on their way. Raw blocks are kept aside: in place,
// they are gone once their register is through.
template <Gathering gathering>
void look_up_sampled_pair(const PairLines &lines, const CurveTables &curves, int width,
                          Statistics &statistics, const ChainLattice &lattice, int pair) {
  const auto step = [&]<class R>(int x) {
    BlockSamples raw[R::size / block];
    for (int i = 0; i < R::size / block; ++i) {
      raw[i] = BlockSamples::load(lines.in[0] + x + i * block, lines.in[1] + x + i * block);
    }
    for (int line = 0; line < 2; ++line) {
      R::store(lines.out[line] + x, look_up<R>(curves.line[line], lines.in[line] + x));
    }
    for (int i = 0; i < R::size / block; ++i) {
      sample_block<gathering>(lines, raw[i], x + i * block, statistics, lattice, pair);
    }
  };
  const int whole = width / block * block;
  for_each_block(whole, step);
  for (int line = 0; line < 2; ++line) {
    look_up_line(lines.out[line] + whole, lines.in[line] + whole, curves.line[line], width - whole);
  }
}

}  // namespace
}  // namespace ppl::TARGET
