#include "model/context.h"
#include "model/machine.h"

namespace ppl_model {

namespace {

std::array<PplContext, 8> pool{};

}  // namespace

namespace machine {

void reload_pool() { pool = {}; }

}  // namespace machine

PplContext *ppl_init() {
  for (PplContext &slot : pool) {
    if (slot.in_use != 0) continue;
    slot.in_use = 1;
    ppl_reset_all_controls(&slot);
    return &slot;
  }
  return nullptr;
}

// A slot given back keeps its contents until the next owner resets the controls.
uint8_t ppl_free(PplContext *ctx) {
  if (ctx == nullptr) return 0;
  ctx->in_use = 0;
  return 1;
}

int32_t DllUnload() { return 0; }

int slot_of(const PplContext *ctx) { return static_cast<int>(ctx - pool.data()); }

const FramePlan &plan(const PplContext *ctx, Tier tier) { return ctx->tier(tier).plan; }
const Parameters &derived(const PplContext *ctx) { return ctx->params; }
const PlainState &plain(const PplContext *ctx) { return ctx->plain; }

}  // namespace ppl_model
