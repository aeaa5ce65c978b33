#include "model/machine.h"

#include <string>

namespace ppl_model::machine {

namespace {

constexpr uint32_t p3_tier_bit = 1u << 24;
constexpr uint32_t sse2_tier_bit = 1u << 26;

uint32_t flag_word = 1u | p3_tier_bit | 1u << 25 | sse2_tier_bit;
uint32_t saves_tried = 0;
uint32_t saves_until_failure = 0;
uint32_t failures_left = 0;

// The vendor string stands in EBX, EDX, ECX of leaf 0, lowest byte first.
std::string vendor_of(const CpuidRegisters &leaf_0) {
  std::string vendor;
  for (uint32_t word : {leaf_0.ebx, leaf_0.edx, leaf_0.ecx})
    for (int byte = 0; byte < 4; ++byte)
      vendor.push_back(static_cast<char>(word >> (8 * byte) & 0xFF));
  return vendor;
}

}  // namespace

void set_flags(uint32_t processor_flag_word) { flag_word = processor_flag_word; }
uint32_t flags() { return flag_word; }

bool has_tier(Tier tier) {
  return (flag_word & (tier == Tier::p3 ? p3_tier_bit : sse2_tier_bit)) != 0;
}

bool has_any_tier() { return has_tier(Tier::p3) || has_tier(Tier::sse2); }

void fail_saves(uint32_t skip, uint32_t count) {
  saves_until_failure = skip;
  failures_left = count;
}

bool save() {
  ++saves_tried;
  if (saves_until_failure > 0) {
    --saves_until_failure;
    return true;
  }
  if (failures_left == 0) return true;
  --failures_left;
  return false;
}

uint32_t save_count() { return saves_tried; }

void reset_counts() {
  saves_tried = 0;
  fail_saves(0, 0);
}

uint32_t flags_of_leaves(const CpuidRegisters &leaf_0, const CpuidRegisters &leaf_1,
                         const CpuidRegisters &leaf_80000000, const CpuidRegisters &leaf_80000001) {
  uint32_t word = 1;
  if (leaf_0.eax != 0) {
    word |= leaf_1.edx & 0x06800010u;
    if (leaf_80000000.eax > 0x80000000u) {
      word |= leaf_80000001.edx & 0x80000000u;
      if (vendor_of(leaf_0) == "AuthenticAMD") word |= leaf_80000001.edx & 0x40400000u;
    }
  }
  if ((word & 0x02400000u) != 0) word |= p3_tier_bit;
  return word;
}

}  // namespace ppl_model::machine
