#include "runner.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <numeric>
#include <random>
#include <regex>
#include <vector>

#include "probe.h"

namespace ppl::bench {
namespace {

constexpr uint8_t untouched = 0xA5;

struct Result {
  std::vector<uint8_t> output, frame;
};

void run_once(const Comparison &comparison, const Route &route) {
  std::fill(comparison.output.begin(), comparison.output.end(), untouched);
  route.prepare();
  route.run();
}

bool is_untouched(const Comparison &comparison) {
  return std::all_of(comparison.output.begin(), comparison.output.end(),
                     [](uint8_t byte) { return byte == untouched; });
}

// The first byte that differs, in words; nothing if there is none.
std::string difference(const char *what, std::span<const uint8_t> found,
                       std::span<const uint8_t> expected) {
  const auto [f, e] = std::mismatch(found.begin(), found.end(), expected.begin(), expected.end());
  if (f == found.end()) return "";
  return fmt::format("{} byte {} is {} instead of {}", what, f - found.begin(), *f, *e);
}

// Why `found` is not what `expected` is, in words; nothing if it is.
std::string deviation(const Route &route, const Result &found, const Comparison &expected) {
  if (route.tolerance > 0) {
    const double sum = std::transform_reduce(found.output.begin(), found.output.end(),
                                             expected.output.begin(), 0.0, std::plus(),
                                             [](uint8_t f, uint8_t e) { return std::abs(f - e); });
    const double mean = sum / static_cast<double>(found.output.size());
    return mean <= route.tolerance ? "" : fmt::format("output is {:.2f} off on an average", mean);
  }
  const std::string wrong = difference("output", found.output, expected.output);
  return !wrong.empty() ? wrong : difference("raw frame", found.frame, expected.frame);
}

}  // namespace

Filter::Filter(const std::string &expression)
    : expression_(expression), excludes_(!expression.empty() && expression[0] == '-') {
  if (excludes_) expression_.erase(0, 1);
}

bool Filter::takes(const std::string &name) const {
  return std::regex_search(name, std::regex(expression_)) != excludes_;
}

void select(Suite &suite, const Filter &filter, Company company) {
  for (Section &section : suite) {
    for (Comparison &comparison : section.comparisons) {
      std::vector<std::string> kept;
      for (const Route &route : comparison.routes) {
        if (!filter.takes(full_name(section, comparison, route))) continue;
        kept.push_back(route.name);
        if (company == Company::references && !route.same_as.empty()) kept.push_back(route.same_as);
      }
      if (company == Company::references && !kept.empty()) {
        kept.insert(kept.end(), section.references.begin(), section.references.end());
      }
      std::erase_if(comparison.routes, [&kept](const Route &route) {
        return std::find(kept.begin(), kept.end(), route.name) == kept.end();
      });
    }
    std::erase_if(section.comparisons,
                  [](const Comparison &comparison) { return comparison.routes.empty(); });
  }
  std::erase_if(suite, [](const Section &section) { return section.comparisons.empty(); });
}

Runner::Runner(int rounds) : rounds_(rounds), fastest_probe_(probe()) {
  for (int i = 0; i < 2000; ++i) watched_probe();
}

double Runner::watched_probe() {
  const double time = probe();
  fastest_probe_ = std::min(fastest_probe_, time);
  return time;
}

void Runner::check(Comparison &comparison) {
  for (Route &route : comparison.routes) {
    run_once(comparison, route);
    if (is_untouched(comparison)) {
      route.not_available = "leaves the output untouched";
      continue;
    }
    if (route.objection) route.not_available = route.objection();
    const Route *const model = comparison.find(route.same_as);
    if (model == nullptr) continue;
    const Result found = {{comparison.output.begin(), comparison.output.end()},
                          {comparison.frame.begin(), comparison.frame.end()}};
    run_once(comparison, *model);
    route.wrong = deviation(route, found, comparison);
    if (!route.wrong.empty()) route.wrong += " in " + model->name;
  }
}

Timing Runner::time(const Route &route) {
  Timing timing;
  route.prepare();
  const long interruptions_before = interruptions();
  const double probe_before = watched_probe();
  const double cpu_start = thread_cpu_time();
  const double start = now();
  route.run();
  const double elapsed = now() - start;
  const double cpu_time = thread_cpu_time() - cpu_start;
  timing.probe = std::max(probe_before, watched_probe());
  timing.interrupted = interruptions() != interruptions_before;
  timing.time = timing.interrupted ? cpu_time : elapsed;
  return timing;
}

void Runner::run(Comparison &comparison) {
  check(comparison);
  std::vector<Route *> order;
  for (Route &route : comparison.routes) {
    if (route.not_available.empty() && route.wrong.empty()) order.push_back(&route);
  }

  constexpr int warm_up_rounds = 2;
  for (int round = 0; round < warm_up_rounds; ++round) {
    for (const Route *route : order) time(*route);
  }

  // In another order each time, so that no route profits from what stands before it.
  std::mt19937 random(1);
  constexpr int patience = 4;
  const auto has_enough = [this](const Route *route) {
    return count_quiet(route->timings, fastest_probe_) >= rounds_;
  };
  for (int round = 0; round < patience * rounds_; ++round) {
    if (round >= rounds_ && std::all_of(order.begin(), order.end(), has_enough)) break;
    std::shuffle(order.begin(), order.end(), random);
    for (Route *route : order) route->timings.push_back(time(*route));
  }
  const int required = std::max(1, rounds_ / 4);
  for (Route *route : order) {
    route->summary = summarize(route->timings, fastest_probe_, required);
  }
}

}  // namespace ppl::bench
