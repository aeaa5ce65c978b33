// The sweep of quality 12: grey samples with enhancement in place.
//
// In the Y, U, V formats the finished luma of a block stands over its samples before the next block
// is enhanced. So the line above is finished luma, and in the first column of every block but the
// first the left neighbours are, too. Meant so: docs/oddities.md, "Quality 12 feeds back".
#pragma once

#include "kernels/chains/chain_frame.inl.h"
#include "kernels/chains/enhance.inl.h"

namespace ppl::TARGET {
namespace {

class GreySweep {
 public:
  GreySweep(PplContext &ctx, const Buffers &buffers, const ChainForm &form, Statistics &statistics)
      : memory_(ctx),
        lines_(memory_, form),
        frame_(ctx, buffers, form, 1, statistics),
        width_(frame_.mosaic.width),
        emission_(ctx, buffers, form.format, lines_.emission),
        enhancement_(ctx.params) {}

  void run() {
    int next_front_end = 0;
    for (int pair = 0; pair < frame_.pairs; ++pair) {
      while (next_front_end <= smaller(pair + frame_.lead, frame_.pairs - 1)) {
        front_end(next_front_end++, pair);
      }
      frame_.is_rgb() ? finish_rgb_pair(pair) : finish_yuv_pair(pair);
    }
  }

 private:
  // In place; what is enhanced is a copy.
  void front_end(int q, int pair) {
    constexpr Gathering means_alone = {.judges_cells = false, .loses_mask = false};
    const PairLines looked_up = frame_.front_end<means_alone>(q, pair, nullptr);
    for (int i = 0; i < 2; ++i) {
      uint8_t *const line = lines_.grey[2 * q + i];
      copy_bytes(line, looked_up.out[i], width_);
      reflect_columns(line, width_);
    }
  }

  bool is_last(int pair) const { return pair == frame_.pairs - 1; }

  // The lines of a pair with their neighbours, `above` being the one before.
  struct Window {
    const uint8_t *line[4];
  };
  Window window(int pair, const uint8_t *above) const {
    const int y = 2 * pair;
    return {{above, lines_.grey[y], lines_.grey[y + 1],
             is_last(pair) ? lines_.grey[y] : lines_.grey[y + 2]}};
  }

  void enhance(const Window &in) const {
    for (int i = 0; i < 2; ++i) {
      gradient_line(lines_.enhanced[i], in.line + i, width_, enhancement_);
    }
  }

  void apply_matrix(MatrixRows rows, int i, uint8_t *const out[3]) const {
    uint8_t *const grey = lines_.enhanced[i];
    frame_.matrix.apply(rows, out, {grey, grey, grey}, width_);
  }

  [[gnu::noinline]] void finish_rgb_pair(int pair) {
    enhance(window(pair, pair == 0 ? lines_.grey[1] : lines_.grey[2 * pair - 1]));
    for (int i = 0; i < 2; ++i) {
      const int y = 2 * pair + i;
      uint8_t *const rgb[3] = {lines_.matrix[0][y], lines_.matrix[1][y], lines_.matrix[2][y]};
      apply_matrix(MatrixRows::rgb, i, rgb);
      emission_.take(y, {{rgb[2], rgb[1], rgb[0]}});
    }
  }

  [[gnu::noinline]] void finish_yuv_pair(int pair) {
    const int y = 2 * pair;
    const Window in = window(pair, pair == 0 ? lines_.grey[1] : lines_.finished[y - 1]);
    enhance(in);

    // Only a block's last column is read as a left neighbour, and none of these depends on one.
    uint8_t *const finished[2] = {lines_.finished[y], lines_.finished[y + 1]};
    for (int i = 0; i < 2; ++i) {
      uint8_t *const out[3] = {finished[i], nullptr, nullptr};
      apply_matrix(MatrixRows::luma, i, out);
    }
    // Lines reflected at the frame's ends are read as they are at that moment.
    const uint8_t *const left[4] = {pair == 0 ? finished[1] : in.line[0], finished[0], finished[1],
                                    is_last(pair) ? finished[0] : in.line[3]};
    for (int x = block; x < width_; x += block) {
      for (int i = 0; i < 2; ++i) {
        lines_.enhanced[i][x] = enhancement_.apply_gradient(
            {left[i][x - 1], left[i + 1][x - 1], left[i + 2][x - 1]}, in.line + i, x);
      }
    }

    uint8_t *const *const chroma = lines_.chroma[pair % 2];
    uint8_t *const first[3] = {finished[0], chroma[0], chroma[1]};
    uint8_t *const second[3] = {finished[1], nullptr, nullptr};
    apply_matrix(MatrixRows::luma_and_chroma, 0, first);
    apply_matrix(MatrixRows::luma, 1, second);
    reflect_columns(finished[1], width_);
    for (int i = 0; i < 2; ++i) emission_.take(y + i, {{finished[i], chroma[0], chroma[1]}});
  }

  LineMemory memory_;
  GreyWorkspace lines_;
  ChainFrame frame_;
  const int width_;
  Emission emission_;
  const Enhancement enhancement_;
};

}  // namespace
}  // namespace ppl::TARGET
