#include "simulator/simulator.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <vector>

#include "simulator/portable_math.h"
#include "simulator/scenes.h"

using ppl::simulator::Light;
namespace math = ppl::simulator::math;

namespace {

constexpr double white_level = 0.8;  // of the range above black, at 0 stops
constexpr double reference_kelvin = 6500;
constexpr double default_full_well = 8000;

// SplitMix64 (Steele, Lea and Flood, 2014): a counter and a mixing function.
class Random {
 public:
  explicit Random(uint64_t seed) : state_(seed) {}

  uint64_t next() {
    state_ += 0x9E3779B97F4A7C15u;
    uint64_t z = state_;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
  }

  uint32_t below(uint32_t bound) { return static_cast<uint32_t>((next() >> 32) * bound >> 32); }

  // Mean 0, variance 1: the sum of twelve 16-bit numbers, each of variance 65536 squared over 12.
  double normal() {
    uint32_t sum = 0;
    for (int i = 0; i < 3; ++i) {
      const uint64_t four = next();
      sum += static_cast<uint32_t>((four & 0xFFFF) + (four >> 16 & 0xFFFF) + (four >> 32 & 0xFFFF) +
                                   (four >> 48));
    }
    return (static_cast<double>(sum) - 12 * 32767.5) / 65536;
  }

 private:
  uint64_t state_;
};

bool within(double value, double low, double high) { return value >= low && value <= high; }

// A black body's radiation at one wavelength, up to a factor that depends on the wavelength alone.
double black_body(double nanometres, double kelvin) {
  constexpr double second_radiation_constant = 1.438776877e7;  // nm K
  return 1 / (math::exp(second_radiation_constant / (nanometres * kelvin)) - 1);
}

enum Channel { red, green, blue };

// Even lines B Gb, odd lines Gr R.
Channel channel_at(uint32_t x, uint32_t y) {
  if ((x ^ y) & 1) return green;
  return y & 1 ? red : blue;
}

bool is_frame_size(uint32_t width, uint32_t height) {
  const auto fits = [](uint32_t n) { return n >= 2 && n <= 8192 && n % 2 == 0; };
  return fits(width) && fits(height);
}

}  // namespace

struct PplSimulator {
  uint32_t width, height;
  uint64_t seed;
  uint64_t frames_rendered = 0;
  std::vector<Light> scene;

  double stops = 0;
  double gains[3] = {1, 1, 1};
  double black_level = 0;
  double full_well = default_full_well, read_noise = 20;
  double crosstalk = 0.15;
  struct Defect {
    uint32_t position;
    uint8_t value;
  };
  std::vector<Defect> defects;

  double signal(uint32_t x, uint32_t y, Channel channel) const {
    const Light &light = scene[static_cast<size_t>(y) * width + x];
    const double own = channel == red ? light.r : channel == green ? light.g : light.b;
    const double all = static_cast<double>(light.r) + light.g + light.b;
    return (1 - 2 * crosstalk) * own + crosstalk * (all - own);
  }
};

namespace {

PplSimulator *create(uint32_t width, uint32_t height, uint64_t seed) {
  auto *simulator = new PplSimulator;
  simulator->width = width;
  simulator->height = height;
  simulator->seed = seed;
  return simulator;
}

// One axis of the scaling: the source interval that one frame pixel covers.
struct Span {
  double from, to;
};

// The mean light of a rectangle of the picture; pixels on its border count by their part inside.
Light mean_light(const uint8_t *rgb, uint32_t picture_width, uint32_t picture_height, Span across,
                 Span down) {
  double r = 0, g = 0, b = 0, area = 0;
  const auto last_column = std::min(static_cast<uint32_t>(std::ceil(across.to)), picture_width);
  const auto last_row = std::min(static_cast<uint32_t>(std::ceil(down.to)), picture_height);
  for (auto y = static_cast<uint32_t>(down.from); y < last_row; ++y) {
    const double part_down = std::min<double>(y + 1, down.to) - std::max<double>(y, down.from);
    for (auto x = static_cast<uint32_t>(across.from); x < last_column; ++x) {
      const double part =
          part_down * (std::min<double>(x + 1, across.to) - std::max<double>(x, across.from));
      const uint8_t *pixel = rgb + 3 * (static_cast<size_t>(y) * picture_width + x);
      r += part * ppl::simulator::srgb_to_linear(pixel[0]);
      g += part * ppl::simulator::srgb_to_linear(pixel[1]);
      b += part * ppl::simulator::srgb_to_linear(pixel[2]);
      area += part;
    }
  }
  return {static_cast<float>(r / area), static_cast<float>(g / area), static_cast<float>(b / area)};
}

}  // namespace

extern "C" {

const char *ppl_simulator_scene_name(uint32_t index) {
  for (uint32_t i = 0;; ++i)
    if (i == index || !ppl::simulator::scene_names[i].name)
      return ppl::simulator::scene_names[i].name;
}

const char *ppl_simulator_scene_text(uint32_t index) {
  for (uint32_t i = 0;; ++i)
    if (i == index || !ppl::simulator::scene_names[i].name)
      return ppl::simulator::scene_names[i].text;
}

PplSimulator *ppl_simulator_create(const char *scene, uint32_t width, uint32_t height,
                                   uint64_t seed) {
  if (!scene || !is_frame_size(width, height)) return nullptr;
  try {
    std::vector<Light> light;
    if (!ppl::simulator::render_scene(scene, width, height, light)) return nullptr;
    PplSimulator *simulator = create(width, height, seed);
    simulator->scene.swap(light);
    return simulator;
  } catch (const std::bad_alloc &) {
    return nullptr;
  }
}

PplSimulator *ppl_simulator_create_from_rgb(const uint8_t *rgb, uint32_t picture_width,
                                            uint32_t picture_height, uint32_t width,
                                            uint32_t height, uint64_t seed) {
  if (!rgb || picture_width == 0 || picture_height == 0 || !is_frame_size(width, height))
    return nullptr;
  try {
    // Source pixels a frame pixel, the same in both directions.
    const double scale = std::min(static_cast<double>(picture_width) / width,
                                  static_cast<double>(picture_height) / height);
    const double left = (picture_width - scale * width) / 2,
                 top = (picture_height - scale * height) / 2;
    std::vector<Light> light;
    light.reserve(static_cast<size_t>(width) * height);
    for (uint32_t y = 0; y < height; ++y)
      for (uint32_t x = 0; x < width; ++x)
        light.push_back(mean_light(rgb, picture_width, picture_height,
                                   {left + scale * x, left + scale * (x + 1)},
                                   {top + scale * y, top + scale * (y + 1)}));
    PplSimulator *simulator = create(width, height, seed);
    simulator->scene.swap(light);
    return simulator;
  } catch (const std::bad_alloc &) {
    return nullptr;
  }
}

void ppl_simulator_free(PplSimulator *simulator) { delete simulator; }

uint8_t ppl_simulator_set_exposure(PplSimulator *simulator, double stops) {
  if (!within(stops, -20, 20)) return 0;
  simulator->stops = stops;
  return 1;
}

uint8_t ppl_simulator_set_illuminant(PplSimulator *simulator, double kelvin) {
  if (!within(kelvin, 1500, 25000)) return 0;
  constexpr double nanometres[3] = {600, 540, 460};
  double relative[3];
  for (int channel = 0; channel < 3; ++channel)
    relative[channel] =
        black_body(nanometres[channel], kelvin) / black_body(nanometres[channel], reference_kelvin);
  for (int channel = 0; channel < 3; ++channel)
    simulator->gains[channel] = relative[channel] / relative[green];
  return 1;
}

uint8_t ppl_simulator_set_channel_gains(PplSimulator *simulator, double r, double g, double b) {
  if (!within(r, 0, 64) || !within(g, 0, 64) || !within(b, 0, 64)) return 0;
  simulator->gains[red] = r;
  simulator->gains[green] = g;
  simulator->gains[blue] = b;
  return 1;
}

uint8_t ppl_simulator_set_black_level(PplSimulator *simulator, double codes) {
  if (!within(codes, 0, 128)) return 0;
  simulator->black_level = codes;
  return 1;
}

uint8_t ppl_simulator_set_noise(PplSimulator *simulator, double full_well, double read_noise) {
  if (!within(full_well, 0, 1e9) || !within(read_noise, 0, 1e6)) return 0;
  simulator->full_well = full_well;
  simulator->read_noise = read_noise;
  return 1;
}

uint8_t ppl_simulator_set_crosstalk(PplSimulator *simulator, double fraction) {
  if (!within(fraction, 0, 1.0 / 3)) return 0;
  simulator->crosstalk = fraction;
  return 1;
}

uint8_t ppl_simulator_set_defects(PplSimulator *simulator, uint32_t hot, uint32_t dead) {
  const uint32_t pixels = simulator->width * simulator->height;
  if (hot > pixels / 100 || dead > pixels / 100 - hot) return 0;
  // The places are the sensor's own: they depend on the seed alone.
  Random random(simulator->seed ^ 0xDEFEC7ED);
  std::vector<PplSimulator::Defect> defects;
  for (uint32_t i = 0; i < hot + dead; ++i) {
    uint32_t position;
    do position = random.below(pixels);
    while (std::any_of(defects.begin(), defects.end(),
                       [&](const auto &d) { return d.position == position; }));
    defects.push_back({position, static_cast<uint8_t>(i < hot ? 255 : 0)});
  }
  simulator->defects.swap(defects);
  return 1;
}

void ppl_simulator_channel_gains(const PplSimulator *simulator, double *r, double *g, double *b) {
  *r = simulator->gains[red];
  *g = simulator->gains[green];
  *b = simulator->gains[blue];
}

uint32_t ppl_simulator_width(const PplSimulator *simulator) { return simulator->width; }
uint32_t ppl_simulator_height(const PplSimulator *simulator) { return simulator->height; }

void ppl_simulator_render(PplSimulator *simulator, uint8_t *raw) {
  // Every frame has a stream of its own, so that a frame does not depend on the sizes of those
  // before.
  Random random(
      Random(simulator->seed + 0x632BE59BD9B4E019u * ++simulator->frames_rendered).next());
  const double exposure = white_level * math::exp(simulator->stops * 0.693147180559945309417);
  const bool shot_noise = simulator->full_well > 0;
  const double full_well = shot_noise ? simulator->full_well : default_full_well;
  const double read_variance = simulator->read_noise * simulator->read_noise;
  const double range = 255 - simulator->black_level;

  uint8_t *out = raw;
  for (uint32_t y = 0; y < simulator->height; ++y) {
    for (uint32_t x = 0; x < simulator->width; ++x) {
      const Channel channel = channel_at(x, y);
      double electrons =
          simulator->signal(x, y, channel) * simulator->gains[channel] * exposure * full_well;
      const double variance = (shot_noise ? electrons : 0) + read_variance;
      if (variance > 0) electrons += std::sqrt(variance) * random.normal();
      const double code = simulator->black_level + electrons / full_well * range;
      *out++ = static_cast<uint8_t>(std::clamp(std::floor(code + 0.5), 0.0, 255.0));
    }
  }
  for (const PplSimulator::Defect &defect : simulator->defects) raw[defect.position] = defect.value;
}

void ppl_simulator_scene_rgb(const PplSimulator *simulator, uint8_t *rgb) {
  for (const Light &light : simulator->scene) {
    *rgb++ = ppl::simulator::linear_to_srgb(light.r);
    *rgb++ = ppl::simulator::linear_to_srgb(light.g);
    *rgb++ = ppl::simulator::linear_to_srgb(light.b);
  }
}

}  // extern "C"
