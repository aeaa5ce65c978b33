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

}  // namespace ppl::bench
