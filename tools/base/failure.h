// The two ways in which a command ends early.
#pragma once

#include <stdexcept>

namespace ppl::tool {

// The work cannot be done: exit status 1. The message is one line and says what to do.
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The command line makes no sense: exit status 2.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace ppl::tool
