// Every raw entry in buffers of exactly the documented sizes, directly before and directly behind
// unreadable pages.
#include <gtest/gtest.h>

#include <vector>

#include "frame/context.h"
#include "support/raw_frame.h"

namespace ppl_test {
namespace {

class GuardPages : public RawFrameFormatTest {};
INSTANTIATE_TEST_SUITE_P(Formats, GuardPages,
                         ::testing::Combine(::testing::ValuesIn(both_tiers),
                                            ::testing::ValuesIn(all_formats)),
                         tier_format_name);

TEST_P(GuardPages, EveryEntryStaysInsideItsBuffers) {
  for (const auto &[width, height] :
       {std::pair{128u, 22u}, {130u, 14u}, {144u, 15u}, {152u, 26u}, {320u, 24u}})
    for (const Variant variant : all_variants)
      for (const int mirrors : {0, 1, 2, 3}) {
        ppl_set_h_mirror(ctx, mirrors & 1);
        ppl_set_v_mirror(ctx, static_cast<uint8_t>(mirrors / 2));
        ppl_set_decimation(ctx, 0, 0, 0);
        const uint32_t stride = width * stride_factor(variant);
        const int32_t d = variant == Variant::deci_2_1                                          ? 1
                          : variant == Variant::intp_1_2 || variant == Variant::intp_1_2_stride ? -1
                                                                                                : 0;
        // The first call settles the geometry.
        std::vector<uint8_t> pictures[2];
        for (const bool settle : {true, false})
          for (const Placement placement :
               {Placement::ends_at_guard, Placement::begins_behind_guard}) {
            SCOPED_TRACE(std::string(name_of(variant)) + " " + std::to_string(width) + " by " +
                         std::to_string(height) + " mirrors " + std::to_string(mirrors));
            GuardedBuffer source(size_t{stride} * height, placement);
            const size_t out_width = d < 0 ? width * 2 : width >> d;
            const size_t out_height = d < 0 ? height * 2 : height >> d;
            GuardedBuffer output(picture_bytes(format(), out_width, out_height), placement);
            for (size_t i = 0; i < source.size(); ++i)
              source[i] = static_cast<uint8_t>(i * 73 + i / 127);
            const uint8_t result =
                raw_entry(format(), variant)(ctx, source.data(), output.data(), width, height);
            EXPECT_TRUE(x87_is_clean());
            EXPECT_FALSE(source.slack_damage());
            EXPECT_FALSE(output.slack_damage());
            if (settle) continue;
            EXPECT_EQ(result, 1);
            pictures[placement == Placement::ends_at_guard].assign(output.begin(), output.end());
          }
        EXPECT_EQ(pictures[0], pictures[1]);
      }
}

TEST_P(GuardPages, EveryQualityStaysInsideItsBuffers) {
  for (const uint32_t quality : {3u, 4u, 5u, 9u, 13u})
    for (const Variant variant : all_variants)
      for (const Placement placement : {Placement::ends_at_guard, Placement::begins_behind_guard}) {
        // A size that fills the copy groups, since those are copied whole.
        const uint32_t width = 160, height = 24;
        ppl_set_quality(ctx, quality);
        ppl_set_decimation(ctx, 0, 0, 0);
        GuardedBuffer source(size_t{width} * stride_factor(variant) * height, placement);
        const bool half = variant == Variant::deci_2_1;
        const bool twice = variant == Variant::intp_1_2 || variant == Variant::intp_1_2_stride;
        GuardedBuffer output(picture_bytes(format(),
                                           half    ? 80
                                           : twice ? 320
                                                   : 160,
                                           half    ? 12
                                           : twice ? 48
                                                   : 24),
                             placement);
        for (int call = 0; call < 2; ++call) {
          raw_entry(format(), variant)(ctx, source.data(), output.data(), width, height);
          EXPECT_TRUE(x87_is_clean());
          EXPECT_FALSE(source.slack_damage());
          EXPECT_FALSE(output.slack_damage());
        }
      }
}

// The multi-pass qualities, at every decimation, in buffers of the sizes that ppl.h asks for.
struct Chain {
  uint32_t quality;
  bool filter;
};
constexpr Chain chains[] = {{0, false}, {0, true},   {1, false},  {1, true},   {2, false},
                            {2, true},  {10, false}, {11, false}, {12, false}, {14, false}};

class GuardedChains : public RawFrameFormatTest {
 protected:
  // As near to a page as the tier allows: SSE2 wants both buffers at 16-byte boundaries.
  unsigned alignment(size_t size, Placement placement) const {
    const bool exact = tier() == Tier::p3 && placement == Placement::ends_at_guard;
    return exact ? static_cast<unsigned>(0 - size) % 16 : 0;
  }

  size_t output_bytes(uint32_t width, uint32_t height, int32_t d) const {
    const size_t pixels = size_t{width} * height;
    if (d == -1) return picture_bytes(format(), size_t{2} * width, size_t{2} * height);
    const size_t declared = picture_bytes(format(), width >> d, height >> d);
    const size_t unit = format() == Format::i420 ? 1 : picture_bytes(format(), 1, 1);
    return d == 2 ? declared + pixels / 4 * unit : declared;
  }

  // What the frame leaves in the output.
  std::vector<uint8_t> run_guarded(uint32_t width, uint32_t height, uint32_t stride, int32_t d,
                                   Placement placement) {
    const size_t source_size = size_t{stride} * height;
    const size_t output_size = output_bytes(width, height, d);
    GuardedBuffer source(source_size, placement, alignment(source_size, placement));
    GuardedBuffer output(output_size, placement, alignment(output_size, placement));
    for (size_t i = 0; i < source.size(); ++i) source[i] = static_cast<uint8_t>(i * 73 + i / 127);
    EXPECT_EQ(raw_driver(format())(ctx, source.data(), output.data(), width, height, stride), 1);
    EXPECT_TRUE(x87_is_clean());
    EXPECT_FALSE(source.slack_damage());
    EXPECT_FALSE(output.slack_damage());
    return {output.begin(), output.end()};
  }
};
INSTANTIATE_TEST_SUITE_P(Formats, GuardedChains,
                         ::testing::Combine(::testing::ValuesIn(both_tiers),
                                            ::testing::ValuesIn(all_formats)),
                         tier_format_name);

TEST_P(GuardedChains, StayInsideTheirBuffers) {
  for (const auto &[width, height] :
       {std::pair{130u, 24u}, {136u, 14u}, {144u, 15u}, {154u, 22u}, {176u, 26u}})
    for (const uint32_t stride : {width, width + 24, 2 * width})
      for (const int32_t d : {-1, 0, 1, 2}) {
        ppl_set_decimation(ctx, d, 0, 0);
        ASSERT_EQ(ppl_new_frame_size(ctx, width, height, stride), 1);
        for (const Chain &chain : chains)
          for (const int mirrors : {0, 1, 2, 3}) {
            SCOPED_TRACE(testing::Message()
                         << "quality " << chain.quality << " filter " << chain.filter << " "
                         << width << " by " << height << " stride " << stride << " decimation " << d
                         << " mirrors " << mirrors);
            ppl_set_quality(ctx, chain.quality);
            chain.filter ? ppl_enable_medium_filter(ctx) : ppl_disable_medium_filter(ctx);
            ppl_set_h_mirror(ctx, mirrors & 1);
            ppl_set_v_mirror(ctx, static_cast<uint8_t>(mirrors / 2));
            const auto first = run_guarded(width, height, stride, d, Placement::ends_at_guard);
            const auto second =
                run_guarded(width, height, stride, d, Placement::begins_behind_guard);
            EXPECT_TRUE(first == second);
          }
      }
}

TEST_P(GuardPages, FallbacksStayInsideTheirBuffers) {
  for (const Placement placement : {Placement::ends_at_guard, Placement::begins_behind_guard})
    for (const Variant variant : all_variants) {
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
