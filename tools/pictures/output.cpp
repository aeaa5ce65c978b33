#include "pictures/output.h"

#include <fmt/core.h>

#include <algorithm>
#include <cctype>

#include "base/failure.h"
#include "pictures/file_formats.h"

namespace ppl::tool {
namespace {

// Where a name takes a number: %d, %3d or %03d.
struct NumberPlace {
  size_t begin, end;
  size_t width = 0;
  char fill = ' ';
};

std::optional<NumberPlace> number_place(const std::string &name) {
  for (size_t begin = name.find('%'); begin != std::string::npos;
       begin = name.find('%', begin + 1)) {
    NumberPlace place{begin, begin + 1};
    const auto next = [&] { return place.end < name.size() ? name[place.end] : '\0'; };
    if (next() == '0') {
      place.fill = '0';
      ++place.end;
    }
    if (next() >= '1' && next() <= '9') place.width = static_cast<size_t>(name[place.end++] - '0');
    if (next() != 'd') continue;
    ++place.end;
    return place;
  }
  return std::nullopt;
}

bool one_picture_only(Container container) {
  return container == Container::png || container == Container::ppm;
}

std::string numbered_name(const std::string &name, uint64_t number) {
  const NumberPlace place = number_place(name).value();
  std::string digits = std::to_string(number);
  if (digits.size() < place.width) digits.insert(0, place.width - digits.size(), place.fill);
  return name.substr(0, place.begin) + digits + name.substr(place.end);
}

}  // namespace

Container container_of(const std::string &path) {
  const size_t dot = path.find_last_of("./");
  if (dot == std::string::npos || path[dot] != '.') return Container::raw;
  std::string extension = path.substr(dot + 1);
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  if (extension == "png") return Container::png;
  if (extension == "ppm") return Container::ppm;
  if (extension == "y4m") return Container::y4m;
  return Container::raw;
}

Container parse_container(const std::string &word) {
  if (word == "raw") return Container::raw;
  if (word == "png") return Container::png;
  if (word == "ppm") return Container::ppm;
  if (word == "y4m") return Container::y4m;
  throw UsageError(fmt::format("'{}' is no kind of file: use raw, png, ppm or y4m", word));
}

FrameOutput::FrameOutput(std::optional<std::string> path, Container container)
    : path_(std::move(path)),
      container_(container),
      numbered_(path_ && one_picture_only(container) && number_place(*path_).has_value()) {
  if (!numbered_) start_file();
}

bool FrameOutput::takes_several() const { return numbered_ || !one_picture_only(container_); }

void FrameOutput::start_file() {
  if (!path_) return;
  files_.push_back(
      std::make_unique<OutputFile>(numbered_ ? numbered_name(*path_, frames_) : *path_));
}

void FrameOutput::put(const uint8_t *data, size_t size) {
  md5_.update(data, size);
  if (!files_.empty()) files_.back()->write(data, size);
}

void FrameOutput::add(const FrameView &frame) {
  if (frames_ > 0 && !takes_several())
    throw Failure(
        "a PNG or PPM file holds one picture, and there are more frames (if not, check --size and "
        "--from): use --frames 1, or a name with their number such as out_%03d.png, or .y4m");
  if (numbered_) start_file();
  switch (container_) {
    case Container::raw:
      put(frame.data, frame.bytes());
      break;
    case Container::png:
      put(encode_png(to_picture(frame)));
      break;
    case Container::ppm:
      put(encode_ppm(to_picture(frame)));
      break;
    case Container::y4m:
      if (frames_ == 0) put(y4m_header(frame.format, frame.size, frame.scan));
      put(y4m_frame(frame));
      break;
  }
  ++frames_;
  // Finished pictures need no open file, and a long film has many of them.
  if (numbered_) files_.back()->close();
}

void FrameOutput::finish() {
  for (const auto &file : files_) file->commit();
}

void write_file(const std::string &path, const std::vector<uint8_t> &bytes) {
  OutputFile file(path);
  file.write(bytes);
  file.commit();
}

}  // namespace ppl::tool
