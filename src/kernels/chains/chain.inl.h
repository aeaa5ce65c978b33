// The sweep that runs a chain: line by line, each stage as far ahead as the windows behind it need.
#pragma once

#include "kernels/chains/emission.inl.h"
#include "kernels/chains/enhance.inl.h"
#include "kernels/chains/flat_cells.inl.h"
#include "kernels/chains/front_end.inl.h"
#include "kernels/chains/repair.inl.h"
#include "kernels/chains/stages.h"

namespace ppl::TIER {
namespace {

// Line memory at the most, in lines: with repair, to RGB24 at decimation minus 1, reflected lines
// 5, unrepaired lines 6, green 3, differences 3, matrix output 7, red and blue 2, scratch 1, the
// line before 3: 30 of 1344 bytes.
class ChainSweep {
 public:
  ChainSweep(PplContext &ctx, const Buffers &buffers, Format format, const Chain &chain,
             bool repairs)
      : p_(parameters_of(ctx)),
        chain_(chain),
        repairs_(repairs),
        is_rgb_(Emission::is_rgb(format)),
        // Line pairs that the front end is ahead of emission.
        lead_((has_green() ? 2 : 1) + (repairs ? 1 : 0)),
        mosaic_(ctx, buffers.src),
        pairs_(mosaic_.height / 2),
        memory_(ctx),
        statistics_(ctx),
        lattice_(ctx, lead_),
        emission_(ctx, buffers, format, memory_),
        // What feeds back is read again.
        writes_output_(emission_.takes_planes_in_place() && chain.demosaic != Demosaic::grey),
        colour_matrix_(matrix_of(p_, is_rgb_, chain)),
        lines_(memory_, mosaic_, chain.flat_cells >= FlatCells::odd_rows ? 6 : 5) {
    const int width = mosaic_.width;
    const int cells = width / 2;
    if (repairs_) unrepaired_ = LineRing(memory_, width, 6);
    if (chain_.demosaic == Demosaic::grey) {
      grey_ = LineRing(memory_, width, 6);
      finished_grey_ = LineRing(memory_, width, 3);
      for (uint8_t *&line : enhanced_pair_) line = memory_.line(width);
    } else {
      matrix_[0] = LineRing(memory_, width, 3);
      red_ = memory_.line(width);
      blue_ = memory_.line(width);
    }
    if (has_green()) {
      green_ = LineRing(memory_, width, 3);
      for (int16_t *&d : differences_) d = reinterpret_cast<int16_t *>(memory_.line(width));
    }
    scratch_ = memory_.line(width);
    if (is_rgb_ || chain_.chroma == Chroma::box) {
      for (int plane = chain_.demosaic == Demosaic::grey ? 0 : 1; plane < 3; ++plane) {
        matrix_[plane] = LineRing(memory_, width, is_rgb_ ? 2 : 3);
      }
    }
    if (!is_rgb_) {
      for (auto &pair : chroma_) {
        for (uint8_t *&line : pair) line = memory_.line(cells);
      }
    }
    if (chain_.flat_cells >= FlatCells::odd_rows) {
      flat_.mask = memory_.line(width);
      for (uint8_t *&line : flat_.rgb) line = memory_.line(width);
    }
    replaces_left_over_ = chain_.flat_cells == FlatCells::left_over && has_stale_cells(p_);
  }

  void run() {
    for (int pair = 0; pair < pairs_; ++pair) {
      pair_ = pair;
      const int ahead = smaller(pair + lead_, pairs_ - 1);
      while (next_front_end_ <= ahead) {
        const int q = next_front_end_++;
        front_end(q);
        // Two more lines could not wait unrepaired for long.
        if (repairs_) repair_up_to(2 * q - 1);
      }
      if (repairs_) repair_up_to(2 * (pair + lead_ - 1) + 1);
      if (chain_.demosaic == Demosaic::grey) {
        finish_grey_pair();
      } else {
        finish_line(2 * pair);
        finish_line(2 * pair + 1);
        if (chain_.demosaic == Demosaic::accurate) green_up_to(2 * pair + 3);
      }
    }
    if (flat_.row >= 0) leave_flat_cells(flat_, p_, mosaic_.width);
    statistics_.flush();
  }

 private:
  static int smaller(int a, int b) { return a < b ? a : b; }

  static AdaptiveMatrix matrix_of(const Parameters &p, bool is_rgb, const Chain &chain) {
    const bool is_grey = chain.demosaic == Demosaic::grey;
    if (!is_rgb)
      return {p.studio_slope_vec, p.studio_base0_vec, p.offset_studio_vec, 8, is_grey, p};
    // The gradient form enhances luma also where R, G and B are wanted.
    if (chain.enhance == Enhance::gradient) {
      return {p.full_slope_vec, p.full_base0_vec, p.offset_full_vec, 8, is_grey, p};
    }
    return {p.rgb_slope_vec, p.rgb_base0_vec, p.offset_rgb_vec, 5, is_grey, p};
  }

  bool has_green() const {
    return chain_.demosaic == Demosaic::accurate || chain_.demosaic == Demosaic::green_averages;
  }

  // ---- front end and repair

  [[gnu::noinline]] void front_end(int q) {
    uint8_t *in[2], *out[2];
    for (int i = 0; i < 2; ++i) {
      in[i] = mosaic_.line(pair_, 2 * q + i, mosaic_.stride);
      out[i] = repairs_ ? unrepaired_[2 * q + i] : in[i];
    }
    const int width = mosaic_.width;
    if (q == pair_ + lead_ && lattice_.samples(pair_)) {
      constexpr Gathering means_alone = {.judges_cells = false, .loses_mask = false};
      if (chain_.demosaic == Demosaic::grey) {
        look_up_sampled_pair<means_alone>(out, in, p_.front_end, width, statistics_, lattice_,
                                          pair_);
      } else {
        look_up_sampled_pair<Gathering{}>(out, in, p_.front_end, width, statistics_, lattice_,
                                          pair_);
      }
    } else {
      for (int i = 0; i < 2; ++i) look_up_line(out[i], in[i], p_.front_end.line[i], 0, width);
    }
    if (chain_.demosaic == Demosaic::grey) {
      for (int i = 0; i < 2; ++i) {
        copy_bytes(grey_[2 * q + i], out[i], width);
        reflect_columns(grey_[2 * q + i], width);
      }
    }
  }

  [[gnu::noinline]] void repair_up_to(int last) {
    const RepairThresholds thresholds(p_);
    for (; next_repair_ <= smaller(last, mosaic_.height - 1); ++next_repair_) {
      const int y = next_repair_;
      uint8_t *const out = mosaic_.line(pair_, y, mosaic_.stride);
      if (y < 2 || y > mosaic_.height - 3) {
        copy_bytes(out, unrepaired_[y], mosaic_.width);
        continue;
      }
      const uint8_t *in[5];
      for (int i = 0; i < 5; ++i) in[i] = unrepaired_[y - 2 + i];
      repair_line(out, in, y, mosaic_.width, thresholds);
    }
  }

  // ---- green and colour

  [[gnu::noinline]] void green_up_to(int last) {
    for (; next_green_ <= smaller(last, mosaic_.height - 1); ++next_green_) {
      const int y = next_green_;
      const uint8_t *in[5];
      for (int i = 0; i < 5; ++i) {
        // Above the frame this stage alone reflects about its own line.
        const int line = y - 2 + i < 0 ? y + 2 - i : y - 2 + i;
        in[i] = lines_.get(pair_, line, mosaic_.stride);
      }
      const auto threshold = load(p_.CFA_T1_vec);
      int16_t *const differences = differences_[y % 3];
      y % 2 == 0 ? green_line<false>(green_[y], differences, in, mosaic_.width, threshold)
                 : green_line<true>(green_[y], differences, in, mosaic_.width, threshold);
    }
  }

  const int16_t *differences_of(int y) {
    const int line = reflected(y, mosaic_.height);
    int16_t *const differences = differences_[line % 3];
    if (!mosaic_.is_contiguous()) {
      // The samples are those that stand in the frame now.
      const uint8_t *const in = lines_.get(pair_, line, mosaic_.stride);
      line % 2 == 0 ? difference_line<false>(differences, in, green_[line], mosaic_.width)
                    : difference_line<true>(differences, in, green_[line], mosaic_.width);
    }
    return differences;
  }

  [[gnu::noinline]] void demosaic(int y) {
    // On even lines B is the line's own colour, on odd lines R.
    uint8_t *const own = y % 2 == 0 ? blue_ : red_;
    uint8_t *const other = y % 2 == 0 ? red_ : blue_;
    if (chain_.demosaic == Demosaic::accurate) {
      const int16_t *const above = differences_of(y - 1);
      const int16_t *const here = differences_of(y);
      const int16_t *const below = differences_of(y + 1);
      y % 2 == 0
          ? colour_difference_line<false>(own, other, green_[y], above, here, below, mosaic_.width)
          : colour_difference_line<true>(own, other, green_[y], above, here, below, mosaic_.width);
      return;
    }
    // These step by the width also where the stride is another.
    const uint8_t *in[3];
    for (int i = 0; i < 3; ++i) in[i] = lines_.get(pair_, y - 1 + i, mosaic_.pitch);
    uint8_t *const green = chain_.demosaic == Demosaic::averages ? scratch_ : nullptr;
    y % 2 == 0 ? average_line<false>(own, other, green, in, mosaic_.width)
               : average_line<true>(own, other, green, in, mosaic_.width);
  }

  const uint8_t *green_of(int y) const { return has_green() ? green_[y] : scratch_; }

  // The green line, where it may be written.
  uint8_t *copied_green(int y) {
    for (int x = 0; x < mosaic_.width; x += Vec::bytes) {
      Vec::store(scratch_ + x, Vec::load(green_[y] + x));
    }
    return scratch_;
  }

  // Returns the green line to go on with.
  [[gnu::noinline]] const uint8_t *smooth_flat_cells(int y) {
    if (replaces_left_over_) {
      uint8_t *const line[3] = {red_, copied_green(y), blue_};
      replace_stale_cells(p_, line, mosaic_.width);
      return line[1];
    }
    if (chain_.flat_cells < FlatCells::odd_rows) return green_of(y);
    const bool odd_rows = chain_.flat_cells == FlatCells::odd_rows;
    if ((y % 2 != 0) == odd_rows && y + 1 < mosaic_.height) find_cells_of_row(y);
    if (flat_.row != y && flat_.row != y - 1) return green_of(y);
    uint8_t *const line[3] = {red_, copied_green(y), blue_};
    replace_flat_cells(flat_, line, mosaic_.width);
    return line[1];
  }

  void find_cells_of_row(int r) {
    flat_.row = r;
    const uint8_t *in[6];
    for (int i = 0; i < 6; ++i) in[i] = lines_.get(pair_, r - 2 + i, mosaic_.stride);
    const auto threshold = load(p_.CFA_T0_vec);
    const bool odd_rows = chain_.flat_cells == FlatCells::odd_rows;
    odd_rows ? find_flat_cells<true>(flat_, in, mosaic_.width, threshold)
             : find_flat_cells<false>(flat_, in, mosaic_.width, threshold);
    for (int i = 0; i < 4; ++i) in[i] = lines_.get(pair_, r - 1 + i, mosaic_.pitch);
    odd_rows ? average_cells<true>(flat_, in, mosaic_.width)
             : average_cells<false>(flat_, in, mosaic_.width);
  }

  void colour_up_to(int last) {
    for (; next_colour_ <= smaller(last, mosaic_.height - 1); ++next_colour_) {
      const int y = next_colour_;
      if (has_green()) green_up_to(chain_.demosaic == Demosaic::accurate ? y + 1 : y);
      demosaic(y);
      const ColourLines colours = {red_, blue_, smooth_flat_cells(y)};
      if (looks_below()) {
        apply_matrix(y, matrix_[0][y], colours);
        reflect_columns(matrix_[0][y], mosaic_.width);
      } else {
        apply_matrix(y, finished_luma(y, matrix_[0][y]), colours);
      }
    }
  }

  bool looks_below() const { return chain_.enhance != Enhance::none; }

  // Where the last stage writes: in place, or a line that emission takes on.
  uint8_t *finished_luma(int y, uint8_t *line) const {
    return writes_output_ ? emission_.luma_line(y) : line;
  }
  uint8_t *finished_chroma(int pair, int plane) const {
    return writes_output_ ? emission_.chroma_line(pair, plane) : chroma_[pair % 2][plane];
  }

  // Line y, or any odd one where chroma is not wanted.
  static constexpr int odd_line = 1;

  void apply_matrix(int y, uint8_t *first, const ColourLines &colours) {
    if (colour_matrix_.shift == 5) {
      apply_rows<5>(y, first, colours);
    } else {
      apply_rows<8>(y, first, colours);
    }
  }

  template <int shift>
  void apply_rows(int y, uint8_t *first, const ColourLines &colours) {
    switch (colour_matrix_.form) {
      case MatrixForm::plain:
        return apply_rows<shift, MatrixForm::plain>(y, first, colours);
      case MatrixForm::folded:
        return apply_rows<shift, MatrixForm::folded>(y, first, colours);
      case MatrixForm::grey:
        return apply_rows<shift, MatrixForm::grey>(y, first, colours);
    }
  }

  // The rows of the output's family. Chroma goes where it is waited for.
  template <int shift, MatrixForm form>
  [[gnu::noinline, gnu::flatten]] void apply_rows(int y, uint8_t *first,
                                                  const ColourLines &colours) {
    const AdaptiveRows<shift, form> rows(colour_matrix_);
    const int width = mosaic_.width;
    if constexpr (shift == 5) {
      uint8_t *const out[3] = {first, matrix_[1][y], matrix_[2][y]};
      rgb_line(out, colours, width, rows);
    } else if (is_rgb_) {
      uint8_t *const out[3] = {first, matrix_[1][y], matrix_[2][y]};
      full_range_line(out, colours, width, rows);
    } else if (chain_.chroma == Chroma::box) {
      studio_line<ChromaSites::all>(first, matrix_[1][y], matrix_[2][y], colours, width, rows);
      reflect_columns(matrix_[1][y], width);
      reflect_columns(matrix_[2][y], width);
    } else if (y % 2 == 0) {
      studio_line<ChromaSites::even_columns>(first, finished_chroma(y / 2, 0),
                                             finished_chroma(y / 2, 1), colours, width, rows);
    } else {
      studio_line<ChromaSites::none>(first, nullptr, nullptr, colours, width, rows);
    }
  }

  // ---- enhancement and emission

  [[gnu::noinline]] void finish_line(int y) {
    colour_up_to(looks_below() ? y + 1 : y);
    const uint8_t *first = matrix_[0][y];
    if (looks_below()) {
      uint8_t *const around[3] = {matrix_[0][reflected(y - 1, mosaic_.height)], matrix_[0][y],
                                  matrix_[0][reflected(y + 1, mosaic_.height)]};
      const Enhancement enhancement(p_);
      uint8_t *const out = finished_luma(y, scratch_);
      if (chain_.enhance == Enhance::gradient) {
        gradient_line(out, around, mosaic_.width, enhancement);
      } else {
        const uint8_t *const next = matrix_[0][smaller(y + 1, mosaic_.height - 1)];
        laplacian_line(out, around, next, mosaic_.width, enhancement);
      }
      first = out;
    }
    if (is_rgb_) {
      emit_rgb(y, first);
      return;
    }
    if (y % 2 == 0 && chain_.chroma == Chroma::box) box_chroma(y);
    if (!writes_output_) emit_yuv(y, first);
  }

  void box_chroma(int y) {
    for (int i = 0; i < 2; ++i) {
      const LineRing &plane = matrix_[1 + i];
      const uint8_t *const in[3] = {plane[reflected(y - 1, mosaic_.height)], plane[y],
                                    plane[y + 1]};
      box_line(finished_chroma(y / 2, i), in, mosaic_.width, y >= 2);
    }
  }

  [[gnu::noinline]] void emit_yuv(int y, const uint8_t *luma) {
    FinishedLine line = {};
    line.y = luma;
    line.u = finished_chroma(y / 2, 0);
    line.v = finished_chroma(y / 2, 1);
    emission_.take(y, line);
  }

  // In the full-range form `first` is the luma, in a line that may be written.
  [[gnu::noinline]] void emit_rgb(int y, const uint8_t *first) {
    FinishedLine line = {};
    line.r = first;
    line.g = matrix_[1][y];
    line.b = matrix_[2][y];
    if (chain_.enhance == Enhance::gradient) {
      uint8_t *const rgb[3] = {scratch_, matrix_[1][y], matrix_[2][y]};
      full_range_to_rgb(rgb, first, mosaic_.width);
    }
    emission_.take(y, line);
  }

  // ---- quality 12

  // Grey lines with in-place enhancement: in the Y, U, V formats the finished luma of a block
  // stands over its samples before the next block is enhanced. So the line above is finished luma,
  // and in the first column of every block but the first the left neighbours are, too.
  [[gnu::noinline]] void finish_grey_pair() {
    const int y = 2 * pair_;
    const int width = mosaic_.width;
    const bool feeds_back = !is_rgb_;
    const bool is_first = pair_ == 0;
    const bool is_last = pair_ == pairs_ - 1;
    const uint8_t *const above = is_first     ? grey_[1]
                                 : feeds_back ? finished_grey_[y - 1]
                                              : grey_[y - 1];
    const uint8_t *const lines[4] = {above, grey_[y], grey_[y + 1],
                                     is_last ? grey_[y] : grey_[y + 2]};
    const Enhancement enhancement(p_);
    gradient_line(enhanced_pair_[0], lines, width, enhancement);
    gradient_line(enhanced_pair_[1], lines + 1, width, enhancement);

    if (is_rgb_) {
      for (int i = 0; i < 2; ++i) {
        apply_matrix(y + i, matrix_[0][y + i], grey_colours(i));
        emit_rgb(y + i, matrix_[0][y + i]);
      }
      return;
    }
    // Only a block's last column is read as a left neighbour, and none of these depends on one.
    uint8_t *const finished[2] = {finished_grey_[y], finished_grey_[y + 1]};
    for (int i = 0; i < 2; ++i) apply_matrix(odd_line, finished[i], grey_colours(i));
    for (int x = Vec::bytes; x < width; x += Vec::bytes) {
      // Lines reflected at the frame's ends are read as they are at that moment.
      const uint8_t left[4] = {is_first ? finished[1][x - 1] : above[x - 1], finished[0][x - 1],
                               finished[1][x - 1], is_last ? finished[0][x - 1] : lines[3][x - 1]};
      for (int i = 0; i < 2; ++i) enhanced_pair_[i][x] = enhance_beside(left + i, lines + i, x);
    }
    for (int i = 0; i < 2; ++i) apply_matrix(y + i, finished[i], grey_colours(i));
    reflect_columns(finished[1], width);
    for (int i = 0; i < 2; ++i) emit_yuv(y + i, finished[i]);
  }

  ColourLines grey_colours(int i) const {
    return {enhanced_pair_[i], enhanced_pair_[i], enhanced_pair_[i]};
  }

  // The gradient form for one pixel, with its left column given.
  uint8_t enhance_beside(const uint8_t left[3], const uint8_t *const lines[3], int x) const {
    const int a = left[0], d = left[1], g = left[2];
    const int b = lines[0][x], e = lines[1][x], h = lines[2][x];
    const int c = lines[0][x + 1], f = lines[1][x + 1], i = lines[2][x + 1];
    const int Gx = c + f + i - a - d - g;
    const int Gy = g + h + i - a - b - c;
    const int measure = (Gx < 0 ? -Gx : Gx) + (Gy < 0 ? -Gy : Gy);
    int detail = 0;
    if (measure > p_.edge_threshold_vec.lane[0] && p_.edge_threshold2_vec.lane[0] > measure) {
      detail = static_cast<int16_t>((Gx + Gy) * p_.edge_enhance_factor_vec.lane[0]) >> 6;
    }
    const int value = e + detail;
    return static_cast<uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
  }

  Parameters &p_;
  const Chain &chain_;
  const bool repairs_, is_rgb_;
  const int lead_;
  const MosaicLines mosaic_;
  const int pairs_;
  LineMemory memory_;
  Statistics statistics_;
  ChainLattice lattice_;
  Emission emission_;
  const bool writes_output_;  // luma and chroma at once, without emission
  const AdaptiveMatrix colour_matrix_;
  ReflectedLines lines_;

  int pair_ = 0;  // being emitted
  int next_front_end_ = 0, next_repair_ = 0, next_green_ = 0, next_colour_ = 0;

  LineRing unrepaired_;  // front end output that waits for repair
  LineRing grey_;        // quality 12: front end output
  LineRing finished_grey_;
  uint8_t *enhanced_pair_[2] = {};
  LineRing green_;
  int16_t *differences_[3] = {};
  uint8_t *red_ = nullptr, *blue_ = nullptr;
  uint8_t *scratch_ = nullptr;  // green on its way to the matrix, then enhanced luma
  CellRow flat_;
  bool replaces_left_over_ = false;
  LineRing matrix_[3];          // luma or the first row; then the other two where kept in full
  uint8_t *chroma_[2][2] = {};  // U and V of a pair, one value a cell
};

void run_chain(PplContext &ctx, const Buffers &buffers, Format format, const Chain &chain,
               bool repairs) {
  ChainSweep sweep(ctx, buffers, format, chain, repairs);
  sweep.run();
}

}  // namespace
}  // namespace ppl::TIER
