#include "model/single_pass.h"

#include "model/lost_mask.h"
#include "model/scaling.h"

namespace ppl_model {

namespace {

// The frame after the front end, as cells, with its statistics gathered.
CellGrid sweep(PplContext *ctx, Tier tier, const ByteTable &table, uint8_t *src,
               Gathering gathering, bool loses_mask, SweepOrder order) {
  const FrontEnd front_end = run_front_end(ctx, table, src);
  if (ctx->mean_collection == 0) gathering = Gathering::nothing;
  if (gathering == Gathering::nothing) loses_mask = false;
  const Grid<SampledVector> vectors =
      gather_single_pass(ctx, tier, front_end, gathering, loses_mask);
  return loses_mask ? cells_with_lost_mask(front_end, vectors, order) : clean_cells(front_end);
}

// Quality 13 shows each sample as the brightness of its own pixel. A lost mask can leave more than
// a byte; the output is held at 255.
Plane samples_of(const CellGrid &cells) {
  Plane plane(2 * cells.width(), 2 * cells.height());
  const auto held = [](uint16_t value) { return static_cast<uint8_t>(std::min<int>(value, 255)); };
  for (int p = 0; p < cells.height(); ++p) {
    for (int c = 0; c < cells.width(); ++c) {
      const Cell &cell = cells.at(p, c);
      plane.at(2 * p, 2 * c) = held(cell.B);
      plane.at(2 * p, 2 * c + 1) = held(cell.Gb);
      plane.at(2 * p + 1, 2 * c) = held(cell.Gr);
      plane.at(2 * p + 1, 2 * c + 1) = held(cell.R);
    }
  }
  return plane;
}

ColourPlanes monochrome_planes(const CellGrid &cells, Format format) {
  ColourPlanes planes;
  planes.y = samples_of(cells);
  if (is_rgb(format)) {
    planes.r = planes.g = planes.b = planes.y;
    return planes;
  }
  // The table is in 16..235 already, and 16 is added all the same.
  for (int y = 0; y < planes.y.height(); ++y)
    for (int x = 0; x < planes.y.width(); ++x) planes.y.at(y, x) = studio_luma(planes.y.at(y, x));
  planes.u = Plane(cells.width(), cells.height());
  for (int p = 0; p < cells.height(); ++p)
    for (int c = 0; c < cells.width(); ++c) planes.u.at(p, c) = 128;
  planes.v = planes.u;
  return planes;
}

}  // namespace

void run_quality_3(PplContext *ctx, Tier tier, Format format, uint8_t *src, Output &output) {
  const int32_t d = ctx->decimation;
  // The 2:1 passes of the packed formats gather nothing.
  const Gathering gathering =
      is_packed(format) && d > 0 ? Gathering::nothing : Gathering::everything;
  const bool loses_mask = tier == Tier::p3 && format == Format::rgb24 && d <= 0;
  const CellGrid cells =
      sweep(ctx, tier, ctx->rgb_gamma_table, src, gathering, loses_mask, SweepOrder::pair_by_pair);

  const Parameters &params = ctx->params;
  const ColourPlanes planes =
      is_rgb(format) ? rgb_planes(params, cells) : yuv_planes(params, cells);
  const Layout layout(ctx, format);
  const int32_t width = ctx->plain.frame_width;
  if (d == 0) {
    // With both mirrors the chroma of I420 starts one line too low.
    const bool displaced = format == Format::i420 && layout.h && layout.v;
    write_picture(unscaled_picture(planes, format), layout,
                  displaced ? ChromaPlace::one_line_early : ChromaPlace::in_place, output);
  } else if (d == 1) {
    write_picture(halved_picture(planes, format), layout, ChromaPlace::in_place, output);
  } else if (d == 2) {
    write_slipping(halved_picture(planes, format), layout, width, block_width(tier), output);
  } else if (format == Format::rgb32) {
    write_unscaled_rows(unscaled_picture(planes, format), layout, width, output);
  } else {
    write_picture(doubled_picture(planes, format, tier), layout, ChromaPlace::in_place, output);
  }
}

void run_quality_13(PplContext *ctx, Tier tier, Format format, uint8_t *src, Output &output) {
  const int32_t d = ctx->decimation;
  const bool loses_mask = tier == Tier::p3 && format == Format::rgb24 && d != 0;
  const CellGrid cells = sweep(ctx, tier, ctx->yuv_contrast_gamma_table, src, Gathering::sums_only,
                               loses_mask, SweepOrder::four_line_steps);

  const ColourPlanes planes = monochrome_planes(cells, format);
  const Layout layout(ctx, format);
  const int32_t width = ctx->plain.frame_width;
  const int B = block_width(tier);
  if (d == 0)
    write_picture(unscaled_picture(planes, format), layout, ChromaPlace::in_place, output);
  else if (d == 1)
    write_picture(halved_picture(planes, format), layout, ChromaPlace::in_place, output);
  else if (d == 2)
    write_slipping(halved_picture(planes, format), layout, width, B, output);
  else
    write_runs(halved_picture(planes, format), layout, width, B, output);
}

}  // namespace ppl_model
