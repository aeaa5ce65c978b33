// Tells whether a frame keeps to what is a frame's of the library's records.
#pragma once

#include <gtest/gtest.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <span>
#include <vector>

#include "context/context.h"
#include "support/difference.h"

namespace ppl_test {

// The line memory ends a record, and the next record of the pool stands directly behind it.
static_assert(offsetof(PplContext, line_memory) + ppl::line_memory_bytes == sizeof(PplContext));

class ContextWatch {
 public:
  // Takes the next context of the pool for itself, as long as it lives.
  explicit ContextWatch(PplContext *ctx) : ctx_(ctx), neighbour_(ppl_init()) {
    EXPECT_EQ(neighbour_, ctx_ + 1);
    memset(static_cast<void *>(neighbour_), pattern, sizeof *neighbour_);
  }
  // As after load.
  ~ContextWatch() { memset(static_cast<void *>(neighbour_), 0, sizeof *neighbour_); }
  ContextWatch(const ContextWatch &) = delete;
  ContextWatch &operator=(const ContextWatch &) = delete;

  // To be called before a frame.
  void remember() { record_.assign(record().begin(), record().end()); }

  // Nothing behind the line memory has changed.
  void expect_neighbour_untouched() const {
    static const std::vector<uint8_t> untouched(sizeof *neighbour_, pattern);
    const auto *const start = reinterpret_cast<const uint8_t *>(neighbour_);
    const auto damage = first_difference(untouched, {start, sizeof *neighbour_});
    EXPECT_FALSE(damage) << "behind the line memory, " << describe(*damage, 0);
  }

  // Nothing before it has, either, but for what a frame without statistics leaves behind.
  void expect_record_untouched() {
    allow(ctx_->n_frame);
    allow(ctx_->mean_normaliser);
    allow(ctx_->p3.memory);
    allow(ctx_->sse2.memory);
    const auto damage = first_difference(record_, record());
    EXPECT_FALSE(damage) << "before the line memory, " << describe(*damage, 0);
  }

 private:
  static constexpr uint8_t pattern = 0xA5;

  // What stands before the line memory.
  std::span<const uint8_t> record() const {
    return {reinterpret_cast<const uint8_t *>(ctx_), offsetof(PplContext, line_memory)};
  }

  template <class Field>
  void allow(const Field &field) {
    const auto *const start = reinterpret_cast<const uint8_t *>(&field);
    memcpy(&record_[static_cast<size_t>(start - record().data())], start, sizeof field);
  }

  PplContext *ctx_, *neighbour_;
  std::vector<uint8_t> record_;
};

}  // namespace ppl_test
