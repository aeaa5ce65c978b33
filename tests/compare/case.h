// One random case: how it is made, run and made smaller.
#pragma once

#include <stdint.h>

#include <optional>
#include <string>
#include <vector>

#include "compare/operations.h"
#include "testing/test_hooks.h"

namespace ppl_compare {

struct Case {
  uint64_t seed, number;
  Processor processor;
  // CPUID answers for leaves 0, 1, 0x80000000 and 0x80000001.
  ppl::test_hooks::CpuidResult leaves[4];
  std::vector<Step> steps;
};

struct Failure {
  size_t step;
  std::string what;
};

struct Totals {
  uint64_t steps = 0, frames = 0, pictures = 0, free_pictures = 0;
};

Case make_case(const Options &options, uint64_t seed, uint64_t number);

// The buffers and pristine curve families that all cases share.
class Runner {
 public:
  Runner();
  std::optional<Failure> run(const Case &one, Totals *totals = nullptr);
  // Leaves out steps as long as the case still fails.
  Case shrink(const Case &failing);

 private:
  Arena library_source_, library_output_, model_source_, model_output_, third_source_;
  std::vector<uint8_t> full_range_, studio_range_;
};

std::string describe(const Case &one);

// The step that runs at this moment.
std::string describe_running_step();

}  // namespace ppl_compare
