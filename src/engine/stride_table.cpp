#include "engine/stride_table.h"

#include "frame/refresh.h"

namespace ppl {

void build_stride_table(const PplContext &ctx, FramePlan &plan, int block_width) {
  const int32_t W = ctx.out_width;
  const int32_t half_W = W / 2;
  const int32_t d = ctx.decimation;
  const int32_t B = block_width;
  const bool h = ctx.h_mirror != 0;
  const bool v = ctx.v_mirror != 0;
  const int32_t sx = h ? -1 : 1;
  const int32_t sy = v ? -1 : 1;
  const bool enlarges = d < 0;
  const bool shrinks = d > 0;
  const int32_t k = enlarges ? 2 : 1;
  const int32_t L = enlarges ? 4 : shrinks ? 1 : 2;
  const int32_t L2 = shrinks ? 1 : 2;
  int32_t *const t = plan.stride_table;

  // Single pass, I420: stores of a block pair and a line pair, then the cursors' steps.
  t[0] = h ? k * B : 0;
  t[1] = h ? 0 : k * B;
  t[2] = v ? k * W : 0;
  t[3] = v ? 0 : k * W;
  t[4] = sx * 2 * k * B;
  t[5] = (2 * k * sy - sx) * W;
  t[6] = (sx + 2 * sy - 1) * d * W;
  t[7] = sx * k * B;
  t[8] = (k * sy - sx) * half_W;
  t[9] = (sx + sy) / 2 * (2 * d + 1) * W;

  // Single pass, YUYV and UYVY.
  t[10] = h && !enlarges ? 2 * B : 0;
  t[11] = h ? (enlarges ? -4 * B : 0) : 2 * k * B;
  t[12] = v && !enlarges ? 2 * W : 0;
  t[13] = v ? (enlarges ? -4 * W : 0) : 2 * k * W;
  t[14] = sx * 4 * k * B;
  t[15] = 2 * (2 * k * sy - sx) * W;

  // Single pass, RGB24. The RGB formats are bottom-up: their line distances carry the other sign.
  t[16] = h ? 3 * k * B : 0;
  t[17] = h ? 0 : 3 * k * B;
  t[18] = v ? 0 : 3 * k * W;
  t[19] = v ? 3 * k * W : 0;
  t[20] = sx * 6 * k * B;
  t[21] = -3 * (2 * k * sy + sx) * W;
  t[22] = (3 * sx - 6 * sy - 3) * d * W;

  // Single pass, RGB32.
  t[23] = h ? 4 * B : 0;
  t[24] = h ? 0 : 4 * B;
  for (int32_t i = 0; i < 4; ++i) t[25 + i] = 2 * B * (h ? 3 - i : i);
  t[29] = v ? 0 : 4 * W;
  t[30] = v ? 4 * W : 0;
  t[31] = sx * 8 * B;
  t[32] = -4 * (2 * sy + sx) * W;

  // Chains, I420.
  t[33] = sx * k * B;
  t[34] = (L * sy - sx) * W;
  t[35] = sy * (2 * d - 1) * W - (h ? B : 0);
  t[36] = sy * (4 * d - 1) * W - (h ? B : 0);
  t[37] = 2 * sy * d * W;
  t[38] = sy * (2 * d + 1) * W;
  t[39] = sx * k * B;
  t[40] = (k * sy - sx) * half_W;
  t[41] = sy * (2 * d - 1) * half_W;
  t[43] = sy * d * W;
  t[44] = sy * (2 * d + 1) * half_W;

  // Chains, YUYV and UYVY.
  t[45] = sx * 2 * k * B;
  t[46] = 2 * (L * sy - sx) * W;
  t[47] = 2 * sy * (2 * d - 1) * W - (h ? 2 * B : 0);
  t[48] = 2 * sy * (4 * d - 1) * W - (h ? 2 * B : 0);
  t[49] = 4 * sy * d * W;
  t[50] = 2 * sy * (2 * d + 1) * W;
  // Not symmetrical in v, and meant so.
  t[51] = v ? -4 * d * W : 2 * (2 * d - 1) * W;
  t[52] = v ? -8 * d * W : 2 * (4 * d - 1) * W;
  t[53] = v ? -2 * (2 * d - 1) * W : 4 * d * W;
  t[54] = v ? -8 * d * W : 2 * (2 * d + 1) * W;

  // Chains, RGB24 and RGB32.
  const int32_t m = enlarges ? 6 * B : shrinks ? 3 * B / 2 : 3 * B;
  const int32_t n = shrinks ? 2 * B : 4 * B;
  t[55] = sx * m;
  if (enlarges) {
    // With one flag the line term is that of the unscaled size: the asymmetry is meant.
    const int32_t lines = h == v ? -sy * 15 * W : (v ? 3 * W : -3 * W);
    t[56] = lines + sx * m;
  } else {
    t[56] = -3 * (L * sy + sx) * W + sx * m;
  }
  t[57] = -3 * sy * (2 * d - 1) * W;
  t[58] = -3 * sy * (4 * d - 1) * W;
  t[59] = -6 * sy * d * W;
  t[60] = -3 * sy * (2 * d + 1) * W;
  t[61] = sx * n;
  t[62] = -4 * (L2 * sy + sx) * W + sx * n;

  // Line distances by bytes a pixel. The entries between them have no reader and stay 0, as 42
  // does.
  t[65] = sy * W;
  t[69] = 2 * sy * W;
  t[73] = -3 * k * sy * W;
  t[77] = -4 * sy * W;
}

uint8_t refresh_stride_tables(PplContext &ctx) {
  return refresh_tiers(ctx, [&ctx](auto tier) {
    build_stride_table(ctx, tier.plan, tier.block_width);
    return true;
  });
}

}  // namespace ppl
