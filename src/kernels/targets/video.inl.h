// The conversions from packed video of a target.
#pragma once

#include "kernels/passes.h"
#include "kernels/video/interlaced.inl.h"
#include "kernels/video/progressive.inl.h"

namespace ppl::TARGET {

constinit const VideoPasses video_passes = {
    .to_i420 = progressive_i420,
    .to_rgb24 = progressive_rgb24,
    .unpack_yyyy = unpack_yyyy,
    .convert_fields = convert_fields,
};

}  // namespace ppl::TARGET
