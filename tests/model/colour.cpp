#include "model/colour.h"

#include <cmath>
#include <numbers>

#include "model/refresh.h"

namespace ppl_model {

namespace {

using Matrix = std::array<int32_t, 9>;

// All Q12.
constexpr Matrix yuv_to_rgb_matrix = {4096, 0, 5616, 4096, -1376, -2859, 4096, 7094, 0};
constexpr Matrix rgb_to_yuv_full_matrix = {1225, 2404, 467, -707, -1389, 2095, 2095, -1754, -340};
constexpr Matrix rgb_to_yuv_studio_matrix = {1053, 2064, 401, -606, -1192, 1798, 1798, -1507, -291};

// floor(4096 sin(i degrees)); the two exact values are set by hand, since rounding could lose them.
int32_t sine_of_quadrant(int32_t degrees) {
  if (degrees == 30) return 2048;
  if (degrees == 90) return 4096;
  return static_cast<int32_t>(std::floor(4096 * std::sin(degrees * std::numbers::pi / 180)));
}

// Brings any angle to 0..359.
int32_t normalise_degrees(int32_t degrees) {
  const int32_t remainder = degrees % 360;
  return remainder < 0 ? remainder + 360 : remainder;
}

int32_t sine(int32_t degrees) {
  const int32_t r = normalise_degrees(degrees);
  const int32_t m = r >= 181 ? 360 - r : r;
  const int32_t value = sine_of_quadrant(m > 90 ? 180 - m : m);
  return r >= 181 ? -value : value;
}

int32_t product_sum(const Matrix &p, const Matrix &q, size_t row, size_t column) {
  int32_t sum = 0;
  for (size_t n = 0; n < 3; ++n) sum = add32(sum, mul32(p[3 * row + n], q[3 * n + column]));
  return sum;
}

// Product on Q12 operands, rounded.
Matrix times(const Matrix &p, const Matrix &q) {
  Matrix result;
  for (size_t row = 0; row < 3; ++row)
    for (size_t column = 0; column < 3; ++column)
      result[3 * row + column] = add32(product_sum(p, q, row, column), 2048) >> 12;
  return result;
}

Matrix q12_to_q8(const Matrix &matrix) {
  Matrix result;
  for (size_t i = 0; i < 9; ++i) result[i] = add32(matrix[i], 8) >> 4;
  return result;
}

// 32768 to 65535 keep their low 16 bits and so turn negative; what lies beyond is clamped.
int16_t fit(int32_t value) {
  if (value >= -65536 && value <= 65535) return wrap16(value);
  return value > 0 ? int16_t{32767} : int16_t{-32768};
}

// Coefficient set times sensor matrix m, without rounding: Q16.
Matrix combine(const Matrix &coefficients, const std::array<int32_t, 18> &matrices, size_t m) {
  Matrix sensor;
  std::copy_n(matrices.begin() + static_cast<std::ptrdiff_t>(9 * m), 9, sensor.begin());
  Matrix result;
  for (size_t row = 0; row < 3; ++row)
    for (size_t column = 0; column < 3; ++column)
      result[3 * row + column] = product_sum(coefficients, sensor, row, column);
  return result;
}

void derive_colour_matrix(const PplContext &ctx, Parameters &params) {
  const int32_t bound =
      ctx.sensor_matrix_index_upper_bound == 0 ? 1 : ctx.sensor_matrix_index_upper_bound;
  std::array<Matrix, 2> A, F, S;
  for (size_t m = 0; m < 2; ++m) {
    A[m] = combine(ctx.plain.colour_rgb, ctx.sensor_matrix, m);
    for (int32_t &value : A[m]) value = add32(value, 128) >> 8;
    F[m] = combine(ctx.plain.colour_yuv_full, ctx.sensor_matrix, m);
    S[m] = combine(ctx.plain.colour_yuv_studio, ctx.sensor_matrix, m);
  }

  const auto q12_slope = [](int16_t value) { return static_cast<int16_t>(value >> 3); };
  const auto q12_base = [](int16_t value) { return static_cast<int16_t>(value >> 4); };
  for (size_t i = 0; i < 9; ++i) {
    const auto base_rgb = [&](size_t m) { return fit(add32(A[m][i], 2) >> 2); };
    const auto base_full = [&](size_t m) { return fit(add32(F[m][i], 512) >> 10); };
    const auto base_studio = [&](size_t m) { return fit(add32(S[m][i], 512) >> 10); };
    const auto base_q12 = [&](size_t m) { return q12_base(fit(add32(S[m][i], 8))); };
    params.rgb_base0_vec[i] = base_rgb(0);
    params.rgb_base1_vec[i] = base_rgb(1);
    params.full_base0_vec[i] = base_full(0);
    params.full_base1_vec[i] = base_full(1);
    params.studio_base0_vec[i] = base_studio(0);
    params.studio_base1_vec[i] = base_studio(1);
    params.studio_base0_q12_vec[i] = base_q12(0);
    params.studio_base1_q12_vec[i] = base_q12(1);

    const int32_t slope_A = div32(mul32(sub32(A[1][i], A[0][i]), 8), bound);
    const int32_t slope_F = div32(sub32(F[1][i], F[0][i]), bound);
    const int32_t slope_S = div32(sub32(S[1][i], S[0][i]), bound);
    params.rgb_slope_vec[i] = fit(slope_A);
    params.full_slope_vec[i] = fit(add32(slope_F, 2) >> 2);
    params.studio_slope_vec[i] = fit(add32(slope_S, 2) >> 2);
    params.studio_slope_q12_vec[i] = q12_slope(fit(add32(slope_S, 4)));
  }

  params.index_bound_vec = wrap16(bound);
  // Q8 becomes Q6, plus the half of the final shift by 6.
  const auto offset = [](int32_t value) { return wrap16(add32(add32(value, 2) >> 2, 32)); };
  params.offset_studio_vec = offset(ctx.plain.offset_yuv_studio);
  params.offset_full_vec = offset(ctx.plain.offset_yuv_full);
  params.offset_rgb_vec = offset(ctx.plain.offset_rgb);
}

}  // namespace

uint8_t refresh_colour_matrix(PplContext *ctx) {
  return refresh(ctx, [ctx](Parameters &params) {
    derive_colour_matrix(*ctx, params);
    return true;
  });
}

uint8_t ppl_set_sat_hue(PplContext *ctx, uint32_t nf88_sat, int32_t hue_degree) {
  if (nf88_sat > 512) return 0;
  PlainState &plain = ctx->plain;
  ctx->nf88_sat = nf88_sat;
  ctx->hue_degree = normalise_degrees(hue_degree);

  const int32_t sat = static_cast<int32_t>(nf88_sat);
  const int32_t c = (sine(90 - ctx->hue_degree) * sat) >> 8;
  const int32_t s = sine(ctx->hue_degree) * sat;
  if (plain.contrast_c < -128 || plain.contrast_c > 128) return 0;
  // Twice the step on the positive side only.
  const int32_t k = plain.contrast_c < 0 ? plain.contrast_c + 256 : 2 * plain.contrast_c + 256;

  const Matrix control = {k * 4096 >> 8, 0, 0, 0, c, -(s >> 8), 0, s >> 8, c};
  plain.chroma_matrix = {c >> 4, -(s >> 8) >> 4, s >> 12, c >> 4};

  plain.colour_yuv_studio = q12_to_q8(times(control, rgb_to_yuv_studio_matrix));
  plain.offset_yuv_studio = 32768 - 128 * k;
  const Matrix full = times(control, rgb_to_yuv_full_matrix);
  plain.colour_yuv_full = q12_to_q8(full);
  plain.offset_yuv_full = 32768 - 128 * k;
  plain.colour_rgb = q12_to_q8(times(yuv_to_rgb_matrix, full));
  plain.offset_rgb = mul32(plain.offset_yuv_full, 4096) >> 12;
  return refresh_colour_matrix(ctx);
}

uint8_t ppl_set_sat(PplContext *ctx, uint32_t nf88_sat) {
  return ppl_set_sat_hue(ctx, nf88_sat, ctx->hue_degree);
}
uint8_t ppl_set_hue(PplContext *ctx, int32_t hue_degree) {
  return ppl_set_sat_hue(ctx, ctx->nf88_sat, hue_degree);
}
uint32_t ppl_nf88_sat(const PplContext *ctx) { return ctx->nf88_sat; }
int32_t ppl_hue_degree(const PplContext *ctx) { return ctx->hue_degree; }
uint8_t ppl_reset_sat_hue(PplContext *ctx) { return ppl_set_sat_hue(ctx, 256, 0); }

}  // namespace ppl_model
