// Frames into a file of the kind that its name says.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/frame_format.h"
#include "base/md5.h"
#include "base/output_file.h"
#include "pictures/picture.h"

namespace ppl::tool {

enum class Container { raw, png, ppm, y4m };

// By the name's extension; raw for all others and for standard output.
Container container_of(const std::string &path);

// Throws UsageError for a word that is none of raw, png, ppm, y4m.
Container parse_container(const std::string &word);

// Writes frames one after the other; nothing is to be seen at the target before finish(). PNG and
// PPM hold one picture: for several, the name has %d (or %03d and the like) in the place of their
// number, from 0 on. Without a path only the sum is made.
class FrameOutput {
 public:
  FrameOutput(std::optional<std::string> path, Container container);

  // Whether several frames can be written.
  bool takes_several() const;

  void add(const FrameView &frame);
  void finish();

  // The MD5 of all data so far; ask once, at the end.
  std::string md5() { return md5_.hex(); }

 private:
  void put(const std::vector<uint8_t> &bytes) { put(bytes.data(), bytes.size()); }
  void put(const uint8_t *data, size_t size);
  void start_file();

  std::optional<std::string> path_;
  Container container_;
  bool numbered_;
  uint64_t frames_ = 0;
  std::vector<std::unique_ptr<OutputFile>> files_;
  Md5 md5_;
};

// Writes a whole file at once, by the same rules.
void write_file(const std::string &path, const std::vector<uint8_t> &bytes);

}  // namespace ppl::tool
