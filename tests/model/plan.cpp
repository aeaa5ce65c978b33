#include "model/plan.h"

namespace ppl_model {

namespace {

PlanInputs plan_inputs_of(const PplContext *ctx) {
  return {ctx->plain.frame_width, ctx->plain.frame_height};
}

void build_grid(PplContext *ctx, Tier tier) {
  PlainState &plain = ctx->plain;
  FramePlan &plan = ctx->tier(tier).plan;
  const int32_t B = block_width(tier);
  plan.cell_width = plain.frame_width / B / 8;
  plan.cell_height = plain.frame_height / 2 / 6;

  // The scales are no part of a plan: the tier built last leaves its own.
  const int32_t window_pixels = 2 * B * plan.cell_width * plan.cell_height;
  plain.r_window_scale = plain.b_window_scale =
      static_cast<uint32_t>(0x100000 / (window_pixels / 4));
  plain.g_window_scale = static_cast<uint32_t>(0x100000 / (window_pixels / 2));
}

void build_normalisers(PplContext *ctx, Tier tier) {
  const int32_t w = ctx->plain.frame_width;
  const int32_t h = ctx->plain.frame_height;
  const int32_t B = block_width(tier);
  FramePlan &plan = ctx->tier(tier).plan;

  // 8.8 ratio of the frame to the a by b pixels of which one cell in four was sampled. A negative
  // ratio (heights 13 to 15) is kept as an unsigned number.
  const auto n = [&](int32_t a, int32_t b) {
    return static_cast<uint32_t>((ctx->plain.frame_size << 8) / (a * b / 4));
  };
  auto &entry = plan.chain_normaliser;
  entry[0] = entry[1] = entry[2] = n(w - 4 * B, h - 12);
  entry[3] = entry[4] = n(w - 3 * B, h - 12);
  entry[5] = n(w - 2 * B, h - 8);
  entry[6] = entry[7] = 1024;
  entry[10] = n(w, h - 4);
  entry[11] = n(w - 4 * B, h - 12);
  entry[12] = entry[13] = n(w - 3 * B, h - 12);
  entry[14] = n(w - 5 * B, h - 16);
  entry[15] = n(w - 4 * B, h - 16);
  entry[16] = n(w - 3 * B, h - 12);
}

}  // namespace

bool plan_divides_by_zero(Tier tier, uint32_t width, uint32_t height) {
  const uint32_t narrowest = tier == Tier::p3 ? 64 : 128;
  return width < narrowest || height < 12 || height == 12 || height == 16;
}

void build_plan(PplContext *ctx, Tier tier) {
  build_grid(ctx, tier);
  build_normalisers(ctx, tier);
  ctx->tier(tier).plan_inputs = plan_inputs_of(ctx);
}

bool plan_is_stale(const PplContext *ctx, Tier tier) {
  return ctx->tier(tier).plan_inputs != plan_inputs_of(ctx);
}

}  // namespace ppl_model
