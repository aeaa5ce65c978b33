#include "plan.h"

#include <algorithm>

#include "words.h"

namespace ppl {
namespace detail {
namespace {

// More than any buffer needs, and little enough for sizes to be computed without a thought.
constexpr size_t largest_stride = size_t{1} << 20;
constexpr uint32_t most_black_lines = 1024;
constexpr uint32_t highest_quality = 14;

constexpr RawDriver raw_drivers[] = {ppl_process_blrtoi420, ppl_process_blrtoyuyv,
                                     ppl_process_blrtouyvy, ppl_process_blrtorgb24,
                                     ppl_process_blrtorgb32};

bool is_grey_copy(uint32_t quality) { return quality == 4 || quality == 9; }
bool is_single_pass(uint32_t quality) { return quality == 3 || quality == 13; }

uint32_t rounded_down(uint32_t value, uint32_t unit) { return value / unit * unit; }

uint32_t scaled(uint32_t value, int decimation) {
  return decimation < 0 ? value * 2 : value >> decimation;
}

Layout make_layout(PixelFormat format, uint32_t width, uint32_t height) {
  Layout layout{.format = format, .width = width, .height = height};
  const auto add = [&layout](size_t line_bytes, uint32_t lines) {
    layout.planes[layout.plane_count++] = {layout.bytes, line_bytes, lines};
    layout.bytes += line_bytes * lines;
  };
  add(pixel_bytes(format) * width, height);
  if (format == PixelFormat::i420) {
    add(width / 2, height / 2);
    add(width / 2, height / 2);
  }
  return layout;
}

void require_output(const Output &output) {
  if (output.quality > highest_quality)
    refuse("quality ", output.quality, " is refused: the range is 0 to ", highest_quality);
  if (output.decimation < -1 || output.decimation > 2)
    refuse("decimation ", output.decimation, " is refused: the range is -1 to 2");
  const uint32_t top = output.black_lines_top, bottom = output.black_lines_bottom;
  if (top > most_black_lines || bottom > most_black_lines)
    refuse("black lines of ", top, " and ", bottom, " are refused: the range is 0 to ",
           most_black_lines, " each");
  if (output.format == PixelFormat::i420 && (top % 2 != 0 || bottom % 2 != 0))
    refuse("black lines of ", top, " and ", bottom,
           " are refused: i420 takes even numbers, since two lines share their chroma");
}

template <class Format>
void require_sizes(const Format &format) {
  const uint32_t width = format.width, height = format.height;
  // What is odd falls away later.
  if (width < 64 || width > 1281 || height < 14 || height == 16 || height == 17 || height > 1025)
    refuse_size(width, height, 64);
  const size_t line_bytes = format.line_bytes();
  if (format.stride != 0 && (format.stride < line_bytes || format.stride > largest_stride))
    refuse("the stride ", format.stride, " is refused: a line of ", width, " samples of ",
           format.name(), " takes ", line_bytes, " bytes, and the largest stride is ",
           largest_stride);
}

// ---- Raw frames ----

// Whether there is a picture, or why not.
void require_picture(const Output &output) {
  const uint32_t quality = output.quality;
  const PixelFormat format = output.format;
  const int decimation = output.decimation;
  const auto name = name_of(format);
  if (quality >= 5 && quality <= 8)
    refuse("quality ", quality, " makes no picture: take another one, such as 3");
  if (quality == 13 && format != PixelFormat::i420 && format != PixelFormat::rgb24)
    refuse("quality 13 makes no ", name, ": take i420 or rgb24, or another quality");
  if (quality == 14 && is_rgb(format))
    refuse("quality 14 makes no ", name, ": take i420, yuyv or uyvy, or quality 0");
  if (decimation == 2)
    refuse("raw frames have no picture at decimation 2, its lines run into each other: take 1");
  if (decimation < 0 && (is_grey_copy(quality) || quality == 13))
    refuse("quality ", quality, " is not doubled: take decimation 0 or 1, or another quality");
  if (decimation < 0 && format == PixelFormat::rgb32)
    refuse("rgb32 is not doubled: take rgb24, or decimation 0 or 1");
  if (decimation > 0 && is_grey_copy(quality) && format == PixelFormat::rgb24)
    refuse("quality ", quality, " makes no rgb24 of half the size: take rgb32 or i420");
}

// RGB24 in the P3 tier loses the samples of even columns while statistics are gathered.
bool has_stripes(const Output &output, Tier tier) {
  if (output.format != PixelFormat::rgb24 || tier != Tier::p3 || !output.statistics) return false;
  return (output.quality == 3 && output.decimation <= 0) ||
         (output.quality == 13 && output.decimation != 0);
}

// In single groups of 32 samples the grey copy stays inside its buffers, see ppl.h.
bool grey_copy_fits(uint32_t width, uint32_t height) {
  return width % 32 == 0 && uint64_t{width} * height % 128 == 0;
}

void plan_raw(Plan &plan, const RawFormat &raw, const Output &output, Tier tier) {
  require_picture(output);
  const uint32_t quality = output.quality;
  const int decimation = output.decimation;
  const bool multi_pass = !is_single_pass(quality) && !is_grey_copy(quality);
  const bool to_rgb24 = output.format == PixelFormat::rgb24;

  // Chroma belongs to two pixels, in i420 of two lines; halving halves once more.
  const uint32_t cell = decimation > 0 ? 4 : 2;
  plan.width = rounded_down(raw.width, is_rgb(output.format) ? 2 : cell);
  plan.height = rounded_down(raw.height, output.format == PixelFormat::i420 ? cell : 2);

  plan.grey_copy = is_grey_copy(quality);
  plan.takes_any_stride = is_single_pass(quality);
  plan.writes_past_ends = plan.grey_copy && !grey_copy_fits(plan.width, plan.height);
  plan.library_format = output.format;

  // The grey copy does not mind which colour a sample has, and knows no mirrors.
  if (!plan.grey_copy)
    plan.frame = {raw.mosaic == Mosaic::gbrg || raw.mosaic == Mosaic::rggb,
                  raw.mosaic == Mosaic::grbg || raw.mosaic == Mosaic::rggb};
  const bool is_reversed = is_rgb(output.format) && output.top_down;
  const Turn turn = {output.h_mirror != plan.frame.h,
                     (output.v_mirror != plan.frame.v) != is_reversed};
  const bool displaces_chroma =
      quality == 3 && output.format == PixelFormat::i420 && decimation == 0 && turn.h && turn.v;
  const bool tears = multi_pass && to_rgb24 && decimation < 0 && turn.h != turn.v;
  if (plan.grey_copy) {
    plan.picture = turn;
  } else {
    plan.mirrors = turn;
    plan.leaves_gaps = output.verbatim && (displaces_chroma || tears);
    // One vertical mirror more or less makes both right, and lines are turned easily.
    if (!output.verbatim && (displaces_chroma || tears)) {
      plan.mirrors.v = !turn.v;
      plan.picture.v = true;
    }
  }

  if (has_stripes(output, tier) && !output.verbatim) {
    if (decimation != 0)
      refuse("in the p3 tier quality ", quality, " spoils rgb24 at decimation ", decimation,
             " while statistics are gathered: switch the statistics off, or take i420");
    plan.library_format = PixelFormat::rgb32;
  }
  plan.raw = raw_drivers[static_cast<size_t>(plan.library_format)];

  const bool halves_packed =
      quality == 3 && decimation > 0 &&
      (output.format == PixelFormat::yuyv || output.format == PixelFormat::uyvy);
  plan.gathers_means = output.statistics && !plan.grey_copy && !halves_packed;
  plan.gathers_windows = plan.gathers_means && !is_single_pass(quality);
  plan.gathers_bands = plan.gathers_means && quality != 12 && quality != 13;
}

// ---- Packed video ----

// Null where there is none. Without the motion test two of the fields' functions convert nothing;
// with a reference that equals the odd lines the test finds no motion, and weaves.
struct Conversion {
  VideoPacking from;
  PixelFormat to;
  FrameFunction progressive;
  FieldsFunction motion, no_motion;
};

constexpr Conversion conversions[] = {
    {VideoPacking::yuyv, PixelFormat::i420, YUYVToI420MMX, IntlYUYVToI420MMX,
     IntlYUYVToI420MMX_no_motion},
    {VideoPacking::yuyv, PixelFormat::rgb24, YUYVToRGB24MMX, IntlYUYVToRGB24MMX,
     IntlYUYVToRGB24MMX_no_motion},
    {VideoPacking::yuyv, PixelFormat::yuyv, nullptr, IntlYUYVToYUYVMMX,
     IntlYUYVToYUYVMMX_no_motion},
    {VideoPacking::yuyv, PixelFormat::uyvy, nullptr, IntlYUYVToUYVYMMX, IntlYUYVToUYVYMMX},
    {VideoPacking::uyvy, PixelFormat::i420, UYVYToI420MMX, IntlUYVYToI420MMX,
     IntlUYVYToI420MMX_no_motion},
    {VideoPacking::uyvy, PixelFormat::rgb24, UYVYToRGB24MMX, IntlUYVYToRGB24MMX,
     IntlUYVYToRGB24MMX_no_motion},
    {VideoPacking::uyvy, PixelFormat::uyvy, nullptr, IntlUYVYToUYVYMMX,
     IntlUYVYToUYVYMMX_no_motion},
    {VideoPacking::uyvy, PixelFormat::yuyv, nullptr, IntlUYVYToYUYVMMX, IntlUYVYToYUYVMMX},
    {VideoPacking::yyyy, PixelFormat::i420, YUYVYYYYToI420MMX, nullptr, nullptr},
};

bool exists(const Conversion &conversion, bool in_fields) {
  return in_fields ? conversion.motion != nullptr : conversion.progressive != nullptr;
}

std::string targets(VideoPacking from, bool in_fields) {
  std::string names;
  for (const Conversion &conversion : conversions)
    if (conversion.from == from && exists(conversion, in_fields))
      names += (names.empty() ? "" : ", ") + std::string(name_of(conversion.to));
  return names;
}

const Conversion &conversion_of(const VideoFormat &video, PixelFormat to) {
  const bool in_fields = video.scan != Scan::progressive;
  for (const Conversion &conversion : conversions)
    if (conversion.from == video.packing && conversion.to == to && exists(conversion, in_fields))
      return conversion;
  const std::string possible = targets(video.packing, in_fields);
  if (possible.empty()) refuse(video.name(), " has no fields: make it progressive");
  refuse(in_fields ? "fields of " : "progressive frames of ", video.name(), " do not become ",
         name_of(to), ": take ", possible);
}

void plan_video(Plan &plan, const VideoFormat &video, const Output &output) {
  const Conversion &conversion = conversion_of(video, output.format);
  const int decimation = output.decimation;
  const bool in_fields = video.scan != Scan::progressive;
  if (!in_fields && decimation != 0) refuse("progressive video is not scaled: take decimation 0");
  if (in_fields && video.height % 2 != 0)
    refuse("the height ", video.height,
           " is refused: two fields have an even number of lines between them");

  // Smaller pictures are of whole pairs of pixels and, whatever the format, of lines.
  const uint32_t unit = 2u << std::max(decimation, 0);
  plan.width = rounded_down(video.width, unit);
  plan.height = rounded_down(video.height, unit);
  plan.library_format = output.format;

  const bool is_reversed = is_rgb(output.format) && output.top_down;
  const Turn turn = {output.h_mirror, output.v_mirror != is_reversed};
  const bool mirrors = !in_fields && output.format == PixelFormat::i420;
  (mirrors ? plan.mirrors : plan.picture) = turn;
  plan.lacks_v_plane = video.packing == VideoPacking::yyyy;

  if (!in_fields) {
    plan.progressive = conversion.progressive;
    return;
  }
  // Smaller pictures are made of the even lines alone.
  plan.keeps_odd_lines = video.tests_motion && decimation <= 0;
  // Without the motion test nothing is doubled.
  plan.fields = video.tests_motion || decimation < 0 ? conversion.motion : conversion.no_motion;
}

}  // namespace

void refuse_size(uint32_t width, uint32_t height, uint32_t least_width) {
  refuse("the size ", width, "x", height, " is refused: take widths from ", least_width,
         " to 1280 and heights of 14 or from 18 to 1024");
}

Plan make_plan(const Input &input, const Output &output, Tier tier) {
  std::visit([](const auto &format) { require_sizes(format); }, input);
  require_output(output);
  Plan plan;
  if (const auto *raw = std::get_if<RawFormat>(&input))
    plan_raw(plan, *raw, output, tier);
  else
    plan_video(plan, std::get<VideoFormat>(input), output);

  // What is left of the frame may have become too small.
  if (plan.width < 64 || plan.height < 14 || plan.height == 16)
    std::visit([](const auto &format) { refuse_size(format.width, format.height, 64); }, input);

  plan.picture_width = scaled(plan.width, output.decimation);
  plan.picture_height = scaled(plan.height, output.decimation);
  plan.library_layout = make_layout(plan.library_format, plan.picture_width, plan.picture_height);
  plan.picture_layout = make_layout(output.format, plan.picture_width, plan.picture_height);
  plan.layout =
      make_layout(output.format, plan.picture_width,
                  plan.picture_height + output.black_lines_top + output.black_lines_bottom);
  const bool is_bottom_up = is_rgb(output.format) && !output.top_down;
  plan.lines_before = is_bottom_up ? output.black_lines_bottom : output.black_lines_top;
  return plan;
}

}  // namespace detail

Layout layout_of(const Input &input, const Output &output) {
  const Tier tier = output.tier == Tier::p3 ? Tier::p3 : Tier::sse2;
  return detail::make_plan(input, output, tier).layout;
}

}  // namespace ppl
