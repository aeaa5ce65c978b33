#include "probe.h"

#include <sched.h>
#include <sys/resource.h>
#include <time.h>

#include <chrono>
#include <cstdint>
#include <fstream>

namespace ppl::bench {

int pin_thread(int processor) {
  cpu_set_t allowed;
  CPU_ZERO(&allowed);
  if (sched_getaffinity(0, sizeof allowed, &allowed) != 0) return -1;
  if (processor < 0) {
    processor = CPU_SETSIZE - 1;
    while (processor >= 0 && !CPU_ISSET(processor, &allowed)) --processor;
  }
  if (processor < 0 || processor >= CPU_SETSIZE) return -1;
  cpu_set_t chosen;
  CPU_ZERO(&chosen);
  CPU_SET(processor, &chosen);
  return sched_setaffinity(0, sizeof chosen, &chosen) == 0 ? processor : -1;
}

double probe() {
  uint64_t a = 0, b = 0, c = 0, d = 0, e = 0, f = 0, g = 0, h = 0;
  const double start = now();
  for (int i = 0; i < 6000; ++i) {
    // The compiler must neither join nor reorder them into fewer.
    asm volatile("add $1, %0\n\tadd $1, %1\n\tadd $1, %2\n\tadd $1, %3"
                 : "+r"(a), "+r"(b), "+r"(c), "+r"(d));
    asm volatile("add $1, %0\n\tadd $1, %1\n\tadd $1, %2\n\tadd $1, %3"
                 : "+r"(e), "+r"(f), "+r"(g), "+r"(h));
  }
  return now() - start;
}

long interruptions() {
  rusage usage = {};
  getrusage(RUSAGE_THREAD, &usage);
  return usage.ru_nivcsw;
}

double now() {
  using std::chrono::steady_clock;
  return std::chrono::duration<double, std::nano>(steady_clock::now().time_since_epoch()).count();
}

double thread_cpu_time() {
  timespec time = {};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return 1e9 * static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec);
}

std::string processor_name() {
  std::ifstream info("/proc/cpuinfo");
  for (std::string line; std::getline(info, line);) {
    if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
  }
  return "unknown processor";
}

}  // namespace ppl::bench
