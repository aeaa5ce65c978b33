// How a plain value becomes lanes: the four lane forms and the fit tests.
#pragma once

#include "frame/context.h"
#include "frame/refresh.h"

namespace ppl {

// Lanes take the low bits of a value.
inline int16_t word_lane(int32_t value) { return static_cast<int16_t>(value); }
inline uint8_t byte_lane(int32_t value) { return static_cast<uint8_t>(value); }

// Alternates two values from the lowest lane on.
template <int Bytes>
void set_word_pair(WordVector<Bytes> &vector, int32_t even, int32_t odd) {
  for (int i = 0; i < Bytes / 2; ++i) vector.lane[i] = word_lane(i % 2 == 0 ? even : odd);
}

template <int Bytes>
void set_byte_pair(ByteVector<Bytes> &vector, int32_t even, int32_t odd) {
  for (int i = 0; i < Bytes; ++i) vector.lane[i] = byte_lane(i % 2 == 0 ? even : odd);
}

template <int Bytes>
void broadcast(WordVector<Bytes> &vector, int32_t value) {
  set_word_pair(vector, value, value);
}

template <int Bytes>
void broadcast(ByteVector<Bytes> &vector, int32_t value) {
  set_byte_pair(vector, value, value);
}

inline bool fits_word(int32_t value) { return value >= -32768 && value <= 32767; }

// Before a shift right by 2 the range is twice a word's, although the shift makes room for four:
// the upper half is refused all the same.
inline bool fits_shifted_word(int32_t value) { return value >= -65536 && value <= 65535; }

// Sums of controls wrap in 32 bits; a wrapped one then fails its fit test.
inline int32_t wrapping_add(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

inline int32_t wrapping_subtract(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
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

// Writes the named channels' own lanes into the word pairs of both line kinds, each value shifted
// right; writes nothing and returns false if one of them does not fit.
template <int Bytes, class Fits>
bool set_channel_lanes(WordVector<Bytes> &BG, WordVector<Bytes> &GR, Channels channels,
                       ChannelValues values, int shift, Fits fits) {
  if ((channels.r && !fits(values.r)) || (channels.g && !fits(values.g)) ||
      (channels.b && !fits(values.b))) {
    return false;
  }
  for (int i = 0; i < Bytes / 2; i += 2) {
    if (channels.b) BG.lane[i] = word_lane(values.b >> shift);
    if (channels.g) BG.lane[i + 1] = GR.lane[i] = word_lane(values.g >> shift);
    if (channels.r) GR.lane[i + 1] = word_lane(values.r >> shift);
  }
  return true;
}

}  // namespace ppl
