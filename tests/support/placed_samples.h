// An I420 output put together by hand, from samples of a picture that stand where they should.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <vector>

#include "support/raw_frame.h"

namespace ppl_test {

class PlacedSamples {
 public:
  // What no samples are placed on is `rest`.
  PlacedSamples(const Picture &picture, size_t size, uint8_t rest)
      : picture_(picture), bytes_(size, rest) {}

  // Puts the samples of a line from `first` to `last`, which may lie before it, on the bytes from
  // `at` on.
  void y(size_t at, size_t line, size_t first, size_t last) {
    put(at, first, last, [&](size_t x) { return picture_.y(x, line); });
  }
  void u(size_t at, size_t line, size_t first, size_t last) {
    put(at, first, last, [&](size_t x) { return picture_.u(x, line); });
  }
  void v(size_t at, size_t line, size_t first, size_t last) {
    put(at, first, last, [&](size_t x) { return picture_.v(x, line); });
  }

  const std::vector<uint8_t> &bytes() const { return bytes_; }

 private:
  template <class Sample>
  void put(size_t at, size_t first, size_t last, Sample sample) {
    const size_t count = first <= last ? last - first + 1 : first - last + 1;
    for (size_t i = 0; i < count; ++i)
      bytes_[at + i] = sample(first <= last ? first + i : first - i);
  }

  const Picture &picture_;
  std::vector<uint8_t> bytes_;
};

}  // namespace ppl_test
