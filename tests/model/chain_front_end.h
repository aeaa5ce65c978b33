// Where the stages of a chain find the lines of the raw frame.
#pragma once

#include "model/front_end.h"

namespace ppl_model {

enum class LineStep { frame_stride, frame_width };

// One stage's way into the frame. The sweep moves a width and a stride for every line pair, and a
// stage steps from there by lines of its own: all the same place where both are equal, and only
// there.
class StageLines {
 public:
  // The stage works on lines 2p + lead and 2p + lead + 1 while line pair p is emitted.
  StageLines(const PplContext *ctx, uint8_t *src, int lead, LineStep step);

  // The even part of the frame.
  int width() const { return width_; }
  int height() const { return height_; }

  // Where a line that the stage works on starts.
  uint8_t *start(int line) const { return src_ + offset(pair_of(line), line); }

  // The sample dy lines below the line that is worked on; lines and columns off the frame are
  // reflected.
  int at(int line, int dy, int column) const;

 private:
  int pair_of(int line) const { return line < lead_ ? 0 : (line - lead_) / 2; }
  ptrdiff_t offset(int pair, int line) const {
    return pair * pair_distance_ + (line - 2 * pair) * step_;
  }

  uint8_t *src_;
  int lead_;
  int width_, height_;
  ptrdiff_t pair_distance_, step_;
};

// The front end of a chain: the one table of all chains, in place.
FrontEnd run_chain_front_end(const PplContext *ctx, const StageLines &lines);

}  // namespace ppl_model
