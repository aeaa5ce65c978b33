/* Auto-exposure and white balance, the way a capture program would do them.
 *
 * A camera looks at a grey card and coloured patches while the light changes: too dark and too
 * bright by three stops, warm and cold. After each frame the statistics that the library gathered
 * on its way through the pixels steer the exposure and the channel gains for the next one. The
 * sensor is simulated; everything else would be the same with a real one.
 *
 * Prints a table of the convergence; exits with 1 if a light was not mastered within 15 frames.
 */
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <memory>
#include <ppl.hpp>
#include <vector>

#include "simulator.h"

namespace {

constexpr uint32_t width = 640, height = 480;
constexpr int frames_per_light = 15;

using Bytes = std::vector<uint8_t>;
using Channels = std::array<double, 3>;  // B, G, R, as they stand in memory

// A grey card in the middle of patches whose colours cancel out. sRGB, R, G, B.
Bytes draw_scene() {
  constexpr uint8_t patches[6][3] = {{150, 75, 75},  {75, 134, 134}, {75, 150, 75},
                                     {136, 75, 136}, {75, 75, 150},  {132, 132, 75}};
  Bytes rgb;
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      const bool in_card =
          x >= width / 3 && x < 2 * width / 3 && y >= height / 3 && y < 2 * height / 3;
      const uint8_t *const patch = patches[(x / 80 + 2 * (y / 80)) % 6];
      for (int c = 0; c < 3; ++c) rgb.push_back(in_card ? 118 : patch[c]);
    }
  }
  return rgb;
}

// Mean of the grey card.
Channels measure_card(const Bytes &picture) {
  Channels sum = {};
  for (uint32_t y = height / 2 - 40; y < height / 2 + 40; ++y)
    for (uint32_t x = width / 2 - 40; x < width / 2 + 40; ++x)
      for (size_t c = 0; c < 3; ++c) sum[c] += picture[3 * (y * width + x) + c];
  for (double &channel : sum) channel /= 80 * 80;
  return sum;
}

bool is_neutral(const Channels &channels) {
  const auto [low, high] = std::minmax_element(channels.begin(), channels.end());
  return *high <= 1.03 * *low;
}

int run() {
  constexpr struct {
    double stops, kelvin;
  } lights[] = {{-3, 3000}, {3, 3000}, {3, 10000}, {-3, 10000}};

  const Bytes scene = draw_scene();
  const std::unique_ptr<PplSimulator, decltype(&ppl_simulator_free)> sensor(
      ppl_simulator_create_from_rgb(scene.data(), width, height, width, height, 1),
      ppl_simulator_free);
  if (!sensor) return 1;

  ppl::Pipeline pipeline(ppl::RawFormat{.width = width, .height = height},
                         {.format = ppl::PixelFormat::rgb24});
  Bytes raw(pipeline.input_bytes()), picture(pipeline.layout().bytes);
  const ppl::AutoExposure::Settings settings;
  ppl::AutoExposure steering(settings);
  steering.prepare(pipeline.controls());

  int failures = 0, number = 0;
  std::printf(
      "frame  light            exposure   level   gain r    b    grey card  r      g      b\n");
  for (const auto &light : lights) {
    bool is_settled = false;
    ppl_simulator_set_illuminant(sensor.get(), light.kelvin);
    for (int i = 0; i < frames_per_light; ++i, ++number) {
      const double exposure = steering.exposure();
      const double r_gain = steering.r_gain(), b_gain = steering.b_gain();
      ppl_simulator_set_exposure(sensor.get(), std::clamp(light.stops + exposure, -20.0, 20.0));
      ppl_simulator_render(sensor.get(), raw.data());

      pipeline.process(raw, picture);
      const ppl::Statistics statistics = pipeline.statistics();
      steering.update(statistics);
      steering.apply(pipeline.controls());

      const double level = statistics.qualified.steps().g;
      const Channels card = measure_card(picture);
      is_settled = std::fabs(level / settings.level - 1) < 0.05 && is_neutral(card);
      std::printf(
          "%5d  %+.0f stops %5.0f K   %+8.2f  %6.1f    %5.2f %5.2f          %6.1f %6.1f %6.1f%s\n",
          number, light.stops, light.kelvin, exposure, level, r_gain, b_gain, card[2], card[1],
          card[0], is_settled ? "  settled" : "");
    }
    if (!is_settled) ++failures;
  }
  if (failures == 0)
    std::printf("Settled in every light.\n");
  else
    std::printf("Not settled in %d of the lights.\n", failures);
  return failures ? 1 : 0;
}

}  // namespace

int main() {
  try {
    return run();
  } catch (const ppl::Error &error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
