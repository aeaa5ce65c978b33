#include "controls/curve_tables.h"

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

// The positions of the even and of the odd columns of a line.
using Positions = Pair<Position>;

Positions positions(const BytePair &black, const WordPair &gain, const WordPair &delta) {
  return {{black.even, static_cast<uint16_t>(gain.even), delta.even},
          {black.odd, static_cast<uint16_t>(gain.odd), delta.odd}};
}

void compose_line(CurveTable &rgb, CurveTable &mono, const PplContext &ctx,
                  const Positions &positions) {
  for (int column = 0; column < CurveTable::columns; ++column) {
    const Position &position = column % 2 == 0 ? positions.even : positions.odd;
    for (int sample = 0; sample < 256; ++sample) {
      const uint8_t value = position(sample);
      const int shift = 8 * column;
      rgb.column[column][sample] = static_cast<uint32_t>(ctx.rgb_gamma_table[value]) << shift;
      mono.column[column][sample] = static_cast<uint32_t>(ctx.yuv_contrast_gamma_table[value])
                                    << shift;
    }
  }
}

}  // namespace

void compose_curves(PplContext &ctx) {
  Parameters &p = ctx.params;
  compose_line(p.curves.line[0], p.curves_mono.line[0], ctx,
               positions(p.optical_black_BG_vec, p.rgb_gain_BG_vec, p.rgb_delta_BG_vec));
  compose_line(p.curves.line[1], p.curves_mono.line[1], ctx,
               positions(p.optical_black_GR_vec, p.rgb_gain_GR_vec, p.rgb_delta_GR_vec));
}

}  // namespace ppl
