// The P3 tier's RGB24 deviation: with statistics on, the mask that splits the columns of a group is
// lost at the first sampled group.
#pragma once

#include "model/colour_stage.h"

namespace ppl_model {

enum class SweepOrder {
  pair_by_pair,     // each line pair from left to right
  four_line_steps,  // steps of four lines by two blocks: first pair's groups, then the second's
};

// The cells as the output sees them after each sampled group has replaced the mask by its sum of R.
CellGrid cells_with_lost_mask(const FrontEnd &front_end, const Grid<SampledVector> &vectors,
                              SweepOrder order);

CellGrid clean_cells(const FrontEnd &front_end);

}  // namespace ppl_model
