// Work on whole lines of finished bytes: scaling rules, and writing a line in a format's layout.
//
// Source lines stand in line memory and may be read up to a register past their end, and written
// so. Output lines are written exactly.
#pragma once

#include "kernels/common/bytes.inl.h"
#include "kernels/common/line_memory.inl.h"
#include "kernels/common/placement.inl.h"

namespace ppl::TARGET {
namespace {

// out[2k + 1] = in[k], out[2k] = the average of in[k - 1] and in[k]; the first value stands twice.
[[gnu::noinline]] inline void double_leading(uint8_t *out, const uint8_t *in, int count) {
  for (int i = 0; i < count; i += Vec::size) {
    const auto here = Vec::load(in + i);
    Vec::store_interleaved(out + 2 * i, Vec::average_u8(Vec::load(in + i - 1), here), here);
  }
  out[0] = out[1];
}

// out[2k] = in[k], out[2k + 1] = the average of in[k] and in[k + 1]; the last value stands twice.
[[gnu::noinline]] inline void double_trailing(uint8_t *out, const uint8_t *in, int count) {
  for (int i = 0; i < count; i += Vec::size) {
    const auto here = Vec::load(in + i);
    Vec::store_interleaved(out + 2 * i, here, Vec::average_u8(here, Vec::load(in + i + 1)));
  }
  out[2 * count - 1] = out[2 * count - 2];
}

// Every value twice.
[[gnu::noinline]] inline void repeat(uint8_t *out, const uint8_t *in, int count) {
  for (int i = 0; i < count; i += Vec::size) {
    const auto here = Vec::load(in + i);
    Vec::store_interleaved(out + 2 * i, here, here);
  }
}

inline void average(uint8_t *out, const uint8_t *a, const uint8_t *b, int count) {
  for (int i = 0; i < count; i += Vec::size) {
    Vec::store(out + i, Vec::average_u8(Vec::load(a + i), Vec::load(b + i)));
  }
}

// out[k] = in[2k].
[[gnu::noinline]] inline void take_even(uint8_t *out, const uint8_t *in, int count) {
  for (int i = 0; i < count; i += Vec::size) {
    Vec::store(out + i, Vec::even_bytes(Vec::load(in + 2 * i), Vec::load(in + 2 * i + Vec::size)));
  }
}

// A line of the doubled picture that is being completed, beside the one before it.
struct DoubledLine {
  uint8_t *previous = nullptr, *current = nullptr;

  DoubledLine() = default;
  constexpr DoubledLine(LineMemory &memory, int length)
      : previous(memory.line(length)), current(memory.line(length)) {}

  // The line between both, in place of the one before, which nothing asks for after it.
  const uint8_t *between(int length) const {
    average(previous, previous, current, length);
    return previous;
  }

  // Makes `current` the one before the next.
  void advance() {
    uint8_t *const older = previous;
    previous = current;
    current = older;
  }
};

// A register of pixels to packed 4:2:2: `luma` a byte a pixel, `chroma` U and V of each pair in
// turn, which keeps its order also where the line is mirrored.
template <class R, PackedOrder order, bool mirrored>
void put_packed_register(uint8_t *out, typename R::type luma, typename R::type chroma) {
  if constexpr (mirrored) {
    luma = R::reverse_u8(luma);
    chroma = R::reverse_words(chroma);
  }
  if constexpr (order == PackedOrder::yuyv) {
    R::store_interleaved(out, luma, chroma);
  } else {
    R::store_interleaved(out, chroma, luma);
  }
}

// The place of luma in a pixel's two bytes; chroma takes the other.
constexpr int luma_byte(PackedOrder order) { return order == PackedOrder::yuyv ? 0 : 1; }

// A line in one of the layouts. `put` writes units `first` to `first + count - 1` to memory at
// `to`, the lowest address of the run; the run is reversed where the line is mirrored.
struct PlaneLine {
  static constexpr int unit_bytes = 1;
  const uint8_t *value;

  template <bool mirrored>
  void put(uint8_t *to, int first, int count) const {
    const uint8_t *const in = value + first;
    uint8_t *const origin = mirrored ? to + count - 1 : to;
    for_each_register(
        count,
        [=]<class R>(int i) {
          const auto v = R::load(in + i);
          if constexpr (mirrored) {
            R::store(place<true>(origin, 1, i, R::size), R::reverse_u8(v));
          } else {
            R::store(origin + i, v);
          }
        },
        [=](int i) { *place<mirrored>(origin, 1, i, 1) = in[i]; });
  }
};

// Pixels with a U and a V per pair. `first` is even.
template <PackedOrder order>
struct PackedLine {
  static constexpr int unit_bytes = 2;
  const uint8_t *y, *u, *v;

  template <bool mirrored>
  void put(uint8_t *to, int first, int count) const {
    uint8_t *const origin = mirrored ? to + 2 * (count - 1) : to;
    // Copies, which no store can alias.
    const uint8_t *const luma = y + first, *const us = u + first / 2, *const vs = v + first / 2;
    const auto single = [=](int i) {
      // A mirrored pair keeps its order of U and V in memory.
      const bool takes_u = (i % 2 == 0) != mirrored;
      uint8_t *const pixel = place<mirrored>(origin, 2, i, 1);
      pixel[luma_byte(order)] = luma[i];
      pixel[1 - luma_byte(order)] = takes_u ? us[i / 2] : vs[i / 2];
    };
    for_each_register(
        whole_cells(count),
        [=]<class R>(int i) {
          put_packed_register<R, order, mirrored>(place<mirrored>(origin, 2, i, R::size),
                                                  R::load(luma + i),
                                                  R::load_interleaved(us + i / 2, vs + i / 2));
        },
        single);
    if (count % 2 != 0) single(count - 1);
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
    // Copies, which no store can alias.
    const uint8_t *const blue = b + first, *const green = g + first, *const red = r + first;
    for_each_register(
        count,
        [=]<class R>(int i) {
          R::template store_bgr<pixel_bytes, mirrored>(
              place<mirrored>(origin, pixel_bytes, i, R::size), R::load(blue + i),
              R::load(green + i), R::load(red + i));
        },
        [=](int i) {
          uint8_t *const pixel = place<mirrored>(origin, pixel_bytes, i, 1);
          pixel[0] = blue[i];
          pixel[1] = green[i];
          pixel[2] = red[i];
          if (pixel_bytes == 4) pixel[3] = 0;
        });
  }
};

}  // namespace
}  // namespace ppl::TARGET
