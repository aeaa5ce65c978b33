// Frame sizes, decimation, the supported pairs of sizes, and the statistics grid.
#include <limits.h>

#include "controls_fixture.h"

namespace ppl::controls_test {
namespace {

struct Geometry {
  int32_t frame_width, frame_height, frame_stride;
  int32_t frame_size, frame_size_2, frame_size_4, frame_size_8;
  int32_t decimation, top, bottom;
  int32_t out_width, out_height, out_size, out_size_4;

  bool operator==(const Geometry &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Geometry &g) {
  return out << g.frame_width << "x" << g.frame_height << " stride " << g.frame_stride << " sizes "
             << g.frame_size << "/" << g.frame_size_2 << "/" << g.frame_size_4 << "/"
             << g.frame_size_8 << " d " << g.decimation << " black " << g.top << "+" << g.bottom
             << " -> " << g.out_width << "x" << g.out_height << ", " << g.out_size << ", "
             << g.out_size_4;
}

Geometry geometry_of(const PplContext *c) {
  return {c->frame_width,
          c->frame_height,
          c->frame_stride,
          c->frame_size,
          c->frame_size_2,
          c->frame_size_4,
          c->frame_size_8,
          ppl_decimation(c),
          ppl_decimation_top_black_lines(c),
          ppl_decimation_bottom_black_lines(c),
          c->out_width,
          c->out_height,
          c->out_size,
          c->out_size_4};
}

int32_t scaled(int32_t value, int32_t decimation) {
  return decimation >= 0 ? value >> decimation : value << -decimation;
}

class GeometryTest : public ControlsTest {
 protected:
  uint8_t new_size(uint32_t width, uint32_t height) {
    return ppl_new_frame_size(context, width, height, width);
  }

  void expect_input(int32_t width, int32_t height, int32_t stride) {
    const int32_t size = width * height;
    EXPECT_EQ(context->frame_width, width);
    EXPECT_EQ(context->frame_height, height);
    EXPECT_EQ(context->frame_stride, stride);
    EXPECT_EQ(context->frame_size, size);
    EXPECT_EQ(context->frame_size_2, size / 2);
    EXPECT_EQ(context->frame_size_4, size / 4);
    EXPECT_EQ(context->frame_size_8, size / 8);
  }

  void expect_output(int32_t width, int32_t height) {
    EXPECT_EQ(context->out_width, width);
    EXPECT_EQ(context->out_height, height);
    EXPECT_EQ(context->out_size, width * height);
    EXPECT_EQ(context->out_size_4, width * height / 4);
  }

  // A refused call leaves the whole record as it was and uses up no save.
  void expect_refused(const std::function<uint8_t()> &call) {
    const std::vector<uint8_t> before = bytes_of(context);
    test_hooks::reset_counts();
    EXPECT_EQ(call(), 0);
    EXPECT_TRUE(bytes_of(context) == before);
    EXPECT_EQ(test_hooks::save_count(), 0u);
  }

  void expect_size_refused(uint32_t width, uint32_t height, uint32_t stride) {
    SCOPED_TRACE(testing::Message() << width << "x" << height << ", stride " << stride);
    expect_refused([&] { return ppl_new_frame_size(context, width, height, stride); });
  }

  void expect_grid(Tier tier, int32_t block) {
    SCOPED_TRACE(name_of(tier));
    const FramePlan &plan = tier_state(context, tier).plan;
    EXPECT_EQ(plan.cell_width, context->frame_width / block / 8);
    EXPECT_EQ(plan.cell_height, context->frame_height / 2 / 6);
  }

  void expect_no_plan(Tier tier) {
    const FramePlan empty = {};
    EXPECT_EQ(memcmp(&tier_state(context, tier).plan, &empty, sizeof empty), 0) << name_of(tier);
  }

  void expect_window_scales(uint32_t pixels) {
    EXPECT_EQ(context->r_window_scale, 0x100000 / (pixels / 4));
    EXPECT_EQ(context->g_window_scale, 0x100000 / (pixels / 2));
    EXPECT_EQ(context->b_window_scale, 0x100000 / (pixels / 4));
  }
};

// ---- ppl_new_frame_size ----

TEST_F(GeometryTest, ASizeIsStoredWithItsFractions) {
  EXPECT_EQ(ppl_new_frame_size(context, 642, 483, 700), 1);
  expect_input(642, 483, 700);
  expect_output(642, 483);
}

TEST_F(GeometryTest, FractionsOfASizeTruncate) {
  EXPECT_EQ(new_size(129, 21), 1);
  EXPECT_EQ(context->frame_size, 2709);
  EXPECT_EQ(context->frame_size_2, 1354);
  EXPECT_EQ(context->frame_size_4, 677);
  EXPECT_EQ(context->frame_size_8, 338);
  EXPECT_EQ(context->out_size_4, 677);
}

TEST_F(GeometryTest, TheLargestSizePasses) {
  EXPECT_EQ(ppl_new_frame_size(context, 1280, 1024, 1280), 1);
  expect_input(1280, 1024, 1280);
}

TEST_F(GeometryTest, SizesPastALimitAreRefusedAndKeepTheOldGeometry) {
  ASSERT_EQ(new_size(640, 480), 1);
  expect_size_refused(1281, 1024, 1280);
  expect_size_refused(1280, 1025, 1280);
  expect_size_refused(1280, 1024, 1281);
  expect_size_refused(320, 240, 1281);
  expect_size_refused(UINT32_MAX, 480, 640);
  expect_size_refused(640, UINT32_MAX, 640);
  expect_size_refused(640, 480, UINT32_MAX);
  expect_size_refused(0x80000280, 480, 640);
  expect_input(640, 480, 640);
}

TEST_F(GeometryTest, AStrideBelowTheWidthPasses) {
  EXPECT_EQ(ppl_new_frame_size(context, 640, 480, 0), 1);
  expect_input(640, 480, 0);
}

TEST_F(GeometryTest, EntriesThatQuadrupleTheStrideStopAbove320Columns) {
  EXPECT_EQ(ppl_new_frame_size(context, 320, 240, 4 * 320), 1);
  expect_size_refused(328, 240, 4 * 328);
}

TEST_F(GeometryTest, TheDecimationInForceScalesTheOutput) {
  for (const int32_t d : {-1, 0, 1, 2}) {
    SCOPED_TRACE(d);
    ppl_set_decimation(context, d, 0, 0);
    EXPECT_EQ(new_size(330, 250), 1);
    expect_output(scaled(330, d), scaled(250, d));
  }
}

TEST_F(GeometryTest, ScalingDoesNotRound) {
  ppl_set_decimation(context, 2, 0, 0);
  EXPECT_EQ(new_size(335, 243), 1);
  expect_output(83, 60);
}

TEST_F(GeometryTest, ANewSizeLeavesTheBlackLinesOutOfTheOutput) {
  ppl_set_decimation(context, 1, 6, 7);
  EXPECT_EQ(new_size(640, 480), 1);
  expect_output(320, 240);
  EXPECT_EQ(ppl_decimation_top_black_lines(context), 6);
}

TEST_F(GeometryTest, ANewSizeSavesAndRestoresOnce) {
  test_hooks::reset_counts();
  new_size(640, 480);
  EXPECT_EQ(test_hooks::save_count(), 1u);
  EXPECT_EQ(test_hooks::restore_count(), 1u);
}

TEST_F(GeometryTest, TheSameSizeIsBuiltAnew) {
  new_size(640, 480);
  for (const Tier tier : both_tiers) tier_state(context, tier).plan = {};
  context->r_window_scale = context->g_window_scale = context->b_window_scale = 0;
  test_hooks::reset_counts();
  EXPECT_EQ(new_size(640, 480), 1);
  EXPECT_EQ(test_hooks::save_count(), 1u);
  expect_grid(Tier::p3, 8);
  expect_grid(Tier::sse2, 16);
  for (const Tier tier : both_tiers) {
    EXPECT_NE(tier_state(context, tier).plan.chain_normaliser[0], 0u);
  }
  expect_window_scales(32 * 5 * 40);
}

TEST_F(GeometryTest, ASizeWritesNoEntry) {
  poison_derived(context);
  new_size(640, 480);
  expect_written(no_entries);
}

TEST_F(GeometryTest, AfterAFailedSaveTheSizeIsNewAndThePlansAreOld) {
  ASSERT_EQ(new_size(640, 480), 1);
  const FramePlan p3 = context->p3.plan, sse2 = context->sse2.plan;
  const uint32_t scale = context->r_window_scale;
  test_hooks::reset_counts();
  test_hooks::fail_saves(0, 1);
  EXPECT_EQ(new_size(320, 240), 1);
  expect_input(320, 240, 320);
  expect_output(320, 240);
  EXPECT_EQ(memcmp(&context->p3.plan, &p3, sizeof p3), 0);
  EXPECT_EQ(memcmp(&context->sse2.plan, &sse2, sizeof sse2), 0);
  EXPECT_EQ(context->r_window_scale, scale);
  EXPECT_EQ(test_hooks::restore_count(), 0u);
}

TEST_F(GeometryTest, AFailedSaveDoesNotSaveARefusedSize) {
  test_hooks::fail_saves(0, 1);
  EXPECT_EQ(new_size(1281, 480), 0);
  EXPECT_EQ(new_size(64, 480), 0);
  EXPECT_EQ(context->frame_width, 0);
}

// ---- Sizes whose plan has a zero divisor ----

TEST_F(GeometryTest, WithBothTiersWidthsFrom128On) {
  ASSERT_EQ(new_size(640, 480), 1);
  for (const uint32_t width : {0u, 1u, 16u, 32u, 63u, 64u, 80u, 96u, 127u}) {
    expect_size_refused(width, 480, width);
  }
  EXPECT_EQ(new_size(128, 480), 1);
}

TEST_F(GeometryTest, HoldingAContextToTheP3TierDoesNotLowerTheLeastWidth) {
  ASSERT_EQ(new_size(640, 480), 1);
  ASSERT_EQ(ppl_set_P3_only(context, 1), 1);
  for (const uint32_t width : {64u, 127u}) expect_size_refused(width, 480, width);
  EXPECT_EQ(new_size(128, 480), 1);
}

TEST_F(GeometryTest, WithTheP3TierAloneWidthsFrom64On) {
  restart_on(p3_processor);
  ASSERT_EQ(new_size(640, 480), 1);
  for (const uint32_t width : {0u, 1u, 16u, 24u, 32u, 40u, 63u}) {
    expect_size_refused(width, 480, width);
  }
  EXPECT_EQ(new_size(64, 480), 1);
  EXPECT_EQ(new_size(127, 480), 1);
}

TEST_F(GeometryTest, WithTheSse2TierAloneWidthsFrom128On) {
  restart_on(sse2_without_p3_processor);
  ASSERT_EQ(new_size(640, 480), 1);
  expect_size_refused(127, 480, 127);
  EXPECT_EQ(new_size(128, 480), 1);
}

TEST_F(GeometryTest, HeightsWithoutAGridOrWithAZeroNormaliserAreRefused) {
  for (const ProcessorLook &look : {sse2_processor, p3_processor, sse2_without_p3_processor}) {
    restart_on(look);
    ASSERT_EQ(new_size(640, 480), 1);
    for (uint32_t height = 0; height <= 20; ++height) {
      if (height <= 12 || height == 16) {
        expect_size_refused(640, height, 640);
      } else {
        EXPECT_EQ(new_size(640, height), 1) << height;
        EXPECT_EQ(new_size(640, 480), 1);
      }
    }
  }
}

TEST_F(GeometryTest, TheSmallestSizeOfEachProcessorPasses) {
  EXPECT_EQ(new_size(128, 13), 1);
  restart_on(p3_processor);
  EXPECT_EQ(new_size(64, 13), 1);
}

TEST_F(GeometryTest, WithoutATierNoSmallSizeIsRefused) {
  restart_on(no_tier_processor);
  for (const uint32_t width : {0u, 1u, 16u, 63u, 64u, 127u}) {
    for (const uint32_t height : {0u, 4u, 12u, 16u}) {
      EXPECT_EQ(new_size(width, height), 1) << width << "x" << height;
    }
  }
  EXPECT_EQ(new_size(1281, 480), 0);
}

// ---- Plans ----

TEST_F(GeometryTest, TheGridLiesOverTheFrameFromItsTopLeft) {
  const struct {
    uint32_t width, height;
  } sizes[] = {{640, 480}, {1280, 1024}, {352, 288}, {128, 13}, {130, 22}, {720, 576}, {255, 255}};
  for (const auto &[width, height] : sizes) {
    SCOPED_TRACE(testing::Message() << width << "x" << height);
    EXPECT_EQ(new_size(width, height), 1);
    expect_grid(Tier::p3, 8);
    expect_grid(Tier::sse2, 16);
  }
}

TEST_F(GeometryTest, Width352HasUnlikeGridsAndTheScalesOfTheSse2Tier) {
  EXPECT_EQ(new_size(352, 288), 1);
  EXPECT_EQ(context->p3.plan.cell_width, 5);
  EXPECT_EQ(context->sse2.plan.cell_width, 2);
  EXPECT_EQ(context->p3.plan.cell_height, 24);
  EXPECT_EQ(context->sse2.plan.cell_height, 24);
  expect_window_scales(32 * 2 * 24);
}

TEST_F(GeometryTest, WithTheP3TierAloneTheScalesAreThoseOfItsGrid) {
  restart_on(p3_processor);
  EXPECT_EQ(new_size(352, 288), 1);
  expect_window_scales(16 * 5 * 24);
}

TEST_F(GeometryTest, P3OnlyPlaysNoPartInThePlans) {
  ppl_set_P3_only(context, 1);
  EXPECT_EQ(new_size(352, 288), 1);
  expect_grid(Tier::p3, 8);
  expect_grid(Tier::sse2, 16);
  expect_window_scales(32 * 2 * 24);
}

TEST_F(GeometryTest, OnlyTheProcessorsTiersGetAPlan) {
  restart_on(p3_processor);
  new_size(640, 480);
  expect_grid(Tier::p3, 8);
  expect_no_plan(Tier::sse2);

  restart_on(sse2_without_p3_processor);
  new_size(640, 480);
  expect_grid(Tier::sse2, 16);
  expect_no_plan(Tier::p3);

  restart_on(no_tier_processor);
  new_size(640, 480);
  expect_no_plan(Tier::p3);
  expect_no_plan(Tier::sse2);
}

TEST_F(GeometryTest, ANewSizeKeepsWhatFramesLeftBehind) {
  for (const Tier tier : both_tiers) {
    memset(&tier_state(context, tier).memory, poison, sizeof(TierMemory));
  }
  new_size(640, 480);
  const std::vector<uint8_t> untouched(sizeof(TierMemory), poison);
  for (const Tier tier : both_tiers) {
    EXPECT_EQ(memcmp(&tier_state(context, tier).memory, untouched.data(), untouched.size()), 0);
  }
}

// ---- ppl_set_decimation ----

TEST_F(GeometryTest, DecimationScalesAndAddsBlackLines) {
  new_size(641, 483);
  for (const int32_t d : {-1, 1, 2, 0}) {
    SCOPED_TRACE(d);
    EXPECT_EQ(ppl_set_decimation(context, d, 5, 8), 1);
    EXPECT_EQ(ppl_decimation(context), d);
    EXPECT_EQ(ppl_decimation_top_black_lines(context), 5);
    EXPECT_EQ(ppl_decimation_bottom_black_lines(context), 8);
    expect_output(scaled(641, d), scaled(483, d) + 13);
    expect_input(641, 483, 641);
  }
}

TEST_F(GeometryTest, DecimationOutsideItsRangeIsRefused) {
  new_size(640, 480);
  ppl_set_decimation(context, 1, 2, 3);
  for (const int32_t d : {-2, 3, -3, 32, INT_MIN, INT_MAX}) {
    SCOPED_TRACE(d);
    expect_refused([&] { return ppl_set_decimation(context, d, 0, 0); });
  }
}

TEST_F(GeometryTest, StoredDecimationReturnsAtOnce) {
  new_size(640, 480);
  ppl_set_decimation(context, 1, 2, 3);
  poison_derived(context);
  test_hooks::reset_counts();
  EXPECT_EQ(ppl_set_decimation(context, 1, 2, 3), 1);
  EXPECT_EQ(test_hooks::save_count(), 0u);
  expect_written(no_entries);
}

TEST_F(GeometryTest, EqualityIsTestedBeforeTheRange) {
  context->decimation = 7;
  EXPECT_EQ(ppl_set_decimation(context, 7, 0, 0), 1);
  EXPECT_EQ(ppl_set_decimation(context, 7, 1, 0), 0);
}

TEST_F(GeometryTest, EachOfTheThreeValuesMakesAChange) {
  new_size(640, 480);
  const int32_t changes[][3] = {{1, 0, 0}, {1, 4, 0}, {1, 4, 5}, {0, 4, 5}, {0, 0, 5}, {0, 0, 0}};
  for (const auto &[d, top, bottom] : changes) {
    SCOPED_TRACE(testing::Message() << d << ", " << top << ", " << bottom);
    test_hooks::reset_counts();
    EXPECT_EQ(ppl_set_decimation(context, d, top, bottom), 1);
    EXPECT_EQ(test_hooks::save_count(), 1u);
    expect_output(scaled(640, d), scaled(480, d) + top + bottom);
  }
}

TEST_F(GeometryTest, StoredDecimationDoesNotBringBackTheBlackLinesThatANewSizeRemoved) {
  new_size(640, 480);
  ppl_set_decimation(context, 0, 10, 10);
  expect_output(640, 500);
  new_size(640, 480);
  expect_output(640, 480);
  EXPECT_EQ(ppl_set_decimation(context, 0, 10, 10), 1);
  expect_output(640, 480);
}

TEST_F(GeometryTest, DecimationLeavesThePlans) {
  new_size(640, 480);
  const FramePlan before[] = {context->p3.plan, context->sse2.plan};
  ppl_set_decimation(context, 1, 0, 0);
  EXPECT_EQ(memcmp(&context->p3.plan, &before[0], sizeof before[0]), 0);
  EXPECT_EQ(memcmp(&context->sse2.plan, &before[1], sizeof before[1]), 0);
}

TEST_F(GeometryTest, TheDecimationIsNewAlsoAfterAFailedSave) {
  new_size(640, 480);
  test_hooks::reset_counts();
  test_hooks::fail_saves(0, 1);
  EXPECT_EQ(ppl_set_decimation(context, 2, 3, 4), 1);
  EXPECT_EQ(ppl_decimation(context), 2);
  expect_output(160, 127);
  EXPECT_EQ(test_hooks::save_count(), 1u);
  EXPECT_EQ(test_hooks::restore_count(), 0u);
}

TEST_F(GeometryTest, ResetDecimationGoesToZero) {
  new_size(640, 480);
  ppl_set_decimation(context, 2, 3, 4);
  EXPECT_EQ(ppl_reset_decimation(context), 1);
  EXPECT_EQ(ppl_decimation(context), 0);
  EXPECT_EQ(ppl_decimation_top_black_lines(context), 0);
  EXPECT_EQ(ppl_decimation_bottom_black_lines(context), 0);
  expect_output(640, 480);
}

// ---- ppl_new_frame_sizes ----

struct Mode {
  uint32_t in_width, in_height, out_width, out_height;
  int32_t decimation, black;
};

const std::vector<Mode> modes = {
    {1280, 1024, 1280, 1024, 0, 0}, {320, 240, 320, 240, 0, 0},   {320, 240, 160, 120, 1, 0},
    {640, 480, 640, 480, 0, 0},     {640, 480, 1280, 960, -1, 0}, {640, 480, 320, 240, 1, 0},
    {640, 480, 160, 120, 2, 0},     {640, 480, 352, 240, 0, 0},   {640, 480, 352, 288, 0, 0},
    {480, 480, 480, 480, 0, 0},     {480, 480, 480, 576, 0, 96},  {480, 576, 480, 576, 0, 0},
    {704, 480, 704, 480, 0, 0},     {704, 480, 704, 481, 0, 1},   {704, 480, 704, 576, 0, 96},
    {704, 576, 704, 576, 0, 0},     {704, 576, 704, 599, 0, 23},  {704, 480, 352, 240, 1, 0},
    {704, 480, 352, 241, 1, 1},     {704, 480, 352, 288, 1, 48},  {704, 576, 352, 288, 1, 0},
    {704, 576, 352, 300, 1, 12},    {704, 480, 176, 120, 2, 0},   {704, 480, 176, 144, 2, 24},
    {704, 576, 176, 144, 2, 0},     {704, 576, 176, 147, 2, 3},   {720, 480, 720, 480, 0, 0},
    {720, 480, 720, 483, 0, 3},     {720, 480, 720, 576, 0, 96},  {720, 576, 720, 576, 0, 0},
    {720, 576, 720, 1000, 0, 424},
};

TEST_F(GeometryTest, EverySupportedPairOfSizesIsMapped) {
  for (const Mode &mode : modes) {
    SCOPED_TRACE(testing::Message() << mode.in_width << "x" << mode.in_height << " to "
                                    << mode.out_width << "x" << mode.out_height);
    restart_on(sse2_processor);
    EXPECT_EQ(ppl_new_frame_sizes(context, mode.in_width, mode.in_height, mode.out_width,
                                  mode.out_height),
              1);
    const auto width = static_cast<int32_t>(mode.in_width);
    const auto height = static_cast<int32_t>(mode.in_height);
    expect_input(width, height, width);
    expect_output(scaled(width, mode.decimation), scaled(height, mode.decimation) + mode.black);
    EXPECT_EQ(ppl_decimation(context), mode.decimation);
    EXPECT_EQ(ppl_decimation_top_black_lines(context), mode.black / 2);
    EXPECT_EQ(ppl_decimation_bottom_black_lines(context), mode.black - mode.black / 2);
  }
}

TEST_F(GeometryTest, EverySupportedPairOfSizesIsMappedAlsoWithTheP3TierAlone) {
  for (const Mode &mode : modes) {
    restart_on(p3_processor);
    EXPECT_EQ(ppl_new_frame_sizes(context, mode.in_width, mode.in_height, mode.out_width,
                                  mode.out_height),
              1)
        << mode.in_width << "x" << mode.in_height << " to " << mode.out_width << "x"
        << mode.out_height;
  }
}

TEST_F(GeometryTest, AllOtherPairsOfSizesAreRefused) {
  ASSERT_EQ(new_size(320, 240), 1);
  const uint32_t pairs[][4] = {{1280, 1024, 640, 512},
                               {1280, 1024, 1280, 960},
                               {1280, 960, 1280, 960},
                               {320, 240, 640, 480},
                               {320, 240, 80, 60},
                               {320, 240, 160, 119},
                               {320, 240, 320, 241},
                               {640, 480, 640, 481},
                               {640, 480, 640, 576},
                               {640, 480, 352, 241},
                               {640, 480, 352, 576},
                               {640, 480, 176, 144},
                               {640, 480, 1280, 1024},
                               {640, 576, 640, 576},
                               {480, 576, 480, 480},
                               {480, 480, 480, 500},
                               {480, 480, 480, 479},
                               {480, 480, 240, 240},
                               {480, 576, 480, 577},
                               {480, 400, 480, 480},
                               {704, 480, 704, 479},
                               {704, 576, 704, 480},
                               {704, 480, 352, 239},
                               {704, 576, 352, 287},
                               {704, 480, 176, 119},
                               {704, 576, 176, 143},
                               {704, 240, 704, 240},
                               {704, 480, 720, 480},
                               {704, 480, 703, 480},
                               {720, 480, 720, 479},
                               {720, 576, 720, 480},
                               {720, 480, 360, 240},
                               {720, 480, 352, 240},
                               {720, 500, 720, 500},
                               {0, 0, 0, 0},
                               {640, 480, 0, 0},
                               {640, 480, UINT32_MAX, UINT32_MAX}};
  for (const auto &[in_width, in_height, out_width, out_height] : pairs) {
    SCOPED_TRACE(testing::Message()
                 << in_width << "x" << in_height << " to " << out_width << "x" << out_height);
    const auto sizes = {in_width, in_height, out_width, out_height};
    expect_refused([&] {
      const auto *const size = sizes.begin();
      return ppl_new_frame_sizes(context, size[0], size[1], size[2], size[3]);
    });
  }
}

TEST_F(GeometryTest, VgaTo352RunsUnscaled) {
  EXPECT_EQ(ppl_new_frame_sizes(context, 640, 480, 352, 288), 1);
  expect_output(640, 480);
}

TEST_F(GeometryTest, BlackLinesAreSplitWithTheOddOneBelow) {
  EXPECT_EQ(ppl_new_frame_sizes(context, 704, 576, 352, 301), 1);
  EXPECT_EQ(ppl_decimation_top_black_lines(context), 6);
  EXPECT_EQ(ppl_decimation_bottom_black_lines(context), 7);
  expect_output(352, 301);
}

TEST_F(GeometryTest, ASecondCallForTheSameSizesLosesTheBlackLines) {
  EXPECT_EQ(ppl_new_frame_sizes(context, 704, 576, 352, 300), 1);
  expect_output(352, 300);
  EXPECT_EQ(ppl_new_frame_sizes(context, 704, 576, 352, 300), 1);
  expect_output(352, 288);
  EXPECT_EQ(ppl_decimation_top_black_lines(context), 6);
}

TEST_F(GeometryTest, APairOfSizesSavesOncePerOperationThatRuns) {
  test_hooks::reset_counts();
  ppl_new_frame_sizes(context, 640, 480, 320, 240);
  EXPECT_EQ(test_hooks::save_count(), 2u);
  test_hooks::reset_counts();
  ppl_new_frame_sizes(context, 640, 480, 320, 240);
  EXPECT_EQ(test_hooks::save_count(), 1u);
}

TEST_F(GeometryTest, APairOfSizesReturnsOneAfterFailedSaves) {
  test_hooks::fail_saves(0, UINT32_MAX);
  EXPECT_EQ(ppl_new_frame_sizes(context, 640, 480, 320, 240), 1);
  expect_input(640, 480, 640);
  expect_output(320, 240);
  expect_no_plan(Tier::p3);
  expect_no_plan(Tier::sse2);
}

TEST_F(GeometryTest, GeometryIsSticky) {
  ppl_new_frame_sizes(context, 704, 576, 352, 300);
  const Geometry before = geometry_of(context);
  ppl_set_quality(context, 1);
  ppl_set_h_mirror(context, 1);
  ppl_set_gamma(context, 3);
  EXPECT_EQ(geometry_of(context), before);
}

}  // namespace
}  // namespace ppl::controls_test
