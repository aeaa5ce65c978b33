// Calls any function of ppl.h with arguments made up from its signature: the context first, frames
// and tables as pointers into roomy buffers, a supported frame size where frames are passed.
#pragma once

#include <stdint.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "ppl.h"
#include "support/fingerprint.h"
#include "support/random.h"

namespace ppl_test {

inline constexpr uint32_t any_width = 320, any_height = 240;

// A result that compares: the returned word and all that the call wrote.
struct AnyResult {
  uint32_t returned;
  uint64_t written;
  bool operator==(const AnyResult &) const = default;
};

class AnyArguments {
 public:
  AnyArguments() : contents_(count * size / 4), memory_(contents_.size() + 4) {
    Random random(1);
    for (uint32_t &word : contents_) word = static_cast<uint32_t>(random.next());
  }

  // A fresh context with the frame's size, on one tier or the best one that there is.
  void prepare(bool p3_only) {
    context_ = ppl_init();
    ppl_set_P3_only(context_, p3_only);
    ppl_new_frame_size(context_, any_width, any_height, any_width);
  }
  void finish() { ppl_free(context_); }

  // Run right before and right after the function itself.
  void (*before_call)() = [] {};
  void (*after_call)() = [] {};

  template <class Result, class... Parameters>
  AnyResult call(std::string_view name, Result (*function)(Parameters...)) {
    used_ = sizes_ = 0;
    constexpr bool takes_buffers =
        ((std::is_pointer_v<Parameters> && !is_context<Parameters>) || ...);
    if constexpr (takes_buffers) std::ranges::copy(contents_, memory_.begin());
    takes_sizes_ =
        (std::is_same_v<Parameters, uint8_t *> || ...) || name.find("new_frame_size") != name.npos;
    // In this order: arguments in braces are made from left to right.
    struct Words {
      std::array<uint32_t, sizeof...(Parameters) + 1> of;
    } words{{make<Parameters>()..., 0}};
    const auto invoke = [&]<size_t... i>(std::index_sequence<i...>) {
      before_call();
      const Result result = function(back<Parameters>(words.of[i])...);
      after_call();
      return result;
    };
    constexpr auto indices = std::index_sequence_for<Parameters...>();
    if constexpr (is_context<Result>) {  // one more than we need
      return {ppl_free(invoke(indices)), 0};
    } else {
      if (takes_sizes_) invoke(indices);  // a frame of a new size may be dropped
      const Result result = invoke(indices);
      return {word(result), takes_buffers ? fingerprint_of_memory() : 0};
    }
  }

 private:
  // The largest call is the enlarging RGB32 fallback: 16 bytes for each sample.
  static constexpr size_t size = 16 * any_width * any_height, count = 5;

  template <class T>
  static constexpr bool is_context =
      std::is_same_v<std::remove_const_t<std::remove_pointer_t<T>>, PplContext>;

  uint64_t fingerprint_of_memory() const {  // FNV-1a of words, to be quick
    uint64_t hash = fingerprint_start;
    for (const uint32_t word : memory_) hash = (hash ^ word) * 0x00000100000001B3u;
    return hash;
  }

  template <class T>
  static uint32_t word(T value) {
    if constexpr (std::is_pointer_v<T>)
      return reinterpret_cast<uint32_t>(value);
    else
      return static_cast<uint32_t>(value);
  }

  template <class T>
  static T back(uint32_t value) {
    if constexpr (std::is_pointer_v<T>)
      return reinterpret_cast<T>(value);
    else
      return static_cast<T>(value);
  }

  template <class T>
  uint32_t make() {
    if constexpr (std::is_pointer_v<T>) {
      if constexpr (is_context<T>) return word(context_);
      const uint32_t start = word(memory_.data());
      return (start + 15) / 16 * 16 + static_cast<uint32_t>(size * used_++ % (count * size));
    } else {
      if (takes_sizes_) return sizes_++ % 2 == 0 ? any_width : any_height;
      return 1;  // every control takes it
    }
  }

  std::vector<uint32_t> contents_, memory_;  // before the call, and at it
  PplContext *context_ = nullptr;
  size_t used_ = 0, sizes_ = 0;
  bool takes_sizes_ = false;
};

// Calls visit(name, function) for each function that ppl.h declares.
template <class Visit>
void for_each_function(Visit visit) {
#define PPL_FUNCTION(name) visit(#name, &name);
#include "every_function.inc"
#undef PPL_FUNCTION
}

}  // namespace ppl_test
