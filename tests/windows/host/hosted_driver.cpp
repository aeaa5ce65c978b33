#include "host/hosted_driver.h"

#include <stdio.h>
#include <stdlib.h>
#include <sys/mman.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace ppl_test {
namespace {

[[noreturn]] void give_up(const std::string &what) {
  fprintf(stderr, "%s\n", what.c_str());
  exit(2);
}

uint8_t *reserve(const PeFile &file) {
  if (file.error() != nullptr) give_up(file.error());
  void *const memory = mmap(nullptr, file.header().image_size, PROT_READ | PROT_WRITE,
                            MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) give_up("no memory for the image");
  return static_cast<uint8_t *>(memory);
}

int protection_of(const PeSection &section) {
  return ((section.flags & pe::readable) != 0 ? PROT_READ : 0) |
         ((section.flags & pe::writable) != 0 ? PROT_WRITE : 0) |
         ((section.flags & pe::executable) != 0 ? PROT_EXEC : 0);
}

void protect(uint8_t *from, uint32_t size, int protection) {
  if (mprotect(from, size, protection) != 0) give_up("mprotect failed");
}

std::string image_path() {
  const char *const chosen = getenv("PPL_IMAGE");
  return chosen != nullptr ? chosen : PPL_SYS;
}

}  // namespace

std::vector<uint8_t> read_image(const std::string &path) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) give_up(path + " cannot be read");
  return {std::istreambuf_iterator<char>(stream), {}};
}

HostedImage::HostedImage(const std::string &path, Importer importer)
    : bytes_(read_image(path)), file_(bytes_.data(), bytes_.size()), image_(file_, reserve(file_)) {
  if (const char *const error = file_.map(image_.base())) give_up(path + ": " + error);
  if (const char *const name = image_.bind_imports(importer)) {
    give_up(path + " imports " + name);
  }
  const PeHeader &header = file_.header();
  loaded_.assign(image_.base(), image_.base() + header.image_size);
  protect(image_.base(), header.header_size, PROT_READ);
  for (uint32_t i = 0; i < header.section_count; ++i) {
    const PeSection section = file_.section(i);
    protect(image_.base() + section.address, section.memory_size, protection_of(section));
  }
}

int32_t HostedImage::load(void *driver_object, void *registry_path) const {
  using Entry = int32_t(__attribute__((stdcall)) *)(void *, void *);
  return reinterpret_cast<Entry>(image_.entry())(driver_object, registry_path);
}

void HostedImage::restore_memory() {
  for (uint32_t i = 0; i < file_.header().section_count; ++i) {
    const PeSection section = file_.section(i);
    if ((section.flags & pe::writable) == 0) continue;
    std::copy_n(loaded_.begin() + section.address, section.memory_size,
                image_.base() + section.address);
  }
}

HostedDriver::HostedDriver() : HostedImage(image_path(), find_kernel_function) {
  if (const char *const name = connect_driver(image())) {
    give_up(image_path() + " does not export " + name);
  }
}

HostedDriver &HostedDriver::get() {
  static HostedDriver driver;
  return driver;
}

void HostedDriver::reload() {
  restore_memory();
  if (is_driver()) load(nullptr, nullptr);
}

}  // namespace ppl_test
