// One register of a tier, with the same operation names at each width. A tier's source defines TIER
// (its namespace) and TIER_BYTES (its register) before it includes any `.inl.h`. Everything shared
// that way sits in an unnamed namespace: nothing may be merged at link time between tiers, or code
// for a newer processor would be picked for an older one.
#pragma once

#include <stdint.h>
#if TIER_BYTES == 8
#include <xmmintrin.h>
#else
#include <emmintrin.h>
#endif

namespace ppl::TIER {
namespace {

typedef int UnalignedDword __attribute__((aligned(1), may_alias));
typedef uint16_t UnalignedWord __attribute__((aligned(1), may_alias));

inline void store_dword(uint8_t *p, int v) { *reinterpret_cast<UnalignedDword *>(p) = v; }
inline void store_word(uint8_t *p, int v) {
  *reinterpret_cast<UnalignedWord *>(p) = static_cast<uint16_t>(v);
}

#if TIER_BYTES == 8

struct Vec {
  using type = __m64;
  static constexpr int bytes = 8;
  static constexpr int words_count = bytes / 2;
  typedef long long unaligned __attribute__((vector_size(8), aligned(1), may_alias));

  static type load(const uint8_t *p) {
    return reinterpret_cast<type>(*reinterpret_cast<const unaligned *>(p));
  }
  static type load_aligned(const void *p) { return *static_cast<const type *>(p); }
  static void store(uint8_t *p, type v) {
    *reinterpret_cast<unaligned *>(p) = reinterpret_cast<unaligned>(v);
  }
  static void store_low_half(uint8_t *p, type v) { store_dword(p, _mm_cvtsi64_si32(v)); }
  static type zero() { return _mm_setzero_si64(); }
  static type words(int v) { return _mm_set1_pi16(static_cast<short>(v)); }
  static type bytes_all(int v) { return _mm_set1_pi8(static_cast<char>(v)); }
  // From general registers.
  static type from_dwords(uint32_t d0, uint32_t d1) {
    return _mm_unpacklo_pi32(_mm_cvtsi32_si64(static_cast<int>(d0)),
                             _mm_cvtsi32_si64(static_cast<int>(d1)));
  }

  static type bit_and(type a, type b) { return _mm_and_si64(a, b); }
  static type bit_or(type a, type b) { return _mm_or_si64(a, b); }
  static type bit_xor(type a, type b) { return _mm_xor_si64(a, b); }
  static type and_not(type a, type b) { return _mm_andnot_si64(a, b); }  // ~a & b
  static type add_words(type a, type b) { return _mm_add_pi16(a, b); }
  static type sub_words(type a, type b) { return _mm_sub_pi16(a, b); }
  static type multiply_low(type a, type b) { return _mm_mullo_pi16(a, b); }
  template <int n>
  static type shift_left_words(type a) {
    return _mm_slli_pi16(a, n);
  }
  template <int n>
  static type shift_right_words(type a) {
    return _mm_srli_pi16(a, n);
  }
  template <int n>
  static type shift_right_signed_words(type a) {
    return _mm_srai_pi16(a, n);
  }
  template <int n>
  static type shift_left_dwords(type a) {
    return _mm_slli_pi32(a, n);
  }
  template <int n>
  static type shift_right_signed_dwords(type a) {
    return _mm_srai_pi32(a, n);
  }
  static type add_dwords(type a, type b) { return _mm_add_pi32(a, b); }
  static type add_u8(type a, type b) { return _mm_add_pi8(a, b); }
  static type add_saturated_u8(type a, type b) { return _mm_adds_pu8(a, b); }
  static type subtract_saturated_u8(type a, type b) { return _mm_subs_pu8(a, b); }
  static type add_saturated_s8(type a, type b) { return _mm_adds_pi8(a, b); }
  static type subtract_saturated_s8(type a, type b) { return _mm_subs_pi8(a, b); }
  static type subtract_u8(type a, type b) { return _mm_sub_pi8(a, b); }
  static type min_u8(type a, type b) { return _mm_min_pu8(a, b); }
  static type max_u8(type a, type b) { return _mm_max_pu8(a, b); }
  static type equal_u8(type a, type b) { return _mm_cmpeq_pi8(a, b); }
  static type average_u8(type a, type b) { return _mm_avg_pu8(a, b); }
  static type average_words(type a, type b) { return _mm_avg_pu16(a, b); }
  static type max_words(type a, type b) { return _mm_max_pi16(a, b); }
  static type min_words(type a, type b) { return _mm_min_pi16(a, b); }
  static type add_saturated_words(type a, type b) { return _mm_adds_pi16(a, b); }
  static type subtract_saturated_words(type a, type b) { return _mm_subs_pi16(a, b); }
  static type add_saturated_u16(type a, type b) { return _mm_adds_pu16(a, b); }
  static type subtract_saturated_u16(type a, type b) { return _mm_subs_pu16(a, b); }
  static type greater_words(type a, type b) { return _mm_cmpgt_pi16(a, b); }
  static type equal_words(type a, type b) { return _mm_cmpeq_pi16(a, b); }
  static type pack_u8(type low, type high) { return _mm_packs_pu16(low, high); }
  static type pack_s8(type low, type high) { return _mm_packs_pi16(low, high); }
  static type pack_words(type low, type high) { return _mm_packs_pi32(low, high); }
  static type interleave_low_u8(type a, type b) { return _mm_unpacklo_pi8(a, b); }
  static type interleave_high_u8(type a, type b) { return _mm_unpackhi_pi8(a, b); }
  static type interleave_low_words(type a, type b) { return _mm_unpacklo_pi16(a, b); }
  static type interleave_high_words(type a, type b) { return _mm_unpackhi_pi16(a, b); }
  static type interleave_low_dwords(type a, type b) { return _mm_unpacklo_pi32(a, b); }
  static type interleave_high_dwords(type a, type b) { return _mm_unpackhi_pi32(a, b); }
  // The low half of a below the low half of b; the same of the high halves.
  static type join_low_halves(type a, type b) { return interleave_low_dwords(a, b); }
  static type join_high_halves(type a, type b) { return interleave_high_dwords(a, b); }
  static type swap_halves(type a) { return _mm_shuffle_pi16(a, 0x4E); }
  static type swap_middle_quarters(type a) { return _mm_shuffle_pi16(a, 0xD8); }
  static type reverse_words(type a) { return _mm_shuffle_pi16(a, 0x1B); }
  static type reverse_dwords(type a) { return swap_halves(a); }
  // Pixels of B, G, R and a zero, stored without the zeros: 3 / 4 of a register. The first form may
  // write two bytes more.
  static void store_bgr_loosely(uint8_t *p, type pixels) { store(p, without_zeros(pixels)); }
  static void store_bgr(uint8_t *p, type pixels) {
    const type v = without_zeros(pixels);
    store_low_half(p, v);
    store_word(p + 4, _mm_extract_pi16(v, 2));
  }
  static type without_zeros(type pixels) {
    const type low = _mm_and_si64(pixels, _mm_set_pi32(0, 0x00FFFFFF));
    const type high = _mm_and_si64(pixels, _mm_set_pi32(0x00FFFFFF, 0));
    return _mm_or_si64(low, _mm_srli_si64(high, 8));
  }
  // The sums of the bytes of either half, each in its half's low dword.
  static type sum_halves(type a) {
    const type low = _mm_sad_pu8(_mm_slli_si64(a, 32), zero());
    const type high = _mm_sad_pu8(_mm_srli_si64(a, 32), zero());
    return interleave_low_dwords(low, high);
  }
  static uint32_t low_sum(type sums) { return static_cast<uint32_t>(_mm_cvtsi64_si32(sums)); }
  static uint32_t high_sum(type sums) { return low_sum(high_half(sums)); }
  // The high half, with zeros above it.
  static type high_half(type a) { return _mm_srli_si64(a, 32); }
};

#else

struct Vec {
  using type = __m128i;
  static constexpr int bytes = 16;
  static constexpr int words_count = bytes / 2;

  static type load(const uint8_t *p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
  }
  static type load_aligned(const void *p) {
    return _mm_load_si128(static_cast<const __m128i *>(p));
  }
  static void store(uint8_t *p, type v) { _mm_storeu_si128(reinterpret_cast<__m128i *>(p), v); }
  static void store_low_half(uint8_t *p, type v) {
    _mm_storel_epi64(reinterpret_cast<__m128i *>(p), v);
  }
  static type zero() { return _mm_setzero_si128(); }
  static type words(int v) { return _mm_set1_epi16(static_cast<short>(v)); }
  static type bytes_all(int v) { return _mm_set1_epi8(static_cast<char>(v)); }
  static type from_dwords(uint32_t d0, uint32_t d1, uint32_t d2, uint32_t d3) {
    return _mm_setr_epi32(static_cast<int>(d0), static_cast<int>(d1), static_cast<int>(d2),
                          static_cast<int>(d3));
  }

  static type bit_and(type a, type b) { return _mm_and_si128(a, b); }
  static type bit_or(type a, type b) { return _mm_or_si128(a, b); }
  static type bit_xor(type a, type b) { return _mm_xor_si128(a, b); }
  static type and_not(type a, type b) { return _mm_andnot_si128(a, b); }  // ~a & b
  static type add_words(type a, type b) { return _mm_add_epi16(a, b); }
  static type sub_words(type a, type b) { return _mm_sub_epi16(a, b); }
  static type multiply_low(type a, type b) { return _mm_mullo_epi16(a, b); }
  template <int n>
  static type shift_left_words(type a) {
    return _mm_slli_epi16(a, n);
  }
  template <int n>
  static type shift_right_words(type a) {
    return _mm_srli_epi16(a, n);
  }
  template <int n>
  static type shift_right_signed_words(type a) {
    return _mm_srai_epi16(a, n);
  }
  template <int n>
  static type shift_left_dwords(type a) {
    return _mm_slli_epi32(a, n);
  }
  template <int n>
  static type shift_right_signed_dwords(type a) {
    return _mm_srai_epi32(a, n);
  }
  static type add_dwords(type a, type b) { return _mm_add_epi32(a, b); }
  static type add_u8(type a, type b) { return _mm_add_epi8(a, b); }
  static type add_saturated_u8(type a, type b) { return _mm_adds_epu8(a, b); }
  static type subtract_saturated_u8(type a, type b) { return _mm_subs_epu8(a, b); }
  static type add_saturated_s8(type a, type b) { return _mm_adds_epi8(a, b); }
  static type subtract_saturated_s8(type a, type b) { return _mm_subs_epi8(a, b); }
  static type subtract_u8(type a, type b) { return _mm_sub_epi8(a, b); }
  static type min_u8(type a, type b) { return _mm_min_epu8(a, b); }
  static type max_u8(type a, type b) { return _mm_max_epu8(a, b); }
  static type equal_u8(type a, type b) { return _mm_cmpeq_epi8(a, b); }
  static type average_u8(type a, type b) { return _mm_avg_epu8(a, b); }
  static type average_words(type a, type b) { return _mm_avg_epu16(a, b); }
  static type max_words(type a, type b) { return _mm_max_epi16(a, b); }
  static type min_words(type a, type b) { return _mm_min_epi16(a, b); }
  static type add_saturated_words(type a, type b) { return _mm_adds_epi16(a, b); }
  static type subtract_saturated_words(type a, type b) { return _mm_subs_epi16(a, b); }
  static type add_saturated_u16(type a, type b) { return _mm_adds_epu16(a, b); }
  static type subtract_saturated_u16(type a, type b) { return _mm_subs_epu16(a, b); }
  static type greater_words(type a, type b) { return _mm_cmpgt_epi16(a, b); }
  static type equal_words(type a, type b) { return _mm_cmpeq_epi16(a, b); }
  static type pack_u8(type low, type high) { return _mm_packus_epi16(low, high); }
  static type pack_s8(type low, type high) { return _mm_packs_epi16(low, high); }
  static type pack_words(type low, type high) { return _mm_packs_epi32(low, high); }
  static type interleave_low_u8(type a, type b) { return _mm_unpacklo_epi8(a, b); }
  static type interleave_high_u8(type a, type b) { return _mm_unpackhi_epi8(a, b); }
  static type interleave_low_words(type a, type b) { return _mm_unpacklo_epi16(a, b); }
  static type interleave_high_words(type a, type b) { return _mm_unpackhi_epi16(a, b); }
  static type interleave_low_dwords(type a, type b) { return _mm_unpacklo_epi32(a, b); }
  static type interleave_high_dwords(type a, type b) { return _mm_unpackhi_epi32(a, b); }
  static type join_low_halves(type a, type b) { return _mm_unpacklo_epi64(a, b); }
  static type join_high_halves(type a, type b) { return _mm_unpackhi_epi64(a, b); }
  static type swap_halves(type a) { return _mm_shuffle_epi32(a, 0x4E); }
  static type swap_middle_quarters(type a) { return _mm_shuffle_epi32(a, 0xD8); }
  static type reverse_words(type a) {
    return swap_halves(_mm_shufflehi_epi16(_mm_shufflelo_epi16(a, 0x1B), 0x1B));
  }
  static type reverse_dwords(type a) { return _mm_shuffle_epi32(a, 0x1B); }
  static void store_bgr_loosely(uint8_t *p, type pixels) {
    const type v = without_zeros(pixels);
    store_low_half(p, v);
    _mm_storeh_pi(reinterpret_cast<__m64 *>(p + 6), _mm_castsi128_ps(v));
  }
  static void store_bgr(uint8_t *p, type pixels) {
    const type v = without_zeros(pixels);
    store_low_half(p, v);
    store_dword(p + 6, _mm_cvtsi128_si32(_mm_srli_si128(v, 8)));
    store_word(p + 10, _mm_extract_epi16(v, 6));
  }
  static type without_zeros(type pixels) {
    const type low = _mm_and_si128(pixels, _mm_set_epi32(0, 0x00FFFFFF, 0, 0x00FFFFFF));
    const type high = _mm_and_si128(pixels, _mm_set_epi32(0x00FFFFFF, 0, 0x00FFFFFF, 0));
    return _mm_or_si128(low, _mm_srli_epi64(high, 8));
  }
  static type sum_halves(type a) { return _mm_sad_epu8(a, zero()); }
  static uint32_t low_sum(type sums) { return static_cast<uint32_t>(_mm_cvtsi128_si32(sums)); }
  static uint32_t high_sum(type sums) { return low_sum(high_half(sums)); }
  static type high_half(type a) { return _mm_srli_si128(a, 8); }
};

#endif

// a where the mask is set, b elsewhere.
inline Vec::type blend(Vec::type mask, Vec::type a, Vec::type b) {
  return Vec::bit_or(Vec::bit_and(mask, a), Vec::and_not(mask, b));
}

inline Vec::type reverse_u8(Vec::type a) {
  const auto swapped = Vec::bit_or(Vec::shift_left_words<8>(a), Vec::shift_right_words<8>(a));
  return Vec::reverse_words(swapped);
}

}  // namespace
}  // namespace ppl::TIER
