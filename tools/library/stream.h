// Raw frames through the library.
#pragma once

#include <ppl.h>

#include <chrono>
#include <cstdint>

#include "base/frame_format.h"
#include "library/frame_buffer.h"

namespace ppl::tool {

enum class Tier { kNone, kP3, kSse2 };

const char *tier_name(Tier tier);

// A context of the library, at its defaults.
class Context {
 public:
  Context();  // throws Failure if all contexts are taken
  ~Context() { ppl_free(context_); }
  Context(const Context &) = delete;
  Context &operator=(const Context &) = delete;

  operator PplContext *() const { return context_; }

 private:
  PplContext *context_;
};

// The best tier that the library can use on this processor, judged by the sizes that it accepts.
Tier usable_tier();

// The tier that the context's next aligned frame takes.
Tier tier_of(const PplContext *context);

// What a quality does, in a few words.
const char *quality_name(uint32_t quality);

// False where a quality does not write the format at all.
bool writes_picture(uint32_t quality, Format format);

// True where frames of the context lose the samples of even columns: RGB24 in the P3 tier while
// statistics are gathered.
bool shows_stripes(const PplContext *context, Format format);

// Gives the context the frame size. Do this before the controls: a size that is set later would
// take the black lines out of the scale again. Throws Failure for a size that the library refuses.
void set_frame_size(PplContext *context, Size size);

// Throws Failure where the processor has no tier, so that no frame can be processed.
void require_tier();

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
