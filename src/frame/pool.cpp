#include "frame/pool.h"

#include "frame/context.h"

namespace ppl {
namespace {

PplContext pool[8];  // all zero at load

// The rings are views of one area; 5, 6 and 7 overlap because quality 14, which alone uses the last
// two, never runs with the medium filter, which alone uses the fifth.
void carve_rings(PplContext &ctx) {
  constexpr size_t offset[8] = {0, 8192, 12288, 16384, 20480, 24576, 24576, 28672};
  const auto unaligned = reinterpret_cast<uintptr_t>(ctx.ring_area_storage) % ring_alignment;
  uint8_t *const area = ctx.ring_area_storage + (unaligned == 0 ? 0 : ring_alignment - unaligned);
  for (int i = 0; i < 8; ++i) ctx.line_buffer[i] = area + offset[i];
}

}  // namespace

void zero_pool() {
  auto *const bytes = reinterpret_cast<uint8_t *>(pool);
  for (size_t i = 0; i < sizeof(pool); ++i) bytes[i] = 0;
}

}  // namespace ppl

using namespace ppl;

PplContext *PPL_CALL ppl_init(void) {
  for (PplContext &ctx : pool) {
    if (ctx.in_use != 0) continue;
    ctx.in_use = 1;
    carve_rings(ctx);
    ppl_reset_all_controls(&ctx);
    ctx.ready = 1;
    return &ctx;
  }
  return nullptr;
}

uint8_t PPL_CALL ppl_free(PplContext *ctx) {
  if (ctx == nullptr) return 0;
  ctx->ready = 0;
  ctx->in_use = 0;
  return 1;
}

// Contexts still claimed stay as they are: the pool goes with the image.
int32_t PPL_CALL DllUnload(void) { return 0; }
