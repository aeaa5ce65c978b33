#include "commands/scene_source.h"

#include <fmt/core.h>

#include "base/failure.h"
#include "pictures/file_formats.h"

namespace ppl::tool {
namespace {

std::string scene_names() {
  std::string names;
  for (uint32_t i = 0; const char *name = ppl_simulator_scene_name(i); ++i)
    names += (i ? ", " : "") + std::string(name);
  return names;
}

[[noreturn]] void refuse_size(Size size) {
  throw Failure(fmt::format(
      "the simulator takes no frame of {}x{}: give an even width and height from 2 to 8192",
      size.width, size.height));
}

}  // namespace

Simulator simulate_scene(const std::string &scene, Size size, uint64_t seed) {
  Simulator simulator(ppl_simulator_create(scene.c_str(), size.width, size.height, seed));
  if (simulator) return simulator;
  for (uint32_t i = 0; const char *name = ppl_simulator_scene_name(i); ++i)
    if (scene == name) refuse_size(size);
  throw Failure(fmt::format("there is no scene '{}': use {}", scene, scene_names()));
}

Simulator simulate_png(const std::string &path, Size size, uint64_t seed) {
  const Picture picture = read_png(path);
  if (size.width == 0) size = {picture.size.width & ~1u, picture.size.height & ~1u};
  Simulator simulator(ppl_simulator_create_from_rgb(
      picture.rgb.data(), picture.size.width, picture.size.height, size.width, size.height, seed));
  if (!simulator) refuse_size(size);
  return simulator;
}

}  // namespace ppl::tool
