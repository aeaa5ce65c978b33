#include "engine/video_driver.h"

namespace ppl {

bool takes_sizes(PplContext &ctx, const VideoSizes &sizes) {
  const bool is_current = sizes.out_width == static_cast<uint32_t>(ctx.out_width) &&
                          sizes.out_height == static_cast<uint32_t>(ctx.out_height) &&
                          sizes.width == static_cast<uint32_t>(ctx.frame_width) &&
                          sizes.height == static_cast<uint32_t>(ctx.frame_height);
  return is_current || ppl_new_frame_sizes(&ctx, sizes.width, sizes.height, sizes.out_width,
                                           sizes.out_height) != 0;
}

uint8_t process_fields(PplContext &ctx, const Fields &fields, uint8_t *dst, const VideoSizes &sizes,
                       const FieldConversion &conversion) {
  return process_video_frame(ctx, sizes, {fields.reference, fields.first, fields.second, dst},
                             [&](const VideoPasses &passes) {
                               if (!conversion.converts) return;
                               passes.convert_fields(ctx, fields, dst, conversion.order,
                                                     conversion.format, conversion.motion_test);
                             });
}

}  // namespace ppl

using namespace ppl;

#define PPL_PROGRESSIVE_DRIVER(name, pass, order)                                             \
  uint8_t PPL_CALL name(PplContext *ctx, const uint8_t *src, uint8_t *dst, uint32_t width,    \
                        uint32_t height, uint32_t out_width, uint32_t out_height) {           \
    return process_video_frame(                                                               \
        *ctx, {width, height, out_width, out_height}, {src, dst},                             \
        [&](const VideoPasses &passes) { passes.pass(*ctx, PackedOrder::order, src, dst); }); \
  }

PPL_PROGRESSIVE_DRIVER(ppl_process_yuyvtoi420, to_i420, yuyv)
PPL_PROGRESSIVE_DRIVER(ppl_process_uyvytoi420, to_i420, uyvy)
PPL_PROGRESSIVE_DRIVER(ppl_process_yuyvtorgb24, to_rgb24, yuyv)
PPL_PROGRESSIVE_DRIVER(ppl_process_uyvytorgb24, to_rgb24, uyvy)

#undef PPL_PROGRESSIVE_DRIVER

// One operation under two names: the low byte of a pair is always taken as luma.
uint8_t PPL_CALL ppl_process_yuyvyyyytoi420(PplContext *ctx, const uint8_t *src, uint8_t *dst,
                                            uint32_t width, uint32_t height, uint32_t out_width,
                                            uint32_t out_height) {
  return process_video_frame(
      *ctx, {width, height, out_width, out_height}, {src, dst},
      [&](const VideoPasses &passes) { passes.unpack_yyyy(*ctx, src, dst); });
}

uint8_t PPL_CALL ppl_process_uyvyyyyytoi420(PplContext *ctx, const uint8_t *src, uint8_t *dst,
                                            uint32_t width, uint32_t height, uint32_t out_width,
                                            uint32_t out_height) {
  return ppl_process_yuyvyyyytoi420(ctx, src, dst, width, height, out_width, out_height);
}

// Counts the frame and converts nothing. Its result is 0 in any case.
uint8_t PPL_CALL ppl_process_rgb24torgb32(PplContext *ctx, const uint8_t *src, uint8_t *dst,
                                          uint32_t width, uint32_t height, uint32_t out_width,
                                          uint32_t out_height) {
  process_video_frame(*ctx, {width, height, out_width, out_height}, {src, dst},
                      [](const VideoPasses &) {});
  return 0;
}

#define PPL_FIELD_DRIVER(name, order, format)                                                  \
  uint8_t PPL_CALL name(PplContext *ctx, const uint8_t *reference_field,                       \
                        const uint8_t *first_field, const uint8_t *second_field, uint8_t *out, \
                        uint32_t width, uint32_t height, uint32_t out_width,                   \
                        uint32_t out_height) {                                                 \
    return process_fields(*ctx, {reference_field, first_field, second_field}, out,             \
                          {width, height, out_width, out_height},                              \
                          {PackedOrder::order, Format::format, MotionTest::on});               \
  }

PPL_FIELD_DRIVER(ppl_process_intlyuyvtoyuyv, yuyv, yuyv)
PPL_FIELD_DRIVER(ppl_process_intluyvytouyvy, uyvy, uyvy)
PPL_FIELD_DRIVER(ppl_process_intlyuyvtoi420, yuyv, i420)
PPL_FIELD_DRIVER(ppl_process_intluyvytoi420, uyvy, i420)
PPL_FIELD_DRIVER(ppl_process_intlyuyvtorgb24, yuyv, rgb24)
PPL_FIELD_DRIVER(ppl_process_intluyvytorgb24, uyvy, rgb24)

#undef PPL_FIELD_DRIVER
