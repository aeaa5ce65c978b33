// From cells to finished planes, with one constant matrix.
#pragma once

#include "model/plane.h"
#include "model/statistics.h"

namespace ppl_model {

// Planes at decimation 0. Chroma stands once per cell.
struct ColourPlanes {
  Plane y, u, v;
  Plane r, g, b;
};

using CellGrid = Grid<Cell>;

ColourPlanes yuv_planes(const Parameters &params, const CellGrid &cells);
ColourPlanes rgb_planes(const Parameters &params, const CellGrid &cells);

// One row of a Q6 matrix on 16-bit values: all sums wrap in 16 bits, the shift is arithmetic.
int matrix_row(const WordMatrix &matrix, size_t row, int R, int G, int B, int rounding);

uint8_t studio_luma(int value);    // 16 added, held to 16..235
uint8_t studio_chroma(int value);  // held to plus or minus 112, 128 added

}  // namespace ppl_model
