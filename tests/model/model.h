// The reference model: every result of the library computed per pixel and per value from its
// definition, in plain integers. Same names and arguments as ppl.h, in a namespace of its own, on
// contexts of its own, so that a test can call both side by side.
#pragma once

#include <ppl.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ppl_model {

struct PplContext;

enum class Tier { p3, sse2 };

// ---- What a test needs beside the library's interface

// The machine that the model runs on: both tiers until told otherwise.
namespace machine {

// The processor flag word: bit 24 is the P3 tier, bit 26 the SSE2 tier.
void set_flags(uint32_t processor_flag_word);
uint32_t flags();

// After `skip` further saves that succeed, the next `count` saves of the floating-point state fail.
void fail_saves(uint32_t skip, uint32_t count);
uint32_t save_count();
void reset_counts();

// Zeroes the pool, as loading does. Process-wide tables stay.
void reload_pool();

struct CpuidRegisters {
  uint32_t eax, ebx, ecx, edx;
};

// The flag word that a processor with these CPUID leaves ends up with.
uint32_t flags_of_leaves(const CpuidRegisters &leaf_0, const CpuidRegisters &leaf_1,
                         const CpuidRegisters &leaf_80000000, const CpuidRegisters &leaf_80000001);

// The same from any function that answers a leaf with eax, ebx, ecx and edx.
template <typename CpuidFunction>
uint32_t detect(CpuidFunction cpuid) {
  const auto ask = [&](uint32_t leaf) {
    const auto answer = cpuid(leaf);
    return CpuidRegisters{answer.eax, answer.ebx, answer.ecx, answer.edx};
  };
  return flags_of_leaves(ask(0), ask(1), ask(0x80000000u), ask(0x80000001u));
}

}  // namespace machine

// A run of bytes, counted from the frame function's dst.
struct FreeRange {
  size_t offset, length;
  bool operator==(const FreeRange &) const = default;
};

// About the last frame function called: the bytes of dst that may hold anything, in ascending order
// without overlap. What is listed here holds the model's own suggestion, or is left as it was.
const std::vector<FreeRange> &free_bytes();

// The last frame's whole picture, the raw frame that it left, or the statistics that it gathered
// may be anything (inside the buffers): the frame ran on a stale plan or with lines that overlap,
// or a medium filter chain on padded lines; the picture also where it depends on what such a frame
// left behind.
bool picture_is_free();
bool source_is_free();
bool statistics_are_free();

// Position of a context in the pool, 0 to 7.
int slot_of(const PplContext *ctx);

// ---- Derived state, to compare with the library's record

inline constexpr int normaliser_entries = 17;

// What follows from the size of the frame, for one tier, and how far its marker has come.
struct FramePlan {
  int32_t cell_width, cell_height;  // of the 8 by 6 windows, in block columns and line pairs
  std::array<uint32_t, normaliser_entries> chain_normaliser;
  int32_t marker_cell;
};

// For the even and the odd columns of a mosaic line.
template <class T>
struct Pair {
  T even, odd;
  bool operator==(const Pair &) const = default;
};

using WordMatrix = std::array<int16_t, 9>;  // row-major

// What the pixel work reads in place of the plain controls.
struct Parameters {
  int16_t qual_BmGb_lo_vec, qual_BmGb_hi_vec;
  int16_t qual_GrmR_lo_vec, qual_GrmR_hi_vec;
  int16_t qual_BmGb_p_GrmR_lo_vec, qual_BmGb_p_GrmR_hi_vec;
  int16_t qual_BmGb_m_GrmR_lo_vec, qual_BmGb_m_GrmR_hi_vec;
  Pair<uint8_t> qual_GR_base_vec, qual_GR_span_vec;
  Pair<uint8_t> qual_BG_base_vec, qual_BG_span_vec;
  uint8_t qAE_min_vec, qAE_lo_vec, qAE_max_vec, qAE_hi_vec;
  int16_t edge_threshold_vec, edge_threshold2_vec, edge_enhance_factor_vec;
  int16_t intl_3T_vec;
  int16_t noise_G_12T_vec, noise_R_8T_vec, noise_B_8T_vec;
  uint8_t CFA_T0_vec;
  int16_t CFA_T1_vec;
  WordMatrix rgb_slope_vec, full_slope_vec, studio_slope_vec, studio_slope_q12_vec;
  WordMatrix rgb_base0_vec, full_base0_vec, studio_base0_vec, studio_base0_q12_vec;
  WordMatrix rgb_base1_vec, full_base1_vec, studio_base1_vec, studio_base1_q12_vec;
  int16_t index_bound_vec;
  int16_t offset_studio_vec, offset_full_vec, offset_rgb_vec;
  Pair<int16_t> rgb_gain_BG_vec, rgb_gain_GR_vec;
  Pair<int16_t> quals_gain_BG_vec, quals_gain_GR_vec;
  Pair<int16_t> rgb_delta_BG_vec, rgb_delta_GR_vec;
  Pair<uint8_t> optical_black_BG_vec, optical_black_GR_vec;
  int16_t medium_diff_vec, medium_hot_vec, medium_dead_vec;
  int16_t medium_hot_pct_vec, medium_dead_pct_vec;
};

// Plain fields that have no getter.
struct PlainState {
  int32_t frame_width, frame_height, frame_stride;
  int32_t frame_size, frame_size_2, frame_size_4, frame_size_8;
  int32_t out_width, out_height, out_size, out_size_4;
  uint32_t mean_normaliser;
  uint32_t r_window_scale, g_window_scale, b_window_scale;
  int32_t contrast_c;
  uint32_t contrast_x, contrast_y;
  std::array<int32_t, 9> colour_rgb, colour_yuv_full, colour_yuv_studio;
  int32_t offset_rgb, offset_yuv_full, offset_yuv_studio;
  std::array<int32_t, 4> chroma_matrix;
};

const FramePlan &plan(const PplContext *ctx, Tier tier);
const Parameters &derived(const PplContext *ctx);
const PlainState &plain(const PplContext *ctx);

// ---- The library's interface

// ---- Contexts

PplContext *ppl_init();
uint8_t ppl_free(PplContext *ctx);
int32_t DllUnload();

// ---- Geometry

uint8_t ppl_new_frame_size(PplContext *ctx, uint32_t width, uint32_t height, uint32_t stride);
uint8_t ppl_new_frame_sizes(PplContext *ctx, uint32_t in_width, uint32_t in_height,
                            uint32_t out_width, uint32_t out_height);
uint8_t ppl_set_decimation(PplContext *ctx, int32_t decimation, int32_t top_black_lines,
                           int32_t bottom_black_lines);
int32_t ppl_decimation(const PplContext *ctx);
int32_t ppl_decimation_top_black_lines(const PplContext *ctx);
int32_t ppl_decimation_bottom_black_lines(const PplContext *ctx);
uint8_t ppl_reset_decimation(PplContext *ctx);

// ---- Tier

uint8_t ppl_P3_only(const PplContext *ctx);
uint8_t ppl_set_P3_only(PplContext *ctx, uint8_t value);
uint8_t ppl_reset_P3_only(PplContext *ctx);

// ---- Raw frames: entry functions

uint8_t BaylorToI420MMX(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                        uint32_t height);
uint8_t BaylorToI420MMX_deci_2_1(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                 uint32_t height);
uint8_t BaylorToI420MMX_intp_1_2(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                 uint32_t height);
uint8_t BaylorToI420MMX_intp_1_2_stride(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                        uint32_t height);
uint8_t BaylorToI420MMX_intp_1_4_stride(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                        uint32_t height);
uint8_t BaylorToYUYVMMX(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                        uint32_t height);
uint8_t BaylorToYUYVMMX_deci_2_1(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                 uint32_t height);
uint8_t BaylorToYUYVMMX_intp_1_2(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                 uint32_t height);
uint8_t BaylorToYUYVMMX_intp_1_2_stride(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                        uint32_t height);
uint8_t BaylorToYUYVMMX_intp_1_4_stride(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                        uint32_t height);
uint8_t BaylorToUYVYMMX(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                        uint32_t height);
uint8_t BaylorToUYVYMMX_deci_2_1(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                 uint32_t height);
uint8_t BaylorToUYVYMMX_intp_1_2(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                 uint32_t height);
uint8_t BaylorToUYVYMMX_intp_1_2_stride(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                        uint32_t height);
uint8_t BaylorToUYVYMMX_intp_1_4_stride(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                        uint32_t height);
uint8_t BaylorToRGB24MMX(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                         uint32_t height);
uint8_t BaylorToRGB24MMX_deci_2_1(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                  uint32_t height);
uint8_t BaylorToRGB24MMX_intp_1_2(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                  uint32_t height);
uint8_t BaylorToRGB24MMX_intp_1_2_stride(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                         uint32_t width, uint32_t height);
uint8_t BaylorToRGB24MMX_intp_1_4_stride(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                         uint32_t width, uint32_t height);
uint8_t BaylorToRGB32MMX(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                         uint32_t height);
uint8_t BaylorToRGB32MMX_deci_2_1(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                  uint32_t height);
uint8_t BaylorToRGB32MMX_intp_1_2(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                  uint32_t height);
uint8_t BaylorToRGB32MMX_intp_1_2_stride(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                         uint32_t width, uint32_t height);
uint8_t BaylorToRGB32MMX_intp_1_4_stride(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                         uint32_t width, uint32_t height);

// ---- Raw frames: drivers

uint8_t ppl_process_blrtoi420(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                              uint32_t height, uint32_t stride);
uint8_t ppl_process_blrtoyuyv(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                              uint32_t height, uint32_t stride);
uint8_t ppl_process_blrtouyvy(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                              uint32_t height, uint32_t stride);
uint8_t ppl_process_blrtorgb24(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                               uint32_t height, uint32_t stride);
uint8_t ppl_process_blrtorgb32(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                               uint32_t height, uint32_t stride);

// ---- Packed video: progressive frames, the YYYY packing, RGB24. Entry functions, then drivers

using VideoFunction = uint8_t(PplContext *ctx, const uint8_t *src, uint8_t *dst, uint32_t width,
                              uint32_t height, uint32_t out_width, uint32_t out_height);

VideoFunction YUYVToI420MMX, UYVYToI420MMX, YUYVToRGB24MMX, UYVYToRGB24MMX;
VideoFunction YUYVYYYYToI420MMX, UYVYYYYYToI420MMX, RGB24ToRGB32MMX;
VideoFunction ppl_process_yuyvtoi420, ppl_process_uyvytoi420;
VideoFunction ppl_process_yuyvtorgb24, ppl_process_uyvytorgb24;
VideoFunction ppl_process_yuyvyyyytoi420, ppl_process_uyvyyyyytoi420, ppl_process_rgb24torgb32;

// ---- Packed video: interlaced frames. Entry functions, then drivers

using FieldsFunction = uint8_t(PplContext *ctx, const uint8_t *reference_field,
                               const uint8_t *first_field, const uint8_t *second_field,
                               uint8_t *out, uint32_t width, uint32_t height, uint32_t out_width,
                               uint32_t out_height);

FieldsFunction IntlYUYVToYUYVMMX, IntlYUYVToYUYVMMX_no_motion;
FieldsFunction IntlUYVYToUYVYMMX, IntlUYVYToUYVYMMX_no_motion;
FieldsFunction IntlUYVYToYUYVMMX, IntlUYVYToYUYVMMX_no_motion;
FieldsFunction IntlYUYVToUYVYMMX, IntlYUYVToUYVYMMX_no_motion;
FieldsFunction IntlYUYVToI420MMX, IntlYUYVToI420MMX_no_motion;
FieldsFunction IntlUYVYToI420MMX, IntlUYVYToI420MMX_no_motion;
FieldsFunction IntlYUYVToRGB24MMX, IntlYUYVToRGB24MMX_no_motion;
FieldsFunction IntlUYVYToRGB24MMX, IntlUYVYToRGB24MMX_no_motion;
FieldsFunction ppl_process_intlyuyvtoyuyv, ppl_process_intluyvytouyvy;
FieldsFunction ppl_process_intlyuyvtoi420, ppl_process_intluyvytoi420;
FieldsFunction ppl_process_intlyuyvtorgb24, ppl_process_intluyvytorgb24;

// ---- Sensor and front end

int32_t ppl_sensor_type(const PplContext *ctx);
uint8_t ppl_set_sensor_type(const PplContext *ctx, int32_t code);
uint32_t ppl_quality(const PplContext *ctx);
uint8_t ppl_set_quality(PplContext *ctx, uint32_t quality);
uint8_t ppl_reset_quality(PplContext *ctx);
uint8_t ppl_mean_collection(const PplContext *ctx);
uint8_t ppl_set_mean_collection(PplContext *ctx, uint8_t value);
uint8_t ppl_reset_mean_collection(PplContext *ctx);
uint32_t ppl_optical_black_b_gb_gr_r(const PplContext *ctx, uint32_t *b, uint32_t *gb, uint32_t *gr,
                                     uint32_t *r);
uint8_t ppl_set_optical_black_b_gb_gr_r(PplContext *ctx, uint32_t b, uint32_t gb, uint32_t gr,
                                        uint32_t r);
uint8_t ppl_reset_optical_black_b_gb_gr_r(PplContext *ctx);
int32_t ppl_r_delta(const PplContext *ctx);
int32_t ppl_g_delta(const PplContext *ctx);
int32_t ppl_b_delta(const PplContext *ctx);
uint8_t ppl_set_rgb_delta(PplContext *ctx, int32_t r, int32_t g, int32_t b);
uint8_t ppl_set_r_delta(PplContext *ctx, int32_t r);
uint8_t ppl_set_g_delta(PplContext *ctx, int32_t g);
uint8_t ppl_set_b_delta(PplContext *ctx, int32_t b);
uint8_t ppl_reset_rgb_delta(PplContext *ctx);
int32_t ppl_nf88_r_gain(const PplContext *ctx);
int32_t ppl_nf88_g_gain(const PplContext *ctx);
int32_t ppl_nf88_b_gain(const PplContext *ctx);
uint8_t ppl_set_rgb_gain(PplContext *ctx, int32_t r, int32_t g, int32_t b);
uint8_t ppl_set_r_gain(PplContext *ctx, int32_t r);
uint8_t ppl_set_g_gain(PplContext *ctx, int32_t g);
uint8_t ppl_set_b_gain(PplContext *ctx, int32_t b);
uint8_t ppl_reset_rgb_gain(PplContext *ctx);
const uint8_t *ppl_r_dekneel_table(const PplContext *ctx);
const uint8_t *ppl_g_dekneel_table(const PplContext *ctx);
const uint8_t *ppl_b_dekneel_table(const PplContext *ctx);
uint8_t ppl_copy_r_dekneel_table(PplContext *ctx, const uint8_t table[256]);
uint8_t ppl_copy_g_dekneel_table(PplContext *ctx, const uint8_t table[256]);
uint8_t ppl_copy_b_dekneel_table(PplContext *ctx, const uint8_t table[256]);
uint8_t ppl_reset_rgb_dekneel_table(PplContext *ctx);
uint8_t ppl_sensor_matrix(const PplContext *ctx, int32_t matrices[18]);
uint8_t ppl_copy_sensor_matrix(PplContext *ctx, const int32_t matrices[18]);
uint8_t ppl_reset_sensor_matrix(PplContext *ctx);
int32_t ppl_sensor_matrix_index_upper_bound(const PplContext *ctx);
uint8_t ppl_set_sensor_matrix_index_upper_bound(PplContext *ctx, int32_t bound);
uint8_t ppl_reset_sensor_matrix_index_upper_bound(PplContext *ctx);
uint8_t ppl_h_mirror(const PplContext *ctx);
uint8_t ppl_v_mirror(const PplContext *ctx);
uint8_t ppl_set_h_mirror(PplContext *ctx, uint8_t value);
uint8_t ppl_set_v_mirror(PplContext *ctx, uint8_t value);
uint8_t ppl_reset_mirrors(PplContext *ctx);

// ---- Filter thresholds

int32_t ppl_medium_filter_diff_threshold(const PplContext *ctx);
uint8_t ppl_set_medium_filter_diff_threshold(PplContext *ctx, int32_t value);
int32_t ppl_medium_filter_hot_pixel_threshold(const PplContext *ctx);
uint8_t ppl_set_medium_filter_hot_pixel_threshold(PplContext *ctx, int32_t value);
int32_t ppl_medium_filter_dead_pixel_threshold(const PplContext *ctx);
uint8_t ppl_set_medium_filter_dead_pixel_threshold(PplContext *ctx, int32_t value);
int32_t ppl_nf88_medium_filter_hot_pixel_threshold_percentage(const PplContext *ctx);
uint8_t ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage(PplContext *ctx, int32_t value);
int32_t ppl_nf88_medium_filter_dead_pixel_threshold_percentage(const PplContext *ctx);
uint8_t ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage(PplContext *ctx, int32_t value);
uint8_t ppl_medium_filter_enabled(const PplContext *ctx);
uint8_t ppl_enable_medium_filter(PplContext *ctx);
uint8_t ppl_disable_medium_filter(PplContext *ctx);
uint8_t ppl_reset_medium_filter(PplContext *ctx);
int32_t ppl_edge_threshold(const PplContext *ctx);
uint8_t ppl_set_edge_threshold(PplContext *ctx, int32_t value);
uint8_t ppl_reset_edge_threshold(PplContext *ctx);
int32_t ppl_edge_threshold2(const PplContext *ctx);
uint8_t ppl_set_edge_threshold2(PplContext *ctx, int32_t value);
uint8_t ppl_reset_edge_threshold2(PplContext *ctx);
int32_t ppl_nf88_edge_enhance_factor(const PplContext *ctx);
uint8_t ppl_set_nf88_edge_enhance_factor(PplContext *ctx, int32_t value);
uint8_t ppl_reset_nf88_edge_enhance_factor(PplContext *ctx);
int32_t ppl_noise_filter_G_12T_threshold(const PplContext *ctx);
uint8_t ppl_set_noise_filter_G_12T_threshold(PplContext *ctx, int32_t value);
uint8_t ppl_reset_noise_filter_G_12T_threshold(PplContext *ctx);
int32_t ppl_noise_filter_R_8T_threshold(const PplContext *ctx);
uint8_t ppl_set_noise_filter_R_8T_threshold(PplContext *ctx, int32_t value);
uint8_t ppl_reset_noise_filter_R_8T_threshold(PplContext *ctx);
int32_t ppl_noise_filter_B_8T_threshold(const PplContext *ctx);
uint8_t ppl_set_noise_filter_B_8T_threshold(PplContext *ctx, int32_t value);
uint8_t ppl_reset_noise_filter_B_8T_threshold(PplContext *ctx);
int32_t ppl_CFA_T0_threshold(const PplContext *ctx);
uint8_t ppl_set_CFA_T0_threshold(PplContext *ctx, int32_t value);
uint8_t ppl_reset_CFA_T0_threshold(PplContext *ctx);
int32_t ppl_CFA_T1_threshold(const PplContext *ctx);
uint8_t ppl_set_CFA_T1_threshold(PplContext *ctx, int32_t value);
uint8_t ppl_reset_CFA_T1_threshold(PplContext *ctx);
int32_t ppl_intl_3T_threshold(const PplContext *ctx);
uint8_t ppl_set_intl_3T_threshold(PplContext *ctx, int32_t value);
uint8_t ppl_reset_intl_3T_threshold(PplContext *ctx);

// ---- Gamma

uint8_t ppl_set_gamma(PplContext *ctx, int32_t index);
uint8_t ppl_reset_gamma(PplContext *ctx);
int32_t ppl_nf20_12_gamma(const PplContext *ctx, int32_t *reserved, int32_t *min_index,
                          int32_t *max_index);
const uint8_t *ppl_yuv_gamma_table(const PplContext *ctx);
uint8_t ppl_copy_yuv_gamma_table(PplContext *ctx, const uint8_t table[256]);
uint8_t ppl_get_yuv_gamma_table(const PplContext *ctx, uint8_t table[256]);
const uint8_t *ppl_rgb_gamma_table(const PplContext *ctx);
uint8_t ppl_copy_rgb_gamma_table(PplContext *ctx, const uint8_t table[256]);
uint8_t ppl_get_rgb_gamma_table(const PplContext *ctx, uint8_t table[256]);
uint8_t ppl_copy_gamma_tables65x256(PplContext *ctx, const uint8_t tables[65 * 256]);
uint8_t ppl_get_gamma_tables65x256(const PplContext *ctx, uint8_t tables[65 * 256]);
uint8_t ppl_copy_gamma_tables65x256_16_235(PplContext *ctx, const uint8_t tables[65 * 256]);
uint8_t ppl_get_gamma_tables65x256_16_235(const PplContext *ctx, uint8_t tables[65 * 256]);

// ---- Contrast

uint8_t ppl_set_contrast_c(PplContext *ctx, int32_t c, int32_t *x, int32_t *y);
uint8_t ppl_set_contrast_xy(PplContext *ctx, uint32_t x, uint32_t y);
uint8_t ppl_reset_contrast(PplContext *ctx);
const uint8_t *ppl_contrast_table(const PplContext *ctx);
const uint8_t *ppl_yuv_contrast_gamma_table(const PplContext *ctx);
const uint8_t *ppl_rgb_contrast_gamma_table(const PplContext *ctx);
uint8_t ppl_copy_contrast_table(PplContext *ctx, const uint8_t table[256]);

// ---- Saturation and hue

uint8_t ppl_set_sat_hue(PplContext *ctx, uint32_t nf88_sat, int32_t hue_degree);
uint8_t ppl_set_sat(PplContext *ctx, uint32_t nf88_sat);
uint8_t ppl_set_hue(PplContext *ctx, int32_t hue_degree);
uint32_t ppl_nf88_sat(const PplContext *ctx);
int32_t ppl_hue_degree(const PplContext *ctx);
uint8_t ppl_reset_sat_hue(PplContext *ctx);

// ---- Statistics bands

int32_t ppl_qual_BmGb_min(const PplContext *ctx);
int32_t ppl_qual_BmGb_max(const PplContext *ctx);
uint8_t ppl_set_qual_BmGb_min_max(PplContext *ctx, int32_t min, int32_t max);
int32_t ppl_qual_GrmR_min(const PplContext *ctx);
int32_t ppl_qual_GrmR_max(const PplContext *ctx);
uint8_t ppl_set_qual_GrmR_min_max(PplContext *ctx, int32_t min, int32_t max);
int32_t ppl_qual_BmGb_p_GrmR_min(const PplContext *ctx);
int32_t ppl_qual_BmGb_p_GrmR_max(const PplContext *ctx);
uint8_t ppl_set_qual_BmGb_p_GrmR_min_max(PplContext *ctx, int32_t min, int32_t max);
int32_t ppl_qual_BmGb_m_GrmR_min(const PplContext *ctx);
int32_t ppl_qual_BmGb_m_GrmR_max(const PplContext *ctx);
uint8_t ppl_set_qual_BmGb_m_GrmR_min_max(PplContext *ctx, int32_t min, int32_t max);
int32_t ppl_qual_R_min(const PplContext *ctx);
int32_t ppl_qual_R_max(const PplContext *ctx);
uint8_t ppl_set_qual_R_min_max(PplContext *ctx, int32_t min, int32_t max);
int32_t ppl_qual_G_min(const PplContext *ctx);
int32_t ppl_qual_G_max(const PplContext *ctx);
uint8_t ppl_set_qual_G_min_max(PplContext *ctx, int32_t min, int32_t max);
int32_t ppl_qual_B_min(const PplContext *ctx);
int32_t ppl_qual_B_max(const PplContext *ctx);
uint8_t ppl_set_qual_B_min_max(PplContext *ctx, int32_t min, int32_t max);
uint8_t ppl_set_qual_RGB_min_max(PplContext *ctx, int32_t r_min, int32_t r_max, int32_t g_min,
                                 int32_t g_max, int32_t b_min, int32_t b_max);
uint8_t ppl_reset_qual_min_max(PplContext *ctx);
int32_t ppl_qAE_RGB_min(const PplContext *ctx);
int32_t ppl_qAE_RGB_max(const PplContext *ctx);
uint8_t ppl_set_qAE_RGB_min_max(PplContext *ctx, int32_t min, int32_t max);
uint8_t ppl_reset_qAE_min_max(PplContext *ctx);
int32_t ppl_nf88_quals_r_gain(const PplContext *ctx);
int32_t ppl_nf88_quals_g_gain(const PplContext *ctx);
int32_t ppl_nf88_quals_b_gain(const PplContext *ctx);
uint8_t ppl_set_quals_rgb_gain(PplContext *ctx, int32_t r, int32_t g, int32_t b);
uint8_t ppl_set_quals_r_gain(PplContext *ctx, int32_t r);
uint8_t ppl_set_quals_g_gain(PplContext *ctx, int32_t g);
uint8_t ppl_set_quals_b_gain(PplContext *ctx, int32_t b);
uint8_t ppl_reset_quals_rgb_gain(PplContext *ctx);

// ---- All controls

uint8_t ppl_reset_all_controls(PplContext *ctx);

// ---- Statistics

int32_t ppl_n_sub_windows(const PplContext *ctx, uint32_t *columns, uint32_t *rows);
const PplTriple *ppl_rgb_means_sub_windows(const PplContext *ctx);
const PplTriple *ppl_rgb_means_outside_all_sub_windows(const PplContext *ctx);
const PplTriple *ppl_rgb_means_all_sub_windows(const PplContext *ctx);
const PplTriple *ppl_rgb_means_whole_frame(const PplContext *ctx);
const PplTriple *ppl_rgb_means_whole_frame_4pts(const PplContext *ctx);
const PplTriple *ppl_rgb_means_whole_frame_central4(const PplContext *ctx);
const PplTriple *ppl_rgb_means_whole_frame_central8(const PplContext *ctx);
const PplTriple *ppl_rgb_means_whole_frame_central16(const PplContext *ctx);
const PplTriple *ppl_qAE_rgb_means_whole_frame(const PplContext *ctx);
const PplTriple *ppl_qual_rgb_means_whole_frame(const PplContext *ctx);
uint32_t ppl_n_qAE_2x2_whole_frame(const PplContext *ctx);
uint32_t ppl_n_qual_2x2_whole_frame(const PplContext *ctx);
uint32_t ppl_n_frame(const PplContext *ctx);
const uint32_t *ppl_r_histogram(const PplContext *ctx);
const uint32_t *ppl_g_histogram(const PplContext *ctx);
const uint32_t *ppl_b_histogram(const PplContext *ctx);

}  // namespace ppl_model
