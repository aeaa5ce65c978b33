#include "context/plan.h"

namespace ppl {
namespace {

// Frame area over sampled area in 8 fractional bits. The lattice takes a cell in four. Negative at
// heights below the margin, and kept as the unsigned image of that.
uint32_t normaliser(const PplContext &ctx, int32_t sampled_width, int32_t sampled_height) {
  return static_cast<uint32_t>(ctx.frame_size * 256 / (sampled_width * sampled_height / 4));
}

}  // namespace

bool is_within_limits(uint32_t width, uint32_t height, uint32_t stride) {
  return width <= widest_line && height <= 1024 && stride <= widest_line;
}

void build_grid(PplContext &ctx, FramePlan &plan, int block) {
  plan.cell_width = ctx.frame_width / block / window_columns;
  plan.cell_height = ctx.frame_height / 2 / window_rows;

  const int32_t window_pixels = 2 * block * plan.cell_width * plan.cell_height;
  constexpr uint32_t one = 0x100000;
  ctx.r_window_scale = ctx.b_window_scale = one / static_cast<uint32_t>(window_pixels / 4);
  ctx.g_window_scale = one / static_cast<uint32_t>(window_pixels / 2);
}

void build_normalisers(const PplContext &ctx, FramePlan &plan, int block) {
  const int32_t w = ctx.frame_width;
  const int32_t h = ctx.frame_height;
  const int32_t b = block;

  constexpr uint32_t whole_frame = 4 * 256;
  uint32_t *const n = plan.chain_normaliser;  // entries 8 and 9 are never written
  n[0] = n[1] = n[2] = normaliser(ctx, w - 4 * b, h - 12);
  n[3] = n[4] = normaliser(ctx, w - 3 * b, h - 12);
  n[5] = normaliser(ctx, w - 2 * b, h - 8);
  n[6] = whole_frame;
  n[7] = whole_frame;
  n[10] = normaliser(ctx, w, h - 4);
  n[11] = n[0];
  n[12] = n[13] = n[3];
  n[14] = normaliser(ctx, w - 5 * b, h - 16);
  n[15] = normaliser(ctx, w - 4 * b, h - 16);
  n[16] = n[3];
}

bool plan_divides_by_zero(uint32_t width, uint32_t height, int block) {
  const bool cell_is_empty =
      width < static_cast<uint32_t>(window_columns * block) || height < 2 * window_rows;
  // The margins of the normalisers: 12 and 16 lines. Their widths are all below an empty cell's.
  return cell_is_empty || height == 12 || height == 16;
}

}  // namespace ppl
