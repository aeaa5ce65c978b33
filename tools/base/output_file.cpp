#include "base/output_file.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "base/failure.h"

namespace ppl::tool {

OutputFile::OutputFile(std::string path) : path_(std::move(path)) {
  if (path_ == "-") {
    file_ = stdout;
    return;
  }
  struct stat status;
  const bool exists = stat(path_.c_str(), &status) == 0;
  if (exists && S_ISDIR(status.st_mode)) fail(EISDIR);
  if (exists && !S_ISREG(status.st_mode)) {
    file_ = std::fopen(path_.c_str(), "wb");
    if (!file_) fail(errno);
    return;
  }
  if (exists && access(path_.c_str(), W_OK) != 0) fail(errno);
  temporary_ = path_ + ".XXXXXX";
  const int descriptor = mkstemp(temporary_.data());
  if (descriptor < 0) {
    const int error = errno;
    temporary_.clear();
    fail(error);
  }
  // mkstemp makes the file private; give it the rights that a plain new file, or the old one, has.
  const mode_t mask = umask(0);
  umask(mask);
  if (fchmod(descriptor, exists ? status.st_mode & 07777 : 0666 & ~mask) != 0) {
    // Some file systems know no rights; the file is fine all the same.
  }
  file_ = fdopen(descriptor, "wb");
}

OutputFile::~OutputFile() {
  if (file_ && file_ != stdout) std::fclose(file_);
  if (!temporary_.empty()) unlink(temporary_.c_str());
}

void OutputFile::fail(int error) const {
  const std::string name = path_ == "-" ? "standard output" : fmt::format("'{}'", path_);
  const char *advice = "choose another place with -o";
  if (error == ENOENT || error == ENOTDIR) advice = "create its folder first";
  if (error == EACCES || error == EPERM || error == EROFS)
    advice = "choose a place where you may write";
  if (error == ENOSPC || error == EDQUOT) advice = "free some space or choose another place";
  if (error == EISDIR) advice = "name a file in it";
  throw Failure(fmt::format("cannot write {}: {}; {}", name, std::strerror(error), advice));
}

void OutputFile::write(const void *data, size_t size) {
  if (std::fwrite(data, 1, size, file_) != size) fail(errno);
}

void OutputFile::close() {
  if (!file_) return;
  if (std::fflush(file_) != 0) fail(errno);
  if (file_ == stdout) return;
  std::FILE *file = file_;
  file_ = nullptr;
  if (std::fclose(file) != 0) fail(errno);
}

void OutputFile::commit() {
  close();
  if (temporary_.empty()) return;
  if (std::rename(temporary_.c_str(), path_.c_str()) != 0) fail(errno);
  temporary_.clear();
}

}  // namespace ppl::tool
