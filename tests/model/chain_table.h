// What each multi-pass quality is made of.
#pragma once

#include <optional>

#include "model/statistics.h"

namespace ppl_model {

enum class Demosaic {
  differences,         // accurate green, red and blue through their differences from it
  averages,            // rounded averages throughout
  green_and_averages,  // accurate green, the rest averaged
  grey,                // none: every sample is the brightness of its pixel
};

// Whether cells of four pixels are smoothed where their surroundings are flat.
enum class FlatCells {
  none,
  left_over,   // by the mask that the last frame with a test of its own left
  odd_lines,   // cells on lines 1 and 2, 3 and 4, ...
  even_lines,  // cells on lines 0 and 1, 2 and 3, ...
};

enum class Edges { none, gradient, in_place, laplacian };
enum class Chroma { direct, box };

// The steps of the sweep at which statistics are taken: those of both odd counters, line pair p
// from 1 to P - pairs_left_out and block column c from 1 to C - columns_left_out. What is sampled
// there is the group in the front end, `ahead` groups to the right and as many line pairs below.
struct SampledSteps {
  int pairs_left_out, columns_left_out, ahead;
};

// A stage with lead n works on lines 2p + n and 2p + n + 1 while line pair p is emitted.
struct Leads {
  int front_end, green, colour;
};

struct ChainStages {
  uint32_t quality;
  Demosaic demosaic;
  FlatCells flat_cells;
  Edges edges;
  Chroma chroma;
  Leads leads;
  Gathering gathering;
  SampledSteps sampled;
  std::optional<SampledSteps> sampled_with_filter;  // empty: has no medium filter
};

const ChainStages &stages_of(uint32_t quality);

}  // namespace ppl_model
