#include "model/copy_quality.h"

namespace ppl_model {

namespace {

constexpr int64_t round_up(int64_t value, int64_t step) { return (value + step - 1) / step * step; }

// Source bytes that one step of the copy takes.
int64_t group_size(Format format, Tier tier) {
  if (is_rgb(format)) return 4;
  return tier == Tier::p3 ? 16 : 32;
}

int64_t pixel_bytes(Format format) {
  if (format == Format::i420) return 1;
  return is_packed(format) ? 2 : rgb_bytes(format);
}

// Grey pixel number `index` of the buffer.
void write_grey(Format format, uint8_t *dst, int64_t index, uint8_t sample) {
  uint8_t *pixel = dst + index * pixel_bytes(format);
  switch (format) {
    case Format::i420:
      pixel[0] = sample;
      break;
    case Format::yuyv:
      pixel[0] = sample;
      pixel[1] = 128;
      break;
    case Format::uyvy:
      pixel[0] = 128;
      pixel[1] = sample;
      break;
    case Format::rgb24:
      pixel[0] = pixel[1] = pixel[2] = sample;
      break;
    case Format::rgb32:
      pixel[0] = pixel[1] = pixel[2] = sample;
      pixel[3] = 0;
      break;
  }
}

// Mirrors play no part. Lines of whole groups: what a line has too much is dropped, but behind the
// last line of the buffer it is written.
struct GreyLine {
  int64_t first_pixel;  // in the output
  int64_t width;        // in output pixels
  int64_t rounded_width;
};

template <typename Sample>
void write_line(Format format, uint8_t *dst, int64_t out_size, const GreyLine &line,
                Sample sample) {
  const bool last = line.first_pixel + line.width >= out_size;
  const int64_t written = last ? line.rounded_width : line.width;
  for (int64_t x = 0; x < written; ++x) write_grey(format, dst, line.first_pixel + x, sample(x));
}

void copy_unscaled(const PplContext *ctx, Tier tier, Format format, const uint8_t *src,
                   uint8_t *dst) {
  const PlainState &plain = ctx->plain;
  const int64_t group = group_size(format, tier);
  if (!is_rgb(format)) {
    const int64_t count = round_up(plain.frame_size, group);
    for (int64_t i = 0; i < count; ++i) write_grey(format, dst, i, src[i]);
    return;
  }
  const int64_t width = plain.frame_width;
  for (int64_t y = 0; y < plain.frame_height; ++y) {
    const int64_t first_pixel = plain.out_size - (y + 1) * width;
    write_line(format, dst, plain.out_size, {first_pixel, width, round_up(width, group)},
               [&](int64_t x) { return src[y * width + x]; });
  }
}

// One sample of two from the first line of every pair.
void copy_halved(const PplContext *ctx, Tier tier, Format format, const uint8_t *src,
                 uint8_t *dst) {
  if (format == Format::rgb24) return;
  const PlainState &plain = ctx->plain;
  const int64_t width = plain.out_width;
  const int64_t rounded_width = round_up(plain.frame_width, group_size(format, tier)) / 2;
  const int64_t odd_column = format == Format::uyvy ? 1 : 0;
  for (int64_t pair = 0; pair < plain.frame_height / 2; ++pair) {
    const uint8_t *line = src + pair * 2 * plain.frame_stride;
    const int64_t first_pixel = is_rgb(format) ? plain.out_size - (pair + 1) * width : pair * width;
    write_line(format, dst, plain.out_size, {first_pixel, width, rounded_width},
               [&](int64_t x) { return line[2 * x + odd_column]; });
  }
}

// A block of the second chroma plane that moves on one place a frame, through 5 columns and 6 rows.
void paint_marker(PplContext *ctx, Tier tier, uint8_t *dst_u) {
  const PlainState &plain = ctx->plain;
  int32_t &cell = ctx->tier(tier).plan.marker_cell;
  const int64_t width = plain.out_width / 10;
  const int64_t height = plain.out_height / 12;
  if (width % block_width(tier) != 0) return;
  uint8_t *block =
      dst_u + plain.out_size_4 + plain.out_width * (cell / 5) * height / 2 + cell % 5 * width;
  for (int64_t y = 0; y < height; ++y)
    std::fill_n(block + y * (plain.out_width / 2), width, uint8_t{255});
  cell = (cell + 1) % 30;
}

}  // namespace

void run_copy(PplContext *ctx, Tier tier, Format format, const uint8_t *src, uint8_t *dst) {
  const int32_t d = ctx->decimation;
  if (d == 0) copy_unscaled(ctx, tier, format, src, dst);
  if (d == 1) copy_halved(ctx, tier, format, src, dst);
  if (format != Format::i420) return;
  uint8_t *dst_u = dst + ctx->plain.out_size;
  if (d == 0 || d == 1)
    std::fill_n(dst_u, round_up(ctx->plain.out_size / 2, block_width(tier)), uint8_t{128});
  paint_marker(ctx, tier, dst_u);
}

}  // namespace ppl_model
