// Entry functions for packed video.
#include "engine/video_driver.h"
#include "entries/entry.h"

namespace ppl {
namespace {

size_t pixels_of(uint32_t out_width, uint32_t out_height) {
  return static_cast<size_t>(out_width) * out_height;
}

void write_white_fallback(uint8_t *dst, size_t bytes) { fill_plain(dst, 255, bytes); }

uint8_t field_entry(PplContext *ctx, const Fields &fields, uint8_t *out, const VideoSizes &sizes,
                    const FieldConversion &conversion) {
  return run_entry(
      {fields.reference, fields.first, fields.second, out},
      [&] { return process_fields(*ctx, fields, out, sizes, conversion); },
      [&] {
        const size_t n = pixels_of(sizes.out_width, sizes.out_height);
        if (conversion.format == Format::rgb24) {
          write_white_fallback(out, 3 * n);
        } else if (conversion.format == Format::i420) {
          write_grey_fallback(out, fields.first, n);
        } else {
          copy_plain(copy_plain(out, fields.first, n), fields.second, n);
        }
      });
}

}  // namespace
}  // namespace ppl

using namespace ppl;

#define PPL_VIDEO_ENTRY(name, driver, fallback)                                                  \
  uint8_t PPL_CALL name(PplContext *ctx, const uint8_t *src, uint8_t *dst, uint32_t width,       \
                        uint32_t height, uint32_t out_width, uint32_t out_height) {              \
    return run_entry(                                                                            \
        {src, dst}, [&] { return driver(ctx, src, dst, width, height, out_width, out_height); }, \
        [&] {                                                                                    \
          const size_t n = pixels_of(out_width, out_height);                                     \
          fallback;                                                                              \
        });                                                                                      \
  }

PPL_VIDEO_ENTRY(YUYVToI420MMX, ppl_process_yuyvtoi420, write_grey_fallback(dst, src, n))
PPL_VIDEO_ENTRY(UYVYToI420MMX, ppl_process_uyvytoi420, write_grey_fallback(dst, src, n))
PPL_VIDEO_ENTRY(YUYVToRGB24MMX, ppl_process_yuyvtorgb24, write_white_fallback(dst, 3 * n))
PPL_VIDEO_ENTRY(UYVYToRGB24MMX, ppl_process_uyvytorgb24, write_white_fallback(dst, 3 * n))
PPL_VIDEO_ENTRY(YUYVYYYYToI420MMX, ppl_process_yuyvyyyytoi420, write_grey_fallback(dst, src, n))
PPL_VIDEO_ENTRY(UYVYYYYYToI420MMX, ppl_process_uyvyyyyytoi420, write_grey_fallback(dst, src, n))
PPL_VIDEO_ENTRY(RGB24ToRGB32MMX, ppl_process_rgb24torgb32, write_white_fallback(dst, 4 * n))

#undef PPL_VIDEO_ENTRY

#define PPL_FIELD_ENTRY(name, ...)                                                             \
  uint8_t PPL_CALL name(PplContext *ctx, const uint8_t *reference_field,                       \
                        const uint8_t *first_field, const uint8_t *second_field, uint8_t *out, \
                        uint32_t width, uint32_t height, uint32_t out_width,                   \
                        uint32_t out_height) {                                                 \
    return field_entry(ctx, {reference_field, first_field, second_field}, out,                 \
                       {width, height, out_width, out_height}, {__VA_ARGS__});                 \
  }

// With and without the motion test.
#define PPL_FIELD_ENTRIES(name, order, format)                              \
  PPL_FIELD_ENTRY(name, PackedOrder::order, Format::format, MotionTest::on) \
  PPL_FIELD_ENTRY(name##_no_motion, PackedOrder::order, Format::format, MotionTest::off)

PPL_FIELD_ENTRIES(IntlYUYVToYUYVMMX, yuyv, yuyv)
PPL_FIELD_ENTRIES(IntlUYVYToUYVYMMX, uyvy, uyvy)
PPL_FIELD_ENTRIES(IntlYUYVToI420MMX, yuyv, i420)
PPL_FIELD_ENTRIES(IntlUYVYToI420MMX, uyvy, i420)
PPL_FIELD_ENTRIES(IntlYUYVToRGB24MMX, yuyv, rgb24)
PPL_FIELD_ENTRIES(IntlUYVYToRGB24MMX, uyvy, rgb24)
PPL_FIELD_ENTRY(IntlUYVYToYUYVMMX, PackedOrder::uyvy, Format::yuyv, MotionTest::on)
PPL_FIELD_ENTRY(IntlYUYVToUYVYMMX, PackedOrder::yuyv, Format::uyvy, MotionTest::on)
// One operation under two names. Meant so: docs/oddities.md, "Names that convert nothing".
PPL_FIELD_ENTRY(IntlUYVYToYUYVMMX_no_motion, PackedOrder::uyvy, Format::yuyv, MotionTest::off,
                false)
PPL_FIELD_ENTRY(IntlYUYVToUYVYMMX_no_motion, PackedOrder::yuyv, Format::uyvy, MotionTest::off,
                false)

#undef PPL_FIELD_ENTRIES
#undef PPL_FIELD_ENTRY
