#include "model/aggregation.h"

namespace ppl_model {

namespace {

uint32_t rounded_quotient(uint64_t dividend, uint64_t half, uint64_t divisor) {
  return static_cast<uint32_t>((dividend + half) / divisor);
}

// Sums over n cells become means; green holds two samples a cell.
void mean_of_cells(PplTriple &sums, uint32_t &n, uint32_t normaliser) {
  if (n == 0) return;
  sums.r = rounded_quotient(uint64_t{sums.r} << 8, n >> 1, n);
  sums.g = rounded_quotient(uint64_t{sums.g} << 8, n, uint64_t{2} * n);
  sums.b = rounded_quotient(uint64_t{sums.b} << 8, n >> 1, n);
  n = normaliser * n >> 8;
}

}  // namespace

void clear_statistics(PplContext *ctx) {
  ctx->windows.fill({});
  ctx->rgb_means_all_sub_windows = {};
  ctx->rgb_means_whole_frame = {};
  ctx->qAE_rgb_means_whole_frame = {};
  ctx->qual_rgb_means_whole_frame = {};
  ctx->r_histogram.fill(0);
  ctx->g_histogram.fill(0);
  ctx->b_histogram.fill(0);
  ctx->n_qAE_2x2_whole_frame = 0;
  ctx->n_qual_2x2_whole_frame = 0;
}

void aggregate_statistics(PplContext *ctx) {
  const PlainState &plain = ctx->plain;
  const uint32_t m = plain.mean_normaliser;
  PplTriple &whole = ctx->rgb_means_whole_frame;
  PplTriple &all = ctx->rgb_means_all_sub_windows;

  // Unsigned 32-bit products that wrap.
  for (size_t i = 0; i < ctx->windows.size(); ++i) {
    PplTriple &window = ctx->windows[i];
    const auto scale = [&](uint32_t &sum, uint32_t window_scale, uint32_t &frame_total,
                           uint32_t &windows_total) {
      const uint32_t t = sum * m >> 8;
      frame_total += t;
      sum = window_scale * t >> 12;
      if (i < 48) windows_total += sum;
    };
    scale(window.r, plain.r_window_scale, whole.r, all.r);
    scale(window.g, plain.g_window_scale, whole.g, all.g);
    scale(window.b, plain.b_window_scale, whole.b, all.b);
  }

  // 341 / 16384 stands for 1 / 48 and reads a shade low.
  for (uint32_t *total : {&all.r, &all.g, &all.b}) *total = *total * 341 >> 14;

  const uint64_t size_2 = static_cast<uint64_t>(plain.frame_size_2);
  const uint64_t size_4 = static_cast<uint64_t>(plain.frame_size_4);
  const uint64_t size_8 = static_cast<uint64_t>(plain.frame_size_8);
  whole.r = rounded_quotient(uint64_t{whole.r} << 8, size_8, size_4);
  whole.g = rounded_quotient(uint64_t{whole.g} << 8, size_4, size_2);
  whole.b = rounded_quotient(uint64_t{whole.b} << 8, size_8, size_4);

  mean_of_cells(ctx->qAE_rgb_means_whole_frame, ctx->n_qAE_2x2_whole_frame, m);
  mean_of_cells(ctx->qual_rgb_means_whole_frame, ctx->n_qual_2x2_whole_frame, m);
}

}  // namespace ppl_model
