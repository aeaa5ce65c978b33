// The golden cases, run through whatever the functions of ppl.h lead to.
#pragma once

#include <stdint.h>

#include "golden/golden_cases.h"

namespace ppl_test {

struct GoldenSums {
  uint32_t result;
  uint64_t output, frame, statistics;
};

// What tests/golden/golden.txt says, in the order of golden::cases.
inline constexpr GoldenSums golden_sums[] = {
#include "golden_sums.inc"
};
static_assert(sizeof(golden_sums) / sizeof(golden_sums[0]) == golden::case_count,
              "golden.txt and golden_cases.h do not belong together");

// Frames on 16-byte boundaries.
inline uint8_t golden_source[golden::largest_source_bytes] __attribute__((aligned(16)));
inline uint8_t golden_output[golden::largest_output_bytes] __attribute__((aligned(16)));

// Runs a case in a pool that is fresh from the load entry. The frame drivers do not save the
// floating-point state themselves: whoever calls this holds it.
inline golden::Checksums run_golden_case(const golden::Case &c) {
  return golden::run<golden::Library>(c, golden_source, golden_output);
}

inline bool is_golden(const golden::Checksums &sums, uint32_t index) {
  const GoldenSums &expected = golden_sums[index];
  return sums.result == expected.result && sums.output == expected.output &&
         sums.frame == expected.frame && sums.statistics == expected.statistics;
}

// The first two cases are the same but for their tier, and tiers sample different groups for the
// statistics: where the SSE2 tier does not run, both come out alike.
static_assert(golden::cases[0].tier == golden::Tier::p3 &&
              golden::cases[1].tier == golden::Tier::sse2 &&
              golden::cases[0].format == golden::cases[1].format &&
              golden::cases[0].width == golden::cases[1].width &&
              golden::cases[0].height == golden::cases[1].height);
constexpr uint32_t case_on_p3 = 0, case_on_sse2 = 1;

}  // namespace ppl_test
