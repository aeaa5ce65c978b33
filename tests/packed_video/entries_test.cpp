// The entry functions of packed video: what stands between a caller and the drivers.
#include <gtest/gtest.h>

#include <functional>
#include <utility>

#include "packed_video/packed_video_fixture.h"
#include "support/combinations.h"
#include "support/stack_offset.h"

namespace ppl_test {
namespace {

namespace hooks = ppl::test_hooks;

constexpr uint32_t width = 320, height = 240, pixels = width * height;

// An entry function with the buffers of one frame. `sources` are one, or the three fields.
struct Entry {
  const char *name;
  FrameFunction frame;
  FieldsFunction fields;
  size_t source_bytes;
  Format format;
  uint8_t result;
};

std::vector<Entry> all_entries() {
  std::vector<Entry> entries;
  for (const FrameConversion &c : frame_conversions)
    entries.push_back({c.name, c.entry, nullptr, pixels * c.source_half_bytes / 2, c.format,
                       c.format != Format::rgb32});
  for (const FieldsConversion &c : fields_conversions) {
    entries.push_back({c.name, nullptr, c.with_test, pixels, c.format, 1});
    entries.push_back({c.name, nullptr, c.without_test, pixels, c.format, 1});
  }
  return entries;
}

class PackedEntries : public PackedVideoTest {
 protected:
  struct Call {
    std::vector<GuardedBuffer> sources;
    GuardedBuffer output;
    uint8_t result = 255;
  };

  // Calls with one of the pointers, 0 being the output, off by `offset` from a 16-byte boundary.
  Call call(const Entry &entry, size_t pointer = 0, unsigned offset = 0) {
    const auto offset_of = [&](size_t number) { return number == pointer ? offset : 0; };
    Call made{
        {},
        GuardedBuffer(picture_bytes(entry.format, pixels), Placement::ends_at_guard, offset_of(0))};
    for (size_t i = 1; i <= pointers(entry); ++i) {
      made.sources.emplace_back(entry.source_bytes, Placement::ends_at_guard, offset_of(i));
      for (size_t k = 0; k < entry.source_bytes; ++k)
        made.sources.back()[k] = static_cast<uint8_t>(k * 7 + k / 251 + i * 50);
    }
    const std::vector<GuardedBuffer> &sources = made.sources;
    made.result =
        entry.frame != nullptr
            ? entry.frame(ctx, sources[0].data(), made.output.data(), width, height, width, height)
            : entry.fields(ctx, sources[0].data(), sources[1].data(), sources[2].data(),
                           made.output.data(), width, height, width, height);
    EXPECT_TRUE(x87_is_clean());
    EXPECT_FALSE(made.output.slack_damage());
    return made;
  }
  static size_t pointers(const Entry &entry) { return entry.frame != nullptr ? 1 : 3; }

  static void expect_fallback(const Entry &entry, const Call &made) {
    EXPECT_EQ(made.result, 0);
    const auto all = [&](size_t from, size_t to, uint8_t value) {
      for (size_t i = from; i < to; ++i)
        if (made.output[i] != value) return false;
      return true;
    };
    const auto copied = [&](size_t at, size_t source) {
      return memcmp(&made.output[at], made.sources[source].data(), pixels) == 0;
    };
    const bool fields = made.sources.size() == 3;
    switch (entry.format) {
      case Format::i420:
        EXPECT_TRUE(copied(0, fields ? 1 : 0));
        EXPECT_TRUE(all(pixels, pixels * 3 / 2, 128));
        break;
      case Format::rgb24:
      case Format::rgb32:
        EXPECT_TRUE(all(0, made.output.size(), 255));
        break;
      default:
        EXPECT_TRUE(copied(0, 1));
        EXPECT_TRUE(copied(pixels, 2));
    }
  }

  // What no fallback may change.
  std::array<int64_t, 8> look() const {
    return {ppl_decimation(ctx), ppl_n_frame(ctx),
            ctx->frame_width,    ctx->frame_height,
            ctx->out_width,      ctx->out_height,
            ctx->frame_stride,   ppl_decimation_top_black_lines(ctx)};
  }
};

TEST_F(PackedEntries, PointerAlignedTo4OnlyTakesTheFallback) {
  use_size(128, 14, 1, 2, 3);
  const auto before = look();
  for (const auto &[entry, pointer, offset] :
       combinations(all_entries(), std::array{0u, 1u, 2u, 3u}, std::array{4u, 12u, 1u})) {
    if (pointer > pointers(entry)) continue;
    SCOPED_TRACE(testing::Message() << entry.name << ", pointer " << pointer);
    hooks::reset_counts();
    expect_fallback(entry, call(entry, pointer, offset));
    EXPECT_EQ(hooks::save_count(), 0u) << "the alignment is tested first";
    EXPECT_EQ(look(), before);
  }
}

TEST_F(PackedEntries, FallbacksGoByTheOutputsSize) {
  // 128 by 24 to twice and to half of that: n bytes of the source, also where it would have fewer.
  constexpr uint32_t in_width = 128, in_height = 24;
  for (const auto &[out_width, out_height] : {std::pair{256u, 48u}, {64u, 12u}})
    for (const Entry &entry : all_entries()) {
      SCOPED_TRACE(testing::Message() << entry.name << " to " << out_width);
      const size_t n = size_t{out_width} * out_height;
      const auto source = [n](uint8_t value) {
        GuardedBuffer buffer(n, Placement::ends_at_guard, 4);
        memset(buffer.data(), value, n);
        return buffer;
      };
      const GuardedBuffer reference = source(1), first = source(2), second = source(3);
      GuardedBuffer output(picture_bytes(entry.format, n), Placement::ends_at_guard);
      EXPECT_EQ(entry.frame != nullptr
                    ? entry.frame(ctx, first.data(), output.data(), in_width, in_height, out_width,
                                  out_height)
                    : entry.fields(ctx, reference.data(), first.data(), second.data(),
                                   output.data(), in_width, in_height, out_width, out_height),
                0);
      const bool white = entry.format == Format::rgb24 || entry.format == Format::rgb32;
      const uint8_t behind = white ? 255 : entry.format == Format::i420 ? 128 : 3;
      for (size_t i = 0; i < output.size(); ++i)
        ASSERT_EQ(output[i], i < n && !white ? 2 : behind) << i;
    }
}

TEST_F(PackedEntries, ProcessorWithoutATierTakesTheFallback) {
  use_size(128, 14);
  const FakeProcessor processor(no_tier_processor);
  const auto before = look();
  for (const Entry &entry : all_entries()) {
    SCOPED_TRACE(entry.name);
    hooks::reset_counts();
    expect_fallback(entry, call(entry));
    EXPECT_EQ(hooks::save_count(), 0u);
    EXPECT_EQ(look(), before);
  }
}

TEST_F(PackedEntries, FailedSaveTakesTheFallback) {
  use_size(128, 14);
  const auto before = look();
  for (const Entry &entry : all_entries()) {
    SCOPED_TRACE(entry.name);
    hooks::reset_counts();
    hooks::fail_saves(0, 1);
    expect_fallback(entry, call(entry));
    EXPECT_EQ(hooks::save_count(), 1u);
    EXPECT_EQ(hooks::restore_count(), 0u);
    EXPECT_EQ(look(), before);
  }
}

TEST_F(PackedEntries, PointersAlignedTo8AreProcessed) {
  for (const Entry &entry : all_entries()) {
    const Call aligned = call(entry);
    EXPECT_EQ(aligned.result, entry.result);
    for (size_t pointer = 0; pointer <= pointers(entry); ++pointer) {
      SCOPED_TRACE(testing::Message() << entry.name << ", pointer " << pointer);
      const uint32_t before = ppl_n_frame(ctx);
      const Call made = call(entry, pointer, 8);
      EXPECT_EQ(made.result, entry.result);
      EXPECT_EQ(ppl_n_frame(ctx), before + 1);
      EXPECT_EQ(memcmp(made.output.data(), aligned.output.data(), made.output.size()), 0);
    }
  }
}

TEST_F(PackedEntries, BracketIsHeldOnceAndTheDecimationKept) {
  for (const Entry &entry : all_entries()) {
    SCOPED_TRACE(entry.name);
    use_size(width, height, 0, 0, 0);
    hooks::reset_counts();
    EXPECT_EQ(call(entry).result, entry.result);
    EXPECT_EQ(hooks::save_count(), 1u);
    EXPECT_EQ(hooks::restore_count(), 1u);
    // A change of size inside it has a bracket of its own.
    ASSERT_EQ(ppl_new_frame_size(ctx, 128, 14, 128), 1);
    hooks::reset_counts();
    EXPECT_EQ(call(entry).result, entry.result);
    EXPECT_EQ(hooks::save_count(), 2u);
    EXPECT_EQ(hooks::restore_count(), 2u);
    EXPECT_EQ(ppl_decimation(ctx), 0);
  }
}

TEST_F(PackedEntries, DriversHoldNoBracket) {
  use_size(width, height);
  for (const FrameConversion &conversion : frame_conversions) {
    Entry entry{conversion.name,   conversion.driver,
                nullptr,           pixels * conversion.source_half_bytes / 2,
                conversion.format, 1};
    hooks::reset_counts();
    call(entry);
    EXPECT_EQ(hooks::save_count(), 0u) << conversion.name;
  }
}

TEST_F(PackedEntries, RefusedSizeIsNoFallback) {
  for (const Entry &entry : all_entries()) {
    GuardedBuffer source(16, Placement::ends_at_guard), output(16, Placement::ends_at_guard);
    const uint8_t result = entry.frame != nullptr
                               ? entry.frame(ctx, source.data(), output.data(), 100, 100, 100, 100)
                               : entry.fields(ctx, source.data(), source.data(), source.data(),
                                              output.data(), 100, 100, 100, 100);
    EXPECT_EQ(result, 0) << entry.name;
    EXPECT_EQ(output[0], untouched) << entry.name;
  }
  EXPECT_EQ(ppl_n_frame(ctx), 0u);
  EXPECT_EQ(hooks::save_count(), hooks::restore_count());
}

TEST_F(PackedEntries, WorkAtEveryStackAlignment) {
#if PPL_TEST_HAS_STACK_OFFSETS
  for (const Entry &entry : all_entries()) {
    const Call expected = call(entry);
    for (uint32_t offset = 0; offset < 16; offset += 4) {
      GuardedBuffer output(picture_bytes(entry.format, pixels), Placement::ends_at_guard);
      const std::vector<GuardedBuffer> &sources = expected.sources;
      const uint8_t result =
          entry.frame != nullptr
              ? call_with_stack_offset(offset, entry.frame, ctx, sources[0].data(), output.data(),
                                       width, height, width, height)
              : call_with_stack_offset(offset, entry.fields, ctx, sources[0].data(),
                                       sources[1].data(), sources[2].data(), output.data(), width,
                                       height, width, height);
      EXPECT_EQ(result, expected.result) << entry.name;
      EXPECT_EQ(memcmp(output.data(), expected.output.data(), output.size()), 0) << entry.name;
      EXPECT_TRUE(x87_is_clean());
    }
  }
#else
  GTEST_SKIP() << "only 32-bit callers may misalign the stack";
#endif
}

}  // namespace
}  // namespace ppl_test
