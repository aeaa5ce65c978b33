// The first arithmetic on each raw sample: black level, gain, offset, table.
#pragma once

#include <functional>

#include "model/context.h"
#include "model/plane.h"

namespace ppl_model {

// Even lines hold B and Gb, odd lines Gr and R.
struct FrontEnd {
  Plane black;     // black level subtracted
  Plane adjusted;  // gain and offset applied
  Plane looked_up;

  int width() const { return black.width(); }
  int pairs() const { return black.height() / 2; }
};

// Where each line of the frame starts.
using LineStarts = std::function<uint8_t *(int line)>;

// Takes the even part of the frame through the front end and leaves the result in the frame.
FrontEnd run_front_end(const PplContext *ctx, const ByteTable &table,
                       const LineStarts &line_starts);
// The same with lines that stand frame_stride apart.
FrontEnd run_front_end(const PplContext *ctx, const ByteTable &table, uint8_t *src);

// One sample.
uint8_t subtract_black(const Parameters &params, int line, int column, uint8_t sample);
uint8_t apply_gain_and_delta(const Parameters &params, int line, int column, uint8_t sample);

}  // namespace ppl_model
