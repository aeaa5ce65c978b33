// 32-bit callers on some platforms align the stack to 4 bytes only, so a function that keeps
// vectors on its stack must align it itself. Here is such a caller.
#pragma once

#include <stdint.h>

#include <type_traits>

#if defined(__i386__)
#define PPL_TEST_HAS_STACK_OFFSETS 1
#else
#define PPL_TEST_HAS_STACK_OFFSETS 0
#endif

namespace ppl_test {

#if PPL_TEST_HAS_STACK_OFFSETS

// Calls a cdecl function with the stack pointer at `offset` modulo 16 (0, 4, 8 or 12) at the call.
uint32_t call_at_stack_offset(const void *function, const uint32_t *arguments, uint32_t count,
                              uint32_t offset);

template <class Result, class... Parameters, class... Arguments>
Result call_with_stack_offset(uint32_t offset, Result (*function)(Parameters...),
                              Arguments... arguments) {
  static_assert(sizeof...(Parameters) == sizeof...(Arguments));
  static_assert(((sizeof(Parameters) <= 4) && ...));
  const auto word = []<class T>(T value) {
    if constexpr (std::is_pointer_v<T>)
      return reinterpret_cast<uint32_t>(value);
    else
      return static_cast<uint32_t>(value);
  };
  const uint32_t words[] = {word(static_cast<Parameters>(arguments))..., 0};
  const uint32_t result = call_at_stack_offset(reinterpret_cast<const void *>(function), words,
                                               sizeof...(Arguments), offset);
  return static_cast<Result>(result);
}

#endif

}  // namespace ppl_test
