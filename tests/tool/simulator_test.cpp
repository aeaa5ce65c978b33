#include "simulator/simulator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

struct FreeSimulator {
  void operator()(PplSimulator *simulator) const { ppl_simulator_free(simulator); }
};
using Simulator = std::unique_ptr<PplSimulator, FreeSimulator>;
using Frame = std::vector<uint8_t>;

constexpr uint32_t width = 128, height = 96;

Simulator make(const char *scene, uint64_t seed = 1) {
  return Simulator(ppl_simulator_create(scene, width, height, seed));
}

Simulator make_flat_colour(uint8_t r, uint8_t g, uint8_t b) {
  const uint8_t pixel[3] = {r, g, b};
  return Simulator(ppl_simulator_create_from_rgb(pixel, 1, 1, width, height, 1));
}

Frame render(const Simulator &simulator) {
  Frame frame(size_t{ppl_simulator_width(simulator.get())} * ppl_simulator_height(simulator.get()));
  ppl_simulator_render(simulator.get(), frame.data());
  return frame;
}

void turn_noise_off(const Simulator &simulator) { ppl_simulator_set_noise(simulator.get(), 0, 0); }

double mean(const Frame &frame) {
  double sum = 0;
  for (const uint8_t sample : frame) sum += sample;
  return sum / static_cast<double>(frame.size());
}

double variance(const Frame &frame) {
  const double m = mean(frame);
  double sum = 0;
  for (const uint8_t sample : frame) sum += (sample - m) * (sample - m);
  return sum / static_cast<double>(frame.size());
}

uint64_t fnv1a(const Frame &frame) {
  uint64_t hash = 0xCBF29CE484222325u;
  for (const uint8_t byte : frame) hash = (hash ^ byte) * 0x100000001B3u;
  return hash;
}

TEST(Simulator, SameSettingsGiveTheSameFrames) {
  const Simulator a = make("chart", 5), b = make("chart", 5);
  EXPECT_EQ(render(a), render(b));
  EXPECT_EQ(render(a), render(b));  // the second frames, too
}

TEST(Simulator, FramesAndSeedsDifferInNoise) {
  const Simulator a = make("chart", 5), b = make("chart", 6);
  const Frame first = render(a);
  EXPECT_NE(first, render(a));
  EXPECT_NE(first, render(b));
}

TEST(Simulator, NoiseDoesNotDependOnEarlierSettings) {
  const Simulator a = make("chart", 5), b = make("chart", 5);
  ppl_simulator_set_noise(a.get(), 0, 0);
  render(a);
  render(b);
  ppl_simulator_set_noise(a.get(), 8000, 20);
  EXPECT_EQ(render(a), render(b));
}

// A platform or compiler that rounds otherwise would give another sum.
TEST(Simulator, EveryPlatformRendersTheSameBytes) {
  const Simulator simulator = make("chart");
  ppl_simulator_set_illuminant(simulator.get(), 2850);
  ppl_simulator_set_exposure(simulator.get(), 0.3);
  ppl_simulator_set_defects(simulator.get(), 3, 3);
  EXPECT_EQ(fnv1a(render(simulator)), 0xA6C6442523182B06u);
}

TEST(Simulator, OneStopDoublesTheSignalAboveBlack) {
  const Simulator simulator = make("flat");
  for (const double black : {0.0, 16.0}) {
    ppl_simulator_set_black_level(simulator.get(), black);
    ppl_simulator_set_exposure(simulator.get(), 0);
    const double low = mean(render(simulator)) - black;
    ppl_simulator_set_exposure(simulator.get(), 1);
    const double high = mean(render(simulator)) - black;
    EXPECT_NEAR(high / low, 2, 0.01);
  }
}

TEST(Simulator, DiffuseWhiteFillsFourFifthsOfTheRange) {
  const Simulator simulator = make_flat_colour(255, 255, 255);
  turn_noise_off(simulator);
  EXPECT_EQ(render(simulator), Frame(width * height, 204));
  ppl_simulator_set_black_level(simulator.get(), 55);
  EXPECT_EQ(render(simulator), Frame(width * height, 55 + 160));
}

TEST(Simulator, SignalIsHeldAt255) {
  const Simulator simulator = make_flat_colour(255, 255, 255);
  ppl_simulator_set_exposure(simulator.get(), 3);
  EXPECT_EQ(render(simulator), Frame(width * height, 255));
}

TEST(Simulator, DarknessReadsTheBlackLevel) {
  const Simulator simulator = make_flat_colour(0, 0, 0);
  turn_noise_off(simulator);
  for (const uint8_t black : {uint8_t{0}, uint8_t{16}, uint8_t{128}}) {
    ppl_simulator_set_black_level(simulator.get(), black);
    EXPECT_EQ(render(simulator), Frame(width * height, black));
  }
}

TEST(Simulator, MosaicStartsWithBlue) {
  struct {
    uint8_t r, g, b;
    bool lit[2][2];  // [odd line][odd column]
  } const cases[] = {
      {255, 0, 0, {{false, false}, {false, true}}},
      {0, 255, 0, {{false, true}, {true, false}}},
      {0, 0, 255, {{true, false}, {false, false}}},
  };
  for (const auto &c : cases) {
    const Simulator simulator = make_flat_colour(c.r, c.g, c.b);
    turn_noise_off(simulator);
    ppl_simulator_set_crosstalk(simulator.get(), 0);
    const Frame frame = render(simulator);
    for (uint32_t y = 0; y < height; ++y)
      for (uint32_t x = 0; x < width; ++x)
        ASSERT_EQ(frame[y * width + x], c.lit[y % 2][x % 2] ? 204 : 0) << x << "," << y;
  }
}

TEST(Simulator, CrosstalkLeaksIntoTheOtherColoursAndKeepsGrey) {
  const Simulator red = make_flat_colour(255, 0, 0);
  turn_noise_off(red);
  ppl_simulator_set_crosstalk(red.get(), 0.25);
  const Frame frame = render(red);
  EXPECT_EQ(frame[0], 51);           // blue: a quarter of 204
  EXPECT_EQ(frame[1], 51);           // green
  EXPECT_EQ(frame[width + 1], 102);  // red keeps a half
  const Simulator grey = make_flat_colour(255, 255, 255);
  turn_noise_off(grey);
  ppl_simulator_set_crosstalk(grey.get(), 0.25);
  EXPECT_EQ(render(grey), Frame(width * height, 204));
}

TEST(Simulator, ShotNoiseHasTheVarianceOfItsElectrons) {
  const Simulator simulator = make_flat_colour(188, 188, 188);  // half of diffuse white
  ppl_simulator_set_noise(simulator.get(), 1000, 0);
  const Frame frame = render(simulator);
  const double code_per_electron = 255.0 / 1000;
  const double electrons = mean(frame) / code_per_electron;
  EXPECT_NEAR(electrons, 400, 8);
  const double rounding = 1.0 / 12;
  EXPECT_NEAR((variance(frame) - rounding) / (code_per_electron * code_per_electron), electrons,
              0.06 * electrons);
}

TEST(Simulator, ReadNoiseHasTheVarianceItIsGiven) {
  const Simulator simulator = make_flat_colour(0, 0, 0);
  ppl_simulator_set_black_level(simulator.get(), 64);
  ppl_simulator_set_noise(simulator.get(), 1910, 60);  // 0.1 steps an electron
  const Frame frame = render(simulator);
  EXPECT_NEAR(mean(frame), 64, 0.3);
  EXPECT_NEAR(variance(frame), 36 + 1.0 / 12, 2);
}

TEST(Simulator, DefectsStayInTheirPlaces) {
  const Simulator simulator = make("flat", 9);
  turn_noise_off(simulator);
  ASSERT_TRUE(ppl_simulator_set_defects(simulator.get(), 5, 7));
  const Frame first = render(simulator);
  EXPECT_EQ(std::count(first.begin(), first.end(), 255), 5);
  EXPECT_EQ(std::count(first.begin(), first.end(), 0), 7);
  EXPECT_EQ(first, render(simulator));
}

TEST(Simulator, IlluminantShiftsRedAgainstBlueAndKeepsGreen) {
  const Simulator simulator = make("flat");
  double r = 0, g = 0, b = 0, warmer_r = 0, warmer_b = 0;
  ASSERT_TRUE(ppl_simulator_set_illuminant(simulator.get(), 6500));
  ppl_simulator_channel_gains(simulator.get(), &r, &g, &b);
  EXPECT_EQ(r, 1);
  EXPECT_EQ(g, 1);
  EXPECT_EQ(b, 1);
  ASSERT_TRUE(ppl_simulator_set_illuminant(simulator.get(), 2850));
  ppl_simulator_channel_gains(simulator.get(), &warmer_r, &g, &warmer_b);
  EXPECT_GT(warmer_r, 1.3);
  EXPECT_EQ(g, 1);
  EXPECT_LT(warmer_b, 0.6);
}

TEST(Simulator, ChannelGainsScaleTheirColour) {
  const Simulator simulator = make_flat_colour(255, 255, 255);
  turn_noise_off(simulator);
  ASSERT_TRUE(ppl_simulator_set_channel_gains(simulator.get(), 0.25, 0.5, 1));
  const Frame frame = render(simulator);
  EXPECT_EQ(frame[0], 204);
  EXPECT_EQ(frame[1], 102);
  EXPECT_EQ(frame[width], 102);
  EXPECT_EQ(frame[width + 1], 51);
}

TEST(Simulator, PictureOfTheFrameSizeIsTheSceneItself) {
  Frame picture(3 * width * height), scene(picture.size());
  for (size_t i = 0; i < picture.size(); ++i) picture[i] = static_cast<uint8_t>(i * 7 + i / 256);
  const Simulator simulator(
      ppl_simulator_create_from_rgb(picture.data(), width, height, width, height, 1));
  ppl_simulator_scene_rgb(simulator.get(), scene.data());
  EXPECT_EQ(scene, picture);
}

TEST(Simulator, LargerPictureIsAveragedInLinearLightAndCutEvenly) {
  // Four by two pixels to two by two: the outer columns are cut off.
  const uint8_t picture[] = {9, 9, 9, 0, 0, 0, 255, 255, 255, 9, 9, 9,  //
                             9, 9, 9, 0, 0, 0, 255, 255, 255, 9, 9, 9};
  uint8_t scene[12];
  const Simulator same(ppl_simulator_create_from_rgb(picture, 4, 2, 2, 2, 1));
  ppl_simulator_scene_rgb(same.get(), scene);
  EXPECT_EQ(Frame(scene, scene + 12), (Frame{0, 0, 0, 255, 255, 255, 0, 0, 0, 255, 255, 255}));

  // Stripes one pixel wide give half the light, which is code 188.
  Frame stripes;
  for (int i = 0; i < 16; ++i) stripes.insert(stripes.end(), 3, i % 2 ? 255 : 0);
  const Simulator halved(ppl_simulator_create_from_rgb(stripes.data(), 4, 4, 2, 2, 1));
  ppl_simulator_scene_rgb(halved.get(), scene);
  EXPECT_EQ(Frame(scene, scene + 12), Frame(12, 188));
}

TEST(Simulator, EverySceneRendersSomethingOfItsOwn) {
  std::vector<Frame> frames;
  for (uint32_t i = 0; const char *name = ppl_simulator_scene_name(i); ++i) {
    EXPECT_NE(ppl_simulator_scene_text(i), nullptr);
    const Simulator simulator = make(name);
    ASSERT_TRUE(simulator) << name;
    turn_noise_off(simulator);
    frames.push_back(render(simulator));
  }
  EXPECT_GE(frames.size(), 8u);
  for (size_t a = 0; a < frames.size(); ++a)
    for (size_t b = 0; b < a; ++b) EXPECT_NE(frames[a], frames[b]);
}

TEST(Simulator, RefusesWhatItCannotDo) {
  const uint8_t pixel[3] = {};
  EXPECT_EQ(ppl_simulator_create("no such scene", 64, 48, 1), nullptr);
  EXPECT_EQ(ppl_simulator_create(nullptr, 64, 48, 1), nullptr);
  EXPECT_EQ(ppl_simulator_create_from_rgb(nullptr, 1, 1, 64, 48, 1), nullptr);
  EXPECT_EQ(ppl_simulator_create_from_rgb(pixel, 0, 1, 64, 48, 1), nullptr);
  for (const uint32_t bad : {0u, 1u, 63u, 8193u, 8194u}) {
    EXPECT_EQ(ppl_simulator_create("flat", bad, 48, 1), nullptr) << bad;
    EXPECT_EQ(ppl_simulator_create("flat", 64, bad, 1), nullptr) << bad;
  }
  const Simulator simulator = make("flat");
  turn_noise_off(simulator);
  const Frame before = render(simulator);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const double bad : {-21.0, 21.0, nan})
    EXPECT_EQ(ppl_simulator_set_exposure(simulator.get(), bad), 0);
  for (const double bad : {1499.0, 25001.0, nan})
    EXPECT_EQ(ppl_simulator_set_illuminant(simulator.get(), bad), 0);
  for (const double bad : {-0.1, 65.0, nan})
    EXPECT_EQ(ppl_simulator_set_channel_gains(simulator.get(), 1, bad, 1), 0);
  for (const double bad : {-1.0, 129.0, nan})
    EXPECT_EQ(ppl_simulator_set_black_level(simulator.get(), bad), 0);
  EXPECT_EQ(ppl_simulator_set_noise(simulator.get(), -1, 0), 0);
  EXPECT_EQ(ppl_simulator_set_noise(simulator.get(), 1000, -1), 0);
  EXPECT_EQ(ppl_simulator_set_crosstalk(simulator.get(), 0.34), 0);
  EXPECT_EQ(ppl_simulator_set_defects(simulator.get(), 100, 23), 0);
  EXPECT_EQ(ppl_simulator_set_defects(simulator.get(), 0xFFFFFFFF, 1), 0);
  EXPECT_EQ(render(simulator), before);
  ppl_simulator_free(nullptr);
}

}  // namespace
