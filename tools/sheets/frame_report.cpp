#include "sheets/frame_report.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "library/control_assignment.h"
#include "library/raw_stream.h"

namespace ppl::tool {
namespace {

using Grade = Verdict::Grade;

bool gathers_windows(uint32_t quality) {
  return quality <= 2 || (quality >= 10 && quality <= 12) || quality == 14;
}

// Means, bands and histograms.
bool gathers_rest(uint32_t quality) {
  return gathers_windows(quality) ? quality != 12 : quality == 3;
}

Rgb steps_of(const PplTriple *means) {
  return {means->r / 256.0, means->g / 256.0, means->b / 256.0};
}

Histogram shares_of(const uint32_t *bins) {
  double total = 0;
  for (int i = 0; i < 256; ++i) total += bins[i];
  Histogram shares{};
  for (size_t i = 0; i < 256; ++i) shares[i] = total > 0 ? bins[i] / total : 0;
  return shares;
}

struct Statistics {
  Rgb whole_frame, exposure_band, near_grey;
  double exposure_band_cells, near_grey_cells;
  std::vector<Rgb> windows;
  Histograms histograms;
};

Statistics statistics_of(const PplContext *context) {
  Statistics s;
  s.whole_frame = steps_of(ppl_rgb_means_whole_frame(context));
  s.exposure_band = steps_of(ppl_qAE_rgb_means_whole_frame(context));
  s.near_grey = steps_of(ppl_qual_rgb_means_whole_frame(context));
  s.exposure_band_cells = ppl_n_qAE_2x2_whole_frame(context);
  s.near_grey_cells = ppl_n_qual_2x2_whole_frame(context);
  const PplTriple *windows = ppl_rgb_means_sub_windows(context);
  for (uint32_t i = 0; i < window_columns * window_rows; ++i)
    s.windows.push_back(steps_of(&windows[i]));
  s.histograms = {shares_of(ppl_r_histogram(context)), shares_of(ppl_g_histogram(context)),
                  shares_of(ppl_b_histogram(context))};
  return s;
}

// The raw frame through a context that has these controls. I420 is the one format for which every
// quality and tier gathers what it can.
Statistics run(PplContext *context, Size size, const std::vector<uint8_t> &raw) {
  FrameRunner runner(context, size, Format::i420);
  std::memcpy(runner.raw(), raw.data(), raw.size());
  runner.run();
  return statistics_of(context);
}

void take_every_colour(PplContext *context) {
  ppl_set_qual_BmGb_min_max(context, -255, 255);
  ppl_set_qual_GrmR_min_max(context, -255, 255);
  ppl_set_qual_BmGb_p_GrmR_min_max(context, -510, 510);
  ppl_set_qual_BmGb_m_GrmR_min_max(context, -510, 510);
}

double ratio(double part, double whole) {
  return whole > 0 ? std::clamp(part / whole, 0.0, 1.0) : 0;
}

std::string percent(double share) {
  const double value = 100 * share;
  return value > 0 && value < 9.95 ? fmt::format("{:.1f} %", value)
                                   : fmt::format("{:.0f} %", value);
}

double brightness(const Rgb &rgb) { return (rgb.r + 2 * rgb.g + rgb.b) / 4; }

// Linear middle grey is 18 percent of full scale, so that these lie well off it on both sides.
constexpr double dark_level = 0.065, bright_level = 0.6;

Verdict judge_exposure(const FrameReport &report) {
  const double level = brightness(report.balance) / 255;
  if (report.near_white_share >= 0.05)
    return {Grade::bad,
            fmt::format("over-exposed: {} of cells near white", percent(report.near_white_share))};
  if (report.white_behind_gain_share >= 0.05)
    return {Grade::bad, fmt::format("over-exposed: gain turns {} of cells white",
                                    percent(report.white_behind_gain_share))};
  if (level >= bright_level)
    return {Grade::bad, fmt::format("over-exposed: the mean is {} of full scale", percent(level))};
  if (level <= dark_level)
    return {Grade::bad, fmt::format("under-exposed: the mean is {} of full scale", percent(level))};
  if (report.near_white_share >= 0.01)
    return {Grade::fair, fmt::format("exposure: fair, {} of cells near white",
                                     percent(report.near_white_share))};
  return {Grade::good, fmt::format("exposure: good, the mean is {} of full scale", percent(level))};
}

Verdict judge_white_balance(const FrameReport &report) {
  if (report.near_white_share > 0.8)
    return {Grade::fair, "white balance: unknown, too many cells near white"};
  const Rgb &mean = report.balance;
  if (brightness(mean) < 2 || mean.g < 1)
    return {Grade::fair, "white balance: unknown, the frame is too dark"};

  constexpr double tolerance = 0.08, far_off = 0.15;
  const double red = mean.r / mean.g - 1, blue = mean.b / mean.g - 1;
  const double worst = std::max(std::abs(red), std::abs(blue));
  const auto channel = [](const char *name, double off) {
    return fmt::format("{} {:.0f} % {}", name, 100 * std::abs(off), off < 0 ? "low" : "high");
  };
  const Grade grade = worst >= far_off ? Grade::bad : Grade::fair;
  const bool red_off = std::abs(red) >= tolerance, blue_off = std::abs(blue) >= tolerance;
  if (!red_off && !blue_off) return {Grade::good, "white balance: good"};
  // Where both deviate alike it is green that stands apart.
  if (red_off && blue_off && (red < 0) == (blue < 0) && std::abs(red - blue) < tolerance) {
    const double green = 2 / (2 + red + blue) - 1;
    return {grade, "white balance: " + channel("green", green)};
  }
  std::string text = "white balance: ";
  if (red_off) text += channel("red", red);
  if (red_off && blue_off) text += ", ";
  if (blue_off) text += channel("blue", blue);
  return {grade, text};
}

}  // namespace

FrameReporter::FrameReporter(Size size, std::vector<std::string> assignments)
    : size_(size), assignments_(std::move(assignments)) {}

FrameReport FrameReporter::report(const PplContext *context, Picture picture,
                                  const std::vector<uint8_t> &raw) const {
  // A context with the same controls, but for the quality.
  const auto configure = [&](PplContext *other, uint32_t quality) {
    set_frame_size(other, size_);
    for (const std::string &assignment : assignments_) set_control(other, assignment);
    ppl_set_quality(other, quality);
    ppl_set_mean_collection(other, 1);
  };
  const auto run_at = [&](uint32_t quality) {
    const Context other;
    configure(other, quality);
    return run(other, size_, raw);
  };

  FrameReport report;
  report.size = size_;
  report.tier = tier_of(context);
  report.quality = ppl_quality(context);
  report.picture = std::move(picture);
  report.h_mirror = ppl_h_mirror(context) != 0;
  report.v_mirror = ppl_v_mirror(context) != 0;

  const bool collects = ppl_mean_collection(context) != 0;
  if (!collects) report.notes.push_back("mean collection is off: it was on for the figures");
  const Statistics own = collects ? statistics_of(context) : run_at(report.quality);

  Statistics s = own;
  report.statistics_quality = report.quality;
  if (!gathers_rest(report.quality)) {
    report.statistics_quality = 3;
    s = run_at(3);
    report.notes.push_back(fmt::format(
        "quality {} does not gather all figures: means and histograms come from a second run at "
        "quality 3",
        report.quality));
  }
  report.whole_frame = s.whole_frame;
  report.exposure_band = s.exposure_band;
  report.near_grey = s.near_grey;
  const double cells = size_.width * size_.height / 4.0;
  report.exposure_band_share = ratio(s.exposure_band_cells, cells);
  report.near_grey_share = ratio(s.near_grey_cells, cells);
  report.near_grey_histograms = s.histograms;

  std::vector<Rgb> windows = own.windows;
  report.window_quality = report.quality;
  if (!gathers_windows(report.quality)) {
    report.window_quality = 1;
    windows = run_at(1).windows;
    report.notes.push_back(fmt::format(
        "quality {} gathers no windows: they come from a second run at quality 1", report.quality));
  }

  // Windows hold unequal numbers of sampled cells, which a flat frame shows.
  std::array<uint8_t, 256> identity;
  for (size_t i = 0; i < identity.size(); ++i) identity[i] = static_cast<uint8_t>(i);
  constexpr uint8_t flat_sample = 128;
  std::vector<Rgb> flat;
  {
    const Context other;
    set_frame_size(other, size_);
    ppl_set_P3_only(other, ppl_P3_only(context));
    if (ppl_medium_filter_enabled(context)) ppl_enable_medium_filter(other);
    ppl_set_quality(other, report.window_quality);
    ppl_copy_rgb_gamma_table(other, identity.data());
    flat = run(other, size_, std::vector<uint8_t>(raw.size(), flat_sample)).windows;
  }
  for (size_t i = 0; i < windows.size(); ++i) {
    if (flat[i].r <= 0 || flat[i].g <= 0 || flat[i].b <= 0) {
      report.windows.emplace_back();
      continue;
    }
    const auto level = [](double mean, double factor) {
      return std::min(255.0, mean * flat_sample / factor);
    };
    report.windows.push_back(Rgb{level(windows[i].r, flat[i].r), level(windows[i].g, flat[i].g),
                                 level(windows[i].b, flat[i].b)});
  }
  const uint32_t block = report.tier == Tier::sse2 ? 16 : 8;
  report.window_width = size_.width / block / window_columns * block;
  report.window_height = size_.height / 2 / window_rows * 2;

  // The rest is judged at quality 3, which samples the frame evenly up to its edges, and without
  // gamma, so that all figures are linear.
  uint32_t black_b = 0, black_gb = 0, black_gr = 0, black_r = 0;
  ppl_optical_black_b_gb_gr_r(context, &black_b, &black_gb, &black_gr, &black_r);
  const auto run_with_bands = [&](int32_t low, int32_t high, bool less_black) {
    const auto limit = [&](uint32_t black) {
      return less_black ? std::max(0, high - static_cast<int32_t>(black)) : high;
    };
    const Context other;
    configure(other, 3);
    ppl_copy_rgb_gamma_table(other, identity.data());
    take_every_colour(other);
    ppl_set_qual_RGB_min_max(other, low, limit(black_r), low, limit(std::max(black_gb, black_gr)),
                             low, limit(black_b));
    ppl_set_qAE_RGB_min_max(other, 0, 255 - end_steps);
    return run(other, size_, raw);
  };
  const Statistics all = run_with_bands(0, 255, false);
  const Statistics unclipped = run_with_bands(0, 255 - end_steps, true);
  const Statistics black = run_with_bands(0, end_steps, false);
  report.histograms = all.histograms;
  report.near_white_share = 1 - ratio(unclipped.near_grey_cells, all.near_grey_cells);
  report.near_black_share = ratio(black.near_grey_cells, all.near_grey_cells);
  report.white_behind_gain_share = 1 - ratio(all.exposure_band_cells, all.near_grey_cells);
  const Rgb &level = unclipped.near_grey_cells > 0 ? unclipped.near_grey : all.near_grey;
  const auto behind_gain = [](double value, int32_t gain, int32_t delta) {
    return std::clamp(value * gain / 256 + delta, 0.0, 255.0);
  };
  report.balance = {behind_gain(level.r, ppl_nf88_r_gain(context), ppl_r_delta(context)),
                    behind_gain(level.g, ppl_nf88_g_gain(context), ppl_g_delta(context)),
                    behind_gain(level.b, ppl_nf88_b_gain(context), ppl_b_delta(context))};

  report.exposure = judge_exposure(report);
  report.white_balance = judge_white_balance(report);
  return report;
}

}  // namespace ppl::tool
