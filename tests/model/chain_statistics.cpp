#include "model/chain_statistics.h"

#include "model/report.h"

namespace ppl_model {

namespace {

// Visits columns 2 and 3 of every four of a group.
void for_each_cell(int B, auto visit) {
  for (int i = 2; i < B; i += 4) visit(i);
}

Cell saved_cell(const SavedGroup &group, int i) {
  const size_t x = static_cast<size_t>(i);
  return {group.lines[0][x], group.lines[0][x + 1], group.lines[1][x], group.lines[1][x + 1]};
}

// The left neighbour is what was saved last: for the first step of a line the rest of an earlier
// line or frame.
void gather_qualification(PplContext *ctx, Tier tier, const FrontEnd &front_end, int pair,
                          int group) {
  const TierState &state = ctx->tier(tier);
  if (state.stat_group_copy.open) report().statistics_are_free = true;
  const int B = block_width(tier);
  PositionSums sums;
  const auto take = [&](const Cell &cell) {
    if (!cell_qualifies(ctx->params, cell)) return;
    sums.add(cell);
    ++ctx->n_qual_2x2_whole_frame;
  };
  for_each_cell(B, [&](int i) { take(saved_cell(state.stat_group_copy, i)); });
  for_each_cell(B, [&](int i) { take(cell_at(front_end.black, pair, (group * B + i) / 2)); });
  add_to_triple(ctx->qual_rgb_means_whole_frame, sums, 1);
  add_to_histograms(ctx, tier, sums);
}

// The left neighbour is read back from the frame, so it has passed the table.
void gather_exposure(PplContext *ctx, Tier tier, const FrontEnd &front_end, int pair, int group,
                     Gathering gathering, PplTriple &window) {
  const Parameters &params = ctx->params;
  const int B = block_width(tier);
  PositionSums all_cells, exposed_cells;
  const auto take = [&](const Cell &cell) {
    all_cells.add(cell);
    if (gathering != Gathering::everything || !cell_is_exposed(params, cell)) return;
    exposed_cells.add(cell);
    ++ctx->n_qAE_2x2_whole_frame;
  };
  for_each_cell(
      B, [&](int i) { take(cell_at(front_end.looked_up, pair, ((group - 1) * B + i) / 2)); });
  for_each_cell(B, [&](int i) { take(cell_at(front_end.adjusted, pair, (group * B + i) / 2)); });
  add_to_triple(ctx->qAE_rgb_means_whole_frame, exposed_cells, 1);
  add_to_triple(window, all_cells, 1);
}

// Chosen by the sweep's counters, not by where the sample stands.
PplTriple &window_of(PplContext *ctx, Tier tier, int p, int c) {
  const FramePlan &plan = ctx->tier(tier).plan;
  const int column = c / plan.cell_width;
  const int row = p / plan.cell_height;
  const int outside = 48;
  return ctx->windows[static_cast<size_t>(column < 8 && row < 6 ? 8 * row + column : outside)];
}

}  // namespace

void gather_chain(PplContext *ctx, Tier tier, const FrontEnd &front_end, Gathering gathering,
                  const SampledSteps &steps) {
  const int columns = ctx->plain.frame_width / block_width(tier);
  for (int p = 1; p <= front_end.pairs() - steps.pairs_left_out; p += 2) {
    for (int c = 1; c <= columns - steps.columns_left_out; ++c) {
      const int pair = p + steps.ahead;
      const int group = c + steps.ahead;
      if (c % 2 == 0) {
        save_group(ctx->tier(tier), tier, front_end, pair, group);
        continue;
      }
      if (gathering == Gathering::everything)
        gather_qualification(ctx, tier, front_end, pair, group);
      gather_exposure(ctx, tier, front_end, pair, group, gathering, window_of(ctx, tier, p, c));
    }
  }
}

}  // namespace ppl_model
