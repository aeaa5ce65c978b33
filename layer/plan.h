// From what comes in and what is wanted to what has to be done for each frame.
#pragma once

#include "ppl.hpp"

namespace ppl::detail {

using RawDriver = uint8_t(PPL_CALL *)(PplContext *, uint8_t *, uint8_t *, uint32_t, uint32_t,
                                      uint32_t);
using FrameFunction = uint8_t(PPL_CALL *)(PplContext *, const uint8_t *, uint8_t *, uint32_t,
                                          uint32_t, uint32_t, uint32_t);
using FieldsFunction = uint8_t(PPL_CALL *)(PplContext *, const uint8_t *, const uint8_t *,
                                           const uint8_t *, uint8_t *, uint32_t, uint32_t, uint32_t,
                                           uint32_t);

struct Turn {
  bool h = false, v = false;
  bool any() const { return h || v; }
};

// The library always runs without black lines: the layer places the picture between them.
struct Plan {
  // The part of the frame that is used, from its first sample on, and what becomes of it.
  uint32_t width = 0, height = 0;
  uint32_t picture_width = 0, picture_height = 0;
  PixelFormat library_format = PixelFormat::i420;  // what the library is asked for

  // The picture between its black lines, as the library writes it and as the caller gets it.
  Layout library_layout, picture_layout;
  Layout layout;              // with the black lines
  uint32_t lines_before = 0;  // black lines before the picture in memory

  Turn frame;    // of the mosaic, before the library sees it
  Turn mirrors;  // the library's own
  Turn picture;  // what is left to do behind the library

  RawDriver raw = nullptr;
  FrameFunction progressive = nullptr;
  FieldsFunction fields = nullptr;

  bool grey_copy = false;  // a frame call returns 0, and leaves the source as it is
  bool takes_any_stride = false;
  bool writes_past_ends = false;  // the grey copy reads and writes whole groups
  bool leaves_gaps = false;       // parts of the picture are not written: they have to be black
  bool lacks_v_plane = false;
  bool keeps_odd_lines = false;  // the next frame's motion test needs them

  bool gathers_means = false, gathers_windows = false, gathers_bands = false;
};

// `tier` is the one that frames will run on. Throws for what gives no right picture.
Plan make_plan(const Input &input, const Output &output, Tier tier);

[[noreturn]] void refuse_size(uint32_t width, uint32_t height, uint32_t least_width);

// Groups of the grey copy reach this far at the most.
inline constexpr size_t room_behind_source = 32, room_behind_picture = 64;

inline bool is_rgb(PixelFormat format) {
  return format == PixelFormat::rgb24 || format == PixelFormat::rgb32;
}

inline size_t pixel_bytes(PixelFormat format) {
  switch (format) {
    case PixelFormat::i420:
      return 1;
    case PixelFormat::rgb24:
      return 3;
    case PixelFormat::rgb32:
      return 4;
    default:
      return 2;
  }
}

}  // namespace ppl::detail
