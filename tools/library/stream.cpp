#include "library/stream.h"

#include <fmt/core.h>

#include <algorithm>

#include "base/failure.h"

namespace ppl::tool {
namespace {

using Entry = uint8_t(PPL_CALL *)(PplContext *, uint8_t *, uint8_t *, uint32_t, uint32_t);
using Driver = uint8_t(PPL_CALL *)(PplContext *, uint8_t *, uint8_t *, uint32_t, uint32_t,
                                   uint32_t);

struct Functions {
  Format format;
  Entry plain, halved, doubled;
  Driver driver;
};

constexpr Functions kFunctions[] = {
    {Format::kI420, BaylorToI420MMX, BaylorToI420MMX_deci_2_1, BaylorToI420MMX_intp_1_2,
     ppl_process_blrtoi420},
    {Format::kYuyv, BaylorToYUYVMMX, BaylorToYUYVMMX_deci_2_1, BaylorToYUYVMMX_intp_1_2,
     ppl_process_blrtoyuyv},
    {Format::kUyvy, BaylorToUYVYMMX, BaylorToUYVYMMX_deci_2_1, BaylorToUYVYMMX_intp_1_2,
     ppl_process_blrtouyvy},
    {Format::kRgb24, BaylorToRGB24MMX, BaylorToRGB24MMX_deci_2_1, BaylorToRGB24MMX_intp_1_2,
     ppl_process_blrtorgb24},
    {Format::kRgb32, BaylorToRGB32MMX, BaylorToRGB32MMX_deci_2_1, BaylorToRGB32MMX_intp_1_2,
     ppl_process_blrtorgb32},
};

const Functions &functions_of(Format format) {
  return *std::find_if(std::begin(kFunctions), std::end(kFunctions),
                       [&](const Functions &f) { return f.format == format; });
}

bool is_grey_copy(uint32_t quality) { return quality == 4 || quality == 9; }

}  // namespace

const char *tier_name(Tier tier) {
  switch (tier) {
    case Tier::kNone:
      return "none";
    case Tier::kP3:
      return "p3";
    case Tier::kSse2:
      return "sse2";
  }
  return "";
}

Context::Context() : context_(ppl_init()) {
  if (!context_) throw Failure("all contexts of the library are taken: free one first");
}

Tier usable_tier() {
  // Each tier that is there refuses widths for which its statistics grid would be empty.
  const Context context;
  if (!ppl_new_frame_size(context, 64, 48, 64)) return Tier::kSse2;
  if (!ppl_new_frame_size(context, 56, 48, 56)) return Tier::kP3;
  return Tier::kNone;
}

Tier tier_of(const PplContext *context) {
  const Tier best = usable_tier();
  return best == Tier::kSse2 && ppl_P3_only(context) ? Tier::kP3 : best;
}

const char *quality_name(uint32_t quality) {
  constexpr const char *kNames[] = {"accurate demosaic, sharpened",
                                    "accurate demosaic",
                                    "demosaic by averages",
                                    "demosaic within the cell",
                                    "grey copy of the samples",
                                    "nothing",
                                    "nothing",
                                    "nothing",
                                    "nothing",
                                    "grey copy of the samples",
                                    "0 with flat areas smoothed",
                                    "1 with flat areas smoothed",
                                    "samples as grey, sharpened",
                                    "samples as grey",
                                    "green accurate, chroma smoothed"};
  return quality < std::size(kNames) ? kNames[quality] : "";
}

bool writes_picture(uint32_t quality, Format format) {
  if (quality >= 5 && quality <= 8) return false;
  if (quality == 13) return format == Format::kI420 || format == Format::kRgb24;
  if (quality == 14) return !is_rgb(format);
  return true;
}

bool shows_stripes(const PplContext *context, Format format) {
  if (format != Format::kRgb24 || tier_of(context) != Tier::kP3 || !ppl_mean_collection(context))
    return false;
  const int decimation = ppl_decimation(context);
  return (ppl_quality(context) == 3 && decimation <= 0) ||
         (ppl_quality(context) == 13 && decimation != 0);
}

void set_frame_size(PplContext *context, Size size) {
  const bool even = size.width % 2 == 0 && size.height % 2 == 0;
  if (even && ppl_new_frame_size(context, size.width, size.height, size.width)) return;
  const char *least = usable_tier() == Tier::kSse2 ? "128" : "64";
  throw Failure(
      fmt::format("the size {}x{} is refused: give an even width from {} to 1280 and an even "
                  "height from 18 to 1024",
                  size.width, size.height, least));
}

void require_tier() {
  if (usable_tier() == Tier::kNone)
    throw Failure(
        "this processor has no MMX with the integer SSE instructions, so no frame can be "
        "processed");
}

FrameRunner::FrameRunner(PplContext *context, Size input, Format format)
    : context_(context), input_(input), raw_(raw_bytes(input)), out_(context, input, format) {
  require_tier();
}

FrameView FrameRunner::run() {
  const Functions &functions = functions_of(out_.format());
  out_.fill_black();

  // The entry functions set the decimation that their names say, without black lines. What none of
  // them stands for goes to the driver itself, which is theirs but for the alignment and tier
  // tests.
  const int decimation = ppl_decimation(context_);
  const bool black_lines =
      ppl_decimation_top_black_lines(context_) || ppl_decimation_bottom_black_lines(context_);
  const auto start = std::chrono::steady_clock::now();
  uint8_t done;
  if (black_lines || decimation > 1) {
    done = functions.driver(context_, raw_.data(), out_.data(), input_.width, input_.height,
                            input_.width);
  } else {
    const Entry entry = decimation == 0  ? functions.plain
                        : decimation > 0 ? functions.halved
                                         : functions.doubled;
    done = entry(context_, raw_.data(), out_.data(), input_.width, input_.height);
  }
  duration_ = std::chrono::steady_clock::now() - start;
  if (!done && !is_grey_copy(ppl_quality(context_)))
    throw Failure(fmt::format("the library did not process the {} frame: check --size",
                              format_name(out_.format())));
  return out_.view();
}

}  // namespace ppl::tool
