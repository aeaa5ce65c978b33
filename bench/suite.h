// What there is to measure: sections of comparisons of routes. A topic's source adds its sections.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "measurement.h"

namespace ppl::bench {

class Studio;

// One way to do a comparison's work.
struct Route {
  std::string name;
  std::function<void()> prepare = {};  // before each repetition, untimed
  std::function<void()> run = {};

  // The route whose output and consumed raw frame this one must repeat to the byte. Empty: none.
  std::string same_as = {};
  // Above 0: it need not, but its output's bytes may differ by so much on an average.
  double tolerance = 0;
  // After the first run: why the route does not do its work, or nothing.
  std::function<std::string()> objection = {};

  // What the run finds out.
  std::string not_available = {};
  std::string wrong = {};
  std::vector<Timing> timings = {};
  Summary summary = {};

  bool measured() const { return summary.counted > 0; }
};

// Routes that do the same work, or whose difference is of interest. They are timed in turns.
struct Comparison {
  std::string name;
  double pixels;
  // What the routes write and consume.
  std::span<uint8_t> output, frame;
  std::vector<Route> routes;

  const Route *find(const std::string &route) const;
};

// A ratio that the library wants to stay below.
struct Target {
  std::string comparison, route, reference;
  double limit, reach;
};

// Two routes whose quotient or difference says something.
struct RoutePair {
  std::string route, other;
};

// What a stage costs: the time of a comparison's route with it less that of the route without it.
struct StageCost {
  std::string stage;
  RoutePair with_and_without;
};

struct Section {
  std::string name;  // the first part of its routes' names
  std::string title;
  std::string explanation;
  std::vector<std::string> references;  // routes that all others' times are divided by
  std::vector<Comparison> comparisons;
  std::vector<Target> targets;
  std::vector<RoutePair> highlights;  // the ratios that a table for readers has
  std::vector<StageCost> stage_costs;
};

using Suite = std::vector<Section>;

// "section/comparison/route"
std::string full_name(const Section &section, const Comparison &comparison, const Route &route);

// The time of a route over that of a reference; 0 if one of them was not measured.
double ratio(const Comparison &comparison, const Route &route, const std::string &reference);

// Nanoseconds per pixel between two routes; 0 if one of them was not measured.
double cost(const Comparison &comparison, const StageCost &stage);

struct TargetResult {
  Target target;
  std::string name;  // what is divided by what
  double ratio;      // 0: not measured
  std::string verdict;
};

// Of the targets whose routes are in the suite.
std::vector<TargetResult> target_results(const Suite &suite);

// One for each topic. The studio must outlive the suite.
void add_default_pipeline(Suite &suite, Studio &studio);
void add_statistics(Suite &suite, Studio &studio);
void add_scaling(Suite &suite, Studio &studio);
void add_monochrome(Suite &suite, Studio &studio);
void add_chains(Suite &suite, Studio &studio);
void add_packed_video(Suite &suite);

}  // namespace ppl::bench
