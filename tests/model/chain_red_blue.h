// Red, green and blue at every pixel.
#pragma once

#include "model/chain_front_end.h"

namespace ppl_model {

struct Rgb {
  uint8_t R, G, B;
  bool operator==(const Rgb &) const = default;
};
using RgbImage = Grid<Rgb>;

// Red and blue through their differences from the green plane.
RgbImage demosaic_by_differences(const StageLines &frame, const Plane &green);
// Cascades of rounded averages.
RgbImage demosaic_by_averages(const StageLines &frame);
// Red and blue of these averages with the green plane.
RgbImage demosaic_by_averages(const StageLines &frame, const Plane &green);

// Every channel is the sample.
RgbImage grey_image(const Plane &samples);

}  // namespace ppl_model
