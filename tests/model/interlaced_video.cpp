// Frames made of two fields.
#include <cstdlib>

#include "model/arithmetic.h"
#include "model/packed_video.h"
#include "model/scaling.h"

namespace ppl_model {

namespace {

// How far the changes of three neighbours lie from being the same change, times three.
int16_t spread(int left, int own, int right) {
  const int sum = left + own + right;
  return wrap16(std::abs(3 * left - sum) + std::abs(3 * own - sum) + std::abs(3 * right - sum));
}

// The frame at its own size. Luma is woven in any case; chroma of an odd line gives way to the
// first field's where the second field has moved.
Video merge(const PplContext *ctx, Packing packing, MotionTest motion, const Fields &fields) {
  const int width = ctx->plain.frame_width, pairs = ctx->plain.frame_height / 2;
  const int16_t threshold = ctx->params.intl_3T_vec;
  const Video first = read_video(fields.first, packing, width, pairs);
  const Video second = read_video(fields.second, packing, width, pairs);
  const Video reference =
      motion == MotionTest::on ? read_video(fields.reference, packing, width, pairs) : Video();

  Video frame(width, 2 * pairs);
  for (int i = 0; i < pairs; ++i) {
    const auto change = [&](int x) {
      if (x < 0 || x >= width) return 0;
      return second.chroma.at(i, x) - reference.chroma.at(i, x);
    };
    const bool tested = motion == MotionTest::on && i + 1 < pairs;
    for (int x = 0; x < frame.width(); ++x) {
      frame.luma.at(2 * i, x) = first.luma.at(i, x);
      frame.chroma.at(2 * i, x) = first.chroma.at(i, x);
      frame.luma.at(2 * i + 1, x) = second.luma.at(i, x);
      const bool moved = tested && spread(change(x - 1), change(x), change(x + 1)) > threshold;
      frame.chroma.at(2 * i + 1, x) =
          moved ? average(first.chroma.at(i, x), first.chroma.at(i + 1, x))
                : second.chroma.at(i, x);
    }
  }
  return frame;
}

// Every 2^d-th pair and line of a frame whose even lines are the first field's.
Video shrink(const PplContext *ctx, Packing packing, const Fields &fields) {
  const int d = ctx->decimation;
  const PlainState &plain = ctx->plain;
  const Video first = read_video(fields.first, packing, plain.frame_width, plain.frame_height / 2);
  Video small((plain.frame_width >> d) / 2 * 2, plain.frame_height >> d);
  for (int line = 0; line < small.lines(); ++line)
    for (int x = 0; x < small.width(); ++x) {
      const int from_line = (line << d) / 2, from = (x / 2 << d) * 2 + x % 2;
      small.luma.at(line, x) = first.luma.at(from_line, from);
      small.chroma.at(line, x) = first.chroma.at(from_line, from);
    }
  return small;
}

Video enlarge(const Video &frame) {
  const auto twice = [](const Plane &plane) {
    return double_lines_on_odd(double_along_lines_rule_a(plane));
  };
  Plane u(frame.width() / 2, frame.lines()), v = u;
  for (int line = 0; line < frame.lines(); ++line)
    for (int j = 0; j < u.width(); ++j) {
      u.at(line, j) = frame.chroma.at(line, 2 * j);
      v.at(line, j) = frame.chroma.at(line, 2 * j + 1);
    }
  Video large(2 * frame.width(), 2 * frame.lines());
  const Plane luma = twice(frame.luma);
  u = twice(u);
  v = twice(v);
  for (int line = 0; line < large.lines(); ++line)
    for (int x = 0; x < large.width(); ++x) {
      large.luma.at(line, x) = luma.at(line, x);
      large.chroma.at(line, x) = (x % 2 == 0 ? u : v).at(line, x / 2);
    }
  return large;
}

// The black lines around a picture, in lines of the output.
struct Frame {
  int64_t top, bottom;
};

void write_packed(const PplContext *ctx, Format format, const Video &video, const Frame &black,
                  Output &output) {
  const int64_t pitch = ctx->plain.out_width;
  const int luma_byte = format == Format::yuyv ? 0 : 1;
  const auto put = [&](int64_t pixel, uint8_t luma, uint8_t chroma) {
    output.put(2 * pixel + luma_byte, luma);
    output.put(2 * pixel + 1 - luma_byte, chroma);
  };
  const auto put_black = [&](int64_t line, int64_t lines) {
    for (int64_t i = 0; i < lines * pitch; ++i) put(line * pitch + i, black_luma, black_chroma);
  };
  put_black(0, black.top);
  for (int line = 0; line < video.lines(); ++line)
    for (int x = 0; x < video.width(); ++x)
      put((black.top + line) * pitch + x, video.luma.at(line, x), video.chroma.at(line, x));
  put_black(black.top + video.lines(), black.bottom);
}

// Lines that an odd height has more than its picture, at the output's scale: one of an unscaled
// picture, two of a doubled one, none of a smaller one. Where black lines follow, they may be
// black, too, or stay as they are.
int64_t odd_lines(const PplContext *ctx, const Video &video, const Frame &black) {
  return ctx->plain.out_height - black.top - black.bottom - video.lines();
}

void write_i420(const PplContext *ctx, const Video &video, const Frame &black, Output &output) {
  const auto write = [&](const OutputPlane &plane, const Plane &picture, int columns, int64_t top) {
    for (int line = 0; line < picture.height(); ++line) {
      const int64_t start = (top + line) * plane.pitch;
      // The chroma planes of an odd height end with half a line.
      const int64_t end = std::min<int64_t>(columns, plane.bytes - start);
      for (int x = 0; x < end; ++x) output.put(plane.start + start + x, picture.at(line, x));
    }
    if (!has_black_lines(ctx)) return;
    const int64_t behind = plane.start + (top + picture.height()) * plane.pitch;
    fill(output, plane.start, plane.start + top * plane.pitch, plane.black);
    fill(output, behind, plane.start + plane.bytes, plane.black);
    const int64_t open = odd_lines(ctx, video, black);
    leave_open(output, behind, (plane.start == 0 ? open : open / 2) * plane.pitch);
  };
  const int width = video.width();
  write(luma_plane(ctx), video.luma, width, black.top);
  write(u_plane(ctx), chroma_of_line_pairs(video, Component::u), width / 2, black.top / 2);
  write(v_plane(ctx), chroma_of_line_pairs(video, Component::v), width / 2, black.top / 2);
}

// Odd pixels take the average of the chroma on both sides.
void write_rgb24(const PplContext *ctx, const Video &video, const Frame &black, Output &output) {
  const int64_t pitch = 3 * int64_t{ctx->plain.out_width}, height = ctx->plain.out_height;
  for (int line = 0; line < video.lines(); ++line)
    for (int x = 0; x < video.width(); ++x) {
      const auto chroma = [&](int component) {
        const int own = x / 2 * 2 + component;
        const int next = std::min(own + 2 * (x % 2), video.width() - 2 + component);
        return average(video.chroma.at(line, own), video.chroma.at(line, next));
      };
      const Rgb pixel = rgb_of(video.luma.at(line, x), chroma(0), chroma(1));
      const int64_t at = (height - 1 - black.top - line) * pitch + 3 * x;
      output.put(at, pixel.b);
      output.put(at + 1, pixel.g);
      output.put(at + 2, pixel.r);
    }
  if (!has_black_lines(ctx)) return;
  fill(output, 0, black.bottom * pitch, 0);
  leave_open(output, black.bottom * pitch, odd_lines(ctx, video, black) * pitch);
  fill(output, (height - black.top) * pitch, height * pitch, 0);
}

}  // namespace

void convert_fields(const PplContext *ctx, Packing packing, Format format, MotionTest motion,
                    const Fields &fields, Output &output) {
  const int d = ctx->decimation;
  if (d < 0 && motion == MotionTest::off) return;
  Video video = d > 0 ? shrink(ctx, packing, fields) : merge(ctx, packing, motion, fields);
  if (d < 0) video = enlarge(video);

  Frame black{ctx->decimation_top_black_lines, ctx->decimation_bottom_black_lines};
  if (is_packed(format)) return write_packed(ctx, format, video, black, output);
  if (!has_black_lines(ctx)) black = {0, 0};
  if (format == Format::i420) return write_i420(ctx, video, black, output);
  write_rgb24(ctx, video, black, output);
}

}  // namespace ppl_model
