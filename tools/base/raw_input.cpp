#include "base/raw_input.h"

#include <fmt/core.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "base/failure.h"

namespace ppl::tool {

RawInput::RawInput(std::string path, Size size, FrameKind kind, std::optional<uint64_t> frames)
    : path_(std::move(path)),
      name_(path_ == "-" ? "standard input" : fmt::format("'{}'", path_)),
      size_(size),
      kind_(kind),
      frames_(frames) {
  if (path_ == "-") {
    file_ = stdin;
    return;
  }
  struct stat status;
  if (stat(path_.c_str(), &status) != 0)
    throw Failure(fmt::format("cannot read {}: {}; check the name", name_, std::strerror(errno)));
  if (S_ISDIR(status.st_mode))
    throw Failure(fmt::format("cannot read {}: it is a folder; name a file in it", name_));
  if (S_ISREG(status.st_mode)) {
    const auto bytes = static_cast<uint64_t>(status.st_size);
    const uint64_t whole = bytes / kind_.bytes;
    if (whole == 0) fail_short(bytes);
    if (!frames_) {
      if (bytes % kind_.bytes != 0) {
        frames_read_ = whole;
        fail_short(bytes % kind_.bytes);
      }
      frames_ = whole;
    } else if (whole < *frames_) {
      throw Failure(fmt::format("{} holds {} of {}x{}, not {}: lower --frames or {}", name_,
                                counted(whole), size_.width, size_.height, *frames_, kind_.advice));
    }
  }
  file_ = std::fopen(path_.c_str(), "rb");
  if (!file_) throw Failure(fmt::format("cannot read {}: {}", name_, std::strerror(errno)));
}

RawInput::~RawInput() {
  if (file_ && file_ != stdin) std::fclose(file_);
}

std::string RawInput::counted(uint64_t count) const {
  return fmt::format("{} whole {}{}", count, kind_.noun, count == 1 ? "" : "s");
}

void RawInput::fail_short(uint64_t rest) const {
  throw Failure(
      fmt::format("{} is too short: {}x{} needs {} bytes a {}, and after {} there are {} left; {}",
                  name_, size_.width, size_.height, kind_.bytes, kind_.noun, counted(frames_read_),
                  rest, kind_.advice));
}

bool RawInput::read(uint8_t *frame) {
  if (frames_ && frames_read_ == *frames_) return false;
  const size_t count = std::fread(frame, 1, kind_.bytes, file_);
  if (count == kind_.bytes) {
    ++frames_read_;
    return true;
  }
  if (std::ferror(file_))
    throw Failure(fmt::format("cannot read {}: {}", name_, std::strerror(errno)));
  if (count == 0 && !frames_ && frames_read_ > 0) return false;
  fail_short(count);
}

}  // namespace ppl::tool
