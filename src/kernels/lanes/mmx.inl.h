// A register of 8 bytes: MMX with the integer SSE extensions.
#pragma once

#include <xmmintrin.h>

#include "kernels/lanes/composed.inl.h"

namespace ppl::TARGET {
namespace {

struct Mmx : Composed<Mmx> {
  using type = __m64;
  static constexpr int size = 8;
  static constexpr int word_count = size / 2;

  // ---- each

  static type zero() { return _mm_setzero_si64(); }
  static type splat_words(int v) { return _mm_set1_pi16(static_cast<short>(v)); }
  static type splat_dwords(int v) { return _mm_set1_pi32(v); }
  static type splat_u8(int v) { return _mm_set1_pi8(static_cast<char>(v)); }
  // dword(i) is double word i.
  static type from_dwords(auto dword) {
    return _mm_unpacklo_pi32(_mm_cvtsi32_si64(static_cast<int>(dword(0))),
                             _mm_cvtsi32_si64(static_cast<int>(dword(1))));
  }
  PPL_BINARY(bit_and, _mm_and_si64)
  PPL_BINARY(bit_or, _mm_or_si64)
  PPL_BINARY(bit_xor, _mm_xor_si64)
  PPL_BINARY(and_not, _mm_andnot_si64)  // ~a & b
  PPL_BINARY(add_words, _mm_add_pi16)
  PPL_BINARY(subtract_words, _mm_sub_pi16)
  PPL_BINARY(multiply_low, _mm_mullo_pi16)
  PPL_SHIFT(shift_left_words, _mm_slli_pi16)
  PPL_SHIFT(shift_right_words, _mm_srli_pi16)
  PPL_SHIFT(shift_right_signed_words, _mm_srai_pi16)
  PPL_SHIFT(shift_right_signed_dwords, _mm_srai_pi32)
  PPL_BINARY(add_dwords, _mm_add_pi32)
  PPL_BINARY(add_u8, _mm_add_pi8)
  PPL_BINARY(subtract_u8, _mm_sub_pi8)
  PPL_BINARY(add_saturated_u8, _mm_adds_pu8)
  PPL_BINARY(subtract_saturated_u8, _mm_subs_pu8)
  PPL_BINARY(add_saturated_s8, _mm_adds_pi8)
  PPL_BINARY(subtract_saturated_s8, _mm_subs_pi8)
  PPL_BINARY(min_u8, _mm_min_pu8)
  PPL_BINARY(max_u8, _mm_max_pu8)
  PPL_BINARY(equal_u8, _mm_cmpeq_pi8)
  PPL_BINARY(average_u8, _mm_avg_pu8)
  PPL_BINARY(average_words, _mm_avg_pu16)
  PPL_BINARY(max_words, _mm_max_pi16)
  PPL_BINARY(min_words, _mm_min_pi16)
  PPL_BINARY(add_saturated_words, _mm_adds_pi16)
  PPL_BINARY(subtract_saturated_words, _mm_subs_pi16)
  PPL_BINARY(subtract_saturated_u16, _mm_subs_pu16)
  PPL_BINARY(greater_words, _mm_cmpgt_pi16)
  PPL_BINARY(equal_words, _mm_cmpeq_pi16)

  // ---- by block

  PPL_BINARY(pack_u8, _mm_packs_pu16)
  PPL_BINARY(pack_s8, _mm_packs_pi16)
  PPL_BINARY(pack_words, _mm_packs_pi32)
  PPL_BINARY(interleave_low_u8, _mm_unpacklo_pi8)
  PPL_BINARY(interleave_high_u8, _mm_unpackhi_pi8)
  // The low half of a below the low half of b; the same of the high halves.
  PPL_BINARY(join_low_halves, _mm_unpacklo_pi32)
  PPL_BINARY(join_high_halves, _mm_unpackhi_pi32)
  static type swap_halves(type a) { return _mm_shuffle_pi16(a, 0x4E); }
  static type swap_middle_quarters(type a) { return _mm_shuffle_pi16(a, 0xD8); }
  // The high half, with zeros above it.
  static type high_half(type a) { return _mm_srli_si64(a, 32); }
  // The sums of the bytes of either half, each in its half's low dword.
  static type sum_halves(type a) {
    const type low = _mm_sad_pu8(_mm_slli_si64(a, 32), zero());
    const type high = _mm_sad_pu8(_mm_srli_si64(a, 32), zero());
    return join_low_halves(low, high);
  }
  static uint32_t low_sum(type sums) { return static_cast<uint32_t>(_mm_cvtsi64_si32(sums)); }
  static uint32_t high_sum(type sums) { return low_sum(high_half(sums)); }

  // ---- in order

  typedef long long Unaligned __attribute__((vector_size(8), aligned(1), may_alias));

  static type load(const uint8_t *p) {
    return reinterpret_cast<type>(*reinterpret_cast<const Unaligned *>(p));
  }
  static void store(uint8_t *p, type v) {
    *reinterpret_cast<Unaligned *>(p) = reinterpret_cast<Unaligned>(v);
  }
  // A block, over and over.
  static type repeat_block(const void *p) { return load(static_cast<const uint8_t *>(p)); }
  // Half a register: the low halves of all blocks, or the high ones.
  static void store_low_halves(uint8_t *p, type v) { store_dword(p, _mm_cvtsi64_si32(v)); }
  static void store_high_halves(uint8_t *p, type v) { store_low_halves(p, high_half(v)); }
  // Two registers: bytes of a and b in turn.
  static void store_interleaved(uint8_t *p, type a, type b) {
    store(p, interleave_low_u8(a, b));
    store(p + size, interleave_high_u8(a, b));
  }
  // One register from two halves in memory, bytes of u and v in turn.
  static type load_interleaved(const uint8_t *u, const uint8_t *v) {
    return _mm_unpacklo_pi8(load_half(u), load_half(v));
  }
  // The bytes of the even or odd columns of two registers.
  static type even_bytes(type a, type b) { return pack_u8(columns<false>(a), columns<false>(b)); }
  static type odd_bytes(type a, type b) { return pack_u8(columns<true>(a), columns<true>(b)); }
  static type reverse_words(type a) { return _mm_shuffle_pi16(a, 0x1B); }
  static type reverse_u8(type a) { return reverse_words(swap_columns(a)); }
  // Pixels of B, G and R, and a zero in those of 4 bytes; from the last to the first if reversed.
  // Writes pixel_bytes registers and no more.
  template <int pixel_bytes, bool reversed>
  static void store_bgr(uint8_t *p, type b, type g, type r);

 private:
  static type load_half(const uint8_t *p) {
    return _mm_cvtsi32_si64(*reinterpret_cast<const UnalignedDword *>(p));
  }
  static type without_zeros(type pixels) {
    const type low = _mm_and_si64(pixels, _mm_set_pi32(0, 0x00FFFFFF));
    const type high = _mm_and_si64(pixels, _mm_set_pi32(0x00FFFFFF, 0));
    return _mm_or_si64(low, _mm_srli_si64(high, 8));
  }
  // A quarter of the pixels, with a zero in each. What a store but the last writes too much, the
  // next one corrects.
  template <int pixel_bytes, bool is_last>
  static void store_bgr_quarter(uint8_t *p, type pixels) {
    if constexpr (pixel_bytes == 4) {
      store(p, pixels);
    } else if constexpr (!is_last) {
      store(p, without_zeros(pixels));
    } else {
      const type v = without_zeros(pixels);
      store_low_halves(p, v);
      store_word(p + 4, _mm_extract_pi16(v, 2));
    }
  }
};

template <int pixel_bytes, bool reversed>
void Mmx::store_bgr(uint8_t *p, type b, type g, type r) {
  const type BG_low = interleave_low_u8(b, g);
  const type BG_high = interleave_high_u8(b, g);
  const type R0_low = interleave_low_u8(r, zero());
  const type R0_high = interleave_high_u8(r, zero());
  const type first = _mm_unpacklo_pi16(BG_low, R0_low);
  const type second = _mm_unpackhi_pi16(BG_low, R0_low);
  const type third = _mm_unpacklo_pi16(BG_high, R0_high);
  const type fourth = _mm_unpackhi_pi16(BG_high, R0_high);
  constexpr int step = pixel_bytes * size / 4;
  store_bgr_quarter<pixel_bytes, false>(p, reversed ? swap_halves(fourth) : first);
  store_bgr_quarter<pixel_bytes, false>(p + step, reversed ? swap_halves(third) : second);
  store_bgr_quarter<pixel_bytes, false>(p + 2 * step, reversed ? swap_halves(second) : third);
  store_bgr_quarter<pixel_bytes, true>(p + 3 * step, reversed ? swap_halves(first) : fourth);
}

}  // namespace
}  // namespace ppl::TARGET
