#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "pictures/file_formats.h"
#include "sheets/canvas.h"
#include "sheets/statistics_sheet.h"
#include "tool/run_tool.h"

namespace ppl_test {
namespace {

using ppl::tool::Canvas;
using ppl::tool::Colour;
using ppl::tool::Picture;
using ppl::tool::statistics_sheet_size;

class Stats : public ToolTest {
 protected:
  static constexpr uint32_t width = 320, height = 240;

  // A frame without noise and defects.
  void simulate(const std::string &name, std::vector<std::string> more) const {
    std::vector<std::string> arguments{
        "simulate", "-o", name,          "--size", "320x240",      "--hot", "0",
        "--dead",   "0",  "--full-well", "0",      "--read-noise", "0"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    run_well(arguments);
  }

  // What was printed: the verdicts on exposure and white balance, a line each.
  std::string stats(const std::string &input, std::vector<std::string> more = {}) const {
    std::vector<std::string> arguments{"stats", input, "--size", "320x240", "-o", "sheet.png"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return run_well(arguments).out;
  }

  Picture sheet() const { return ppl::tool::read_png(path("sheet.png")); }

  // A frame whose samples have these values at B, Gb, Gr and R.
  static std::string flat(uint8_t b, uint8_t g, uint8_t r) {
    std::string frame;
    for (uint32_t y = 0; y < height; ++y)
      for (uint32_t x = 0; x < width; ++x)
        frame += static_cast<char>(y % 2 == x % 2 ? (y % 2 ? r : b) : g);
    return frame;
  }
};

TEST_F(Stats, SheetHasItsSizeWhateverTheFrame) {
  write("small.raw", std::string(128 * 18, 'x'));
  write("large.raw", std::string(1280 * 1024, 'x'));
  for (const auto &[name, size] : {std::pair{"small.raw", "128x18"}, {"large.raw", "1280x1024"}}) {
    run_well({"stats", name, "--size", size, "-o", "sheet.png"});
    EXPECT_EQ(sheet().size.width, statistics_sheet_size.width) << name;
    EXPECT_EQ(sheet().size.height, statistics_sheet_size.height) << name;
  }
}

TEST_F(Stats, PngPpmAndStandardOutputShowTheSame) {
  simulate("frame.raw", {});
  const std::string verdict = stats("frame.raw");
  EXPECT_EQ(count_lines(verdict), 2u);
  const ToolResult piped =
      run_well({"stats", "-", "--size", "320x240", "-o", "-"}, read("frame.raw"));
  EXPECT_EQ(piped.out.substr(1, 3), "PNG");
  run_well({"stats", "frame.raw", "--size", "320x240", "-o", "sheet.ppm"});
  const std::string ppm = read("sheet.ppm");
  const std::vector<uint8_t> rgb = sheet().rgb;
  ASSERT_GT(ppm.size(), rgb.size());
  EXPECT_EQ(std::memcmp(ppm.data() + ppm.size() - rgb.size(), rgb.data(), rgb.size()), 0);
}

TEST_F(Stats, NormalFrameIsWellExposed) {
  simulate("frame.raw", {"--scene", "patches"});
  EXPECT_EQ(stats("frame.raw").rfind("exposure: good", 0), 0u) << stats("frame.raw");
}

TEST_F(Stats, BrightFrameIsOverExposed) {
  simulate("frame.raw", {"--scene", "patches", "--exposure", "2"});
  EXPECT_EQ(stats("frame.raw").rfind("over-exposed: ", 0), 0u) << stats("frame.raw");
}

TEST_F(Stats, DarkFrameIsUnderExposed) {
  simulate("frame.raw", {"--scene", "patches", "--exposure", "-4"});
  EXPECT_EQ(stats("frame.raw").rfind("under-exposed: ", 0), 0u) << stats("frame.raw");
}

TEST_F(Stats, ShareOfCellsNearWhiteIsCounted) {
  // White above, grey below: half of the cells.
  const std::string white = flat(255, 255, 255), grey = flat(60, 60, 60);
  write("frame.raw", white.substr(0, white.size() / 2) + grey.substr(grey.size() / 2));
  EXPECT_EQ(stats("frame.raw").rfind("over-exposed: 50 % of cells near white\n", 0), 0u)
      << stats("frame.raw");
}

TEST_F(Stats, SaturatedSamplesAreNearWhiteBehindBlackLevelToo) {
  write("frame.raw", flat(255, 255, 255));
  EXPECT_EQ(stats("frame.raw", {"--set", "optical_black_b_gb_gr_r=20,20,20,20"})
                .rfind("over-exposed: 100 % of cells near white\n", 0),
            0u);
}

TEST_F(Stats, GainThatMakesAFrameWhiteIsNamed) {
  write("frame.raw", flat(70, 70, 70));
  EXPECT_EQ(stats("frame.raw").rfind("exposure: good", 0), 0u);
  EXPECT_EQ(stats("frame.raw", {"--set", "rgb_gain=4.0,4.0,4.0"})
                .rfind("over-exposed: gain turns 100 % of cells white\n", 0),
            0u);
}

TEST_F(Stats, TintNamesItsChannelsWithDirectionAndAmount) {
  const struct {
    uint8_t b, g, r;
    const char *verdict;
  } tints[] = {
      {60, 60, 60, "white balance: good"},
      {60, 60, 30, "white balance: red 50 % low"},
      {60, 60, 90, "white balance: red 50 % high"},
      {36, 60, 60, "white balance: blue 40 % low"},
      {36, 60, 46, "white balance: red 23 % low, blue 40 % low"},
      {75, 60, 45, "white balance: red 25 % low, blue 25 % high"},
      {80, 60, 80, "white balance: green 25 % low"},
      {255, 255, 255, "white balance: unknown, too many cells near white"},
      {0, 0, 0, "white balance: unknown, the frame is too dark"},
  };
  for (const auto &tint : tints) {
    write("frame.raw", flat(tint.b, tint.g, tint.r));
    const std::string out = stats("frame.raw");
    EXPECT_EQ(out.substr(out.find('\n') + 1), std::string(tint.verdict) + "\n");
  }
}

TEST_F(Stats, GainsThatCorrectATintMakeTheWhiteBalanceGood) {
  write("frame.raw", flat(40, 60, 30));
  const std::string out = stats("frame.raw", {"--set", "rgb_gain=2.0,1.0,1.5"});
  EXPECT_NE(out.find("white balance: good\n"), std::string::npos) << out;
}

TEST_F(Stats, VerdictIsTheSameInEveryQualityTierAndBand) {
  simulate("frame.raw", {"--illuminant", "3000", "--exposure", "2"});
  const std::string verdict = stats("frame.raw");
  EXPECT_NE(verdict.find("over-exposed: "), std::string::npos) << verdict;
  EXPECT_NE(verdict.find("blue"), std::string::npos) << verdict;
  for (const char *quality : {"0", "4", "5", "12", "13", "14"})
    EXPECT_EQ(stats("frame.raw", {"--quality", quality}), verdict) << quality;
  EXPECT_EQ(stats("frame.raw", {"--tier", "p3"}), verdict);
  EXPECT_EQ(stats("frame.raw", {"--set", "mean_collection=0"}), verdict);
  EXPECT_EQ(stats("frame.raw", {"--set", "qual_RGB=50,60,50,60,50,60", "--set", "qAE_RGB=9,200"}),
            verdict);
}

TEST_F(Stats, FramesRunsSoManyAndDrawsTheLast) {
  write("film.raw", flat(60, 60, 60) + flat(60, 60, 30));
  EXPECT_NE(stats("film.raw").find("white balance: good"), std::string::npos);
  EXPECT_NE(stats("film.raw", {"--frames", "2"}).find("red 50 % low"), std::string::npos);
}

TEST_F(Stats, ErrorsAreOneLineAndLeaveNoSheet) {
  write("frame.raw", flat(60, 60, 60));
  const struct {
    int status;
    const char *phrase;
    std::vector<std::string> arguments;
  } cases[] = {
      {2, "--output is required", {"frame.raw", "--size", "320x240"}},
      {2, "--size is required", {"frame.raw", "-o", "sheet.png"}},
      {2, "name it .png or .ppm", {"frame.raw", "--size", "320x240", "-o", "sheet.jpg"}},
      {2, "is no frame size", {"frame.raw", "--size", "vga", "-o", "sheet.png"}},
      {2, "--frames takes", {"frame.raw", "--size", "320x240", "-o", "sheet.png", "--frames", "0"}},
      {1, "lower --frames", {"frame.raw", "--size", "320x240", "-o", "sheet.png", "--frames", "2"}},
      {1, "is too short", {"frame.raw", "--size", "640x480", "-o", "sheet.png"}},
      {1, "cannot read 'none.raw'", {"none.raw", "--size", "320x240", "-o", "sheet.png"}},
      {1, "cannot write", {"frame.raw", "--size", "320x240", "-o", "none/sheet.png"}},
      {1,
       "did you mean 'gamma'",
       {"frame.raw", "--size", "320x240", "-o", "sheet.png", "--set", "gama=1"}},
      {1,
       "leave out decimation",
       {"frame.raw", "--size", "320x240", "-o", "sheet.png", "--set", "decimation=1"}},
  };
  for (const auto &wrong : cases) {
    std::vector<std::string> arguments{"stats"};
    arguments.insert(arguments.end(), wrong.arguments.begin(), wrong.arguments.end());
    const ToolResult result = run(arguments);
    EXPECT_EQ(result.status, wrong.status) << wrong.phrase;
    EXPECT_EQ(result.out, "") << wrong.phrase;
    EXPECT_EQ(count_lines(result.err), 1u) << result.err;
    EXPECT_NE(result.err.find(wrong.phrase), std::string::npos) << result.err;
    EXPECT_EQ(files(), std::vector<std::string>{"frame.raw"}) << wrong.phrase;
  }
}

// The pixels of a canvas that have the colour.
int count(const Canvas &canvas, Colour colour) {
  int found = 0;
  const Picture &picture = canvas.picture();
  for (uint32_t y = 0; y < picture.size.height; ++y)
    for (uint32_t x = 0; x < picture.size.width; ++x) {
      const uint8_t *pixel = picture.pixel(x, y);
      found += pixel[0] == colour.r && pixel[1] == colour.g && pixel[2] == colour.b;
    }
  return found;
}

TEST(CanvasDrawing, CutsOffWhatLiesOutside) {
  constexpr Colour ink{9, 8, 7};
  Canvas canvas({10, 8}, {});
  canvas.fill({-5, -5, 7, 7}, ink);
  EXPECT_EQ(count(canvas, ink), 4);
  canvas.text(-3, 5, "outside on both sides", ink);
  canvas.line(-20, -20, 40, 40, ink);
  canvas.tint({8, 6, 50, 50}, ink, 1);
  canvas.outline({-2, -2, 30, 30}, ink);
}

TEST(CanvasDrawing, TextIsAsLargeAsSaid) {
  constexpr Colour ink{255, 255, 255};
  const int width = ppl::tool::text_width("HH", 2);
  EXPECT_EQ(width, 22);
  Canvas canvas({40, 20}, {});
  canvas.text_right(30, 3, "HH", ink);
  const Picture &picture = canvas.picture();
  EXPECT_EQ(picture.pixel(30 - 22, 3)[0], 255);
  EXPECT_EQ(picture.pixel(29, 3 + 13)[0], 255);
  EXPECT_EQ(picture.pixel(30, 3)[0], 0);
  EXPECT_EQ(picture.pixel(29, 3 + 14)[0], 0);
}

TEST(CanvasDrawing, PicturesShrinkByMeansAndGrowByPixels) {
  Picture picture({2, 1});
  picture.rgb = {10, 20, 30, 20, 40, 60};
  Canvas canvas({6, 2}, {});
  canvas.draw(picture, {0, 0, 1, 1});
  canvas.draw(picture, {1, 0, 4, 2});
  EXPECT_EQ(count(canvas, {15, 30, 45}), 1);
  EXPECT_EQ(count(canvas, {10, 20, 30}), 4);
  EXPECT_EQ(count(canvas, {20, 40, 60}), 4);
}

TEST(CanvasDrawing, BarsFillFromTheBottom) {
  constexpr Colour ink{1, 2, 3};
  Canvas canvas({4, 10}, {});
  canvas.bars(
      {0, 0, 4, 10}, 2, [](int i) { return i ? 7.0 : 0.3; }, ink);
  EXPECT_EQ(count(canvas, ink), 2 * 3 + 2 * 10);
  EXPECT_EQ(canvas.picture().pixel(0, 6)[0], 0);
  EXPECT_EQ(canvas.picture().pixel(0, 7)[0], 1);
}

}  // namespace
}  // namespace ppl_test
