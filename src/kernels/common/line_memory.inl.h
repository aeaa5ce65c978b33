// Lines of the context's line memory.
#pragma once

#include "context/context.h"
#include "kernels/common/tier.inl.h"

#if defined(__SANITIZE_ADDRESS__)
#define PPL_POISONS_LINES
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define PPL_POISONS_LINES
#endif
#endif
#ifdef PPL_POISONS_LINES
extern "C" void __asan_poison_memory_region(const volatile void *, size_t);
extern "C" void __asan_unpoison_memory_region(const volatile void *, size_t);
#endif

namespace ppl::TARGET {
namespace {

// How far a stage's window reaches beside its own column at the most.
constexpr int widest_reach = 3;

// Hands out lines for one pass. Lines may be read and written up to a register past their end.
class LineMemory {
 public:
  explicit LineMemory(PplContext &ctx) : LineMemory(ctx.line_memory) {
#ifdef PPL_POISONS_LINES
    poisons_ = true;
    __asan_poison_memory_region(area_, line_memory_bytes);
#endif
  }
  constexpr explicit LineMemory(uint8_t *area) : area_(area) {}
  LineMemory(const LineMemory &) = delete;
  LineMemory &operator=(const LineMemory &) = delete;
#ifdef PPL_POISONS_LINES
  constexpr ~LineMemory() {
    if (poisons_) __asan_unpoison_memory_region(area_, line_memory_bytes);
  }
#endif

  constexpr uint8_t *line(int length) {
    uint8_t *const start = area_ + used_ + line_margin;
    used_ += line_pitch(length);
#ifdef PPL_POISONS_LINES
    if (poisons_) {
      constexpr int before = 8;  // the sanitizer's grain
      static_assert(before >= widest_reach);
      __asan_unpoison_memory_region(
          start - before, static_cast<size_t>(before + round_up(length, Vec::size) + Vec::size));
    }
#endif
    return start;
  }

  constexpr bool fits() const { return used_ <= line_memory_bytes; }

 private:
  uint8_t *const area_;
  int used_ = 0;
#ifdef PPL_POISONS_LINES
  bool poisons_ = false;
#endif
};

// Whether all lines of a pass fit: make(memory) takes them.
template <class Make>
consteval bool fits_line_memory(Make make) {
  uint8_t area[2 * line_memory_bytes] = {};
  LineMemory memory(area);
  make(memory);
  return memory.fits();
}

}  // namespace
}  // namespace ppl::TARGET
