#include "model/chain_flat_cells.h"

#include <cstdlib>

#include "model/arithmetic.h"

namespace ppl_model {

namespace {

struct Place {
  int dy, dx;
};
struct Comparison {
  Place first, second;
};
using Comparisons = std::array<Comparison, 12>;

// Six among the eight nearest samples of one green phase, six of the other; none mixes Gr and Gb.
// Counted from the cell's first line and column.
constexpr Comparisons odd_line_comparisons = {{
    {{-2, 0}, {0, 0}},
    {{-2, 2}, {0, 2}},
    {{0, 2}, {2, 2}},
    {{2, 0}, {2, 2}},
    {{2, 0}, {2, -2}},
    {{0, 0}, {0, -2}},
    {{-1, 1}, {-1, -1}},
    {{-1, 1}, {-1, 3}},
    {{1, 1}, {1, 3}},
    {{1, 1}, {3, 1}},
    {{1, -1}, {3, -1}},
    {{-1, -1}, {1, -1}},
}};
constexpr Comparisons even_line_comparisons = {{
    {{-1, 0}, {-1, 2}},
    {{-1, 0}, {-1, -2}},
    {{1, 0}, {1, -2}},
    {{-1, 2}, {1, 2}},
    {{1, 2}, {3, 2}},
    {{1, 0}, {3, 0}},
    {{-2, 1}, {0, 1}},
    {{-2, -1}, {0, -1}},
    {{0, -1}, {2, -1}},
    {{0, 1}, {0, 3}},
    {{2, 1}, {2, 3}},
    {{2, 1}, {2, -1}},
}};

bool cell_is_flat(int threshold, const Comparisons &comparisons, const StageLines &frame, int r,
                  int x) {
  const auto sample = [&](const Place &place) { return frame.at(r, place.dy, x + place.dx); };
  return std::all_of(comparisons.begin(), comparisons.end(), [&](const Comparison &pair) {
    return std::abs(sample(pair.first) - sample(pair.second)) <= threshold;
  });
}

// The rounded averages over the cell and the ring around it.
Rgb cell_colour(FlatCells cells, const StageLines &frame, int r, int x) {
  // Lines above and below the cell's first, and those above and below its second.
  const auto around_first = [&](int dx) {
    return average(static_cast<uint8_t>(frame.at(r, -1, x + dx)),
                   static_cast<uint8_t>(frame.at(r, 1, x + dx)));
  };
  const auto around_second = [&](int dx) {
    return average(static_cast<uint8_t>(frame.at(r, 0, x + dx)),
                   static_cast<uint8_t>(frame.at(r, 2, x + dx)));
  };
  const auto first_odd = [&] { return average(around_first(1), around_first(-1)); };
  const auto first_even = [&] { return average(around_first(2), around_first(0)); };
  const auto second_odd = [&] { return average(around_second(1), around_second(-1)); };
  const auto second_even = [&] { return average(around_second(2), around_second(0)); };
  if (cells == FlatCells::odd_lines)
    return {second_odd(), average(first_odd(), second_even()), first_even()};
  return {first_odd(), average(first_even(), second_odd()), second_even()};
}

}  // namespace

void smooth_flat_cells(const Parameters &params, FlatCells cells, const FlatCellLines &frame, int B,
                       RgbImage &image, FlatCellScratch &scratch) {
  const bool odd = cells == FlatCells::odd_lines;
  const Comparisons &comparisons = odd ? odd_line_comparisons : even_line_comparisons;
  const int threshold = params.CFA_T0_vec;
  // Whole blocks: at a width that is no multiple of the block the last one goes on over reflected
  // samples, for the lanes that it leaves behind.
  const int blocks_width = (image.width() + B - 1) / B * B;
  // The first and the last line have no cell if cells stand on odd lines.
  for (int r = odd ? 1 : 0; r + 1 < image.height(); r += 2) {
    for (int x = 0; x < blocks_width; x += 2) {
      const Rgb colour = cell_colour(cells, frame.averages, r, x);
      const bool flat = cell_is_flat(threshold, comparisons, frame.test, r, x);
      if (flat && x < image.width())
        image.at(r, x) = image.at(r, x + 1) = image.at(r + 1, x) = image.at(r + 1, x + 1) = colour;
      scratch.cells[static_cast<size_t>(x % B / 2)] = {flat, colour.R, colour.G, colour.B};
    }
  }
  scratch.open = false;
}

void apply_left_over_cells(const FlatCellScratch &scratch, int B, RgbImage &image) {
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      const FlatCellScratch::Lane &lane = scratch.cells[static_cast<size_t>(x % B / 2)];
      if (lane.flat) image.at(y, x) = {lane.R, lane.G, lane.B};
    }
  }
}

}  // namespace ppl_model
