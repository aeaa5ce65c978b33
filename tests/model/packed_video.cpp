#include "model/packed_video.h"

#include "model/arithmetic.h"

namespace ppl_model {

Video read_video(const uint8_t *src, Packing packing, int line_width, int lines) {
  Video video(line_width, lines);
  const int luma_byte = packing == Packing::yuyv ? 0 : 1;
  for (int line = 0; line < lines; ++line)
    for (int x = 0; x < line_width; ++x) {
      const uint8_t *pair = src + 2 * (int64_t{line} * line_width + x);
      video.luma.at(line, x) = pair[luma_byte];
      video.chroma.at(line, x) = pair[1 - luma_byte];
    }
  return video;
}

Plane chroma_of_line_pairs(const Video &video, Component component) {
  const int first = component == Component::u ? 0 : 1;
  Plane plane(video.width() / 2, (video.lines() + 1) / 2);
  for (int i = 0; i < plane.height(); ++i) {
    const int partner = std::min(2 * i + 1, video.lines() - 1);
    for (int j = 0; j < plane.width(); ++j)
      plane.at(i, j) =
          average(video.chroma.at(2 * i, 2 * j + first), video.chroma.at(partner, 2 * j + first));
  }
  return plane;
}

Rgb rgb_of(uint8_t y, uint8_t u, uint8_t v) {
  const int32_t luma = 74 * std::max(y - 16, 0);
  const int32_t blue = u - 128, red = v - 128;
  const auto level = [](int32_t sum) { return clamp_to_byte(wrap16(sum) >> 6); };
  return {level(luma + 102 * red), level(luma - 25 * blue - 52 * red), level(luma + 129 * blue)};
}

void fill(Output &output, int64_t from, int64_t to, uint8_t value) {
  for (int64_t i = from; i < to; ++i) output.put(i, value);
}

void leave_open(Output &output, int64_t from, int64_t count) {
  for (int64_t i = from; i < from + count; ++i) output.leave_open(i);
}

OutputPlane luma_plane(const PplContext *ctx) {
  const PlainState &plain = ctx->plain;
  return {0, plain.out_size, plain.out_width, black_luma};
}

OutputPlane u_plane(const PplContext *ctx) {
  const PlainState &plain = ctx->plain;
  return {plain.out_size, plain.out_size_4, plain.out_width / 2, black_chroma};
}

OutputPlane v_plane(const PplContext *ctx) {
  OutputPlane plane = u_plane(ctx);
  plane.start += ctx->plain.out_size_4;
  return plane;
}

bool has_black_lines(const PplContext *ctx) {
  const int32_t d = ctx->decimation;
  const PlainState &plain = ctx->plain;
  return plain.out_height != (d >= 0 ? plain.frame_height >> d : 2 * plain.frame_height);
}

}  // namespace ppl_model
