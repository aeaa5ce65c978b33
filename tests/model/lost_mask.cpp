#include "model/lost_mask.h"

namespace ppl_model {

namespace {

constexpr int group_width = 8;
constexpr int cells_per_group = group_width / 2;
constexpr int groups_per_step = 4;

class MaskedSplit {
 public:
  MaskedSplit(const FrontEnd &front_end, const Grid<SampledVector> &vectors)
      : front_end_(front_end),
        vectors_(vectors),
        cells_(front_end.width() / 2, front_end.pairs()),
        groups_((front_end.width() + group_width - 1) / group_width) {
    mask_.fill(0x00FF);
  }

  int groups() const { return groups_; }

  void run_group(int pair, int group) {
    const bool sampled = pair % 2 != 0 && (group % 2 != 0 || group == groups_ - 1);
    if (sampled)
      mask_ = {static_cast<uint16_t>(vectors_.at(pair / 2, group / 2).sum_of_R), 0, 0, 0};
    for (int i = 0; i < cells_per_group; ++i) {
      const int column = group * cells_per_group + i;
      if (column >= cells_.width()) break;
      // Even columns are masked out of words that hold both; odd ones are shifted down and stay.
      Cell cell = cell_at(front_end_.looked_up, pair, column);
      const uint16_t mask = mask_[static_cast<size_t>(i)];
      cell.B = static_cast<uint16_t>((cell.B + 256 * cell.Gb) & mask);
      cell.Gr = static_cast<uint16_t>((cell.Gr + 256 * cell.R) & mask);
      cells_.at(pair, column) = cell;
    }
  }

  CellGrid take_cells() { return std::move(cells_); }

 private:
  const FrontEnd &front_end_;
  const Grid<SampledVector> &vectors_;
  CellGrid cells_;
  int groups_;
  std::array<uint16_t, cells_per_group> mask_;
};

}  // namespace

CellGrid clean_cells(const FrontEnd &front_end) {
  CellGrid cells(front_end.width() / 2, front_end.pairs());
  for (int p = 0; p < cells.height(); ++p)
    for (int c = 0; c < cells.width(); ++c) cells.at(p, c) = cell_at(front_end.looked_up, p, c);
  return cells;
}

CellGrid cells_with_lost_mask(const FrontEnd &front_end, const Grid<SampledVector> &vectors,
                              SweepOrder order) {
  MaskedSplit split(front_end, vectors);
  const int pairs_per_row = order == SweepOrder::four_line_steps ? 2 : 1;
  const int groups_at_once =
      order == SweepOrder::four_line_steps ? groups_per_step : split.groups();
  for (int row = 0; row < front_end.pairs(); row += pairs_per_row)
    for (int step = 0; step < split.groups(); step += groups_at_once)
      for (int pair = row; pair < std::min(row + pairs_per_row, front_end.pairs()); ++pair)
        for (int group = step; group < std::min(step + groups_at_once, split.groups()); ++group)
          split.run_group(pair, group);
  return split.take_cells();
}

}  // namespace ppl_model
