// The table of a tier's functions. Included once by each tier's source.
#pragma once

#include "kernels/chains/chain.inl.h"
#include "kernels/single/copy.inl.h"
#include "kernels/single/default_pipeline.inl.h"
#include "kernels/single/enlarge.inl.h"
#include "kernels/single/monochrome.inl.h"
#include "kernels/single/shrink.inl.h"
#include "kernels/yuv/interlaced.inl.h"
#include "kernels/yuv/progressive.inl.h"

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
    // clang-format off
    .default_pipeline = {
        /* i420 */ {plain_i420, shrink_i420, enlarge_i420},
        /* yuyv */ {plain_yuyv, shrink_yuyv, enlarge_yuyv},
        /* uyvy */ {plain_uyvy, shrink_uyvy, enlarge_uyvy},
        /* rgb24 */ {plain_rgb24, shrink_rgb24, enlarge_rgb24},
        // There is no 1:2 pass: the plain one runs on the steps of a doubled size.
        /* rgb32 */ {plain_rgb32, shrink_rgb32, plain_rgb32},
    },
    .monochrome = {
        /* i420 */ {mono_plain_i420, mono_resample_i420, mono_resample_i420},
        /* yuyv */ {nullptr, nullptr, nullptr},
        /* uyvy */ {nullptr, nullptr, nullptr},
        /* rgb24 */ {mono_plain_rgb24, mono_resample_rgb24, mono_resample_rgb24},
        /* rgb32 */ {nullptr, nullptr, nullptr},
    },
    // clang-format on
    .copy = {copy_i420, copy_packed<0>, copy_packed<1>, copy_rgb<3>, copy_rgb<4>},
    .run_chain = run_chain,
    .progressive_i420 = {progressive_i420<true>, progressive_i420<false>},
    .progressive_rgb24 = {progressive_rgb24<true>, progressive_rgb24<false>},
    .unpack_yyyy = unpack_yyyy,
    .convert_fields = convert_fields,
    .clear_mmx_state = clear_mmx_state,
};

}  // namespace ppl::TIER
