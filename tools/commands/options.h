// The options that commands have in common: controls of the library and output formats.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

#include "base/frame_format.h"
#include "library/control_options.h"

namespace ppl::tool {

// --tier, --neutral and --set, which every command has that runs frames.
void add_control_options(CLI::App *command, ControlOptions &options);

void add_quality_option(CLI::App *command, ControlOptions &options);

void add_format_option(CLI::App *command, std::optional<Format> &format,
                       const std::string &initial);

}  // namespace ppl::tool
