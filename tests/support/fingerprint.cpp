#include "support/fingerprint.h"

namespace ppl_test {

uint64_t fingerprint(std::span<const uint8_t> bytes, uint64_t hash) {
  for (const uint8_t byte : bytes) hash = fingerprint_byte(hash, byte);
  return hash;
}

std::string hexadecimal(uint64_t value) {
  std::string text(16, '0');
  for (size_t i = 16; i-- > 0; value >>= 4) text[i] = "0123456789abcdef"[value & 15];
  return text;
}

}  // namespace ppl_test
