#include "pictures/picture.h"

#include <algorithm>

namespace ppl::tool {
namespace {

void put_yuv(uint8_t *pixel, int y, int u, int v) {
  const int luma = 76309 * (y - 16) + 32768;  // 255 / 219 in Q16, and half for rounding
  const auto code = [](int q16) { return static_cast<uint8_t>(std::clamp(q16 >> 16, 0, 255)); };
  pixel[0] = code(luma + 104597 * (v - 128));
  pixel[1] = code(luma - 53279 * (v - 128) - 25675 * (u - 128));
  pixel[2] = code(luma + 132201 * (u - 128));
}

}  // namespace

Picture to_picture(const FrameView &frame) {
  const uint32_t stride = frame.size.width;
  const uint8_t *data = frame.data;
  if (is_rgb(frame.format)) {
    Picture picture(frame.size);
    const size_t step = frame.format == Format::rgb24 ? 3 : 4;
    for (uint32_t y = 0; y < picture.size.height; ++y) {
      const uint8_t *in = data + step * stride * (picture.size.height - 1 - y);
      for (uint32_t x = 0; x < picture.size.width; ++x, in += step) {
        uint8_t *out = picture.pixel(x, y);
        out[0] = in[2];
        out[1] = in[1];
        out[2] = in[0];
      }
    }
    return picture;
  }

  Picture picture({frame.size.width & ~1u, frame.size.height & ~1u});
  const size_t pixels = static_cast<size_t>(stride) * frame.size.height;
  for (uint32_t y = 0; y < picture.size.height; ++y) {
    for (uint32_t x = 0; x < picture.size.width; ++x) {
      const size_t at = static_cast<size_t>(y) * stride + x;
      if (frame.format == Format::i420) {
        const size_t cell = static_cast<size_t>(y / 2) * (stride / 2) + x / 2;
        put_yuv(picture.pixel(x, y), data[at], data[pixels + cell],
                data[pixels + pixels / 4 + cell]);
      } else {
        const uint8_t *pair = data + 2 * (at - x % 2);
        const size_t y0 = frame.format == Format::yuyv ? 0 : 1, u = 1 - y0;
        put_yuv(picture.pixel(x, y), pair[y0 + 2 * (x % 2)], pair[u], pair[u + 2]);
      }
    }
  }
  return picture;
}

Picture grey_picture(const uint8_t *samples, Size size) {
  Picture picture(size);
  for (size_t i = 0; i < picture.rgb.size(); ++i) picture.rgb[i] = samples[i / 3];
  return picture;
}

}  // namespace ppl::tool
