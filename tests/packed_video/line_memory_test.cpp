// Packed video of the widest lines keeps its lines in flight to the line memory.
#include <gtest/gtest.h>

#include <array>

#include "packed_video/packed_video_fixture.h"
#include "support/combinations.h"
#include "support/context_watch.h"

namespace ppl_test {
namespace {

class PackedLineMemory : public PackedVideoTierTest {
 protected:
  static constexpr uint32_t height = 18;

  // Calls `run_one` at every width and decimation, and looks what it did to the records.
  template <class Run>  // Run(uint32_t width)
  void watch_each(Run run_one) {
    ContextWatch watch(ctx);
    for (const auto &[width, d] : combinations(std::array{1280u, 1279u}, std::array{-1, 0, 1, 2})) {
      SCOPED_TRACE(testing::Message() << width << " columns, decimation " << d);
      use_size(width, height, d);
      watch.remember();
      run_one(width);
      watch.expect_neighbour_untouched();
      watch.expect_record_untouched();
    }
  }
};
INSTANTIATE_TEST_SUITE_P(Tiers, PackedLineMemory, testing::ValuesIn(both_tiers), tier_name);

TEST_P(PackedLineMemory, HoldsTheWidestLinesOfFields) {
  for (const FieldsConversion &conversion : fields_conversions) {
    SCOPED_TRACE(conversion.name);
    watch_each([&](uint32_t width) {
      const Fields fields = {textured_video(width, height / 2, 1),
                             textured_video(width, height / 2, 2),
                             textured_video(width, height / 2, 3)};
      EXPECT_EQ(run(conversion.with_test, conversion, fields).result, 1);
      EXPECT_EQ(run(conversion.without_test, conversion, fields).result, 1);
    });
  }
}

TEST_P(PackedLineMemory, HoldsTheWidestLinesOfFrames) {
  for (const FrameConversion &conversion : frame_conversions) {
    SCOPED_TRACE(conversion.name);
    watch_each([&](uint32_t width) {
      Buffers how;
      how.output_bytes = output_bytes_of(conversion);
      run(conversion, std::vector<uint8_t>(width * conversion.source_half_bytes / 2 * height, 9),
          how);
    });
  }
}

}  // namespace
}  // namespace ppl_test
