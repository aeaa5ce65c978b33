// The golden cases and their checksums as lines of text, and the model as a side that runs them.
#pragma once

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "golden/golden_cases.h"
#include "model/model.h"
#include "support/fingerprint.h"

namespace golden {

struct Model {
  using Context = ppl_model::PplContext;
#define PPL_GOLDEN_FUNCTION(name, ...) static constexpr auto name = &ppl_model::name;
  PPL_GOLDEN_API(PPL_GOLDEN_FUNCTION)
  PPL_GOLDEN_VIDEO(PPL_GOLDEN_FUNCTION)
  PPL_GOLDEN_FIELDS(PPL_GOLDEN_FUNCTION)
#undef PPL_GOLDEN_FUNCTION
};

inline std::string describe(const Case &c) {
  static constexpr const char *formats[] = {"I420", "YUYV", "UYVY", "RGB24", "RGB32"};
  static constexpr const char *mirrors[] = {"-", "h", "v", "hv"};
  static constexpr const char *controls[] = {"defaults",      "front-end", "curves", "own-curves",
                                             "colour",        "matrix",    "bands",  "motion",
                                             "no-collection", "refused"};
  std::ostringstream out;
  const bool is_raw = c.video == Video::none;
  out << (is_raw ? formats[static_cast<size_t>(c.format)] : kind_of(c.video).name);
  out << " " << c.width << "x" << c.height;
  if (c.stride != 0) out << "/" << c.stride;
  if (c.top + c.bottom != 0) out << "+" << int{c.top} << "+" << int{c.bottom};
  if (is_raw) out << " quality=" << int{c.quality};
  out << " d=" << int{c.decimation} << (c.tier == Tier::p3 ? " p3 " : " sse2 ")
      << mirrors[c.mirrors] << " " << controls[static_cast<size_t>(c.controls)];
  if (c.frames != 1) out << " frames=" << int{c.frames};
  return out.str();
}

inline std::string checksums(const Checksums &sums) {
  return std::to_string(sums.result) + " " + ppl_test::hexadecimal(sums.output) + " " +
         ppl_test::hexadecimal(sums.frame) + " " + ppl_test::hexadecimal(sums.statistics);
}

struct Line {
  std::string description, sums;
};

inline std::vector<Line> read_lines(const std::string &path) {
  std::vector<Line> lines;
  std::ifstream file(path);
  for (std::string text; std::getline(file, text);) {
    const size_t bar = text.find(" | ");
    if (text.empty() || text[0] == '#' || bar == text.npos) continue;
    lines.push_back({text.substr(0, bar), text.substr(bar + 3)});
  }
  return lines;
}

// False if the last frame that the model ran has results that may be anything: no checksum then.
inline bool model_is_definite() {
  return ppl_model::free_bytes().empty() && !ppl_model::picture_is_free() &&
         !ppl_model::source_is_free() && !ppl_model::statistics_are_free();
}

}  // namespace golden
