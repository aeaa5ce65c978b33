// I420 at decimation 2 where a quarter of the frame's width is odd. A row of four lines writes two
// lines of luma and one of U and of V. Along it the chroma cursor goes a quarter of the frame's
// width, which is the length of a chroma line. Then it goes the other way by half of the output's
// width, truncated, and by as much down, or up with v_mirror.
#include <gtest/gtest.h>
#include <string.h>

#include <array>
#include <utility>
#include <vector>

#include "model/model.h"
#include "support/difference.h"
#include "support/placed_samples.h"
#include "support/raw_frame.h"

namespace ppl_test {
namespace {

class OddOutputWidth : public RawFrameTierTest {
 protected:
  struct Mirrors {
    bool h, v;
  };
  static constexpr std::array<Mirrors, 4> all_mirrors = {
      {{false, false}, {true, false}, {false, true}, {true, true}}};

  bool is_p3() const { return GetParam() == Tier::p3; }
  void set_mirrors(const Mirrors &mirrors) {
    ASSERT_EQ(ppl_set_h_mirror(ctx, mirrors.h), 1);
    ASSERT_EQ(ppl_set_v_mirror(ctx, mirrors.v), 1);
  }

  // S * 3 / 2 + n / 4, as the header has it.
  static size_t room(uint32_t width, uint32_t height) {
    return picture_bytes(Format::i420, width / 4, height / 4) + size_t{width} * height / 4;
  }

  Picture run_at_2(const Mosaic &frame) {
    const size_t declared = picture_bytes(Format::i420, frame.width / 4, frame.height / 4);
    Run how;
    how.decimation = 2;
    how.bytes_behind = room(frame.width, frame.height) - declared;
    return run(Format::i420, frame, how);
  }

  // 132 by 48: luma lines of 66 samples at a pitch of 33, chroma lines of 33; the output is
  // declared as 33 by 12, U at 396, V at 495. `place` says what is seen of the picture at
  // decimation 1, which has 24 lines of luma and 12 of chroma.
  template <class Place>
  void expect_output(const Mirrors &mirrors, Place place) {
    const Mosaic frame = textured_mosaic(132, 48);
    for (const uint32_t quality : {3u, 13u}) {
      SCOPED_TRACE(quality);
      ASSERT_EQ(ppl_set_quality(ctx, quality), 1);
      set_mirrors({false, false});
      Run how;
      how.decimation = 1;
      const Picture half = run(Format::i420, frame, how);
      set_mirrors(mirrors);
      const Picture picture = run_at_2(frame);
      PlacedSamples expected(half, picture.bytes.size(), untouched);
      place(expected);
      if (const auto difference = first_difference(expected.bytes(), picture.bytes))
        ADD_FAILURE() << describe(*difference, 33);
      const std::vector<uint8_t> model = run_model_at_2(frame, quality, mirrors);
      if (const auto difference = first_difference(expected.bytes(), model))
        ADD_FAILURE() << "the model: " << describe(*difference, 33);
    }
  }

  // The same frame through the model, in a context of its own with the default controls.
  std::vector<uint8_t> run_model_at_2(const Mosaic &frame, uint32_t quality,
                                      const Mirrors &mirrors) {
    ppl_model::machine::set_flags(1u | 1u << 24 | 1u << 25 | 1u << 26);
    ppl_model::machine::reset_counts();
    ppl_model::machine::reload_pool();
    ppl_model::PplContext *model = ppl_model::ppl_init();
    ppl_model::ppl_set_P3_only(model, is_p3());
    EXPECT_EQ(ppl_model::ppl_set_quality(model, quality), 1);
    ppl_model::ppl_set_h_mirror(model, mirrors.h);
    ppl_model::ppl_set_v_mirror(model, mirrors.v);
    EXPECT_EQ(ppl_model::ppl_new_frame_size(model, frame.width, frame.height, frame.width), 1);
    EXPECT_EQ(ppl_model::ppl_set_decimation(model, 2, 0, 0), 1);
    GuardedBuffer source(frame.samples.size(), Placement::begins_behind_guard);
    GuardedBuffer output(room(frame.width, frame.height), Placement::begins_behind_guard);
    memcpy(source.data(), frame.samples.data(), frame.samples.size());
    EXPECT_EQ(ppl_model::ppl_process_blrtoi420(model, source.data(), output.data(), frame.width,
                                               frame.height, frame.width),
              1);
    EXPECT_TRUE(ppl_model::free_bytes().empty() && !ppl_model::picture_is_free());
    return {output.begin(), output.end()};
  }
};
INSTANTIATE_TEST_SUITE_P(Tiers, OddOutputWidth, ::testing::ValuesIn(both_tiers), tier_name);

// Row r: luma from 99 r on, U from 396 + 33 r, V from 495 + 33 r. Of what falls on the same bytes
// the later row is seen. A row is written in steps of two blocks, which take 16 (32) samples of
// each line of luma, then 8 (16) of U and of V.
TEST_P(OddOutputWidth, ChromaRowsFollowEachOther) {
  expect_output({false, false}, [this](PlacedSamples &expected) {
    for (const size_t r : {0u, 1u, 2u, 3u, 4u, 5u, 9u, 10u, 11u}) {
      expected.y(99 * r, 2 * r, 0, 65);
      expected.y(99 * r + 66, 2 * r + 1, 33, 65);
    }
    // U of row 5 falls on samples 33 to 65 of its own row's second line, of which 33 to 56 (33 to
    // 48) and 64 belong to later steps.
    expected.u(is_p3() ? 585 : 577, 5, is_p3() ? 24 : 16, 30);
    expected.u(593, 5, 32, 32);
    for (size_t r = 6; r < 12; ++r) expected.u(396 + 33 * r, r, 0, 32);
    for (size_t r = 9; r < 12; ++r) expected.v(495 + 33 * r, r, 0, 32);
  });
}

// Row r: luma from 33 r + 65 down to 33 r - 33, U from 396 + 15 - r down, V from 495 + 15 - r: 33
// back along the row and 2 * 16 on to the next.
TEST_P(OddOutputWidth, ChromaRowsMirroredAcrossGoBackByOne) {
  expect_output({true, false}, [this](PlacedSamples &expected) {
    for (size_t r = 1; r < 12; ++r) expected.y(33 * r - 33, 2 * r, 65, 33);
    // The last row's second line with the last row's U on it, as far as that comes later.
    expected.y(363, 23, 65, 0);
    if (is_p3()) {
      expected.u(368, 11, 32, 24);
      expected.u(381, 11, 19, 16);
    } else {
      expected.u(368, 11, 32, 16);
      expected.u(397, 11, 3, 0);
    }
    expected.v(467, 11, 32, 0);
    for (size_t r = 0; r < 11; ++r) expected.v(510 - r, r, 0, 0);
  });
}

// Row r: luma from 330 - 33 r on, U from 396 + 99 - 16 + r, V from 495 + 99 - 16 + r: 33 on along
// the row and 2 * 16 back to the next.
TEST_P(OddOutputWidth, ChromaRowsMirroredDownGoOnByOne) {
  expect_output({false, true}, [](PlacedSamples &expected) {
    expected.y(0, 23, 33, 65);
    for (size_t r = 0; r < 12; ++r) expected.y(396 - 33 * r, 2 * r, 33, 65);
    for (size_t r = 0; r < 11; ++r) {
      expected.u(479 + r, r, 0, 0);
      expected.v(578 + r, r, 0, 0);
    }
    expected.u(490, 11, 0, 32);
    expected.v(589, 11, 0, 32);
  });
}

// Row r: luma from 395 - 99 r down, U from 494 - 33 r down, V from 593 - 33 r. From the fifth row
// on luma lies before the output's start.
TEST_P(OddOutputWidth, ChromaRowsMirroredBothWaysFollowEachOtherBackwards) {
  expect_output({true, true}, [](PlacedSamples &expected) {
    expected.y(0, 7, 65, 33);
    expected.y(33, 6, 65, 0);
    for (size_t r = 9; r < 12; ++r) expected.u(462 - 33 * r, r, 32, 0);
    for (size_t r = 0; r < 12; ++r) expected.v(561 - 33 * r, r, 32, 0);
  });
}

TEST_P(OddOutputWidth, TheModelSeesTheSameAtEveryWidth) {
  // Multiples of 8 and others; an odd number of line pairs, of lines.
  for (const auto &[width, height] : {std::pair{132u, 48u},
                                      {140u, 48u},
                                      {148u, 22u},
                                      {156u, 49u},
                                      {133u, 20u},
                                      {1276u, 14u},
                                      {128u, 48u},
                                      {130u, 48u},
                                      {134u, 48u},
                                      {136u, 22u}})
    for (const Mirrors &mirrors : all_mirrors)
      for (const uint32_t quality : {3u, 13u}) {
        SCOPED_TRACE(testing::Message() << width << " by " << height << ", quality " << quality
                                        << (mirrors.h ? ", h" : "") << (mirrors.v ? ", v" : ""));
        const Mosaic frame = textured_mosaic(width, height);
        ASSERT_EQ(ppl_set_quality(ctx, quality), 1);
        set_mirrors(mirrors);
        const Picture picture = run_at_2(frame);
        if (const auto difference =
                first_difference(run_model_at_2(frame, quality, mirrors), picture.bytes))
          ADD_FAILURE() << describe(*difference, width / 4);
      }
}

}  // namespace
}  // namespace ppl_test
