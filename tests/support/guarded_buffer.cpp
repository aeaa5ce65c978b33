#include "support/guarded_buffer.h"

#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <stdexcept>
#include <utility>

namespace ppl_test {

GuardedBuffer::GuardedBuffer(size_t size, Placement placement, unsigned alignment_offset)
    : size_(size) {
  if (alignment_offset > 15) throw std::invalid_argument("alignment offset above 15");
  const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  open_size_ = (size + 16 + page - 1) / page * page;
  mapping_size_ = open_size_ + 2 * page;
  void *mapping = mmap(nullptr, mapping_size_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapping == MAP_FAILED) throw std::runtime_error("mmap failed");
  mapping_ = static_cast<uint8_t *>(mapping);
  open_ = mapping_ + page;
  if (mprotect(open_, open_size_, PROT_READ | PROT_WRITE) != 0) {
    munmap(mapping_, mapping_size_);
    throw std::runtime_error("mprotect failed");
  }
  if (placement == Placement::begins_behind_guard) {
    data_ = open_ + alignment_offset;
  } else {
    // The last address at or below end - size with the wanted remainder.
    uint8_t *latest = open_ + open_size_ - size;
    const size_t excess = (reinterpret_cast<uintptr_t>(latest) + 16 - alignment_offset) % 16;
    data_ = latest - excess;
  }
  memset(open_, poison, open_size_);
}

GuardedBuffer::~GuardedBuffer() {
  if (mapping_ != nullptr) munmap(mapping_, mapping_size_);
}

GuardedBuffer::GuardedBuffer(GuardedBuffer &&other) noexcept
    : mapping_(std::exchange(other.mapping_, nullptr)),
      mapping_size_(other.mapping_size_),
      open_(other.open_),
      open_size_(other.open_size_),
      data_(other.data_),
      size_(other.size_) {}

void GuardedBuffer::fill_with_poison() { memset(open_, poison, open_size_); }

size_t GuardedBuffer::bytes_before_end_guard() const {
  return static_cast<size_t>(open_ + open_size_ - (data_ + size_));
}

std::optional<ptrdiff_t> GuardedBuffer::slack_damage() const {
  for (const uint8_t *byte = open_; byte < data_; ++byte)
    if (*byte != poison) return byte - data_;
  for (const uint8_t *byte = data_ + size_; byte < open_ + open_size_; ++byte)
    if (*byte != poison) return byte - data_;
  return std::nullopt;
}

}  // namespace ppl_test
