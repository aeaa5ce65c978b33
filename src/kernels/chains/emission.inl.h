// The end of a chain: finished lines to their format, scaled and mirrored.
//
// Lines come in order, one at a time. Scaling works on finished values and in picture order (but
// for RGB24 at decimation minus 1 with one mirror flag, see there); the result is mirrored.
#pragma once

#include "kernels/single/shrink.inl.h"

namespace ppl::TIER {
namespace {

// A line of output values: Y, or B, G, R. Chroma in the studio range, one value a cell, comes with
// every line of a pair; it is that of the pair's first line.
struct FinishedLine {
  const uint8_t *y, *u, *v;  // Y, U, V formats
  const uint8_t *b, *g, *r;  // RGB formats
};

class Emission {
 public:
  Emission(PplContext &ctx, const Buffers &buffers, Format format, LineMemory &memory)
      : ctx_(ctx),
        buffers_(buffers),
        format_(format),
        width_(ctx.frame_width & ~1),
        pairs_(ctx.frame_height / 2),
        at_(ctx, ctx.h_mirror != 0, is_rgb(format)) {
    if (ctx.decimation < 0) {
      const int planes = is_rgb(format) && format != format_rgb32 ? 3 : 1;
      for (int i = 0; i < planes; ++i) previous_[i] = memory.line(width_);
      if (!is_rgb(format)) {
        for (int i = 1; i < 3; ++i) previous_[i] = memory.line(width_ / 2);
      }
    } else if (ctx.decimation > 0) {
      for (uint8_t *&line : shrunk_) line = memory.line(width_ / 2);
    }
  }

  static bool is_rgb(Format format) { return format == format_rgb24 || format == format_rgb32; }

  // Whether finished lines of whole registers may be written straight to where they belong.
  bool takes_planes_in_place() const {
    return format_ == format_i420 && ctx_.decimation == 0 && !at_.mirrored &&
           width_ % Vec::bytes == 0;
  }
  uint8_t *luma_line(int y) const { return buffers_.dst + line_start(ctx_, y, false); }
  uint8_t *chroma_line(int pair, int plane) const {
    return buffers_.dst_chroma + chroma_line_start(ctx_, pair) + plane * ctx_.out_size_4;
  }

  // Source line y is finished.
  void take(int y, const FinishedLine &line) {
    if (ctx_.decimation == 0) {
      put_plain(y, line);
    } else if (ctx_.decimation > 0) {
      if (y % 2 == 0) put_shrunk(y / 2, line);
    } else if (format_ == format_rgb32) {
      put_spread(y, line);
    } else {
      put_enlarged(y, line);
    }
  }

 private:
  // Units `first` to `first + count - 1` of a line whose unit 0 stands `origin` units into `plane`.
  template <class Line>
  void put(uint8_t *plane, int origin, const Line &line, int first, int count) const {
    uint8_t *const unit0 = plane + Line::unit_bytes * origin;
    // Only at decimation 2 can a line begin before the output; what would stand there is dropped.
    for (int done = 0; ctx_.decimation == 2 && done < count; done += clip_step) {
      const int n = count - done < clip_step ? count - done : clip_step;
      if (at_.mirrored) {
        put_clipped<true>(buffers_.dst, place<true>(unit0, Line::unit_bytes, first + done, n), line,
                          first + done, n);
      } else {
        put_clipped<false>(buffers_.dst, place<false>(unit0, Line::unit_bytes, first + done, n),
                           line, first + done, n);
      }
    }
    if (ctx_.decimation == 2) return;
    if (at_.mirrored) {
      line.template put<true>(place<true>(unit0, Line::unit_bytes, first, count), first, count);
    } else {
      line.template put<false>(place<false>(unit0, Line::unit_bytes, first, count), first, count);
    }
  }

  // A whole line in the format's layout.
  void put_pixels(int origin, const FinishedLine &line, int count) const {
    switch (format_) {
      case format_i420:
        put(buffers_.dst, origin, PlaneLine{line.y}, 0, count);
        return;
      case format_yuyv:
        put(buffers_.dst, origin, PackedLine<true>{line.y, line.u, line.v}, 0, count);
        return;
      case format_uyvy:
        put(buffers_.dst, origin, PackedLine<false>{line.y, line.u, line.v}, 0, count);
        return;
      case format_rgb24:
        put(buffers_.dst, origin, RgbLine<3>{line.b, line.g, line.r}, 0, count);
        return;
      default:
        put(buffers_.dst, origin, RgbLine<4>{line.b, line.g, line.r}, 0, count);
    }
  }

  void put_chroma(int origin, const uint8_t *u, const uint8_t *v, int count) const {
    put(buffers_.dst_chroma, origin, PlaneLine{u}, 0, count);
    put(buffers_.dst_chroma + ctx_.out_size_4, origin, PlaneLine{v}, 0, count);
  }

  // The place of pixel 0 of output line y, and of the first sample of a chroma line.
  int origin_of_line(int y) const {
    return line_start(ctx_, y, is_rgb(format_)) + (at_.mirrored ? ctx_.out_width - 1 : 0);
  }
  int origin_of_chroma(int y) const {
    return chroma_line_start(ctx_, y) + (at_.mirrored ? ctx_.out_width / 2 - 1 : 0);
  }

  void put_plain(int y, const FinishedLine &line) const {
    put_pixels(origin_of_line(y), line, width_);
    if (format_ == format_i420 && y % 2 == 0) {
      put_chroma(origin_of_chroma(y / 2), line.u, line.v, width_ / 2);
    }
  }

  // Line pair p gives output line p, and an odd one the chroma line between: that of its own cells,
  // where the single-pass kernels take the even one.
  void put_shrunk(int p, const FinishedLine &line) const {
    const int count = width_ / 2;
    FinishedLine small = {};
    if (is_rgb(format_)) {
      const uint8_t *const in[3] = {line.b, line.g, line.r};
      for (int i = 0; i < 3; ++i) take_even(shrunk_[i], in[i], count);
      small.b = shrunk_[0];
      small.g = shrunk_[1];
      small.r = shrunk_[2];
    } else {
      take_even(shrunk_[0], line.y, count);
      take_even(shrunk_[1], line.u, (count + 1) / 2);
      take_even(shrunk_[2], line.v, (count + 1) / 2);
      small.y = shrunk_[0];
      small.u = shrunk_[1];
      small.v = shrunk_[2];
    }
    const int moved = p * at_.slip;
    put_pixels(origin_of_line(p) + (at_.mirrored ? -moved : moved), small, count);
    if (format_ == format_i420 && p % 2 != 0) {
      put_chroma(at_.chroma_line(p / 2), small.u, small.v, count / 2);
    }
  }

  // RGB32 at decimation minus 1: nothing is interpolated, as in the default pipeline.
  void put_spread(int y, const FinishedLine &line) const {
    const int origin = spread_line_origin(ctx_, y / 2, y % 2, at_.mirrored);
    put(buffers_.dst, origin, RgbLine<4>{line.b, line.g, line.r}, 0, width_);
  }

  // Source values of a doubled line that are on their way at a time: as much as the stack should
  // bear.
  static constexpr int piece = 32;
  static constexpr int clip_step = 2 * Vec::bytes;

  // A piece of the line doubled, averaged with the doubled line before it where there is one. Whole
  // registers are read and written.
  static void double_piece(uint8_t *out, const uint8_t *line, const uint8_t *before, int first,
                           int count) {
    for (int i = 0; i < count; i += Vec::bytes) {
      auto odd = Vec::load(line + first + i);
      auto even = Vec::average_u8(Vec::load(line + first + i - 1), odd);
      if (before != nullptr) {
        const auto odd_before = Vec::load(before + first + i);
        const auto even_before = Vec::average_u8(Vec::load(before + first + i - 1), odd_before);
        even = Vec::average_u8(even_before, even);
        odd = Vec::average_u8(odd_before, odd);
      }
      Vec::store(out + 2 * i, Vec::interleave_low_u8(even, odd));
      Vec::store(out + 2 * i + Vec::bytes, Vec::interleave_high_u8(even, odd));
    }
    // There is nothing before the first value: it stands twice.
    if (first == 0) out[0] = out[1];
  }

  // An output line of doubled values: planes of `line`, averaged with those of `before` if given.
  struct Doubled {
    const uint8_t *plane[3], *before[3];
  };

  void put_doubled_plane(uint8_t *plane, int origin, const uint8_t *line, const uint8_t *before,
                         int count) const {
    uint8_t values[2 * piece];
    for (int first = 0; first < count; first += piece) {
      const int n = count - first < piece ? count - first : piece;
      double_piece(values, line, before, first, n);
      put(plane, at_.mirrored ? origin - 2 * first : origin + 2 * first, PlaneLine{values}, 0,
          2 * n);
    }
  }

  // Chroma has its own line before: it changes only from pair to pair.
  void put_doubled_packed(int origin, const Doubled &in) const {
    uint8_t y[2 * piece], u[piece + 2 * Vec::bytes], v[piece + 2 * Vec::bytes];
    for (int first = 0; first < width_; first += piece) {
      const int n = width_ - first < piece ? width_ - first : piece;
      double_piece(y, in.plane[0], in.before[0], first, n);
      double_piece(u, in.plane[1], in.before[1], first / 2, n / 2);
      double_piece(v, in.plane[2], in.before[2], first / 2, n / 2);
      const int at = at_.mirrored ? origin - 2 * first : origin + 2 * first;
      if (format_ == format_yuyv) {
        put(buffers_.dst, at, PackedLine<true>{y, u, v}, 0, 2 * n);
      } else {
        put(buffers_.dst, at, PackedLine<false>{y, u, v}, 0, 2 * n);
      }
    }
  }

  void put_doubled_rgb(int origin, const Doubled &in) const {
    uint8_t values[3][2 * piece];
    for (int first = 0; first < width_; first += piece) {
      const int n = width_ - first < piece ? width_ - first : piece;
      for (int i = 0; i < 3; ++i) double_piece(values[i], in.plane[i], in.before[i], first, n);
      put(buffers_.dst, at_.mirrored ? origin - 2 * first : origin + 2 * first,
          RgbLine<3>{values[0], values[1], values[2]}, 0, 2 * n);
    }
  }

  // Source line y stands on output line 2y, averages between, and the last line repeats.
  void put_enlarged(int y, const FinishedLine &line) {
    const bool is_last = y == 2 * pairs_ - 1;
    if (format_ == format_rgb24) {
      put_enlarged_rgb(y, line, is_last);
    } else if (format_ == format_i420) {
      put_enlarged_planes(y, line, is_last);
    } else {
      put_enlarged_packed(y, line, is_last);
    }
  }

  void put_enlarged_plane(uint8_t *plane, int y, const uint8_t *line, uint8_t *previous, int count,
                          bool is_last, bool is_luma) {
    const auto origin = [&](int i) { return is_luma ? origin_of_line(i) : origin_of_chroma(i); };
    if (y > 0) put_doubled_plane(plane, origin(2 * y - 1), line, previous, count);
    put_doubled_plane(plane, origin(2 * y), line, nullptr, count);
    if (is_last) put_doubled_plane(plane, origin(2 * y + 1), line, nullptr, count);
    copy_line(previous, line, count);
  }

  void put_enlarged_planes(int y, const FinishedLine &line, bool is_last) {
    put_enlarged_plane(buffers_.dst, y, line.y, previous_[0], width_, is_last, true);
    if (y % 2 != 0) return;
    const bool is_last_pair = y / 2 == pairs_ - 1;
    const int cells = width_ / 2;
    put_enlarged_plane(buffers_.dst_chroma, y / 2, line.u, previous_[1], cells, is_last_pair,
                       false);
    put_enlarged_plane(buffers_.dst_chroma + ctx_.out_size_4, y / 2, line.v, previous_[2], cells,
                       is_last_pair, false);
  }

  void put_enlarged_packed(int y, const FinishedLine &line, bool is_last) {
    if (y > 0) {
      // Between two pairs the chroma is between, too.
      const bool new_pair = y % 2 == 0;
      put_doubled_packed(
          origin_of_line(2 * y - 1),
          {{line.y, line.u, line.v},
           {previous_[0], new_pair ? previous_[1] : nullptr, new_pair ? previous_[2] : nullptr}});
    }
    const Doubled own = {{line.y, line.u, line.v}, {nullptr, nullptr, nullptr}};
    put_doubled_packed(origin_of_line(2 * y), own);
    if (is_last) put_doubled_packed(origin_of_line(2 * y + 1), own);
    copy_line(previous_[0], line.y, width_);
    copy_line(previous_[1], line.u, width_ / 2);
    copy_line(previous_[2], line.v, width_ / 2);
  }

  void put_enlarged_rgb(int y, const FinishedLine &line, bool is_last) {
    const Doubled own = {{line.b, line.g, line.r}, {nullptr, nullptr, nullptr}};
    const Doubled between = {{line.b, line.g, line.r}, {previous_[0], previous_[1], previous_[2]}};
    const bool rows_overlap = (ctx_.h_mirror != 0) != (ctx_.v_mirror != 0);
    if (rows_overlap) {
      // With exactly one mirror flag a pair moves by two output lines only, so that each writes
      // over half of the pair before: what is left are the even source lines. Required behaviour.
      if (is_last) put_doubled_rgb(origin_of_line(y + 1), own);
      if (y % 2 != 0) return;
      if (y > 0) put_doubled_rgb(origin_of_line(y - 1), between);
      put_doubled_rgb(origin_of_line(y), own);
      if (y / 2 == pairs_ - 1) put_doubled_rgb(origin_of_line(y + 1), own);
    } else {
      if (y > 0) put_doubled_rgb(origin_of_line(2 * y - 1), between);
      put_doubled_rgb(origin_of_line(2 * y), own);
      if (is_last) put_doubled_rgb(origin_of_line(2 * y + 1), own);
    }
    copy_line(previous_[0], line.b, width_);
    copy_line(previous_[1], line.g, width_);
    copy_line(previous_[2], line.r, width_);
  }

  static void copy_line(uint8_t *to, const uint8_t *from, int count) {
    for (int i = 0; i < count; i += Vec::bytes) Vec::store(to + i, Vec::load(from + i));
  }

  PplContext &ctx_;
  const Buffers &buffers_;
  Format format_;
  int width_, pairs_;
  RowPlacement at_;
  uint8_t *previous_[3] = {};  // the source line before, for decimation minus 1
  uint8_t *shrunk_[3] = {};
};

}  // namespace
}  // namespace ppl::TIER
