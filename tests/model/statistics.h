// The sums gathered from one cell in four, on the odd line pairs.
#pragma once

#include <vector>

#include "model/front_end.h"
#include "model/output.h"

namespace ppl_model {

// A cell's four samples; wider than a byte because a lost mask leaves more bits in the even
// columns.
struct Cell {
  uint16_t B, Gb, Gr, R;
};

Cell cell_at(const Plane &samples, int pair, int cell_column);

// True if the cell lies in every qualification band.
bool cell_qualifies(const Parameters &params, const Cell &cell);
// True unless all four samples lie on the same side of the exposure band.
bool cell_is_exposed(const Parameters &params, const Cell &cell);

// Keeps a group, black subtracted, for the one to its right.
void save_group(TierState &state, Tier tier, const FrontEnd &front_end, int pair, int group);

struct PositionSums {
  uint32_t B = 0, Gb = 0, Gr = 0, R = 0;

  void add(const Cell &cell) {
    B += cell.B;
    Gb += cell.Gb;
    Gr += cell.Gr;
    R += cell.R;
  }
};

void add_to_triple(PplTriple &triple, const PositionSums &sums, uint32_t weight);
// One bin a position: the mean of the vector's 4 or 8 cells, counted once for each of them.
void add_to_histograms(PplContext *ctx, Tier tier, const PositionSums &sums);

enum class Gathering { nothing, sums_only, everything };

// Two neighbouring groups of an odd line pair, sampled together. The last may be half missing.
struct SampledVector {
  uint32_t sum_of_R;  // as the whole-frame sum takes it, without its weight
};

// Gathers from a whole single-pass frame. The result is one entry for each vector, by odd pair
// (pair / 2) and vector column (group / 2). `red_total_takes_Gb` is the P3 tier's RGB24 deviation.
Grid<SampledVector> gather_single_pass(PplContext *ctx, Tier tier, const FrontEnd &front_end,
                                       Gathering gathering, bool red_total_takes_Gb);

}  // namespace ppl_model
