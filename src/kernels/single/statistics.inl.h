// Sums for exposure and white balance, gathered on a sparse lattice while the frame passes through.
//
// In odd line pairs, of each block of two groups, the cells at columns 2 modulo 4 are taken: half
// of them from the even group, half from the odd one. Each is looked at twice: after black
// subtraction (stage Q: does it qualify as near-grey?), and for exposure (stage A), where the even
// group's cells have passed the curve and the odd group's have not. That mixture is meant.
#pragma once

#include "kernels/single/front_end.inl.h"

namespace ppl::TIER {
namespace {

// Columns 2 and 3 of each four: the sampled cells' halves of a line, those of `left` first.
inline Vec::type sampled_pairs(Vec::type left, Vec::type right) {
  return Vec::pack_words(Vec::shift_right_signed_dwords<16>(left),
                         Vec::shift_right_signed_dwords<16>(right));
}

// Sampled cells, one word each, from their pairs on both lines.
struct SampledCells {
  Vec::type B, Gb, Gr, R;

  SampledCells(Vec::type pairs0, Vec::type pairs1)
      : B(Vec::bit_and(pairs0, Vec::words(0x00FF))),
        Gb(Vec::shift_right_words<8>(pairs0)),
        Gr(Vec::bit_and(pairs1, Vec::words(0x00FF))),
        R(Vec::shift_right_words<8>(pairs1)) {}
};

// The same as bytes, a position in either half: B and Gb, Gr and R.
struct CellBytes {
  Vec::type B_Gb, Gr_R;

  static CellBytes pack(Vec::type B, Vec::type Gb, Vec::type Gr, Vec::type R) {
    return {Vec::pack_u8(B, Gb), Vec::pack_u8(Gr, R)};
  }

  CellBytes masked(Vec::type mask) const {
    return {Vec::bit_and(B_Gb, mask), Vec::bit_and(Gr_R, mask)};
  }
};

// Sums over the cells of a vector, or over many of them, a position in either half.
struct CellSums {
  Vec::type B_Gb = Vec::zero(), Gr_R = Vec::zero();

  static CellSums of(const CellBytes &cells) {
    CellSums sums;
    sums.B_Gb = Vec::sum_halves(cells.B_Gb);
    sums.Gr_R = Vec::sum_halves(cells.Gr_R);
    return sums;
  }

  void add(const CellSums &sums) {
    B_Gb = Vec::add_dwords(B_Gb, sums.B_Gb);
    Gr_R = Vec::add_dwords(Gr_R, sums.Gr_R);
  }

  uint32_t B() const { return Vec::low_sum(B_Gb); }
  uint32_t Gb() const { return Vec::high_sum(B_Gb); }
  uint32_t Gr() const { return Vec::low_sum(Gr_R); }
  uint32_t R() const { return Vec::high_sum(Gr_R); }

  void add_to(PplTriple &triple) const {
    triple.r += R();
    triple.g += Gb() + Gr();
    triple.b += B();
  }
};

// Counts cells by their masks, a word each: at most 20,480 vectors a frame, so that words suffice.
struct CellCount {
  Vec::type n = Vec::zero();

  void add(Vec::type mask) { n = Vec::sub_words(n, mask); }

  uint32_t total() const {
    const auto low = Vec::bit_and(n, Vec::words(0x00FF));
    const auto sums_of_low = Vec::sum_halves(low);
    const auto sums_of_high = Vec::sum_halves(Vec::shift_right_words<8>(n));
    return Vec::low_sum(sums_of_low) + Vec::high_sum(sums_of_low) +
           256 * (Vec::low_sum(sums_of_high) + Vec::high_sum(sums_of_high));
  }
};

inline Vec::type load(const WordVector<TIER_BYTES> &v) { return Vec::load_aligned(v.lane); }
inline Vec::type load(const ByteVector<TIER_BYTES> &v) { return Vec::load_aligned(v.lane); }

// All cells of a block count.
inline Vec::type every_cell() { return Vec::words(-1); }

// The cells of a block that stand in its first `columns` columns.
inline Vec::type cells_within(int columns) {
  alignas(Vec::bytes) uint8_t lanes[Vec::bytes];
  for (int i = 0; i < Vec::words_count; ++i) {
    const uint8_t lane = 4 * i + 2 < columns ? 255 : 0;
    lanes[2 * i] = lanes[2 * i + 1] = lane;
  }
  return Vec::load(lanes);
}

// What a pass takes from the lattice.
struct Gathering {
  // Stage Q and the exposure band; otherwise the frame's means alone.
  bool judges_cells = true;
  // P3 tier to RGB24: the frame's sum of R takes the sum of Gb, and the mask that splits even from
  // odd columns is lost to the sum of R for the rest of the frame. Required behaviour.
  bool loses_mask = false;
};

class Statistics {
 public:
  explicit Statistics(PplContext &ctx)
      : ctx_(ctx),
        p_(parameters_of(ctx)),
        gain_{by_position(p_.rgb_gain_BG_vec), by_position(p_.rgb_gain_GR_vec)},
        delta_{by_position(p_.rgb_delta_BG_vec), by_position(p_.rgb_delta_GR_vec)} {}

  // Keeps an even group of an odd line pair, black subtracted, for whoever looks for a left
  // neighbour next. Only the last one of a pass can be seen.
  void save(const Group &group) {
    Vec::store(p_.stat_group_copy[0].lane,
               Vec::subtract_saturated_u8(group.line[0], load(p_.optical_black_BG_vec)));
    Vec::store(p_.stat_group_copy[1].lane,
               Vec::subtract_saturated_u8(group.line[1], load(p_.optical_black_GR_vec)));
  }

  // One block of the single-pass lattice: its groups as they came, and the even one after the
  // curve. Returns the sum of R over the sampled cells of stage A, as the lowest word.
  template <Gathering gathering>
  Vec::type sample(const Group &left, const Group &right, const Group &left_after_curve,
                   Vec::type valid) {
    const auto pairs0 = Vec::subtract_saturated_u8(sampled_pairs(left.line[0], right.line[0]),
                                                   load(p_.optical_black_BG_vec));
    const auto pairs1 = Vec::subtract_saturated_u8(sampled_pairs(left.line[1], right.line[1]),
                                                   load(p_.optical_black_GR_vec));
    CellSums sums = examine<gathering>(pairs0, pairs1, left_after_curve, valid);
    const auto R = Vec::high_half(sums.Gr_R);
    if constexpr (gathering.loses_mask) {
      sums.Gr_R = Vec::join_low_halves(sums.Gr_R, Vec::high_half(sums.B_Gb));
    }
    all_.add(sums);
    return R;
  }

  // One group of a chain, as it came. Its left neighbour is whatever was saved last, for stage Q,
  // and what stands left of it after the curve, for stage A. The cells' sums go to a window.
  template <Gathering gathering>
  void sample_into(PplTriple &window, const Group &group, const Group &left_after_curve) {
    const auto right0 = Vec::subtract_saturated_u8(group.line[0], load(p_.optical_black_BG_vec));
    const auto right1 = Vec::subtract_saturated_u8(group.line[1], load(p_.optical_black_GR_vec));
    const auto pairs0 = sampled_pairs(load(p_.stat_group_copy[0]), right0);
    const auto pairs1 = sampled_pairs(load(p_.stat_group_copy[1]), right1);
    examine<gathering>(pairs0, pairs1, left_after_curve, every_cell()).add_to(window);
  }

  // Adds what was gathered to the context.
  void flush() {
    count_means();
    qualified_.add_to(ctx_.qual_rgb_means_whole_frame);
    ctx_.n_qual_2x2_whole_frame += n_qualified_.total();
    exposed_.add_to(ctx_.qAE_rgb_means_whole_frame);
    ctx_.n_qAE_2x2_whole_frame += n_exposed_.total();
    // The lattice takes one cell in four.
    for (int i = 0; i < 4; ++i) all_.add_to(ctx_.rgb_means_whole_frame);
  }

 private:
  // Both stages. Returns the sums of stage A over all valid cells.
  template <Gathering gathering>
  CellSums examine(Vec::type pairs0, Vec::type pairs1, const Group &left_after_curve,
                   Vec::type valid) {
    const SampledCells cells(pairs0, pairs1);
    if constexpr (gathering.judges_cells) qualify(cells, pairs0, pairs1, valid);
    const CellBytes exposed = mixed(cells, left_after_curve).masked(byte_mask(valid));
    const CellSums sums = CellSums::of(exposed);
    if constexpr (gathering.judges_cells) {
      if (band_is_open_) {  // the default: every cell is inside
        n_exposed_.add(valid);
        exposed_.add(sums);
      } else {
        judge_exposure(exposed, valid);
      }
    }
    return sums;
  }

  // Stage Q.
  void qualify(const SampledCells &cells, Vec::type pairs0, Vec::type pairs1, Vec::type valid) {
    const auto D0 = Vec::sub_words(cells.B, cells.Gb);
    const auto D1 = Vec::sub_words(cells.Gr, cells.R);
    const auto sum = Vec::add_words(D0, D1);
    const auto difference = Vec::sub_words(D0, D1);
    auto ok = Vec::bit_and(valid, between(D0, p_.qual_BmGb_lo_vec, p_.qual_BmGb_hi_vec));
    ok = Vec::bit_and(ok, between(D1, p_.qual_GrmR_lo_vec, p_.qual_GrmR_hi_vec));
    ok = Vec::bit_and(ok, between(sum, p_.qual_BmGb_p_GrmR_lo_vec, p_.qual_BmGb_p_GrmR_hi_vec));
    ok = Vec::bit_and(ok,
                      between(difference, p_.qual_BmGb_m_GrmR_lo_vec, p_.qual_BmGb_m_GrmR_hi_vec));
    // Level: 0 where both bytes of a word are inside their bands.
    const auto excess = Vec::bit_or(above_span(pairs0, p_.qual_BG_base_vec, p_.qual_BG_span_vec),
                                    above_span(pairs1, p_.qual_GR_base_vec, p_.qual_GR_span_vec));
    ok = Vec::bit_and(ok, Vec::equal_words(excess, Vec::zero()));
    n_qualified_.add(ok);

    const auto sums =
        CellSums::of(CellBytes::pack(cells.B, cells.Gb, cells.Gr, cells.R).masked(byte_mask(ok)));
    qualified_.add(sums);
    // One entry per position, at the mean of the vector with the failed cells counted as 0.
    const auto means = Vec::shift_right_words<mean_shift>(Vec::pack_words(sums.B_Gb, sums.Gr_R));
    Vec::store_low_half(ctx_.waiting_means[n_means_], Vec::pack_u8(means, means));
    if (++n_means_ == most_waiting_means) count_means();
  }

  // The histograms wait for a few vectors: between pixels their counting holds up what follows.
  [[gnu::noinline]] void count_means() {
    constexpr uint32_t weight = 1u << mean_shift;
    constexpr int position = Vec::bytes / 8;
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
  void judge_exposure(const CellBytes &cells, Vec::type valid) {
    const auto low = Vec::min_u8(cells.B_Gb, cells.Gr_R);
    const auto high = Vec::max_u8(cells.B_Gb, cells.Gr_R);
    const auto lowest = Vec::min_u8(low, Vec::swap_halves(low));
    const auto highest = Vec::max_u8(high, Vec::swap_halves(high));
    const auto excess = Vec::bit_or(Vec::subtract_saturated_u8(load(p_.qAE_min_vec), highest),
                                    Vec::subtract_saturated_u8(lowest, load(p_.qAE_max_vec)));
    const auto inside = Vec::bit_and(Vec::equal_u8(excess, Vec::zero()), byte_mask(valid));
    n_exposed_.add(Vec::bit_and(Vec::interleave_low_u8(inside, inside), valid));
    exposed_.add(CellSums::of(cells.masked(inside)));
  }

  // The left group's cells after the curve, the right group's after gain and delta.
  CellBytes mixed(const SampledCells &cells, const Group &left_after_curve) const {
    const SampledCells left(sampled_pairs(left_after_curve.line[0], left_after_curve.line[0]),
                            sampled_pairs(left_after_curve.line[1], left_after_curve.line[1]));
    return {mixed(left.B, left.Gb, cells.B, cells.Gb, 0),
            mixed(left.Gr, left.R, cells.Gr, cells.R, 1)};
  }

  // Two positions: of either the left group's cells, then the right group's.
  Vec::type mixed(Vec::type left0, Vec::type left1, Vec::type cells0, Vec::type cells1,
                  int line) const {
    const auto left = Vec::join_low_halves(left0, left1);
    const auto right = Vec::join_high_halves(cells0, cells1);
    // Wraps in 16 bits; the packing to bytes clamps.
    const auto amplified = Vec::add_words(
        Vec::shift_right_words<5>(Vec::multiply_low(right, gain_[line])), delta_[line]);
    return Vec::swap_middle_quarters(Vec::pack_u8(left, amplified));
  }

  // A line's even columns in the low half, its odd ones in the high half.
  static Vec::type by_position(const WordVector<TIER_BYTES> &v) {
    return Vec::join_low_halves(Vec::words(v.lane[0]), Vec::words(v.lane[1]));
  }

  static Vec::type byte_mask(Vec::type mask) { return Vec::pack_s8(mask, mask); }

  static Vec::type between(Vec::type v, const WordVector<TIER_BYTES> &lo,
                           const WordVector<TIER_BYTES> &hi) {
    return Vec::bit_and(Vec::greater_words(v, load(lo)), Vec::greater_words(load(hi), v));
  }

  static Vec::type above_span(Vec::type v, const ByteVector<TIER_BYTES> &base,
                              const ByteVector<TIER_BYTES> &span) {
    return Vec::subtract_saturated_u8(Vec::subtract_u8(v, load(base)), load(span));
  }

  PplContext &ctx_;
  Parameters &p_;
  const bool band_is_open_ = p_.qAE_min_vec.lane[0] == 0 && p_.qAE_max_vec.lane[0] == 255;
  Vec::type gain_[2], delta_[2];  // of B and Gb, of Gr and R
  CellSums qualified_, exposed_, all_;
  CellCount n_qualified_, n_exposed_;
  static constexpr int mean_shift = TIER_BYTES == 8 ? 2 : 3;
  int n_means_ = 0;
};

}  // namespace
}  // namespace ppl::TIER
