// What tells a quiet moment from a disturbed one on a machine that others use as well.
#pragma once

#include <string>

namespace ppl::bench {

// Keeps the calling thread on one processor: the one given, or if negative the last that it may
// use. Returns its number, or -1 if that cannot be done.
int pin_thread(int processor);

// Runs a fixed loop of independent additions and returns its time in nanoseconds. It fills the
// core's adders, so that a neighbour who takes a share of them shows although the clock stays.
double probe();

// How often the calling thread has lost its processor to another one.
long interruptions();

double now();              // nanoseconds
double thread_cpu_time();  // nanoseconds that the calling thread has had a processor

std::string processor_name();

}  // namespace ppl::bench
