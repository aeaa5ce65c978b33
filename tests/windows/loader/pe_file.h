// Reads an image of 32-bit Windows and brings it to life in memory, as the system's loader does.
// Freestanding: it also runs on the bare machine.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace ppl_test {

struct PeHeader {  // the parts of the headers that we look at
  uint16_t machine, section_count, characteristics;
  uint32_t time_stamp;
  uint16_t magic;
  uint32_t entry, image_base, section_alignment, file_alignment;
  uint32_t image_size, header_size, checksum;
  uint16_t subsystem, dll_characteristics;
};

struct PeSection {
  char name[9];
  uint32_t address, memory_size;  // from the image's base
  uint32_t file_offset, file_size;
  uint32_t flags;
};

namespace pe {
inline constexpr uint16_t machine_i386 = 0x14C, subsystem_native = 1;
inline constexpr uint16_t relocations_stripped = 0x0001, is_dll = 0x2000;
inline constexpr uint16_t dynamic_base = 0x0040, nx_compatible = 0x0100;
inline constexpr uint32_t is_code = 0x20, discardable = 0x02000000, not_paged = 0x08000000,
                          executable = 0x20000000, readable = 0x40000000, writable = 0x80000000;
enum Directory { exports, imports, resources, exceptions, security, relocations, debug };
}  // namespace pe

// Finds the address of an imported function; null if there is none of that name.
using Importer = const void *(*)(const char *library, const char *name);

class PeFile {
 public:
  // `bytes` stay with the caller. `error()` is null if they are a PE32 image.
  PeFile(const uint8_t *bytes, size_t size);

  const char *error() const { return error_; }
  const PeHeader &header() const { return header_; }
  PeSection section(uint32_t index) const;
  uint32_t directory_address(pe::Directory directory) const;
  uint32_t directory_size(pe::Directory directory) const;

  // What the checksum in the header should be: the sum of all 16-bit words but its own, with the
  // carries added in, plus the file's size.
  uint32_t computed_checksum() const;

  // Copies headers and sections to `image`, of header().image_size bytes all zero, and relocates it
  // to stand there. Returns an error or null.
  const char *map(uint8_t *image) const;

 private:
  const uint8_t *bytes_;
  size_t size_;
  const char *error_ = nullptr;
  uint32_t checksum_offset_ = 0, directories_ = 0, directory_count_ = 0, sections_ = 0;
  PeHeader header_ = {};
};

// An image in memory, mapped and relocated.
class PeImage {
 public:
  PeImage(const PeFile &file, uint8_t *base) : file_(&file), base_(base) {}

  uint8_t *base() const { return base_; }
  const void *entry() const { return base_ + file_->header().entry; }

  // Calls `import` for each name and stores the address that it gives. Returns the first name for
  // which there is none, or null.
  const char *bind_imports(Importer import) const;

  uint32_t export_count() const;
  const char *export_name(uint32_t index) const;
  const void *find_export(const char *name) const;

 private:
  const PeFile *file_;
  uint8_t *base_;
};

}  // namespace ppl_test
