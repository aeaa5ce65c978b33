// One raw frame at every quality.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/frame_format.h"
#include "library/context.h"
#include "library/control_options.h"
#include "pictures/metrics.h"
#include "pictures/picture.h"

namespace ppl::tool {

struct Crop {
  uint32_t x, y, width, height;
};

// The place of that size where neighbours of one colour differ most, squared, on whole cells.
Crop most_detail(const std::vector<uint8_t> &raw, Size frame, Size crop);

struct QualityResult {
  uint32_t quality;
  std::string numbers;  // "4, 9" where two are one
  Picture picture;
  double median_milliseconds, fastest_milliseconds;
  double ratio;  // of the fastest to that of quality 3
  std::optional<Closeness> closeness;
};

struct QualityComparison {
  Size size;
  Format format;
  Tier tier;
  uint64_t rounds;
  std::vector<QualityResult> results;  // of those that write the format
};

// Runs the frame `rounds` times at each quality. The qualities take turns, so that they share what
// the machine does meanwhile.
QualityComparison compare_qualities(const std::vector<uint8_t> &raw, Size size, Format format,
                                    const ControlOptions &controls, uint64_t rounds,
                                    const std::optional<Picture> &truth);

}  // namespace ppl::tool
