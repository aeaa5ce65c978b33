#include "suite.h"

#include <fmt/core.h>

#include <algorithm>

namespace ppl::bench {

const Route *Comparison::find(const std::string &route) const {
  const auto found = std::find_if(routes.begin(), routes.end(),
                                  [&route](const Route &other) { return other.name == route; });
  return found != routes.end() ? &*found : nullptr;
}

std::string full_name(const Section &section, const Comparison &comparison, const Route &route) {
  return fmt::format("{}/{}/{}", section.name, comparison.name, route.name);
}

double ratio(const Comparison &comparison, const Route &route, const std::string &reference) {
  const Route *const divisor = comparison.find(reference);
  if (divisor == nullptr || !divisor->measured() || !route.measured()) return 0;
  return route.summary.minimum / divisor->summary.minimum;
}

double cost(const Comparison &comparison, const StageCost &stage) {
  const Route *const with = comparison.find(stage.with_and_without.route);
  const Route *const without = comparison.find(stage.with_and_without.other);
  if (with == nullptr || without == nullptr || !with->measured() || !without->measured()) return 0;
  return (with->summary.minimum - without->summary.minimum) / comparison.pixels;
}

std::vector<TargetResult> target_results(const Suite &suite) {
  std::vector<TargetResult> results;
  for (const Section &section : suite) {
    for (const Target &target : section.targets) {
      const auto &all = section.comparisons;
      const auto comparison = std::find_if(
          all.begin(), all.end(), [&target](const auto &c) { return c.name == target.comparison; });
      if (comparison == all.end()) continue;
      const Route *const route = comparison->find(target.route);
      const Route *const reference = comparison->find(target.reference);
      if (route == nullptr || reference == nullptr) continue;
      const double r = ratio(*comparison, *route, target.reference);
      std::string verdict = r == 0              ? "not measured"
                            : r <= target.reach ? "reached"
                            : r <= target.limit ? "met"
                                                : "missed";
      if (route->summary.noisy || reference->summary.noisy) verdict += " (noisy)";
      results.push_back({target, full_name(section, *comparison, *route) + " / " + target.reference,
                         r, std::move(verdict)});
    }
  }
  return results;
}

}  // namespace ppl::bench
