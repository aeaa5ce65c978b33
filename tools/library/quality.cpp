#include "library/quality.h"

#include <fmt/core.h>

#include <iterator>

#include "base/note.h"
#include "library/context.h"

namespace ppl::tool {

const char *quality_name(uint32_t quality) {
  constexpr const char *names[] = {"accurate demosaic, sharpened",
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
  return quality < std::size(names) ? names[quality] : "";
}

bool writes_picture(uint32_t quality, Format format) {
  if (quality >= 5 && quality <= 8) return false;
  if (quality == 13) return format == Format::i420 || format == Format::rgb24;
  if (quality == 14) return !is_rgb(format);
  return true;
}

bool shows_stripes(const PplContext *context, Format format) {
  if (format != Format::rgb24 || tier_of(context) != Tier::p3 || !ppl_mean_collection(context))
    return false;
  const int decimation = ppl_decimation(context);
  return (ppl_quality(context) == 3 && decimation <= 0) ||
         (ppl_quality(context) == 13 && decimation != 0);
}

void note_stripes(uint32_t quality) {
  note(
      fmt::format("in the p3 tier rgb24 of quality {} shows stripes while statistics are gathered: "
                  "--set mean_collection=0 gives the clean picture",
                  quality));
}

}  // namespace ppl::tool
