#include "model/geometry.h"

#include <optional>

#include "model/arithmetic.h"
#include "model/machine.h"
#include "model/plan.h"

namespace ppl_model {

namespace {

constexpr int32_t scale_by_decimation(int32_t value, int32_t d) {
  return d >= 0 ? value >> d : wrap32(int64_t{value} * 2);
}

void set_output_size(PplContext *ctx, int32_t black_lines) {
  PlainState &plain = ctx->plain;
  plain.out_width = scale_by_decimation(plain.frame_width, ctx->decimation);
  plain.out_height = add32(scale_by_decimation(plain.frame_height, ctx->decimation), black_lines);
  plain.out_size = mul32(plain.out_width, plain.out_height);
  plain.out_size_4 = plain.out_size / 4;
}

bool within_limits(uint32_t width, uint32_t height, uint32_t stride) {
  // The last three keep the line rings from overrunning; the width limit implies them.
  return width <= 1280 && height <= 1024 && stride <= 1280 && 4 * width + 48 <= 8192 &&
         3 * width + 48 <= 4096 && 6 * width + 64 <= 16384;
}

// One accepted pair of sizes: how far the picture shrinks and how many black lines frame it.
struct Mode {
  int32_t decimation;
  uint32_t black_lines;
};

std::optional<Mode> find_mode(uint32_t in_width, uint32_t in_height, uint32_t out_width,
                              uint32_t out_height) {
  const auto from = [&](uint32_t w, uint32_t h) { return in_width == w && in_height == h; };
  const auto to = [&](uint32_t w, uint32_t h) { return out_width == w && out_height == h; };
  // The picture of `lines` lines fits an output of the same width.
  const auto framed = [&](int32_t d, uint32_t lines) -> std::optional<Mode> {
    if (out_height < lines) return std::nullopt;
    return Mode{d, out_height - lines};
  };

  if (from(1280, 1024) && to(1280, 1024)) return Mode{0, 0};
  if (from(320, 240) && to(320, 240)) return Mode{0, 0};
  if (from(320, 240) && to(160, 120)) return Mode{1, 0};
  if (from(640, 480)) {
    if (to(640, 480)) return Mode{0, 0};
    if (to(1280, 960)) return Mode{-1, 0};
    if (to(320, 240)) return Mode{1, 0};
    if (to(160, 120)) return Mode{2, 0};
    // Accepted, but nothing resizes to the 352 columns asked for.
    if (to(352, 240) || to(352, 288)) return Mode{0, 0};
  }
  const bool tv_height = in_height == 480 || in_height == 576;
  if (in_width == 480 && tv_height && out_width == 480 && (out_height == 480 || out_height == 576))
    return framed(0, in_height);
  if (in_width == 704 && tv_height) {
    if (out_width == 704) return framed(0, in_height);
    if (out_width == 352) return framed(1, in_height / 2);
    if (out_width == 176) return framed(2, in_height / 4);
  }
  if (in_width == 720 && tv_height && out_width == 720) return framed(0, in_height);
  return std::nullopt;
}

}  // namespace

SizeResult take_frame_size(PplContext *ctx, uint32_t width, uint32_t height, uint32_t stride) {
  if (!within_limits(width, height, stride)) return SizeResult::beyond_limit;
  for (Tier tier : all_tiers)
    if (machine::has_tier(tier) && plan_divides_by_zero(tier, width, height))
      return SizeResult::zero_divisor;

  PlainState &plain = ctx->plain;
  plain.frame_stride = static_cast<int32_t>(stride);
  plain.frame_height = static_cast<int32_t>(height);
  plain.frame_width = static_cast<int32_t>(width);
  plain.frame_size = plain.frame_width * plain.frame_height;
  plain.frame_size_2 = plain.frame_size / 2;
  plain.frame_size_4 = plain.frame_size / 4;
  plain.frame_size_8 = plain.frame_size / 8;
  set_output_size(ctx, 0);  // the black lines come back with the next change of decimation

  if (!machine::save()) return SizeResult::taken;
  for (Tier tier : all_tiers)
    if (machine::has_tier(tier)) build_plan(ctx, tier);
  return SizeResult::taken;
}

uint8_t ppl_new_frame_size(PplContext *ctx, uint32_t width, uint32_t height, uint32_t stride) {
  return take_frame_size(ctx, width, height, stride) == SizeResult::taken ? 1 : 0;
}

uint8_t ppl_new_frame_sizes(PplContext *ctx, uint32_t in_width, uint32_t in_height,
                            uint32_t out_width, uint32_t out_height) {
  const std::optional<Mode> mode = find_mode(in_width, in_height, out_width, out_height);
  if (!mode) return 0;
  const uint32_t top = mode->black_lines / 2;
  const uint32_t bottom = mode->black_lines - top;
  if (ppl_new_frame_size(ctx, in_width, in_height, in_width) == 0) return 0;
  return ppl_set_decimation(ctx, mode->decimation, static_cast<int32_t>(top),
                            static_cast<int32_t>(bottom));
}

uint8_t ppl_set_decimation(PplContext *ctx, int32_t decimation, int32_t top_black_lines,
                           int32_t bottom_black_lines) {
  if (decimation == ctx->decimation && top_black_lines == ctx->decimation_top_black_lines &&
      bottom_black_lines == ctx->decimation_bottom_black_lines)
    return 1;
  if (decimation < -1 || decimation > 2) return 0;
  ctx->decimation = decimation;
  ctx->decimation_top_black_lines = top_black_lines;
  ctx->decimation_bottom_black_lines = bottom_black_lines;
  set_output_size(ctx, add32(top_black_lines, bottom_black_lines));

  machine::save();  // tried all the same, though nothing is derived
  return 1;
}

int32_t ppl_decimation(const PplContext *ctx) { return ctx->decimation; }
int32_t ppl_decimation_top_black_lines(const PplContext *ctx) {
  return ctx->decimation_top_black_lines;
}
int32_t ppl_decimation_bottom_black_lines(const PplContext *ctx) {
  return ctx->decimation_bottom_black_lines;
}
uint8_t ppl_reset_decimation(PplContext *ctx) { return ppl_set_decimation(ctx, 0, 0, 0); }

}  // namespace ppl_model
