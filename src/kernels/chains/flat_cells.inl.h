// Flat cell smoothing: where twelve differences between green samples around a cell all stay within
// a threshold, the cell's four pixels take one averaged colour.
//
//   r - 2    .  .  g  .  g  .      the green samples that are compared, for an odd r; for an even r
//   r - 1    .  g  .  g  .  g      the same upside down
//   r        g  . [g  .] g  .
//   r + 1    .  g [.  g] .  g      [ ] is the cell
//   r + 2    g  .  g  .  g  .
//   r + 3    .  g  .  g  .  .
//
// Cells span lines r and r + 1; r is odd in quality 10 and even in quality 11, so that the two
// green phases change places. Reach: lines r - 2 to r + 3, columns x - 2 to x + 3.
#pragma once

#include "kernels/chains/demosaic.inl.h"

namespace ppl::TARGET {
namespace {

struct SamplePlace {
  int8_t line, column;  // from r and from the cell's even column
};
struct SamplePair {
  SamplePlace p, q;
};

constexpr SamplePair odd_row_pairs[12] = {
    {{-2, 0}, {0, 0}}, {{-2, 2}, {0, 2}}, {{0, 2}, {2, 2}},    {{2, 0}, {2, 2}},
    {{2, 0}, {2, -2}}, {{0, 0}, {0, -2}}, {{-1, 1}, {-1, -1}}, {{-1, 1}, {-1, 3}},
    {{1, 1}, {1, 3}},  {{1, 1}, {3, 1}},  {{1, -1}, {3, -1}},  {{-1, -1}, {1, -1}},
};
constexpr SamplePair even_row_pairs[12] = {
    {{-1, 0}, {-1, 2}}, {{-1, 0}, {-1, -2}}, {{1, 0}, {1, -2}}, {{-1, 2}, {1, 2}},
    {{1, 2}, {3, 2}},   {{1, 0}, {3, 0}},    {{-2, 1}, {0, 1}}, {{-2, -1}, {0, -1}},
    {{0, -1}, {2, -1}}, {{0, 1}, {0, 3}},    {{2, 1}, {2, 3}},  {{2, 1}, {2, -1}},
};

// A row of cells: a mask word and three colour words each.
struct CellRow {
  uint8_t *mask = nullptr, *rgb[3] = {};
  int row = -2;  // the line r it belongs to
};

// Both stages work on whole registers and take the even columns at the end: a cell's values stand
// in the low byte of its word.

// `in` is lines r - 2 to r + 3.
template <bool odd_row>
[[gnu::flatten]] void find_flat_cells(CellRow &cells, const uint8_t *const in[6], int width,
                                      Vec::type threshold) {
  constexpr const SamplePair(&pairs)[12] = odd_row ? odd_row_pairs : even_row_pairs;
  for (int x = 0; x < width; x += Vec::size) {
    const auto sample = [&](SamplePlace at) { return Vec::load(in[2 + at.line] + x + at.column); };
    const auto difference = [&](int i) {
      const auto p = sample(pairs[i].p);
      const auto q = sample(pairs[i].q);
      return Vec::bit_or(Vec::subtract_saturated_u8(p, q), Vec::subtract_saturated_u8(q, p));
    };
    const auto largest_of_four = [&](int i) {
      return Vec::max_u8(Vec::max_u8(difference(i), difference(i + 1)),
                         Vec::max_u8(difference(i + 2), difference(i + 3)));
    };
    const auto largest =
        Vec::max_u8(Vec::max_u8(largest_of_four(0), largest_of_four(4)), largest_of_four(8));
    const auto excess = Vec::columns<false>(Vec::subtract_saturated_u8(largest, threshold));
    Vec::store(cells.mask + x, Vec::equal_words(excess, Vec::zero()));
  }
}

// `in` is lines r - 1 to r + 2.
template <bool odd_row>
[[gnu::flatten]] void average_cells(CellRow &cells, const uint8_t *const in[4], int width) {
  for (int x = 0; x < width; x += Vec::size) {
    // VA averages lines r - 1 and r + 1, VB lines r and r + 2.
    const auto VA = [&](int column) {
      return Vec::average_u8(Vec::load(in[0] + x + column), Vec::load(in[2] + x + column));
    };
    const auto VB = [&](int column) {
      return Vec::average_u8(Vec::load(in[1] + x + column), Vec::load(in[3] + x + column));
    };
    const auto red_rows = [&](int column) { return odd_row ? VB(column) : VA(column); };
    const auto blue_rows = [&](int column) { return odd_row ? VA(column) : VB(column); };
    const auto R = Vec::average_u8(red_rows(1), red_rows(-1));
    const auto B = Vec::average_u8(blue_rows(2), blue_rows(0));
    const auto G = Vec::average_u8(Vec::average_u8(blue_rows(1), blue_rows(-1)),
                                   Vec::average_u8(red_rows(2), red_rows(0)));
    Vec::store(cells.rgb[0] + x, Vec::columns<false>(R));
    Vec::store(cells.rgb[1] + x, Vec::columns<false>(G));
    Vec::store(cells.rgb[2] + x, Vec::columns<false>(B));
  }
}

// The cells' colour in place of the pixels', on either line of a cell row.
inline void replace_flat_cells(const CellRow &cells, uint8_t *const line[3], int width) {
  for (int x = 0; x < width; x += Vec::size) {
    const auto mask = Vec::load(cells.mask + x);
    for (int i = 0; i < 3; ++i) {
      const auto value = Vec::load(cells.rgb[i] + x);
      Vec::store(line[i] + x,
                 Vec::blend(mask, Vec::join_columns(value, value), Vec::load(line[i] + x)));
    }
  }
}

// Keeps the last block's cells. Qualities 0 and 1 will find them.
inline void leave_flat_cells(const CellRow &cells, TierMemory &memory, int width) {
  const int last_block = (width - 1) / block * block;
  Block::store_words(memory.flat_cell_mask, Block::load(cells.mask + last_block));
  for (int i = 0; i < 3; ++i) {
    Block::store_words(memory.flat_cell_rgb[i], Block::load(cells.rgb[i] + last_block));
  }
}

// What was left, in every block of the line of qualities 0 and 1. Meant so: docs/oddities.md,
// "Stale flat cells".
inline void replace_stale_cells(const TierMemory &memory, uint8_t *const line[3], int width) {
  const auto mask = Vec::repeat_block(memory.flat_cell_mask);
  for (int i = 0; i < 3; ++i) {
    const auto value = Vec::repeat_block(memory.flat_cell_rgb[i]);
    const auto pixels = Vec::join_columns(value, value);
    for (int x = 0; x < width; x += Vec::size) {
      Vec::store(line[i] + x, Vec::blend(mask, pixels, Vec::load(line[i] + x)));
    }
  }
}

inline bool has_stale_cells(const TierMemory &memory) {
  for (int i = 0; i < block / 2; ++i) {
    if (memory.flat_cell_mask[i] != 0) return true;
  }
  return false;
}

}  // namespace
}  // namespace ppl::TARGET
