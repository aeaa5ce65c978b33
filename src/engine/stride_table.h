// Cursor steps: mirroring and scaling cost the kernels a load of a step and no branch.
#pragma once

#include "frame/context.h"

namespace ppl {

// Fills the table from out_width, decimation and the mirror flags. Distances are in bytes.
void build_stride_table(const PplContext &ctx, FramePlan &plan, int block_width);

// The same for each tier, with a setter's result.
uint8_t refresh_stride_tables(PplContext &ctx);

}  // namespace ppl
