// The options that commands have in common: controls of the library and output formats.
#pragma once

#include <ppl.h>

#include <CLI/CLI.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/frame_format.h"

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

// --tier, --neutral and --set, which every command has that runs frames.
void add_control_options(CLI::App *command, ControlOptions &options);

void add_quality_option(CLI::App *command, ControlOptions &options);

void add_format_option(CLI::App *command, std::optional<Format> &format,
                       const std::string &initial);

}  // namespace ppl::tool
