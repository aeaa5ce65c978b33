// What the sweeps of all chains have: the frame, its front end and its statistics.
#pragma once

#include "kernels/chains/lattice.inl.h"
#include "kernels/chains/matrix_stage.inl.h"
#include "kernels/chains/workspace.inl.h"

namespace ppl::TARGET {
namespace {

struct ChainFrame {
  const Parameters &p;
  const ChainForm form;
  const int lead;  // line pairs that the front end is ahead of emission
  const MosaicLines mosaic;
  const int pairs;
  Statistics &statistics;
  const ChainLattice lattice;
  const MatrixStage matrix;

  ChainFrame(PplContext &ctx, const Buffers &buffers, const ChainForm &chain_form, int front_lead,
             Statistics &frame_statistics)
      : p(ctx.params),
        form(chain_form),
        lead(front_lead),
        mosaic(ctx, buffers.src),
        pairs(mosaic.height / 2),
        statistics(frame_statistics),
        lattice(ctx, front_lead),
        matrix(ctx.params, chain_form) {}

  bool is_rgb() const { return ppl::is_rgb(form.format); }

  // Line pair q through the tables while `pair` is being emitted: in place where `out` is null.
  // Statistics are taken of one pair alone, the one furthest ahead.
  template <Gathering gathering>
  [[gnu::noinline]] PairLines front_end(int q, int pair, const LineRing *out) {
    PairLines lines;
    for (int i = 0; i < 2; ++i) {
      uint8_t *const in = mosaic.line(pair, 2 * q + i, mosaic.stride);
      lines.in[i] = in;
      lines.out[i] = out != nullptr ? (*out)[2 * q + i] : in;
    }
    if (q == pair + lead && lattice.samples(pair)) {
      look_up_sampled_pair<gathering>(lines, p.curves, mosaic.width, statistics, lattice, pair);
    } else {
      for (int i = 0; i < 2; ++i) {
        look_up_line(lines.out[i], lines.in[i], p.curves.line[i], mosaic.width);
      }
    }
    return lines;
  }
};

inline int smaller(int a, int b) { return a < b ? a : b; }

}  // namespace
}  // namespace ppl::TARGET
