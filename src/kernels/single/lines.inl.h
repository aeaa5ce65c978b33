// Work on whole lines of finished bytes: scaling rules, and writing a line in a format's layout.
//
// Source lines are the context's line memory and may be read up to a register past their end, and
// written so. Output lines are written exactly.
#pragma once

#include "frame/context.h"
#include "kernels/single/sinks.inl.h"

namespace ppl::TIER {
namespace {

// Hands out lines of the context's line memory for one pass.
class LineMemory {
 public:
  explicit LineMemory(PplContext &ctx) : next_(ctx.line_buffer[0]) {}

  // A line of `length` bytes with a margin of a register on both sides.
  uint8_t *line(int length) {
    uint8_t *const start = next_ + margin;
    next_ += pitch(length);
    return start;
  }

  // From a line to the next one of the same length.
  static int pitch(int length) { return (length + margin - 1) / margin * margin + 2 * margin; }

 private:
  static constexpr int margin = 32;
  uint8_t *next_;
};

// out[2k + 1] = in[k], out[2k] = the average of in[k - 1] and in[k]; the first value stands twice.
void double_leading(uint8_t *out, uint8_t *in, int count) {
  in[-1] = in[0];
  for (int i = 0; i < count; i += Vec::bytes) {
    const auto here = Vec::load(in + i);
    const auto between = Vec::average_u8(Vec::load(in + i - 1), here);
    Vec::store(out + 2 * i, Vec::interleave_low_u8(between, here));
    Vec::store(out + 2 * i + Vec::bytes, Vec::interleave_high_u8(between, here));
  }
}

// out[2k] = in[k], out[2k + 1] = the average of in[k] and in[k + 1]; the last value stands twice.
void double_trailing(uint8_t *out, uint8_t *in, int count) {
  in[count] = in[count - 1];
  for (int i = 0; i < count; i += Vec::bytes) {
    const auto here = Vec::load(in + i);
    const auto between = Vec::average_u8(here, Vec::load(in + i + 1));
    Vec::store(out + 2 * i, Vec::interleave_low_u8(here, between));
    Vec::store(out + 2 * i + Vec::bytes, Vec::interleave_high_u8(here, between));
  }
}

// Every value twice.
void repeat(uint8_t *out, const uint8_t *in, int count) {
  for (int i = 0; i < count; i += Vec::bytes) {
    const auto here = Vec::load(in + i);
    Vec::store(out + 2 * i, Vec::interleave_low_u8(here, here));
    Vec::store(out + 2 * i + Vec::bytes, Vec::interleave_high_u8(here, here));
  }
}

void average(uint8_t *out, const uint8_t *a, const uint8_t *b, int count) {
  for (int i = 0; i < count; i += Vec::bytes) {
    Vec::store(out + i, Vec::average_u8(Vec::load(a + i), Vec::load(b + i)));
  }
}

// out[k] = in[2k].
void take_even(uint8_t *out, const uint8_t *in, int count) {
  const auto even = Vec::words(0x00FF);
  for (int i = 0; i < count; i += Vec::bytes) {
    Vec::store(out + i, Vec::pack_u8(Vec::bit_and(Vec::load(in + 2 * i), even),
                                     Vec::bit_and(Vec::load(in + 2 * i + Vec::bytes), even)));
  }
}

// A line in one of the layouts. `put` writes units `first` to `first + count - 1` to memory at
// `to`, the lowest address of the run; the run is reversed where the line is mirrored.
struct PlaneLine {
  static constexpr int unit_bytes = 1;
  const uint8_t *value;

  template <bool mirrored>
  void put(uint8_t *to, int first, int count) const {
    const uint8_t *const in = value + first;
    uint8_t *const origin = mirrored ? to + count - 1 : to;
    int i = 0;
    for (; i + Vec::bytes <= count; i += Vec::bytes) {
      const auto v = Vec::load(in + i);
      Vec::store(place<mirrored>(origin, 1, i, Vec::bytes), mirrored ? reverse_u8(v) : v);
    }
    for (; i < count; ++i) *place<mirrored>(origin, 1, i, 1) = in[i];
  }
};

// Pixels with a U and a V per pair. `first` is even.
template <bool luma_first>
struct PackedLine {
  static constexpr int unit_bytes = 2;
  const uint8_t *y, *u, *v;

  template <bool mirrored>
  void put(uint8_t *to, int first, int count) const {
    uint8_t *const origin = mirrored ? to + 2 * (count - 1) : to;
    int i = 0;
    for (; i + Vec::bytes <= count; i += Vec::bytes) {
      const auto luma = Vec::load(y + first + i);
      const auto chroma =
          Vec::interleave_low_u8(Vec::load(u + (first + i) / 2), Vec::load(v + (first + i) / 2));
      put_register<luma_first, mirrored>(place<mirrored>(origin, 2, i, Vec::bytes), luma, chroma);
    }
    for (; i < count; ++i) {
      // A mirrored pair keeps its order of U and V in memory.
      const bool takes_u = (i % 2 == 0) != mirrored;
      uint8_t *const pixel = place<mirrored>(origin, 2, i, 1);
      pixel[luma_first ? 0 : 1] = y[first + i];
      pixel[luma_first ? 1 : 0] = takes_u ? u[(first + i) / 2] : v[(first + i) / 2];
    }
  }
};

// RGB24 and RGB32.
template <int pixel_bytes>
struct RgbLine {
  static constexpr int unit_bytes = pixel_bytes;
  const uint8_t *b, *g, *r;

  template <bool mirrored>
  void put(uint8_t *to, int first, int count) const {
    uint8_t *const origin = mirrored ? to + pixel_bytes * (count - 1) : to;
    int i = 0;
    for (; i + Vec::bytes <= count; i += Vec::bytes) {
      put_rgb_register<pixel_bytes, mirrored>(place<mirrored>(origin, pixel_bytes, i, Vec::bytes),
                                              Vec::load(b + first + i), Vec::load(g + first + i),
                                              Vec::load(r + first + i));
    }
    for (; i < count; ++i) {
      uint8_t *const pixel = place<mirrored>(origin, pixel_bytes, i, 1);
      pixel[0] = b[first + i];
      pixel[1] = g[first + i];
      pixel[2] = r[first + i];
      if (pixel_bytes == 4) pixel[3] = 0;
    }
  }
};

}  // namespace
}  // namespace ppl::TIER
