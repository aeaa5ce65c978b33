// Two fields of packed 4:2:2 video to a frame, with a motion test or without.
#pragma once

#include "kernels/video/packed.inl.h"

namespace ppl::TARGET {
namespace {

// The motion test of a line. Of each pair the chroma byte is tested: how far the differences to the
// reference field at a pair and its two neighbours spread around their mean. Where the spread
// exceeds the threshold, the byte gives way to the average of the first field's lines above and
// below. Luma never changes. Meant so: docs/oddities.md, "Motion of chroma".
//
// `differences` has room for a word before and behind the line.
template <PackedOrder order>
void merge_line(uint8_t *out, const uint8_t *second, const uint8_t *reference, const uint8_t *above,
                const uint8_t *below, Word *differences, int width, Vec::type threshold) {
  using Pixels = PackedPixels<order>;
  constexpr int n = Vec::word_count;
  cover_with_registers<n>(width, [=](int x) {
    Vec::store_words(differences + x,
                     Vec::subtract_words(Pixels::chroma(Vec::load(second + 2 * x)),
                                         Pixels::chroma(Vec::load(reference + 2 * x))));
  });
  // Beyond the line's ends both fields count as 0.
  differences[-1] = differences[width] = 0;

  const auto chroma_byte = Vec::splat_words(order == PackedOrder::yuyv ? 0xFF00 : 0x00FF);
  cover_with_registers<n>(width, [=](int x) {
    const auto l = Vec::load_words(differences + x - 1);
    const auto c = Vec::load_words(differences + x);
    const auto r = Vec::load_words(differences + x + 1);
    const auto D = Vec::add_words(Vec::add_words(l, c), r);
    const auto spread = [&](Vec::type d) {
      return Vec::absolute_words(Vec::subtract_words(Vec::add_words(Vec::add_words(d, d), d), D));
    };
    const auto moved = Vec::greater_words(
        Vec::add_words(Vec::add_words(spread(l), spread(c)), spread(r)), threshold);
    const auto average = Vec::average_u8(Vec::load(above + 2 * x), Vec::load(below + 2 * x));
    Vec::store(out + 2 * x,
               Vec::blend(Vec::bit_and(moved, chroma_byte), average, Vec::load(second + 2 * x)));
  });
}

// Swaps the bytes of each pair.
inline void copy_swapped(uint8_t *to, const uint8_t *from, int pixels) {
  cover_with_registers<Vec::word_count>(
      pixels, [=](int x) { Vec::store(to + 2 * x, Vec::swap_columns(Vec::load(from + 2 * x))); });
}

// A line taken apart.
struct PlanarLine {
  uint8_t *y, *u, *v;

  constexpr PlanarLine(LineMemory &memory, int width)
      : y(memory.line(width)), u(memory.line(width / 2)), v(memory.line(width / 2)) {}

  void take(const uint8_t *in, PackedOrder order, int pairs) const {
    order == PackedOrder::yuyv ? take_registers<PackedOrder::yuyv>(in, pairs)
                               : take_registers<PackedOrder::uyvy>(in, pairs);
  }

  // Every `step`th pair of a packed line; `pairs` of them.
  void take_some(const uint8_t *in, PackedOrder order, int pairs, int step) const {
    const int Y = luma_byte(order);
    for (int i = 0; i < pairs; ++i) {
      const uint8_t *const pair = in + 4 * i * step;
      y[2 * i] = pair[Y];
      y[2 * i + 1] = pair[2 + Y];
      u[i] = pair[1 - Y];
      v[i] = pair[3 - Y];
    }
  }

 private:
  template <PackedOrder order>
  void take_registers(const uint8_t *in, int pairs) const {
    using Pixels = PackedPixels<order>;
    const PlanarLine out = *this;  // a copy, which no store can alias
    cover_with_registers<Vec::size / 2>(pairs, [=](int i) {
      Vec::store(out.y + 2 * i, Pixels::luma_bytes(in + 4 * i));
      const auto chroma = separate_chroma(Pixels::chroma_bytes(in + 4 * i));
      Vec::store_low_halves(out.u + i, chroma);
      Vec::store_high_halves(out.v + i, chroma);
    });
  }
};

// Chroma of every pixel of a line, for RGB24.
struct ChromaLines {
  uint8_t *u, *v;

  constexpr ChromaLines(LineMemory &memory, int width)
      : u(memory.line(width)), v(memory.line(width)) {}
};

// Where a frame of fields goes: black lines, then the picture, then black lines. No mirrors.
class FieldOutput {
 public:
  FieldOutput(PplContext &ctx, uint8_t *dst, Format format, LineMemory &memory)
      : ctx_(ctx),
        dst_(dst),
        format_(format),
        scaled_height_(ctx.decimation >= 0 ? ctx.frame_height >> ctx.decimation
                                           : 2 * ctx.frame_height),
        // An odd last pixel is left, and what it would become in twice the width.
        width_(ctx.decimation < 0 ? 2 * whole_cells(ctx.frame_width) : whole_cells(ctx.out_width)),
        top_(is_packed() || has_black_lines() ? ctx.decimation_top_black_lines : 0),
        chroma_(memory, width_) {}

  bool is_packed() const { return format_ == Format::yuyv || format_ == Format::uyvy; }

  // The picture's lines, where all of the output's are taken from the source.
  int scaled_height() const { return scaled_height_; }

  // The place of packed line y of the picture.
  uint8_t *packed_line(int y) const { return dst_ + 2 * ctx_.out_width * (top_ + y); }

  // A line of the picture, and in I420 on the second line of a pair the chroma of both.
  void put(int y, const PlanarLine &line, const PlanarLine &pair_first) const {
    switch (format_) {
      case Format::i420:
        put_plane(dst_ + ctx_.out_width * (top_ + y), line.y, width_);
        if (y % 2 != 0) put_chroma(y / 2, pair_first, line);
        return;
      case Format::yuyv:
        return put_packed<PackedOrder::yuyv>(y, line);
      case Format::uyvy:
        return put_packed<PackedOrder::uyvy>(y, line);
      default:
        put_rgb(y, line);
    }
  }

  // In I420, the chroma row of a last line without a partner: what there is of it in the plane.
  void put_lone_chroma(int y, const PlanarLine &line) const {
    if (format_ == Format::i420) put_chroma(y / 2, line, line);
  }

  void blacken(int picture_lines) const {
    if (is_packed()) {
      fill_packed(dst_, top_);
      fill_packed(packed_line(picture_lines), ctx_.decimation_bottom_black_lines);
      return;
    }
    if (!has_black_lines()) return;
    if (format_ == Format::rgb24) {
      const int below = ctx_.out_height - top_ - scaled_height_;
      fill(dst_, 0, 3 * ctx_.out_width * below);
      fill(dst_ + 3 * ctx_.out_width * (ctx_.out_height - top_), 0, 3 * ctx_.out_width * top_);
      return;
    }
    surround(dst_, ctx_.out_size, ctx_.out_width * top_, ctx_.out_width * scaled_height_,
             black_luma);
    const int half = ctx_.out_width / 2;
    for (int i = 0; i < 2; ++i) {
      surround(dst_ + ctx_.out_size + i * ctx_.out_size_4, ctx_.out_size_4, half * (top_ / 2),
               half * (scaled_height_ / 2), neutral_chroma);
    }
  }

 private:
  bool has_black_lines() const { return ctx_.out_height > scaled_height_; }

  static void put_plane(uint8_t *to, const uint8_t *from, int count) {
    PlaneLine{from}.put<false>(to, 0, count);
  }

  static void put_average(uint8_t *to, const uint8_t *a, const uint8_t *b, int count) {
    for_each_register(
        count,
        [=]<class R>(int i) { R::store(to + i, R::average_u8(R::load(a + i), R::load(b + i))); },
        [=](int i) { to[i] = static_cast<uint8_t>((a[i] + b[i] + 1) >> 1); });
  }

  template <PackedOrder order>
  void put_packed(int y, const PlanarLine &line) const {
    PackedLine<order>{line.y, line.u, line.v}.template put<false>(packed_line(y), 0, width_);
  }

  void put_chroma(int row, const PlanarLine &a, const PlanarLine &b) const {
    const int first = ctx_.out_width / 2 * (top_ / 2 + row);
    const int room = ctx_.out_size_4 - first;
    const int count = width_ / 2 < room ? width_ / 2 : room;
    uint8_t *const u = dst_ + ctx_.out_size + first;
    put_average(u, a.u, b.u, count);
    put_average(u + ctx_.out_size_4, a.v, b.v, count);
  }

  // An odd pixel takes the average of the chroma on both sides.
  void put_rgb(int y, const PlanarLine &line) const {
    double_trailing(chroma_.u, line.u, width_ / 2);
    double_trailing(chroma_.v, line.v, width_ / 2);
    uint8_t *const out = dst_ + 3 * ctx_.out_width * (ctx_.out_height - 1 - top_ - y);
    cover_with_registers(width_, [&](int x) {
      const auto U = Vec::load(chroma_.u + x);
      const auto V = Vec::load(chroma_.v + x);
      put_rgb24(out + 3 * x, Vec::load(line.y + x),
                YuvToRgb(Vec::columns<false>(U), Vec::columns<false>(V)),
                YuvToRgb(Vec::columns<true>(U), Vec::columns<true>(V)));
    });
  }

  void fill_packed(uint8_t *to, int lines) const {
    const int luma = format_ == Format::yuyv ? 0 : 1;
    for (int i = 0; i < lines * ctx_.out_width; ++i) {
      to[2 * i + luma] = black_luma;
      to[2 * i + 1 - luma] = neutral_chroma;
    }
  }

  static void surround(uint8_t *plane, int size, int before, int picture, int value) {
    fill(plane, value, before);
    if (before + picture < size) fill(plane + before + picture, value, size - before - picture);
  }

  PplContext &ctx_;
  uint8_t *const dst_;
  const Format format_;
  const int scaled_height_, width_, top_;
  const ChromaLines chroma_;
};

// The lines of the frame at full size: even ones from the first field, odd ones merged or woven.
class FieldSource {
 public:
  // Words and packed bytes of a line: both lie side by side in a line of four bytes a pixel.
  struct Workspace {
    uint8_t *differences, *merged;

    constexpr Workspace(LineMemory &memory, int width)
        : differences(memory.line(2 * width)), merged(memory.line(2 * width)) {}
  };

  FieldSource(PplContext &ctx, const Fields &fields, PackedOrder order, MotionTest motion_test,
              LineMemory &memory)
      : fields_(fields),
        order_(order),
        motion_test_(motion_test),
        width_(ctx.frame_width),
        pairs_(ctx.frame_height / 2),
        threshold_(Vec::splat_words(ctx.params.intl_3T_vec)),
        lines_(memory, width_) {}

  const uint8_t *first(int pair) const { return fields_.first + 2 * width_ * pair; }

  const uint8_t *second(int pair) const {
    const uint8_t *const line = fields_.second + 2 * width_ * pair;
    // The last line has no first-field line below it.
    if (motion_test_ == MotionTest::off || pair == pairs_ - 1) return line;
    order_ == PackedOrder::yuyv ? merge<PackedOrder::yuyv>(line, pair)
                                : merge<PackedOrder::uyvy>(line, pair);
    return lines_.merged;
  }

 private:
  template <PackedOrder order>
  void merge(const uint8_t *line, int pair) const {
    merge_line<order>(lines_.merged, line, fields_.reference + 2 * width_ * pair, first(pair),
                      first(pair + 1), reinterpret_cast<Word *>(lines_.differences), width_,
                      threshold_);
  }

  const Fields &fields_;
  const PackedOrder order_;
  const MotionTest motion_test_;
  const int width_, pairs_;
  const Vec::type threshold_;
  const Workspace lines_;
};

inline void weave(PplContext &ctx, const FieldSource &source, const FieldOutput &out, Format format,
                  PackedOrder order, LineMemory &memory) {
  const int pairs = ctx.frame_height / 2;
  const int width = whole_cells(ctx.frame_width);
  out.blacken(2 * pairs);
  if (out.is_packed()) {
    const bool swaps = (order == PackedOrder::yuyv) != (format == Format::yuyv);
    for (int i = 0; i < 2 * pairs; ++i) {
      const uint8_t *const line = i % 2 == 0 ? source.first(i / 2) : source.second(i / 2);
      swaps ? copy_swapped(out.packed_line(i), line, width)
            : copy_bytes(out.packed_line(i), line, 2 * width);
    }
    return;
  }
  const PlanarLine first(memory, width), second(memory, width);
  for (int i = 0; i < pairs; ++i) {
    first.take(source.first(i), order, width / 2);
    out.put(2 * i, first, first);
    second.take(source.second(i), order, width / 2);
    out.put(2 * i + 1, second, first);
  }
}

// Every second or fourth pixel pair and line of the first field's picture in the frame's size: as
// many lines as the output has besides its black ones, also where that is odd.
inline void weave_smaller(PplContext &ctx, const Fields &fields, const FieldOutput &out,
                          PackedOrder order, LineMemory &memory) {
  const int step = 1 << ctx.decimation;
  const int lines = out.scaled_height();
  const int pairs = ctx.out_width / 2;
  out.blacken(lines);
  const PlanarLine even(memory, ctx.out_width), odd(memory, ctx.out_width);
  for (int y = 0; y < lines; ++y) {
    const PlanarLine &line = y % 2 == 0 ? even : odd;
    line.take_some(fields.first + 2 * ctx.frame_width * (y * step / 2), order, pairs, step);
    out.put(y, line, even);
  }
  if (lines % 2 != 0) out.put_lone_chroma(lines - 1, even);
}

// A frame's line, and the lines of twice its size.
struct LargerWorkspace {
  PlanarLine small, between, current, previous;

  constexpr LargerWorkspace(LineMemory &memory, int width)
      : small(memory, width),
        between(memory, 2 * width),
        current(memory, 2 * width),
        previous(memory, 2 * width) {}
};
// What needs most. (At half size and less there is no FieldSource, and at the frame's size lines
// are half as long.)
static_assert(fits_line_memory([](LineMemory &memory) {
  ChromaLines(memory, 2 * widest_line);
  FieldSource::Workspace(memory, widest_line);
  LargerWorkspace(memory, widest_line);
}));

// The merged frame doubled both ways: each value after its average with the one before.
inline void weave_larger(PplContext &ctx, const FieldSource &source, const FieldOutput &out,
                         PackedOrder order, LineMemory &memory) {
  const int width = whole_cells(ctx.frame_width);
  const int lines = whole_cells(ctx.frame_height);
  out.blacken(2 * lines);
  LargerWorkspace workspace(memory, width);
  auto &[small, between, current, previous] = workspace;
  for (int y = 0; y < lines; ++y) {
    small.take(y % 2 == 0 ? source.first(y / 2) : source.second(y / 2), order, width / 2);
    double_leading(current.y, small.y, width);
    double_leading(current.u, small.u, width / 2);
    double_leading(current.v, small.v, width / 2);
    const PlanarLine &before = y == 0 ? current : previous;
    average(between.y, before.y, current.y, 2 * width);
    average(between.u, before.u, current.u, width);
    average(between.v, before.v, current.v, width);
    out.put(2 * y, between, between);
    out.put(2 * y + 1, current, between);
    const PlanarLine older = previous;
    previous = current;
    current = older;
  }
}

inline void convert_fields(PplContext &ctx, const Fields &fields, uint8_t *dst, PackedOrder order,
                           Format format, MotionTest motion_test) {
  const int d = ctx.decimation;
  if (d < 0 && motion_test == MotionTest::off) return;
  LineMemory memory(ctx);
  const FieldOutput out(ctx, dst, format, memory);
  if (d > 0) {
    weave_smaller(ctx, fields, out, order, memory);
    return;
  }
  const FieldSource source(ctx, fields, order, motion_test, memory);
  if (d == 0) {
    weave(ctx, source, out, format, order, memory);
  } else {
    weave_larger(ctx, source, out, order, memory);
  }
}

}  // namespace
}  // namespace ppl::TARGET
