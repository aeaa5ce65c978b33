#include "controls/colour_matrix.h"

#include "controls/setter.h"

namespace ppl {
namespace {

// Default matrices in 8.8, each row summing to about 256: the first for grey pixels, the second for
// strongly coloured ones.
constexpr int32_t default_sensor_matrix[18] = {
    177, 88,  -9,  24,  232, -1,  29,  62,   166,  //
    410, -57, -97, -98, 423, -71, -84, -143, 486,
};

int32_t wrapping_multiply(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

// Truncates. The one quotient that does not fit wraps.
int32_t wrapping_divide(int32_t a, int32_t b) { return b == -1 ? wrapping_subtract(0, a) : a / b; }

// Narrows to a word: results within 17 bits keep their low 16 bits (32768 to 65535 land negative),
// larger ones saturate. Meant so: docs/oddities.md, "Sums that wrap".
int32_t fit(int32_t value) {
  if (value >= -65536 && value <= 65535) return to_word(value);
  return value > 0 ? 32767 : -32768;
}

using Product = int32_t[9];

// coefficients times sensor matrix: Q16.
void multiply(Product &product, const int32_t (&coefficients)[9], const int32_t (&sensor)[3][3]) {
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      int32_t sum = 0;
      for (int n = 0; n < 3; ++n) {
        sum = wrapping_add(sum, wrapping_multiply(coefficients[3 * i + n], sensor[n][j]));
      }
      product[3 * i + j] = sum;
    }
  }
}

// Everything that the parameters are made of, for both sensor matrices.
struct Products {
  Product rgb[2];     // A: Q8
  Product full[2];    // F: Q16
  Product studio[2];  // S: Q16

  explicit Products(const PplContext &ctx) {
    for (int m = 0; m < 2; ++m) {
      multiply(rgb[m], ctx.colour_rgb, ctx.sensor_matrix[m]);
      for (int32_t &a : rgb[m]) a = wrapping_add(a, 128) >> 8;
      multiply(full[m], ctx.colour_yuv_full, ctx.sensor_matrix[m]);
      multiply(studio[m], ctx.colour_yuv_studio, ctx.sensor_matrix[m]);
    }
  }
};

// Q16 and Q8 to Q6, rounded; Q16 to Q12 with the last shift done in 16 bits.
int32_t q16_to_q6(int32_t value) { return fit(wrapping_add(value, 512) >> 10); }
int32_t q8_to_q6(int32_t value) { return fit(wrapping_add(value, 2) >> 2); }
int32_t q16_to_q12(int32_t value) { return fit(wrapping_add(value, 8)) >> 4; }

void write_matrices(Parameters &p, const Products &products, int32_t bound) {
  for (int i = 0; i < 9; ++i) {
    const int32_t rgb[2] = {products.rgb[0][i], products.rgb[1][i]};
    const int32_t full[2] = {products.full[0][i], products.full[1][i]};
    const int32_t studio[2] = {products.studio[0][i], products.studio[1][i]};
    p.rgb_base0_vec[i] = to_word(q8_to_q6(rgb[0]));
    p.full_base0_vec[i] = to_word(q16_to_q6(full[0]));
    p.studio_base0_vec[i] = to_word(q16_to_q6(studio[0]));
    p.unread.studio_base0_q12_vec[i] = to_word(q16_to_q12(studio[0]));
    p.rgb_base1_vec[i] = to_word(q8_to_q6(rgb[1]));
    p.unread.full_base1_vec[i] = to_word(q16_to_q6(full[1]));
    p.studio_base1_vec[i] = to_word(q16_to_q6(studio[1]));
    p.unread.studio_base1_q12_vec[i] = to_word(q16_to_q12(studio[1]));

    const int32_t rgb_step =
        wrapping_divide(wrapping_multiply(wrapping_subtract(rgb[1], rgb[0]), 8), bound);
    const int32_t full_step = wrapping_divide(wrapping_subtract(full[1], full[0]), bound);
    const int32_t studio_step = wrapping_divide(wrapping_subtract(studio[1], studio[0]), bound);
    p.rgb_slope_vec[i] = to_word(fit(rgb_step));
    p.full_slope_vec[i] = to_word(fit(wrapping_add(full_step, 2) >> 2));
    p.studio_slope_vec[i] = to_word(fit(wrapping_add(studio_step, 2) >> 2));
    p.unread.studio_slope_q12_vec[i] = to_word(fit(wrapping_add(studio_step, 4)) >> 3);
  }
  p.index_bound_vec = to_word(bound);
}

// Q8 to Q6, with the half that the kernels' last shift by 6 needs.
int16_t rounding_of(int32_t offset) { return to_word(((offset + 2) >> 2) + 32); }

}  // namespace

uint8_t refresh_colour_matrices(PplContext &ctx) {
  return refresh_parameters(ctx, [&ctx](Parameters &p) {
    const int32_t bound = ctx.sensor_matrix_index_upper_bound;
    const Products products(ctx);
    write_matrices(p, products, bound == 0 ? 1 : bound);
    p.offset_studio_vec = rounding_of(ctx.offset_yuv_studio);
    p.offset_full_vec = rounding_of(ctx.offset_yuv_full);
    p.offset_rgb_vec = rounding_of(ctx.offset_rgb);
    return true;
  });
}

}  // namespace ppl

using namespace ppl;

uint8_t PPL_CALL ppl_sensor_matrix(const PplContext *ctx, int32_t matrices[18]) {
  for (int i = 0; i < 18; ++i) matrices[i] = ctx->sensor_matrix[i / 9][i % 9 / 3][i % 3];
  return 1;
}

uint8_t PPL_CALL ppl_copy_sensor_matrix(PplContext *ctx, const int32_t matrices[18]) {
  for (int i = 0; i < 18; ++i) ctx->sensor_matrix[i / 9][i % 9 / 3][i % 3] = matrices[i];
  return refresh_colour_matrices(*ctx);
}

uint8_t PPL_CALL ppl_reset_sensor_matrix(PplContext *ctx) {
  return ppl_copy_sensor_matrix(ctx, default_sensor_matrix);
}

int32_t PPL_CALL ppl_sensor_matrix_index_upper_bound(const PplContext *ctx) {
  return ctx->sensor_matrix_index_upper_bound;
}

uint8_t PPL_CALL ppl_set_sensor_matrix_index_upper_bound(PplContext *ctx, int32_t bound) {
  ctx->sensor_matrix_index_upper_bound = bound;
  return refresh_colour_matrices(*ctx);
}

uint8_t PPL_CALL ppl_reset_sensor_matrix_index_upper_bound(PplContext *ctx) {
  return ppl_set_sensor_matrix_index_upper_bound(ctx, 12);
}
