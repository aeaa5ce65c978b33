#include "model/report.h"

#include "model/context.h"

namespace ppl_model {

FrameReport &report() {
  static FrameReport current;
  return current;
}

void leave_frame_open(PplContext *ctx, Tier tier) {
  report().everything_is_free();
  TierState &state = ctx->tier(tier);
  if (ctx->mean_collection != 0) state.stat_group_copy.open = true;
  if (ctx->quality == 10 || ctx->quality == 11) state.flat_cells.open = true;
}

const std::vector<FreeRange> &free_bytes() { return report().free_bytes; }
bool picture_is_free() { return report().picture_is_free; }
bool source_is_free() { return report().source_is_free; }
bool statistics_are_free() { return report().statistics_are_free; }

}  // namespace ppl_model
