// What a command line says about the library's controls.
#pragma once

#include <ppl.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ppl::tool {

// All but --set and --neutral stand for controls of the same table. A command adds what it takes.
struct ControlOptions {
  std::optional<uint32_t> quality;
  std::optional<int> decimation;
  std::string black_lines;  // "TOP,BOTTOM"
  std::optional<uint32_t> motion_threshold;
  std::string mirror, tier;
  bool neutral = false;
  std::vector<std::string> assignments;

  // Assignments for set_control, those of --set last.
  std::vector<std::string> all() const;

  // Sets the controls. Throws Failure for one that is refused, and for a tier that cannot run.
  void apply(PplContext *context) const;
};

}  // namespace ppl::tool
