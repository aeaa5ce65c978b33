// Every combination of the values of some ranges, so that a test goes through its cases in one
// loop.
#pragma once

#include <iterator>
#include <tuple>
#include <type_traits>
#include <vector>

namespace ppl_test {

inline std::vector<std::tuple<>> combinations() { return {{}}; }

// As tuples. The last range changes fastest.
template <class First, class... Rest>
auto combinations(const First &first, const Rest &...rest) {
  using Value = std::decay_t<decltype(*std::begin(first))>;
  const auto tails = combinations(rest...);
  std::vector<decltype(std::tuple_cat(std::tuple<Value>(), tails.front()))> all;
  for (const Value &value : first) {
    for (const auto &tail : tails) all.push_back(std::tuple_cat(std::tuple<Value>(value), tail));
  }
  return all;
}

}  // namespace ppl_test
