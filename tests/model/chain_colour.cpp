#include "model/chain_colour.h"

#include <cstdlib>

#include "model/arithmetic.h"

namespace ppl_model {

namespace {

int8_t saturate_to_signed_byte(int value) {
  return static_cast<int8_t>(std::clamp(value, -128, 127));
}

int saturate_to_word(int value) { return std::clamp(value, -32768, 32767); }

// 0 for grey, held at the bound, which is unsigned.
int chroma_index(const Parameters &params, const Rgb &pixel) {
  const int sum =
      std::abs(pixel.R - pixel.G) + std::abs(pixel.G - pixel.B) + std::abs(pixel.B - pixel.R);
  return std::min<int>(sum >> 2, static_cast<uint16_t>(params.index_bound_vec));
}

// A coefficient moves from its base along its slope; the product wraps in 16 bits, the shift is
// arithmetic, the sum wraps.
struct MovingMatrix {
  const WordMatrix &slope, &base;
  int shift;

  int coefficient(size_t i, int index) const {
    const int rounding = 1 << (shift - 1);
    const int moved = wrap16(int64_t{index} * slope[i] + rounding) >> shift;
    return wrap16(int64_t{moved} + base[i]);
  }

  // Q6, all sums in 16 bits.
  int row(size_t number, int index, const Rgb &pixel, int rounding) const {
    const size_t i = 3 * number;
    const int64_t sum = int64_t{coefficient(i, index)} * pixel.R +
                        int64_t{coefficient(i + 1, index)} * pixel.G +
                        int64_t{coefficient(i + 2, index)} * pixel.B + rounding;
    return wrap16(sum) >> 6;
  }
};

// Chroma rounds with plain 32: the offset moves luma alone.
constexpr int chroma_rounding = 32;

YuvImage convert(const RgbImage &image, auto pixel_to_yuv) {
  YuvImage result(image.width(), image.height());
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      const Yuv yuv = pixel_to_yuv(image.at(y, x));
      result.y.at(y, x) = yuv.y;
      result.u.at(y, x) = yuv.u;
      result.v.at(y, x) = yuv.v;
    }
  }
  return result;
}

// Planes r, g and b, pixel by pixel.
ColourPlanes rgb_planes_from(int width, int height, auto pixel) {
  ColourPlanes planes;
  planes.r = planes.g = planes.b = Plane(width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const Rgb rgb = pixel(y, x);
      planes.r.at(y, x) = rgb.R;
      planes.g.at(y, x) = rgb.G;
      planes.b.at(y, x) = rgb.B;
    }
  }
  return planes;
}

// Q7; sums saturate in 16 bits from left to right.
Rgb rgb_of(int y, int u, int v) {
  const auto add = [](int a, int b) { return saturate_to_word(a + b); };
  const auto finish = [&](int sum) { return clamp_to_byte(add(sum, 32) >> 7); };
  return {finish(add(128 * y, 175 * v)), finish(add(add(128 * y, -43 * u), -89 * v)),
          finish(add(128 * y, 222 * u))};
}

}  // namespace

Yuv studio_yuv(const Parameters &params, const Rgb &pixel) {
  const MovingMatrix matrix{params.studio_slope_vec, params.studio_base0_vec, 8};
  const int index = chroma_index(params, pixel);
  return {studio_luma(matrix.row(0, index, pixel, params.offset_studio_vec)),
          saturate_to_signed_byte(matrix.row(1, index, pixel, chroma_rounding)),
          saturate_to_signed_byte(matrix.row(2, index, pixel, chroma_rounding))};
}

YuvImage studio_yuv(const Parameters &params, const RgbImage &image) {
  return convert(image, [&](const Rgb &pixel) { return studio_yuv(params, pixel); });
}

YuvImage full_range_yuv(const Parameters &params, const RgbImage &image) {
  const MovingMatrix matrix{params.full_slope_vec, params.full_base0_vec, 8};
  return convert(image, [&](const Rgb &pixel) {
    const int index = chroma_index(params, pixel);
    return Yuv{clamp_to_byte(matrix.row(0, index, pixel, params.offset_full_vec)),
               saturate_to_signed_byte(matrix.row(1, index, pixel, chroma_rounding)),
               saturate_to_signed_byte(matrix.row(2, index, pixel, chroma_rounding))};
  });
}

ColourPlanes rgb_of_full_range(const YuvImage &image) {
  return rgb_planes_from(image.y.width(), image.y.height(), [&](int y, int x) {
    return rgb_of(image.y.at(y, x), image.u.at(y, x), image.v.at(y, x));
  });
}

ColourPlanes adaptive_rgb(const Parameters &params, const RgbImage &image) {
  const MovingMatrix matrix{params.rgb_slope_vec, params.rgb_base0_vec, 5};
  const int rounding = params.offset_rgb_vec;
  return rgb_planes_from(image.width(), image.height(), [&](int y, int x) {
    const Rgb &pixel = image.at(y, x);
    const int index = chroma_index(params, pixel);
    const auto channel = [&](size_t row) {
      return clamp_to_byte(matrix.row(row, index, pixel, rounding));
    };
    return Rgb{channel(0), channel(1), channel(2)};
  });
}

SignedPlane box_filtered(const SignedPlane &chroma, int B) {
  SignedPlane result = chroma;
  for (int y = 2; y < chroma.height(); ++y) {
    for (int x = B; x < chroma.width() - B; ++x) {
      int sum = 0;
      for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx) sum += chroma.at(reflect(y + dy, chroma.height()), x + dx);
      result.at(y, x) = saturate_to_signed_byte(wrap16(int64_t{sum} * 28) >> 8);
    }
  }
  return result;
}

ColourPlanes planes_of(const YuvImage &image) {
  ColourPlanes planes;
  planes.y = image.y;
  planes.u = planes.v = Plane(image.y.width() / 2, image.y.height() / 2);
  for (int p = 0; p < planes.u.height(); ++p) {
    for (int c = 0; c < planes.u.width(); ++c) {
      planes.u.at(p, c) = studio_chroma(image.u.at(2 * p, 2 * c));
      planes.v.at(p, c) = studio_chroma(image.v.at(2 * p, 2 * c));
    }
  }
  return planes;
}

}  // namespace ppl_model
