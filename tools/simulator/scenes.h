// The built-in scenes, in linear light.
#pragma once

#include <cstdint>
#include <vector>

namespace ppl::simulator {

// Linear light, sRGB primaries; 1 is diffuse white.
struct Light {
  float r, g, b;
};

struct SceneName {
  const char *name;
  const char *text;
};

// Ends with a null name.
extern const SceneName scene_names[];

double srgb_to_linear(uint8_t code);
uint8_t linear_to_srgb(double light);

// False if there is no such scene.
bool render_scene(const char *name, uint32_t width, uint32_t height, std::vector<Light> &light);

}  // namespace ppl::simulator
