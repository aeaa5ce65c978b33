// Room for one frame buffer, reused from call to call: a mapping between two unreadable pages.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <span>

#include "support/guarded_buffer.h"

namespace ppl_compare {

class Arena {
 public:
  explicit Arena(size_t capacity);
  ~Arena();
  Arena(const Arena &) = delete;
  Arena &operator=(const Arena &) = delete;

  // Opens `size` bytes at an address of `alignment` modulo 16. With ends_at_guard they end within
  // 15 bytes of the unreadable page, and `margin` bytes before them are watched; the other way
  // round with begins_behind_guard. Watched bytes are poisoned.
  uint8_t *open(size_t size, ppl_test::Placement placement, unsigned alignment);

  // The bytes opened, and all that are watched around them.
  std::span<uint8_t> bytes() const { return {data_, size_}; }
  std::span<uint8_t> watched() const { return {watched_, watched_size_}; }
  size_t bytes_watched_before() const { return static_cast<size_t>(data_ - watched_); }

  static constexpr size_t margin = 512;

 private:
  uint8_t *mapping_;
  size_t mapping_size_;
  uint8_t *open_;
  size_t open_size_;
  uint8_t *data_ = nullptr, *watched_ = nullptr;
  size_t size_ = 0, watched_size_ = 0;
};

}  // namespace ppl_compare
