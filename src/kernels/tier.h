// What a tier offers to the engine: one table of functions.
#pragma once

#include "frame/context.h"
#include "kernels/chains/stages.h"

namespace ppl {

enum Format { format_i420, format_yuyv, format_uyvy, format_rgb24, format_rgb32, format_count };

// What a pass works on. dst_chroma is the U plane in I420 (V stands out_size_4 behind it) and
// unused in the other formats.
struct Buffers {
  uint8_t *src;
  uint8_t *dst;
  uint8_t *dst_chroma;
};

// The fields of an interlaced frame: a field of the second one's parity from a frame earlier, which
// the motion test compares it with; the even lines; the odd lines.
struct Fields {
  const uint8_t *reference, *first, *second;
};

// From packed video, YUYV where `luma_first`.
using VideoPass = void (*)(PplContext &ctx, const uint8_t *src, uint8_t *dst);
struct VideoPasses {
  VideoPass from_yuyv, from_uyvy;
};

using Pass = void (*)(PplContext &ctx, const Buffers &buffers);

// Functions per format and sign of the decimation. A null one is a pass that does not exist.
struct Passes {
  Pass plain, shrinking, enlarging;

  Pass for_decimation(int32_t d) const { return d == 0 ? plain : d > 0 ? shrinking : enlarging; }
};

struct TierKernels {
  int block_width;
  Passes default_pipeline[format_count];  // quality 3
  Passes monochrome[format_count];        // quality 13
  Pass copy[format_count];                // qualities 4 and 9
  void (*run_chain)(PplContext &ctx, const Buffers &buffers, Format format, const Chain &chain,
                    bool repairs);  // qualities 0, 1, 2, 10, 11, 12, 14
  VideoPasses progressive_i420, progressive_rgb24;
  VideoPass unpack_yyyy;
  void (*convert_fields)(PplContext &ctx, const Fields &fields, uint8_t *dst, bool luma_first,
                         Format format, bool tests_motion);
  void (*clear_mmx_state)();
};

// The two sets of derived data and the marker of a tier, seen alike.
namespace p3 {
extern const TierKernels kernels;
}
namespace sse2 {
extern const TierKernels kernels;
}

}  // namespace ppl
