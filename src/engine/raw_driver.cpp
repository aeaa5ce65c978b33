#include "engine/raw_driver.h"

#include "context/plan.h"
#include "engine/dispatch.h"
#include "engine/frame_statistics.h"

namespace ppl {
namespace {

bool is_current_size(const PplContext &ctx, uint32_t width, uint32_t height, uint32_t stride) {
  return width == static_cast<uint32_t>(ctx.frame_width) &&
         height == static_cast<uint32_t>(ctx.frame_height) &&
         stride == static_cast<uint32_t>(ctx.frame_stride);
}

// The way around of the size check is a property of the format. In the RGB formats a new size that
// is taken runs its frame at once, and one that is refused stops it. In the others a new size that
// is taken drops the frame that brought it; one that a limit refuses lets the frame go on with the
// old geometry over the larger buffers. Meant so: docs/oddities.md, "Dropped first frame", "Refused
// sizes that run".
bool runs_frame_of_new_size(PplContext &ctx, Format format, uint32_t width, uint32_t height,
                            uint32_t stride) {
  const bool taken = ppl_new_frame_size(&ctx, width, height, stride) != 0;
  if (is_rgb(format)) return taken;
  // Within the limits only a size that no plan can be built for is refused: it never makes a frame.
  return !taken && !is_within_limits(width, height, stride);
}

}  // namespace

uint8_t process_raw_frame(PplContext &ctx, Format format, uint8_t *src, uint8_t *dst,
                          uint32_t width, uint32_t height, uint32_t stride) {
  if (!is_current_size(ctx, width, height, stride) &&
      !runs_frame_of_new_size(ctx, format, width, height, stride)) {
    return 0;
  }
  // The means are divided by these; they are 0 in a context that never took a size.
  if (ctx.frame_size_4 == 0 || ctx.frame_size_2 == 0) return 0;

  clear_statistics(ctx);
  const Buffers buffers = {src, dst, dst + ctx.out_size};
  const uint8_t result = dispatch_quality(ctx, machine_for(ctx, {src, dst}), format, buffers);
  aggregate_statistics(ctx);
  return result;
}

}  // namespace ppl

using namespace ppl;

#define PPL_RAW_DRIVER(suffix, format)                                                           \
  uint8_t PPL_CALL ppl_process_blrto##suffix(PplContext *ctx, uint8_t *src, uint8_t *dst,        \
                                             uint32_t width, uint32_t height, uint32_t stride) { \
    return process_raw_frame(*ctx, format, src, dst, width, height, stride);                     \
  }

PPL_RAW_DRIVER(i420, Format::i420)
PPL_RAW_DRIVER(yuyv, Format::yuyv)
PPL_RAW_DRIVER(uyvy, Format::uyvy)
PPL_RAW_DRIVER(rgb24, Format::rgb24)
PPL_RAW_DRIVER(rgb32, Format::rgb32)

#undef PPL_RAW_DRIVER
