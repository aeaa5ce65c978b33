// The one way in which derived data is brought up to date: inside the floating-point bracket, for
// each tier that the processor has, whatever P3_only says.
#pragma once

#include "frame/context.h"
#include "frame/processor.h"

namespace ppl {

template <int B>
struct TierState {
  static constexpr int block_width = B;
  ParameterBlock<B> &params;
  FramePlan &plan;
};

// Runs `refresh` for each tier; it takes a TierState and tells whether it accepted the values.
// Returns the setter's result: 0 if a tier refused. A failed save gives 1 with nothing refreshed,
// which callers cannot tell from success; that is the settled behaviour.
template <class Refresh>
uint8_t refresh_tiers(PplContext &ctx, Refresh refresh) {
  const FloatingPointBracket bracket;
  if (!bracket.held()) return 1;
  const uint32_t flags = processor_flags();
  bool accepted = true;
  if ((flags & processor_p3_tier) != 0) {
    accepted = refresh(TierState<p3_block_width>{ctx.p3_params, ctx.p3_plan});
  }
  if ((flags & processor_sse2_tier) != 0) {
    accepted &= refresh(TierState<sse2_block_width>{ctx.sse2_params, ctx.sse2_plan});
  }
  return accepted ? 1 : 0;
}

}  // namespace ppl
