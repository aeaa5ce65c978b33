// Quality 0 to I420: the stages of the chain as loops over lines, each as far ahead of the next one
// as its window reaches.
#pragma once

#include "plain_arithmetic.inl.h"

namespace ppl::bench::PLAIN_BUILD {
namespace {

// A line is kept as two half-lines, so that the compiler meets contiguous samples of one kind
// alone: its sites, which sample red or blue, and its greens. Sites have the columns of the line's
// own parity.
constexpr int longest_half = longest_line / 2;
constexpr int margin = 16;  // what windows reach beyond a half-line, and more

// The last `count` half-lines, each with margins that mirror the frame.
template <class Sample, int count>
class HalfLines {
 public:
  Sample *operator[](int y) { return samples_[y % count] + margin; }

  // The half-line holds the columns of a parity.
  void mirror(int y, int parity, int cells) {
    Sample *const half = (*this)[y];
    half[-1] = half[1 - parity];
    half[cells] = half[cells - 1 - parity];
  }

 private:
  alignas(64) Sample samples_[count][longest_half + 2 * margin];
};

int16_t absolute(int16_t value) { return word(value < 0 ? -value : value); }
int16_t larger(int16_t a, int16_t b) { return a > b ? a : b; }
int16_t smaller(int16_t a, int16_t b) { return a < b ? a : b; }
int16_t half_of(int sum) { return word(sum >> 1); }

template <int parity>
void split_line(const uint8_t *RESTRICT line, int cells, uint8_t *RESTRICT sites,
                uint8_t *RESTRICT greens) {
  for (int c = 0; c < cells; ++c) {
    sites[c] = line[2 * c + parity];
    greens[c] = line[2 * c + 1 - parity];
  }
}

// What green at a line's sites is made of. `left` is the green left of the first site.
struct GreenWindow {
  const uint8_t *sites, *left, *up, *down, *up2, *down2;
};

// Green at the sites, and how far the sites' own colour is from it. Green is the mean of both
// directions, each corrected by how the own colour bends, or of one of them if it alone runs along
// an edge.
void interpolate_green(const GreenWindow &window, int cells, int16_t threshold,
                       uint8_t *RESTRICT green, int16_t *RESTRICT difference) {
  const uint8_t *RESTRICT sites = window.sites, *RESTRICT left = window.left;
  const uint8_t *RESTRICT up = window.up, *RESTRICT down = window.down;
  const uint8_t *RESTRICT up2 = window.up2, *RESTRICT down2 = window.down2;
  for (int c = 0; c < cells; ++c) {
    const auto vertical = word(up[c] + down[c] - half_of(up2[c] + down2[c]));
    const auto horizontal = word(left[c] + left[c + 1] - half_of(sites[c - 1] + sites[c + 1]));
    const auto change_down = absolute(word(up[c] - down[c]));
    const auto change_along = absolute(word(left[c] - left[c + 1]));
    const int16_t most = larger(change_down, change_along);
    const int16_t least = smaller(change_down, change_along);
    const int16_t one = half_of(change_down <= change_along ? vertical : horizontal);
    auto mean = word((vertical + horizontal) >> 2);
    mean = most > threshold ? (least < threshold ? one : mean) : mean;
    const uint8_t g = to_byte(word((sites[c] >> 1) + mean));
    green[c] = g;
    difference[c] = word(sites[c] - g);
  }
}

uint8_t with_difference(uint8_t green, int16_t difference) {
  return to_byte(word(green + difference));
}

// Half a line's pixels: the colour that the line samples, green, and the colour of its neighbours.
struct HalfPixels {
  const uint8_t *own, *green, *other;
};

// Differences of a line and of those above and below; `..left` is the one left of the pixel.
void interpolate_at_sites(const uint8_t *RESTRICT green, const int16_t *RESTRICT up_left,
                          const int16_t *RESTRICT down_left, int cells, uint8_t *RESTRICT other) {
  for (int c = 0; c < cells; ++c) {
    const int sum = up_left[c] + up_left[c + 1] + down_left[c] + down_left[c + 1];
    other[c] = with_difference(green[c], word(sum >> 2));
  }
}

void interpolate_at_greens(const uint8_t *RESTRICT green, const int16_t *RESTRICT up,
                           const int16_t *RESTRICT left, const int16_t *RESTRICT down, int cells,
                           uint8_t *RESTRICT own, uint8_t *RESTRICT other) {
  for (int c = 0; c < cells; ++c) {
    own[c] = with_difference(green[c], half_of(left[c] + left[c + 1]));
    other[c] = with_difference(green[c], half_of(up[c] + down[c]));
  }
}

struct AdaptiveRow {
  int16_t slope[3], base[3];

  AdaptiveRow(const PlainChain &chain, int row, bool blue_first) {
    for (int j = 0; j < 3; ++j) {
      const int column = blue_first ? 2 - j : j;
      slope[j] = chain.slope[row][column];
      base[j] = chain.base[row][column];
    }
  }

  int16_t coefficient(int j, int16_t index) const {
    return word((word(index * slope[j] + 128) >> 8) + base[j]);
  }

  int16_t apply(int16_t r, int16_t g, int16_t b, int16_t index) const {
    return word(word(coefficient(0, index) * r + coefficient(1, index) * g +
                     coefficient(2, index) * b + 32) >>
                6);
  }
};

// How colourful a pixel is: a quarter of the sum of its three differences.
int16_t index_of(int16_t r, int16_t g, int16_t b, int16_t bound) {
  const auto span = word(larger(larger(r, g), b) - smaller(smaller(r, g), b));
  return smaller(word(span >> 1), bound);
}

uint8_t luma_of(const AdaptiveRow &row, int16_t own, int16_t green, int16_t other, int16_t bound) {
  return to_luma(row.apply(own, green, other, index_of(own, green, other, bound)));
}

// Rows of the matrix in the order in which HalfPixels has its colours.
template <int parity>
void line_to_luma(const HalfPixels &sites, const HalfPixels &greens, int cells,
                  const PlainChain &chain, uint8_t *RESTRICT y) {
  const uint8_t *RESTRICT s0 = sites.own, *RESTRICT s1 = sites.green, *RESTRICT s2 = sites.other;
  const uint8_t *RESTRICT g0 = greens.own, *RESTRICT g1 = greens.green, *RESTRICT g2 = greens.other;
  const AdaptiveRow row(chain, 0, parity == 0);
  const int16_t bound = chain.index_bound;
  for (int c = 0; c < cells; ++c) {
    y[2 * c + parity] = luma_of(row, s0[c], s1[c], s2[c], bound);
    y[2 * c + 1 - parity] = luma_of(row, g0[c], g1[c], g2[c], bound);
  }
}

// Chroma is that of the sites of the even lines.
void line_to_chroma(const HalfPixels &sites, int cells, const PlainChain &chain,
                    uint8_t *RESTRICT u, uint8_t *RESTRICT v) {
  const uint8_t *RESTRICT own = sites.own, *RESTRICT green = sites.green;
  const uint8_t *RESTRICT other = sites.other;
  const AdaptiveRow U(chain, 1, true), V(chain, 2, true);
  const int16_t bound = chain.index_bound;
  for (int c = 0; c < cells; ++c) {
    const int16_t index = index_of(own[c], green[c], other[c], bound);
    u[c] = to_chroma(U.apply(own[c], green[c], other[c], index));
    v[c] = to_chroma(V.apply(own[c], green[c], other[c], index));
  }
}

// Lifts or lowers what changes along the diagonal more than a little and less than a lot.
void enhance_line(const uint8_t *RESTRICT up, const uint8_t *RESTRICT line,
                  const uint8_t *RESTRICT down, int width, const PlainChain &chain,
                  uint8_t *RESTRICT out) {
  const int16_t low = chain.edge_low, high = chain.edge_high, factor = chain.edge_factor;
  for (int x = 0; x < width; ++x) {
    const auto left = word(up[x - 1] + line[x - 1] + down[x - 1]);
    const auto right = word(up[x + 1] + line[x + 1] + down[x + 1]);
    const auto above = word(up[x - 1] + up[x] + up[x + 1]);
    const auto below = word(down[x - 1] + down[x] + down[x + 1]);
    const auto across = word(right - left), along = word(below - above);
    const auto strength = word(absolute(across) + absolute(along));
    const auto change = word(word((across + along) * factor) >> 6);
    const bool is_in_band = strength > low && high > strength;
    out[x] = to_byte(word(line[x] + (is_in_band ? change : 0)));
  }
}

// The stages with what they have finished. Each is called with the last line that is needed of it.
struct Quality0 {
  const PlainTables &tables;
  uint8_t *src, *dst;
  int width, height;
  int cells = width / 2;
  int next_sample_line = 0, next_green_line = 0, next_luma_line = 0;
  HalfLines<uint8_t, 8> sites = {}, greens = {};
  HalfLines<uint8_t, 4> green = {};
  HalfLines<int16_t, 4> difference = {};
  uint8_t luma_lines[4][longest_line + 2 * margin] = {};
  uint8_t at_sites[longest_half] = {}, at_greens[2][longest_half] = {};

  int mirrored(int y) const { return y < 0 ? -y : y < height ? y : 2 * (height - 1) - y; }
  uint8_t *luma(int y) { return luma_lines[mirrored(y) % 4] + margin; }

  void sample_up_to(int last) {
    for (; next_sample_line <= last && next_sample_line < height; ++next_sample_line) {
      const int y = next_sample_line, parity = y % 2;
      uint8_t *const line = src + static_cast<ptrdiff_t>(y) * width;
      ByWords::look_up(line, width, tables.sample[parity][0], tables.sample[parity][1]);
      (parity == 0 ? split_line<0> : split_line<1>)(line, cells, sites[y], greens[y]);
      sites.mirror(y, parity, cells);
      greens.mirror(y, 1 - parity, cells);
    }
  }

  void green_up_to(int last) {
    for (; next_green_line <= last && next_green_line < height; ++next_green_line) {
      const int y = next_green_line, parity = y % 2;
      sample_up_to(y + 2);
      // Above the frame the line itself is the mirror.
      const int up = y < 1 ? y + 1 : y - 1, up2 = y < 2 ? y + 2 : y - 2;
      const GreenWindow window = {.sites = sites[y],
                                  .left = greens[y] - 1 + parity,
                                  .up = greens[up],
                                  .down = greens[mirrored(y + 1)],
                                  .up2 = sites[up2],
                                  .down2 = sites[mirrored(y + 2)]};
      interpolate_green(window, cells, tables.chain.green_threshold, green[y], difference[y]);
      difference.mirror(y, parity, cells);
    }
  }

  void luma_up_to(int last) {
    for (; next_luma_line <= last && next_luma_line < height; ++next_luma_line) {
      const int y = next_luma_line, parity = y % 2;
      green_up_to(y + 1);
      const int16_t *const up = difference[mirrored(y - 1)];
      const int16_t *const down = difference[mirrored(y + 1)];
      interpolate_at_sites(green[y], up - 1 + parity, down - 1 + parity, cells, at_sites);
      interpolate_at_greens(greens[y], up, difference[y] - parity, down, cells, at_greens[0],
                            at_greens[1]);
      const HalfPixels site_pixels = {sites[y], green[y], at_sites};
      const HalfPixels green_pixels = {at_greens[0], greens[y], at_greens[1]};
      uint8_t *const line = luma(y);
      (parity == 0 ? line_to_luma<0> : line_to_luma<1>)(site_pixels, green_pixels, cells,
                                                        tables.chain, line);
      line[-1] = line[1];
      line[width] = line[width - 2];
      if (parity == 0) {
        const ptrdiff_t size = static_cast<ptrdiff_t>(width) * height;
        uint8_t *const u = dst + size + static_cast<ptrdiff_t>(y / 2) * cells;
        line_to_chroma(site_pixels, cells, tables.chain, u, u + size / 4);
      }
    }
  }

  void run() {
    for (int y = 0; y < height; ++y) {
      luma_up_to(y + 1);
      enhance_line(luma(y - 1), luma(y), luma(y + 1), width, tables.chain,
                   dst + static_cast<ptrdiff_t>(y) * width);
    }
  }
};

void quality_0_to_i420(const PlainTables &tables, uint8_t *src, uint8_t *dst, int width,
                       int height) {
  Quality0{tables, src, dst, width, height}.run();
}

}  // namespace
}  // namespace ppl::bench::PLAIN_BUILD
