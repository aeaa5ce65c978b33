// How the controls of the table reach the library.
#pragma once

#include "library.h"
#include "ppl.hpp"

namespace ppl::detail {

// A context with what its getters do not tell.
struct ControlState {
  PplContext *context = nullptr;
  int64_t gamma = 0;
  int64_t contrast_c = 0;
  int64_t contrast_x = 0, contrast_y = 0;
  std::array<uint8_t, 256> contrast_curve = {};  // what contrast_c made of contrast_table
};

// A state for a fresh context.
ControlState fresh_state(PplContext *context);

// The controls that decide how a stream runs go through its output.
enum class OutputField { none, decimation, tier, quality, statistics, h_mirror, v_mirror };

// By its place in the table. `set` gets values that were tested; null where the output has the
// values.
struct ControlAccess {
  OutputField field = OutputField::none;
  bool (*set)(ControlState &, const int64_t *) = nullptr;
  void (*get)(const ControlState &, int64_t *) = nullptr;
  // The default of a control that others set, too; else null.
  const uint8_t *(*followed)(const ControlState &) = nullptr;
};

size_t place_of(const Control &control);
const ControlAccess &access_of(const Control &control);

}  // namespace ppl::detail
