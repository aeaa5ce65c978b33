// All controls at once.
#include "context/context.h"

uint8_t PPL_CALL ppl_reset_all_controls(PplContext *ctx) {
  // The order matters to the results on the way: the colour matrices become right with saturation
  // and hue, which still use the old contrast, and the gamma curves come after the contrast curve.
  ppl_reset_decimation(ctx);
  ppl_reset_quality(ctx);
  ppl_reset_mean_collection(ctx);
  ppl_reset_P3_only(ctx);
  ppl_reset_rgb_dekneel_table(ctx);
  ppl_reset_rgb_delta(ctx);
  ppl_reset_medium_filter(ctx);
  ppl_reset_rgb_gain(ctx);
  ppl_reset_sensor_matrix(ctx);
  ppl_reset_sensor_matrix_index_upper_bound(ctx);
  ppl_reset_quals_rgb_gain(ctx);
  ppl_reset_qual_min_max(ctx);
  ppl_reset_qAE_min_max(ctx);
  ppl_reset_edge_threshold(ctx);
  ppl_reset_edge_threshold2(ctx);
  ppl_reset_nf88_edge_enhance_factor(ctx);
  ppl_reset_noise_filter_G_12T_threshold(ctx);
  ppl_reset_noise_filter_R_8T_threshold(ctx);
  ppl_reset_noise_filter_B_8T_threshold(ctx);
  ppl_reset_CFA_T0_threshold(ctx);
  ppl_reset_CFA_T1_threshold(ctx);
  ppl_reset_intl_3T_threshold(ctx);
  ppl_reset_sat_hue(ctx);
  ppl_reset_contrast(ctx);
  ppl_reset_gamma(ctx);
  ppl_reset_mirrors(ctx);
  return ppl_reset_optical_black_b_gb_gr_r(ctx);
}
