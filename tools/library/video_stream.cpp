#include "library/video_stream.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "base/failure.h"
#include "library/context.h"

namespace ppl::tool {
namespace {

using Progressive = uint8_t(PPL_CALL *)(PplContext *, const uint8_t *, uint8_t *, uint32_t,
                                        uint32_t, uint32_t, uint32_t);
using Interlaced = uint8_t(PPL_CALL *)(PplContext *, const uint8_t *, const uint8_t *,
                                       const uint8_t *, uint8_t *, uint32_t, uint32_t, uint32_t,
                                       uint32_t);

// Null where the library has no such conversion, or has one by name that converts nothing.
struct Functions {
  Format from, to;
  Progressive progressive;
  Interlaced motion, no_motion;
};

constexpr Functions all_functions[] = {
    {Format::yuyv, Format::i420, YUYVToI420MMX, IntlYUYVToI420MMX, IntlYUYVToI420MMX_no_motion},
    {Format::yuyv, Format::rgb24, YUYVToRGB24MMX, IntlYUYVToRGB24MMX, IntlYUYVToRGB24MMX_no_motion},
    {Format::yuyv, Format::yuyv, nullptr, IntlYUYVToYUYVMMX, IntlYUYVToYUYVMMX_no_motion},
    {Format::yuyv, Format::uyvy, nullptr, IntlYUYVToUYVYMMX, nullptr},
    {Format::uyvy, Format::i420, UYVYToI420MMX, IntlUYVYToI420MMX, IntlUYVYToI420MMX_no_motion},
    {Format::uyvy, Format::rgb24, UYVYToRGB24MMX, IntlUYVYToRGB24MMX, IntlUYVYToRGB24MMX_no_motion},
    {Format::uyvy, Format::uyvy, nullptr, IntlUYVYToUYVYMMX, IntlUYVYToUYVYMMX_no_motion},
    {Format::uyvy, Format::yuyv, nullptr, IntlUYVYToYUYVMMX, nullptr},
};

Interlaced interlaced_function(const Functions &functions, const VideoConversion &conversion) {
  return conversion.tests_motion ? functions.motion : functions.no_motion;
}

bool exists(const Functions &functions, const VideoConversion &conversion) {
  return conversion.interlaced ? interlaced_function(functions, conversion) != nullptr
                               : functions.progressive != nullptr;
}

const Functions *find_functions(const VideoConversion &conversion) {
  const auto *found = std::find_if(
      std::begin(all_functions), std::end(all_functions), [&](const Functions &functions) {
        return functions.from == conversion.from && functions.to == conversion.to &&
               exists(functions, conversion);
      });
  return found == std::end(all_functions) ? nullptr : found;
}

std::string targets_of(VideoConversion conversion) {
  std::string names;
  for (const FormatInfo &info : formats()) {
    conversion.to = info.format;
    if (find_functions(conversion)) names += (names.empty() ? "" : ", ") + std::string(info.name);
  }
  return names;
}

std::string description(const VideoConversion &conversion) {
  return fmt::format(
      "{} {} video{}", conversion.interlaced ? "interlaced" : "progressive",
      format_name(conversion.from),
      conversion.interlaced && !conversion.tests_motion ? " without the motion test" : "");
}

}  // namespace

void require_conversion(const PplContext *context, const VideoConversion &conversion) {
  if (!find_functions(conversion))
    throw Failure(fmt::format("{} does not become {}: use --format with one of {}",
                              description(conversion), format_name(conversion.to),
                              targets_of(conversion)));
  const int decimation = ppl_decimation(context);
  if (!conversion.interlaced && decimation != 0)
    throw Failure("progressive video is not scaled: leave out the decimation");
  if (conversion.interlaced && !conversion.tests_motion && decimation < 0)
    throw Failure(
        "interlaced video is doubled with the motion test only: leave out --no-motion-test");
  const bool mirrors = ppl_h_mirror(context) || ppl_v_mirror(context);
  if (mirrors && (conversion.interlaced || conversion.to != Format::i420))
    throw Failure(fmt::format("{} is not mirrored on its way to {}: leave out the mirror",
                              description(conversion), format_name(conversion.to)));
}

VideoRunner::VideoRunner(PplContext *context, Size input, VideoConversion conversion)
    : context_(context),
      input_(input),
      conversion_(conversion),
      first_(input_bytes()),
      second_(input_bytes()),
      reference_(input_bytes()),
      out_(context, input, conversion.to) {
  require_tier();
  require_conversion(context, conversion);
}

size_t VideoRunner::input_bytes() const {
  return frame_bytes(conversion_.from, input_) / (conversion_.interlaced ? 2 : 1);
}

FrameView VideoRunner::run() {
  const Functions &functions = *find_functions(conversion_);
  const Size out = out_.size();
  out_.fill_black();
  FrameView view = out_.view();
  uint8_t done;
  if (conversion_.interlaced) {
    if (!has_reference_) std::memcpy(reference(), second(), input_bytes());
    done = interlaced_function(functions, conversion_)(context_, reference(), first(), second(),
                                                       out_.data(), input_.width, input_.height,
                                                       out.width, out.height);
    std::swap(reference_, second_);
    has_reference_ = true;
    if (ppl_decimation(context_) == 0)
      view.scan = ppl_decimation_top_black_lines(context_) % 2 == 0 ? Scan::even_lines_first
                                                                    : Scan::odd_lines_first;
  } else {
    done = functions.progressive(context_, first(), out_.data(), input_.width, input_.height,
                                 out.width, out.height);
  }
  if (!done)
    throw Failure(fmt::format("the library did not convert the {} frame: check --size",
                              format_name(conversion_.from)));
  return view;
}

}  // namespace ppl::tool
