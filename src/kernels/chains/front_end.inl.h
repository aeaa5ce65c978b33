// The front end of a chain, a line pair at a time, and the statistics on its way.
#pragma once

#include "kernels/chains/frame_lines.inl.h"
#include "kernels/single/statistics.inl.h"

namespace ppl::TIER {
namespace {

// A line through its tables; in place or not.
void look_up_line(uint8_t *out, const uint8_t *in, const FrontEndTable &table, int x, int width) {
  for (; x + Vec::bytes <= width; x += Vec::bytes) Vec::store(out + x, look_up(table, in + x));
  for (; x < width; x += 2) {
    out[x] = static_cast<uint8_t>(table.column[0][in[x]]);
    out[x + 1] = static_cast<uint8_t>(table.column[1][in[x + 1]] >> 8);
  }
}

// Where a chain samples. Only the steady phase does, and its own counters decide: pair p from 1 and
// block column c from 1, both up to a margin, while the group that is then in the front end lies
// `lead` pairs below and `lead` groups to the right. The window is that of the counters, too.
class ChainLattice {
 public:
  ChainLattice(PplContext &ctx, int lead)
      : ctx_(ctx),
        plan_(TIER_BYTES == 8 ? ctx.p3_plan : ctx.sse2_plan),
        lead_(lead),
        last_pair_(ctx.frame_height / 2 - 1 - lead),
        last_column_(ctx.frame_width / Vec::bytes - (lead == 1 ? 2 : 4)) {}

  bool samples(int pair) const {
    return ctx_.mean_collection != 0 && pair % 2 != 0 && pair <= last_pair_;
  }

  // The counter of group g, and whether the gate is open for it.
  int column(int g) const { return g - lead_; }
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

// Both lines of a pair, with the sampled groups on their way. The group left of a line's first
// sampled one is not saved: stage Q then finds an older one. Required behaviour.
template <Gathering gathering>
void look_up_sampled_pair(uint8_t *const out[2], uint8_t *const in[2], const FrontEndTables &tables,
                          int width, Statistics &statistics, const ChainLattice &lattice,
                          int pair) {
  int x = 0;
  for (; x + Vec::bytes <= width; x += Vec::bytes) {
    const int c = lattice.column(x / Vec::bytes);
    if (lattice.has_column(c)) {
      const Group group = Group::load(in[0] + x, in[1] + x);
      if (c % 2 != 0) {
        const Group left = Group::load(out[0] + x - Vec::bytes, out[1] + x - Vec::bytes);
        statistics.sample_into<gathering>(lattice.window(pair, c), group, left);
      } else {
        statistics.save(group);
      }
    }
    for (int line = 0; line < 2; ++line) {
      Vec::store(out[line] + x, look_up(tables.line[line], in[line] + x));
    }
  }
  for (int line = 0; line < 2; ++line) {
    look_up_line(out[line], in[line], tables.line[line], x, width);
  }
}

}  // namespace
}  // namespace ppl::TIER
