// Which way the pipeline goes: quality, tier, statistics, mirrors.
#include "context/context.h"
#include "context/refresh.h"

using namespace ppl;

uint32_t PPL_CALL ppl_quality(const PplContext *ctx) { return ctx->quality; }

uint8_t PPL_CALL ppl_set_quality(PplContext *ctx, uint32_t quality) {
  if (quality >= 15) return 0;
  ctx->quality = quality;
  return 1;
}

uint8_t PPL_CALL ppl_reset_quality(PplContext *ctx) { return ppl_set_quality(ctx, 3); }

uint8_t PPL_CALL ppl_mean_collection(const PplContext *ctx) { return ctx->mean_collection; }

uint8_t PPL_CALL ppl_set_mean_collection(PplContext *ctx, uint8_t value) {
  ctx->mean_collection = value;
  return 1;
}

uint8_t PPL_CALL ppl_reset_mean_collection(PplContext *ctx) {
  return ppl_set_mean_collection(ctx, 1);
}

uint8_t PPL_CALL ppl_P3_only(const PplContext *ctx) { return ctx->P3_only; }

uint8_t PPL_CALL ppl_set_P3_only(PplContext *ctx, uint8_t value) {
  ctx->P3_only = value;
  return 1;
}

uint8_t PPL_CALL ppl_reset_P3_only(PplContext *ctx) { return ppl_set_P3_only(ctx, 0); }

uint8_t PPL_CALL ppl_h_mirror(const PplContext *ctx) { return ctx->h_mirror; }

uint8_t PPL_CALL ppl_v_mirror(const PplContext *ctx) { return ctx->v_mirror; }

uint8_t PPL_CALL ppl_set_h_mirror(PplContext *ctx, uint8_t value) {
  ctx->h_mirror = value;
  return refresh_nothing();
}

uint8_t PPL_CALL ppl_set_v_mirror(PplContext *ctx, uint8_t value) {
  ctx->v_mirror = value;
  return refresh_nothing();
}

uint8_t PPL_CALL ppl_reset_mirrors(PplContext *ctx) {
  ppl_set_v_mirror(ctx, 0);
  return ppl_set_h_mirror(ctx, 0);
}
