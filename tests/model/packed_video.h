// Packed 4:2:2 video: how it is read, and what its conversions have in common.
#pragma once

#include "model/output.h"
#include "model/plane.h"

namespace ppl_model {

enum class Packing { yuyv, uyvy };

// A luma and a chroma byte for every pixel. Even columns carry u, odd ones v; both serve the pair.
struct Video {
  Plane luma, chroma;

  Video() = default;
  Video(int width, int lines) : luma(width, lines), chroma(width, lines) {}
  int width() const { return luma.width() / 2 * 2; }  // an odd last pixel is never converted
  int lines() const { return luma.height(); }
};

// Reads lines of 2 * line_width bytes, the last pixel of an odd width included.
Video read_video(const uint8_t *src, Packing packing, int line_width, int lines);

// The chroma of I420: u or v of each line pair, averaged. A last line without a partner gives its
// own.
enum class Component { u, v };
Plane chroma_of_line_pairs(const Video &video, Component component);

struct Rgb {
  uint8_t r, g, b;
};
Rgb rgb_of(uint8_t y, uint8_t u, uint8_t v);

inline constexpr uint8_t black_luma = 16, black_chroma = 128;

void fill(Output &output, int64_t from, int64_t to, uint8_t value);
void leave_open(Output &output, int64_t from, int64_t count);

// ---- The conversions of a frame whose geometry is in force

void convert_to_i420(const PplContext *ctx, Packing packing, const uint8_t *src, Output &output);
void convert_to_rgb24(const PplContext *ctx, Packing packing, const uint8_t *src, Output &output);
void convert_yyyy_to_i420(const PplContext *ctx, const uint8_t *src, Output &output);

struct Fields {
  const uint8_t *reference, *first, *second;
};
enum class MotionTest { off, on };
void convert_fields(const PplContext *ctx, Packing packing, Format format, MotionTest motion,
                    const Fields &fields, Output &output);

// ---- Planes of an I420 output

struct OutputPlane {
  int64_t start, bytes;
  int64_t pitch;  // of lines
  uint8_t black;
};
OutputPlane luma_plane(const PplContext *ctx);
OutputPlane u_plane(const PplContext *ctx);
OutputPlane v_plane(const PplContext *ctx);

// True if the output has the black lines that are stored with the decimation: a change of size
// alone leaves them out.
bool has_black_lines(const PplContext *ctx);

struct Sample {
  uint8_t value;
  bool is_open = false;
};

// Places a progressive picture of `lines` lines at the plane's start, or with v_mirror at its end,
// and black in the rest of the plane where the output has black lines. An odd height's last line
// may then be black, too, or stay as it is.
template <typename SampleAt, typename ColumnOf>
void fill_plane(const PplContext *ctx, const OutputPlane &plane, int lines, int columns,
                SampleAt sample_at, ColumnOf column_of, Output &output) {
  const bool v = ctx->v_mirror != 0;
  const auto line_start = [&](int64_t line) {
    return plane.start + (v ? plane.bytes - (line + 1) * plane.pitch : line * plane.pitch);
  };
  if (has_black_lines(ctx)) {
    const int64_t picture = lines * plane.pitch, end = plane.start + plane.bytes;
    if (v)
      fill(output, plane.start, end - picture, plane.black);
    else
      fill(output, plane.start + picture, end, plane.black);
    if (lines < ctx->plain.frame_height && plane.start == 0)
      leave_open(output, line_start(lines), plane.pitch);
  }
  for (int line = 0; line < lines; ++line)
    for (int x = 0; x < columns; ++x) {
      const Sample sample = sample_at(line, x);
      const int64_t at = line_start(line) + column_of(x);
      sample.is_open ? output.suggest(at, sample.value) : output.put(at, sample.value);
    }
}

}  // namespace ppl_model
