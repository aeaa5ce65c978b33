// Frames whose results are kept as checksums: the cases, how each is run, and what is summed up.
// Needs nothing but the language, so that it also runs where there is no C library.
#pragma once

#include <stdint.h>

#include "ppl.h"
#include "support/tier.h"

namespace golden {

enum class Format : uint8_t { i420, yuyv, uyvy, rgb24, rgb32 };
using ppl_test::Tier;

// Controls that are set before the frames, as one group.
enum class Controls : uint8_t {
  defaults,
  front_end,      // black levels, gains, deltas
  curves,         // another gamma index and a contrast
  own_curves,     // copied tables
  colour,         // saturation, hue and contrast
  matrix,         // sensor matrices
  bands,          // narrow statistics bands
  motion,         // a high threshold of the motion test
  no_collection,  // no statistics
  refused         // values that the controls store and the kernels do not take
};

// Entry functions of packed video, of one source and of three fields, with their format and the
// half bytes of a source pixel.
// clang-format off
#define PPL_GOLDEN_VIDEO(FUNCTION) \
  FUNCTION(YUYVToI420MMX, i420, 4) \
  FUNCTION(UYVYToI420MMX, i420, 4) \
  FUNCTION(YUYVToRGB24MMX, rgb24, 4) \
  FUNCTION(UYVYToRGB24MMX, rgb24, 4) \
  FUNCTION(YUYVYYYYToI420MMX, i420, 3) \
  FUNCTION(UYVYYYYYToI420MMX, i420, 3) \
  FUNCTION(RGB24ToRGB32MMX, rgb32, 6)
#define PPL_GOLDEN_FIELDS(FUNCTION) \
  FUNCTION(IntlYUYVToYUYVMMX, yuyv, 4) \
  FUNCTION(IntlYUYVToYUYVMMX_no_motion, yuyv, 4) \
  FUNCTION(IntlUYVYToUYVYMMX, uyvy, 4) \
  FUNCTION(IntlUYVYToUYVYMMX_no_motion, uyvy, 4) \
  FUNCTION(IntlUYVYToYUYVMMX, yuyv, 4) \
  FUNCTION(IntlUYVYToYUYVMMX_no_motion, yuyv, 4) \
  FUNCTION(IntlYUYVToUYVYMMX, uyvy, 4) \
  FUNCTION(IntlYUYVToUYVYMMX_no_motion, uyvy, 4) \
  FUNCTION(IntlYUYVToI420MMX, i420, 4) \
  FUNCTION(IntlYUYVToI420MMX_no_motion, i420, 4) \
  FUNCTION(IntlUYVYToI420MMX, i420, 4) \
  FUNCTION(IntlUYVYToI420MMX_no_motion, i420, 4) \
  FUNCTION(IntlYUYVToRGB24MMX, rgb24, 4) \
  FUNCTION(IntlYUYVToRGB24MMX_no_motion, rgb24, 4) \
  FUNCTION(IntlUYVYToRGB24MMX, rgb24, 4) \
  FUNCTION(IntlUYVYToRGB24MMX_no_motion, rgb24, 4)
// clang-format on

enum class Video : uint8_t {
  none,  // a raw frame
#define PPL_GOLDEN_NAME(name, format, half_bytes) name,
  PPL_GOLDEN_VIDEO(PPL_GOLDEN_NAME) PPL_GOLDEN_FIELDS(PPL_GOLDEN_NAME)
#undef PPL_GOLDEN_NAME
};

struct VideoKind {
  const char *name;
  Format format;
  uint8_t half_bytes;  // of a source pixel
};
inline constexpr VideoKind video_kinds[] = {
    {"", Format::i420, 2},
#define PPL_GOLDEN_KIND(name, format, half_bytes) {#name, Format::format, half_bytes},
    PPL_GOLDEN_VIDEO(PPL_GOLDEN_KIND) PPL_GOLDEN_FIELDS(PPL_GOLDEN_KIND)
#undef PPL_GOLDEN_KIND
};
constexpr const VideoKind &kind_of(Video video) {
  return video_kinds[static_cast<uint32_t>(video)];
}

enum Mirrors : uint8_t { plain = 0, h = 1, v = 2, hv = 3 };

struct Case {
  Format format;
  uint16_t width, height;
  int8_t decimation;
  Tier tier;
  uint8_t mirrors;
  uint8_t quality;
  Controls controls;
  uint8_t frames = 1;           // the last one counts
  uint16_t stride = 0;          // 0: the width
  uint8_t top = 0, bottom = 0;  // black lines
  Video video = Video::none;
};

constexpr Case packed(Video video, uint16_t width, uint16_t height, int8_t decimation, Tier tier,
                      uint8_t mirrors = plain, uint8_t top = 0, uint8_t bottom = 0,
                      Controls controls = Controls::defaults) {
  return {kind_of(video).format,
          width,
          height,
          decimation,
          tier,
          mirrors,
          3,
          controls,
          1,
          0,
          top,
          bottom,
          video};
}

inline constexpr Case cases[] = {
    // Every format on each tier.
    {Format::i420, 160, 24, 0, Tier::p3, plain, 3, Controls::defaults},
    {Format::i420, 160, 24, 0, Tier::sse2, plain, 3, Controls::defaults},
    {Format::yuyv, 160, 24, 0, Tier::p3, plain, 3, Controls::defaults},
    {Format::yuyv, 160, 24, 0, Tier::sse2, plain, 3, Controls::defaults},
    {Format::uyvy, 160, 24, 0, Tier::p3, plain, 3, Controls::defaults},
    {Format::uyvy, 160, 24, 0, Tier::sse2, plain, 3, Controls::defaults},
    {Format::rgb24, 160, 24, 0, Tier::p3, plain, 3, Controls::defaults},
    {Format::rgb24, 160, 24, 0, Tier::sse2, plain, 3, Controls::defaults},
    {Format::rgb32, 160, 24, 0, Tier::p3, plain, 3, Controls::defaults},
    {Format::rgb32, 160, 24, 0, Tier::sse2, plain, 3, Controls::defaults},
    // Mirrors.
    {Format::i420, 160, 24, 0, Tier::p3, h, 3, Controls::defaults},
    {Format::i420, 160, 24, 0, Tier::sse2, v, 3, Controls::defaults},
    {Format::i420, 160, 24, 0, Tier::sse2, hv, 3, Controls::defaults},
    {Format::yuyv, 160, 24, 0, Tier::sse2, h, 3, Controls::defaults},
    {Format::yuyv, 160, 24, 0, Tier::p3, hv, 3, Controls::defaults},
    {Format::uyvy, 160, 24, 0, Tier::p3, v, 3, Controls::defaults},
    {Format::uyvy, 160, 24, 0, Tier::sse2, hv, 3, Controls::defaults},
    {Format::rgb24, 160, 24, 0, Tier::sse2, h, 3, Controls::defaults},
    {Format::rgb24, 160, 24, 0, Tier::p3, v, 3, Controls::no_collection},
    {Format::rgb24, 160, 24, 0, Tier::sse2, hv, 3, Controls::defaults},
    {Format::rgb32, 160, 24, 0, Tier::p3, h, 3, Controls::defaults},
    {Format::rgb32, 160, 24, 0, Tier::sse2, hv, 3, Controls::defaults},
    // Sizes.
    {Format::i420, 130, 14, 0, Tier::p3, plain, 3, Controls::defaults},
    {Format::i420, 130, 14, 0, Tier::sse2, h, 3, Controls::defaults},
    {Format::yuyv, 142, 22, 0, Tier::sse2, plain, 3, Controls::defaults},
    {Format::uyvy, 136, 25, 0, Tier::p3, plain, 3, Controls::defaults},
    {Format::rgb24, 144, 26, 0, Tier::sse2, plain, 3, Controls::defaults},
    {Format::rgb24, 130, 22, 0, Tier::p3, plain, 3, Controls::defaults},
    {Format::rgb32, 190, 18, 0, Tier::sse2, v, 3, Controls::defaults},
    {Format::i420, 640, 480, 0, Tier::sse2, plain, 3, Controls::defaults},
    {Format::rgb24, 640, 480, 0, Tier::p3, plain, 3, Controls::no_collection},
    {Format::i420, 1280, 1024, 0, Tier::sse2, plain, 3, Controls::defaults},
    // Lines further apart than they are long.
    {Format::i420, 128, 24, 0, Tier::sse2, plain, 3, Controls::defaults, 1, 256},
    {Format::rgb32, 144, 22, 0, Tier::p3, plain, 3, Controls::defaults, 1, 176},
    // Controls.
    {Format::i420, 160, 24, 0, Tier::sse2, plain, 3, Controls::front_end},
    {Format::rgb32, 160, 24, 0, Tier::p3, plain, 3, Controls::front_end},
    {Format::i420, 160, 24, 0, Tier::p3, plain, 3, Controls::curves},
    {Format::i420, 160, 24, 0, Tier::sse2, plain, 3, Controls::own_curves},
    {Format::yuyv, 160, 24, 0, Tier::sse2, plain, 3, Controls::colour},
    {Format::rgb24, 160, 24, 0, Tier::sse2, plain, 3, Controls::colour},
    {Format::uyvy, 160, 24, 0, Tier::p3, plain, 3, Controls::matrix},
    {Format::rgb32, 160, 24, 0, Tier::sse2, plain, 3, Controls::matrix},
    {Format::i420, 176, 26, 0, Tier::p3, plain, 3, Controls::bands},
    {Format::i420, 176, 26, 0, Tier::sse2, plain, 3, Controls::bands},
    {Format::yuyv, 160, 24, 0, Tier::p3, plain, 3, Controls::refused},
    // Two to one.
    {Format::i420, 160, 24, 1, Tier::p3, plain, 3, Controls::defaults},
    {Format::i420, 160, 24, 1, Tier::sse2, hv, 3, Controls::defaults},
    {Format::yuyv, 160, 24, 1, Tier::sse2, plain, 3, Controls::defaults},
    {Format::uyvy, 160, 22, 1, Tier::p3, h, 3, Controls::defaults},
    {Format::rgb24, 136, 26, 1, Tier::p3, plain, 3, Controls::defaults},
    {Format::rgb32, 160, 24, 1, Tier::sse2, v, 3, Controls::defaults},
    // Black lines.
    {Format::i420, 128, 48, 1, Tier::sse2, plain, 3, Controls::defaults, 1, 0, 2, 4},
    {Format::rgb24, 128, 48, 0, Tier::sse2, plain, 3, Controls::defaults, 1, 0, 2, 4},
    // One to two.
    {Format::i420, 128, 24, -1, Tier::p3, plain, 3, Controls::defaults},
    {Format::i420, 128, 24, -1, Tier::sse2, hv, 3, Controls::defaults},
    {Format::rgb24, 128, 24, -1, Tier::sse2, plain, 3, Controls::defaults},
    {Format::rgb24, 128, 24, -1, Tier::p3, v, 3, Controls::defaults},
    {Format::rgb32, 128, 48, -1, Tier::p3, plain, 3, Controls::defaults},
    {Format::rgb32, 128, 48, -1, Tier::sse2, h, 3, Controls::defaults},
    // Four to one.
    {Format::i420, 128, 48, 2, Tier::p3, plain, 3, Controls::defaults},
    {Format::i420, 128, 48, 2, Tier::sse2, plain, 3, Controls::defaults},
    // Monochrome.
    {Format::i420, 160, 24, 0, Tier::p3, plain, 13, Controls::defaults},
    {Format::i420, 160, 24, 0, Tier::sse2, hv, 13, Controls::curves},
    {Format::rgb24, 160, 24, 0, Tier::sse2, plain, 13, Controls::defaults},
    {Format::i420, 160, 24, 1, Tier::sse2, plain, 13, Controls::defaults},
    {Format::rgb24, 160, 24, 1, Tier::p3, plain, 13, Controls::defaults},
    {Format::i420, 128, 24, -1, Tier::p3, plain, 13, Controls::defaults},
    {Format::rgb24, 128, 24, -1, Tier::sse2, h, 13, Controls::defaults},
    // Copies, and a quality that does nothing.
    {Format::i420, 160, 24, 0, Tier::p3, hv, 4, Controls::defaults, 8},
    {Format::i420, 136, 13, 0, Tier::sse2, plain, 9, Controls::defaults},
    {Format::yuyv, 160, 24, 1, Tier::p3, plain, 4, Controls::defaults},
    {Format::uyvy, 160, 24, 1, Tier::sse2, plain, 9, Controls::defaults},
    {Format::rgb24, 160, 24, 0, Tier::sse2, plain, 4, Controls::defaults},
    {Format::rgb32, 160, 24, 1, Tier::p3, plain, 4, Controls::defaults},
    {Format::i420, 160, 24, 0, Tier::sse2, plain, 5, Controls::defaults},
    // The multi-pass qualities.
    {Format::i420, 160, 26, 0, Tier::p3, plain, 0, Controls::defaults},
    {Format::i420, 160, 26, 0, Tier::sse2, plain, 0, Controls::defaults},
    {Format::i420, 160, 26, 0, Tier::p3, plain, 1, Controls::defaults},
    {Format::i420, 160, 26, 0, Tier::sse2, plain, 1, Controls::defaults},
    {Format::i420, 160, 26, 0, Tier::p3, plain, 2, Controls::defaults},
    {Format::i420, 160, 26, 0, Tier::sse2, plain, 2, Controls::defaults},
    {Format::i420, 160, 26, 0, Tier::p3, plain, 10, Controls::defaults},
    {Format::i420, 160, 26, 0, Tier::sse2, plain, 10, Controls::defaults},
    {Format::i420, 160, 26, 0, Tier::p3, plain, 11, Controls::defaults},
    {Format::i420, 160, 26, 0, Tier::sse2, plain, 11, Controls::defaults},
    {Format::i420, 160, 26, 0, Tier::p3, plain, 12, Controls::defaults},
    {Format::i420, 160, 26, 0, Tier::sse2, plain, 12, Controls::defaults},
    {Format::i420, 160, 26, 1, Tier::p3, plain, 14, Controls::defaults},
    {Format::i420, 160, 26, 1, Tier::sse2, h, 14, Controls::defaults},
    {Format::rgb24, 160, 26, 0, Tier::sse2, plain, 0, Controls::defaults},
    {Format::rgb32, 160, 26, 0, Tier::p3, h, 1, Controls::no_collection},
    {Format::rgb24, 160, 26, 0, Tier::p3, v, 2, Controls::no_collection},
    {Format::rgb32, 160, 26, 0, Tier::sse2, hv, 10, Controls::defaults},
    {Format::rgb24, 160, 26, 0, Tier::sse2, plain, 11, Controls::colour},
    {Format::rgb32, 160, 26, 0, Tier::p3, plain, 12, Controls::no_collection},
    {Format::yuyv, 160, 26, 0, Tier::sse2, h, 0, Controls::front_end},
    {Format::uyvy, 160, 26, 0, Tier::p3, v, 1, Controls::matrix},
    {Format::yuyv, 142, 22, 0, Tier::p3, hv, 2, Controls::defaults},
    {Format::uyvy, 160, 26, 0, Tier::sse2, plain, 12, Controls::defaults},
    {Format::yuyv, 160, 26, 1, Tier::sse2, h, 14, Controls::defaults},
    {Format::i420, 146, 22, 0, Tier::sse2, plain, 0, Controls::bands},
    {Format::i420, 160, 28, 1, Tier::p3, plain, 0, Controls::defaults},
    {Format::yuyv, 160, 28, 1, Tier::sse2, plain, 1, Controls::defaults},
    {Format::rgb24, 160, 28, 1, Tier::sse2, h, 2, Controls::defaults},
    {Format::i420, 128, 24, -1, Tier::sse2, plain, 0, Controls::defaults},
    {Format::rgb24, 128, 24, -1, Tier::p3, plain, 1, Controls::no_collection},
    {Format::rgb24, 128, 24, -1, Tier::sse2, h, 2, Controls::defaults},
    {Format::i420, 640, 480, 0, Tier::sse2, v, 10, Controls::defaults},
    // What a frame leaves behind for the next one.
    {Format::i420, 160, 24, 0, Tier::p3, plain, 3, Controls::bands, 3},
    {Format::rgb24, 160, 24, 0, Tier::p3, plain, 3, Controls::defaults, 2},
// Packed video: every entry function on each tier.
#define PPL_GOLDEN_BOTH_TIERS(name, format, half_bytes) \
  packed(Video::name, 160, 22, 0, Tier::p3), packed(Video::name, 160, 22, 0, Tier::sse2),
    PPL_GOLDEN_VIDEO(PPL_GOLDEN_BOTH_TIERS) PPL_GOLDEN_FIELDS(PPL_GOLDEN_BOTH_TIERS)
#undef PPL_GOLDEN_BOTH_TIERS
    // Mirrors, and conversions that know none.
    packed(Video::YUYVToI420MMX, 160, 22, 0, Tier::p3, h),
    packed(Video::UYVYToI420MMX, 160, 22, 0, Tier::sse2, v),
    packed(Video::YUYVToI420MMX, 160, 22, 0, Tier::sse2, hv),
    packed(Video::YUYVYYYYToI420MMX, 160, 22, 0, Tier::sse2, hv),
    packed(Video::YUYVToRGB24MMX, 160, 22, 0, Tier::p3, hv),
    packed(Video::IntlUYVYToI420MMX, 160, 22, 0, Tier::sse2, hv),
    // Sizes: no multiple of a vector, odd, one that needs no raw frame before it.
    packed(Video::YUYVToI420MMX, 142, 14, 0, Tier::sse2),
    packed(Video::UYVYToRGB24MMX, 130, 18, 0, Tier::p3),
    packed(Video::IntlYUYVToYUYVMMX, 138, 14, 0, Tier::sse2),
    packed(Video::IntlUYVYToRGB24MMX, 131, 15, 0, Tier::p3),
    packed(Video::UYVYToI420MMX, 320, 240, 0, Tier::sse2),
    packed(Video::IntlYUYVToI420MMX, 320, 240, 0, Tier::p3),
    // Black lines.
    packed(Video::YUYVToI420MMX, 160, 22, 0, Tier::p3, v, 3, 4),
    packed(Video::UYVYToRGB24MMX, 160, 22, 0, Tier::sse2, plain, 3, 4),
    packed(Video::UYVYYYYYToI420MMX, 160, 22, 0, Tier::p3, plain, 3, 4),
    packed(Video::IntlYUYVToUYVYMMX, 160, 22, 0, Tier::sse2, plain, 3, 4),
    packed(Video::IntlUYVYToI420MMX_no_motion, 160, 22, 0, Tier::p3, plain, 3, 4),
    packed(Video::IntlYUYVToRGB24MMX, 160, 22, 0, Tier::sse2, plain, 3, 4),
    // Another threshold.
    packed(Video::IntlYUYVToYUYVMMX, 160, 22, 0, Tier::p3, plain, 0, 0, Controls::motion),
    packed(Video::IntlUYVYToI420MMX, 160, 22, 0, Tier::sse2, plain, 0, 0, Controls::motion),
    // Scales: most convert nothing there.
    packed(Video::YUYVToI420MMX, 160, 24, 1, Tier::sse2),
    packed(Video::YUYVToRGB24MMX, 160, 24, 1, Tier::p3),
    packed(Video::IntlYUYVToYUYVMMX, 160, 24, 1, Tier::sse2, plain, 1, 2),
    packed(Video::IntlUYVYToI420MMX_no_motion, 160, 24, 2, Tier::p3),
    packed(Video::IntlUYVYToRGB24MMX, 128, 22, -1, Tier::sse2),
    packed(Video::IntlUYVYToRGB24MMX_no_motion, 128, 22, -1, Tier::p3),
};

inline constexpr uint32_t case_count = sizeof(cases) / sizeof(cases[0]);

// ---- Buffers. Both start on 16-byte boundaries.

constexpr uint32_t stride_of(const Case &c) { return c.stride != 0 ? c.stride : c.width; }

// Packed video: a source line, and a field, which starts on a boundary of its own.
constexpr uint32_t line_bytes(const Case &c) { return c.width * kind_of(c.video).half_bytes / 2u; }
constexpr uint32_t field_bytes(const Case &c) {
  return (line_bytes(c) * (c.height / 2u) + 15) / 16 * 16;
}
constexpr bool has_fields(const Case &c) { return c.video >= Video::IntlYUYVToYUYVMMX; }

constexpr uint32_t source_bytes(const Case &c) {
  if (has_fields(c)) return 3 * field_bytes(c);
  if (c.video != Video::none) return line_bytes(c) * c.height;
  return stride_of(c) * c.height + 64;  // copies read whole groups
}

constexpr uint32_t scaled(uint32_t length, int8_t decimation) {
  return decimation < 0 ? length * 2 : length >> decimation;
}
constexpr uint32_t output_width(const Case &c) { return scaled(c.width, c.decimation); }
constexpr uint32_t output_height(const Case &c) {
  return scaled(c.height, c.decimation) + c.top + c.bottom;
}

constexpr uint32_t output_bytes(const Case &c) {
  uint32_t size = output_width(c) * output_height(c);
  // Progressive video does not scale.
  if (c.video != Video::none && size < c.width * c.height * 1u) size = c.width * c.height;
  const uint32_t picture = c.format == Format::i420    ? size * 3 / 2
                           : c.format == Format::rgb24 ? size * 3
                           : c.format == Format::rgb32 ? size * 4
                                                       : size * 2;
  // Four to one writes far behind the declared end.
  return (c.decimation == 2 ? picture * 4 : picture) + 128;
}

inline constexpr uint32_t largest_source_bytes = 1280 * 1024 + 64;
inline constexpr uint32_t largest_output_bytes = 1280 * 1024 * 3 / 2 + 128;

constexpr bool buffers_suffice() {
  for (const Case &c : cases)
    if (source_bytes(c) > largest_source_bytes || output_bytes(c) > largest_output_bytes)
      return false;
  return true;
}
static_assert(buffers_suffice());

// ---- Frames

// Slow slopes, an edge, a saturated corner and noise: some cells are nearly grey, some are not.
struct Noise {
  uint32_t state;
  uint32_t next() {  // xorshift
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    return state;
  }
};

inline void make_frame(const Case &c, uint32_t number, uint8_t *source) {
  Noise noise{0x9E3779B9u + number * 0x85EBCA6Bu + c.width * 31u + c.height};
  const uint32_t bytes = source_bytes(c), stride = stride_of(c);
  for (uint32_t i = 0; i < bytes; ++i) source[i] = static_cast<uint8_t>(noise.next() >> 11);
  for (uint32_t y = 0; y < c.height; ++y)
    for (uint32_t x = 0; x < c.width; ++x) {
      uint32_t level = (x * 190 / c.width + y * 60 / c.height + number * 9) & 255;
      if ((x / 2 + y) % 48 > 40) level ^= 96;
      uint32_t value = level + (noise.next() >> 28);
      if (x < 16 && y < 4) value = 255;
      if (x > c.width * 3u / 4) value = (value * (x % 2 + 1 + y % 2)) / 2;
      source[y * stride + x] = static_cast<uint8_t>(value > 255 ? 255 : value);
    }
}

// The same for packed video, byte by byte, with a bar that moves between the fields. The reference
// field is two fields older than the second one.
inline void make_video(const Case &c, uint8_t *source) {
  Noise noise{0x51ED270Bu + c.width * 31u + c.height};
  const uint32_t sources = has_fields(c) ? 3 : 1, pitch = line_bytes(c);
  const uint32_t part = source_bytes(c) / sources;
  for (uint32_t field = 0; field < sources; ++field)
    for (uint32_t i = 0; i < part; ++i) {
      const uint32_t x = i % pitch, y = i / pitch;
      uint32_t value = (x * 170 / pitch + y * 4 + x % 4 * 20) + (noise.next() >> 29);
      if ((x + y + field * 24) % 128 < 32) value += 70;
      source[field * part + i] = static_cast<uint8_t>(value > 255 ? 510 - value : value);
    }
}

// ---- Running a case. Api gives the functions of the library, or those of something that must
// agree with it, under their own names, and the type of their context.

template <class Api>
void set_controls(typename Api::Context *ctx, Controls controls) {
  uint8_t table[256];
  switch (controls) {
    case Controls::defaults:
      break;
    case Controls::front_end:
      Api::ppl_set_optical_black_b_gb_gr_r(ctx, 3, 6, 9, 12);
      Api::ppl_set_rgb_gain(ctx, 413, 256, 333);
      Api::ppl_set_rgb_delta(ctx, 5, -7, -30);
      break;
    case Controls::curves:
      Api::ppl_set_gamma(ctx, -9);
      Api::ppl_set_contrast_c(ctx, 40, nullptr, nullptr);
      break;
    case Controls::own_curves:
      for (uint32_t i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(i * 151 + 17);
      Api::ppl_copy_rgb_gamma_table(ctx, table);
      for (uint32_t i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(255 - i);
      Api::ppl_copy_yuv_gamma_table(ctx, table);
      break;
    case Controls::colour:
      Api::ppl_set_sat_hue(ctx, 370, 200);
      Api::ppl_set_contrast_c(ctx, -50, nullptr, nullptr);
      break;
    case Controls::matrix: {
      static constexpr int32_t matrices[18] = {256, 10,   -10,  20,  230, 6,   -5,   -31, 300,
                                               700, -300, -150, -90, 900, -40, -200, 30,  1400};
      Api::ppl_copy_sensor_matrix(ctx, matrices);
      break;
    }
    case Controls::bands:
      Api::ppl_set_qual_BmGb_min_max(ctx, -12, 9);
      Api::ppl_set_qual_GrmR_min_max(ctx, -8, 14);
      Api::ppl_set_qual_RGB_min_max(ctx, 20, 200, 30, 190, 25, 220);
      Api::ppl_set_qAE_RGB_min_max(ctx, 60, 180);
      break;
    case Controls::motion:
      Api::ppl_set_intl_3T_threshold(ctx, 240);
      break;
    case Controls::no_collection:
      Api::ppl_set_mean_collection(ctx, 0);
      break;
    case Controls::refused:
      Api::ppl_set_rgb_gain(ctx, 300, 2048, 300);
      Api::ppl_set_optical_black_b_gb_gr_r(ctx, 256, 1, 1, 1);
      Api::ppl_set_r_delta(ctx, 40000);
      Api::ppl_set_sat_hue(ctx, 513, 90);
      break;
  }
}

struct Checksums {
  uint64_t output, frame, statistics;
  uint8_t result;
};

class Sum {
 public:
  void add(uint8_t byte) { hash_ = (hash_ ^ byte) * 0x00000100000001B3u; }  // FNV-1a
  void add(const uint8_t *bytes, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) add(bytes[i]);
  }
  void add_word(uint32_t word) {
    for (uint32_t i = 0; i < 32; i += 8) add(static_cast<uint8_t>(word >> i));
  }
  uint64_t value() const { return hash_; }

 private:
  uint64_t hash_ = 0xCBF29CE484222325u;
};

template <class Api>
uint64_t sum_of_statistics(const typename Api::Context *ctx) {
  Sum sum;
  const auto add = [&](const PplTriple *triple, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
      sum.add_word(triple[i].r);
      sum.add_word(triple[i].g);
      sum.add_word(triple[i].b);
    }
  };
  add(Api::ppl_rgb_means_sub_windows(ctx), 48);
  add(Api::ppl_rgb_means_outside_all_sub_windows(ctx), 1);
  add(Api::ppl_rgb_means_all_sub_windows(ctx), 1);
  add(Api::ppl_rgb_means_whole_frame(ctx), 1);
  add(Api::ppl_rgb_means_whole_frame_4pts(ctx), 1);
  add(Api::ppl_rgb_means_whole_frame_central8(ctx), 1);
  add(Api::ppl_qAE_rgb_means_whole_frame(ctx), 1);
  add(Api::ppl_qual_rgb_means_whole_frame(ctx), 1);
  sum.add_word(Api::ppl_n_qAE_2x2_whole_frame(ctx));
  sum.add_word(Api::ppl_n_qual_2x2_whole_frame(ctx));
  sum.add_word(Api::ppl_n_frame(ctx));
  const uint32_t *histograms[] = {Api::ppl_r_histogram(ctx), Api::ppl_g_histogram(ctx),
                                  Api::ppl_b_histogram(ctx)};
  for (const uint32_t *histogram : histograms)
    for (uint32_t i = 0; i < 256; ++i) sum.add_word(histogram[i]);
  return sum.value();
}

template <class Api>
uint8_t run_video(typename Api::Context *ctx, const Case &c, const uint8_t *source,
                  uint8_t *output) {
  const uint32_t sizes[] = {c.width, c.height, output_width(c), output_height(c)};
  const uint8_t *const fields[] = {source, source + field_bytes(c), source + 2 * field_bytes(c)};
  switch (c.video) {
    case Video::none:
      break;
#define PPL_GOLDEN_CALL(name, format, half_bytes) \
  case Video::name:                               \
    return Api::name(ctx, source, output, sizes[0], sizes[1], sizes[2], sizes[3]);
      PPL_GOLDEN_VIDEO(PPL_GOLDEN_CALL)
#undef PPL_GOLDEN_CALL
#define PPL_GOLDEN_CALL(name, format, half_bytes)                                                \
  case Video::name:                                                                              \
    return Api::name(ctx, fields[0], fields[1], fields[2], output, sizes[0], sizes[1], sizes[2], \
                     sizes[3]);
      PPL_GOLDEN_FIELDS(PPL_GOLDEN_CALL)
#undef PPL_GOLDEN_CALL
  }
  return 0;
}

template <class Api>
uint8_t run_raw(typename Api::Context *ctx, const Case &c, uint8_t *source, uint8_t *output) {
  const uint32_t stride = stride_of(c);
  switch (c.format) {
    case Format::i420:
      return Api::ppl_process_blrtoi420(ctx, source, output, c.width, c.height, stride);
    case Format::yuyv:
      return Api::ppl_process_blrtoyuyv(ctx, source, output, c.width, c.height, stride);
    case Format::uyvy:
      return Api::ppl_process_blrtouyvy(ctx, source, output, c.width, c.height, stride);
    case Format::rgb24:
      return Api::ppl_process_blrtorgb24(ctx, source, output, c.width, c.height, stride);
    case Format::rgb32:
      return Api::ppl_process_blrtorgb32(ctx, source, output, c.width, c.height, stride);
  }
  return 0;
}

// The frame of a case that brings none.
inline void make_source(const Case &c, uint32_t number, uint8_t *source) {
  c.video == Video::none ? make_frame(c, number, source) : make_video(c, source);
}

// Runs a case in a context that is fresh from the load of the library. What no frame writes of the
// output counts as it was: 0x5C.
template <class Api, class Fill = decltype(&make_source)>
Checksums run(const Case &c, uint8_t *source, uint8_t *output, Fill fill = &make_source) {
  typename Api::Context *ctx = Api::ppl_init();
  if (ctx == nullptr) return {};
  Api::ppl_set_P3_only(ctx, c.tier == Tier::p3);
  Api::ppl_set_quality(ctx, c.quality);
  Api::ppl_set_h_mirror(ctx, (c.mirrors & h) != 0);
  Api::ppl_set_v_mirror(ctx, (c.mirrors & v) != 0);
  set_controls<Api>(ctx, c.controls);
  const uint32_t stride = stride_of(c);
  Api::ppl_new_frame_size(ctx, c.width, c.height, stride);
  Api::ppl_set_decimation(ctx, c.decimation, c.top, c.bottom);
  Checksums sums{};
  for (uint32_t frame = 0; frame < c.frames; ++frame) {
    fill(c, frame, source);
    const uint32_t bytes = output_bytes(c);
    for (uint32_t i = 0; i < bytes; ++i) output[i] = 0x5C;
    sums.result = c.video == Video::none ? run_raw<Api>(ctx, c, source, output)
                                         : run_video<Api>(ctx, c, source, output);
  }
  Sum picture, frame;
  picture.add(output, output_bytes(c));
  frame.add(source, source_bytes(c));
  sums.output = picture.value();
  sums.frame = frame.value();
  sums.statistics = sum_of_statistics<Api>(ctx);
  Api::ppl_free(ctx);
  return sums;
}

// The functions that a case calls.
// clang-format off
#define PPL_GOLDEN_API(FUNCTION) \
  FUNCTION(ppl_init) \
  FUNCTION(ppl_free) \
  FUNCTION(ppl_set_P3_only) \
  FUNCTION(ppl_set_quality) \
  FUNCTION(ppl_set_h_mirror) \
  FUNCTION(ppl_set_v_mirror) \
  FUNCTION(ppl_new_frame_size) \
  FUNCTION(ppl_set_decimation) \
  FUNCTION(ppl_set_optical_black_b_gb_gr_r) \
  FUNCTION(ppl_set_rgb_gain) \
  FUNCTION(ppl_set_rgb_delta) \
  FUNCTION(ppl_set_r_delta) \
  FUNCTION(ppl_set_gamma) \
  FUNCTION(ppl_set_contrast_c) \
  FUNCTION(ppl_copy_rgb_gamma_table) \
  FUNCTION(ppl_copy_yuv_gamma_table) \
  FUNCTION(ppl_set_sat_hue) \
  FUNCTION(ppl_copy_sensor_matrix) \
  FUNCTION(ppl_set_qual_BmGb_min_max) \
  FUNCTION(ppl_set_qual_GrmR_min_max) \
  FUNCTION(ppl_set_qual_RGB_min_max) \
  FUNCTION(ppl_set_qAE_RGB_min_max) \
  FUNCTION(ppl_set_mean_collection) \
  FUNCTION(ppl_set_intl_3T_threshold) \
  FUNCTION(ppl_process_blrtoi420) \
  FUNCTION(ppl_process_blrtoyuyv) \
  FUNCTION(ppl_process_blrtouyvy) \
  FUNCTION(ppl_process_blrtorgb24) \
  FUNCTION(ppl_process_blrtorgb32) \
  FUNCTION(ppl_rgb_means_sub_windows) \
  FUNCTION(ppl_rgb_means_outside_all_sub_windows) \
  FUNCTION(ppl_rgb_means_all_sub_windows) \
  FUNCTION(ppl_rgb_means_whole_frame) \
  FUNCTION(ppl_rgb_means_whole_frame_4pts) \
  FUNCTION(ppl_rgb_means_whole_frame_central8) \
  FUNCTION(ppl_qAE_rgb_means_whole_frame) \
  FUNCTION(ppl_qual_rgb_means_whole_frame) \
  FUNCTION(ppl_n_qAE_2x2_whole_frame) \
  FUNCTION(ppl_n_qual_2x2_whole_frame) \
  FUNCTION(ppl_n_frame) \
  FUNCTION(ppl_r_histogram) \
  FUNCTION(ppl_g_histogram) \
  FUNCTION(ppl_b_histogram)
// clang-format on

struct Library {
  using Context = ::PplContext;
#define PPL_GOLDEN_FUNCTION(name, ...) static constexpr auto name = &::name;
  PPL_GOLDEN_API(PPL_GOLDEN_FUNCTION)
  PPL_GOLDEN_VIDEO(PPL_GOLDEN_FUNCTION)
  PPL_GOLDEN_FIELDS(PPL_GOLDEN_FUNCTION)
#undef PPL_GOLDEN_FUNCTION
};

}  // namespace golden
