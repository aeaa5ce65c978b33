// Choosing curves, copying tables, and the families that all contexts share.
#include "controls/gamma_data.h"
#include "controls_fixture.h"

namespace ppl::controls_test {
namespace {

constexpr size_t family_bytes = 65 * 256;

class Gamma : public ControlsTest {
 protected:
  void SetUp() override {
    memcpy(full_family, gamma_tables65x256, family_bytes);
    memcpy(studio_family, gamma_tables65x256_16_235, family_bytes);
    ControlsTest::SetUp();
  }

  // The families belong to the process: other tests want them as they were.
  void TearDown() override {
    ControlsTest::TearDown();
    memcpy(gamma_tables65x256, full_family, family_bytes);
    memcpy(gamma_tables65x256_16_235, studio_family, family_bytes);
  }

  int32_t exponent() const { return ppl_nf20_12_gamma(context, nullptr, nullptr, nullptr); }

  void expect_row_of(int index) {
    SCOPED_TRACE(index);
    EXPECT_EQ(bytes_as_ints(ppl_rgb_gamma_table(context)),
              bytes_as_ints(full_family + (index + 32) * 256));
    EXPECT_EQ(bytes_as_ints(ppl_yuv_gamma_table(context)),
              bytes_as_ints(studio_family + (index + 32) * 256));
    EXPECT_EQ(exponent(), gamma_nf20_12_values[index + 32]);
  }

  // Contrast first, gamma after it.
  void expect_composed() {
    for (int i = 0; i < 256; ++i) {
      const uint8_t c = ppl_contrast_table(context)[i];
      EXPECT_EQ(ppl_yuv_contrast_gamma_table(context)[i], ppl_yuv_gamma_table(context)[c]) << i;
      EXPECT_EQ(ppl_rgb_contrast_gamma_table(context)[i], ppl_rgb_gamma_table(context)[c]) << i;
    }
  }

  static std::vector<uint8_t> other_family(unsigned seed) {
    std::vector<uint8_t> family(family_bytes);
    for (unsigned i = 0; i < family_bytes; ++i) {
      family[i] = static_cast<uint8_t>(i * 31 + (i >> 8) * 7 + seed);
    }
    return family;
  }

  uint8_t full_family[family_bytes];
  uint8_t studio_family[family_bytes];
};

TEST_F(Gamma, EveryIndexSelectsItsRowsAndItsExponent) {
  for (int index = -32; index <= 32; ++index) {
    EXPECT_EQ(ppl_set_gamma(context, index), 1);
    expect_row_of(index);
  }
}

TEST_F(Gamma, ExponentsAtTheEnds) {
  ppl_set_gamma(context, -32);
  EXPECT_EQ(exponent(), 8260);
  ppl_set_gamma(context, 32);
  EXPECT_EQ(exponent(), 411);
}

TEST_F(Gamma, IndexesPastTheEndsAreRefusedAndNothingChanges) {
  ppl_set_gamma(context, 7);
  for (const int32_t index : {-33, 33, -1000000, 1000000, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(ppl_set_gamma(context, index), 0) << index;
    expect_row_of(7);
  }
}

TEST_F(Gamma, NewContextStandsAtIndex0) {
  expect_row_of(0);
  EXPECT_EQ(exponent(), 1843);
}

TEST_F(Gamma, ResetSelectsIndex0) {
  ppl_set_gamma(context, -5);
  EXPECT_EQ(ppl_reset_gamma(context), 1);
  expect_row_of(0);
  EXPECT_EQ(exponent(), 1843);
}

TEST_F(Gamma, SettingIndex0GivesTheTablesOfTheReset) {
  ppl_reset_gamma(context);
  const std::vector<int> yuv = bytes_as_ints(ppl_yuv_gamma_table(context));
  const std::vector<int> rgb = bytes_as_ints(ppl_rgb_gamma_table(context));
  ppl_set_gamma(context, 9);
  ppl_set_gamma(context, 0);
  EXPECT_EQ(bytes_as_ints(ppl_yuv_gamma_table(context)), yuv);
  EXPECT_EQ(bytes_as_ints(ppl_rgb_gamma_table(context)), rgb);
}

TEST_F(Gamma, ExponentReaderTellsTheRangeOfTheIndex) {
  int32_t reserved = 77, min = 77, max = 77;
  EXPECT_EQ(ppl_nf20_12_gamma(context, &reserved, &min, &max), 1843);
  EXPECT_EQ(reserved, 0);
  EXPECT_EQ(min, -32);
  EXPECT_EQ(max, 32);
}

TEST_F(Gamma, ExponentReaderTakesNullForEachPointer) {
  int32_t reserved = 77, min = 77, max = 77;
  EXPECT_EQ(ppl_nf20_12_gamma(context, nullptr, &min, nullptr), 1843);
  EXPECT_EQ(min, -32);
  EXPECT_EQ(ppl_nf20_12_gamma(context, &reserved, nullptr, &max), 1843);
  EXPECT_EQ(reserved, 0);
  EXPECT_EQ(max, 32);
}

TEST_F(Gamma, NothingEverWritesTheReservedValue) {
  ppl_set_gamma(context, 12);
  int32_t reserved = 77;
  ppl_nf20_12_gamma(context, &reserved, nullptr, nullptr);
  EXPECT_EQ(reserved, 0);
}

TEST_F(Gamma, TablesAreReadInPlace) {
  EXPECT_EQ(ppl_yuv_gamma_table(context), context->yuv_gamma_table);
  EXPECT_EQ(ppl_rgb_gamma_table(context), context->rgb_gamma_table);
}

TEST_F(Gamma, SetGammaComposesWithTheContrastTable) {
  ppl_copy_contrast_table(context, scrambled_table().data());
  ppl_set_gamma(context, 11);
  expect_composed();
}

TEST_F(Gamma, CopyingTheYuvTableClearsTheExponentAndKeepsTheRgbTable) {
  const std::vector<uint8_t> table = scrambled_table(5);
  ppl_copy_contrast_table(context, scrambled_table().data());
  EXPECT_EQ(ppl_copy_yuv_gamma_table(context, table.data()), 1);
  EXPECT_TRUE(std::equal(table.begin(), table.end(), ppl_yuv_gamma_table(context)));
  EXPECT_EQ(bytes_as_ints(ppl_rgb_gamma_table(context)), bytes_as_ints(full_family + 32 * 256));
  EXPECT_EQ(exponent(), 0);
  expect_composed();
}

TEST_F(Gamma, CopyingTheRgbTableClearsTheExponentAndKeepsTheYuvTable) {
  const std::vector<uint8_t> table = scrambled_table(6);
  ppl_copy_contrast_table(context, scrambled_table().data());
  EXPECT_EQ(ppl_copy_rgb_gamma_table(context, table.data()), 1);
  EXPECT_TRUE(std::equal(table.begin(), table.end(), ppl_rgb_gamma_table(context)));
  EXPECT_EQ(bytes_as_ints(ppl_yuv_gamma_table(context)), bytes_as_ints(studio_family + 32 * 256));
  EXPECT_EQ(exponent(), 0);
  expect_composed();
}

TEST_F(Gamma, AnIndexAfterACopiedTableBringsTheExponentBack) {
  ppl_copy_rgb_gamma_table(context, scrambled_table().data());
  ppl_set_gamma(context, 3);
  expect_row_of(3);
}

TEST_F(Gamma, TablesAreCopiedOut) {
  const std::vector<uint8_t> yuv = scrambled_table(1), rgb = scrambled_table(2);
  ppl_copy_yuv_gamma_table(context, yuv.data());
  ppl_copy_rgb_gamma_table(context, rgb.data());
  std::vector<uint8_t> out(256);
  EXPECT_EQ(ppl_get_yuv_gamma_table(context, out.data()), 1);
  EXPECT_EQ(out, yuv);
  EXPECT_EQ(ppl_get_rgb_gamma_table(context, out.data()), 1);
  EXPECT_EQ(out, rgb);
}

// ---- Families ----

TEST_F(Gamma, FamiliesAreCopiedOut) {
  std::vector<uint8_t> out(family_bytes);
  EXPECT_EQ(ppl_get_gamma_tables65x256(context, out.data()), 1);
  EXPECT_EQ(memcmp(out.data(), full_family, family_bytes), 0);
  EXPECT_EQ(ppl_get_gamma_tables65x256_16_235(context, out.data()), 1);
  EXPECT_EQ(memcmp(out.data(), studio_family, family_bytes), 0);
}

TEST_F(Gamma, EachFamilyIsOverwrittenByItself) {
  const std::vector<uint8_t> full = other_family(1), studio = other_family(2);
  std::vector<uint8_t> out(family_bytes);
  EXPECT_EQ(ppl_copy_gamma_tables65x256(context, full.data()), 1);
  ppl_get_gamma_tables65x256(context, out.data());
  EXPECT_EQ(out, full);
  ppl_get_gamma_tables65x256_16_235(context, out.data());
  EXPECT_EQ(memcmp(out.data(), studio_family, family_bytes), 0);

  EXPECT_EQ(ppl_copy_gamma_tables65x256_16_235(context, studio.data()), 1);
  ppl_get_gamma_tables65x256_16_235(context, out.data());
  EXPECT_EQ(out, studio);
  ppl_get_gamma_tables65x256(context, out.data());
  EXPECT_EQ(out, full);
}

TEST_F(Gamma, AnOverwrittenFamilyLeavesTheCurrentTables) {
  ppl_set_gamma(context, 4);
  ppl_copy_gamma_tables65x256(context, other_family(1).data());
  ppl_copy_gamma_tables65x256_16_235(context, other_family(2).data());
  expect_row_of(4);
  expect_composed();
}

TEST_F(Gamma, TheNextIndexOnAnyContextUsesTheNewRowsAndTheOldExponents) {
  const std::vector<uint8_t> full = other_family(1), studio = other_family(2);
  ppl_copy_gamma_tables65x256(context, full.data());
  ppl_copy_gamma_tables65x256_16_235(context, studio.data());
  PplContext *const other = ppl_init();
  ASSERT_NE(other, nullptr);
  for (PplContext *const each : {context, other}) {
    EXPECT_EQ(ppl_set_gamma(each, -32), 1);
    EXPECT_EQ(bytes_as_ints(ppl_rgb_gamma_table(each)), bytes_as_ints(full.data()));
    EXPECT_EQ(bytes_as_ints(ppl_yuv_gamma_table(each)), bytes_as_ints(studio.data()));
    EXPECT_EQ(ppl_nf20_12_gamma(each, nullptr, nullptr, nullptr), 8260);
  }
}

TEST_F(Gamma, FamilyCopiesIgnoreTheContext) {
  const std::vector<uint8_t> full = other_family(3), studio = other_family(4);
  std::vector<uint8_t> out(family_bytes);
  EXPECT_EQ(ppl_copy_gamma_tables65x256(nullptr, full.data()), 1);
  EXPECT_EQ(ppl_get_gamma_tables65x256(nullptr, out.data()), 1);
  EXPECT_EQ(out, full);
  EXPECT_EQ(ppl_copy_gamma_tables65x256_16_235(nullptr, studio.data()), 1);
  EXPECT_EQ(ppl_get_gamma_tables65x256_16_235(nullptr, out.data()), 1);
  EXPECT_EQ(out, studio);
}

TEST_F(Gamma, NoResetBringsAnOverwrittenFamilyBack) {
  const std::vector<uint8_t> full = other_family(3);
  ppl_copy_gamma_tables65x256(context, full.data());
  ppl_reset_all_controls(context);
  EXPECT_EQ(bytes_as_ints(ppl_rgb_gamma_table(context)), bytes_as_ints(full.data() + 32 * 256));
}

TEST_F(Gamma, NothingHereTakesABracket) {
  test_hooks::reset_counts();
  std::vector<uint8_t> family(family_bytes);
  ppl_set_gamma(context, 1);
  ppl_reset_gamma(context);
  ppl_copy_yuv_gamma_table(context, scrambled_table().data());
  ppl_copy_rgb_gamma_table(context, scrambled_table().data());
  ppl_get_gamma_tables65x256(context, family.data());
  ppl_copy_gamma_tables65x256(context, family.data());
  ppl_get_gamma_tables65x256_16_235(context, family.data());
  ppl_copy_gamma_tables65x256_16_235(context, family.data());
  EXPECT_EQ(test_hooks::save_count(), 0u);
}

}  // namespace
}  // namespace ppl::controls_test
