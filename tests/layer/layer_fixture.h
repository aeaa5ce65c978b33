// Frames through the layer, and the same by the plain functions.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <optional>
#include <ppl.hpp>
#include <string>
#include <vector>

#include "support/guarded_buffer.h"
#include "support/machine.h"
#include "support/random.h"
#include "testing/test_hooks.h"

namespace ppl_test {

using Bytes = std::vector<uint8_t>;

inline bool has_sse2() { return (ppl::test_hooks::processor_flags() & (1u << 26)) != 0; }

inline Bytes noise(size_t count, uint64_t seed) {
  Random random(seed);
  Bytes bytes(count);
  for (uint8_t &byte : bytes) byte = random.byte();
  return bytes;
}

// What an error says, or that there was none.
inline std::string sentence_of(const std::function<void()> &action) {
  try {
    action();
  } catch (const ppl::Error &error) {
    return error.what();
  }
  return "accepted";
}

// ---- Turning, the simple way ----

inline size_t bytes_per_pixel(ppl::PixelFormat format) {
  switch (format) {
    case ppl::PixelFormat::rgb24:
      return 3;
    case ppl::PixelFormat::rgb32:
      return 4;
    case ppl::PixelFormat::i420:
      return 1;
    default:
      return 2;
  }
}

// Units of `size` bytes in a plane, exchanged left to right and top to bottom.
inline Bytes turned_plane(const Bytes &plane, size_t line_bytes, size_t size, bool h, bool v) {
  const size_t lines = plane.size() / line_bytes, units = line_bytes / size;
  Bytes result(plane.size());
  for (size_t y = 0; y < lines; ++y)
    for (size_t x = 0; x < units; ++x)
      for (size_t i = 0; i < size; ++i)
        result[(v ? lines - 1 - y : y) * line_bytes + (h ? units - 1 - x : x) * size + i] =
            plane[y * line_bytes + x * size + i];
  return result;
}

inline Bytes turned_picture(const Bytes &picture, const ppl::Layout &layout, bool h, bool v) {
  Bytes result;
  for (size_t i = 0; i < layout.plane_count; ++i) {
    const ppl::PlaneLayout &plane = layout.planes[i];
    const auto begin = picture.begin() + static_cast<ptrdiff_t>(plane.offset);
    Bytes part(begin, begin + static_cast<ptrdiff_t>(plane.line_bytes * plane.lines));
    const bool pairs =
        layout.format == ppl::PixelFormat::yuyv || layout.format == ppl::PixelFormat::uyvy;
    part = turned_plane(part, plane.line_bytes, pairs ? 4 : bytes_per_pixel(layout.format), h, v);
    // The chroma of a pair stays where it is, its two pixels change places.
    const size_t luma = layout.format == ppl::PixelFormat::yuyv ? 0 : 1;
    for (size_t at = luma; pairs && h && at + 2 < part.size(); at += 4)
      std::swap(part[at], part[at + 2]);
    result.insert(result.end(), part.begin(), part.end());
  }
  return result;
}

// ---- The plain functions ----

using RawDriver = uint8_t (*)(PplContext *, uint8_t *, uint8_t *, uint32_t, uint32_t, uint32_t);

inline RawDriver raw_driver(ppl::PixelFormat format) {
  constexpr RawDriver drivers[] = {ppl_process_blrtoi420, ppl_process_blrtoyuyv,
                                   ppl_process_blrtouyvy, ppl_process_blrtorgb24,
                                   ppl_process_blrtorgb32};
  return drivers[static_cast<size_t>(format)];
}

inline Bytes top_left(const Bytes &samples, size_t stride, size_t width, size_t height) {
  Bytes part;
  for (size_t y = 0; y < height; ++y) {
    const auto line = samples.begin() + static_cast<ptrdiff_t>(y * stride);
    part.insert(part.end(), line, line + static_cast<ptrdiff_t>(width));
  }
  return part;
}

// Aligned memory with room behind it.
class Memory {
 public:
  explicit Memory(size_t size) : bytes_(size + 128) {}
  Memory(const Bytes &content, size_t room) : Memory(content.size() + room) {
    std::copy(content.begin(), content.end(), data());
  }
  uint8_t *data() {
    auto address = reinterpret_cast<uintptr_t>(bytes_.data());
    return bytes_.data() + (64 - address % 64) % 64;
  }

 private:
  Bytes bytes_;
};

// A bggr frame of 8 bits by the driver of its format, on a context of its own.
struct PlainRun {
  Bytes picture;
  ppl::Statistics statistics;  // windows and means alone
};

inline PlainRun run_plainly(const Bytes &frame, uint32_t width, uint32_t height,
                            const ppl::Output &output) {
  PplContext *const ctx = ppl_init();
  EXPECT_NE(ctx, nullptr);
  ppl_set_P3_only(ctx, output.tier == ppl::Tier::p3);
  ppl_set_quality(ctx, output.quality);
  ppl_set_mean_collection(ctx, output.statistics);
  ppl_set_h_mirror(ctx, output.h_mirror);
  ppl_set_v_mirror(ctx, output.v_mirror);
  EXPECT_EQ(ppl_set_decimation(ctx, output.decimation, 0, 0), 1);
  EXPECT_EQ(ppl_new_frame_size(ctx, width, height, width), 1);
  const ppl::Layout layout = ppl::layout_of(
      ppl::RawFormat{.width = width, .height = height},
      {.format = output.format, .quality = output.quality, .decimation = output.decimation});
  Memory source(frame, 64), picture(layout.bytes + 64);
  raw_driver(output.format)(ctx, source.data(), picture.data(), width, height, width);
  PlainRun run;
  run.picture.assign(picture.data(), picture.data() + layout.bytes);
  const auto mean = [](const PplTriple *t) { return ppl::Mean{t->r, t->g, t->b}; };
  run.statistics.quality = output.quality;
  run.statistics.whole_frame = mean(ppl_rgb_means_whole_frame(ctx));
  run.statistics.all_windows = mean(ppl_rgb_means_all_sub_windows(ctx));
  for (size_t i = 0; i < 48; ++i)
    run.statistics.windows[i / 8][i % 8] = mean(ppl_rgb_means_sub_windows(ctx) + i);
  ppl_free(ctx);
  return run;
}

// ---- The layer ----

// Every test starts with fresh contexts on the real processor.
class LayerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ppl::test_hooks::set_cpuid(nullptr);
    ppl::test_hooks::reset_counts();
    ppl::test_hooks::reload_pool();
  }
  void TearDown() override { ppl::test_hooks::set_cpuid(nullptr); }
};

inline bool exists(const ppl::Input &input, const ppl::Output &output) {
  try {
    ppl::layout_of(input, output);
    return true;
  } catch (const ppl::Error &) {
    return false;
  }
}

// Every output of raw frames that there is, without mirrors.
inline std::vector<ppl::Output> all_outputs(const ppl::Input &input,
                                            ppl::Tier tier = ppl::Tier::best) {
  std::vector<ppl::Output> outputs;
  for (uint32_t quality = 0; quality <= 14; ++quality)
    for (const ppl::PixelFormat format : ppl::all_pixel_formats)
      for (const int decimation : {0, 1, -1}) {
        const ppl::Output output{
            .format = format, .quality = quality, .decimation = decimation, .tier = tier};
        if (exists(input, output)) outputs.push_back(output);
      }
  return outputs;
}

inline std::string described(const ppl::Output &output) {
  return "quality " + std::to_string(output.quality) + ", " +
         std::string(ppl::name_of(output.format)) + ", decimation " +
         std::to_string(output.decimation) + (output.h_mirror ? ", h" : "") +
         (output.v_mirror ? ", v" : "") + ", " + std::string(ppl::name_of(output.tier));
}

// Where buffers stand against the guard pages and against 16 bytes.
struct Places {
  Placement placement = Placement::ends_at_guard;
  unsigned source_alignment = 0, picture_alignment = 0;
};

// One frame between guard pages, in buffers of exactly the sizes that the pipeline tells; the
// picture's holds `before` first.
inline Bytes run_guarded(ppl::Pipeline &pipeline, const Bytes &frame, const Places &places = {},
                         uint8_t before = 0xA5, bool consumed = false) {
  GuardedBuffer source(pipeline.input_bytes(), places.placement, places.source_alignment);
  GuardedBuffer picture(pipeline.layout().bytes, places.placement, places.picture_alignment);
  EXPECT_GE(frame.size(), source.size());
  std::memcpy(source.data(), frame.data(), source.size());
  std::memset(picture.data(), before, picture.size());
  const std::span<uint8_t> samples(source.data(), source.size());
  const std::span<uint8_t> target(picture.data(), picture.size());
  if (consumed) {
    pipeline.consume(samples, target);
  } else {
    pipeline.process(samples, target);
    EXPECT_EQ(std::memcmp(source.data(), frame.data(), source.size()), 0) << "changed the frame";
  }
  EXPECT_FALSE(source.slack_damage());
  EXPECT_FALSE(picture.slack_damage());
  return {picture.begin(), picture.end()};
}

}  // namespace ppl_test
