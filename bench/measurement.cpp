#include "measurement.h"

#include <algorithm>

namespace ppl::bench {

bool is_quiet(const Timing &timing, double fastest_probe) {
  constexpr double tolerance = 1.08;
  return !timing.interrupted && timing.probe <= tolerance * fastest_probe;
}

int count_quiet(const std::vector<Timing> &timings, double fastest_probe) {
  return static_cast<int>(std::count_if(
      timings.begin(), timings.end(),
      [fastest_probe](const Timing &timing) { return is_quiet(timing, fastest_probe); }));
}

Summary summarize(const std::vector<Timing> &timings, double fastest_probe, int required) {
  Summary summary;
  summary.noisy = count_quiet(timings, fastest_probe) < required;
  std::vector<double> times;
  for (const Timing &timing : timings) {
    if (summary.noisy || is_quiet(timing, fastest_probe)) times.push_back(timing.time);
  }
  if (times.empty()) return summary;
  std::sort(times.begin(), times.end());
  const size_t half = times.size() / 2;
  summary.minimum = times.front();
  summary.median = times.size() % 2 != 0 ? times[half] : (times[half - 1] + times[half]) / 2;
  summary.counted = static_cast<int>(times.size());
  return summary;
}

}  // namespace ppl::bench
