#include <algorithm>
#include <cstring>
#include <limits>
#include <numeric>

#include "control_access.h"
#include "words.h"

namespace ppl {
namespace detail {
namespace {

// ---- From the library's functions to the table's ----

// Calls a setter with as many numbers as it takes. They were held to the control's range before,
// which lies inside the parameter's type.
template <class Context, class... Parameters, size_t... index>
uint8_t call(uint8_t(PPL_CALL *setter)(Context *, Parameters...), PplContext *context,
             const int64_t *values, std::index_sequence<index...>) {
  return setter(context, static_cast<Parameters>(values[index])...);
}

template <class Context, class... Parameters>
uint8_t call(uint8_t(PPL_CALL *setter)(Context *, Parameters...), PplContext *context,
             const int64_t *values) {
  return call(setter, context, values, std::index_sequence_for<Parameters...>());
}

template <auto setter>
bool set(ControlState &state, const int64_t *values) {
  return call(setter, state.context, values) != 0;
}

// For setters whose result is 0 although they worked.
template <auto setter>
bool set_without_result(ControlState &state, const int64_t *values) {
  call(setter, state.context, values);
  return true;
}

template <auto... getters>
void get(const ControlState &state, int64_t *values) {
  ((*values++ = getters(state.context)), ...);
}

std::array<uint8_t, 256> bytes_of(const int64_t *values) {
  std::array<uint8_t, 256> table;
  std::transform(values, values + 256, table.begin(),
                 [](int64_t value) { return static_cast<uint8_t>(value); });
  return table;
}

template <auto copy>
bool set_table(ControlState &state, const int64_t *values) {
  copy(state.context, bytes_of(values).data());
  return true;
}

template <auto table>
void get_table(const ControlState &state, int64_t *values) {
  std::copy_n(table(state.context), 256, values);
}

// ---- Controls that fit no pattern ----

bool judge_sensor_type(ControlState &state, const int64_t *values) {
  return ppl_set_sensor_type(state.context, static_cast<int32_t>(values[0])) != 0;
}

void get_optical_black(const ControlState &state, int64_t *values) {
  uint32_t levels[4];
  ppl_optical_black_b_gb_gr_r(state.context, &levels[0], &levels[1], &levels[2], &levels[3]);
  std::copy_n(levels, 4, values);
}

bool set_sensor_matrix(ControlState &state, const int64_t *values) {
  int32_t matrices[18];
  std::transform(values, values + 18, matrices,
                 [](int64_t value) { return static_cast<int32_t>(value); });
  return ppl_copy_sensor_matrix(state.context, matrices) != 0;
}

void get_sensor_matrix(const ControlState &state, int64_t *values) {
  int32_t matrices[18];
  ppl_sensor_matrix(state.context, matrices);
  std::copy_n(matrices, 18, values);
}

bool set_medium_filter_enabled(ControlState &state, const int64_t *values) {
  return (values[0] ? ppl_enable_medium_filter : ppl_disable_medium_filter)(state.context) != 0;
}

// The families belong to the process: whoever reads or writes one must be alone.
bool set_gamma(ControlState &state, const int64_t *values) {
  const std::lock_guard lock(library_mutex());
  if (!ppl_set_gamma(state.context, static_cast<int32_t>(values[0]))) return false;
  state.gamma = values[0];
  return true;
}

void get_gamma(const ControlState &state, int64_t *values) { values[0] = state.gamma; }

template <auto copy>
bool set_family(ControlState &, const int64_t *values) {
  built_in_gamma();
  std::vector<uint8_t> tables(GammaFamilies::bytes);
  std::transform(values, values + GammaFamilies::bytes, tables.begin(),
                 [](int64_t value) { return static_cast<uint8_t>(value); });
  const std::lock_guard lock(library_mutex());
  return copy(nullptr, tables.data()) != 0;
}

template <auto copy_out>
void get_family(const ControlState &, int64_t *values) {
  std::vector<uint8_t> tables(GammaFamilies::bytes);
  const std::lock_guard lock(library_mutex());
  copy_out(nullptr, tables.data());
  std::copy(tables.begin(), tables.end(), values);
}

const uint8_t *full_range_curve(const ControlState &state) {
  return &built_in_gamma().full_range[GammaFamilies::place(state.gamma)];
}

const uint8_t *studio_curve(const ControlState &state) {
  return &built_in_gamma().studio[GammaFamilies::place(state.gamma)];
}

void keep_contrast_curve(ControlState &state) {
  std::copy_n(ppl_contrast_table(state.context), 256, state.contrast_curve.begin());
}

bool set_contrast_c(ControlState &state, const int64_t *values) {
  int32_t x = 0, y = 0;
  if (!ppl_set_contrast_c(state.context, static_cast<int32_t>(values[0]), &x, &y)) return false;
  state.contrast_c = values[0];
  state.contrast_x = x;
  state.contrast_y = y;
  keep_contrast_curve(state);
  return true;
}

void get_contrast_c(const ControlState &state, int64_t *values) { values[0] = state.contrast_c; }

bool set_contrast_xy(ControlState &state, const int64_t *values) {
  if (!set<ppl_set_contrast_xy>(state, values)) return false;
  state.contrast_x = values[0];
  state.contrast_y = values[1];
  return true;
}

void get_contrast_xy(const ControlState &state, int64_t *values) {
  values[0] = state.contrast_x;
  values[1] = state.contrast_y;
}

const uint8_t *contrast_curve(const ControlState &state) { return state.contrast_curve.data(); }

// ---- Rows of the table ----

constexpr Range any_i32{std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()};
constexpr Range any_u32{0, std::numeric_limits<uint32_t>::max()};
constexpr Range flag_range{0, 1};
constexpr Range byte_range{0, 255};
constexpr Range gain_range{0, 2047};
constexpr Range quals_gain_range{0, 1023};
constexpr Range word_range{-32768, 32767};
constexpr Range percentage_range{-65536, 65535};
// The kernels compare with one below the minimum and one above the maximum, in 16 bits.
constexpr Range difference_range{-32767, 32766};

constexpr std::string_view sample_unit = "sample steps";
constexpr std::string_view sum_unit = "sum of sample steps";
constexpr std::string_view fixed88_unit = "8.8 fixed point (256 = 1.0)";
constexpr std::string_view no_unit = "-";
constexpr std::string_view inert_text = "stored for the caller; no frame depends on it";
constexpr std::string_view band_limits = "the minimum first";

using Setter = bool (*)(ControlState &, const int64_t *);
using Getter = void (*)(const ControlState &, int64_t *);

struct Table {
  std::vector<Control> controls;
  std::vector<ControlAccess> access;
};

class Builder {
 public:
  void family(std::string_view name) { family_ = name; }

  Control &add(ControlKind kind, std::string_view name, std::vector<Range> ranges,
               std::vector<int64_t> initial, std::string_view unit, std::string_view text,
               std::vector<std::string_view> functions, Setter setter, Getter getter) {
    Control control;
    control.name = name;
    control.family = family_;
    control.kind = kind;
    control.count = initial.size();
    control.ranges = std::move(ranges);
    control.initial = std::move(initial);
    control.unit = unit;
    control.fixed88 = unit == fixed88_unit;
    control.text = text;
    control.inert = text == inert_text;
    control.functions = std::move(functions);
    table_.controls.push_back(std::move(control));
    table_.access.push_back({.set = setter, .get = getter});
    return table_.controls.back();
  }

  Control &integer(std::string_view name, Range range, int64_t initial, std::string_view unit,
                   std::string_view text, std::string_view function, Setter setter, Getter getter) {
    return add(ControlKind::integer, name, {range}, {initial}, unit, text, {function}, setter,
               getter);
  }

  // A channel of a triple.
  void part(std::string_view of, std::string_view name, Range range, int64_t initial,
            std::string_view unit, std::string_view text, std::string_view function, Setter setter,
            Getter getter) {
    integer(name, range, initial, unit, text, function, setter, getter).stands_for = {of};
  }

  void flag(std::string_view name, int64_t initial, std::string_view text,
            std::vector<std::string_view> functions, Setter setter, Getter getter) {
    add(ControlKind::flag, name, {flag_range}, {initial}, "flag", text, std::move(functions),
        setter, getter);
  }

  void triple(std::string_view name, Range range, int64_t initial, std::string_view unit,
              std::string_view text, std::string_view function, Setter setter, Getter getter) {
    add(ControlKind::triple, name, {range}, {initial, initial, initial}, unit, text, {function},
        setter, getter);
  }

  void band(std::string_view name, Range range, int64_t low, int64_t high, std::string_view text,
            std::string_view function, Setter setter, Getter getter) {
    add(ControlKind::band, name, {range}, {low, high}, sample_unit, text, {function}, setter,
        getter)
        .limits = band_limits;
  }

  Control &bytes(std::string_view name, std::vector<int64_t> initial, std::string_view initial_text,
                 std::string_view text, std::string_view function, Setter setter, Getter getter) {
    Control &control = add(ControlKind::table, name, {byte_range}, std::move(initial), "bytes",
                           text, {function}, setter, getter);
    control.initial_text = initial_text;
    return control;
  }

  void follows(const uint8_t *(*followed)(const ControlState &)) {
    table_.access.back().followed = followed;
  }

  // The last control is the output's.
  void of_output(OutputField field) { table_.access.back() = {.field = field}; }

  Table take() { return std::move(table_); }

 private:
  std::string_view family_;
  Table table_;
};

std::vector<int64_t> identity() {
  std::vector<int64_t> table(256);
  std::iota(table.begin(), table.end(), 0);
  return table;
}

template <size_t size>
std::vector<int64_t> curve(const std::array<uint8_t, size> &family) {
  const auto *const from = &family[GammaFamilies::place(0)];
  return {from, from + 256};
}

template <size_t size>
std::vector<int64_t> whole(const std::array<uint8_t, size> &family) {
  return {family.begin(), family.end()};
}

void add_scale_and_tier(Builder &t) {
  t.family("Scale and tier");
  Control &decimation = t.add(
      ControlKind::list, "decimation", {{-1, 2}, {0, 1024}, {0, 1024}}, {0, 0, 0},
      "exponent of 2, lines, lines",
      "scale of the output: 1 halves, -1 doubles both sides; then the black lines above and below",
      {"ppl_set_decimation"}, nullptr, nullptr);
  decimation.optional_count = 2;
  decimation.limits = "what the format and the quality allow";
  t.of_output(OutputField::decimation);
  t.flag("P3_only", 0, "run the P3 tier even where the processor has SSE2", {"ppl_set_P3_only"},
         nullptr, nullptr);
  t.of_output(OutputField::tier);
}

void add_sensor_and_front_end(Builder &t) {
  t.family("Sensor and front end");
  Control &sensor =
      t.add(ControlKind::choice, "sensor_type", {{22356, 122965837}}, {0}, "code",
            "only judged: a known code is accepted, any other refused, and nothing is stored",
            {"ppl_set_sensor_type"}, judge_sensor_type, get<ppl_sensor_type>);
  for (const int64_t code : {22356, 22856, 4347471, 122965837})
    sensor.choices.push_back({code, "a known code"});
  sensor.initial_text = "none";
  sensor.is_kept = false;

  Control &quality = t.add(
      ControlKind::choice, "quality", {{0, 14}}, {3}, no_unit,
      "the pipeline: 3 and 13 single pass; 0, 1, 2, 10, 11, 12, 14 chains with interpolation and "
      "edge enhancement; 4 and 9 grey copy; 5 to 8 nothing",
      {"ppl_set_quality"}, nullptr, nullptr);
  quality.limits = "what makes a picture in the format and at the decimation";
  for (uint32_t number = 0; number <= 14; ++number)
    quality.choices.push_back({number, quality_text(number)});
  t.of_output(OutputField::quality);
  t.flag("mean_collection", 1, "gather statistics", {"ppl_set_mean_collection"}, nullptr, nullptr);
  t.of_output(OutputField::statistics);

  t.add(ControlKind::list, "optical_black_b_gb_gr_r", {byte_range}, {0, 0, 0, 0}, sample_unit,
        "black level of the four mosaic positions, subtracted first",
        {"ppl_set_optical_black_b_gb_gr_r"}, set<ppl_set_optical_black_b_gb_gr_r>,
        get_optical_black);
  t.triple("rgb_delta", word_range, 0, sample_unit, "offsets of red, green and blue after the gain",
           "ppl_set_rgb_delta", set<ppl_set_rgb_delta>, get<ppl_r_delta, ppl_g_delta, ppl_b_delta>);
  t.part("rgb_delta", "r_delta", word_range, 0, sample_unit, "offset of red alone",
         "ppl_set_r_delta", set<ppl_set_r_delta>, get<ppl_r_delta>);
  t.part("rgb_delta", "g_delta", word_range, 0, sample_unit, "offset of green alone",
         "ppl_set_g_delta", set<ppl_set_g_delta>, get<ppl_g_delta>);
  t.part("rgb_delta", "b_delta", word_range, 0, sample_unit, "offset of blue alone",
         "ppl_set_b_delta", set<ppl_set_b_delta>, get<ppl_b_delta>);
  t.triple("rgb_gain", gain_range, 256, fixed88_unit,
           "gains of red, green and blue; the lowest 3 bits have no effect", "ppl_set_rgb_gain",
           set<ppl_set_rgb_gain>, get<ppl_nf88_r_gain, ppl_nf88_g_gain, ppl_nf88_b_gain>);
  t.part("rgb_gain", "nf88_r_gain", gain_range, 256, fixed88_unit, "gain of red alone",
         "ppl_set_r_gain", set<ppl_set_r_gain>, get<ppl_nf88_r_gain>);
  t.part("rgb_gain", "nf88_g_gain", gain_range, 256, fixed88_unit, "gain of green alone",
         "ppl_set_g_gain", set<ppl_set_g_gain>, get<ppl_nf88_g_gain>);
  t.part("rgb_gain", "nf88_b_gain", gain_range, 256, fixed88_unit, "gain of blue alone",
         "ppl_set_b_gain", set<ppl_set_b_gain>, get<ppl_nf88_b_gain>);
  t.bytes("r_dekneel_table", identity(), "identity", inert_text, "ppl_copy_r_dekneel_table",
          set_table<ppl_copy_r_dekneel_table>, get_table<ppl_r_dekneel_table>);
  t.bytes("g_dekneel_table", identity(), "identity", inert_text, "ppl_copy_g_dekneel_table",
          set_table<ppl_copy_g_dekneel_table>, get_table<ppl_g_dekneel_table>);
  t.bytes("b_dekneel_table", identity(), "identity", inert_text, "ppl_copy_b_dekneel_table",
          set_table<ppl_copy_b_dekneel_table>, get_table<ppl_b_dekneel_table>);
  t.add(ControlKind::matrix, "sensor_matrix", {any_i32},
        {177, 88, -9, 24, 232, -1, 29, 62, 166, 410, -57, -97, -98, 423, -71, -84, -143, 486},
        fixed88_unit,
        "two colour matrices by rows R, G, B, the first for grey and the second for strongly "
        "coloured pixels",
        {"ppl_copy_sensor_matrix"}, set_sensor_matrix, get_sensor_matrix);
  t.integer("sensor_matrix_index_upper_bound", any_i32, 12, sample_unit,
            "colour difference at which the second matrix is reached; 0 acts as 1",
            "ppl_set_sensor_matrix_index_upper_bound", set<ppl_set_sensor_matrix_index_upper_bound>,
            get<ppl_sensor_matrix_index_upper_bound>);
  t.flag("h_mirror", 0, "mirror the picture left to right", {"ppl_set_h_mirror"}, nullptr, nullptr);
  t.of_output(OutputField::h_mirror);
  t.flag("v_mirror", 0, "mirror the picture top to bottom", {"ppl_set_v_mirror"}, nullptr, nullptr);
  t.of_output(OutputField::v_mirror);
}

void add_filters(Builder &t) {
  t.family("Filters");
  t.flag("medium_filter_enabled", 0, "repair hot and dead pixels (qualities 0, 1 and 2)",
         {"ppl_enable_medium_filter", "ppl_disable_medium_filter"}, set_medium_filter_enabled,
         get<ppl_medium_filter_enabled>);
  t.integer("medium_filter_diff_threshold", any_i32, 24, sample_unit, inert_text,
            "ppl_set_medium_filter_diff_threshold", set<ppl_set_medium_filter_diff_threshold>,
            get<ppl_medium_filter_diff_threshold>);
  t.integer("medium_filter_hot_pixel_threshold", word_range, 240, sample_unit,
            "above this level a pixel may be hot", "ppl_set_medium_filter_hot_pixel_threshold",
            set<ppl_set_medium_filter_hot_pixel_threshold>,
            get<ppl_medium_filter_hot_pixel_threshold>);
  t.integer("medium_filter_dead_pixel_threshold", word_range, 16, sample_unit,
            "below this level a pixel may be dead", "ppl_set_medium_filter_dead_pixel_threshold",
            set<ppl_set_medium_filter_dead_pixel_threshold>,
            get<ppl_medium_filter_dead_pixel_threshold>);
  t.integer("nf88_medium_filter_hot_pixel_threshold_percentage", percentage_range, 80, fixed88_unit,
            "factor of the sum of four neighbours above which a pixel is hot",
            "ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage",
            set<ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage>,
            get<ppl_nf88_medium_filter_hot_pixel_threshold_percentage>);
  t.integer("nf88_medium_filter_dead_pixel_threshold_percentage", percentage_range, 48,
            fixed88_unit, "factor of the sum of four neighbours below which a pixel is dead",
            "ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage",
            set<ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage>,
            get<ppl_nf88_medium_filter_dead_pixel_threshold_percentage>);
  t.integer("edge_threshold", {0, 1530}, 100, sum_unit,
            "summed difference from which edges are enhanced", "ppl_set_edge_threshold",
            set<ppl_set_edge_threshold>, get<ppl_edge_threshold>);
  t.integer("edge_threshold2", {0, 1530}, 1530, sum_unit,
            "summed difference up to which edges are enhanced", "ppl_set_edge_threshold2",
            set<ppl_set_edge_threshold2>, get<ppl_edge_threshold2>);
  t.integer("nf88_edge_enhance_factor", {0, 256}, 32, fixed88_unit,
            "strength of the edge enhancement", "ppl_set_nf88_edge_enhance_factor",
            set<ppl_set_nf88_edge_enhance_factor>, get<ppl_nf88_edge_enhance_factor>);
  t.integer("noise_filter_G_12T_threshold", {0, 3060}, 60, sum_unit, inert_text,
            "ppl_set_noise_filter_G_12T_threshold", set<ppl_set_noise_filter_G_12T_threshold>,
            get<ppl_noise_filter_G_12T_threshold>);
  t.integer("noise_filter_R_8T_threshold", {0, 2040}, 40, sum_unit, inert_text,
            "ppl_set_noise_filter_R_8T_threshold", set<ppl_set_noise_filter_R_8T_threshold>,
            get<ppl_noise_filter_R_8T_threshold>);
  t.integer("noise_filter_B_8T_threshold", {0, 2040}, 40, sum_unit, inert_text,
            "ppl_set_noise_filter_B_8T_threshold", set<ppl_set_noise_filter_B_8T_threshold>,
            get<ppl_noise_filter_B_8T_threshold>);
  t.integer("CFA_T0_threshold", {0, 255}, 10, sample_unit,
            "largest green difference in a flat cell (qualities 10 and 11)",
            "ppl_set_CFA_T0_threshold", set<ppl_set_CFA_T0_threshold>, get<ppl_CFA_T0_threshold>);
  t.integer("CFA_T1_threshold", {0, 63}, 15, sample_unit,
            "difference that steers the interpolation of green (chains)",
            "ppl_set_CFA_T1_threshold", set<ppl_set_CFA_T1_threshold>, get<ppl_CFA_T1_threshold>);
  t.integer("intl_3T_threshold", {0, 765}, 50, sum_unit,
            "motion test of interlaced video; raw frames do not use it",
            "ppl_set_intl_3T_threshold", set<ppl_set_intl_3T_threshold>,
            get<ppl_intl_3T_threshold>);
}

void add_gamma_and_contrast(Builder &t) {
  const GammaFamilies &families = built_in_gamma();
  t.family("Gamma");
  t.integer("gamma", {lowest_gamma, highest_gamma}, 0, "index",
            "curve of the family: exponent 0.45 at 0, 1 at -17; higher is brighter",
            "ppl_set_gamma", set_gamma, get_gamma);
  t.bytes("rgb_gamma_table", curve(families.full_range), "the curve of gamma",
          "the curve that every raw sample passes", "ppl_copy_rgb_gamma_table",
          set_table<ppl_copy_rgb_gamma_table>, get_table<ppl_rgb_gamma_table>);
  t.follows(full_range_curve);
  t.bytes("yuv_gamma_table", curve(families.studio), "the curve of gamma in the 16..235 family",
          "the luma curve of quality 13", "ppl_copy_yuv_gamma_table",
          set_table<ppl_copy_yuv_gamma_table>, get_table<ppl_yuv_gamma_table>);
  t.follows(studio_curve);
  t.bytes("gamma_tables65x256", whole(families.full_range), "built in",
          "the family itself, index -32 first; a later gamma=INDEX picks from it",
          "ppl_copy_gamma_tables65x256", set_family<ppl_copy_gamma_tables65x256>,
          get_family<ppl_get_gamma_tables65x256>)
      .process_wide = true;
  t.bytes("gamma_tables65x256_16_235", whole(families.studio), "built in",
          "the 16..235 family, index -32 first; a later gamma=INDEX picks from it",
          "ppl_copy_gamma_tables65x256_16_235", set_family<ppl_copy_gamma_tables65x256_16_235>,
          get_family<ppl_get_gamma_tables65x256_16_235>)
      .process_wide = true;

  t.family("Contrast");
  t.integer("contrast_c", {-127, 127}, 0, no_unit, "contrast: the curve and the gain of luma",
            "ppl_set_contrast_c", set_contrast_c, get_contrast_c);
  t.add(ControlKind::list, "contrast_xy", {{0, 127}, any_u32}, {0, 0}, sample_unit,
        "anchors of the contrast curve alone, which serves quality 13", {"ppl_set_contrast_xy"},
        set_contrast_xy, get_contrast_xy)
      .stands_for = {"contrast_table"};
  t.bytes("contrast_table", identity(), "the curve of contrast_c",
          "the contrast curve itself, which serves quality 13", "ppl_copy_contrast_table",
          set_table<ppl_copy_contrast_table>, get_table<ppl_contrast_table>);
  t.follows(contrast_curve);
}

void add_saturation_and_hue(Builder &t) {
  t.family("Saturation and hue");
  t.add(ControlKind::list, "sat_hue", {{0, 512}, any_i32}, {256, 0}, "8.8 fixed point, degrees",
        "saturation and hue together", {"ppl_set_sat_hue"}, set<ppl_set_sat_hue>,
        get<ppl_nf88_sat, ppl_hue_degree>)
      .stands_for = {"nf88_sat", "hue_degree"};
  t.integer("nf88_sat", {0, 512}, 256, fixed88_unit, "saturation; 0 is grey", "ppl_set_sat",
            set<ppl_set_sat>, get<ppl_nf88_sat>);
  t.integer("hue_degree", any_i32, 0, "degrees", "turns all colours; kept as 0 to 359",
            "ppl_set_hue", set<ppl_set_hue>, get<ppl_hue_degree>);
}

void add_bands(Builder &t) {
  t.family("Statistics bands");
  t.band("qual_BmGb", difference_range, -25, 25,
         "min,max of B - Gb for a cell that qualifies as near grey", "ppl_set_qual_BmGb_min_max",
         set<ppl_set_qual_BmGb_min_max>, get<ppl_qual_BmGb_min, ppl_qual_BmGb_max>);
  t.band("qual_GrmR", difference_range, -25, 25, "min,max of Gr - R", "ppl_set_qual_GrmR_min_max",
         set<ppl_set_qual_GrmR_min_max>, get<ppl_qual_GrmR_min, ppl_qual_GrmR_max>);
  t.band("qual_BmGb_p_GrmR", difference_range, -30, 30, "min,max of the sum of both differences",
         "ppl_set_qual_BmGb_p_GrmR_min_max", set<ppl_set_qual_BmGb_p_GrmR_min_max>,
         get<ppl_qual_BmGb_p_GrmR_min, ppl_qual_BmGb_p_GrmR_max>);
  t.band("qual_BmGb_m_GrmR", difference_range, -30, 30,
         "min,max of the difference of both differences", "ppl_set_qual_BmGb_m_GrmR_min_max",
         set<ppl_set_qual_BmGb_m_GrmR_min_max>,
         get<ppl_qual_BmGb_m_GrmR_min, ppl_qual_BmGb_m_GrmR_max>);
  t.band("qual_R", byte_range, 0, 255, "min,max of red", "ppl_set_qual_R_min_max",
         set<ppl_set_qual_R_min_max>, get<ppl_qual_R_min, ppl_qual_R_max>);
  t.band("qual_G", byte_range, 0, 255, "min,max of green", "ppl_set_qual_G_min_max",
         set<ppl_set_qual_G_min_max>, get<ppl_qual_G_min, ppl_qual_G_max>);
  t.band("qual_B", byte_range, 0, 255, "min,max of blue", "ppl_set_qual_B_min_max",
         set<ppl_set_qual_B_min_max>, get<ppl_qual_B_min, ppl_qual_B_max>);
  Control &all = t.add(ControlKind::list, "qual_RGB", {byte_range}, {0, 255, 0, 255, 0, 255},
                       sample_unit, "min,max of red, green and blue", {"ppl_set_qual_RGB_min_max"},
                       set<ppl_set_qual_RGB_min_max>,
                       get<ppl_qual_R_min, ppl_qual_R_max, ppl_qual_G_min, ppl_qual_G_max,
                           ppl_qual_B_min, ppl_qual_B_max>);
  all.stands_for = {"qual_R", "qual_G", "qual_B"};
  all.limits = "each minimum first";
  t.band("qAE_RGB", byte_range, 0, 255, "min,max of all channels for the exposure means",
         "ppl_set_qAE_RGB_min_max", set<ppl_set_qAE_RGB_min_max>,
         get<ppl_qAE_RGB_min, ppl_qAE_RGB_max>);
  t.triple("quals_rgb_gain", quals_gain_range, 256, fixed88_unit, inert_text,
           "ppl_set_quals_rgb_gain", set_without_result<ppl_set_quals_rgb_gain>,
           get<ppl_nf88_quals_r_gain, ppl_nf88_quals_g_gain, ppl_nf88_quals_b_gain>);
  t.part("quals_rgb_gain", "nf88_quals_r_gain", quals_gain_range, 256, fixed88_unit, inert_text,
         "ppl_set_quals_r_gain", set_without_result<ppl_set_quals_r_gain>,
         get<ppl_nf88_quals_r_gain>);
  t.part("quals_rgb_gain", "nf88_quals_g_gain", quals_gain_range, 256, fixed88_unit, inert_text,
         "ppl_set_quals_g_gain", set_without_result<ppl_set_quals_g_gain>,
         get<ppl_nf88_quals_g_gain>);
  t.part("quals_rgb_gain", "nf88_quals_b_gain", quals_gain_range, 256, fixed88_unit, inert_text,
         "ppl_set_quals_b_gain", set_without_result<ppl_set_quals_b_gain>,
         get<ppl_nf88_quals_b_gain>);
}

const Table &table() {
  static const Table built = [] {
    Builder builder;
    add_scale_and_tier(builder);
    add_sensor_and_front_end(builder);
    add_filters(builder);
    add_gamma_and_contrast(builder);
    add_saturation_and_hue(builder);
    add_bands(builder);
    return builder.take();
  }();
  return built;
}

size_t edit_distance(std::string_view a, std::string_view b) {
  std::vector<size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), size_t{0});
  for (size_t i = 1; i <= a.size(); ++i) {
    size_t diagonal = std::exchange(row[0], i);
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t change = diagonal + (a[i - 1] != b[j - 1] ? 1 : 0);
      diagonal = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, change});
    }
  }
  return row.back();
}

}  // namespace

ControlState fresh_state(PplContext *context) {
  ControlState state;
  state.context = context;
  keep_contrast_curve(state);
  return state;
}

size_t place_of(const Control &control) {
  return static_cast<size_t>(&control - table().controls.data());
}

const ControlAccess &access_of(const Control &control) { return table().access[place_of(control)]; }

}  // namespace detail

std::string_view name_of(ControlKind kind) {
  constexpr std::string_view names[] = {"integer", "flag",   "choice", "band",
                                        "triple",  "matrix", "list",   "table"};
  return names[static_cast<size_t>(kind)];
}

std::string Control::range_text() const {
  if (kind == ControlKind::table) return detail::words(count, " bytes");
  std::string text;
  if (!is_kept) {
    for (const Choice &choice : choices) {
      if (!text.empty()) text += &choice == &choices.back() ? " or " : ", ";
      text += std::to_string(choice.value);
    }
    return text;
  }
  for (const Range &range : ranges) {
    if (!text.empty()) text += ", ";
    const bool is_any = range.low == detail::any_i32.low && range.high == detail::any_i32.high;
    text += is_any ? "any 32-bit number" : detail::words(range.low, " to ", range.high);
  }
  if (count > 1 && ranges.size() == 1) text += " each";
  return text;
}

std::string Control::default_text() const {
  return initial_text.empty() ? values_text(initial) : std::string(initial_text);
}

std::span<const Control> control_table() { return detail::table().controls; }

const Control *find_control(std::string_view name) {
  for (const Control &control : control_table())
    if (control.name == name) return &control;
  return nullptr;
}

std::string_view nearest_control(std::string_view name) {
  const auto table = control_table();
  return std::min_element(table.begin(), table.end(),
                          [name](const Control &a, const Control &b) {
                            return detail::edit_distance(name, a.name) <
                                   detail::edit_distance(name, b.name);
                          })
      ->name;
}

const Control &control_named(std::string_view name) {
  if (const Control *control = find_control(name)) return *control;
  detail::refuse("there is no control '", name, "'; did you mean '", nearest_control(name), "'?");
}

}  // namespace ppl
