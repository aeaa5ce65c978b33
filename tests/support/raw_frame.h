// A fixture for tests that run raw frames and look at whole pictures.
#pragma once

#include <gtest/gtest.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <array>
#include <ostream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "ppl.h"
#include "support/context_test.h"
#include "support/difference.h"
#include "support/guarded_buffer.h"
#include "support/machine.h"
#include "support/x87.h"

namespace ppl_test {

enum class Format { i420, yuyv, uyvy, rgb24, rgb32 };
inline constexpr std::array all_formats = {Format::i420, Format::yuyv, Format::uyvy, Format::rgb24,
                                           Format::rgb32};
inline const char *name_of(Format format) {
  return std::array{"I420", "YUYV", "UYVY", "RGB24", "RGB32"}[static_cast<size_t>(format)];
}
inline bool is_rgb(Format format) { return format == Format::rgb24 || format == Format::rgb32; }

inline size_t picture_bytes(Format format, size_t width, size_t height) {
  const size_t size = width * height;
  switch (format) {
    case Format::i420:
      return size * 3 / 2;
    case Format::yuyv:
    case Format::uyvy:
      return size * 2;
    case Format::rgb24:
      return size * 3;
    case Format::rgb32:
      return size * 4;
  }
  return 0;
}

using RawEntry = uint8_t (*)(PplContext *, uint8_t *, uint8_t *, uint32_t, uint32_t);
using RawDriver = uint8_t (*)(PplContext *, uint8_t *, uint8_t *, uint32_t, uint32_t, uint32_t);

enum class Variant { plain, deci_2_1, intp_1_2, intp_1_2_stride, intp_1_4_stride };
inline constexpr std::array all_variants = {Variant::plain, Variant::deci_2_1, Variant::intp_1_2,
                                            Variant::intp_1_2_stride, Variant::intp_1_4_stride};
inline const char *name_of(Variant variant) {
  return std::array{"plain", "deci_2_1", "intp_1_2", "intp_1_2_stride",
                    "intp_1_4_stride"}[static_cast<size_t>(variant)];
}
inline uint32_t stride_factor(Variant variant) {
  return variant == Variant::intp_1_4_stride ? 4 : variant == Variant::intp_1_2_stride ? 2 : 1;
}
// That of the variant in a context that has none. intp_1_4_stride asks for one that is refused.
inline int32_t decimation_of(Variant variant) {
  switch (variant) {
    case Variant::deci_2_1:
      return 1;
    case Variant::intp_1_2:
    case Variant::intp_1_2_stride:
      return -1;
    default:
      return 0;
  }
}
inline size_t scaled_length(size_t length, int32_t decimation) {
  return decimation >= 0 ? length >> decimation : length << -decimation;
}

struct FrameSize {
  uint32_t width, height;
};

inline RawEntry raw_entry(Format format, Variant variant) {
  static constexpr RawEntry entries[5][5] = {
      {BaylorToI420MMX, BaylorToI420MMX_deci_2_1, BaylorToI420MMX_intp_1_2,
       BaylorToI420MMX_intp_1_2_stride, BaylorToI420MMX_intp_1_4_stride},
      {BaylorToYUYVMMX, BaylorToYUYVMMX_deci_2_1, BaylorToYUYVMMX_intp_1_2,
       BaylorToYUYVMMX_intp_1_2_stride, BaylorToYUYVMMX_intp_1_4_stride},
      {BaylorToUYVYMMX, BaylorToUYVYMMX_deci_2_1, BaylorToUYVYMMX_intp_1_2,
       BaylorToUYVYMMX_intp_1_2_stride, BaylorToUYVYMMX_intp_1_4_stride},
      {BaylorToRGB24MMX, BaylorToRGB24MMX_deci_2_1, BaylorToRGB24MMX_intp_1_2,
       BaylorToRGB24MMX_intp_1_2_stride, BaylorToRGB24MMX_intp_1_4_stride},
      {BaylorToRGB32MMX, BaylorToRGB32MMX_deci_2_1, BaylorToRGB32MMX_intp_1_2,
       BaylorToRGB32MMX_intp_1_2_stride, BaylorToRGB32MMX_intp_1_4_stride}};
  return entries[static_cast<size_t>(format)][static_cast<size_t>(variant)];
}

inline RawDriver raw_driver(Format format) {
  static constexpr RawDriver drivers[5] = {ppl_process_blrtoi420, ppl_process_blrtoyuyv,
                                           ppl_process_blrtouyvy, ppl_process_blrtorgb24,
                                           ppl_process_blrtorgb32};
  return drivers[static_cast<size_t>(format)];
}

// A raw frame: lines of B, Gb and of Gr, R in turn.
struct Mosaic {
  uint32_t width, height;
  std::vector<uint8_t> samples;

  uint8_t at(size_t x, size_t y) const { return samples[y * width + x]; }
  uint8_t b(size_t cell_x, size_t cell_y) const { return at(2 * cell_x, 2 * cell_y); }
  uint8_t gb(size_t cell_x, size_t cell_y) const { return at(2 * cell_x + 1, 2 * cell_y); }
  uint8_t gr(size_t cell_x, size_t cell_y) const { return at(2 * cell_x, 2 * cell_y + 1); }
  uint8_t r(size_t cell_x, size_t cell_y) const { return at(2 * cell_x + 1, 2 * cell_y + 1); }
};

template <class Value>  // value(x, y)
Mosaic mosaic(uint32_t width, uint32_t height, Value value) {
  Mosaic frame{width, height, std::vector<uint8_t>(size_t{width} * height)};
  for (uint32_t y = 0; y < height; ++y)
    for (uint32_t x = 0; x < width; ++x)
      frame.samples[size_t{y} * width + x] = static_cast<uint8_t>(value(x, y));
  return frame;
}

inline Mosaic flat_mosaic(uint32_t width, uint32_t height, uint8_t level) {
  return mosaic(width, height, [=](uint32_t, uint32_t) { return level; });
}

inline Mosaic cell_mosaic(uint32_t width, uint32_t height, uint8_t b, uint8_t gb, uint8_t gr,
                          uint8_t r) {
  return mosaic(width, height, [=](uint32_t x, uint32_t y) {
    return y % 2 == 0 ? (x % 2 == 0 ? b : gb) : (x % 2 == 0 ? gr : r);
  });
}

// Differs from sample to sample and from line to line, with no short period.
inline Mosaic textured_mosaic(uint32_t width, uint32_t height) {
  return mosaic(width, height, [](uint32_t x, uint32_t y) {
    return (x * 37 + y * 101 + (x * y) % 53 * 3 + (x ^ y) * 5) & 255;
  });
}

struct Pixel {
  uint8_t r, g, b;
  bool operator==(const Pixel &) const = default;
};
inline std::ostream &operator<<(std::ostream &out, const Pixel &p) {
  return out << "(r " << int{p.r} << ", g " << int{p.g} << ", b " << int{p.b} << ")";
}

// What a frame call left behind. Coordinates are the picture's unless the name says memory.
struct Picture {
  Format format;
  size_t width, height;  // of the output buffer, black lines included
  uint8_t result;
  std::vector<uint8_t> bytes;     // the output, and what was asked for behind it
  std::vector<uint8_t> consumed;  // the raw frame after the call

  size_t size() const { return width * height; }
  uint8_t y(size_t x, size_t line) const {
    switch (format) {
      case Format::i420:
        return bytes[line * width + x];
      case Format::yuyv:
        return bytes[2 * (line * width + x)];
      default:
        return bytes[2 * (line * width + x) + 1];
    }
  }
  // Chroma of the pixel pair `pair` on line `line`; in I420 `line` counts chroma lines.
  uint8_t u(size_t pair, size_t line) const {
    switch (format) {
      case Format::i420:
        return bytes[size() + line * (width / 2) + pair];
      case Format::yuyv:
        return bytes[2 * line * width + 4 * pair + 1];
      default:
        return bytes[2 * line * width + 4 * pair];
    }
  }
  uint8_t v(size_t pair, size_t line) const {
    switch (format) {
      case Format::i420:
        return bytes[size() + size() / 4 + line * (width / 2) + pair];
      case Format::yuyv:
        return bytes[2 * line * width + 4 * pair + 3];
      default:
        return bytes[2 * line * width + 4 * pair + 2];
    }
  }
  size_t bytes_per_pixel() const { return format == Format::rgb24 ? 3 : 4; }
  Pixel memory_pixel(size_t x, size_t memory_line) const {
    const uint8_t *p = &bytes[(memory_line * width + x) * bytes_per_pixel()];
    return {p[2], p[1], p[0]};
  }
  // RGB pictures stand bottom-up in memory.
  Pixel pixel(size_t x, size_t line) const { return memory_pixel(x, height - 1 - line); }
  uint8_t fourth_byte(size_t x, size_t memory_line) const {
    return bytes[(memory_line * width + x) * 4 + 3];
  }
  uint8_t consumed_at(size_t x, size_t line, size_t stride) const {
    return consumed[line * stride + x];
  }
};

class RawFrameTest : public ContextTest {
 protected:
  static constexpr uint8_t untouched = GuardedBuffer::poison;

  // Identity gamma, identity sensor matrices: RGB output then shows the samples as they are, and
  //   Y = 16 + clamp((17 R + 32 G + 6 B + 32) >> 6), at most 235
  //   U = 128 + clamp((-9 R - 18 Ga + 28 B + 32) >> 6), V = 128 + clamp((28 R - 23 Ga - 4 B + 32)
  //   >> 6)
  // which are the Q8 rows (66, 129, 25), (-38, -74, 112), (112, -94, -18) in Q6.
  void make_colour_neutral() {
    static constexpr int32_t identity[18] = {256, 0, 0, 0, 256, 0, 0, 0, 256,
                                             256, 0, 0, 0, 256, 0, 0, 0, 256};
    ASSERT_EQ(ppl_copy_sensor_matrix(ctx, identity), 1);
    uint8_t table[256];
    for (int i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(i);
    ASSERT_EQ(ppl_copy_rgb_gamma_table(ctx, table), 1);
  }

  struct Run {
    int32_t decimation = 0;
    uint32_t stride = 0;            // 0: the width
    unsigned source_alignment = 0;  // modulo 16
    unsigned output_alignment = 0;
    size_t bytes_behind = 0;  // compared bytes behind the declared output
    bool set_size = true;     // otherwise the frame meets the context as it is
    Placement placement = Placement::ends_at_guard;
  };

  // Runs one frame through the format's driver, in buffers of exactly the sizes that are implied,
  // with guard pages, and checks what must hold after every call.
  Picture run(Format format, const Mosaic &frame) { return run(format, frame, Run{}); }
  Picture run(Format format, const Mosaic &frame, const Run &how) {
    const uint32_t stride = how.stride == 0 ? frame.width : how.stride;
    if (how.set_size) {
      EXPECT_EQ(ppl_new_frame_size(ctx, frame.width, frame.height, stride), 1);
      if (ppl_decimation(ctx) != how.decimation) {
        EXPECT_EQ(ppl_set_decimation(ctx, how.decimation, 0, 0), 1);
      }
    }
    const int32_t d = ppl_decimation(ctx);
    const size_t out_width = scaled_length(frame.width, d);
    const size_t out_height = scaled_length(frame.height, d) + black_lines_in_force;
    GuardedBuffer source(size_t{stride} * (frame.height - 1) + std::max(stride, frame.width),
                         how.placement, how.source_alignment);
    GuardedBuffer output(picture_bytes(format, out_width, out_height) + how.bytes_behind,
                         how.placement, how.output_alignment);
    for (uint32_t line = 0; line < frame.height; ++line)
      memcpy(source.data() + size_t{line} * stride, &frame.samples[size_t{line} * frame.width],
             frame.width);
    const uint8_t result =
        raw_driver(format)(ctx, source.data(), output.data(), frame.width, frame.height, stride);
    EXPECT_TRUE(x87_is_clean()) << "the driver left MMX state behind";
    EXPECT_FALSE(source.slack_damage()) << "wrote outside the raw frame";
    EXPECT_FALSE(output.slack_damage()) << "wrote outside the output";
    return {format,
            out_width,
            out_height,
            result,
            {output.data(), output.data() + output.size()},
            {source.data(), source.data() + source.size()}};
  }

  static bool all_equal(const uint8_t *bytes, size_t count, uint8_t value) {
    for (size_t i = 0; i < count; ++i)
      if (bytes[i] != value) return false;
    return true;
  }

  size_t black_lines_in_force = 0;  // lines that the geometry now adds to out_height
};

// The same test on each tier.
class RawFrameTierTest : public RawFrameTest, public ::testing::WithParamInterface<Tier> {
 protected:
  void SetUp() override {
    RawFrameTest::SetUp();
    if (!use_tier(GetParam())) GTEST_SKIP() << "no SSE2 tier on this processor";
  }
};

// The same test on each tier and format.
class RawFrameFormatTest : public RawFrameTest,
                           public ::testing::WithParamInterface<std::tuple<Tier, Format>> {
 protected:
  Tier tier() const { return std::get<0>(GetParam()); }
  Format format() const { return std::get<1>(GetParam()); }
  void SetUp() override {
    RawFrameTest::SetUp();
    if (!use_tier(tier())) GTEST_SKIP() << "no SSE2 tier on this processor";
  }
};

inline std::string tier_format_name(
    const ::testing::TestParamInfo<std::tuple<Tier, Format>> &info) {
  return std::string(name_of(std::get<0>(info.param))) + name_of(std::get<1>(info.param));
}

}  // namespace ppl_test
