// What the processor offers.
#pragma once

#include <stdint.h>

#include "platform/platform.h"

namespace ppl {

inline constexpr uint32_t processor_detected = 1u << 0;
inline constexpr uint32_t processor_time_stamp = 1u << 4;
inline constexpr uint32_t processor_amd_mmx = 1u << 22;
inline constexpr uint32_t processor_mmx = 1u << 23;
inline constexpr uint32_t processor_p3_tier = 1u << 24;
inline constexpr uint32_t processor_sse = 1u << 25;
inline constexpr uint32_t processor_sse2_tier = 1u << 26;
inline constexpr uint32_t processor_amd_3dnow_extended = 1u << 30;
inline constexpr uint32_t processor_3dnow = 1u << 31;

// The flag word; detects on the first call, and ppl_init calls it first.
uint32_t processor_flags();

// Without a tier no frame is processed and nothing is derived from the controls.
constexpr bool has_any_tier(uint32_t flags) {
  return (flags & (processor_p3_tier | processor_sse2_tier)) != 0;
}

// For tests and for the load entry: the next call of processor_flags detects anew.
void forget_processor();

// Holds the caller's floating-point state for as long as it lives, if the save succeeded.
class FloatingPointBracket {
 public:
  FloatingPointBracket() : held_(platform::save_floating_point(state_)) {}
  ~FloatingPointBracket() {
    if (held_) platform::restore_floating_point(state_);
  }
  FloatingPointBracket(const FloatingPointBracket &) = delete;
  FloatingPointBracket &operator=(const FloatingPointBracket &) = delete;

  bool held() const { return held_; }

 private:
  platform::FloatingPointState state_;
  bool held_;
};

}  // namespace ppl
