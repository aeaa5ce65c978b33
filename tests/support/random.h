// A small seeded generator: the same numbers on every platform and in every standard library.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <initializer_list>

namespace ppl_test {

class Random {
 public:
  explicit Random(uint64_t seed) : state_(seed) {}
  // Independent streams for the cases of one run.
  Random(uint64_t seed, uint64_t stream) : state_(seed * 0x9E3779B97F4A7C15u + stream) { next(); }

  uint64_t next() {  // splitmix64
    state_ += 0x9E3779B97F4A7C15u;
    uint64_t z = state_;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
  }

  // 0 to count - 1.
  uint32_t below(uint32_t count) { return static_cast<uint32_t>((next() >> 32) % count); }

  // Both limits included.
  int32_t between(int32_t low, int32_t high) {
    const auto span = static_cast<uint64_t>(int64_t{high} - low) + 1;
    return static_cast<int32_t>(low + static_cast<int64_t>((next() >> 16) % span));
  }

  bool one_in(uint32_t count) { return below(count) == 0; }

  uint8_t byte() { return static_cast<uint8_t>(next() >> 56); }

  template <class T>
  T pick(std::initializer_list<T> values) {
    return values.begin()[below(static_cast<uint32_t>(values.size()))];
  }

  // Weighted towards the ends of a control's range and just outside it, where mistakes live.
  int32_t around(int32_t low, int32_t high) {
    switch (below(8)) {
      case 0:
        return low;
      case 1:
        return high;
      case 2:
        return low == INT32_MIN ? low : low - 1;
      case 3:
        return high == INT32_MAX ? high : high + 1;
      case 4:
        return wild();
      default:
        return between(low, high);
    }
  }

  // Any 32-bit value, often one at which some width wraps or changes sign.
  int32_t wild() {
    switch (below(6)) {
      case 0:
        return pick<int32_t>({0, 1, -1, 2, -2, 127, 128, 255, 256, 257, -128, -129, -255, -256});
      case 1:
        return pick<int32_t>({32766, 32767, 32768, 32769, -32767, -32768, -32769, 65534, 65535,
                              65536, -65535, -65536, -65537, 40000, 70000});
      case 2:
        return pick<int32_t>({INT32_MAX, INT32_MIN, INT32_MAX - 1, INT32_MIN + 1, 0x40000000});
      case 3:
        return between(-1024, 1024);
      case 4:
        return between(-70000, 70000);
      default:
        return static_cast<int32_t>(next());
    }
  }

 private:
  uint64_t state_;
};

}  // namespace ppl_test
