// Raw frames through the library.
#pragma once

#include <ppl.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "frame_format.h"

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

// False where a quality does not write the format at all.
bool writes_picture(uint32_t quality, Format format);

// Gives the context the frame size. Do this before the controls: a size that is set later would
// take the black lines out of the scale again. Throws Failure for a size that the library refuses.
void set_frame_size(PplContext *context, Size size);

// Runs raw frames of the context's size in one format, with the controls in force when it is made.
class FrameRunner {
 public:
  FrameRunner(PplContext *context, Size input, Format format);

  // The size of what comes out.
  Size output_size() const { return output_; }

  // The buffer for the next raw frame: width times height bytes. A run consumes what is in it.
  uint8_t *raw() { return raw_.get(); }

  // Processes raw(). What the library leaves unwritten is black. The view holds until the next run.
  FrameView run();

 private:
  struct Free {
    void operator()(void *memory) const { std::free(memory); }
  };
  using Buffer = std::unique_ptr<uint8_t[], Free>;

  static Buffer allocate(size_t bytes);
  void fill_black();

  PplContext *context_;
  Size input_, output_;
  Format format_;
  Buffer raw_, out_;
};

}  // namespace ppl::tool
