// The matrix stage of a chain: which rows it has, and in which form they run.
#pragma once

#include "kernels/chains/matrix.inl.h"
#include "kernels/chains/workspace.inl.h"

namespace ppl::TARGET {
namespace {

// Which rows of which family a line takes.
enum class MatrixRows {
  luma,             // Y in the studio range
  luma_and_chroma,  // and a value a cell for U and V
  full_chroma,      // and a signed value a pixel, for the chroma box
  full_range,       // Y in the full range, U and V signed, for RGB output with enhancement
  rgb,
};

class MatrixStage {
 public:
  MatrixStage(const Parameters &p, const ChainForm &form) : matrix_(matrix_of(p, form)) {}

  // `out` has a line for each row.
  void apply(MatrixRows rows, uint8_t *const out[3], const ColourLines &in, int width) const {
    if (matrix_.shift == 5) {
      apply_shift<5>(rows, out, in, width);
    } else {
      apply_shift<8>(rows, out, in, width);
    }
  }

 private:
  static AdaptiveMatrix matrix_of(const Parameters &p, const ChainForm &form) {
    const bool is_grey = form.chain.demosaic == Demosaic::grey;
    if (!is_rgb(form.format)) {
      return {p.studio_slope_vec, p.studio_base0_vec, p.offset_studio_vec, 8, is_grey, p};
    }
    // The gradient form enhances luma also where R, G and B are wanted.
    if (form.chain.enhance == Enhance::gradient) {
      return {p.full_slope_vec, p.full_base0_vec, p.offset_full_vec, 8, is_grey, p};
    }
    return {p.rgb_slope_vec, p.rgb_base0_vec, p.offset_rgb_vec, 5, is_grey, p};
  }

  template <int shift>
  void apply_shift(MatrixRows rows, uint8_t *const out[3], const ColourLines &in, int width) const {
    switch (matrix_.form) {
      case MatrixForm::plain:
        return apply_form<shift, MatrixForm::plain>(rows, out, in, width);
      case MatrixForm::folded:
        return apply_form<shift, MatrixForm::folded>(rows, out, in, width);
      case MatrixForm::grey:
        return apply_form<shift, MatrixForm::grey>(rows, out, in, width);
    }
  }

  template <int shift, MatrixForm form>
  [[gnu::noinline, gnu::flatten]] void apply_form(MatrixRows which, uint8_t *const out[3],
                                                  const ColourLines &in, int width) const {
    const AdaptiveRows<shift, form> rows(matrix_);
    if constexpr (shift == 5) {
      rgb_line(out, in, width, rows);
    } else {
      switch (which) {
        case MatrixRows::luma:
          return studio_line<ChromaSites::none>(out, in, width, rows);
        case MatrixRows::luma_and_chroma:
          return studio_line<ChromaSites::even_columns>(out, in, width, rows);
        case MatrixRows::full_chroma:
          return studio_line<ChromaSites::all>(out, in, width, rows);
        default:
          return full_range_line(out, in, width, rows);
      }
    }
  }

  const AdaptiveMatrix matrix_;
};

}  // namespace
}  // namespace ppl::TARGET
