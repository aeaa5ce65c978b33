// The stages of each multi-pass quality.
//
// All stages of a chain run in one sweep over the line pairs, each as far ahead of the emitted line
// as the windows behind it reach:
//
//   front end -> [repair] -> green -> demosaic -> [flat cells] -> matrix -> [enhancement] ->
//   emission
//
// A stage is found by its name in a file of its own, where its window is drawn:
//
//   stage         its window           how far it is ahead of the line pair that is emitted
//   front end     the sample           2 pairs; 1 without a green stage; 1 more with repair
//   repair        2 lines, 2 columns   1 pair behind the front end
//   green         2 lines, 2 columns   2 lines
//   demosaic      1 line, 1 cell       1 line if enhancement follows, otherwise none
//   flat cells    3 lines, 3 columns   as demosaic
//   matrix        the pixel            as demosaic
//   enhancement   1 line, 1 column     none
//   chroma box    1 line, 1 column     none
//
// A new form of a stage is a value of its enumeration here, a line function in the stage's file,
// and a branch where ColourSweep (colour_sweep.inl.h) runs the stage.
#pragma once

namespace ppl {

enum class Demosaic {
  accurate,        // gradient-corrected green, colour differences
  averages,        // rounded averages, green too
  green_averages,  // gradient-corrected green, rounded averages for red and blue
  grey,            // none: the samples are taken as grey
};

enum class FlatCells {
  none,
  left_over,  // what an earlier frame of another quality left in the scratch
  odd_rows,
  even_rows,
};

enum class Enhance {
  none,
  gradient,
  in_place,   // gradient form on the mosaic, before the matrix, feeding back
  laplacian,  // followed by a median of the neighbours that never fires: its threshold stays 0
};

// Of hot and dead pixels: qualities 0, 1 and 2 have a second form with it.
enum class Repair { off, on };

enum class Chroma {
  direct,
  box,
};

struct Chain {
  Demosaic demosaic;
  FlatCells flat_cells;
  Enhance enhance;
  Chroma chroma;
};

// One line per quality.
// clang-format off
inline constexpr Chain quality_0_chain  = {Demosaic::accurate,       FlatCells::left_over, Enhance::gradient,  Chroma::direct};
inline constexpr Chain quality_1_chain  = {Demosaic::accurate,       FlatCells::left_over, Enhance::none,      Chroma::direct};
inline constexpr Chain quality_2_chain  = {Demosaic::averages,       FlatCells::none,      Enhance::none,      Chroma::direct};
inline constexpr Chain quality_10_chain = {Demosaic::accurate,       FlatCells::odd_rows,  Enhance::gradient,  Chroma::direct};
inline constexpr Chain quality_11_chain = {Demosaic::accurate,       FlatCells::even_rows, Enhance::none,      Chroma::direct};
inline constexpr Chain quality_12_chain = {Demosaic::grey,           FlatCells::none,      Enhance::in_place,  Chroma::direct};
inline constexpr Chain quality_14_chain = {Demosaic::green_averages, FlatCells::none,      Enhance::laplacian, Chroma::box};
// clang-format on

}  // namespace ppl
