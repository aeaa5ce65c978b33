// A register of 16 bytes: SSE2.
#pragma once

#include <emmintrin.h>

#include "kernels/lanes/composed.inl.h"

namespace ppl::TARGET {
namespace {

struct Sse2 : Composed<Sse2> {
  using type = __m128i;
  static constexpr int size = 16;
  static constexpr int word_count = size / 2;

  // ---- each

  static type zero() { return _mm_setzero_si128(); }
  static type splat_words(int v) { return _mm_set1_epi16(static_cast<short>(v)); }
  static type splat_dwords(int v) { return _mm_set1_epi32(v); }
  static type splat_u8(int v) { return _mm_set1_epi8(static_cast<char>(v)); }
  static type from_dwords(auto dword) {
    return _mm_setr_epi32(static_cast<int>(dword(0)), static_cast<int>(dword(1)),
                          static_cast<int>(dword(2)), static_cast<int>(dword(3)));
  }
  PPL_BINARY(bit_and, _mm_and_si128)
  PPL_BINARY(bit_or, _mm_or_si128)
  PPL_BINARY(bit_xor, _mm_xor_si128)
  PPL_BINARY(and_not, _mm_andnot_si128)  // ~a & b
  PPL_BINARY(add_words, _mm_add_epi16)
  PPL_BINARY(subtract_words, _mm_sub_epi16)
  PPL_BINARY(multiply_low, _mm_mullo_epi16)
  PPL_SHIFT(shift_left_words, _mm_slli_epi16)
  PPL_SHIFT(shift_right_words, _mm_srli_epi16)
  PPL_SHIFT(shift_right_signed_words, _mm_srai_epi16)
  PPL_SHIFT(shift_right_signed_dwords, _mm_srai_epi32)
  PPL_BINARY(add_dwords, _mm_add_epi32)
  PPL_BINARY(add_u8, _mm_add_epi8)
  PPL_BINARY(subtract_u8, _mm_sub_epi8)
  PPL_BINARY(add_saturated_u8, _mm_adds_epu8)
  PPL_BINARY(subtract_saturated_u8, _mm_subs_epu8)
  PPL_BINARY(add_saturated_s8, _mm_adds_epi8)
  PPL_BINARY(subtract_saturated_s8, _mm_subs_epi8)
  PPL_BINARY(min_u8, _mm_min_epu8)
  PPL_BINARY(max_u8, _mm_max_epu8)
  PPL_BINARY(equal_u8, _mm_cmpeq_epi8)
  PPL_BINARY(average_u8, _mm_avg_epu8)
  PPL_BINARY(average_words, _mm_avg_epu16)
  PPL_BINARY(max_words, _mm_max_epi16)
  PPL_BINARY(min_words, _mm_min_epi16)
  PPL_BINARY(add_saturated_words, _mm_adds_epi16)
  PPL_BINARY(subtract_saturated_words, _mm_subs_epi16)
  PPL_BINARY(subtract_saturated_u16, _mm_subs_epu16)
  PPL_BINARY(greater_words, _mm_cmpgt_epi16)
  PPL_BINARY(equal_words, _mm_cmpeq_epi16)

  // ---- by block

  PPL_BINARY(pack_u8, _mm_packus_epi16)
  PPL_BINARY(pack_s8, _mm_packs_epi16)
  PPL_BINARY(pack_words, _mm_packs_epi32)
  PPL_BINARY(interleave_low_u8, _mm_unpacklo_epi8)
  PPL_BINARY(interleave_high_u8, _mm_unpackhi_epi8)
  PPL_BINARY(join_low_halves, _mm_unpacklo_epi64)
  PPL_BINARY(join_high_halves, _mm_unpackhi_epi64)
  static type swap_halves(type a) { return _mm_shuffle_epi32(a, 0x4E); }
  static type swap_middle_quarters(type a) { return _mm_shuffle_epi32(a, 0xD8); }
  static type high_half(type a) { return _mm_srli_si128(a, 8); }
  static type sum_halves(type a) { return _mm_sad_epu8(a, zero()); }
  static uint32_t low_sum(type sums) { return static_cast<uint32_t>(_mm_cvtsi128_si32(sums)); }
  static uint32_t high_sum(type sums) { return low_sum(high_half(sums)); }

  // ---- in order

  static type load(const uint8_t *p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
  }
  static void store(uint8_t *p, type v) { _mm_storeu_si128(reinterpret_cast<__m128i *>(p), v); }
  static type repeat_block(const void *p) { return load(static_cast<const uint8_t *>(p)); }
  static void store_low_halves(uint8_t *p, type v) {
    _mm_storel_epi64(reinterpret_cast<__m128i *>(p), v);
  }
  static void store_high_halves(uint8_t *p, type v) {
    _mm_storeh_pi(reinterpret_cast<__m64 *>(p), _mm_castsi128_ps(v));
  }
  static void store_interleaved(uint8_t *p, type a, type b) {
    store(p, interleave_low_u8(a, b));
    store(p + size, interleave_high_u8(a, b));
  }
  static type load_interleaved(const uint8_t *u, const uint8_t *v) {
    return _mm_unpacklo_epi8(load_half(u), load_half(v));
  }
  static type even_bytes(type a, type b) { return pack_u8(columns<false>(a), columns<false>(b)); }
  static type odd_bytes(type a, type b) { return pack_u8(columns<true>(a), columns<true>(b)); }
  static type reverse_words(type a) {
    return swap_halves(_mm_shufflehi_epi16(_mm_shufflelo_epi16(a, 0x1B), 0x1B));
  }
  static type reverse_u8(type a) { return reverse_words(swap_columns(a)); }
  template <int pixel_bytes, bool reversed>
  static void store_bgr(uint8_t *p, type b, type g, type r);

 private:
  static type load_half(const uint8_t *p) {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i *>(p));
  }
  static type without_zeros(type pixels) {
    const type low = _mm_and_si128(pixels, _mm_set_epi32(0, 0x00FFFFFF, 0, 0x00FFFFFF));
    const type high = _mm_and_si128(pixels, _mm_set_epi32(0x00FFFFFF, 0, 0x00FFFFFF, 0));
    return _mm_or_si128(low, _mm_srli_epi64(high, 8));
  }
  // A quarter of the pixels, with a zero in each. What a store but the last writes too much, the
  // next one corrects.
  template <int pixel_bytes, bool is_last>
  static void store_bgr_quarter(uint8_t *p, type pixels) {
    if constexpr (pixel_bytes == 4) {
      store(p, pixels);
    } else {
      const type v = without_zeros(pixels);
      store_low_halves(p, v);
      if constexpr (is_last) {
        store_dword(p + 6, _mm_cvtsi128_si32(high_half(v)));
        store_word(p + 10, _mm_extract_epi16(v, 6));
      } else {
        store_high_halves(p + 6, v);
      }
    }
  }
  static type reverse_dwords(type a) { return _mm_shuffle_epi32(a, 0x1B); }
};

template <int pixel_bytes, bool reversed>
void Sse2::store_bgr(uint8_t *p, type b, type g, type r) {
  const type BG_low = interleave_low_u8(b, g);
  const type BG_high = interleave_high_u8(b, g);
  const type R0_low = interleave_low_u8(r, zero());
  const type R0_high = interleave_high_u8(r, zero());
  const type first = _mm_unpacklo_epi16(BG_low, R0_low);
  const type second = _mm_unpackhi_epi16(BG_low, R0_low);
  const type third = _mm_unpacklo_epi16(BG_high, R0_high);
  const type fourth = _mm_unpackhi_epi16(BG_high, R0_high);
  constexpr int step = pixel_bytes * size / 4;
  store_bgr_quarter<pixel_bytes, false>(p, reversed ? reverse_dwords(fourth) : first);
  store_bgr_quarter<pixel_bytes, false>(p + step, reversed ? reverse_dwords(third) : second);
  store_bgr_quarter<pixel_bytes, false>(p + 2 * step, reversed ? reverse_dwords(second) : third);
  store_bgr_quarter<pixel_bytes, true>(p + 3 * step, reversed ? reverse_dwords(first) : fourth);
}

}  // namespace
}  // namespace ppl::TARGET
