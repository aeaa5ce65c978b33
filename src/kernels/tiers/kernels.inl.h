// The table of a tier's functions. Included once by each tier's source.
#pragma once

#include "kernels/single/copy.inl.h"
#include "kernels/single/default_pipeline.inl.h"

namespace ppl::TIER {
namespace {

void clear_mmx_state() {
#if TIER_BYTES == 8
  _mm_empty();
#endif
}

}  // namespace

constinit const TierKernels kernels = {
    .block_width = TIER_BYTES,
    .default_pipeline = {
        /* i420 */ {plain_i420, nullptr, nullptr},
        /* yuyv */ {plain_yuyv, nullptr, nullptr},
        /* uyvy */ {plain_uyvy, nullptr, nullptr},
        /* rgb24 */ {plain_rgb24, nullptr, nullptr},
        /* rgb32 */ {plain_rgb32, nullptr, nullptr},
    },
    .monochrome = {},
    .copy = {copy_i420, copy_packed<0>, copy_packed<1>, copy_rgb<3>, copy_rgb<4>},
    .clear_mmx_state = clear_mmx_state,
};

}  // namespace ppl::TIER
