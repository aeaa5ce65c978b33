// Gamma: byte-to-byte curves, chosen from two stored families or given by the caller.
#include "controls/contrast.h"
#include "controls/front_end_tables.h"
#include "controls/gamma_data.h"
#include "frame/context.h"

namespace ppl {
namespace {

constexpr int32_t min_index = -32;
constexpr int32_t max_index = 32;

template <int Length>
void copy_bytes(uint8_t *to, const uint8_t *from) {
  for (int i = 0; i < Length; ++i) to[i] = from[i];
}

constexpr int curve_bytes = 256;
constexpr int family_bytes = 65 * 256;

}  // namespace
}  // namespace ppl

using namespace ppl;

uint8_t PPL_CALL ppl_set_gamma(PplContext *ctx, int32_t index) {
  if (index < min_index || index > max_index) return 0;
  const int32_t row = index - min_index;
  copy_bytes<curve_bytes>(ctx->yuv_gamma_table, gamma_tables65x256_16_235[row]);
  copy_bytes<curve_bytes>(ctx->rgb_gamma_table, gamma_tables65x256[row]);
  compose_contrast_gamma(*ctx);
  ctx->nf20_12_gamma = gamma_nf20_12_values[row];
  return 1;
}

uint8_t PPL_CALL ppl_reset_gamma(PplContext *ctx) { return ppl_set_gamma(ctx, 0); }

int32_t PPL_CALL ppl_nf20_12_gamma(const PplContext *ctx, int32_t *reserved, int32_t *min,
                                   int32_t *max) {
  if (reserved != nullptr) *reserved = ctx->gamma_reserved;
  if (min != nullptr) *min = min_index;
  if (max != nullptr) *max = max_index;
  return ctx->nf20_12_gamma;
}

const uint8_t *PPL_CALL ppl_yuv_gamma_table(const PplContext *ctx) { return ctx->yuv_gamma_table; }

const uint8_t *PPL_CALL ppl_rgb_gamma_table(const PplContext *ctx) { return ctx->rgb_gamma_table; }

uint8_t PPL_CALL ppl_copy_yuv_gamma_table(PplContext *ctx, const uint8_t table[256]) {
  copy_bytes<curve_bytes>(ctx->yuv_gamma_table, table);
  compose_contrast_gamma(*ctx);
  ctx->nf20_12_gamma = 0;
  return 1;
}

uint8_t PPL_CALL ppl_copy_rgb_gamma_table(PplContext *ctx, const uint8_t table[256]) {
  copy_bytes<curve_bytes>(ctx->rgb_gamma_table, table);
  compose_contrast_gamma(*ctx);
  ctx->nf20_12_gamma = 0;
  return 1;
}

uint8_t PPL_CALL ppl_get_yuv_gamma_table(const PplContext *ctx, uint8_t table[256]) {
  copy_bytes<curve_bytes>(table, ctx->yuv_gamma_table);
  return 1;
}

uint8_t PPL_CALL ppl_get_rgb_gamma_table(const PplContext *ctx, uint8_t table[256]) {
  copy_bytes<curve_bytes>(table, ctx->rgb_gamma_table);
  return 1;
}

// The families are the process's, not a context's: the next ppl_set_gamma on any context sees them.
uint8_t PPL_CALL ppl_copy_gamma_tables65x256(PplContext *, const uint8_t tables[65 * 256]) {
  copy_bytes<family_bytes>(gamma_tables65x256[0], tables);
  return 1;
}

uint8_t PPL_CALL ppl_copy_gamma_tables65x256_16_235(PplContext *, const uint8_t tables[65 * 256]) {
  copy_bytes<family_bytes>(gamma_tables65x256_16_235[0], tables);
  return 1;
}

uint8_t PPL_CALL ppl_get_gamma_tables65x256(const PplContext *, uint8_t tables[65 * 256]) {
  copy_bytes<family_bytes>(tables, gamma_tables65x256[0]);
  return 1;
}

uint8_t PPL_CALL ppl_get_gamma_tables65x256_16_235(const PplContext *, uint8_t tables[65 * 256]) {
  copy_bytes<family_bytes>(tables, gamma_tables65x256_16_235[0]);
  return 1;
}
