// The P3 tier: MMX with the integer SSE extensions. No SSE2 instruction may get in here.
#pragma once

#define TARGET p3

#include "kernels/lanes/mmx.inl.h"

namespace ppl::TARGET {
namespace {

using Vec = Mmx;    // what a kernel works with
using Block = Mmx;  // a register of the tier's block
constexpr int block = Block::size;

inline void leave() { _mm_empty(); }

}  // namespace
}  // namespace ppl::TARGET
