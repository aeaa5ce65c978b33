#include "report.h"

#include <benchmark/benchmark.h>
#include <fmt/core.h>

#include <algorithm>
#include <fstream>
#include <iostream>

namespace ppl::bench {
namespace {

using benchmark::BenchmarkReporter;

constexpr size_t name_width = 24;

void print_section(const Section &section) {
  fmt::print("\n{}\n{}\n\n", section.title, section.explanation);
  fmt::print("{:{}} {:>9} {:>9} {:>9}", "", name_width, "ns/pixel", "median", "MPixel/s");
  for (const std::string &reference : section.references) fmt::print(" {:>13}", "/ " + reference);
  fmt::print("\n");
  for (const Comparison &comparison : section.comparisons) {
    fmt::print("{}\n", comparison.name);
    for (const Route &route : comparison.routes) {
      fmt::print("  {:{}}", route.name, name_width - 2);
      if (!route.wrong.empty()) {
        fmt::print("  WRONG: {}\n", route.wrong);
      } else if (!route.not_available.empty()) {
        fmt::print("  not available ({})\n", route.not_available);
      } else {
        const Summary &summary = route.summary;
        fmt::print(" {:9.3f} {:9.3f} {:9.0f}", summary.minimum / comparison.pixels,
                   summary.median / comparison.pixels, 1e3 * comparison.pixels / summary.minimum);
        for (const std::string &reference : section.references) {
          const double r = ratio(comparison, route, reference);
          fmt::print(" {:>13}", r > 0 ? fmt::format("{:.2f}", r) : "-");
        }
        fmt::print("{}\n", summary.noisy ? "  (noisy)" : "");
      }
    }
    for (const StageCost &stage : section.stage_costs) {
      const double time = cost(comparison, stage);
      if (time == 0) continue;
      fmt::print("  {:{}} {:9.3f}   {} - {}\n", stage.stage, name_width - 2, time,
                 stage.with_and_without.route, stage.with_and_without.other);
    }
  }
}

void print_targets(const Suite &suite) {
  const std::vector<TargetResult> results = target_results(suite);
  if (results.empty()) return;
  fmt::print("\nTargets\n\n{:{}} {:>9} {:>9} {:>9}\n", "", 2 * name_width, "ratio", "at most",
             "reach");
  for (const TargetResult &result : results) {
    fmt::print("{:{}} {:>9} {:9.2f} {:9.2f}  {}\n", result.name, 2 * name_width,
               result.ratio > 0 ? fmt::format("{:.3f}", result.ratio) : "-", result.target.limit,
               result.target.reach, result.verdict);
  }
}

BenchmarkReporter::Run reported(const Section &section, const Comparison &comparison,
                                const Route &route, const std::string &aggregate, double time) {
  BenchmarkReporter::Run run;
  run.run_name.function_name = full_name(section, comparison, route);
  run.family_index = 0;
  run.per_family_instance_index = 0;
  run.run_type = BenchmarkReporter::Run::RT_Aggregate;
  run.aggregate_name = aggregate;
  run.repetition_index = BenchmarkReporter::Run::no_repetition_index;
  run.repetitions = route.summary.counted;
  run.time_unit = benchmark::kNanosecond;
  run.real_accumulated_time = run.cpu_accumulated_time = time * 1e-9;
  if (!route.measured()) {
    run.error_occurred = true;
    run.error_message = route.wrong.empty() ? "not available: " + route.not_available : route.wrong;
    return run;
  }
  run.counters["ns_per_pixel"] = time / comparison.pixels;
  run.counters["pixels_per_second"] = 1e9 * comparison.pixels / time;
  run.counters["noisy"] = route.summary.noisy;
  for (const std::string &reference : section.references) {
    const double r = ratio(comparison, route, reference);
    if (r > 0) run.counters["minimum_over_" + reference] = r;
  }
  return run;
}

}  // namespace

void print_names(const Suite &suite) {
  for (const Section &section : suite) {
    for (const Comparison &comparison : section.comparisons) {
      for (const Route &route : comparison.routes) {
        fmt::print("{}\n", full_name(section, comparison, route));
      }
    }
  }
}

void print_report(const Suite &suite, const RunDescription &description) {
  const std::string pinned =
      description.pinned_to < 0 ? "not pinned" : fmt::format("core {}", description.pinned_to);
  fmt::print(
      "{}, {}, compiler {}. At least {} quiet repetitions of each route, in turns.\n"
      "Minimum and median; ratios are of minima. Compare ratios, not times.\n",
      description.processor, pinned, __VERSION__, description.rounds);
#ifndef NDEBUG
  fmt::print("This is a debug build: its times mean nothing.\n");
#endif
  for (const Section &section : suite) print_section(section);
  print_targets(suite);
  std::fflush(stdout);
}

bool write_json(const std::string &path, const Suite &suite, const RunDescription &description) {
  std::ofstream file(path);
  benchmark::AddCustomContext("processor", description.processor);
  benchmark::AddCustomContext("pinned_to", std::to_string(description.pinned_to));
  benchmark::AddCustomContext("fastest_probe_ns", fmt::format("{:.0f}", description.fastest_probe));
  benchmark::JSONReporter reporter;
  reporter.SetOutputStream(&file);
  reporter.SetErrorStream(&std::cerr);
  reporter.ReportContext(BenchmarkReporter::Context());
  std::vector<BenchmarkReporter::Run> runs;
  for (const Section &section : suite) {
    for (const Comparison &comparison : section.comparisons) {
      for (const Route &route : comparison.routes) {
        runs.push_back(reported(section, comparison, route, "minimum", route.summary.minimum));
        runs.push_back(reported(section, comparison, route, "median", route.summary.median));
      }
    }
  }
  reporter.ReportRuns(runs);
  reporter.Finalize();
  file.close();
  return !file.fail();
}

}  // namespace ppl::bench
