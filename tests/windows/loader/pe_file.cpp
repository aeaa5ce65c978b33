#include "loader/pe_file.h"

namespace ppl_test {
namespace {

template <class T>
T read(const uint8_t *from) {
  T value = 0;
  for (size_t i = 0; i < sizeof(T); ++i)
    value = static_cast<T>(value | static_cast<T>(from[i]) << (8 * i));
  return value;
}

void write_u32(uint8_t *to, uint32_t value) {
  for (int i = 0; i < 4; ++i) to[i] = static_cast<uint8_t>(value >> (8 * i));
}

bool equal(const char *a, const char *b) {
  for (; *a == *b; ++a, ++b) {
    if (*a == '\0') return true;
  }
  return false;
}

uint32_t address_of(const void *pointer) {
  return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(pointer));
}

constexpr uint32_t export_directory_size = 40, import_descriptor_size = 20;
constexpr uint32_t by_ordinal = 0x80000000;

}  // namespace

PeFile::PeFile(const uint8_t *bytes, size_t size) : bytes_(bytes), size_(size) {
  if (size < 0x40 || read<uint16_t>(bytes) != 0x5A4D) {
    error_ = "no MZ header";
    return;
  }
  const uint32_t start = read<uint32_t>(bytes + 0x3C);
  constexpr uint32_t coff_size = 24, fixed_optional_size = 96;
  if (start > size - coff_size - fixed_optional_size ||
      read<uint32_t>(bytes + start) != 0x00004550) {
    error_ = "no PE header";
    return;
  }
  const uint8_t *const coff = bytes + start + 4;
  const uint8_t *const optional = bytes + start + coff_size;
  header_.machine = read<uint16_t>(coff);
  header_.section_count = read<uint16_t>(coff + 2);
  header_.time_stamp = read<uint32_t>(coff + 4);
  const uint32_t optional_size = read<uint16_t>(coff + 16);
  header_.characteristics = read<uint16_t>(coff + 18);
  header_.magic = read<uint16_t>(optional);
  header_.entry = read<uint32_t>(optional + 16);
  header_.image_base = read<uint32_t>(optional + 28);
  header_.section_alignment = read<uint32_t>(optional + 32);
  header_.file_alignment = read<uint32_t>(optional + 36);
  header_.image_size = read<uint32_t>(optional + 56);
  header_.header_size = read<uint32_t>(optional + 60);
  header_.checksum = read<uint32_t>(optional + 64);
  header_.subsystem = read<uint16_t>(optional + 68);
  header_.dll_characteristics = read<uint16_t>(optional + 70);
  checksum_offset_ = start + coff_size + 64;
  directory_count_ = read<uint32_t>(optional + 92);
  directories_ = start + coff_size + fixed_optional_size;
  sections_ = start + coff_size + optional_size;
  if (header_.magic != 0x10B || header_.machine != pe::machine_i386) {
    error_ = "not an image for 32-bit x86";
  } else if (header_.header_size > size ||
             sections_ + 40u * header_.section_count > header_.header_size) {
    error_ = "headers longer than the file";
  }
}

PeSection PeFile::section(uint32_t index) const {
  const uint8_t *const from = bytes_ + sections_ + 40 * index;
  PeSection section = {};
  for (int i = 0; i < 8; ++i) section.name[i] = static_cast<char>(from[i]);
  section.memory_size = read<uint32_t>(from + 8);
  section.address = read<uint32_t>(from + 12);
  section.file_size = read<uint32_t>(from + 16);
  section.file_offset = read<uint32_t>(from + 20);
  section.flags = read<uint32_t>(from + 36);
  return section;
}

uint32_t PeFile::directory_address(pe::Directory directory) const {
  return directory < directory_count_ ? read<uint32_t>(bytes_ + directories_ + 8 * directory) : 0;
}

uint32_t PeFile::directory_size(pe::Directory directory) const {
  return directory < directory_count_ ? read<uint32_t>(bytes_ + directories_ + 8 * directory + 4)
                                      : 0;
}

uint32_t PeFile::computed_checksum() const {
  uint32_t sum = 0;
  for (size_t i = 0; i < size_; i += 2) {
    if (i == checksum_offset_ || i == checksum_offset_ + 2) continue;
    sum += i + 1 < size_ ? read<uint16_t>(bytes_ + i) : bytes_[i];
    sum = (sum & 0xFFFF) + (sum >> 16);
  }
  return sum + static_cast<uint32_t>(size_);
}

const char *PeFile::map(uint8_t *image) const {
  for (uint32_t i = 0; i < header_.header_size; ++i) image[i] = bytes_[i];
  for (uint32_t s = 0; s < header_.section_count; ++s) {
    const PeSection part = section(s);
    const uint32_t size = part.file_size < part.memory_size ? part.file_size : part.memory_size;
    if (part.address > header_.image_size || part.memory_size > header_.image_size - part.address) {
      return "a section stands outside the image";
    }
    if (size > 0 && (part.file_offset > size_ || size > size_ - part.file_offset)) {
      return "a section stands outside the file";
    }
    for (uint32_t i = 0; i < size; ++i) image[part.address + i] = bytes_[part.file_offset + i];
  }

  const uint32_t moved_by = address_of(image) - header_.image_base;
  uint32_t block = directory_address(pe::relocations);
  const uint32_t end = block + directory_size(pe::relocations);
  if (block == 0 && moved_by != 0) return "no relocations";
  while (block < end) {
    const uint32_t page = read<uint32_t>(image + block);
    const uint32_t block_size = read<uint32_t>(image + block + 4);
    if (block_size < 8 || block_size > end - block) return "a damaged block of relocations";
    for (uint32_t i = 8; i < block_size; i += 2) {
      const uint16_t relocation = read<uint16_t>(image + block + i);
      if (relocation >> 12 == 0) continue;  // fills the block up
      if (relocation >> 12 != 3) return "a relocation that is not HIGHLOW";
      const uint32_t place = page + (relocation & 0xFFFu);
      if (place > header_.image_size - 4) return "a relocation outside the image";
      write_u32(image + place, read<uint32_t>(image + place) + moved_by);
    }
    block += block_size;
  }
  return nullptr;
}

const char *PeImage::bind_imports(Importer import) const {
  const uint32_t directory = file_->directory_address(pe::imports);
  if (directory == 0) return nullptr;
  for (const uint8_t *descriptor = base_ + directory; read<uint32_t>(descriptor + 12) != 0;
       descriptor += import_descriptor_size) {
    const auto *const library =
        reinterpret_cast<const char *>(base_ + read<uint32_t>(descriptor + 12));
    uint8_t *slot = base_ + read<uint32_t>(descriptor + 16);
    for (; read<uint32_t>(slot) != 0; slot += 4) {
      const uint32_t hint_and_name = read<uint32_t>(slot);
      if ((hint_and_name & by_ordinal) != 0) return "an import by ordinal";
      const auto *const name = reinterpret_cast<const char *>(base_ + hint_and_name + 2);
      const void *const address = import(library, name);
      if (address == nullptr) return name;
      write_u32(slot, address_of(address));
    }
  }
  return nullptr;
}

uint32_t PeImage::export_count() const {
  const uint32_t directory = file_->directory_address(pe::exports);
  if (directory == 0 || file_->directory_size(pe::exports) < export_directory_size) return 0;
  return read<uint32_t>(base_ + directory + 24);
}

const char *PeImage::export_name(uint32_t index) const {
  const uint8_t *const directory = base_ + file_->directory_address(pe::exports);
  const uint8_t *const names = base_ + read<uint32_t>(directory + 32);
  return reinterpret_cast<const char *>(base_ + read<uint32_t>(names + 4 * index));
}

const void *PeImage::find_export(const char *name) const {
  const uint8_t *const directory = base_ + file_->directory_address(pe::exports);
  const uint8_t *const functions = base_ + read<uint32_t>(directory + 28);
  const uint8_t *const ordinals = base_ + read<uint32_t>(directory + 36);
  for (uint32_t i = 0; i < export_count(); ++i) {
    if (!equal(export_name(i), name)) continue;
    return base_ + read<uint32_t>(functions + 4 * read<uint16_t>(ordinals + 2 * i));
  }
  return nullptr;
}

}  // namespace ppl_test
