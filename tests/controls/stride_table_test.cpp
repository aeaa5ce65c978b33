// The steps that carry mirrors and decimation into the kernels, entry by entry.
#include <map>

#include "controls_fixture.h"

namespace ppl::controls_test {
namespace {

// All entries that a kernel reads, from the four inputs and the tier's block width.
std::map<int, int32_t> expected_table(int32_t W, int32_t d, bool h, bool v, int32_t B) {
  const int32_t sx = h ? -1 : 1, sy = v ? -1 : 1;
  const int32_t k = d < 0 ? 2 : 1;
  const int32_t L = d < 0 ? 4 : d == 0 ? 2 : 1;
  const int32_t L2 = d <= 0 ? 2 : 1;
  const int32_t half = W / 2;
  std::map<int, int32_t> e;

  // Single-pass functions, I420.
  e[0] = h ? k * B : 0;
  e[1] = h ? 0 : k * B;
  e[2] = v ? k * W : 0;
  e[3] = v ? 0 : k * W;
  e[4] = sx * 2 * k * B;
  e[5] = (2 * k * sy - sx) * W;
  e[6] = (sx + 2 * sy - 1) * d * W;
  e[7] = sx * k * B;
  e[8] = (k * sy - sx) * half;
  e[9] = (sx + sy) / 2 * (2 * d + 1) * W;

  // Single-pass functions, YUYV and UYVY.
  e[10] = h && d >= 0 ? 2 * B : 0;
  e[11] = h ? (d < 0 ? -4 * B : 0) : 2 * k * B;
  e[12] = v && d >= 0 ? 2 * W : 0;
  e[13] = v ? (d < 0 ? -4 * W : 0) : 2 * k * W;
  e[14] = sx * 4 * k * B;
  e[15] = 2 * (2 * k * sy - sx) * W;

  // Single-pass functions, RGB24.
  e[16] = h ? 3 * k * B : 0;
  e[17] = h ? 0 : 3 * k * B;
  e[18] = v ? 0 : 3 * k * W;
  e[19] = v ? 3 * k * W : 0;
  e[20] = sx * 6 * k * B;
  e[21] = -3 * (2 * k * sy + sx) * W;
  e[22] = (3 * sx - 6 * sy - 3) * d * W;

  // Single-pass functions, RGB32.
  e[23] = h ? 4 * B : 0;
  e[24] = h ? 0 : 4 * B;
  for (int32_t i = 0; i < 4; ++i) e[25 + i] = h ? (6 - 2 * i) * B : 2 * i * B;
  e[29] = v ? 0 : 4 * W;
  e[30] = v ? 4 * W : 0;
  e[31] = sx * 8 * B;
  e[32] = -4 * (2 * sy + sx) * W;

  // Chains, I420.
  e[33] = sx * k * B;
  e[34] = (L * sy - sx) * W;
  e[35] = sy * (2 * d - 1) * W - (h ? B : 0);
  e[36] = sy * (4 * d - 1) * W - (h ? B : 0);
  e[37] = 2 * sy * d * W;
  e[38] = sy * (2 * d + 1) * W;
  e[39] = sx * k * B;
  e[40] = (k * sy - sx) * half;
  e[41] = sy * (2 * d - 1) * half;
  e[42] = 0;
  e[43] = sy * d * W;
  e[44] = sy * (2 * d + 1) * half;

  // Chains, YUYV and UYVY.
  e[45] = sx * 2 * k * B;
  e[46] = 2 * (L * sy - sx) * W;
  e[47] = 2 * sy * (2 * d - 1) * W - (h ? 2 * B : 0);
  e[48] = 2 * sy * (4 * d - 1) * W - (h ? 2 * B : 0);
  e[49] = 4 * sy * d * W;
  e[50] = 2 * sy * (2 * d + 1) * W;
  e[51] = v ? -4 * d * W : 2 * (2 * d - 1) * W;
  e[52] = v ? -8 * d * W : 2 * (4 * d - 1) * W;
  e[53] = v ? -2 * (2 * d - 1) * W : 4 * d * W;
  e[54] = v ? -8 * d * W : 2 * (2 * d + 1) * W;

  // Chains, RGB24 and RGB32.
  const int32_t m = d < 0 ? 6 * B : d == 0 ? 3 * B : 3 * B / 2;
  const int32_t n = d <= 0 ? 4 * B : 2 * B;
  e[55] = sx * m;
  if (d >= 0) {
    e[56] = -3 * (L * sy + sx) * W + sx * m;
  } else {
    e[56] = h == v ? sy * (6 * B - 15 * W) : sy * (-3 * W - 6 * B);
  }
  e[57] = -3 * sy * (2 * d - 1) * W;
  e[58] = -3 * sy * (4 * d - 1) * W;
  e[59] = -6 * sy * d * W;
  e[60] = -3 * sy * (2 * d + 1) * W;
  e[61] = sx * n;
  e[62] = -4 * (L2 * sy + sx) * W + sx * n;

  // Line distances.
  e[65] = sy * W;
  e[69] = 2 * sy * W;
  e[73] = -3 * k * sy * W;
  e[77] = -4 * sy * W;
  return e;
}

class StrideTable : public ControlsTest {
 protected:
  // The input width that gives an output of 640 columns.
  void set_up(int32_t out_width, int32_t d, bool h, bool v) {
    ppl_set_decimation(context, d, 0, 0);
    ppl_set_h_mirror(context, h);
    ppl_set_v_mirror(context, v);
    const auto width = static_cast<uint32_t>(d < 0 ? out_width / 2 : out_width << d);
    ASSERT_EQ(ppl_new_frame_size(context, width, 480, width), 1);
    ASSERT_EQ(context->out_width, out_width);
  }

  void expect_table_of(int32_t W, int32_t d, bool h, bool v) {
    for (const Tier tier : tiers) {
      SCOPED_TRACE(testing::Message() << tier_name(tier) << ", W " << W << ", d " << d
                                      << (h ? ", h" : "") << (v ? ", v" : ""));
      for (const auto &[entry, value] : expected_table(W, d, h, v, tier == Tier::p3 ? 8 : 16)) {
        EXPECT_EQ(plan_of(context, tier).stride_table[entry], value) << "entry " << entry;
      }
    }
  }

  // A rebuild must show. Entry 42 is one that no rebuild writes.
  void spoil() {
    poison_derived(context);
    context->p3_plan.stride_table[42] = context->sse2_plan.stride_table[42] = 0;
  }

  const int32_t *p3() const { return context->p3_plan.stride_table; }
  const int32_t *sse2() const { return context->sse2_plan.stride_table; }
};

// ---- Telling entries ----

TEST_F(StrideTable, UnmirroredVga) {
  set_up(640, 0, false, false);
  EXPECT_EQ(p3()[5], 640);
  EXPECT_EQ(p3()[34], 640);
  EXPECT_EQ(p3()[65], 640);
  EXPECT_EQ(p3()[77], -2560);
  EXPECT_EQ(p3()[73], -1920);
}

TEST_F(StrideTable, VgaWithBothMirrors) {
  set_up(640, 0, true, true);
  EXPECT_EQ(p3()[5], -640);
  EXPECT_EQ(p3()[65], -640);
  EXPECT_EQ(p3()[77], 2560);
}

TEST_F(StrideTable, TheTiersDifferOnlyAlongTheLine) {
  set_up(640, 0, false, false);
  EXPECT_EQ(p3()[33], 8);
  EXPECT_EQ(sse2()[33], 16);
  for (const int entry : {2, 3, 5, 8, 15, 21, 32, 34, 40, 46, 65, 69, 73, 77}) {
    EXPECT_EQ(p3()[entry], sse2()[entry]) << "entry " << entry;
  }
}

TEST_F(StrideTable, DecimatedRowsHaveNoAdvanceOfTheirOwn) {
  set_up(320, 1, false, false);
  EXPECT_EQ(p3()[34], 0);
}

TEST_F(StrideTable, TheRgb24RowStepOfDoubledFramesKeepsItsAsymmetry) {
  const struct {
    bool h, v;
    int32_t p3, sse2;
  } cases[] = {{false, false, -15 * 1280 + 48, -15 * 1280 + 96},
               {true, false, -3888, -3 * 1280 - 96},
               {false, true, 3888, 3 * 1280 + 96},
               {true, true, 15 * 1280 - 48, 15 * 1280 - 96}};
  for (const auto &[h, v, expected_p3, expected_sse2] : cases) {
    set_up(1280, -1, h, v);
    EXPECT_EQ(p3()[56], expected_p3);
    EXPECT_EQ(sse2()[56], expected_sse2);
  }
}

TEST_F(StrideTable, Entries51To54AreNotSymmetricalInTheVerticalMirror) {
  set_up(640, -1, false, false);
  EXPECT_EQ(std::vector<int32_t>(p3() + 51, p3() + 55),
            (std::vector<int32_t>{-3840, -6400, -2560, -1280}));
  set_up(640, -1, false, true);
  EXPECT_EQ(std::vector<int32_t>(p3() + 51, p3() + 55),
            (std::vector<int32_t>{2560, 5120, 3840, 5120}));
}

TEST_F(StrideTable, AnyNonzeroMirrorIsSet) {
  set_up(640, 0, false, false);
  EXPECT_EQ(ppl_set_h_mirror(context, 2), 1);
  expect_table_of(640, 0, true, false);
  EXPECT_EQ(ppl_set_v_mirror(context, 128), 1);
  expect_table_of(640, 0, true, true);
}

// ---- Every entry ----

TEST_F(StrideTable, EveryEntryInEveryMirrorDecimationAndWidth) {
  for (const int32_t d : {-1, 0, 1, 2}) {
    for (const int32_t width : {160, 320, 322, 638}) {
      if (d < 0 && width < 256) continue;
      for (const bool h : {false, true}) {
        for (const bool v : {false, true}) {
          const int32_t out_width = d > 0 ? width / 2 : width;
          set_up(out_width, d, h, v);
          expect_table_of(out_width, d, h, v);
        }
      }
    }
  }
}

TEST_F(StrideTable, HalvesOfOddWidthsTruncate) {
  for (const int32_t d : {0, 1, 2}) {
    for (const bool h : {false, true}) {
      for (const bool v : {false, true}) {
        set_up(161, d, h, v);
        expect_table_of(161, d, h, v);
      }
    }
  }
}

TEST_F(StrideTable, TheWidestOutput) {
  for (const int32_t d : {-1, 0}) {
    ppl_set_decimation(context, d, 0, 0);
    ppl_new_frame_size(context, 1280, 1024, 1280);
    expect_table_of(d < 0 ? 2560 : 1280, d, false, false);
  }
}

// ---- When it is rebuilt ----

TEST_F(StrideTable, ANewSizeRebuildsIt) {
  set_up(640, 0, true, false);
  ppl_new_frame_size(context, 320, 240, 320);
  expect_table_of(320, 0, true, false);
}

TEST_F(StrideTable, ANewDecimationRebuildsIt) {
  set_up(640, 0, true, false);
  ppl_set_decimation(context, 1, 0, 0);
  expect_table_of(320, 1, true, false);
}

TEST_F(StrideTable, BlackLinesAndStrideHaveNoPartInIt) {
  set_up(640, 0, false, false);
  ppl_set_decimation(context, 0, 9, 11);
  expect_table_of(640, 0, false, false);
  ppl_new_frame_size(context, 640, 480, 1280);
  expect_table_of(640, 0, false, false);
}

TEST_F(StrideTable, AMirrorRebuildsItAlsoWhereTheFlagStays) {
  set_up(640, 0, true, true);
  spoil();
  EXPECT_EQ(ppl_set_h_mirror(context, 1), 1);
  expect_table_of(640, 0, true, true);
  spoil();
  EXPECT_EQ(ppl_set_v_mirror(context, 1), 1);
  expect_table_of(640, 0, true, true);
}

TEST_F(StrideTable, ResettingTheMirrorsRebuildsIt) {
  set_up(640, 0, true, true);
  EXPECT_EQ(ppl_reset_mirrors(context), 1);
  expect_table_of(640, 0, false, false);
  spoil();
  ppl_reset_all_controls(context);
  expect_table_of(640, 0, false, false);
}

TEST_F(StrideTable, AfterAFailedSaveItStaysStale) {
  set_up(640, 0, false, false);
  test_hooks::fail_saves(0, 1);
  EXPECT_EQ(ppl_set_h_mirror(context, 1), 1);
  EXPECT_EQ(ppl_h_mirror(context), 1);
  expect_table_of(640, 0, false, false);
  test_hooks::reset_counts();
  EXPECT_EQ(ppl_set_h_mirror(context, 1), 1);
  expect_table_of(640, 0, true, false);
}

TEST_F(StrideTable, OnlyTheProcessorsTiersHaveOne) {
  restart_on(only_p3_tier);
  const FramePlan empty = {};
  ppl_new_frame_size(context, 640, 480, 640);
  EXPECT_EQ(p3()[65], 640);
  EXPECT_EQ(memcmp(sse2(), empty.stride_table, sizeof empty.stride_table), 0);
}

}  // namespace
}  // namespace ppl::controls_test
