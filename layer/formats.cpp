// Names and sizes of what comes in and goes out.
#include <algorithm>
#include <cctype>

#include "words.h"

namespace ppl {
namespace {

using detail::refuse;

std::string lower_case(std::string_view text) {
  std::string lower(text);
  for (char &c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return lower;
}

constexpr std::string_view mosaic_names[] = {"bggr", "gbrg", "grbg", "rggb"};

// The samples of a mosaic as V4L2 calls them, in the order of `Mosaic`.
struct RawName {
  unsigned bits;
  Packing packing;
  std::string_view suffix;
  std::string_view fourcc[4];
};

constexpr RawName raw_names[] = {
    {8, Packing::plain, "8", {"BA81", "GBRG", "GRBG", "RGGB"}},
    {10, Packing::plain, "10", {"BG10", "GB10", "BA10", "RG10"}},
    {10, Packing::mipi, "10p", {"pBAA", "pGAA", "pgAA", "pRAA"}},
    {12, Packing::plain, "12", {"BG12", "GB12", "BA12", "RG12"}},
    {12, Packing::mipi, "12p", {"pBCC", "pGCC", "pgCC", "pRCC"}},
    {14, Packing::plain, "14", {"BG14", "GB14", "GR14", "RG14"}},
    {16, Packing::plain, "16", {"BYR2", "GB16", "GR16", "RG16"}},
};

constexpr std::string_view raw_advice =
    "take bggr, gbrg, grbg or rggb with 8, 10, 12, 14 or 16 bits, such as rggb10, with a p for "
    "MIPI's packing of 10 and 12 bits, such as rggb10p, or V4L2's name";

const RawName &name_of_samples(const RawFormat &format) {
  const auto *found = std::find_if(std::begin(raw_names), std::end(raw_names), [&](auto &row) {
    return row.bits == format.bits && row.packing == format.packing;
  });
  if (found == std::end(raw_names))
    refuse("there are no raw frames of ", format.bits, " bits",
           format.packing == Packing::mipi ? " in the packing of MIPI" : "",
           ": take 8, 10, 12, 14 or 16 bits, packed 10 or 12");
  return *found;
}

bool find_raw(std::string_view name, RawFormat &format) {
  const std::string lower = lower_case(name);
  for (size_t mosaic = 0; mosaic < 4; ++mosaic) {
    for (const RawName &row : raw_names) {
      const std::string plain = std::string(mosaic_names[mosaic]) + std::string(row.suffix);
      const bool is_it = name == row.fourcc[mosaic] || lower == plain ||
                         (row.bits == 8 && lower == mosaic_names[mosaic]);
      if (!is_it) continue;
      format.mosaic = static_cast<Mosaic>(mosaic);
      format.bits = row.bits;
      format.packing = row.packing;
      return true;
    }
  }
  return false;
}

constexpr std::string_view video_names[] = {"yuyv", "uyvy", "yyyy"};

bool find_video(std::string_view name, VideoFormat &format) {
  std::string lower = lower_case(name);
  if (lower == "yuy2") lower = "yuyv";
  const auto *found = std::find(std::begin(video_names), std::end(video_names), lower);
  if (found == std::end(video_names)) return false;
  format.packing = static_cast<VideoPacking>(found - std::begin(video_names));
  return true;
}

// Bytes up to the end of the last line.
size_t bytes_of_lines(size_t stride, size_t line_bytes, size_t lines) {
  return lines == 0 ? 0 : (stride ? stride : line_bytes) * (lines - 1) + line_bytes;
}

}  // namespace

RawFormat RawFormat::named(std::string_view name, uint32_t width, uint32_t height, size_t stride) {
  RawFormat format{.width = width, .height = height, .stride = stride};
  if (!find_raw(name, format)) refuse("'", name, "' is no format of raw frames: ", raw_advice);
  return format;
}

std::string RawFormat::name() const {
  const RawName &row = name_of_samples(*this);
  std::string words(mosaic_names[static_cast<size_t>(mosaic)]);
  return bits == 8 ? words : words + std::string(row.suffix);
}

std::string RawFormat::fourcc() const {
  return std::string(name_of_samples(*this).fourcc[static_cast<size_t>(mosaic)]);
}

size_t RawFormat::line_bytes() const {
  name_of_samples(*this);
  if (packing == Packing::plain) return bits == 8 ? width : size_t{2} * width;
  // Groups of four samples in five bytes, of two in three.
  return bits == 10 ? (size_t{width} + 3) / 4 * 5 : (size_t{width} + 1) / 2 * 3;
}

size_t RawFormat::bytes() const { return bytes_of_lines(stride, line_bytes(), height); }

VideoFormat VideoFormat::named(std::string_view name, uint32_t width, uint32_t height,
                               size_t stride) {
  VideoFormat format{.width = width, .height = height, .stride = stride};
  if (!find_video(name, format)) refuse("'", name, "' is no packed video: take yuyv, uyvy or yyyy");
  return format;
}

std::string VideoFormat::name() const {
  return std::string(video_names[static_cast<size_t>(packing)]);
}

size_t VideoFormat::line_bytes() const {
  return packing == VideoPacking::yyyy ? size_t{3} * width / 2 : size_t{2} * width;
}

size_t VideoFormat::bytes() const {
  return scan == Scan::separate ? field_bytes() : bytes_of_lines(stride, line_bytes(), height);
}

size_t VideoFormat::field_bytes() const { return bytes_of_lines(stride, line_bytes(), height / 2); }

Input input_named(std::string_view name, uint32_t width, uint32_t height, size_t stride) {
  RawFormat raw{.width = width, .height = height, .stride = stride};
  if (find_raw(name, raw)) return raw;
  VideoFormat video{.width = width, .height = height, .stride = stride};
  if (find_video(name, video)) return video;
  refuse("'", name,
         "' is no format of frames: take yuyv, uyvy or yyyy for packed video; for raw "
         "frames ",
         raw_advice);
}

std::string_view name_of(PixelFormat format) {
  constexpr std::string_view names[] = {"i420", "yuyv", "uyvy", "rgb24", "rgb32"};
  return names[static_cast<size_t>(format)];
}

PixelFormat pixel_format_named(std::string_view name) {
  const std::string lower = lower_case(name);
  for (const PixelFormat format : all_pixel_formats)
    if (lower == name_of(format)) return format;
  if (lower == "yu12") return PixelFormat::i420;
  if (lower == "yuy2") return PixelFormat::yuyv;
  if (lower == "bgr3") return PixelFormat::rgb24;
  if (lower == "xr24") return PixelFormat::rgb32;
  refuse("'", name, "' is no format of pictures: take i420, yuyv, uyvy, rgb24 or rgb32");
}

std::string_view name_of(Tier tier) {
  constexpr std::string_view names[] = {"best", "p3", "sse2"};
  return names[static_cast<size_t>(tier)];
}

std::string_view quality_text(uint32_t quality) {
  constexpr std::string_view texts[] = {"accurate demosaic, sharpened",
                                        "accurate demosaic",
                                        "demosaic by averages",
                                        "demosaic within the cell",
                                        "grey copy of the samples",
                                        "nothing",
                                        "nothing",
                                        "nothing",
                                        "nothing",
                                        "grey copy of the samples",
                                        "0 with flat areas smoothed",
                                        "1 with flat areas smoothed",
                                        "samples as grey, sharpened",
                                        "samples as grey",
                                        "green accurate, chroma smoothed"};
  return quality < std::size(texts) ? texts[quality] : std::string_view();
}

Target::Target(std::span<const Plane> planes) : plane_count_(planes.size()) {
  if (planes.empty() || planes.size() > planes_.size())
    refuse("a picture has one plane or three, not ", planes.size());
  std::copy(planes.begin(), planes.end(), planes_.begin());
}

Target::Target(std::initializer_list<Plane> planes)
    : Target(std::span<const Plane>(planes.begin(), planes.size())) {}

}  // namespace ppl
