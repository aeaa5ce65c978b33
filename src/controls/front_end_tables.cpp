#include "controls/front_end_tables.h"

namespace ppl {
namespace {

// One sample's way up to the curve.
struct Position {
  uint8_t black;
  uint16_t gain;  // 8.5
  int16_t delta;

  uint8_t operator()(int sample) const {
    const int above_black = sample > black ? sample - black : 0;
    const auto product = static_cast<uint16_t>(above_black * gain);
    const auto sum = static_cast<int16_t>((product >> 5) + delta);  // wraps in 16 bits
    return static_cast<uint8_t>(sum < 0 ? 0 : sum > 255 ? 255 : sum);
  }
};

void compose(FrontEndTable &rgb, FrontEndTable &mono, const PplContext &ctx, const Position &even,
             const Position &odd) {
  for (int column = 0; column < FrontEndTable::columns; ++column) {
    const Position &position = column % 2 == 0 ? even : odd;
    for (int sample = 0; sample < 256; ++sample) {
      const uint8_t value = position(sample);
      const int shift = 8 * column;
      rgb.column[column][sample] = static_cast<uint32_t>(ctx.rgb_gamma_table[value]) << shift;
      mono.column[column][sample] = static_cast<uint32_t>(ctx.yuv_contrast_gamma_table[value])
                                    << shift;
    }
  }
}

template <int B>
Position position(const ByteVector<B> &black, const WordVector<B> &gain, const WordVector<B> &delta,
                  int column) {
  return {black.lane[column], static_cast<uint16_t>(gain.lane[column]), delta.lane[column]};
}

}  // namespace

template <int B>
void compose_front_end(const PplContext &ctx, ParameterBlock<B> &p) {
  const auto bg = [&p](int column) {
    return position<B>(p.optical_black_BG_vec, p.rgb_gain_BG_vec, p.rgb_delta_BG_vec, column);
  };
  const auto gr = [&p](int column) {
    return position<B>(p.optical_black_GR_vec, p.rgb_gain_GR_vec, p.rgb_delta_GR_vec, column);
  };
  compose(p.front_end.line[0], p.front_end_mono.line[0], ctx, bg(0), bg(1));
  compose(p.front_end.line[1], p.front_end_mono.line[1], ctx, gr(0), gr(1));
}

template void compose_front_end(const PplContext &, ParameterBlock<p3_block_width> &);
template void compose_front_end(const PplContext &, ParameterBlock<sse2_block_width> &);

void compose_front_ends(PplContext &ctx) {
  compose_front_end(ctx, ctx.p3_params);
  compose_front_end(ctx, ctx.sse2_params);
}

}  // namespace ppl
