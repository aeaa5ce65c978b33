// Sentences for errors, whatever locale the program has set.
#pragma once

#include <concepts>
#include <string>
#include <string_view>

#include "ppl.hpp"

namespace ppl::detail {

inline void add_words(std::string &sentence, std::string_view words) { sentence += words; }
inline void add_words(std::string &sentence, std::integral auto number) {
  sentence += std::to_string(number);
}

template <class... Parts>
std::string words(const Parts &...parts) {
  std::string sentence;
  (add_words(sentence, parts), ...);
  return sentence;
}

template <class... Parts>
[[noreturn]] void refuse(const Parts &...parts) {
  throw Error(words(parts...));
}

}  // namespace ppl::detail
