// A chain over a frame.
#pragma once

#include "kernels/chains/colour_sweep.inl.h"
#include "kernels/chains/grey_sweep.inl.h"

namespace ppl::TARGET {
namespace {

// The statistics stand in a stack frame of their own: none is large.
template <class Sweep>
[[gnu::noinline]] void run_sweep(PplContext &ctx, const Buffers &buffers, const ChainForm &form,
                                 Statistics &statistics) {
  Sweep(ctx, buffers, form, statistics).run();
}

void run_chain(PplContext &ctx, const Buffers &buffers, Format format, const Chain &chain,
               Repair repair) {
  const ChainForm form = {chain, format, ctx.decimation, repair, whole_cells(ctx.frame_width)};
  Statistics statistics(ctx);
  if (chain.demosaic == Demosaic::grey) {
    run_sweep<GreySweep>(ctx, buffers, form, statistics);
  } else {
    run_sweep<ColourSweep>(ctx, buffers, form, statistics);
  }
  statistics.flush();
}

}  // namespace
}  // namespace ppl::TARGET
