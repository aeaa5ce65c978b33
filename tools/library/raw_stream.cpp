#include "library/raw_stream.h"

#include <fmt/core.h>

#include <algorithm>

#include "base/failure.h"
#include "library/context.h"

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

constexpr Functions all_functions[] = {
    {Format::i420, BaylorToI420MMX, BaylorToI420MMX_deci_2_1, BaylorToI420MMX_intp_1_2,
     ppl_process_blrtoi420},
    {Format::yuyv, BaylorToYUYVMMX, BaylorToYUYVMMX_deci_2_1, BaylorToYUYVMMX_intp_1_2,
     ppl_process_blrtoyuyv},
    {Format::uyvy, BaylorToUYVYMMX, BaylorToUYVYMMX_deci_2_1, BaylorToUYVYMMX_intp_1_2,
     ppl_process_blrtouyvy},
    {Format::rgb24, BaylorToRGB24MMX, BaylorToRGB24MMX_deci_2_1, BaylorToRGB24MMX_intp_1_2,
     ppl_process_blrtorgb24},
    {Format::rgb32, BaylorToRGB32MMX, BaylorToRGB32MMX_deci_2_1, BaylorToRGB32MMX_intp_1_2,
     ppl_process_blrtorgb32},
};

const Functions &functions_of(Format format) {
  return *std::find_if(std::begin(all_functions), std::end(all_functions),
                       [&](const Functions &f) { return f.format == format; });
}

bool is_grey_copy(uint32_t quality) { return quality == 4 || quality == 9; }

}  // namespace

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
