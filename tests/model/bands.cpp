// The bands that a sampled cell must lie in to be counted.
#include "model/refresh.h"

namespace ppl_model {

namespace {

void store(Band &band, int32_t min, int32_t max) {
  band.max = max;
  band.span = add32(sub32(max, min), 1);
  band.min = min;
}

bool is_byte_band(int32_t min, int32_t max) { return min <= max && min >= 0 && max <= 255; }

// The limits of a difference band are compared strictly, so they stand one further out.
uint8_t set_difference_band(PplContext *ctx, Band &band, int16_t Parameters::*lo,
                            int16_t Parameters::*hi, int32_t min, int32_t max) {
  if (min > max) return 0;
  store(band, min, max);
  return refresh(ctx, [=](Parameters &params) {
    const int64_t below = int64_t{min} - 1;
    const int64_t above = int64_t{max} + 1;
    if (below < -32768 || below > 32767 || above < -32768 || above > 32767) return false;
    params.*lo = wrap16(below);
    params.*hi = wrap16(above);
    return true;
  });
}

void write_GR_entries(const PplContext &ctx, Parameters &params) {
  params.qual_GR_base_vec = byte_pair(ctx.qual_G.min, ctx.qual_R.min);
  params.qual_GR_span_vec = byte_pair(ctx.qual_G.span - 1, ctx.qual_R.span - 1);
}

void write_BG_entries(const PplContext &ctx, Parameters &params) {
  params.qual_BG_base_vec = byte_pair(ctx.qual_B.min, ctx.qual_G.min);
  params.qual_BG_span_vec = byte_pair(ctx.qual_B.span - 1, ctx.qual_G.span - 1);
}

uint8_t refresh_level_bands(PplContext *ctx) {
  return refresh(ctx, [ctx](Parameters &params) {
    write_GR_entries(*ctx, params);
    write_BG_entries(*ctx, params);
    return true;
  });
}

}  // namespace

int32_t ppl_qual_BmGb_min(const PplContext *ctx) { return ctx->qual_BmGb.min; }
int32_t ppl_qual_BmGb_max(const PplContext *ctx) { return ctx->qual_BmGb.max; }
uint8_t ppl_set_qual_BmGb_min_max(PplContext *ctx, int32_t min, int32_t max) {
  return set_difference_band(ctx, ctx->qual_BmGb, &Parameters::qual_BmGb_lo_vec,
                             &Parameters::qual_BmGb_hi_vec, min, max);
}

int32_t ppl_qual_GrmR_min(const PplContext *ctx) { return ctx->qual_GrmR.min; }
int32_t ppl_qual_GrmR_max(const PplContext *ctx) { return ctx->qual_GrmR.max; }
uint8_t ppl_set_qual_GrmR_min_max(PplContext *ctx, int32_t min, int32_t max) {
  return set_difference_band(ctx, ctx->qual_GrmR, &Parameters::qual_GrmR_lo_vec,
                             &Parameters::qual_GrmR_hi_vec, min, max);
}

int32_t ppl_qual_BmGb_p_GrmR_min(const PplContext *ctx) { return ctx->qual_BmGb_p_GrmR.min; }
int32_t ppl_qual_BmGb_p_GrmR_max(const PplContext *ctx) { return ctx->qual_BmGb_p_GrmR.max; }
uint8_t ppl_set_qual_BmGb_p_GrmR_min_max(PplContext *ctx, int32_t min, int32_t max) {
  return set_difference_band(ctx, ctx->qual_BmGb_p_GrmR, &Parameters::qual_BmGb_p_GrmR_lo_vec,
                             &Parameters::qual_BmGb_p_GrmR_hi_vec, min, max);
}

int32_t ppl_qual_BmGb_m_GrmR_min(const PplContext *ctx) { return ctx->qual_BmGb_m_GrmR.min; }
int32_t ppl_qual_BmGb_m_GrmR_max(const PplContext *ctx) { return ctx->qual_BmGb_m_GrmR.max; }
uint8_t ppl_set_qual_BmGb_m_GrmR_min_max(PplContext *ctx, int32_t min, int32_t max) {
  return set_difference_band(ctx, ctx->qual_BmGb_m_GrmR, &Parameters::qual_BmGb_m_GrmR_lo_vec,
                             &Parameters::qual_BmGb_m_GrmR_hi_vec, min, max);
}

int32_t ppl_qual_R_min(const PplContext *ctx) { return ctx->qual_R.min; }
int32_t ppl_qual_R_max(const PplContext *ctx) { return ctx->qual_R.max; }
uint8_t ppl_set_qual_R_min_max(PplContext *ctx, int32_t min, int32_t max) {
  if (!is_byte_band(min, max)) return 0;
  store(ctx->qual_R, min, max);
  return refresh(ctx, [ctx](Parameters &params) {
    write_GR_entries(*ctx, params);
    return true;
  });
}

int32_t ppl_qual_G_min(const PplContext *ctx) { return ctx->qual_G.min; }
int32_t ppl_qual_G_max(const PplContext *ctx) { return ctx->qual_G.max; }
uint8_t ppl_set_qual_G_min_max(PplContext *ctx, int32_t min, int32_t max) {
  if (!is_byte_band(min, max)) return 0;
  store(ctx->qual_G, min, max);
  return refresh_level_bands(ctx);
}

int32_t ppl_qual_B_min(const PplContext *ctx) { return ctx->qual_B.min; }
int32_t ppl_qual_B_max(const PplContext *ctx) { return ctx->qual_B.max; }
uint8_t ppl_set_qual_B_min_max(PplContext *ctx, int32_t min, int32_t max) {
  if (!is_byte_band(min, max)) return 0;
  store(ctx->qual_B, min, max);
  return refresh(ctx, [ctx](Parameters &params) {
    write_BG_entries(*ctx, params);
    return true;
  });
}

uint8_t ppl_set_qual_RGB_min_max(PplContext *ctx, int32_t r_min, int32_t r_max, int32_t g_min,
                                 int32_t g_max, int32_t b_min, int32_t b_max) {
  if (!is_byte_band(r_min, r_max) || !is_byte_band(g_min, g_max) || !is_byte_band(b_min, b_max))
    return 0;
  store(ctx->qual_R, r_min, r_max);
  store(ctx->qual_G, g_min, g_max);
  store(ctx->qual_B, b_min, b_max);
  return refresh_level_bands(ctx);
}

uint8_t ppl_reset_qual_min_max(PplContext *ctx) {
  ppl_set_qual_BmGb_min_max(ctx, -25, 25);
  ppl_set_qual_GrmR_min_max(ctx, -25, 25);
  ppl_set_qual_BmGb_p_GrmR_min_max(ctx, -30, 30);
  ppl_set_qual_BmGb_m_GrmR_min_max(ctx, -30, 30);
  for (Band *band : {&ctx->qual_R, &ctx->qual_G, &ctx->qual_B}) store(*band, 0, 255);
  refresh_level_bands(ctx);
  return 1;
}

int32_t ppl_qAE_RGB_min(const PplContext *ctx) { return ctx->qAE_RGB.min; }
int32_t ppl_qAE_RGB_max(const PplContext *ctx) { return ctx->qAE_RGB.max; }
uint8_t ppl_set_qAE_RGB_min_max(PplContext *ctx, int32_t min, int32_t max) {
  if (!is_byte_band(min, max)) return 0;
  store(ctx->qAE_RGB, min, max);
  return refresh(ctx, [=](Parameters &params) {
    params.qAE_min_vec = low_byte(min);
    params.qAE_lo_vec = low_byte(min - 1);  // 0 wraps to 255
    params.qAE_max_vec = low_byte(max);
    params.qAE_hi_vec = low_byte(max + 1);  // 255 wraps to 0
    return true;
  });
}
uint8_t ppl_reset_qAE_min_max(PplContext *ctx) { return ppl_set_qAE_RGB_min_max(ctx, 0, 255); }

}  // namespace ppl_model
