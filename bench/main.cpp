// ppl_bench: how fast the library is, in one run beside what it can be compared with.

#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <regex>
#include <string>
#include <vector>

#include "probe.h"
#include "report.h"
#include "runner.h"
#include "studio.h"

namespace {

using namespace ppl::bench;

struct Options {
  std::vector<std::string> topics;
  std::string filter, json, markdown;
  int rounds = 100;
  int processor = -1;
  bool alone = false, list = false;
};

// Whether every route that ran did the right work.
bool measure(Suite &suite, Runner &runner) {
  bool right = true;
  for (Section &section : suite) {
    for (Comparison &comparison : section.comparisons) {
      fmt::print(stderr, "{}/{}\n", section.name, comparison.name);
      runner.run(comparison);
      for (const Route &route : comparison.routes) {
        if (route.wrong.empty()) continue;
        fmt::print(stderr, "{}: {}\n", full_name(section, comparison, route), route.wrong);
        right = false;
      }
    }
  }
  return right;
}

int run(const Options &options) {
  Studio studio;
  Suite suite;
  add_default_pipeline(suite, studio);
  add_statistics(suite, studio);
  add_scaling(suite, studio);
  add_monochrome(suite, studio);
  add_chains(suite, studio);
  add_packed_video(suite);
  if (!options.topics.empty()) {
    std::erase_if(suite, [&options](const Section &section) {
      const auto &topics = options.topics;
      return std::find(topics.begin(), topics.end(), section.name) == topics.end();
    });
  }
  select(suite, Filter(options.filter), options.alone ? Company::none : Company::references);
  if (suite.empty()) {
    fmt::print(stderr, "nothing is called like that; --list shows what there is\n");
    return 1;
  }
  if (options.list) {
    print_names(suite);
    return 0;
  }

  RunDescription description;
  description.processor = processor_name();
  description.pinned_to = pin_thread(options.processor);
  description.rounds = options.rounds;
  Runner runner(options.rounds);
  const bool right = measure(suite, runner);
  description.fastest_probe = runner.fastest_probe();
  print_report(suite, description);
  if (!options.json.empty() && !write_json(options.json, suite, description)) {
    fmt::print(stderr, "cannot write {}\n", options.json);
    return 1;
  }
  if (!options.markdown.empty() && !write_markdown(options.markdown, suite, description)) {
    fmt::print(stderr, "{} is not there, has no heading \"Figures\" or cannot be written\n",
               options.markdown);
    return 1;
  }
  return right ? 0 : 1;
}

int parse_and_run(int argc, char **argv) {
  Options options;
  CLI::App app("Measures how fast the library is.", "ppl_bench");
  app.add_option("--topic", options.topics, "only these: the first parts of the names, with commas")
      ->delimiter(',');
  app.add_option("--filter,--benchmark_filter", options.filter,
                 "only names in which this regular expression is found, and what they are divided "
                 "by; with a '-' in front, only those in which it is not");
  app.add_flag("--alone", options.alone,
               "without what they are divided by: shorter, and no ratios");
  app.add_flag("--list,--benchmark_list_tests", options.list,
               "print the names and measure nothing");
  app.add_option("--rounds", options.rounds, "quiet repetitions of each route")
      ->check(CLI::Range(1, 100000))
      ->capture_default_str();
  app.add_option("--json", options.json, "also write Google Benchmark's JSON to this file");
  app.add_option("--markdown", options.markdown,
                 "also put tables under the heading \"Figures\" of this file");
  app.add_option("--core", options.processor, "run on this processor; the last one if not given");
  CLI11_PARSE(app, argc, argv);
  return run(options);
}

}  // namespace

int main(int argc, char **argv) {
  try {
    return parse_and_run(argc, argv);
  } catch (const std::regex_error &) {
    std::fputs("the filter is not a regular expression\n", stderr);
  } catch (const std::exception &error) {
    std::fprintf(stderr, "%s\n", error.what());
  }
  return 1;
}
