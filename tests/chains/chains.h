// Runs one hand-worked case of the multi-pass qualities on the library and on the reference model,
// each in both tiers.
#pragma once

#include <gtest/gtest.h>
#include <stdint.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "model/model.h"
#include "support/raw_frame.h"

namespace ppl_test::chains {

using Bytes = std::vector<uint8_t>;

inline constexpr std::array all_chains = {0u, 1u, 2u, 10u, 11u, 12u, 14u};
inline bool has_chain(uint32_t quality, Format format) { return quality != 14 || !is_rgb(format); }
inline bool has_filter(uint32_t quality) { return quality <= 2; }
inline bool is_packed(Format format) { return format == Format::yuyv || format == Format::uyvy; }

// A context of the library or one of the model.
struct EitherContext {
  ::PplContext *library = nullptr;
  ppl_model::PplContext *model = nullptr;
};

// A function that both have.
template <class Result, class LibraryContext, class ModelContext, class... Parameters>
class OnEither {
 public:
  constexpr OnEither(Result (*library)(LibraryContext *, Parameters...),
                     Result (*model)(ModelContext *, Parameters...))
      : library_(library), model_(model) {}
  Result operator()(const EitherContext &ctx, Parameters... parameters) const {
    return ctx.model != nullptr ? model_(ctx.model, parameters...)
                                : library_(ctx.library, parameters...);
  }

 private:
  Result (*library_)(LibraryContext *, Parameters...);
  Result (*model_)(ModelContext *, Parameters...);
};

#define PPL_ON_EITHER(name) \
  inline constexpr OnEither name { ::name, ppl_model::name }
PPL_ON_EITHER(ppl_free);
PPL_ON_EITHER(ppl_new_frame_size);
PPL_ON_EITHER(ppl_set_decimation);
PPL_ON_EITHER(ppl_set_P3_only);
PPL_ON_EITHER(ppl_set_quality);
PPL_ON_EITHER(ppl_set_mean_collection);
PPL_ON_EITHER(ppl_set_optical_black_b_gb_gr_r);
PPL_ON_EITHER(ppl_set_rgb_gain);
PPL_ON_EITHER(ppl_set_rgb_delta);
PPL_ON_EITHER(ppl_copy_rgb_gamma_table);
PPL_ON_EITHER(ppl_copy_r_dekneel_table);
PPL_ON_EITHER(ppl_copy_g_dekneel_table);
PPL_ON_EITHER(ppl_copy_b_dekneel_table);
PPL_ON_EITHER(ppl_copy_sensor_matrix);
PPL_ON_EITHER(ppl_set_sensor_matrix_index_upper_bound);
PPL_ON_EITHER(ppl_set_contrast_c);
PPL_ON_EITHER(ppl_set_h_mirror);
PPL_ON_EITHER(ppl_set_v_mirror);
PPL_ON_EITHER(ppl_enable_medium_filter);
PPL_ON_EITHER(ppl_disable_medium_filter);
PPL_ON_EITHER(ppl_set_medium_filter_diff_threshold);
PPL_ON_EITHER(ppl_set_medium_filter_hot_pixel_threshold);
PPL_ON_EITHER(ppl_set_medium_filter_dead_pixel_threshold);
PPL_ON_EITHER(ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage);
PPL_ON_EITHER(ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage);
PPL_ON_EITHER(ppl_set_edge_threshold);
PPL_ON_EITHER(ppl_set_edge_threshold2);
PPL_ON_EITHER(ppl_set_nf88_edge_enhance_factor);
PPL_ON_EITHER(ppl_set_CFA_T0_threshold);
PPL_ON_EITHER(ppl_set_CFA_T1_threshold);
PPL_ON_EITHER(ppl_set_qual_BmGb_min_max);
PPL_ON_EITHER(ppl_set_qual_GrmR_min_max);
PPL_ON_EITHER(ppl_set_qual_BmGb_p_GrmR_min_max);
PPL_ON_EITHER(ppl_set_qual_BmGb_m_GrmR_min_max);
PPL_ON_EITHER(ppl_set_qual_B_min_max);
PPL_ON_EITHER(ppl_set_qual_RGB_min_max);
PPL_ON_EITHER(ppl_set_qAE_RGB_min_max);
PPL_ON_EITHER(ppl_rgb_means_sub_windows);
PPL_ON_EITHER(ppl_rgb_means_outside_all_sub_windows);
PPL_ON_EITHER(ppl_rgb_means_all_sub_windows);
PPL_ON_EITHER(ppl_rgb_means_whole_frame);
PPL_ON_EITHER(ppl_qAE_rgb_means_whole_frame);
PPL_ON_EITHER(ppl_qual_rgb_means_whole_frame);
PPL_ON_EITHER(ppl_n_qAE_2x2_whole_frame);
PPL_ON_EITHER(ppl_n_qual_2x2_whole_frame);
PPL_ON_EITHER(ppl_r_histogram);
PPL_ON_EITHER(ppl_g_histogram);
PPL_ON_EITHER(ppl_b_histogram);
PPL_ON_EITHER(ppl_process_blrtoi420);
PPL_ON_EITHER(ppl_process_blrtoyuyv);
PPL_ON_EITHER(ppl_process_blrtouyvy);
PPL_ON_EITHER(ppl_process_blrtorgb24);
PPL_ON_EITHER(ppl_process_blrtorgb32);
#undef PPL_ON_EITHER

inline constexpr std::array drivers = {ppl_process_blrtoi420, ppl_process_blrtoyuyv,
                                       ppl_process_blrtouyvy, ppl_process_blrtorgb24,
                                       ppl_process_blrtorgb32};

enum class Channel { red, green, blue };

// Rounds up at the half.
inline uint8_t average(int a, int b) { return static_cast<uint8_t>((a + b + 1) >> 1); }
inline uint8_t clamp(int value) { return static_cast<uint8_t>(std::clamp(value, 0, 255)); }
inline int wrap16(int value) { return static_cast<int16_t>(value); }
// The outermost line or column is not repeated.
inline int reflect(int place, int size) {
  return place < 0 ? -place : place < size ? place : 2 * (size - 1) - place;
}

// With places that may be reckoned with.
struct Picture : ppl_test::Picture {
  uint8_t y(int x, int line) const { return ppl_test::Picture::y(size(x), size(line)); }
  uint8_t u(int pair, int line) const { return ppl_test::Picture::u(size(pair), size(line)); }
  uint8_t v(int pair, int line) const { return ppl_test::Picture::v(size(pair), size(line)); }
  Pixel pixel(int x, int line) const { return ppl_test::Picture::pixel(size(x), size(line)); }
  uint8_t fourth_byte(int x, int line) const {
    return ppl_test::Picture::fourth_byte(size(x), size(line));
  }
  uint8_t byte(int offset) const { return bytes[size(offset)]; }

 private:
  static size_t size(int place) { return static_cast<size_t>(place); }
};

struct Implementation {
  bool model;
  Tier tier;
};
inline constexpr std::array implementations = {
    Implementation{false, Tier::p3}, Implementation{false, Tier::sse2},
    Implementation{true, Tier::p3}, Implementation{true, Tier::sse2}};
inline std::ostream &operator<<(std::ostream &out, const Implementation &implementation) {
  return out << (implementation.model ? "Model" : "") << name_of(implementation.tier);
}
inline std::string implementation_name(const ::testing::TestParamInfo<Implementation> &info) {
  return ::testing::PrintToString(info.param);
}

// A mosaic of W by H samples, 100 each at first, with curve and matrices that leave samples alone:
// RGB output of qualities 1, 2, 11 and 12 shows demosaiced values as they are. Places are (x, y).
class Chains : public ::testing::TestWithParam<Implementation> {
 protected:
  static constexpr uint8_t untouched = 0xA5;

  void SetUp() override {
    if (GetParam().model) {
      ppl_model::machine::set_flags(flags_of_both_tiers);
      ppl_model::machine::reset_counts();
    } else {
      ppl::test_hooks::set_cpuid(nullptr);
      ppl::test_hooks::reset_counts();
      if (B() == 16 && !has_tier(Tier::sse2)) GTEST_SKIP() << "no SSE2 tier on this processor";
    }
    start();
  }

  // A context like a process has at its start.
  void start() {
    ctx = {};
    if (GetParam().model) {
      ppl_model::machine::reload_pool();
      ctx.model = ppl_model::ppl_init();
    } else {
      ppl::test_hooks::reload_pool();
      ctx.library = ::ppl_init();
    }
    make_neutral();
  }

  // Gives the context back and takes it again.
  void change_owner() {
    const EitherContext before = ctx;
    EXPECT_EQ(ppl_free(ctx), 1);
    if (GetParam().model) {
      ctx.model = ppl_model::ppl_init();
    } else {
      ctx.library = ::ppl_init();
    }
    ASSERT_EQ(ctx.model, before.model);
    ASSERT_EQ(ctx.library, before.library);
    make_neutral();
  }

  void make_neutral() {
    run_tier(GetParam().tier);
    Bytes identity(256);
    for (size_t i = 0; i < 256; ++i) identity[i] = static_cast<uint8_t>(i);
    ppl_copy_rgb_gamma_table(ctx, identity.data());
    set_matrices({256, 0, 0, 0, 256, 0, 0, 0, 256});
    set_size(128, 48);
  }

  int B() const { return GetParam().tier == Tier::p3 ? 8 : 16; }
  void run_tier(Tier tier) { ppl_set_P3_only(ctx, tier == Tier::p3); }

  // Makes the frame flat.
  void set_size(int width, int height, int stride = 0) {
    W = width;
    H = height;
    S = stride == 0 ? width : stride;
    ASSERT_EQ(ppl_new_frame_size(ctx, static_cast<uint32_t>(W), static_cast<uint32_t>(H),
                                 static_cast<uint32_t>(S)),
              1);
    fill(100);
  }
  void decimate(int32_t decimation, int32_t top = 0, int32_t bottom = 0) {
    ASSERT_EQ(ppl_set_decimation(ctx, decimation, top, bottom), 1);
    d = decimation;
    black_lines = top + bottom;
  }
  void mirror(int flags) {  // 1: across, 2: down
    ppl_set_h_mirror(ctx, static_cast<uint8_t>(flags & 1));
    ppl_set_v_mirror(ctx, static_cast<uint8_t>(flags >> 1));
  }

  void fill(uint8_t level) { frame.assign(static_cast<size_t>(S * H), level); }
  uint8_t &raw(int x, int y) { return frame[static_cast<size_t>(y * S + x)]; }
  template <class Value>  // value(x, y)
  void paint(Value value) {
    for (int y = 0; y < H; ++y)
      for (int x = 0; x < W; ++x) raw(x, y) = static_cast<uint8_t>(value(x, y));
  }
  void paint_cells(int b, int gb, int gr, int r) {
    paint([=](int x, int y) { return y % 2 == 0 ? (x % 2 == 0 ? b : gb) : (x % 2 == 0 ? gr : r); });
  }
  // Differs from sample to sample and from line to line, with no short period.
  void paint_texture() {
    paint([](int x, int y) { return x * 37 + y * 101 + (x * y) % 53 * 3 + (x ^ y) * 5; });
  }

  // One for grey and strong colour alike, in 8.8.
  void set_matrices(const std::array<int32_t, 9> &matrix) { set_matrices(matrix, matrix); }
  void set_matrices(const std::array<int32_t, 9> &grey, const std::array<int32_t, 9> &strong) {
    std::array<int32_t, 18> both;
    std::copy(grey.begin(), grey.end(), both.begin());
    std::copy(strong.begin(), strong.end(), both.begin() + 9);
    ASSERT_EQ(ppl_copy_sensor_matrix(ctx, both.data()), 1);
  }
  void set_default_matrices() {
    set_matrices({177, 88, -9, 24, 232, -1, 29, 62, 166},
                 {410, -57, -97, -98, 423, -71, -84, -143, 486});
  }
  // Every output channel shows this one. In RGB as it is, in all qualities.
  void show(Channel channel, int32_t weight = 256) {
    std::array<int32_t, 9> matrix{};
    for (size_t row = 0; row < 3; ++row) matrix[3 * row + static_cast<size_t>(channel)] = weight;
    set_matrices(matrix);
  }
  // Luma is the channel plus 16, held at 235: the studio row sums to 220, and 220 * 298 is 64 in
  // Q6. Chroma is 128.
  void show_in_luma(Channel channel) { show(channel, 298); }

  // The frame itself stays as it is; picture.consumed is what the run makes of it.
  Picture run(uint32_t quality, Format format) {
    EXPECT_EQ(ppl_set_quality(ctx, quality), 1);
    const auto scaled = [this](int length) { return d >= 0 ? length >> d : length * 2; };
    const int width = scaled(W), height = scaled(H) + black_lines;
    // Far more than is written, so that it shows what is not.
    Bytes output_storage(static_cast<size_t>(W * H * 16 + 32), untouched);
    Bytes source_storage(frame.size() + 16);
    uint8_t *output = aligned(output_storage), *source = aligned(source_storage);
    std::copy(frame.begin(), frame.end(), source);
    const uint8_t result =
        drivers[static_cast<size_t>(format)](ctx, source, output, static_cast<uint32_t>(W),
                                             static_cast<uint32_t>(H), static_cast<uint32_t>(S));
    EXPECT_EQ(result, 1);
    return {format, static_cast<size_t>(width),    static_cast<size_t>(height),
            result, {output, output + W * H * 16}, {source, source + frame.size()}};
  }

  // The frame after a run.
  uint8_t after(const Picture &picture, int x, int y) const {
    return picture.consumed_at(static_cast<size_t>(x), static_cast<size_t>(y),
                               static_cast<size_t>(S));
  }

  static bool same_picture(const Picture &a, const Picture &b) {
    return a.bytes == b.bytes && a.consumed == b.consumed;
  }

  EitherContext ctx;
  int W = 0, H = 0, S = 0;  // S: the stride
  int d = 0, black_lines = 0;
  Bytes frame;

 private:
  static uint8_t *aligned(Bytes &storage) {
    const auto address = reinterpret_cast<uintptr_t>(storage.data());
    return storage.data() + (16 - address % 16) % 16;
  }
};

#define PPL_CHAINS_SUITE(Name)   \
  class Name : public Chains {}; \
  INSTANTIATE_TEST_SUITE_P(, Name, ::testing::ValuesIn(implementations), implementation_name)

}  // namespace ppl_test::chains
