// Loading, and what a failing save leads to.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "host/hosted_driver.h"
#include "ppl.h"
#include "support/random.h"

namespace ppl_test {
namespace {

constexpr uint32_t width = 320, height = 240, samples = width * height;

class Driver : public testing::Test {
 protected:
  Driver() : driver_(HostedDriver::get()) {
    kernel_calls = {};
    kernel_save_fails = false;
    set_stack_offset(each_in_turn);
    driver_.reload();
  }

  static PplContext *init_with_failing_saves() {
    PplContext *const context = ppl_init();
    kernel_calls = {};
    kernel_save_fails = true;
    return context;
  }

  // A frame of random samples, 16-byte aligned, and room for any output of it.
  struct Frame {
    Frame() : bytes(20 * samples + 16) {
      Random random(7);
      const auto start = reinterpret_cast<uintptr_t>(bytes.data());
      src = bytes.data() + (16 - start % 16) % 16;
      dst = src + samples;
      std::generate(src, src + samples, [&] { return random.byte(); });
    }
    std::vector<uint8_t> bytes;
    uint8_t *src, *dst;
  };

  HostedDriver &driver_;
};

TEST_F(Driver, LoadEntryIgnoresItsArgumentsAndReturnsSuccess) {
  const auto nowhere = reinterpret_cast<void *>(1);
  EXPECT_EQ(driver_.load(nowhere, nowhere), 0);
}

TEST_F(Driver, LoadEntryZeroesThePool) {
  Frame frame;
  PplContext *const first = ppl_init();
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(BaylorToRGB24MMX(first, frame.src, frame.dst, width, height), 1);
  ppl_set_sensor_type(first, 17);
  while (ppl_init() != nullptr) continue;
  EXPECT_EQ(ppl_init(), nullptr);
  EXPECT_EQ(ppl_n_frame(first), 1u);

  EXPECT_EQ(driver_.load(nullptr, nullptr), 0);
  EXPECT_EQ(ppl_n_frame(first), 0u);
  EXPECT_EQ(ppl_sensor_type(first), 0);
  EXPECT_EQ(ppl_init(), first);
}

TEST_F(Driver, UnloadReturnsZeroAndTakesNoContextAway) {
  PplContext *const context = ppl_init();
  EXPECT_EQ(DllUnload(), 0);
  EXPECT_NE(ppl_init(), context);
}

TEST_F(Driver, EightContextsStandOn64ByteBoundaries) {
  for (int i = 0; i < 8; ++i) {
    PplContext *const context = ppl_init();
    ASSERT_NE(context, nullptr);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(context) % 64, 0u);
  }
  EXPECT_EQ(ppl_init(), nullptr);
}

TEST_F(Driver, FailedSaveGivesTheFallbackFrameAndZero) {
  Frame frame;
  PplContext *const context = init_with_failing_saves();
  EXPECT_EQ(BaylorToI420MMX(context, frame.src, frame.dst, width, height), 0);
  EXPECT_TRUE(std::equal(frame.src, frame.src + samples, frame.dst));
  EXPECT_TRUE(std::all_of(frame.dst + samples, frame.dst + samples * 3 / 2,
                          [](uint8_t byte) { return byte == 128; }));
  EXPECT_EQ(BaylorToRGB24MMX(context, frame.src, frame.dst, width, height), 0);
  EXPECT_TRUE(
      std::all_of(frame.dst, frame.dst + 3 * samples, [](uint8_t byte) { return byte == 255; }));
  EXPECT_EQ(kernel_calls.failed_saves, 2u);
  EXPECT_EQ(kernel_calls.restores, 0u);
  EXPECT_EQ(ppl_n_frame(context), 0u);
}

TEST_F(Driver, MisalignedFrameAsksForNoSave) {
  Frame frame;
  PplContext *const context = ppl_init();
  kernel_calls = {};
  EXPECT_EQ(BaylorToI420MMX(context, frame.src + 4, frame.dst, width, height - 2), 0);
  EXPECT_EQ(kernel_calls.saves, 0u);
}

TEST_F(Driver, FailedSaveInASetterReturnsOneWithTheValueStored) {
  PplContext *const context = init_with_failing_saves();
  EXPECT_EQ(ppl_set_rgb_gain(context, 300, 310, 320), 1);
  EXPECT_EQ(ppl_nf88_r_gain(context), 300);
  EXPECT_EQ(ppl_set_edge_threshold(context, 9), 1);
  EXPECT_EQ(ppl_new_frame_size(context, width, height, width), 1);
  EXPECT_EQ(ppl_set_decimation(context, 1, 0, 0), 1);
  EXPECT_EQ(ppl_decimation(context), 1);
  EXPECT_EQ(kernel_calls.failed_saves, 4u);
  EXPECT_EQ(kernel_calls.restores, 0u);
}

}  // namespace
}  // namespace ppl_test
