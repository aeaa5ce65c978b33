// What the program prints and writes.
#pragma once

#include <string>

#include "suite.h"

namespace ppl::bench {

struct RunDescription {
  std::string processor;
  int pinned_to;  // -1: not pinned
  int rounds;
  double fastest_probe;  // nanoseconds
};

void print_names(const Suite &suite);

// A table for each section, then the targets.
void print_report(const Suite &suite, const RunDescription &description);

// The tables for readers, in Markdown: puts them in the place of all that follows the heading
// "Figures" of this file. False if there is no such file or it cannot be written.
bool write_markdown(const std::string &path, const Suite &suite, const RunDescription &description);

// Google Benchmark's JSON. False if the file cannot be written.
bool write_json(const std::string &path, const Suite &suite, const RunDescription &description);

}  // namespace ppl::bench
