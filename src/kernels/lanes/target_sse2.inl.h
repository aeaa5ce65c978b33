// The SSE2 tier in registers of its block.
#pragma once

#define TARGET sse2

#include "kernels/lanes/sse2.inl.h"

namespace ppl::TARGET {
namespace {

using Vec = Sse2;
using Block = Sse2;
constexpr int block = Block::size;

inline void leave() {}

}  // namespace
}  // namespace ppl::TARGET
