// Frames from cameras through every conversion that takes their size, against reviewed checksums.
//
// The frames are no part of the project: the cache variable PPL_REAL_FRAMES names their folder, or
// the environment variable of that name. Without them the tests are skipped. To write the checksums
// anew, which takes minutes, since the reference model must give the same:
//
//   PPL_WRITE_CHECKSUMS=tests/real_frames/checksums.txt real_frames_test
#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "golden/golden_text.h"
#include "support/guarded_buffer.h"
#include "support/machine.h"

namespace ppl_test {
namespace {

using golden::Case;
using golden::Controls;
using golden::Format;
using golden::Video;

enum class Content { raw, yuyv, uyvy };

struct RealFrame {
  const char *name;
  Content content;
  uint16_t width, height;
  const char *odd_lines = nullptr;  // the file of the second field; the first has the even lines
};
std::ostream &operator<<(std::ostream &out, const RealFrame &frame) { return out << frame.name; }

constexpr RealFrame frames[] = {
    {"raw_bggr8_640x480_rose.raw", Content::raw, 640, 480},
    {"raw_bggr8_640x480_motorbikes.raw", Content::raw, 640, 480},
    {"raw_bggr8_640x480_houses.raw", Content::raw, 640, 480},
    {"raw_bggr8_640x480_lighthouse_rot90.raw", Content::raw, 640, 480},
    {"raw_bggr8_640x480_parrots.raw", Content::raw, 640, 480},
    {"raw_bggr8_1280x1024_testchart.raw", Content::raw, 1280, 1024},
    {"raw_bggr8_1280x1024_colorchecker.raw", Content::raw, 1280, 1024},
    {"yuyv_320x240_skyline.yuyv", Content::yuyv, 320, 240},
    {"yuyv_640x480_flower_f125.yuyv", Content::yuyv, 640, 480},
    {"uyvy_720x480i_citynight.uyvy", Content::uyvy, 720, 480},
    {"field_720x288_street_f010_top.uyvy", Content::uyvy, 720, 576,
     "field_720x288_street_f011_bottom.uyvy"},
};

std::filesystem::path folder() {
  const char *const chosen = getenv("PPL_REAL_FRAMES");
  return chosen != nullptr ? chosen : PPL_REAL_FRAMES;
}

std::vector<uint8_t> read_file(const std::string &name) {
  std::ifstream file(folder() / name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The whole frame, its two fields woven where they are files of their own.
std::vector<uint8_t> read_frame(const RealFrame &frame) {
  std::vector<uint8_t> bytes = read_file(frame.name);
  if (frame.odd_lines == nullptr) return bytes;
  const std::vector<uint8_t> even = bytes, odd = read_file(frame.odd_lines);
  const size_t line = size_t{frame.width} * 2;
  bytes.clear();
  for (size_t i = 0; i + line <= std::min(even.size(), odd.size()); i += line) {
    bytes.insert(bytes.end(), &even[i], &even[i] + line);
    bytes.insert(bytes.end(), &odd[i], &odd[i] + line);
  }
  return bytes;
}

struct Scale {
  int8_t decimation;
  uint8_t top, bottom;
};

// What ppl_new_frame_sizes makes of the frame's size.
std::vector<Scale> scales_of(const RealFrame &frame) {
  switch (frame.width) {
    case 320:
      return {{0, 0, 0}, {1, 0, 0}};
    case 640:
      return {{0, 0, 0}, {-1, 0, 0}, {1, 0, 0}, {2, 0, 0}};
    default:
      if (frame.height == 480) return {{0, 0, 0}, {0, 48, 48}};
      return {{0, 0, 0}};
  }
}

std::vector<Case> cases_of(const RealFrame &frame) {
  std::vector<Case> cases;
  for (const Tier tier : both_tiers) {
    const auto add_raw = [&](Format format, int quality, int8_t decimation = 0) {
      cases.push_back({format, frame.width, frame.height, decimation, tier, golden::plain,
                       static_cast<uint8_t>(quality), Controls::defaults});
    };
    const auto add_video = [&](Video video) {
      for (const Scale &scale : scales_of(frame))
        cases.push_back(golden::packed(video, frame.width, frame.height, scale.decimation, tier,
                                       golden::plain, scale.top, scale.bottom));
    };
    if (frame.content == Content::raw) {
      for (const Format format :
           {Format::i420, Format::yuyv, Format::uyvy, Format::rgb24, Format::rgb32})
        add_raw(format, 3);
      for (const int quality : {0, 1, 2, 10, 11, 12, 13}) add_raw(Format::i420, quality);
      add_raw(Format::i420, 14, 1);  // unscaled, three of its values may be anything
      continue;
    }
    // Everything but what takes the other packing. The YYYY packing takes any bytes.
    const std::string other = frame.content == Content::yuyv ? "UYVYTo" : "YUYVTo";
    for (size_t i = 1; i < std::size(golden::video_kinds); ++i) {
      const golden::VideoKind &kind = golden::video_kinds[i];
      if (kind.half_bytes <= 4 && std::string(kind.name).find(other) == std::string::npos)
        add_video(static_cast<Video>(i));
    }
  }
  return cases;
}

// Lays the frame out for a case: as it is, or as three fields, the first one standing in for the
// reference that no file has.
void fill_source(const Case &c, const std::vector<uint8_t> &frame, uint8_t *source) {
  if (!golden::has_fields(c)) {
    memcpy(source, frame.data(), std::min<size_t>(frame.size(), golden::source_bytes(c)));
    return;
  }
  const size_t line = golden::line_bytes(c);
  for (size_t y = 0; y < c.height; ++y) {
    const size_t field = 1 + y % 2;
    memcpy(source + field * golden::field_bytes(c) + y / 2 * line, &frame[y * line], line);
  }
  memcpy(source, source + golden::field_bytes(c), golden::field_bytes(c));
}

class RealFrames : public testing::TestWithParam<RealFrame> {
 protected:
  static void SetUpTestSuite() {
    for (const golden::Line &line : golden::read_lines(PPL_REAL_FRAMES_CHECKSUMS))
      reviewed()[line.description] = line.sums;
    if (const char *const path = getenv("PPL_WRITE_CHECKSUMS")) {
      written().open(path);
      written() << "# Checksums of real frames, in the form of tests/golden/golden.txt: result, "
                   "output, source,\n# statistics. Review every line that changes.\n";
    }
  }

  static std::map<std::string, std::string> &reviewed() {
    static std::map<std::string, std::string> lines;
    return lines;
  }
  static std::ofstream &written() {
    static std::ofstream file;
    return file;
  }
};

INSTANTIATE_TEST_SUITE_P(Frames, RealFrames, testing::ValuesIn(frames),
                         [](const testing::TestParamInfo<RealFrame> &info) {
                           const std::string name = info.param.name;
                           return name.substr(0, name.find('.'));
                         });

TEST_P(RealFrames, EveryConversionGivesTheReviewedPicture) {
  const RealFrame &frame = GetParam();
  for (const char *name : {frame.name, frame.odd_lines})
    if (name != nullptr && !std::filesystem::exists(folder() / name))
      GTEST_SKIP() << "there is no " << name << " in " << folder();
  const std::vector<uint8_t> bytes = read_frame(frame);
  ASSERT_EQ(bytes.size(),
            size_t{frame.width} * frame.height * (frame.content == Content::raw ? 1 : 2));
  const auto fill = [&](const Case &c, uint32_t, uint8_t *source) {
    fill_source(c, bytes, source);
  };

  for (const Case &c : cases_of(frame)) {
    if (!has_tier(c.tier)) continue;
    GuardedBuffer source(golden::source_bytes(c), Placement::ends_at_guard);
    GuardedBuffer output(golden::output_bytes(c), Placement::ends_at_guard);
    const std::string description = std::string(frame.name) + ": " + golden::describe(c);
    ppl::test_hooks::reload_pool();
    const std::string sums =
        golden::checksums(golden::run<golden::Library>(c, source.data(), output.data(), fill));
    EXPECT_FALSE(source.slack_damage() || output.slack_damage()) << description;
    if (!written().is_open()) {
      const auto found = reviewed().find(description);
      EXPECT_EQ(sums, found == reviewed().end() ? "no such line" : found->second) << description;
      continue;
    }
    source.fill_with_poison();
    ppl_model::machine::reload_pool();
    const std::string expected =
        golden::checksums(golden::run<golden::Model>(c, source.data(), output.data(), fill));
    EXPECT_TRUE(golden::model_is_definite()) << description;
    EXPECT_EQ(sums, expected) << description;
    written() << description << " | " << sums << "\n";
  }
}

}  // namespace
}  // namespace ppl_test
