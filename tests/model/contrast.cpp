#include <vector>

#include "model/arithmetic.h"
#include "model/gamma.h"

namespace ppl_model {

namespace {

struct Point {
  int32_t x, y;
};

// A polyline through the anchors in 1/16 units, with slopes in Q12; all of it wraps in 32 bits.
void build_contrast_curve(ByteTable &table, int32_t x, int32_t y) {
  std::vector<Point> points;
  if (x == 0)
    points = {{0, y}, {255, sub32(255, y)}};
  else
    points = {{0, 0}, {x, y}, {255 - x, sub32(255, y)}, {255, 255}};
  for (Point &point : points) point = {mul32(point.x, 16), mul32(point.y, 16)};

  for (int32_t i = 0; i < 256; ++i) {
    const int32_t t = 16 * i;
    size_t end = 1;
    while (t > points[end].x && end + 1 < points.size()) ++end;
    const Point &from = points[end - 1];
    const Point &to = points[end];
    const int32_t slope = div32(mul32(sub32(to.y, from.y), 4096), to.x - from.x);
    const int32_t value = add32(mul32(t - from.x, slope) >> 12, from.y) >> 4;
    table[static_cast<size_t>(i)] = low_byte(value);
  }
}

}  // namespace

uint8_t ppl_set_contrast_c(PplContext *ctx, int32_t c, int32_t *x, int32_t *y) {
  if (c < -127 || c > 127) return 0;
  const int32_t anchor_x = c >= 0 ? c : 0;
  const int32_t anchor_y = c >= 0 ? 0 : -c;
  if (x != nullptr) *x = anchor_x;
  if (y != nullptr) *y = anchor_y;
  ctx->plain.contrast_c = c;
  return ppl_set_contrast_xy(ctx, static_cast<uint32_t>(anchor_x), static_cast<uint32_t>(anchor_y));
}

uint8_t ppl_set_contrast_xy(PplContext *ctx, uint32_t x, uint32_t y) {
  if (x > 127) return 0;
  ctx->plain.contrast_x = x;
  ctx->plain.contrast_y = y;
  build_contrast_curve(ctx->contrast_table, static_cast<int32_t>(x), static_cast<int32_t>(y));
  recompose_contrast_and_gamma(ctx);
  return ppl_set_sat_hue(ctx, ctx->nf88_sat, ctx->hue_degree);
}

uint8_t ppl_reset_contrast(PplContext *ctx) {
  ctx->plain.contrast_c = 0;
  return ppl_set_contrast_xy(ctx, 0, 0);
}

const uint8_t *ppl_contrast_table(const PplContext *ctx) { return ctx->contrast_table.data(); }
const uint8_t *ppl_yuv_contrast_gamma_table(const PplContext *ctx) {
  return ctx->yuv_contrast_gamma_table.data();
}
const uint8_t *ppl_rgb_contrast_gamma_table(const PplContext *ctx) {
  return ctx->rgb_contrast_gamma_table.data();
}

// The curve alone: the luma gain of the colour matrices stays as it is.
uint8_t ppl_copy_contrast_table(PplContext *ctx, const uint8_t table[256]) {
  std::copy_n(table, 256, ctx->contrast_table.begin());
  recompose_contrast_and_gamma(ctx);
  return 1;
}

}  // namespace ppl_model
