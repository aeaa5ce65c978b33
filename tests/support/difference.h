// Where two buffers part, in words a person can act on.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <optional>
#include <span>
#include <string>

namespace ppl_test {

struct Difference {
  size_t offset;
  uint8_t expected, actual;
  size_t count;  // bytes that differ in all
};

// Compares bytes where `free` (as long as the buffers, or empty) is 0.
std::optional<Difference> first_difference(std::span<const uint8_t> expected,
                                           std::span<const uint8_t> actual,
                                           std::span<const uint8_t> free = {});

// "offset 1234 (x 5, y 9): expected 17, got 18; 3 bytes differ", with x and y counted at `pitch`.
std::string describe(const Difference &difference, size_t pitch);

}  // namespace ppl_test
