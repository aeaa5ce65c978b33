#include <algorithm>
#include <cmath>

#include "words.h"

namespace ppl {
namespace {

// The kernels drop the lowest three bits, so the nearest multiple of 8 serves best.
int64_t fixed88_gain(double gain) { return std::lround(gain * 32) * 8; }

}  // namespace

AutoExposure::AutoExposure() : AutoExposure(Settings{}) {}
AutoExposure::AutoExposure(const Settings &settings) : settings_(settings) {}

void AutoExposure::prepare(Controls &controls) const {
  const auto highest = std::lround(std::clamp(settings_.highest_sample, 0.0, 255.0));
  controls.set("qual_BmGb", {-255, 255});
  controls.set("qual_GrmR", {-255, 255});
  controls.set("qual_BmGb_p_GrmR", {-510, 510});
  controls.set("qual_BmGb_m_GrmR", {-510, 510});
  controls.set("qual_RGB", {0, highest, 0, highest, 0, highest});
}

void AutoExposure::update(const Statistics &statistics) {
  if (!statistics.has_bands)
    detail::refuse("quality ", statistics.quality,
                   " gathered no qualified means: take quality 0 to 3, 10, 11 or 14, with "
                   "statistics");
  const Rgb mean = statistics.qualified.steps();
  const double unclipped = double{1} * statistics.qualified_cells / statistics.cells;

  // Where much is clipped the mean of the rest says little: take a large step down.
  const bool is_clipped = unclipped < 0.9;
  const double limit = settings_.largest_step;
  if (is_clipped) {
    exposure_ -= unclipped < 0.6 ? limit : limit / 2;
  } else {
    const double step = std::log2(settings_.level / std::clamp(mean.g, 0.1, 255.0));
    exposure_ += std::clamp(step, -limit, limit);
  }

  // Too dark a frame tells nothing about colour.
  if (!settings_.white_balance || is_clipped || mean.r <= 1 || mean.b <= 1) return;
  r_gain_ = std::clamp(mean.g / mean.r, settings_.lowest_gain, settings_.highest_gain);
  b_gain_ = std::clamp(mean.g / mean.b, settings_.lowest_gain, settings_.highest_gain);
}

void AutoExposure::apply(Controls &controls) const {
  if (!settings_.white_balance) return;
  const std::array<int64_t, 3> gains = {fixed88_gain(r_gain_), 256, fixed88_gain(b_gain_)};
  // The tables that follow from the gains are not worth making anew for nothing.
  if (!std::ranges::equal(controls.get("rgb_gain"), gains)) controls.set("rgb_gain", gains);
}

}  // namespace ppl
