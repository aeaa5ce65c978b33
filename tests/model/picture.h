// Finished pictures and the ways they are placed in the output.
#pragma once

#include <functional>

#include "model/output.h"
#include "model/plane.h"

namespace ppl_model {

// A finished picture at output resolution. I420 has chroma lines of its own; the packed formats
// have one u and one v for every pair of pixels on every line.
struct Picture {
  Plane y, u, v;
  Plane r, g, b;

  // What the definition leaves open, asked in picture order. Null: nothing.
  std::function<bool(int line, int column)> luma_is_open;
  std::function<bool(int line, int pair)> chroma_is_open;
  // A packed picture of odd width: the last pixel, which has no partner, may hold anything.
  bool lone_pixel_is_open = false;

  int width(Format format) const { return is_rgb(format) ? g.width() : y.width(); }
  int height(Format format) const { return is_rgb(format) ? g.height() : y.height(); }
};

enum class ChromaPlace {
  in_place,
  one_line_early  // each chroma line one line towards the buffer's start
};

// Places a picture that fits its buffer.
void write_picture(const Picture &picture, const Layout &layout, ChromaPlace chroma,
                   Output &output);

// Places a 2:1 picture on the steps of decimation 2: at half the pitch that it needs, so that lines
// overlap and run past the declared end. Stores go in steps of four source lines by two blocks.
void write_slipping(const Picture &picture, const Layout &layout, int frame_width, int B,
                    Output &output);

// The same in the order of a chain: line by line, each with the chroma line that it completes.
void write_slipping_lines(const Picture &picture, const Layout &layout, int frame_width,
                          Output &output);

// Places a 2:1 picture on the steps of decimation minus 1: runs of B pixels with gaps of B.
void write_runs(const Picture &picture, const Layout &layout, int frame_width, int B,
                Output &output);

// Places an unscaled RGB32 picture on the steps of decimation minus 1.
void write_unscaled_rows(const Picture &picture, const Layout &layout, int frame_width,
                         Output &output);

}  // namespace ppl_model
