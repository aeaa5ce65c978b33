// What a case is made of: one row per function of the library, with the arguments it is tried with.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <array>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "compare/arena.h"
#include "compare/sides.h"
#include "support/random.h"

namespace ppl_compare {

// What a run of the program may use.
struct Options {
  std::vector<uint32_t> qualities{3, 4, 5, 6, 7, 8, 9, 13};
  std::vector<int32_t> decimations{-1, 0, 1, 2};
  std::string format;         // only entries and drivers with this in their names; empty: all
  std::string tier;           // p3 or sse2; empty: both
  std::string operation;      // only operations with this in their names, beside what a case needs
  bool packed_video = false;  // more packed video than raw frames; otherwise now and then
  bool large_frames = true;
};

// One call. The arguments are fixed when the case is made, so that a case runs the same way with
// any of its steps left out.
struct Step {
  size_t operation;
  size_t stream;  // picks among the streams that are open
  std::array<int64_t, 9> arguments;
  uint64_t seed;  // of tables and frames
};

enum class Processor { none, p3, sse2 };

// What the steps of a case are drawn from.
struct Generator {
  const Options &options;
  ppl_test::Random random;
  Processor processor = Processor::sse2;
  bool has_frames = true;  // otherwise controls alone, with values at which no frame could run
  // Raw frames through drivers alone: entry functions would set decimation and black lines anew.
  bool keeps_scale = false;
  struct Size {
    uint32_t width, height;
  };
  std::vector<Size> palette;  // the frame sizes of this case

  Size size();
  uint32_t quality();
  int32_t decimation();
};

// The state of a running case.
struct Session {
  std::vector<Pair> streams;
  // Mirrors the failing saves that a step asked for, to know how many restores must follow.
  uint32_t good_saves_left = 0, failing_saves_left = 0;
  Arena &library_source, &library_output, &model_source, &model_output, &third_source;
  Processor processor = Processor::sse2;
  uint64_t frames = 0, pictures = 0;  // run in all; of these with a result of 1
  uint64_t free_pictures = 0;         // that may hold anything, so were not compared

  Pair *stream(const Step &step);
};

struct Operation {
  const char *name;
  uint32_t control_weight, frame_weight;  // how often in cases without and with frames
  void (*generate)(Generator &, Step &);
  // Runs the step on both sides. Empty if they agree, else what differs.
  std::string (*run)(Session &, const Step &);
};

// Arguments of ppl_new_frame_sizes: mostly a pair of sizes that it takes.
void frame_sizes(Generator &generator, Step &step);

std::span<const Operation> operations();
size_t operation_index(const char *name);

std::string describe(const Step &step);

}  // namespace ppl_compare
