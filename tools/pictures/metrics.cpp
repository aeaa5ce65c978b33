#include "pictures/metrics.h"

#include <array>
#include <cmath>
#include <vector>

namespace ppl::tool {
namespace {

constexpr uint32_t window_side = 11;

// The compared region of a picture, moved by a shift.
struct Region {
  const Picture &picture;
  int shift_x, shift_y;
  Size size;

  Region(const Picture &whole, int x, int y)
      : picture(whole),
        shift_x(x),
        shift_y(y),
        size{whole.size.width - 2 * metric_border, whole.size.height - 2 * metric_border} {}

  const uint8_t *pixel(uint32_t x, uint32_t y) const {
    const auto moved = [](uint32_t n, int shift) {
      return static_cast<uint32_t>(static_cast<int>(n + metric_border) + shift);
    };
    return picture.pixel(moved(x, shift_x), moved(y, shift_y));
  }
};

double decibels(double mean_squared_difference) {
  return 10 * std::log10(255.0 * 255.0 / mean_squared_difference);
}

double psnr_rgb(const Region &a, const Region &b) {
  uint64_t sum = 0;
  for (uint32_t y = 0; y < a.size.height; ++y) {
    for (uint32_t x = 0; x < a.size.width; ++x) {
      for (int c = 0; c < 3; ++c) {
        const int difference = a.pixel(x, y)[c] - b.pixel(x, y)[c];
        sum += static_cast<uint64_t>(difference * difference);
      }
    }
  }
  return decibels(static_cast<double>(sum) / (3.0 * a.size.width * a.size.height));
}

struct Plane {
  Size size;
  std::vector<double> values;

  explicit Plane(Size s) : size(s), values(static_cast<size_t>(s.width) * s.height) {}
  double &at(uint32_t x, uint32_t y) { return values[static_cast<size_t>(y) * size.width + x]; }
  double at(uint32_t x, uint32_t y) const {
    return values[static_cast<size_t>(y) * size.width + x];
  }
};

Plane luma_of(const Region &region) {
  Plane plane(region.size);
  for (uint32_t y = 0; y < region.size.height; ++y) {
    for (uint32_t x = 0; x < region.size.width; ++x) {
      const uint8_t *p = region.pixel(x, y);
      plane.at(x, y) = 0.299 * p[0] + 0.587 * p[1] + 0.114 * p[2];
    }
  }
  return plane;
}

Plane product(const Plane &a, const Plane &b) {
  Plane result(a.size);
  for (size_t i = 0; i < a.values.size(); ++i) result.values[i] = a.values[i] * b.values[i];
  return result;
}

double psnr_luma(const Plane &a, const Plane &b) {
  double sum = 0;
  for (size_t i = 0; i < a.values.size(); ++i) {
    const double difference = a.values[i] - b.values[i];
    sum += difference * difference;
  }
  return decibels(sum / static_cast<double>(a.values.size()));
}

std::array<double, window_side> gaussian() {
  std::array<double, window_side> weights;
  double sum = 0;
  for (uint32_t i = 0; i < window_side; ++i) {
    const double distance = static_cast<double>(i) - window_side / 2;
    sum += weights[i] = std::exp(-distance * distance / (2 * 1.5 * 1.5));
  }
  for (double &weight : weights) weight /= sum;
  return weights;
}

// Weighed means of all windows that lie wholly inside.
Plane window_means(const Plane &plane) {
  static const std::array<double, window_side> weights = gaussian();
  Plane lines({plane.size.width - (window_side - 1), plane.size.height});
  for (uint32_t y = 0; y < lines.size.height; ++y)
    for (uint32_t x = 0; x < lines.size.width; ++x)
      for (uint32_t i = 0; i < window_side; ++i) lines.at(x, y) += weights[i] * plane.at(x + i, y);
  Plane means({lines.size.width, lines.size.height - (window_side - 1)});
  for (uint32_t y = 0; y < means.size.height; ++y)
    for (uint32_t x = 0; x < means.size.width; ++x)
      for (uint32_t i = 0; i < window_side; ++i) means.at(x, y) += weights[i] * lines.at(x, y + i);
  return means;
}

double ssim(const Plane &a, const Plane &b) {
  constexpr double c1 = 0.01 * 255 * 0.01 * 255, c2 = 0.03 * 255 * 0.03 * 255;
  const Plane mean_a = window_means(a), mean_b = window_means(b);
  const Plane square_a = window_means(product(a, a)), square_b = window_means(product(b, b)),
              mixed = window_means(product(a, b));
  double sum = 0;
  for (size_t i = 0; i < mean_a.values.size(); ++i) {
    const double m = mean_a.values[i], n = mean_b.values[i];
    const double variances = square_a.values[i] - m * m + square_b.values[i] - n * n;
    const double covariance = mixed.values[i] - m * n;
    sum += (2 * m * n + c1) * (2 * covariance + c2) / ((m * m + n * n + c1) * (variances + c2));
  }
  return sum / static_cast<double>(mean_a.values.size());
}

}  // namespace

bool comparable(Size size) {
  return size.width >= 2 * metric_border + window_side &&
         size.height >= 2 * metric_border + window_side;
}

Closeness closeness(const Picture &picture, const Picture &truth) {
  const Region goal(truth, 0, 0);
  Closeness best;
  best.psnr_rgb = -1;
  // No shift comes first, so that it wins where others are as good.
  constexpr int shifts[] = {0, -1, 1};
  for (const int y : shifts) {
    for (const int x : shifts) {
      const double psnr = psnr_rgb(Region(picture, x, y), goal);
      if (psnr > best.psnr_rgb) best = {psnr, 0, 0, x, y};
    }
  }
  const Plane luma = luma_of(Region(picture, best.shift_x, best.shift_y)), wanted = luma_of(goal);
  best.psnr_luma = psnr_luma(luma, wanted);
  best.ssim_luma = ssim(luma, wanted);
  return best;
}

}  // namespace ppl::tool
