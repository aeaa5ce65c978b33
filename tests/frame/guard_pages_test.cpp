// Every raw entry in buffers of exactly the documented sizes, directly before and directly behind
// unreadable pages.
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "support/combinations.h"
#include "support/raw_frame.h"

namespace ppl_test {
namespace {

constexpr std::array both_placements = {Placement::ends_at_guard, Placement::begins_behind_guard};
constexpr std::array all_mirrors = {0, 1, 2, 3};  // 1: across, 2: down

class GuardPages : public RawFrameFormatTest {
 protected:
  void set_mirrors(int mirrors) {
    ppl_set_h_mirror(ctx, mirrors & 1);
    ppl_set_v_mirror(ctx, static_cast<uint8_t>(mirrors / 2));
  }

  static void fill(GuardedBuffer &source) {
    for (size_t i = 0; i < source.size(); ++i) source[i] = static_cast<uint8_t>(i * 73 + i / 127);
  }

  // Checks what must hold after every call.
  static void expect_clean(const GuardedBuffer &source, const GuardedBuffer &output) {
    EXPECT_TRUE(x87_is_clean());
    EXPECT_FALSE(source.slack_damage());
    EXPECT_FALSE(output.slack_damage());
  }

  // A frame of a variant in a context without a decimation, and its picture.
  struct Frame {
    uint8_t result;
    std::vector<uint8_t> bytes;
  };
  Frame run_entry(Variant variant, const FrameSize &size, Placement placement) {
    ppl_set_decimation(ctx, 0, 0, 0);
    const int32_t d = decimation_of(variant);
    GuardedBuffer source(size_t{size.width} * stride_factor(variant) * size.height, placement);
    GuardedBuffer output(
        picture_bytes(format(), scaled_length(size.width, d), scaled_length(size.height, d)),
        placement);
    Frame frame{};
    for (int call = 0; call < 2; ++call) {  // the first one settles the geometry
      fill(source);
      output.fill_with_poison();
      frame.result =
          raw_entry(format(), variant)(ctx, source.data(), output.data(), size.width, size.height);
      expect_clean(source, output);
    }
    frame.bytes.assign(output.begin(), output.end());
    return frame;
  }
};
INSTANTIATE_TEST_SUITE_P(Formats, GuardPages,
                         ::testing::Combine(::testing::ValuesIn(both_tiers),
                                            ::testing::ValuesIn(all_formats)),
                         tier_format_name);

TEST_P(GuardPages, EveryEntryStaysInsideItsBuffers) {
  constexpr FrameSize sizes[] = {{128, 22}, {130, 14}, {144, 15}, {152, 26}, {320, 24}};
  for (const auto &[size, variant, mirrors] : combinations(sizes, all_variants, all_mirrors)) {
    SCOPED_TRACE(testing::Message() << name_of(variant) << " " << size.width << " by "
                                    << size.height << " mirrors " << mirrors);
    set_mirrors(mirrors);
    const Frame first = run_entry(variant, size, Placement::ends_at_guard);
    const Frame second = run_entry(variant, size, Placement::begins_behind_guard);
    EXPECT_EQ(first.result, 1);
    EXPECT_EQ(second.result, 1);
    EXPECT_EQ(first.bytes, second.bytes);
  }
}

TEST_P(GuardPages, EveryQualityStaysInsideItsBuffers) {
  constexpr std::array qualities = {3u, 4u, 5u, 9u, 13u};
  for (const auto &[quality, variant, placement] :
       combinations(qualities, all_variants, both_placements)) {
    SCOPED_TRACE(testing::Message() << "quality " << quality << " " << name_of(variant));
    ppl_set_quality(ctx, quality);
    // A size that fills the copy groups, since those are copied whole.
    run_entry(variant, {160, 24}, placement);
  }
}

// The multi-pass qualities, at every decimation, in buffers of the sizes that ppl.h asks for.
struct Chain {
  uint32_t quality;
  bool filter;
};
constexpr Chain chains[] = {{0, false}, {0, true},   {1, false},  {1, true},   {2, false},
                            {2, true},  {10, false}, {11, false}, {12, false}, {14, false}};

class GuardedChains : public GuardPages {
 protected:
  // As near to a page as the tier allows: SSE2 wants both buffers at 16-byte boundaries.
  unsigned alignment(size_t size, Placement placement) const {
    const bool exact = tier() == Tier::p3 && placement == Placement::ends_at_guard;
    return exact ? static_cast<unsigned>(0 - size) % 16 : 0;
  }

  size_t output_bytes(const FrameSize &size, int32_t d) const {
    const size_t declared =
        picture_bytes(format(), scaled_length(size.width, d), scaled_length(size.height, d));
    const size_t unit = format() == Format::i420 ? 1 : picture_bytes(format(), 1, 1);
    return d == 2 ? declared + size_t{size.width} * size.height / 4 * unit : declared;
  }

  // What the frame leaves in the output.
  std::vector<uint8_t> run_guarded(const FrameSize &size, uint32_t stride, int32_t d,
                                   Placement placement) {
    const size_t source_size = size_t{stride} * size.height;
    const size_t output_size = output_bytes(size, d);
    GuardedBuffer source(source_size, placement, alignment(source_size, placement));
    GuardedBuffer output(output_size, placement, alignment(output_size, placement));
    fill(source);
    EXPECT_EQ(
        raw_driver(format())(ctx, source.data(), output.data(), size.width, size.height, stride),
        1);
    expect_clean(source, output);
    return {output.begin(), output.end()};
  }
};
INSTANTIATE_TEST_SUITE_P(Formats, GuardedChains,
                         ::testing::Combine(::testing::ValuesIn(both_tiers),
                                            ::testing::ValuesIn(all_formats)),
                         tier_format_name);

TEST_P(GuardedChains, StayInsideTheirBuffers) {
  constexpr FrameSize sizes[] = {{130, 24}, {136, 14}, {144, 15}, {154, 22}, {176, 26}};
  struct Stride {
    uint32_t widths, bytes;
  };
  constexpr Stride strides[] = {{1, 0}, {1, 24}, {2, 0}};
  constexpr std::array decimations = {-1, 0, 1, 2};
  for (const auto &[size, distance, d, chain, mirrors] :
       combinations(sizes, strides, decimations, chains, all_mirrors)) {
    const uint32_t stride = distance.widths * size.width + distance.bytes;
    SCOPED_TRACE(testing::Message() << "quality " << chain.quality << " filter " << chain.filter
                                    << " " << size.width << " by " << size.height << " stride "
                                    << stride << " decimation " << d << " mirrors " << mirrors);
    ppl_set_decimation(ctx, d, 0, 0);
    ASSERT_EQ(ppl_new_frame_size(ctx, size.width, size.height, stride), 1);
    ppl_set_quality(ctx, chain.quality);
    chain.filter ? ppl_enable_medium_filter(ctx) : ppl_disable_medium_filter(ctx);
    set_mirrors(mirrors);
    const auto first = run_guarded(size, stride, d, Placement::ends_at_guard);
    const auto second = run_guarded(size, stride, d, Placement::begins_behind_guard);
    EXPECT_TRUE(first == second);
  }
}

TEST_P(GuardPages, FallbacksStayInsideTheirBuffers) {
  for (const auto &[placement, variant] : combinations(both_placements, all_variants)) {
    const uint32_t width = 134, height = 14, n = width * height;
    const bool half = variant == Variant::deci_2_1;
    const bool up = !half && variant != Variant::plain;
    // The doubling fallbacks read four frames' worth of bytes.
    GuardedBuffer source(half ? n / 4 : up ? 4 * n : n, placement, 4);
    size_t bytes = 0;
    switch (format()) {
      case Format::rgb24:
        bytes = half ? n / 4 * 3 : up ? 12 * n : 3 * n;
        break;
      case Format::rgb32:
        bytes = half ? n / 4 * 4 : up ? 16 * n : 4 * n;
        break;
      default:
        bytes = half ? n / 4 + n / 8 : up ? 6 * n : n + n / 2;
    }
    GuardedBuffer output(bytes, placement);
    EXPECT_EQ(raw_entry(format(), variant)(ctx, source.data(), output.data(), width, height), 0);
    EXPECT_FALSE(source.slack_damage());
    EXPECT_FALSE(output.slack_damage());
  }
}

}  // namespace
}  // namespace ppl_test
