#include "sheets/quality_comparison.h"

#include <algorithm>
#include <chrono>
#include <memory>

#include "base/failure.h"
#include "base/progress.h"
#include "library/quality.h"
#include "library/raw_stream.h"

namespace ppl::tool {
namespace {

// 4 and 9 are one, and 5 to 8 write nothing.
constexpr uint32_t qualities[] = {0, 1, 2, 3, 4, 10, 11, 12, 13, 14};
constexpr uint32_t reference_quality = 3;

// A context of the library with all that it takes to run frames.
struct Bench {
  Context context;
  std::unique_ptr<FrameRunner> runner;

  Bench(Size size, Format format, const ControlOptions &controls) {
    set_frame_size(context, size);
    controls.apply(context);
    if (ppl_decimation(context) != 0 || ppl_decimation_top_black_lines(context) != 0 ||
        ppl_decimation_bottom_black_lines(context) != 0)
      throw Failure("the comparison shows the frame at its own size: leave out decimation");
    if (ppl_h_mirror(context) || ppl_v_mirror(context))
      throw Failure("the comparison shows the frame as it stands: leave out mirrors");
    runner = std::make_unique<FrameRunner>(context, size, format);
  }
};

}  // namespace

Crop most_detail(const std::vector<uint8_t> &raw, Size frame, Size crop) {
  // Sums of all differences above and left of each place.
  const size_t stride = frame.width + 1;
  std::vector<uint64_t> sums(stride * (frame.height + 1));
  const auto at = [&](uint32_t x, uint32_t y) {
    return static_cast<int>(raw[static_cast<size_t>(y) * frame.width + x]);
  };
  // Squared, so that edges outweigh noise.
  const auto squared = [](int n) { return static_cast<uint64_t>(n * n); };
  for (uint32_t y = 0; y < frame.height; ++y) {
    uint64_t line = 0;
    for (uint32_t x = 0; x < frame.width; ++x) {
      if (x + 2 < frame.width) line += squared(at(x, y) - at(x + 2, y));
      if (y + 2 < frame.height) line += squared(at(x, y) - at(x, y + 2));
      sums[(y + 1) * stride + x + 1] = sums[y * stride + x + 1] + line;
    }
  }
  Crop best{0, 0, crop.width, crop.height};
  uint64_t most = 0;
  for (uint32_t y = 0; y + crop.height <= frame.height; y += 2) {
    for (uint32_t x = 0; x + crop.width <= frame.width; x += 2) {
      const uint64_t detail = sums[(y + crop.height) * stride + x + crop.width] +
                              sums[y * stride + x] - sums[(y + crop.height) * stride + x] -
                              sums[y * stride + x + crop.width];
      if (detail > most) {
        most = detail;
        best.x = x;
        best.y = y;
      }
    }
  }
  return best;
}

QualityComparison compare_qualities(const std::vector<uint8_t> &raw, Size size, Format format,
                                    const ControlOptions &controls, uint64_t rounds,
                                    const std::optional<Picture> &truth) {
  // Frames of 10 and 11 would leave flat cells behind that those of 0 and 1 show: see
  // ppl_set_quality.
  Bench smoothing(size, format, controls), others(size, format, controls);
  QualityComparison comparison{size, format, tier_of(others.context), rounds, {}};
  if (shows_stripes(others.context, format)) note_stripes(reference_quality);
  std::vector<std::vector<double>> times;
  for (const uint32_t quality : qualities) {
    if (!writes_picture(quality, format)) continue;
    const std::string numbers = quality == 4 ? "4, 9" : std::to_string(quality);
    comparison.results.push_back({quality, numbers, {}, 0, 0, 0, std::nullopt});
    times.emplace_back();
  }

  {
    Progress progress("round", rounds + 1);
    // A first round makes the pictures and warms up.
    for (uint64_t round = 0; round <= rounds; ++round) {
      for (size_t i = 0; i < times.size(); ++i) {
        QualityResult &result = comparison.results[i];
        Bench &bench = result.quality == 10 || result.quality == 11 ? smoothing : others;
        ppl_set_quality(bench.context, result.quality);
        std::copy(raw.begin(), raw.end(), bench.runner->raw());
        const FrameView frame = bench.runner->run();
        if (round == 0)
          result.picture = to_picture(frame);
        else
          times[i].push_back(
              std::chrono::duration<double, std::milli>(bench.runner->duration()).count());
      }
      progress.step();
    }
  }

  double reference = 0;
  for (size_t i = 0; i < times.size(); ++i) {
    QualityResult &result = comparison.results[i];
    std::sort(times[i].begin(), times[i].end());
    result.fastest_milliseconds = times[i].front();
    const size_t half = times[i].size() / 2;
    result.median_milliseconds =
        times[i].size() % 2 ? times[i][half] : (times[i][half - 1] + times[i][half]) / 2;
    if (result.quality == reference_quality) reference = result.fastest_milliseconds;
    if (truth) result.closeness = closeness(result.picture, *truth);
  }
  for (QualityResult &result : comparison.results)
    result.ratio = result.fastest_milliseconds / reference;
  return comparison;
}

}  // namespace ppl::tool
