#include "controls/contrast.h"

#include "controls/curve_tables.h"
#include "controls/setter.h"

namespace ppl {
namespace {

struct Point {
  int32_t x, y;  // times 16
};

Point point(uint32_t x, uint32_t y) {
  return {static_cast<int32_t>(16 * x), static_cast<int32_t>(16 * y)};
}

// A polygon through 2 or 4 points in 28.4 coordinates, slopes in 20.12. y is not limited: an entry
// keeps the low 8 bits.
void build_curve(uint8_t *table, uint32_t x, uint32_t y) {
  const bool has_knees = x != 0;
  const Point corners[4] = {has_knees ? point(0, 0) : point(0, y),
                            has_knees ? point(x, y) : point(255, 255 - y), point(255 - x, 255 - y),
                            point(255, 255)};
  const int last = has_knees ? 3 : 1;

  for (int i = 0; i < 256; ++i) {
    const int32_t t = 16 * i;
    int end = 1;
    while (end < last && t > corners[end].x) ++end;
    const Point start = corners[end - 1];
    const Point stop = corners[end];
    // Wraps in 32 bits for a very large y.
    const auto rise = static_cast<int32_t>(
        (static_cast<uint32_t>(stop.y) - static_cast<uint32_t>(start.y)) << 12);
    const int32_t slope = rise / (stop.x - start.x);
    const auto run =
        static_cast<int32_t>(static_cast<uint32_t>(t - start.x) * static_cast<uint32_t>(slope));
    const uint32_t value = static_cast<uint32_t>(run >> 12) + static_cast<uint32_t>(start.y);
    table[i] = static_cast<uint8_t>(static_cast<int32_t>(value) >> 4);
  }
}

}  // namespace

void compose_contrast_gamma(PplContext &ctx) {
  for (int i = 0; i < 256; ++i) {
    const uint8_t c = ctx.contrast_table[i];
    ctx.yuv_contrast_gamma_table[i] = ctx.yuv_gamma_table[c];
    ctx.rgb_contrast_gamma_table[i] = ctx.rgb_gamma_table[c];
  }
  compose_curves(ctx);
}

}  // namespace ppl

using namespace ppl;

uint8_t PPL_CALL ppl_set_contrast_c(PplContext *ctx, int32_t c, int32_t *x, int32_t *y) {
  if (c < -127 || c > 127) return 0;
  const int32_t curve_x = c >= 0 ? c : 0;
  const int32_t curve_y = c >= 0 ? 0 : -c;
  if (x != nullptr) *x = curve_x;
  if (y != nullptr) *y = curve_y;
  ctx->contrast_c = c;
  return ppl_set_contrast_xy(ctx, static_cast<uint32_t>(curve_x), static_cast<uint32_t>(curve_y));
}

uint8_t PPL_CALL ppl_set_contrast_xy(PplContext *ctx, uint32_t x, uint32_t y) {
  if (x > 127) return 0;
  ctx->contrast_x = x;
  ctx->contrast_y = y;
  build_curve(ctx->contrast_table, x, y);
  compose_contrast_gamma(*ctx);
  // The luma gain comes from contrast_c, which only ppl_set_contrast_c changes.
  return ppl_set_sat_hue(ctx, ctx->nf88_sat, ctx->hue_degree);
}

uint8_t PPL_CALL ppl_reset_contrast(PplContext *ctx) {
  ctx->contrast_c = 0;
  return ppl_set_contrast_xy(ctx, 0, 0);
}

const uint8_t *PPL_CALL ppl_contrast_table(const PplContext *ctx) { return ctx->contrast_table; }

const uint8_t *PPL_CALL ppl_yuv_contrast_gamma_table(const PplContext *ctx) {
  return ctx->yuv_contrast_gamma_table;
}

const uint8_t *PPL_CALL ppl_rgb_contrast_gamma_table(const PplContext *ctx) {
  return ctx->rgb_contrast_gamma_table;
}

uint8_t PPL_CALL ppl_copy_contrast_table(PplContext *ctx, const uint8_t table[256]) {
  copy_curve(ctx->contrast_table, table);
  compose_contrast_gamma(*ctx);
  return 1;
}
