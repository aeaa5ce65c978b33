// What saturation, hue, contrast and the sensor matrices make of the colour entries, computed from
// the definitions in plain integers.
#pragma once

#include <math.h>
#include <stdint.h>

#include <array>
#include <map>
#include <string>
#include <vector>

namespace ppl::controls_test {

using Matrix = std::array<int32_t, 9>;  // row-major

// The low 32 bits, signed.
inline int32_t wrap32(int64_t value) {
  return static_cast<int32_t>(static_cast<uint32_t>(value & 0xFFFFFFFF));
}

inline int16_t wrap16(int64_t value) {
  return static_cast<int16_t>(static_cast<uint16_t>(value & 0xFFFF));
}

// ---- Coefficient sets ----

struct ColourSets {
  Matrix rgb, yuv_full, yuv_studio;  // Q8
  int32_t offset_rgb, offset_yuv_full, offset_yuv_studio;
};

// Q12, of whole degrees.
inline int32_t sine(int32_t degrees) {
  int32_t r = degrees % 360;
  if (r < 0) r += 360;
  const bool negative = r >= 181;
  int32_t m = negative ? 360 - r : r;
  if (m > 90) m = 180 - m;
  // The table is floored; 30 degrees is the one angle inside whose sine is exact, and a floating
  // sine may fall short of it.
  const double pi = 3.14159265358979323846;
  const int32_t value = m == 30 ? 2048 : static_cast<int32_t>(floor(4096 * sin(m * pi / 180)));
  return negative ? -value : value;
}

// Q12 times Q12.
inline Matrix product(const Matrix &p, const Matrix &q) {
  Matrix result{};
  for (size_t i = 0; i < 3; ++i) {
    for (size_t j = 0; j < 3; ++j) {
      int64_t sum = 2048;
      for (size_t n = 0; n < 3; ++n) sum += int64_t{p[3 * i + n]} * q[3 * n + j];
      result[3 * i + j] = static_cast<int32_t>(sum >> 12);
    }
  }
  return result;
}

inline Matrix q12_to_q8(Matrix matrix) {
  for (int32_t &entry : matrix) entry = (entry + 8) >> 4;
  return matrix;
}

inline ColourSets colour_sets(uint32_t nf88_sat, int32_t hue, int32_t contrast_c) {
  const Matrix yuv_to_rgb = {4096, 0, 5616, 4096, -1376, -2859, 4096, 7094, 0};
  const Matrix rgb_to_yuv_full = {1225, 2404, 467, -707, -1389, 2095, 2095, -1754, -340};
  const Matrix rgb_to_yuv_studio = {1053, 2064, 401, -606, -1192, 1798, 1798, -1507, -291};

  const int32_t sat = static_cast<int32_t>(nf88_sat);
  const int32_t h = (hue % 360 + 360) % 360;
  const int32_t c = (sine(90 - h) * sat) >> 8;
  const int32_t s = sine(h) * sat;
  const int32_t k = contrast_c < 0 ? contrast_c + 256 : 2 * contrast_c + 256;
  const Matrix control = {(k * 4096) >> 8, 0, 0, 0, c, -(s >> 8), 0, s >> 8, c};
  const Matrix full = product(control, rgb_to_yuv_full);

  ColourSets sets;
  sets.yuv_studio = q12_to_q8(product(control, rgb_to_yuv_studio));
  sets.yuv_full = q12_to_q8(full);
  sets.rgb = q12_to_q8(product(yuv_to_rgb, full));
  sets.offset_yuv_studio = sets.offset_yuv_full = 32768 - 128 * k;
  sets.offset_rgb = (sets.offset_yuv_full * 4096) >> 12;
  return sets;
}

// ---- Derived entries ----

// Keeps the low 16 bits of what is within 17 bits, signed; holds everything else at a word's ends.
inline int32_t fit(int32_t value) {
  if (value >= -65536 && value <= 65535) return wrap16(value);
  return value > 0 ? 32767 : -32768;
}

// Truncates; the one quotient that does not fit wraps.
inline int32_t divide(int32_t dividend, int32_t divisor) {
  return wrap32(int64_t{dividend} / divisor);
}

// Every group of nine by its entry's name.
inline std::map<std::string, std::vector<int>> colour_groups(const ColourSets &sets,
                                                             const int32_t (&sensor)[18],
                                                             int32_t bound) {
  const int32_t b = bound == 0 ? 1 : bound;
  const auto times_sensor = [&](const Matrix &set, size_t m, size_t entry) {
    uint32_t sum = 0;  // wraps
    for (size_t n = 0; n < 3; ++n) {
      sum += static_cast<uint32_t>(set[entry / 3 * 3 + n]) *
             static_cast<uint32_t>(sensor[9 * m + 3 * n + entry % 3]);
    }
    return static_cast<int32_t>(sum);
  };
  const auto plus = [](int32_t value, int32_t term) { return wrap32(int64_t{value} + term); };

  std::map<std::string, std::vector<int>> groups;
  for (size_t entry = 0; entry < 9; ++entry) {
    const auto add = [&](const std::string &group, int32_t word) { groups[group].push_back(word); };
    int32_t a[2], f[2], s[2];
    for (size_t m = 0; m < 2; ++m) {
      a[m] = plus(times_sensor(sets.rgb, m, entry), 128) >> 8;
      f[m] = times_sensor(sets.yuv_full, m, entry);
      s[m] = times_sensor(sets.yuv_studio, m, entry);
      const std::string base = m == 0 ? "base0" : "base1";
      add("rgb_" + base + "_vec", fit(plus(a[m], 2) >> 2));
      add("full_" + base + "_vec", fit(plus(f[m], 512) >> 10));
      add("studio_" + base + "_vec", fit(plus(s[m], 512) >> 10));
      add("studio_" + base + "_q12_vec", fit(plus(s[m], 8)) >> 4);
    }
    const int32_t full_step = divide(wrap32(int64_t{f[1]} - f[0]), b);
    const int32_t studio_step = divide(wrap32(int64_t{s[1]} - s[0]), b);
    add("rgb_slope_vec", fit(divide(wrap32((int64_t{a[1]} - a[0]) * 8), b)));
    add("full_slope_vec", fit(plus(full_step, 2) >> 2));
    add("studio_slope_vec", fit(plus(studio_step, 2) >> 2));
    add("studio_slope_q12_vec", fit(plus(studio_step, 4)) >> 3);
  }
  return groups;
}

inline int32_t index_bound(int32_t bound) { return wrap16(bound == 0 ? 1 : bound); }

inline int32_t offset_entry(int32_t offset) { return wrap16(((offset + 2) >> 2) + 32); }

}  // namespace ppl::controls_test
