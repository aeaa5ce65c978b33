#include "context/pool.h"

#include "context/context.h"
#include "processor/processor.h"

namespace ppl {
namespace {

PplContext pool[8];  // process-wide; all zero at load

}  // namespace

void zero_pool() {
  auto *const bytes = reinterpret_cast<uint8_t *>(pool);
  for (size_t i = 0; i < sizeof(pool); ++i) bytes[i] = 0;
}

}  // namespace ppl

using namespace ppl;

PplContext *PPL_CALL ppl_init(void) {
  // Callers take contexts one after the other: detection never meets itself on another thread.
  processor_flags();
  for (PplContext &ctx : pool) {
    if (ctx.in_use != 0) continue;
    ctx.in_use = 1;
    ppl_reset_all_controls(&ctx);
    return &ctx;
  }
  return nullptr;
}

uint8_t PPL_CALL ppl_free(PplContext *ctx) {
  if (ctx == nullptr) return 0;
  ctx->in_use = 0;
  return 1;
}

// Contexts still claimed stay as they are: the pool goes with the image.
int32_t PPL_CALL DllUnload(void) { return 0; }
