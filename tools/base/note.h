// Remarks on standard error about work that is done all the same.
#pragma once

#include <fmt/core.h>

#include <cstdint>
#include <cstdio>
#include <string>

namespace ppl::tool {

inline void note(const std::string &text) { fmt::print(stderr, "ppl: note: {}\n", text); }

inline void note_stripes(uint32_t quality) {
  note(
      fmt::format("in the p3 tier rgb24 of quality {} shows stripes while statistics are gathered: "
                  "--set mean_collection=0 gives the clean picture",
                  quality));
}

}  // namespace ppl::tool
