// The one way in which derived data is brought up to date: inside the floating-point bracket, if
// the processor has a tier, whatever P3_only says.
#pragma once

#include "context/context.h"
#include "processor/processor.h"

namespace ppl {

// Runs `refresh` on the parameters; it tells whether it accepted the values. Returns the setter's
// result: 0 if it refused. A failed save gives 1 with nothing refreshed, which callers cannot tell
// from success, and so does a processor without tiers. Meant so: docs/oddities.md, "Failure that
// returns 1".
template <class Refresh>
uint8_t refresh_parameters(PplContext &ctx, Refresh refresh) {
  const FloatingPointBracket bracket;
  if (!bracket.held() || !has_any_tier(processor_flags())) return 1;
  return refresh(ctx.params) ? 1 : 0;
}

// Runs `refresh(plan, block)` for each tier that the processor has.
template <class Refresh>
uint8_t refresh_plans(PplContext &ctx, Refresh refresh) {
  const FloatingPointBracket bracket;
  if (!bracket.held()) return 1;
  const uint32_t flags = processor_flags();
  if ((flags & processor_p3_tier) != 0) refresh(ctx.p3.plan, p3_block);
  if ((flags & processor_sse2_tier) != 0) refresh(ctx.sse2.plan, sse2_block);
  return 1;
}

// For a setter from which nothing is derived: it makes a save all the same, since each one is a
// call into the kernel that its owner can see.
inline uint8_t refresh_nothing() {
  const FloatingPointBracket bracket;
  return 1;
}

}  // namespace ppl
