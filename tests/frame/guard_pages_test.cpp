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
