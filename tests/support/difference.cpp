#include "support/difference.h"

#include <string.h>

#include <algorithm>

namespace ppl_test {

std::optional<Difference> first_difference(std::span<const uint8_t> expected,
                                           std::span<const uint8_t> actual,
                                           std::span<const uint8_t> free) {
  const size_t size = std::min(expected.size(), actual.size());
  if (expected.size() == actual.size() && memcmp(expected.data(), actual.data(), size) == 0)
    return std::nullopt;
  std::optional<Difference> first;
  for (size_t i = 0; i < size; ++i) {
    if (expected[i] == actual[i] || (i < free.size() && free[i] != 0)) continue;
    if (!first) first = Difference{i, expected[i], actual[i], 0};
    ++first->count;
  }
  if (!first && expected.size() != actual.size()) first = Difference{size, 0, 0, 0};
  return first;
}

std::string describe(const Difference &difference, size_t pitch) {
  std::string text = "offset " + std::to_string(difference.offset);
  if (pitch != 0)
    text += " (x " + std::to_string(difference.offset % pitch) + ", y " +
            std::to_string(difference.offset / pitch) + ")";
  return text + ": expected " + std::to_string(difference.expected) + ", got " +
         std::to_string(difference.actual) + "; " + std::to_string(difference.count) +
         " bytes differ";
}

}  // namespace ppl_test
