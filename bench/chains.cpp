// The multi-pass qualities beside quality 3, beside each other, and to I420 beside OpenCV and plain
// C++.
#include <fmt/core.h>

#include <iterator>

#include "opencv_route.h"
#include "studio.h"

namespace ppl::bench {
namespace {

struct Chain {
  uint32_t quality;
  bool repairs;

  std::string name() const { return fmt::format("quality{}{}", quality, repairs ? "-repair" : ""); }
};

constexpr Chain chains[] = {{0, false},  {1, false},  {2, false}, {10, false}, {11, false},
                            {12, false}, {14, false}, {0, true},  {1, true},   {2, true}};

const std::string without_opencv = "Built without OpenCV: install libopencv-imgproc-dev.";

bool exists(const Chain &chain, Format format) {
  return chain.quality != 14 || (format != Format::rgb24 && format != Format::rgb32);
}

Comparison comparison(Studio &studio, Size size, Format format, Tier tier) {
  const auto setting = [&](uint32_t quality, bool repairs) {
    return Setting{.tier = tier, .format = format, .quality = quality, .repairs = repairs};
  };
  Comparison c;
  c.name = to_string(size) + "/" + to_string(format) + "/" + to_string(tier);
  c.pixels = size.pixels();
  c.frame = studio.frame(size);
  c.output = studio.output(size, setting(3, false));
  c.routes = {studio.library_route("quality3", size, setting(3, false))};
  for (const Chain &chain : chains) {
    if (!exists(chain, format)) continue;
    c.routes.push_back(
        studio.library_route(chain.name(), size, setting(chain.quality, chain.repairs)));
  }
  if (format == Format::i420) {
    const auto add_plain = [&](const char *name, const PlainBuild &build) {
      c.routes.push_back(studio.plain_route(name, size, build.quality_0_to_i420));
      c.routes.back().same_as = "quality0";
    };
    add_plain("plain-0", built_for_sse2::plain_build);
    if (__builtin_cpu_supports("avx2")) add_plain("plain-0-avx2", built_for_avx2::plain_build);
  }
  if (format == Format::i420 && has_opencv()) {
    constexpr OpenCvStages stages[] = {{true, true}, {true, false}, {false, false}};
    for (size_t quality = 0; quality < std::size(stages); ++quality) {
      Route &route = c.routes.emplace_back(
          studio.opencv_route(fmt::format("opencv-{}", quality), size, stages[quality]));
      route.same_as = fmt::format("quality{}", quality);
      route.tolerance = 10;  // another way to interpolate, and one look-up table for all colours
    }
  }
  return c;
}

}  // namespace

void add_chains(Suite &suite, Studio &studio) {
  Section section;
  section.name = "chains";
  section.title = "Multi-pass qualities, statistics off";
  section.explanation =
      "-repair: with the medium filter. plain-0: the stages of quality 0 as plain loops over "
      "lines,\n"
      "-O3 for SSE2; plain-0-avx2: with -mavx2. opencv-0, -1, -2: the like of qualities 0, 1 and "
      "2\n"
      "from OpenCV: LUT, demosaic (along edges; in -2 bilinear), transform, cvtColor to I420, and\n"
      "in -0 filter2D on the luma.";
  if (!has_opencv()) section.explanation += "\n" + without_opencv;
  section.references = {"quality3", "quality0", "plain-0", "opencv-0"};
  section.highlights = {{"quality0", "quality3"}, {"quality0", "plain-0"},
                        {"quality0", "opencv-0"}, {"quality1", "opencv-1"},
                        {"quality2", "opencv-2"}, {"quality1", "quality0"},
                        {"quality2", "quality1"}};
  section.stage_costs = {{"repair", {"quality0-repair", "quality0"}},
                         {"better demosaic", {"quality1", "quality2"}},
                         {"flat cells", {"quality10", "quality0"}},
                         {"enhancement", {"quality0", "quality1"}}};
  for (const Size size : sizes) {
    for (const Format format :
         {Format::i420, Format::yuyv, Format::uyvy, Format::rgb24, Format::rgb32}) {
      for (const Tier tier : tiers) {
        section.comparisons.push_back(comparison(studio, size, format, tier));
      }
    }
    const std::string i420 = to_string(size) + "/I420/SSE2";
    section.targets.push_back({i420, "quality0", "opencv-0", 0.75, 0.53});
    section.targets.push_back({i420, "quality1", "quality0", 0.75, 0.66});
    section.targets.push_back({i420, "quality2", "quality1", 1.0, 0.75});
  }
  suite.push_back(std::move(section));
}

}  // namespace ppl::bench
