// A fixture for tests that run packed video and look at whole pictures.
#pragma once

#include <gtest/gtest.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "context/context.h"
#include "ppl.h"
#include "support/context_test.h"
#include "support/guarded_buffer.h"
#include "support/x87.h"

namespace ppl_test {

enum class Packing { yuyv, uyvy };
enum class Format { i420, yuyv, uyvy, rgb24, rgb32 };

inline size_t picture_bytes(Format format, size_t pixels) {
  switch (format) {
    case Format::i420:
      return pixels * 3 / 2;
    case Format::rgb24:
      return pixels * 3;
    case Format::rgb32:
      return pixels * 4;
    default:
      return pixels * 2;
  }
}

// The functions, an entry and its driver where it has one.

using FrameFunction = uint8_t (*)(PplContext *, const uint8_t *, uint8_t *, uint32_t, uint32_t,
                                  uint32_t, uint32_t);
using FieldsFunction = uint8_t (*)(PplContext *, const uint8_t *, const uint8_t *, const uint8_t *,
                                   uint8_t *, uint32_t, uint32_t, uint32_t, uint32_t);

struct FrameConversion {
  const char *name;
  FrameFunction entry, driver;
  size_t source_half_bytes;  // of a pixel
  Packing packing;
  Format format;
};

inline constexpr FrameConversion yuyv_to_i420 = {
    "YUYVToI420", YUYVToI420MMX, ppl_process_yuyvtoi420, 4, Packing::yuyv, Format::i420};
inline constexpr FrameConversion uyvy_to_i420 = {
    "UYVYToI420", UYVYToI420MMX, ppl_process_uyvytoi420, 4, Packing::uyvy, Format::i420};
inline constexpr FrameConversion yuyv_to_rgb24 = {
    "YUYVToRGB24", YUYVToRGB24MMX, ppl_process_yuyvtorgb24, 4, Packing::yuyv, Format::rgb24};
inline constexpr FrameConversion uyvy_to_rgb24 = {
    "UYVYToRGB24", UYVYToRGB24MMX, ppl_process_uyvytorgb24, 4, Packing::uyvy, Format::rgb24};
inline constexpr FrameConversion yuyv_yyyy = {
    "YUYVYYYYToI420", YUYVYYYYToI420MMX, ppl_process_yuyvyyyytoi420, 3,
    Packing::yuyv,    Format::i420};
inline constexpr FrameConversion uyvy_yyyy = {
    "UYVYYYYYToI420", UYVYYYYYToI420MMX, ppl_process_uyvyyyyytoi420, 3,
    Packing::uyvy,    Format::i420};
inline constexpr FrameConversion rgb24_to_rgb32 = {
    "RGB24ToRGB32", RGB24ToRGB32MMX, ppl_process_rgb24torgb32, 6, Packing::yuyv, Format::rgb32};
inline constexpr std::array progressive_conversions = {yuyv_to_i420, uyvy_to_i420, yuyv_to_rgb24,
                                                       uyvy_to_rgb24};
inline constexpr std::array frame_conversions = {
    yuyv_to_i420, uyvy_to_i420, yuyv_to_rgb24, uyvy_to_rgb24, yuyv_yyyy, uyvy_yyyy, rgb24_to_rgb32};

struct FieldsConversion {
  const char *name;
  FieldsFunction with_test, without_test;
  FieldsFunction driver;  // of the former, or null
  Packing packing;
  Format format;

  // The name without the motion test converts nothing.
  bool weaves() const {
    return format == Format::i420 || format == Format::rgb24 ||
           (packing == Packing::yuyv) == (format == Format::yuyv);
  }
};
inline constexpr std::array fields_conversions = {
    FieldsConversion{"YUYVToYUYV", IntlYUYVToYUYVMMX, IntlYUYVToYUYVMMX_no_motion,
                     ppl_process_intlyuyvtoyuyv, Packing::yuyv, Format::yuyv},
    FieldsConversion{"UYVYToUYVY", IntlUYVYToUYVYMMX, IntlUYVYToUYVYMMX_no_motion,
                     ppl_process_intluyvytouyvy, Packing::uyvy, Format::uyvy},
    FieldsConversion{"UYVYToYUYV", IntlUYVYToYUYVMMX, IntlUYVYToYUYVMMX_no_motion, nullptr,
                     Packing::uyvy, Format::yuyv},
    FieldsConversion{"YUYVToUYVY", IntlYUYVToUYVYMMX, IntlYUYVToUYVYMMX_no_motion, nullptr,
                     Packing::yuyv, Format::uyvy},
    FieldsConversion{"YUYVToI420", IntlYUYVToI420MMX, IntlYUYVToI420MMX_no_motion,
                     ppl_process_intlyuyvtoi420, Packing::yuyv, Format::i420},
    FieldsConversion{"UYVYToI420", IntlUYVYToI420MMX, IntlUYVYToI420MMX_no_motion,
                     ppl_process_intluyvytoi420, Packing::uyvy, Format::i420},
    FieldsConversion{"YUYVToRGB24", IntlYUYVToRGB24MMX, IntlYUYVToRGB24MMX_no_motion,
                     ppl_process_intlyuyvtorgb24, Packing::yuyv, Format::rgb24},
    FieldsConversion{"UYVYToRGB24", IntlUYVYToRGB24MMX, IntlUYVYToRGB24MMX_no_motion,
                     ppl_process_intluyvytorgb24, Packing::uyvy, Format::rgb24}};

// A packed frame or field. Chroma of an even column is u, of an odd one v.
struct Video {
  uint32_t width, lines;
  std::vector<uint8_t> luma, chroma;

  uint8_t &y(size_t x, size_t line) { return luma[line * width + x]; }
  uint8_t &c(size_t x, size_t line) { return chroma[line * width + x]; }
  uint8_t y(size_t x, size_t line) const { return luma[line * width + x]; }
  uint8_t c(size_t x, size_t line) const { return chroma[line * width + x]; }
  uint8_t u(size_t pair, size_t line) const { return c(2 * pair, line); }
  uint8_t v(size_t pair, size_t line) const { return c(2 * pair + 1, line); }

  std::vector<uint8_t> bytes(Packing packing) const {
    std::vector<uint8_t> all(2 * luma.size());
    for (size_t i = 0; i < luma.size(); ++i) {
      all[2 * i + (packing == Packing::uyvy)] = luma[i];
      all[2 * i + (packing == Packing::yuyv)] = chroma[i];
    }
    return all;
  }
};

inline Video flat_video(uint32_t width, uint32_t lines, uint8_t y, uint8_t u, uint8_t v) {
  Video video{width, lines, std::vector<uint8_t>(size_t{width} * lines, y),
              std::vector<uint8_t>(size_t{width} * lines)};
  for (size_t i = 0; i < video.chroma.size(); ++i) video.chroma[i] = i % width % 2 == 0 ? u : v;
  return video;
}

// Differs from byte to byte, with no short period.
inline Video textured_video(uint32_t width, uint32_t lines, uint32_t salt = 0) {
  Video video = flat_video(width, lines, 0, 0, 0);
  for (uint32_t line = 0; line < lines; ++line)
    for (uint32_t x = 0; x < width; ++x) {
      video.y(x, line) = static_cast<uint8_t>(x * 37 + line * 101 + x * line % 53 * 3 + salt * 77);
      video.c(x, line) = static_cast<uint8_t>(x * 59 + line * 23 + x * line % 41 * 5 + salt * 151);
    }
  return video;
}

// What a call left in its output. Lines are the picture's unless the name says memory.
struct Picture {
  Format format;
  size_t width, height;  // of the output, black lines included
  uint8_t result;
  std::vector<uint8_t> bytes;

  size_t size() const { return width * height; }
  uint8_t y(size_t x, size_t line) const {
    const size_t at = line * width + x;
    return format == Format::i420 ? bytes[at] : bytes[2 * at + (format == Format::uyvy)];
  }
  // Chroma byte of a pixel of a packed format.
  uint8_t c(size_t x, size_t line) const {
    return bytes[2 * (line * width + x) + (format == Format::yuyv)];
  }
  // Of I420.
  uint8_t u(size_t x, size_t line) const { return bytes[size() + line * (width / 2) + x]; }
  uint8_t v(size_t x, size_t line) const {
    return bytes[size() + size() / 4 + line * (width / 2) + x];
  }
  // Of RGB24, in memory B, G, R, last line first.
  std::array<int, 3> bgr(size_t x, size_t line) const {
    const uint8_t *pixel = &bytes[3 * ((height - 1 - line) * width + x)];
    return {pixel[0], pixel[1], pixel[2]};
  }
  bool all(size_t from, size_t to, uint8_t value) const {
    for (size_t i = from; i < to; ++i)
      if (bytes[i] != value) return false;
    return true;
  }
};

struct Fields {
  Video reference, first, second;
};

class PackedVideoTest : public ContextTest {
 protected:
  static constexpr uint8_t untouched = GuardedBuffer::poison;

  // Any size that raw frames may have: a call of the same size then does not ask what it knows.
  void use_size(uint32_t width, uint32_t height, int32_t decimation = 0, int32_t top = 0,
                int32_t bottom = 0) {
    ASSERT_EQ(ppl_set_decimation(ctx, 0, 0, 0), 1);
    ASSERT_EQ(ppl_new_frame_size(ctx, width, height, width), 1);
    ASSERT_EQ(ppl_set_decimation(ctx, decimation, top, bottom), 1);
    sizes = {width, height, static_cast<uint32_t>(ctx->out_width),
             static_cast<uint32_t>(ctx->out_height)};
  }

  struct Buffers {
    Placement placement = Placement::ends_at_guard;
    unsigned source_alignment = 0, output_alignment = 0;  // modulo 16
    size_t output_bytes = 0;                              // 0: what the output's size needs
  };

  // Progressive RGB24 has the input's size at every decimation.
  size_t output_bytes_of(const FrameConversion &conversion) const {
    const size_t declared =
        picture_bytes(conversion.format, size_t{sizes.out_width} * sizes.out_height);
    if (conversion.format != Format::rgb24) return declared;
    return std::max(declared, picture_bytes(conversion.format, size_t{sizes.width} * sizes.height));
  }

  Picture run(const FrameConversion &conversion, const std::vector<uint8_t> &source,
              const Buffers &how) {
    return run(conversion.format, {&source}, how,
               [&](const std::vector<GuardedBuffer> &sources, uint8_t *output) {
                 return conversion.driver(ctx, sources[0].data(), output, sizes.width, sizes.height,
                                          sizes.out_width, sizes.out_height);
               });
  }
  Picture run(const FrameConversion &conversion, const std::vector<uint8_t> &source) {
    return run(conversion, source, Buffers{});
  }
  Picture run(const FrameConversion &conversion, const Video &video) {
    return run(conversion, video.bytes(conversion.packing));
  }

  // Runs an entry function of two fields.
  Picture run(FieldsFunction function, const FieldsConversion &conversion, const Fields &fields,
              const Buffers &how) {
    const std::vector<uint8_t> bytes[] = {fields.reference.bytes(conversion.packing),
                                          fields.first.bytes(conversion.packing),
                                          fields.second.bytes(conversion.packing)};
    return run(conversion.format, {&bytes[0], &bytes[1], &bytes[2]}, how,
               [&](const std::vector<GuardedBuffer> &sources, uint8_t *output) {
                 return function(ctx, sources[0].data(), sources[1].data(), sources[2].data(),
                                 output, sizes.width, sizes.height, sizes.out_width,
                                 sizes.out_height);
               });
  }
  Picture run(FieldsFunction function, const FieldsConversion &conversion, const Fields &fields) {
    return run(function, conversion, fields, Buffers{});
  }

  struct {
    uint32_t width, height, out_width, out_height;
  } sizes{};  // of the next calls

 private:
  // Calls in buffers of exactly the documented sizes, and checks what must hold after every call.
  template <class Function>
  Picture run(Format format, const std::vector<const std::vector<uint8_t> *> &contents,
              const Buffers &how, Function call) {
    std::vector<GuardedBuffer> sources;
    for (const std::vector<uint8_t> *content : contents) {
      sources.emplace_back(content->size(), how.placement, how.source_alignment);
      memcpy(sources.back().data(), content->data(), content->size());
    }
    const size_t pixels = size_t{sizes.out_width} * sizes.out_height;
    GuardedBuffer output(how.output_bytes != 0 ? how.output_bytes : picture_bytes(format, pixels),
                         how.placement, how.output_alignment);
    const uint8_t result = call(sources, output.data());
    EXPECT_TRUE(x87_is_clean()) << "left MMX state behind";
    EXPECT_FALSE(output.slack_damage()) << "wrote outside the output";
    for (size_t i = 0; i < sources.size(); ++i) {
      EXPECT_FALSE(sources[i].slack_damage()) << "wrote outside source " << i;
      EXPECT_EQ(memcmp(sources[i].data(), contents[i]->data(), contents[i]->size()), 0)
          << "wrote to source " << i;
    }
    return {format,
            sizes.out_width,
            sizes.out_height,
            result,
            {output.data(), output.data() + output.size()}};
  }
};

// The same test on each tier.
class PackedVideoTierTest : public PackedVideoTest, public testing::WithParamInterface<Tier> {
 protected:
  void SetUp() override {
    PackedVideoTest::SetUp();
    if (!use_tier(GetParam())) GTEST_SKIP() << "no SSE2 tier on this processor";
  }
};

}  // namespace ppl_test
