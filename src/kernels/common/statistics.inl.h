// Sums for exposure and white balance, gathered on a sparse lattice while the frame passes through.
//
// In odd line pairs, of each pair of blocks, the cells at columns 2 modulo 4 are taken: half of
// them from the even block, half from the odd one. Each is looked at twice: after black
// subtraction (stage Q: does it qualify as near-grey?), and for exposure (stage A), where the even
// block's cells have passed the curve and the odd block's have not. That mixture is meant:
// docs/oddities.md, "Mixed exposure".
//
// What is sampled, and in which vectors, can be seen in the results: all of it is in blocks,
// whatever the width of the registers around it.
#pragma once

#include "kernels/common/look_up.inl.h"

namespace ppl::TARGET {
namespace {

using BlockSamples = Samples<Block>;

// Columns 2 and 3 of each four: the sampled cells' halves of a line, those of `left` first.
inline Block::type sampled_pairs(Block::type left, Block::type right) {
  return Block::pack_words(Block::shift_right_signed_dwords<16>(left),
                           Block::shift_right_signed_dwords<16>(right));
}

// Sampled cells, one word each, from their pairs on both lines.
struct SampledCells {
  Block::type B, Gb, Gr, R;

  SampledCells(Block::type pairs0, Block::type pairs1)
      : B(Block::columns<false>(pairs0)),
        Gb(Block::columns<true>(pairs0)),
        Gr(Block::columns<false>(pairs1)),
        R(Block::columns<true>(pairs1)) {}
};

// The same as bytes, a position in either half: B and Gb, Gr and R.
struct CellBytes {
  Block::type B_Gb, Gr_R;

  static CellBytes pack(const SampledCells &cells) {
    return {Block::pack_u8(cells.B, cells.Gb), Block::pack_u8(cells.Gr, cells.R)};
  }

  CellBytes masked(Block::type mask) const {
    return {Block::bit_and(B_Gb, mask), Block::bit_and(Gr_R, mask)};
  }
};

// Sums over the cells of a vector, or over many of them, a position in either half.
struct CellSums {
  Block::type B_Gb = Block::zero(), Gr_R = Block::zero();

  static CellSums of(const CellBytes &cells) {
    CellSums sums;
    sums.B_Gb = Block::sum_halves(cells.B_Gb);
    sums.Gr_R = Block::sum_halves(cells.Gr_R);
    return sums;
  }

  void add(const CellSums &sums) {
    B_Gb = Block::add_dwords(B_Gb, sums.B_Gb);
    Gr_R = Block::add_dwords(Gr_R, sums.Gr_R);
  }

  uint32_t B() const { return Block::low_sum(B_Gb); }
  uint32_t Gb() const { return Block::high_sum(B_Gb); }
  uint32_t Gr() const { return Block::low_sum(Gr_R); }
  uint32_t R() const { return Block::high_sum(Gr_R); }

  void add_to(PplTriple &triple) const {
    triple.r += R();
    triple.g += Gb() + Gr();
    triple.b += B();
  }
};

// Counts cells by their masks, a word each. A word sees each vector once at the most.
struct CellCount {
  static constexpr int most_vectors = widest_line / (2 * block) * (1024 / 4);
  static_assert(most_vectors <= 0xFFFF);

  Block::type n = Block::zero();

  void add(Block::type mask) { n = Block::subtract_words(n, mask); }

  uint32_t total() const {
    const auto sums_of_low = Block::sum_halves(Block::columns<false>(n));
    const auto sums_of_high = Block::sum_halves(Block::columns<true>(n));
    return Block::low_sum(sums_of_low) + Block::high_sum(sums_of_low) +
           256 * (Block::low_sum(sums_of_high) + Block::high_sum(sums_of_high));
  }
};

// All cells of a pair of blocks count.
inline Block::type every_cell() { return Block::splat_words(-1); }

// The cells of a pair of blocks that stand in its first `columns` columns.
inline Block::type cells_within(int columns) {
  uint8_t lanes[block];
  for (int i = 0; i < block / 2; ++i) {
    const uint8_t lane = 4 * i + 2 < columns ? 255 : 0;
    lanes[2 * i] = lanes[2 * i + 1] = lane;
  }
  return Block::load(lanes);
}

// What a pass takes from the lattice.
struct Gathering {
  // Stage Q and the exposure band; otherwise the frame's means alone.
  bool judges_cells = true;
  // P3 tier to RGB24: the frame's sum of R takes the sum of Gb, and the mask that splits even from
  // odd columns is lost to the sum of R for the rest of the frame. Meant so: docs/oddities.md,
  // "Lost mask".
  bool loses_mask = false;
};

class Statistics {
 public:
  explicit Statistics(PplContext &ctx)
      : ctx_(ctx), memory_(tier_state(ctx).memory), spread_(ctx.params) {}

  // Keeps an even block of an odd line pair, black subtracted, for whoever looks for a left
  // neighbour next. Only the last one of a pass can be seen.
  void save(const BlockSamples &samples) {
    for (int line = 0; line < 2; ++line) {
      Block::store(memory_.stat_group_copy[line], above_black(samples, line));
    }
  }

  // One pair of blocks of the single-pass lattice: as they came, and the even one after the curve.
  // Returns the sum of R over the sampled cells of stage A, as the lowest word.
  template <Gathering gathering>
  Block::type sample(const BlockSamples &left, const BlockSamples &right,
                     const BlockSamples &left_after_curve, Block::type valid) {
    const auto pairs = [&](int line) {
      return Block::subtract_saturated_u8(sampled_pairs(left.line[line], right.line[line]),
                                          spread_.black[line]);
    };
    CellSums sums = examine<gathering>(pairs(0), pairs(1), left_after_curve, valid);
    const auto R = Block::high_half(sums.Gr_R);
    if constexpr (gathering.loses_mask) {
      sums.Gr_R = Block::join_low_halves(sums.Gr_R, Block::high_half(sums.B_Gb));
    }
    all_.add(sums);
    return R;
  }

  // One block of a chain, as it came. Its left neighbour is whatever was saved last, for stage Q,
  // and what stands left of it after the curve, for stage A. The cells' sums go to a window.
  template <Gathering gathering>
  void sample_into(PplTriple &window, const BlockSamples &samples,
                   const BlockSamples &left_after_curve) {
    const auto pairs = [&](int line) {
      return sampled_pairs(Block::load(memory_.stat_group_copy[line]), above_black(samples, line));
    };
    examine<gathering>(pairs(0), pairs(1), left_after_curve, every_cell()).add_to(window);
  }

  // Adds what was gathered to the context.
  [[gnu::noinline]] void flush() {
    count_means();
    qualified_.add_to(ctx_.qual_rgb_means_whole_frame);
    ctx_.n_qual_2x2_whole_frame += n_qualified_.total();
    exposed_.add_to(ctx_.qAE_rgb_means_whole_frame);
    ctx_.n_qAE_2x2_whole_frame += n_exposed_.total();
    // The lattice takes one cell in four.
    for (int i = 0; i < 4; ++i) all_.add_to(ctx_.rgb_means_whole_frame);
  }

 private:
  // Strict limits.
  struct SpreadBand {
    Block::type lo, hi;

    SpreadBand(int16_t below, int16_t above)
        : lo(Block::splat_words(below)), hi(Block::splat_words(above)) {}
    Block::type contains(Block::type v) const {
      return Block::bit_and(Block::greater_words(v, lo), Block::greater_words(hi, v));
    }
  };

  // Byte limits of both columns of a line.
  struct SpreadLevels {
    Block::type base, span;

    SpreadLevels(BytePair least, BytePair range) : base(spread(least)), span(spread(range)) {}
    Block::type excess(Block::type v) const {
      return Block::subtract_saturated_u8(Block::subtract_u8(v, base), span);
    }
  };

  static Block::type spread(BytePair pair) { return Block::splat_words(pair.even | pair.odd << 8); }

  // A line's even columns in the low half, its odd ones in the high half.
  static Block::type by_position(WordPair pair) {
    return Block::join_low_halves(Block::splat_words(pair.even), Block::splat_words(pair.odd));
  }

  // The parameters in registers; of two, that of B and Gb comes first.
  struct Spread {
    SpreadBand BmGb, GrmR, BmGb_p_GrmR, BmGb_m_GrmR;
    SpreadLevels levels[2];
    Block::type black[2], gain[2], delta[2];
    Block::type qAE_min, qAE_max;
    bool band_is_open;  // the default: every cell is inside

    explicit Spread(const Parameters &p)
        : BmGb(p.qual_BmGb_lo_vec, p.qual_BmGb_hi_vec),
          GrmR(p.qual_GrmR_lo_vec, p.qual_GrmR_hi_vec),
          BmGb_p_GrmR(p.qual_BmGb_p_GrmR_lo_vec, p.qual_BmGb_p_GrmR_hi_vec),
          BmGb_m_GrmR(p.qual_BmGb_m_GrmR_lo_vec, p.qual_BmGb_m_GrmR_hi_vec),
          levels{{p.qual_BG_base_vec, p.qual_BG_span_vec},
                 {p.qual_GR_base_vec, p.qual_GR_span_vec}},
          black{spread(p.optical_black_BG_vec), spread(p.optical_black_GR_vec)},
          gain{by_position(p.rgb_gain_BG_vec), by_position(p.rgb_gain_GR_vec)},
          delta{by_position(p.rgb_delta_BG_vec), by_position(p.rgb_delta_GR_vec)},
          qAE_min(Block::splat_u8(p.qAE_min_vec)),
          qAE_max(Block::splat_u8(p.qAE_max_vec)),
          band_is_open(p.qAE_min_vec == 0 && p.qAE_max_vec == 255) {}
  };

  Block::type above_black(const BlockSamples &samples, int line) const {
    return Block::subtract_saturated_u8(samples.line[line], spread_.black[line]);
  }

  // Both stages. Returns the sums of stage A over all valid cells.
  template <Gathering gathering>
  CellSums examine(Block::type pairs0, Block::type pairs1, const BlockSamples &left_after_curve,
                   Block::type valid) {
    const SampledCells cells(pairs0, pairs1);
    if constexpr (gathering.judges_cells) qualify(cells, pairs0, pairs1, valid);
    const CellBytes exposed = mixed(cells, left_after_curve).masked(byte_mask(valid));
    const CellSums sums = CellSums::of(exposed);
    if constexpr (gathering.judges_cells) {
      if (spread_.band_is_open) {
        n_exposed_.add(valid);
        exposed_.add(sums);
      } else {
        judge_exposure(exposed, valid);
      }
    }
    return sums;
  }

  // Stage Q.
  void qualify(const SampledCells &cells, Block::type pairs0, Block::type pairs1,
               Block::type valid) {
    const auto D0 = Block::subtract_words(cells.B, cells.Gb);
    const auto D1 = Block::subtract_words(cells.Gr, cells.R);
    auto ok = Block::bit_and(valid, spread_.BmGb.contains(D0));
    ok = Block::bit_and(ok, spread_.GrmR.contains(D1));
    ok = Block::bit_and(ok, spread_.BmGb_p_GrmR.contains(Block::add_words(D0, D1)));
    ok = Block::bit_and(ok, spread_.BmGb_m_GrmR.contains(Block::subtract_words(D0, D1)));
    // Level: 0 where both bytes of a word are inside their bands.
    const auto excess =
        Block::bit_or(spread_.levels[0].excess(pairs0), spread_.levels[1].excess(pairs1));
    ok = Block::bit_and(ok, Block::equal_words(excess, Block::zero()));
    n_qualified_.add(ok);

    const auto sums = CellSums::of(CellBytes::pack(cells).masked(byte_mask(ok)));
    qualified_.add(sums);
    // One entry per position, at the mean of the vector with the failed cells counted as 0.
    const auto means =
        Block::shift_right_words<mean_shift>(Block::pack_words(sums.B_Gb, sums.Gr_R));
    Block::store_low_halves(ctx_.waiting_means[n_means_], Block::pack_u8(means, means));
    if (++n_means_ == most_waiting_means) count_means();
  }

  // The histograms wait for a few vectors: between pixels their counting holds up what follows.
  [[gnu::noinline]] void count_means() {
    constexpr uint32_t weight = 1u << mean_shift;
    constexpr int position = block / 8;
    for (int i = 0; i < n_means_; ++i) {
      const uint8_t *const mean = ctx_.waiting_means[i];
      ctx_.b_histogram[mean[0]] += weight;
      ctx_.g_histogram[mean[position]] += weight;
      ctx_.g_histogram[mean[2 * position]] += weight;
      ctx_.r_histogram[mean[3 * position]] += weight;
    }
    n_means_ = 0;
  }

  // Stage A. Out of the band are cells that lie wholly below it or wholly above it.
  void judge_exposure(const CellBytes &cells, Block::type valid) {
    const auto low = Block::min_u8(cells.B_Gb, cells.Gr_R);
    const auto high = Block::max_u8(cells.B_Gb, cells.Gr_R);
    const auto lowest = Block::min_u8(low, Block::swap_halves(low));
    const auto highest = Block::max_u8(high, Block::swap_halves(high));
    const auto excess = Block::bit_or(Block::subtract_saturated_u8(spread_.qAE_min, highest),
                                      Block::subtract_saturated_u8(lowest, spread_.qAE_max));
    const auto inside = Block::bit_and(Block::equal_u8(excess, Block::zero()), byte_mask(valid));
    n_exposed_.add(Block::bit_and(Block::interleave_low_u8(inside, inside), valid));
    exposed_.add(CellSums::of(cells.masked(inside)));
  }

  // The left block's cells after the curve, the right block's after gain and delta.
  CellBytes mixed(const SampledCells &cells, const BlockSamples &left_after_curve) const {
    const SampledCells left(sampled_pairs(left_after_curve.line[0], left_after_curve.line[0]),
                            sampled_pairs(left_after_curve.line[1], left_after_curve.line[1]));
    return {mixed(left.B, left.Gb, cells.B, cells.Gb, 0),
            mixed(left.Gr, left.R, cells.Gr, cells.R, 1)};
  }

  // Two positions: of either the left block's cells, then the right block's.
  Block::type mixed(Block::type left0, Block::type left1, Block::type cells0, Block::type cells1,
                    int line) const {
    const auto left = Block::join_low_halves(left0, left1);
    const auto right = Block::join_high_halves(cells0, cells1);
    // Wraps in 16 bits; the packing to bytes clamps.
    const auto amplified = Block::add_words(
        Block::shift_right_words<5>(Block::multiply_low(right, spread_.gain[line])),
        spread_.delta[line]);
    return Block::swap_middle_quarters(Block::pack_u8(left, amplified));
  }

  static Block::type byte_mask(Block::type mask) { return Block::pack_s8(mask, mask); }

  PplContext &ctx_;
  TierMemory &memory_;
  const Spread spread_;
  CellSums qualified_, exposed_, all_;
  CellCount n_qualified_, n_exposed_;
  static constexpr int mean_shift = block == 8 ? 2 : 3;
  int n_means_ = 0;
};

}  // namespace
}  // namespace ppl::TARGET
