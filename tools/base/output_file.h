// Output that appears as a whole or not at all.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace ppl::tool {

// A file is written beside its target under a temporary name and renamed by commit(); without
// commit it is removed. "-" is standard output, and what exists but is no regular file (a device, a
// pipe) is written directly. Every failure throws Failure, with what can be done about it.
class OutputFile {
 public:
  explicit OutputFile(std::string path);
  ~OutputFile();
  OutputFile(const OutputFile &) = delete;
  OutputFile &operator=(const OutputFile &) = delete;

  void write(const void *data, size_t size);
  void write(const std::vector<uint8_t> &bytes) { write(bytes.data(), bytes.size()); }
  void close();  // all is written; the target still waits for commit
  void commit();

 private:
  [[noreturn]] void fail(int error) const;

  std::string path_, temporary_;
  std::FILE *file_ = nullptr;
};

}  // namespace ppl::tool
