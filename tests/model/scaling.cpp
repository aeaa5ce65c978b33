#include "model/scaling.h"

#include "model/arithmetic.h"

namespace ppl_model {

namespace {

// Output lines `lines` with value(line, column).
template <typename Value>
Plane make_plane(int width, int height, Value value) {
  Plane plane(width, height);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) plane.at(y, x) = value(y, x);
  return plane;
}

Plane every_second(const Plane &plane) {
  return make_plane(plane.width() / 2, plane.height() / 2,
                    [&](int y, int x) { return plane.at(2 * y, 2 * x); });
}

Plane repeat_lines(const Plane &plane) {
  return make_plane(plane.width(), 2 * plane.height(),
                    [&](int y, int x) { return plane.at(y / 2, x); });
}

Picture doubled_packed_picture(const ColourPlanes &planes, Format format, Tier tier) {
  Picture picture;
  picture.y = double_lines_on_even(double_along_lines_rule_b(planes.y));
  picture.u = spread_cell_lines(double_along_lines_rule_b(planes.u));
  picture.v = spread_cell_lines(double_along_lines_rule_b(planes.v));
  if (format == Format::uyvy) {
    picture.luma_is_open = [](int, int) { return true; };
    picture.chroma_is_open = [](int, int) { return true; };
  } else {
    picture.luma_is_open = [](int line, int) { return line % 2 != 0; };
    // A single-pass block is two groups wide and doubles: that many pairs.
    const int first_block_pairs = 2 * block_width(tier);
    if (tier == Tier::p3)
      picture.chroma_is_open = [=](int line, int pair) {
        return line % 2 != 0 && pair >= first_block_pairs;
      };
  }
  return picture;
}

}  // namespace

Plane double_along_lines_rule_a(const Plane &plane) {
  return make_plane(2 * plane.width(), plane.height(), [&](int y, int x) {
    const int k = x / 2;
    const uint8_t own = plane.at(y, k);
    return x % 2 == 0 && k > 0 ? average(plane.at(y, k - 1), own) : own;
  });
}

Plane double_along_lines_rule_b(const Plane &plane) {
  return make_plane(2 * plane.width(), plane.height(), [&](int y, int x) {
    const int k = x / 2;
    const uint8_t own = plane.at(y, k);
    return x % 2 != 0 && k + 1 < plane.width() ? average(own, plane.at(y, k + 1)) : own;
  });
}

Plane double_lines_on_even(const Plane &plane) {
  return make_plane(plane.width(), 2 * plane.height(), [&](int y, int x) {
    const int m = y / 2;
    const uint8_t own = plane.at(m, x);
    return y % 2 != 0 && m + 1 < plane.height() ? average(own, plane.at(m + 1, x)) : own;
  });
}

Plane double_lines_on_odd(const Plane &plane) {
  return make_plane(plane.width(), 2 * plane.height(), [&](int y, int x) {
    const int m = y / 2;
    const uint8_t own = plane.at(m, x);
    return y % 2 == 0 && m > 0 ? average(plane.at(m - 1, x), own) : own;
  });
}

Plane spread_cell_lines(const Plane &plane) {
  return make_plane(plane.width(), 4 * plane.height(), [&](int y, int x) {
    const int m = y / 4;
    const uint8_t own = plane.at(m, x);
    const bool between = y % 4 == 3 && m + 1 < plane.height();
    return between ? average(own, plane.at(m + 1, x)) : own;
  });
}

Picture unscaled_picture(const ColourPlanes &planes, Format format) {
  Picture picture;
  if (is_rgb(format)) {
    picture.r = planes.r;
    picture.g = planes.g;
    picture.b = planes.b;
    return picture;
  }
  picture.y = planes.y;
  // A cell's chroma stands once in a plane, but on both lines of packed video.
  picture.u = is_packed(format) ? repeat_lines(planes.u) : planes.u;
  picture.v = is_packed(format) ? repeat_lines(planes.v) : planes.v;
  return picture;
}

Picture halved_picture(const ColourPlanes &planes, Format format) {
  Picture picture;
  if (is_rgb(format)) {
    picture.r = every_second(planes.r);
    picture.g = every_second(planes.g);
    picture.b = every_second(planes.b);
    return picture;
  }
  picture.y = every_second(planes.y);
  if (format == Format::i420) {
    // A last line pair or cell without a partner gives no chroma.
    picture.u = every_second(planes.u);
    picture.v = every_second(planes.v);
    return picture;
  }
  const auto every_second_column = [](const Plane &plane) {
    return make_plane(plane.width() / 2, plane.height(),
                      [&](int y, int x) { return plane.at(y, 2 * x); });
  };
  picture.u = every_second_column(planes.u);
  picture.v = every_second_column(planes.v);
  picture.lone_pixel_is_open = true;
  return picture;
}

Picture doubled_picture(const ColourPlanes &planes, Format format, Tier tier) {
  if (is_packed(format)) return doubled_packed_picture(planes, format, tier);
  Picture picture;
  if (format == Format::i420) {
    const auto doubled = [](const Plane &plane) {
      return double_lines_on_even(double_along_lines_rule_a(plane));
    };
    picture.y = doubled(planes.y);
    picture.u = doubled(planes.u);
    picture.v = doubled(planes.v);
  } else {
    const auto doubled = [](const Plane &plane) {
      return double_lines_on_odd(double_along_lines_rule_a(plane));
    };
    picture.r = doubled(planes.r);
    picture.g = doubled(planes.g);
    picture.b = doubled(planes.b);
  }
  return picture;
}

}  // namespace ppl_model
