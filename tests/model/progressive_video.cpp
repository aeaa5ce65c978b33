// Progressive YUYV and UYVY frames.
#include "model/packed_video.h"

namespace ppl_model {

void convert_to_i420(const PplContext *ctx, Packing packing, const uint8_t *src, Output &output) {
  if (ctx->decimation != 0) return;
  const PlainState &plain = ctx->plain;
  const Video video = read_video(src, packing, plain.frame_width, plain.frame_height / 2 * 2);
  const auto place = [&](const OutputPlane &plane, const Plane &picture, int columns) {
    fill_plane(
        ctx, plane, picture.height(), columns,
        [&](int line, int x) { return Sample{picture.at(line, x)}; },
        [&](int x) { return ctx->h_mirror != 0 ? plane.pitch - 1 - x : x; }, output);
  };
  place(luma_plane(ctx), video.luma, video.width());
  place(u_plane(ctx), chroma_of_line_pairs(video, Component::u), video.width() / 2);
  place(v_plane(ctx), chroma_of_line_pairs(video, Component::v), video.width() / 2);
}

// Scaled output sizes are not heeded: the picture then stands as in an output of the input's size.
void convert_to_rgb24(const PplContext *ctx, Packing packing, const uint8_t *src, Output &output) {
  const PlainState &plain = ctx->plain;
  const bool unscaled = ctx->decimation == 0;
  const int64_t pitch = 3 * int64_t{plain.frame_width};
  const int64_t height = unscaled ? plain.out_height : plain.frame_height;
  const Video video = read_video(src, packing, plain.frame_width, plain.frame_height / 2 * 2);
  for (int line = 0; line < video.lines(); ++line)
    for (int x = 0; x < video.width(); ++x) {
      const int u = x / 2 * 2;
      const Rgb pixel =
          rgb_of(video.luma.at(line, x), video.chroma.at(line, u), video.chroma.at(line, u + 1));
      const int64_t at = (height - 1 - line) * pitch + 3 * x;
      output.put(at, pixel.b);
      output.put(at + 1, pixel.g);
      output.put(at + 2, pixel.r);
    }
  if (!unscaled || !has_black_lines(ctx)) return;
  fill(output, 0, (height - plain.frame_height) * pitch, 0);
  // An odd height's last line is black, too, or stays as it is.
  if (video.lines() < plain.frame_height)
    leave_open(output, (height - plain.frame_height) * pitch, pitch);
}

}  // namespace ppl_model
