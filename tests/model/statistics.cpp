#include "model/statistics.h"

#include "model/arithmetic.h"

namespace ppl_model {

namespace {

bool inside(int32_t value, int32_t lo, int32_t hi) { return value > lo && value < hi; }

// Wrapping distance from the band's base, then what is left above its span.
bool inside_level_band(int32_t sample, uint8_t base, uint8_t span_less_1) {
  return low_byte(sample - base) <= span_less_1;
}

int group_count(int width, int group_width) { return (width + group_width - 1) / group_width; }

// The vector of groups g (even) and g + 1: columns 2 and 3 of every four, inside the picture.
template <typename Visit>
void for_each_sampled_cell(int width, int group_width, int even_group, Visit visit) {
  const int middle = (even_group + 1) * group_width;
  for (int x = even_group * group_width + 2; x < middle + group_width; x += 4)
    if (x + 1 < width) visit(x / 2, x < middle);
}

void gather_qualification(PplContext *ctx, Tier tier, const FrontEnd &front_end, int pair,
                          int even_group) {
  const Parameters &params = ctx->params;
  PositionSums sums;
  for_each_sampled_cell(front_end.width(), block_width(tier), even_group, [&](int column, bool) {
    const Cell cell = cell_at(front_end.black, pair, column);
    if (!cell_qualifies(params, cell)) return;
    sums.add(cell);
    ++ctx->n_qual_2x2_whole_frame;
  });
  add_to_triple(ctx->qual_rgb_means_whole_frame, sums, 1);
  add_to_histograms(ctx, tier, sums);
}

// The even group is read back from the frame, so it has passed the table; the odd one has not yet.
Cell exposure_cell(const FrontEnd &front_end, int pair, int column, bool left) {
  return cell_at(left ? front_end.looked_up : front_end.adjusted, pair, column);
}

}  // namespace

void save_group(TierState &state, Tier tier, const FrontEnd &front_end, int pair, int group) {
  state.stat_group_copy.open = false;
  for (int line = 0; line < 2; ++line) {
    for (int i = 0; i < block_width(tier); ++i) {
      const int x = group * block_width(tier) + i;
      state.stat_group_copy.lines[static_cast<size_t>(line)][static_cast<size_t>(i)] =
          x < front_end.width() ? front_end.black.at(2 * pair + line, x) : uint8_t{0};
    }
  }
}

Cell cell_at(const Plane &samples, int pair, int cell_column) {
  const int y = 2 * pair;
  const int x = 2 * cell_column;
  return {samples.at(y, x), samples.at(y, x + 1), samples.at(y + 1, x), samples.at(y + 1, x + 1)};
}

bool cell_qualifies(const Parameters &params, const Cell &cell) {
  const int32_t D0 = cell.B - cell.Gb;
  const int32_t D1 = cell.Gr - cell.R;
  const Pair<uint8_t> &bg_base = params.qual_BG_base_vec;
  const Pair<uint8_t> &bg_span = params.qual_BG_span_vec;
  const Pair<uint8_t> &gr_base = params.qual_GR_base_vec;
  const Pair<uint8_t> &gr_span = params.qual_GR_span_vec;
  return inside(D0, params.qual_BmGb_lo_vec, params.qual_BmGb_hi_vec) &&
         inside(D1, params.qual_GrmR_lo_vec, params.qual_GrmR_hi_vec) &&
         inside(D0 + D1, params.qual_BmGb_p_GrmR_lo_vec, params.qual_BmGb_p_GrmR_hi_vec) &&
         inside(D0 - D1, params.qual_BmGb_m_GrmR_lo_vec, params.qual_BmGb_m_GrmR_hi_vec) &&
         inside_level_band(cell.B, bg_base.even, bg_span.even) &&
         inside_level_band(cell.Gb, bg_base.odd, bg_span.odd) &&
         inside_level_band(cell.Gr, gr_base.even, gr_span.even) &&
         inside_level_band(cell.R, gr_base.odd, gr_span.odd);
}

bool cell_is_exposed(const Parameters &params, const Cell &cell) {
  const auto [lowest, highest] = std::minmax({cell.B, cell.Gb, cell.Gr, cell.R});
  // The limits have wrapped where the band reaches the end of the scale: no test there.
  const bool tests_low = params.qAE_min_vec != 0;
  const bool tests_high = params.qAE_hi_vec != 0;
  const bool too_dark = tests_low && highest <= params.qAE_lo_vec;
  const bool too_bright = tests_high && lowest >= params.qAE_hi_vec;
  return !too_dark && !too_bright;
}

void add_to_triple(PplTriple &triple, const PositionSums &sums, uint32_t weight) {
  triple.r += weight * sums.R;
  triple.g += weight * (sums.Gb + sums.Gr);
  triple.b += weight * sums.B;
}

void add_to_histograms(PplContext *ctx, Tier tier, const PositionSums &sums) {
  const int k = tier == Tier::p3 ? 2 : 3;
  const auto count = [k](Histogram &histogram, uint32_t sum) { histogram[sum >> k] += 1u << k; };
  count(ctx->g_histogram, sums.Gb);
  count(ctx->r_histogram, sums.R);
  count(ctx->b_histogram, sums.B);
  count(ctx->g_histogram, sums.Gr);
}

Grid<SampledVector> gather_single_pass(PplContext *ctx, Tier tier, const FrontEnd &front_end,
                                       Gathering gathering, bool red_total_takes_Gb) {
  const int group_width = block_width(tier);
  const int groups = group_count(front_end.width(), group_width);
  Grid<SampledVector> vectors((groups + 1) / 2, front_end.pairs() / 2);
  if (gathering == Gathering::nothing) return vectors;

  const Parameters &params = ctx->params;
  for (int pair = 1; pair < front_end.pairs(); pair += 2) {
    for (int group = 0; group < groups; group += 2) {
      save_group(ctx->tier(tier), tier, front_end, pair, group);
      if (gathering == Gathering::everything)
        gather_qualification(ctx, tier, front_end, pair, group);

      PositionSums all_cells, exposed_cells;
      for_each_sampled_cell(front_end.width(), group_width, group, [&](int column, bool left) {
        const Cell cell = exposure_cell(front_end, pair, column, left);
        all_cells.add(cell);
        if (gathering != Gathering::everything || !cell_is_exposed(params, cell)) return;
        exposed_cells.add(cell);
        ++ctx->n_qAE_2x2_whole_frame;
      });
      add_to_triple(ctx->qAE_rgb_means_whole_frame, exposed_cells, 1);

      vectors.at(pair / 2, group / 2).sum_of_R = all_cells.R;
      // Weight 4 stands for the cells between the sampled ones.
      if (red_total_takes_Gb) all_cells.R = all_cells.Gb;
      add_to_triple(ctx->rgb_means_whole_frame, all_cells, 4);
    }
  }
  return vectors;
}

}  // namespace ppl_model
