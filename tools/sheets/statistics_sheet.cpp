#include "sheets/statistics_sheet.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "sheets/canvas.h"
#include "sheets/palette.h"

namespace ppl::tool {
namespace {

constexpr int margin = 24, gap = 24, heading_height = 22, line_height = 22;
constexpr int left_width = 768, right_width = 568;
constexpr int upper_top = 136, frame_height = 614;
constexpr int right_x = margin + left_width + gap;
constexpr int lower_top = upper_top + heading_height + frame_height + gap;
constexpr int curve_size = 240;
static_assert(right_x + right_width + margin == static_cast<int>(statistics_sheet_size.width));

Colour grade_colour(Verdict::Grade grade) {
  switch (grade) {
    case Verdict::Grade::good:
      return palette::green;
    case Verdict::Grade::fair:
      return palette::amber;
    case Verdict::Grade::bad:
      break;
  }
  return palette::red;
}

std::string percent(double share) {
  return share > 0 && share < 0.0995 ? fmt::format("{:.1f} %", 100 * share)
                                     : fmt::format("{:.0f} %", 100 * share);
}

double level_of(const Rgb &mean) { return (mean.r + 2 * mean.g + mean.b) / 4; }

// The colour alone: the strongest channel at full strength.
Colour cast_of(const Rgb &mean) {
  const double most = std::max({mean.r, mean.g, mean.b, 1.0});
  const auto byte = [&](double v) { return static_cast<uint8_t>(std::lround(235 * v / most)); };
  return {byte(mean.r), byte(mean.g), byte(mean.b)};
}

class Sheet {
 public:
  Sheet(const FrameReport &report, const PplContext *context)
      : report_(report), context_(context), canvas_(statistics_sheet_size, palette::background) {}

  Picture draw(const std::string &name) {
    header(name);
    frame();
    histograms();
    curve(0, "gamma", ppl_rgb_gamma_table(context_));
    curve(1, "contrast", ppl_contrast_table(context_));
    window_colours();
    numbers();
    notes();
    return canvas_.picture();
  }

 private:
  static Rectangle lower_panel(int index) {
    return {margin + index * (curve_size + gap), lower_top + heading_height, curve_size,
            curve_size};
  }

  void heading(int x, int y, const std::string &text) { canvas_.text(x, y, text, palette::text); }

  void header(const std::string &name) {
    const std::string facts =
        fmt::format("{}x{}  quality {}  tier {}", report_.size.width, report_.size.height,
                    report_.quality, tier_name(report_.tier));
    canvas_.text(margin, margin, shortened(name, 70), palette::text);
    canvas_.text_right(right_x + right_width, margin, facts, palette::faint);
    int y = margin + 30;
    for (const Verdict *verdict : {&report_.exposure, &report_.white_balance}) {
      canvas_.fill({margin, y, 21, 21}, grade_colour(verdict->grade));
      canvas_.text(margin + 33, y, verdict->text, palette::white, 3);
      y += 34;
    }
  }

  // The frame with the windows over it: the level of each, and its colour as a swatch.
  void frame() {
    heading(margin, upper_top, "frame with window means");
    const double scale = std::min(static_cast<double>(left_width) / report_.size.width,
                                  static_cast<double>(frame_height) / report_.size.height);
    const auto scaled = [&](uint32_t pixels) {
      return std::max(1, static_cast<int>(std::lround(pixels * scale)));
    };
    const Rectangle panel{margin, upper_top + heading_height, left_width, frame_height};
    const int width = scaled(report_.size.width), height = scaled(report_.size.height);
    const Rectangle area{panel.x + (panel.width - width) / 2, panel.y, width, height};
    canvas_.draw(report_.picture, area);

    // Windows start at the raw frame's top left corner, which a mirror moves.
    const auto x_at = [&](uint32_t column) {
      const int x = scaled(column * report_.window_width);
      return column == 0 ? 0 : x;
    };
    const auto y_at = [&](uint32_t row) {
      const int y = scaled(row * report_.window_height);
      return row == 0 ? 0 : y;
    };
    for (uint32_t row = 0; row < window_rows; ++row) {
      for (uint32_t column = 0; column < window_columns; ++column) {
        Rectangle window{x_at(column), y_at(row), x_at(column + 1) - x_at(column) + 1,
                         y_at(row + 1) - y_at(row) + 1};
        if (report_.h_mirror) window.x = area.width - window.right();
        if (report_.v_mirror) window.y = area.height - window.bottom();
        window.x += area.x;
        window.y += area.y;
        canvas_.outline(window, {170, 170, 170});
        const std::optional<Rgb> &mean = report_.windows[row * window_columns + column];
        label(window, mean);
      }
    }
  }

  void label(Rectangle window, const std::optional<Rgb> &mean) {
    const std::string text = mean ? fmt::format("{:.0f}", level_of(*mean)) : "-";
    const int swatch = text_height(2);
    const int width = text_width(text, 2) + 4 + swatch;
    const Rectangle box{window.x + 4, window.y + 4, width + 8, swatch + 8};
    if (box.right() > window.right() - 2 || box.bottom() > window.bottom() - 2) return;
    canvas_.tint(box, {0, 0, 0}, 0.65);
    canvas_.text(box.x + 4, box.y + 4, text, palette::white);
    if (mean) canvas_.fill({box.right() - 4 - swatch, box.y + 4, swatch, swatch}, cast_of(*mean));
  }

  void histograms() {
    struct Channel {
      const char *name;
      const Histogram &all, &near_grey;
      Colour colour;
      int32_t low, high;  // the qual band
      int32_t gain, delta;
    };
    const Channel channels[] = {
        {"red", report_.histograms.r, report_.near_grey_histograms.r, palette::red,
         ppl_qual_R_min(context_), ppl_qual_R_max(context_), ppl_nf88_r_gain(context_),
         ppl_r_delta(context_)},
        {"green", report_.histograms.g, report_.near_grey_histograms.g, palette::green,
         ppl_qual_G_min(context_), ppl_qual_G_max(context_), ppl_nf88_g_gain(context_),
         ppl_g_delta(context_)},
        {"blue", report_.histograms.b, report_.near_grey_histograms.b, palette::blue,
         ppl_qual_B_min(context_), ppl_qual_B_max(context_), ppl_nf88_b_gain(context_),
         ppl_b_delta(context_)},
    };
    // One scale for all three, from the eighth highest bin, so that single spikes do not flatten
    // the rest. The ends do not count for it: they hold what was cut off.
    std::vector<double> heights;
    for (const Channel &channel : channels)
      heights.insert(heights.end(), channel.all.begin() + 1, channel.all.begin() + 250);
    std::nth_element(heights.begin(), heights.begin() + 7, heights.end(), std::greater<>());
    double top = 1.1 * heights[7];
    if (top <= 0) top = 1.1 * *std::max_element(heights.begin(), heights.begin() + 8);
    if (top <= 0) top = 1;

    constexpr int plot_height = 118, strip_height = 6, channel_step = 200, label_width = 56;
    int y = upper_top;
    for (const Channel &channel : channels) {
      heading(right_x, y, channel.name);
      canvas_.fill({right_x, y + 17, text_width(channel.name, 2), 2}, channel.colour);
      double low_end = 0, high_end = 0;
      for (size_t i = 0; i < 256; ++i) {
        if (i <= end_steps) low_end += channel.all[i];
        if (i >= 255 - end_steps) high_end += channel.all[i];
      }
      canvas_.text(right_x + label_width + 72, y, fmt::format("dark end {}", percent(low_end)),
                   palette::faint);
      canvas_.text_right(right_x + right_width, y, fmt::format("bright end {}", percent(high_end)),
                         high_end >= 0.05 ? palette::text : palette::faint);

      const Rectangle plot{right_x + label_width, y + heading_height, 512, plot_height};
      canvas_.fill(plot, palette::panel);
      for (int quarter = 1; quarter < 4; ++quarter)
        canvas_.fill({plot.x + quarter * 128, plot.y, 1, plot.height},
                     mix(palette::panel, palette::line, 0.5));
      const auto of = [&](const Histogram &bins) {
        return [&bins, top](int i) { return bins[static_cast<size_t>(i)] / top; };
      };
      canvas_.bars(plot, 256, of(channel.all), mix(palette::panel, channel.colour, 0.45));
      canvas_.bars(
          plot, 256,
          [&](int i) {
            const auto bin = static_cast<size_t>(i);
            return i == 0 ? 0.0 : std::min(channel.near_grey[bin], channel.all[bin]) / top;
          },
          channel.colour);

      // The exposure band holds behind gain and delta; here it stands where those map from.
      const auto before_gain = [&](int32_t value) {
        if (channel.gain <= 0) return value;
        return std::clamp((value - channel.delta) * 256 / channel.gain, 0, 255);
      };
      const auto strip = [&](int line, const char *name, int32_t low, int32_t high, Colour colour) {
        const int strip_y = plot.bottom() + 6 + line * 18;
        canvas_.text(right_x, strip_y, name, palette::faint);
        canvas_.fill({plot.x, strip_y + 4, plot.width, strip_height}, palette::panel);
        const int left = plot.x + 2 * low, right = plot.x + 2 * high + 1;
        canvas_.fill({left, strip_y + 4, right - left + 1, strip_height}, colour);
        if (low > 0) canvas_.dashes(left, plot.y, strip_y + 10, colour);
        if (high < 255) canvas_.dashes(right, plot.y, strip_y + 10, colour);
      };
      strip(0, "qual", channel.low, channel.high, mix(palette::panel, palette::white, 0.7));
      strip(1, "qae", before_gain(ppl_qAE_RGB_min(context_)),
            before_gain(ppl_qAE_RGB_max(context_)), palette::amber);
      y += channel_step;
    }
    canvas_.text(right_x, y + 4, "dim: all cells, bright: those near grey", palette::faint);
  }

  void curve(int index, const std::string &name, const uint8_t *table) {
    const Rectangle panel = lower_panel(index);
    heading(panel.x, lower_top, name);
    canvas_.fill(panel, palette::panel);
    for (int quarter = 1; quarter < 4; ++quarter) {
      const Colour grid = mix(palette::panel, palette::line, 0.5);
      canvas_.fill({panel.x + quarter * panel.width / 4, panel.y, 1, panel.height}, grid);
      canvas_.fill({panel.x, panel.y + quarter * panel.height / 4, panel.width, 1}, grid);
    }
    canvas_.line(panel.x, panel.bottom() - 1, panel.right() - 1, panel.y, palette::line);
    canvas_.curve(
        panel, 256, [&](int i) { return table[i] / 255.0; }, palette::text, 2);
    bool straight = true;
    for (int i = 0; i < 256; ++i) straight = straight && table[i] == i;
    canvas_.text_right(panel.right(), lower_top,
                       straight ? "straight" : fmt::format("128 to {}", table[128]),
                       palette::faint);
  }

  // Colours alone, whatever the brightness: where a cast comes from the light, all windows have it.
  void window_colours() {
    const Rectangle panel = lower_panel(2);
    heading(panel.x, lower_top, "window colours");
    const int cell = panel.width / static_cast<int>(window_columns);
    for (uint32_t row = 0; row < window_rows; ++row) {
      for (uint32_t column = 0; column < window_columns; ++column) {
        const uint32_t x = report_.h_mirror ? window_columns - 1 - column : column;
        const uint32_t y = report_.v_mirror ? window_rows - 1 - row : row;
        const std::optional<Rgb> &mean = report_.windows[row * window_columns + column];
        canvas_.fill({panel.x + static_cast<int>(x) * cell, panel.y + static_cast<int>(y) * cell,
                      cell - 1, cell - 1},
                     mean ? cast_of(*mean) : palette::panel);
      }
    }
    const int y = panel.y + static_cast<int>(window_rows) * cell + 8;
    canvas_.text(panel.x, y, "brightness taken", palette::faint);
    canvas_.text(panel.x, y + line_height - 4, "out, colour left", palette::faint);
  }

  void numbers() {
    constexpr int columns[] = {right_x + 296, right_x + 386, right_x + 476, right_x + right_width};
    int y = lower_top;
    heading(right_x, y, "means");
    canvas_.text_right(columns[0], y, "r", palette::red);
    canvas_.text_right(columns[1], y, "g", palette::green);
    canvas_.text_right(columns[2], y, "b", palette::blue);
    canvas_.text_right(columns[3], y, "cells", palette::faint);
    y += heading_height;
    canvas_.fill({right_x, y - 4, right_width, 1}, palette::line);
    y += 4;
    const auto row = [&](const char *name, const Rgb &mean, const std::string &cells,
                         const char *form = "{:.1f}") {
      canvas_.text(right_x, y, name, palette::text);
      canvas_.text_right(columns[0], y, fmt::format(fmt::runtime(form), mean.r), palette::text);
      canvas_.text_right(columns[1], y, fmt::format(fmt::runtime(form), mean.g), palette::text);
      canvas_.text_right(columns[2], y, fmt::format(fmt::runtime(form), mean.b), palette::text);
      canvas_.text_right(columns[3], y, cells, palette::text);
      y += line_height;
    };
    row("whole frame", report_.whole_frame, "100 %");
    row("qae band", report_.exposure_band, percent(report_.exposure_band_share));
    row("qual, near grey", report_.near_grey, percent(report_.near_grey_share));
    row("not white, gained", report_.balance, percent(1 - report_.near_white_share));
    row("gain",
        {ppl_nf88_r_gain(context_) / 256.0, ppl_nf88_g_gain(context_) / 256.0,
         ppl_nf88_b_gain(context_) / 256.0},
        "", "{:.2f}");
    y += 10;

    const auto figure = [&](const char *name, const std::string &value) {
      canvas_.text(right_x, y, name, palette::text);
      canvas_.text_right(columns[0], y, value, palette::text);
      y += line_height;
    };
    const auto over_green = [&](double channel) {
      return report_.balance.g > 0 ? fmt::format("{:.2f}", channel / report_.balance.g) : "-";
    };
    const int top = y;
    figure("red / green", over_green(report_.balance.r));
    figure("blue / green", over_green(report_.balance.b));
    figure("near white", percent(report_.near_white_share));
    figure("near black", percent(report_.near_black_share));
    balance_bars({columns[0] + 40, top, right_x + right_width - columns[0] - 40, 58});
  }

  // Red and blue against green, 0.5 to 2 times on a scale of stops.
  void balance_bars(Rectangle area) {
    const int middle = area.x + area.width / 2;
    struct Bar {
      double channel;
      Colour colour;
    };
    int y = area.y - 2;
    for (const Bar &bar :
         {Bar{report_.balance.r, palette::red}, Bar{report_.balance.b, palette::blue}}) {
      canvas_.fill({area.x, y, area.width, 18}, palette::panel);
      if (report_.balance.g > 0 && bar.channel > 0) {
        const double stops = std::clamp(std::log2(bar.channel / report_.balance.g), -1.0, 1.0);
        const int reach = static_cast<int>(std::lround(stops * area.width / 2));
        canvas_.fill({std::min(middle, middle + reach), y + 2, std::abs(reach), 14}, bar.colour);
      }
      y += line_height;
    }
    canvas_.fill({middle, area.y - 4, 1, 2 * line_height}, palette::white);
    canvas_.text(area.x, y + 2, "/2", palette::faint);
    canvas_.text_right(area.right(), y + 2, "x2", palette::faint);
    canvas_.text(middle - text_width("green", 2) / 2, y + 2, "green", palette::faint);
  }

  void notes() {
    int y = lower_top + heading_height + curve_size + gap;
    canvas_.fill({margin, y - 12, right_x + right_width - margin, 1}, palette::line);
    for (const std::string &note : report_.notes) {
      canvas_.text(margin, y, note, palette::amber);
      y += line_height;
    }
    for (const char *line :
         {"Window means are levelled by those of a flat frame. Histograms are before gain, means "
          "of "
          "neighbouring cells.",
          "White balance: the mean of all cells that are not near white, behind gain, is taken to "
          "be grey."}) {
      canvas_.text(margin, y, line, palette::faint);
      y += line_height;
    }
  }

  const FrameReport &report_;
  const PplContext *context_;
  Canvas canvas_;
};

}  // namespace

Picture statistics_sheet(const FrameReport &report, const PplContext *context,
                         const std::string &name) {
  return Sheet(report, context).draw(name);
}

}  // namespace ppl::tool
