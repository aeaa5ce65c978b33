#include "model/chain_green.h"

#include <cstdlib>

#include "model/arithmetic.h"

namespace ppl_model {

namespace {

// What the four samples along one direction say: the sum of the two greens less half the sum of the
// site's own colour, and the step between the greens.
struct Direction {
  int estimate, gradient;
};

Direction along(int second_before, int before, int after, int second_after) {
  return {before + after - ((second_before + second_after) >> 1), std::abs(before - after)};
}

uint8_t green_at_colour_site(const Parameters &params, const StageLines &frame, int y, int x) {
  // Above the frame this stage alone reflects about the line that it computes.
  const auto above = [&](int k) { return frame.at(y, y - k < 0 ? k : -k, x); };
  const auto below = [&](int k) { return frame.at(y, k, x); };
  const auto beside = [&](int k) { return frame.at(y, 0, x + k); };
  const Direction vertical = along(above(2), above(1), below(1), below(2));
  const Direction horizontal = along(beside(-2), beside(-1), beside(1), beside(2));

  const int threshold = params.CFA_T1_vec;
  const int larger = std::max(vertical.gradient, horizontal.gradient);
  const int smaller = std::min(vertical.gradient, horizontal.gradient);
  int half = (vertical.estimate + horizontal.estimate) >> 2;
  if (larger > threshold && smaller < threshold)
    half = (larger == horizontal.gradient ? vertical.estimate : horizontal.estimate) >> 1;
  return clamp_to_byte((frame.at(y, 0, x) >> 1) + half);
}

}  // namespace

Plane interpolate_green(const Parameters &params, const StageLines &frame) {
  Plane green(frame.width(), frame.height());
  for (int y = 0; y < green.height(); ++y)
    for (int x = 0; x < green.width(); ++x)
      green.at(y, x) = y % 2 != x % 2 ? static_cast<uint8_t>(frame.at(y, 0, x))
                                      : green_at_colour_site(params, frame, y, x);
  return green;
}

}  // namespace ppl_model
