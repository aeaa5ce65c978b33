// The scalar tuning points of the filters.
#include "model/refresh.h"

namespace ppl_model {

namespace {

// A negative argument is beyond every limit.
bool beyond(int32_t value, uint32_t limit) { return static_cast<uint32_t>(value) > limit; }

uint8_t refresh_threshold(PplContext *ctx, int16_t Parameters::*entry, int32_t value) {
  return refresh(ctx, [=](Parameters &params) {
    if (!fits_word(value)) return false;
    params.*entry = wrap16(value);
    return true;
  });
}

// A fraction in 8.8 becomes 8.6.
uint8_t refresh_fraction(PplContext *ctx, int16_t Parameters::*entry, int32_t value) {
  return refresh(ctx, [=](Parameters &params) {
    if (value < -65536 || value > 65535) return false;
    params.*entry = wrap16(value >> 2);
    return true;
  });
}

uint8_t set_threshold(PplContext *ctx, int32_t PplContext::*field, int16_t Parameters::*entry,
                      int32_t value, uint32_t limit) {
  if (beyond(value, limit)) return 0;
  ctx->*field = value;
  return refresh_threshold(ctx, entry, value);
}

}  // namespace

// ---- Medium filter

int32_t ppl_medium_filter_diff_threshold(const PplContext *ctx) {
  return ctx->medium_filter_diff_threshold;
}
// Its own entry is never written: the hot pixel entry is refreshed in its place.
uint8_t ppl_set_medium_filter_diff_threshold(PplContext *ctx, int32_t value) {
  ctx->medium_filter_diff_threshold = value;
  return refresh_threshold(ctx, &Parameters::medium_hot_vec,
                           ctx->medium_filter_hot_pixel_threshold);
}

int32_t ppl_medium_filter_hot_pixel_threshold(const PplContext *ctx) {
  return ctx->medium_filter_hot_pixel_threshold;
}
uint8_t ppl_set_medium_filter_hot_pixel_threshold(PplContext *ctx, int32_t value) {
  ctx->medium_filter_hot_pixel_threshold = value;
  return refresh_threshold(ctx, &Parameters::medium_hot_vec, value);
}

int32_t ppl_medium_filter_dead_pixel_threshold(const PplContext *ctx) {
  return ctx->medium_filter_dead_pixel_threshold;
}
uint8_t ppl_set_medium_filter_dead_pixel_threshold(PplContext *ctx, int32_t value) {
  ctx->medium_filter_dead_pixel_threshold = value;
  return refresh_threshold(ctx, &Parameters::medium_dead_vec, value);
}

int32_t ppl_nf88_medium_filter_hot_pixel_threshold_percentage(const PplContext *ctx) {
  return ctx->nf88_medium_filter_hot_pixel_threshold_percentage;
}
uint8_t ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage(PplContext *ctx, int32_t value) {
  ctx->nf88_medium_filter_hot_pixel_threshold_percentage = value;
  return refresh_fraction(ctx, &Parameters::medium_hot_pct_vec, value);
}

int32_t ppl_nf88_medium_filter_dead_pixel_threshold_percentage(const PplContext *ctx) {
  return ctx->nf88_medium_filter_dead_pixel_threshold_percentage;
}
uint8_t ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage(PplContext *ctx, int32_t value) {
  ctx->nf88_medium_filter_dead_pixel_threshold_percentage = value;
  return refresh_fraction(ctx, &Parameters::medium_dead_pct_vec, value);
}

uint8_t ppl_medium_filter_enabled(const PplContext *ctx) { return ctx->medium_filter_enabled; }
uint8_t ppl_enable_medium_filter(PplContext *ctx) {
  ctx->medium_filter_enabled = 1;
  return 1;
}
uint8_t ppl_disable_medium_filter(PplContext *ctx) {
  ctx->medium_filter_enabled = 0;
  return 1;
}

uint8_t ppl_reset_medium_filter(PplContext *ctx) {
  ppl_set_medium_filter_diff_threshold(ctx, 24);
  ppl_set_medium_filter_hot_pixel_threshold(ctx, 240);
  ppl_set_medium_filter_dead_pixel_threshold(ctx, 16);
  ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage(ctx, 80);
  ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage(ctx, 48);
  return ppl_disable_medium_filter(ctx);
}

// ---- Edges

int32_t ppl_edge_threshold(const PplContext *ctx) { return ctx->edge_threshold; }
uint8_t ppl_set_edge_threshold(PplContext *ctx, int32_t value) {
  return set_threshold(ctx, &PplContext::edge_threshold, &Parameters::edge_threshold_vec, value,
                       1530);
}
uint8_t ppl_reset_edge_threshold(PplContext *ctx) { return ppl_set_edge_threshold(ctx, 100); }

int32_t ppl_edge_threshold2(const PplContext *ctx) { return ctx->edge_threshold2; }
uint8_t ppl_set_edge_threshold2(PplContext *ctx, int32_t value) {
  return set_threshold(ctx, &PplContext::edge_threshold2, &Parameters::edge_threshold2_vec, value,
                       1530);
}
uint8_t ppl_reset_edge_threshold2(PplContext *ctx) { return ppl_set_edge_threshold2(ctx, 1530); }

int32_t ppl_nf88_edge_enhance_factor(const PplContext *ctx) {
  return ctx->nf88_edge_enhance_factor;
}
uint8_t ppl_set_nf88_edge_enhance_factor(PplContext *ctx, int32_t value) {
  if (beyond(value, 256)) return 0;
  ctx->nf88_edge_enhance_factor = value;
  return refresh_fraction(ctx, &Parameters::edge_enhance_factor_vec, value);
}
uint8_t ppl_reset_nf88_edge_enhance_factor(PplContext *ctx) {
  return ppl_set_nf88_edge_enhance_factor(ctx, 32);
}

// ---- Noise filter: kept, read by no kernel

int32_t ppl_noise_filter_G_12T_threshold(const PplContext *ctx) {
  return ctx->noise_filter_G_12T_threshold;
}
uint8_t ppl_set_noise_filter_G_12T_threshold(PplContext *ctx, int32_t value) {
  return set_threshold(ctx, &PplContext::noise_filter_G_12T_threshold, &Parameters::noise_G_12T_vec,
                       value, 3060);
}
uint8_t ppl_reset_noise_filter_G_12T_threshold(PplContext *ctx) {
  return ppl_set_noise_filter_G_12T_threshold(ctx, 60);
}

int32_t ppl_noise_filter_R_8T_threshold(const PplContext *ctx) {
  return ctx->noise_filter_R_8T_threshold;
}
uint8_t ppl_set_noise_filter_R_8T_threshold(PplContext *ctx, int32_t value) {
  return set_threshold(ctx, &PplContext::noise_filter_R_8T_threshold, &Parameters::noise_R_8T_vec,
                       value, 2040);
}
uint8_t ppl_reset_noise_filter_R_8T_threshold(PplContext *ctx) {
  return ppl_set_noise_filter_R_8T_threshold(ctx, 40);
}

int32_t ppl_noise_filter_B_8T_threshold(const PplContext *ctx) {
  return ctx->noise_filter_B_8T_threshold;
}
uint8_t ppl_set_noise_filter_B_8T_threshold(PplContext *ctx, int32_t value) {
  return set_threshold(ctx, &PplContext::noise_filter_B_8T_threshold, &Parameters::noise_B_8T_vec,
                       value, 2040);
}
uint8_t ppl_reset_noise_filter_B_8T_threshold(PplContext *ctx) {
  return ppl_set_noise_filter_B_8T_threshold(ctx, 40);
}

// ---- Interpolation and motion

int32_t ppl_CFA_T0_threshold(const PplContext *ctx) { return ctx->CFA_T0_threshold; }
uint8_t ppl_set_CFA_T0_threshold(PplContext *ctx, int32_t value) {
  if (beyond(value, 255)) return 0;
  ctx->CFA_T0_threshold = value;
  return refresh(ctx, [=](Parameters &params) {
    params.CFA_T0_vec = low_byte(value);
    return true;
  });
}
uint8_t ppl_reset_CFA_T0_threshold(PplContext *ctx) { return ppl_set_CFA_T0_threshold(ctx, 10); }

int32_t ppl_CFA_T1_threshold(const PplContext *ctx) { return ctx->CFA_T1_threshold; }
uint8_t ppl_set_CFA_T1_threshold(PplContext *ctx, int32_t value) {
  return set_threshold(ctx, &PplContext::CFA_T1_threshold, &Parameters::CFA_T1_vec, value, 63);
}
uint8_t ppl_reset_CFA_T1_threshold(PplContext *ctx) { return ppl_set_CFA_T1_threshold(ctx, 15); }

int32_t ppl_intl_3T_threshold(const PplContext *ctx) { return ctx->intl_3T_threshold; }
uint8_t ppl_set_intl_3T_threshold(PplContext *ctx, int32_t value) {
  return set_threshold(ctx, &PplContext::intl_3T_threshold, &Parameters::intl_3T_vec, value, 765);
}
uint8_t ppl_reset_intl_3T_threshold(PplContext *ctx) { return ppl_set_intl_3T_threshold(ctx, 50); }

}  // namespace ppl_model
