// A plain two-dimensional array.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ppl_model {

template <typename T>
class Grid {
 public:
  Grid() = default;
  Grid(int width, int height)
      : width_(width),
        height_(height),
        values_(static_cast<size_t>(width) * static_cast<size_t>(height)) {}

  int width() const { return width_; }
  int height() const { return height_; }
  T &at(int line, int column) { return values_[index(line, column)]; }
  const T &at(int line, int column) const { return values_[index(line, column)]; }

 private:
  size_t index(int line, int column) const {
    return static_cast<size_t>(line) * static_cast<size_t>(width_) + static_cast<size_t>(column);
  }

  int width_ = 0, height_ = 0;
  std::vector<T> values_;
};

using Plane = Grid<uint8_t>;

}  // namespace ppl_model
