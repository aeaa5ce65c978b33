// Pictures and video in files: PNG, PPM and YUV4MPEG2, as bytes.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/frame_format.h"
#include "pictures/picture.h"

namespace ppl::tool {

using Bytes = std::vector<uint8_t>;

Bytes encode_png(const Picture &picture);
Bytes encode_ppm(const Picture &picture);

// Throws Failure if the file is no PNG. 16-bit samples are cut to 8, palettes and grey become RGB,
// and an alpha channel is dropped.
Picture read_png(const std::string &path);

// The stream header, and one frame with its own header. I420 becomes C420jpeg (a chroma sample
// stands in the middle of its four pixels), YUYV and UYVY become C422. The last column or line of
// an odd frame is left out. Throws Failure for RGB frames, which the format does not hold.
Bytes y4m_header(Format format, Size size, Scan scan = Scan::progressive);
Bytes y4m_frame(const FrameView &frame);

}  // namespace ppl::tool
