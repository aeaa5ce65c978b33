// The composed tables of the front end: they follow every writer of what they are composed of.
#include "controls_fixture.h"

namespace ppl::controls_test {
namespace {

// Black level, gain, delta and curve of one sample, from the derived entries.
uint8_t front_end(uint8_t sample, int black, int gain, int delta, const uint8_t *curve) {
  const int black_level_subtracted = std::max(sample - black, 0);
  const int gained = ((black_level_subtracted * gain) & 0xFFFF) >> 5;
  const auto moved = static_cast<int16_t>(static_cast<uint16_t>(gained + delta));
  return curve[std::clamp<int>(moved, 0, 255)];
}

class CurveTablesTest : public ControlsTest {
 protected:
  void expect_composed(const CurveTables &tables, const uint8_t *curve) {
    const Parameters &p = context->params;
    const BytePair black[] = {p.optical_black_BG_vec, p.optical_black_GR_vec};
    const WordPair gain[] = {p.rgb_gain_BG_vec, p.rgb_gain_GR_vec};
    const WordPair delta[] = {p.rgb_delta_BG_vec, p.rgb_delta_GR_vec};
    for (int line = 0; line < 2; ++line) {
      int differences = 0;
      for (int s = 0; s < 256; ++s) {
        const auto sample = static_cast<uint8_t>(s);
        const uint32_t results[] = {
            front_end(sample, black[line].even, gain[line].even, delta[line].even, curve),
            front_end(sample, black[line].odd, gain[line].odd, delta[line].odd, curve)};
        for (int column = 0; column < CurveTable::columns; ++column) {
          const uint32_t in_its_byte = results[column % 2] << (8 * column);
          differences += tables.line[line].column[column][s] != in_its_byte;
        }
      }
      EXPECT_EQ(differences, 0) << "line kind " << line;
    }
  }

  void expect_tables_follow() {
    {
      SCOPED_TRACE("through the full-range curve");
      expect_composed(context->params.curves, context->rgb_gamma_table);
    }
    SCOPED_TRACE("through contrast and the studio curve");
    expect_composed(context->params.curves_mono, context->yuv_contrast_gamma_table);
  }
};

TEST_F(CurveTablesTest, StandInANewContext) { expect_tables_follow(); }

TEST_F(CurveTablesTest, FollowEveryWriter) {
  const struct {
    const char *name;
    std::function<void(PplContext *)> write;
  } writers[] = {
      {"black", [](PplContext *c) { ppl_set_optical_black_b_gb_gr_r(c, 3, 30, 60, 255); }},
      {"triple of gains", [](PplContext *c) { ppl_set_rgb_gain(c, 100, 700, 2047); }},
      {"red gain", [](PplContext *c) { ppl_set_r_gain(c, 7); }},
      {"green gain", [](PplContext *c) { ppl_set_g_gain(c, 1500); }},
      {"blue gain", [](PplContext *c) { ppl_set_b_gain(c, 255); }},
      {"triple of deltas", [](PplContext *c) { ppl_set_rgb_delta(c, -300, 20, 32767); }},
      {"red delta", [](PplContext *c) { ppl_set_r_delta(c, 100); }},
      {"green delta", [](PplContext *c) { ppl_set_g_delta(c, -40); }},
      {"blue delta", [](PplContext *c) { ppl_set_b_delta(c, -32768); }},
      {"gamma", [](PplContext *c) { ppl_set_gamma(c, -10); }},
      {"copied studio table",
       [](PplContext *c) { ppl_copy_yuv_gamma_table(c, scrambled_table(1).data()); }},
      {"copied full-range table",
       [](PplContext *c) { ppl_copy_rgb_gamma_table(c, scrambled_table(2).data()); }},
      {"contrast", [](PplContext *c) { ppl_set_contrast_c(c, 40, nullptr, nullptr); }},
      {"contrast anchors", [](PplContext *c) { ppl_set_contrast_xy(c, 20, 50); }},
      {"copied contrast table",
       [](PplContext *c) { ppl_copy_contrast_table(c, scrambled_table(3).data()); }},
      {"reset of black", [](PplContext *c) { ppl_reset_optical_black_b_gb_gr_r(c); }},
      {"reset of gains", [](PplContext *c) { ppl_reset_rgb_gain(c); }},
      {"reset of deltas", [](PplContext *c) { ppl_reset_rgb_delta(c); }},
      {"reset of gamma", [](PplContext *c) { ppl_reset_gamma(c); }},
      {"reset of contrast", [](PplContext *c) { ppl_reset_contrast(c); }},
  };
  for (const auto &[name, write] : writers) {
    SCOPED_TRACE(name);
    write(context);
    expect_tables_follow();
  }
}

TEST_F(CurveTablesTest, KeepTheOldEntriesAfterARefusal) {
  ppl_set_rgb_gain(context, 300, 400, 500);
  EXPECT_EQ(ppl_set_rgb_gain(context, 2048, 1, 1), 0);
  EXPECT_EQ(ppl_set_r_delta(context, 40000), 0);
  EXPECT_EQ(ppl_set_optical_black_b_gb_gr_r(context, 256, 9, 9, 9), 0);
  expect_tables_follow();
}

TEST_F(CurveTablesTest, KeepTheOldEntriesAfterAFailedSaveAlsoUnderANewCurve) {
  ppl_set_rgb_gain(context, 300, 400, 500);
  test_hooks::fail_saves(0, UINT32_MAX);
  ppl_set_rgb_gain(context, 600, 700, 800);
  ppl_set_gamma(context, 20);
  ppl_set_contrast_c(context, 30, nullptr, nullptr);
  expect_pair("rgb_gain_GR_vec", 50, 37);
  expect_tables_follow();
}

}  // namespace
}  // namespace ppl::controls_test
