#include "compare/operations.h"

#include <algorithm>
#include <sstream>
#include <string_view>

#include "compare/call.h"
#include "compare/raw_frames.h"
#include "compare/snapshot.h"
#include "compare/video_frames.h"

namespace ppl_compare {

namespace hooks = ppl::test_hooks;

// ---- The generator's choices

Generator::Size Generator::size() {
  return palette[random.below(static_cast<uint32_t>(palette.size()))];
}

uint32_t Generator::quality() {
  if (random.one_in(12)) return random.pick<uint32_t>({15, 16, 255, 0x80000000u, 0xFFFFFFFFu});
  return options.qualities[random.below(static_cast<uint32_t>(options.qualities.size()))];
}

int32_t Generator::decimation() {
  if (random.one_in(10)) return random.pick<int32_t>({-2, 3, -100, 100, INT32_MIN, INT32_MAX});
  return options.decimations[random.below(static_cast<uint32_t>(options.decimations.size()))];
}

Pair *Session::stream(const Step &step) {
  std::vector<Pair *> live;
  for (Pair &pair : streams)
    if (pair.live()) live.push_back(&pair);
  return live.empty() ? nullptr : live[step.stream % live.size()];
}

namespace {

// ---- Arguments

void none(Generator &, Step &) {}

template <int32_t Low, int32_t High>
void one(Generator &generator, Step &step) {
  step.arguments[0] = generator.random.around(Low, High);
}

template <int32_t Low, int32_t High>
void three(Generator &generator, Step &step) {
  const bool strange = generator.random.one_in(4);
  for (size_t i = 0; i < 3; ++i)
    step.arguments[i] =
        strange ? generator.random.around(Low, High) : generator.random.between(Low, High);
}

void flag(Generator &generator, Step &step) {
  step.arguments[0] = generator.random.pick<int64_t>({0, 0, 1, 1, 2, 128, 255});
}

void quality(Generator &generator, Step &step) { step.arguments[0] = generator.quality(); }

void gains(Generator &generator, Step &step) {
  ppl_test::Random &random = generator.random;
  const bool strange = random.one_in(5);
  for (size_t i = 0; i < 3; ++i)
    step.arguments[i] = strange            ? random.around(0, 2047)
                        : random.one_in(6) ? random.pick<int64_t>({0, 7, 8, 255, 256, 2047})
                                           : random.between(128, 700);
}

void deltas(Generator &generator, Step &step) {
  ppl_test::Random &random = generator.random;
  const bool strange = random.one_in(5);
  for (size_t i = 0; i < 3; ++i)
    step.arguments[i] = strange ? random.around(-32768, 32767) : random.between(-40, 40);
}

void black_levels(Generator &generator, Step &step) {
  ppl_test::Random &random = generator.random;
  const bool strange = random.one_in(5);
  for (size_t i = 0; i < 4; ++i)
    step.arguments[i] = strange ? static_cast<uint32_t>(random.around(0, 255)) : random.below(40);
}

void sat_hue(Generator &generator, Step &step) {
  step.arguments[0] = static_cast<uint32_t>(generator.random.around(0, 512));
  step.arguments[1] =
      generator.random.one_in(3) ? generator.random.wild() : generator.random.between(-720, 720);
}

void saturation(Generator &generator, Step &step) {
  step.arguments[0] = static_cast<uint32_t>(generator.random.around(0, 512));
}

void hue(Generator &generator, Step &step) {
  step.arguments[0] = generator.random.one_in(3)
                          ? generator.random.wild()
                          : generator.random.pick<int64_t>({0, 1, 89, 90, 91, 179, 180, 181, 269,
                                                            270, 271, 359, 360, -1, -90, 720});
}

void contrast_c(Generator &generator, Step &step) {
  step.arguments[0] = generator.random.around(-127, 127);
  step.arguments[1] = generator.random.one_in(4) ? 0 : 1;  // null pointers are allowed
  step.arguments[2] = generator.random.one_in(4) ? 0 : 1;
}

void contrast_xy(Generator &generator, Step &step) {
  step.arguments[0] = static_cast<uint32_t>(generator.random.around(0, 127));
  // y is not examined. Its 16-fold leaves 32 bits somewhere above 2 to the 27.
  step.arguments[1] = generator.random.one_in(5)
                          ? generator.random.below(70000)
                          : static_cast<uint32_t>(generator.random.between(0, 255));
}

void word_band(Generator &generator, Step &step) {
  ppl_test::Random &random = generator.random;
  const bool strange = random.one_in(3);
  step.arguments[0] = strange ? random.around(-32767, 32766) : random.between(-255, 20);
  step.arguments[1] = strange ? random.around(-32767, 32766) : random.between(-20, 255);
}

void byte_band(Generator &generator, Step &step) {
  ppl_test::Random &random = generator.random;
  const bool strange = random.one_in(3);
  const int32_t low = strange ? random.around(0, 255) : random.between(0, 120);
  step.arguments[0] = low;
  step.arguments[1] = strange ? random.around(0, 255) : random.between(low, 255);
}

void three_byte_bands(Generator &generator, Step &step) {
  for (size_t i = 0; i < 6; i += 2) {
    Step band = step;
    byte_band(generator, band);
    step.arguments[i] = band.arguments[0];
    step.arguments[i + 1] = band.arguments[1];
  }
}

void table(Generator &generator, Step &step) {
  step.arguments[0] = generator.random.pick<int64_t>({1, 2});
}

void results(Generator &, Step &step) { step.arguments = {1, 1, 1, 1, 1, 1, 1}; }

void results_or_null(Generator &generator, Step &step) {
  for (int64_t &argument : step.arguments) argument = generator.random.one_in(3) ? 0 : 1;
}

void matrices(Generator &generator, Step &step) {
  // Matrices of any size are for the arithmetic of the derived entries.
  step.arguments[0] = generator.has_frames ? generator.random.pick<int64_t>({2, 2, 3, 3, 4, 5}) : 4;
}

void index_bound(Generator &generator, Step &step) {
  step.arguments[0] =
      generator.random.one_in(2) ? generator.random.between(0, 400) : generator.random.wild();
}

void frame_size(Generator &generator, Step &step) {
  ppl_test::Random &random = generator.random;
  const Generator::Size size = generator.size();
  step.arguments = {size.width, size.height, size.width};
  if (random.one_in(4)) {
    const uint32_t edge = random.pick<uint32_t>(
        {0,  1,  4,   8,   11,  12,   13,   14,   15,   16,   17,   40,   63,         64,
         65, 80, 127, 128, 129, 1023, 1024, 1025, 1279, 1280, 1281, 4096, 0xFFFFFFFFu});
    step.arguments[random.below(3)] = edge;
    if (random.one_in(2)) step.arguments[2] = step.arguments[0];
  }
  if (!generator.has_frames && random.one_in(3))
    step.arguments = {random.below(1300), random.below(1040), random.below(1300)};
}

}  // namespace

void frame_sizes(Generator &generator, Step &step) {
  ppl_test::Random &random = generator.random;
  static constexpr uint32_t widths[] = {160, 176, 320, 352, 480, 640, 704, 720, 1280};
  static constexpr uint32_t heights[] = {120, 144, 240, 288, 480, 576, 600, 960, 1024};
  static constexpr uint32_t modes[][4] = {
      {1280, 1024, 1280, 1024}, {320, 240, 320, 240}, {320, 240, 160, 120}, {640, 480, 640, 480},
      {640, 480, 1280, 960},    {640, 480, 320, 240}, {640, 480, 160, 120}, {640, 480, 352, 240},
      {640, 480, 352, 288},     {480, 480, 480, 576}, {480, 576, 480, 480}, {704, 576, 352, 300},
      {704, 480, 352, 239},     {704, 480, 704, 483}, {704, 576, 176, 150}, {720, 480, 720, 576},
      {720, 576, 720, 576},     {480, 480, 480, 480}, {704, 480, 176, 120}};
  if (random.one_in(3)) {
    for (size_t i = 0; i < 4; i += 2) {
      step.arguments[i] = widths[random.below(std::size(widths))];
      step.arguments[i + 1] = heights[random.below(std::size(heights))];
    }
  } else {
    const auto &mode = modes[random.below(std::size(modes))];
    std::copy(std::begin(mode), std::end(mode), step.arguments.begin());
  }
  if (random.one_in(4)) step.arguments[3] += random.between(-3, 14);
}

namespace {

void decimation(Generator &generator, Step &step) {
  ppl_test::Random &random = generator.random;
  step.arguments[0] = generator.decimation();
  const bool lines = random.one_in(generator.options.packed_video ? 2 : 4);
  step.arguments[1] = lines ? random.below(9) : 0;
  step.arguments[2] = lines ? random.below(9) : 0;
  if (!generator.has_frames && random.one_in(3)) {
    step.arguments[1] = random.wild();
    step.arguments[2] = random.between(-100000, 100000);
    step.arguments[1] = std::clamp<int64_t>(step.arguments[1], -1000000, 1000000);
  }
}

void failing_saves(Generator &generator, Step &step) {
  step.arguments[0] = generator.random.below(4);
  step.arguments[1] = 1 + generator.random.below(3);
}

// ---- Steps that are no plain call

std::string open_stream(Session &session, const Step &) {
  Pair opened{::ppl_init(), ppl_model::ppl_init()};
  if (!ppl_test::x87_is_clean()) return "left MMX state behind";
  if ((opened.library == nullptr) != (opened.model == nullptr)) return "one side has a context";
  if (opened.library == nullptr) return {};
  for (size_t slot = 0; slot < session.streams.size(); ++slot)
    if (session.streams[slot].library == opened.library) return "context handed out twice";
  // The first context of a case stands in the first slot.
  static ::PplContext *first_slot = nullptr;
  const int expected = ppl_model::slot_of(opened.model);
  if (session.streams.empty() && expected == 0) first_slot = opened.library;
  if (opened.library - first_slot != expected)
    return "slot: expected " + std::to_string(expected) + ", got " +
           std::to_string(opened.library - first_slot);
  // Statistics live in the slot, so a reclaimed slot keeps what was unknown about them.
  for (Pair &pair : session.streams)
    if (!pair.live() && pair.statistics_are_free) opened.statistics_are_free = true;
  session.streams.push_back(opened);
  return {};
}

std::string close_stream(Session &session, const Step &step) {
  Pair *pair = session.stream(step);
  if (pair == nullptr) {
    if (::ppl_free(nullptr) != ppl_model::ppl_free(nullptr)) return "result for null";
    return {};
  }
  const uint8_t actual = ::ppl_free(pair->library), expected = ppl_model::ppl_free(pair->model);
  if (expected != actual) return "result differs";
  // Once more: a slot that is free already.
  if (::ppl_free(pair->library) != ppl_model::ppl_free(pair->model)) return "second result differs";
  pair->library = nullptr;
  pair->model = nullptr;
  return {};
}

std::string fail_saves(Session &session, const Step &step) {
  const auto good = static_cast<uint32_t>(step.arguments[0]);
  const auto failing = static_cast<uint32_t>(step.arguments[1]);
  hooks::fail_saves(good, failing);
  ppl_model::machine::fail_saves(good, failing);
  session.good_saves_left = good;
  session.failing_saves_left = failing;
  return {};
}

template <auto LibraryFunction, auto ModelFunction>
std::string change_families(Session &session, const Step &step) {
  if (auto text = Call<LibraryFunction, ModelFunction>::run(session, step); !text.empty())
    return text;
  return compare_gamma_families();
}

// ---- Frames

// Table of one format's five entries and its driver: a row each.
#define PPL_COMPARE_RAW_ENTRY(name, format, stride_factor, decimation)                             \
  std::string run_##name(Session &session, const Step &step) {                                     \
    static constexpr RawFunction function{PixelFormat::format, stride_factor, decimation, &::name, \
                                          &ppl_model::name};                                       \
    return run_raw_frame(session, step, function);                                                 \
  }
#define PPL_COMPARE_RAW_DRIVER(name, format)                                                    \
  std::string run_##name(Session &session, const Step &step) {                                  \
    static constexpr RawFunction function{PixelFormat::format, 1, 0, nullptr, nullptr, &::name, \
                                          &ppl_model::name};                                    \
    return run_raw_frame(session, step, function);                                              \
  }
// The refused minus 2 of _intp_1_4_stride leaves the decimation as it is.
#define PPL_COMPARE_RAW_FORMAT(Name, name, format)                          \
  PPL_COMPARE_RAW_ENTRY(BaylorTo##Name##MMX, format, 1, 0)                  \
  PPL_COMPARE_RAW_ENTRY(BaylorTo##Name##MMX_deci_2_1, format, 1, 1)         \
  PPL_COMPARE_RAW_ENTRY(BaylorTo##Name##MMX_intp_1_2, format, 1, -1)        \
  PPL_COMPARE_RAW_ENTRY(BaylorTo##Name##MMX_intp_1_2_stride, format, 2, -1) \
  PPL_COMPARE_RAW_ENTRY(BaylorTo##Name##MMX_intp_1_4_stride, format, 4, 0)  \
  PPL_COMPARE_RAW_DRIVER(ppl_process_blrto##name, format)

PPL_COMPARE_RAW_FORMAT(I420, i420, i420)
PPL_COMPARE_RAW_FORMAT(YUYV, yuyv, yuyv)
PPL_COMPARE_RAW_FORMAT(UYVY, uyvy, uyvy)
PPL_COMPARE_RAW_FORMAT(RGB24, rgb24, rgb24)
PPL_COMPARE_RAW_FORMAT(RGB32, rgb32, rgb32)

#define PPL_COMPARE_VIDEO(name, source, format, is_entry)                                          \
  std::string run_##name(Session &session, const Step &step) {                                     \
    static constexpr VideoFunction function{VideoSource::source, PixelFormat::format, is_entry,    \
                                            &call_video<&::name, ::PplContext>,                    \
                                            &call_video<&ppl_model::name, ppl_model::PplContext>}; \
    return run_video_frame(session, step, function);                                               \
  }
// Entry function and driver of a conversion.
#define PPL_COMPARE_PACKED(Name, name, source, format) \
  PPL_COMPARE_VIDEO(Name##MMX, source, format, true)   \
  PPL_COMPARE_VIDEO(ppl_process_##name, source, format, false)
#define PPL_COMPARE_FIELDS(Name, format)                   \
  PPL_COMPARE_VIDEO(Intl##Name##MMX, fields, format, true) \
  PPL_COMPARE_VIDEO(Intl##Name##MMX_no_motion, fields, format, true)
#define PPL_COMPARE_FIELDS_DRIVER(name, format) \
  PPL_COMPARE_VIDEO(ppl_process_intl##name, fields, format, false)

PPL_COMPARE_PACKED(YUYVToI420, yuyvtoi420, packed, i420)
PPL_COMPARE_PACKED(UYVYToI420, uyvytoi420, packed, i420)
PPL_COMPARE_PACKED(YUYVToRGB24, yuyvtorgb24, packed, rgb24)
PPL_COMPARE_PACKED(UYVYToRGB24, uyvytorgb24, packed, rgb24)
PPL_COMPARE_PACKED(YUYVYYYYToI420, yuyvyyyytoi420, yyyy, i420)
PPL_COMPARE_PACKED(UYVYYYYYToI420, uyvyyyyytoi420, yyyy, i420)
PPL_COMPARE_PACKED(RGB24ToRGB32, rgb24torgb32, rgb24, rgb32)
PPL_COMPARE_FIELDS(YUYVToYUYV, yuyv)
PPL_COMPARE_FIELDS(UYVYToUYVY, uyvy)
PPL_COMPARE_FIELDS(UYVYToYUYV, yuyv)
PPL_COMPARE_FIELDS(YUYVToUYVY, uyvy)
PPL_COMPARE_FIELDS(YUYVToI420, i420)
PPL_COMPARE_FIELDS(UYVYToI420, i420)
PPL_COMPARE_FIELDS(YUYVToRGB24, rgb24)
PPL_COMPARE_FIELDS(UYVYToRGB24, rgb24)
PPL_COMPARE_FIELDS_DRIVER(yuyvtoyuyv, yuyv)
PPL_COMPARE_FIELDS_DRIVER(uyvytouyvy, uyvy)
PPL_COMPARE_FIELDS_DRIVER(yuyvtoi420, i420)
PPL_COMPARE_FIELDS_DRIVER(uyvytoi420, i420)
PPL_COMPARE_FIELDS_DRIVER(yuyvtorgb24, rgb24)
PPL_COMPARE_FIELDS_DRIVER(uyvytorgb24, rgb24)

// ---- The table

#define PLAIN(name, control_weight, frame_weight, generate) \
  { #name, control_weight, frame_weight, generate, &Call < &::name, &ppl_model::name> ::run }
#define FAMILIES(name, weight, generate) \
  { #name, weight, weight, generate, &change_families < &::name, &ppl_model::name> }
#define FRAME(name, weight) \
  { #name, 0, weight, &generate_raw_frame, &run_##name }
#define FRAMES_OF(Name, name)                                                                 \
  FRAME(BaylorTo##Name##MMX, 40), FRAME(BaylorTo##Name##MMX_deci_2_1, 20),                    \
      FRAME(BaylorTo##Name##MMX_intp_1_2, 12), FRAME(BaylorTo##Name##MMX_intp_1_2_stride, 6), \
      FRAME(BaylorTo##Name##MMX_intp_1_4_stride, 6), FRAME(ppl_process_blrto##name, 70)
#define VIDEO(name) \
  { #name, 0, 2, &generate_video_frame, &run_##name }
#define PACKED(Name, name) VIDEO(Name##MMX), VIDEO(ppl_process_##name)
#define FIELDS(Name) VIDEO(Intl##Name##MMX), VIDEO(Intl##Name##MMX_no_motion)

constexpr Operation table_of_operations[] = {
    {"ppl_init", 2, 2, &none, &open_stream},
    {"ppl_free", 1, 1, &none, &close_stream},
    {"fail_saves", 8, 6, &failing_saves, &fail_saves},

    PLAIN(ppl_new_frame_size, 12, 12, &frame_size),
    PLAIN(ppl_new_frame_sizes, 12, 1, &frame_sizes),
    PLAIN(ppl_set_decimation, 12, 30, &decimation),
    PLAIN(ppl_reset_decimation, 2, 2, &none),
    PLAIN(ppl_set_P3_only, 4, 20, &flag),
    PLAIN(ppl_reset_P3_only, 1, 4, &none),

    PLAIN(ppl_set_sensor_type, 2, 0, ([](Generator &generator, Step &step) {
            step.arguments[0] = generator.random.pick<int64_t>(
                {22356, 22856, 4347471, 122965837, 22355, 22357, 0, -1, 122965838});
          })),
    PLAIN(ppl_set_quality, 6, 40, &quality),
    PLAIN(ppl_reset_quality, 1, 4, &none),
    PLAIN(ppl_set_mean_collection, 4, 12, &flag),
    PLAIN(ppl_reset_mean_collection, 1, 6, &none),
    PLAIN(ppl_set_optical_black_b_gb_gr_r, 6, 8, &black_levels),
    PLAIN(ppl_reset_optical_black_b_gb_gr_r, 1, 3, &none),
    PLAIN(ppl_set_rgb_delta, 6, 6, &deltas),
    PLAIN(ppl_set_r_delta, 3, 1, &deltas),
    PLAIN(ppl_set_g_delta, 3, 1, &deltas),
    PLAIN(ppl_set_b_delta, 3, 1, &deltas),
    PLAIN(ppl_reset_rgb_delta, 1, 3, &none),
    PLAIN(ppl_set_rgb_gain, 6, 8, &gains),
    PLAIN(ppl_set_r_gain, 3, 1, &gains),
    PLAIN(ppl_set_g_gain, 3, 1, &gains),
    PLAIN(ppl_set_b_gain, 3, 1, &gains),
    PLAIN(ppl_reset_rgb_gain, 1, 3, &none),
    PLAIN(ppl_copy_r_dekneel_table, 1, 1, &table),
    PLAIN(ppl_copy_g_dekneel_table, 1, 1, &table),
    PLAIN(ppl_copy_b_dekneel_table, 1, 1, &table),
    PLAIN(ppl_reset_rgb_dekneel_table, 1, 1, &none),
    PLAIN(ppl_sensor_matrix, 1, 0, &results),
    PLAIN(ppl_copy_sensor_matrix, 8, 6, &matrices),
    PLAIN(ppl_reset_sensor_matrix, 1, 3, &none),
    PLAIN(ppl_set_sensor_matrix_index_upper_bound, 4, 2, &index_bound),
    PLAIN(ppl_reset_sensor_matrix_index_upper_bound, 1, 1, &none),
    PLAIN(ppl_set_h_mirror, 3, 20, &flag),
    PLAIN(ppl_set_v_mirror, 3, 20, &flag),
    PLAIN(ppl_reset_mirrors, 1, 4, &none),

    PLAIN(ppl_set_medium_filter_diff_threshold, 2, 1, (&one<-32768, 32767>)),
    PLAIN(ppl_set_medium_filter_hot_pixel_threshold, 2, 1, (&one<-32768, 32767>)),
    PLAIN(ppl_set_medium_filter_dead_pixel_threshold, 2, 1, (&one<-32768, 32767>)),
    PLAIN(ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage, 2, 1, (&one<-65536, 65535>)),
    PLAIN(ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage, 2, 1, (&one<-65536, 65535>)),
    PLAIN(ppl_enable_medium_filter, 1, 2, &none),
    PLAIN(ppl_disable_medium_filter, 1, 2, &none),
    PLAIN(ppl_reset_medium_filter, 2, 1, &none),
    PLAIN(ppl_set_edge_threshold, 2, 1, (&one<0, 1530>)),
    PLAIN(ppl_reset_edge_threshold, 1, 1, &none),
    PLAIN(ppl_set_edge_threshold2, 2, 1, (&one<0, 1530>)),
    PLAIN(ppl_reset_edge_threshold2, 1, 1, &none),
    PLAIN(ppl_set_nf88_edge_enhance_factor, 2, 1, (&one<0, 256>)),
    PLAIN(ppl_reset_nf88_edge_enhance_factor, 1, 1, &none),
    PLAIN(ppl_set_noise_filter_G_12T_threshold, 2, 1, (&one<0, 3060>)),
    PLAIN(ppl_reset_noise_filter_G_12T_threshold, 1, 1, &none),
    PLAIN(ppl_set_noise_filter_R_8T_threshold, 2, 1, (&one<0, 2040>)),
    PLAIN(ppl_reset_noise_filter_R_8T_threshold, 1, 1, &none),
    PLAIN(ppl_set_noise_filter_B_8T_threshold, 2, 1, (&one<0, 2040>)),
    PLAIN(ppl_reset_noise_filter_B_8T_threshold, 1, 1, &none),
    PLAIN(ppl_set_CFA_T0_threshold, 2, 1, (&one<0, 255>)),
    PLAIN(ppl_reset_CFA_T0_threshold, 1, 1, &none),
    PLAIN(ppl_set_CFA_T1_threshold, 2, 1, (&one<0, 63>)),
    PLAIN(ppl_reset_CFA_T1_threshold, 1, 1, &none),
    PLAIN(ppl_set_intl_3T_threshold, 2, 1, (&one<0, 765>)),
    PLAIN(ppl_reset_intl_3T_threshold, 1, 1, &none),

    PLAIN(ppl_set_gamma, 6, 10, (&one<-32, 32>)),
    PLAIN(ppl_reset_gamma, 1, 3, &none),
    PLAIN(ppl_nf20_12_gamma, 1, 0, &results_or_null),
    PLAIN(ppl_copy_yuv_gamma_table, 2, 4, &table),
    PLAIN(ppl_get_yuv_gamma_table, 1, 0, &results),
    PLAIN(ppl_copy_rgb_gamma_table, 2, 8, &table),
    PLAIN(ppl_get_rgb_gamma_table, 1, 0, &results),
    FAMILIES(ppl_copy_gamma_tables65x256, 1, &table),
    PLAIN(ppl_get_gamma_tables65x256, 1, 0, &results),
    FAMILIES(ppl_copy_gamma_tables65x256_16_235, 1, &table),
    PLAIN(ppl_get_gamma_tables65x256_16_235, 1, 0, &results),

    PLAIN(ppl_set_contrast_c, 6, 6, &contrast_c),
    PLAIN(ppl_set_contrast_xy, 6, 4, &contrast_xy),
    PLAIN(ppl_reset_contrast, 1, 2, &none),
    PLAIN(ppl_copy_contrast_table, 2, 2, &table),

    PLAIN(ppl_set_sat_hue, 6, 4, &sat_hue),
    PLAIN(ppl_set_sat, 3, 2, &saturation),
    PLAIN(ppl_set_hue, 3, 2, &hue),
    PLAIN(ppl_reset_sat_hue, 1, 2, &none),

    PLAIN(ppl_set_qual_BmGb_min_max, 3, 4, &word_band),
    PLAIN(ppl_set_qual_GrmR_min_max, 3, 4, &word_band),
    PLAIN(ppl_set_qual_BmGb_p_GrmR_min_max, 3, 4, &word_band),
    PLAIN(ppl_set_qual_BmGb_m_GrmR_min_max, 3, 4, &word_band),
    PLAIN(ppl_set_qual_R_min_max, 3, 3, &byte_band),
    PLAIN(ppl_set_qual_G_min_max, 3, 3, &byte_band),
    PLAIN(ppl_set_qual_B_min_max, 3, 3, &byte_band),
    PLAIN(ppl_set_qual_RGB_min_max, 3, 3, &three_byte_bands),
    PLAIN(ppl_reset_qual_min_max, 1, 3, &none),
    PLAIN(ppl_set_qAE_RGB_min_max, 3, 6, &byte_band),
    PLAIN(ppl_reset_qAE_min_max, 1, 2, &none),
    PLAIN(ppl_set_quals_rgb_gain, 3, 1, (&three<0, 1023>)),
    PLAIN(ppl_set_quals_r_gain, 2, 1, (&one<0, 1023>)),
    PLAIN(ppl_set_quals_g_gain, 2, 1, (&one<0, 1023>)),
    PLAIN(ppl_set_quals_b_gain, 2, 1, (&one<0, 1023>)),
    PLAIN(ppl_reset_quals_rgb_gain, 1, 1, &none),

    PLAIN(ppl_reset_all_controls, 2, 3, &none),
    PLAIN(ppl_n_sub_windows, 1, 0, &results),

    FRAMES_OF(I420, i420),
    FRAMES_OF(YUYV, yuyv),
    FRAMES_OF(UYVY, uyvy),
    FRAMES_OF(RGB24, rgb24),
    FRAMES_OF(RGB32, rgb32),

    PACKED(YUYVToI420, yuyvtoi420),
    PACKED(UYVYToI420, uyvytoi420),
    PACKED(YUYVToRGB24, yuyvtorgb24),
    PACKED(UYVYToRGB24, uyvytorgb24),
    PACKED(YUYVYYYYToI420, yuyvyyyytoi420),
    PACKED(UYVYYYYYToI420, uyvyyyyytoi420),
    PACKED(RGB24ToRGB32, rgb24torgb32),
    FIELDS(YUYVToYUYV),
    FIELDS(UYVYToUYVY),
    FIELDS(UYVYToYUYV),
    FIELDS(YUYVToUYVY),
    FIELDS(YUYVToI420),
    FIELDS(UYVYToI420),
    FIELDS(YUYVToRGB24),
    FIELDS(UYVYToRGB24),
    VIDEO(ppl_process_intlyuyvtoyuyv),
    VIDEO(ppl_process_intluyvytouyvy),
    VIDEO(ppl_process_intlyuyvtoi420),
    VIDEO(ppl_process_intluyvytoi420),
    VIDEO(ppl_process_intlyuyvtorgb24),
    VIDEO(ppl_process_intluyvytorgb24),
};

}  // namespace

std::span<const Operation> operations() { return table_of_operations; }

size_t operation_index(const char *name) {
  const auto all = operations();
  for (size_t i = 0; i < all.size(); ++i)
    if (std::string_view(all[i].name) == name) return i;
  return all.size();
}

std::string describe(const Step &step) {
  std::ostringstream out;
  out << operations()[step.operation].name << "(stream " << step.stream;
  size_t count = step.arguments.size();
  while (count > 0 && step.arguments[count - 1] == 0) --count;
  for (size_t i = 0; i < count; ++i) out << ", " << step.arguments[i];
  out << ") seed " << step.seed;
  return out.str();
}

}  // namespace ppl_compare
