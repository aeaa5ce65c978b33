#include "compare/snapshot.h"

#include <string.h>

#include <sstream>
#include <type_traits>
#include <vector>

namespace ppl_compare {
namespace {

template <class T>
std::string differs(const char *name, T expected, T actual) {
  std::ostringstream out;
  out << name << ": expected " << +expected << ", got " << +actual;
  return out.str();
}

template <class T>
std::string differs(const char *name, size_t index, T expected, T actual) {
  return differs((std::string(name) + "[" + std::to_string(index) + "]").c_str(), expected, actual);
}

template <class T>
std::string compare_array(const char *name, const T *expected, const T *actual, size_t count) {
  if (memcmp(expected, actual, count * sizeof(T)) == 0) return {};
  for (size_t i = 0; i < count; ++i)
    if (expected[i] != actual[i]) return differs(name, i, expected[i], actual[i]);
  return {};
}

// ---- Getters

#define PPL_COMPARE_GETTERS(GETTER)                              \
  GETTER(ppl_decimation)                                         \
  GETTER(ppl_decimation_top_black_lines)                         \
  GETTER(ppl_decimation_bottom_black_lines)                      \
  GETTER(ppl_P3_only)                                            \
  GETTER(ppl_sensor_type)                                        \
  GETTER(ppl_quality)                                            \
  GETTER(ppl_mean_collection)                                    \
  GETTER(ppl_r_delta)                                            \
  GETTER(ppl_g_delta)                                            \
  GETTER(ppl_b_delta)                                            \
  GETTER(ppl_nf88_r_gain)                                        \
  GETTER(ppl_nf88_g_gain)                                        \
  GETTER(ppl_nf88_b_gain)                                        \
  GETTER(ppl_sensor_matrix_index_upper_bound)                    \
  GETTER(ppl_h_mirror)                                           \
  GETTER(ppl_v_mirror)                                           \
  GETTER(ppl_medium_filter_diff_threshold)                       \
  GETTER(ppl_medium_filter_hot_pixel_threshold)                  \
  GETTER(ppl_medium_filter_dead_pixel_threshold)                 \
  GETTER(ppl_nf88_medium_filter_hot_pixel_threshold_percentage)  \
  GETTER(ppl_nf88_medium_filter_dead_pixel_threshold_percentage) \
  GETTER(ppl_medium_filter_enabled)                              \
  GETTER(ppl_edge_threshold)                                     \
  GETTER(ppl_edge_threshold2)                                    \
  GETTER(ppl_nf88_edge_enhance_factor)                           \
  GETTER(ppl_noise_filter_G_12T_threshold)                       \
  GETTER(ppl_noise_filter_R_8T_threshold)                        \
  GETTER(ppl_noise_filter_B_8T_threshold)                        \
  GETTER(ppl_CFA_T0_threshold)                                   \
  GETTER(ppl_CFA_T1_threshold)                                   \
  GETTER(ppl_intl_3T_threshold)                                  \
  GETTER(ppl_nf88_sat)                                           \
  GETTER(ppl_hue_degree)                                         \
  GETTER(ppl_qual_BmGb_min)                                      \
  GETTER(ppl_qual_BmGb_max)                                      \
  GETTER(ppl_qual_GrmR_min)                                      \
  GETTER(ppl_qual_GrmR_max)                                      \
  GETTER(ppl_qual_BmGb_p_GrmR_min)                               \
  GETTER(ppl_qual_BmGb_p_GrmR_max)                               \
  GETTER(ppl_qual_BmGb_m_GrmR_min)                               \
  GETTER(ppl_qual_BmGb_m_GrmR_max)                               \
  GETTER(ppl_qual_R_min)                                         \
  GETTER(ppl_qual_R_max)                                         \
  GETTER(ppl_qual_G_min)                                         \
  GETTER(ppl_qual_G_max)                                         \
  GETTER(ppl_qual_B_min)                                         \
  GETTER(ppl_qual_B_max)                                         \
  GETTER(ppl_qAE_RGB_min)                                        \
  GETTER(ppl_qAE_RGB_max)                                        \
  GETTER(ppl_nf88_quals_r_gain)                                  \
  GETTER(ppl_nf88_quals_g_gain)                                  \
  GETTER(ppl_nf88_quals_b_gain)                                  \
  GETTER(ppl_n_frame)

std::string compare_getters(const Pair &pair) {
#define PPL_COMPARE_GETTER(name)                                                        \
  if (const auto expected = ppl_model::name(pair.model), actual = ::name(pair.library); \
      expected != actual)                                                               \
    return differs(#name, expected, actual);
  PPL_COMPARE_GETTERS(PPL_COMPARE_GETTER)
#undef PPL_COMPARE_GETTER

  uint32_t expected_black[4] = {}, actual_black[4] = {};
  const uint32_t expected_r = ppl_model::ppl_optical_black_b_gb_gr_r(
      pair.model, &expected_black[0], &expected_black[1], &expected_black[2], &expected_black[3]);
  const uint32_t actual_r = ::ppl_optical_black_b_gb_gr_r(
      pair.library, &actual_black[0], &actual_black[1], &actual_black[2], &actual_black[3]);
  if (expected_r != actual_r)
    return differs("result of ppl_optical_black_b_gb_gr_r", expected_r, actual_r);
  if (auto text = compare_array("optical black", expected_black, actual_black, 4); !text.empty())
    return text;

  int32_t expected_matrix[18] = {}, actual_matrix[18] = {};
  ppl_model::ppl_sensor_matrix(pair.model, expected_matrix);
  ::ppl_sensor_matrix(pair.library, actual_matrix);
  if (auto text = compare_array("ppl_sensor_matrix", expected_matrix, actual_matrix, 18);
      !text.empty())
    return text;

  int32_t expected_gamma[4] = {7, 7, 7, 7}, actual_gamma[4] = {7, 7, 7, 7};
  expected_gamma[3] = ppl_model::ppl_nf20_12_gamma(pair.model, &expected_gamma[0],
                                                   &expected_gamma[1], &expected_gamma[2]);
  actual_gamma[3] =
      ::ppl_nf20_12_gamma(pair.library, &actual_gamma[0], &actual_gamma[1], &actual_gamma[2]);
  return compare_array("ppl_nf20_12_gamma", expected_gamma, actual_gamma, 4);
}

// ---- Tables

#define PPL_COMPARE_TABLES(TABLE)     \
  TABLE(ppl_r_dekneel_table)          \
  TABLE(ppl_g_dekneel_table)          \
  TABLE(ppl_b_dekneel_table)          \
  TABLE(ppl_yuv_gamma_table)          \
  TABLE(ppl_rgb_gamma_table)          \
  TABLE(ppl_contrast_table)           \
  TABLE(ppl_yuv_contrast_gamma_table) \
  TABLE(ppl_rgb_contrast_gamma_table)

std::string compare_tables(const Pair &pair) {
#define PPL_COMPARE_TABLE(name)                                                                 \
  if (auto text = compare_array(#name, ppl_model::name(pair.model), ::name(pair.library), 256); \
      !text.empty())                                                                            \
    return text;
  PPL_COMPARE_TABLES(PPL_COMPARE_TABLE)
#undef PPL_COMPARE_TABLE
  return {};
}

// ---- Statistics

std::string compare_triples(const char *name, const PplTriple *expected, const PplTriple *actual,
                            size_t count = 1) {
  for (size_t i = 0; i < count; ++i) {
    const uint32_t a[3] = {expected[i].r, expected[i].g, expected[i].b};
    const uint32_t b[3] = {actual[i].r, actual[i].g, actual[i].b};
    const std::string full = std::string(name) + (count > 1 ? " " + std::to_string(i) : "");
    if (auto text = compare_array(full.c_str(), a, b, 3); !text.empty()) return text;
  }
  return {};
}

std::string compare_statistics(const Pair &pair) {
#define PPL_COMPARE_TRIPLE(name, count)                                                     \
  if (auto text =                                                                           \
          compare_triples(#name, ppl_model::name(pair.model), ::name(pair.library), count); \
      !text.empty())                                                                        \
    return text;
  PPL_COMPARE_TRIPLE(ppl_rgb_means_sub_windows, 48)
  PPL_COMPARE_TRIPLE(ppl_rgb_means_outside_all_sub_windows, 1)
  PPL_COMPARE_TRIPLE(ppl_rgb_means_all_sub_windows, 1)
  PPL_COMPARE_TRIPLE(ppl_rgb_means_whole_frame, 1)
  PPL_COMPARE_TRIPLE(ppl_qAE_rgb_means_whole_frame, 1)
  PPL_COMPARE_TRIPLE(ppl_qual_rgb_means_whole_frame, 1)
  PPL_COMPARE_TRIPLE(ppl_rgb_means_whole_frame_4pts, 1)
  PPL_COMPARE_TRIPLE(ppl_rgb_means_whole_frame_central4, 1)
  PPL_COMPARE_TRIPLE(ppl_rgb_means_whole_frame_central8, 1)
  PPL_COMPARE_TRIPLE(ppl_rgb_means_whole_frame_central16, 1)
#undef PPL_COMPARE_TRIPLE
  if (const auto expected = ppl_model::ppl_n_qAE_2x2_whole_frame(pair.model),
      actual = ::ppl_n_qAE_2x2_whole_frame(pair.library);
      expected != actual)
    return differs("ppl_n_qAE_2x2_whole_frame", expected, actual);
  if (const auto expected = ppl_model::ppl_n_qual_2x2_whole_frame(pair.model),
      actual = ::ppl_n_qual_2x2_whole_frame(pair.library);
      expected != actual)
    return differs("ppl_n_qual_2x2_whole_frame", expected, actual);
#define PPL_COMPARE_HISTOGRAM(name)                                                             \
  if (auto text = compare_array(#name, ppl_model::name(pair.model), ::name(pair.library), 256); \
      !text.empty())                                                                            \
    return text;
  PPL_COMPARE_HISTOGRAM(ppl_r_histogram)
  PPL_COMPARE_HISTOGRAM(ppl_g_histogram)
  PPL_COMPARE_HISTOGRAM(ppl_b_histogram)
#undef PPL_COMPARE_HISTOGRAM
  return {};
}

// The readers of the centre hand out the whole-frame means themselves at quality 3, and else a
// process-wide triple.
std::string compare_reader_pointers(const Pair &pair) {
  const PplTriple *expected_whole = ppl_model::ppl_rgb_means_whole_frame(pair.model);
  const PplTriple *actual_whole = ::ppl_rgb_means_whole_frame(pair.library);
#define PPL_COMPARE_POINTER(name)                                                                \
  if ((ppl_model::name(pair.model) == expected_whole) != (::name(pair.library) == actual_whole)) \
    return std::string(#name) + " points elsewhere";
  PPL_COMPARE_POINTER(ppl_rgb_means_whole_frame_4pts)
  PPL_COMPARE_POINTER(ppl_rgb_means_whole_frame_central4)
  PPL_COMPARE_POINTER(ppl_rgb_means_whole_frame_central8)
  PPL_COMPARE_POINTER(ppl_rgb_means_whole_frame_central16)
#undef PPL_COMPARE_POINTER
  return {};
}

// ---- Derived state

template <class Value>
std::string compare_entry(const char *name, Value expected, Value actual) {
  return expected == actual ? std::string() : differs(name, expected, actual);
}

template <class Value>
std::string compare_entry(const char *name, const ppl_model::Pair<Value> &expected,
                          const ppl::Pair<Value> &actual) {
  const Value a[2] = {expected.even, expected.odd};
  const Value b[2] = {actual.even, actual.odd};
  return compare_array(name, a, b, 2);
}

std::string compare_entry(const char *name, const ppl_model::WordMatrix &expected,
                          const ppl::Matrix &actual) {
  return compare_array(name, expected.data(), actual, expected.size());
}

// clang-format off
#define PPL_COMPARE_READ(ENTRY) \
  ENTRY(qual_BmGb_lo_vec) ENTRY(qual_BmGb_hi_vec) ENTRY(qual_GrmR_lo_vec) \
  ENTRY(qual_GrmR_hi_vec) ENTRY(qual_BmGb_p_GrmR_lo_vec) ENTRY(qual_BmGb_p_GrmR_hi_vec) \
  ENTRY(qual_BmGb_m_GrmR_lo_vec) ENTRY(qual_BmGb_m_GrmR_hi_vec) ENTRY(qual_GR_base_vec) \
  ENTRY(qual_GR_span_vec) ENTRY(qual_BG_base_vec) ENTRY(qual_BG_span_vec) \
  ENTRY(qAE_min_vec) ENTRY(qAE_max_vec) ENTRY(edge_threshold_vec) ENTRY(edge_threshold2_vec) \
  ENTRY(edge_enhance_factor_vec) ENTRY(intl_3T_vec) ENTRY(CFA_T0_vec) ENTRY(CFA_T1_vec) \
  ENTRY(rgb_slope_vec) ENTRY(full_slope_vec) ENTRY(studio_slope_vec) ENTRY(rgb_base0_vec) \
  ENTRY(full_base0_vec) ENTRY(studio_base0_vec) ENTRY(rgb_base1_vec) ENTRY(studio_base1_vec) \
  ENTRY(index_bound_vec) ENTRY(offset_studio_vec) ENTRY(offset_full_vec) ENTRY(offset_rgb_vec) \
  ENTRY(rgb_gain_BG_vec) ENTRY(rgb_gain_GR_vec) ENTRY(rgb_delta_BG_vec) ENTRY(rgb_delta_GR_vec) \
  ENTRY(optical_black_BG_vec) ENTRY(optical_black_GR_vec) ENTRY(medium_hot_vec) \
  ENTRY(medium_dead_vec) ENTRY(medium_hot_pct_vec) ENTRY(medium_dead_pct_vec)
#define PPL_COMPARE_UNREAD(ENTRY) \
  ENTRY(qAE_lo_vec) ENTRY(qAE_hi_vec) ENTRY(noise_G_12T_vec) ENTRY(noise_R_8T_vec) \
  ENTRY(noise_B_8T_vec) ENTRY(studio_slope_q12_vec) ENTRY(studio_base0_q12_vec) \
  ENTRY(studio_base1_q12_vec) ENTRY(full_base1_vec) ENTRY(quals_gain_BG_vec) \
  ENTRY(quals_gain_GR_vec) ENTRY(medium_diff_vec)
// clang-format on

std::string compare_parameters(const Pair &pair) {
  const ppl_model::Parameters &expected = ppl_model::derived(pair.model);
  const ppl::Parameters &actual = pair.library->params;
#define PPL_COMPARE_ENTRY(name, place)                                       \
  if (auto text = compare_entry(#name, expected.name, place); !text.empty()) \
    return "parameter " + text;
#define PPL_COMPARE_ONE_READ(name) PPL_COMPARE_ENTRY(name, actual.name)
#define PPL_COMPARE_ONE_UNREAD(name) PPL_COMPARE_ENTRY(name, actual.unread.name)
  PPL_COMPARE_READ(PPL_COMPARE_ONE_READ)
  PPL_COMPARE_UNREAD(PPL_COMPARE_ONE_UNREAD)
#undef PPL_COMPARE_ONE_UNREAD
#undef PPL_COMPARE_ONE_READ
#undef PPL_COMPARE_ENTRY
  return {};
}

std::string compare_tier(const Pair &pair, ppl_model::Tier tier) {
  const ppl_model::FramePlan &expected = ppl_model::plan(pair.model, tier);
  const ppl::TierState &actual =
      tier == ppl_model::Tier::p3 ? pair.library->p3 : pair.library->sse2;
  const auto compare = [&]() -> std::string {
    if (expected.cell_width != actual.plan.cell_width)
      return differs("cell_width", expected.cell_width, actual.plan.cell_width);
    if (expected.cell_height != actual.plan.cell_height)
      return differs("cell_height", expected.cell_height, actual.plan.cell_height);
    if (expected.marker_cell != actual.memory.marker_cell)
      return differs("marker_cell", expected.marker_cell, actual.memory.marker_cell);
    return compare_array("chain_normaliser", expected.chain_normaliser.data(),
                         actual.plan.chain_normaliser, ppl::chain_normaliser_entries);
  };
  const std::string text = compare();
  if (text.empty()) return {};
  return std::string(tier == ppl_model::Tier::p3 ? "P3" : "SSE2") + " tier: " + text;
}

std::string compare_plain(const Pair &pair) {
  const ppl_model::PlainState &expected = ppl_model::plain(pair.model);
  const ::PplContext &actual = *pair.library;
#define PPL_COMPARE_FIELD(name) \
  if (expected.name != actual.name) return differs(#name, expected.name, actual.name);
  PPL_COMPARE_FIELD(frame_width)
  PPL_COMPARE_FIELD(frame_height)
  PPL_COMPARE_FIELD(frame_stride)
  PPL_COMPARE_FIELD(frame_size)
  PPL_COMPARE_FIELD(frame_size_2)
  PPL_COMPARE_FIELD(frame_size_4)
  PPL_COMPARE_FIELD(frame_size_8)
  PPL_COMPARE_FIELD(out_width)
  PPL_COMPARE_FIELD(out_height)
  PPL_COMPARE_FIELD(out_size)
  PPL_COMPARE_FIELD(out_size_4)
  PPL_COMPARE_FIELD(mean_normaliser)
  PPL_COMPARE_FIELD(r_window_scale)
  PPL_COMPARE_FIELD(g_window_scale)
  PPL_COMPARE_FIELD(b_window_scale)
  PPL_COMPARE_FIELD(contrast_c)
  PPL_COMPARE_FIELD(contrast_x)
  PPL_COMPARE_FIELD(contrast_y)
  PPL_COMPARE_FIELD(offset_rgb)
  PPL_COMPARE_FIELD(offset_yuv_full)
  PPL_COMPARE_FIELD(offset_yuv_studio)
#undef PPL_COMPARE_FIELD
#define PPL_COMPARE_FIELD(name, count)                                                           \
  if (auto text = compare_array(#name, expected.name.data(), actual.name, count); !text.empty()) \
    return text;
  PPL_COMPARE_FIELD(colour_rgb, 9)
  PPL_COMPARE_FIELD(colour_yuv_full, 9)
  PPL_COMPARE_FIELD(colour_yuv_studio, 9)
#undef PPL_COMPARE_FIELD
  return {};
}

}  // namespace

std::string compare_streams(const Pair &pair) {
  if (auto text = compare_getters(pair); !text.empty()) return text;
  if (auto text = compare_tables(pair); !text.empty()) return text;
  if (auto text = compare_plain(pair); !text.empty()) return text;
  if (auto text = compare_parameters(pair); !text.empty()) return text;
  for (const auto tier : {ppl_model::Tier::p3, ppl_model::Tier::sse2}) {
    if (auto text = compare_tier(pair, tier); !text.empty()) return text;
  }
  if (auto text = compare_reader_pointers(pair); !text.empty()) return text;
  if (pair.statistics_are_free) return {};
  return compare_statistics(pair);
}

std::string compare_gamma_families() {
  std::vector<uint8_t> expected(65 * 256), actual(65 * 256);
  ppl_model::ppl_get_gamma_tables65x256(nullptr, expected.data());
  ::ppl_get_gamma_tables65x256(nullptr, actual.data());
  if (auto text =
          compare_array("gamma_tables65x256", expected.data(), actual.data(), expected.size());
      !text.empty())
    return text;
  ppl_model::ppl_get_gamma_tables65x256_16_235(nullptr, expected.data());
  ::ppl_get_gamma_tables65x256_16_235(nullptr, actual.data());
  return compare_array("gamma_tables65x256_16_235", expected.data(), actual.data(),
                       expected.size());
}

}  // namespace ppl_compare
