// The sensor simulator as the commands use it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/frame_format.h"
#include "simulator/simulator.h"

namespace ppl::tool {

struct FreeSimulator {
  void operator()(PplSimulator *simulator) const { ppl_simulator_free(simulator); }
};
using Simulator = std::unique_ptr<PplSimulator, FreeSimulator>;

// Throws Failure for an unknown scene or a size that the simulator does not take.
Simulator simulate_scene(const std::string &scene, Size size, uint64_t seed);

// A picture as the scene. Without a size it has the picture's, cut to even numbers.
Simulator simulate_png(const std::string &path, Size size, uint64_t seed);

}  // namespace ppl::tool
