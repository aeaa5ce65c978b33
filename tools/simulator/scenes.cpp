#include "simulator/scenes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "simulator/font5x7.h"
#include "simulator/portable_math.h"

namespace ppl::simulator {
namespace {

// A point's colour is asked for at pixel coordinates; (0, 0) is the top left corner of the frame.
struct Rectangle {
  double x, y, width, height;

  bool contains(double px, double py) const {
    return px >= x && px < x + width && py >= y && py < y + height;
  }
};

Light grey(double value) {
  const float v = static_cast<float>(value);
  return {v, v, v};
}

Light srgb(uint32_t code) {
  return {static_cast<float>(srgb_to_linear(static_cast<uint8_t>(code >> 16))),
          static_cast<float>(srgb_to_linear(static_cast<uint8_t>(code >> 8))),
          static_cast<float>(srgb_to_linear(static_cast<uint8_t>(code)))};
}

// Six columns of four: things of nature, bright colours, mixed colours, and greys from white to
// black.
constexpr uint32_t patch_codes[24] = {
    0x6A4A3C, 0xD3A58A, 0x5E86B5, 0x4F7038, 0x8C84C0, 0x5CC2B0,  //
    0xE07B20, 0x3F56A8, 0xD0485C, 0x552F6B, 0xA6C63C, 0xE8A820,  //
    0x2A3C98, 0x3C9A48, 0xB82C34, 0xF0CC1C, 0xC04898, 0x1090B0,  //
    0xF4F4F2, 0xC8C8C8, 0xA0A0A0, 0x787878, 0x505050, 0x303030,
};

// Skin from light to dark.
constexpr uint32_t skin_tones[6] = {0xF3D3BF, 0xE4B698, 0xCB946F, 0xA87049, 0x7C4C30, 0x4C2E20};

constexpr double surround = 0.12;

Light patches(const Rectangle &area, double x, double y) {
  const double column = (x - area.x) / area.width * 6, row = (y - area.y) / area.height * 4;
  const double u = column - std::floor(column), v = row - std::floor(row);
  if (u < 0.06 || u > 0.94 || v < 0.06 || v > 0.94) return grey(0.02);
  const int index = std::min(static_cast<int>(row), 3) * 6 + std::min(static_cast<int>(column), 5);
  return srgb(patch_codes[index]);
}

// Steps of equal distance in sRGB code on the upper half, a smooth ramp of it on the lower.
Light grey_steps(const Rectangle &area, double x, double y) {
  constexpr int steps = 16;
  const double position = (x - area.x) / area.width;
  if (y - area.y < area.height / 2)
    return srgb(0x010101u *
                static_cast<uint32_t>(255 * std::min(static_cast<int>(position * steps), 15) / 15));
  const double code = std::clamp(position, 0.0, 1.0) * 254.99;
  const auto low = static_cast<uint32_t>(code);
  const double part = code - low;
  return grey(srgb_to_linear(static_cast<uint8_t>(low)) * (1 - part) +
              srgb_to_linear(static_cast<uint8_t>(low + 1)) * part);
}

// Rings whose frequency grows from 0 in the middle to half a cycle a pixel at the nearer edges.
Light zone_plate(const Rectangle &area, double x, double y) {
  const double radius = std::min(area.width, area.height) / 2;
  const double dx = x - (area.x + area.width / 2), dy = y - (area.y + area.height / 2);
  const double squared = dx * dx + dy * dy;
  if (squared > radius * radius) return grey(0.5);
  return grey(0.5 + 0.45 * math::cos_turns(squared / (4 * radius)));
}

constexpr std::array<const char *, 6> text_lines = {
    "THE QUICK BROWN FOX JUMPS OVER THE LAZY DOG",
    "0123456789 (3.14) 50% A+B=C",
    "SPHINX OF BLACK QUARTZ, JUDGE MY VOW",
    "FINE TEXT: 1 DOT IS 1 PIXEL",
    "PACK MY BOX WITH FIVE DOZEN JUGS",
    "GAIN 256 = 1.0, HUE 0, SAT 256",
};

// Lines of text whose dots are 1, 1, 2, 2, 3, 3 ... pixels, dark on light; the dot sizes start anew
// after 4.
Light text(const Rectangle &area, double x, double y) {
  const Light paper = grey(0.85), ink = grey(0.03);
  double top = area.y + 4;
  for (int line = 0; top < area.y + area.height; ++line) {
    const int dot = line / 2 % 4 + 1;
    const double height = dot * (glyph_height + 2);
    if (y < top) return paper;
    if (y < top + height) {
      const int row = static_cast<int>((y - top) / dot);
      const double across = (x - area.x - 4) / dot;
      if (row >= glyph_height || across < 0 || x > area.x + area.width - 4) return paper;
      const char *characters = text_lines[static_cast<size_t>(line) % text_lines.size()];
      const size_t length = std::strlen(characters) + 3;
      const auto position = static_cast<size_t>(across / (glyph_width + 1)) % length;
      const int column = static_cast<int>(across) % (glyph_width + 1);
      if (position >= length - 3 || column >= glyph_width) return paper;
      return glyph_rows(characters[position])[row] >> (glyph_width - 1 - column) & 1 ? ink : paper;
    }
    top += height + 1;
  }
  return paper;
}

// Balls in six skin tones, lit from the upper left.
Light skin(const Rectangle &area, double x, double y) {
  const int columns = area.width > area.height * 1.2 ? 3 : 2, rows = 6 / columns;
  const double cell_width = area.width / columns, cell_height = area.height / rows;
  const int column = std::clamp(static_cast<int>((x - area.x) / cell_width), 0, columns - 1);
  const int row = std::clamp(static_cast<int>((y - area.y) / cell_height), 0, rows - 1);
  const double radius = std::min(cell_width, cell_height) * 0.45;
  const double u = (x - area.x - (column + 0.5) * cell_width) / radius;
  const double v = (y - area.y - (row + 0.5) * cell_height) / radius;
  const double squared = u * u + v * v;
  if (squared > 1) return srgb(0x3E5A78);
  const double facing = (-0.5 * u - 0.55 * v + 0.67 * std::sqrt(1 - squared));
  const double shade = 0.35 + 0.7 * std::max(0.0, facing);
  const Light tone = srgb(skin_tones[row * columns + column]);
  return {static_cast<float>(tone.r * shade), static_cast<float>(tone.g * shade),
          static_cast<float>(tone.b * shade)};
}

// A dark square turned by a small angle (slope 1 in 11, some 5 degrees) on a light ground.
Light slanted_edge(const Rectangle &area, double x, double y) {
  constexpr double slope = 1.0 / 11;
  const double dx = x - (area.x + area.width / 2), dy = y - (area.y + area.height / 2);
  const double half = std::min(area.width, area.height) * 0.32;
  const bool inside = std::fabs(dx + slope * dy) < half && std::fabs(dy - slope * dx) < half;
  return inside ? grey(0.05) : grey(0.75);
}

Light flat(const Rectangle &, double, double) { return grey(0.18); }

using Element = Light (*)(const Rectangle &, double, double);

struct Placed {
  Element element;
  Rectangle part;  // in fractions of the frame
};

// The element's own ground fills the gaps in between with dark grey.
constexpr Placed chart_parts[] = {
    {patches, {0.02, 0.02, 0.56, 0.50}},    {zone_plate, {0.60, 0.02, 0.38, 0.50}},
    {grey_steps, {0.02, 0.54, 0.96, 0.12}}, {text, {0.02, 0.68, 0.46, 0.30}},
    {skin, {0.50, 0.68, 0.26, 0.30}},       {slanted_edge, {0.78, 0.68, 0.20, 0.30}},
};

Light chart(const Rectangle &frame, double x, double y) {
  for (const Placed &placed : chart_parts) {
    const Rectangle area{placed.part.x * frame.width, placed.part.y * frame.height,
                         placed.part.width * frame.width, placed.part.height * frame.height};
    if (area.contains(x, y)) return placed.element(area, x, y);
  }
  return grey(surround);
}

struct Scene {
  const char *name;
  Element element;
};

constexpr Scene scenes[] = {
    {"chart", chart}, {"patches", patches}, {"greysteps", grey_steps}, {"zoneplate", zone_plate},
    {"text", text},   {"skin", skin},       {"edge", slanted_edge},    {"flat", flat},
};

// sRGB's decoding curve for all 256 codes.
const std::array<double, 256> &decoding_table() {
  static const std::array<double, 256> table = [] {
    std::array<double, 256> values{};
    for (size_t code = 0; code < values.size(); ++code) {
      const double c = static_cast<double>(code) / 255;
      values[code] = c <= 0.04045 ? c / 12.92 : math::pow((c + 0.055) / 1.055, 2.4);
    }
    return values;
  }();
  return table;
}

}  // namespace

const SceneName scene_names[] = {
    {"chart", "all of the following on one chart"},
    {"patches", "24 colour patches, the last row grey"},
    {"greysteps", "16 grey steps and a smooth ramp"},
    {"zoneplate", "rings up to half a cycle a pixel"},
    {"text", "fine text, dots of 1 to 4 pixels"},
    {"skin", "balls in six skin tones"},
    {"edge", "a square with slanted edges"},
    {"flat", "18 percent grey all over"},
    {nullptr, nullptr},
};

double srgb_to_linear(uint8_t code) { return decoding_table()[code]; }

uint8_t linear_to_srgb(double light) {
  if (!(light > 0)) return 0;
  if (light >= 1) return 255;
  const double c = light <= 0.0031308 ? 12.92 * light : 1.055 * math::pow(light, 1 / 2.4) - 0.055;
  return static_cast<uint8_t>(std::floor(255 * c + 0.5));
}

bool render_scene(const char *name, uint32_t width, uint32_t height, std::vector<Light> &light) {
  const Scene *scene = std::find_if(std::begin(scenes), std::end(scenes),
                                    [&](const Scene &s) { return std::strcmp(s.name, name) == 0; });
  if (scene == std::end(scenes)) return false;

  // A pixel collects the light of its whole area: the mean of 3 by 3 points.
  constexpr int points = 3;
  const Rectangle frame{0, 0, static_cast<double>(width), static_cast<double>(height)};
  light.resize(static_cast<size_t>(width) * height);
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      double r = 0, g = 0, b = 0;
      for (int j = 0; j < points; ++j) {
        for (int i = 0; i < points; ++i) {
          const Light point = scene->element(frame, x + (i + 0.5) / points, y + (j + 0.5) / points);
          r += point.r;
          g += point.g;
          b += point.b;
        }
      }
      constexpr int count = points * points;
      light[static_cast<size_t>(y) * width + x] = {static_cast<float>(r / count),
                                                   static_cast<float>(g / count),
                                                   static_cast<float>(b / count)};
    }
  }
  return true;
}

}  // namespace ppl::simulator
