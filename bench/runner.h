// Times the routes of a comparison in turns.
#pragma once

#include <string>

#include "suite.h"

namespace ppl::bench {

// A regular expression that is looked for in a full name; with a '-' in front, one that must not be
// there. Empty: everything.
class Filter {
 public:
  explicit Filter(const std::string &expression);
  bool takes(const std::string &name) const;

 private:
  std::string expression_;
  bool excludes_;
};

enum class Company {
  references,  // and what the routes are divided by or compared with
  none,        // the routes alone: their times, and no ratios
};

// Leaves of the suite what the filter takes.
void select(Suite &suite, const Filter &filter, Company company = Company::references);

class Runner {
 public:
  // `rounds`: how many quiet timings each route shall have.
  explicit Runner(int rounds);

  // First every route once: whether it does anything at all and, where that is asked for, the same
  // as another. Only then they are timed.
  void run(Comparison &comparison);

  double fastest_probe() const { return fastest_probe_; }

 private:
  void check(Comparison &comparison);
  Timing time(const Route &route);
  double watched_probe();

  int rounds_;
  double fastest_probe_;
};

}  // namespace ppl::bench
