#include "library/frame_source.h"

#include <fmt/core.h>

#include <cstring>

#include "base/failure.h"
#include "base/raw_input.h"
#include "library/raw_stream.h"

namespace ppl::tool {
namespace {

class RawFrames : public FrameSource {
 public:
  RawFrames(PplContext *context, const FrameFiles &files, Format format)
      : input_(files.names.at(0), files.size, {raw_bytes(files.size)}, files.frames),
        runner_(context, files.size, format) {}

  std::optional<FrameView> next() override {
    if (!input_.read(runner_.raw())) return std::nullopt;
    return runner_.run();
  }

  std::optional<uint64_t> frame_count() const override { return input_.frame_count(); }

 private:
  RawInput input_;
  FrameRunner runner_;
};

// Frames of packed video, one after the other; for interlaced video their fields lie woven in them.
class PackedFrames : public FrameSource {
 public:
  PackedFrames(PplContext *context, const FrameFiles &files, const VideoConversion &conversion)
      : interlaced_(conversion.interlaced),
        line_bytes_(2 * static_cast<size_t>(files.size.width)),
        runner_(context, files.size, conversion),
        frame_(frame_bytes(conversion.from, files.size)),
        input_(files.names.at(0), files.size, {frame_.size()}, files.frames) {}

  std::optional<FrameView> next() override {
    if (!input_.read(frame_.data())) return std::nullopt;
    if (interlaced_) {
      for (size_t line = 0; line < frame_.size() / line_bytes_; ++line)
        std::memcpy((line % 2 == 0 ? runner_.first() : runner_.second()) + line / 2 * line_bytes_,
                    &frame_[line * line_bytes_], line_bytes_);
    } else {
      std::memcpy(runner_.first(), frame_.data(), frame_.size());
    }
    return runner_.run();
  }

  std::optional<uint64_t> frame_count() const override { return input_.frame_count(); }

 private:
  bool interlaced_;
  size_t line_bytes_;
  VideoRunner runner_;
  std::vector<uint8_t> frame_;
  RawInput input_;
};

// Fields in files of their own.
class FieldFiles : public FrameSource {
 public:
  FieldFiles(PplContext *context, const FrameFiles &files, const VideoConversion &conversion)
      : runner_(context, files.size, conversion),
        first_(files.names.at(0), files.size, kind(), files.frames),
        second_(files.names.at(1), files.size, kind(), files.frames) {
    if (first_.frame_count() && second_.frame_count() &&
        *first_.frame_count() != *second_.frame_count())
      fail_unequal();
    if (files.names.size() < 3) return;
    RawInput reference(files.names[2], files.size, kind(), std::nullopt);
    if (reference.frame_count().value_or(1) != 1)
      throw Failure(fmt::format("{} holds {} fields: give one, that before the first of {}",
                                reference.name(), *reference.frame_count(), second_.name()));
    reference.read(runner_.reference());
    runner_.announce_reference();
  }

  std::optional<FrameView> next() override {
    const bool first = first_.read(runner_.first());
    const bool second = second_.read(runner_.second());
    if (first != second) fail_unequal();
    if (!first) return std::nullopt;
    return runner_.run();
  }

  std::optional<uint64_t> frame_count() const override {
    return first_.frame_count() ? first_.frame_count() : second_.frame_count();
  }

 private:
  FrameKind kind() const {
    return {runner_.input_bytes(), "field", "check --size, which is that of the whole frame"};
  }

  [[noreturn]] void fail_unequal() const {
    throw Failure(fmt::format("{} and {} hold different numbers of fields: use --frames",
                              first_.name(), second_.name()));
  }

  VideoRunner runner_;
  RawInput first_, second_;
};

}  // namespace

std::unique_ptr<FrameSource> raw_frames(PplContext *context, const FrameFiles &files,
                                        Format format) {
  return std::make_unique<RawFrames>(context, files, format);
}

std::unique_ptr<FrameSource> video_frames(PplContext *context, const FrameFiles &files,
                                          const VideoConversion &conversion) {
  if (files.names.size() > 1) return std::make_unique<FieldFiles>(context, files, conversion);
  return std::make_unique<PackedFrames>(context, files, conversion);
}

}  // namespace ppl::tool
