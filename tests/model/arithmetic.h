// Integer arithmetic with its wraps and narrowings spelled out.
#pragma once

#include <algorithm>
#include <cstdint>

namespace ppl_model {

// 32-bit sums and products that wrap.
constexpr int32_t wrap32(int64_t value) {
  return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(value)));
}
constexpr int32_t add32(int32_t a, int32_t b) { return wrap32(int64_t{a} + b); }
constexpr int32_t sub32(int32_t a, int32_t b) { return wrap32(int64_t{a} - b); }
constexpr int32_t mul32(int32_t a, int32_t b) { return wrap32(int64_t{a} * b); }

// Truncating quotient; the one that does not fit wraps.
constexpr int32_t div32(int32_t a, int32_t b) { return wrap32(int64_t{a} / b); }

// The low 16 bits, read as signed.
constexpr int16_t wrap16(int64_t value) {
  return static_cast<int16_t>(static_cast<uint16_t>(static_cast<uint64_t>(value)));
}

constexpr uint8_t low_byte(int64_t value) {
  return static_cast<uint8_t>(static_cast<uint64_t>(value) & 0xFF);
}

constexpr uint8_t clamp_to_byte(int32_t value) {
  return static_cast<uint8_t>(std::clamp(value, 0, 255));
}

constexpr bool fits_word(int32_t value) { return value >= -32768 && value <= 32767; }

// Rounding average of two bytes.
constexpr uint8_t average(uint8_t a, uint8_t b) { return static_cast<uint8_t>((a + b + 1) >> 1); }

// Mirrors a line or column about the frame's outermost one, which is not repeated.
constexpr int reflect(int position, int size) {
  if (position < 0) return -position;
  return position < size ? position : 2 * (size - 1) - position;
}

}  // namespace ppl_model
