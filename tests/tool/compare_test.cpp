// ppl compare: one raw frame at every quality.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "pictures/file_formats.h"
#include "pictures/metrics.h"
#include "sheets/quality_comparison.h"
#include "tool/run_tool.h"

namespace ppl_test {
namespace {

using nlohmann::json;
using ppl::tool::Closeness;
using ppl::tool::closeness;
using ppl::tool::Picture;

constexpr uint32_t width = 160, height = 96;

Picture random_picture(uint32_t seed) {
  std::mt19937 generator(seed);
  Picture picture({width, height});
  for (uint8_t &v : picture.rgb) v = static_cast<uint8_t>(generator());
  return picture;
}

Picture plain_picture(uint8_t level) {
  Picture picture({width, height});
  std::fill(picture.rgb.begin(), picture.rgb.end(), level);
  return picture;
}

TEST(Closeness, EqualPicturesAreInfinitelyClose) {
  const Picture picture = random_picture(1);
  const Closeness c = closeness(picture, picture);
  EXPECT_TRUE(std::isinf(c.psnr_rgb) && std::isinf(c.psnr_luma));
  EXPECT_DOUBLE_EQ(c.ssim_luma, 1);
  EXPECT_EQ(c.shift_x, 0);
  EXPECT_EQ(c.shift_y, 0);
}

TEST(Closeness, ShiftOfAPixelIsFound) {
  const Picture truth = random_picture(1);
  for (int dy = -1; dy <= 1; ++dy) {
    for (int dx = -1; dx <= 1; ++dx) {
      Picture moved({width, height});
      for (uint32_t y = 1; y + 1 < height; ++y)
        for (uint32_t x = 1; x + 1 < width; ++x)
          std::copy_n(truth.pixel(x, y), 3,
                      moved.pixel(static_cast<uint32_t>(static_cast<int>(x) + dx),
                                  static_cast<uint32_t>(static_cast<int>(y) + dy)));
      const Closeness c = closeness(moved, truth);
      EXPECT_TRUE(std::isinf(c.psnr_rgb));
      EXPECT_EQ(c.shift_x, dx);
      EXPECT_EQ(c.shift_y, dy);
    }
  }
}

TEST(Closeness, FiguresOfPlainPicturesFollowFromTheirDefinition) {
  const Closeness c = closeness(plain_picture(110), plain_picture(100));
  EXPECT_NEAR(c.psnr_rgb, 20 * std::log10(255.0 / 10), 1e-9);
  EXPECT_NEAR(c.psnr_luma, 20 * std::log10(255.0 / 10), 1e-9);
  const double c1 = 2.55 * 2.55;
  EXPECT_NEAR(c.ssim_luma, (2 * 110 * 100 + c1) / (110 * 110 + 100 * 100 + c1), 1e-9);

  Picture red = plain_picture(100);
  for (size_t i = 0; i < red.rgb.size(); i += 3) red.rgb[i] = 130;
  const Closeness r = closeness(red, plain_picture(100));
  EXPECT_NEAR(r.psnr_rgb, 10 * std::log10(255 * 255.0 / (30 * 30 / 3.0)), 1e-9);
  EXPECT_NEAR(r.psnr_luma, 20 * std::log10(255.0 / (0.299 * 30)), 1e-9);
}

TEST(Closeness, SsimOfContrastFollowsFromItsDefinition) {
  // Alternating columns: wherever a window lies, the Gaussian weighs both levels nearly alike.
  const auto stripes = [](int level, int swing) {
    Picture picture({width, height});
    for (size_t i = 0; i < picture.rgb.size(); ++i)
      picture.rgb[i] = static_cast<uint8_t>(level + (i / 3 % 2 == 0 ? swing : -swing));
    return picture;
  };
  const double c2 = 7.65 * 7.65;
  EXPECT_NEAR(closeness(stripes(100, 20), stripes(100, 40)).ssim_luma,
              (2 * 20 * 40 + c2) / (20 * 20 + 40 * 40 + c2), 1e-3);
}

TEST(Closeness, BorderIsLeftOff) {
  Picture framed = random_picture(1);
  for (uint32_t y = 0; y < height; ++y)
    for (uint32_t x = 0; x < width; ++x)
      if (std::min({x, y, width - 1 - x, height - 1 - y}) < ppl::tool::metric_border)
        std::fill_n(framed.pixel(x, y), 3, uint8_t{0});
  EXPECT_TRUE(std::isinf(closeness(framed, random_picture(1)).psnr_rgb));
  framed.pixel(8, 8)[0] ^= 1;
  EXPECT_FALSE(std::isinf(closeness(framed, random_picture(1)).psnr_rgb));
}

TEST(MostDetail, LiesWhereNeighboursOfAColourDiffer) {
  std::vector<uint8_t> raw(width * height);
  for (uint32_t y = 0; y < height; ++y)
    for (uint32_t x = 0; x < width; ++x) {
      const bool detailed = x >= 90 && x < 110 && y >= 40 && y < 60;
      // Elsewhere the colours differ, but not from cell to cell.
      raw[y * width + x] =
          static_cast<uint8_t>(detailed ? (x / 2 + y / 2) % 2 * 200 : (x + y) % 2 * 200);
    }
  const auto crop = ppl::tool::most_detail(raw, {width, height}, {24, 24});
  EXPECT_GE(crop.x, 84u);
  EXPECT_LE(crop.x, 92u);
  EXPECT_GE(crop.y, 34u);
  EXPECT_LE(crop.y, 42u);
}

class Compare : public ToolTest {
 protected:
  void SetUp() override {
    ToolTest::SetUp();
    run_well({"simulate", "-o", "frame.raw", "--size", "160x96", "--truth", "truth.png"});
  }

  // A mosaic of the truth itself, without sensor.
  void make_mosaic() const {
    const Picture truth = ppl::tool::read_png(path("truth.png"));
    std::string mosaic;
    for (uint32_t y = 0; y < height; ++y)
      for (uint32_t x = 0; x < width; ++x)
        mosaic += static_cast<char>(truth.pixel(x, y)[2 - x % 2 - y % 2]);
    write("mosaic.raw", mosaic);
  }

  ToolResult compare(const std::string &input, const std::vector<std::string> &more = {},
                     const std::string &frames = "1") const {
    std::vector<std::string> arguments{"compare",  input,  "--size", "160x96",
                                       "--frames", frames, "--json", "table.json"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return run_well(arguments);
  }

  json table() const { return json::parse(read("table.json")); }

  json row(uint32_t quality) const {
    const json all = table();
    for (const json &r : all.at("qualities"))
      if (r.at("quality") == quality) return r;
    return {};
  }
};

TEST_F(Compare, TableHasEveryQualityThatWritesTheFormat) {
  const auto qualities = [&](const char *format) {
    const ToolResult result = compare("frame.raw", {"--format", format});
    const json all = table();
    std::vector<uint32_t> numbers;
    for (const json &r : all.at("qualities")) {
      numbers.push_back(r.at("quality"));
      EXPECT_NE(result.out.find(r.at("name").get<std::string>()), std::string::npos);
      EXPECT_GT(r.at("median_milliseconds").get<double>(), 0);
      EXPECT_GE(r.at("median_milliseconds"), r.at("fastest_milliseconds"));
      EXPECT_FALSE(r.contains("psnr_rgb"));
    }
    EXPECT_EQ(all.at("format"), format);
    EXPECT_DOUBLE_EQ(row(3).at("ratio").get<double>(), 1);
    return numbers;
  };
  using Numbers = std::vector<uint32_t>;
  EXPECT_EQ(qualities("i420"), (Numbers{0, 1, 2, 3, 4, 10, 11, 12, 13, 14}));
  EXPECT_EQ(qualities("yuyv"), (Numbers{0, 1, 2, 3, 4, 10, 11, 12, 14}));
  EXPECT_EQ(qualities("rgb24"), (Numbers{0, 1, 2, 3, 4, 10, 11, 12, 13}));
  EXPECT_EQ(qualities("rgb32"), (Numbers{0, 1, 2, 3, 4, 10, 11, 12}));
}

// Tiles of the sheet stand in three columns; without a truth each has one line of text.
TEST_F(Compare, SheetShowsWhatConvertMakes) {
  compare("frame.raw", {"-o", "sheet.png", "--crop", "50,30,40x20"});
  const Picture sheet = ppl::tool::read_png(path("sheet.png"));
  const std::vector<const char *> qualities{"0", "1", "2", "3", "4", "10", "11", "12", "13", "14"};
  for (uint32_t i = 0; i < qualities.size(); ++i) {
    run_well({"convert", "frame.raw", "--size", "160x96", "--format", "i420", "--quality",
              qualities[i], "-o", "one.png"});
    const Picture picture = ppl::tool::read_png(path("one.png"));
    const uint32_t left = 24 + i % 3 * (568 + 24) + 328, top = 24 + 40 + i / 3 * (260 + 24) + 20;
    for (uint32_t y = 0; y < 120; ++y)
      for (uint32_t x = 0; x < 240; ++x)
        for (int c = 0; c < 3; ++c)
          ASSERT_EQ(sheet.pixel(left + x, top + y)[c], picture.pixel(50 + x / 6, 30 + y / 6)[c])
              << "quality " << qualities[i] << " " << x << "," << y;
  }
}

TEST_F(Compare, SameFrameGivesTheSameSheet) {
  make_mosaic();
  compare("mosaic.raw", {"-o", "a.png", "--truth", "truth.png"});
  compare("mosaic.raw", {"-o", "b.png", "--truth", "truth.png"}, "3");
  EXPECT_TRUE(read("a.png") == read("b.png"));
  compare("mosaic.raw", {"-o", "c.png", "--truth", "truth.png", "--neutral"});
  EXPECT_FALSE(read("a.png") == read("c.png"));
  compare("mosaic.raw", {"-o", "d.ppm", "--truth", "truth.png"});
  EXPECT_EQ(read("d.ppm").substr(0, 3), "P6\n");
}

TEST_F(Compare, ClosenessIsThatOfTheConvertedPicture) {
  make_mosaic();
  compare("mosaic.raw", {"--truth", "truth.png", "--neutral", "--format", "rgb24"});
  const Picture truth = ppl::tool::read_png(path("truth.png"));
  for (const uint32_t quality : {0u, 1u, 2u, 3u, 10u, 11u, 12u}) {
    run_well({"convert", "mosaic.raw", "--size", "160x96", "--neutral", "--quality",
              std::to_string(quality), "-o", "one.png"});
    const Picture picture = ppl::tool::read_png(path("one.png"));
    double sum = 0;
    for (uint32_t y = 8; y < height - 8; ++y)
      for (uint32_t x = 8; x < width - 8; ++x)
        for (int c = 0; c < 3; ++c) {
          const double difference = picture.pixel(x, y)[c] - truth.pixel(x, y)[c];
          sum += difference * difference;
        }
    const double psnr = 10 * std::log10(255 * 255 / (sum / (3 * (width - 16) * (height - 16))));
    const json r = row(quality);
    EXPECT_EQ(r.at("shift"), (std::vector<int>{0, 0})) << quality;
    EXPECT_NEAR(r.at("psnr_rgb").get<double>(), psnr, 1e-9) << quality;
  }
  EXPECT_GT(row(1).at("psnr_rgb"), row(2).at("psnr_rgb"));
  EXPECT_GT(row(2).at("psnr_rgb"), row(3).at("psnr_rgb"));
}

TEST_F(Compare, GreyMosaicOfAGreyPictureIsPerfect) {
  write("grey.raw", std::string(width * height, 'd'));
  run_well({"convert", "grey.raw", "--size", "160x96", "--quality", "4", "--format", "rgb24", "-o",
            "grey.png"});
  const ToolResult result =
      compare("grey.raw", {"--truth", "grey.png", "--neutral", "--format", "rgb24"});
  EXPECT_TRUE(row(3).at("psnr_rgb").is_null());  // infinite
  EXPECT_NE(result.out.find(" inf "), std::string::npos);
  EXPECT_DOUBLE_EQ(row(3).at("ssim_luma").get<double>(), 1);
}

TEST_F(Compare, CropIsWhereItWasSaid) {
  const auto crop = [&](const char *text) {
    compare("frame.raw", {"--crop", text});
    const json c = table().at("crop");
    return std::vector<int>{c.at("x"), c.at("y"), c.at("width"), c.at("height")};
  };
  EXPECT_EQ(crop("0,0,160x96"), (std::vector<int>{0, 0, 160, 96}));
  EXPECT_EQ(crop("3,7"), (std::vector<int>{3, 7, 60, 60}));
}

TEST_F(Compare, SheetOrJsonOnStandardOutputLeavesTheTableToStandardError) {
  const ToolResult sheet = run({"compare", "frame.raw", "--size", "160x96", "-o", "-"});
  EXPECT_EQ(sheet.out.substr(1, 3), "PNG");
  EXPECT_NE(sheet.err.find("demosaic within the cell"), std::string::npos);
  const ToolResult text = run({"compare", "frame.raw", "--size", "160x96", "--json", "-"});
  EXPECT_EQ(json::parse(text.out).at("frames"), 20);
  EXPECT_NE(text.err.find("demosaic within the cell"), std::string::npos);
}

TEST_F(Compare, P3TierCanBeAskedFor) {
  compare("frame.raw", {"--tier", "p3"});
  EXPECT_EQ(table().at("tier"), "p3");
  EXPECT_NE(run({"compare", "frame.raw", "--size", "160x96", "--tier", "p3", "--format", "rgb24"})
                .err.find("ppl: note: in the p3 tier rgb24 of quality 3 shows stripes"),
            std::string::npos);
}

// What the documentation says about photographs with a known truth.
class RealComparison : public Compare, public testing::WithParamInterface<const char *> {};

INSTANTIATE_TEST_SUITE_P(, RealComparison,
                         testing::Values("motorbikes", "houses", "lighthouse", "parrots"));

// Its tables have a figure, a format and the photographs in their heading, and a row a quality.
TEST_P(RealComparison, DocumentationTellsTheFigures) {
  if (!has_real_frames()) GTEST_SKIP() << "there are no real frames in " << PPL_REAL_FRAMES;
  const std::string photograph = GetParam(),
                    name = photograph == "lighthouse" ? "lighthouse_rot90" : photograph;
  const std::map<std::string, std::string> members{
      {"PSNR RGB", "psnr_rgb"}, {"PSNR luma", "psnr_luma"}, {"SSIM luma", "ssim_luma"}};
  std::map<std::string, json> rows;  // "rgb24 3"
  for (const std::string format : {"i420", "rgb24"}) {
    run_well({"compare", real_frame("raw_bggr8_640x480_" + name + ".raw"), "--size", "640x480",
              "--truth", real_frame("truth_640x480_" + name + ".png"), "--neutral", "--frames", "1",
              "--format", format, "--json", "table.json"});
    const json all = table();
    for (const json &row : all.at("qualities"))
      rows[format + " " + std::to_string(row.at("quality").get<int>())] = row;
  }

  std::istringstream document(read_file(PPL_QUALITIES));
  std::string figure, format;
  size_t column = 0, checked = 0;
  for (std::string line; std::getline(document, line);) {
    std::vector<std::string> cells;
    std::istringstream text(line);
    for (std::string cell; std::getline(text, cell, '|');) {
      const size_t first = cell.find_first_not_of(' ');
      cells.push_back(first == std::string::npos
                          ? ""
                          : cell.substr(first, cell.find_last_not_of(' ') - first + 1));
    }
    const auto found = std::find(cells.begin(), cells.end(), photograph);
    if (found != cells.end()) {
      column = static_cast<size_t>(found - cells.begin());
      const size_t comma = cells.at(1).find(", ");
      ASSERT_NE(comma, std::string::npos) << line;
      figure = cells.at(1).substr(0, comma);
      format = cells.at(1).substr(comma + 2);
    } else if (line.empty() || line[0] != '|') {
      column = 0;
    } else if (column && line[1] != '-') {
      const json &row = rows.at(format + " " + cells.at(1));
      const std::string &told = cells.at(column);
      const double rounding = 0.5000001 * std::pow(10, -double(told.size() - told.find('.') - 1));
      EXPECT_NEAR(row.at(members.at(figure)).get<double>(), std::stod(told), rounding) << line;
      EXPECT_EQ(row.at("shift"), (std::vector<int>{0, 0})) << line;
      ++checked;
    }
  }
  EXPECT_EQ(checked, 27u);
}

}  // namespace
}  // namespace ppl_test
