#include "model/chain.h"

#include "model/chain_colour.h"
#include "model/chain_edge.h"
#include "model/chain_emission.h"
#include "model/chain_flat_cells.h"
#include "model/chain_front_end.h"
#include "model/chain_green.h"
#include "model/chain_medium_filter.h"
#include "model/chain_red_blue.h"
#include "model/chain_statistics.h"
#include "model/chain_table.h"
#include "model/report.h"

namespace ppl_model {

namespace {

// One frame on its way through the stages.
class ChainFrame {
 public:
  ChainFrame(PplContext *ctx, Tier tier, uint8_t *src)
      : ctx_(ctx),
        state_(ctx->tier(tier)),
        params_(ctx->params),
        tier_(tier),
        B_(block_width(tier)),
        stages_(stages_of(ctx->quality)),
        filter_(ctx->medium_filter_enabled != 0 && stages_.sampled_with_filter.has_value()),
        src_(src) {}

  bool runs_filter() const { return filter_; }

  void consume_frame() {
    const StageLines lines = lines_of(stages_.leads.front_end, LineStep::frame_stride);
    const FrontEnd front_end = run_chain_front_end(ctx_, lines);
    if (ctx_->mean_collection != 0)
      gather_chain(ctx_, tier_, front_end, stages_.gathering,
                   filter_ ? *stages_.sampled_with_filter : stages_.sampled);
    samples_ = front_end.looked_up;
    if (!filter_) return;
    const Plane repaired = repair_pixels(params_, samples_, B_);
    for (int y = 0; y < repaired.height(); ++y)
      for (int x = 0; x < repaired.width(); ++x) lines.start(y)[x] = repaired.at(y, x);
  }

  void emit_yuv(Format format, Output &output) {
    OpenLuma open_luma;
    YuvImage yuv = stages_.edges == Edges::in_place ? enhance_in_place(params_, samples_, B_)
                                                    : studio_yuv(params_, colour_image());
    if (stages_.edges == Edges::gradient) yuv.y = enhance_by_gradient(params_, yuv.y);
    if (stages_.edges == Edges::laplacian) {
      yuv.y = enhance_by_laplacian(params_, yuv.y, B_);
      open_luma = [&](int y, int x) { return laplacian_is_open(yuv.y, B_, y, x); };
    }
    if (stages_.chroma == Chroma::box) {
      yuv.u = box_filtered(yuv.u, B_);
      yuv.v = box_filtered(yuv.v, B_);
    }
    emit_chain(ctx_, format, planes_of(yuv), open_luma, output);
  }

  void emit_rgb(Format format, Output &output) {
    if (stages_.edges == Edges::gradient) {
      YuvImage yuv = full_range_yuv(params_, colour_image());
      yuv.y = enhance_by_gradient(params_, yuv.y);
      emit_chain(ctx_, format, rgb_of_full_range(yuv), nullptr, output);
    } else {
      emit_chain(ctx_, format, adaptive_rgb(params_, colour_image()), nullptr, output);
    }
  }

 private:
  StageLines lines_of(int lead, LineStep step) const { return {ctx_, src_, lead, step}; }

  RgbImage colour_image() {
    RgbImage image = demosaic();
    switch (stages_.flat_cells) {
      case FlatCells::none:
        break;
      case FlatCells::left_over:
        if (state_.flat_cells.open) report().picture_is_free = true;
        apply_left_over_cells(state_.flat_cells, B_, image);
        break;
      case FlatCells::odd_lines:
      case FlatCells::even_lines:
        smooth_flat_cells(params_, stages_.flat_cells,
                          {lines_of(stages_.leads.colour, LineStep::frame_stride),
                           lines_of(stages_.leads.colour, LineStep::frame_width)},
                          B_, image, state_.flat_cells);
        break;
    }
    return image;
  }

  RgbImage demosaic() const {
    const Leads &leads = stages_.leads;
    const auto green = [&] {
      return interpolate_green(params_, lines_of(leads.green, LineStep::frame_stride));
    };
    switch (stages_.demosaic) {
      case Demosaic::differences:
        return demosaic_by_differences(lines_of(leads.colour, LineStep::frame_stride), green());
      case Demosaic::averages:
        return demosaic_by_averages(lines_of(leads.colour, LineStep::frame_width));
      case Demosaic::green_and_averages:
        return demosaic_by_averages(lines_of(leads.colour, LineStep::frame_width), green());
      case Demosaic::grey:
        break;
    }
    // In RGB nothing is stored over the grey samples, so that no window sees finished pixels.
    return grey_image(enhance_by_gradient(params_, samples_));
  }

  PplContext *ctx_;
  TierState &state_;
  const Parameters &params_;
  Tier tier_;
  int B_;
  const ChainStages &stages_;
  bool filter_;
  uint8_t *src_;
  Plane samples_;  // after the front end, as quality 12 and the medium filter keep them
};

}  // namespace

void run_chain(PplContext *ctx, Tier tier, Format format, uint8_t *src, Output &output) {
  ChainFrame frame(ctx, tier, src);
  // The medium filter's own lines have no place where lines stand further apart than their width.
  const bool padded = ctx->plain.frame_stride != ctx->plain.frame_width;
  if (frame.runs_filter() && padded) return leave_frame_open(ctx, tier);
  frame.consume_frame();
  if (is_rgb(format))
    frame.emit_rgb(format, output);
  else
    frame.emit_yuv(format, output);
}

}  // namespace ppl_model
