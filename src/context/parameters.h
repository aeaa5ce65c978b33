// What the kernels read in place of the plain controls: one value for what a kernel spreads over a
// register, whatever the tier and the register's width.
#pragma once

#include <stdint.h>

namespace ppl {

// Values for the two columns of a cell, on one kind of mosaic line: B and Gb, or Gr and R. Gains
// and deltas do not tell the greens apart.
template <class Value>
struct Pair {
  Value even, odd;
};
using WordPair = Pair<int16_t>;
using BytePair = Pair<uint8_t>;

// A 3 by 3 matrix, row-major.
using Matrix = int16_t[9];

// Black level, gain, delta and a curve composed into one look-up per mosaic position, for one line
// kind. There is a table for each column of a run of four, with the result in that column's byte,
// so that OR joins a run.
struct CurveTable {
  static constexpr int columns = 4;
  uint32_t column[columns][256];
};

// Line kind 0 is the line of B and Gb, line kind 1 the line of Gr and R.
struct CurveTables {
  CurveTable line[2];
};

struct Parameters {
  // Statistics bands: lo is min - 1, hi is max + 1; a value passes strictly between them.
  int16_t qual_BmGb_lo_vec, qual_BmGb_hi_vec;
  int16_t qual_GrmR_lo_vec, qual_GrmR_hi_vec;
  int16_t qual_BmGb_p_GrmR_lo_vec, qual_BmGb_p_GrmR_hi_vec;
  int16_t qual_BmGb_m_GrmR_lo_vec, qual_BmGb_m_GrmR_hi_vec;
  // min, then max - min.
  BytePair qual_GR_base_vec, qual_GR_span_vec;
  BytePair qual_BG_base_vec, qual_BG_span_vec;
  uint8_t qAE_min_vec, qAE_max_vec;

  int16_t edge_threshold_vec, edge_threshold2_vec;
  int16_t edge_enhance_factor_vec;  // 8.6
  int16_t intl_3T_vec;
  uint8_t CFA_T0_vec;
  int16_t CFA_T1_vec;

  // Colour matrices in Q6; slopes per step of the colour difference index.
  Matrix rgb_slope_vec, full_slope_vec, studio_slope_vec;
  Matrix rgb_base0_vec, full_base0_vec, studio_base0_vec;
  Matrix rgb_base1_vec, studio_base1_vec;
  int16_t index_bound_vec;
  int16_t offset_studio_vec, offset_full_vec, offset_rgb_vec;

  WordPair rgb_gain_BG_vec, rgb_gain_GR_vec;  // 8.5
  WordPair rgb_delta_BG_vec, rgb_delta_GR_vec;
  BytePair optical_black_BG_vec, optical_black_GR_vec;

  int16_t medium_hot_vec, medium_dead_vec;
  int16_t medium_hot_pct_vec, medium_dead_pct_vec;  // 8.6

  // Derived by a control and read by no stage.
  struct Unread {
    uint8_t qAE_lo_vec, qAE_hi_vec;  // min - 1 and max + 1, wrapped to 8 bits
    int16_t noise_G_12T_vec, noise_R_8T_vec, noise_B_8T_vec;
    Matrix studio_slope_q12_vec, studio_base0_q12_vec, studio_base1_q12_vec, full_base1_vec;
    WordPair quals_gain_BG_vec, quals_gain_GR_vec;  // 8.6
    int16_t medium_diff_vec;  // what quality 14's median compares with: stays 0, so it never fires
  } unread;

  CurveTables curves;       // through rgb_gamma_table
  CurveTables curves_mono;  // through yuv_contrast_gamma_table
};

}  // namespace ppl
