// Gamma: byte-to-byte curves, chosen from two stored families or given by the caller.
#include "controls/contrast.h"
#include "controls/gamma_data.h"
#include "controls/setter.h"

namespace ppl {
namespace {

void copy_family(uint8_t (*to)[256], const uint8_t *from) {
  for (int i = 0; i < gamma_curve_count; ++i) copy_curve(to[i], from + 256 * i);
}

void copy_family(uint8_t *to, const uint8_t (*from)[256]) {
  for (int i = 0; i < gamma_curve_count; ++i) copy_curve(to + 256 * i, from[i]);
}

}  // namespace
}  // namespace ppl

using namespace ppl;

uint8_t PPL_CALL ppl_set_gamma(PplContext *ctx, int32_t index) {
  if (index < gamma_index_min || index > gamma_index_max) return 0;
  const int32_t row = index - gamma_index_min;
  copy_curve(ctx->yuv_gamma_table, gamma_tables65x256_16_235[row]);
  copy_curve(ctx->rgb_gamma_table, gamma_tables65x256[row]);
  compose_contrast_gamma(*ctx);
  ctx->nf20_12_gamma = gamma_nf20_12_values[row];
  return 1;
}

uint8_t PPL_CALL ppl_reset_gamma(PplContext *ctx) { return ppl_set_gamma(ctx, 0); }

int32_t PPL_CALL ppl_nf20_12_gamma(const PplContext *ctx, int32_t *reserved, int32_t *min,
                                   int32_t *max) {
  if (reserved != nullptr) *reserved = ctx->gamma_reserved;
  if (min != nullptr) *min = gamma_index_min;
  if (max != nullptr) *max = gamma_index_max;
  return ctx->nf20_12_gamma;
}

const uint8_t *PPL_CALL ppl_yuv_gamma_table(const PplContext *ctx) { return ctx->yuv_gamma_table; }

const uint8_t *PPL_CALL ppl_rgb_gamma_table(const PplContext *ctx) { return ctx->rgb_gamma_table; }

uint8_t PPL_CALL ppl_copy_yuv_gamma_table(PplContext *ctx, const uint8_t table[256]) {
  copy_curve(ctx->yuv_gamma_table, table);
  compose_contrast_gamma(*ctx);
  ctx->nf20_12_gamma = 0;
  return 1;
}

uint8_t PPL_CALL ppl_copy_rgb_gamma_table(PplContext *ctx, const uint8_t table[256]) {
  copy_curve(ctx->rgb_gamma_table, table);
  compose_contrast_gamma(*ctx);
  ctx->nf20_12_gamma = 0;
  return 1;
}

uint8_t PPL_CALL ppl_get_yuv_gamma_table(const PplContext *ctx, uint8_t table[256]) {
  copy_curve(table, ctx->yuv_gamma_table);
  return 1;
}

uint8_t PPL_CALL ppl_get_rgb_gamma_table(const PplContext *ctx, uint8_t table[256]) {
  copy_curve(table, ctx->rgb_gamma_table);
  return 1;
}

// The families are process-wide: the next ppl_set_gamma on any context sees them.
uint8_t PPL_CALL ppl_copy_gamma_tables65x256(PplContext *, const uint8_t tables[65 * 256]) {
  copy_family(gamma_tables65x256, tables);
  return 1;
}

uint8_t PPL_CALL ppl_copy_gamma_tables65x256_16_235(PplContext *, const uint8_t tables[65 * 256]) {
  copy_family(gamma_tables65x256_16_235, tables);
  return 1;
}

uint8_t PPL_CALL ppl_get_gamma_tables65x256(const PplContext *, uint8_t tables[65 * 256]) {
  copy_family(tables, gamma_tables65x256);
  return 1;
}

uint8_t PPL_CALL ppl_get_gamma_tables65x256_16_235(const PplContext *, uint8_t tables[65 * 256]) {
  copy_family(tables, gamma_tables65x256_16_235);
  return 1;
}
