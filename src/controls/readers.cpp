// What a caller reads after a frame.
#include "context/context.h"

namespace ppl {
namespace {

// Process-wide: results of the readers that compute. Each call on any context overwrites its
// reader's own. Meant so: docs/oddities.md, "Shared triples".
PplTriple central_4pts, central_4, central_8, central_16;

constexpr int central_windows[4] = {19, 20, 27, 28};
constexpr int ring_windows[20] = {9,  10, 11, 12, 13, 14, 17, 18, 21, 22,
                                  25, 26, 29, 30, 33, 34, 35, 36, 37, 38};

constexpr uint32_t PplTriple::*channels[3] = {&PplTriple::r, &PplTriple::g, &PplTriple::b};

template <int Count>
uint32_t sum(const PplContext &ctx, const int (&windows)[Count], uint32_t PplTriple::*channel) {
  uint32_t total = 0;
  for (const int window : windows) total += ctx.rgb_means_sub_windows[window].*channel;
  return total;
}

// An edge window counts once, one of the ring around the centre twice, a central one 1 plus
// `weight` times.
uint32_t weighted_mean(const PplContext &ctx, uint32_t weight, uint32_t PplTriple::*channel) {
  const uint32_t total = weight * sum(ctx, central_windows, channel) +
                         window_count * (ctx.rgb_means_all_sub_windows.*channel) +
                         sum(ctx, ring_windows, channel);
  const auto divisor = static_cast<int32_t>(4 * weight + window_count + 20);
  return static_cast<uint32_t>(static_cast<int32_t>(total) / divisor);
}

// The default pipeline gathers no windows: its readers give the whole frame's mean instead. The
// control decides, not the frame. Meant so: docs/oddities.md, "Quality at the time of the call".
bool has_no_windows(const PplContext &ctx) { return ctx.quality == 3; }

const PplTriple *read_central(const PplContext &ctx, uint32_t weight, PplTriple &result) {
  if (has_no_windows(ctx)) return &ctx.rgb_means_whole_frame;
  for (const auto channel : channels) {
    result.*channel = weighted_mean(ctx, weight, channel);
  }
  return &result;
}

}  // namespace
}  // namespace ppl

using namespace ppl;

int32_t PPL_CALL ppl_n_sub_windows(const PplContext *, uint32_t *columns, uint32_t *rows) {
  *columns = window_columns;
  *rows = window_rows;
  return window_count;
}

const PplTriple *PPL_CALL ppl_rgb_means_sub_windows(const PplContext *ctx) {
  return ctx->rgb_means_sub_windows;
}

const PplTriple *PPL_CALL ppl_rgb_means_outside_all_sub_windows(const PplContext *ctx) {
  return &ctx->rgb_means_outside_all_sub_windows;
}

const PplTriple *PPL_CALL ppl_rgb_means_all_sub_windows(const PplContext *ctx) {
  return &ctx->rgb_means_all_sub_windows;
}

const PplTriple *PPL_CALL ppl_rgb_means_whole_frame(const PplContext *ctx) {
  return &ctx->rgb_means_whole_frame;
}

const PplTriple *PPL_CALL ppl_rgb_means_whole_frame_4pts(const PplContext *ctx) {
  if (has_no_windows(*ctx)) return &ctx->rgb_means_whole_frame;
  for (const auto channel : channels) {
    central_4pts.*channel = sum(*ctx, central_windows, channel) >> 2;
  }
  return &central_4pts;
}

const PplTriple *PPL_CALL ppl_rgb_means_whole_frame_central4(const PplContext *ctx) {
  return read_central(*ctx, 3, central_4);
}

const PplTriple *PPL_CALL ppl_rgb_means_whole_frame_central8(const PplContext *ctx) {
  return read_central(*ctx, 7, central_8);
}

const PplTriple *PPL_CALL ppl_rgb_means_whole_frame_central16(const PplContext *ctx) {
  return read_central(*ctx, 15, central_16);
}

const PplTriple *PPL_CALL ppl_qAE_rgb_means_whole_frame(const PplContext *ctx) {
  return &ctx->qAE_rgb_means_whole_frame;
}

const PplTriple *PPL_CALL ppl_qual_rgb_means_whole_frame(const PplContext *ctx) {
  return &ctx->qual_rgb_means_whole_frame;
}

uint32_t PPL_CALL ppl_n_qAE_2x2_whole_frame(const PplContext *ctx) {
  return ctx->n_qAE_2x2_whole_frame;
}

uint32_t PPL_CALL ppl_n_qual_2x2_whole_frame(const PplContext *ctx) {
  return ctx->n_qual_2x2_whole_frame;
}

uint32_t PPL_CALL ppl_n_frame(const PplContext *ctx) { return ctx->n_frame; }

const uint32_t *PPL_CALL ppl_r_histogram(const PplContext *ctx) { return ctx->r_histogram; }

const uint32_t *PPL_CALL ppl_g_histogram(const PplContext *ctx) { return ctx->g_histogram; }

const uint32_t *PPL_CALL ppl_b_histogram(const PplContext *ctx) { return ctx->b_histogram; }
