// I420 at decimation 2 where a quarter of the frame's width is odd. A row of two lines writes a
// line of luma, every second row one of U and of V, too. Along it the chroma cursor goes a quarter
// of the frame's width, which is the length of a chroma line. Then it goes the other way by half of
// the output's width, truncated, and by as much down, or up with v_mirror.
#include "chains/chains.h"
#include "support/placed_samples.h"

namespace ppl_test::chains {
namespace {

// 132 by 48: luma lines of 66 samples at a pitch of 33, chroma lines of 33; the output is declared
// as 33 by 12, U at 396, V at 495. Line y of luma moves on by 33 along the line beside its pitch.
class ChainOddOutputWidth : public Chains {
 protected:
  // `place` says what is seen of the picture at decimation 1, which has 24 lines of luma and 12 of
  // chroma. Of what falls on the same bytes the later line is seen, and of a line of luma and the
  // chroma that comes with it the chroma.
  template <class Place>
  void expect_output(int mirrors, Place place) {
    set_default_matrices();
    set_size(132, 48);
    paint_texture();
    for (const uint32_t quality : all_chains) {
      SCOPED_TRACE(quality);
      mirror(0);
      decimate(1);
      const Picture half = run(quality, Format::i420);
      mirror(mirrors);
      decimate(2);
      const Picture picture = run(quality, Format::i420);
      PlacedSamples expected(half, picture.bytes.size(), untouched);
      place(expected);
      for (size_t i = 0; i < picture.bytes.size(); ++i)
        ASSERT_EQ(picture.bytes[i], expected.bytes()[i]) << i;
    }
  }
};
INSTANTIATE_TEST_SUITE_P(, ChainOddOutputWidth, ::testing::ValuesIn(implementations),
                         implementation_name);

// Line y of luma from 66 y on; line j of U from 396 + 33 j on, of V from 495 + 33 j, each with line
// 2 j + 1 of luma.
TEST_P(ChainOddOutputWidth, ChromaRowsFollowEachOther) {
  expect_output(0, [](PlacedSamples &expected) {
    for (size_t y = 0; y < 7; ++y) expected.y(66 * y, y, 0, 65);
    expected.y(462, 7, 0, 32);
    for (size_t j = 3; j < 12; ++j) expected.u(396 + 33 * j, j, 0, 32);
    for (size_t j = 9; j < 12; ++j) expected.v(495 + 33 * j, j, 0, 32);
    expected.y(891, 13, 33, 65);
    for (size_t y = 14; y < 24; ++y) expected.y(66 * y, y, 0, 65);
  });
}

// Every line of luma from 32 down, with half of it before the output's start; line j of U from
// 396 + 15 - j down, of V from 495 + 15 - j: 33 back along the line and 2 * 16 on to the next.
TEST_P(ChainOddOutputWidth, ChromaRowsMirroredAcrossGoBackByOne) {
  expect_output(1, [](PlacedSamples &expected) {
    expected.y(0, 23, 32, 0);
    expected.u(368, 11, 32, 0);
    expected.v(467, 11, 32, 0);
    for (size_t j = 0; j < 11; ++j) {
      expected.u(411 - j, j, 0, 0);
      expected.v(510 - j, j, 0, 0);
    }
  });
}

// Every line of luma from 363 on; line j of U from 396 + 99 - 16 + j on, of V from
// 495 + 99 - 16 + j: 33 on along the line and 2 * 16 back to the next.
TEST_P(ChainOddOutputWidth, ChromaRowsMirroredDownGoOnByOne) {
  expect_output(2, [](PlacedSamples &expected) {
    expected.y(363, 23, 0, 65);
    for (size_t j = 0; j < 11; ++j) {
      expected.u(479 + j, j, 0, 0);
      expected.v(578 + j, j, 0, 0);
    }
    expected.u(490, 11, 0, 32);
    expected.v(589, 11, 0, 32);
  });
}

// Line y of luma from 395 - 66 y down, from the seventh on before the output's start; line j of U
// from 494 - 33 j down, of V from 593 - 33 j.
TEST_P(ChainOddOutputWidth, ChromaRowsMirroredBothWaysFollowEachOtherBackwards) {
  expect_output(3, [](PlacedSamples &expected) {
    expected.y(0, 5, 65, 0);
    expected.y(66, 4, 65, 33);
    for (size_t j = 9; j < 12; ++j) expected.u(462 - 33 * j, j, 32, 0);
    for (size_t j = 0; j < 12; ++j) expected.v(561 - 33 * j, j, 32, 0);
  });
}

}  // namespace
}  // namespace ppl_test::chains
