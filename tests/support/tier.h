// The two tiers. Needs nothing but the language, so that it also serves where there is no library.
#pragma once

#include <stdint.h>

namespace ppl_test {

enum class Tier : uint8_t { p3, sse2 };
inline constexpr Tier both_tiers[] = {Tier::p3, Tier::sse2};

constexpr const char *name_of(Tier tier) { return tier == Tier::p3 ? "P3" : "SSE2"; }

}  // namespace ppl_test
