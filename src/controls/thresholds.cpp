// Scalar tuning points of the filters.
#include "controls/setter.h"

using namespace ppl;

// A threshold with a limit: the field, its parameter, the largest value taken (tested unsigned,
// so a negative one is refused), the default, and the shift of its fixed-point form.
#define PPL_LIMITED_THRESHOLD(name, parameter, limit, initial, shift)      \
  int32_t PPL_CALL ppl_##name(const PplContext *ctx) { return ctx->name; } \
                                                                           \
  uint8_t PPL_CALL ppl_set_##name(PplContext *ctx, int32_t value) {        \
    if (static_cast<uint32_t>(value) > (limit)) return 0;                  \
    ctx->name = value;                                                     \
    return refresh_parameters(*ctx, [value](Parameters &p) {               \
      p.parameter = static_cast<decltype(p.parameter)>(value >> (shift));  \
      return true;                                                         \
    });                                                                    \
  }                                                                        \
                                                                           \
  uint8_t PPL_CALL ppl_reset_##name(PplContext *ctx) { return ppl_set_##name(ctx, initial); }

// The limits are sums of sample differences: 6, 12, 8 and 3 times 255.
PPL_LIMITED_THRESHOLD(edge_threshold, edge_threshold_vec, 1530, 100, 0)
PPL_LIMITED_THRESHOLD(edge_threshold2, edge_threshold2_vec, 1530, 1530, 0)
PPL_LIMITED_THRESHOLD(nf88_edge_enhance_factor, edge_enhance_factor_vec, 256, 32, 2)
PPL_LIMITED_THRESHOLD(noise_filter_G_12T_threshold, unread.noise_G_12T_vec, 3060, 60, 0)
PPL_LIMITED_THRESHOLD(noise_filter_R_8T_threshold, unread.noise_R_8T_vec, 2040, 40, 0)
PPL_LIMITED_THRESHOLD(noise_filter_B_8T_threshold, unread.noise_B_8T_vec, 2040, 40, 0)
PPL_LIMITED_THRESHOLD(CFA_T0_threshold, CFA_T0_vec, 255, 10, 0)
PPL_LIMITED_THRESHOLD(CFA_T1_threshold, CFA_T1_vec, 63, 15, 0)
PPL_LIMITED_THRESHOLD(intl_3T_threshold, intl_3T_vec, 765, 50, 0)

#undef PPL_LIMITED_THRESHOLD

// A threshold of the medium filter: any value is stored; one that does not fit a word leaves the
// old parameter in force.
#define PPL_MEDIUM_THRESHOLD(name, parameter, fits, shift)                 \
  int32_t PPL_CALL ppl_##name(const PplContext *ctx) { return ctx->name; } \
                                                                           \
  uint8_t PPL_CALL ppl_set_##name(PplContext *ctx, int32_t value) {        \
    ctx->name = value;                                                     \
    return refresh_parameters(*ctx, [value](Parameters &p) {               \
      if (!fits(value)) return false;                                      \
      p.parameter = to_word(value >> (shift));                             \
      return true;                                                         \
    });                                                                    \
  }

PPL_MEDIUM_THRESHOLD(medium_filter_hot_pixel_threshold, medium_hot_vec, fits_word, 0)
PPL_MEDIUM_THRESHOLD(medium_filter_dead_pixel_threshold, medium_dead_vec, fits_word, 0)
PPL_MEDIUM_THRESHOLD(nf88_medium_filter_hot_pixel_threshold_percentage, medium_hot_pct_vec,
                     fits_shifted_word, 2)
PPL_MEDIUM_THRESHOLD(nf88_medium_filter_dead_pixel_threshold_percentage, medium_dead_pct_vec,
                     fits_shifted_word, 2)

#undef PPL_MEDIUM_THRESHOLD

int32_t PPL_CALL ppl_medium_filter_diff_threshold(const PplContext *ctx) {
  return ctx->medium_filter_diff_threshold;
}

// Refreshes the hot pixel threshold, not one of its own: medium_diff_vec stays 0 for good, and the
// plain value affects nothing but its getter. Meant so: docs/oddities.md, "Difference threshold".
uint8_t PPL_CALL ppl_set_medium_filter_diff_threshold(PplContext *ctx, int32_t value) {
  ctx->medium_filter_diff_threshold = value;
  return ppl_set_medium_filter_hot_pixel_threshold(ctx, ctx->medium_filter_hot_pixel_threshold);
}

uint8_t PPL_CALL ppl_medium_filter_enabled(const PplContext *ctx) {
  return ctx->medium_filter_enabled;
}

uint8_t PPL_CALL ppl_enable_medium_filter(PplContext *ctx) {
  ctx->medium_filter_enabled = 1;
  return 1;
}

uint8_t PPL_CALL ppl_disable_medium_filter(PplContext *ctx) {
  ctx->medium_filter_enabled = 0;
  return 1;
}

uint8_t PPL_CALL ppl_reset_medium_filter(PplContext *ctx) {
  ppl_set_medium_filter_diff_threshold(ctx, 24);
  ppl_set_medium_filter_hot_pixel_threshold(ctx, 240);
  ppl_set_medium_filter_dead_pixel_threshold(ctx, 16);
  ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage(ctx, 80);
  ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage(ctx, 48);
  return ppl_disable_medium_filter(ctx);
}
