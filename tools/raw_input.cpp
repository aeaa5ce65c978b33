#include "raw_input.h"

#include <fmt/core.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "failure.h"

namespace ppl::tool {

RawInput::RawInput(std::string path, Size size, std::optional<uint64_t> frames)
    : path_(std::move(path)),
      name_(path_ == "-" ? "standard input" : fmt::format("'{}'", path_)),
      size_(size),
      frame_bytes_(static_cast<uint64_t>(size.width) * size.height),
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
    const uint64_t whole = bytes / frame_bytes_;
    if (!frames_) {
      if (whole == 0 || bytes % frame_bytes_ != 0) {
        frames_read_ = whole;
        fail_short(bytes % frame_bytes_);
      }
      frames_ = whole;
    } else if (whole < *frames_) {
      throw Failure(
          fmt::format("{} holds {} whole frame{} of {}x{}, not {}: lower --frames or check --size",
                      name_, whole, whole == 1 ? "" : "s", size_.width, size_.height, *frames_));
    }
  }
  file_ = std::fopen(path_.c_str(), "rb");
  if (!file_) throw Failure(fmt::format("cannot read {}: {}", name_, std::strerror(errno)));
}

RawInput::~RawInput() {
  if (file_ && file_ != stdin) std::fclose(file_);
}

void RawInput::fail_short(uint64_t rest) const {
  throw Failure(
      fmt::format("{} is too short: {}x{} needs {} bytes a frame, and after {} whole frame{} there "
                  "are {} left; check --size",
                  name_, size_.width, size_.height, frame_bytes_, frames_read_,
                  frames_read_ == 1 ? "" : "s", rest));
}

bool RawInput::read(uint8_t *frame) {
  if (frames_ && frames_read_ == *frames_) return false;
  const size_t count = std::fread(frame, 1, frame_bytes_, file_);
  if (count == frame_bytes_) {
    ++frames_read_;
    return true;
  }
  if (std::ferror(file_))
    throw Failure(fmt::format("cannot read {}: {}", name_, std::strerror(errno)));
  if (count == 0 && !frames_ && frames_read_ > 0) return false;
  fail_short(count);
}

}  // namespace ppl::tool
