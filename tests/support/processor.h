// Makes the processor look older for the life of an object. Needs the test build of the library.
#pragma once

#include <stdint.h>

#include "platform/test_hooks.h"

namespace ppl_test {

struct ProcessorLook {
  const char *vendor = "GenuineIntel";
  uint32_t highest_leaf = 1;
  uint32_t leaf1_edx = 0;
  uint32_t highest_extended_leaf = 0;  // 0x80000001 and above: extended features are read
  uint32_t extended_edx = 0;
};

inline constexpr uint32_t edx_time_stamp = 1u << 4;
inline constexpr uint32_t edx_amd_mmx = 1u << 22;
inline constexpr uint32_t edx_mmx = 1u << 23;
inline constexpr uint32_t edx_sse = 1u << 25;
inline constexpr uint32_t edx_sse2 = 1u << 26;

inline constexpr ProcessorLook no_tier_processor{.leaf1_edx = edx_time_stamp | edx_mmx};
inline constexpr ProcessorLook p3_processor{.leaf1_edx = edx_time_stamp | edx_mmx | edx_sse};
inline constexpr ProcessorLook sse2_processor{.leaf1_edx =
                                                  edx_time_stamp | edx_mmx | edx_sse | edx_sse2};

class FakeProcessor {
 public:
  explicit FakeProcessor(const ProcessorLook &look) {
    current() = look;
    ppl::test_hooks::set_cpuid(&answer);
  }
  ~FakeProcessor() { ppl::test_hooks::set_cpuid(nullptr); }
  FakeProcessor(const FakeProcessor &) = delete;
  FakeProcessor &operator=(const FakeProcessor &) = delete;

 private:
  static ProcessorLook &current() {
    static ProcessorLook look;
    return look;
  }

  static ppl::test_hooks::CpuidResult answer(uint32_t leaf) {
    const ProcessorLook &look = current();
    const auto word = [&](int first) {
      uint32_t value = 0;
      for (int i = 3; i >= 0; --i)
        value = value << 8 | static_cast<uint8_t>(look.vendor[first + i]);
      return value;
    };
    switch (leaf) {
      case 0:
        return {look.highest_leaf, word(0), word(8), word(4)};  // EBX, EDX, ECX in this order
      case 1:
        return {0x6B1, 0, 0, look.leaf1_edx};
      case 0x80000000u:
        return {look.highest_extended_leaf, 0, 0, 0};
      case 0x80000001u:
        return {0, 0, 0, look.extended_edx};
      default:
        return {};
    }
  }
};

}  // namespace ppl_test
