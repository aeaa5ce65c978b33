#include "model/front_end.h"

#include "model/arithmetic.h"

namespace ppl_model {

namespace {

template <typename T>
T of_column(const Pair<T> &pair, int column) {
  return column % 2 == 0 ? pair.even : pair.odd;
}

}  // namespace

uint8_t subtract_black(const Parameters &params, int line, int column, uint8_t sample) {
  const Pair<uint8_t> &levels =
      line % 2 == 0 ? params.optical_black_BG_vec : params.optical_black_GR_vec;
  return clamp_to_byte(sample - of_column(levels, column));
}

// Gain is 8.5 and unsigned; the offset wraps in 16 bits before the clamp.
uint8_t apply_gain_and_delta(const Parameters &params, int line, int column, uint8_t sample) {
  const bool bg = line % 2 == 0;
  const Pair<int16_t> &gains = bg ? params.rgb_gain_BG_vec : params.rgb_gain_GR_vec;
  const Pair<int16_t> &deltas = bg ? params.rgb_delta_BG_vec : params.rgb_delta_GR_vec;
  const uint16_t product = static_cast<uint16_t>(sample * of_column(gains, column));
  return clamp_to_byte(wrap16((product >> 5) + of_column(deltas, column)));
}

FrontEnd run_front_end(const PplContext *ctx, const ByteTable &table,
                       const LineStarts &line_starts) {
  const Parameters &params = ctx->params;
  const int width = ctx->plain.frame_width & ~1;
  const int height = ctx->plain.frame_height & ~1;
  FrontEnd result{Plane(width, height), Plane(width, height), Plane(width, height)};
  for (int y = 0; y < height; ++y) {
    uint8_t *line = line_starts(y);
    for (int x = 0; x < width; ++x) {
      const uint8_t black = subtract_black(params, y, x, line[x]);
      const uint8_t adjusted = apply_gain_and_delta(params, y, x, black);
      result.black.at(y, x) = black;
      result.adjusted.at(y, x) = adjusted;
      line[x] = result.looked_up.at(y, x) = table[adjusted];
    }
  }
  return result;
}

FrontEnd run_front_end(const PplContext *ctx, const ByteTable &table, uint8_t *src) {
  const ptrdiff_t stride = ctx->plain.frame_stride;
  return run_front_end(ctx, table, [=](int line) { return src + line * stride; });
}

}  // namespace ppl_model
