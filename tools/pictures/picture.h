// A plain RGB picture for files and for drawing: 8 bits, R, G, B, lines from top to bottom.
#pragma once

#include <cstdint>
#include <vector>

#include "base/frame_format.h"

namespace ppl::tool {

struct Picture {
  Size size;
  std::vector<uint8_t> rgb;

  Picture() = default;
  explicit Picture(Size s) : size(s), rgb(static_cast<size_t>(s.width) * s.height * 3) {}

  uint8_t *pixel(uint32_t x, uint32_t y) {
    return &rgb[3 * (static_cast<size_t>(y) * size.width + x)];
  }
  const uint8_t *pixel(uint32_t x, uint32_t y) const {
    return &rgb[3 * (static_cast<size_t>(y) * size.width + x)];
  }
};

// Any frame as a picture. Y, U, V are taken as BT.601 studio range (Y 16..235, chroma 16..240):
//   R = 1.164 (Y - 16) + 1.596 (V - 128)
//   G = 1.164 (Y - 16) - 0.813 (V - 128) - 0.392 (U - 128)
//   B = 1.164 (Y - 16) + 2.017 (U - 128)
// in integers with 16 fractional bits, to nearest, held at 0..255. A chroma sample serves all
// pixels of its cell or pair. The last column or line of an odd Y, U, V frame, which has no chroma,
// is left out.
Picture to_picture(const FrameView &frame);

// A raw mosaic frame as grey.
Picture grey_picture(const uint8_t *samples, Size size);

}  // namespace ppl::tool
