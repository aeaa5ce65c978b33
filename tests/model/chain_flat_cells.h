// Flat cells: four pixels that share one colour where twelve green differences say that nothing but
// noise is there.
#pragma once

#include "model/chain_red_blue.h"
#include "model/chain_table.h"

namespace ppl_model {

// The test and the averages of one chain look at the frame in steps of their own.
struct FlatCellLines {
  StageLines test, averages;
};

// Cells on odd_lines or even_lines. The last block of the last cell row stays in the scratch.
void smooth_flat_cells(const Parameters &params, FlatCells cells, const FlatCellLines &frame, int B,
                       RgbImage &image, FlatCellScratch &scratch);

// Every pixel whose lane is set in the scratch takes the colour that was left there.
void apply_left_over_cells(const FlatCellScratch &scratch, int B, RgbImage &image);

}  // namespace ppl_model
