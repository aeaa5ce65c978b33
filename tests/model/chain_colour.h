// The colour matrix that moves with the strength of a pixel's colour.
#pragma once

#include "model/chain_red_blue.h"
#include "model/colour_stage.h"

namespace ppl_model {

using SignedPlane = Grid<int8_t>;

// Brightness and signed chroma of every pixel.
struct YuvImage {
  Plane y;
  SignedPlane u, v;

  YuvImage(int width, int height) : y(width, height), u(width, height), v(width, height) {}
};

struct Yuv {
  uint8_t y;
  int8_t u, v;
};

// Luma in 16..235.
Yuv studio_yuv(const Parameters &params, const Rgb &pixel);
YuvImage studio_yuv(const Parameters &params, const RgbImage &image);

// Luma in 0..255, for RGB output that is enhanced on the way.
YuvImage full_range_yuv(const Parameters &params, const RgbImage &image);
// Its way back; planes r, g and b.
ColourPlanes rgb_of_full_range(const YuvImage &image);

// Straight to RGB; planes r, g and b.
ColourPlanes adaptive_rgb(const Parameters &params, const RgbImage &image);

// Chroma of quality 14: the sum of nine, times 28 / 256. The first and the last block column and
// line pair 0 pass as they are.
SignedPlane box_filtered(const SignedPlane &chroma, int B);

// Luma as it is and the chroma at each cell's B site, held to 16..240.
ColourPlanes planes_of(const YuvImage &image);

}  // namespace ppl_model
