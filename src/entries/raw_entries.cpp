// Entry functions for raw frames: five formats by five variants.
#include "engine/raw_driver.h"
#include "entries/entry.h"

namespace ppl {
namespace {

struct Variant {
  int32_t decimation;
  uint32_t lines_per_stride;  // widths from line to line of the source
};

constexpr Variant plain = {0, 1};
constexpr Variant deci_2_1 = {1, 1};
constexpr Variant intp_1_2 = {-1, 1};
constexpr Variant intp_1_2_stride = {-1, 2};
// Minus 2 is refused: the frame runs with whatever decimation was in force, and differs from a
// plain call in its stride alone. Meant so: docs/oddities.md, "_intp_1_4_stride".
constexpr Variant intp_1_4_stride = {-2, 4};

size_t output_pixels(const Variant &variant, size_t input_pixels) {
  return variant.decimation == 0  ? input_pixels
         : variant.decimation > 0 ? input_pixels / 4
                                  : 4 * input_pixels;
}

// A frame of the right size where the pixel path cannot run. YUYV and UYVY take the planar shape of
// I420, too; the enlarged ones read the source far past its frame. Both are meant so:
// docs/oddities.md, "Fallback shapes", "Fallback reads far".
void write_raw_fallback(Format format, const Variant &variant, const uint8_t *src, uint8_t *dst,
                        size_t input_pixels) {
  const size_t pixels = output_pixels(variant, input_pixels);
  switch (format) {
    case Format::rgb24:
      fill_plain(dst, 255, 3 * pixels);
      return;
    case Format::rgb32:
      fill_plain(dst, 255, 4 * pixels);
      return;
    default:
      write_grey_fallback(dst, src, pixels);
  }
}

uint8_t raw_entry(PplContext *ctx, Format format, const Variant &variant, uint8_t *src,
                  uint8_t *dst, uint32_t width, uint32_t height) {
  return run_entry(
      {src, dst},
      [&] {
        ppl_set_decimation(ctx, variant.decimation, 0, 0);
        return process_raw_frame(*ctx, format, src, dst, width, height,
                                 variant.lines_per_stride * width);
      },
      [&] { write_raw_fallback(format, variant, src, dst, static_cast<size_t>(width) * height); });
}

}  // namespace
}  // namespace ppl

using namespace ppl;

#define PPL_RAW_ENTRY(name, suffix, format, variant)                                        \
  uint8_t PPL_CALL BaylorTo##name##MMX##suffix(PplContext *ctx, uint8_t *src, uint8_t *dst, \
                                               uint32_t width, uint32_t height) {           \
    return raw_entry(ctx, format, variant, src, dst, width, height);                        \
  }

#define PPL_RAW_ENTRIES(name, format)                            \
  PPL_RAW_ENTRY(name, , format, plain)                           \
  PPL_RAW_ENTRY(name, _deci_2_1, format, deci_2_1)               \
  PPL_RAW_ENTRY(name, _intp_1_2, format, intp_1_2)               \
  PPL_RAW_ENTRY(name, _intp_1_2_stride, format, intp_1_2_stride) \
  PPL_RAW_ENTRY(name, _intp_1_4_stride, format, intp_1_4_stride)

PPL_RAW_ENTRIES(I420, Format::i420)
PPL_RAW_ENTRIES(YUYV, Format::yuyv)
PPL_RAW_ENTRIES(UYVY, Format::uyvy)
PPL_RAW_ENTRIES(RGB24, Format::rgb24)
PPL_RAW_ENTRIES(RGB32, Format::rgb32)

#undef PPL_RAW_ENTRIES
#undef PPL_RAW_ENTRY
