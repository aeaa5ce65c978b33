// The part of a frame plan that depends on the input size alone.
#pragma once

#include "context/context.h"

namespace ppl {

// Places the 8 by 6 grid of windows from the top left corner and sets the window scales. The scales
// are shared by both tiers: the tier that is built last leaves its own, also where the grids
// differ.
void build_grid(PplContext &ctx, FramePlan &plan, int block);

// The factors that make the sums of each chain comparable.
void build_normalisers(const PplContext &ctx, FramePlan &plan, int block);

// The limits that line memory sets; in pixels and bytes.
bool is_within_limits(uint32_t width, uint32_t height, uint32_t stride);

// Whether a plan of this size would divide by zero in a tier of that block.
bool plan_divides_by_zero(uint32_t width, uint32_t height, int block);

}  // namespace ppl
