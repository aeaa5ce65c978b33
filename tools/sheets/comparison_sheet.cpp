#include "sheets/comparison_sheet.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>

#include "library/quality.h"
#include "sheets/canvas.h"
#include "sheets/palette.h"

namespace ppl::tool {
namespace {

constexpr int margin = 24, gap = 24, header_height = 40, columns = 3;
constexpr int whole_width = 320, view_height = 240, space_between = 8, crop_width = 240;
constexpr int tile_width = whole_width + space_between + crop_width;
constexpr int line_height = 20;

Picture cut(const Picture &picture, const Crop &crop) {
  Picture part({crop.width, crop.height});
  for (uint32_t y = 0; y < crop.height; ++y) {
    const uint8_t *line = picture.pixel(crop.x, crop.y + y);
    std::copy(line, line + 3 * static_cast<size_t>(crop.width), part.pixel(0, y));
  }
  return part;
}

// The largest area of the picture's shape that fits at a place; enlarged by whole numbers only.
Rectangle fitted(Size size, Rectangle place) {
  double scale = std::min(static_cast<double>(place.width) / size.width,
                          static_cast<double>(place.height) / size.height);
  if (scale > 1) scale = std::floor(scale);
  const auto scaled = [&](uint32_t n) {
    return std::max(1, static_cast<int>(std::lround(n * scale)));
  };
  return {place.x, place.y, scaled(size.width), scaled(size.height)};
}

class Sheet {
 public:
  Sheet(size_t tiles, Size frame, const Crop &crop, bool scores)
      : frame_(frame),
        crop_(crop),
        labels_(scores ? 2 : 1),
        canvas_(
            {columns * tile_width + (columns - 1) * gap + 2 * margin,
             static_cast<uint32_t>(margin + header_height + rows(tiles) * (tile_height() + gap))},
            palette::background) {}

  void heading(const std::string &left, const std::string &right) {
    canvas_.text(margin, margin, left, palette::text);
    canvas_.text_right(margin + columns * tile_width + (columns - 1) * gap, margin, right,
                       palette::faint);
  }

  void add(const Picture &picture, const std::string &title, const std::string &scores) {
    const int x = margin + next_ % columns * (tile_width + gap);
    int y = margin + header_height + next_ / columns * (tile_height() + gap);
    ++next_;
    canvas_.text(x, y, title, palette::text);
    if (labels_ > 1) canvas_.text(x, y + line_height, scores, palette::faint);
    y += labels_ * line_height;

    const Rectangle whole = fitted(frame_, {x, y, whole_width, view_height});
    canvas_.draw(picture, whole);
    const auto scaled = [&](uint32_t n, int pixels, uint32_t of) {
      return static_cast<int>(n) * pixels / static_cast<int>(of);
    };
    canvas_.outline({whole.x + scaled(crop_.x, whole.width, frame_.width) - 1,
                     whole.y + scaled(crop_.y, whole.height, frame_.height) - 1,
                     scaled(crop_.width, whole.width, frame_.width) + 2,
                     scaled(crop_.height, whole.height, frame_.height) + 2},
                    palette::mark);
    const Rectangle place{x + whole_width + space_between, y, crop_width, view_height};
    canvas_.draw(cut(picture, crop_), fitted({crop_.width, crop_.height}, place));
  }

  const Picture &picture() const { return canvas_.picture(); }

 private:
  static int rows(size_t tiles) { return (static_cast<int>(tiles) + columns - 1) / columns; }
  int tile_height() const { return labels_ * line_height + view_height; }

  Size frame_;
  Crop crop_;
  int labels_;
  Canvas canvas_;
  int next_ = 0;
};

std::string score_text(const Closeness &c) {
  std::string text =
      fmt::format("PSNR {:.2f}, luma {:.2f} dB  SSIM {:.4f}", c.psnr_rgb, c.psnr_luma, c.ssim_luma);
  if (c.shift_x || c.shift_y) text += fmt::format("  at {:+},{:+}", c.shift_x, c.shift_y);
  return text;
}

}  // namespace

Picture comparison_sheet(const QualityComparison &comparison, const Crop &crop,
                         const std::optional<Picture> &truth, const std::string &name) {
  Sheet sheet(comparison.results.size() + (truth ? 1 : 0), comparison.size, crop,
              truth.has_value());
  sheet.heading(shortened(name, 80),
                fmt::format("{}x{} to {}, tier {}, crop {}x{} at {},{}", comparison.size.width,
                            comparison.size.height, format_name(comparison.format),
                            tier_name(comparison.tier), crop.width, crop.height, crop.x, crop.y));
  if (truth) sheet.add(*truth, "truth", "");
  for (const QualityResult &result : comparison.results)
    sheet.add(result.picture,
              fmt::format("quality {}: {}", result.numbers, quality_name(result.quality)),
              result.closeness ? score_text(*result.closeness) : "");
  return sheet.picture();
}

}  // namespace ppl::tool
