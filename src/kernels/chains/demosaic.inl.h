// Red and blue at every pixel, one byte line each.
//
//   R . R      at a B site red comes from the four diagonal neighbours (an R site likewise);
//   . B .      at a green site one colour stands beside it, the other above and below.
//   R . R      Reach: 1 line, 1 column; as cells, the one before or behind.
#pragma once

#include "kernels/chains/green.inl.h"

namespace ppl::TARGET {
namespace {

// The lines that a demosaic fills. Green may be a line that stands elsewhere.
struct ColourLines {
  uint8_t *r, *b;
  const uint8_t *g;
};

// Accurate: colour differences, averaged from the sites of the wanted colour. On even lines B is
// the line's own colour and R comes from the lines above and below; on odd lines the other way
// round. `differences` are A - G of the lines above, here and below; reach: 1 cell.
template <bool odd>
void colour_difference_line(uint8_t *own, uint8_t *other, const uint8_t *green,
                            const Word *const differences[3], int width) {
  const Word *const above = differences[0], *const here = differences[1],
                    *const below = differences[2];
  // At the line's own sites the neighbours of the other colour stand in this cell and the one
  // before (even line) or after (odd line); at its green sites the own colour's do, the other way.
  constexpr int diagonal = odd ? 1 : -1;
  for (int x = 0; x < width; x += Vec::size) {
    const int cell = x / 2;
    const auto vertical = [&](int i) {
      return Vec::add_words(Vec::load_words(above + cell + i), Vec::load_words(below + cell + i));
    };
    const auto G = Vec::load(green + x);
    const auto G_site = Vec::columns<odd>(G);
    const auto G_green = Vec::columns<!odd>(G);
    const auto d = Vec::load_words(here + cell);
    const auto upright = vertical(0);

    const auto own_site = Vec::add_words(G_site, d);
    const auto own_green =
        Vec::add_words(G_green, Vec::shift_right_signed_words<1>(
                                    Vec::add_words(d, Vec::load_words(here + cell - diagonal))));
    const auto other_site = Vec::add_words(
        G_site, Vec::shift_right_signed_words<2>(Vec::add_words(upright, vertical(diagonal))));
    const auto other_green = Vec::add_words(G_green, Vec::shift_right_signed_words<1>(upright));

    const auto store = [x](uint8_t *line, Vec::type site, Vec::type at_green) {
      const auto s = Vec::clamp_words_to_byte(site);
      const auto g = Vec::clamp_words_to_byte(at_green);
      Vec::store(line + x, odd ? Vec::join_columns(g, s) : Vec::join_columns(s, g));
    };
    store(own, own_site, own_green);
    store(other, other_site, other_green);
  }
}

// Cheap: a cascade of rounded byte averages over three mosaic lines. Green too if it is wanted.
template <bool odd>
void average_line(uint8_t *own, uint8_t *other, uint8_t *green, const uint8_t *const in[3],
                  int width) {
  const auto is_site = odd ? Vec::splat_words(0xFF00) : Vec::even_columns();
  for (int x = 0; x < width; x += Vec::size) {
    const auto vertical = [&](int dx) {
      return Vec::average_u8(Vec::load(in[0] + x + dx), Vec::load(in[2] + x + dx));
    };
    const auto native = Vec::load(in[1] + x);
    const auto beside = Vec::average_u8(Vec::load(in[1] + x + 1), Vec::load(in[1] + x - 1));
    const auto upright = vertical(0);
    const auto diagonal = Vec::average_u8(vertical(1), vertical(-1));
    Vec::store(own + x, Vec::blend(is_site, native, beside));
    Vec::store(other + x, Vec::blend(is_site, diagonal, upright));
    if (green != nullptr) {
      Vec::store(green + x, Vec::blend(is_site, Vec::average_u8(beside, upright), native));
    }
  }
}

}  // namespace
}  // namespace ppl::TARGET
