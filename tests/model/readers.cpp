// What the caller reads after a frame.
#include "model/context.h"

namespace ppl_model {

namespace {

constexpr std::array<size_t, 4> central_windows = {19, 20, 27, 28};
constexpr std::array<size_t, 20> windows_around_centre = {9,  10, 11, 12, 13, 14, 17, 18, 21, 22,
                                                          25, 26, 29, 30, 33, 34, 35, 36, 37, 38};

using Channel = uint32_t PplTriple::*;
constexpr std::array<Channel, 3> channels = {&PplTriple::r, &PplTriple::g, &PplTriple::b};

// Process-wide: every context's readers share them.
PplTriple result_4pts, result_central4, result_central8, result_central16;

template <size_t n>
uint32_t sum_of(const PplContext *ctx, const std::array<size_t, n> &windows, Channel channel) {
  uint32_t sum = 0;
  for (size_t window : windows) sum += ctx->windows[window].*channel;
  return sum;
}

// An edge window counts once, one around the centre twice, a central one 1 + weight times.
const PplTriple *centre_weighted(const PplContext *ctx, uint32_t weight, PplTriple &result) {
  if (ctx->quality == 3) return &ctx->rgb_means_whole_frame;
  const int32_t divisor = static_cast<int32_t>(4 * weight + 68);
  for (Channel channel : channels) {
    const uint32_t sum = weight * sum_of(ctx, central_windows, channel) +
                         48 * (ctx->rgb_means_all_sub_windows.*channel) +
                         sum_of(ctx, windows_around_centre, channel);
    result.*channel = static_cast<uint32_t>(static_cast<int32_t>(sum) / divisor);
  }
  return &result;
}

}  // namespace

int32_t ppl_n_sub_windows(const PplContext *, uint32_t *columns, uint32_t *rows) {
  *columns = 8;
  *rows = 6;
  return 48;
}

const PplTriple *ppl_rgb_means_sub_windows(const PplContext *ctx) { return ctx->windows.data(); }
const PplTriple *ppl_rgb_means_outside_all_sub_windows(const PplContext *ctx) {
  return &ctx->windows[48];
}
const PplTriple *ppl_rgb_means_all_sub_windows(const PplContext *ctx) {
  return &ctx->rgb_means_all_sub_windows;
}
const PplTriple *ppl_rgb_means_whole_frame(const PplContext *ctx) {
  return &ctx->rgb_means_whole_frame;
}

const PplTriple *ppl_rgb_means_whole_frame_4pts(const PplContext *ctx) {
  if (ctx->quality == 3) return &ctx->rgb_means_whole_frame;
  for (Channel channel : channels)
    result_4pts.*channel = sum_of(ctx, central_windows, channel) >> 2;
  return &result_4pts;
}
const PplTriple *ppl_rgb_means_whole_frame_central4(const PplContext *ctx) {
  return centre_weighted(ctx, 3, result_central4);
}
const PplTriple *ppl_rgb_means_whole_frame_central8(const PplContext *ctx) {
  return centre_weighted(ctx, 7, result_central8);
}
const PplTriple *ppl_rgb_means_whole_frame_central16(const PplContext *ctx) {
  return centre_weighted(ctx, 15, result_central16);
}

const PplTriple *ppl_qAE_rgb_means_whole_frame(const PplContext *ctx) {
  return &ctx->qAE_rgb_means_whole_frame;
}
const PplTriple *ppl_qual_rgb_means_whole_frame(const PplContext *ctx) {
  return &ctx->qual_rgb_means_whole_frame;
}
uint32_t ppl_n_qAE_2x2_whole_frame(const PplContext *ctx) { return ctx->n_qAE_2x2_whole_frame; }
uint32_t ppl_n_qual_2x2_whole_frame(const PplContext *ctx) { return ctx->n_qual_2x2_whole_frame; }
uint32_t ppl_n_frame(const PplContext *ctx) { return ctx->n_frame; }

const uint32_t *ppl_r_histogram(const PplContext *ctx) { return ctx->r_histogram.data(); }
const uint32_t *ppl_g_histogram(const PplContext *ctx) { return ctx->g_histogram.data(); }
const uint32_t *ppl_b_histogram(const PplContext *ctx) { return ctx->b_histogram.data(); }

}  // namespace ppl_model
