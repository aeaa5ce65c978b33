// What the context keeps for this tier, and the frame in whole cells.
#pragma once

#include "context/context.h"

namespace ppl::TARGET {
namespace {

inline TierState &tier_state(PplContext &ctx) { return block == p3_block ? ctx.p3 : ctx.sse2; }

constexpr int round_up(int value, int step) { return (value + step - 1) / step * step; }

// An odd width's or height's even part: the last column or line belongs to no cell.
constexpr int whole_cells(int size) { return size & ~1; }

}  // namespace
}  // namespace ppl::TARGET
