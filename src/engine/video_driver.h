// Frames of packed video: size check, tier choice, one kernel.
#pragma once

#include "engine/machine.h"

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
  const Kernels &kernels = machine_for(ctx, pointers).kernels;
  kernel(kernels.video);
  kernels.leave();
  ++ctx.n_frame;
  return 1;
}

// The fields' conversions.
struct FieldConversion {
  PackedOrder order;
  Format format;
  MotionTest motion_test;
  bool converts = true;  // but for the one operation that only counts its frames
};

uint8_t process_fields(PplContext &ctx, const Fields &fields, uint8_t *dst, const VideoSizes &sizes,
                       const FieldConversion &conversion);

}  // namespace ppl
