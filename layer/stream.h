// A pipeline's inside: a context with its input, its output and what each frame needs.
#pragma once

#include <algorithm>
#include <new>
#include <optional>

#include "control_access.h"
#include "library.h"
#include "picture_copy.h"
#include "plan.h"

namespace ppl::detail {

// Memory as both tiers want it.
class AlignedBytes {
 public:
  AlignedBytes() = default;
  explicit AlignedBytes(size_t size)
      : bytes_(static_cast<uint8_t *>(::operator new(size, alignment))), size_(size) {
    std::fill_n(bytes_.get(), size, uint8_t{0});
  }

  uint8_t *data() const { return bytes_.get(); }
  size_t size() const { return size_; }

 private:
  static constexpr std::align_val_t alignment{64};
  struct Delete {
    void operator()(uint8_t *bytes) const { ::operator delete(bytes, alignment); }
  };
  std::unique_ptr<uint8_t, Delete> bytes_;
  size_t size_ = 0;
};

class Stream {
 public:
  Stream(const Input &input, const Output &output);
  Stream(const Stream &) = delete;
  Stream &operator=(const Stream &) = delete;

  const Input &input() const { return input_; }
  const Output &output() const { return output_; }
  const Plan &plan() const { return plan_; }
  Tier tier() const { return tier_of(output_); }
  uint64_t frames() const { return frames_; }
  PplContext *context() const { return context_.get(); }
  ControlState &control_state() { return state_; }
  Controls &controls() { return controls_; }

  void set_output(const Output &output);

  void process(std::span<const uint8_t> frame, const Target &target);
  void consume(std::span<uint8_t> frame, const Target &target);
  void process_fields(std::span<const uint8_t> first, std::span<const uint8_t> second,
                      const Target &target);
  void set_reference(std::span<const uint8_t> odd_lines);
  void forget_reference() { has_reference_ = false; }

  Statistics statistics() const;

 private:
  // A frame in memory that the library may work on.
  struct Source {
    uint8_t *samples;
    uint32_t stride;
  };
  // Packed lines at a distance of each other.
  struct PackedLines {
    const uint8_t *data;
    size_t stride;
  };

  Tier tier_of(const Output &output) const;
  void require_tier(const Output &output) const;
  void take_size(uint32_t stride);
  void apply(const Plan &plan, const Output &output);
  struct Memory;
  Memory &memory_of(const Output &output);
  void forget_earlier_frames(const Output &output);

  PictureLines target_lines(const Target &target) const;
  uint8_t *place_for_library(const PictureLines &picture);
  void finish(const PictureLines &target, const PictureLines &picture, uint8_t *written);
  template <class Run>
  void make_picture(const PictureLines &target, Run run);

  Source raw_source(std::span<const uint8_t> frame, bool may_change);
  void run_raw(std::span<const uint8_t> frame, bool may_change, const Target &target);
  void run_video(std::span<const uint8_t> frame, const Target &target);
  const uint8_t *packed_source(PackedLines lines, uint32_t count, AlignedBytes &copy);
  void run_fields(PackedLines even, PackedLines odd, const PictureLines &target);

  Context context_;
  Tier best_;
  Input input_;
  Output output_;
  Plan plan_;
  ControlState state_;
  Controls controls_;

  uint32_t stride_ = 0;  // of the size that the context has
  AlignedBytes frame_copy_, picture_;
  AlignedBytes even_lines_, odd_lines_, reference_;
  bool has_reference_ = false;

  // What a tier of the context keeps from frame to frame.
  struct Memory {
    bool is_anothers = true;  // an earlier stream's, for all that is known
    bool has_cells = false;   // flat ones, of quality 10 or 11
  };
  Memory p3_memory_, sse2_memory_;
  uint64_t frames_ = 0;
  std::optional<Statistics> kept_statistics_;  // where the context's are no longer those of a frame
};

}  // namespace ppl::detail
