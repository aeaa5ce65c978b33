// compare: runs random cases on the library and on the reference model side by side.
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <set>

#include "compare/case.h"
#include "compare/snapshot.h"

namespace {

using namespace ppl_compare;

// "quality=3,format=rgb24,tier=p3,decimation=0,operation=gain"; a list of values is joined by '+'.
bool apply_filter(const std::vector<std::string> &filter, Options &options) {
  for (const std::string &part : filter) {
    const size_t equals = part.find('=');
    if (equals == part.npos) return false;
    const std::string key = part.substr(0, equals), value = part.substr(equals + 1);
    std::vector<long> numbers;
    for (const std::string &number : CLI::detail::split(value, '+'))
      numbers.push_back(strtol(number.c_str(), nullptr, 10));
    if (key == "quality") {
      options.qualities.assign(numbers.begin(), numbers.end());
    } else if (key == "decimation") {
      options.decimations.assign(numbers.begin(), numbers.end());
    } else if (key == "format") {
      options.format = value;
    } else if (key == "tier") {
      options.tier = value;
    } else if (key == "operation") {
      options.operation = value;
    } else {
      return false;
    }
  }
  return true;
}

// The command line without what chooses cases: a case runs the same way only with these options.
std::string options_of_run(int argc, char **argv) {
  std::string text;
  for (int i = 1; i < argc; ++i) {
    const std::string option = argv[i];
    if (option == "--seed" || option == "--cases" || option == "--first" || option == "--case")
      ++i;
    else
      text += " " + option;
  }
  return text;
}

// A crash in a frame buffer's guard page, say. What it prints needs the heap, which is as good as
// whole here; the process ends anyway.
void report_crash(int signal_number) {
  fprintf(stdout, "CRASHED with signal %d in %s\n", signal_number, describe_running_step().c_str());
  fflush(stdout);
  _exit(3);
}

}  // namespace

int main(int argc, char **argv) {
  CLI::App app{"Compares the library with the reference model on random cases."};
  app.footer(
      "Examples:\n"
      "  compare                        all default cases\n"
      "  compare --seed 7 --cases 20000 another, longer run\n"
      "  compare --seed 7 --case 123 --verbose\n"
      "  compare --packed-video         mostly packed video\n"
      "  compare --filter format=rgb24,tier=p3,quality=3+13");
  uint64_t seed = 1, cases = 4000, first = 0;
  long single = -1;
  bool verbose = false, list = false, keep_going = false, no_large = false;
  std::vector<std::string> filter;
  Options options;
  app.add_option("--seed", seed, "Seed of the run")->capture_default_str();
  app.add_option("--cases", cases, "Number of cases")->capture_default_str();
  app.add_option("--first", first, "Number of the first case")->capture_default_str();
  app.add_option("--case", single, "Run this case alone");
  app.add_option("--qualities", options.qualities, "Qualities in play")->delimiter(',');
  app.add_option("--decimations", options.decimations, "Decimations in play")->delimiter(',');
  app.add_flag("--packed-video", options.packed_video, "Packed video more often than raw frames");
  app.add_option("--filter", filter, "key=value of quality, decimation, format, tier, operation")
      ->delimiter(',');
  app.add_flag("--verbose,-v", verbose, "Print every step");
  app.add_flag("--list", list, "Print the operations and stop");
  app.add_flag("--keep-going,-k", keep_going, "Do not stop at the first difference");
  app.add_flag("--no-large", no_large, "Leave out large frames");
  CLI11_PARSE(app, argc, argv);
  if (!apply_filter(filter, options)) {
    fprintf(stderr,
            "compare: a filter is key=value with quality, decimation, format, tier or "
            "operation\n");
    return 2;
  }
  options.large_frames = !no_large;
  if (list) {
    for (const Operation &operation : operations())
      printf("%-62s %3u %3u\n", operation.name, operation.control_weight, operation.frame_weight);
    return 0;
  }

  if (const std::string what = compare_gamma_families(); !what.empty()) {
    printf("FAILED before any case: %s\n", what.c_str());
    return 1;
  }
  for (const int signal_number : {SIGSEGV, SIGBUS, SIGFPE, SIGILL})
    signal(signal_number, &report_crash);
  Runner runner;
  Totals totals;
  uint64_t failures = 0;
  std::set<std::string> seen;
  const auto start = std::chrono::steady_clock::now();
  const uint64_t begin = single >= 0 ? static_cast<uint64_t>(single) : first;
  const uint64_t end = single >= 0 ? begin + 1 : first + cases;
  for (uint64_t number = begin; number < end; ++number) {
    const Case one = make_case(options, seed, number);
    if (verbose) {
      printf("%s", describe(one).c_str());
      fflush(stdout);
    }
    const auto failure = runner.run(one, &totals);
    if (!failure) continue;
    ++failures;
    printf("FAILED seed %llu case %llu step %zu: %s\n  %s\n", static_cast<unsigned long long>(seed),
           static_cast<unsigned long long>(number), failure->step, failure->what.c_str(),
           describe(one.steps[failure->step]).c_str());
    // Of failures that look alike the first is shown in full.
    const std::string kind = operations()[one.steps[failure->step].operation].name +
                             failure->what.substr(0, failure->what.find(':'));
    if (seen.insert(kind).second) {
      const Case smallest = runner.shrink(one);
      const auto again = runner.run(smallest);
      printf("smallest failing form, %s%s\n", describe(smallest).c_str(),
             again ? ("  " + again->what).c_str() : "  (does not fail when run again)");
    }
    printf("run it alone: compare --seed %llu --case %llu%s\n",
           static_cast<unsigned long long>(seed), static_cast<unsigned long long>(number),
           options_of_run(argc, argv).c_str());
    fflush(stdout);
    if (!keep_going) break;
  }
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  printf(
      "%llu cases, %llu steps, %llu frames (%llu with result 1, %llu free to be anything), "
      "%llu failures, %.1f s\n",
      static_cast<unsigned long long>(end - begin), static_cast<unsigned long long>(totals.steps),
      static_cast<unsigned long long>(totals.frames),
      static_cast<unsigned long long>(totals.pictures),
      static_cast<unsigned long long>(totals.free_pictures),
      static_cast<unsigned long long>(failures), seconds);
  return failures == 0 ? 0 : 1;
}
