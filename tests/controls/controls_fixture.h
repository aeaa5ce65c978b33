// Shared by the tests of the controls: a context on an injected processor, and a look at the
// derived entries by name, so that a test can tell which of them a call wrote.
#pragma once

#include <gtest/gtest.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <functional>
#include <initializer_list>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "frame/context.h"
#include "platform/test_hooks.h"
#include "ppl.h"

namespace ppl::controls_test {

// ---- Injected processors ----

inline constexpr uint32_t edx_time_stamp = 1u << 4;
inline constexpr uint32_t edx_mmx = 1u << 23;
inline constexpr uint32_t edx_sse = 1u << 25;
inline constexpr uint32_t edx_sse2 = 1u << 26;

template <uint32_t FeatureEdx>
test_hooks::CpuidResult plain_processor(uint32_t leaf) {
  switch (leaf) {
    case 0:
      return {1, 0x54736554, 0x72706C70, 0x50746573};  // a vendor that is none
    case 1:
      return {0x0600, 0, 0, FeatureEdx};
    default:
      return {0, 0, 0, 0};
  }
}

inline constexpr test_hooks::CpuidFunction both_tiers =
    plain_processor<edx_mmx | edx_sse | edx_sse2>;
inline constexpr test_hooks::CpuidFunction only_p3_tier = plain_processor<edx_mmx | edx_sse>;
inline constexpr test_hooks::CpuidFunction only_sse2_tier = plain_processor<edx_mmx | edx_sse2>;
inline constexpr test_hooks::CpuidFunction no_tier = plain_processor<edx_mmx>;

// ---- Derived entries by name ----

// clang-format off
#define PPL_DERIVED_ENTRIES(X) \
  X(qual_BmGb_lo_vec) X(qual_BmGb_hi_vec) X(qual_GrmR_lo_vec) X(qual_GrmR_hi_vec) \
  X(qual_BmGb_p_GrmR_lo_vec) X(qual_BmGb_p_GrmR_hi_vec) X(qual_BmGb_m_GrmR_lo_vec) \
  X(qual_BmGb_m_GrmR_hi_vec) X(qual_GR_base_vec) X(qual_GR_span_vec) X(qual_BG_base_vec) \
  X(qual_BG_span_vec) X(qAE_min_vec) X(qAE_lo_vec) X(qAE_max_vec) X(qAE_hi_vec) \
  X(edge_threshold_vec) X(edge_threshold2_vec) X(edge_enhance_factor_vec) X(intl_3T_vec) \
  X(noise_G_12T_vec) X(noise_R_8T_vec) X(noise_B_8T_vec) X(CFA_T0_vec) X(CFA_T1_vec) \
  X(rgb_slope_vec) X(full_slope_vec) X(studio_slope_vec) X(studio_slope_q12_vec) \
  X(rgb_base0_vec) X(full_base0_vec) X(studio_base0_vec) X(studio_base0_q12_vec) \
  X(rgb_base1_vec) X(full_base1_vec) X(studio_base1_vec) X(studio_base1_q12_vec) \
  X(index_mask_vec) X(offset_studio_vec) X(offset_full_vec) X(offset_rgb_vec) \
  X(rgb_gain_BG_vec) X(rgb_gain_GR_vec) X(quals_gain_BG_vec) X(quals_gain_GR_vec) \
  X(rgb_delta_BG_vec) X(rgb_delta_GR_vec) X(optical_black_BG_vec) X(optical_black_GR_vec) \
  X(medium_diff_vec) X(medium_hot_vec) X(medium_dead_vec) X(medium_hot_pct_vec) \
  X(medium_dead_pct_vec)
// clang-format on

enum class Tier { p3, sse2 };
inline constexpr Tier tiers[] = {Tier::p3, Tier::sse2};

inline const char *tier_name(Tier tier) { return tier == Tier::p3 ? "P3 tier" : "SSE2 tier"; }

struct Entry {
  const char *name;
  size_t offset[2], size[2];  // per tier
};

inline const std::vector<Entry> &entries() {
  using P3 = ParameterBlock<p3_block_width>;
  using Sse2 = ParameterBlock<sse2_block_width>;
  static const std::vector<Entry> all = {
#define PPL_ENTRY(name) \
  Entry{#name, {offsetof(P3, name), offsetof(Sse2, name)}, {sizeof(P3::name), sizeof(Sse2::name)}},
      PPL_DERIVED_ENTRIES(PPL_ENTRY)
#undef PPL_ENTRY
  };
  return all;
}

inline uint8_t *block_of(PplContext *context, Tier tier) {
  return tier == Tier::p3 ? reinterpret_cast<uint8_t *>(&context->p3_params)
                          : reinterpret_cast<uint8_t *>(&context->sse2_params);
}

inline FramePlan &plan_of(PplContext *context, Tier tier) {
  return tier == Tier::p3 ? context->p3_plan : context->sse2_plan;
}

inline std::vector<uint8_t> entry_bytes(PplContext *context, Tier tier, const std::string &name) {
  const auto index = static_cast<size_t>(tier);
  for (const Entry &entry : entries()) {
    if (entry.name != name) continue;
    const uint8_t *const start = block_of(context, tier) + entry.offset[index];
    return {start, start + entry.size[index]};
  }
  ADD_FAILURE() << "no derived entry " << name;
  return {};
}

inline std::vector<int> entry_words(PplContext *context, Tier tier, const std::string &name) {
  const std::vector<uint8_t> bytes = entry_bytes(context, tier, name);
  std::vector<int> words;
  for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
    words.push_back(static_cast<int16_t>(bytes[i] | bytes[i + 1] << 8));
  }
  return words;
}

// The names of entries, as a call is expected to write them.
using Entries = std::set<std::string>;

inline Entries operator+(Entries left, const Entries &right) {
  left.insert(right.begin(), right.end());
  return left;
}

inline std::ostream &operator<<(std::ostream &out, const Entries &names) {
  out << "{";
  for (const std::string &name : names) out << " " << name;
  return out << " }";
}

inline const Entries no_entries = {};
inline const Entries colour_entries = {
    "rgb_slope_vec",  "full_slope_vec",    "studio_slope_vec", "studio_slope_q12_vec",
    "rgb_base0_vec",  "full_base0_vec",    "studio_base0_vec", "studio_base0_q12_vec",
    "rgb_base1_vec",  "full_base1_vec",    "studio_base1_vec", "studio_base1_q12_vec",
    "index_mask_vec", "offset_studio_vec", "offset_full_vec",  "offset_rgb_vec"};
// No entry of a block, but a derived thing of a tier all the same: the plan's table of steps.
inline const Entries stride_table_entry = {"stride_table"};
inline const Entries word_band_entries = {"qual_BmGb_lo_vec",        "qual_BmGb_hi_vec",
                                          "qual_GrmR_lo_vec",        "qual_GrmR_hi_vec",
                                          "qual_BmGb_p_GrmR_lo_vec", "qual_BmGb_p_GrmR_hi_vec",
                                          "qual_BmGb_m_GrmR_lo_vec", "qual_BmGb_m_GrmR_hi_vec"};
inline const Entries GR_band_entries = {"qual_GR_base_vec", "qual_GR_span_vec"};
inline const Entries BG_band_entries = {"qual_BG_base_vec", "qual_BG_span_vec"};
inline const Entries qAE_entries = {"qAE_min_vec", "qAE_lo_vec", "qAE_max_vec", "qAE_hi_vec"};

inline constexpr uint8_t poison = 0xA5;

// Fills every derived entry and both stride tables with a pattern that no test value makes.
inline void poison_derived(PplContext *context) {
  for (const Tier tier : tiers) {
    for (const Entry &entry : entries()) {
      memset(block_of(context, tier) + entry.offset[static_cast<size_t>(tier)], poison,
             entry.size[static_cast<size_t>(tier)]);
    }
    memset(plan_of(context, tier).stride_table, poison, sizeof(FramePlan::stride_table));
  }
}

// The entries that were written since poison_derived, in whole or in part.
inline Entries written_entries(PplContext *context, Tier tier) {
  const auto is_poison = [](uint8_t byte) { return byte == poison; };
  Entries written;
  for (const Entry &entry : entries()) {
    const std::vector<uint8_t> bytes = entry_bytes(context, tier, entry.name);
    if (!std::all_of(bytes.begin(), bytes.end(), is_poison)) written.insert(entry.name);
  }
  const auto *const table = reinterpret_cast<const uint8_t *>(plan_of(context, tier).stride_table);
  if (!std::all_of(table, table + sizeof(FramePlan::stride_table), is_poison)) {
    written.insert("stride_table");
  }
  return written;
}

// ---- Fixture ----

class ControlsTest : public testing::Test {
 protected:
  void SetUp() override {
    test_hooks::set_cpuid(both_tiers);
    test_hooks::reset_counts();
    test_hooks::reload_pool();
    context = ppl_init();
    ASSERT_NE(context, nullptr);
    test_hooks::reset_counts();
  }

  void TearDown() override {
    test_hooks::reset_counts();
    test_hooks::set_cpuid(nullptr);
    test_hooks::reload_pool();
  }

  // Starts again on another processor, with a pool as after load.
  void restart_on(test_hooks::CpuidFunction processor) {
    test_hooks::set_cpuid(processor);
    test_hooks::reset_counts();
    test_hooks::reload_pool();
    context = ppl_init();
    ASSERT_NE(context, nullptr);
    test_hooks::reset_counts();
  }

  // The lanes of an entry in both tiers; `pattern` repeats over them from the lowest lane on.
  void expect_words(const std::string &name, const std::vector<int> &pattern) {
    for (const Tier tier : tiers) {
      SCOPED_TRACE(name + ", " + tier_name(tier));
      const std::vector<int> words = entry_words(context, tier, name);
      EXPECT_EQ(words, repeated(pattern, words.size()));
    }
  }

  void expect_bytes(const std::string &name, const std::vector<int> &pattern) {
    for (const Tier tier : tiers) {
      SCOPED_TRACE(name + ", " + tier_name(tier));
      const std::vector<uint8_t> bytes = entry_bytes(context, tier, name);
      EXPECT_EQ(std::vector<int>(bytes.begin(), bytes.end()), repeated(pattern, bytes.size()));
    }
  }

  // A group of nine broadcast words, row-major.
  void expect_matrix(const std::string &name, const std::vector<int> &coefficients) {
    ASSERT_EQ(coefficients.size(), 9u);
    for (const Tier tier : tiers) {
      SCOPED_TRACE(name + ", " + tier_name(tier));
      const std::vector<int> words = entry_words(context, tier, name);
      const size_t lanes = words.size() / 9;
      std::vector<int> expected;
      for (const int coefficient : coefficients)
        expected.insert(expected.end(), lanes, coefficient);
      EXPECT_EQ(words, expected);
    }
  }

  void expect_written(const Entries &expected) {
    for (const Tier tier : tiers) {
      SCOPED_TRACE(tier_name(tier));
      EXPECT_EQ(written_entries(context, tier), expected);
    }
  }

  static std::vector<int> repeated(const std::vector<int> &pattern, size_t count) {
    std::vector<int> values;
    for (size_t i = 0; i < count; ++i) values.push_back(pattern[i % pattern.size()]);
    return values;
  }

  static std::vector<int> bytes_as_ints(const uint8_t *table, size_t count = 256) {
    return {table, table + count};
  }

  static std::vector<int> identity_table() {
    std::vector<int> table;
    for (int i = 0; i < 256; ++i) table.push_back(i);
    return table;
  }

  PplContext *context = nullptr;
};

// A table that a test copies in: no two neighbours alike, not monotonic.
inline std::vector<uint8_t> scrambled_table(unsigned seed = 0) {
  std::vector<uint8_t> table(256);
  for (unsigned i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(i * 167 + 13 + seed);
  return table;
}

// Bytes on a 16-byte boundary, as frames need them.
class AlignedBytes {
 public:
  explicit AlignedBytes(size_t size, uint8_t fill = 0) : storage_(size + 32, fill) {
    const size_t misalignment = reinterpret_cast<uintptr_t>(storage_.data()) % 16;
    start_ = storage_.data() + (misalignment == 0 ? 0 : 16 - misalignment);
  }
  AlignedBytes(const AlignedBytes &) = delete;
  AlignedBytes &operator=(const AlignedBytes &) = delete;

  uint8_t *data() { return start_; }

 private:
  std::vector<uint8_t> storage_;
  uint8_t *start_;
};

}  // namespace ppl::controls_test
