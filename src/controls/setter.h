// How a plain value becomes a parameter: narrowing and the fit tests.
#pragma once

#include "context/context.h"
#include "context/refresh.h"

namespace ppl {

// Parameters take the low bits of a value.
constexpr int16_t to_word(int32_t value) { return static_cast<int16_t>(value); }
constexpr uint8_t to_byte(int32_t value) { return static_cast<uint8_t>(value); }
constexpr BytePair to_bytes(int32_t even, int32_t odd) { return {to_byte(even), to_byte(odd)}; }

inline bool fits_word(int32_t value) { return value >= -32768 && value <= 32767; }

// Before a shift right by 2 the range is twice a word's, although the shift makes room for four:
// the upper half is refused. Meant so: docs/oddities.md, "Values that are stored and not used".
inline bool fits_shifted_word(int32_t value) { return value >= -65536 && value <= 65535; }

// Sums of controls wrap in 32 bits; a wrapped one then fails its fit test.
inline int32_t wrapping_add(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

inline int32_t wrapping_subtract(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

// A curve of 256 bytes.
inline void copy_curve(uint8_t *to, const uint8_t *from) {
  for (int i = 0; i < 256; ++i) to[i] = from[i];
}

// A value per colour channel, and which of the three a setter is about.
struct ChannelValues {
  int32_t r, g, b;
};
struct Channels {
  bool r, g, b;
};
inline constexpr Channels all_channels = {true, true, true};
inline constexpr Channels red_only = {true, false, false};
inline constexpr Channels green_only = {false, true, false};
inline constexpr Channels blue_only = {false, false, true};

// Writes the named channels' own columns into the pairs of both line kinds, each value shifted
// right; writes nothing and returns false if one of them does not fit.
template <class Fits>
bool set_channels(WordPair &BG, WordPair &GR, Channels channels, ChannelValues values, int shift,
                  Fits fits) {
  if ((channels.r && !fits(values.r)) || (channels.g && !fits(values.g)) ||
      (channels.b && !fits(values.b))) {
    return false;
  }
  if (channels.b) BG.even = to_word(values.b >> shift);
  if (channels.g) BG.odd = GR.even = to_word(values.g >> shift);
  if (channels.r) GR.odd = to_word(values.r >> shift);
  return true;
}

}  // namespace ppl
