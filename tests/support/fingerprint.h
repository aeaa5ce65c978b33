// FNV-1a in 64 bits: the checksum of the golden results.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <span>
#include <string>

namespace ppl_test {

inline constexpr uint64_t fingerprint_start = 0xCBF29CE484222325u;

constexpr uint64_t fingerprint_byte(uint64_t hash, uint8_t byte) {
  return (hash ^ byte) * 0x00000100000001B3u;
}

uint64_t fingerprint(std::span<const uint8_t> bytes, uint64_t hash = fingerprint_start);

std::string hexadecimal(uint64_t value);  // sixteen digits

}  // namespace ppl_test
