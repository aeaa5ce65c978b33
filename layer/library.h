// What of the library belongs to the whole process: its eight contexts, its families of gamma
// curves, the processor.
#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <utility>

#include "ppl.hpp"

namespace ppl::detail {

// Held around everything that hands out or frees contexts, and around everything that reads or
// writes the gamma families.
std::mutex &library_mutex();

// One of the eight contexts, at its defaults.
class Context {
 public:
  Context();
  ~Context();
  Context(const Context &) = delete;
  Context &operator=(const Context &) = delete;

  PplContext *get() const { return context_; }

 private:
  PplContext *context_;
};

// The best tier that the library takes on this processor. The context loses its frame size.
Tier best_tier(PplContext *context);

// 65 curves of 256 bytes, from index -32 on, as they were before anybody changed them through this
// layer.
inline constexpr int lowest_gamma = -32, highest_gamma = 32;
struct GammaFamilies {
  static constexpr size_t bytes = size_t{65} * 256;
  std::array<uint8_t, bytes> full_range, studio;

  static size_t place(int64_t index) { return static_cast<size_t>(index - lowest_gamma) * 256; }
};
const GammaFamilies &built_in_gamma();

}  // namespace ppl::detail
