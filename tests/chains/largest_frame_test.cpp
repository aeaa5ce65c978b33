// The largest frame at its brightest: here sums and counts grow as large as they can.
#include "chains/chains.h"

namespace ppl_test::chains {
namespace {

struct Gathered {
  using Words = std::vector<uint32_t>;
  Words windows, means, counts, histograms;

  explicit Gathered(const EitherContext &ctx) {
    const auto add = [](Words &words, const PplTriple *triples, int count) {
      for (int i = 0; i < count; ++i)
        words.insert(words.end(), {triples[i].r, triples[i].g, triples[i].b});
    };
    add(windows, ppl_rgb_means_sub_windows(ctx), 48);
    add(windows, ppl_rgb_means_outside_all_sub_windows(ctx), 1);
    add(windows, ppl_rgb_means_all_sub_windows(ctx), 1);
    add(means, ppl_rgb_means_whole_frame(ctx), 1);
    add(means, ppl_qAE_rgb_means_whole_frame(ctx), 1);
    add(means, ppl_qual_rgb_means_whole_frame(ctx), 1);
    counts = {ppl_n_qAE_2x2_whole_frame(ctx), ppl_n_qual_2x2_whole_frame(ctx)};
    for (const uint32_t *histogram :
         {ppl_r_histogram(ctx), ppl_g_histogram(ctx), ppl_b_histogram(ctx)})
      histograms.insert(histograms.end(), histogram, histogram + 256);
  }
};

struct BrightFrame {
  Tier tier;
  uint32_t quality;
  bool filter;
};
std::ostream &operator<<(std::ostream &out, const BrightFrame &frame) {
  return out << "Quality" << frame.quality << (frame.filter ? "WithRepair" : "")
             << name_of(frame.tier);
}

std::vector<BrightFrame> bright_frames() {
  std::vector<BrightFrame> frames;
  for (const Tier tier : both_tiers) {
    for (const uint32_t quality : {0u, 1u, 2u, 3u, 10u, 11u, 12u, 13u, 14u}) {
      frames.push_back({tier, quality, false});
      if (has_filter(quality)) frames.push_back({tier, quality, true});
    }
  }
  return frames;
}

class LargestFrame : public ::testing::TestWithParam<BrightFrame> {
 protected:
  static constexpr uint32_t samples = 1280 * 1024;

  void SetUp() override {
    ppl::test_hooks::set_cpuid(nullptr);
    ppl::test_hooks::reload_pool();
    if (!has_tier(GetParam().tier)) GTEST_SKIP() << "this tier is not on this processor";
    library.library = ::ppl_init();
    ppl_model::machine::set_flags(flags_of_both_tiers);
    ppl_model::machine::reload_pool();
    model.model = ppl_model::ppl_init();
    for (const EitherContext &ctx : {library, model}) {
      ppl_set_P3_only(ctx, GetParam().tier == Tier::p3);
      ppl_set_quality(ctx, GetParam().quality);
      if (GetParam().filter) ppl_enable_medium_filter(ctx);
      // What it leaves behind is bright, too: large frames of any number are then alike.
      run(ctx, 128, 48);
    }
  }

  Gathered run(const EitherContext &ctx, uint32_t width, uint32_t height) {
    ppl_new_frame_size(ctx, width, height, width);
    memset(source.data(), 255, source.size());
    EXPECT_EQ(ppl_process_blrtoi420(ctx, source.data(), output.data(), width, height, width), 1);
    return Gathered(ctx);
  }
  Gathered run(const EitherContext &ctx) { return run(ctx, 1280, 1024); }

  static void expect_equal(const Gathered &actual, const Gathered &expected) {
    EXPECT_EQ(actual.windows, expected.windows);
    EXPECT_EQ(actual.means, expected.means);
    EXPECT_EQ(actual.counts, expected.counts);
    EXPECT_EQ(actual.histograms, expected.histograms);
  }

  EitherContext library, model;
  GuardedBuffer source{samples, Placement::ends_at_guard};
  GuardedBuffer output{samples * 3 / 2, Placement::ends_at_guard};
};
INSTANTIATE_TEST_SUITE_P(, LargestFrame, ::testing::ValuesIn(bright_frames()),
                         ::testing::PrintToStringParamName());

TEST_P(LargestFrame, IsGatheredInFull) {
  const Gathered expected = run(model);
  expect_equal(run(library), expected);
  {
    SCOPED_TRACE("with bands that each cell must be compared with");
    ppl_set_qAE_RGB_min_max(library, 1, 255);
    ppl_set_qual_RGB_min_max(library, 1, 255, 1, 255, 1, 255);
    expect_equal(run(library), expected);
  }
  if (GetParam().quality != 3) return;
  // Nothing is left out there: one cell in four stands for all of them.
  EXPECT_EQ(expected.means, Gathered::Words(9, 255 * 256));
  EXPECT_EQ(expected.counts, Gathered::Words(2, samples / 4));
}

}  // namespace
}  // namespace ppl_test::chains
