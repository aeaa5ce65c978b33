// Conversions of packed video by libyuv.
#pragma once

#include <cstdint>

namespace ppl::bench {

// A packed 4:2:2 frame and what becomes of it, as in ppl.h: I420, or RGB24 with the bottom line
// first.
struct VideoFrame {
  const uint8_t *src;
  uint8_t *dst;
  int width, height;
};

// Instructions that libyuv may use.
enum class LibyuvLimit { sse2, ssse3, none };

using LibyuvConversion = void (*)(const VideoFrame &frame);

// Null if the program was built without libyuv.
struct LibyuvConversions {
  LibyuvConversion yuyv_to_i420, uyvy_to_i420, yuyv_to_rgb24, uyvy_to_rgb24;
};

bool has_libyuv();
LibyuvConversions libyuv_conversions();
void limit_libyuv(LibyuvLimit limit);

}  // namespace ppl::bench
