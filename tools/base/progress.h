// One line on standard error that tells how far the work is; only on a terminal.
#pragma once

#include <fmt/core.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <optional>

namespace ppl::tool {

class Progress {
 public:
  Progress(const char *what, std::optional<uint64_t> total)
      : what_(what), total_(total), shown_(isatty(STDERR_FILENO) == 1 && (!total || *total > 1)) {}
  ~Progress() {
    if (shown_ && count_ > 0) fmt::print(stderr, "\r\x1b[K");
  }
  Progress(const Progress &) = delete;
  Progress &operator=(const Progress &) = delete;

  void step() {
    ++count_;
    if (!shown_) return;
    if (total_)
      fmt::print(stderr, "\r{} {} of {}", what_, count_, *total_);
    else
      fmt::print(stderr, "\r{} {}", what_, count_);
    std::fflush(stderr);
  }

 private:
  const char *what_;
  std::optional<uint64_t> total_;
  bool shown_;
  uint64_t count_ = 0;
};

}  // namespace ppl::tool
