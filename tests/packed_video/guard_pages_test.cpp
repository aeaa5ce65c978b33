// Every conversion in buffers of exactly the documented sizes, directly before and directly behind
// unreadable pages.
#include <gtest/gtest.h>

#include "packed_video/packed_video_fixture.h"

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
    for (const auto &[w, h] : {std::pair{128u, 22u},
                               {130u, 14u},
                               {143u, 15u},
                               {152u, 26u},
                               {129u, 17u},
                               {720u, 14u},
                               {1280u, 18u}})
      for (const int32_t d : {0, 1, 2, -1})
        for (const auto &[top, bottom] : {std::pair{0, 0}, {1, 2}, {4, 4}}) {
          const Geometry geometry{w, h, d, top, bottom};
          SCOPED_TRACE(testing::Message() << w << " by " << h << ", decimation " << d
                                          << ", black lines " << top << " and " << bottom);
          use_size(w, h, d, top, bottom);
          std::vector<uint8_t> pictures[2];
          for (const Placement placement :
               {Placement::ends_at_guard, Placement::begins_behind_guard}) {
            Buffers how;
            how.placement = placement;
            pictures[placement == Placement::ends_at_guard] = run_one(geometry, how).bytes;
          }
          EXPECT_TRUE(pictures[0] == pictures[1]);
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
        // At other decimations RGB24 has the input's size.
        if (conversion.format == Format::rgb24 && geometry.decimation != 0)
          how.output_bytes = std::max(size_t{3} * geometry.width * geometry.height,
                                      size_t{3} * sizes.out_width * sizes.out_height);
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
