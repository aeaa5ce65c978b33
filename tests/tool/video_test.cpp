// Packed video through ppl convert, progressive and interlaced.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "pictures/file_formats.h"
#include "tool/run_tool.h"

namespace ppl_test {
namespace {

using ppl::tool::Picture;

constexpr size_t width = 160, height = 48, pixels = width * height;
constexpr size_t line_bytes = 2 * width, field_bytes = line_bytes * height / 2,
                 frame_bytes = 2 * field_bytes;

std::string noise(size_t bytes, uint32_t seed) {
  std::mt19937 generator(seed);
  std::string text(bytes, '\0');
  for (char &c : text) c = static_cast<char>(generator());
  return text;
}

uint8_t byte(const std::string &text, size_t at) { return static_cast<uint8_t>(text[at]); }

// Even or odd lines of packed frames.
std::string field_of(const std::string &frames, size_t parity) {
  std::string field;
  for (size_t line = 0; line < frames.size() / line_bytes; ++line)
    if (line % 2 == parity) field += frames.substr(line * line_bytes, line_bytes);
  return field;
}

std::string swapped(std::string packed) {
  for (size_t i = 0; i + 1 < packed.size(); i += 2) std::swap(packed[i], packed[i + 1]);
  return packed;
}

uint8_t average(int a, int b) { return static_cast<uint8_t>((a + b + 1) / 2); }

// Chroma of odd lines gives way to the average of the even lines around it where it moved.
std::string merged(const std::string &frame, const std::string &reference, size_t chroma_byte,
                   int threshold) {
  std::string result = frame;
  for (size_t line = 1; line + 1 < height; line += 2) {
    const auto difference = [&](size_t pixel) {  // pixels are counted from 1
      if (pixel == 0 || pixel > width) return 0;
      const size_t at = 2 * (pixel - 1) + chroma_byte;
      return byte(frame, line * line_bytes + at) - byte(reference, line / 2 * line_bytes + at);
    };
    for (size_t pixel = 1; pixel <= width; ++pixel) {
      const int d[] = {difference(pixel - 1), difference(pixel), difference(pixel + 1)};
      const int sum = d[0] + d[1] + d[2];
      int spread = 0;
      for (const int value : d) spread += std::abs(3 * value - sum);
      const size_t at = line * line_bytes + 2 * (pixel - 1) + chroma_byte;
      if (spread > threshold)
        result[at] =
            static_cast<char>(average(byte(frame, at - line_bytes), byte(frame, at + line_bytes)));
    }
  }
  return result;
}

class Video : public ToolTest {
 protected:
  void SetUp() override {
    ToolTest::SetUp();
    for (uint32_t i = 0; i < 3; ++i) film_ += noise(frame_bytes, 7 + i);
    frame_ = film_.substr(0, frame_bytes);
    write("film", film_);
    write("frame", frame_);
    write("even", field_of(frame_, 0));
    write("odd", field_of(frame_, 1));
  }

  // The frames as bytes.
  std::string convert(const std::string &from, const std::vector<std::string> &inputs,
                      const std::vector<std::string> &more = {},
                      const std::string &output = "out.bin") const {
    std::vector<std::string> arguments{"convert"};
    arguments.insert(arguments.end(), inputs.begin(), inputs.end());
    arguments.insert(arguments.end(), {"--from", from, "--size", "160x48", "-o", output});
    arguments.insert(arguments.end(), more.begin(), more.end());
    run_well(arguments);
    return read(output);
  }

  std::string weave(const std::string &from, const std::vector<std::string> &inputs,
                    std::vector<std::string> more = {},
                    const std::string &output = "out.bin") const {
    more.push_back("--interlaced");
    return convert(from, inputs, more, output);
  }

  std::string film_, frame_;
};

class PackedVideo : public Video, public testing::WithParamInterface<const char *> {
 protected:
  std::string from() const { return GetParam(); }
  std::string other() const { return from() == "yuyv" ? "uyvy" : "yuyv"; }
  size_t luma_byte() const { return from() == "yuyv" ? 0 : 1; }
  size_t chroma_byte() const { return 1 - luma_byte(); }
};

INSTANTIATE_TEST_SUITE_P(, PackedVideo, testing::Values("yuyv", "uyvy"));

TEST_P(PackedVideo, ProgressiveI420KeepsLumaAndAveragesChromaOfLinePairs) {
  const std::string planes = convert(from(), {"frame"});
  ASSERT_EQ(planes.size(), pixels * 3 / 2);
  for (size_t i = 0; i < pixels; ++i)
    ASSERT_EQ(byte(planes, i), byte(frame_, 2 * i + luma_byte())) << i;
  for (size_t plane = 0; plane < 2; ++plane) {
    for (size_t i = 0; i < pixels / 4; ++i) {
      const size_t at =
          i / (width / 2) * 2 * line_bytes + i % (width / 2) * 4 + 2 * plane + chroma_byte();
      ASSERT_EQ(byte(planes, pixels + plane * (pixels / 4) + i),
                average(byte(frame_, at), byte(frame_, at + line_bytes)))
          << plane << " " << i;
    }
  }
}

TEST_P(PackedVideo, ProgressiveRgbFollowsBt601In64ths) {
  // Without the strong colours whose sums wrap.
  std::string mild = frame_;
  for (size_t i = chroma_byte(); i < mild.size(); i += 2)
    mild[i] = static_cast<char>(96 + byte(mild, i) % 64);
  write("mild", mild);
  convert(from(), {"mild"}, {}, "out.png");
  const Picture picture = ppl::tool::read_png(path("out.png"));
  ASSERT_EQ(picture.size.width, width);
  ASSERT_EQ(picture.size.height, height);
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      const size_t at = y * line_bytes + x / 2 * 4;
      const int luma = 74 * std::max(byte(mild, at + 2 * (x % 2) + luma_byte()) - 16, 0);
      const int u = byte(mild, at + chroma_byte()) - 128,
                v = byte(mild, at + 2 + chroma_byte()) - 128;
      const int rgb[] = {(luma + 102 * v) >> 6, (luma - 25 * u - 52 * v) >> 6,
                         (luma + 129 * u) >> 6};
      for (int c = 0; c < 3; ++c)
        ASSERT_EQ(picture.pixel(x, y)[c], std::clamp(rgb[c], 0, 255)) << x << "," << y;
    }
  }
}

TEST_P(PackedVideo, FieldsWithoutReferenceAreWoven) {
  for (const char *motion : {"", "--no-motion-test"}) {
    std::vector<std::string> more{"--format", from()};
    if (*motion) more.push_back(motion);
    EXPECT_EQ(weave(from(), {"frame"}, more), frame_) << motion;
    EXPECT_EQ(weave(from(), {"even", "odd"}, more), frame_) << motion;
  }
  EXPECT_EQ(weave(from(), {"frame"}, {"--format", other()}), swapped(frame_));
  // I420 is woven first and then averaged as a progressive frame.
  EXPECT_EQ(weave(from(), {"even", "odd"}), convert(from(), {"frame"}));
}

TEST_P(PackedVideo, MotionTestTakesMovedChromaFromTheEvenLines) {
  write("reference", field_of(film_.substr(frame_bytes, frame_bytes), 1));
  for (const char *threshold : {"0", "50", "400", "765"}) {
    const std::string expected =
        merged(frame_, read("reference"), chroma_byte(), std::atoi(threshold));
    EXPECT_NE(expected, frame_);
    EXPECT_EQ(weave(from(), {"even", "odd", "reference"},
                    {"--format", from(), "--motion-threshold", threshold}),
              expected)
        << threshold;
    EXPECT_EQ(weave(from(), {"even", "odd", "reference"},
                    {"--format", from(), "--set", std::string("intl_3T_threshold=") + threshold}),
              expected)
        << threshold;
  }
  EXPECT_EQ(weave(from(), {"even", "odd", "reference"}, {"--format", from(), "--no-motion-test"}),
            frame_);
}

TEST_P(PackedVideo, FilmTakesTheFieldBeforeAsReference) {
  std::string expected = frame_;
  for (size_t i = 1; i < 3; ++i)
    expected +=
        merged(film_.substr(i * frame_bytes, frame_bytes),
               field_of(film_.substr((i - 1) * frame_bytes, frame_bytes), 1), chroma_byte(), 50);
  const std::vector<std::string> format{"--format", from()};
  EXPECT_EQ(weave(from(), {"film"}, format), expected);
  write("evens", field_of(film_, 0));
  write("odds", field_of(film_, 1));
  EXPECT_EQ(weave(from(), {"evens", "odds"}, format), expected);
  EXPECT_EQ(weave(from(), {"evens", "odds"}, {"--format", from(), "--frames", "2"}),
            expected.substr(0, 2 * frame_bytes));
}

TEST_P(PackedVideo, InterlacedFramesAreHalvedFromTheEvenLines) {
  const std::string half = weave(from(), {"frame"}, {"--decimation", "1"});
  ASSERT_EQ(half.size(), pixels / 4 * 3 / 2);
  write("noise", noise(field_bytes, 99));
  EXPECT_EQ(weave(from(), {"even", "noise"}, {"--decimation", "1"}), half);
  // Every second pair of every second line.
  for (size_t y = 0; y < height / 2; ++y)
    for (size_t x = 0; x < width / 2; ++x)
      ASSERT_EQ(byte(half, y * (width / 2) + x),
                byte(frame_, 2 * y * line_bytes + x / 2 * 8 + 2 * (x % 2) + luma_byte()))
          << x << "," << y;
}

TEST_P(PackedVideo, InterlacedFramesAreDoubled) {
  const std::string twice = weave(from(), {"frame"}, {"--decimation", "-1"});
  ASSERT_EQ(twice.size(), pixels * 4 * 3 / 2);
  for (size_t y = 0; y < height; ++y)
    for (size_t x = 0; x < width; ++x)
      ASSERT_EQ(byte(twice, (2 * y + 1) * 2 * width + 2 * x + 1),
                byte(frame_, y * line_bytes + 2 * x + luma_byte()))
          << x << "," << y;
}

TEST_P(PackedVideo, BlackLinesSurroundInterlacedFrames) {
  std::string above, below;
  for (size_t i = 0; i < line_bytes * 4; ++i)
    above += i % 2 == luma_byte() ? '\x10' : static_cast<char>(128);
  below = above.substr(0, line_bytes * 2);
  EXPECT_EQ(weave(from(), {"frame"}, {"--format", from(), "--black-lines", "4,2"}),
            above + frame_ + below);
}

TEST_P(PackedVideo, BlackLinesFollowProgressiveFrames) {
  const std::string plain = convert(from(), {"frame"}),
                    lines = convert(from(), {"frame"}, {"--black-lines", "4,2"});
  ASSERT_EQ(lines.size(), width * (height + 6) * 3 / 2);
  EXPECT_EQ(lines.substr(0, pixels), plain.substr(0, pixels));
  EXPECT_EQ(lines.substr(pixels, 6 * width), std::string(6 * width, 16));
}

TEST_P(PackedVideo, BothTiersGiveTheSameBytes) {
  write("reference", noise(field_bytes, 5));
  for (const char *format : {"i420", "yuyv", "uyvy", "rgb24"})
    EXPECT_EQ(weave(from(), {"even", "odd", "reference"}, {"--format", format, "--tier", "p3"}),
              weave(from(), {"even", "odd", "reference"}, {"--format", format}))
        << format;
  EXPECT_EQ(convert(from(), {"frame"}, {"--tier", "p3"}), convert(from(), {"frame"}));
}

TEST_P(PackedVideo, FilmBecomesY4m) {
  const std::string frames = weave(from(), {"film"});
  std::string expected = "YUV4MPEG2 W160 H48 F30:1 It A1:1 C420jpeg XCOLORRANGE=LIMITED\n";
  for (size_t i = 0; i < 3; ++i)
    expected += "FRAME\n" + frames.substr(i * pixels * 3 / 2, pixels * 3 / 2);
  EXPECT_EQ(weave(from(), {"film"}, {}, "out.y4m"), expected);

  const auto header = [](const std::string &file) { return file.substr(0, file.find(" A1:1")); };
  EXPECT_EQ(header(convert(from(), {"film"}, {}, "out.y4m")), "YUV4MPEG2 W160 H48 F30:1 Ip");
  EXPECT_EQ(header(weave(from(), {"film"}, {"--decimation", "1"}, "out.y4m")),
            "YUV4MPEG2 W80 H24 F30:1 Ip");
  EXPECT_EQ(header(weave(from(), {"film"}, {"--black-lines", "1,1"}, "out.y4m")),
            "YUV4MPEG2 W160 H50 F30:1 Ib");
}

TEST_F(Video, ProgressiveI420IsMirrored) {
  const std::string plain = convert("yuyv", {"frame"}),
                    mirrored = convert("yuyv", {"frame"}, {"--mirror", "hv"});
  for (size_t i = 0; i < pixels; ++i)
    ASSERT_EQ(byte(mirrored, i), byte(plain, pixels - 1 - i)) << i;
}

TEST_F(Video, StandardInputServesAsAField) {
  for (const bool even : {true, false}) {
    const ToolResult result =
        run({"convert", even ? "-" : "even", even ? "odd" : "-", "--interlaced", "--from", "yuyv",
             "--size", "160x48", "-o", "out.bin", "--format", "yuyv"},
            read(even ? "even" : "odd"));
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(read("out.bin"), frame_);
  }
}

TEST_F(Video, BroadcastSizesAreTaken) {
  for (const char *size : {"720x576", "720x480", "704x480", "480x576", "640x480"}) {
    const std::string text(size);
    const size_t bytes = 2 * std::stoul(text.substr(0, 3)) * std::stoul(text.substr(4));
    const std::string large = noise(bytes, 3);
    write("large", large);
    run_well({"convert", "large", "--interlaced", "--from", "uyvy", "--size", size, "--format",
              "uyvy", "-o", "out.bin"});
    EXPECT_EQ(read("out.bin"), large) << size;
  }
}

TEST_F(Video, ProgressIsShownOnATerminalAlone) {
  const std::vector<std::string> arguments{"convert", "film",   "--from", "yuyv",
                                           "--size",  "160x48", "-o",     "out.y4m"};
  const ToolResult result = run_on_terminal(arguments);
  EXPECT_EQ(result.status, 0);
  for (const char *line : {"\rframe 1 of 3", "\rframe 2 of 3", "\rframe 3 of 3"})
    EXPECT_NE(result.err.find(line), std::string::npos) << result.err;
  EXPECT_EQ(run_well(arguments).err, "");
}

// Frames from cameras, which are no part of the project.
class RealVideo : public Video {
 protected:
  void SetUp() override {
    Video::SetUp();
    if (!has_real_frames()) GTEST_SKIP() << "there are no real frames in " << PPL_REAL_FRAMES;
  }
};

TEST_F(RealVideo, InterlacedFrameOfACamera) {
  const std::string night = real_frame("uyvy_720x480i_citynight.uyvy");
  const std::vector<std::string> arguments{"convert", night,    "--interlaced", "--from",
                                           "uyvy",    "--size", "720x480",      "-o"};
  const auto with = [&](std::vector<std::string> more) {
    more.insert(more.begin(), arguments.begin(), arguments.end());
    run_well(more);
  };
  with({"same.uyvy", "--format", "uyvy"});
  EXPECT_EQ(read("same.uyvy"), read_file(night));
  with({"whole.png"});
  EXPECT_EQ(ppl::tool::read_png(path("whole.png")).size.height, 480u);
  with({"half.png", "--decimation", "1"});
  EXPECT_EQ(ppl::tool::read_png(path("half.png")).size.height, 240u);

  // Neighbouring lines of the whole picture come from two times, those of the half from one.
  const auto roughness = [&](const char *name) {
    const Picture picture = ppl::tool::read_png(path(name));
    double sum = 0;
    for (uint32_t y = 0; y + 1 < picture.size.height; ++y)
      for (uint32_t x = 0; x < picture.size.width; ++x)
        sum += std::abs(picture.pixel(x, y)[1] - picture.pixel(x, y + 1)[1]);
    return sum / picture.size.width / (picture.size.height - 1);
  };
  EXPECT_GT(roughness("whole.png"), 2 * roughness("half.png"));
}

TEST_F(RealVideo, TwoFieldFilesOfAMovingCamera) {
  const std::string even = real_frame("field_720x288_street_f010_top.uyvy"),
                    odd = real_frame("field_720x288_street_f011_bottom.uyvy");
  run_well({"convert", even, odd, "--interlaced", "--from", "uyvy", "--size", "720x576", "-o",
            "out.uyvy", "--format", "uyvy"});
  const std::string out = read("out.uyvy"), first = read_file(even), second = read_file(odd);
  ASSERT_EQ(out.size(), first.size() + second.size());
  for (size_t line = 0; line < 576; ++line)
    ASSERT_EQ(out.substr(line * 1440, 1440),
              (line % 2 == 0 ? first : second).substr(line / 2 * 1440, 1440))
        << line;
}

}  // namespace
}  // namespace ppl_test
