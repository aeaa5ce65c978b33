// How close a picture comes to another one.
#pragma once

#include "pictures/picture.h"

namespace ppl::tool {

struct Closeness {
  double psnr_rgb = 0, psnr_luma = 0;  // in dB; infinite for equal pictures
  double ssim_luma = 0;                // 1 for equal pictures
  // Where the picture stands against the truth; positive is right and down.
  int shift_x = 0, shift_y = 0;
};

// Pixels at each side that are not compared. They make room for the shifts, too.
inline constexpr uint32_t metric_border = 8;

// Whether the picture is large enough to be compared.
bool comparable(Size size);

// Compares two pictures of one size, at the shift of up to one pixel where they agree best by PSNR
// over RGB; the part of the truth that is looked at is the same at every shift.
//
//   PSNR        10 log10(255^2 / mean squared difference), over R, G and B together or over luma
//   luma        0.299 R + 0.587 G + 0.114 B of the 8-bit values, not rounded
//   SSIM        mean over all 11x11 windows that lie wholly inside, weighed by a Gaussian of
//               sigma 1.5, with K1 = 0.01, K2 = 0.03 and L = 255
Closeness closeness(const Picture &picture, const Picture &truth);

}  // namespace ppl::tool
