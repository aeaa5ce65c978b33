#include "compare/case.h"

#include <string.h>

#include <algorithm>
#include <sstream>
#include <string_view>

#include "compare/raw_frames.h"
#include "compare/snapshot.h"
#include "compare/video_frames.h"
#include "support/processor.h"

namespace ppl_compare {

namespace hooks = ppl::test_hooks;

namespace {

constexpr size_t arena_bytes = size_t{96} << 20;

bool cpu_has_sse2() {
  hooks::set_cpuid(nullptr);
  return (hooks::processor_flags() & (1u << 26)) != 0;
}

uint32_t vendor_word(const char *vendor, int first) {
  uint32_t word = 0;
  memcpy(&word, vendor + first, 4);
  return word;
}

void choose_processor(const Options &options, ppl_test::Random &random, Case &one) {
  static const bool sse2_is_here = cpu_has_sse2();
  const char *vendor =
      random.pick({"GenuineIntel", "AuthenticAMD", "CentaurHauls", "AuthenticAMd"});
  uint32_t leaf = 1, edx = ppl_test::edx_mmx, extended_leaf = 0x80000001u, extended = 0;
  const uint32_t kind = random.below(20);
  if (kind < 14) {
    edx |= ppl_test::edx_sse | ppl_test::edx_sse2;
  } else if (kind < 16) {
    edx |= ppl_test::edx_sse;
  } else if (kind == 16) {
    // Without any tier.
  } else {
    // Any answers at all.
    leaf = random.pick<uint32_t>({0, 1, 2, 13});
    edx = static_cast<uint32_t>(random.next());
    extended_leaf = random.pick<uint32_t>({0, 0x80000000u, 0x80000001u, 0x80000008u});
    extended = static_cast<uint32_t>(random.next());
  }
  if (options.tier == "p3") edx = (edx | ppl_test::edx_sse) & ~ppl_test::edx_sse2;
  if (options.tier == "sse2") edx |= ppl_test::edx_sse | ppl_test::edx_sse2;
  if (!options.tier.empty()) leaf = 1;
  if (!sse2_is_here) edx &= ~ppl_test::edx_sse2;
  one.leaves[0] = {leaf, vendor_word(vendor, 0), vendor_word(vendor, 8), vendor_word(vendor, 4)};
  one.leaves[1] = {0x6B1, 0, 0, edx};
  one.leaves[2] = {extended_leaf, 0, 0, 0};
  one.leaves[3] = {0, 0, 0, extended};
}

const Case *answering = nullptr;

hooks::CpuidResult answer(uint32_t leaf) {
  switch (leaf) {
    case 0:
      return answering->leaves[0];
    case 1:
      return answering->leaves[1];
    case 0x80000000u:
      return answering->leaves[2];
    case 0x80000001u:
      return answering->leaves[3];
    default:
      return {};
  }
}

uint32_t model_flags(const Case &one) {
  answering = &one;
  return ppl_model::machine::detect(&answer);
}

Processor tier_of(uint32_t flags) {
  if ((flags & 1u << 24) == 0) return Processor::none;
  return (flags & 1u << 26) != 0 ? Processor::sse2 : Processor::p3;
}

// Even widths and heights mostly; small, since a case runs many frames. The smallest that a tier
// accepts, multiples of no block, those that become odd when they are scaled down, and now and then
// a large one.
Generator::Size choose_size(const Options &options, ppl_test::Random &random, Processor processor) {
  const uint32_t narrowest = processor == Processor::sse2 ? 128 : 64;
  uint32_t width = narrowest + 2 * random.below(37);
  if (random.one_in(4)) width = narrowest + 4 + 8 * random.below(9);
  uint32_t height =
      random.pick<uint32_t>({13, 14, 15, 17, 18, 20, 22, 24, 26, 28, 30, 32, 40, 44, 46, 48, 64});
  if (random.one_in(3))
    width = random.pick<uint32_t>({128, 136, 144, 160, 176, 192, 200, 240, 320});
  if (random.one_in(10)) width |= 1;
  if (random.one_in(10)) height |= 1;
  if (options.large_frames && random.one_in(60)) {
    width = random.pick<uint32_t>({352, 640, 704, 1270, 1280});
    height = random.pick<uint32_t>({240, 288, 480});
  }
  if (options.large_frames && random.one_in(1000)) {
    width = 1280;
    height = 1024;
  }
  return {width, height};
}

// Whether the options leave this operation in a case of this kind, and how often.
uint32_t weight(const Options &options, const Generator &generator, const Operation &operation) {
  const std::string_view name = operation.name;
  const auto has = [&](std::string_view part) { return name.find(part) != name.npos; };
  const bool is_raw = operation.generate == &generate_raw_frame;
  const bool is_video = operation.generate == &generate_video_frame;
  const bool is_frame = is_raw || is_video;
  if (is_frame) {
    if (generator.processor == Processor::none && has("ppl_process_")) return 0;
    if (!options.format.empty()) {
      std::string lower(name);
      std::transform(lower.begin(), lower.end(), lower.begin(),
                     [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
      if (lower.find("to" + options.format) == lower.npos) return 0;
    }
    const auto allowed = [&](int32_t d) {
      return std::find(options.decimations.begin(), options.decimations.end(), d) !=
             options.decimations.end();
    };
    const bool driver = has("ppl_process_");
    if (is_raw && !driver && generator.keeps_scale) return 0;
    const int32_t d = has("_deci_2_1") ? 1 : has("_intp_1_2") ? -1 : 0;
    if (is_raw && !driver && !has("_intp_1_4") && !allowed(d)) return 0;
  }
  if (name == "ppl_set_P3_only" && !options.tier.empty()) return 0;
  if (!options.operation.empty() && !is_frame && !has(options.operation)) return 0;
  if (!generator.has_frames) return operation.control_weight;
  if (options.packed_video && is_raw) return operation.frame_weight / 6;
  if (options.packed_video && is_video) return 20;
  return operation.frame_weight;
}

}  // namespace

Case make_case(const Options &options, uint64_t seed, uint64_t number) {
  Case one{seed, number, Processor::none, {}, {}};
  Generator generator{options, ppl_test::Random(seed, number), Processor::none, true, false, {}};
  ppl_test::Random &random = generator.random;
  choose_processor(options, random, one);
  one.processor = tier_of(model_flags(one));
  generator.processor = one.processor;
  generator.has_frames = !random.one_in(6);
  generator.keeps_scale = one.processor != Processor::none && random.one_in(3);
  for (uint32_t i = 1 + random.below(3); i > 0; --i)
    generator.palette.push_back(choose_size(options, random, one.processor));

  uint32_t total = 0;
  for (const Operation &operation : operations()) total += weight(options, generator, operation);

  const auto add = [&](size_t index) {
    Step step{index, random.below(8), {}, random.next() >> 16};
    operations()[index].generate(generator, step);
    one.steps.push_back(step);
  };
  const auto add_named = [&](const char *name) { add(operation_index(name)); };

  add_named("ppl_init");
  if (random.one_in(5)) add_named("ppl_init");
  if (!generator.has_frames && random.one_in(8))  // one more than there are
    for (int i = 0; i < 8; ++i) add_named("ppl_init");
  if (generator.has_frames) {
    if (!random.one_in(4)) add_named("ppl_new_frame_size");
    if (!random.one_in(3)) add_named("ppl_set_quality");
    if (random.one_in(2) && options.tier.empty()) add_named("ppl_set_P3_only");
    if (random.one_in(generator.keeps_scale || options.packed_video ? 2 : 3))
      add_named("ppl_set_decimation");
    if (random.one_in(3)) add_named("ppl_set_h_mirror");
    if (random.one_in(3)) add_named("ppl_set_v_mirror");
    if (options.packed_video && random.one_in(2)) add_named("ppl_set_intl_3T_threshold");
  }
  // A frame often comes twice, since the first of a new size is dropped in three formats.
  const uint32_t count = generator.has_frames ? 8 + random.below(20) : 40 + random.below(60);
  while (one.steps.size() < count && total > 0) {
    uint32_t choice = random.below(total);
    size_t index = 0;
    while (choice >= weight(options, generator, operations()[index]))
      choice -= weight(options, generator, operations()[index++]);
    add(index);
    if (operations()[index].generate == &generate_raw_frame && !random.one_in(3)) {
      Step again = one.steps.back();
      again.seed = random.next() >> 16;
      one.steps.push_back(again);
    }
  }
  return one;
}

Runner::Runner()
    : library_source_(arena_bytes),
      library_output_(arena_bytes),
      model_source_(arena_bytes),
      model_output_(arena_bytes),
      third_source_(arena_bytes),
      full_range_(65 * 256),
      studio_range_(65 * 256) {
  ::ppl_get_gamma_tables65x256(nullptr, full_range_.data());
  ::ppl_get_gamma_tables65x256_16_235(nullptr, studio_range_.data());
}

namespace {

// For the report of a crash: what was running.
const Case *running_case = nullptr;
size_t running_step = 0;

}  // namespace

std::string describe_running_step() {
  if (running_case == nullptr || running_step >= running_case->steps.size()) return "between cases";
  std::ostringstream out;
  out << "seed " << running_case->seed << " case " << running_case->number << " step "
      << running_step << ": " << describe(running_case->steps[running_step]);
  return out.str();
}

std::optional<Failure> Runner::run(const Case &one, Totals *totals) {
  running_case = &one;
  // A fresh machine: nothing of an earlier case may show.
  hooks::reset_counts();
  ppl_model::machine::reset_counts();
  hooks::reload_pool();
  ppl_model::machine::reload_pool();
  ::ppl_copy_gamma_tables65x256(nullptr, full_range_.data());
  ::ppl_copy_gamma_tables65x256_16_235(nullptr, studio_range_.data());
  ppl_model::ppl_copy_gamma_tables65x256(nullptr, full_range_.data());
  ppl_model::ppl_copy_gamma_tables65x256_16_235(nullptr, studio_range_.data());

  const uint32_t flags = model_flags(one);
  ppl_model::machine::set_flags(flags);
  hooks::set_cpuid(&answer);
  std::optional<Failure> failure;
  if (hooks::processor_flags() != flags) {
    std::ostringstream what;
    what << std::hex << "processor flags: expected " << flags << ", got "
         << hooks::processor_flags();
    failure = Failure{0, what.str()};
  }

  Session session{{},
                  0,
                  0,
                  library_source_,
                  library_output_,
                  model_source_,
                  model_output_,
                  third_source_,
                  one.processor};
  for (size_t i = 0; i < one.steps.size() && !failure; ++i) {
    const Step &step = one.steps[i];
    running_step = i;
    const uint32_t saves = hooks::save_count(), restores = hooks::restore_count();
    std::string what = operations()[step.operation].run(session, step);
    if (what.empty() && hooks::save_count() != ppl_model::machine::save_count())
      what = "saves: expected " + std::to_string(ppl_model::machine::save_count()) + ", got " +
             std::to_string(hooks::save_count());
    if (what.empty()) {
      uint32_t good = 0;
      for (uint32_t n = hooks::save_count() - saves; n > 0; --n) {
        if (session.good_saves_left > 0) {
          --session.good_saves_left;
          ++good;
        } else if (session.failing_saves_left > 0) {
          --session.failing_saves_left;
        } else {
          ++good;
        }
      }
      if (hooks::restore_count() - restores != good)
        what = "restores: expected " + std::to_string(good) + ", got " +
               std::to_string(hooks::restore_count() - restores);
    }
    const bool last = i + 1 == one.steps.size();
    if (what.empty()) {
      const Pair *touched = session.stream(step);
      for (const Pair &pair : session.streams) {
        if (!pair.live() || (&pair != touched && !last)) continue;
        if (what = compare_streams(pair); !what.empty()) {
          what = "after the call, slot " + std::to_string(ppl_model::slot_of(pair.model)) + ": " +
                 what;
          break;
        }
      }
    }
    if (what.empty() && last) what = compare_gamma_families();
    if (!what.empty()) failure = Failure{i, what};
    if (totals != nullptr) ++totals->steps;
  }
  if (totals != nullptr) {
    totals->frames += session.frames;
    totals->pictures += session.pictures;
    totals->free_pictures += session.free_pictures;
  }
  hooks::reset_counts();
  hooks::set_cpuid(nullptr);
  running_case = nullptr;
  return failure;
}

Case Runner::shrink(const Case &failing) {
  Case smallest = failing;
  for (size_t length = smallest.steps.size(); length > 0; length /= 2) {
    for (size_t first = 0; first < smallest.steps.size();) {
      Case shorter = smallest;
      const size_t end = std::min(first + length, shorter.steps.size());
      shorter.steps.erase(shorter.steps.begin() + static_cast<ptrdiff_t>(first),
                          shorter.steps.begin() + static_cast<ptrdiff_t>(end));
      if (run(shorter))
        smallest = shorter;
      else
        first += length;
    }
  }
  return smallest;
}

std::string describe(const Case &one) {
  std::ostringstream out;
  out << "seed " << one.seed << " case " << one.number << " on a processor with "
      << (one.processor == Processor::none ? "no tier"
          : one.processor == Processor::p3 ? "the P3 tier"
                                           : "both tiers")
      << "\n";
  for (size_t i = 0; i < one.steps.size(); ++i)
    out << "  step " << i << ": " << describe(one.steps[i]) << "\n";
  return out.str();
}

}  // namespace ppl_compare
