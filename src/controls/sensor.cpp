// What a sensor needs before anything else: black level, gains, deltas.
#include "controls/curve_tables.h"
#include "controls/setter.h"

namespace ppl {
namespace {

constexpr int32_t gain_limit = 2047;  // 8.8: just below 8.0

bool gain_fits(int32_t gain) { return gain >= 0 && gain <= gain_limit; }

uint8_t refresh_gains(PplContext &ctx, Channels channels) {
  return refresh_parameters(ctx, [&ctx, channels](Parameters &p) {
    const ChannelValues gains = {ctx.nf88_r_gain, ctx.nf88_g_gain, ctx.nf88_b_gain};
    if (!set_channels(p.rgb_gain_BG_vec, p.rgb_gain_GR_vec, channels, gains, 3, gain_fits)) {
      return false;
    }
    compose_curves(ctx);
    return true;
  });
}

uint8_t refresh_deltas(PplContext &ctx, Channels channels) {
  return refresh_parameters(ctx, [&ctx, channels](Parameters &p) {
    const ChannelValues deltas = {ctx.r_delta, ctx.g_delta, ctx.b_delta};
    if (!set_channels(p.rgb_delta_BG_vec, p.rgb_delta_GR_vec, channels, deltas, 0, fits_word)) {
      return false;
    }
    compose_curves(ctx);
    return true;
  });
}

}  // namespace
}  // namespace ppl

using namespace ppl;

int32_t PPL_CALL ppl_sensor_type(const PplContext *ctx) { return ctx->sensor_type; }

// Judges the code. Meant so: docs/oddities.md, "A setter that stores nothing".
uint8_t PPL_CALL ppl_set_sensor_type(const PplContext *, int32_t code) {
  return code == 22356 || code == 22856 || code == 4347471 || code == 122965837 ? 1 : 0;
}

uint32_t PPL_CALL ppl_optical_black_b_gb_gr_r(const PplContext *ctx, uint32_t *b, uint32_t *gb,
                                              uint32_t *gr, uint32_t *r) {
  *b = ctx->optical_black_b;
  *gb = ctx->optical_black_gb;
  *gr = ctx->optical_black_gr;
  *r = ctx->optical_black_r;
  return ctx->optical_black_r;
}

uint8_t PPL_CALL ppl_set_optical_black_b_gb_gr_r(PplContext *ctx, uint32_t b, uint32_t gb,
                                                 uint32_t gr, uint32_t r) {
  ctx->optical_black_b = b;
  ctx->optical_black_gb = gb;
  ctx->optical_black_gr = gr;
  ctx->optical_black_r = r;
  return refresh_parameters(*ctx, [=](Parameters &p) {
    if (b > 255 || gb > 255 || gr > 255 || r > 255) return false;
    p.optical_black_BG_vec = to_bytes(static_cast<int32_t>(b), static_cast<int32_t>(gb));
    p.optical_black_GR_vec = to_bytes(static_cast<int32_t>(gr), static_cast<int32_t>(r));
    compose_curves(*ctx);
    return true;
  });
}

uint8_t PPL_CALL ppl_reset_optical_black_b_gb_gr_r(PplContext *ctx) {
  return ppl_set_optical_black_b_gb_gr_r(ctx, 0, 0, 0, 0);
}

int32_t PPL_CALL ppl_r_delta(const PplContext *ctx) { return ctx->r_delta; }

int32_t PPL_CALL ppl_g_delta(const PplContext *ctx) { return ctx->g_delta; }

int32_t PPL_CALL ppl_b_delta(const PplContext *ctx) { return ctx->b_delta; }

uint8_t PPL_CALL ppl_set_rgb_delta(PplContext *ctx, int32_t r, int32_t g, int32_t b) {
  ctx->r_delta = r;
  ctx->g_delta = g;
  ctx->b_delta = b;
  return refresh_deltas(*ctx, all_channels);
}

uint8_t PPL_CALL ppl_set_r_delta(PplContext *ctx, int32_t r) {
  ctx->r_delta = r;
  return refresh_deltas(*ctx, red_only);
}

uint8_t PPL_CALL ppl_set_g_delta(PplContext *ctx, int32_t g) {
  ctx->g_delta = g;
  return refresh_deltas(*ctx, green_only);
}

uint8_t PPL_CALL ppl_set_b_delta(PplContext *ctx, int32_t b) {
  ctx->b_delta = b;
  return refresh_deltas(*ctx, blue_only);
}

uint8_t PPL_CALL ppl_reset_rgb_delta(PplContext *ctx) { return ppl_set_rgb_delta(ctx, 0, 0, 0); }

int32_t PPL_CALL ppl_nf88_r_gain(const PplContext *ctx) { return ctx->nf88_r_gain; }

int32_t PPL_CALL ppl_nf88_g_gain(const PplContext *ctx) { return ctx->nf88_g_gain; }

int32_t PPL_CALL ppl_nf88_b_gain(const PplContext *ctx) { return ctx->nf88_b_gain; }

uint8_t PPL_CALL ppl_set_rgb_gain(PplContext *ctx, int32_t r, int32_t g, int32_t b) {
  ctx->nf88_r_gain = r;
  ctx->nf88_g_gain = g;
  ctx->nf88_b_gain = b;
  return refresh_gains(*ctx, all_channels);
}

uint8_t PPL_CALL ppl_set_r_gain(PplContext *ctx, int32_t r) {
  ctx->nf88_r_gain = r;
  return refresh_gains(*ctx, red_only);
}

uint8_t PPL_CALL ppl_set_g_gain(PplContext *ctx, int32_t g) {
  ctx->nf88_g_gain = g;
  return refresh_gains(*ctx, green_only);
}

uint8_t PPL_CALL ppl_set_b_gain(PplContext *ctx, int32_t b) {
  ctx->nf88_b_gain = b;
  return refresh_gains(*ctx, blue_only);
}

uint8_t PPL_CALL ppl_reset_rgb_gain(PplContext *ctx) {
  return ppl_set_rgb_gain(ctx, 256, 256, 256);
}

// The dekneel tables are kept for their owners. Meant so: docs/oddities.md, "Controls without an
// effect".
const uint8_t *PPL_CALL ppl_r_dekneel_table(const PplContext *ctx) { return ctx->r_dekneel_table; }

const uint8_t *PPL_CALL ppl_g_dekneel_table(const PplContext *ctx) { return ctx->g_dekneel_table; }

const uint8_t *PPL_CALL ppl_b_dekneel_table(const PplContext *ctx) { return ctx->b_dekneel_table; }

// These three always succeed. Meant so: docs/oddities.md, "Success that returns 0".
uint8_t PPL_CALL ppl_copy_r_dekneel_table(PplContext *ctx, const uint8_t table[256]) {
  copy_curve(ctx->r_dekneel_table, table);
  return 0;
}

uint8_t PPL_CALL ppl_copy_g_dekneel_table(PplContext *ctx, const uint8_t table[256]) {
  copy_curve(ctx->g_dekneel_table, table);
  return 0;
}

uint8_t PPL_CALL ppl_copy_b_dekneel_table(PplContext *ctx, const uint8_t table[256]) {
  copy_curve(ctx->b_dekneel_table, table);
  return 0;
}

uint8_t PPL_CALL ppl_reset_rgb_dekneel_table(PplContext *ctx) {
  for (int i = 0; i < 256; ++i) {
    const auto value = static_cast<uint8_t>(i);
    ctx->r_dekneel_table[i] = ctx->g_dekneel_table[i] = ctx->b_dekneel_table[i] = value;
  }
  return 1;
}
