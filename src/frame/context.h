// The per-stream record. Everything that belongs to one stream lives here; nothing is allocated.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "ppl.h"

namespace ppl {

// The two kernel tiers differ in their block width in columns, which is also their vector width in
// bytes: 8 in the P3 tier, 16 in the SSE2 tier.
inline constexpr int p3_block_width = 8;
inline constexpr int sse2_block_width = 16;

template <int Bytes>
struct alignas(Bytes) WordVector {
  int16_t lane[Bytes / 2];
};

template <int Bytes>
struct alignas(Bytes) ByteVector {
  uint8_t lane[Bytes];
};

// A 3 by 3 matrix of broadcast words, row-major.
template <int Bytes>
using MatrixVector = WordVector<Bytes>[9];

// Black level, gain, delta and a curve composed into one look-up per mosaic position, for one line
// kind. There is a table for each column of a run of four, with the result in that column's byte,
// so that OR joins a run.
struct FrontEndTable {
  static constexpr int columns = 4;
  uint32_t column[columns][256];
};

// Line kind 0 is the line of B and Gb, line kind 1 the line of Gr and R.
struct FrontEndTables {
  FrontEndTable line[2];
};

// What the kernels of one tier read in place of the plain controls. Both tiers hold the same
// values.
template <int Bytes>
struct ParameterBlock {
  using Words = WordVector<Bytes>;
  using BytesVector = ByteVector<Bytes>;

  // Statistics bands: lo is min - 1, hi is max + 1; a value passes strictly between them.
  Words qual_BmGb_lo_vec, qual_BmGb_hi_vec;
  Words qual_GrmR_lo_vec, qual_GrmR_hi_vec;
  Words qual_BmGb_p_GrmR_lo_vec, qual_BmGb_p_GrmR_hi_vec;
  Words qual_BmGb_m_GrmR_lo_vec, qual_BmGb_m_GrmR_hi_vec;
  // Byte pairs (first name in the low byte): min, then max - min.
  BytesVector qual_GR_base_vec, qual_GR_span_vec;
  BytesVector qual_BG_base_vec, qual_BG_span_vec;
  // min, min - 1, max, max + 1, each wrapped to 8 bits.
  BytesVector qAE_min_vec, qAE_lo_vec, qAE_max_vec, qAE_hi_vec;

  Words edge_threshold_vec, edge_threshold2_vec;
  Words edge_enhance_factor_vec;  // 8.6
  Words intl_3T_vec;
  Words noise_G_12T_vec, noise_R_8T_vec, noise_B_8T_vec;
  BytesVector CFA_T0_vec;
  Words CFA_T1_vec;

  // Colour matrices in Q6; slopes per step of the colour difference index.
  MatrixVector<Bytes> rgb_slope_vec, full_slope_vec, studio_slope_vec, studio_slope_q12_vec;
  MatrixVector<Bytes> rgb_base0_vec, full_base0_vec, studio_base0_vec, studio_base0_q12_vec;
  MatrixVector<Bytes> rgb_base1_vec, full_base1_vec, studio_base1_vec, studio_base1_q12_vec;
  Words index_mask_vec;
  Words offset_studio_vec, offset_full_vec, offset_rgb_vec;
  Words matrix_scratch[18];

  // Word pairs: (b, g) for the line of B and Gb, (g, r) for the line of Gr and R.
  Words rgb_gain_BG_vec, rgb_gain_GR_vec;      // 8.5
  Words quals_gain_BG_vec, quals_gain_GR_vec;  // 8.6
  Words rgb_delta_BG_vec, rgb_delta_GR_vec;
  BytesVector optical_black_BG_vec, optical_black_GR_vec;

  Words medium_diff_vec;  // never written: stays 0
  Words medium_hot_vec, medium_dead_vec;
  Words medium_hot_pct_vec, medium_dead_pct_vec;  // 8.6

  // Left by the last block of the last cell row that smoothed flat cells, a word per cell:
  // qualities 0 and 1 read them, and never write them.
  Words flat_cell_mask, flat_cell_rgb[3];

  // Both lines of the group saved last, after black subtraction. It outlives the frame.
  BytesVector stat_group_copy[2];

  FrontEndTables front_end;       // through rgb_gamma_table
  FrontEndTables front_end_mono;  // through yuv_contrast_gamma_table
};

inline constexpr int stride_table_entries = 79;
inline constexpr int chain_normaliser_entries = 17;

// What follows from the geometry and the mirror flags, for one tier.
struct FramePlan {
  // The 8 by 6 statistics grid, in block columns and in rows of two lines.
  int32_t grid_left, grid_right, grid_top, grid_bottom, grid_width, grid_height;
  int32_t cell_width, cell_height;
  int32_t block_columns, block_rows;
  uint32_t chain_normaliser[chain_normaliser_entries];
  int32_t stride_table[stride_table_entries];
  int32_t marker_cell;
};

// Limits of a statistics band; span is max - min + 1.
struct Band {
  int32_t min, max, span;
};

inline constexpr int window_columns = 8;
inline constexpr int window_rows = 6;
inline constexpr int window_count = window_columns * window_rows;

inline constexpr int most_waiting_means = 32;

inline constexpr size_t ring_area_bytes = 40960;
inline constexpr size_t ring_alignment = 32;

}  // namespace ppl

struct alignas(16) PplContext {
  uint8_t in_use;
  ppl::ParameterBlock<ppl::p3_block_width> p3_params;
  ppl::FramePlan p3_plan;
  ppl::ParameterBlock<ppl::sse2_block_width> sse2_params;
  ppl::FramePlan sse2_plan;
  uint8_t ready;
  uint8_t P3_only;
  int32_t sensor_type;

  // Geometry. Sizes are in pixels, the stride in bytes.
  int32_t decimation, decimation_top_black_lines, decimation_bottom_black_lines;
  int32_t frame_width, frame_height, frame_stride;
  int32_t frame_size, frame_size_2, frame_size_4, frame_size_8;
  int32_t out_width, out_height, out_width_2, out_size, out_size_4;
  uint32_t n_frame;

  // Controls.
  uint32_t quality;
  uint8_t r_dekneel_table[256], g_dekneel_table[256], b_dekneel_table[256];
  uint8_t contrast_table[256], yuv_contrast_gamma_table[256], rgb_contrast_gamma_table[256];
  uint8_t yuv_gamma_table[256], rgb_gamma_table[256];
  uint8_t mean_collection;
  int32_t nf88_r_gain, nf88_g_gain, nf88_b_gain;
  int32_t r_delta, g_delta, b_delta;
  uint32_t optical_black_b, optical_black_gb, optical_black_gr, optical_black_r;
  int32_t sensor_matrix[2][3][3];
  int32_t sensor_matrix_index_upper_bound;
  uint8_t medium_filter_enabled;
  int32_t medium_filter_diff_threshold;
  int32_t medium_filter_hot_pixel_threshold, medium_filter_dead_pixel_threshold;
  int32_t nf88_medium_filter_hot_pixel_threshold_percentage;
  int32_t nf88_medium_filter_dead_pixel_threshold_percentage;
  int32_t nf88_quals_r_gain, nf88_quals_g_gain, nf88_quals_b_gain;
  ppl::Band qual_BmGb, qual_GrmR, qual_BmGb_p_GrmR, qual_BmGb_m_GrmR;
  ppl::Band qual_R, qual_G, qual_B;
  ppl::Band qAE_RGB;
  uint32_t r_histogram[256], g_histogram[256], b_histogram[256];
  int32_t edge_threshold, edge_threshold2, nf88_edge_enhance_factor, intl_3T_threshold;
  int32_t noise_filter_G_12T_threshold, noise_filter_R_8T_threshold, noise_filter_B_8T_threshold;
  int32_t CFA_T0_threshold, CFA_T1_threshold;
  int32_t contrast_c;
  uint32_t contrast_x, contrast_y;
  uint32_t nf88_sat;
  int32_t hue_degree;
  // Coefficient sets of saturation, hue and contrast: Q8, row-major.
  int32_t colour_rgb[9], colour_yuv_full[9], colour_yuv_studio[9];
  int32_t offset_rgb, offset_yuv_full, offset_yuv_studio;
  int32_t chroma_matrix[4];  // stored, read by nothing
  int32_t gamma_reserved;    // handed out by ppl_nf20_12_gamma, never written
  int32_t nf20_12_gamma;
  uint8_t h_mirror, v_mirror;

  // Statistics: sums while a frame runs, results after it.
  uint32_t r_window_scale, g_window_scale, b_window_scale;
  PplTriple rgb_means_sub_windows[ppl::window_count];
  PplTriple rgb_means_outside_all_sub_windows;  // the 49th window: stands right behind the 48
  PplTriple rgb_means_all_sub_windows;
  PplTriple rgb_means_whole_frame;
  PplTriple qAE_rgb_means_whole_frame;
  uint32_t n_qAE_2x2_whole_frame;
  PplTriple qual_rgb_means_whole_frame;
  uint32_t n_qual_2x2_whole_frame;
  uint32_t mean_normaliser;
  // On their way to the histograms: means of B, Gb, Gr and R over the qualified cells of a vector.
  uint8_t waiting_means[ppl::most_waiting_means][8];

  // Line memory: the only scratch of the library. The rings are views of it.
  uint8_t ring_area_storage[ppl::ring_area_bytes + ppl::ring_alignment - 1];
  uint8_t *line_buffer[8];
};
