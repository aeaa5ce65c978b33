// What the kernels offer to the engine: one table of functions for each family of passes.
#pragma once

#include "context/context.h"
#include "kernels/stages.h"

namespace ppl {

enum class Format { i420, yuyv, uyvy, rgb24, rgb32 };
inline constexpr int format_count = 5;

constexpr bool is_rgb(Format format) { return format == Format::rgb24 || format == Format::rgb32; }

// The order of a pair of bytes in packed video.
enum class PackedOrder { yuyv, uyvy };

// What a pass works on. dst_chroma is the U plane in I420 (V stands out_size_4 behind it) and
// unused in the other formats.
struct Buffers {
  uint8_t *src;
  uint8_t *dst;
  uint8_t *dst_chroma;
};

// Whether odd lines are judged before they are woven in.
enum class MotionTest { off, on };

// The fields of an interlaced frame: a field of the second one's parity from a frame earlier, which
// the motion test compares it with; the even lines; the odd lines.
struct Fields {
  const uint8_t *reference, *first, *second;
};

using Pass = void (*)(PplContext &ctx, const Buffers &buffers);

// A value for each format.
template <class Value>
struct PerFormat {
  Value i420, yuyv, uyvy, rgb24, rgb32;

  constexpr const Value &operator[](Format format) const {
    switch (format) {
      case Format::i420:
        return i420;
      case Format::yuyv:
        return yuyv;
      case Format::uyvy:
        return uyvy;
      case Format::rgb24:
        return rgb24;
      default:
        return rgb32;
    }
  }
};

// Functions per sign of the decimation. A null one is a pass that does not exist.
struct Passes {
  Pass plain, shrinking, enlarging;

  Pass for_decimation(int32_t d) const { return d == 0 ? plain : d > 0 ? shrinking : enlarging; }
};

struct SinglePasses {
  PerFormat<Passes> default_pipeline;  // quality 3
  PerFormat<Passes> monochrome;        // quality 13
  PerFormat<Pass> copy;                // qualities 4 and 9
};

struct ChainPasses {
  // Qualities 0, 1, 2, 10, 11, 12 and 14.
  void (*run)(PplContext &ctx, const Buffers &buffers, Format format, const Chain &chain,
              Repair repair);
};

struct VideoPasses {
  using Progressive = void (*)(PplContext &ctx, PackedOrder order, const uint8_t *src,
                               uint8_t *dst);
  Progressive to_i420, to_rgb24;
  void (*unpack_yyyy)(PplContext &ctx, const uint8_t *src, uint8_t *dst);
  void (*convert_fields)(PplContext &ctx, const Fields &fields, uint8_t *dst, PackedOrder order,
                         Format format, MotionTest motion_test);
};

// All that a target runs: a tier, in registers of a certain width. It may borrow a family from
// another target of its tier.
struct Kernels {
  const SinglePasses &single;
  const ChainPasses &chains;
  const VideoPasses &video;
  void (*leave)();  // puts the registers in order for the caller
};

namespace p3 {
extern const SinglePasses single_passes;
extern const ChainPasses chain_passes;
extern const VideoPasses video_passes;
extern const Kernels kernels;
}  // namespace p3

namespace sse2 {
extern const SinglePasses single_passes;
extern const ChainPasses chain_passes;
extern const VideoPasses video_passes;
extern const Kernels kernels;
}  // namespace sse2

}  // namespace ppl
