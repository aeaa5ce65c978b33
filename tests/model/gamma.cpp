#include "model/gamma.h"

#include <algorithm>
#include <cmath>

namespace ppl_model {

namespace {

constexpr int first_index = -32;
constexpr int last_index = 32;
constexpr int row_count = 65;

using Family = std::array<ByteTable, row_count>;

// The constant of the power section, by index.
constexpr std::array<double, row_count> power_offsets = {
    -0.000820, -0.001010, -0.001220, -0.001434, -0.001660, -0.001895, -0.002139, -0.002308,
    -0.002450, -0.002545, -0.002520, -0.002400, -0.002100, -0.001634, -0.000946, 0,
    0.001311,  0.002920,  0.004936,  0.007385,  0.010320,  0.013780,  0.017822,  0.022424,
    0.027750,  0.033796,  0.040560,  0.048045,  0.056468,  0.065716,  0.075970,  0.087112,
    0.099296,  0.112520,  0.126771,  0.142274,  0.158900,  0.176852,  0.196011,  0.216555,
    0.238476,  0.261845,  0.286737,  0.313189,  0.341196,  0.371020,  0.402598,  0.436000,
    0.471248,  0.508631,  0.548022,  0.589590,  0.633431,  0.679644,  0.728295,  0.779640,
    0.833508,  0.890227,  0.950022,  1.012812,  1.078627,  1.148116,  1.220685,  1.297464,
    1.377240};

double exponent(int k) { return 0.45 * std::exp(-3.0 * k / 64.0); }

// A linear toe up to t = 0.018, a power section behind it.
double curve(int k, double t) {
  const double a = power_offsets[static_cast<size_t>(k - first_index)];
  const double g = exponent(k);
  const auto power_section = [&](double x) { return (1 + a) * std::pow(x, g) - a; };
  if (t < 0.018) return power_section(0.018) / 0.018 * t;
  return power_section(t);
}

int floor_of(double value) { return static_cast<int>(std::floor(value)); }

struct GammaData {
  Family full_range, studio;
  std::array<int32_t, row_count> nf20_12;

  GammaData() {
    for (int k = first_index; k <= last_index; ++k) {
      const size_t row = static_cast<size_t>(k - first_index);
      nf20_12[row] = floor_of(4096 * exponent(k));
      for (int x = 0; x < 256; ++x) {
        full_range[row][static_cast<size_t>(x)] =
            static_cast<uint8_t>(std::clamp(floor_of(256 * curve(k, x / 256.0)), 0, 255));
        const double t = std::max(x - 16, 0) / 220.0;
        studio[row][static_cast<size_t>(x)] =
            static_cast<uint8_t>(std::clamp(16 + floor_of(220 * curve(k, t)), 16, 235));
      }
    }
  }
};

// Process-wide and writable; a row copied in is seen by every context's next ppl_set_gamma.
GammaData &data() {
  static GammaData instance;
  return instance;
}

void copy_in(Family &family, const uint8_t *tables) {
  for (ByteTable &row : family) {
    std::copy_n(tables, row.size(), row.begin());
    tables += row.size();
  }
}

void copy_out(const Family &family, uint8_t *tables) {
  for (const ByteTable &row : family) tables = std::copy(row.begin(), row.end(), tables);
}

}  // namespace

void recompose_contrast_and_gamma(PplContext *ctx) {
  for (size_t i = 0; i < 256; ++i) {
    const uint8_t c = ctx->contrast_table[i];
    ctx->yuv_contrast_gamma_table[i] = ctx->yuv_gamma_table[c];
    ctx->rgb_contrast_gamma_table[i] = ctx->rgb_gamma_table[c];
  }
}

uint8_t ppl_set_gamma(PplContext *ctx, int32_t index) {
  if (index < first_index || index > last_index) return 0;
  const size_t row = static_cast<size_t>(index - first_index);
  ctx->yuv_gamma_table = data().studio[row];
  ctx->rgb_gamma_table = data().full_range[row];
  recompose_contrast_and_gamma(ctx);
  ctx->nf20_12_gamma = data().nf20_12[row];
  return 1;
}

uint8_t ppl_reset_gamma(PplContext *ctx) { return ppl_set_gamma(ctx, 0); }

// The reserved value is never written by anything.
int32_t ppl_nf20_12_gamma(const PplContext *ctx, int32_t *reserved, int32_t *min_index,
                          int32_t *max_index) {
  if (reserved != nullptr) *reserved = 0;
  if (min_index != nullptr) *min_index = first_index;
  if (max_index != nullptr) *max_index = last_index;
  return ctx->nf20_12_gamma;
}

const uint8_t *ppl_yuv_gamma_table(const PplContext *ctx) { return ctx->yuv_gamma_table.data(); }
const uint8_t *ppl_rgb_gamma_table(const PplContext *ctx) { return ctx->rgb_gamma_table.data(); }

uint8_t ppl_copy_yuv_gamma_table(PplContext *ctx, const uint8_t table[256]) {
  std::copy_n(table, 256, ctx->yuv_gamma_table.begin());
  recompose_contrast_and_gamma(ctx);
  ctx->nf20_12_gamma = 0;
  return 1;
}
uint8_t ppl_copy_rgb_gamma_table(PplContext *ctx, const uint8_t table[256]) {
  std::copy_n(table, 256, ctx->rgb_gamma_table.begin());
  recompose_contrast_and_gamma(ctx);
  ctx->nf20_12_gamma = 0;
  return 1;
}
uint8_t ppl_get_yuv_gamma_table(const PplContext *ctx, uint8_t table[256]) {
  std::copy(ctx->yuv_gamma_table.begin(), ctx->yuv_gamma_table.end(), table);
  return 1;
}
uint8_t ppl_get_rgb_gamma_table(const PplContext *ctx, uint8_t table[256]) {
  std::copy(ctx->rgb_gamma_table.begin(), ctx->rgb_gamma_table.end(), table);
  return 1;
}

uint8_t ppl_copy_gamma_tables65x256(PplContext *, const uint8_t tables[65 * 256]) {
  copy_in(data().full_range, tables);
  return 1;
}
uint8_t ppl_get_gamma_tables65x256(const PplContext *, uint8_t tables[65 * 256]) {
  copy_out(data().full_range, tables);
  return 1;
}
uint8_t ppl_copy_gamma_tables65x256_16_235(PplContext *, const uint8_t tables[65 * 256]) {
  copy_in(data().studio, tables);
  return 1;
}
uint8_t ppl_get_gamma_tables65x256_16_235(const PplContext *, uint8_t tables[65 * 256]) {
  copy_out(data().studio, tables);
  return 1;
}

}  // namespace ppl_model
