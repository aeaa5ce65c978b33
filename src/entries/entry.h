// What every entry function does around its frame driver.
#pragma once

#include <stddef.h>

#include "engine/machine.h"
#include "processor/processor.h"

namespace ppl {

// Runs `frame` (which returns a result) inside the floating-point bracket, if the pixel path can
// run at all: all pointers are multiples of 8, the processor has the P3 tier, and the save
// succeeds. Otherwise runs `fallback` and returns 0. The order of the tests matters: a misaligned
// call uses up no save.
template <int Count, class Frame, class Fallback>
uint8_t run_entry(const void *const (&pointers)[Count], Frame frame, Fallback fallback) {
  if (are_aligned(pointers, 8) && (processor_flags() & processor_p3_tier) != 0) {
    const FloatingPointBracket bracket;
    if (bracket.held()) return frame();
  }
  fallback();
  return 0;
}

// Plain byte work for the fallbacks: no SIMD, so that it needs no bracket.
inline uint8_t *copy_plain(uint8_t *to, const uint8_t *from, size_t count) {
  for (size_t i = 0; i < count; ++i) to[i] = from[i];
  return to + count;
}

inline uint8_t *fill_plain(uint8_t *to, uint8_t value, size_t count) {
  for (size_t i = 0; i < count; ++i) to[i] = value;
  return to + count;
}

// A grey picture in the shape of I420.
inline void write_grey_fallback(uint8_t *dst, const uint8_t *src, size_t pixels) {
  fill_plain(copy_plain(dst, src, pixels), 128, pixels / 2);
}

}  // namespace ppl
