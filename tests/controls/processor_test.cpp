// Detection on injected processors, and what the tiers found mean for frames.
#include "frame/processor.h"

#include "controls_fixture.h"

namespace ppl::controls_test {
namespace {

using test_hooks::CpuidResult;

// The processor that the next detection meets.
struct Machine {
  uint32_t highest_leaf = 1;
  std::string vendor = "TestProcesso";
  uint32_t features = 0;  // EDX of leaf 1
  uint32_t highest_extended_leaf = 0x80000001;
  uint32_t extended_features = 0;  // EDX of leaf 0x80000001
};

Machine machine;
std::vector<uint32_t> leaves_asked;

uint32_t four_bytes(const std::string &text, size_t first) {
  uint32_t value = 0;
  for (size_t i = 0; i < 4; ++i) {
    value |= static_cast<uint32_t>(static_cast<uint8_t>(text[first + i])) << (8 * i);
  }
  return value;
}

// What no test asks for is all ones, so that reading it shows.
CpuidResult machine_cpuid(uint32_t leaf) {
  leaves_asked.push_back(leaf);
  switch (leaf) {
    case 0:
      return {machine.highest_leaf, four_bytes(machine.vendor, 0), four_bytes(machine.vendor, 8),
              four_bytes(machine.vendor, 4)};
    case 1:
      return {0x0F27, UINT32_MAX, UINT32_MAX, machine.features};
    case 0x80000000:
      return {machine.highest_extended_leaf, UINT32_MAX, UINT32_MAX, UINT32_MAX};
    case 0x80000001:
      return {UINT32_MAX, UINT32_MAX, UINT32_MAX, machine.extended_features};
    default:
      ADD_FAILURE() << "leaf " << leaf;
      return {UINT32_MAX, UINT32_MAX, UINT32_MAX, UINT32_MAX};
  }
}

constexpr uint32_t bit(int index) { return 1u << index; }

class Processor : public testing::Test {
 protected:
  void SetUp() override { machine = {}; }
  void TearDown() override {
    test_hooks::set_cpuid(nullptr);
    test_hooks::reload_pool();
  }

  static uint32_t flags_of(const Machine &tested) {
    machine = tested;
    leaves_asked.clear();
    test_hooks::set_cpuid(machine_cpuid);
    return test_hooks::processor_flags();
  }
};

constexpr const char *amd = "AuthenticAMD";

TEST_F(Processor, FeaturesOfLeaf1AreKeptUnderAMask) {
  for (int index = 0; index < 32; ++index) {
    SCOPED_TRACE(index);
    uint32_t expected = bit(0);
    if (index == 4 || index == 23 || index == 25 || index == 26) expected |= bit(index);
    if (index == 25) expected |= bit(24);
    EXPECT_EQ(flags_of({.features = bit(index)}), expected);
  }
}

TEST_F(Processor, AllFeaturesOfLeaf1Together) {
  EXPECT_EQ(flags_of({.features = UINT32_MAX}), 0x06800010u | bit(24) | bit(0));
}

TEST_F(Processor, ExtendedFeaturesOfTheVendorAreKeptUnderAMask) {
  for (int index = 0; index < 32; ++index) {
    SCOPED_TRACE(index);
    uint32_t expected = bit(0);
    if (index == 22 || index == 30 || index == 31) expected |= bit(index);
    if (index == 22) expected |= bit(24);
    EXPECT_EQ(flags_of({.vendor = amd, .extended_features = bit(index)}), expected);
  }
}

TEST_F(Processor, ExtendedFeaturesOfAnotherVendorLeaveBit31Alone) {
  for (int index = 0; index < 32; ++index) {
    SCOPED_TRACE(index);
    EXPECT_EQ(flags_of({.extended_features = bit(index)}), bit(0) | (index == 31 ? bit(31) : 0));
  }
}

TEST_F(Processor, AllTwelveBytesOfTheVendorCount) {
  for (size_t i = 0; i < 12; ++i) {
    std::string vendor = amd;
    vendor[i] = static_cast<char>(vendor[i] ^ 0x20);
    SCOPED_TRACE(vendor);
    EXPECT_EQ(flags_of({.vendor = vendor, .extended_features = UINT32_MAX}), bit(0) | bit(31));
  }
  EXPECT_EQ(flags_of({.vendor = "AuthcAMDenti", .extended_features = UINT32_MAX}),
            bit(0) | bit(31));
  EXPECT_EQ(flags_of({.vendor = amd, .extended_features = UINT32_MAX}),
            bit(0) | bit(31) | bit(30) | bit(22) | bit(24));
}

TEST_F(Processor, MmxExtensionsOfTheVendorMakeTheP3TierWithoutSse) {
  const uint32_t flags =
      flags_of({.vendor = amd, .features = edx_mmx, .extended_features = bit(22)});
  EXPECT_EQ(flags, bit(0) | bit(22) | bit(23) | bit(24));
}

TEST_F(Processor, SseWithoutSse2MakesTheP3TierAlone) {
  const uint32_t flags = flags_of({.features = edx_mmx | edx_sse});
  EXPECT_TRUE(flags & bit(24));
  EXPECT_FALSE(flags & bit(26));
}

TEST_F(Processor, MmxAloneMakesNoTier) {
  EXPECT_EQ(flags_of({.features = edx_mmx}), bit(0) | bit(23));
}

TEST_F(Processor, HighestLeafZeroLeavesTheWordAtOne) {
  EXPECT_EQ(flags_of({.highest_leaf = 0,
                      .vendor = amd,
                      .features = UINT32_MAX,
                      .extended_features = UINT32_MAX}),
            1u);
  EXPECT_EQ(leaves_asked, std::vector<uint32_t>{0});
}

TEST_F(Processor, WithoutExtendedLeavesNoExtendedFeatureIsRead) {
  for (const uint32_t highest : {0u, 1u, 0x7FFFFFFFu, 0x80000000u}) {
    SCOPED_TRACE(highest);
    EXPECT_EQ(flags_of({.vendor = amd,
                        .features = edx_sse,
                        .highest_extended_leaf = highest,
                        .extended_features = UINT32_MAX}),
              bit(0) | bit(24) | bit(25));
    EXPECT_EQ(leaves_asked, (std::vector<uint32_t>{0, 1, 0x80000000}));
  }
}

TEST_F(Processor, HigherExtendedLeavesChangeNothing) {
  for (const uint32_t highest : {0x80000001u, 0x80000008u, UINT32_MAX}) {
    SCOPED_TRACE(highest);
    EXPECT_EQ(
        flags_of({.vendor = amd, .highest_extended_leaf = highest, .extended_features = bit(30)}),
        bit(0) | bit(30));
    EXPECT_EQ(leaves_asked, (std::vector<uint32_t>{0, 1, 0x80000000, 0x80000001}));
  }
}

TEST_F(Processor, DetectionRunsOnce) {
  flags_of({.features = edx_sse});
  const size_t asked = leaves_asked.size();
  EXPECT_EQ(test_hooks::processor_flags(), bit(0) | bit(24) | bit(25));
  EXPECT_EQ(leaves_asked.size(), asked);
}

TEST_F(Processor, DetectionRunsOnceAlsoWhereItFindsNothing) {
  flags_of({.highest_leaf = 0});
  machine.highest_leaf = 1;
  machine.features = UINT32_MAX;
  EXPECT_EQ(test_hooks::processor_flags(), 1u);
}

TEST_F(Processor, TheMachineThatRunsTheTestsIsDetected) {
  test_hooks::set_cpuid(nullptr);
  const uint32_t flags = test_hooks::processor_flags();
  EXPECT_TRUE(flags & bit(0));
  EXPECT_EQ((flags & bit(25)) != 0, __builtin_cpu_supports("sse") != 0);
  EXPECT_EQ((flags & bit(26)) != 0, __builtin_cpu_supports("sse2") != 0);
  EXPECT_EQ((flags & bit(23)) != 0, __builtin_cpu_supports("mmx") != 0);
}

// ---- Which tier runs a frame ----

// At quality 4 an I420 frame moves the marker of the tier that ran it.
class TierChoice : public ControlsTest {
 protected:
  static constexpr uint32_t width = 160, height = 120;

  void SetUp() override {
    test_hooks::set_cpuid(nullptr);
    const uint32_t needed = bit(24) | bit(26);
    if ((test_hooks::processor_flags() & needed) != needed) {
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
    const int32_t p3 = context->p3_plan.marker_cell, sse2 = context->sse2_plan.marker_cell;
    BaylorToI420MMX(context, source.data() + source_shift, destination.data() + destination_shift,
                    width, height);
    const bool p3_ran = context->p3_plan.marker_cell != p3;
    const bool sse2_ran = context->sse2_plan.marker_cell != sse2;
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
  restart_on(only_p3_tier);
  prepare();
  EXPECT_EQ(run(0, 0), Ran::p3);
}

TEST_F(TierChoice, MisalignedFramesRunNoTier) {
  EXPECT_EQ(run(4, 0), Ran::neither);
  EXPECT_EQ(run(0, 4), Ran::neither);
  EXPECT_EQ(run(1, 1), Ran::neither);
}

TEST_F(TierChoice, WithoutATierFramesFallBackWhileTheControlsWork) {
  restart_on(no_tier);
  prepare();
  const uint32_t frames = ppl_n_frame(context);
  EXPECT_EQ(run(0, 0), Ran::neither);
  EXPECT_EQ(ppl_n_frame(context), frames);
  EXPECT_EQ(ppl_set_rgb_gain(context, 300, 300, 300), 1);
  EXPECT_EQ(ppl_nf88_r_gain(context), 300);
}

// Without the P3 tier there is no pixel path, whatever else the processor has.
TEST_F(TierChoice, Sse2WithoutTheP3TierFallsBack) {
  restart_on(only_sse2_tier);
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
