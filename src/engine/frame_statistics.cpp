#include "engine/frame_statistics.h"

namespace ppl {
namespace {

// Rounded; in 8.8 of a sum of whole samples.
uint32_t mean(uint32_t sum, uint32_t half_count, uint32_t count) {
  return static_cast<uint32_t>(((static_cast<uint64_t>(sum) << 8) + half_count) / count);
}

// A channel's share of one window: the sum grows by what the sampling left out (wraps in 32 bits).
void take_window(uint32_t &window, uint32_t normaliser, uint32_t scale, uint32_t &whole_frame) {
  const uint32_t sum = (window * normaliser) >> 8;
  whole_frame += sum;
  window = (scale * sum) >> 12;
}

// The means are over the cells that were counted; the count is scaled up to the whole frame.
void take_band(PplTriple &sums, uint32_t &n, uint32_t normaliser) {
  if (n == 0) return;
  sums.r = mean(sums.r, n >> 1, n);
  sums.g = mean(sums.g, n, 2 * n);
  sums.b = mean(sums.b, n >> 1, n);
  n = (normaliser * n) >> 8;
}

constexpr PplTriple no_sum = {0, 0, 0};

}  // namespace

void clear_statistics(PplContext &ctx) {
  for (PplTriple &window : ctx.rgb_means_sub_windows) window = no_sum;
  ctx.rgb_means_outside_all_sub_windows = no_sum;
  ctx.rgb_means_all_sub_windows = no_sum;
  ctx.rgb_means_whole_frame = no_sum;
  ctx.qAE_rgb_means_whole_frame = no_sum;
  ctx.qual_rgb_means_whole_frame = no_sum;
  for (int i = 0; i < 256; ++i) ctx.r_histogram[i] = ctx.g_histogram[i] = ctx.b_histogram[i] = 0;
  ctx.n_qAE_2x2_whole_frame = 0;
  ctx.n_qual_2x2_whole_frame = 0;
}

void aggregate_statistics(PplContext &ctx) {
  const uint32_t m = ctx.mean_normaliser;
  PplTriple &frame = ctx.rgb_means_whole_frame;
  PplTriple &all = ctx.rgb_means_all_sub_windows;
  const auto take = [&ctx, &frame, m](PplTriple &window) {
    take_window(window.r, m, ctx.r_window_scale, frame.r);
    take_window(window.g, m, ctx.g_window_scale, frame.g);
    take_window(window.b, m, ctx.b_window_scale, frame.b);
  };
  for (PplTriple &window : ctx.rgb_means_sub_windows) {
    take(window);
    all.r += window.r;
    all.g += window.g;
    all.b += window.b;
  }
  take(ctx.rgb_means_outside_all_sub_windows);

  // 341 / 16384 stands for 1 / 48. A shade small, and the reading is that little bit low.
  all.r = (all.r * 341) >> 14;
  all.g = (all.g * 341) >> 14;
  all.b = (all.b * 341) >> 14;

  const auto size_8 = static_cast<uint32_t>(ctx.frame_size_8);
  const auto size_4 = static_cast<uint32_t>(ctx.frame_size_4);
  const auto size_2 = static_cast<uint32_t>(ctx.frame_size_2);
  frame.r = mean(frame.r, size_8, size_4);
  frame.g = mean(frame.g, size_4, size_2);
  frame.b = mean(frame.b, size_8, size_4);

  take_band(ctx.qAE_rgb_means_whole_frame, ctx.n_qAE_2x2_whole_frame, m);
  take_band(ctx.qual_rgb_means_whole_frame, ctx.n_qual_2x2_whole_frame, m);
}

}  // namespace ppl
