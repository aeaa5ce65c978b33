// What a caller reads after a frame.
#include "controls_fixture.h"

namespace ppl::controls_test {
namespace {

using Reader = const PplTriple *(*)(const PplContext *);

const std::vector<std::pair<const char *, Reader>> averaging_readers = {
    {"4pts", ppl_rgb_means_whole_frame_4pts},
    {"central4", ppl_rgb_means_whole_frame_central4},
    {"central8", ppl_rgb_means_whole_frame_central8},
    {"central16", ppl_rgb_means_whole_frame_central16}};

std::vector<uint32_t> values(const PplTriple *triple) { return {triple->r, triple->g, triple->b}; }

bool is_central(int window) { return window == 19 || window == 20 || window == 27 || window == 28; }

// The ring around the four central windows: rows 1 to 4, columns 1 to 6.
bool is_around(int window) {
  const int row = window / 8, column = window % 8;
  return row >= 1 && row <= 4 && column >= 1 && column <= 6 && !is_central(window);
}

class Readers : public ControlsTest {
 protected:
  // Every window and the mean of all get values that no two of them share.
  void fill_windows(PplContext *filled, uint32_t seed) {
    for (uint32_t i = 0; i < 48; ++i) {
      filled->rgb_means_sub_windows[i] = {seed + i * i * 37, seed + i * 911 + 5,
                                          seed + (i * 7919) % 60000};
    }
    filled->rgb_means_all_sub_windows = {seed + 11111, seed + 22222, seed + 33333};
    filled->rgb_means_whole_frame = {seed + 1, seed + 2, seed + 3};
  }

  template <class Channel>
  uint32_t central_mean(Channel channel, int64_t weight) const {
    int64_t sum = 48 * int64_t{channel(context->rgb_means_all_sub_windows)};
    for (int i = 0; i < 48; ++i) {
      const int64_t window = channel(context->rgb_means_sub_windows[i]);
      sum += is_central(i) ? weight * window : is_around(i) ? window : 0;
    }
    return static_cast<uint32_t>(sum / (4 * weight + 68));
  }

  std::vector<uint32_t> central_means(int64_t weight) const {
    return {central_mean([](const PplTriple &t) { return t.r; }, weight),
            central_mean([](const PplTriple &t) { return t.g; }, weight),
            central_mean([](const PplTriple &t) { return t.b; }, weight)};
  }
};

// ---- Plain readers ----

TEST_F(Readers, TheGridHasEightColumnsAndSixRows) {
  uint32_t columns = 0, rows = 0;
  EXPECT_EQ(ppl_n_sub_windows(context, &columns, &rows), 48);
  EXPECT_EQ(columns, 8u);
  EXPECT_EQ(rows, 6u);
}

TEST_F(Readers, TheGridIsToldWithoutAContext) {
  uint32_t columns = 0, rows = 0;
  EXPECT_EQ(ppl_n_sub_windows(nullptr, &columns, &rows), 48);
  EXPECT_EQ(columns, 8u);
  EXPECT_EQ(rows, 6u);
}

TEST_F(Readers, ReadersPointIntoTheContext) {
  EXPECT_EQ(ppl_rgb_means_sub_windows(context), context->rgb_means_sub_windows);
  EXPECT_EQ(ppl_rgb_means_outside_all_sub_windows(context),
            &context->rgb_means_outside_all_sub_windows);
  EXPECT_EQ(ppl_rgb_means_all_sub_windows(context), &context->rgb_means_all_sub_windows);
  EXPECT_EQ(ppl_rgb_means_whole_frame(context), &context->rgb_means_whole_frame);
  EXPECT_EQ(ppl_qAE_rgb_means_whole_frame(context), &context->qAE_rgb_means_whole_frame);
  EXPECT_EQ(ppl_qual_rgb_means_whole_frame(context), &context->qual_rgb_means_whole_frame);
  EXPECT_EQ(ppl_r_histogram(context), context->r_histogram);
  EXPECT_EQ(ppl_g_histogram(context), context->g_histogram);
  EXPECT_EQ(ppl_b_histogram(context), context->b_histogram);
}

TEST_F(Readers, CountsAreReturnedAsTheyAre) {
  context->n_frame = 0xFFFFFFFF;
  context->n_qAE_2x2_whole_frame = 123456;
  context->n_qual_2x2_whole_frame = 0x89ABCDEF;
  EXPECT_EQ(ppl_n_frame(context), 0xFFFFFFFFu);
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(context), 123456u);
  EXPECT_EQ(ppl_n_qual_2x2_whole_frame(context), 0x89ABCDEFu);
}

// ---- The averaging readers ----

TEST_F(Readers, FourPointsIsTheMeanOfTheFourCentralWindows) {
  ppl_set_quality(context, 0);
  fill_windows(context, 100);
  const PplTriple *const w = context->rgb_means_sub_windows;
  const PplTriple *const result = ppl_rgb_means_whole_frame_4pts(context);
  EXPECT_EQ(result->r, (w[19].r + w[20].r + w[27].r + w[28].r) >> 2);
  EXPECT_EQ(result->g, (w[19].g + w[20].g + w[27].g + w[28].g) >> 2);
  EXPECT_EQ(result->b, (w[19].b + w[20].b + w[27].b + w[28].b) >> 2);
}

TEST_F(Readers, FourPointsReadsNoOtherWindow) {
  ppl_set_quality(context, 0);
  for (int window = 0; window < 48; ++window) {
    memset(context->rgb_means_sub_windows, 0, sizeof context->rgb_means_sub_windows);
    context->rgb_means_sub_windows[window] = {400, 800, 1200};
    EXPECT_EQ(values(ppl_rgb_means_whole_frame_4pts(context)),
              is_central(window) ? (std::vector<uint32_t>{100, 200, 300})
                                 : (std::vector<uint32_t>{0, 0, 0}))
        << window;
  }
}

TEST_F(Readers, CentralMeansWeighTheCentreAndTheRingAroundIt) {
  ppl_set_quality(context, 0);
  fill_windows(context, 100);
  EXPECT_EQ(values(ppl_rgb_means_whole_frame_central4(context)), central_means(3));
  EXPECT_EQ(values(ppl_rgb_means_whole_frame_central8(context)), central_means(7));
  EXPECT_EQ(values(ppl_rgb_means_whole_frame_central16(context)), central_means(15));
}

TEST_F(Readers, EachWindowHasItsWeightInTheCentralMeans) {
  ppl_set_quality(context, 0);
  memset(&context->rgb_means_all_sub_windows, 0, sizeof(PplTriple));
  const struct {
    Reader reader;
    uint32_t weight, divisor;
  } cases[] = {{ppl_rgb_means_whole_frame_central4, 3, 80},
               {ppl_rgb_means_whole_frame_central8, 7, 96},
               {ppl_rgb_means_whole_frame_central16, 15, 128}};
  for (const auto &[reader, weight, divisor] : cases) {
    for (int window = 0; window < 48; ++window) {
      SCOPED_TRACE(testing::Message() << "weight " << weight << ", window " << window);
      memset(context->rgb_means_sub_windows, 0, sizeof context->rgb_means_sub_windows);
      context->rgb_means_sub_windows[window] = {divisor, 10 * divisor, 100 * divisor};
      const uint32_t share = is_central(window) ? weight : is_around(window) ? 1 : 0;
      EXPECT_EQ(values(reader(context)), (std::vector<uint32_t>{share, 10 * share, 100 * share}));
    }
  }
}

TEST_F(Readers, TheMeanOfAllWindowsCounts48Times) {
  ppl_set_quality(context, 0);
  memset(context->rgb_means_sub_windows, 0, sizeof context->rgb_means_sub_windows);
  context->rgb_means_all_sub_windows = {800, 960, 1280};
  EXPECT_EQ(values(ppl_rgb_means_whole_frame_central4(context)),
            (std::vector<uint32_t>{48 * 800 / 80, 48 * 960 / 80, 48 * 1280 / 80}));
  EXPECT_EQ(values(ppl_rgb_means_whole_frame_central8(context)),
            (std::vector<uint32_t>{48 * 800 / 96, 48 * 960 / 96, 48 * 1280 / 96}));
  EXPECT_EQ(values(ppl_rgb_means_whole_frame_central16(context)),
            (std::vector<uint32_t>{48 * 800 / 128, 48 * 960 / 128, 48 * 1280 / 128}));
}

TEST_F(Readers, CentralMeansDivideASignedSumTruncating) {
  ppl_set_quality(context, 0);
  memset(context->rgb_means_sub_windows, 0, sizeof context->rgb_means_sub_windows);
  memset(&context->rgb_means_all_sub_windows, 0, sizeof(PplTriple));
  context->rgb_means_sub_windows[9].r = 0xFFFFFFFF - 99;  // -100
  context->rgb_means_sub_windows[9].g = 0xFFFFFFFF - 78;  // -79
  EXPECT_EQ(values(ppl_rgb_means_whole_frame_central4(context)),
            (std::vector<uint32_t>{0xFFFFFFFF, 0, 0}));
}

TEST_F(Readers, AtQuality3TheAveragingReadersReturnTheWholeFrame) {
  fill_windows(context, 500);
  ASSERT_EQ(ppl_quality(context), 3u);
  for (const auto &[name, reader] : averaging_readers) {
    EXPECT_EQ(reader(context), ppl_rgb_means_whole_frame(context)) << name;
  }
}

TEST_F(Readers, AtQuality3NoSharedTripleChanges) {
  for (const auto &[name, reader] : averaging_readers) {
    SCOPED_TRACE(name);
    ppl_set_quality(context, 0);
    fill_windows(context, 100);
    const PplTriple *const shared = reader(context);
    const std::vector<uint32_t> before = values(shared);
    ppl_set_quality(context, 3);
    fill_windows(context, 9000);
    reader(context);
    EXPECT_EQ(values(shared), before);
  }
}

// The frame ran at another quality: the control at the time of the call decides.
TEST_F(Readers, OnlyQuality3ReturnsTheWholeFrame) {
  fill_windows(context, 100);
  for (uint32_t quality = 0; quality < 15; ++quality) {
    SCOPED_TRACE(quality);
    ppl_set_quality(context, quality);
    for (const auto &[name, reader] : averaging_readers) {
      EXPECT_EQ(reader(context) == ppl_rgb_means_whole_frame(context), quality == 3) << name;
    }
  }
}

TEST_F(Readers, TheFourAveragingReadersHaveATripleEach) {
  ppl_set_quality(context, 0);
  std::set<const PplTriple *> triples;
  for (const auto &[name, reader] : averaging_readers) triples.insert(reader(context));
  EXPECT_EQ(triples.size(), 4u);
}

TEST_F(Readers, TwoContextsShareEachReadersTriple) {
  PplContext *const other = ppl_init();
  ASSERT_NE(other, nullptr);
  for (const auto &[name, reader] : averaging_readers) {
    SCOPED_TRACE(name);
    ppl_set_quality(context, 0);
    ppl_set_quality(other, 1);
    fill_windows(context, 100);
    fill_windows(other, 9000);
    const PplTriple *const first = reader(context);
    const std::vector<uint32_t> first_values = values(first);
    const PplTriple *const second = reader(other);
    EXPECT_EQ(first, second);
    EXPECT_NE(values(first), first_values);
    EXPECT_EQ(values(reader(context)), first_values);
  }
}

// ---- After frames ----

class FrameReaders : public Readers {
 protected:
  // Both tiers' windows hold an even number of block columns, so each the same number of samples.
  static constexpr uint32_t width = 512, height = 480;

  void SetUp() override {
    test_hooks::set_cpuid(nullptr);
    if (!has_tier(Tier::p3)) GTEST_SKIP() << "this processor runs no frames";
    test_hooks::reset_counts();
    test_hooks::reload_pool();
    context = ppl_init();
    ASSERT_EQ(ppl_new_frame_size(context, width, height, width), 1);
    // With the identity as curve a flat frame stays flat.
    ppl_set_gamma(context, -17);
  }

  void run_flat(uint32_t quality, uint8_t value) {
    ppl_set_quality(context, quality);
    memset(source.data(), value, width * height);
    EXPECT_EQ(BaylorToI420MMX(context, source.data(), destination.data(), width, height), 1);
  }

  void mark_statistics() {
    context->n_frame = 70;
    memset(context->rgb_means_sub_windows, 1, sizeof context->rgb_means_sub_windows);
    context->rgb_means_outside_all_sub_windows = {1, 2, 3};
    context->rgb_means_all_sub_windows = {4, 5, 6};
    context->rgb_means_whole_frame = {7, 8, 9};
    context->qAE_rgb_means_whole_frame = {10, 11, 12};
    context->qual_rgb_means_whole_frame = {13, 14, 15};
    context->n_qAE_2x2_whole_frame = 16;
    context->n_qual_2x2_whole_frame = 17;
    context->r_histogram[0] = context->g_histogram[128] = context->b_histogram[255] = 18;
  }

  // Everything that a frame clears, as one list.
  std::vector<uint32_t> all_statistics() const {
    std::vector<uint32_t> all;
    const auto add = [&](const PplTriple *triples, size_t count) {
      for (size_t i = 0; i < count; ++i) {
        all.insert(all.end(), {triples[i].r, triples[i].g, triples[i].b});
      }
    };
    add(ppl_rgb_means_sub_windows(context), 48);
    add(ppl_rgb_means_outside_all_sub_windows(context), 1);
    add(ppl_rgb_means_all_sub_windows(context), 1);
    add(ppl_rgb_means_whole_frame(context), 1);
    add(ppl_qAE_rgb_means_whole_frame(context), 1);
    add(ppl_qual_rgb_means_whole_frame(context), 1);
    all.push_back(ppl_n_qAE_2x2_whole_frame(context));
    all.push_back(ppl_n_qual_2x2_whole_frame(context));
    for (const uint32_t *histogram :
         {ppl_r_histogram(context), ppl_g_histogram(context), ppl_b_histogram(context)}) {
      all.insert(all.end(), histogram, histogram + 256);
    }
    return all;
  }

  void expect_all_zero() {
    EXPECT_EQ(all_statistics(), std::vector<uint32_t>(all_statistics().size(), 0));
    for (const auto &[name, reader] : averaging_readers) {
      EXPECT_EQ(values(reader(context)), std::vector<uint32_t>(3, 0)) << name;
    }
  }

  AlignedBytes source{width * height * 2}, destination{width * height * 4};
};

TEST_F(FrameReaders, QualitiesThatRunNothingReadZeroAndCountTheFrame) {
  for (const uint32_t quality : {5u, 6u, 7u, 8u}) {
    SCOPED_TRACE(quality);
    mark_statistics();
    run_flat(quality, 100);
    expect_all_zero();
    EXPECT_EQ(ppl_n_frame(context), 71u);
  }
}

TEST_F(FrameReaders, CopyQualitiesReadZeroAndCountTheFrame) {
  for (const uint32_t quality : {4u, 9u}) {
    SCOPED_TRACE(quality);
    mark_statistics();
    ppl_set_quality(context, quality);
    EXPECT_EQ(BaylorToI420MMX(context, source.data(), destination.data(), width, height), 0);
    expect_all_zero();
    EXPECT_EQ(ppl_n_frame(context), 71u);
  }
}

TEST_F(FrameReaders, WithoutMeanCollectionEveryQualityReadsZero) {
  ppl_set_mean_collection(context, 0);
  for (uint32_t quality = 0; quality < 15; ++quality) {
    if (quality == 4 || quality == 9) continue;
    SCOPED_TRACE(quality);
    mark_statistics();
    run_flat(quality, 100);
    expect_all_zero();
  }
}

TEST_F(FrameReaders, AFlatFrameAtQuality3ReadsItsValueOverTheWholeFrameAndNoWindows) {
  for (const uint8_t P3_only : {uint8_t{0}, uint8_t{1}}) {
    SCOPED_TRACE(int{P3_only});
    ppl_set_P3_only(context, P3_only);
    run_flat(3, 100);
    EXPECT_EQ(values(ppl_rgb_means_whole_frame(context)), std::vector<uint32_t>(3, 25600));
    EXPECT_EQ(values(ppl_rgb_means_all_sub_windows(context)), std::vector<uint32_t>(3, 0));
    for (int i = 0; i < 48; ++i) {
      EXPECT_EQ(values(ppl_rgb_means_sub_windows(context) + i), std::vector<uint32_t>(3, 0));
    }
    for (const auto &[name, reader] : averaging_readers) {
      EXPECT_EQ(reader(context), ppl_rgb_means_whole_frame(context)) << name;
    }
  }
}

// One cell in four is sampled, and the count is scaled to the whole frame.
TEST_F(FrameReaders, AFlatFrameAtQuality3CountsAllItsCells) {
  run_flat(3, 100);
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(context), width * height / 4);
  EXPECT_EQ(ppl_n_qual_2x2_whole_frame(context), width * height / 4);
  EXPECT_EQ(values(ppl_qAE_rgb_means_whole_frame(context)), std::vector<uint32_t>(3, 25600));
  EXPECT_EQ(values(ppl_qual_rgb_means_whole_frame(context)), std::vector<uint32_t>(3, 25600));
}

TEST_F(FrameReaders, AFlatFrameAtQuality0HasEqualInnerWindowsAndNothingOutside) {
  for (const uint8_t P3_only : {uint8_t{0}, uint8_t{1}}) {
    SCOPED_TRACE(int{P3_only});
    ppl_set_P3_only(context, P3_only);
    run_flat(0, 100);
    EXPECT_EQ(values(ppl_rgb_means_outside_all_sub_windows(context)), std::vector<uint32_t>(3, 0));
    // A window away from the frame's edges has one cell in four sampled. The chain's factor makes
    // up for the margins of the frame, so such a window reads a little high.
    const uint32_t cells = width / 8 * (height / 6) / 4, sum = cells / 4 * 100;
    const uint32_t m = tier_state(context, P3_only || !has_tier(Tier::sse2) ? Tier::p3 : Tier::sse2)
                           .plan.chain_normaliser[0];
    const uint32_t r = (context->r_window_scale * ((sum * m) >> 8)) >> 12;
    const uint32_t g = (context->g_window_scale * ((2 * sum * m) >> 8)) >> 12;
    EXPECT_NEAR(r, 25600, 25600 / 5);
    const PplTriple *const windows = ppl_rgb_means_sub_windows(context);
    for (int i = 0; i < 48; ++i) {
      if (!is_central(i) && !is_around(i)) continue;
      EXPECT_EQ(values(windows + i), (std::vector<uint32_t>{r, g, r})) << i;
    }
  }
}

TEST_F(FrameReaders, CentralMeansOfAFlatFrameFollowFromItsWindows) {
  run_flat(0, 100);
  EXPECT_EQ(values(ppl_rgb_means_whole_frame_central4(context)), central_means(3));
  EXPECT_EQ(values(ppl_rgb_means_whole_frame_central8(context)), central_means(7));
  EXPECT_EQ(values(ppl_rgb_means_whole_frame_central16(context)), central_means(15));
  EXPECT_GT(central_means(7)[0], 0u);
}

TEST_F(FrameReaders, AfterQuality13OnlyTheWholeFrameIsValid) {
  ppl_set_gamma(context, 0);
  run_flat(13, 100);
  // A left neighbour has passed the table, the current group has not: half the samples each.
  const uint32_t table_value = ppl_yuv_contrast_gamma_table(context)[100];
  EXPECT_EQ(values(ppl_rgb_means_whole_frame(context)),
            std::vector<uint32_t>(3, (table_value + 100) * 128));
  for (const auto &[name, reader] : averaging_readers) {
    EXPECT_EQ(values(reader(context)), std::vector<uint32_t>(3, 0)) << name;
  }
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(context), 0u);
  EXPECT_EQ(ppl_n_qual_2x2_whole_frame(context), 0u);
}

TEST_F(FrameReaders, AFrameThatItsNewSizeStopsKeepsTheStatistics) {
  run_flat(3, 100);
  mark_statistics();
  const std::vector<uint32_t> before = all_statistics();
  EXPECT_EQ(BaylorToI420MMX(context, source.data(), destination.data(), 320, 240), 0);
  EXPECT_EQ(all_statistics(), before);
  EXPECT_EQ(ppl_n_frame(context), 70u);
}

TEST_F(FrameReaders, AFallbackFrameKeepsTheStatistics) {
  mark_statistics();
  const std::vector<uint32_t> before = all_statistics();
  EXPECT_EQ(BaylorToI420MMX(context, source.data() + 4, destination.data(), width, height), 0);
  EXPECT_EQ(all_statistics(), before);
  EXPECT_EQ(ppl_n_frame(context), 70u);
}

TEST_F(FrameReaders, PackedVideoCountsItsFrameAndLeavesTheStatistics) {
  ASSERT_EQ(ppl_new_frame_sizes(context, 320, 240, 320, 240), 1);
  mark_statistics();
  const std::vector<uint32_t> before = all_statistics();
  EXPECT_EQ(YUYVToI420MMX(context, source.data(), destination.data(), 320, 240, 320, 240), 1);
  EXPECT_EQ(all_statistics(), before);
  EXPECT_EQ(ppl_n_frame(context), 71u);
}

TEST_F(FrameReaders, EveryFrameCounts) {
  const uint32_t before = ppl_n_frame(context);
  for (uint32_t quality = 0; quality < 15; ++quality) {
    ppl_set_quality(context, quality);
    BaylorToI420MMX(context, source.data(), destination.data(), width, height);
    EXPECT_EQ(ppl_n_frame(context), before + quality + 1);
  }
}

}  // namespace
}  // namespace ppl::controls_test
