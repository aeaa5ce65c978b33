#include "tool/run_tool.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace ppl_test {
namespace {

void write_file(const std::string &path, const std::string &content) {
  std::ofstream(path, std::ios::binary) << content;
}

std::string make_folder() {
  std::string name = (std::filesystem::temp_directory_path() / "ppl_tool_XXXXXX").string();
  if (!mkdtemp(name.data())) throw std::filesystem::filesystem_error("mkdtemp", std::error_code());
  return name;
}

}  // namespace

std::vector<uint8_t> bytes_of(const std::string &text) { return {text.begin(), text.end()}; }

size_t count_lines(const std::string &text) {
  return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
}

std::string read_file(const std::string &path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool has_real_frames() { return std::filesystem::is_directory(PPL_REAL_FRAMES); }

std::string real_frame(const std::string &name) { return std::string(PPL_REAL_FRAMES "/") + name; }

void ToolTest::SetUp() {
  folder_ = make_folder();
  outside_ = make_folder();
}

void ToolTest::TearDown() {
  std::filesystem::remove_all(folder_);
  std::filesystem::remove_all(outside_);
}

int ToolTest::run_child(const std::vector<std::string> &arguments, const std::string &input,
                        int standard_error) const {
  const std::string in = outside_ + "/in", out = outside_ + "/out", err = outside_ + "/err";
  write_file(in, input);
  std::vector<char *> argv{const_cast<char *>("ppl")};
  for (const std::string &argument : arguments)
    argv.push_back(const_cast<char *>(argument.c_str()));
  argv.push_back(nullptr);

  const pid_t child = fork();
  if (child == 0) {
    const auto redirect = [](const std::string &path, int flags, int descriptor) {
      const int file = open(path.c_str(), flags, 0600);
      return file >= 0 && dup2(file, descriptor) >= 0;
    };
    constexpr int new_file = O_WRONLY | O_CREAT | O_TRUNC;
    if (redirect(in, O_RDONLY, 0) && redirect(out, new_file, 1) &&
        (standard_error < 0 ? redirect(err, new_file, 2) : dup2(standard_error, 2) >= 0) &&
        chdir(folder_.c_str()) == 0)
      execv(PPL_TOOL, argv.data());
    _exit(127);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

ToolResult ToolTest::run(const std::vector<std::string> &arguments,
                         const std::string &input) const {
  const int status = run_child(arguments, input, -1);
  return {status, read_file(outside_ + "/out"), read_file(outside_ + "/err")};
}

ToolResult ToolTest::run_on_terminal(const std::vector<std::string> &arguments) const {
  const int keyboard = posix_openpt(O_RDWR | O_NOCTTY);
  if (keyboard < 0 || grantpt(keyboard) != 0 || unlockpt(keyboard) != 0) return {};
  const int screen = open(ptsname(keyboard), O_RDWR | O_NOCTTY);
  if (screen < 0) return {};
  ToolResult result;
  result.status = run_child(arguments, "", screen);
  // What was written waits in the terminal; what the tests make it write fits.
  char text[4096];
  fcntl(keyboard, F_SETFL, O_NONBLOCK);
  for (ssize_t count; (count = ::read(keyboard, text, sizeof text)) > 0;)
    result.err.append(text, static_cast<size_t>(count));
  close(screen);
  close(keyboard);
  result.out = read_file(outside_ + "/out");
  return result;
}

ToolResult ToolTest::run_well(const std::vector<std::string> &arguments,
                              const std::string &input) const {
  const ToolResult result = run(arguments, input);
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.err, "");
  return result;
}

std::string ToolTest::read(const std::string &name) const { return read_file(path(name)); }

void ToolTest::write(const std::string &name, const std::string &content) const {
  write_file(path(name), content);
}

std::vector<std::string> ToolTest::files() const {
  std::vector<std::string> names;
  for (const auto &entry : std::filesystem::directory_iterator(folder_))
    names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace ppl_test
