// Packed video: sizes, bracket and fallback. Both tiers give the same.
#include <cstring>
#include <initializer_list>

#include "model/drivers.h"
#include "model/machine.h"
#include "model/packed_video.h"
#include "model/report.h"

namespace ppl_model {

namespace {

struct Sizes {
  uint32_t width, height, out_width, out_height;
  uint32_t out_pixels() const { return out_width * out_height; }
};

using Pointers = std::initializer_list<const uint8_t *>;

bool all_aligned(Pointers pointers, uintptr_t boundary) {
  for (const uint8_t *pointer : pointers)
    if (!is_aligned(pointer, boundary)) return false;
  return true;
}

// False if the sizes are refused.
bool take_sizes(PplContext *ctx, const Sizes &sizes) {
  const PlainState &plain = ctx->plain;
  const auto same = [](uint32_t asked, int32_t stored) {
    return asked == static_cast<uint32_t>(stored);
  };
  return (same(sizes.width, plain.frame_width) && same(sizes.height, plain.frame_height) &&
          same(sizes.out_width, plain.out_width) && same(sizes.out_height, plain.out_height)) ||
         ppl_new_frame_sizes(ctx, sizes.width, sizes.height, sizes.out_width, sizes.out_height) !=
             0;
}

// What every driver does around its conversion.
template <typename Convert>  // Convert(Output &)
void run_conversion(const PplContext *ctx, uint8_t *dst, Convert convert) {
  // Counts of black lines below 0 leave the picture open.
  if (ctx->decimation_top_black_lines < 0 || ctx->decimation_bottom_black_lines < 0) {
    report().picture_is_free = true;
    return;
  }
  Output output(dst, INT64_MAX);
  convert(output);
  output.report_open_bytes();
}

// What every entry function does around its driver.
template <typename Driver, typename Fallback>
uint8_t run_entry(Pointers pointers, const uint8_t *dst, Driver driver, Fallback fallback) {
  report() = {};
  if (all_aligned(pointers, 8) && is_aligned(dst, 8) && machine::has_tier(Tier::p3) &&
      machine::save())
    return driver();
  fallback();
  return 0;
}

void write_grey_fallback(const uint8_t *src, uint8_t *dst, uint32_t pixels) {
  std::memmove(dst, src, pixels);
  std::memset(dst + pixels, 128, pixels / 2);
}

void write_white_fallback(uint8_t *dst, uint32_t pixels, uint32_t pixel_bytes) {
  std::memset(dst, 255, pixels * pixel_bytes);
}

// ---- One source

enum class Fallback { grey, white_rgb24, white_rgb32 };

struct VideoConversion {
  void (*convert)(const PplContext *ctx, const uint8_t *src, Output &output);  // null: none
  Fallback fallback;
};

template <Packing packing>
constexpr VideoConversion to_i420 = {[](const PplContext *ctx, const uint8_t *src, Output &output) {
                                       convert_to_i420(ctx, packing, src, output);
                                     },
                                     Fallback::grey};
template <Packing packing>
constexpr VideoConversion to_rgb24 = {
    [](const PplContext *ctx, const uint8_t *src, Output &output) {
      convert_to_rgb24(ctx, packing, src, output);
    },
    Fallback::white_rgb24};
constexpr VideoConversion yyyy_to_i420 = {convert_yyyy_to_i420, Fallback::grey};
constexpr VideoConversion nothing = {nullptr, Fallback::white_rgb32};

uint8_t process(PplContext *ctx, const VideoConversion &conversion, const uint8_t *src,
                uint8_t *dst, const Sizes &sizes) {
  report() = {};
  if (!take_sizes(ctx, sizes)) return 0;
  ++ctx->n_frame;
  if (conversion.convert == nullptr) return 0;
  run_conversion(ctx, dst, [&](Output &output) { conversion.convert(ctx, src, output); });
  return 1;
}

uint8_t enter(PplContext *ctx, const VideoConversion &conversion, const uint8_t *src, uint8_t *dst,
              const Sizes &sizes) {
  const auto fallback = [&] {
    switch (conversion.fallback) {
      case Fallback::grey:
        return write_grey_fallback(src, dst, sizes.out_pixels());
      case Fallback::white_rgb24:
        return write_white_fallback(dst, sizes.out_pixels(), 3);
      case Fallback::white_rgb32:
        return write_white_fallback(dst, sizes.out_pixels(), 4);
    }
  };
  return run_entry(
      {src}, dst, [&] { return process(ctx, conversion, src, dst, sizes); }, fallback);
}

// ---- Two fields

struct FieldsConversion {
  Packing packing;
  Format format;
  MotionTest motion;
  bool converts = true;
};

using enum Packing;
using enum MotionTest;
// Two names of one operation, which converts nothing.
constexpr FieldsConversion no_cross_weave = {uyvy, Format::yuyv, off, false};

uint8_t process(PplContext *ctx, const FieldsConversion &conversion, const Fields &fields,
                uint8_t *out, const Sizes &sizes) {
  report() = {};
  if (!take_sizes(ctx, sizes)) return 0;
  ++ctx->n_frame;
  if (!conversion.converts) return 1;
  run_conversion(ctx, out, [&](Output &output) {
    convert_fields(ctx, conversion.packing, conversion.format, conversion.motion, fields, output);
  });
  return 1;
}

uint8_t enter(PplContext *ctx, const FieldsConversion &conversion, const Fields &fields,
              uint8_t *out, const Sizes &sizes) {
  const uint32_t pixels = sizes.out_pixels();
  const auto fallback = [&] {
    if (conversion.format == Format::rgb24) return write_white_fallback(out, pixels, 3);
    if (conversion.format == Format::i420) return write_grey_fallback(fields.first, out, pixels);
    std::memmove(out, fields.first, pixels);
    std::memmove(out + pixels, fields.second, pixels);
  };
  return run_entry(
      {fields.reference, fields.first, fields.second}, out,
      [&] { return process(ctx, conversion, fields, out, sizes); }, fallback);
}

}  // namespace

#define PPL_MODEL_VIDEO(name, action, conversion)                                                  \
  uint8_t name(PplContext *ctx, const uint8_t *src, uint8_t *dst, uint32_t width, uint32_t height, \
               uint32_t out_width, uint32_t out_height) {                                          \
    return action(ctx, conversion, src, dst, Sizes{width, height, out_width, out_height});         \
  }

PPL_MODEL_VIDEO(YUYVToI420MMX, enter, to_i420<yuyv>)
PPL_MODEL_VIDEO(UYVYToI420MMX, enter, to_i420<uyvy>)
PPL_MODEL_VIDEO(YUYVToRGB24MMX, enter, to_rgb24<yuyv>)
PPL_MODEL_VIDEO(UYVYToRGB24MMX, enter, to_rgb24<uyvy>)
PPL_MODEL_VIDEO(YUYVYYYYToI420MMX, enter, yyyy_to_i420)
PPL_MODEL_VIDEO(UYVYYYYYToI420MMX, enter, yyyy_to_i420)
PPL_MODEL_VIDEO(RGB24ToRGB32MMX, enter, nothing)
PPL_MODEL_VIDEO(ppl_process_yuyvtoi420, process, to_i420<yuyv>)
PPL_MODEL_VIDEO(ppl_process_uyvytoi420, process, to_i420<uyvy>)
PPL_MODEL_VIDEO(ppl_process_yuyvtorgb24, process, to_rgb24<yuyv>)
PPL_MODEL_VIDEO(ppl_process_uyvytorgb24, process, to_rgb24<uyvy>)
PPL_MODEL_VIDEO(ppl_process_yuyvyyyytoi420, process, yyyy_to_i420)
PPL_MODEL_VIDEO(ppl_process_uyvyyyyytoi420, process, yyyy_to_i420)
PPL_MODEL_VIDEO(ppl_process_rgb24torgb32, process, nothing)

#define PPL_MODEL_FIELDS(name, action, ...)                                                        \
  uint8_t name(PplContext *ctx, const uint8_t *reference_field, const uint8_t *first_field,        \
               const uint8_t *second_field, uint8_t *out, uint32_t width, uint32_t height,         \
               uint32_t out_width, uint32_t out_height) {                                          \
    return action(ctx, FieldsConversion __VA_ARGS__, {reference_field, first_field, second_field}, \
                  out, {width, height, out_width, out_height});                                    \
  }

PPL_MODEL_FIELDS(IntlYUYVToYUYVMMX, enter, {yuyv, Format::yuyv, on})
PPL_MODEL_FIELDS(IntlYUYVToYUYVMMX_no_motion, enter, {yuyv, Format::yuyv, off})
PPL_MODEL_FIELDS(IntlUYVYToUYVYMMX, enter, {uyvy, Format::uyvy, on})
PPL_MODEL_FIELDS(IntlUYVYToUYVYMMX_no_motion, enter, {uyvy, Format::uyvy, off})
PPL_MODEL_FIELDS(IntlUYVYToYUYVMMX, enter, {uyvy, Format::yuyv, on})
PPL_MODEL_FIELDS(IntlUYVYToYUYVMMX_no_motion, enter, {no_cross_weave})
PPL_MODEL_FIELDS(IntlYUYVToUYVYMMX, enter, {yuyv, Format::uyvy, on})
PPL_MODEL_FIELDS(IntlYUYVToUYVYMMX_no_motion, enter, {no_cross_weave})
PPL_MODEL_FIELDS(IntlYUYVToI420MMX, enter, {yuyv, Format::i420, on})
PPL_MODEL_FIELDS(IntlYUYVToI420MMX_no_motion, enter, {yuyv, Format::i420, off})
PPL_MODEL_FIELDS(IntlUYVYToI420MMX, enter, {uyvy, Format::i420, on})
PPL_MODEL_FIELDS(IntlUYVYToI420MMX_no_motion, enter, {uyvy, Format::i420, off})
PPL_MODEL_FIELDS(IntlYUYVToRGB24MMX, enter, {yuyv, Format::rgb24, on})
PPL_MODEL_FIELDS(IntlYUYVToRGB24MMX_no_motion, enter, {yuyv, Format::rgb24, off})
PPL_MODEL_FIELDS(IntlUYVYToRGB24MMX, enter, {uyvy, Format::rgb24, on})
PPL_MODEL_FIELDS(IntlUYVYToRGB24MMX_no_motion, enter, {uyvy, Format::rgb24, off})
PPL_MODEL_FIELDS(ppl_process_intlyuyvtoyuyv, process, {yuyv, Format::yuyv, on})
PPL_MODEL_FIELDS(ppl_process_intluyvytouyvy, process, {uyvy, Format::uyvy, on})
PPL_MODEL_FIELDS(ppl_process_intlyuyvtoi420, process, {yuyv, Format::i420, on})
PPL_MODEL_FIELDS(ppl_process_intluyvytoi420, process, {uyvy, Format::i420, on})
PPL_MODEL_FIELDS(ppl_process_intlyuyvtorgb24, process, {yuyv, Format::rgb24, on})
PPL_MODEL_FIELDS(ppl_process_intluyvytorgb24, process, {uyvy, Format::rgb24, on})

}  // namespace ppl_model
