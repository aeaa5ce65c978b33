// The model's record of one stream: what the library keeps, one field for one fact.
#pragma once

#include <array>
#include <cstdint>

#include "model/model.h"

namespace ppl_model {

using ByteTable = std::array<uint8_t, 256>;
using Histogram = std::array<uint32_t, 256>;

constexpr int tier_count = 2;
constexpr std::array<Tier, tier_count> all_tiers = {Tier::p3, Tier::sse2};

constexpr int index_of(Tier tier) { return tier == Tier::p3 ? 0 : 1; }

// Width of a block column, and of a single-pass group, in pixels.
constexpr int block_width(Tier tier) { return tier == Tier::p3 ? 8 : 16; }

// What a plan was built from; a plan whose inputs have moved on is stale.
struct PlanInputs {
  int32_t frame_width = 0, frame_height = 0;
  bool operator==(const PlanInputs &) const = default;
};

// The two lines of the group saved last, black subtracted.
struct SavedGroup {
  std::array<std::array<uint8_t, 16>, 2> lines;
  bool open;  // a frame that was left open may have saved anything
};

// What the flat cell test of qualities 10 and 11 left for the cells of one block, by lane.
struct FlatCellScratch {
  struct Lane {
    bool flat;
    uint8_t R, G, B;
  };
  std::array<Lane, 8> cells;
  bool open;  // as above
};

struct TierState {
  FramePlan plan;
  PlanInputs plan_inputs;
  SavedGroup stat_group_copy;
  FlatCellScratch flat_cells;
};

struct Band {
  int32_t min, max, span;
};

struct PplContext {
  uint8_t in_use;
  Parameters params;
  uint8_t P3_only;
  int32_t sensor_type;
  int32_t decimation, decimation_top_black_lines, decimation_bottom_black_lines;
  PlainState plain;
  uint32_t n_frame;
  uint32_t quality;
  ByteTable r_dekneel_table, g_dekneel_table, b_dekneel_table;
  ByteTable contrast_table, yuv_contrast_gamma_table, rgb_contrast_gamma_table;
  ByteTable yuv_gamma_table, rgb_gamma_table;
  uint8_t mean_collection;
  int32_t nf88_r_gain, nf88_g_gain, nf88_b_gain;
  int32_t r_delta, g_delta, b_delta;
  uint32_t optical_black_b, optical_black_gb, optical_black_gr, optical_black_r;
  std::array<int32_t, 18> sensor_matrix;
  int32_t sensor_matrix_index_upper_bound;
  uint8_t medium_filter_enabled;
  int32_t medium_filter_diff_threshold;
  int32_t medium_filter_hot_pixel_threshold, medium_filter_dead_pixel_threshold;
  int32_t nf88_medium_filter_hot_pixel_threshold_percentage;
  int32_t nf88_medium_filter_dead_pixel_threshold_percentage;
  int32_t nf88_quals_r_gain, nf88_quals_g_gain, nf88_quals_b_gain;
  Band qual_BmGb, qual_GrmR, qual_BmGb_p_GrmR, qual_BmGb_m_GrmR;
  Band qual_R, qual_G, qual_B, qAE_RGB;
  Histogram r_histogram, g_histogram, b_histogram;
  int32_t edge_threshold, edge_threshold2, nf88_edge_enhance_factor, intl_3T_threshold;
  int32_t noise_filter_G_12T_threshold, noise_filter_R_8T_threshold, noise_filter_B_8T_threshold;
  int32_t CFA_T0_threshold, CFA_T1_threshold;
  uint32_t nf88_sat;
  int32_t hue_degree;
  int32_t nf20_12_gamma;
  uint8_t h_mirror, v_mirror;
  std::array<PplTriple, 49> windows;  // 48 by rows, then what lies outside them
  PplTriple rgb_means_all_sub_windows;
  PplTriple rgb_means_whole_frame;
  PplTriple qAE_rgb_means_whole_frame, qual_rgb_means_whole_frame;
  uint32_t n_qAE_2x2_whole_frame, n_qual_2x2_whole_frame;
  std::array<TierState, tier_count> tiers;

  TierState &tier(Tier t) { return tiers[static_cast<size_t>(index_of(t))]; }
  const TierState &tier(Tier t) const { return tiers[static_cast<size_t>(index_of(t))]; }
};

}  // namespace ppl_model
