// The caller's output buffer, written byte by byte, and where pictures stand in it.
#pragma once

#include <cstdint>
#include <vector>

#include "model/context.h"

namespace ppl_model {

enum class Format { i420, yuyv, uyvy, rgb24, rgb32 };

constexpr bool is_packed(Format format) { return format == Format::yuyv || format == Format::uyvy; }
constexpr bool is_rgb(Format format) { return format == Format::rgb24 || format == Format::rgb32; }
constexpr int64_t rgb_bytes(Format format) { return format == Format::rgb24 ? 3 : 4; }

class Output {
 public:
  // Bytes from `end` on are dropped, as are those before the start.
  Output(uint8_t *base, int64_t end) : base_(base), end_(end) {}

  // A byte that the definition fixes; it takes the place of whatever was there.
  void put(int64_t offset, uint8_t value);
  // A byte that the definition leaves open, with a value that would do.
  void suggest(int64_t offset, uint8_t value);
  void leave_open(int64_t offset);

  // Adds the open bytes to the frame's report.
  void report_open_bytes() const;

 private:
  bool holds(int64_t offset) const { return offset >= 0 && offset < end_; }
  void mark(int64_t offset, bool open);

  uint8_t *base_;
  int64_t end_;
  std::vector<bool> open_;
};

// The output geometry with the mirrors: where pixel (line, x) of the picture lies. RGB pictures
// stand bottom to top, so v_mirror turns them the right way up.
struct Layout {
  Format format;
  int64_t W, S, Q;
  bool h, v;

  Layout(const PplContext *ctx, Format f)
      : format(f),
        W(ctx->plain.out_width),
        S(ctx->plain.out_size),
        Q(ctx->plain.out_size_4),
        h(ctx->h_mirror != 0),
        v(ctx->v_mirror != 0) {}

  int64_t declared_bytes() const;

  // In pixels from the output's start, or from the plane's start for luma.
  int64_t line(int64_t y) const { return is_rgb(format) == v ? y * W : S - (y + 1) * W; }
  int64_t column(int64_t x) const { return h ? W - 1 - x : x; }

  // In samples from the start of a chroma plane.
  int64_t chroma_line(int64_t y) const { return v ? Q - (y + 1) * (W / 2) : y * (W / 2); }
  int64_t chroma_column(int64_t x) const { return h ? W / 2 - 1 - x : x; }
  int64_t u_plane() const { return S; }
  int64_t v_plane() const { return S + Q; }
};

}  // namespace ppl_model
