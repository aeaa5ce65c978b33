// Shared by the tests of the controls: a context on a fake processor, and a look at the derived
// entries by name, so that a test can tell which of them a call wrote.
#pragma once

#include <gtest/gtest.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <functional>
#include <initializer_list>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "context/context.h"
#include "ppl.h"
#include "support/machine.h"
#include "support/tier_state.h"

namespace ppl::controls_test {

using ppl_test::both_tiers;
using ppl_test::FakeProcessor;
using ppl_test::has_tier;
using ppl_test::no_tier_processor;
using ppl_test::p3_processor;
using ppl_test::ProcessorLook;
using ppl_test::sse2_processor;
using ppl_test::sse2_without_p3_processor;
using ppl_test::Tier;
using ppl_test::tier_state;

// ---- Derived entries by name ----

// clang-format off
#define PPL_DERIVED_ENTRIES(READ, UNREAD) \
  READ(qual_BmGb_lo_vec) READ(qual_BmGb_hi_vec) READ(qual_GrmR_lo_vec) READ(qual_GrmR_hi_vec) \
  READ(qual_BmGb_p_GrmR_lo_vec) READ(qual_BmGb_p_GrmR_hi_vec) READ(qual_BmGb_m_GrmR_lo_vec) \
  READ(qual_BmGb_m_GrmR_hi_vec) READ(qual_GR_base_vec) READ(qual_GR_span_vec) \
  READ(qual_BG_base_vec) READ(qual_BG_span_vec) READ(qAE_min_vec) UNREAD(qAE_lo_vec) \
  READ(qAE_max_vec) UNREAD(qAE_hi_vec) READ(edge_threshold_vec) READ(edge_threshold2_vec) \
  READ(edge_enhance_factor_vec) READ(intl_3T_vec) UNREAD(noise_G_12T_vec) \
  UNREAD(noise_R_8T_vec) UNREAD(noise_B_8T_vec) READ(CFA_T0_vec) READ(CFA_T1_vec) \
  READ(rgb_slope_vec) READ(full_slope_vec) READ(studio_slope_vec) UNREAD(studio_slope_q12_vec) \
  READ(rgb_base0_vec) READ(full_base0_vec) READ(studio_base0_vec) UNREAD(studio_base0_q12_vec) \
  READ(rgb_base1_vec) UNREAD(full_base1_vec) READ(studio_base1_vec) \
  UNREAD(studio_base1_q12_vec) READ(index_bound_vec) READ(offset_studio_vec) \
  READ(offset_full_vec) READ(offset_rgb_vec) READ(rgb_gain_BG_vec) READ(rgb_gain_GR_vec) \
  UNREAD(quals_gain_BG_vec) UNREAD(quals_gain_GR_vec) READ(rgb_delta_BG_vec) \
  READ(rgb_delta_GR_vec) READ(optical_black_BG_vec) READ(optical_black_GR_vec) \
  UNREAD(medium_diff_vec) READ(medium_hot_vec) READ(medium_dead_vec) READ(medium_hot_pct_vec) \
  READ(medium_dead_pct_vec)
// clang-format on

// An entry is one value, a pair or a matrix.
using Values = std::vector<int>;
inline Values values_of(int value) { return {value}; }
template <class Value>
Values values_of(const Pair<Value> &pair) {
  return {pair.even, pair.odd};
}
inline Values values_of(const ppl::Matrix &matrix) { return {matrix, matrix + 9}; }

struct Entry {
  const char *name;
  size_t offset, size;  // in Parameters
  Values (*values)(const Parameters &);
};

inline const std::vector<Entry> &entries() {
  static const std::vector<Entry> all = {
#define PPL_ENTRY(name, place)                                         \
  Entry{#name, offsetof(Parameters, place), sizeof(Parameters::place), \
        [](const Parameters &p) { return values_of(p.place); }},
#define PPL_READ(name) PPL_ENTRY(name, name)
#define PPL_UNREAD(name) PPL_ENTRY(name, unread.name)
      PPL_DERIVED_ENTRIES(PPL_READ, PPL_UNREAD)
#undef PPL_UNREAD
#undef PPL_READ
#undef PPL_ENTRY
  };
  return all;
}

inline uint8_t *start_of(PplContext *context, const Entry &entry) {
  return reinterpret_cast<uint8_t *>(&context->params) + entry.offset;
}

inline Values entry_values(const PplContext *context, const std::string &name) {
  for (const Entry &entry : entries()) {
    if (entry.name == name) return entry.values(context->params);
  }
  ADD_FAILURE() << "no derived entry " << name;
  return {};
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
    "rgb_slope_vec",   "full_slope_vec",    "studio_slope_vec", "studio_slope_q12_vec",
    "rgb_base0_vec",   "full_base0_vec",    "studio_base0_vec", "studio_base0_q12_vec",
    "rgb_base1_vec",   "full_base1_vec",    "studio_base1_vec", "studio_base1_q12_vec",
    "index_bound_vec", "offset_studio_vec", "offset_full_vec",  "offset_rgb_vec"};
inline const Entries word_band_entries = {"qual_BmGb_lo_vec",        "qual_BmGb_hi_vec",
                                          "qual_GrmR_lo_vec",        "qual_GrmR_hi_vec",
                                          "qual_BmGb_p_GrmR_lo_vec", "qual_BmGb_p_GrmR_hi_vec",
                                          "qual_BmGb_m_GrmR_lo_vec", "qual_BmGb_m_GrmR_hi_vec"};
inline const Entries GR_band_entries = {"qual_GR_base_vec", "qual_GR_span_vec"};
inline const Entries BG_band_entries = {"qual_BG_base_vec", "qual_BG_span_vec"};
inline const Entries qAE_entries = {"qAE_min_vec", "qAE_lo_vec", "qAE_max_vec", "qAE_hi_vec"};

inline constexpr uint8_t poison = 0xA5;

// Fills every derived entry with a pattern that no test value makes.
inline void poison_derived(PplContext *context) {
  for (const Entry &entry : entries()) memset(start_of(context, entry), poison, entry.size);
}

// The entries that were written since poison_derived, in whole or in part.
inline Entries written_entries(PplContext *context) {
  Entries written;
  for (const Entry &entry : entries()) {
    const uint8_t *const start = start_of(context, entry);
    const auto is_poison = [](uint8_t byte) { return byte == poison; };
    if (!std::all_of(start, start + entry.size, is_poison)) written.insert(entry.name);
  }
  return written;
}

// ---- Fixture ----

class ControlsTest : public testing::Test {
 protected:
  void SetUp() override { restart_on(sse2_processor); }

  void TearDown() override {
    test_hooks::reset_counts();
    processor.reset();
    test_hooks::set_cpuid(nullptr);
    test_hooks::reload_pool();
  }

  // Starts again on another processor, with a pool as after load. The first saves of the new
  // process may fail.
  void restart_on(const ProcessorLook &look, uint32_t failing_saves = 0) {
    processor.emplace(look);
    test_hooks::reset_counts();
    test_hooks::reload_pool();
    test_hooks::fail_saves(0, failing_saves);
    context = ppl_init();
    ASSERT_NE(context, nullptr);
    test_hooks::reset_counts();
  }

  void expect_value(const std::string &name, int value) {
    EXPECT_EQ(entry_values(context, name), Values{value}) << name;
  }

  // Of the even and of the odd columns of a line kind.
  void expect_pair(const std::string &name, int even, int odd) {
    EXPECT_EQ(entry_values(context, name), (Values{even, odd})) << name;
  }

  void expect_matrix(const std::string &name, const Values &coefficients) {
    ASSERT_EQ(coefficients.size(), 9u);
    EXPECT_EQ(entry_values(context, name), coefficients) << name;
  }

  void expect_written(const Entries &expected) { EXPECT_EQ(written_entries(context), expected); }

  static std::vector<int> bytes_as_ints(const uint8_t *table, size_t count = 256) {
    return {table, table + count};
  }

  static std::vector<int> identity_table() {
    std::vector<int> table;
    for (int i = 0; i < 256; ++i) table.push_back(i);
    return table;
  }

  PplContext *context = nullptr;
  std::optional<FakeProcessor> processor;
};

// A table that a test copies in: no two neighbours alike, not monotonic.
inline std::vector<uint8_t> scrambled_table(unsigned seed = 0) {
  std::vector<uint8_t> table(256);
  for (unsigned i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(i * 167 + 13 + seed);
  return table;
}

// A whole record, to compare what two ways of reaching a state leave behind.
inline std::vector<uint8_t> bytes_of(const PplContext *context) {
  return {reinterpret_cast<const uint8_t *>(context),
          reinterpret_cast<const uint8_t *>(context + 1)};
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
