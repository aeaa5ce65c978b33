#include "engine/dispatch.h"

namespace ppl {
namespace {

enum class Route {
  nothing,  // the output stays as it is
  copy,
  default_pipeline,
  monochrome,
  chain,
};

struct Quality {
  Route route;
  int normaliser;         // entry of chain_normaliser
  const Chain *chain;     // of the multi-pass qualities
  int repair_normaliser;  // with the medium filter; 0 where there is no such chain
  bool has_rgb;           // whether the chain exists for RGB24 and RGB32
};

// One line per quality.
// clang-format off
constexpr Quality qualities[15] = {
    /* 0 */  {Route::chain, 0, &quality_0_chain, 14, true},
    /* 1 */  {Route::chain, 4, &quality_1_chain, 15, true},
    /* 2 */  {Route::chain, 5, &quality_2_chain, 16, true},
    /* 3 */  {Route::default_pipeline, 6, nullptr, 0, true},
    /* 4 */  {Route::copy, 0, nullptr, 0, true},
    /* 5 */  {Route::nothing, 0, nullptr, 0, true},
    /* 6 */  {Route::nothing, 0, nullptr, 0, true},
    /* 7 */  {Route::nothing, 0, nullptr, 0, true},
    /* 8 */  {Route::nothing, 0, nullptr, 0, true},
    /* 9 */  {Route::copy, 0, nullptr, 0, true},
    /* 10 */ {Route::chain, 11, &quality_10_chain, 0, true},
    /* 11 */ {Route::chain, 12, &quality_11_chain, 0, true},
    /* 12 */ {Route::chain, 7, &quality_12_chain, 0, true},
    /* 13 */ {Route::monochrome, 8, nullptr, 0, true},  // that entry is never written, so 0
    /* 14 */ {Route::chain, 13, &quality_14_chain, 0, false},
};
// clang-format on

Pass single_pass(const Quality &quality, const TierKernels &kernels, Format format,
                 int32_t decimation) {
  const Passes *const family = quality.route == Route::default_pipeline ? kernels.default_pipeline
                               : quality.route == Route::monochrome     ? kernels.monochrome
                                                                        : nullptr;
  return family != nullptr ? family[format].for_decimation(decimation) : nullptr;
}

bool has_chain(const Quality &quality, Format format) {
  const bool is_rgb = format == format_rgb24 || format == format_rgb32;
  return quality.route == Route::chain && (quality.has_rgb || !is_rgb);
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
  if (has_chain(quality, format)) {
    const bool repairs = ctx.medium_filter_enabled != 0 && quality.repair_normaliser != 0;
    kernels.run_chain(ctx, buffers, format, *quality.chain, repairs);
    ctx.mean_normaliser =
        plan.chain_normaliser[repairs ? quality.repair_normaliser : quality.normaliser];
  }
  kernels.clear_mmx_state();
  ++ctx.n_frame;
  return copies ? 0 : 1;
}

}  // namespace ppl
