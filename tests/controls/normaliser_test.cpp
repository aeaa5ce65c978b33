// The factors that take the differences in sampling out of each chain's sums.
#include "controls_fixture.h"

namespace ppl::controls_test {
namespace {

class Normaliser : public ControlsTest {
 protected:
  std::vector<uint32_t> table(Tier tier) {
    const uint32_t *const entries = tier_state(context, tier).plan.chain_normaliser;
    return {entries, entries + 17};
  }

  std::vector<uint32_t> expected(int32_t B) const {
    const int32_t w = context->frame_width, h = context->frame_height;
    const auto n = [&](int32_t a, int32_t b) {
      return static_cast<uint32_t>((context->frame_size << 8) / (a * b / 4));
    };
    const uint32_t quality_0 = n(w - 4 * B, h - 12), quality_1 = n(w - 3 * B, h - 12);
    return {quality_0,
            quality_0,
            quality_0,
            quality_1,
            quality_1,
            n(w - 2 * B, h - 8),
            1024,
            1024,
            0,
            0,
            n(w, h - 4),
            n(w - 4 * B, h - 12),
            n(w - 3 * B, h - 12),
            n(w - 3 * B, h - 12),
            n(w - 5 * B, h - 16),
            n(w - 4 * B, h - 16),
            n(w - 3 * B, h - 12)};
  }

  void new_size(uint32_t width, uint32_t height) {
    ASSERT_EQ(ppl_new_frame_size(context, width, height, width), 1);
  }
};

TEST_F(Normaliser, VgaInTheP3Tier) {
  new_size(640, 480);
  EXPECT_EQ(table(Tier::p3),
            (std::vector<uint32_t>{1105, 1105, 1105, 1091, 1091, 1068, 1024, 1024, 0, 0, 1032, 1105,
                                   1091, 1091, 1129, 1115, 1091}));
}

TEST_F(Normaliser, VgaInTheSse2Tier) {
  new_size(640, 480);
  EXPECT_EQ(table(Tier::sse2),
            (std::vector<uint32_t>{1166, 1166, 1166, 1135, 1135, 1096, 1024, 1024, 0, 0, 1032, 1166,
                                   1135, 1135, 1210, 1177, 1135}));
}

TEST_F(Normaliser, EverySizeHasTheFactorsOfItsMargins) {
  const struct {
    uint32_t width, height;
  } sizes[] = {{128, 17},  {128, 1024}, {130, 22},    {255, 255},  {320, 240},
               {352, 288}, {720, 576},  {1279, 1023}, {1280, 1024}};
  for (const auto &[width, height] : sizes) {
    SCOPED_TRACE(testing::Message() << width << "x" << height);
    new_size(width, height);
    EXPECT_EQ(table(Tier::p3), expected(8));
    EXPECT_EQ(table(Tier::sse2), expected(16));
  }
}

// The margins take more than there is: the factors are negative and kept as unsigned.
TEST_F(Normaliser, HeightsFrom13To15HaveNegativeFactors) {
  for (const uint32_t height : {13u, 14u, 15u}) {
    SCOPED_TRACE(height);
    new_size(640, height);
    EXPECT_EQ(table(Tier::p3), expected(8));
    EXPECT_EQ(table(Tier::sse2), expected(16));
    EXPECT_GE(table(Tier::p3)[14], 0x80000000u);
    EXPECT_GE(table(Tier::sse2)[15], 0x80000000u);
    EXPECT_LT(table(Tier::p3)[0], 0x80000000u);
  }
}

TEST_F(Normaliser, SmallestP3SizeHasFactorsOfItsOwn) {
  restart_on(p3_processor);
  new_size(64, 13);
  EXPECT_EQ(table(Tier::p3), expected(8));
}

TEST_F(Normaliser, EntriesWithoutAChainStayZero) {
  new_size(640, 480);
  new_size(320, 240);
  for (const Tier tier : both_tiers) {
    EXPECT_EQ(table(tier)[8], 0u);
    EXPECT_EQ(table(tier)[9], 0u);
  }
}

TEST_F(Normaliser, StrideAndDecimationHaveNoPartInThem) {
  new_size(640, 480);
  const std::vector<uint32_t> before = table(Tier::p3);
  ppl_set_decimation(context, 1, 0, 0);
  EXPECT_EQ(table(Tier::p3), before);
  ASSERT_EQ(ppl_new_frame_size(context, 640, 480, 1280), 1);
  EXPECT_EQ(table(Tier::p3), before);
}

}  // namespace
}  // namespace ppl::controls_test
