#include "model/front_end.h"

#include "model/arithmetic.h"

namespace ppl_model {

uint8_t subtract_black(const DerivedBlock &params, int line, int column, uint8_t sample) {
  const ByteLanes &lanes =
      line % 2 == 0 ? params.optical_black_BG_vec : params.optical_black_GR_vec;
  return clamp_to_byte(sample - lanes[static_cast<size_t>(column % 2)]);
}

// Gain is 8.5 and unsigned; the offset wraps in 16 bits before the clamp.
uint8_t apply_gain_and_delta(const DerivedBlock &params, int line, int column, uint8_t sample) {
  const bool bg = line % 2 == 0;
  const size_t lane = static_cast<size_t>(column % 2);
  const WordLanes &gains = bg ? params.rgb_gain_BG_vec : params.rgb_gain_GR_vec;
  const WordLanes &deltas = bg ? params.rgb_delta_BG_vec : params.rgb_delta_GR_vec;
  const uint16_t product = static_cast<uint16_t>(sample * gains[lane]);
  return clamp_to_byte(wrap16((product >> 5) + deltas[lane]));
}

FrontEnd run_front_end(const PplContext *ctx, Tier tier, const ByteTable &table,
                       const LineStarts &line_starts) {
  const DerivedBlock &params = ctx->tier(tier).params;
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

FrontEnd run_front_end(const PplContext *ctx, Tier tier, const ByteTable &table, uint8_t *src) {
  const ptrdiff_t stride = ctx->plain.frame_stride;
  return run_front_end(ctx, tier, table, [=](int line) { return src + line * stride; });
}

}  // namespace ppl_model
