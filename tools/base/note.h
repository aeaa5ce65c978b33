// Remarks on standard error about work that is done all the same.
#pragma once

#include <fmt/core.h>

#include <cstdio>
#include <string>

namespace ppl::tool {

inline void note(const std::string &text) { fmt::print(stderr, "ppl: note: {}\n", text); }

}  // namespace ppl::tool
