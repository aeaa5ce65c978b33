// The line memory of the chains, by stage.
#pragma once

#include "kernels/chains/emission.inl.h"
#include "kernels/chains/flat_cells.inl.h"
#include "kernels/passes.h"

namespace ppl::TARGET {
namespace {

constexpr bool has_green(const Chain &chain) {
  return chain.demosaic == Demosaic::accurate || chain.demosaic == Demosaic::green_averages;
}

constexpr bool finds_flat_cells(const Chain &chain) {
  return chain.flat_cells == FlatCells::odd_rows || chain.flat_cells == FlatCells::even_rows;
}

// What a frame makes of a chain.
struct ChainForm {
  const Chain &chain;
  Format format;
  int decimation;
  Repair repair;
  int width;
};

// Of the chains with colour.
struct ColourWorkspace {
  LineRing reflected;   // mosaic lines with their columns reflected
  LineRing unrepaired;  // front end output that waits for repair
  LineRing green;
  LineRing differences;  // A - G, a word a cell
  uint8_t *red, *blue;
  uint8_t *scratch;  // green on its way to the matrix, then enhanced luma
  CellRow flat;
  LineRing matrix[3];          // luma or the first row; then the other two where kept in full
  uint8_t *chroma[2][2] = {};  // U and V of a pair, one value a cell
  EmissionLines emission;

  constexpr ColourWorkspace(LineMemory &memory, const ChainForm &form)
      : reflected(memory, form.width, finds_flat_cells(form.chain) ? 6 : 5),
        red(memory.line(form.width)),
        blue(memory.line(form.width)),
        scratch(memory.line(form.width)),
        emission(memory, form.format, form.decimation, form.width) {
    const int width = form.width;
    const bool rgb = is_rgb(form.format);
    if (form.repair == Repair::on) unrepaired = LineRing(memory, width, 6);
    if (has_green(form.chain)) {
      green = LineRing(memory, width, 3);
      differences = LineRing(memory, width, 3);
    }
    if (finds_flat_cells(form.chain)) {
      flat.mask = memory.line(width);
      for (uint8_t *&line : flat.rgb) line = memory.line(width);
    }
    matrix[0] = LineRing(memory, width, 3);
    if (rgb || form.chain.chroma == Chroma::box) {
      for (int i = 1; i < 3; ++i) matrix[i] = LineRing(memory, width, rgb ? 2 : 3);
    }
    for (auto &pair : chroma) {
      for (uint8_t *&line : pair) line = rgb ? nullptr : memory.line(width / 2);
    }
  }
};

// Of quality 12.
struct GreyWorkspace {
  LineRing grey;      // front end output
  LineRing finished;  // luma that has fed back
  uint8_t *enhanced[2];
  uint8_t *scratch;
  LineRing matrix[3];  // R, G, B
  uint8_t *chroma[2][2] = {};
  EmissionLines emission;

  constexpr GreyWorkspace(LineMemory &memory, const ChainForm &form)
      : grey(memory, form.width, 6),
        finished(memory, form.width, 3),
        enhanced{memory.line(form.width), memory.line(form.width)},
        scratch(memory.line(form.width)),
        emission(memory, form.format, form.decimation, form.width) {
    const bool rgb = is_rgb(form.format);
    for (LineRing &ring : matrix) ring = rgb ? LineRing(memory, form.width, 2) : LineRing();
    for (auto &pair : chroma) {
      for (uint8_t *&line : pair) line = rgb ? nullptr : memory.line(form.width / 2);
    }
  }
};

template <class Workspace>
consteval bool fits_every_form(const Chain &chain, Repair repair = Repair::off) {
  constexpr Format formats[] = {Format::i420, Format::yuyv, Format::uyvy, Format::rgb24,
                                Format::rgb32};
  uint8_t area[2 * line_memory_bytes] = {};
  for (const Format format : formats) {
    for (int decimation = -1; decimation <= 1; ++decimation) {
      LineMemory memory(area);
      Workspace(memory, {chain, format, decimation, repair, widest_line});
      if (!memory.fits()) return false;
    }
  }
  return true;
}
static_assert(fits_every_form<ColourWorkspace>(quality_0_chain, Repair::on));
static_assert(fits_every_form<ColourWorkspace>(quality_1_chain, Repair::on));
static_assert(fits_every_form<ColourWorkspace>(quality_2_chain, Repair::on));
static_assert(fits_every_form<ColourWorkspace>(quality_10_chain));
static_assert(fits_every_form<ColourWorkspace>(quality_11_chain));
static_assert(fits_every_form<GreyWorkspace>(quality_12_chain));
static_assert(fits_every_form<ColourWorkspace>(quality_14_chain));

}  // namespace
}  // namespace ppl::TARGET
