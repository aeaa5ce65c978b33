// The processor that the library meets: which tiers it has, and how to make it look older for the
// life of an object. Needs the test build of the library.
#pragma once

#include <stdint.h>

#include <vector>

#include "support/tier.h"
#include "testing/test_hooks.h"

namespace ppl_test {

// Features in EDX of CPUID leaf 1, and in EDX of leaf 0x80000001. The flag word keeps them where
// they are.
inline constexpr uint32_t edx_time_stamp = 1u << 4;
inline constexpr uint32_t edx_mmx = 1u << 23;
inline constexpr uint32_t edx_sse = 1u << 25;
inline constexpr uint32_t edx_sse2 = 1u << 26;
inline constexpr uint32_t edx_amd_mmx = 1u << 22;
inline constexpr uint32_t edx_amd_3dnow_extended = 1u << 30;
inline constexpr uint32_t edx_3dnow = 1u << 31;

// What the flag word says beside them. SSE2 is a tier by itself.
inline constexpr uint32_t flag_detected = 1u << 0;
inline constexpr uint32_t flag_p3_tier = 1u << 24;
inline constexpr uint32_t flag_sse2_tier = edx_sse2;

inline constexpr uint32_t flags_of_p3_alone = flag_detected | edx_sse | flag_p3_tier;
inline constexpr uint32_t flags_of_both_tiers = flags_of_p3_alone | flag_sse2_tier;

// Of the processor that the library meets now.
inline bool has_tier(Tier tier) {
  const uint32_t flag = tier == Tier::p3 ? flag_p3_tier : flag_sse2_tier;
  return (ppl::test_hooks::processor_flags() & flag) != 0;
}

struct ProcessorLook {
  const char *vendor = "GenuineIntel";
  uint32_t highest_leaf = 1;
  uint32_t leaf1_edx = 0;
  uint32_t highest_extended_leaf = 0;  // 0x80000001 and above: extended features are read
  uint32_t extended_edx = 0;
};

inline constexpr ProcessorLook no_tier_processor{.leaf1_edx = edx_time_stamp | edx_mmx};
inline constexpr ProcessorLook p3_processor{.leaf1_edx = edx_time_stamp | edx_mmx | edx_sse};
inline constexpr ProcessorLook sse2_processor{.leaf1_edx =
                                                  edx_time_stamp | edx_mmx | edx_sse | edx_sse2};
inline constexpr ProcessorLook sse2_without_p3_processor{.leaf1_edx =
                                                             edx_time_stamp | edx_mmx | edx_sse2};

// There is one processor, so there is one of these at a time.
class FakeProcessor {
 public:
  explicit FakeProcessor(const ProcessorLook &look) {
    current() = {look, {}};
    ppl::test_hooks::set_cpuid(&answer);
  }
  ~FakeProcessor() { ppl::test_hooks::set_cpuid(nullptr); }
  FakeProcessor(const FakeProcessor &) = delete;
  FakeProcessor &operator=(const FakeProcessor &) = delete;

  // The leaves that were asked for, in this order.
  static const std::vector<uint32_t> &leaves_asked() { return current().leaves_asked; }

  // What nobody should look at is all ones, so that it shows if somebody does.
  static ppl::test_hooks::CpuidResult answer(uint32_t leaf) {
    current().leaves_asked.push_back(leaf);
    const ProcessorLook &look = current().look;
    const auto word = [&](int first) {
      uint32_t value = 0;
      for (int i = 3; i >= 0; --i) {
        value = value << 8 | static_cast<uint8_t>(look.vendor[first + i]);
      }
      return value;
    };
    constexpr uint32_t ones = UINT32_MAX;
    switch (leaf) {
      case 0:
        return {look.highest_leaf, word(0), word(8), word(4)};  // EBX, EDX, ECX in this order
      case 1:
        return {ones, ones, ones, look.leaf1_edx};
      case 0x80000000u:
        return {look.highest_extended_leaf, ones, ones, ones};
      case 0x80000001u:
        return {ones, ones, ones, look.extended_edx};
      default:
        return {ones, ones, ones, ones};
    }
  }

 private:
  struct State {
    ProcessorLook look;
    std::vector<uint32_t> leaves_asked;
  };
  static State &current() {
    static State state;
    return state;
  }
};

}  // namespace ppl_test
