#include "support/fill.h"

#include <string.h>

#include <algorithm>

namespace ppl_test {

const char *name_of(Fill fill) {
  switch (fill) {
    case Fill::random:
      return "random";
    case Fill::zero:
      return "zero";
    case Fill::full:
      return "full";
    case Fill::checker:
      return "checker";
    case Fill::ramp:
      return "ramp";
    case Fill::hot_pixel:
      return "hot_pixel";
    case Fill::dead_pixel:
      return "dead_pixel";
    case Fill::grey_cells:
      return "grey_cells";
    case Fill::flat_cells:
      return "flat_cells";
    case Fill::extremes:
      return "extremes";
  }
  return "?";
}

void fill_frame(std::span<uint8_t> bytes, size_t width, size_t stride, Fill fill, Random &random) {
  if (bytes.empty()) return;
  if (stride == 0) stride = width == 0 ? 1 : width;
  const size_t pitch = std::max(stride, width);
  const auto by_position = [&](auto value) {
    for (size_t i = 0; i < bytes.size(); ++i)
      bytes[i] = static_cast<uint8_t>(value(i % pitch, i / pitch));
  };
  switch (fill) {
    case Fill::random:
      for (size_t i = 0; i < bytes.size(); i += 8) {
        const uint64_t value = random.next();
        memcpy(&bytes[i], &value, std::min<size_t>(8, bytes.size() - i));
      }
      break;
    case Fill::zero:
      memset(bytes.data(), 0, bytes.size());
      break;
    case Fill::full:
      memset(bytes.data(), 255, bytes.size());
      break;
    case Fill::checker:
      by_position([](size_t x, size_t y) { return (x + y) % 2 * 255; });
      break;
    case Fill::ramp:
      by_position([](size_t x, size_t y) { return 3 * x + 7 * y; });
      break;
    case Fill::hot_pixel:
    case Fill::dead_pixel: {
      const uint8_t ground = fill == Fill::hot_pixel ? 0 : 255;
      memset(bytes.data(), ground, bytes.size());
      bytes[random.below(static_cast<uint32_t>(bytes.size()))] = static_cast<uint8_t>(255 - ground);
      break;
    }
    case Fill::grey_cells: {
      const uint32_t salt = static_cast<uint32_t>(random.next());
      by_position([&](size_t x, size_t y) {
        // One level per cell from a hash of its place, and a small step per sample.
        const auto cell =
            static_cast<uint32_t>((y / 2) * 0x9E3779B1u + (x / 2) * 0x85EBCA77u) ^ salt;
        return ((cell * 0xC2B2AE35u) >> 24) / 4 * 3 + ((cell >> (x % 2 + 2 * (y % 2))) & 15);
      });
      break;
    }
    case Fill::flat_cells: {
      const uint8_t samples[4] = {random.byte(), random.byte(), random.byte(), random.byte()};
      by_position([&](size_t x, size_t y) { return samples[x % 2 + 2 * (y % 2)]; });
      break;
    }
    case Fill::extremes:
      for (uint8_t &byte : bytes) byte = random.pick<uint8_t>({0, 1, 127, 128, 254, 255});
      break;
  }
}

}  // namespace ppl_test
