#include "compare/arena.h"

#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>

namespace ppl_compare {

Arena::Arena(size_t capacity) {
  const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  open_size_ = (capacity + 2 * margin + page - 1) / page * page;
  mapping_size_ = open_size_ + 2 * page;
  void *mapping =
      mmap(nullptr, mapping_size_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (mapping == MAP_FAILED) throw std::runtime_error("no address space for a frame buffer");
  mapping_ = static_cast<uint8_t *>(mapping);
  open_ = mapping_ + page;
  if (mprotect(open_, open_size_, PROT_READ | PROT_WRITE) != 0)
    throw std::runtime_error("mprotect failed");
}

Arena::~Arena() { munmap(mapping_, mapping_size_); }

uint8_t *Arena::open(size_t size, ppl_test::Placement placement, unsigned alignment) {
  if (size + 2 * margin > open_size_) throw std::runtime_error("frame larger than its arena");
  size_ = size;
  if (placement == ppl_test::Placement::begins_behind_guard) {
    data_ = open_ + alignment;
    watched_ = open_;
    watched_size_ = alignment + size + margin;
  } else {
    uint8_t *latest = open_ + open_size_ - size;
    data_ = latest - (reinterpret_cast<uintptr_t>(latest) + 16 - alignment) % 16;
    watched_ = data_ - margin;
    watched_size_ = static_cast<size_t>(open_ + open_size_ - watched_);
  }
  memset(watched_, ppl_test::GuardedBuffer::poison, watched_size_);
  return data_;
}

}  // namespace ppl_compare
