// The end of a chain: finished lines to their format, scaled and mirrored.
//
// Lines come in order, one at a time. Scaling works on finished values and in picture order (but
// for RGB24 at decimation minus 1 with one mirror flag, see there); the result is mirrored.
#pragma once

#include "kernels/common/lines.inl.h"
#include "kernels/passes.h"

namespace ppl::TARGET {
namespace {

// A line of output values: Y, U, V, or B, G, R. Chroma in the studio range, one value a cell, comes
// with every line of a pair; it is that of the pair's first line.
struct FinishedLine {
  const uint8_t *plane[3];
};

// Line memory of the scaled sizes.
struct EmissionLines {
  DoubledLine doubled[3];
  uint8_t *shrunk[3] = {};

  constexpr EmissionLines(LineMemory &memory, Format format, int decimation, int width) {
    if (decimation > 0) {
      for (uint8_t *&line : shrunk) line = memory.line(width / 2);
    } else if (decimation < 0 && format != Format::rgb32) {
      doubled[0] = DoubledLine(memory, 2 * width);
      for (int i = 1; i < 3; ++i) {
        doubled[i] = DoubledLine(memory, format == Format::rgb24 ? 2 * width : width);
      }
    }
  }
};

class Emission {
 public:
  Emission(const PplContext &ctx, const Buffers &buffers, Format format, EmissionLines &lines)
      : ctx_(ctx),
        buffers_(buffers),
        format_(format),
        width_(whole_cells(ctx.frame_width)),
        pairs_(ctx.frame_height / 2),
        at_(ctx, ctx.h_mirror != 0, is_rgb(format) ? LineOrder::bottom_up : LineOrder::top_down),
        lines_(lines) {}

  // Whether finished lines of whole registers may be written straight to where they belong.
  bool takes_planes_in_place() const {
    return format_ == Format::i420 && ctx_.decimation == 0 && !at_.mirrored &&
           width_ % Vec::size == 0;
  }
  uint8_t *luma_line(int y) const { return buffers_.dst + line_start(ctx_, y, at_.order); }
  uint8_t *chroma_line(int pair, int plane) const {
    return buffers_.dst_chroma + chroma_line_start(ctx_, pair) + plane * ctx_.out_size_4;
  }

  // Source line y is finished.
  void take(int y, const FinishedLine &line) {
    if (ctx_.decimation == 0) {
      put_plain(y, line);
    } else if (ctx_.decimation > 0) {
      if (y % 2 == 0) put_shrunk(y / 2, line);
    } else if (format_ == Format::rgb32) {
      put_spread(y, line);
    } else if (format_ == Format::rgb24) {
      put_enlarged_rgb(y, line);
    } else if (format_ == Format::i420) {
      put_enlarged_planes(y, line);
    } else {
      put_enlarged_packed(y, line);
    }
  }

 private:
  bool is_last(int y) const { return y == 2 * pairs_ - 1; }

  // ---- layout

  // A line whose unit 0 stands `origin` units behind a plane, which stands `plane` bytes behind the
  // output's start.
  template <class Line>
  void put(int plane, int origin, const Line &line, int count) const {
    const int start = plane + Line::unit_bytes * origin;
    if (at_.mirrored) {
      put_line<true>(ctx_, buffers_.dst, start, line, 0, count);
    } else {
      put_line<false>(ctx_, buffers_.dst, start, line, 0, count);
    }
  }

  // A whole line in the format's layout; in I420 its luma.
  void put_pixels(int origin, const FinishedLine &line, int count) const {
    const auto &[a, b, c] = line.plane;
    switch (format_) {
      case Format::i420:
        return put(0, origin, PlaneLine{a}, count);
      case Format::yuyv:
        return put(0, origin, PackedLine<PackedOrder::yuyv>{a, b, c}, count);
      case Format::uyvy:
        return put(0, origin, PackedLine<PackedOrder::uyvy>{a, b, c}, count);
      case Format::rgb24:
        return put(0, origin, RgbLine<3>{a, b, c}, count);
      case Format::rgb32:
        return put(0, origin, RgbLine<4>{a, b, c}, count);
    }
  }

  // The place of U or V behind the output's start.
  int chroma_plane(int plane) const { return ctx_.out_size + (plane - 1) * ctx_.out_size_4; }

  void put_chroma(int origin, const FinishedLine &line, int count) const {
    for (int i = 1; i < 3; ++i) put(chroma_plane(i), origin, PlaneLine{line.plane[i]}, count);
  }

  // The place of pixel 0 of output line y, and of the first sample of a chroma line.
  int origin_of_line(int y) const {
    return line_start(ctx_, y, at_.order) + (at_.mirrored ? ctx_.out_width - 1 : 0);
  }
  int origin_of_chroma(int y) const {
    return chroma_line_start(ctx_, y) + (at_.mirrored ? ctx_.out_width / 2 - 1 : 0);
  }

  // ---- unscaled

  void put_plain(int y, const FinishedLine &line) const {
    put_pixels(origin_of_line(y), line, width_);
    if (format_ == Format::i420 && y % 2 == 0) {
      put_chroma(origin_of_chroma(y / 2), line, width_ / 2);
    }
  }

  // ---- smaller

  // Line pair p gives output line p, and an odd one the chroma line between: that of its own cells,
  // where the single-pass kernels take the even one.
  void put_shrunk(int p, const FinishedLine &line) const {
    const int count = width_ / 2;
    FinishedLine small;
    for (int i = 0; i < 3; ++i) {
      const bool is_chroma = i > 0 && !is_rgb(format_);
      take_even(lines_.shrunk[i], line.plane[i], is_chroma ? (count + 1) / 2 : count);
      small.plane[i] = lines_.shrunk[i];
    }
    const int moved = p * at_.slip;
    put_pixels(origin_of_line(p) + (at_.mirrored ? -moved : moved), small, count);
    if (format_ == Format::i420 && p % 2 != 0) put_chroma(at_.chroma_line(p / 2), small, count / 2);
  }

  // ---- larger

  // RGB32: nothing is interpolated, as in the default pipeline.
  void put_spread(int y, const FinishedLine &line) const {
    put_pixels(spread_line_origin(ctx_, y / 2, y % 2, at_.mirrored), line, width_);
  }

  // A plane of the line doubled, `count` source values long.
  void double_plane(int plane, const FinishedLine &line, int count) {
    double_leading(lines_.doubled[plane].current, line.plane[plane], count);
  }
  FinishedLine current() const {
    return {{lines_.doubled[0].current, lines_.doubled[1].current, lines_.doubled[2].current}};
  }

  // Source line y stands on output line 2y, the average with the one before between, and the last
  // line repeats.
  void put_enlarged_plane(int plane, int y, const FinishedLine &line, bool repeats) {
    const bool is_luma = plane == 0;
    const int count = is_luma ? width_ : width_ / 2;
    const auto put_at = [&](int i, const uint8_t *values) {
      put(is_luma ? 0 : chroma_plane(plane), is_luma ? origin_of_line(i) : origin_of_chroma(i),
          PlaneLine{values}, 2 * count);
    };
    DoubledLine &doubled = lines_.doubled[plane];
    double_plane(plane, line, count);
    if (y > 0) put_at(2 * y - 1, doubled.between(2 * count));
    put_at(2 * y, doubled.current);
    if (repeats) put_at(2 * y + 1, doubled.current);
    doubled.advance();
  }

  void put_enlarged_planes(int y, const FinishedLine &line) {
    put_enlarged_plane(0, y, line, is_last(y));
    if (y % 2 != 0) return;
    for (int i = 1; i < 3; ++i) put_enlarged_plane(i, y / 2, line, y / 2 == pairs_ - 1);
  }

  // The same in whole pixels. Chroma is the pair's: between two pairs it is between, too.
  void put_enlarged_packed(int y, const FinishedLine &line) {
    const bool starts_pair = y % 2 == 0;
    double_plane(0, line, width_);
    for (int i = 1; i < 3 && starts_pair; ++i) double_plane(i, line, width_ / 2);
    if (y > 0) {
      FinishedLine between = current();
      between.plane[0] = lines_.doubled[0].between(2 * width_);
      for (int i = 1; i < 3 && starts_pair; ++i) {
        between.plane[i] = lines_.doubled[i].between(width_);
      }
      put_pixels(origin_of_line(2 * y - 1), between, 2 * width_);
    }
    put_pixels(origin_of_line(2 * y), current(), 2 * width_);
    if (is_last(y)) put_pixels(origin_of_line(2 * y + 1), current(), 2 * width_);
    lines_.doubled[0].advance();
    for (int i = 1; i < 3 && !starts_pair; ++i) lines_.doubled[i].advance();
  }

  // With exactly one mirror flag a pair moves by two output lines only, so that each writes over
  // half of the pair before: what is left are the even source lines, and the last odd one. Meant
  // so: docs/oddities.md, "Rows that overwrite".
  void put_enlarged_rgb(int y, const FinishedLine &line) {
    const bool rows_overlap = (ctx_.h_mirror != 0) != (ctx_.v_mirror != 0);
    if (rows_overlap && y % 2 != 0 && !is_last(y)) return;
    for (int i = 0; i < 3; ++i) double_plane(i, line, width_);
    if (rows_overlap && is_last(y)) {
      put_pixels(origin_of_line(y + 1), current(), 2 * width_);
      return;
    }
    const int at = rows_overlap ? y : 2 * y;
    if (y > 0) {
      FinishedLine between;
      for (int i = 0; i < 3; ++i) between.plane[i] = lines_.doubled[i].between(2 * width_);
      put_pixels(origin_of_line(at - 1), between, 2 * width_);
    }
    put_pixels(origin_of_line(at), current(), 2 * width_);
    const bool repeats = rows_overlap ? y / 2 == pairs_ - 1 : is_last(y);
    if (repeats) put_pixels(origin_of_line(at + 1), current(), 2 * width_);
    for (DoubledLine &doubled : lines_.doubled) doubled.advance();
  }

  const PplContext &ctx_;
  const Buffers &buffers_;
  const Format format_;
  const int width_, pairs_;
  const RowPlacement at_;
  EmissionLines &lines_;
};

}  // namespace
}  // namespace ppl::TARGET
