// What the library's statistics readers return, as JSON.
#pragma once

#include <ppl.h>

#include <nlohmann/json.hpp>

namespace ppl::tool {

// The last frame's statistics. Each member has the name of its reader without the prefix.
nlohmann::ordered_json statistics_of(const PplContext *context);

// What the numbers in it mean.
nlohmann::ordered_json statistics_units();

}  // namespace ppl::tool
