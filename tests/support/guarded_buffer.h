// Memory between two unreadable pages: a step over either end faults at once.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <optional>

namespace ppl_test {

enum class Placement {
  ends_at_guard,       // the byte behind the buffer's last is unreadable
  begins_behind_guard  // the byte before the buffer's first is unreadable
};

// A buffer of `size` bytes whose address is `alignment_offset` modulo 16, as near to the guard page
// as that allows. The bytes between the buffer and the page (0 to 15, the slack) and all other
// bytes of the mapping are poisoned, and slack_damage() tells whether something wrote there.
class GuardedBuffer {
 public:
  static constexpr uint8_t poison = 0xA5;

  GuardedBuffer(size_t size, Placement placement, unsigned alignment_offset = 0);
  ~GuardedBuffer();
  GuardedBuffer(const GuardedBuffer &) = delete;
  GuardedBuffer &operator=(const GuardedBuffer &) = delete;
  GuardedBuffer(GuardedBuffer &&other) noexcept;
  GuardedBuffer &operator=(GuardedBuffer &&) = delete;

  uint8_t *data() { return data_; }
  const uint8_t *data() const { return data_; }
  size_t size() const { return size_; }
  uint8_t *begin() { return data_; }
  uint8_t *end() { return data_ + size_; }
  uint8_t &operator[](size_t i) { return data_[i]; }
  const uint8_t &operator[](size_t i) const { return data_[i]; }

  void fill_with_poison();

  // Bytes between the buffer's end and the guard page behind it; 0 when the end stands at the page.
  size_t bytes_before_end_guard() const;

  // Position, relative to data(), of the first damaged byte outside the buffer.
  std::optional<ptrdiff_t> slack_damage() const;

 private:
  uint8_t *mapping_ = nullptr;
  size_t mapping_size_ = 0;
  uint8_t *open_ = nullptr;  // the readable part of the mapping
  size_t open_size_ = 0;
  uint8_t *data_ = nullptr;
  size_t size_ = 0;
};

}  // namespace ppl_test
