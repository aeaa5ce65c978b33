// Aligned memory for frames, as both SIMD tiers want it.
#pragma once

#include <ppl.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "base/frame_format.h"

namespace ppl::tool {

// Zeroed memory, with some room behind it: the grey copies work in whole groups of up to 32 bytes.
class FrameBuffer {
 public:
  explicit FrameBuffer(size_t bytes);

  uint8_t *data() const { return memory_.get(); }

 private:
  struct Free {
    void operator()(void *memory) const { std::free(memory); }
  };
  std::unique_ptr<uint8_t[], Free> memory_;
};

// The place where the library writes frames.
class OutputFrame {
 public:
  // At the decimation and with the black lines that the context has now.
  OutputFrame(const PplContext *context, Size input, Format format);

  Size size() const { return size_; }
  Format format() const { return format_; }
  uint8_t *data() const { return buffer_.data(); }
  FrameView view() const { return {format_, size_, data()}; }

  void fill_black();

 private:
  Format format_;
  Size size_;
  FrameBuffer buffer_;
};

}  // namespace ppl::tool
