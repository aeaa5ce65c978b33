// The library's only scratch: lines in flight, handed out anew by each pass.
#pragma once

#include <stdint.h>

namespace ppl {

// The widest register that a pass may use, in bytes. Lines start on such a boundary, with as much
// room before them and behind them: stages look beside a line, read and write whole registers.
inline constexpr int line_margin = 64;

inline constexpr int widest_line = 1280;

// From a line of `length` bytes to the next one: an odd number of cache lines, so that the same
// column of many lines does not fall into few sets of the cache.
constexpr int line_pitch(int length) {
  constexpr int cache_line = 64;
  const int pitch = (length + line_margin - 1) / line_margin * line_margin + 2 * line_margin;
  return pitch / cache_line % 2 != 0 ? pitch : pitch + cache_line;
}

// Enough for the pass that needs most; each family of passes proves it for its own.
inline constexpr int line_memory_bytes = 56 * 1024;

}  // namespace ppl
