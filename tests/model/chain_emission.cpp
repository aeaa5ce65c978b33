#include "model/chain_emission.h"

#include "model/arithmetic.h"
#include "model/picture.h"
#include "model/scaling.h"

namespace ppl_model {

namespace {

Plane double_both_ways(const Plane &plane) {
  return double_lines_on_even(double_along_lines_rule_a(plane));
}

// The chroma of I420 comes from the odd one of two chroma lines; a last line without a partner
// gives none.
Plane halve_chroma(const Plane &plane) {
  Plane result(plane.width() / 2, plane.height() / 2);
  for (int y = 0; y < result.height(); ++y)
    for (int x = 0; x < result.width(); ++x) result.at(y, x) = plane.at(2 * y + 1, 2 * x);
  return result;
}

Picture halved(const ColourPlanes &planes, Format format) {
  Picture picture = halved_picture(planes, format);
  if (format == Format::i420) {
    picture.u = halve_chroma(planes.u);
    picture.v = halve_chroma(planes.v);
  }
  return picture;
}

// Whatever an open pixel goes into is open too: in a plane that is 255 there and 0 elsewhere no
// average with it is 0.
std::function<bool(int, int)> double_open_luma(const Plane &luma, const OpenLuma &open_luma) {
  if (!open_luma) return nullptr;
  Plane open(luma.width(), luma.height());
  for (int y = 0; y < open.height(); ++y)
    for (int x = 0; x < open.width(); ++x) open.at(y, x) = open_luma(y, x) ? 255 : 0;
  return [doubled = double_both_ways(open)](int y, int x) { return doubled.at(y, x) != 0; };
}

Picture doubled(const ColourPlanes &planes, Format format, const OpenLuma &open_luma) {
  Picture picture;
  if (is_rgb(format)) {
    picture.r = double_both_ways(planes.r);
    picture.g = double_both_ways(planes.g);
    picture.b = double_both_ways(planes.b);
    return picture;
  }
  picture.y = double_both_ways(planes.y);
  picture.luma_is_open = double_open_luma(planes.y, open_luma);
  const auto double_chroma = [&](const Plane &plane) {
    return is_packed(format) ? spread_cell_lines(double_along_lines_rule_a(plane))
                             : double_both_ways(plane);
  };
  picture.u = double_chroma(planes.u);
  picture.v = double_chroma(planes.v);
  return picture;
}

// RGB24 with exactly one mirror moves two lines for every row of four, so each row takes over half
// of the row before: of every line pair but the last only the first line remains.
Plane double_with_overlap(const Plane &plane) {
  const Plane wide = double_along_lines_rule_a(plane);
  const int pairs = plane.height() / 2;
  const int last = 2 * pairs;
  Plane result(wide.width(), last + 1);
  for (int x = 0; x < wide.width(); ++x) {
    for (int p = 0; p < pairs; ++p) result.at(2 * p, x) = wide.at(2 * p, x);
    result.at(last, x) = wide.at(plane.height() - 1, x);
    for (int y = 1; y <= last - 3; y += 2)
      result.at(y, x) = average(result.at(y - 1, x), result.at(y + 1, x));
    result.at(last - 1, x) = result.at(last - 2, x);
  }
  return result;
}

Picture doubled_with_overlap(const ColourPlanes &planes) {
  Picture picture;
  picture.r = double_with_overlap(planes.r);
  picture.g = double_with_overlap(planes.g);
  picture.b = double_with_overlap(planes.b);
  return picture;
}

}  // namespace

void emit_chain(const PplContext *ctx, Format format, const ColourPlanes &planes,
                const OpenLuma &open_luma, Output &output) {
  const Layout layout(ctx, format);
  const int32_t d = ctx->decimation;
  const int32_t width = ctx->plain.frame_width;
  if (d == 0) {
    Picture picture = unscaled_picture(planes, format);
    picture.luma_is_open = open_luma;
    write_picture(picture, layout, ChromaPlace::in_place, output);
  } else if (d == 1) {
    write_picture(halved(planes, format), layout, ChromaPlace::in_place, output);
  } else if (d == 2) {
    write_slipping_lines(halved(planes, format), layout, width, output);
  } else if (format == Format::rgb32) {
    write_unscaled_rows(unscaled_picture(planes, format), layout, width, output);
  } else if (format == Format::rgb24 && layout.h != layout.v) {
    write_picture(doubled_with_overlap(planes), layout, ChromaPlace::in_place, output);
  } else {
    write_picture(doubled(planes, format, open_luma), layout, ChromaPlace::in_place, output);
  }
}

}  // namespace ppl_model
