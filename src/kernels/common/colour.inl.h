// The studio range of luma and chroma.
#pragma once

namespace ppl::TARGET {
namespace {

constexpr int black_luma = 16;
constexpr int neutral_chroma = 128;

// Luma: 0..255, then 16 more, held at 235.
template <class R = Vec>
inline auto to_studio_luma(typename R::type y) {
  return R::subtract_saturated_u8(R::add_saturated_u8(y, R::splat_u8(36)), R::splat_u8(20));
}

// Chroma: signed bytes to -112..112, then 128 more.
template <class R = Vec>
inline auto to_studio_chroma(typename R::type c) {
  const auto below = R::add_saturated_s8(c, R::splat_u8(15));
  const auto held = R::subtract_saturated_s8(below, R::splat_u8(31));
  return R::add_u8(held, R::splat_u8(144));
}

}  // namespace
}  // namespace ppl::TARGET
