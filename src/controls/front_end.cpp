// Black level, gains, deltas, and the plain switches of the pipeline.
#include "controls/front_end_tables.h"
#include "controls/setter.h"
#include "engine/stride_table.h"

namespace ppl {
namespace {

constexpr int32_t gain_limit = 2047;  // 8.8: just below 8.0

bool gain_fits(int32_t gain) { return gain >= 0 && gain <= gain_limit; }

void copy_table(uint8_t *to, const uint8_t *from) {
  for (int i = 0; i < 256; ++i) to[i] = from[i];
}

uint8_t refresh_gains(PplContext &ctx, Channels channels) {
  return refresh_tiers(ctx, [&ctx, channels](auto tier) {
    auto &p = tier.params;
    const ChannelValues gains = {ctx.nf88_r_gain, ctx.nf88_g_gain, ctx.nf88_b_gain};
    if (!set_channel_lanes(p.rgb_gain_BG_vec, p.rgb_gain_GR_vec, channels, gains, 3, gain_fits)) {
      return false;
    }
    compose_front_end(ctx, p);
    return true;
  });
}

uint8_t refresh_deltas(PplContext &ctx, Channels channels) {
  return refresh_tiers(ctx, [&ctx, channels](auto tier) {
    auto &p = tier.params;
    const ChannelValues deltas = {ctx.r_delta, ctx.g_delta, ctx.b_delta};
    if (!set_channel_lanes(p.rgb_delta_BG_vec, p.rgb_delta_GR_vec, channels, deltas, 0,
                           fits_word)) {
      return false;
    }
    compose_front_end(ctx, p);
    return true;
  });
}

}  // namespace
}  // namespace ppl

using namespace ppl;

int32_t PPL_CALL ppl_sensor_type(const PplContext *ctx) { return ctx->sensor_type; }

// Judges the code and stores nothing: meant so.
uint8_t PPL_CALL ppl_set_sensor_type(const PplContext *, int32_t code) {
  return code == 22356 || code == 22856 || code == 4347471 || code == 122965837 ? 1 : 0;
}

uint32_t PPL_CALL ppl_quality(const PplContext *ctx) { return ctx->quality; }

uint8_t PPL_CALL ppl_set_quality(PplContext *ctx, uint32_t quality) {
  if (quality >= 15) return 0;
  ctx->quality = quality;
  return 1;
}

uint8_t PPL_CALL ppl_reset_quality(PplContext *ctx) { return ppl_set_quality(ctx, 3); }

uint8_t PPL_CALL ppl_mean_collection(const PplContext *ctx) { return ctx->mean_collection; }

uint8_t PPL_CALL ppl_set_mean_collection(PplContext *ctx, uint8_t value) {
  ctx->mean_collection = value;
  return 1;
}

uint8_t PPL_CALL ppl_reset_mean_collection(PplContext *ctx) {
  return ppl_set_mean_collection(ctx, 1);
}

uint8_t PPL_CALL ppl_P3_only(const PplContext *ctx) { return ctx->P3_only; }

uint8_t PPL_CALL ppl_set_P3_only(PplContext *ctx, uint8_t value) {
  ctx->P3_only = value;
  return 1;
}

uint8_t PPL_CALL ppl_reset_P3_only(PplContext *ctx) { return ppl_set_P3_only(ctx, 0); }

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
  return refresh_tiers(*ctx, [=](auto tier) {
    if (b > 255 || gb > 255 || gr > 255 || r > 255) return false;
    auto &p = tier.params;
    set_byte_pair(p.optical_black_BG_vec, static_cast<int32_t>(b), static_cast<int32_t>(gb));
    set_byte_pair(p.optical_black_GR_vec, static_cast<int32_t>(gr), static_cast<int32_t>(r));
    compose_front_end(*ctx, p);
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

// The dekneel tables are kept for their owners; no kernel looks anything up in them.
const uint8_t *PPL_CALL ppl_r_dekneel_table(const PplContext *ctx) { return ctx->r_dekneel_table; }

const uint8_t *PPL_CALL ppl_g_dekneel_table(const PplContext *ctx) { return ctx->g_dekneel_table; }

const uint8_t *PPL_CALL ppl_b_dekneel_table(const PplContext *ctx) { return ctx->b_dekneel_table; }

// These three return 0 although they always succeed: that is their documented result.
uint8_t PPL_CALL ppl_copy_r_dekneel_table(PplContext *ctx, const uint8_t table[256]) {
  copy_table(ctx->r_dekneel_table, table);
  return 0;
}

uint8_t PPL_CALL ppl_copy_g_dekneel_table(PplContext *ctx, const uint8_t table[256]) {
  copy_table(ctx->g_dekneel_table, table);
  return 0;
}

uint8_t PPL_CALL ppl_copy_b_dekneel_table(PplContext *ctx, const uint8_t table[256]) {
  copy_table(ctx->b_dekneel_table, table);
  return 0;
}

uint8_t PPL_CALL ppl_reset_rgb_dekneel_table(PplContext *ctx) {
  for (int i = 0; i < 256; ++i) {
    const auto value = static_cast<uint8_t>(i);
    ctx->r_dekneel_table[i] = ctx->g_dekneel_table[i] = ctx->b_dekneel_table[i] = value;
  }
  return 1;
}

uint8_t PPL_CALL ppl_h_mirror(const PplContext *ctx) { return ctx->h_mirror; }

uint8_t PPL_CALL ppl_v_mirror(const PplContext *ctx) { return ctx->v_mirror; }

uint8_t PPL_CALL ppl_set_h_mirror(PplContext *ctx, uint8_t value) {
  ctx->h_mirror = value;
  return refresh_stride_tables(*ctx);
}

uint8_t PPL_CALL ppl_set_v_mirror(PplContext *ctx, uint8_t value) {
  ctx->v_mirror = value;
  return refresh_stride_tables(*ctx);
}

uint8_t PPL_CALL ppl_reset_mirrors(PplContext *ctx) {
  ppl_set_v_mirror(ctx, 0);
  return ppl_set_h_mirror(ctx, 0);
}
