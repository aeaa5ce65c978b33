#include "model/picture.h"

namespace ppl_model {

namespace {

// The bytes of a pixel pair, in the order of the format.
struct PairBytes {
  int64_t left_y, right_y, u, v;
};

PairBytes pair_bytes(Format format) {
  return format == Format::yuyv ? PairBytes{0, 2, 1, 3} : PairBytes{1, 3, 0, 2};
}

bool luma_is_open(const Picture &picture, int y, int x) {
  return picture.luma_is_open && picture.luma_is_open(y, x);
}

void write(int64_t offset, uint8_t value, bool open, Output &output) {
  open ? output.suggest(offset, value) : output.put(offset, value);
}

void write_luma_line(const Picture &picture, int y, int64_t start, const Layout &layout,
                     Output &output) {
  for (int x = 0; x < picture.y.width(); ++x)
    write(start + layout.column(x), picture.y.at(y, x), luma_is_open(picture, y, x), output);
}

void write_chroma_line(const Plane &plane, int y, int64_t start, const Layout &layout,
                       Output &output) {
  for (int x = 0; x < plane.width(); ++x)
    output.put(start + layout.chroma_column(x), plane.at(y, x));
}

// In the order of the sweep: it decides where displaced chroma falls on luma.
void write_i420(const Picture &picture, const Layout &layout, ChromaPlace chroma, Output &output) {
  const int64_t shift = chroma == ChromaPlace::one_line_early ? layout.W / 2 : 0;
  for (int row = 0; 2 * row < picture.y.height(); ++row) {
    for (int y = 2 * row; y < 2 * row + 2 && y < picture.y.height(); ++y)
      write_luma_line(picture, y, layout.line(y), layout, output);
    if (row >= picture.u.height()) continue;
    const int64_t line = layout.chroma_line(row) - shift;
    write_chroma_line(picture.u, row, layout.u_plane() + line, layout, output);
    write_chroma_line(picture.v, row, layout.v_plane() + line, layout, output);
  }
}

void write_packed(const Picture &picture, const Layout &layout, Output &output) {
  const PairBytes bytes = pair_bytes(layout.format);
  for (int y = 0; y < picture.y.height(); ++y) {
    for (int pair = 0; pair < picture.y.width() / 2; ++pair) {
      // A mirrored pair swaps its pixels and keeps its chroma.
      const int left = layout.h ? 2 * pair + 1 : 2 * pair;
      const int right = layout.h ? 2 * pair : 2 * pair + 1;
      const int64_t at = 2 * (layout.line(y) + layout.column(left));
      const bool chroma_open = picture.chroma_is_open && picture.chroma_is_open(y, pair);
      write(at + bytes.left_y, picture.y.at(y, left), luma_is_open(picture, y, left), output);
      write(at + bytes.right_y, picture.y.at(y, right), luma_is_open(picture, y, right), output);
      write(at + bytes.u, picture.u.at(y, pair), chroma_open, output);
      write(at + bytes.v, picture.v.at(y, pair), chroma_open, output);
    }
    if (picture.y.width() % 2 != 0 && picture.lone_pixel_is_open) {
      const int64_t at = 2 * (layout.line(y) + layout.column(picture.y.width() - 1));
      output.leave_open(at);
      output.leave_open(at + 1);
    }
  }
}

void write_rgb_pixel(const Picture &picture, Format format, int y, int x, int64_t pixel,
                     Output &output) {
  const int64_t at = rgb_bytes(format) * pixel;
  output.put(at, picture.b.at(y, x));
  output.put(at + 1, picture.g.at(y, x));
  output.put(at + 2, picture.r.at(y, x));
  if (format == Format::rgb32) output.put(at + 3, 0);
}

// Lines of a 2:1 picture at half the pitch that they need: every row of the sweep starts a slip
// further along. The cursor goes along the samples that a row has and back by the output's width,
// in chroma by half of that, truncated.
class SlippingWriter {
 public:
  SlippingWriter(const Picture &picture, const Layout &layout, int frame_width, Output &output)
      : picture_(picture),
        layout_(layout),
        bytes_(pair_bytes(layout.format)),
        slip_((layout.h ? -1 : 1) * (frame_width / 2 - layout.W)),
        chroma_slip_((layout.h ? -1 : 1) * (frame_width / 4 - layout.W / 2)),
        output_(output) {}

  void write_line(int y, int row, int first, int behind) const {
    const auto place = [&](int x) { return layout_.line(y) + layout_.column(x) + row * slip_; };
    for (int x = first; x < behind; ++x) {
      if (layout_.format == Format::i420) {
        output_.put(place(x), picture_.y.at(y, x));
      } else if (is_rgb(layout_.format)) {
        write_rgb_pixel(picture_, layout_.format, y, x, place(x), output_);
      } else if (x == picture_.y.width() - 1 && x % 2 == 0) {
        output_.leave_open(2 * place(x));
        output_.leave_open(2 * place(x) + 1);
      } else if (x % 2 == 0) {
        const int left = layout_.h ? x + 1 : x;
        const int right = layout_.h ? x : x + 1;
        const int64_t at = 2 * place(left);
        output_.put(at + bytes_.left_y, picture_.y.at(y, left));
        output_.put(at + bytes_.right_y, picture_.y.at(y, right));
        output_.put(at + bytes_.u, picture_.u.at(y, x / 2));
        output_.put(at + bytes_.v, picture_.v.at(y, x / 2));
      }
    }
  }

  // The columns of chroma line `row` from `first` on, before `behind` and the line's end: U, then
  // V.
  void write_chroma(int row, int first, int behind) const {
    if (layout_.format != Format::i420 || row >= picture_.u.height()) return;
    const auto place = [&](int x) {
      return layout_.chroma_line(row) + layout_.chroma_column(x) + row * chroma_slip_;
    };
    const int end = std::min(behind, picture_.u.width());
    for (int x = first; x < end; ++x)
      output_.put(layout_.u_plane() + place(x), picture_.u.at(row, x));
    for (int x = first; x < end; ++x)
      output_.put(layout_.v_plane() + place(x), picture_.v.at(row, x));
  }

 private:
  const Picture &picture_;
  const Layout &layout_;
  PairBytes bytes_;
  int64_t slip_, chroma_slip_;
  Output &output_;
};

}  // namespace

void write_picture(const Picture &picture, const Layout &layout, ChromaPlace chroma,
                   Output &output) {
  if (layout.format == Format::i420) return write_i420(picture, layout, chroma, output);
  if (is_packed(layout.format)) return write_packed(picture, layout, output);
  for (int y = 0; y < picture.g.height(); ++y)
    for (int x = 0; x < picture.g.width(); ++x)
      write_rgb_pixel(picture, layout.format, y, x, layout.line(y) + layout.column(x), output);
}

void write_slipping(const Picture &picture, const Layout &layout, int frame_width, int B,
                    Output &output) {
  const SlippingWriter writer(picture, layout, frame_width, output);
  const int width = picture.width(layout.format);
  const int height = picture.height(layout.format);
  for (int row = 0; 2 * row < height; ++row) {
    for (int first = 0; first < width; first += 2 * B) {
      const int behind = std::min(first + 2 * B, width);
      for (int y = 2 * row; y < 2 * row + 2 && y < height; ++y)
        writer.write_line(y, row, first, behind);
      writer.write_chroma(row, first / 2, first / 2 + B);
    }
  }
}

void write_slipping_lines(const Picture &picture, const Layout &layout, int frame_width,
                          Output &output) {
  const SlippingWriter writer(picture, layout, frame_width, output);
  const int width = picture.width(layout.format);
  for (int y = 0; y < picture.height(layout.format); ++y) {
    writer.write_line(y, y, 0, width);
    if (y % 2 != 0) writer.write_chroma(y / 2, 0, width);
  }
}

void write_runs(const Picture &picture, const Layout &layout, int frame_width, int B,
                Output &output) {
  const Format format = layout.format;
  const int64_t W = layout.W;
  const bool h = layout.h;
  const bool v = layout.v;
  const int64_t sx = h ? -1 : 1;
  const int64_t sy = v ? -1 : 1;
  const int width = picture.width(format);
  const int height = picture.height(format);

  // Run n of B pixels starts 2B pixels from run n - 1, its pixels in output order.
  const auto in_run = [&](int x) {
    const int run = x / B;
    const int i = x % B;
    return sx * 2 * B * run + (h ? B - 1 - i : i);
  };

  // Where the first run of line y stands. The two lines of a row are 2 output lines apart.
  const auto line_at = [&](int y) -> int64_t {
    const int64_t row = y / 2;
    const int64_t second = y % 2;
    if (is_rgb(format)) {
      const int64_t start = (v ? 0 : layout.S - 2 * W) + (h ? W - 2 * B : 0);
      const int64_t row_step = -4 * sy * W - sx * frame_width;
      return start + row * row_step - sy * second * 2 * W;
    }
    const int64_t start = (v ? layout.S - 2 * W : 0) + (h ? W - 2 * B : 0) + (h && v ? W : 0);
    const int64_t row_step = 4 * sy * W - sx * frame_width;
    return start + row * row_step + sy * second * 2 * W;
  };

  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const int64_t pixel = line_at(y) + in_run(x);
      if (is_rgb(format))
        write_rgb_pixel(picture, format, y, x, pixel, output);
      else
        output.put(pixel, picture.y.at(y, x));
    }
  }
  if (format != Format::i420) return;

  const int64_t chroma_start = (v ? layout.Q - W : 0) + (h ? W / 2 - 2 * B : 0);
  // A line forth by the cells of the frame and back by a chroma line; of an odd width only whole
  // cells count.
  const int64_t chroma_step = 2 * sy * (W / 2) - sx * (W / 2 - frame_width / 2);
  for (int row = 0; row < picture.u.height(); ++row) {
    for (int x = 0; x < picture.u.width(); ++x) {
      const int64_t at = chroma_start + row * chroma_step + in_run(x);
      output.put(layout.u_plane() + at, picture.u.at(row, x));
      output.put(layout.v_plane() + at, picture.v.at(row, x));
    }
  }
}

void write_unscaled_rows(const Picture &picture, const Layout &layout, int frame_width,
                         Output &output) {
  const int64_t W = layout.W;
  const int64_t sx = layout.h ? -1 : 1;
  const int64_t sy = layout.v ? -1 : 1;
  // One unscaled line along, then whole output lines back: 2.5 lines in all with equal flags, 1.5
  // with one.
  const int64_t row_step = sx * frame_width - (2 * sy + sx) * W;
  for (int y = 0; y < picture.g.height(); ++y)
    for (int x = 0; x < picture.g.width(); ++x)
      write_rgb_pixel(picture, layout.format, y, x,
                      layout.line(y % 2) + layout.column(x) + (y / 2) * row_step, output);
}

}  // namespace ppl_model
