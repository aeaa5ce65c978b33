#include "context/geometry.h"

#include "context/plan.h"
#include "context/refresh.h"

namespace ppl {
namespace {

// A size that no plan can be built for never produces a frame, so it is refused at once.
bool can_be_planned(uint32_t width, uint32_t height) {
  const uint32_t flags = processor_flags();
  if ((flags & processor_p3_tier) != 0 && plan_divides_by_zero(width, height, p3_block)) {
    return false;
  }
  return (flags & processor_sse2_tier) == 0 || !plan_divides_by_zero(width, height, sse2_block);
}

// The picture's lines and, where they count, the black ones. Wraps in 32 bits.
void set_output_size(PplContext &ctx, uint32_t black_lines) {
  ctx.out_width = scale_by_decimation(ctx.frame_width, ctx.decimation);
  const auto picture_height =
      static_cast<uint32_t>(scale_by_decimation(ctx.frame_height, ctx.decimation));
  ctx.out_height = static_cast<int32_t>(picture_height + black_lines);
  ctx.out_size =
      static_cast<int32_t>(static_cast<uint32_t>(ctx.out_width) * (picture_height + black_lines));
  ctx.out_size_4 = ctx.out_size / 4;
}

struct Mode {
  int32_t decimation;
  uint32_t black_lines;
};

// Finds the way from one size to the other; false if there is none.
bool find_mode(uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height,
               Mode &mode) {
  mode = {0, 0};
  const auto in_is = [=](uint32_t w, uint32_t h) { return in_width == w && in_height == h; };
  const auto out_is = [=](uint32_t w, uint32_t h) { return out_width == w && out_height == h; };
  // Scales by d and fills what is then missing in height with black.
  const auto padded = [&](int32_t d) {
    const uint32_t picture_height = in_height >> d;
    if (out_height < picture_height) return false;
    mode = {d, out_height - picture_height};
    return true;
  };
  const auto scaled = [&](int32_t d) {
    mode = {d, 0};
    return true;
  };

  if (in_is(1280, 1024)) return out_is(1280, 1024);
  if (in_is(320, 240)) return out_is(320, 240) || (out_is(160, 120) && scaled(1));
  if (in_is(640, 480)) {
    if (out_is(640, 480)) return true;
    if (out_is(1280, 960)) return scaled(-1);
    if (out_is(320, 240)) return scaled(1);
    if (out_is(160, 120)) return scaled(2);
    // Accepted, and then runs unscaled at 640 by 480: nothing resizes to 352.
    return out_is(352, 240) || out_is(352, 288);
  }

  if (in_height != 480 && in_height != 576) return false;
  if (in_width == 480) {
    return out_width == 480 && (out_height == 480 || out_height == 576) && padded(0);
  }
  if (in_width == 704) {
    if (out_width == 704) return padded(0);
    if (out_width == 352) return padded(1);
    if (out_width == 176) return padded(2);
    return false;
  }
  return in_width == 720 && out_width == 720 && padded(0);
}

}  // namespace
}  // namespace ppl

using namespace ppl;

uint8_t PPL_CALL ppl_new_frame_size(PplContext *ctx, uint32_t width, uint32_t height,
                                    uint32_t stride) {
  if (!is_within_limits(width, height, stride) || !can_be_planned(width, height)) return 0;

  ctx->frame_stride = static_cast<int32_t>(stride);
  ctx->frame_height = static_cast<int32_t>(height);
  ctx->frame_width = static_cast<int32_t>(width);
  ctx->frame_size = static_cast<int32_t>(width * height);
  ctx->frame_size_2 = ctx->frame_size / 2;
  ctx->frame_size_4 = ctx->frame_size / 4;
  ctx->frame_size_8 = ctx->frame_size / 8;
  // Leaves the black lines out, unlike ppl_set_decimation. Meant so: docs/oddities.md, "Black lines
  // are room".
  set_output_size(*ctx, 0);

  return refresh_plans(*ctx, [ctx](FramePlan &plan, int block) {
    build_grid(*ctx, plan, block);
    build_normalisers(*ctx, plan, block);
  });
}

uint8_t PPL_CALL ppl_new_frame_sizes(PplContext *ctx, uint32_t in_width, uint32_t in_height,
                                     uint32_t out_width, uint32_t out_height) {
  Mode mode;
  if (!find_mode(in_width, in_height, out_width, out_height, mode)) return 0;
  if (ppl_new_frame_size(ctx, in_width, in_height, in_width) == 0) return 0;
  const uint32_t top = mode.black_lines / 2;
  return ppl_set_decimation(ctx, mode.decimation, static_cast<int32_t>(top),
                            static_cast<int32_t>(mode.black_lines - top));
}

uint8_t PPL_CALL ppl_set_decimation(PplContext *ctx, int32_t decimation, int32_t top_black_lines,
                                    int32_t bottom_black_lines) {
  if (decimation == ctx->decimation && top_black_lines == ctx->decimation_top_black_lines &&
      bottom_black_lines == ctx->decimation_bottom_black_lines) {
    return 1;
  }
  if (decimation < -1 || decimation > 2) return 0;

  ctx->decimation = decimation;
  ctx->decimation_top_black_lines = top_black_lines;
  ctx->decimation_bottom_black_lines = bottom_black_lines;
  set_output_size(
      *ctx, static_cast<uint32_t>(top_black_lines) + static_cast<uint32_t>(bottom_black_lines));
  return refresh_nothing();
}

int32_t PPL_CALL ppl_decimation(const PplContext *ctx) { return ctx->decimation; }

int32_t PPL_CALL ppl_decimation_top_black_lines(const PplContext *ctx) {
  return ctx->decimation_top_black_lines;
}

int32_t PPL_CALL ppl_decimation_bottom_black_lines(const PplContext *ctx) {
  return ctx->decimation_bottom_black_lines;
}

uint8_t PPL_CALL ppl_reset_decimation(PplContext *ctx) { return ppl_set_decimation(ctx, 0, 0, 0); }
