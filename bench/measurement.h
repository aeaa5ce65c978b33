// What is kept of many timings of one route, and which of them count.
#pragma once

#include <vector>

namespace ppl::bench {

// One timing, and the slower of the two probes beside it. All in nanoseconds.
struct Timing {
  double time;
  double probe;
  bool interrupted;  // the thread lost its core meanwhile: time is without that
};

struct Summary {
  double minimum = 0;
  double median = 0;
  int counted = 0;
  bool noisy = false;  // too few quiet timings, so that all were counted
};

// A timing is quiet if nothing interrupted it and the probes beside it were about as fast as the
// fastest probe of the run: a busy neighbour on the same core slows both.
bool is_quiet(const Timing &timing, double fastest_probe);

int count_quiet(const std::vector<Timing> &timings, double fastest_probe);

// Of the quiet timings; of all of them if fewer than `required` are quiet.
Summary summarize(const std::vector<Timing> &timings, double fastest_probe, int required);

}  // namespace ppl::bench
