// The bands that decide which cells the statistics count, and the gains kept beside them.
#include "controls/setter.h"

namespace ppl {
namespace {

void store(Band &band, int32_t min, int32_t max) {
  band.max = max;
  band.span = wrapping_add(wrapping_subtract(max, min), 1);
  band.min = min;
}

bool is_byte_band(int32_t min, int32_t max) { return min <= max && min >= 0 && max <= 255; }

constexpr int32_t quals_gain_limit = 1023;  // 8.8: just below 4.0

bool quals_gain_fits(int32_t gain) { return gain >= 0 && gain <= quals_gain_limit; }

void write_GR(const PplContext &ctx, Parameters &p) {
  p.qual_GR_base_vec = to_bytes(ctx.qual_G.min, ctx.qual_R.min);
  p.qual_GR_span_vec = to_bytes(ctx.qual_G.span - 1, ctx.qual_R.span - 1);
}

void write_BG(const PplContext &ctx, Parameters &p) {
  p.qual_BG_base_vec = to_bytes(ctx.qual_B.min, ctx.qual_G.min);
  p.qual_BG_span_vec = to_bytes(ctx.qual_B.span - 1, ctx.qual_G.span - 1);
}

// The green band stands in both pairs.
uint8_t refresh_level_bands(PplContext &ctx, Channels channels) {
  return refresh_parameters(ctx, [&ctx, channels](Parameters &p) {
    if (channels.g || channels.r) write_GR(ctx, p);
    if (channels.g || channels.b) write_BG(ctx, p);
    return true;
  });
}

void refresh_quals_gains(PplContext &ctx, Channels channels) {
  refresh_parameters(ctx, [&ctx, channels](Parameters &p) {
    const ChannelValues gains = {ctx.nf88_quals_r_gain, ctx.nf88_quals_g_gain,
                                 ctx.nf88_quals_b_gain};
    return set_channels(p.unread.quals_gain_BG_vec, p.unread.quals_gain_GR_vec, channels, gains, 2,
                        quals_gain_fits);
  });
}

}  // namespace
}  // namespace ppl

using namespace ppl;

#define PPL_BAND_GETTERS(band)                                                       \
  int32_t PPL_CALL ppl_##band##_min(const PplContext *ctx) { return ctx->band.min; } \
  int32_t PPL_CALL ppl_##band##_max(const PplContext *ctx) { return ctx->band.max; }

PPL_BAND_GETTERS(qual_BmGb)
PPL_BAND_GETTERS(qual_GrmR)
PPL_BAND_GETTERS(qual_BmGb_p_GrmR)
PPL_BAND_GETTERS(qual_BmGb_m_GrmR)
PPL_BAND_GETTERS(qual_R)
PPL_BAND_GETTERS(qual_G)
PPL_BAND_GETTERS(qual_B)
PPL_BAND_GETTERS(qAE_RGB)

#undef PPL_BAND_GETTERS

// A band of signed differences: strict limits, one step outside, that must fit a word.
#define PPL_DIFFERENCE_BAND_SETTER(band)                                                 \
  uint8_t PPL_CALL ppl_set_##band##_min_max(PplContext *ctx, int32_t min, int32_t max) { \
    if (min > max) return 0;                                                             \
    store(ctx->band, min, max);                                                          \
    return refresh_parameters(*ctx, [=](Parameters &p) {                                 \
      const int32_t lo = wrapping_add(min, -1);                                          \
      const int32_t hi = wrapping_add(max, 1);                                           \
      if (!fits_word(lo) || !fits_word(hi)) return false;                                \
      p.band##_lo_vec = to_word(lo);                                                     \
      p.band##_hi_vec = to_word(hi);                                                     \
      return true;                                                                       \
    });                                                                                  \
  }

PPL_DIFFERENCE_BAND_SETTER(qual_BmGb)
PPL_DIFFERENCE_BAND_SETTER(qual_GrmR)
PPL_DIFFERENCE_BAND_SETTER(qual_BmGb_p_GrmR)
PPL_DIFFERENCE_BAND_SETTER(qual_BmGb_m_GrmR)

#undef PPL_DIFFERENCE_BAND_SETTER

uint8_t PPL_CALL ppl_set_qual_R_min_max(PplContext *ctx, int32_t min, int32_t max) {
  if (!is_byte_band(min, max)) return 0;
  store(ctx->qual_R, min, max);
  return refresh_level_bands(*ctx, red_only);
}

uint8_t PPL_CALL ppl_set_qual_G_min_max(PplContext *ctx, int32_t min, int32_t max) {
  if (!is_byte_band(min, max)) return 0;
  store(ctx->qual_G, min, max);
  return refresh_level_bands(*ctx, green_only);
}

uint8_t PPL_CALL ppl_set_qual_B_min_max(PplContext *ctx, int32_t min, int32_t max) {
  if (!is_byte_band(min, max)) return 0;
  store(ctx->qual_B, min, max);
  return refresh_level_bands(*ctx, blue_only);
}

uint8_t PPL_CALL ppl_set_qual_RGB_min_max(PplContext *ctx, int32_t r_min, int32_t r_max,
                                          int32_t g_min, int32_t g_max, int32_t b_min,
                                          int32_t b_max) {
  if (!is_byte_band(r_min, r_max) || !is_byte_band(g_min, g_max) || !is_byte_band(b_min, b_max)) {
    return 0;
  }
  store(ctx->qual_R, r_min, r_max);
  store(ctx->qual_G, g_min, g_max);
  store(ctx->qual_B, b_min, b_max);
  return refresh_level_bands(*ctx, all_channels);
}

uint8_t PPL_CALL ppl_reset_qual_min_max(PplContext *ctx) {
  ppl_set_qual_BmGb_min_max(ctx, -25, 25);
  ppl_set_qual_GrmR_min_max(ctx, -25, 25);
  ppl_set_qual_BmGb_p_GrmR_min_max(ctx, -30, 30);
  ppl_set_qual_BmGb_m_GrmR_min_max(ctx, -30, 30);
  return ppl_set_qual_RGB_min_max(ctx, 0, 255, 0, 255, 0, 255);
}

uint8_t PPL_CALL ppl_set_qAE_RGB_min_max(PplContext *ctx, int32_t min, int32_t max) {
  if (!is_byte_band(min, max)) return 0;
  store(ctx->qAE_RGB, min, max);
  return refresh_parameters(*ctx, [=](Parameters &p) {
    p.qAE_min_vec = to_byte(min);
    p.qAE_max_vec = to_byte(max);
    p.unread.qAE_lo_vec = to_byte(min - 1);
    p.unread.qAE_hi_vec = to_byte(max + 1);
    return true;
  });
}

uint8_t PPL_CALL ppl_reset_qAE_min_max(PplContext *ctx) {
  return ppl_set_qAE_RGB_min_max(ctx, 0, 255);
}

// The quals gains are kept with their vectors, but no kernel reads them. Their setters always
// succeed. Meant so: docs/oddities.md, "Success that returns 0".
int32_t PPL_CALL ppl_nf88_quals_r_gain(const PplContext *ctx) { return ctx->nf88_quals_r_gain; }

int32_t PPL_CALL ppl_nf88_quals_g_gain(const PplContext *ctx) { return ctx->nf88_quals_g_gain; }

int32_t PPL_CALL ppl_nf88_quals_b_gain(const PplContext *ctx) { return ctx->nf88_quals_b_gain; }

uint8_t PPL_CALL ppl_set_quals_rgb_gain(PplContext *ctx, int32_t r, int32_t g, int32_t b) {
  ctx->nf88_quals_r_gain = r;
  ctx->nf88_quals_g_gain = g;
  ctx->nf88_quals_b_gain = b;
  refresh_quals_gains(*ctx, all_channels);
  return 0;
}

uint8_t PPL_CALL ppl_set_quals_r_gain(PplContext *ctx, int32_t r) {
  ctx->nf88_quals_r_gain = r;
  refresh_quals_gains(*ctx, red_only);
  return 0;
}

uint8_t PPL_CALL ppl_set_quals_g_gain(PplContext *ctx, int32_t g) {
  ctx->nf88_quals_g_gain = g;
  refresh_quals_gains(*ctx, green_only);
  return 0;
}

uint8_t PPL_CALL ppl_set_quals_b_gain(PplContext *ctx, int32_t b) {
  ctx->nf88_quals_b_gain = b;
  refresh_quals_gains(*ctx, blue_only);
  return 0;
}

uint8_t PPL_CALL ppl_reset_quals_rgb_gain(PplContext *ctx) {
  return ppl_set_quals_rgb_gain(ctx, 256, 256, 256);
}
