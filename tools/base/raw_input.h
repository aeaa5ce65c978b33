// Frames, or fields of frames, from a file or from standard input.
#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

#include "base/frame_format.h"

namespace ppl::tool {

// What a file holds one after the other.
struct FrameKind {
  uint64_t bytes;
  const char *noun = "frame";
  const char *advice = "check --size";  // where the file does not fit
};

// Reads frames of one kind, one after the other. A file whose size is known is judged as a whole
// before the first frame; standard input as it comes. Failures throw Failure.
class RawInput {
 public:
  // frames: how many are wanted; without it all that are there.
  RawInput(std::string path, Size size, FrameKind kind, std::optional<uint64_t> frames);
  ~RawInput();
  RawInput(const RawInput &) = delete;
  RawInput &operator=(const RawInput &) = delete;

  // Fills the bytes of a frame; false behind the last one.
  bool read(uint8_t *frame);

  // The file in quotes, for messages.
  const std::string &name() const { return name_; }

  // Unknown on standard input, unless it was said.
  std::optional<uint64_t> frame_count() const { return frames_; }

 private:
  std::string counted(uint64_t count) const;
  [[noreturn]] void fail_short(uint64_t rest) const;

  std::string path_, name_;
  Size size_;
  FrameKind kind_;
  uint64_t frames_read_ = 0;
  std::optional<uint64_t> frames_;
  std::FILE *file_ = nullptr;
};

}  // namespace ppl::tool
