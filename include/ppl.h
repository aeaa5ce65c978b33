/* ppl: a video pipeline for USB cameras. */
#ifndef PPL_H
#define PPL_H

#include <stdint.h>

#if defined(_WIN32)
#define PPL_CALL __cdecl
#else
#define PPL_CALL
#endif

#if defined(_WIN32) && defined(PPL_IMPORT)
#define PPL_API __declspec(dllimport)
#elif defined(__GNUC__) && !defined(_WIN32)
#define PPL_API __attribute__((visibility("default")))
#else
#define PPL_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* One video stream. Eight exist; ppl_init hands them out. */
typedef struct PplContext PplContext;

/* Three channel values, always in this order. Means are 8.8 fixed point. */
typedef struct PplTriple {
  uint32_t r, g, b;
} PplTriple;

/* ---- Contexts ---- */

PPL_API PplContext *PPL_CALL ppl_init(void);
PPL_API uint8_t PPL_CALL ppl_free(PplContext *ctx);
PPL_API int32_t PPL_CALL DllUnload(void);

/* ---- Geometry ---- */

PPL_API uint8_t PPL_CALL ppl_new_frame_size(PplContext *ctx, uint32_t width, uint32_t height,
                                            uint32_t stride);
PPL_API uint8_t PPL_CALL ppl_new_frame_sizes(PplContext *ctx, uint32_t in_width, uint32_t in_height,
                                             uint32_t out_width, uint32_t out_height);
PPL_API uint8_t PPL_CALL ppl_set_decimation(PplContext *ctx, int32_t decimation,
                                            int32_t top_black_lines, int32_t bottom_black_lines);
PPL_API int32_t PPL_CALL ppl_decimation(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_decimation_top_black_lines(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_decimation_bottom_black_lines(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_reset_decimation(PplContext *ctx);

/* ---- Tier ---- */

PPL_API uint8_t PPL_CALL ppl_P3_only(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_P3_only(PplContext *ctx, uint8_t value);
PPL_API uint8_t PPL_CALL ppl_reset_P3_only(PplContext *ctx);

/* ---- Raw frames: entry functions ---- */

PPL_API uint8_t PPL_CALL BaylorToI420MMX(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                         uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToI420MMX_deci_2_1(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                                  uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToI420MMX_intp_1_2(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                                  uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToI420MMX_intp_1_2_stride(PplContext *ctx, uint8_t *src,
                                                         uint8_t *dst, uint32_t width,
                                                         uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToI420MMX_intp_1_4_stride(PplContext *ctx, uint8_t *src,
                                                         uint8_t *dst, uint32_t width,
                                                         uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToYUYVMMX(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                         uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToYUYVMMX_deci_2_1(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                                  uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToYUYVMMX_intp_1_2(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                                  uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToYUYVMMX_intp_1_2_stride(PplContext *ctx, uint8_t *src,
                                                         uint8_t *dst, uint32_t width,
                                                         uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToYUYVMMX_intp_1_4_stride(PplContext *ctx, uint8_t *src,
                                                         uint8_t *dst, uint32_t width,
                                                         uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToUYVYMMX(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                         uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToUYVYMMX_deci_2_1(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                                  uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToUYVYMMX_intp_1_2(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                                  uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToUYVYMMX_intp_1_2_stride(PplContext *ctx, uint8_t *src,
                                                         uint8_t *dst, uint32_t width,
                                                         uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToUYVYMMX_intp_1_4_stride(PplContext *ctx, uint8_t *src,
                                                         uint8_t *dst, uint32_t width,
                                                         uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToRGB24MMX(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                          uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToRGB24MMX_deci_2_1(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                                   uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToRGB24MMX_intp_1_2(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                                   uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToRGB24MMX_intp_1_2_stride(PplContext *ctx, uint8_t *src,
                                                          uint8_t *dst, uint32_t width,
                                                          uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToRGB24MMX_intp_1_4_stride(PplContext *ctx, uint8_t *src,
                                                          uint8_t *dst, uint32_t width,
                                                          uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToRGB32MMX(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                          uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToRGB32MMX_deci_2_1(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                                   uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToRGB32MMX_intp_1_2(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                                   uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToRGB32MMX_intp_1_2_stride(PplContext *ctx, uint8_t *src,
                                                          uint8_t *dst, uint32_t width,
                                                          uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToRGB32MMX_intp_1_4_stride(PplContext *ctx, uint8_t *src,
                                                          uint8_t *dst, uint32_t width,
                                                          uint32_t height);

/* ---- Raw frames: drivers ---- */

PPL_API uint8_t PPL_CALL ppl_process_blrtoi420(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                               uint32_t width, uint32_t height, uint32_t stride);
PPL_API uint8_t PPL_CALL ppl_process_blrtoyuyv(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                               uint32_t width, uint32_t height, uint32_t stride);
PPL_API uint8_t PPL_CALL ppl_process_blrtouyvy(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                               uint32_t width, uint32_t height, uint32_t stride);
PPL_API uint8_t PPL_CALL ppl_process_blrtorgb24(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                                uint32_t width, uint32_t height, uint32_t stride);
PPL_API uint8_t PPL_CALL ppl_process_blrtorgb32(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                                uint32_t width, uint32_t height, uint32_t stride);

/* ---- Sensor and front end ---- */

PPL_API int32_t PPL_CALL ppl_sensor_type(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_sensor_type(const PplContext *ctx, int32_t code);
PPL_API uint32_t PPL_CALL ppl_quality(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_quality(PplContext *ctx, uint32_t quality);
PPL_API uint8_t PPL_CALL ppl_reset_quality(PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_mean_collection(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_mean_collection(PplContext *ctx, uint8_t value);
PPL_API uint8_t PPL_CALL ppl_reset_mean_collection(PplContext *ctx);
PPL_API uint32_t PPL_CALL ppl_optical_black_b_gb_gr_r(const PplContext *ctx, uint32_t *b,
                                                      uint32_t *gb, uint32_t *gr, uint32_t *r);
PPL_API uint8_t PPL_CALL ppl_set_optical_black_b_gb_gr_r(PplContext *ctx, uint32_t b, uint32_t gb,
                                                         uint32_t gr, uint32_t r);
PPL_API uint8_t PPL_CALL ppl_reset_optical_black_b_gb_gr_r(PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_r_delta(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_g_delta(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_b_delta(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_rgb_delta(PplContext *ctx, int32_t r, int32_t g, int32_t b);
PPL_API uint8_t PPL_CALL ppl_set_r_delta(PplContext *ctx, int32_t r);
PPL_API uint8_t PPL_CALL ppl_set_g_delta(PplContext *ctx, int32_t g);
PPL_API uint8_t PPL_CALL ppl_set_b_delta(PplContext *ctx, int32_t b);
PPL_API uint8_t PPL_CALL ppl_reset_rgb_delta(PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_nf88_r_gain(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_nf88_g_gain(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_nf88_b_gain(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_rgb_gain(PplContext *ctx, int32_t r, int32_t g, int32_t b);
PPL_API uint8_t PPL_CALL ppl_set_r_gain(PplContext *ctx, int32_t r);
PPL_API uint8_t PPL_CALL ppl_set_g_gain(PplContext *ctx, int32_t g);
PPL_API uint8_t PPL_CALL ppl_set_b_gain(PplContext *ctx, int32_t b);
PPL_API uint8_t PPL_CALL ppl_reset_rgb_gain(PplContext *ctx);
PPL_API const uint8_t *PPL_CALL ppl_r_dekneel_table(const PplContext *ctx);
PPL_API const uint8_t *PPL_CALL ppl_g_dekneel_table(const PplContext *ctx);
PPL_API const uint8_t *PPL_CALL ppl_b_dekneel_table(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_copy_r_dekneel_table(PplContext *ctx, const uint8_t table[256]);
PPL_API uint8_t PPL_CALL ppl_copy_g_dekneel_table(PplContext *ctx, const uint8_t table[256]);
PPL_API uint8_t PPL_CALL ppl_copy_b_dekneel_table(PplContext *ctx, const uint8_t table[256]);
PPL_API uint8_t PPL_CALL ppl_reset_rgb_dekneel_table(PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_sensor_matrix(const PplContext *ctx, int32_t matrices[18]);
PPL_API uint8_t PPL_CALL ppl_copy_sensor_matrix(PplContext *ctx, const int32_t matrices[18]);
PPL_API uint8_t PPL_CALL ppl_reset_sensor_matrix(PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_sensor_matrix_index_upper_bound(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_sensor_matrix_index_upper_bound(PplContext *ctx, int32_t bound);
PPL_API uint8_t PPL_CALL ppl_reset_sensor_matrix_index_upper_bound(PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_h_mirror(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_v_mirror(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_h_mirror(PplContext *ctx, uint8_t value);
PPL_API uint8_t PPL_CALL ppl_set_v_mirror(PplContext *ctx, uint8_t value);
PPL_API uint8_t PPL_CALL ppl_reset_mirrors(PplContext *ctx);

/* ---- Filter thresholds ---- */

PPL_API int32_t PPL_CALL ppl_medium_filter_diff_threshold(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_medium_filter_diff_threshold(PplContext *ctx, int32_t value);
PPL_API int32_t PPL_CALL ppl_medium_filter_hot_pixel_threshold(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_medium_filter_hot_pixel_threshold(PplContext *ctx, int32_t value);
PPL_API int32_t PPL_CALL ppl_medium_filter_dead_pixel_threshold(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_medium_filter_dead_pixel_threshold(PplContext *ctx, int32_t value);
PPL_API int32_t PPL_CALL
ppl_nf88_medium_filter_hot_pixel_threshold_percentage(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage(PplContext *ctx,
                                                                                   int32_t value);
PPL_API int32_t PPL_CALL
ppl_nf88_medium_filter_dead_pixel_threshold_percentage(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage(PplContext *ctx,
                                                                                    int32_t value);
PPL_API uint8_t PPL_CALL ppl_medium_filter_enabled(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_enable_medium_filter(PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_disable_medium_filter(PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_reset_medium_filter(PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_edge_threshold(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_edge_threshold(PplContext *ctx, int32_t value);
PPL_API uint8_t PPL_CALL ppl_reset_edge_threshold(PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_edge_threshold2(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_edge_threshold2(PplContext *ctx, int32_t value);
PPL_API uint8_t PPL_CALL ppl_reset_edge_threshold2(PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_nf88_edge_enhance_factor(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_nf88_edge_enhance_factor(PplContext *ctx, int32_t value);
PPL_API uint8_t PPL_CALL ppl_reset_nf88_edge_enhance_factor(PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_noise_filter_G_12T_threshold(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_noise_filter_G_12T_threshold(PplContext *ctx, int32_t value);
PPL_API uint8_t PPL_CALL ppl_reset_noise_filter_G_12T_threshold(PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_noise_filter_R_8T_threshold(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_noise_filter_R_8T_threshold(PplContext *ctx, int32_t value);
PPL_API uint8_t PPL_CALL ppl_reset_noise_filter_R_8T_threshold(PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_noise_filter_B_8T_threshold(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_noise_filter_B_8T_threshold(PplContext *ctx, int32_t value);
PPL_API uint8_t PPL_CALL ppl_reset_noise_filter_B_8T_threshold(PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_CFA_T0_threshold(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_CFA_T0_threshold(PplContext *ctx, int32_t value);
PPL_API uint8_t PPL_CALL ppl_reset_CFA_T0_threshold(PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_CFA_T1_threshold(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_CFA_T1_threshold(PplContext *ctx, int32_t value);
PPL_API uint8_t PPL_CALL ppl_reset_CFA_T1_threshold(PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_intl_3T_threshold(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_intl_3T_threshold(PplContext *ctx, int32_t value);
PPL_API uint8_t PPL_CALL ppl_reset_intl_3T_threshold(PplContext *ctx);

/* ---- Gamma ---- */

PPL_API uint8_t PPL_CALL ppl_set_gamma(PplContext *ctx, int32_t index);
PPL_API uint8_t PPL_CALL ppl_reset_gamma(PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_nf20_12_gamma(const PplContext *ctx, int32_t *reserved,
                                           int32_t *min_index, int32_t *max_index);
PPL_API const uint8_t *PPL_CALL ppl_yuv_gamma_table(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_copy_yuv_gamma_table(PplContext *ctx, const uint8_t table[256]);
PPL_API uint8_t PPL_CALL ppl_get_yuv_gamma_table(const PplContext *ctx, uint8_t table[256]);
PPL_API const uint8_t *PPL_CALL ppl_rgb_gamma_table(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_copy_rgb_gamma_table(PplContext *ctx, const uint8_t table[256]);
PPL_API uint8_t PPL_CALL ppl_get_rgb_gamma_table(const PplContext *ctx, uint8_t table[256]);
PPL_API uint8_t PPL_CALL ppl_copy_gamma_tables65x256(PplContext *ctx,
                                                     const uint8_t tables[65 * 256]);
PPL_API uint8_t PPL_CALL ppl_get_gamma_tables65x256(const PplContext *ctx,
                                                    uint8_t tables[65 * 256]);
PPL_API uint8_t PPL_CALL ppl_copy_gamma_tables65x256_16_235(PplContext *ctx,
                                                            const uint8_t tables[65 * 256]);
PPL_API uint8_t PPL_CALL ppl_get_gamma_tables65x256_16_235(const PplContext *ctx,
                                                           uint8_t tables[65 * 256]);

/* ---- Contrast ---- */

PPL_API uint8_t PPL_CALL ppl_set_contrast_c(PplContext *ctx, int32_t c, int32_t *x, int32_t *y);
PPL_API uint8_t PPL_CALL ppl_set_contrast_xy(PplContext *ctx, uint32_t x, uint32_t y);
PPL_API uint8_t PPL_CALL ppl_reset_contrast(PplContext *ctx);
PPL_API const uint8_t *PPL_CALL ppl_contrast_table(const PplContext *ctx);
PPL_API const uint8_t *PPL_CALL ppl_yuv_contrast_gamma_table(const PplContext *ctx);
PPL_API const uint8_t *PPL_CALL ppl_rgb_contrast_gamma_table(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_copy_contrast_table(PplContext *ctx, const uint8_t table[256]);

/* ---- Saturation and hue ---- */

PPL_API uint8_t PPL_CALL ppl_set_sat_hue(PplContext *ctx, uint32_t nf88_sat, int32_t hue_degree);
PPL_API uint8_t PPL_CALL ppl_set_sat(PplContext *ctx, uint32_t nf88_sat);
PPL_API uint8_t PPL_CALL ppl_set_hue(PplContext *ctx, int32_t hue_degree);
PPL_API uint32_t PPL_CALL ppl_nf88_sat(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_hue_degree(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_reset_sat_hue(PplContext *ctx);

/* ---- Statistics bands ---- */

PPL_API int32_t PPL_CALL ppl_qual_BmGb_min(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_qual_BmGb_max(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_qual_BmGb_min_max(PplContext *ctx, int32_t min, int32_t max);
PPL_API int32_t PPL_CALL ppl_qual_GrmR_min(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_qual_GrmR_max(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_qual_GrmR_min_max(PplContext *ctx, int32_t min, int32_t max);
PPL_API int32_t PPL_CALL ppl_qual_BmGb_p_GrmR_min(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_qual_BmGb_p_GrmR_max(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_qual_BmGb_p_GrmR_min_max(PplContext *ctx, int32_t min,
                                                          int32_t max);
PPL_API int32_t PPL_CALL ppl_qual_BmGb_m_GrmR_min(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_qual_BmGb_m_GrmR_max(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_qual_BmGb_m_GrmR_min_max(PplContext *ctx, int32_t min,
                                                          int32_t max);
PPL_API int32_t PPL_CALL ppl_qual_R_min(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_qual_R_max(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_qual_R_min_max(PplContext *ctx, int32_t min, int32_t max);
PPL_API int32_t PPL_CALL ppl_qual_G_min(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_qual_G_max(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_qual_G_min_max(PplContext *ctx, int32_t min, int32_t max);
PPL_API int32_t PPL_CALL ppl_qual_B_min(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_qual_B_max(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_qual_B_min_max(PplContext *ctx, int32_t min, int32_t max);
PPL_API uint8_t PPL_CALL ppl_set_qual_RGB_min_max(PplContext *ctx, int32_t r_min, int32_t r_max,
                                                  int32_t g_min, int32_t g_max, int32_t b_min,
                                                  int32_t b_max);
PPL_API uint8_t PPL_CALL ppl_reset_qual_min_max(PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_qAE_RGB_min(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_qAE_RGB_max(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_qAE_RGB_min_max(PplContext *ctx, int32_t min, int32_t max);
PPL_API uint8_t PPL_CALL ppl_reset_qAE_min_max(PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_nf88_quals_r_gain(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_nf88_quals_g_gain(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_nf88_quals_b_gain(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_quals_rgb_gain(PplContext *ctx, int32_t r, int32_t g, int32_t b);
PPL_API uint8_t PPL_CALL ppl_set_quals_r_gain(PplContext *ctx, int32_t r);
PPL_API uint8_t PPL_CALL ppl_set_quals_g_gain(PplContext *ctx, int32_t g);
PPL_API uint8_t PPL_CALL ppl_set_quals_b_gain(PplContext *ctx, int32_t b);
PPL_API uint8_t PPL_CALL ppl_reset_quals_rgb_gain(PplContext *ctx);

/* ---- All controls ---- */

PPL_API uint8_t PPL_CALL ppl_reset_all_controls(PplContext *ctx);

/* ---- Statistics ---- */

PPL_API int32_t PPL_CALL ppl_n_sub_windows(const PplContext *ctx, uint32_t *columns,
                                           uint32_t *rows);
PPL_API const PplTriple *PPL_CALL ppl_rgb_means_sub_windows(const PplContext *ctx);
PPL_API const PplTriple *PPL_CALL ppl_rgb_means_outside_all_sub_windows(const PplContext *ctx);
PPL_API const PplTriple *PPL_CALL ppl_rgb_means_all_sub_windows(const PplContext *ctx);
PPL_API const PplTriple *PPL_CALL ppl_rgb_means_whole_frame(const PplContext *ctx);
PPL_API const PplTriple *PPL_CALL ppl_rgb_means_whole_frame_4pts(const PplContext *ctx);
PPL_API const PplTriple *PPL_CALL ppl_rgb_means_whole_frame_central4(const PplContext *ctx);
PPL_API const PplTriple *PPL_CALL ppl_rgb_means_whole_frame_central8(const PplContext *ctx);
PPL_API const PplTriple *PPL_CALL ppl_rgb_means_whole_frame_central16(const PplContext *ctx);
PPL_API const PplTriple *PPL_CALL ppl_qAE_rgb_means_whole_frame(const PplContext *ctx);
PPL_API const PplTriple *PPL_CALL ppl_qual_rgb_means_whole_frame(const PplContext *ctx);
PPL_API uint32_t PPL_CALL ppl_n_qAE_2x2_whole_frame(const PplContext *ctx);
PPL_API uint32_t PPL_CALL ppl_n_qual_2x2_whole_frame(const PplContext *ctx);
PPL_API uint32_t PPL_CALL ppl_n_frame(const PplContext *ctx);
PPL_API const uint32_t *PPL_CALL ppl_r_histogram(const PplContext *ctx);
PPL_API const uint32_t *PPL_CALL ppl_g_histogram(const PplContext *ctx);
PPL_API const uint32_t *PPL_CALL ppl_b_histogram(const PplContext *ctx);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* PPL_H */
