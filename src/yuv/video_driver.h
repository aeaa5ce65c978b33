// Frames of packed video: size check, tier choice, one kernel.
#pragma once

#include "frame/tier_choice.h"
#include "kernels/tier.h"

namespace ppl {

// The sizes of a call, in pixels and lines.
struct VideoSizes {
  uint32_t width, height, out_width, out_height;
};

// Takes a new pair of sizes; false if it is no supported mode.
bool takes_sizes(PplContext &ctx, const VideoSizes &sizes);

// Runs `kernel` with the tier that the pointers allow and counts the frame, whatever it did.
// Returns 0 with nothing done for sizes that are refused.
template <int Count, class Kernel>
uint8_t process_video_frame(PplContext &ctx, const VideoSizes &sizes,
                            const void *const (&pointers)[Count], Kernel kernel) {
  if (!takes_sizes(ctx, sizes)) return 0;
  const TierKernels &tier = uses_sse2_tier(ctx, pointers) ? sse2::kernels : p3::kernels;
  kernel(tier);
  tier.clear_mmx_state();
  ++ctx.n_frame;
  return 1;
}

// The fields' conversions. `converts` is false for the one operation that converts nothing.
struct FieldConversion {
  bool luma_first;
  Format format;
  bool tests_motion;
  bool converts = true;
};

uint8_t process_fields(PplContext &ctx, const Fields &fields, uint8_t *dst, const VideoSizes &sizes,
                       const FieldConversion &conversion);

}  // namespace ppl
