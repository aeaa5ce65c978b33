// What the plain loops share: how a line is looked up, and words that wrap. Each source that
// includes this defines PLAIN_BUILD, the namespace of its flags. Nothing from the standard
// library's templates: an inline function compiled with newer instructions could be merged into the
// rest of the program.
#pragma once

#include <cstddef>
#include <cstdint>

#include "plain_loop.h"

#define RESTRICT __restrict__

// gcc turns the look-ups into vectors that it gathers byte by byte, at two thirds more time.
#if defined(__clang__)
#define KEPT_SCALAR
#define SCALAR_LOOP _Pragma("clang loop vectorize(disable)")
#else
#define KEPT_SCALAR __attribute__((noinline, optimize("no-tree-vectorize")))
#define SCALAR_LOOP
#endif

namespace ppl::bench::PLAIN_BUILD {
namespace {

constexpr int longest_line = 1280;

int16_t word(int value) { return static_cast<int16_t>(value); }  // wraps

int16_t clamp(int16_t value, int16_t low, int16_t high) {
  return value < low ? low : value > high ? high : value;
}

// Both take a line through the tables of its even and odd columns, in place.
struct ByBytes {
  KEPT_SCALAR static void look_up(uint8_t *RESTRICT line, int width, const uint8_t *RESTRICT even,
                                  const uint8_t *RESTRICT odd) {
    SCALAR_LOOP
    for (int x = 0; x < width; x += 2) {
      line[x] = even[line[x]];
      line[x + 1] = odd[line[x + 1]];
    }
  }
};

struct ByWords {
  static void look_up(uint8_t *RESTRICT line, int width, const uint8_t *RESTRICT even,
                      const uint8_t *RESTRICT odd) {
    int x = 0;
    for (; x + 4 <= width; x += 4) {
      const uint32_t joined = static_cast<uint32_t>(even[line[x]]) |
                              static_cast<uint32_t>(odd[line[x + 1]]) << 8 |
                              static_cast<uint32_t>(even[line[x + 2]]) << 16 |
                              static_cast<uint32_t>(odd[line[x + 3]]) << 24;
      __builtin_memcpy(line + x, &joined, sizeof joined);
    }
    for (; x < width; x += 2) {
      line[x] = even[line[x]];
      line[x + 1] = odd[line[x + 1]];
    }
  }
};

uint8_t to_byte(int16_t value) { return static_cast<uint8_t>(clamp(value, 0, 255)); }

uint8_t to_luma(int16_t value) {
  const int16_t y = word(clamp(value, 0, 255) + 16);
  return static_cast<uint8_t>(y > 235 ? 235 : y);
}

uint8_t to_chroma(int16_t value) { return static_cast<uint8_t>(clamp(value, -112, 112) + 128); }

}  // namespace
}  // namespace ppl::bench::PLAIN_BUILD
