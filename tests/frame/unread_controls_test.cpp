// Controls that are kept for their owners and reach no kernel.
#include <gtest/gtest.h>

#include <vector>

#include "support/raw_frame.h"

namespace ppl_test {
namespace {

using UnreadControls = RawFrameFormatTest;

INSTANTIATE_TEST_SUITE_P(Formats, UnreadControls,
                         ::testing::Combine(::testing::ValuesIn(both_tiers),
                                            ::testing::ValuesIn(all_formats)),
                         tier_format_name);

void set_unread_controls(PplContext *ctx) {
  const uint8_t zeros[256] = {};
  ppl_copy_r_dekneel_table(ctx, zeros);
  ppl_copy_g_dekneel_table(ctx, zeros);
  ppl_copy_b_dekneel_table(ctx, zeros);
  ppl_set_quals_rgb_gain(ctx, 1023, 0, 1);
  ASSERT_EQ(ppl_set_noise_filter_G_12T_threshold(ctx, 3060), 1);
  ASSERT_EQ(ppl_set_noise_filter_R_8T_threshold(ctx, 0), 1);
  ASSERT_EQ(ppl_set_noise_filter_B_8T_threshold(ctx, 2040), 1);
  ASSERT_EQ(ppl_set_medium_filter_diff_threshold(ctx, 32767), 1);
  ASSERT_EQ(ppl_set_sensor_type(ctx, 22356), 1);
}

// What a caller reads, but for the count of frames.
std::vector<uint32_t> statistics(const PplContext *ctx) {
  std::vector<uint32_t> all = {ppl_n_qAE_2x2_whole_frame(ctx), ppl_n_qual_2x2_whole_frame(ctx)};
  for (const PplTriple *triple :
       {ppl_rgb_means_outside_all_sub_windows(ctx), ppl_rgb_means_all_sub_windows(ctx),
        ppl_rgb_means_whole_frame(ctx), ppl_qAE_rgb_means_whole_frame(ctx),
        ppl_qual_rgb_means_whole_frame(ctx)})
    all.insert(all.end(), {triple->r, triple->g, triple->b});
  for (const uint32_t *histogram :
       {ppl_r_histogram(ctx), ppl_g_histogram(ctx), ppl_b_histogram(ctx)})
    all.insert(all.end(), histogram, histogram + 256);
  return all;
}

TEST_P(UnreadControls, LeaveEveryPictureAndItsStatisticsAlone) {
  // Grey enough for some cells to qualify and to be flat, with defects and edges.
  const Mosaic frame = mosaic(144, 26, [](uint32_t x, uint32_t y) {
    if ((x * 7 + y * 11) % 97 == 0) return (x + y) % 2 == 0 ? 255u : 0u;
    return (x < 60 ? 40 : 140) + (x * 5 + y * 3) % 23;
  });
  for (uint32_t quality = 0; quality < 15; ++quality)
    for (const bool filter : {false, true}) {
      if (filter && quality > 2) continue;
      SCOPED_TRACE(testing::Message() << "quality " << quality << (filter ? ", filter on" : ""));
      ppl_reset_all_controls(ctx);
      use_tier(tier());
      ASSERT_EQ(ppl_set_quality(ctx, quality), 1);
      if (filter) ppl_enable_medium_filter(ctx);
      run(format(), frame);  // once before, since a frame may leave something for the next
      const Picture before = run(format(), frame);
      const std::vector<uint32_t> statistics_before = statistics(ctx);
      set_unread_controls(ctx);
      const Picture after = run(format(), frame);
      EXPECT_TRUE(after.bytes == before.bytes);
      EXPECT_TRUE(after.consumed == before.consumed);
      EXPECT_TRUE(statistics(ctx) == statistics_before);
    }
}

}  // namespace
}  // namespace ppl_test
