#include "model/plan.h"

#include "model/arithmetic.h"

namespace ppl_model {

namespace {

StrideInputs stride_inputs_of(const PplContext *ctx) {
  return {ctx->plain.out_width, ctx->decimation, ctx->h_mirror != 0, ctx->v_mirror != 0};
}

GridInputs grid_inputs_of(const PplContext *ctx) {
  return {ctx->plain.frame_width, ctx->plain.frame_height};
}

}  // namespace

bool plan_divides_by_zero(Tier tier, uint32_t width, uint32_t height) {
  const uint32_t narrowest = tier == Tier::p3 ? 64 : 128;
  return width < narrowest || height < 12 || height == 12 || height == 16;
}

void build_grid(PplContext *ctx, Tier tier) {
  PlainState &plain = ctx->plain;
  FramePlan &plan = ctx->tier(tier).plan;
  const int32_t B = block_width(tier);
  plan.cell_width = plain.frame_width / B / 8;
  plan.cell_height = plain.frame_height / 2 / 6;
  plan.grid_left = plan.grid_top = 0;
  plan.grid_right = plan.grid_width = 8 * plan.cell_width;
  plan.grid_bottom = plan.grid_height = 6 * plan.cell_height;

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
  plan.block_columns = w / B;
  plan.block_rows = h / 2;

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

  ctx->tier(tier).grid_inputs = grid_inputs_of(ctx);
}

bool stride_entry_exists(int entry) {
  switch (entry) {
    case 63:
    case 64:
    case 66:
    case 67:
    case 68:
    case 70:
    case 71:
    case 72:
    case 74:
    case 75:
    case 76:
    case 78:
      return false;
    default:
      return entry >= 0 && entry < stride_entries;
  }
}

void build_stride_table(PplContext *ctx, Tier tier) {
  const StrideInputs inputs = stride_inputs_of(ctx);
  const int32_t W = inputs.out_width;
  const int32_t W2 = W / 2;
  const int32_t d = inputs.decimation;
  const int32_t B = block_width(tier);
  const bool h = inputs.h_mirror;
  const bool v = inputs.v_mirror;
  const int32_t sx = h ? -1 : 1;
  const int32_t sy = v ? -1 : 1;
  const int32_t k = d < 0 ? 2 : 1;
  const int32_t L = d < 0 ? 4 : d == 0 ? 2 : 1;
  const int32_t L2 = d <= 0 ? 2 : 1;
  auto &entry = ctx->tier(tier).plan.stride_table;
  entry.fill(0);

  // Single-pass, I420.
  entry[0] = h ? k * B : 0;
  entry[1] = h ? 0 : k * B;
  entry[2] = v ? k * W : 0;
  entry[3] = v ? 0 : k * W;
  entry[4] = sx * 2 * k * B;
  entry[5] = (2 * k * sy - sx) * W;
  entry[6] = (sx + 2 * sy - 1) * d * W;
  entry[7] = sx * k * B;
  entry[8] = (k * sy - sx) * W2;
  entry[9] = (sx + sy) / 2 * (2 * d + 1) * W;

  // Single-pass, YUYV and UYVY.
  entry[10] = h && d >= 0 ? 2 * B : 0;
  entry[11] = h ? (d < 0 ? -4 * B : 0) : 2 * k * B;
  entry[12] = v && d >= 0 ? 2 * W : 0;
  entry[13] = v ? (d < 0 ? -4 * W : 0) : 2 * k * W;
  entry[14] = sx * 4 * k * B;
  entry[15] = 2 * (2 * k * sy - sx) * W;

  // Single-pass, RGB24.
  entry[16] = h ? 3 * k * B : 0;
  entry[17] = h ? 0 : 3 * k * B;
  entry[18] = v ? 0 : 3 * k * W;
  entry[19] = v ? 3 * k * W : 0;
  entry[20] = sx * 6 * k * B;
  entry[21] = -3 * (2 * k * sy + sx) * W;
  entry[22] = (3 * sx - 6 * sy - 3) * d * W;

  // Single-pass, RGB32.
  entry[23] = h ? 4 * B : 0;
  entry[24] = h ? 0 : 4 * B;
  entry[25] = h ? 6 * B : 0;
  entry[26] = h ? 4 * B : 2 * B;
  entry[27] = h ? 2 * B : 4 * B;
  entry[28] = h ? 0 : 6 * B;
  entry[29] = v ? 0 : 4 * W;
  entry[30] = v ? 4 * W : 0;
  entry[31] = sx * 8 * B;
  entry[32] = -4 * (2 * sy + sx) * W;

  // Chains, I420.
  entry[33] = sx * k * B;
  entry[34] = (L * sy - sx) * W;
  entry[35] = sy * (2 * d - 1) * W - (h ? B : 0);
  entry[36] = sy * (4 * d - 1) * W - (h ? B : 0);
  entry[37] = 2 * sy * d * W;
  entry[38] = sy * (2 * d + 1) * W;
  entry[39] = sx * k * B;
  entry[40] = (k * sy - sx) * W2;
  entry[41] = sy * (2 * d - 1) * W2;
  entry[42] = 0;
  entry[43] = sy * d * W;
  entry[44] = sy * (2 * d + 1) * W2;

  // Chains, YUYV and UYVY.
  entry[45] = sx * 2 * k * B;
  entry[46] = 2 * (L * sy - sx) * W;
  entry[47] = 2 * sy * (2 * d - 1) * W - (h ? 2 * B : 0);
  entry[48] = 2 * sy * (4 * d - 1) * W - (h ? 2 * B : 0);
  entry[49] = 4 * sy * d * W;
  entry[50] = 2 * sy * (2 * d + 1) * W;
  entry[51] = v ? -4 * d * W : 2 * (2 * d - 1) * W;
  entry[52] = v ? -8 * d * W : 2 * (4 * d - 1) * W;
  entry[53] = v ? -2 * (2 * d - 1) * W : 4 * d * W;
  entry[54] = v ? -8 * d * W : 2 * (2 * d + 1) * W;

  // Chains, RGB24 and RGB32.
  const int32_t m = d < 0 ? 6 * B : d == 0 ? 3 * B : 3 * B / 2;
  const int32_t n = d <= 0 ? 4 * B : 2 * B;
  entry[55] = sx * m;
  if (d >= 0) {
    entry[56] = -3 * (L * sy + sx) * W + sx * m;
  } else {
    // With exactly one flag the line term is that of the unscaled picture.
    const int32_t line_term = h == v ? -15 * sy : -3 * sy;
    entry[56] = line_term * W + sx * 6 * B;
  }
  entry[57] = -3 * sy * (2 * d - 1) * W;
  entry[58] = -3 * sy * (4 * d - 1) * W;
  entry[59] = -6 * sy * d * W;
  entry[60] = -3 * sy * (2 * d + 1) * W;
  entry[61] = sx * n;
  entry[62] = -4 * (L2 * sy + sx) * W + sx * n;

  // Line distances.
  entry[65] = sy * W;
  entry[69] = 2 * sy * W;
  entry[73] = -3 * k * sy * W;
  entry[77] = -4 * sy * W;

  ctx->tier(tier).stride_inputs = inputs;
}

bool plan_is_stale(const PplContext *ctx, Tier tier) {
  const TierState &state = ctx->tier(tier);
  return state.stride_inputs != stride_inputs_of(ctx) || state.grid_inputs != grid_inputs_of(ctx);
}

}  // namespace ppl_model
