#include "model/chain_medium_filter.h"

#include "model/arithmetic.h"

namespace ppl_model {

namespace {

// The four nearest samples of the same colour.
std::array<int, 4> neighbours(const Plane &samples, int y, int x) {
  if (y % 2 == x % 2)
    return {samples.at(y - 2, x), samples.at(y + 2, x), samples.at(y, x - 2), samples.at(y, x + 2)};
  return {samples.at(y - 1, x - 1), samples.at(y + 1, x - 1), samples.at(y - 1, x + 1),
          samples.at(y + 1, x + 1)};
}

uint8_t repaired(const Parameters &params, int sample, const std::array<int, 4> &n) {
  const int sum = n[0] + n[1] + n[2] + n[3];
  // Q6 factors; the product wraps in 16 bits.
  const int hot_level = wrap16(int64_t{sum} * params.medium_hot_pct_vec) >> 6;
  const int dead_level = wrap16(int64_t{sum} * params.medium_dead_pct_vec) >> 6;
  const bool hot = sample > std::max<int>(hot_level, params.medium_hot_vec);
  const bool dead = std::min<int>(dead_level, params.medium_dead_vec) > sample;
  if (!hot && !dead) return static_cast<uint8_t>(sample);
  // The second smallest: the smaller of the two inner values.
  const int lower = std::max(std::min(n[0], n[1]), std::min(n[2], n[3]));
  const int upper = std::min(std::max(n[0], n[1]), std::max(n[2], n[3]));
  return static_cast<uint8_t>(std::min(lower, upper));
}

}  // namespace

Plane repair_pixels(const Parameters &params, const Plane &samples, int B) {
  Plane result = samples;
  for (int y = 2; y <= samples.height() - 3; ++y)
    for (int x = B; x < samples.width() - B; ++x)
      result.at(y, x) = repaired(params, samples.at(y, x), neighbours(samples, y, x));
  return result;
}

}  // namespace ppl_model
