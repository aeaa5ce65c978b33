// What the library's default pipeline and its quality 0 are measured against: the same work in
// plain C++, with tables composed beforehand and loops that the compiler can turn into vector code.
// Same bytes in the output, same bytes left in the raw frame; no statistics. The colour loops are
// those of several that came out fastest.
#pragma once

#include <cstdint>

namespace ppl::bench {

// A row of a colour matrix in Q6 and its rounding term.
struct PlainMatrixRow {
  int16_t r, g, b, rounding;
};

// What the stages of quality 0 go by.
struct PlainChain {
  int16_t green_threshold;
  // Rows Y, U, V; each coefficient is its base plus the chroma index times its slope, in Q8.
  int16_t slope[3][3], base[3][3];
  int16_t index_bound;
  int16_t edge_low, edge_high, edge_factor;  // factor in Q6
};

struct PlainTables {
  // Black level, gain, delta and curve in one, by line and column of the 2 by 2 cell.
  uint8_t sample[2][2][256];
  PlainMatrixRow yuv[3], rgb[3];
  PlainChain chain;
};

using PlainLoop = void (*)(const PlainTables &tables, uint8_t *src, uint8_t *dst, int width,
                           int height);

struct PlainLoops {
  PlainLoop i420, yuyv, rgb24, rgb32;
};

// The loops as one translation unit's flags make them. `by_bytes` looks up as one writes it down: a
// byte is loaded, looked up and stored. `by_words` joins four samples in a register before they are
// stored, which is the best that we know without vector instructions in the source.
struct PlainBuild {
  PlainLoops by_bytes, by_words;
  PlainLoop quality_0_to_i420;  // looks up by words
};

namespace built_for_sse2 {
extern const PlainBuild plain_build;
}
namespace built_for_avx2 {
extern const PlainBuild plain_build;
}

}  // namespace ppl::bench
