// The entry functions: bracket, decimation, driver; or the plain fallback frame.
#include <cstring>

#include "model/drivers.h"
#include "model/machine.h"
#include "model/report.h"

namespace ppl_model {

namespace {

struct Variant {
  int32_t decimation;
  uint32_t stride_factor;
};

constexpr Variant unscaled = {0, 1};
constexpr Variant deci_2_1 = {1, 1};
constexpr Variant intp_1_2 = {-1, 1};
constexpr Variant intp_1_2_stride = {-1, 2};
// Minus 2 is refused, so the decimation in force stays.
constexpr Variant intp_1_4_stride = {-2, 4};

// A picture of the right size without any pixel work: grey with neutral chroma in planar shape,
// also for the packed formats, or white.
void write_fallback(Format format, const Variant &variant, const uint8_t *src, uint8_t *dst,
                    uint32_t width, uint32_t height) {
  const uint32_t n = width * height;
  const bool halves = variant.decimation > 0;
  const bool doubles = variant.decimation < 0;
  if (!is_rgb(format)) {
    const uint32_t luma = halves ? n / 4 : doubles ? 4 * n : n;
    const uint32_t chroma = halves ? n / 8 : doubles ? 2 * n : n / 2;
    std::memmove(dst, src, luma);
    std::memset(dst + luma, 128, chroma);
    return;
  }
  uint32_t bytes = n;
  if (format == Format::rgb24)
    bytes = halves ? n / 4 * 3 : doubles ? 12 * n : 3 * n;
  else
    bytes = halves ? n / 4 * 4 : doubles ? 16 * n : 4 * n;
  std::memset(dst, 255, bytes);
}

uint8_t run_entry(PplContext *ctx, Format format, const Variant &variant, uint8_t *src,
                  uint8_t *dst, uint32_t width, uint32_t height) {
  report() = {};
  if (!is_aligned(src, 8) || !is_aligned(dst, 8) || !machine::has_tier(Tier::p3) ||
      !machine::save()) {
    write_fallback(format, variant, src, dst, width, height);
    return 0;
  }
  ppl_set_decimation(ctx, variant.decimation, 0, 0);
  return process_raw(ctx, format, src, dst, width, height, variant.stride_factor * width);
}

}  // namespace

uint8_t BaylorToI420MMX(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                        uint32_t height) {
  return run_entry(ctx, Format::i420, unscaled, src, dst, width, height);
}
uint8_t BaylorToI420MMX_deci_2_1(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                 uint32_t height) {
  return run_entry(ctx, Format::i420, deci_2_1, src, dst, width, height);
}
uint8_t BaylorToI420MMX_intp_1_2(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                 uint32_t height) {
  return run_entry(ctx, Format::i420, intp_1_2, src, dst, width, height);
}
uint8_t BaylorToI420MMX_intp_1_2_stride(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                        uint32_t height) {
  return run_entry(ctx, Format::i420, intp_1_2_stride, src, dst, width, height);
}
uint8_t BaylorToI420MMX_intp_1_4_stride(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                        uint32_t height) {
  return run_entry(ctx, Format::i420, intp_1_4_stride, src, dst, width, height);
}

uint8_t BaylorToYUYVMMX(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                        uint32_t height) {
  return run_entry(ctx, Format::yuyv, unscaled, src, dst, width, height);
}
uint8_t BaylorToYUYVMMX_deci_2_1(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                 uint32_t height) {
  return run_entry(ctx, Format::yuyv, deci_2_1, src, dst, width, height);
}
uint8_t BaylorToYUYVMMX_intp_1_2(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                 uint32_t height) {
  return run_entry(ctx, Format::yuyv, intp_1_2, src, dst, width, height);
}
uint8_t BaylorToYUYVMMX_intp_1_2_stride(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                        uint32_t height) {
  return run_entry(ctx, Format::yuyv, intp_1_2_stride, src, dst, width, height);
}
uint8_t BaylorToYUYVMMX_intp_1_4_stride(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                        uint32_t height) {
  return run_entry(ctx, Format::yuyv, intp_1_4_stride, src, dst, width, height);
}

uint8_t BaylorToUYVYMMX(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                        uint32_t height) {
  return run_entry(ctx, Format::uyvy, unscaled, src, dst, width, height);
}
uint8_t BaylorToUYVYMMX_deci_2_1(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                 uint32_t height) {
  return run_entry(ctx, Format::uyvy, deci_2_1, src, dst, width, height);
}
uint8_t BaylorToUYVYMMX_intp_1_2(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                 uint32_t height) {
  return run_entry(ctx, Format::uyvy, intp_1_2, src, dst, width, height);
}
uint8_t BaylorToUYVYMMX_intp_1_2_stride(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                        uint32_t height) {
  return run_entry(ctx, Format::uyvy, intp_1_2_stride, src, dst, width, height);
}
uint8_t BaylorToUYVYMMX_intp_1_4_stride(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                        uint32_t height) {
  return run_entry(ctx, Format::uyvy, intp_1_4_stride, src, dst, width, height);
}

uint8_t BaylorToRGB24MMX(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                         uint32_t height) {
  return run_entry(ctx, Format::rgb24, unscaled, src, dst, width, height);
}
uint8_t BaylorToRGB24MMX_deci_2_1(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                  uint32_t height) {
  return run_entry(ctx, Format::rgb24, deci_2_1, src, dst, width, height);
}
uint8_t BaylorToRGB24MMX_intp_1_2(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                  uint32_t height) {
  return run_entry(ctx, Format::rgb24, intp_1_2, src, dst, width, height);
}
uint8_t BaylorToRGB24MMX_intp_1_2_stride(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                         uint32_t width, uint32_t height) {
  return run_entry(ctx, Format::rgb24, intp_1_2_stride, src, dst, width, height);
}
uint8_t BaylorToRGB24MMX_intp_1_4_stride(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                         uint32_t width, uint32_t height) {
  return run_entry(ctx, Format::rgb24, intp_1_4_stride, src, dst, width, height);
}

uint8_t BaylorToRGB32MMX(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                         uint32_t height) {
  return run_entry(ctx, Format::rgb32, unscaled, src, dst, width, height);
}
uint8_t BaylorToRGB32MMX_deci_2_1(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                  uint32_t height) {
  return run_entry(ctx, Format::rgb32, deci_2_1, src, dst, width, height);
}
uint8_t BaylorToRGB32MMX_intp_1_2(PplContext *ctx, uint8_t *src, uint8_t *dst, uint32_t width,
                                  uint32_t height) {
  return run_entry(ctx, Format::rgb32, intp_1_2, src, dst, width, height);
}
uint8_t BaylorToRGB32MMX_intp_1_2_stride(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                         uint32_t width, uint32_t height) {
  return run_entry(ctx, Format::rgb32, intp_1_2_stride, src, dst, width, height);
}
uint8_t BaylorToRGB32MMX_intp_1_4_stride(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                         uint32_t width, uint32_t height) {
  return run_entry(ctx, Format::rgb32, intp_1_4_stride, src, dst, width, height);
}

}  // namespace ppl_model
