// Packed video: progressive frames beside libyuv, woven fields beside a copy of their lines.
#include <fmt/core.h>

#include <cstring>
#include <memory>
#include <stdexcept>

#include "buffer.h"
#include "libyuv_route.h"
#include "studio.h"

namespace ppl::bench {
namespace {

constexpr size_t largest_frame = 1280 * 1024;

// A context and a frame of packed video, of which there are no consumed samples to restore.
struct VideoStudio {
  ContextPointer context = new_context();
  Buffer src{2 * largest_frame, 704}, reference{largest_frame, 1408}, dst{3 * largest_frame, 2112};

  VideoStudio();
};

// A scene that moves a little between the fields, with noise.
VideoStudio::VideoStudio() {
  uint32_t noise = 1;
  const auto painted = [&noise](size_t place) {
    noise = noise * 1664525 + 1013904223;
    return static_cast<uint8_t>(16 + (place / 97 + place / 4096) % 200 + (noise >> 28));
  };
  for (size_t i = 0; i < 2 * largest_frame; ++i) src.start()[i] = painted(i);
  for (size_t i = 0; i < largest_frame; ++i) reference.start()[i] = painted(largest_frame + i + 40);
}

using Video = std::shared_ptr<VideoStudio>;

using ProgressiveEntry = decltype(&YUYVToI420MMX);

struct Conversion {
  const char *name;
  ProgressiveEntry entry;
  LibyuvConversion LibyuvConversions::*by_libyuv;
  Format format;
};

constexpr Conversion conversions[] = {
    {"YUYV-to-I420", YUYVToI420MMX, &LibyuvConversions::yuyv_to_i420, Format::i420},
    {"UYVY-to-I420", UYVYToI420MMX, &LibyuvConversions::uyvy_to_i420, Format::i420},
    {"YUYV-to-RGB24", YUYVToRGB24MMX, &LibyuvConversions::yuyv_to_rgb24, Format::rgb24},
    {"UYVY-to-RGB24", UYVYToRGB24MMX, &LibyuvConversions::uyvy_to_rgb24, Format::rgb24},
};

struct Limit {
  const char *name;
  LibyuvLimit limit;
};

constexpr Limit limits[] = {{"libyuv-SSE2", LibyuvLimit::sse2},
                            {"libyuv-SSSE3", LibyuvLimit::ssse3},
                            {"libyuv", LibyuvLimit::none}};

Comparison empty_comparison(const Video &video, Size size, const char *name,
                            size_t output_bytes_per_two_pixels) {
  const auto pixels = static_cast<size_t>(size.pixels());
  Comparison c;
  c.name = to_string(size) + "/" + name;
  c.pixels = size.pixels();
  c.frame = {video->src.start(), 2 * pixels};
  c.output = {video->dst.start(), pixels * output_bytes_per_two_pixels / 2};
  return c;
}

Route route_of(std::string name, std::function<void()> prepare, std::function<void()> run) {
  Route route;
  route.name = std::move(name);
  route.prepare = std::move(prepare);
  route.run = std::move(run);
  return route;
}

// Sets the tier, and makes the size the context's before the clock runs.
std::function<void()> preparation(const Video &video, Size size, Tier tier) {
  return [video, size, tier] {
    PplContext *const context = video->context.get();
    ppl_set_P3_only(context, tier == Tier::p3);
    const auto w = static_cast<uint32_t>(size.width), h = static_cast<uint32_t>(size.height);
    if (ppl_new_frame_sizes(context, w, h, w, h) == 0) throw std::runtime_error("size refused");
  };
}

Comparison progressive(const Video &video, Size size, const Conversion &conversion) {
  const bool is_i420 = conversion.format == Format::i420;
  Comparison c = empty_comparison(video, size, conversion.name, is_i420 ? 3 : 6);
  const auto w = static_cast<uint32_t>(size.width), h = static_cast<uint32_t>(size.height);
  for (const Tier tier : tiers) {
    c.routes.push_back(route_of(
        to_string(tier), preparation(video, size, tier), [video, entry = conversion.entry, w, h] {
          entry(video->context.get(), video->src.start(), video->dst.start(), w, h, w, h);
        }));
  }
  if (has_libyuv()) {
    const LibyuvConversion convert = libyuv_conversions().*conversion.by_libyuv;
    const VideoFrame frame = {video->src.start(), video->dst.start(), size.width, size.height};
    for (const auto &[name, limit] : limits) {
      c.routes.push_back(route_of(
          name, [limit = limit] { limit_libyuv(limit); }, [=] { convert(frame); }));
      // Its RGB has other rounding.
      if (!is_i420) c.routes.back().tolerance = 2;
    }
  }
  for (size_t i = 1; i < c.routes.size(); ++i) c.routes[i].same_as = "P3";
  c.routes.push_back(route_of(
      "memcpy", [] {},
      [video, bytes = c.frame.size()] {
        std::memcpy(video->dst.start(), video->src.start(), bytes);
      }));
  return c;
}

using FieldEntry = decltype(&IntlYUYVToYUYVMMX);

Comparison interlaced(const Video &video, Size size, const char *name, FieldEntry weave,
                      FieldEntry weave_with_test) {
  Comparison c = empty_comparison(video, size, name, 4);
  const auto w = static_cast<uint32_t>(size.width), h = static_cast<uint32_t>(size.height);
  const auto add = [&](const char *suffix, FieldEntry entry) {
    for (const Tier tier : tiers) {
      c.routes.push_back(
          route_of(to_string(tier) + suffix, preparation(video, size, tier), [video, entry, w, h] {
            uint8_t *const first = video->src.start();
            uint8_t *const second = first + static_cast<size_t>(w) * h;
            entry(video->context.get(), video->reference.start(), first, second, video->dst.start(),
                  w, h, w, h);
          }));
    }
  };
  c.routes.push_back(route_of(
      "copies", [] {},
      [video, w, h] {
        const size_t line = 2 * static_cast<size_t>(w);
        const uint8_t *const first = video->src.start();
        const uint8_t *const second = first + line * (h / 2);
        for (size_t i = 0; i < h / 2; ++i) {
          std::memcpy(video->dst.start() + 2 * i * line, first + i * line, line);
          std::memcpy(video->dst.start() + (2 * i + 1) * line, second + i * line, line);
        }
      }));
  add("-no-motion", weave);
  for (size_t i = 1; i < c.routes.size(); ++i) c.routes[i].same_as = "copies";
  add("-motion", weave_with_test);
  c.routes.back().same_as = "P3-motion";
  return c;
}

}  // namespace

void add_packed_video(Suite &suite) {
  const auto video = std::make_shared<VideoStudio>();
  Section frames;
  frames.name = "packed_video";
  frames.title = "Packed video, progressive";
  frames.explanation =
      "libyuv-SSE2, -SSSE3: libyuv limited to these instructions; libyuv: with all that the "
      "processor\n"
      "has. To RGB24 it goes line by line through ARGB.";
  if (!has_libyuv()) frames.explanation += "\nBuilt without libyuv: install libyuv-dev.";
  frames.references = {"libyuv-SSE2", "libyuv-SSSE3", "libyuv", "memcpy"};
  frames.highlights = {
      {"SSE2", "libyuv-SSE2"}, {"SSE2", "libyuv-SSSE3"}, {"SSE2", "libyuv"}, {"P3", "libyuv-SSE2"}};
  for (const Size size : sizes) {
    for (const Conversion &conversion : conversions) {
      frames.comparisons.push_back(progressive(video, size, conversion));
      const bool is_i420 = conversion.format == Format::i420;
      frames.targets.push_back({frames.comparisons.back().name, "SSE2", "libyuv-SSE2",
                                is_i420 ? 1.1 : 0.2, is_i420 ? 1.0 : 0.12});
    }
  }
  suite.push_back(std::move(frames));

  Section fields;
  fields.name = "packed_video";
  fields.title = "Packed video, woven from two fields";
  fields.explanation = "copies: each line of the fields by memcpy. -motion: with the motion test.";
  fields.references = {"copies"};
  fields.highlights = {{"SSE2-no-motion", "copies"},
                       {"P3-no-motion", "copies"},
                       {"SSE2-motion", "copies"},
                       {"P3-motion", "copies"}};
  for (const Size size : sizes) {
    fields.comparisons.push_back(
        interlaced(video, size, "weave-YUYV", IntlYUYVToYUYVMMX_no_motion, IntlYUYVToYUYVMMX));
    fields.comparisons.push_back(
        interlaced(video, size, "weave-UYVY", IntlUYVYToUYVYMMX_no_motion, IntlUYVYToUYVYMMX));
  }
  for (const Comparison &comparison : fields.comparisons) {
    fields.targets.push_back({comparison.name, "SSE2-no-motion", "copies", 1.2, 1.0});
  }
  suite.push_back(std::move(fields));
}

}  // namespace ppl::bench
