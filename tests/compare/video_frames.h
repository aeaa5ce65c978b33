// The steps that run packed video.
#pragma once

#include <stdint.h>

#include <string>
#include <type_traits>

#include "compare/operations.h"
#include "compare/raw_frames.h"

namespace ppl_compare {

enum class VideoSource { packed, yyyy, rgb24, fields };

// The buffers and sizes of a call. A frame has one source; of fields the reference comes first,
// then the field of the even lines, then that of the odd ones.
struct VideoCall {
  uint8_t *sources[3];
  uint8_t *output;
  uint32_t width, height, out_width, out_height;
};

struct VideoFunction {
  VideoSource source;
  PixelFormat format;
  bool is_entry;
  uint8_t (*library)(::PplContext *, const VideoCall &);
  uint8_t (*model)(ppl_model::PplContext *, const VideoCall &);
};

template <auto Function, class Context>
uint8_t call_video(Context *ctx, const VideoCall &call) {
  const auto &[sources, output, width, height, out_width, out_height] = call;
  if constexpr (std::is_invocable_v<decltype(Function), Context *, uint8_t *, uint8_t *, uint32_t,
                                    uint32_t, uint32_t, uint32_t>)
    return Function(ctx, sources[0], output, width, height, out_width, out_height);
  else
    return Function(ctx, sources[0], sources[1], sources[2], output, width, height, out_width,
                    out_height);
}

void generate_video_frame(Generator &generator, Step &step);
std::string run_video_frame(Session &session, const Step &step, const VideoFunction &function);

}  // namespace ppl_compare
