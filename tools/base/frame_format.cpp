#include "base/frame_format.h"

#include <fmt/core.h>

#include <charconv>

#include "base/failure.h"

namespace ppl::tool {

Size parse_size(const std::string &text) {
  Size size;
  const char *end = text.data() + text.size();
  auto width = std::from_chars(text.data(), end, size.width);
  if (width.ec == std::errc() && width.ptr != end && *width.ptr == 'x') {
    auto height = std::from_chars(width.ptr + 1, end, size.height);
    if (height.ec == std::errc() && height.ptr == end) return size;
  }
  throw UsageError(
      fmt::format("'{}' is no frame size: write width x height, such as 640x480", text));
}

const std::vector<FormatInfo> &formats() {
  static const std::vector<FormatInfo> list = {
      {Format::i420, "i420", "planes Y, U, V; chroma of half width and height; 12 bits a pixel"},
      {Format::yuyv, "yuyv", "packed pairs Y U Y V; 16 bits a pixel"},
      {Format::uyvy, "uyvy", "packed pairs U Y V Y; 16 bits a pixel"},
      {Format::rgb24, "rgb24", "bytes B G R, lines from bottom to top; 24 bits a pixel"},
      {Format::rgb32, "rgb32", "bytes B G R 0, lines from bottom to top; 32 bits a pixel"},
  };
  return list;
}

const char *format_name(Format format) {
  for (const FormatInfo &info : formats())
    if (info.format == format) return info.name;
  return "";
}

size_t frame_bytes(Format format, Size size) {
  const size_t pixels = static_cast<size_t>(size.width) * size.height;
  switch (format) {
    case Format::i420:
      return pixels + 2 * (pixels / 4);
    case Format::yuyv:
    case Format::uyvy:
      return 2 * pixels;
    case Format::rgb24:
      return 3 * pixels;
    case Format::rgb32:
      return 4 * pixels;
  }
  return 0;
}

}  // namespace ppl::tool
