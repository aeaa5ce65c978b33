// Two fields of packed 4:2:2 video to a frame, with a motion test or without.
#pragma once

#include "kernels/yuv/progressive.inl.h"

namespace ppl::TIER {
namespace {

// The motion test of a line. Of each pair the chroma byte is tested: how far the differences to the
// reference field at a pair and its two neighbours spread around their mean. Where the spread
// exceeds the threshold, the byte gives way to the average of the first field's lines above and
// below. Luma never changes. Required behaviour, though it reads like a slip.
//
// `differences` has room for a word before and behind the line.
template <bool luma_first>
void merge_line(uint8_t *out, const uint8_t *second, const uint8_t *reference, const uint8_t *above,
                const uint8_t *below, int16_t *differences, int width, Vec::type threshold) {
  using Pixels = PackedPixels<luma_first>;
  constexpr int n = Vec::words_count;
  const auto words = [](int16_t *p) { return reinterpret_cast<uint8_t *>(p); };
  constexpr int C = luma_first ? 1 : 0;
  int x = 0;
  for (; x + n <= width; x += n) {
    Vec::store(words(differences + x),
               Vec::sub_words(Pixels::chroma(Vec::load(second + 2 * x)),
                              Pixels::chroma(Vec::load(reference + 2 * x))));
  }
  for (; x < width; ++x) {
    differences[x] = static_cast<int16_t>(second[2 * x + C] - reference[2 * x + C]);
  }
  // Beyond the line's ends both fields count as 0.
  differences[-1] = differences[width] = 0;

  const auto moved = [&](int at) {
    const auto l = Vec::load(words(differences + at - 1));
    const auto c = Vec::load(words(differences + at));
    const auto r = Vec::load(words(differences + at + 1));
    const auto D = Vec::add_words(Vec::add_words(l, c), r);
    const auto spread = [&](Vec::type d) {
      const auto s = Vec::sub_words(Vec::add_words(Vec::add_words(d, d), d), D);
      return Vec::max_words(s, Vec::sub_words(Vec::zero(), s));
    };
    return Vec::greater_words(Vec::add_words(Vec::add_words(spread(l), spread(c)), spread(r)),
                              threshold);
  };
  const auto chroma_byte = Vec::words(luma_first ? 0xFF00 : 0x00FF);
  for (x = 0; x + n <= width; x += n) {
    const auto average = Vec::average_u8(Vec::load(above + 2 * x), Vec::load(below + 2 * x));
    Vec::store(out + 2 * x,
               blend(Vec::bit_and(moved(x), chroma_byte), average, Vec::load(second + 2 * x)));
  }
  if (x < width) {
    uint8_t mask[Vec::bytes];
    Vec::store(mask, moved(x));
    for (int i = 0; x < width; ++x, ++i) {
      out[2 * x + 1 - C] = second[2 * x + 1 - C];
      out[2 * x + C] = mask[2 * i] != 0
                           ? static_cast<uint8_t>((above[2 * x + C] + below[2 * x + C] + 1) >> 1)
                           : second[2 * x + C];
    }
  }
}

// Swaps the bytes of each pair.
void copy_swapped(uint8_t *to, const uint8_t *from, int pixels) {
  int x = 0;
  for (; x + Vec::words_count <= pixels; x += Vec::words_count) {
    const auto v = Vec::load(from + 2 * x);
    Vec::store(to + 2 * x, Vec::bit_or(Vec::shift_left_words<8>(v), Vec::shift_right_words<8>(v)));
  }
  for (; x < pixels; ++x) {
    to[2 * x] = from[2 * x + 1];
    to[2 * x + 1] = from[2 * x];
  }
}

// A line taken apart.
struct PlanarLine {
  uint8_t *y, *u, *v;

  PlanarLine(LineMemory &memory, int width)
      : y(memory.line(width)), u(memory.line(width / 2)), v(memory.line(width / 2)) {}

  // Every `step`th pair of a packed line; `pairs` of them.
  void take(const uint8_t *in, bool luma_first, int pairs, int step) const {
    int i = 0;
    if (step == 1)
      i = luma_first ? take_registers<true>(in, pairs) : take_registers<false>(in, pairs);
    const int Y = luma_first ? 0 : 1;
    for (; i < pairs; ++i) {
      const uint8_t *const pair = in + 4 * i * step;
      y[2 * i] = pair[Y];
      y[2 * i + 1] = pair[2 + Y];
      u[i] = pair[1 - Y];
      v[i] = pair[3 - Y];
    }
  }

 private:
  // Returns how many pairs it took.
  template <bool luma_first>
  int take_registers(const uint8_t *in, int pairs) const {
    using Pixels = PackedPixels<luma_first>;
    constexpr int step = Vec::bytes / 2;
    int i = 0;
    for (; i + step <= pairs; i += step) {
      Vec::store(y + 2 * i, Pixels::luma_bytes(in + 4 * i));
      const auto chroma = separate_chroma(Pixels::chroma_bytes(in + 4 * i));
      Vec::store_low_half(u + i, chroma);
      Vec::store_low_half(v + i, Vec::swap_halves(chroma));
    }
    return i;
  }
};

// Where a frame of fields goes: black lines, then the picture, then black lines. No mirrors.
class FieldOutput {
 public:
  FieldOutput(PplContext &ctx, uint8_t *dst, Format format, LineMemory &memory)
      : ctx_(ctx),
        dst_(dst),
        format_(format),
        // An odd last pixel is left, and what it would become in twice the width.
        width_(ctx.decimation < 0 ? 2 * (ctx.frame_width & ~1) : ctx.out_width & ~1) {
    const bool has_lines = is_packed() || ctx.out_height > scaled_height();
    top_ = has_lines ? ctx.decimation_top_black_lines : 0;
    if (format == format_rgb24) {
      u_ = memory.line(width_);
      v_ = memory.line(width_);
    }
  }

  bool is_packed() const { return format_ == format_yuyv || format_ == format_uyvy; }

  // The place of packed line y of the picture.
  uint8_t *packed_line(int y) const { return dst_ + 2 * ctx_.out_width * (top_ + y); }

  // A line of the picture, and in I420 on the second line of a pair the chroma of both.
  void put(int y, const PlanarLine &line, const PlanarLine &pair_first) const {
    switch (format_) {
      case format_i420:
        put_plane(dst_ + ctx_.out_width * (top_ + y), line.y, width_);
        if (y % 2 != 0) put_chroma(y / 2, pair_first, line);
        return;
      case format_yuyv:
        PackedLine<true>{line.y, line.u, line.v}.put<false>(packed_line(y), 0, width_);
        return;
      case format_uyvy:
        PackedLine<false>{line.y, line.u, line.v}.put<false>(packed_line(y), 0, width_);
        return;
      default:
        put_rgb(y, line);
    }
  }

  void blacken(int picture_lines) const {
    if (is_packed()) {
      fill_packed(dst_, top_);
      fill_packed(packed_line(picture_lines), ctx_.decimation_bottom_black_lines);
      return;
    }
    if (ctx_.out_height <= scaled_height()) return;
    if (format_ == format_rgb24) {
      const int below = ctx_.out_height - top_ - scaled_height();
      fill(dst_, 0, 3 * ctx_.out_width * below);
      fill(dst_ + 3 * ctx_.out_width * (ctx_.out_height - top_), 0, 3 * ctx_.out_width * top_);
      return;
    }
    surround(dst_, ctx_.out_size, ctx_.out_width * top_, ctx_.out_width * scaled_height(),
             black_luma);
    const int half = ctx_.out_width / 2;
    for (int i = 0; i < 2; ++i) {
      surround(dst_ + ctx_.out_size + i * ctx_.out_size_4, ctx_.out_size_4, half * (top_ / 2),
               half * (scaled_height() / 2), neutral_chroma);
    }
  }

 private:
  int scaled_height() const {
    return ctx_.decimation >= 0 ? ctx_.frame_height >> ctx_.decimation : 2 * ctx_.frame_height;
  }

  static void put_plane(uint8_t *to, const uint8_t *from, int count) {
    PlaneLine{from}.put<false>(to, 0, count);
  }

  void put_chroma(int line, const PlanarLine &a, const PlanarLine &b) const {
    const int half = ctx_.out_width / 2;
    uint8_t *const u = dst_ + ctx_.out_size + half * (top_ / 2 + line);
    average(a.u, a.u, b.u, width_ / 2);
    average(a.v, a.v, b.v, width_ / 2);
    put_plane(u, a.u, width_ / 2);
    put_plane(u + ctx_.out_size_4, a.v, width_ / 2);
  }

  // An odd pixel takes the average of the chroma on both sides.
  void put_rgb(int y, const PlanarLine &line) const {
    double_trailing(u_, line.u, width_ / 2);
    double_trailing(v_, line.v, width_ / 2);
    uint8_t *const out = dst_ + 3 * ctx_.out_width * (ctx_.out_height - 1 - top_ - y);
    const auto convert = [&](uint8_t *to, int x) {
      const auto U = Vec::load(u_ + x);
      const auto V = Vec::load(v_ + x);
      const auto even = Vec::words(0x00FF);
      put_rgb24(to, Vec::load(line.y + x), YuvToRgb(Vec::bit_and(U, even), Vec::bit_and(V, even)),
                YuvToRgb(Vec::shift_right_words<8>(U), Vec::shift_right_words<8>(V)));
    };
    int x = 0;
    for (; x + Vec::bytes <= width_; x += Vec::bytes) convert(out + 3 * x, x);
    if (x < width_) {
      uint8_t last[3 * Vec::bytes];
      convert(last, x);
      copy_bytes(out + 3 * x, last, 3 * (width_ - x));
    }
  }

  void fill_packed(uint8_t *to, int lines) const {
    const bool luma_first = format_ == format_yuyv;
    for (int i = 0; i < lines * ctx_.out_width; ++i) {
      to[2 * i + (luma_first ? 0 : 1)] = black_luma;
      to[2 * i + (luma_first ? 1 : 0)] = neutral_chroma;
    }
  }

  static void surround(uint8_t *plane, int size, int before, int picture, int value) {
    fill(plane, value, before);
    if (before + picture < size) fill(plane + before + picture, value, size - before - picture);
  }

  PplContext &ctx_;
  uint8_t *dst_;
  Format format_;
  int width_, top_;
  uint8_t *u_ = nullptr, *v_ = nullptr;  // chroma of every pixel, for RGB24
};

// The lines of the frame at full size: even ones from the first field, odd ones merged or woven.
class FieldSource {
 public:
  FieldSource(PplContext &ctx, const Fields &fields, bool luma_first, bool tests_motion,
              LineMemory &memory)
      : fields_(fields),
        luma_first_(luma_first),
        tests_motion_(tests_motion),
        width_(ctx.frame_width),
        pairs_(ctx.frame_height / 2),
        threshold_(load(parameters_of(ctx).intl_3T_vec)),
        // Words and packed bytes of one line at a time: both lie side by side in a line of four
        // bytes a pixel.
        differences_(reinterpret_cast<int16_t *>(memory.line(2 * width_))),
        merged_(memory.line(2 * width_)) {}

  const uint8_t *first(int pair) const { return fields_.first + 2 * width_ * pair; }

  const uint8_t *second(int pair) const {
    const uint8_t *const line = fields_.second + 2 * width_ * pair;
    // The last line has no first-field line below it.
    if (!tests_motion_ || pair == pairs_ - 1) return line;
    const uint8_t *const reference = fields_.reference + 2 * width_ * pair;
    luma_first_ ? merge_line<true>(merged_, line, reference, first(pair), first(pair + 1),
                                   differences_, width_, threshold_)
                : merge_line<false>(merged_, line, reference, first(pair), first(pair + 1),
                                    differences_, width_, threshold_);
    return merged_;
  }

 private:
  const Fields &fields_;
  bool luma_first_, tests_motion_;
  int width_, pairs_;
  Vec::type threshold_;
  int16_t *differences_;
  uint8_t *merged_;
};

void weave(PplContext &ctx, const FieldSource &source, const FieldOutput &out, Format format,
           bool luma_first, LineMemory &memory) {
  const int pairs = ctx.frame_height / 2;
  const int width = ctx.frame_width & ~1;
  out.blacken(2 * pairs);
  if (out.is_packed()) {
    const bool swaps = luma_first != (format == format_yuyv);
    for (int i = 0; i < 2 * pairs; ++i) {
      const uint8_t *const line = i % 2 == 0 ? source.first(i / 2) : source.second(i / 2);
      swaps ? copy_swapped(out.packed_line(i), line, width)
            : copy_bytes(out.packed_line(i), line, 2 * width);
    }
    return;
  }
  const PlanarLine first(memory, width), second(memory, width);
  for (int i = 0; i < pairs; ++i) {
    first.take(source.first(i), luma_first, width / 2, 1);
    out.put(2 * i, first, first);
    second.take(source.second(i), luma_first, width / 2, 1);
    out.put(2 * i + 1, second, first);
  }
}

// Every second or fourth pixel pair and line of the first field's picture in the frame's size.
void weave_smaller(PplContext &ctx, const Fields &fields, const FieldOutput &out, bool luma_first,
                   LineMemory &memory) {
  const int step = 1 << ctx.decimation;
  const int lines = (ctx.frame_height >> ctx.decimation) & ~1;
  const int pairs = ctx.out_width / 2;
  out.blacken(lines);
  const PlanarLine even(memory, ctx.out_width), odd(memory, ctx.out_width);
  for (int y = 0; y < lines; ++y) {
    const PlanarLine &line = y % 2 == 0 ? even : odd;
    line.take(fields.first + 2 * ctx.frame_width * (y * step / 2), luma_first, pairs, step);
    out.put(y, line, even);
  }
}

// The merged frame doubled both ways: each value after its average with the one before.
void weave_larger(PplContext &ctx, const FieldSource &source, const FieldOutput &out,
                  bool luma_first, LineMemory &memory) {
  const int width = ctx.frame_width & ~1;
  const int lines = ctx.frame_height & ~1;
  out.blacken(2 * lines);
  const PlanarLine small(memory, width);
  PlanarLine between(memory, 2 * width), current(memory, 2 * width), previous(memory, 2 * width);
  for (int y = 0; y < lines; ++y) {
    small.take(y % 2 == 0 ? source.first(y / 2) : source.second(y / 2), luma_first, width / 2, 1);
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

void convert_fields(PplContext &ctx, const Fields &fields, uint8_t *dst, bool luma_first,
                    Format format, bool tests_motion) {
  const int d = ctx.decimation;
  if (d < 0 && !tests_motion) return;
  LineMemory memory(ctx);
  const FieldOutput out(ctx, dst, format, memory);
  if (d > 0) {
    weave_smaller(ctx, fields, out, luma_first, memory);
    return;
  }
  const FieldSource source(ctx, fields, luma_first, tests_motion, memory);
  if (d == 0) {
    weave(ctx, source, out, format, luma_first, memory);
  } else {
    weave_larger(ctx, source, out, luma_first, memory);
  }
}

}  // namespace
}  // namespace ppl::TIER
