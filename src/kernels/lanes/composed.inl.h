// What every register does in the same way, composed of its own operations; and how an operation
// of a register treats the blocks in it.
//
// A target's unit (kernels/targets/) defines TARGET, its namespace, before it includes any
// `.inl.h`. Everything shared that way sits in an unnamed namespace: nothing may be merged at link
// time between targets, or code for a newer processor would be picked for an older one.
//
// A register of more than 16 bytes is a row of 16-byte blocks, and each operation is one of these:
//
//   each      add, multiply, shift, min, compare, average: every lane for itself
//   by block  pack_*, interleave_*, join_*, swap_*, sum_*: within each block
//   in order  what touches memory, or reverses: across all of them
//
// So a kernel with no in-order operation between its load and its store is right at every width.
#pragma once

#include <stdint.h>

namespace ppl::TARGET {
namespace {

// Words and double words in memory that holds bytes.
typedef int16_t Word __attribute__((may_alias));
typedef int UnalignedDword __attribute__((aligned(1), may_alias));
typedef uint16_t UnalignedWord __attribute__((aligned(1), may_alias));

inline void store_dword(uint8_t *p, int v) { *reinterpret_cast<UnalignedDword *>(p) = v; }
inline void store_word(uint8_t *p, int v) {
  *reinterpret_cast<UnalignedWord *>(p) = static_cast<uint16_t>(v);
}

#define PPL_UNARY(name, intrinsic) \
  static type name(type a) { return intrinsic(a); }
#define PPL_BINARY(name, intrinsic) \
  static type name(type a, type b) { return intrinsic(a, b); }
#define PPL_SHIFT(name, intrinsic) \
  template <int n>                 \
  static type name(type a) {       \
    return intrinsic(a, n);        \
  }

template <class R>
struct Composed {
  // ---- each

  // a where the mask is set, b elsewhere.
  static auto blend(auto mask, auto a, auto b) {
    return R::bit_or(R::bit_and(mask, a), R::and_not(mask, b));
  }
  static auto absolute_words(auto v) { return R::max_words(v, R::subtract_words(R::zero(), v)); }
  static auto clamp_words_to_byte(auto v) {
    return R::max_words(R::min_words(v, R::splat_words(255)), R::zero());
  }
  static auto even_columns() { return R::splat_words(0x00FF); }

  // Words of the columns of one parity: the even ones, or the odd ones.
  template <bool odd>
  static auto columns(auto v) {
    if constexpr (odd) {
      return R::template shift_right_words<8>(v);
    } else {
      return R::bit_and(v, even_columns());
    }
  }
  // Both columns of each pair, from words of either that fit bytes.
  static auto join_columns(auto even, auto odd) {
    return R::bit_or(even, R::template shift_left_words<8>(odd));
  }
  // The two bytes of each word change places.
  static auto swap_columns(auto v) {
    return R::bit_or(R::template shift_left_words<8>(v), R::template shift_right_words<8>(v));
  }

  // ---- by block

  // Both columns of each pair as bytes, from words of either: clamped to 0..255, or to -128..127.
  static auto pack_columns_u8(auto even, auto odd) {
    return interleave_halves(R::pack_u8(even, odd));
  }
  static auto pack_columns_s8(auto even, auto odd) {
    return interleave_halves(R::pack_s8(even, odd));
  }
  static auto interleave_halves(auto v) { return R::interleave_low_u8(v, R::swap_halves(v)); }

  // ---- in order

  static auto load_words(const Word *p) { return R::load(reinterpret_cast<const uint8_t *>(p)); }
  static void store_words(Word *p, auto v) { R::store(reinterpret_cast<uint8_t *>(p), v); }
};

}  // namespace
}  // namespace ppl::TARGET
