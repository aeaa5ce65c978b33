// Raw frames from a file or from standard input.
#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

#include "frame_format.h"

namespace ppl::tool {

// Reads frames of one size, one after the other. A file whose size is known is judged as a whole
// before the first frame; standard input as it comes. Failures throw Failure.
class RawInput {
 public:
  // frames: how many are wanted; without it all that are there.
  RawInput(std::string path, Size size, std::optional<uint64_t> frames);
  ~RawInput();
  RawInput(const RawInput &) = delete;
  RawInput &operator=(const RawInput &) = delete;

  // Fills width times height bytes; false behind the last frame.
  bool read(uint8_t *frame);

  // Unknown on standard input, unless it was said.
  std::optional<uint64_t> frame_count() const { return frames_; }

 private:
  [[noreturn]] void fail_short(uint64_t rest) const;

  std::string path_, name_;
  Size size_;
  uint64_t frame_bytes_, frames_read_ = 0;
  std::optional<uint64_t> frames_;
  std::FILE *file_ = nullptr;
};

}  // namespace ppl::tool
