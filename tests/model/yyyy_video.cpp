// The packing of 1.5 bytes a pixel: 24 bytes for 16 pixels.
#include <algorithm>

#include "model/packed_video.h"

namespace ppl_model {

namespace {

constexpr int64_t group_bytes = 24;
constexpr int group_pixels = 16, group_chroma = 8;

// A line of the source. What would lie behind it counts as 0; so may the last byte of an odd width.
class Line {
 public:
  Line(const uint8_t *bytes, int width) : bytes_(bytes), width_(width) {}
  Sample at(int64_t index) const {
    if (index < width_ / 2 * 3) return {bytes_[index]};
    return {0, width_ % 2 != 0};
  }

 private:
  const uint8_t *bytes_;
  int width_;
};

Sample mixed(const Sample &a, const Sample &b) {
  return {static_cast<uint8_t>(a.value | b.value), a.is_open || b.is_open};
}

// Of the last eight bytes of a group the even ones are lost, and two of the odd ones are mixed into
// the luma before.
Sample luma_of(const Line &line, int x) {
  const int64_t q = x / group_pixels * group_bytes;
  const int k = x % group_pixels;
  if (k < 4) return line.at(q + 2 * k);
  if (k == 5 || k == 7) return mixed(line.at(q + 4 + k), line.at(q + 12 + k));
  if (k < 8) return line.at(q + 4 + k);
  if (k < 12) return line.at(q + 2 * k - 4);
  return k % 2 == 0 ? Sample{0} : line.at(q + 8 + k);
}

Sample chroma_of(const Line &line, int x) {
  const int64_t q = x / group_chroma * group_bytes;
  const int k = x % group_chroma;
  return line.at(k < 4 ? q + 2 * k + 1 : q + 2 * k + 5);
}

}  // namespace

void convert_yyyy_to_i420(const PplContext *ctx, const uint8_t *src, Output &output) {
  if (ctx->decimation != 0) return;
  const PlainState &plain = ctx->plain;
  const int64_t line_bytes = 3 * int64_t{plain.frame_width} / 2;
  const int lines = plain.frame_height / 2 * 2, width = plain.frame_width / 2 * 2;
  const bool h = ctx->h_mirror != 0;
  const auto source_line = [&](int line) {
    return Line(src + line * line_bytes, plain.frame_width);
  };

  const OutputPlane luma = luma_plane(ctx);
  fill_plane(
      ctx, luma, lines, width, [&](int line, int x) { return luma_of(source_line(line), x); },
      [&](int x) { return h ? luma.pitch - 1 - x : x; }, output);
  // Of a line pair the second line's chroma stays, u and v as they come. Mirrored groups keep the
  // order of their bytes.
  const OutputPlane chroma = u_plane(ctx);
  fill_plane(
      ctx, chroma, lines / 2, width / 2,
      [&](int pair, int x) { return chroma_of(source_line(2 * pair + 1), x); },
      [&](int x) {
        const int group = x / group_chroma * group_chroma;
        const int bytes = std::min(group_chroma, width / 2 - group);
        return h ? chroma.pitch - group - bytes + x % group_chroma : x;
      },
      output);
}

}  // namespace ppl_model
