// Detection on fake processors, and what the tiers found mean for frames.
#include "processor/processor.h"

#include <utility>

#include "controls_fixture.h"

namespace ppl::controls_test {
namespace {

using Leaves = std::vector<uint32_t>;

// Features and flag words are spelled out here.
constexpr uint32_t bit(int index) { return 1u << index; }

class Processor : public testing::Test {
 protected:
  void TearDown() override {
    processor.reset();
    test_hooks::reset_counts();
    test_hooks::reload_pool();
  }

  uint32_t flags_of(const ProcessorLook &look) {
    processor.emplace(look);
    return test_hooks::processor_flags();
  }

  // With extended leaves.
  uint32_t flags_of(const std::string &vendor, uint32_t features, uint32_t extended_features) {
    return flags_of({.vendor = vendor.c_str(),
                     .leaf1_edx = features,
                     .highest_extended_leaf = 0x80000001,
                     .extended_edx = extended_features});
  }

  static const Leaves &leaves_asked() { return FakeProcessor::leaves_asked(); }

  std::optional<FakeProcessor> processor;
};

constexpr const char *amd = "AuthenticAMD";
constexpr const char *another = "TestProcesso";

TEST_F(Processor, FeaturesOfLeaf1AreKeptUnderAMask) {
  for (int index = 0; index < 32; ++index) {
    SCOPED_TRACE(index);
    uint32_t expected = bit(0);
    if (index == 4 || index == 23 || index == 25 || index == 26) expected |= bit(index);
    if (index == 25) expected |= bit(24);
    EXPECT_EQ(flags_of(another, bit(index), 0), expected);
  }
}

TEST_F(Processor, AllFeaturesOfLeaf1Together) {
  EXPECT_EQ(flags_of(another, UINT32_MAX, 0), 0x06800010u | bit(24) | bit(0));
}

TEST_F(Processor, ExtendedFeaturesOfTheVendorAreKeptUnderAMask) {
  for (int index = 0; index < 32; ++index) {
    SCOPED_TRACE(index);
    uint32_t expected = bit(0);
    if (index == 22 || index == 30 || index == 31) expected |= bit(index);
    if (index == 22) expected |= bit(24);
    EXPECT_EQ(flags_of(amd, 0, bit(index)), expected);
  }
}

TEST_F(Processor, ExtendedFeaturesOfAnotherVendorLeaveBit31Alone) {
  for (int index = 0; index < 32; ++index) {
    SCOPED_TRACE(index);
    EXPECT_EQ(flags_of(another, 0, bit(index)), bit(0) | (index == 31 ? bit(31) : 0));
  }
}

TEST_F(Processor, AllTwelveBytesOfTheVendorCount) {
  for (size_t i = 0; i < 12; ++i) {
    std::string vendor = amd;
    vendor[i] = static_cast<char>(vendor[i] ^ 0x20);
    SCOPED_TRACE(vendor);
    EXPECT_EQ(flags_of(vendor, 0, UINT32_MAX), bit(0) | bit(31));
  }
  EXPECT_EQ(flags_of("AuthcAMDenti", 0, UINT32_MAX), bit(0) | bit(31));
  EXPECT_EQ(flags_of(amd, 0, UINT32_MAX), bit(0) | bit(31) | bit(30) | bit(22) | bit(24));
}

TEST_F(Processor, MmxExtensionsOfTheVendorMakeTheP3TierWithoutSse) {
  EXPECT_EQ(flags_of(amd, bit(23), bit(22)), bit(0) | bit(22) | bit(23) | bit(24));
}

TEST_F(Processor, SseWithoutSse2MakesTheP3TierAlone) {
  const uint32_t flags = flags_of(another, bit(23) | bit(25), 0);
  EXPECT_TRUE(flags & bit(24));
  EXPECT_FALSE(flags & bit(26));
}

TEST_F(Processor, MmxAloneMakesNoTier) {
  EXPECT_EQ(flags_of(another, bit(23), 0), bit(0) | bit(23));
}

TEST_F(Processor, HighestLeafZeroLeavesTheWordAtOne) {
  EXPECT_EQ(flags_of({.vendor = amd,
                      .highest_leaf = 0,
                      .leaf1_edx = UINT32_MAX,
                      .highest_extended_leaf = 0x80000001,
                      .extended_edx = UINT32_MAX}),
            1u);
  EXPECT_EQ(leaves_asked(), Leaves{0});
}

TEST_F(Processor, WithoutExtendedLeavesNoExtendedFeatureIsRead) {
  for (const uint32_t highest : {0u, 1u, 0x7FFFFFFFu, 0x80000000u}) {
    SCOPED_TRACE(highest);
    EXPECT_EQ(flags_of({.vendor = amd,
                        .leaf1_edx = bit(25),
                        .highest_extended_leaf = highest,
                        .extended_edx = UINT32_MAX}),
              bit(0) | bit(24) | bit(25));
    EXPECT_EQ(leaves_asked(), (Leaves{0, 1, 0x80000000}));
  }
}

TEST_F(Processor, HigherExtendedLeavesChangeNothing) {
  for (const uint32_t highest : {0x80000001u, 0x80000008u, UINT32_MAX}) {
    SCOPED_TRACE(highest);
    EXPECT_EQ(flags_of({.vendor = amd, .highest_extended_leaf = highest, .extended_edx = bit(30)}),
              bit(0) | bit(30));
    EXPECT_EQ(leaves_asked(), (Leaves{0, 1, 0x80000000, 0x80000001}));
  }
}

TEST_F(Processor, DetectionRunsOnce) {
  flags_of(sse2_processor);
  const Leaves asked = leaves_asked();
  EXPECT_EQ(test_hooks::processor_flags(), bit(0) | bit(4) | bit(23) | bit(24) | bit(25) | bit(26));
  EXPECT_EQ(leaves_asked(), asked);
}

TEST_F(Processor, DetectionRunsOnceAlsoWhereItFindsNothing) {
  EXPECT_EQ(flags_of({.highest_leaf = 0}), 1u);
  EXPECT_EQ(test_hooks::processor_flags(), 1u);
  EXPECT_EQ(leaves_asked(), Leaves{0});
}

TEST_F(Processor, TheMachineThatRunsTheTestsIsDetected) {
  test_hooks::set_cpuid(nullptr);
  const uint32_t flags = test_hooks::processor_flags();
  EXPECT_TRUE(flags & bit(0));
  EXPECT_EQ((flags & bit(25)) != 0, __builtin_cpu_supports("sse") != 0);
  EXPECT_EQ((flags & bit(26)) != 0, __builtin_cpu_supports("sse2") != 0);
  EXPECT_EQ((flags & bit(23)) != 0, __builtin_cpu_supports("mmx") != 0);
}

// ---- When the processor is detected ----

TEST_F(Processor, TheFirstInitDetectsBeforeItSavesAnything) {
  processor.emplace(sse2_processor);
  test_hooks::reload_pool();
  test_hooks::reset_counts();
  static uint32_t saves_before;
  saves_before = UINT32_MAX;
  test_hooks::set_cpuid([](uint32_t leaf) {
    saves_before = test_hooks::save_count();
    return FakeProcessor::answer(leaf);
  });
  ASSERT_NE(ppl_init(), nullptr);
  EXPECT_EQ(saves_before, 0u);
}

TEST_F(Processor, TheFirstInitDetectsWhateverItsSavesDo) {
  for (const uint32_t good_saves : {0u, 1u, 7u, 29u}) {
    SCOPED_TRACE(good_saves);
    processor.emplace(sse2_processor);
    test_hooks::reload_pool();
    test_hooks::reset_counts();
    test_hooks::fail_saves(good_saves, UINT32_MAX);
    PplContext *const context = ppl_init();
    ASSERT_NE(context, nullptr);
    const Leaves asked = leaves_asked();
    EXPECT_EQ(asked, (Leaves{0, 1, 0x80000000}));
    test_hooks::reset_counts();
    EXPECT_EQ(ppl_set_edge_threshold(context, 200), 1);
    EXPECT_EQ(ppl_set_rgb_gain(context, 8, 16, 24), 1);
    EXPECT_EQ(entry_values(context, "edge_threshold_vec"), Values{200});
    EXPECT_EQ(entry_values(context, "rgb_gain_BG_vec"), (Values{3, 2}));
    EXPECT_EQ(leaves_asked(), asked) << "detected again";
  }
}

// Stands for a second thread, which comes in before each of the leaves that the first one reads.
class DetectionTwice : public ControlsTest {
 protected:
  static void come_in_between(std::function<void()> second_thread) {
    intruder() = std::move(second_thread);
    test_hooks::set_cpuid([](uint32_t leaf) {
      // It reads the leaves undisturbed.
      if (const std::function<void()> second = std::exchange(intruder(), nullptr)) {
        second();
        intruder() = second;
      }
      return FakeProcessor::answer(leaf);
    });
  }

  void TearDown() override {
    intruder() = nullptr;
    ControlsTest::TearDown();
  }

 private:
  static std::function<void()> &intruder() {
    static std::function<void()> function;
    return function;
  }
};

TEST_F(DetectionTwice, BothFindTheWholeWord) {
  const uint32_t whole = test_hooks::processor_flags();
  Leaves found;
  come_in_between([&] {
    found.push_back(test_hooks::processor_flags());
    // As if the second thread had come to nothing: the next one finds the first still at work.
    forget_processor();
  });
  EXPECT_EQ(test_hooks::processor_flags(), whole);
  EXPECT_EQ(found, Leaves(3, whole));
}

TEST_F(DetectionTwice, ASetterInBetweenRefreshes) {
  int threshold = 200;
  come_in_between([&] {
    ++threshold;
    EXPECT_EQ(ppl_set_edge_threshold(context, threshold), 1);
    expect_value("edge_threshold_vec", threshold);
  });
  test_hooks::processor_flags();
  EXPECT_EQ(threshold, 203);
}

// ---- Which tier runs a frame ----

// At quality 4 an I420 frame moves the marker of the tier that ran it.
class TierChoice : public ControlsTest {
 protected:
  static constexpr uint32_t width = 160, height = 120;

  void SetUp() override {
    test_hooks::set_cpuid(nullptr);
    if (!has_tier(Tier::p3) || !has_tier(Tier::sse2)) {
      GTEST_SKIP() << "this processor does not have both tiers";
    }
    ControlsTest::SetUp();
    prepare();
  }

  void prepare() {
    ppl_set_quality(context, 4);
    ASSERT_EQ(ppl_new_frame_size(context, width, height, width), 1);
  }

  enum class Ran { neither, p3, sse2 };

  Ran run(size_t source_shift, size_t destination_shift) {
    const int32_t p3 = context->p3.memory.marker_cell, sse2 = context->sse2.memory.marker_cell;
    BaylorToI420MMX(context, source.data() + source_shift, destination.data() + destination_shift,
                    width, height);
    const bool p3_ran = context->p3.memory.marker_cell != p3;
    const bool sse2_ran = context->sse2.memory.marker_cell != sse2;
    EXPECT_FALSE(p3_ran && sse2_ran);
    return p3_ran ? Ran::p3 : sse2_ran ? Ran::sse2 : Ran::neither;
  }

  AlignedBytes source{width * height + 16}, destination{width * height * 2 + 16};
};

TEST_F(TierChoice, AlignedFramesRunTheSse2Tier) { EXPECT_EQ(run(0, 0), Ran::sse2); }

TEST_F(TierChoice, AFrameWithOnePointerOn8BytesRunsTheP3Tier) {
  EXPECT_EQ(run(8, 0), Ran::p3);
  EXPECT_EQ(run(0, 8), Ran::p3);
  EXPECT_EQ(run(8, 8), Ran::p3);
}

TEST_F(TierChoice, TheChoiceIsMadeAnewForEachFrame) {
  EXPECT_EQ(run(8, 0), Ran::p3);
  EXPECT_EQ(run(0, 0), Ran::sse2);
  EXPECT_EQ(run(0, 8), Ran::p3);
}

TEST_F(TierChoice, P3OnlyHoldsAnAlignedFrameToTheP3Tier) {
  for (const uint8_t value : {uint8_t{1}, uint8_t{2}, uint8_t{255}}) {
    ppl_set_P3_only(context, value);
    EXPECT_EQ(ppl_P3_only(context), value);
    EXPECT_EQ(run(0, 0), Ran::p3);
  }
  ppl_reset_P3_only(context);
  EXPECT_EQ(run(0, 0), Ran::sse2);
}

TEST_F(TierChoice, WithoutSse2AlignedFramesRunTheP3Tier) {
  restart_on(p3_processor);
  prepare();
  EXPECT_EQ(run(0, 0), Ran::p3);
}

TEST_F(TierChoice, MisalignedFramesRunNoTier) {
  EXPECT_EQ(run(4, 0), Ran::neither);
  EXPECT_EQ(run(0, 4), Ran::neither);
  EXPECT_EQ(run(1, 1), Ran::neither);
}

TEST_F(TierChoice, WithoutATierFramesFallBackWhileTheControlsWork) {
  restart_on(no_tier_processor);
  prepare();
  const uint32_t frames = ppl_n_frame(context);
  EXPECT_EQ(run(0, 0), Ran::neither);
  EXPECT_EQ(ppl_n_frame(context), frames);
  EXPECT_EQ(ppl_set_rgb_gain(context, 300, 300, 300), 1);
  EXPECT_EQ(ppl_nf88_r_gain(context), 300);
}

// Without the P3 tier there is no pixel path, whatever else the processor has.
TEST_F(TierChoice, Sse2WithoutTheP3TierFallsBack) {
  restart_on(sse2_without_p3_processor);
  prepare();
  EXPECT_EQ(run(0, 0), Ran::neither);
}

TEST_F(TierChoice, AFailedSaveFallsBack) {
  test_hooks::fail_saves(0, 1);
  EXPECT_EQ(run(0, 0), Ran::neither);
  EXPECT_EQ(run(0, 0), Ran::sse2);
}

TEST_F(TierChoice, AMisalignedCallUsesUpNoSave) {
  test_hooks::reset_counts();
  run(4, 0);
  EXPECT_EQ(test_hooks::save_count(), 0u);
}

}  // namespace
}  // namespace ppl::controls_test
