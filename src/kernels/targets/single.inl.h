// The single passes of a target: quality 3, quality 13 and the copies.
#pragma once

#include "kernels/passes.h"
#include "kernels/single/copy.inl.h"
#include "kernels/single/default_pipeline.inl.h"
#include "kernels/single/enlarge.inl.h"
#include "kernels/single/monochrome.inl.h"
#include "kernels/single/shrink.inl.h"

namespace ppl::TARGET {
namespace {

constexpr PackedOrder yuyv = PackedOrder::yuyv;
constexpr PackedOrder uyvy = PackedOrder::uyvy;
constexpr Passes no_passes = {nullptr, nullptr, nullptr};

}  // namespace

constinit const SinglePasses single_passes = {
    // clang-format off
    .default_pipeline = {
        .i420 = {plain_i420, shrink_i420, enlarge_i420},
        .yuyv = {plain_packed<yuyv>, shrink_packed<yuyv>, enlarged_packed<yuyv>},
        .uyvy = {plain_packed<uyvy>, shrink_packed<uyvy>, enlarged_packed<uyvy>},
        .rgb24 = {plain_rgb24, shrink_rgb24, enlarge_rgb24},
        // There is no 1:2 pass: the plain one runs on the steps of a doubled size.
        .rgb32 = {plain_rgb32, shrink_rgb32, plain_rgb32},
    },
    .monochrome = {
        .i420 = {mono_plain_i420, mono_resample_i420, mono_resample_i420},
        .yuyv = no_passes,
        .uyvy = no_passes,
        .rgb24 = {mono_plain_rgb24, mono_resample_rgb24, mono_resample_rgb24},
        .rgb32 = no_passes,
    },
    // clang-format on
    .copy = {copy_i420, copy_packed<yuyv>, copy_packed<uyvy>, copy_rgb<3>, copy_rgb<4>},
};

}  // namespace ppl::TARGET
