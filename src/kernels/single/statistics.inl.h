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

// Sampled cells, one word each.
struct SampledCells {
  Vec::type B, Gb, Gr, R;

  static SampledCells split(Vec::type pairs0, Vec::type pairs1) {
    const auto even = Vec::words(0x00FF);
    return {Vec::bit_and(pairs0, even), Vec::shift_right_words<8>(pairs0),
            Vec::bit_and(pairs1, even), Vec::shift_right_words<8>(pairs1)};
  }

  SampledCells masked(Vec::type mask) const {
    return {Vec::bit_and(B, mask), Vec::bit_and(Gb, mask), Vec::bit_and(Gr, mask),
            Vec::bit_and(R, mask)};
  }
};

// Running sums over cells, kept per 64 bits until the frame ends.
struct CellSums {
  Vec::type r, g, b;

  static CellSums none() { return {Vec::zero(), Vec::zero(), Vec::zero()}; }

  void add(Vec::type sum_r, Vec::type sum_Gb, Vec::type sum_Gr, Vec::type sum_b) {
    r = Vec::add_dwords(r, sum_r);
    g = Vec::add_dwords(g, Vec::add_dwords(sum_Gb, sum_Gr));
    b = Vec::add_dwords(b, sum_b);
  }

  void flush(PplTriple &sums, uint32_t weight) const {
    sums.r += weight * Vec::total(r);
    sums.g += weight * Vec::total(g);
    sums.b += weight * Vec::total(b);
  }
};

inline Vec::type load(const WordVector<TIER_BYTES> &v) {
  return Vec::load(reinterpret_cast<const uint8_t *>(v.lane));
}
inline Vec::type load(const ByteVector<TIER_BYTES> &v) { return Vec::load(v.lane); }

// All lanes set.
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
  explicit Statistics(PplContext &ctx) : ctx_(ctx), p_(parameters_of(ctx)) {}

  // One block of an odd line pair: its groups as they came, and the even one after the curve.
  // Returns the sum of R over the sampled cells of stage A.
  template <Gathering gathering>
  Vec::type sample(const Group &left, const Group &right, const Group &left_after_curve,
                   Vec::type valid) {
    const auto black_BG = load(p_.optical_black_BG_vec);
    const auto black_GR = load(p_.optical_black_GR_vec);
    const auto left0 = Vec::subtract_saturated_u8(left.line[0], black_BG);
    const auto left1 = Vec::subtract_saturated_u8(left.line[1], black_GR);
    Vec::store(p_.stat_group_copy[0].lane, left0);
    Vec::store(p_.stat_group_copy[1].lane, left1);

    const auto pairs0 = sampled_pairs(left0, Vec::subtract_saturated_u8(right.line[0], black_BG));
    const auto pairs1 = sampled_pairs(left1, Vec::subtract_saturated_u8(right.line[1], black_GR));
    if constexpr (gathering.judges_cells) qualify(pairs0, pairs1, valid);
    return expose<gathering>(pairs0, pairs1, left_after_curve, valid);
  }

  // Adds what was gathered to the context.
  void flush() {
    qualified_.flush(ctx_.qual_rgb_means_whole_frame, 1);
    ctx_.n_qual_2x2_whole_frame += Vec::total(n_qualified_);
    exposed_.flush(ctx_.qAE_rgb_means_whole_frame, 1);
    ctx_.n_qAE_2x2_whole_frame += Vec::total(n_exposed_);
    // The lattice takes one cell in four.
    all_.flush(ctx_.rgb_means_whole_frame, 4);
  }

 private:
  // Stage Q.
  void qualify(Vec::type pairs0, Vec::type pairs1, Vec::type valid) {
    const auto cells = SampledCells::split(pairs0, pairs1);
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

    count(n_qualified_, ok);
    const auto passed = cells.masked(ok);
    const auto B = Vec::sum_u8(passed.B);
    const auto Gb = Vec::sum_u8(passed.Gb);
    const auto Gr = Vec::sum_u8(passed.Gr);
    const auto R = Vec::sum_u8(passed.R);
    qualified_.add(R, Gb, Gr, B);

    // One entry per position, at the mean of the vector with the failed cells counted as 0.
    constexpr int mean_shift = TIER_BYTES == 8 ? 2 : 3;
    constexpr uint32_t weight = 1u << mean_shift;
    ctx_.g_histogram[Vec::total(Gb) >> mean_shift] += weight;
    ctx_.r_histogram[Vec::total(R) >> mean_shift] += weight;
    ctx_.b_histogram[Vec::total(B) >> mean_shift] += weight;
    ctx_.g_histogram[Vec::total(Gr) >> mean_shift] += weight;
  }

  // Stage A.
  template <Gathering gathering>
  Vec::type expose(Vec::type pairs0, Vec::type pairs1, const Group &left_after_curve,
                   Vec::type valid) {
    const auto cells =
        SampledCells::split(
            mixed(left_after_curve.line[0], pairs0, p_.rgb_gain_BG_vec, p_.rgb_delta_BG_vec),
            mixed(left_after_curve.line[1], pairs1, p_.rgb_gain_GR_vec, p_.rgb_delta_GR_vec))
            .masked(valid);

    if constexpr (gathering.judges_cells) judge_exposure(cells, valid);
    const auto R = Vec::sum_u8(cells.R);
    const auto Gb = Vec::sum_u8(cells.Gb);
    all_.add(gathering.loses_mask ? Gb : R, Gb, Vec::sum_u8(cells.Gr), Vec::sum_u8(cells.B));
    return R;
  }

  void judge_exposure(const SampledCells &cells, Vec::type valid) {
    const auto lowest =
        Vec::min_words(Vec::min_words(cells.B, cells.Gb), Vec::min_words(cells.Gr, cells.R));
    const auto highest =
        Vec::max_words(Vec::max_words(cells.B, cells.Gb), Vec::max_words(cells.Gr, cells.R));
    // Out of the band are cells that lie wholly below it or wholly above it.
    const auto outside =
        Vec::bit_or(Vec::greater_words(Vec::words(p_.qAE_min_vec.lane[0]), highest),
                    Vec::greater_words(lowest, Vec::words(p_.qAE_max_vec.lane[0])));
    const auto inside = Vec::and_not(outside, valid);
    count(n_exposed_, inside);
    const auto passed = cells.masked(inside);
    exposed_.add(Vec::sum_u8(passed.R), Vec::sum_u8(passed.Gb), Vec::sum_u8(passed.Gr),
                 Vec::sum_u8(passed.B));
  }

  // Sampled pairs of one line: the left group's after the curve, the right group's after gain and
  // delta.
  static Vec::type mixed(Vec::type left_after_curve, Vec::type pairs,
                         const WordVector<TIER_BYTES> &gain, const WordVector<TIER_BYTES> &delta) {
    const auto even =
        amplified(Vec::bit_and(pairs, Vec::words(0x00FF)), gain.lane[0], delta.lane[0]);
    const auto odd = amplified(Vec::shift_right_words<8>(pairs), gain.lane[1], delta.lane[1]);
    const auto right = Vec::bit_or(even, Vec::shift_left_words<8>(odd));
    const auto left = sampled_pairs(left_after_curve, left_after_curve);
    // The right group's cells stand in the high half.
    return Vec::join_low_halves(left, Vec::swap_halves(right));
  }

  static Vec::type amplified(Vec::type samples, int gain, int delta) {
    const auto m = Vec::shift_right_words<5>(Vec::multiply_low(samples, Vec::words(gain)));
    const auto d = Vec::add_words(m, Vec::words(delta));  // wraps in 16 bits
    return Vec::max_words(Vec::min_words(d, Vec::words(255)), Vec::zero());
  }

  static Vec::type between(Vec::type v, const WordVector<TIER_BYTES> &lo,
                           const WordVector<TIER_BYTES> &hi) {
    return Vec::bit_and(Vec::greater_words(v, load(lo)), Vec::greater_words(load(hi), v));
  }

  static Vec::type above_span(Vec::type v, const ByteVector<TIER_BYTES> &base,
                              const ByteVector<TIER_BYTES> &span) {
    return Vec::subtract_saturated_u8(Vec::subtract_u8(v, load(base)), load(span));
  }

  static void count(Vec::type &n, Vec::type mask) {
    n = Vec::add_dwords(n, Vec::sum_u8(Vec::bit_and(mask, Vec::words(1))));
  }

  PplContext &ctx_;
  Parameters &p_;
  CellSums qualified_ = CellSums::none(), exposed_ = CellSums::none(), all_ = CellSums::none();
  Vec::type n_qualified_ = Vec::zero(), n_exposed_ = Vec::zero();
};

}  // namespace
}  // namespace ppl::TIER
