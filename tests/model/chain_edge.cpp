#include "model/chain_edge.h"

#include <cstdlib>

#include "model/arithmetic.h"

namespace ppl_model {

namespace {

// The pixel and its detail, if `measure` lies inside the band; Q6, the product wraps in 16 bits.
uint8_t amplified(const Parameters &params, int pixel, int detail, int measure) {
  if (measure <= params.edge_threshold_vec || params.edge_threshold2_vec <= measure)
    return static_cast<uint8_t>(pixel);
  const int step = wrap16(int64_t{detail} * params.edge_enhance_factor_vec) >> 6;
  return clamp_to_byte(pixel + step);
}

//  a b c
//  d e f
//  g h i
uint8_t gradient_form(const Parameters &params, const Plane &plane, int y, int x) {
  const auto sample = [&](int dy, int dx) -> int {
    return plane.at(reflect(y + dy, plane.height()), reflect(x + dx, plane.width()));
  };
  const int a = sample(-1, -1), b = sample(-1, 0), c = sample(-1, 1);
  const int d = sample(0, -1), f = sample(0, 1);
  const int g = sample(1, -1), h = sample(1, 0), i = sample(1, 1);
  const int across = (c + f + i) - (a + d + g);
  const int down = (g + h + i) - (a + b + c);
  // The sum, not the magnitude: detail along the other diagonal cancels.
  return amplified(params, sample(0, 0), across + down, std::abs(across) + std::abs(down));
}

}  // namespace

Plane enhance_by_gradient(const Parameters &params, const Plane &luma) {
  Plane result(luma.width(), luma.height());
  for (int y = 0; y < luma.height(); ++y)
    for (int x = 0; x < luma.width(); ++x) result.at(y, x) = gradient_form(params, luma, y, x);
  return result;
}

YuvImage enhance_in_place(const Parameters &params, const Plane &samples, int B) {
  const int width = samples.width();
  Plane mixed = samples;  // grey samples, and finished luma where a block is done
  YuvImage result(width, samples.height());
  for (int pair = 0; pair < samples.height() / 2; ++pair) {
    for (int first = 0; first < width; first += B) {
      const int behind = std::min(first + B, width);
      // Both lines of the block before any of its luma is stored.
      Plane block(behind - first, 2);
      for (int line = 0; line < 2; ++line)
        for (int x = first; x < behind; ++x)
          block.at(line, x - first) = gradient_form(params, mixed, 2 * pair + line, x);
      for (int line = 0; line < 2; ++line) {
        for (int x = first; x < behind; ++x) {
          const uint8_t grey = block.at(line, x - first);
          const Yuv yuv = studio_yuv(params, {grey, grey, grey});
          const int y = 2 * pair + line;
          mixed.at(y, x) = result.y.at(y, x) = yuv.y;
          result.u.at(y, x) = yuv.u;
          result.v.at(y, x) = yuv.v;
        }
      }
    }
  }
  return result;
}

Plane enhance_by_laplacian(const Parameters &params, const Plane &luma, int B) {
  const int width = luma.width();
  const int height = luma.height();
  Plane result(width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const int pixel = luma.at(y, x);
      const int north = luma.at(reflect(y - 1, height), x);
      const int south = luma.at(reflect(y + 1, height), x);
      // The last block's first column is reflected in itself; what follows a line's last pixel is
      // the next line's first.
      const int east = x == width - 1 ? luma.at(reflect(y + 1, height), 0) : luma.at(y, x + 1);
      const int west = x == 0 || x == width - B ? east : luma.at(y, x - 1);
      const int detail = 4 * pixel - (north + south + west + east);
      result.at(y, x) = amplified(params, pixel, detail, std::abs(detail));
    }
  }
  // A median of the neighbours would follow, but its second threshold is 0 for good and nothing
  // differs by less.
  return result;
}

bool laplacian_is_open(const Plane &luma, int B, int y, int x) {
  const int height = luma.height();
  const int width = luma.width();
  // The right neighbour of the block before the last is not refilled for the last line pair, and
  // no line follows the last.
  return (y >= height - 2 && x == width - B - 1) || (y == height - 1 && x == width - 1);
}

}  // namespace ppl_model
