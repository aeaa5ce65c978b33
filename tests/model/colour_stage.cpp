#include "model/colour_stage.h"

#include "model/arithmetic.h"

namespace ppl_model {

namespace {

// The cell's common green: the rounding average of both greens, as 16-bit words.
int average_green(const Cell &cell) { return (cell.Gb + cell.Gr + 1) >> 1; }

// The green of each pixel of a cell: its own where the mosaic has one.
int green_at(const Cell &cell, int line, int column) {
  if (line == 0 && column == 1) return cell.Gb;
  if (line == 1 && column == 0) return cell.Gr;
  return average_green(cell);
}

}  // namespace

int matrix_row(const WordMatrix &matrix, size_t row, int R, int G, int B, int rounding) {
  const int sum = matrix[3 * row] * R + matrix[3 * row + 1] * G + matrix[3 * row + 2] * B;
  return wrap16(int64_t{sum} + rounding) >> 6;
}

uint8_t studio_luma(int value) {
  return static_cast<uint8_t>(std::min(clamp_to_byte(value) + 16, 235));
}

uint8_t studio_chroma(int value) {
  return static_cast<uint8_t>(std::clamp(value, -112, 112) + 128);
}

ColourPlanes yuv_planes(const Parameters &params, const CellGrid &cells) {
  const WordMatrix &matrix = params.studio_base1_vec;
  const int rounding = params.offset_studio_vec;
  ColourPlanes planes;
  planes.y = Plane(2 * cells.width(), 2 * cells.height());
  planes.u = Plane(cells.width(), cells.height());
  planes.v = Plane(cells.width(), cells.height());
  for (int p = 0; p < cells.height(); ++p) {
    for (int c = 0; c < cells.width(); ++c) {
      const Cell &cell = cells.at(p, c);
      for (int line = 0; line < 2; ++line)
        for (int column = 0; column < 2; ++column)
          planes.y.at(2 * p + line, 2 * c + column) = studio_luma(
              matrix_row(matrix, 0, cell.R, green_at(cell, line, column), cell.B, rounding));
      // Chroma rounds with plain 32: the offset moves luma alone.
      const int Ga = average_green(cell);
      planes.u.at(p, c) = studio_chroma(matrix_row(matrix, 1, cell.R, Ga, cell.B, 32));
      planes.v.at(p, c) = studio_chroma(matrix_row(matrix, 2, cell.R, Ga, cell.B, 32));
    }
  }
  return planes;
}

ColourPlanes rgb_planes(const Parameters &params, const CellGrid &cells) {
  const WordMatrix &matrix = params.rgb_base1_vec;
  const int rounding = params.offset_rgb_vec;
  ColourPlanes planes;
  for (Plane *plane : {&planes.r, &planes.g, &planes.b})
    *plane = Plane(2 * cells.width(), 2 * cells.height());
  for (int p = 0; p < cells.height(); ++p) {
    for (int c = 0; c < cells.width(); ++c) {
      const Cell &cell = cells.at(p, c);
      const auto channel = [&](size_t row, int G) {
        return clamp_to_byte(matrix_row(matrix, row, cell.R, G, cell.B, rounding));
      };
      const int Ga = average_green(cell);
      for (int line = 0; line < 2; ++line) {
        for (int column = 0; column < 2; ++column) {
          const int y = 2 * p + line;
          const int x = 2 * c + column;
          planes.r.at(y, x) = channel(0, Ga);
          planes.g.at(y, x) = channel(1, green_at(cell, line, column));
          planes.b.at(y, x) = channel(2, Ga);
        }
      }
    }
  }
  return planes;
}

}  // namespace ppl_model
