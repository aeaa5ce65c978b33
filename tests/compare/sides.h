// The two sides of the comparison: the library and the reference model.
#pragma once

#include "context/context.h"
#include "model/model.h"
#include "ppl.h"
#include "testing/test_hooks.h"

namespace ppl_compare {

// One stream on both sides.
struct Pair {
  ::PplContext *library = nullptr;
  ppl_model::PplContext *model = nullptr;
  // The last frame's statistics were free to be anything, so the sides need not agree on them.
  bool statistics_are_free = false;

  bool live() const { return library != nullptr; }
};

}  // namespace ppl_compare
