// Raw frames through the library.
#pragma once

#include <ppl.h>

#include <chrono>
#include <cstdint>

#include "base/frame_format.h"
#include "library/frame_buffer.h"

namespace ppl::tool {

// Runs raw frames of the context's size in one format, with the controls in force when it is made.
class FrameRunner {
 public:
  FrameRunner(PplContext *context, Size input, Format format);

  // The size of what comes out.
  Size output_size() const { return out_.size(); }

  // The buffer for the next raw frame: width times height bytes. A run consumes what is in it.
  uint8_t *raw() { return raw_.data(); }

  // Processes raw(). What the library leaves unwritten is black. The view holds until the next run.
  FrameView run();

  // How long the library took for the last one.
  std::chrono::nanoseconds duration() const { return duration_; }

 private:
  PplContext *context_;
  Size input_;
  FrameBuffer raw_;
  OutputFrame out_;
  std::chrono::nanoseconds duration_{};
};

}  // namespace ppl::tool
