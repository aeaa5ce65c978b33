// Black level, gain, delta and curve, as every multi-pass quality leaves them in the frame.
#include "chains/chains.h"

namespace ppl_test::chains {
namespace {

PPL_CHAINS_SUITE(ChainFrontEnd);

TEST_P(ChainFrontEnd, LeavesItsResultInPlaceOfTheFrame) {
  // Black 1, 2, 3 and 4; gain 1, 2 and 0.5 with 5 fractional bits; delta 10, 20 and 30; then the
  // curve turned round.
  ppl_set_optical_black_b_gb_gr_r(ctx, 1, 2, 3, 4);
  ppl_set_rgb_gain(ctx, 128, 512, 263);  // 263 loses its low three bits
  ppl_set_rgb_delta(ctx, 30, 20, 10);
  Bytes inverted(256);
  for (size_t i = 0; i < 256; ++i) inverted[i] = static_cast<uint8_t>(255 - i);
  ppl_copy_rgb_gamma_table(ctx, inverted.data());
  paint_cells(61, 42, 43, 64);
  for (const uint32_t quality : all_chains)
    for (const bool filter : {false, true}) {
      filter ? ppl_enable_medium_filter(ctx) : ppl_disable_medium_filter(ctx);
      const Picture picture = run(quality, Format::i420);
      for (int y = 0; y < H; y += 2)
        for (int x = 0; x < W; x += 2) {
          ASSERT_EQ(after(picture, x, y), 255 - (60 + 10)) << quality;
          ASSERT_EQ(after(picture, x + 1, y), 255 - (80 + 20)) << quality;
          ASSERT_EQ(after(picture, x, y + 1), 255 - (80 + 20)) << quality;
          ASSERT_EQ(after(picture, x + 1, y + 1), 255 - (30 + 30)) << quality;
        }
    }
}

TEST_P(ChainFrontEnd, ItsArithmeticIsThatOf16Bits) {
  struct Row {
    const char *what;
    uint32_t black;
    int32_t gain, delta;
    uint8_t sample, expected;
  };
  for (const Row &row : {
           Row{"black stops at 0", 20, 256, 0, 19, 0},
           {"and leaves 0 to the gain", 20, 2040, 0, 20, 0},
           {"gains have five fractional bits", 0, 8, 0, 255, 7},
           {"and no more", 0, 7, 0, 255, 0},
           {"the product is unsigned: 65025 >> 5 is 2032", 0, 2047, -2000, 255, 32},
           {"delta works on the unclamped product", 0, 512, -300, 200, 100},
           {"below 0 is 0", 0, 256, -300, 255, 0},
           {"above 255 is 255", 0, 256, 200, 100, 255},
           {"the sum 2032 + 32767 wraps below 0", 0, 2040, 32767, 255, 0},
           {"-32768 + 100 stays there", 0, 256, -32768, 100, 0},
       }) {
    ASSERT_EQ(ppl_set_optical_black_b_gb_gr_r(ctx, row.black, row.black, row.black, row.black), 1);
    ASSERT_EQ(ppl_set_rgb_gain(ctx, row.gain, row.gain, row.gain), 1);
    ASSERT_EQ(ppl_set_rgb_delta(ctx, row.delta, row.delta, row.delta), 1);
    fill(row.sample);
    for (const uint32_t quality : all_chains)
      EXPECT_EQ(run(quality, Format::i420).consumed, Bytes(frame.size(), row.expected))
          << row.what << ", quality " << quality;
  }
}

TEST_P(ChainFrontEnd, ANegativeSumReadsTheFirstEntryOfTheCurve) {
  Bytes curve(256, 1);
  curve[0] = 77;
  ppl_copy_rgb_gamma_table(ctx, curve.data());
  ppl_set_rgb_delta(ctx, -300, -300, -300);
  EXPECT_EQ(run(0, Format::i420).consumed, Bytes(frame.size(), 77));
}

TEST_P(ChainFrontEnd, AGainThatIsRefusedStaysOut) {
  // 2056 would be the first word whose product wraps.
  ASSERT_EQ(ppl_set_rgb_gain(ctx, 512, 512, 512), 1);
  ASSERT_EQ(ppl_set_rgb_gain(ctx, 2056, 2056, 2056), 0);
  EXPECT_EQ(run(0, Format::i420).consumed, Bytes(frame.size(), 200));
}

TEST_P(ChainFrontEnd, DekneelTablesTakeNoPart) {
  const Bytes zeros(256, 0);
  ppl_copy_r_dekneel_table(ctx, zeros.data());
  ppl_copy_g_dekneel_table(ctx, zeros.data());
  ppl_copy_b_dekneel_table(ctx, zeros.data());
  for (const uint32_t quality : all_chains)
    EXPECT_EQ(run(quality, Format::i420).consumed, frame) << quality;
}

TEST_P(ChainFrontEnd, ASecondRunOnTheSameFrameGivesAnotherPicture) {
  ppl_set_optical_black_b_gb_gr_r(ctx, 10, 10, 10, 10);
  show_in_luma(Channel::green);
  for (const uint32_t quality : all_chains) {
    fill(100);
    for (const int level : {90, 80}) {
      const Picture picture = run(quality, Format::i420);
      if (quality != 12) {
        EXPECT_EQ(picture.y(50, 20), level + 16) << quality;
      }
      frame = picture.consumed;
      EXPECT_EQ(frame, Bytes(frame.size(), static_cast<uint8_t>(level))) << quality;
    }
  }
}

}  // namespace
}  // namespace ppl_test::chains
