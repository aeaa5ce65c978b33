#include "pictures/file_formats.h"

#include <fmt/core.h>
#include <png.h>

#include "base/failure.h"

namespace ppl::tool {
namespace {

Bytes to_bytes(const std::string &text) { return Bytes(text.begin(), text.end()); }

}  // namespace

Bytes encode_png(const Picture &picture) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = picture.size.width;
  image.height = picture.size.height;
  image.format = PNG_FORMAT_RGB;
  png_alloc_size_t size = 0;
  Bytes bytes;
  if (png_image_write_get_memory_size(image, size, 0, picture.rgb.data(), 0, nullptr)) {
    bytes.resize(size);
    if (png_image_write_to_memory(&image, bytes.data(), &size, 0, picture.rgb.data(), 0, nullptr)) {
      bytes.resize(size);
      return bytes;
    }
  }
  throw Failure(fmt::format("cannot encode the PNG picture: {}", image.message));
}

Bytes encode_ppm(const Picture &picture) {
  Bytes bytes = to_bytes(fmt::format("P6\n{} {}\n255\n", picture.size.width, picture.size.height));
  bytes.insert(bytes.end(), picture.rgb.begin(), picture.rgb.end());
  return bytes;
}

Picture read_png(const std::string &path) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_file(&image, path.c_str()))
    throw Failure(fmt::format("cannot read '{}' as PNG: {}", path, image.message));
  image.format = PNG_FORMAT_RGB;
  Picture picture({image.width, image.height});
  // A transparent picture is laid on black.
  const png_color black{0, 0, 0};
  if (!png_image_finish_read(&image, &black, picture.rgb.data(), 0, nullptr)) {
    const std::string message = image.message;
    png_image_free(&image);
    throw Failure(fmt::format("cannot read '{}' as PNG: {}", path, message));
  }
  return picture;
}

Bytes y4m_header(Format format, Size size, Scan scan) {
  if (is_rgb(format))
    throw Failure(
        fmt::format("a .y4m file holds Y, U, V and not {}: use --format i420, yuyv or uyvy",
                    format_name(format)));
  const char letter = scan == Scan::progressive ? 'p' : scan == Scan::even_lines_first ? 't' : 'b';
  return to_bytes(fmt::format("YUV4MPEG2 W{} H{} F30:1 I{} A1:1 {} XCOLORRANGE=LIMITED\n",
                              size.width & ~1u, size.height & ~1u, letter,
                              format == Format::i420 ? "C420jpeg" : "C422"));
}

Bytes y4m_frame(const FrameView &frame) {
  const uint32_t stride = frame.size.width;
  const uint32_t width = stride & ~1u, height = frame.size.height & ~1u;
  Bytes bytes = to_bytes("FRAME\n");
  bytes.reserve(bytes.size() + 2 * static_cast<size_t>(width) * height);
  if (frame.format == Format::i420) {
    const auto add_plane = [&](const uint8_t *plane, uint32_t plane_stride, uint32_t columns,
                               uint32_t lines) {
      for (uint32_t y = 0; y < lines; ++y, plane += plane_stride)
        bytes.insert(bytes.end(), plane, plane + columns);
    };
    const size_t pixels = static_cast<size_t>(stride) * frame.size.height;
    add_plane(frame.data, stride, width, height);
    add_plane(frame.data + pixels, stride / 2, width / 2, height / 2);
    add_plane(frame.data + pixels + pixels / 4, stride / 2, width / 2, height / 2);
    return bytes;
  }
  // Packed pairs: luma at y0 and y0 + 2, U and V at the two other places.
  const size_t y0 = frame.format == Format::yuyv ? 0 : 1, u = 1 - y0;
  const auto add_samples = [&](size_t first, size_t step) {
    for (uint32_t y = 0; y < height; ++y) {
      const uint8_t *line = frame.data + 2 * static_cast<size_t>(stride) * y;
      for (size_t i = first; i < 2 * static_cast<size_t>(width); i += step)
        bytes.push_back(line[i]);
    }
  };
  add_samples(y0, 2);
  add_samples(u, 4);
  add_samples(u + 2, 4);
  return bytes;
}

}  // namespace ppl::tool
