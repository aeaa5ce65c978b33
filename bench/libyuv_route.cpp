#include "libyuv_route.h"

#ifdef PPL_BENCH_LIBYUV
#include <libyuv.h>

#include <cstddef>
#include <vector>
#endif

namespace ppl::bench {

#ifdef PPL_BENCH_LIBYUV
namespace {

template <auto to_i420>
void convert_to_i420(const VideoFrame &frame) {
  const int w = frame.width;
  uint8_t *const u = frame.dst + static_cast<ptrdiff_t>(w) * frame.height;
  uint8_t *const v = u + static_cast<ptrdiff_t>(w) * frame.height / 4;
  to_i420(frame.src, 2 * w, frame.dst, w, u, w / 2, v, w / 2, w, frame.height);
}

// There is no direct way. Line by line, so that what lies between stays in the cache.
template <auto to_argb>
void convert_to_rgb24(const VideoFrame &frame) {
  const int w = frame.width;
  std::vector<uint8_t> line(static_cast<size_t>(4 * w));
  for (int y = 0; y < frame.height; ++y) {
    to_argb(frame.src + static_cast<ptrdiff_t>(2 * w) * y, 2 * w, line.data(), 4 * w, w, 1);
    libyuv::ARGBToRGB24(line.data(), 4 * w,
                        frame.dst + static_cast<ptrdiff_t>(3 * w) * (frame.height - 1 - y), 3 * w,
                        w, 1);
  }
}

}  // namespace

bool has_libyuv() { return true; }

LibyuvConversions libyuv_conversions() {
  return {convert_to_i420<libyuv::YUY2ToI420>, convert_to_i420<libyuv::UYVYToI420>,
          convert_to_rgb24<libyuv::YUY2ToARGB>, convert_to_rgb24<libyuv::UYVYToARGB>};
}

void limit_libyuv(LibyuvLimit limit) {
  constexpr int sse2 = libyuv::kCpuHasX86 | libyuv::kCpuHasSSE2;
  libyuv::MaskCpuFlags(limit == LibyuvLimit::sse2    ? sse2
                       : limit == LibyuvLimit::ssse3 ? sse2 | libyuv::kCpuHasSSSE3
                                                     : -1);
}

#else

bool has_libyuv() { return false; }
LibyuvConversions libyuv_conversions() { return {}; }
void limit_libyuv(LibyuvLimit /*limit*/) {}

#endif

}  // namespace ppl::bench
