// Contexts, tiers, threads, statistics.
#include <thread>

#include "layer/layer_fixture.h"

namespace ppl_test {
namespace {

using ppl::Mosaic;
using ppl::Output;
using ppl::Pipeline;
using ppl::PixelFormat;
using ppl::RawFormat;
using ppl::Statistics;
using ppl::Tier;

constexpr uint32_t width = 256, height = 96;
constexpr RawFormat bggr{.width = width, .height = height};

class Pipelines : public LayerTest {};

TEST_F(Pipelines, ThereAreEightAndTheNinthSaysSo) {
  std::vector<Pipeline> pipelines;
  for (int i = 0; i < 8; ++i) pipelines.emplace_back(bggr);
  const std::string taken =
      "all eight contexts of the library are taken: destroy a pipeline that is no longer needed";
  EXPECT_EQ(sentence_of([] { Pipeline ninth(bggr); }), taken);
  EXPECT_EQ(sentence_of([] { ppl::processor_tier(); }), taken);
  pipelines.pop_back();
  EXPECT_EQ(sentence_of([] { Pipeline eighth(bggr); }), "accepted");
  for (int i = 0; i < 20; ++i) Pipeline again(bggr);
  for (int i = 0; i < 20; ++i) sentence_of([] { Pipeline refused(bggr, {.quality = 5}); });
  EXPECT_EQ(sentence_of([] { Pipeline eighth(bggr); }), "accepted");
}

TEST_F(Pipelines, CanBeMovedAndThenAreEmpty) {
  Pipeline first(bggr);
  ppl::Controls &controls = first.controls();
  Pipeline second(std::move(first));
  controls.set("quality", 1);
  EXPECT_EQ(second.output().quality, 1u);
  const Bytes frame = noise(width * height, 1);
  run_guarded(second, frame);
  EXPECT_EQ(second.frames(), 1u);
  const std::string moved = "this pipeline was moved away: use the one that it became";
  EXPECT_EQ(sentence_of([&] { first.frames(); }), moved);  // NOLINT(bugprone-use-after-move)
  first = std::move(second);
  EXPECT_EQ(first.frames(), 1u);
  EXPECT_EQ(sentence_of([&] { second.controls(); }), moved);  // NOLINT(bugprone-use-after-move)
}

TEST_F(Pipelines, OnAProcessorWithoutATierThereAreNone) {
  const FakeProcessor processor(no_tier_processor);
  const std::string sentence =
      "this processor has no MMX with the integer instructions of SSE, so no frame can be "
      "processed on it";
  EXPECT_EQ(sentence_of([] { Pipeline pipeline(bggr); }), sentence);
  EXPECT_EQ(sentence_of([] { ppl::processor_tier(); }), sentence);
  ppl::test_hooks::set_cpuid(nullptr);
  EXPECT_EQ(sentence_of([] { Pipeline pipeline(bggr); }), "accepted") << "no context was lost";
}

TEST_F(Pipelines, OnAProcessorWithoutSse2TheyTakeSmallerFrames) {
  const FakeProcessor processor(p3_processor);
  EXPECT_EQ(ppl::processor_tier(), Tier::p3);
  Pipeline pipeline(RawFormat{.width = 64, .height = 18});
  EXPECT_EQ(pipeline.tier(), Tier::p3);
  EXPECT_EQ(sentence_of([] { Pipeline refused(bggr, {.tier = Tier::sse2}); }),
            "this processor has no SSE2: take the tier p3 or best");
}

TEST_F(Pipelines, BufferOfAnyAlignmentRunsOnTheSameTier) {
  if (!has_sse2()) GTEST_SKIP() << "no SSE2 tier on this processor";
  // Histograms tell the tiers apart.
  Pipeline pipeline(bggr), p3(bggr, {.tier = Tier::p3});
  const Bytes frame = noise(width * height, 2);
  run_guarded(pipeline, frame, {Placement::begins_behind_guard, 0, 0});
  const Statistics aligned = pipeline.statistics();
  run_guarded(pipeline, frame, {Placement::begins_behind_guard, 7, 3});
  EXPECT_EQ(pipeline.statistics().histograms, aligned.histograms);
  run_guarded(p3, frame);
  EXPECT_NE(p3.statistics().histograms, aligned.histograms);
}

TEST_F(Pipelines, OnThreadsOfTheirOwnMakeThePicturesThatTheyMakeAlone) {
  const std::vector<Output> outputs = all_outputs(bggr);
  const Bytes frame = noise(width * height, 3);
  constexpr size_t thread_count = 4;
  std::vector<Bytes> alone(outputs.size()), together(outputs.size());
  const auto run = [&](size_t i) {
    const RawFormat format{.width = width, .height = height, .mosaic = static_cast<Mosaic>(i % 4)};
    Pipeline pipeline(format, outputs[i]);
    pipeline.controls().set("gamma", static_cast<int64_t>(i % 60) - 30);
    Bytes picture(pipeline.layout().bytes);
    for (int n = 0; n < 3; ++n) pipeline.process(frame, picture);
    pipeline.statistics().weighted_to_centre(8);
    return picture;
  };
  const auto is_marked = [&](size_t i) {
    return outputs[i].quality == 4 || outputs[i].quality == 9;
  };
  for (size_t i = 0; i < outputs.size(); ++i) alone[i] = run(i);
  std::vector<std::thread> threads;
  for (size_t t = 0; t < thread_count; ++t)
    threads.emplace_back([&, t] {
      for (size_t i = t; i < outputs.size(); i += thread_count) together[i] = run(i);
    });
  for (std::thread &thread : threads) thread.join();
  for (size_t i = 0; i < outputs.size(); ++i)
    EXPECT_TRUE(is_marked(i) || alone[i] == together[i]) << described(outputs[i]);
}

// ---- Statistics ----

class LayerStatistics : public LayerTest {};

// Bright on the right and at the bottom, with a little noise.
Bytes slope() {
  Random random(4);
  Bytes frame;
  for (uint32_t y = 0; y < height; ++y)
    for (uint32_t x = 0; x < width; ++x)
      frame.push_back(static_cast<uint8_t>(20 + x / 3 + y + random.below(4)));
  return frame;
}

void expect_same(const ppl::Mean &mean, const PplTriple *triple) {
  EXPECT_EQ(mean, (ppl::Mean{triple->r, triple->g, triple->b}));
}

TEST_F(LayerStatistics, AreThoseThatTheReadersTell) {
  for (const Output &output : all_outputs(bggr)) {
    SCOPED_TRACE(described(output));
    Pipeline pipeline(bggr, output);
    run_guarded(pipeline, slope());
    const Statistics statistics = pipeline.statistics();
    const PplContext *const ctx = pipeline.context();
    expect_same(statistics.whole_frame, ppl_rgb_means_whole_frame(ctx));
    expect_same(statistics.outside_windows, ppl_rgb_means_outside_all_sub_windows(ctx));
    expect_same(statistics.all_windows, ppl_rgb_means_all_sub_windows(ctx));
    expect_same(statistics.exposure, ppl_qAE_rgb_means_whole_frame(ctx));
    expect_same(statistics.qualified, ppl_qual_rgb_means_whole_frame(ctx));
    expect_same(statistics.centre(), ppl_rgb_means_whole_frame_4pts(ctx));
    expect_same(statistics.weighted_to_centre(4), ppl_rgb_means_whole_frame_central4(ctx));
    expect_same(statistics.weighted_to_centre(8), ppl_rgb_means_whole_frame_central8(ctx));
    expect_same(statistics.weighted_to_centre(16), ppl_rgb_means_whole_frame_central16(ctx));
    EXPECT_EQ(statistics.exposure_cells, ppl_n_qAE_2x2_whole_frame(ctx));
    EXPECT_EQ(statistics.qualified_cells, ppl_n_qual_2x2_whole_frame(ctx));
    for (size_t i = 0; i < 48; ++i)
      expect_same(statistics.windows[i / 8][i % 8], ppl_rgb_means_sub_windows(ctx) + i);
    const auto holds = [&](size_t channel, const uint32_t *bins) {
      EXPECT_TRUE(std::equal(bins, bins + 256, statistics.histograms[channel].begin()));
    };
    holds(0, ppl_r_histogram(ctx));
    holds(1, ppl_g_histogram(ctx));
    holds(2, ppl_b_histogram(ctx));
    EXPECT_EQ(statistics.frame, 1u);
    EXPECT_EQ(statistics.quality, output.quality);
    EXPECT_EQ(statistics.cells, width * height / 4);
    // What is said to be gathered is there, and nothing else.
    EXPECT_EQ(statistics.has_means, statistics.whole_frame.g != 0);
    EXPECT_EQ(statistics.has_windows, statistics.all_windows.g != 0);
    EXPECT_EQ(statistics.has_bands, statistics.exposure_cells != 0);
    EXPECT_DOUBLE_EQ(statistics.whole_frame.steps().g, statistics.whole_frame.g / 256.0);
  }
}

TEST_F(LayerStatistics, WindowsStandAsTheCameraSeesThemWhateverIsTurned) {
  // Four quarters. Windows do not hold equal numbers of samples, less so the larger the frame is.
  constexpr uint32_t w = 640, h_lines = 480;
  Bytes frame;
  for (uint32_t y = 0; y < h_lines; ++y)
    for (uint32_t x = 0; x < w; ++x)
      frame.push_back(static_cast<uint8_t>((x < w / 2 ? 10 : 100) + (y < h_lines / 2 ? 0 : 100)));
  for (const Mosaic mosaic : {Mosaic::bggr, Mosaic::gbrg, Mosaic::grbg, Mosaic::rggb}) {
    const bool h = mosaic == Mosaic::gbrg || mosaic == Mosaic::rggb;
    const bool v = mosaic == Mosaic::grbg || mosaic == Mosaic::rggb;
    Output output{.format = PixelFormat::uyvy, .quality = 1};
    const Statistics expected =
        run_plainly(turned_plane(frame, w, 1, h, v), w, h_lines, output).statistics;
    for (const bool mirrored : {false, true}) {
      output.h_mirror = mirrored;
      Pipeline pipeline(RawFormat{.width = w, .height = h_lines, .mosaic = mosaic}, output);
      run_guarded(pipeline, frame);
      const Statistics statistics = pipeline.statistics();
      for (size_t row = 0; row < 6; ++row)
        for (size_t column = 0; column < 8; ++column)
          EXPECT_EQ(statistics.windows[row][column],
                    expected.windows[v ? 5 - row : row][h ? 7 - column : column]);
      uint32_t left = 0, right = 0, top = 0, bottom = 0;
      for (size_t row = 0; row < 6; ++row)
        for (size_t column = 0; column < 8; ++column) {
          const uint32_t level = statistics.windows[row][column].g;
          (column < 4 ? left : right) += level;
          (row < 3 ? top : bottom) += level;
        }
      EXPECT_LT(left, right);
      EXPECT_LT(top, bottom);
    }
  }
}

TEST_F(LayerStatistics, ThereAreNoneBeforeAFrameNorInVideo) {
  {
    Pipeline earlier(bggr);
    run_guarded(earlier, slope());
  }
  Pipeline pipeline(bggr);
  EXPECT_EQ(sentence_of([&] { pipeline.statistics(); }),
            "there are no statistics before the first frame: run one");
  Pipeline video(ppl::VideoFormat{.width = width, .height = height});
  EXPECT_EQ(sentence_of([&] { video.statistics(); }),
            "packed video has no statistics: take them from raw frames");
}

TEST_F(LayerStatistics, OfAFirstFrameDoNotDependOnEarlierStreams) {
  for (const Tier tier : {Tier::p3, Tier::best})
    for (const uint32_t quality : {0u, 2u, 11u, 14u}) {
      const Output output{.quality = quality, .tier = tier};
      const Bytes frame = noise(width * height, 5);
      const auto first_frame = [&] {
        Pipeline pipeline(bggr, output);
        run_guarded(pipeline, frame);
        return pipeline.statistics();
      };
      ppl::test_hooks::reload_pool();
      const Statistics expected = first_frame();
      for (const uint8_t level : {uint8_t{0}, uint8_t{100}}) {
        run_plainly(Bytes(width * height, level), width, height, output);
        const Statistics statistics = first_frame();
        EXPECT_EQ(statistics.histograms, expected.histograms) << described(output);
        EXPECT_EQ(statistics.qualified, expected.qualified) << described(output);
      }
    }
}

TEST_F(LayerStatistics, OutliveTheirPipelineAndAChangeOfItsOutput) {
  std::optional<Pipeline> pipeline(std::in_place, bggr, Output{.quality = 11});
  run_guarded(*pipeline, slope());
  const Statistics before = pipeline->statistics();
  // Quality 1 clears what quality 11 left, which takes a frame of its own.
  pipeline->set_output({.quality = 1});
  const Statistics after = pipeline->statistics();
  EXPECT_EQ(after.quality, 11u);
  EXPECT_EQ(after.whole_frame, before.whole_frame);
  EXPECT_EQ(after.histograms, before.histograms);
  run_guarded(*pipeline, Bytes(width * height, 0));
  EXPECT_EQ(pipeline->statistics().quality, 1u);
  EXPECT_EQ(pipeline->statistics().frame, 2u);
  pipeline.reset();
  EXPECT_NE(before.whole_frame.g, 0u);
}

TEST_F(LayerStatistics, InTheP3TierRgb24HasThePictureAndTheMeansOfRgb32) {
  const Bytes frame = slope();
  Pipeline rgb24(bggr, {.format = PixelFormat::rgb24, .tier = Tier::p3});
  Pipeline rgb32(bggr, {.format = PixelFormat::rgb32, .tier = Tier::p3});
  const Bytes picture = run_guarded(rgb24, frame), expected = run_guarded(rgb32, frame);
  for (size_t i = 0; i < picture.size(); ++i) ASSERT_EQ(picture[i], expected[i / 3 * 4 + i % 3]);
  EXPECT_EQ(rgb24.statistics().whole_frame, rgb32.statistics().whole_frame);
}

// ---- Exposure ----

class LayerExposure : public LayerTest {
 protected:
  static Statistics of(double r, double g, double b, double unclipped) {
    Statistics statistics;
    statistics.has_bands = true;
    statistics.cells = 10000;
    statistics.qualified_cells = static_cast<uint32_t>(unclipped * 10000);
    const auto fixed = [](double value) { return static_cast<uint32_t>(value * 256); };
    statistics.qualified = {fixed(r), fixed(g), fixed(b)};
    return statistics;
  }
};

TEST_F(LayerExposure, GoesUpAndDownByTheRatioOfGreenAndOffWhatIsClipped) {
  ppl::AutoExposure steering;
  steering.update(of(22, 22, 22, 1));
  EXPECT_NEAR(steering.exposure(), 1, 1e-9);
  steering.update(of(88, 88, 88, 1));
  EXPECT_NEAR(steering.exposure(), 0, 1e-9);
  steering.update(of(1, 1, 1, 1));
  EXPECT_NEAR(steering.exposure(), 2, 1e-9) << "two stops at the most";
  steering.update(of(44, 44, 44, 0.8));
  EXPECT_NEAR(steering.exposure(), 1, 1e-9);
  steering.update(of(44, 44, 44, 0.1));
  EXPECT_NEAR(steering.exposure(), -1, 1e-9);
}

TEST_F(LayerExposure, BringsRedAndBlueToGreenAndSetsTheGains) {
  ppl::AutoExposure steering;
  Pipeline pipeline(bggr);
  steering.prepare(pipeline.controls());
  EXPECT_EQ(pipeline.controls().get_text("qual_RGB"), "0,250,0,250,0,250");
  steering.update(of(22, 44, 88, 1));
  steering.apply(pipeline.controls());
  EXPECT_EQ(pipeline.controls().get_text("rgb_gain"), "512,256,128");
  steering.update(of(1, 44, 0.5, 1));
  EXPECT_DOUBLE_EQ(steering.r_gain(), 2) << "too dark to tell";
}

TEST_F(LayerExposure, NeedsAQualityThatGathersItsMeans) {
  ppl::AutoExposure steering;
  Pipeline pipeline(bggr, {.quality = 12});
  run_guarded(pipeline, slope());
  EXPECT_EQ(sentence_of([&] { steering.update(pipeline.statistics()); }),
            "quality 12 gathered no qualified means: take quality 0 to 3, 10, 11 or 14, with "
            "statistics");
}

}  // namespace
}  // namespace ppl_test
