#include "library/controls_table.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <utility>

namespace ppl::tool {
namespace {

// ---- From library functions to the table's function types ----

// Calls a setter with as many numbers as it takes. The numbers were held to the control's range
// before, which lies inside the parameter's type.
template <typename Context, typename... Parameters, size_t... index>
uint8_t call_setter(uint8_t(PPL_CALL *setter)(Context *, Parameters...), PplContext *context,
                    const int64_t *numbers, std::index_sequence<index...>) {
  return setter(context, static_cast<Parameters>(numbers[index])...);
}

template <typename Context, typename... Parameters>
uint8_t call_setter(uint8_t(PPL_CALL *setter)(Context *, Parameters...), PplContext *context,
                    const int64_t *numbers) {
  return call_setter(setter, context, numbers, std::index_sequence_for<Parameters...>());
}

template <auto setter>
bool set(PplContext *context, const int64_t *numbers) {
  return call_setter(setter, context, numbers) != 0;
}

// For setters whose result is 0 although they worked.
template <auto setter>
bool set_without_result(PplContext *context, const int64_t *numbers) {
  call_setter(setter, context, numbers);
  return true;
}

template <auto... getters>
void get(const PplContext *context, int64_t *numbers) {
  ((*numbers++ = getters(context)), ...);
}

template <auto copy>
bool copy_in(PplContext *context, const uint8_t *table) {
  return copy(context, table) != 0;
}

template <auto copy>
bool copy_in_without_result(PplContext *context, const uint8_t *table) {
  copy(context, table);
  return true;
}

template <auto getter>
void read_table(const PplContext *context, uint8_t *table) {
  std::memcpy(table, getter(context), 256);
}

template <auto getter>
void copy_out(const PplContext *context, uint8_t *table) {
  getter(context, table);
}

// ---- Controls that fit no pattern ----

void get_optical_black(const PplContext *context, int64_t *numbers) {
  uint32_t values[4];
  ppl_optical_black_b_gb_gr_r(context, &values[0], &values[1], &values[2], &values[3]);
  std::copy(std::begin(values), std::end(values), numbers);
}

bool set_sensor_matrix(PplContext *context, const int64_t *numbers) {
  int32_t matrices[18];
  std::transform(numbers, numbers + 18, matrices,
                 [](int64_t n) { return static_cast<int32_t>(n); });
  return ppl_copy_sensor_matrix(context, matrices) != 0;
}

void get_sensor_matrix(const PplContext *context, int64_t *numbers) {
  int32_t matrices[18];
  ppl_sensor_matrix(context, matrices);
  std::copy(std::begin(matrices), std::end(matrices), numbers);
}

bool set_medium_filter_enabled(PplContext *context, const int64_t *numbers) {
  return (numbers[0] ? ppl_enable_medium_filter(context) : ppl_disable_medium_filter(context)) != 0;
}

bool set_contrast_c(PplContext *context, const int64_t *numbers) {
  return ppl_set_contrast_c(context, static_cast<int32_t>(numbers[0]), nullptr, nullptr) != 0;
}

// ---- Rows of the table ----

constexpr Range any_i32{std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()};
constexpr Range any_u32{0, std::numeric_limits<uint32_t>::max()};
constexpr Range flag{0, 1};
constexpr Range byte{0, 255};
constexpr Range gain{0, 2047};
constexpr Range quals_gain{0, 1023};
constexpr Range delta{-32768, 32767};
constexpr Range word{-32768, 32767};
// The kernels compare with one below the minimum and one above the maximum, in 16 bits.
constexpr Range difference_band{-32767, 32766};

constexpr const char *sample_unit = "sample steps";
constexpr const char *fixed88_unit = "8.8 fixed point (256 = 1.0)";
constexpr const char *no_unit = "-";

using NumberSetter = bool (*)(PplContext *, const int64_t *);
using NumberGetter = void (*)(const PplContext *, int64_t *);
using TableSetter = bool (*)(PplContext *, const uint8_t *);
using TableGetter = void (*)(const PplContext *, uint8_t *);

class TableBuilder {
 public:
  void family(const char *name) { family_ = name; }

  Control &numbers(const char *name, size_t count, std::vector<Range> ranges, const char *initial,
                   const char *unit, const char *text, std::vector<const char *> setters,
                   NumberSetter set, NumberGetter get) {
    rows_.push_back({family_, name, count, 0, 0, std::move(ranges), nullptr, initial, unit,
                     unit == fixed88_unit, text, std::move(setters), set, nullptr, get, nullptr});
    return rows_.back();
  }

  Control &number(const char *name, Range range, const char *initial, const char *unit,
                  const char *text, const char *setter, NumberSetter set, NumberGetter get) {
    return numbers(name, 1, {range}, initial, unit, text, {setter}, set, get);
  }

  void table(const char *name, size_t bytes, const char *initial, const char *text,
             const char *setter, TableSetter set, TableGetter get) {
    rows_.push_back({family_,
                     name,
                     0,
                     bytes,
                     0,
                     {byte},
                     nullptr,
                     initial,
                     "bytes",
                     false,
                     text,
                     {setter},
                     nullptr,
                     set,
                     nullptr,
                     get});
  }

  std::vector<Control> take() { return std::move(rows_); }

 private:
  const char *family_ = "";
  std::vector<Control> rows_;
};

std::vector<Control> build_table() {
  TableBuilder t;

  t.family("Scale and tier");
  t.numbers("decimation", 3, {{-1, 2}, {0, 1024}, {0, 1024}}, "0,0,0",
            "exponent of 2, lines, lines",
            "scale of the output: 1 halves, -1 doubles both sides; then the black lines added at "
            "the top "
            "and at the bottom, which raw frames leave untouched",
            {"ppl_set_decimation"}, set<ppl_set_decimation>,
            get<ppl_decimation, ppl_decimation_top_black_lines, ppl_decimation_bottom_black_lines>)
      .optional_numbers = 2;
  t.number("P3_only", flag, "0", "flag", "run the P3 tier even where the processor has SSE2",
           "ppl_set_P3_only", set<ppl_set_P3_only>, get<ppl_P3_only>);

  t.family("Sensor and front end");
  t.number("sensor_type", {22356, 122965837}, "none", "code",
           "only judged: a known code is accepted, any other refused, and nothing is stored",
           "ppl_set_sensor_type", set<ppl_set_sensor_type>, get<ppl_sensor_type>)
      .range_text = "22356, 22856, 4347471 or 122965837";
  t.number(
      "quality", {0, 14}, "3", no_unit,
      "the pipeline: 3 and 13 single pass; 0, 1, 2, 10, 11, 12, 14 chains with interpolation and "
      "edge enhancement; 4 and 9 grey copy; 5 to 8 nothing",
      "ppl_set_quality", set<ppl_set_quality>, get<ppl_quality>);
  t.number("mean_collection", flag, "1", "flag", "gather statistics", "ppl_set_mean_collection",
           set<ppl_set_mean_collection>, get<ppl_mean_collection>);
  t.numbers("optical_black_b_gb_gr_r", 4, {byte}, "0,0,0,0", sample_unit,
            "black level of the four mosaic positions, subtracted first",
            {"ppl_set_optical_black_b_gb_gr_r"}, set<ppl_set_optical_black_b_gb_gr_r>,
            get_optical_black);
  t.numbers("rgb_delta", 3, {delta}, "0,0,0", sample_unit,
            "offsets of red, green and blue after the gain", {"ppl_set_rgb_delta"},
            set<ppl_set_rgb_delta>, get<ppl_r_delta, ppl_g_delta, ppl_b_delta>);
  t.number("r_delta", delta, "0", sample_unit, "offset of red alone", "ppl_set_r_delta",
           set<ppl_set_r_delta>, get<ppl_r_delta>);
  t.number("g_delta", delta, "0", sample_unit, "offset of green alone", "ppl_set_g_delta",
           set<ppl_set_g_delta>, get<ppl_g_delta>);
  t.number("b_delta", delta, "0", sample_unit, "offset of blue alone", "ppl_set_b_delta",
           set<ppl_set_b_delta>, get<ppl_b_delta>);
  t.numbers("rgb_gain", 3, {gain}, "256,256,256", fixed88_unit,
            "gains of red, green and blue; the lowest 3 bits have no effect", {"ppl_set_rgb_gain"},
            set<ppl_set_rgb_gain>, get<ppl_nf88_r_gain, ppl_nf88_g_gain, ppl_nf88_b_gain>);
  t.number("nf88_r_gain", gain, "256", fixed88_unit, "gain of red alone", "ppl_set_r_gain",
           set<ppl_set_r_gain>, get<ppl_nf88_r_gain>);
  t.number("nf88_g_gain", gain, "256", fixed88_unit, "gain of green alone", "ppl_set_g_gain",
           set<ppl_set_g_gain>, get<ppl_nf88_g_gain>);
  t.number("nf88_b_gain", gain, "256", fixed88_unit, "gain of blue alone", "ppl_set_b_gain",
           set<ppl_set_b_gain>, get<ppl_nf88_b_gain>);
  t.table("r_dekneel_table", 256, "identity", "stored for the caller; no frame depends on it",
          "ppl_copy_r_dekneel_table", copy_in_without_result<ppl_copy_r_dekneel_table>,
          read_table<ppl_r_dekneel_table>);
  t.table("g_dekneel_table", 256, "identity", "stored for the caller; no frame depends on it",
          "ppl_copy_g_dekneel_table", copy_in_without_result<ppl_copy_g_dekneel_table>,
          read_table<ppl_g_dekneel_table>);
  t.table("b_dekneel_table", 256, "identity", "stored for the caller; no frame depends on it",
          "ppl_copy_b_dekneel_table", copy_in_without_result<ppl_copy_b_dekneel_table>,
          read_table<ppl_b_dekneel_table>);
  t.numbers("sensor_matrix", 18, {any_i32},
            "177,88,-9,24,232,-1,29,62,166,410,-57,-97,-98,423,-71,-84,-143,486", fixed88_unit,
            "two colour matrices by rows R, G, B, the first for grey and the second for strongly "
            "coloured "
            "pixels",
            {"ppl_copy_sensor_matrix"}, set_sensor_matrix, get_sensor_matrix);
  t.number("sensor_matrix_index_upper_bound", any_i32, "12", sample_unit,
           "colour difference at which the second matrix is reached; 0 acts as 1",
           "ppl_set_sensor_matrix_index_upper_bound", set<ppl_set_sensor_matrix_index_upper_bound>,
           get<ppl_sensor_matrix_index_upper_bound>);
  t.number("h_mirror", flag, "0", "flag", "mirror the picture left to right", "ppl_set_h_mirror",
           set<ppl_set_h_mirror>, get<ppl_h_mirror>);
  t.number("v_mirror", flag, "0", "flag", "mirror the picture top to bottom", "ppl_set_v_mirror",
           set<ppl_set_v_mirror>, get<ppl_v_mirror>);

  t.family("Filters");
  t.numbers("medium_filter_enabled", 1, {flag}, "0", "flag",
            "repair hot and dead pixels (qualities 0, 1 and 2)",
            {"ppl_enable_medium_filter", "ppl_disable_medium_filter"}, set_medium_filter_enabled,
            get<ppl_medium_filter_enabled>);
  t.number("medium_filter_diff_threshold", any_i32, "24", sample_unit,
           "stored for the caller; no frame depends on it", "ppl_set_medium_filter_diff_threshold",
           set<ppl_set_medium_filter_diff_threshold>, get<ppl_medium_filter_diff_threshold>);
  t.number("medium_filter_hot_pixel_threshold", word, "240", sample_unit,
           "from this level on a pixel may be hot", "ppl_set_medium_filter_hot_pixel_threshold",
           set<ppl_set_medium_filter_hot_pixel_threshold>,
           get<ppl_medium_filter_hot_pixel_threshold>);
  t.number("medium_filter_dead_pixel_threshold", word, "16", sample_unit,
           "up to this level a pixel may be dead", "ppl_set_medium_filter_dead_pixel_threshold",
           set<ppl_set_medium_filter_dead_pixel_threshold>,
           get<ppl_medium_filter_dead_pixel_threshold>);
  constexpr Range percentage{-65536, 65535};
  t.number("nf88_medium_filter_hot_pixel_threshold_percentage", percentage, "80", fixed88_unit,
           "share by which a hot pixel stands above its neighbours",
           "ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage",
           set<ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage>,
           get<ppl_nf88_medium_filter_hot_pixel_threshold_percentage>);
  t.number("nf88_medium_filter_dead_pixel_threshold_percentage", percentage, "48", fixed88_unit,
           "share by which a dead pixel stands below its neighbours",
           "ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage",
           set<ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage>,
           get<ppl_nf88_medium_filter_dead_pixel_threshold_percentage>);
  t.number("edge_threshold", {0, 1530}, "100", "sum of sample steps",
           "summed difference from which edges are enhanced", "ppl_set_edge_threshold",
           set<ppl_set_edge_threshold>, get<ppl_edge_threshold>);
  t.number("edge_threshold2", {0, 1530}, "1530", "sum of sample steps",
           "summed difference up to which edges are enhanced", "ppl_set_edge_threshold2",
           set<ppl_set_edge_threshold2>, get<ppl_edge_threshold2>);
  t.number("nf88_edge_enhance_factor", {0, 256}, "32", fixed88_unit,
           "strength of the edge enhancement", "ppl_set_nf88_edge_enhance_factor",
           set<ppl_set_nf88_edge_enhance_factor>, get<ppl_nf88_edge_enhance_factor>);
  t.number("noise_filter_G_12T_threshold", {0, 3060}, "60", "sum of sample steps",
           "stored for the caller; no frame depends on it", "ppl_set_noise_filter_G_12T_threshold",
           set<ppl_set_noise_filter_G_12T_threshold>, get<ppl_noise_filter_G_12T_threshold>);
  t.number("noise_filter_R_8T_threshold", {0, 2040}, "40", "sum of sample steps",
           "stored for the caller; no frame depends on it", "ppl_set_noise_filter_R_8T_threshold",
           set<ppl_set_noise_filter_R_8T_threshold>, get<ppl_noise_filter_R_8T_threshold>);
  t.number("noise_filter_B_8T_threshold", {0, 2040}, "40", "sum of sample steps",
           "stored for the caller; no frame depends on it", "ppl_set_noise_filter_B_8T_threshold",
           set<ppl_set_noise_filter_B_8T_threshold>, get<ppl_noise_filter_B_8T_threshold>);
  t.number("CFA_T0_threshold", {0, 255}, "10", sample_unit,
           "largest green difference in a flat cell (qualities 10 and 11)",
           "ppl_set_CFA_T0_threshold", set<ppl_set_CFA_T0_threshold>, get<ppl_CFA_T0_threshold>);
  t.number("CFA_T1_threshold", {0, 63}, "15", sample_unit,
           "difference that steers the interpolation of green (chains)", "ppl_set_CFA_T1_threshold",
           set<ppl_set_CFA_T1_threshold>, get<ppl_CFA_T1_threshold>);
  t.number("intl_3T_threshold", {0, 765}, "50", "sum of sample steps",
           "motion test of interlaced video; raw frames do not use it", "ppl_set_intl_3T_threshold",
           set<ppl_set_intl_3T_threshold>, get<ppl_intl_3T_threshold>);

  t.family("Gamma");
  t.number("gamma", {-32, 32}, "0", "index",
           "curve of the family: exponent 0.45 at 0, 1 at -17; higher is brighter", "ppl_set_gamma",
           set<ppl_set_gamma>, nullptr);
  t.table("rgb_gamma_table", 256, "curve 0", "the curve that every raw sample passes",
          "ppl_copy_rgb_gamma_table", copy_in<ppl_copy_rgb_gamma_table>,
          copy_out<ppl_get_rgb_gamma_table>);
  t.table("yuv_gamma_table", 256, "curve 0 of the 16..235 family", "the luma curve of quality 13",
          "ppl_copy_yuv_gamma_table", copy_in<ppl_copy_yuv_gamma_table>,
          copy_out<ppl_get_yuv_gamma_table>);
  t.table("gamma_tables65x256", size_t{65} * 256, "built in",
          "the family itself, index -32 first; a later gamma=INDEX picks from it",
          "ppl_copy_gamma_tables65x256", copy_in<ppl_copy_gamma_tables65x256>,
          copy_out<ppl_get_gamma_tables65x256>);
  t.table("gamma_tables65x256_16_235", size_t{65} * 256, "built in",
          "the 16..235 family, index -32 first; a later gamma=INDEX picks from it",
          "ppl_copy_gamma_tables65x256_16_235", copy_in<ppl_copy_gamma_tables65x256_16_235>,
          copy_out<ppl_get_gamma_tables65x256_16_235>);

  t.family("Contrast");
  t.number("contrast_c", {-127, 127}, "0", no_unit, "contrast: the curve and the gain of luma",
           "ppl_set_contrast_c", set_contrast_c, nullptr);
  t.numbers("contrast_xy", 2, {{0, 127}, any_u32}, "0,0", sample_unit,
            "anchors of the contrast curve alone, which serves quality 13", {"ppl_set_contrast_xy"},
            set<ppl_set_contrast_xy>, nullptr);
  t.table("contrast_table", 256, "identity", "the contrast curve itself, which serves quality 13",
          "ppl_copy_contrast_table", copy_in<ppl_copy_contrast_table>,
          read_table<ppl_contrast_table>);

  t.family("Saturation and hue");
  t.numbers("sat_hue", 2, {{0, 512}, any_i32}, "256,0", "8.8 fixed point, degrees",
            "saturation and hue together", {"ppl_set_sat_hue"}, set<ppl_set_sat_hue>,
            get<ppl_nf88_sat, ppl_hue_degree>);
  t.number("nf88_sat", {0, 512}, "256", fixed88_unit, "saturation; 0 is grey", "ppl_set_sat",
           set<ppl_set_sat>, get<ppl_nf88_sat>);
  t.number("hue_degree", any_i32, "0", "degrees", "turns all colours", "ppl_set_hue",
           set<ppl_set_hue>, get<ppl_hue_degree>);

  t.family("Statistics bands");
  t.numbers("qual_BmGb", 2, {difference_band}, "-25,25", sample_unit,
            "min,max of B - Gb for a cell that qualifies as near grey",
            {"ppl_set_qual_BmGb_min_max"}, set<ppl_set_qual_BmGb_min_max>,
            get<ppl_qual_BmGb_min, ppl_qual_BmGb_max>);
  t.numbers("qual_GrmR", 2, {difference_band}, "-25,25", sample_unit, "min,max of Gr - R",
            {"ppl_set_qual_GrmR_min_max"}, set<ppl_set_qual_GrmR_min_max>,
            get<ppl_qual_GrmR_min, ppl_qual_GrmR_max>);
  t.numbers("qual_BmGb_p_GrmR", 2, {difference_band}, "-30,30", sample_unit,
            "min,max of the sum of both differences", {"ppl_set_qual_BmGb_p_GrmR_min_max"},
            set<ppl_set_qual_BmGb_p_GrmR_min_max>,
            get<ppl_qual_BmGb_p_GrmR_min, ppl_qual_BmGb_p_GrmR_max>);
  t.numbers("qual_BmGb_m_GrmR", 2, {difference_band}, "-30,30", sample_unit,
            "min,max of the difference of both differences", {"ppl_set_qual_BmGb_m_GrmR_min_max"},
            set<ppl_set_qual_BmGb_m_GrmR_min_max>,
            get<ppl_qual_BmGb_m_GrmR_min, ppl_qual_BmGb_m_GrmR_max>);
  t.numbers("qual_R", 2, {byte}, "0,255", sample_unit, "min,max of red", {"ppl_set_qual_R_min_max"},
            set<ppl_set_qual_R_min_max>, get<ppl_qual_R_min, ppl_qual_R_max>);
  t.numbers("qual_G", 2, {byte}, "0,255", sample_unit, "min,max of green",
            {"ppl_set_qual_G_min_max"}, set<ppl_set_qual_G_min_max>,
            get<ppl_qual_G_min, ppl_qual_G_max>);
  t.numbers("qual_B", 2, {byte}, "0,255", sample_unit, "min,max of blue",
            {"ppl_set_qual_B_min_max"}, set<ppl_set_qual_B_min_max>,
            get<ppl_qual_B_min, ppl_qual_B_max>);
  t.numbers("qual_RGB", 6, {byte}, "0,255,0,255,0,255", sample_unit,
            "min,max of red, green and blue", {"ppl_set_qual_RGB_min_max"},
            set<ppl_set_qual_RGB_min_max>,
            get<ppl_qual_R_min, ppl_qual_R_max, ppl_qual_G_min, ppl_qual_G_max, ppl_qual_B_min,
                ppl_qual_B_max>);
  t.numbers("qAE_RGB", 2, {byte}, "0,255", sample_unit,
            "min,max of all channels for the exposure means", {"ppl_set_qAE_RGB_min_max"},
            set<ppl_set_qAE_RGB_min_max>, get<ppl_qAE_RGB_min, ppl_qAE_RGB_max>);
  t.numbers("quals_rgb_gain", 3, {quals_gain}, "256,256,256", fixed88_unit,
            "stored for the caller; no frame depends on them", {"ppl_set_quals_rgb_gain"},
            set_without_result<ppl_set_quals_rgb_gain>,
            get<ppl_nf88_quals_r_gain, ppl_nf88_quals_g_gain, ppl_nf88_quals_b_gain>);
  t.number("nf88_quals_r_gain", quals_gain, "256", fixed88_unit,
           "stored for the caller; no frame depends on it", "ppl_set_quals_r_gain",
           set_without_result<ppl_set_quals_r_gain>, get<ppl_nf88_quals_r_gain>);
  t.number("nf88_quals_g_gain", quals_gain, "256", fixed88_unit,
           "stored for the caller; no frame depends on it", "ppl_set_quals_g_gain",
           set_without_result<ppl_set_quals_g_gain>, get<ppl_nf88_quals_g_gain>);
  t.number("nf88_quals_b_gain", quals_gain, "256", fixed88_unit,
           "stored for the caller; no frame depends on it", "ppl_set_quals_b_gain",
           set_without_result<ppl_set_quals_b_gain>, get<ppl_nf88_quals_b_gain>);
  return t.take();
}

}  // namespace

std::string Control::range_in_words() const {
  if (range_text) return range_text;
  if (table_bytes) return fmt::format("{} bytes", table_bytes);
  std::string words;
  for (const Range &r : ranges) {
    if (!words.empty()) words += ", ";
    words += r.low == any_i32.low && r.high == any_i32.high ? "any 32-bit number"
             : r.low == any_u32.low && r.high == any_u32.high
                 ? "0 to 4294967295"
                 : fmt::format("{} to {}", r.low, r.high);
  }
  if (numbers > 1 && ranges.size() == 1) words += " each";
  return words;
}

const std::vector<Control> &controls() {
  static const std::vector<Control> table = build_table();
  return table;
}

const Control *find_control(const std::string &name) {
  for (const Control &control : controls())
    if (control.name == name) return &control;
  return nullptr;
}

}  // namespace ppl::tool
