// Raw frames on their way in: reduced to 8 bits, turned so that they begin with B.
#pragma once

#include "plan.h"

namespace ppl::detail {

// The first `width` by `height` samples of a frame to lines without gaps.
void copy_mosaic(const RawFormat &format, const uint8_t *frame, uint8_t *to, uint32_t width,
                 uint32_t height, Turn turn);

}  // namespace ppl::detail
