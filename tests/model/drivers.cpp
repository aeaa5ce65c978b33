// One raw frame: geometry, tier, quality, statistics.
#include "model/drivers.h"

#include "model/aggregation.h"
#include "model/chain.h"
#include "model/copy_quality.h"
#include "model/geometry.h"
#include "model/machine.h"
#include "model/plan.h"
#include "model/report.h"
#include "model/single_pass.h"

namespace ppl_model {

namespace {

Tier choose_tier(const PplContext *ctx, const uint8_t *src, const uint8_t *dst) {
  const bool sse2 = is_aligned(src, 16) && is_aligned(dst, 16) && machine::has_tier(Tier::sse2) &&
                    ctx->P3_only == 0;
  return sse2 ? Tier::sse2 : Tier::p3;
}

enum class Pipeline { single_pass, chain, copy, nothing };

Pipeline pipeline_of(uint32_t quality, Format format) {
  switch (quality) {
    case 0:
    case 1:
    case 2:
    case 10:
    case 11:
    case 12:
      return Pipeline::chain;
    case 3:
      return Pipeline::single_pass;
    case 5:
    case 6:
    case 7:
    case 8:
      return Pipeline::nothing;
    case 13:
      return format == Format::i420 || format == Format::rgb24 ? Pipeline::single_pass
                                                               : Pipeline::nothing;
    case 14:
      return is_rgb(format) ? Pipeline::nothing : Pipeline::chain;
    default:
      return Pipeline::copy;
  }
}

size_t normaliser_of(uint32_t quality, bool medium_filter) {
  switch (quality) {
    case 0:
      return medium_filter ? 14 : 0;
    case 1:
      return medium_filter ? 15 : 4;
    case 2:
      return medium_filter ? 16 : 5;
    case 3:
      return 6;
    case 10:
      return 11;
    case 11:
      return 12;
    case 12:
      return 7;
    case 13:
      return 8;
    default:
      return 13;
  }
}

void run_kernel(PplContext *ctx, Tier tier, Format format, Pipeline pipeline, uint8_t *src,
                uint8_t *dst) {
  // A plan left stale by a failed save, and lines that overlap in the source, leave the frame open.
  const bool overlapping = ctx->plain.frame_stride < ctx->plain.frame_width;
  if (plan_is_stale(ctx, tier) || overlapping) return leave_frame_open(ctx, tier);

  const Layout layout(ctx, format);
  // Only decimation 2 writes behind the declared end.
  Output output(dst, ctx->decimation == 2 ? INT64_MAX : layout.declared_bytes());
  if (pipeline == Pipeline::chain)
    run_chain(ctx, tier, format, src, output);
  else if (ctx->quality == 3)
    run_quality_3(ctx, tier, format, src, output);
  else
    run_quality_13(ctx, tier, format, src, output);
  output.report_open_bytes();
}

uint8_t dispatch(PplContext *ctx, Tier tier, Format format, uint8_t *src, uint8_t *dst) {
  const Pipeline pipeline = pipeline_of(ctx->quality, format);
  ++ctx->n_frame;
  if (pipeline == Pipeline::nothing) return 1;
  if (pipeline == Pipeline::copy) {
    run_copy(ctx, tier, format, src, dst);
    return 0;
  }
  run_kernel(ctx, tier, format, pipeline, src, dst);
  ctx->plain.mean_normaliser =
      ctx->tier(tier)
          .plan.chain_normaliser[normaliser_of(ctx->quality, ctx->medium_filter_enabled != 0)];
  return 1;
}

// False if the frame stops here. I420, YUYV and UYVY test the wrong way round: a size taken drops
// the frame that brought it, a size beyond the limits goes on with the old geometry.
bool geometry_admits(PplContext *ctx, Format format, uint32_t width, uint32_t height,
                     uint32_t stride) {
  const PlainState &plain = ctx->plain;
  const bool same = width == static_cast<uint32_t>(plain.frame_width) &&
                    height == static_cast<uint32_t>(plain.frame_height) &&
                    stride == static_cast<uint32_t>(plain.frame_stride);
  if (!same) {
    const SizeResult result = take_frame_size(ctx, width, height, stride);
    const SizeResult goes_on = is_rgb(format) ? SizeResult::taken : SizeResult::beyond_limit;
    if (result != goes_on) return false;
  }
  return plain.frame_size_4 != 0 && plain.frame_size_2 != 0;
}

}  // namespace

bool is_aligned(const uint8_t *pointer, uintptr_t boundary) {
  return reinterpret_cast<uintptr_t>(pointer) % boundary == 0;
}

uint8_t process_raw(PplContext *ctx, Format format, uint8_t *src, uint8_t *dst, uint32_t width,
                    uint32_t height, uint32_t stride) {
  report() = {};
  if (!geometry_admits(ctx, format, width, height, stride)) return 0;
  clear_statistics(ctx);
  const uint8_t result = dispatch(ctx, choose_tier(ctx, src, dst), format, src, dst);
  aggregate_statistics(ctx);
  return result;
}

uint8_t ppl_process_blrtoi420(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                              uint32_t height, uint32_t stride) {
  return process_raw(ctx, Format::i420, src, dst, width, height, stride);
}
uint8_t ppl_process_blrtoyuyv(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                              uint32_t height, uint32_t stride) {
  return process_raw(ctx, Format::yuyv, src, dst, width, height, stride);
}
uint8_t ppl_process_blrtouyvy(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                              uint32_t height, uint32_t stride) {
  return process_raw(ctx, Format::uyvy, src, dst, width, height, stride);
}
uint8_t ppl_process_blrtorgb24(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                               uint32_t height, uint32_t stride) {
  return process_raw(ctx, Format::rgb24, src, dst, width, height, stride);
}
uint8_t ppl_process_blrtorgb32(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                               uint32_t height, uint32_t stride) {
  return process_raw(ctx, Format::rgb32, src, dst, width, height, stride);
}

}  // namespace ppl_model
