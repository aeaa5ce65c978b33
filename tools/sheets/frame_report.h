// What the library's statistics say about one raw frame, and a verdict in plain words.
#pragma once

#include <ppl.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "library/context.h"
#include "pictures/picture.h"

namespace ppl::tool {

struct Rgb {
  double r = 0, g = 0, b = 0;
};

using Histogram = std::array<double, 256>;  // shares of all entries

struct Histograms {
  Histogram r{}, g{}, b{};
};

struct Verdict {
  enum class Grade { good, fair, bad };
  Grade grade;
  std::string text;
};

inline constexpr uint32_t window_columns = 8, window_rows = 6;

// Means are in sample steps, 0 to 255.
struct FrameReport {
  Size size;
  Tier tier;
  uint32_t quality;
  Picture picture;

  // Of the frame as the controls have it.
  uint32_t statistics_quality;  // that the following come from
  Rgb whole_frame, exposure_band, near_grey;
  double exposure_band_share, near_grey_share;  // of all cells
  Histograms near_grey_histograms;

  // Each window is divided by what a flat frame reads there; without a value where that is 0.
  uint32_t window_quality;
  std::vector<std::optional<Rgb>> windows;
  uint32_t window_width, window_height;  // in pixels
  bool h_mirror, v_mirror;               // the picture's; windows are those of the raw frame

  // Of all cells, whatever the bands.
  Histograms histograms;
  double near_white_share, near_black_share;  // cells with a sample, or all four, at the end
  double white_behind_gain_share;             // cells with all samples at the upper end
  Rgb balance;  // mean of the cells that are not near white, behind gain and delta

  Verdict exposure, white_balance;
  std::vector<std::string> notes;
};

// Samples within so many steps of an end count as near white or near black.
inline constexpr int end_steps = 5;

// The context has the controls in force; the frame has passed through it into the picture. The raw
// frame runs several times more, on contexts of its own.
class FrameReporter {
 public:
  FrameReporter(Size size, std::vector<std::string> assignments);

  FrameReport report(const PplContext *context, Picture picture,
                     const std::vector<uint8_t> &raw) const;

 private:
  Size size_;
  std::vector<std::string> assignments_;
};

}  // namespace ppl::tool
