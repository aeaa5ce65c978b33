// Where convert takes its frames from: a file, through the library.
#pragma once

#include <ppl.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/frame_format.h"
#include "library/video_stream.h"

namespace ppl::tool {

// Finished frames, one after the other.
class FrameSource {
 public:
  virtual ~FrameSource() = default;

  // The view holds until the next call; none behind the last frame.
  virtual std::optional<FrameView> next() = 0;

  virtual std::optional<uint64_t> frame_count() const = 0;  // where it is known
};

struct FrameFiles {
  std::vector<std::string> names;  // several only for fields: even lines, odd lines, reference
  Size size;                       // of the whole frame
  std::optional<uint64_t> frames;  // how many are wanted; without it all that are there
};

// Raw mosaic frames.
std::unique_ptr<FrameSource> raw_frames(PplContext *context, const FrameFiles &files,
                                        Format format);

// Packed video. Fields come from a file of whole frames or from two or three files of fields.
std::unique_ptr<FrameSource> video_frames(PplContext *context, const FrameFiles &files,
                                          const VideoConversion &conversion);

}  // namespace ppl::tool
