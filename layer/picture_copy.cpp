#include "picture_copy.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace ppl::detail {
namespace {

constexpr uint8_t black_luma = 16, neutral_chroma = 128;

uint64_t load(const uint8_t *p) {
  uint64_t word;
  std::memcpy(&word, p, sizeof word);
  return word;
}

void store(uint8_t *p, uint64_t word) { std::memcpy(p, &word, sizeof word); }

template <size_t size>
void reverse_pixels(uint8_t *line, size_t line_bytes) {
  if (line_bytes == 0) return;
  for (uint8_t *last = line + line_bytes - size; line < last; line += size, last -= size)
    std::swap_ranges(line, line + size, last);
}

// Two pixels share their chroma: they change places, U and V stay.
void reverse_pairs(uint8_t *line, size_t line_bytes, size_t luma) {
  reverse_pixels<4>(line, line_bytes);
  for (size_t i = luma; i + 2 < line_bytes; i += 4) std::swap(line[i], line[i + 2]);
}

void reverse_line(PixelFormat format, uint8_t *line, size_t line_bytes) {
  switch (format) {
    case PixelFormat::i420:
      return reverse_bytes(line, line_bytes);
    case PixelFormat::yuyv:
      return reverse_pairs(line, line_bytes, 0);
    case PixelFormat::uyvy:
      return reverse_pairs(line, line_bytes, 1);
    case PixelFormat::rgb24:
      return reverse_pixels<3>(line, line_bytes);
    case PixelFormat::rgb32:
      return reverse_pixels<4>(line, line_bytes);
  }
}

void drop_fourth_bytes(uint8_t *to, const uint8_t *from, size_t pixels) {
  for (size_t i = 0; i < pixels; ++i, to += 3, from += 4) {
    to[0] = from[0];
    to[1] = from[1];
    to[2] = from[2];
  }
}

void fill_line(PixelFormat format, size_t plane, uint8_t *line, size_t line_bytes) {
  switch (format) {
    case PixelFormat::i420:
      std::memset(line, plane == 0 ? black_luma : neutral_chroma, line_bytes);
      return;
    case PixelFormat::yuyv:
    case PixelFormat::uyvy: {
      const bool luma_first = format == PixelFormat::yuyv;
      for (size_t i = 0; i < line_bytes; ++i)
        line[i] = (i % 2 == 0) == luma_first ? black_luma : neutral_chroma;
      return;
    }
    default:
      std::memset(line, 0, line_bytes);
  }
}

}  // namespace

void reverse_bytes(uint8_t *bytes, size_t count) {
  uint8_t *end = bytes + count;
  for (; end - bytes >= 16; bytes += 8, end -= 8) {
    const uint64_t first = load(bytes), last = load(end - 8);
    store(bytes, __builtin_bswap64(last));
    store(end - 8, __builtin_bswap64(first));
  }
  std::reverse(bytes, end);
}

PictureLines PictureLines::lines(uint32_t first, uint32_t count) const {
  PictureLines part = *this;
  for (size_t i = 0; i < plane_count; ++i) {
    const uint32_t shares = i == 0 ? 1 : 2;
    part.planes[i].data += planes[i].pitch * (first / shares);
    part.planes[i].lines = count / shares;
  }
  return part;
}

PictureLines lines_of(const Layout &layout, uint8_t *data) {
  PictureLines picture{layout.format, layout.plane_count, {}};
  for (size_t i = 0; i < layout.plane_count; ++i) {
    const PlaneLayout &plane = layout.planes[i];
    picture.planes[i] = {data + plane.offset, plane.line_bytes, plane.line_bytes, plane.lines};
  }
  return picture;
}

void copy_picture(const PictureLines &from, const PictureLines &to, bool upside_down) {
  for (size_t i = 0; i < to.plane_count; ++i) {
    const PlaneLines &source = from.planes[i], &target = to.planes[i];
    for (uint32_t y = 0; y < target.lines; ++y) {
      const uint8_t *const line = source.line(upside_down ? target.lines - 1 - y : y);
      if (from.format == to.format)
        std::memcpy(target.line(y), line, target.line_bytes);
      else
        drop_fourth_bytes(target.line(y), line, target.line_bytes / 3);
    }
  }
}

void turn_picture(const PictureLines &picture, Turn turn) {
  for (size_t i = 0; i < picture.plane_count; ++i) {
    const PlaneLines &plane = picture.planes[i];
    for (uint32_t y = 0; turn.v && y < plane.lines / 2; ++y)
      std::swap_ranges(plane.line(y), plane.line(y) + plane.line_bytes,
                       plane.line(plane.lines - 1 - y));
    for (uint32_t y = 0; turn.h && y < plane.lines; ++y)
      reverse_line(picture.format, plane.line(y), plane.line_bytes);
  }
}

void fill_black(const PictureLines &picture) {
  for (size_t i = 0; i < picture.plane_count; ++i) {
    const PlaneLines &plane = picture.planes[i];
    for (uint32_t y = 0; y < plane.lines; ++y)
      fill_line(picture.format, i, plane.line(y), plane.line_bytes);
  }
}

}  // namespace ppl::detail
