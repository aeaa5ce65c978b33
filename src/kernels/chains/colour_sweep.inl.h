// The sweep of the chains with colour: line by line, each stage as far ahead as the windows behind
// it need.
#pragma once

#include "kernels/chains/chain_frame.inl.h"
#include "kernels/chains/enhance.inl.h"
#include "kernels/chains/repair.inl.h"

namespace ppl::TARGET {
namespace {

class ColourSweep {
 public:
  ColourSweep(PplContext &ctx, const Buffers &buffers, const ChainForm &form,
              Statistics &statistics)
      : memory_(ctx),
        lines_(memory_, form),
        chain_(form.chain),
        repairs_(form.repair == Repair::on),
        frame_(ctx, buffers, form, (has_green(form.chain) ? 2 : 1) + (repairs_ ? 1 : 0),
               statistics),
        mosaic_(frame_.mosaic),
        reflected_(lines_.reflected, mosaic_),
        tier_memory_(tier_state(ctx).memory),
        emission_(ctx, buffers, form.format, lines_.emission),
        writes_output_(emission_.takes_planes_in_place()),
        replaces_left_over_(chain_.flat_cells == FlatCells::left_over &&
                            has_stale_cells(tier_memory_)) {}

  void run() {
    for (int pair = 0; pair < frame_.pairs; ++pair) {
      pair_ = pair;
      const int ahead = smaller(pair + frame_.lead, frame_.pairs - 1);
      while (next_front_end_ <= ahead) {
        const int q = next_front_end_++;
        frame_.front_end<Gathering{}>(q, pair, repairs_ ? &lines_.unrepaired : nullptr);
        // Two more lines could not wait unrepaired for long.
        if (repairs_) repair_up_to(2 * q - 1);
      }
      if (repairs_) repair_up_to(2 * (pair + frame_.lead - 1) + 1);
      finish_line(2 * pair);
      finish_line(2 * pair + 1);
      if (chain_.demosaic == Demosaic::accurate) green_up_to(2 * pair + 3);
    }
    if (lines_.flat.row >= 0) leave_flat_cells(lines_.flat, tier_memory_, mosaic_.width);
  }

 private:
  // ---- repair

  [[gnu::noinline]] void repair_up_to(int last) {
    const RepairThresholds thresholds(frame_.p);
    for (; next_repair_ <= smaller(last, mosaic_.height - 1); ++next_repair_) {
      const int y = next_repair_;
      uint8_t *const out = mosaic_.line(pair_, y, mosaic_.stride);
      if (y < 2 || y > mosaic_.height - 3) {
        copy_bytes(out, lines_.unrepaired[y], mosaic_.width);
        continue;
      }
      const uint8_t *in[5];
      for (int i = 0; i < 5; ++i) in[i] = lines_.unrepaired[y - 2 + i];
      repair_line(out, in, y, mosaic_.width, thresholds);
    }
  }

  // ---- green

  Word *differences(int y) const { return reinterpret_cast<Word *>(lines_.differences[y]); }

  [[gnu::noinline]] void green_up_to(int last) {
    const auto threshold = Vec::splat_words(frame_.p.CFA_T1_vec);
    for (; next_green_ <= smaller(last, mosaic_.height - 1); ++next_green_) {
      const int y = next_green_;
      const uint8_t *in[5];
      for (int i = 0; i < 5; ++i) {
        // Above the frame this stage alone reflects about its own line. Meant so:
        // docs/oddities.md, "Green above the frame".
        const int line = y - 2 + i < 0 ? y + 2 - i : y - 2 + i;
        in[i] = reflected_.get(pair_, line, mosaic_.stride);
      }
      y % 2 == 0 ? green_line<false>(lines_.green[y], differences(y), in, mosaic_.width, threshold)
                 : green_line<true>(lines_.green[y], differences(y), in, mosaic_.width, threshold);
    }
  }

  const Word *differences_of(int y) {
    const int line = reflected(y, mosaic_.height);
    if (!mosaic_.is_contiguous()) {
      // The samples are those that stand in the frame now.
      const uint8_t *const in = reflected_.get(pair_, line, mosaic_.stride);
      const uint8_t *const green = lines_.green[line];
      line % 2 == 0 ? difference_line<false>(differences(line), in, green, mosaic_.width)
                    : difference_line<true>(differences(line), in, green, mosaic_.width);
    }
    return differences(line);
  }

  // ---- red and blue

  [[gnu::noinline]] void demosaic(int y) {
    // On even lines B is the line's own colour, on odd lines R.
    uint8_t *const own = y % 2 == 0 ? lines_.blue : lines_.red;
    uint8_t *const other = y % 2 == 0 ? lines_.red : lines_.blue;
    const int width = mosaic_.width;
    if (chain_.demosaic == Demosaic::accurate) {
      const Word *const d[3] = {differences_of(y - 1), differences_of(y), differences_of(y + 1)};
      y % 2 == 0 ? colour_difference_line<false>(own, other, lines_.green[y], d, width)
                 : colour_difference_line<true>(own, other, lines_.green[y], d, width);
      return;
    }
    // These step by the width also where the stride is another.
    const uint8_t *in[3];
    for (int i = 0; i < 3; ++i) in[i] = reflected_.get(pair_, y - 1 + i, mosaic_.pitch);
    uint8_t *const green = chain_.demosaic == Demosaic::averages ? lines_.scratch : nullptr;
    y % 2 == 0 ? average_line<false>(own, other, green, in, width)
               : average_line<true>(own, other, green, in, width);
  }

  // ---- flat cells

  const uint8_t *green_of(int y) const {
    return has_green(chain_) ? lines_.green[y] : lines_.scratch;
  }

  // Returns the green line to go on with.
  [[gnu::noinline]] const uint8_t *smooth_flat_cells(int y) {
    const bool has_cells = finds_flat_cells(chain_);
    if (!replaces_left_over_ && !has_cells) return green_of(y);
    if (has_cells) {
      const bool odd_rows = chain_.flat_cells == FlatCells::odd_rows;
      if ((y % 2 != 0) == odd_rows && y + 1 < mosaic_.height) find_cells_of_row(y);
      if (lines_.flat.row != y && lines_.flat.row != y - 1) return green_of(y);
    }
    // Green is asked for again: it is replaced in a copy.
    copy_bytes(lines_.scratch, lines_.green[y], mosaic_.width);
    uint8_t *const line[3] = {lines_.red, lines_.scratch, lines_.blue};
    if (replaces_left_over_) {
      replace_stale_cells(tier_memory_, line, mosaic_.width);
    } else {
      replace_flat_cells(lines_.flat, line, mosaic_.width);
    }
    return lines_.scratch;
  }

  void find_cells_of_row(int r) {
    lines_.flat.row = r;
    const uint8_t *in[6];
    for (int i = 0; i < 6; ++i) in[i] = reflected_.get(pair_, r - 2 + i, mosaic_.stride);
    const auto threshold = Vec::splat_u8(frame_.p.CFA_T0_vec);
    const bool odd_rows = chain_.flat_cells == FlatCells::odd_rows;
    odd_rows ? find_flat_cells<true>(lines_.flat, in, mosaic_.width, threshold)
             : find_flat_cells<false>(lines_.flat, in, mosaic_.width, threshold);
    for (int i = 0; i < 4; ++i) in[i] = reflected_.get(pair_, r - 1 + i, mosaic_.pitch);
    odd_rows ? average_cells<true>(lines_.flat, in, mosaic_.width)
             : average_cells<false>(lines_.flat, in, mosaic_.width);
  }

  // ---- matrix

  bool looks_below() const { return chain_.enhance != Enhance::none; }

  // Where the last stage writes: in place, or a line that emission takes on.
  uint8_t *finished_luma(int y, uint8_t *line) const {
    return writes_output_ ? emission_.luma_line(y) : line;
  }
  uint8_t *finished_chroma(int pair, int plane) const {
    return writes_output_ ? emission_.chroma_line(pair, plane) : lines_.chroma[pair % 2][plane];
  }

  void colour_up_to(int last) {
    for (; next_colour_ <= smaller(last, mosaic_.height - 1); ++next_colour_) {
      const int y = next_colour_;
      if (has_green(chain_)) green_up_to(chain_.demosaic == Demosaic::accurate ? y + 1 : y);
      demosaic(y);
      const ColourLines colours = {lines_.red, lines_.blue, smooth_flat_cells(y)};
      uint8_t *const first = lines_.matrix[0][y];
      if (looks_below()) {
        apply_matrix(y, first, colours);
        reflect_columns(first, mosaic_.width);
      } else {
        apply_matrix(y, frame_.is_rgb() ? first : finished_luma(y, first), colours);
      }
    }
  }

  // The rows of the output's family. Chroma goes where it is waited for.
  void apply_matrix(int y, uint8_t *first, const ColourLines &colours) {
    const int width = mosaic_.width;
    if (frame_.is_rgb()) {
      uint8_t *const out[3] = {first, lines_.matrix[1][y], lines_.matrix[2][y]};
      frame_.matrix.apply(
          chain_.enhance == Enhance::gradient ? MatrixRows::full_range : MatrixRows::rgb, out,
          colours, width);
    } else if (chain_.chroma == Chroma::box) {
      uint8_t *const out[3] = {first, lines_.matrix[1][y], lines_.matrix[2][y]};
      frame_.matrix.apply(MatrixRows::full_chroma, out, colours, width);
      reflect_columns(out[1], width);
      reflect_columns(out[2], width);
    } else if (y % 2 == 0) {
      uint8_t *const out[3] = {first, finished_chroma(y / 2, 0), finished_chroma(y / 2, 1)};
      frame_.matrix.apply(MatrixRows::luma_and_chroma, out, colours, width);
    } else {
      uint8_t *const out[3] = {first, nullptr, nullptr};
      frame_.matrix.apply(MatrixRows::luma, out, colours, width);
    }
  }

  // ---- enhancement and emission

  [[gnu::noinline]] void finish_line(int y) {
    colour_up_to(looks_below() ? y + 1 : y);
    uint8_t *first = lines_.matrix[0][y];
    if (looks_below()) first = enhance(y);
    if (frame_.is_rgb()) {
      emit_rgb(y, first);
      return;
    }
    if (y % 2 == 0 && chain_.chroma == Chroma::box) box_chroma(y);
    if (!writes_output_) {
      emission_.take(y, {{first, finished_chroma(y / 2, 0), finished_chroma(y / 2, 1)}});
    }
  }

  // Returns the enhanced luma.
  uint8_t *enhance(int y) {
    const LineRing &luma = lines_.matrix[0];
    const uint8_t *const around[3] = {luma[reflected(y - 1, mosaic_.height)], luma[y],
                                      luma[reflected(y + 1, mosaic_.height)]};
    const Enhancement enhancement(frame_.p);
    uint8_t *const out = frame_.is_rgb() ? lines_.scratch : finished_luma(y, lines_.scratch);
    if (chain_.enhance == Enhance::gradient) {
      gradient_line(out, around, mosaic_.width, enhancement);
    } else {
      const uint8_t *const next = luma[smaller(y + 1, mosaic_.height - 1)];
      laplacian_line(out, around, next, mosaic_.width, enhancement);
    }
    return out;
  }

  void box_chroma(int y) {
    for (int i = 0; i < 2; ++i) {
      const LineRing &plane = lines_.matrix[1 + i];
      const uint8_t *const in[3] = {plane[reflected(y - 1, mosaic_.height)], plane[y],
                                    plane[y + 1]};
      box_line(finished_chroma(y / 2, i), in, mosaic_.width, y >= 2);
    }
  }

  // In the full-range form `first` is the luma.
  void emit_rgb(int y, uint8_t *first) {
    uint8_t *const rgb[3] = {first, lines_.matrix[1][y], lines_.matrix[2][y]};
    if (chain_.enhance == Enhance::gradient) full_range_to_rgb(rgb, mosaic_.width);
    emission_.take(y, {{rgb[2], rgb[1], rgb[0]}});
  }

  LineMemory memory_;
  ColourWorkspace lines_;
  const Chain &chain_;
  const bool repairs_;
  ChainFrame frame_;
  const MosaicLines &mosaic_;
  ReflectedLines reflected_;
  TierMemory &tier_memory_;
  Emission emission_;
  const bool writes_output_;  // luma and chroma at once, without emission
  const bool replaces_left_over_;

  int pair_ = 0;  // being emitted
  int next_front_end_ = 0, next_repair_ = 0, next_green_ = 0, next_colour_ = 0;
};

}  // namespace
}  // namespace ppl::TARGET
