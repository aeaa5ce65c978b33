#include "model/chain_red_blue.h"

#include "model/arithmetic.h"

namespace ppl_model {

namespace {

RgbImage for_each_pixel(int width, int height, auto pixel) {
  RgbImage image(width, height);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) image.at(y, x) = pixel(y, x);
  return image;
}

// The other colour's native is on the diagonals: red at B sites, blue at R sites.
Rgb pixel_by_differences(const StageLines &frame, const Plane &green, int y, int x) {
  const uint8_t G = green.at(y, x);
  // How far the native sample dy lines below and dx columns beside stands above its green.
  const auto difference = [&](int dy, int dx) {
    return frame.at(y, dy, x + dx) -
           green.at(reflect(y + dy, green.height()), reflect(x + dx, green.width()));
  };
  const auto beside = [&] {
    return clamp_to_byte(G + ((difference(0, -1) + difference(0, 1)) >> 1));
  };
  const auto above_and_below = [&] {
    return clamp_to_byte(G + ((difference(-1, 0) + difference(1, 0)) >> 1));
  };
  const auto diagonal = [&] {
    return clamp_to_byte(
        G + ((difference(-1, -1) + difference(-1, 1) + difference(1, -1) + difference(1, 1)) >> 2));
  };
  const uint8_t native = static_cast<uint8_t>(frame.at(y, 0, x));
  if (y % 2 == 0)
    return x % 2 == 0 ? Rgb{diagonal(), G, native} : Rgb{above_and_below(), G, beside()};
  return x % 2 == 0 ? Rgb{beside(), G, above_and_below()} : Rgb{native, G, diagonal()};
}

Rgb pixel_by_averages(const StageLines &frame, int y, int x) {
  const auto sample = [&](int dy, int dx) { return static_cast<uint8_t>(frame.at(y, dy, x + dx)); };
  const auto vertical = [&](int dx) { return average(sample(-1, dx), sample(1, dx)); };
  const uint8_t horizontal = average(sample(0, 1), sample(0, -1));
  const uint8_t diagonal = average(vertical(1), vertical(-1));
  const uint8_t cross = average(horizontal, vertical(0));
  const uint8_t native = sample(0, 0);
  if (y % 2 == 0)
    return x % 2 == 0 ? Rgb{diagonal, cross, native} : Rgb{vertical(0), native, horizontal};
  return x % 2 == 0 ? Rgb{horizontal, native, vertical(0)} : Rgb{native, cross, diagonal};
}

}  // namespace

RgbImage demosaic_by_differences(const StageLines &frame, const Plane &green) {
  return for_each_pixel(frame.width(), frame.height(),
                        [&](int y, int x) { return pixel_by_differences(frame, green, y, x); });
}

RgbImage demosaic_by_averages(const StageLines &frame) {
  return for_each_pixel(frame.width(), frame.height(),
                        [&](int y, int x) { return pixel_by_averages(frame, y, x); });
}

RgbImage demosaic_by_averages(const StageLines &frame, const Plane &green) {
  return for_each_pixel(frame.width(), frame.height(), [&](int y, int x) {
    Rgb pixel = pixel_by_averages(frame, y, x);
    pixel.G = green.at(y, x);
    return pixel;
  });
}

RgbImage grey_image(const Plane &samples) {
  return for_each_pixel(samples.width(), samples.height(), [&](int y, int x) {
    const uint8_t s = samples.at(y, x);
    return Rgb{s, s, s};
  });
}

}  // namespace ppl_model
