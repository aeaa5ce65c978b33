// A stream with a raw frame and an output buffer, and the routes through the library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "buffer.h"
#include "opencv_route.h"
#include "plain_loop.h"
#include "ppl.h"
#include "suite.h"

namespace ppl::bench {

struct Size {
  int width, height;

  double pixels() const { return static_cast<double>(width) * height; }
};

constexpr Size sizes[] = {{640, 480}, {1280, 1024}};

enum class Tier { p3, sse2 };
constexpr Tier tiers[] = {Tier::p3, Tier::sse2};

enum class Format { i420, yuyv, uyvy, rgb24, rgb32 };

std::string to_string(Size size);
std::string to_string(Tier tier);
std::string to_string(Format format);

// How a frame goes through the library.
struct Setting {
  Tier tier = Tier::sse2;
  Format format = Format::i420;
  uint32_t quality = 3;
  bool repairs = false;  // the medium filter
  int decimation = 0;
  bool statistics = false;
};

struct FreeContext {
  void operator()(PplContext *context) const { ppl_free(context); }
};
using ContextPointer = std::unique_ptr<PplContext, FreeContext>;

ContextPointer new_context();

class Studio {
 public:
  Studio();

  // A camera's raw frame of a size, restored, and what a setting makes of it.
  std::span<uint8_t> frame(Size size);
  std::span<uint8_t> output(Size size, const Setting &setting);

  // Gives the frame its samples back.
  void restore(Size size);

  // A route through the library's entry functions.
  Route library_route(std::string name, Size size, const Setting &setting);
  // The same work by a plain loop. It has no statistics.
  Route plain_route(std::string name, Size size, PlainLoop loop);
  // Something like it by OpenCV, to I420.
  Route opencv_route(std::string name, Size size, const OpenCvStages &stages);
  // A copy of the frame's bytes: what reading and writing alone costs.
  Route copy_route(Size size);

 private:
  PplContext *context_for(const Setting &setting) const;
  void apply(Size size, const Setting &setting);
  void compose_tables();

  // Qualities 10 and 11 leave flat cells behind, which 0 and 1 would then spread over the picture:
  // they have a context of their own.
  ContextPointer context_, context_of_flat_cells_;
  PlainTables tables_;
  Buffer scene_, frame_, output_;
  Size scene_size_ = {0, 0};
};

}  // namespace ppl::bench
