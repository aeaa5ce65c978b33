// Frame sizes and the layouts of frames that the library writes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ppl::tool {

struct Size {
  uint32_t width = 0, height = 0;
};

// "640x480". Throws UsageError.
Size parse_size(const std::string &text);

enum class Format { i420, yuyv, uyvy, rgb24, rgb32 };

struct FormatInfo {
  Format format;
  const char *name;
  const char *layout;
};

const std::vector<FormatInfo> &formats();
const char *format_name(Format format);

inline bool is_rgb(Format format) { return format == Format::rgb24 || format == Format::rgb32; }

// Bytes of a raw mosaic frame, and of a frame in one of the formats.
inline size_t raw_bytes(Size size) { return static_cast<size_t>(size.width) * size.height; }
size_t frame_bytes(Format format, Size size);

// Whether a frame was taken at one time or its even and odd lines at two.
enum class Scan { progressive, even_lines_first, odd_lines_first };

// A finished frame in one of the formats. Two chroma planes lie behind the luma plane in I420, each
// of a quarter of its size; RGB lines run from bottom to top, with the bytes B, G, R (and 0).
struct FrameView {
  Format format;
  Size size;
  const uint8_t *data;
  Scan scan = Scan::progressive;

  size_t bytes() const { return frame_bytes(format, size); }
};

}  // namespace ppl::tool
