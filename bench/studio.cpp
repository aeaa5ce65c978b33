#include "studio.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>

namespace ppl::bench {
namespace {

constexpr size_t largest_frame = 1280 * 1024;
constexpr size_t largest_output = 4 * 4 * largest_frame;  // doubled both ways, to RGB32

// Entry functions by format. The scaled ones set the decimation that they need.
using Entry = decltype(&BaylorToI420MMX);

struct Entries {
  Entry plain, deci_2_1, intp_1_2;

  Entry for_decimation(int decimation) const {
    return decimation == 0 ? plain : decimation > 0 ? deci_2_1 : intp_1_2;
  }
};

Entries entries_of(Format format) {
  switch (format) {
    case Format::i420:
      return {BaylorToI420MMX, BaylorToI420MMX_deci_2_1, BaylorToI420MMX_intp_1_2};
    case Format::yuyv:
      return {BaylorToYUYVMMX, BaylorToYUYVMMX_deci_2_1, BaylorToYUYVMMX_intp_1_2};
    case Format::uyvy:
      return {BaylorToUYVYMMX, BaylorToUYVYMMX_deci_2_1, BaylorToUYVYMMX_intp_1_2};
    case Format::rgb24:
      return {BaylorToRGB24MMX, BaylorToRGB24MMX_deci_2_1, BaylorToRGB24MMX_intp_1_2};
    case Format::rgb32:
      return {BaylorToRGB32MMX, BaylorToRGB32MMX_deci_2_1, BaylorToRGB32MMX_intp_1_2};
  }
  throw std::logic_error("no such format");
}

size_t bytes_of(Format format, size_t pixels) {
  switch (format) {
    case Format::i420:
      return pixels * 3 / 2;
    case Format::yuyv:
    case Format::uyvy:
      return pixels * 2;
    case Format::rgb24:
      return pixels * 3;
    case Format::rgb32:
      return pixels * 4;
  }
  throw std::logic_error("no such format");
}

size_t frame_bytes(Size size) {
  return static_cast<size_t>(size.width) * static_cast<size_t>(size.height);
}

uint32_t unsigned_of(int value) { return static_cast<uint32_t>(value); }

// What a sensor might see: soft light, coloured surfaces with edges, and noise. Neither flat, so
// that the histograms are not always at one bin, nor random, so that a fair share of cells is grey.
void paint_scene(uint8_t *samples, Size size) {
  uint32_t noise = 1;
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      const double u = static_cast<double>(x) / size.width;
      const double v = static_cast<double>(y) / size.height;
      double value = 150 + 150 * std::sin(5 * u + 3 * v * v);  // from black into saturation
      const int surface = static_cast<int>(8 * u) + 3 * static_cast<int>(6 * v);
      const int position = 2 * (y % 2) + x % 2;  // B, Gb, Gr, R
      if (surface % 3 != 0) {
        const int tint = (surface * 7 + (position == 0 ? 0 : position == 3 ? 2 : 1) * 3) % 5;
        value *= 0.2 + 0.25 * tint;
      }
      noise = noise * 1664525 + 1013904223;
      value += static_cast<double>(noise >> 24) / 16 - 8;
      samples[static_cast<ptrdiff_t>(y) * size.width + x] =
          static_cast<uint8_t>(std::clamp(value, 0.0, 255.0));
    }
  }
}

// One coefficient in Q16: a row in Q8 times a column of the sensor matrix in 8.8.
int32_t product_of(const int (&row)[3], const int32_t *sensor, int column) {
  int32_t sum = 0;
  for (int n = 0; n < 3; ++n) sum += row[n] * sensor[3 * n + column];
  return sum;
}

// A row of the matrix in Q6, from Q8 coefficients times the sensor matrix in 8.8.
PlainMatrixRow row_of(const int (&coefficients)[3], const int32_t *sensor, bool is_rgb) {
  int32_t column[3];
  for (int j = 0; j < 3; ++j) {
    const int32_t sum = product_of(coefficients, sensor, j);
    column[j] = is_rgb ? (((sum + 128) >> 8) + 2) >> 2 : (sum + 512) >> 10;
  }
  return {static_cast<int16_t>(column[0]), static_cast<int16_t>(column[1]),
          static_cast<int16_t>(column[2]), 32};
}

std::string no_statistics(const PplContext *context) {
  const PplTriple *const means = ppl_rgb_means_whole_frame(context);
  return means != nullptr && means->g != 0 ? "" : "gathers no statistics";
}

}  // namespace

ContextPointer new_context() {
  ContextPointer context(ppl_init());
  if (!context) throw std::runtime_error("no context");
  return context;
}

std::string to_string(Size size) { return fmt::format("{}x{}", size.width, size.height); }

std::string to_string(Tier tier) { return tier == Tier::p3 ? "P3" : "SSE2"; }

std::string to_string(Format format) {
  switch (format) {
    case Format::i420:
      return "I420";
    case Format::yuyv:
      return "YUYV";
    case Format::uyvy:
      return "UYVY";
    case Format::rgb24:
      return "RGB24";
    case Format::rgb32:
      return "RGB32";
  }
  throw std::logic_error("no such format");
}

// Lines of the frame and of the output must not stand a multiple of 4 KB apart: some processors
// take such a load for one that waits for the store.
Studio::Studio()
    : context_(new_context()),
      context_of_flat_cells_(new_context()),
      scene_(largest_frame, 0),
      frame_(largest_frame, 704),
      output_(largest_output, 2112) {
  for (PplContext *context : {context_.get(), context_of_flat_cells_.get()}) {
    ppl_set_optical_black_b_gb_gr_r(context, 8, 9, 10, 11);
    ppl_set_rgb_gain(context, 320, 280, 360);
    ppl_set_rgb_delta(context, 2, 0, -1);
  }
  compose_tables();
}

void Studio::compose_tables() {
  const PplContext *const context = context_.get();
  uint32_t black[2][2];
  ppl_optical_black_b_gb_gr_r(context, &black[0][0], &black[0][1], &black[1][0], &black[1][1]);
  const int gain[3] = {ppl_nf88_r_gain(context), ppl_nf88_g_gain(context),
                       ppl_nf88_b_gain(context)};
  const int delta[3] = {ppl_r_delta(context), ppl_g_delta(context), ppl_b_delta(context)};
  const uint8_t *const curve = ppl_rgb_gamma_table(context);
  constexpr int colour[2][2] = {{2, 1}, {1, 0}};  // B Gb, Gr R
  for (int line = 0; line < 2; ++line) {
    for (int column = 0; column < 2; ++column) {
      const int c = colour[line][column];
      for (int sample = 0; sample < 256; ++sample) {
        const int above_black = std::max(sample - static_cast<int>(black[line][column]), 0);
        const int value = (above_black * (gain[c] >> 3) >> 5) + delta[c];
        tables_.sample[line][column][sample] = curve[std::clamp(value, 0, 255)];
      }
    }
  }

  // Neutral saturation, hue and contrast.
  constexpr int yuv[3][3] = {{66, 129, 25}, {-38, -74, 112}, {112, -94, -18}};
  constexpr int rgb[3][3] = {{256, 0, 0}, {0, 256, 0}, {0, 0, 256}};
  int32_t sensor[18];
  ppl_sensor_matrix(context, sensor);
  for (int i = 0; i < 3; ++i) {
    tables_.yuv[i] = row_of(yuv[i], sensor + 9, false);
    tables_.rgb[i] = row_of(rgb[i], sensor + 9, true);
  }

  PlainChain &chain = tables_.chain;
  const int bound = std::max(ppl_sensor_matrix_index_upper_bound(context), 1);
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      const int32_t grey = product_of(yuv[i], sensor, j),
                    strong = product_of(yuv[i], sensor + 9, j);
      chain.base[i][j] = static_cast<int16_t>((grey + 512) >> 10);
      chain.slope[i][j] = static_cast<int16_t>(((strong - grey) / bound + 2) >> 2);
    }
  }
  chain.index_bound = static_cast<int16_t>(bound);
  chain.green_threshold = static_cast<int16_t>(ppl_CFA_T1_threshold(context));
  chain.edge_low = static_cast<int16_t>(ppl_edge_threshold(context));
  chain.edge_high = static_cast<int16_t>(ppl_edge_threshold2(context));
  chain.edge_factor = static_cast<int16_t>(ppl_nf88_edge_enhance_factor(context) >> 2);
}

std::span<uint8_t> Studio::frame(Size size) { return {frame_.start(), frame_bytes(size)}; }

std::span<uint8_t> Studio::output(Size size, const Setting &setting) {
  const size_t pixels = frame_bytes(size);
  const size_t scaled = setting.decimation > 0   ? pixels / 4
                        : setting.decimation < 0 ? pixels * 4
                                                 : pixels;
  return {output_.start(), bytes_of(setting.format, scaled)};
}

void Studio::restore(Size size) {
  if (size.width != scene_size_.width || size.height != scene_size_.height) {
    paint_scene(scene_.start(), size);
    scene_size_ = size;
  }
  std::memcpy(frame_.start(), scene_.start(), frame_bytes(size));
}

PplContext *Studio::context_for(const Setting &setting) const {
  const bool leaves_flat_cells = setting.quality == 10 || setting.quality == 11;
  return (leaves_flat_cells ? context_of_flat_cells_ : context_).get();
}

void Studio::apply(Size size, const Setting &setting) {
  PplContext *const context = context_for(setting);
  ppl_set_P3_only(context, setting.tier == Tier::p3);
  ppl_set_quality(context, setting.quality);
  (setting.repairs ? ppl_enable_medium_filter : ppl_disable_medium_filter)(context);
  ppl_set_mean_collection(context, setting.statistics);
  ppl_set_decimation(context, setting.decimation, 0, 0);
  const auto width = unsigned_of(size.width);
  if (ppl_new_frame_size(context, width, unsigned_of(size.height), width) == 0) {
    throw std::runtime_error("frame size refused");
  }
  restore(size);
}

Route Studio::library_route(std::string name, Size size, const Setting &setting) {
  PplContext *const context = context_for(setting);
  const Entry entry = entries_of(setting.format).for_decimation(setting.decimation);
  uint8_t *const src = frame_.start();
  uint8_t *const dst = output_.start();
  Route route;
  route.name = std::move(name);
  route.prepare = [this, size, setting] { apply(size, setting); };
  route.run = [context, entry, src, dst, size] {
    entry(context, src, dst, unsigned_of(size.width), unsigned_of(size.height));
  };
  if (setting.statistics) route.objection = [context] { return no_statistics(context); };
  return route;
}

Route Studio::plain_route(std::string name, Size size, PlainLoop loop) {
  Route route;
  route.name = std::move(name);
  route.prepare = [this, size] { restore(size); };
  route.run = [this, size, loop] {
    loop(tables_, frame_.start(), output_.start(), size.width, size.height);
  };
  return route;
}

Route Studio::opencv_route(std::string name, Size size, const OpenCvStages &stages) {
  Route route;
  route.name = std::move(name);
  route.prepare = [this, size] { restore(size); };
  route.run = bench::opencv_route(stages, tables_, frame_.start(), output_.start(), size.width,
                                  size.height);
  return route;
}

Route Studio::copy_route(Size size) {
  Route route;
  route.name = "memcpy";
  route.prepare = [this, size] { restore(size); };
  route.run = [this, size] { std::memcpy(output_.start(), frame_.start(), frame_bytes(size)); };
  return route;
}

}  // namespace ppl::bench
