// Saturation, hue and contrast become the three coefficient sets that the colour matrices take in.
#include "context/context.h"
#include "controls/colour_matrix.h"

namespace ppl {
namespace {

using ControlMatrix = int32_t[3][3];

// floor(4096 sin(i degrees)).
constexpr int32_t sine_table[91] = {
    0,    71,   142,  214,  285,  356,  428,  499,  570,  640,  711,  781,  851,  921,  990,  1060,
    1129, 1197, 1265, 1333, 1400, 1467, 1534, 1600, 1665, 1731, 1795, 1859, 1922, 1985, 2048, 2109,
    2170, 2230, 2290, 2349, 2407, 2465, 2521, 2577, 2632, 2687, 2740, 2793, 2845, 2896, 2946, 2995,
    3043, 3091, 3137, 3183, 3227, 3271, 3313, 3355, 3395, 3435, 3473, 3510, 3547, 3582, 3616, 3649,
    3681, 3712, 3741, 3770, 3797, 3823, 3848, 3872, 3895, 3917, 3937, 3956, 3974, 3991, 4006, 4020,
    4033, 4045, 4056, 4065, 4073, 4080, 4086, 4090, 4093, 4095, 4096};

// ITU-R BT.601 in Q12: luma weights 0.299, 0.587, 0.114, and their inverse with U and V as stored.
constexpr ControlMatrix yuv_to_rgb_matrix = {
    {4096, 0, 5616}, {4096, -1376, -2859}, {4096, 7094, 0}};
constexpr ControlMatrix rgb_to_yuv_full_matrix = {
    {1225, 2404, 467}, {-707, -1389, 2095}, {2095, -1754, -340}};
// The same squeezed to 219 steps of luma and 224 of chroma.
constexpr ControlMatrix rgb_to_yuv_studio_matrix = {
    {1053, 2064, 401}, {-606, -1192, 1798}, {1798, -1507, -291}};

int32_t whole_turn(int32_t degrees) {
  const int32_t rest = degrees % 360;
  return rest < 0 ? rest + 360 : rest;
}

// Q12.
int32_t sine(int32_t degrees) {
  const int32_t r = whole_turn(degrees);
  const bool lower_half = r >= 181;
  const int32_t m = lower_half ? 360 - r : r;
  const int32_t value = sine_table[m > 90 ? 180 - m : m];
  return lower_half ? -value : value;
}

// Q12 operands and result, rounded.
void multiply(ControlMatrix &product, const ControlMatrix &p, const ControlMatrix &q) {
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      const int32_t sum = p[i][0] * q[0][j] + p[i][1] * q[1][j] + p[i][2] * q[2][j];
      product[i][j] = (sum + 2048) >> 12;
    }
  }
}

// Q12 to Q8, rounded.
void store_set(int32_t (&set)[9], const ControlMatrix &matrix) {
  for (int i = 0; i < 9; ++i) set[i] = (matrix[i / 3][i % 3] + 8) >> 4;
}

}  // namespace
}  // namespace ppl

using namespace ppl;

uint8_t PPL_CALL ppl_set_sat_hue(PplContext *ctx, uint32_t nf88_sat, int32_t hue_degree) {
  if (nf88_sat > 512) return 0;
  const auto sat = static_cast<int32_t>(nf88_sat);
  const int32_t h = whole_turn(hue_degree);
  ctx->nf88_sat = nf88_sat;
  ctx->hue_degree = h;

  const int32_t c = (sine(90 - h) * sat) >> 8;
  const int32_t s = sine(h) * sat;
  const int32_t contrast = ctx->contrast_c;
  if (contrast < -128 || contrast > 128) return 0;
  // Twice as steep above 0. Meant so: docs/oddities.md, "Contrast slopes".
  const int32_t k = 256 + (contrast < 0 ? contrast : 2 * contrast);
  const ControlMatrix control = {{(k * 4096) >> 8, 0, 0}, {0, c, -(s >> 8)}, {0, s >> 8, c}};

  ControlMatrix studio, full, rgb;
  multiply(studio, control, rgb_to_yuv_studio_matrix);
  multiply(full, control, rgb_to_yuv_full_matrix);
  multiply(rgb, yuv_to_rgb_matrix, full);
  store_set(ctx->colour_yuv_studio, studio);
  store_set(ctx->colour_yuv_full, full);
  store_set(ctx->colour_rgb, rgb);

  // The gain turns around mid-grey: 128 in Q8.
  ctx->offset_yuv_studio = 32768 - 128 * k;
  ctx->offset_yuv_full = 32768 - 128 * k;
  ctx->offset_rgb = (ctx->offset_yuv_full * 4096) >> 12;
  return refresh_colour_matrices(*ctx);
}

uint8_t PPL_CALL ppl_set_sat(PplContext *ctx, uint32_t nf88_sat) {
  return ppl_set_sat_hue(ctx, nf88_sat, ctx->hue_degree);
}

uint8_t PPL_CALL ppl_set_hue(PplContext *ctx, int32_t hue_degree) {
  return ppl_set_sat_hue(ctx, ctx->nf88_sat, hue_degree);
}

uint32_t PPL_CALL ppl_nf88_sat(const PplContext *ctx) { return ctx->nf88_sat; }

int32_t PPL_CALL ppl_hue_degree(const PplContext *ctx) { return ctx->hue_degree; }

uint8_t PPL_CALL ppl_reset_sat_hue(PplContext *ctx) { return ppl_set_sat_hue(ctx, 256, 0); }
