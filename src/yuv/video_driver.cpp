#include "yuv/video_driver.h"

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
                             [&](const TierKernels &tier) {
                               if (!conversion.converts) return;
                               tier.convert_fields(ctx, fields, dst, conversion.luma_first,
                                                   conversion.format, conversion.tests_motion);
                             });
}

}  // namespace ppl

using namespace ppl;

#define PPL_PROGRESSIVE_DRIVER(name, passes, source)                                       \
  uint8_t PPL_CALL name(PplContext *ctx, const uint8_t *src, uint8_t *dst, uint32_t width, \
                        uint32_t height, uint32_t out_width, uint32_t out_height) {        \
    return process_video_frame(                                                            \
        *ctx, {width, height, out_width, out_height}, {src, dst},                          \
        [&](const TierKernels &tier) { tier.passes.source(*ctx, src, dst); });             \
  }

PPL_PROGRESSIVE_DRIVER(ppl_process_yuyvtoi420, progressive_i420, from_yuyv)
PPL_PROGRESSIVE_DRIVER(ppl_process_uyvytoi420, progressive_i420, from_uyvy)
PPL_PROGRESSIVE_DRIVER(ppl_process_yuyvtorgb24, progressive_rgb24, from_yuyv)
PPL_PROGRESSIVE_DRIVER(ppl_process_uyvytorgb24, progressive_rgb24, from_uyvy)

#undef PPL_PROGRESSIVE_DRIVER

// One operation under two names: the low byte of a pair is always taken as luma.
uint8_t PPL_CALL ppl_process_yuyvyyyytoi420(PplContext *ctx, const uint8_t *src, uint8_t *dst,
                                            uint32_t width, uint32_t height, uint32_t out_width,
                                            uint32_t out_height) {
  return process_video_frame(*ctx, {width, height, out_width, out_height}, {src, dst},
                             [&](const TierKernels &tier) { tier.unpack_yyyy(*ctx, src, dst); });
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
                      [](const TierKernels &) {});
  return 0;
}

#define PPL_FIELD_DRIVER(name, luma_first, format)                                             \
  uint8_t PPL_CALL name(PplContext *ctx, const uint8_t *reference_field,                       \
                        const uint8_t *first_field, const uint8_t *second_field, uint8_t *out, \
                        uint32_t width, uint32_t height, uint32_t out_width,                   \
                        uint32_t out_height) {                                                 \
    return process_fields(*ctx, {reference_field, first_field, second_field}, out,             \
                          {width, height, out_width, out_height}, {luma_first, format, true}); \
  }

PPL_FIELD_DRIVER(ppl_process_intlyuyvtoyuyv, true, format_yuyv)
PPL_FIELD_DRIVER(ppl_process_intluyvytouyvy, false, format_uyvy)
PPL_FIELD_DRIVER(ppl_process_intlyuyvtoi420, true, format_i420)
PPL_FIELD_DRIVER(ppl_process_intluyvytoi420, false, format_i420)
PPL_FIELD_DRIVER(ppl_process_intlyuyvtorgb24, true, format_rgb24)
PPL_FIELD_DRIVER(ppl_process_intluyvytorgb24, false, format_rgb24)

#undef PPL_FIELD_DRIVER
