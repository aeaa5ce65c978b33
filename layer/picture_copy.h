// Pictures on their way out: placed, turned, blackened.
#pragma once

#include "plan.h"

namespace ppl::detail {

// Lines of a plane in anybody's memory.
struct PlaneLines {
  uint8_t *data = nullptr;
  size_t pitch = 0, line_bytes = 0;
  uint32_t lines = 0;

  uint8_t *line(uint32_t y) const { return data + pitch * y; }
};

struct PictureLines {
  PixelFormat format = PixelFormat::i420;
  size_t plane_count = 0;
  std::array<PlaneLines, 3> planes;

  // `count` of the picture's lines from line `first` on; in i420 both are even.
  PictureLines lines(uint32_t first, uint32_t count) const;
};

// A picture without gaps.
PictureLines lines_of(const Layout &layout, uint8_t *data);

// Copies, the bottom line first if asked to. From rgb32 also to rgb24; otherwise the formats are
// the same.
void copy_picture(const PictureLines &from, const PictureLines &to, bool upside_down);

// Exchanges left and right, top and bottom, in place.
void turn_picture(const PictureLines &picture, Turn turn);

void fill_black(const PictureLines &picture);

void reverse_bytes(uint8_t *bytes, size_t count);

}  // namespace ppl::detail
