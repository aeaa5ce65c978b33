// Runs the command-line tool as a user would.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace ppl_test {

struct ToolResult {
  int status = -1;  // the exit status; -1 if the tool was killed
  std::string out, err;
};

std::vector<uint8_t> bytes_of(const std::string &text);
size_t count_lines(const std::string &text);
std::string read_file(const std::string &path);

// Frames from cameras and their truths, which are no part of the project. Tests that want them are
// skipped where they are not there.
bool has_real_frames();
std::string real_frame(const std::string &name);  // its path

// An empty folder of its own for each test, which is the tool's current folder.
class ToolTest : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  ToolResult run(const std::vector<std::string> &arguments, const std::string &input = "") const;

  // Standard error is a terminal.
  ToolResult run_on_terminal(const std::vector<std::string> &arguments) const;

  // Runs, and expects success without a word on standard error.
  ToolResult run_well(const std::vector<std::string> &arguments,
                      const std::string &input = "") const;

  std::string path(const std::string &name) const { return folder_ + "/" + name; }
  std::string read(const std::string &name) const;
  void write(const std::string &name, const std::string &content) const;

  // Names of all files in the folder, sorted.
  std::vector<std::string> files() const;

 private:
  // The child's standard error is the descriptor, or a file if that is negative.
  int run_child(const std::vector<std::string> &arguments, const std::string &input,
                int standard_error) const;

  std::string folder_, outside_;
};

}  // namespace ppl_test
