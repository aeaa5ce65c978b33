#include "model/chain_front_end.h"

#include "model/arithmetic.h"

namespace ppl_model {

StageLines::StageLines(const PplContext *ctx, uint8_t *src, int lead, LineStep step)
    : src_(src),
      lead_(lead),
      width_(ctx->plain.frame_width & ~1),
      height_(ctx->plain.frame_height & ~1),
      pair_distance_(ptrdiff_t{ctx->plain.frame_width} + ctx->plain.frame_stride),
      step_(step == LineStep::frame_width ? ctx->plain.frame_width : ctx->plain.frame_stride) {}

int StageLines::at(int line, int dy, int column) const {
  const int pair = pair_of(line);
  const int wanted = reflect(line + dy, height_);
  const int x = reflect(column, width_);
  const ptrdiff_t place = offset(pair, wanted) + x;
  if (place >= 0) return src_[place];
  // Steps wider than the width can lead before the frame: there the pair's first line is a mirror.
  return src_[offset(pair, 4 * pair - wanted) + x];
}

FrontEnd run_chain_front_end(const PplContext *ctx, const StageLines &lines) {
  return run_front_end(ctx, ctx->rgb_gamma_table, [&](int line) { return lines.start(line); });
}

}  // namespace ppl_model
