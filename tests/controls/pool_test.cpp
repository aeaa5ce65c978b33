// The pool of eight contexts: claiming, giving back, and what a new owner inherits.
#include "controls_fixture.h"

namespace ppl::controls_test {
namespace {

class Pool : public testing::Test {
 protected:
  void SetUp() override {
    test_hooks::reset_counts();
    test_hooks::reload_pool();
  }
  void TearDown() override {
    test_hooks::reset_counts();
    test_hooks::reload_pool();
  }

  static std::vector<PplContext *> claim_all() {
    std::vector<PplContext *> contexts;
    for (int i = 0; i < 8; ++i) contexts.push_back(ppl_init());
    return contexts;
  }

  const FakeProcessor processor{sse2_processor};
};

TEST_F(Pool, HandsOutEightContextsInSlotOrder) {
  const std::vector<PplContext *> contexts = claim_all();
  for (size_t i = 0; i < contexts.size(); ++i) {
    ASSERT_NE(contexts[i], nullptr);
    EXPECT_EQ(contexts[i], contexts[0] + i);
  }
}

TEST_F(Pool, RefusesANinthContextAndTouchesNone) {
  const std::vector<PplContext *> contexts = claim_all();
  std::vector<std::vector<uint8_t>> before;
  for (const PplContext *context : contexts) before.push_back(bytes_of(context));
  test_hooks::reset_counts();
  EXPECT_EQ(ppl_init(), nullptr);
  EXPECT_EQ(test_hooks::save_count(), 0u);
  for (size_t i = 0; i < contexts.size(); ++i) {
    EXPECT_TRUE(bytes_of(contexts[i]) == before[i]) << "slot " << i;
  }
}

TEST_F(Pool, ReusesTheLowestFreeSlotFirst) {
  const std::vector<PplContext *> contexts = claim_all();
  EXPECT_EQ(ppl_free(contexts[4]), 1);
  EXPECT_EQ(ppl_free(contexts[2]), 1);
  EXPECT_EQ(ppl_init(), contexts[2]);
  EXPECT_EQ(ppl_init(), contexts[4]);
  EXPECT_EQ(ppl_init(), nullptr);
}

TEST_F(Pool, MarksAClaimedSlot) {
  PplContext *const context = ppl_init();
  EXPECT_EQ(context->in_use, 1);
  EXPECT_EQ(context[1].in_use, 0);
}

TEST_F(Pool, FreeClearsTheMarkAndNothingElse) {
  PplContext *const context = ppl_init();
  ppl_new_frame_size(context, 640, 480, 640);
  context->n_frame = 12;
  std::vector<uint8_t> expected = bytes_of(context);
  expected[offsetof(PplContext, in_use)] = 0;
  EXPECT_EQ(ppl_free(context), 1);
  EXPECT_TRUE(bytes_of(context) == expected);
}

TEST_F(Pool, FreeOfNullReturnsZero) { EXPECT_EQ(ppl_free(nullptr), 0); }

TEST_F(Pool, FreeTwiceReturnsOneBothTimes) {
  PplContext *const context = ppl_init();
  EXPECT_EQ(ppl_free(context), 1);
  EXPECT_EQ(ppl_free(context), 1);
  EXPECT_EQ(ppl_init(), context);
}

TEST_F(Pool, UnloadReturnsZeroAndKeepsClaimedContexts) {
  PplContext *const context = ppl_init();
  ppl_set_quality(context, 11);
  const std::vector<uint8_t> before = bytes_of(context);
  EXPECT_EQ(DllUnload(), 0);
  EXPECT_TRUE(bytes_of(context) == before);
  EXPECT_EQ(ppl_init(), context + 1);
}

TEST_F(Pool, LoadZeroesAllSlots) {
  const std::vector<PplContext *> contexts = claim_all();
  for (PplContext *const context : contexts) context->n_frame = 99;
  test_hooks::reload_pool();
  const std::vector<uint8_t> zeroes(sizeof(PplContext), 0);
  for (const PplContext *const context : contexts) EXPECT_TRUE(bytes_of(context) == zeroes);
  EXPECT_EQ(ppl_init(), contexts[0]);
}

// ---- A new context ----

TEST_F(Pool, AFirstOwnerSeesNoGeometryAndEmptyPlans) {
  const PplContext *const context = ppl_init();
  EXPECT_EQ(context->frame_width, 0);
  EXPECT_EQ(context->frame_height, 0);
  EXPECT_EQ(context->frame_stride, 0);
  EXPECT_EQ(context->out_width, 0);
  EXPECT_EQ(ppl_n_frame(context), 0u);
  for (const TierState *const tier : {&context->p3, &context->sse2}) {
    EXPECT_EQ(tier->plan.cell_width, 0);
    EXPECT_EQ(tier->plan.cell_height, 0);
    for (const uint32_t normaliser : tier->plan.chain_normaliser) EXPECT_EQ(normaliser, 0u);
    EXPECT_EQ(tier->memory.marker_cell, 0);
  }
}

TEST_F(Pool, AContextIsHandedOutAlsoWhereEverySaveFails) {
  test_hooks::fail_saves(0, UINT32_MAX);
  PplContext *const context = ppl_init();
  ASSERT_NE(context, nullptr);
  EXPECT_EQ(context->in_use, 1);
  EXPECT_EQ(ppl_quality(context), 3u);
  EXPECT_EQ(ppl_nf88_r_gain(context), 256);
  EXPECT_EQ(entry_values(context, "rgb_gain_GR_vec"), (Values{0, 0}));
}

// ---- A reclaimed slot ----

TEST_F(Pool, AReclaimedSlotHasItsControlsAtTheirDefaults) {
  PplContext *const context = ppl_init();
  ppl_set_quality(context, 12);
  ppl_set_rgb_gain(context, 300, 400, 500);
  ppl_set_h_mirror(context, 1);
  ppl_set_decimation(context, 1, 2, 2);
  ppl_free(context);
  ASSERT_EQ(ppl_init(), context);
  EXPECT_EQ(ppl_quality(context), 3u);
  EXPECT_EQ(ppl_nf88_g_gain(context), 256);
  EXPECT_EQ(ppl_h_mirror(context), 0);
  EXPECT_EQ(ppl_decimation(context), 0);
}

TEST_F(Pool, AReclaimedSlotInheritsGeometryCountsAndStatistics) {
  PplContext *const context = ppl_init();
  ppl_new_frame_size(context, 640, 480, 700);
  const uint32_t normaliser = context->p3.plan.chain_normaliser[0];
  context->n_frame = 41;
  context->sensor_type = 42;
  context->p3.memory.marker_cell = 43;
  context->sse2.memory.marker_cell = 44;
  context->rgb_means_whole_frame = {45, 46, 47};
  context->r_histogram[7] = 48;
  context->mean_normaliser = 49;
  context->p3.memory.stat_group_copy[1][7] = 50;
  context->sse2.memory.flat_cell_rgb[2][7] = 51;
  ppl_free(context);

  ASSERT_EQ(ppl_init(), context);
  EXPECT_EQ(context->frame_width, 640);
  EXPECT_EQ(context->frame_height, 480);
  EXPECT_EQ(context->frame_stride, 700);
  EXPECT_EQ(context->frame_size, 640 * 480);
  EXPECT_EQ(context->out_width, 640);
  EXPECT_EQ(context->p3.plan.chain_normaliser[0], normaliser);
  EXPECT_EQ(ppl_n_frame(context), 41u);
  EXPECT_EQ(ppl_sensor_type(context), 42);
  EXPECT_EQ(context->p3.memory.marker_cell, 43);
  EXPECT_EQ(context->sse2.memory.marker_cell, 44);
  EXPECT_EQ(ppl_rgb_means_whole_frame(context)->g, 46u);
  EXPECT_EQ(ppl_r_histogram(context)[7], 48u);
  EXPECT_EQ(context->mean_normaliser, 49u);
  EXPECT_EQ(context->p3.memory.stat_group_copy[1][7], 50);
  EXPECT_EQ(context->sse2.memory.flat_cell_rgb[2][7], 51);
}

TEST_F(Pool, AReclaimedSlotsDecimationIsResetOverItsOldSize) {
  PplContext *const context = ppl_init();
  ppl_new_frame_size(context, 640, 480, 640);
  ppl_set_decimation(context, 1, 6, 6);
  EXPECT_EQ(context->out_width, 320);
  EXPECT_EQ(context->out_height, 252);
  ppl_free(context);
  ASSERT_EQ(ppl_init(), context);
  EXPECT_EQ(context->out_width, 640);
  EXPECT_EQ(context->out_height, 480);
}

// ---- Memory ----

TEST_F(Pool, LineMemoryStandsOnABoundaryOfTheWidestRegister) {
  for (const PplContext *const context : claim_all()) {
    EXPECT_EQ(reinterpret_cast<uintptr_t>(context->line_memory) % line_margin, 0u);
  }
}

}  // namespace
}  // namespace ppl::controls_test
