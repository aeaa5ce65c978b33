// The per-stream record. Everything that belongs to one stream lives here; nothing is allocated.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "context/line_memory.h"
#include "context/parameters.h"
#include "ppl.h"

namespace ppl {

// The two tiers differ in their block, in columns of a line pair. It decides which cells are
// sampled, where windows of statistics lie, and which columns borders leave out.
inline constexpr int p3_block = 8;
inline constexpr int sse2_block = 16;

inline constexpr int chain_normaliser_entries = 17;

// What follows from the size, for one tier.
struct FramePlan {
  // A window of the 8 by 6 statistics grid, in blocks and in line pairs.
  int32_t cell_width, cell_height;
  uint32_t chain_normaliser[chain_normaliser_entries];
};

// What frames of one tier leave for later ones. Lanes beyond the tier's block stay 0.
struct TierMemory {
  // By the last block of the last cell row that smoothed flat cells, a word per cell: qualities 0
  // and 1 read them, and never write them.
  alignas(sse2_block) int16_t flat_cell_mask[sse2_block / 2];
  alignas(sse2_block) int16_t flat_cell_rgb[3][sse2_block / 2];
  // Both lines of the block saved last, after black subtraction.
  alignas(sse2_block) uint8_t stat_group_copy[2][sse2_block];
  int32_t marker_cell;
};

struct TierState {
  FramePlan plan;
  TierMemory memory;
};

// Limits of a statistics band; span is max - min + 1.
struct Band {
  int32_t min, max, span;
};

inline constexpr int window_columns = 8;
inline constexpr int window_rows = 6;
inline constexpr int window_count = window_columns * window_rows;

inline constexpr int most_waiting_means = 32;

}  // namespace ppl

struct alignas(ppl::line_margin) PplContext {
  uint8_t in_use;
  uint8_t P3_only;
  ppl::Parameters params;
  ppl::TierState p3, sse2;
  int32_t sensor_type;

  // Geometry. Sizes are in pixels, the stride in bytes.
  int32_t decimation, decimation_top_black_lines, decimation_bottom_black_lines;
  int32_t frame_width, frame_height, frame_stride;
  int32_t frame_size, frame_size_2, frame_size_4, frame_size_8;
  int32_t out_width, out_height, out_size, out_size_4;
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
  int32_t gamma_reserved;  // handed out by ppl_nf20_12_gamma, never written
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

  alignas(ppl::line_margin) uint8_t line_memory[ppl::line_memory_bytes];
};
