// Raw frames of the widest lines keep their lines in flight to the line memory.
#include <gtest/gtest.h>

#include <array>

#include "support/combinations.h"
#include "support/context_watch.h"
#include "support/raw_frame.h"

namespace ppl_test {
namespace {

class RawLineMemory : public RawFrameFormatTest {};
INSTANTIATE_TEST_SUITE_P(Formats, RawLineMemory,
                         ::testing::Combine(::testing::ValuesIn(both_tiers),
                                            ::testing::ValuesIn(all_formats)),
                         tier_format_name);

TEST_P(RawLineMemory, HoldsTheWidestLinesOfEveryQuality) {
  constexpr FrameSize sizes[] = {{1280, 22}, {1274, 18}};
  constexpr std::array decimations = {-1, 0, 1, 2};
  constexpr std::array qualities = {0u, 1u, 2u, 3u, 4u, 9u, 10u, 11u, 12u, 13u, 14u};
  constexpr std::array off_and_on = {false, true};
  GuardedBuffer source(1280 * 22 + 64, Placement::ends_at_guard);  // copies read whole groups
  GuardedBuffer output(1280 * 22 * 16, Placement::ends_at_guard);
  ContextWatch watch(ctx);
  for (const auto &[size, d, quality, repairs, collects] :
       combinations(sizes, decimations, qualities, off_and_on, off_and_on)) {
    if (repairs && quality > 2) continue;
    SCOPED_TRACE(testing::Message()
                 << size.width << " columns, quality " << quality << ", decimation " << d
                 << (repairs ? ", repair" : "") << (collects ? ", statistics" : ""));
    ppl_set_decimation(ctx, d, 0, 0);
    ASSERT_EQ(ppl_new_frame_size(ctx, size.width, size.height, size.width), 1);
    ppl_set_quality(ctx, quality);
    repairs ? ppl_enable_medium_filter(ctx) : ppl_disable_medium_filter(ctx);
    ppl_set_mean_collection(ctx, collects);
    if (!collects) {
      // The one before may have left statistics, which the next one clears.
      raw_driver(format())(ctx, source.data(), output.data(), size.width, size.height, size.width);
    }
    for (size_t i = 0; i < source.size(); ++i) source[i] = static_cast<uint8_t>(i * 73 + i / 127);
    watch.remember();
    raw_driver(format())(ctx, source.data(), output.data(), size.width, size.height, size.width);
    watch.expect_neighbour_untouched();
    if (!collects) watch.expect_record_untouched();
  }
}

}  // namespace
}  // namespace ppl_test
