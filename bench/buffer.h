#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ppl::bench {

// Memory that starts on a cache line, `offset` bytes further.
class Buffer {
 public:
  Buffer(size_t size, size_t offset) : memory_(size + offset + 64) {
    const auto address = reinterpret_cast<uintptr_t>(memory_.data());
    start_ = memory_.data() + (64 - address % 64) % 64 + offset;
  }
  uint8_t *start() { return start_; }

 private:
  std::vector<uint8_t> memory_;
  uint8_t *start_;
};

}  // namespace ppl::bench
