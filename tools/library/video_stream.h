// Packed video through the library: whole frames, or two fields to a frame.
#pragma once

#include <ppl.h>

#include <cstdint>
#include <string>

#include "base/frame_format.h"
#include "library/frame_buffer.h"

namespace ppl::tool {

struct VideoConversion {
  Format from;  // yuyv or uyvy
  Format to;
  bool interlaced = false;
  bool tests_motion = true;  // of interlaced frames
};

// Throws Failure for a conversion that the library does not have at the controls in force; the
// message names those that it has.
void require_conversion(const PplContext *context, const VideoConversion &conversion);

// Runs frames of the context's size, with the controls in force when it is made.
class VideoRunner {
 public:
  VideoRunner(PplContext *context, Size input, VideoConversion conversion);

  // Bytes of an input: of a frame, or of a field, which has half its lines.
  size_t input_bytes() const;

  // The progressive frame, or the field with the even lines, and the field with the odd ones.
  uint8_t *first() { return first_.data(); }
  uint8_t *second() { return second_.data(); }

  // The field before second(). After a run it is the second one of that run. Before the first run
  // it may be filled and announced; if it was not, the first frame takes its own second field,
  // which means that nothing moves.
  uint8_t *reference() { return reference_.data(); }
  void announce_reference() { has_reference_ = true; }

  // What the library leaves unwritten is black. The view holds until the next run.
  FrameView run();

 private:
  PplContext *context_;
  Size input_;
  VideoConversion conversion_;
  FrameBuffer first_, second_, reference_;
  OutputFrame out_;
  bool has_reference_ = false;
};

}  // namespace ppl::tool
