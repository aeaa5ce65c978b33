#include "sheets/canvas.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "simulator/font5x7.h"

namespace ppl::tool {
namespace {

constexpr int advance = simulator::glyph_width + 1;

uint8_t mix(uint8_t from, uint8_t to, double share) {
  return static_cast<uint8_t>(std::lround(from + (to - from) * share));
}

int height_of(Rectangle area, double value) {
  return static_cast<int>(std::lround(std::clamp(value, 0.0, 1.0) * area.height));
}

// The source pixels first .. last - 1 that make up a pixel of a scaled line.
struct Span {
  uint32_t first, last;
};

Span source_span(int place, int places, uint32_t pixels) {
  const auto at = [&](int p) {
    return static_cast<uint32_t>(static_cast<uint64_t>(p) * pixels / static_cast<uint64_t>(places));
  };
  return {at(place), std::max(at(place) + 1, at(place + 1))};
}

}  // namespace

Colour mix(Colour from, Colour to, double share) {
  return {mix(from.r, to.r, share), mix(from.g, to.g, share), mix(from.b, to.b, share)};
}

int text_width(std::string_view text, int scale) {
  return text.empty() ? 0 : (static_cast<int>(text.size()) * advance - 1) * scale;
}

int text_height(int scale) { return simulator::glyph_height * scale; }

std::string shortened(const std::string &text, size_t characters) {
  if (text.size() <= characters) return text;
  return ".." + text.substr(text.size() - (characters - 2));
}

Canvas::Canvas(Size size, Colour background) : picture_(size) {
  fill({0, 0, static_cast<int>(size.width), static_cast<int>(size.height)}, background);
}

void Canvas::set(int x, int y, Colour colour) {
  const int width = static_cast<int>(picture_.size.width);
  const int height = static_cast<int>(picture_.size.height);
  if (x < 0 || y < 0 || x >= width || y >= height) return;
  uint8_t *pixel = picture_.pixel(static_cast<uint32_t>(x), static_cast<uint32_t>(y));
  pixel[0] = colour.r;
  pixel[1] = colour.g;
  pixel[2] = colour.b;
}

void Canvas::fill(Rectangle area, Colour colour) {
  for (int y = area.y; y < area.bottom(); ++y)
    for (int x = area.x; x < area.right(); ++x) set(x, y, colour);
}

void Canvas::tint(Rectangle area, Colour colour, double share) {
  const int right = std::min(area.right(), static_cast<int>(picture_.size.width));
  const int bottom = std::min(area.bottom(), static_cast<int>(picture_.size.height));
  for (int y = std::max(area.y, 0); y < bottom; ++y) {
    for (int x = std::max(area.x, 0); x < right; ++x) {
      const uint8_t *pixel = picture_.pixel(static_cast<uint32_t>(x), static_cast<uint32_t>(y));
      set(x, y, tool::mix(Colour{pixel[0], pixel[1], pixel[2]}, colour, share));
    }
  }
}

void Canvas::outline(Rectangle area, Colour colour, int thickness) {
  fill({area.x, area.y, area.width, thickness}, colour);
  fill({area.x, area.bottom() - thickness, area.width, thickness}, colour);
  fill({area.x, area.y, thickness, area.height}, colour);
  fill({area.right() - thickness, area.y, thickness, area.height}, colour);
}

void Canvas::line(int x0, int y0, int x1, int y1, Colour colour) {
  const int steps = std::max({std::abs(x1 - x0), std::abs(y1 - y0), 1});
  for (int i = 0; i <= steps; ++i) {
    const double share = static_cast<double>(i) / steps;
    set(static_cast<int>(std::lround(x0 + (x1 - x0) * share)),
        static_cast<int>(std::lround(y0 + (y1 - y0) * share)), colour);
  }
}

void Canvas::dashes(int x, int y0, int y1, Colour colour) {
  for (int y = y0; y <= y1; ++y)
    if ((y - y0) % 8 < 5) set(x, y, colour);
}

void Canvas::text(int x, int y, std::string_view text, Colour colour, int scale) {
  for (const char character : text) {
    const uint8_t *rows = simulator::glyph_rows(character);
    for (int row = 0; row < simulator::glyph_height; ++row)
      for (int column = 0; column < simulator::glyph_width; ++column)
        if (rows[row] >> (simulator::glyph_width - 1 - column) & 1)
          fill({x + column * scale, y + row * scale, scale, scale}, colour);
    x += advance * scale;
  }
}

void Canvas::text_right(int x, int y, std::string_view text, Colour colour, int scale) {
  this->text(x - text_width(text, scale), y, text, colour, scale);
}

void Canvas::draw(const Picture &picture, Rectangle area) {
  for (int y = 0; y < area.height; ++y) {
    const Span rows = source_span(y, area.height, picture.size.height);
    for (int x = 0; x < area.width; ++x) {
      const Span columns = source_span(x, area.width, picture.size.width);
      uint32_t sum[3] = {};
      for (uint32_t v = rows.first; v < rows.last; ++v)
        for (uint32_t u = columns.first; u < columns.last; ++u)
          for (int c = 0; c < 3; ++c) sum[c] += picture.pixel(u, v)[c];
      const uint32_t count = (rows.last - rows.first) * (columns.last - columns.first);
      const auto mean = [&](int c) { return static_cast<uint8_t>((sum[c] + count / 2) / count); };
      set(area.x + x, area.y + y, {mean(0), mean(1), mean(2)});
    }
  }
}

void Canvas::bars(Rectangle area, int count, const std::function<double(int)> &value,
                  Colour colour) {
  for (int i = 0; i < count; ++i) {
    const int left = area.x + area.width * i / count;
    const int right = area.x + area.width * (i + 1) / count;
    const int height = height_of(area, value(i));
    fill({left, area.bottom() - height, right - left, height}, colour);
  }
}

void Canvas::curve(Rectangle area, int count, const std::function<double(int)> &value,
                   Colour colour, int thickness) {
  const auto x_of = [&](int i) { return area.x + (area.width - 1) * i / (count - 1); };
  const auto y_of = [&](int i) {
    return area.bottom() - 1 - std::min(height_of(area, value(i)), area.height - 1);
  };
  for (int i = 1; i < count; ++i)
    for (int t = 0; t < thickness; ++t)
      line(x_of(i - 1), y_of(i - 1) - t, x_of(i), y_of(i) - t, colour);
}

}  // namespace ppl::tool
