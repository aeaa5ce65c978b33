// Every conversion in buffers of exactly the documented sizes, directly before and directly behind
// unreadable pages.
#include <gtest/gtest.h>

#include "packed_video/packed_video_fixture.h"
#include "support/combinations.h"

namespace ppl_test {
namespace {

class PackedGuardPages : public PackedVideoTierTest {
 protected:
  struct Geometry {
    uint32_t width, height;
    int32_t decimation, top, bottom;
  };

  // Runs a conversion at both ends, at every geometry.
  template <class Run>  // Run(const Geometry &, const Buffers &)
  void at_both_ends(Run run_one) {
    struct Size {
      uint32_t width, height;
    };
    constexpr Size input_sizes[] = {{128, 22}, {130, 14}, {143, 15}, {152, 26},
                                    {129, 17}, {720, 14}, {1280, 18}};
    struct BlackLines {
      int32_t top, bottom;
    };
    constexpr BlackLines black_lines[] = {{0, 0}, {1, 2}, {4, 4}};
    for (const auto &[size, d, black] :
         combinations(input_sizes, std::array{0, 1, 2, -1}, black_lines)) {
      const Geometry geometry{size.width, size.height, d, black.top, black.bottom};
      SCOPED_TRACE(testing::Message() << size.width << " by " << size.height << ", decimation " << d
                                      << ", black lines " << black.top << " and " << black.bottom);
      use_size(size.width, size.height, d, black.top, black.bottom);
      const auto picture_at = [&](Placement placement) {
        Buffers how;
        how.placement = placement;
        return run_one(geometry, how).bytes;
      };
      EXPECT_TRUE(picture_at(Placement::ends_at_guard) ==
                  picture_at(Placement::begins_behind_guard));
    }
  }
};

INSTANTIATE_TEST_SUITE_P(Tiers, PackedGuardPages, testing::ValuesIn(both_tiers), tier_name);

TEST_P(PackedGuardPages, FramesStayInsideTheirBuffers) {
  for (const FrameConversion &conversion : frame_conversions)
    for (const int mirrors : {0, 1, 2, 3}) {
      SCOPED_TRACE(testing::Message() << conversion.name << ", mirrors " << mirrors);
      ppl_set_h_mirror(ctx, mirrors & 1);
      ppl_set_v_mirror(ctx, static_cast<uint8_t>(mirrors & 2));
      at_both_ends([&](const Geometry &geometry, Buffers how) {
        const size_t line = geometry.width * conversion.source_half_bytes / 2;
        std::vector<uint8_t> source(line * geometry.height);
        for (size_t i = 0; i < source.size(); ++i) source[i] = static_cast<uint8_t>(i * 73);
        how.output_bytes = output_bytes_of(conversion);
        return run(conversion, source, how);
      });
    }
}

TEST_P(PackedGuardPages, FieldsStayInsideTheirBuffers) {
  for (const FieldsConversion &conversion : fields_conversions)
    for (const FieldsFunction function : {conversion.with_test, conversion.without_test}) {
      SCOPED_TRACE(testing::Message() << conversion.name);
      at_both_ends([&](const Geometry &geometry, const Buffers &how) {
        const uint32_t lines = geometry.height / 2;
        const Fields fields = {textured_video(geometry.width, lines, 1),
                               textured_video(geometry.width, lines, 2),
                               textured_video(geometry.width, lines, 3)};
        return run(function, conversion, fields, how);
      });
    }
}

// The largest frame and the sizes of television.
TEST_P(PackedGuardPages, LargeFramesStayInsideTheirBuffers) {
  for (const auto &[w, h, out_width, out_height] : {std::array{1280u, 1024u, 1280u, 1024u},
                                                    {720u, 480u, 720u, 576u},
                                                    {704u, 576u, 352u, 300u},
                                                    {640u, 480u, 1280u, 960u}})
    for (const Placement placement : {Placement::ends_at_guard, Placement::begins_behind_guard}) {
      sizes = {w, h, out_width, out_height};
      Buffers how;
      how.placement = placement;
      for (const FieldsConversion &conversion : fields_conversions) {
        if (w == 1280 && conversion.format == Format::rgb24) continue;
        const Fields fields = {textured_video(w, h / 2, 1), textured_video(w, h / 2, 2),
                               textured_video(w, h / 2, 3)};
        EXPECT_EQ(run(conversion.with_test, conversion, fields, how).result, 1);
      }
      for (const FrameConversion &conversion : {yuyv_to_i420, uyvy_to_i420, yuyv_yyyy})
        EXPECT_EQ(
            run(conversion, std::vector<uint8_t>(w * h * conversion.source_half_bytes / 2, 9), how)
                .result,
            1);
    }
}

}  // namespace
}  // namespace ppl_test
