#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "base/md5.h"
#include "pictures/file_formats.h"
#include "testing/test_hooks.h"
#include "tool/run_tool.h"

namespace ppl_test {
namespace {

using ppl::tool::Picture;

constexpr uint32_t width = 160, height = 96;
constexpr const char *frame_size = "160x96";

std::string md5_of(const std::string &data) {
  ppl::tool::Md5 md5;
  md5.update(reinterpret_cast<const uint8_t *>(data.data()), data.size());
  return md5.hex();
}

// A frame that was never written is black: luma 16, chroma 128.
auto bright_samples(const std::vector<uint8_t> &samples) {
  return std::count_if(samples.begin(), samples.end(), [](uint8_t v) { return v > 140; });
}

class Convert : public ToolTest {
 protected:
  void SetUp() override {
    ToolTest::SetUp();
    run_well({"simulate", "-o", "frame.raw", "--size", frame_size});
    run_well({"simulate", "-o", "film.raw", "--size", frame_size, "--frames", "3"});
  }

  ToolResult convert(const std::string &input, const std::string &output,
                     std::vector<std::string> more = {}) const {
    std::vector<std::string> arguments{"convert", input, "--size", frame_size, "-o", output};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return run_well(arguments, input == "-" ? read("film.raw") : "");
  }

  // The sum that was printed with --md5.
  static std::string printed_md5(const std::string &text) { return text.substr(0, text.find(' ')); }
};

TEST_F(Convert, FileStandardOutputAndMd5Agree) {
  for (const char *format : {"i420", "yuyv", "uyvy", "rgb24", "rgb32"}) {
    const ToolResult to_file = convert("film.raw", "out.bin", {"--format", format, "--md5"});
    EXPECT_EQ(to_file.out, md5_of(read("out.bin")) + "  out.bin\n");
    const ToolResult to_stdout =
        run({"convert", "film.raw", "--size", frame_size, "-o", "-", "--format", format, "--md5"});
    EXPECT_EQ(to_stdout.status, 0);
    EXPECT_EQ(to_stdout.out, read("out.bin"));
    EXPECT_EQ(to_stdout.err, md5_of(read("out.bin")) + "  -\n");
    const ToolResult sum_alone =
        run_well({"convert", "film.raw", "--size", frame_size, "--format", format, "--md5"});
    EXPECT_EQ(sum_alone.out, md5_of(read("out.bin")) + "  -\n");
  }
}

TEST_F(Convert, StandardInputServesAsAFile) {
  convert("film.raw", "from_file.yuv");
  convert("-", "from_stdin.yuv");
  EXPECT_EQ(read("from_file.yuv"), read("from_stdin.yuv"));
  EXPECT_EQ(read("from_file.yuv").size(), 3 * width * height * 3 / 2);
  convert("-", "two.yuv", {"--frames", "2"});
  EXPECT_EQ(read("two.yuv"), read("from_file.yuv").substr(0, 2 * width * height * 3 / 2));
}

TEST_F(Convert, FirstFrameIsNotLost) {
  for (const char *format : {"i420", "yuyv", "uyvy", "rgb24", "rgb32"}) {
    const std::string raw = read("frame.raw");
    write("twice.raw", raw + raw);
    convert("twice.raw", "out.bin", {"--format", format});
    const std::string both = read("out.bin");
    EXPECT_EQ(both.substr(0, both.size() / 2), both.substr(both.size() / 2)) << format;
    EXPECT_GT(bright_samples(bytes_of(both)), 1000) << format;
  }
}

TEST_F(Convert, InputIsLeftAlone) {
  const std::string before = read("frame.raw");
  convert("frame.raw", "out.png");
  EXPECT_EQ(read("frame.raw"), before);
}

TEST_F(Convert, PngAndPpmShowTheRgbFrame) {
  convert("frame.raw", "out.rgb", {"--format", "rgb24"});
  convert("frame.raw", "out.png");
  convert("frame.raw", "out.ppm");
  const std::string frame = read("out.rgb");
  const Picture png = ppl::tool::read_png(path("out.png"));
  ASSERT_EQ(png.size.width, width);
  ASSERT_EQ(png.size.height, height);
  const std::string ppm = read("out.ppm"), header = "P6\n160 96\n255\n";
  ASSERT_EQ(ppm.substr(0, header.size()), header);
  ASSERT_EQ(ppm.size(), header.size() + width * height * 3);
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      const size_t upside_down = 3 * ((height - 1 - y) * width + x), upright = 3 * (y * width + x);
      for (size_t c = 0; c < 3; ++c) {
        const auto expected = static_cast<uint8_t>(frame[upside_down + 2 - c]);
        ASSERT_EQ(png.pixel(x, y)[c], expected) << x << "," << y;
        ASSERT_EQ(static_cast<uint8_t>(ppm[header.size() + upright + c]), expected)
            << x << "," << y;
      }
    }
  }
}

TEST_F(Convert, PictureLooksLikeTheScene) {
  run_well({"simulate", "-o", "clean.raw", "--size", frame_size, "--scene", "patches", "--truth",
            "truth.png", "--hot", "0", "--dead", "0"});
  const Picture truth = ppl::tool::read_png(path("truth.png"));
  for (const char *format : {"i420", "yuyv", "uyvy", "rgb24", "rgb32"}) {
    convert("clean.raw", "out.png", {"--format", format});
    const Picture picture = ppl::tool::read_png(path("out.png"));
    // In the middle of each patch the channels come in the order that the scene has.
    int checked = 0;
    for (uint32_t row = 0; row < 3; ++row) {
      for (uint32_t column = 0; column < 6; ++column) {
        const uint32_t x = (2 * column + 1) * width / 12, y = (2 * row + 1) * height / 8;
        for (int a = 0; a < 3; ++a) {
          for (int b = 0; b < 3; ++b) {
            if (truth.pixel(x, y)[a] <= truth.pixel(x, y)[b] + 60) continue;
            EXPECT_GT(picture.pixel(x, y)[a], picture.pixel(x, y)[b])
                << format << " patch " << column << "," << row << " channels " << a << "," << b;
            ++checked;
          }
        }
      }
    }
    EXPECT_GT(checked, 20);
  }
}

TEST_F(Convert, Y4mHoldsTheFramesOfTheRawOutput) {
  convert("film.raw", "out.yuv");
  convert("film.raw", "out.y4m");
  const std::string frames = read("out.yuv");
  const size_t bytes = width * height * 3 / 2;
  std::string expected = "YUV4MPEG2 W160 H96 F30:1 Ip A1:1 C420jpeg XCOLORRANGE=LIMITED\n";
  for (size_t i = 0; i < 3; ++i) expected += "FRAME\n" + frames.substr(i * bytes, bytes);
  EXPECT_EQ(read("out.y4m"), expected);
}

TEST_F(Convert, AsOverrulesTheName) {
  convert("frame.raw", "out.png");
  convert("frame.raw", "picture", {"--as", "png"});
  EXPECT_EQ(read("picture"), read("out.png"));
  const std::string y4m = convert("frame.raw", "-", {"--as", "y4m"}).out;
  EXPECT_EQ(y4m.rfind("YUV4MPEG2 ", 0), 0u);
}

TEST_F(Convert, NumberedNamesTakeOnePictureEach) {
  convert("film.raw", "out_%02d.png");
  EXPECT_EQ(files(), (std::vector<std::string>{"film.raw", "frame.raw", "out_00.png", "out_01.png",
                                               "out_02.png"}));
  write("second.raw", read("film.raw").substr(width * height, width * height));
  convert("second.raw", "second.png");
  EXPECT_EQ(read("out_01.png"), read("second.png"));
  for (const char *name : {"100%.png", "%.png", "%0.png", "%12d.png", "%s.png"}) {
    convert("frame.raw", name);
    EXPECT_NE(read(name), "") << name;
  }
  convert("film.raw", "100% %3d.ppm");
  EXPECT_NE(read("100%   2.ppm"), "");
}

TEST_F(Convert, OldFileIsReplacedAndKeepsItsRights) {
  write("out.png", "old");
  convert("frame.raw", "out.png");
  EXPECT_EQ(read("out.png").substr(1, 3), "PNG");
  EXPECT_EQ(files(), (std::vector<std::string>{"film.raw", "frame.raw", "out.png"}));
}

TEST_F(Convert, MirrorsTurnThePicture) {
  convert("frame.raw", "plain.png");
  const Picture plain = ppl::tool::read_png(path("plain.png"));
  for (const std::string way : {"h", "v", "hv"}) {
    convert("frame.raw", "mirror.png", {"--mirror", way});
    const Picture mirrored = ppl::tool::read_png(path("mirror.png"));
    const bool h = way != "v", v = way != "h";
    for (uint32_t y = 0; y < height; ++y)
      for (uint32_t x = 0; x < width; ++x)
        for (int c = 0; c < 3; ++c)
          ASSERT_EQ(mirrored.pixel(x, y)[c],
                    plain.pixel(h ? width - 1 - x : x, v ? height - 1 - y : y)[c])
              << way << " " << x << "," << y;
  }
}

TEST_F(Convert, DecimationScalesTheOutput) {
  for (const char *format : {"i420", "yuyv", "uyvy", "rgb24", "rgb32"}) {
    convert("frame.raw", "half.png", {"--decimation", "1", "--format", format});
    EXPECT_EQ(ppl::tool::read_png(path("half.png")).size.width, width / 2);
    convert("frame.raw", "double.png", {"--decimation", "-1", "--format", format});
    EXPECT_EQ(ppl::tool::read_png(path("double.png")).size.height, height * 2);
  }
  // Halving takes every other pixel of every other line.
  convert("frame.raw", "plain.png");
  convert("frame.raw", "half.png", {"--decimation", "1"});
  const Picture plain = ppl::tool::read_png(path("plain.png")),
                half = ppl::tool::read_png(path("half.png"));
  for (uint32_t y = 0; y < height / 2; ++y)
    for (uint32_t x = 0; x < width / 2; ++x)
      ASSERT_EQ(half.pixel(x, y)[1], plain.pixel(2 * x, 2 * y)[1]) << x << "," << y;
}

TEST_F(Convert, BlackLinesAreAddedAndBlack) {
  convert("frame.raw", "plain.yuv");
  convert("frame.raw", "lines.yuv", {"--set", "decimation=0,2,4"});
  const std::string plain = read("plain.yuv"), lines = read("lines.yuv");
  ASSERT_EQ(lines.size(), width * (height + 6) * 3 / 2);
  const size_t pixels = width * height;
  EXPECT_EQ(lines.substr(0, pixels), plain.substr(0, pixels));
  EXPECT_EQ(lines.substr(pixels, width * 6), std::string(width * 6, 16));
}

TEST_F(Convert, BothTiersMakeTheSamePicture) {
  convert("frame.raw", "p3.yuv", {"--tier", "p3"});
  convert("frame.raw", "best.yuv");
  EXPECT_EQ(read("p3.yuv"), read("best.yuv"));
}

TEST_F(Convert, StripesOfTheP3TierAreAnnounced) {
  const auto notes = [&](const std::vector<std::string> &more) {
    std::vector<std::string> arguments{"convert", "frame.raw", "--size", frame_size,
                                       "-o",      "out.bin",   "--tier", "p3"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return run(arguments).err;
  };
  EXPECT_EQ(notes({"--format", "rgb24"}),
            "ppl: note: in the p3 tier rgb24 of quality 3 shows stripes while statistics are "
            "gathered: --set mean_collection=0 gives the clean picture\n");
  EXPECT_EQ(notes({"--format", "rgb24", "--set", "mean_collection=0"}), "");
  const std::string clean = read("out.bin");
  EXPECT_EQ(notes({"--format", "rgb32"}), "");
  EXPECT_EQ(notes({"--format", "rgb24", "--quality", "13"}), "");
  EXPECT_NE(notes({"--format", "rgb24", "--quality", "13", "--decimation", "1"}), "");
  convert("frame.raw", "best.bin", {"--format", "rgb24"});
  EXPECT_EQ(read("best.bin"), clean);
}

TEST_F(Convert, QualityWithoutThePictureFormatTakesAnotherFormat) {
  convert("frame.raw", "out.png", {"--quality", "14"});
  const Picture picture = ppl::tool::read_png(path("out.png"));
  EXPECT_GT(
      std::count_if(picture.rgb.begin(), picture.rgb.end(), [](uint8_t v) { return v > 140; }),
      1000);
  const ToolResult silent = run({"convert", "frame.raw", "--size", frame_size, "-o", "out.png",
                                 "--quality", "14", "--format", "rgb24"});
  EXPECT_EQ(silent.status, 0);
  EXPECT_NE(silent.err.find("ppl: note: quality 14 writes no rgb24, so the picture stays black"),
            std::string::npos);
}

TEST_F(Convert, GreyCopiesAreNoErrors) {
  for (const char *quality : {"4", "9"}) {
    convert("frame.raw", "out.yuv", {"--quality", quality});
    EXPECT_EQ(read("out.yuv").substr(0, width * height), read("frame.raw"));
  }
}

TEST_F(Convert, ShortOptionsAreControlsOfTheTable) {
  convert("frame.raw", "short.yuv",
          {"--quality", "0", "--mirror", "hv", "--decimation", "1", "--tier", "p3"});
  convert("frame.raw", "long.yuv",
          {"--set", "quality=0", "--set", "h_mirror=1", "--set", "v_mirror=1", "--set",
           "decimation=1", "--set", "P3_only=1"});
  EXPECT_EQ(read("short.yuv"), read("long.yuv"));
}

TEST_F(Convert, StatisticsHoldEveryReaderOfTheHeader) {
  convert("film.raw", "out.yuv", {"--stats", "stats.json", "--quality", "0"});
  const auto json = nlohmann::json::parse(read("stats.json"));
  EXPECT_EQ(json.at("format"), "i420");
  EXPECT_EQ(json.at("quality"), 0);
  ASSERT_EQ(json.at("frames").size(), 3u);

  std::ifstream file(PPL_HEADER);
  const std::string header{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  const std::regex reader("PPL_CALL ppl_(n_\\w+|\\w*rgb_means_\\w+|[rgb]_histogram)\\(");
  size_t readers = 0;
  for (std::sregex_iterator it(header.begin(), header.end(), reader), end; it != end;
       ++it, ++readers)
    for (const auto &frame : json.at("frames"))
      EXPECT_TRUE(frame.contains((*it)[1].str())) << (*it)[1];
  EXPECT_EQ(readers, 17u);

  const auto &frame = json.at("frames").at(1);
  EXPECT_EQ(frame.at("rgb_means_sub_windows").size(), 48u);
  EXPECT_EQ(frame.at("r_histogram").size(), 256u);
  EXPECT_EQ(frame.at("n_frame").get<int>(), json.at("frames").at(0).at("n_frame").get<int>() + 1);
  EXPECT_GT(frame.at("rgb_means_whole_frame").at("g").get<int>(), 10 * 256);
}

TEST_F(Convert, StatisticsFollowTheExposure) {
  std::vector<double> means;
  for (const char *stops : {"0", "1"}) {
    run_well({"simulate", "-o", "flat.raw", "--scene", "flat", "--size", frame_size, "--exposure",
              stops, "--full-well", "0", "--read-noise", "0", "--hot", "0", "--dead", "0"});
    run_well({"convert", "flat.raw", "--size", frame_size, "--stats", "stats.json", "--set",
              "gamma=-17"});
    const auto json = nlohmann::json::parse(read("stats.json"));
    means.push_back(json.at("frames").at(0).at("rgb_means_whole_frame").at("g").get<double>() /
                    256);
  }
  EXPECT_NEAR(means[0], 0.18 * 204, 0.5);
  EXPECT_NEAR(means[1], 2 * 0.18 * 204, 0.5);
}

TEST_F(Convert, DemoMakesAPicture) {
  const ToolResult result = run_well({"demo"});
  const Picture picture = ppl::tool::read_png(path("demo.png"));
  EXPECT_EQ(picture.size.width, 640u);
  EXPECT_GT(bright_samples(picture.rgb), 10000);
  // What it tells gives the same picture.
  run_well({"simulate", "-o", "chart.raw", "--size", "640x480", "--hot", "0", "--dead", "0"});
  run_well({"convert", "chart.raw", "--size", "640x480", "--format", "i420", "--quality", "0", "-o",
            "step.png"});
  EXPECT_EQ(read("step.png"), read("demo.png"));
  EXPECT_NE(result.out.find("ppl convert chart.raw --size 640x480 --format i420 --quality 0"),
            std::string::npos);
}

TEST_F(Convert, HelpStartsWithExamples) {
  for (const std::vector<std::string> &command : std::vector<std::vector<std::string>>{{},
                                                                                       {"convert"},
                                                                                       {"stats"},
                                                                                       {"compare"},
                                                                                       {"simulate"},
                                                                                       {"controls"},
                                                                                       {"info"},
                                                                                       {"demo"}}) {
    std::vector<std::string> arguments = command;
    arguments.push_back("--help");
    EXPECT_EQ(run_well(arguments).out.rfind("Examples:\n  ppl ", 0), 0u);
  }
}

TEST_F(Convert, InfoNamesVersionTierFormatsAndQualities) {
  const std::string text = run_well({"info"}).out;
  for (const char *word : {"version    " PPL_TOOL_VERSION "\n", "tier", "bggr8", "i420", "yuyv",
                           "uyvy", "rgb24", "rgb32", "samples as grey"})
    EXPECT_NE(text.find(word), std::string::npos) << word;
  EXPECT_EQ(run_well({"--version"}).out, "ppl " PPL_TOOL_VERSION "\n");
}

TEST_F(Convert, InfoNamesTheProcessorFlagsThatTheLibrarySees) {
  const std::string text = run_well({"info"}).out;
  const std::string start = "processor  ";
  const size_t at = text.find(start) + start.size();
  std::istringstream line(text.substr(at, text.find('\n', at) - at));
  const std::set<std::string> told{std::istream_iterator<std::string>(line), {}};
  const uint32_t flags = ppl::test_hooks::processor_flags();
  const std::map<std::string, uint32_t> bits{{"tsc", 4},   {"mmxext", 22}, {"mmx", 23},
                                             {"sse", 25},  {"sse2", 26},   {"3dnowext", 30},
                                             {"3dnow", 31}};
  for (const auto &[name, bit] : bits) EXPECT_EQ(told.count(name), flags >> bit & 1) << name;
  EXPECT_NE(text.find(flags >> 26 & 1 ? "tier       sse2" : "tier       p3"), std::string::npos);
}

TEST_F(Convert, NeutralLeavesTheSamplesAsTheyAre) {
  // Green of RGB at sites of green is the sample itself, behind a curve and a matrix.
  convert("frame.raw", "out.rgb", {"--format", "rgb24", "--neutral"});
  const std::string raw = read("frame.raw"), rgb = read("out.rgb");
  for (uint32_t y = 0; y < height; ++y)
    for (uint32_t x = (y + 1) % 2; x < width; x += 2)
      ASSERT_EQ(rgb[3 * ((height - 1 - y) * width + x) + 1], raw[y * width + x]) << x << "," << y;
}

TEST_F(Convert, BlackLinesHaveAnOptionOfTheirOwn) {
  convert("frame.raw", "short.yuv", {"--black-lines", "2,4", "--decimation", "1"});
  convert("frame.raw", "long.yuv", {"--set", "decimation=1,2,4"});
  EXPECT_EQ(read("short.yuv"), read("long.yuv"));
}

TEST_F(Convert, FileMayFollowAnyOption) {
  const std::string expected = printed_md5(
      run_well({"convert", "frame.raw", "--size", frame_size, "--set", "gamma=3", "--md5"}).out);
  EXPECT_EQ(printed_md5(run_well({"convert", "--md5", "--black-lines", "0,0", "--size", frame_size,
                                  "--set", "gamma=5", "--set", "gamma=3", "frame.raw"})
                            .out),
            expected);
}

class Simulate : public ToolTest {};

TEST_F(Simulate, SameOptionsGiveTheSameFile) {
  run_well({"simulate", "-o", "a.raw", "--seed", "3"});
  run_well({"simulate", "-o", "b.raw", "--seed", "3"});
  run_well({"simulate", "-o", "c.raw", "--seed", "4"});
  EXPECT_EQ(read("a.raw").size(), 640u * 480);
  EXPECT_EQ(read("a.raw"), read("b.raw"));
  EXPECT_NE(read("a.raw"), read("c.raw"));
  EXPECT_EQ(run_well({"simulate", "-o", "-", "--seed", "3"}).out, read("a.raw"));
}

TEST_F(Simulate, FilmStartsWithTheSingleFrame) {
  run_well({"simulate", "-o", "one.raw"});
  run_well({"simulate", "-o", "film.raw", "--frames", "2"});
  const std::string film = read("film.raw");
  EXPECT_EQ(film.substr(0, 640 * 480), read("one.raw"));
  EXPECT_NE(film.substr(640 * 480), read("one.raw"));
}

TEST_F(Simulate, NegativeExposureIsTakenAsANumber) {
  run_well({"simulate", "-o", "dark.raw", "--scene", "flat", "--exposure", "-1", "--full-well", "0",
            "--read-noise", "0", "--hot", "0", "--dead", "0"});
  EXPECT_EQ(read("dark.raw"), std::string(640 * 480, static_cast<char>(18)));  // 0.18 * 204 / 2
}

TEST_F(Simulate, GreyPictureShowsTheMosaic) {
  run_well({"simulate", "-o", "frame.raw"});
  run_well({"simulate", "-o", "frame.png"});
  const std::string raw = read("frame.raw");
  const Picture picture = ppl::tool::read_png(path("frame.png"));
  for (size_t i = 0; i < raw.size(); ++i)
    for (size_t c = 0; c < 3; ++c) ASSERT_EQ(picture.rgb[3 * i + c], static_cast<uint8_t>(raw[i]));
}

TEST_F(Simulate, PngSceneIsItsOwnTruth) {
  run_well({"simulate", "-o", "frame.raw", "--truth", "truth.png", "--size", "160x96"});
  run_well({"simulate", "-o", "again.raw", "--truth", "again.png", "--png", "truth.png"});
  EXPECT_EQ(read("again.raw").size(), 160u * 96);
  EXPECT_EQ(ppl::tool::read_png(path("again.png")).rgb, ppl::tool::read_png(path("truth.png")).rgb);
}

}  // namespace
}  // namespace ppl_test
