// The commands of the tool. Each one adds itself, with its options, to the command line.
#pragma once

#include <CLI/CLI.hpp>

namespace ppl::tool {

void add_convert(CLI::App &app);
void add_stats(CLI::App &app);
void add_compare(CLI::App &app);
void add_simulate(CLI::App &app);
void add_controls(CLI::App &app);
void add_info(CLI::App &app);
void add_demo(CLI::App &app);

}  // namespace ppl::tool
