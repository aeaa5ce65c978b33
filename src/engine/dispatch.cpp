#include "engine/dispatch.h"

namespace ppl {
namespace {

enum class Route {
  nothing,  // the output stays as it is
  copy,
  default_pipeline,
  monochrome,
};

struct Quality {
  Route route;
  int normaliser;  // entry of chain_normaliser
};

// One line per quality.
constexpr Quality qualities[15] = {
    /* 0 */ {Route::nothing, 0},
    /* 1 */ {Route::nothing, 0},
    /* 2 */ {Route::nothing, 0},
    /* 3 */ {Route::default_pipeline, 6},
    /* 4 */ {Route::copy, 0},
    /* 5 */ {Route::nothing, 0},
    /* 6 */ {Route::nothing, 0},
    /* 7 */ {Route::nothing, 0},
    /* 8 */ {Route::nothing, 0},
    /* 9 */ {Route::copy, 0},
    /* 10 */ {Route::nothing, 0},
    /* 11 */ {Route::nothing, 0},
    /* 12 */ {Route::nothing, 0},
    /* 13 */ {Route::monochrome, 8},  // that entry is never written, so 0
    /* 14 */ {Route::nothing, 0},
};

Pass single_pass(const Quality &quality, const TierKernels &kernels, Format format,
                 int32_t decimation) {
  const Passes *const family = quality.route == Route::default_pipeline ? kernels.default_pipeline
                               : quality.route == Route::monochrome     ? kernels.monochrome
                                                                        : nullptr;
  return family != nullptr ? family[format].for_decimation(decimation) : nullptr;
}

}  // namespace

uint8_t dispatch_quality(PplContext &ctx, const FramePlan &plan, const TierKernels &kernels,
                         Format format, const Buffers &buffers) {
  const Quality &quality = qualities[ctx.quality];
  const bool copies = quality.route == Route::copy;
  if (copies) {
    kernels.copy[format](ctx, buffers);
  } else if (const Pass pass = single_pass(quality, kernels, format, ctx.decimation)) {
    pass(ctx, buffers);
    ctx.mean_normaliser = plan.chain_normaliser[quality.normaliser];
  }
  kernels.clear_mmx_state();
  ++ctx.n_frame;
  return copies ? 0 : 1;
}

}  // namespace ppl
