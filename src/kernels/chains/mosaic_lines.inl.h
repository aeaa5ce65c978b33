// Lines of the mosaic, as the stages of a chain see them.
#pragma once

#include "kernels/common/bytes.inl.h"
#include "kernels/common/line_memory.inl.h"

namespace ppl::TARGET {
namespace {

// Off the frame a line reads its reflection about the first and the last column; on the right for
// the rest of a last block, too.
inline void reflect_columns(uint8_t *line, int width) {
  for (int i = 1; i <= widest_reach; ++i) line[-i] = line[i];
  const int block_end = round_up(width, block);
  for (int i = 1; width - 1 + i < block_end + widest_reach; ++i) {
    line[width - 1 + i] = line[width - 1 - i];
  }
}

// Off the frame a line number reads its reflection about the first and the last line.
inline int reflected(int y, int height) {
  return y < 0 ? -y : y >= height ? 2 * (height - 1) - y : y;
}

// Where the lines of the mosaic stand. With a stride other than the width a chain's line pairs move
// by the width and the stride together, and each stage steps from its pair by its own step: which
// bytes a line number means then depends on the pair that is being emitted. Meant so:
// docs/oddities.md, "Strides".
struct MosaicLines {
  uint8_t *frame;
  int width, height, pitch, stride;  // pitch: the width as the caller gave it

  explicit MosaicLines(const PplContext &ctx, uint8_t *src)
      : frame(src),
        width(whole_cells(ctx.frame_width)),
        height(whole_cells(ctx.frame_height)),
        pitch(ctx.frame_width),
        stride(ctx.frame_stride) {}

  bool is_contiguous() const { return stride == pitch; }

  // Where line y starts while `pair` is being emitted. Negative where it would lie before the
  // frame.
  int offset(int pair, int y, int step) const {
    return pair * (pitch + stride) + (y - 2 * pair) * step;
  }

  uint8_t *line(int pair, int y, int step) const { return frame + offset(pair, y, step); }

  // Copies a line. A sample that would lie before the frame is read from as many lines below the
  // pair's first one as the line lies above it.
  void copy_line(uint8_t *to, int pair, int y, int step) const {
    const int start = offset(pair, y, step);
    int x = 0;
    if (start < 0) {
      const uint8_t *const mirrored = frame + offset(pair, 4 * pair - y, step);
      for (; x < width && start + x < 0; ++x) to[x] = mirrored[x];
    }
    copy_bytes(to + x, frame + start + x, width - x);
  }
};

// A ring of lines by line number; its capacity is how many of them are alive at a time.
class LineRing {
 public:
  LineRing() = default;
  constexpr LineRing(LineMemory &memory, int length, int capacity)
      : first_(memory.line(length)), pitch_(line_pitch(length)), capacity_(capacity) {
    for (int i = 1; i < capacity; ++i) memory.line(length);
  }

  uint8_t *operator[](int y) const { return first_ + slot(y) * pitch_; }
  int slot(int y) const { return y % capacity_; }

 private:
  uint8_t *first_ = nullptr;
  int pitch_ = 0, capacity_ = 1;
};

// Copies of mosaic lines with their columns reflected, kept for as long as they may be asked for
// again.
class ReflectedLines {
 public:
  ReflectedLines(const LineRing &lines, const MosaicLines &mosaic)
      : mosaic_(mosaic), lines_(lines) {
    for (int &number : holds_) number = -1;
  }

  // Line y, after reflection, while `pair` is being emitted.
  const uint8_t *get(int pair, int y, int step) {
    const int number = reflected(y, mosaic_.height);
    uint8_t *const to = lines_[number];
    int &held = holds_[lines_.slot(number)];
    if (held == number) return to;
    mosaic_.copy_line(to, pair, number, step);
    reflect_columns(to, mosaic_.width);
    // With other strides the same number means other bytes the next time.
    held = mosaic_.is_contiguous() ? number : -1;
    return to;
  }

  static constexpr int most_lines = 6;

 private:
  const MosaicLines &mosaic_;
  const LineRing lines_;
  int holds_[most_lines];
};

}  // namespace
}  // namespace ppl::TARGET
