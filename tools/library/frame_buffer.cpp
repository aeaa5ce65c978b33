#include "library/frame_buffer.h"

#include <cstring>
#include <new>

namespace ppl::tool {
namespace {

Size output_size(const PplContext *context, Size input) {
  const int decimation = ppl_decimation(context);
  const auto scaled = [&](uint32_t n) {
    return decimation < 0 ? n << -decimation : n >> decimation;
  };
  return {scaled(input.width),
          scaled(input.height) + static_cast<uint32_t>(ppl_decimation_top_black_lines(context) +
                                                       ppl_decimation_bottom_black_lines(context))};
}

}  // namespace

FrameBuffer::FrameBuffer(size_t bytes) {
  constexpr size_t alignment = 64, room_behind = 4096;
  const size_t rounded = (bytes + room_behind + alignment - 1) / alignment * alignment;
  memory_.reset(static_cast<uint8_t *>(std::aligned_alloc(alignment, rounded)));
  if (!memory_) throw std::bad_alloc();
  std::memset(data(), 0, rounded);
}

// At decimation 2 raw frames have lines that do not fit the declared size; a frame of the input's
// size holds them all.
OutputFrame::OutputFrame(const PplContext *context, Size input, Format format)
    : format_(format),
      size_(output_size(context, input)),
      buffer_(frame_bytes(format, size_) + frame_bytes(format, input)) {}

void OutputFrame::fill_black() {
  const size_t bytes = frame_bytes(format_, size_);
  const size_t pixels = static_cast<size_t>(size_.width) * size_.height;
  uint8_t *out = data();
  switch (format_) {
    case Format::i420:
      std::memset(out, 16, pixels);
      std::memset(out + pixels, 128, bytes - pixels);
      break;
    case Format::yuyv:
    case Format::uyvy:
      for (size_t i = 0; i < bytes; ++i)
        out[i] = (i % 2 == 0) == (format_ == Format::yuyv) ? 16 : 128;
      break;
    case Format::rgb24:
    case Format::rgb32:
      std::memset(out, 0, bytes);
      break;
  }
}

}  // namespace ppl::tool
