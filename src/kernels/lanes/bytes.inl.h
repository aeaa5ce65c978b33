// Runs of bytes, written exactly.
#pragma once

#include "kernels/lanes/vec.inl.h"

namespace ppl::TIER {
namespace {

constexpr int black_luma = 16;
constexpr int neutral_chroma = 128;

void fill(uint8_t *to, int value, int count) {
  const auto values = Vec::bytes_all(value);
  int i = 0;
  for (; i + Vec::bytes <= count; i += Vec::bytes) Vec::store(to + i, values);
  for (; i < count; ++i) to[i] = static_cast<uint8_t>(value);
}

void copy_bytes(uint8_t *to, const uint8_t *from, int count) {
  int i = 0;
  for (; i + Vec::bytes <= count; i += Vec::bytes) Vec::store(to + i, Vec::load(from + i));
  for (; i < count; ++i) to[i] = from[i];
}

}  // namespace
}  // namespace ppl::TIER
