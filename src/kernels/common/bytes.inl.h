// Runs of bytes.
#pragma once

#include "kernels/common/tier.inl.h"

namespace ppl::TARGET {
namespace {

// Runs over `count` units, a register of them or more, register by register, and exactly: calls
// `register_at` with the first unit of each. The last one may overlap the one before, so nothing
// may be written that is read again. A register holds `units` of them.
template <int units = Vec::size, class RegisterAt>
[[gnu::flatten]] inline void cover_with_registers(int count, RegisterAt register_at) {
  int i = 0;
  for (; i + units <= count; i += units) register_at(i);
  if (i < count) register_at(count - units);
}

// The same for any count. `registers` has the register's type as its parameter; what does not fill
// one goes to `single`, unit by unit.
template <class Registers, class Single>
inline void for_each_register(int count, Registers registers, Single single) {
  if (count >= Vec::size) {
    cover_with_registers(count, [&](int i) { registers.template operator()<Vec>(i); });
    return;
  }
  int i = 0;
  if constexpr (Vec::size > block) {
    for (; i + block <= count; i += block) registers.template operator()<Block>(i);
  }
  for (; i < count; ++i) single(i);
}

// For a count of whole blocks, without overlaps.
template <class Registers>
inline void for_each_block(int count, Registers registers) {
  int i = 0;
  for (; i + Vec::size <= count; i += Vec::size) registers.template operator()<Vec>(i);
  if constexpr (Vec::size > block) {
    for (; i < count; i += block) registers.template operator()<Block>(i);
  }
}

inline void fill(uint8_t *to, int value, int count) {
  for_each_register(
      count, [=]<class R>(int i) { R::store(to + i, R::splat_u8(value)); },
      [=](int i) { to[i] = static_cast<uint8_t>(value); });
}

inline void copy_bytes(uint8_t *to, const uint8_t *from, int count) {
  for_each_register(
      count, [=]<class R>(int i) { R::store(to + i, R::load(from + i)); },
      [=](int i) { to[i] = from[i]; });
}

}  // namespace
}  // namespace ppl::TARGET
