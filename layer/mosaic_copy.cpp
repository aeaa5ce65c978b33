#include "mosaic_copy.h"

#include <algorithm>
#include <cstring>

#include "picture_copy.h"

namespace ppl::detail {
namespace {

using LineCopy = void (*)(uint8_t *to, const uint8_t *from, size_t width, unsigned shift);

void copy_bytes(uint8_t *to, const uint8_t *from, size_t width, unsigned) {
  std::memcpy(to, from, width);
}

// The highest bits of words. Bits above those of the format, which ought to be 0, hold the sample
// at full scale. In 16 bits all through, so that the compiler finds eight of them in a register.
template <bool rounds>
void copy_words(uint8_t *to, const uint8_t *from, size_t width, unsigned shift) {
  for (size_t x = 0; x < width; ++x) {
    uint16_t word;
    std::memcpy(&word, from + 2 * x, sizeof word);
    const int half = rounds ? word >> (shift - 1) & 1 : 0;
    const auto sample = static_cast<int16_t>((word >> shift) + half);
    to[x] = static_cast<uint8_t>(std::min<int16_t>(sample, 255));
  }
}

uint8_t rounded_up(uint8_t high, unsigned by) {
  return static_cast<uint8_t>(high + (high < 255 ? by : 0));
}

// Four high bytes, then two low bits of each, those of the first sample lowest.
template <bool rounds>
void copy_packed_10(uint8_t *to, const uint8_t *from, size_t width, unsigned) {
  const auto copy = [&](size_t count) {
    std::memcpy(to, from, count);
    if (!rounds) return;
    for (size_t i = 0; i < count; ++i) to[i] = rounded_up(to[i], from[4] >> (2 * i + 1) & 1u);
  };
  for (; width >= 4; width -= 4, to += 4, from += 5) copy(4);
  copy(width);
}

// Two high bytes, then four low bits of each, those of the first sample lowest.
template <bool rounds>
void copy_packed_12(uint8_t *to, const uint8_t *from, size_t width, unsigned) {
  // Four samples of six bytes at a time, as long as eight can be read.
  for (; !rounds && width >= 6; width -= 4, to += 4, from += 6) {
    uint64_t bytes;
    std::memcpy(&bytes, from, sizeof bytes);
    const auto high = static_cast<uint32_t>((bytes & 0xFFFF) | (bytes >> 8 & 0xFFFF0000));
    std::memcpy(to, &high, sizeof high);
  }
  for (; width > 0; width -= 2, to += 2, from += 3) {
    to[0] = rounds ? rounded_up(from[0], from[2] >> 3 & 1u) : from[0];
    to[1] = rounds ? rounded_up(from[1], from[2] >> 7) : from[1];
  }
}

template <bool rounds>
LineCopy line_copy(const RawFormat &format) {
  if (format.packing == Packing::mipi)
    return format.bits == 10 ? copy_packed_10<rounds> : copy_packed_12<rounds>;
  return format.bits == 8 ? copy_bytes : copy_words<rounds>;
}

}  // namespace

void copy_mosaic(const RawFormat &format, const uint8_t *frame, uint8_t *to, uint32_t width,
                 uint32_t height, Turn turn) {
  const LineCopy copy = format.rounds ? line_copy<true>(format) : line_copy<false>(format);
  const size_t stride = format.stride ? format.stride : format.line_bytes();
  const unsigned shift = format.bits - 8;
  for (uint32_t y = 0; y < height; ++y) {
    uint8_t *const line = to + size_t{width} * (turn.v ? height - 1 - y : y);
    copy(line, frame + stride * y, width, shift);
    if (turn.h) reverse_bytes(line, width);
  }
}

}  // namespace ppl::detail
