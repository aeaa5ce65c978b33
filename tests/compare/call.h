// Calls one function on both sides with arguments made from a step, and compares what comes back.
#pragma once

#include <stdint.h>
#include <string.h>

#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

#include "compare/operations.h"
#include "support/x87.h"

namespace ppl_compare {

// Room for one argument on one side.
struct Slot {
  // Large enough for a family of curves; tables are filled from the step's seed, results with a
  // pattern that must come out equal.
  std::vector<uint8_t> bytes;

  template <class Parameter>
  Parameter value(int64_t argument, uint64_t seed) {
    if constexpr (std::is_pointer_v<Parameter>) {
      using Pointee = std::remove_pointer_t<Parameter>;
      if (argument == 0) return nullptr;
      const size_t size = 65 * 256;
      bytes.assign(size + sizeof(uint64_t), 0x5A);
      if constexpr (std::is_const_v<Pointee>)
        fill<std::remove_const_t<Pointee>>(static_cast<int>(argument), seed);
      return reinterpret_cast<Parameter>(bytes.data());
    } else {
      return static_cast<Parameter>(argument);
    }
  }

 private:
  // Kind 1: random; 2: near the identity; 3: matrices of ordinary size; 4: of any size; 5: so large
  // that coefficients leave 16 bits on the way.
  template <class Element>
  void fill(int kind, uint64_t seed) {
    ppl_test::Random random(seed);
    if constexpr (sizeof(Element) == 1) {
      for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = kind == 2 ? static_cast<uint8_t>(i + random.below(3) - 1) : random.byte();
    } else {
      for (size_t i = 0; i < 18; ++i) {
        const int32_t value = kind == 3   ? random.between(-600, 600)
                              : kind == 4 ? random.wild()
                              : kind == 5 ? random.between(-3000, 3000)
                                          : (i % 4 == (i >= 9) ? 256 : 0) + random.between(-60, 60);
        memcpy(&bytes[i * sizeof(Element)], &value, sizeof(value));
      }
    }
  }
};

template <auto LibraryFunction, auto ModelFunction>
struct Call;

template <class Context, class... Parameters, class ModelContext, class Result,
          class... ModelParameters, Result (*LibraryFunction)(Context *, Parameters...),
          Result (*ModelFunction)(ModelContext *, ModelParameters...)>
struct Call<LibraryFunction, ModelFunction> {
  static_assert(std::is_same_v<std::tuple<Parameters...>, std::tuple<ModelParameters...>>,
                "the model's signature differs");

  static std::string run(Session &session, const Step &step) {
    Pair *pair = session.stream(step);
    if (pair == nullptr) return {};
    return call(*pair, step, std::index_sequence_for<Parameters...>());
  }

 private:
  template <size_t... I>
  static std::string call(Pair &pair, const Step &step, std::index_sequence<I...>) {
    Slot library[sizeof...(Parameters) + 1], model[sizeof...(Parameters) + 1];
    const Result actual = LibraryFunction(
        pair.library, library[I].template value<Parameters>(step.arguments[I], step.seed + I)...);
    if (!ppl_test::x87_is_clean()) return "left MMX state behind";
    const Result expected = ModelFunction(
        pair.model, model[I].template value<Parameters>(step.arguments[I], step.seed + I)...);
    if (expected != actual)
      return "result: expected " + std::to_string(expected) + ", got " + std::to_string(actual);
    for (size_t i = 0; i < sizeof...(Parameters); ++i)
      if (library[i].bytes != model[i].bytes)
        return "what argument " + std::to_string(i + 1) + " points to differs";
    return {};
  }
};

}  // namespace ppl_compare
