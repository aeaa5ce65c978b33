// What the last frame left open.
#pragma once

#include <vector>

#include "model/model.h"

namespace ppl_model {

struct FrameReport {
  std::vector<FreeRange> free_bytes;
  bool picture_is_free = false;
  bool source_is_free = false;
  bool statistics_are_free = false;

  void everything_is_free() { picture_is_free = source_is_free = statistics_are_free = true; }
};

// The report of the frame under way, or of the last one.
FrameReport &report();

// The frame is left open, and with it what it would have left in the context for later frames.
void leave_frame_open(PplContext *ctx, Tier tier);

}  // namespace ppl_model
