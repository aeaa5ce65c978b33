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

enum class Formats { all, yuv_alone };

// The entries of chain_normaliser.
enum Normaliser {
  no_normaliser = 0,
  of_quality_0 = 0,
  of_quality_1 = 4,
  of_quality_2 = 5,
  of_quality_3 = 6,
  of_quality_12 = 7,
  of_quality_13 = 8,  // never written, so 0
  of_quality_10 = 11,
  of_quality_11 = 12,
  of_quality_14 = 13,
  of_quality_0_with_repair = 14,
  of_quality_1_with_repair = 15,
  of_quality_2_with_repair = 16,
};

struct Quality {
  Route route = Route::nothing;
  Normaliser normaliser = no_normaliser;
  const Chain *chain = nullptr;            // of the multi-pass qualities
  Normaliser with_repair = no_normaliser;  // none where there is no such chain
  Formats formats = Formats::all;
};

// One line per quality.
// clang-format off
constexpr Quality qualities[15] = {
    /* 0 */  {Route::chain, of_quality_0, &quality_0_chain, of_quality_0_with_repair},
    /* 1 */  {Route::chain, of_quality_1, &quality_1_chain, of_quality_1_with_repair},
    /* 2 */  {Route::chain, of_quality_2, &quality_2_chain, of_quality_2_with_repair},
    /* 3 */  {Route::default_pipeline, of_quality_3},
    /* 4 */  {Route::copy},
    /* 5 */  {},
    /* 6 */  {},
    /* 7 */  {},
    /* 8 */  {},
    /* 9 */  {Route::copy},
    /* 10 */ {Route::chain, of_quality_10, &quality_10_chain},
    /* 11 */ {Route::chain, of_quality_11, &quality_11_chain},
    /* 12 */ {Route::chain, of_quality_12, &quality_12_chain},
    /* 13 */ {Route::monochrome, of_quality_13},
    /* 14 */ {Route::chain, of_quality_14, &quality_14_chain, no_normaliser, Formats::yuv_alone},
};
// clang-format on

Pass single_pass(const Quality &quality, const SinglePasses &passes, Format format,
                 int32_t decimation) {
  switch (quality.route) {
    case Route::default_pipeline:
      return passes.default_pipeline[format].for_decimation(decimation);
    case Route::monochrome:
      return passes.monochrome[format].for_decimation(decimation);
    default:
      return nullptr;
  }
}

bool has_chain(const Quality &quality, Format format) {
  return quality.route == Route::chain && (quality.formats == Formats::all || !is_rgb(format));
}

}  // namespace

uint8_t dispatch_quality(PplContext &ctx, const Machine &machine, Format format,
                         const Buffers &buffers) {
  const Quality &quality = qualities[ctx.quality];
  const auto &[kernels, plan] = machine;
  const bool copies = quality.route == Route::copy;
  if (copies) {
    kernels.single.copy[format](ctx, buffers);
  } else if (const Pass pass = single_pass(quality, kernels.single, format, ctx.decimation)) {
    pass(ctx, buffers);
    ctx.mean_normaliser = plan.chain_normaliser[quality.normaliser];
  }
  if (has_chain(quality, format)) {
    const bool repairs = ctx.medium_filter_enabled != 0 && quality.with_repair != no_normaliser;
    kernels.chains.run(ctx, buffers, format, *quality.chain, repairs ? Repair::on : Repair::off);
    ctx.mean_normaliser = plan.chain_normaliser[repairs ? quality.with_repair : quality.normaliser];
  }
  kernels.leave();
  ++ctx.n_frame;
  return copies ? 0 : 1;
}

}  // namespace ppl
