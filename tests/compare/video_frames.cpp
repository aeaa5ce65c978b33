#include "compare/video_frames.h"

#include <string.h>

#include <algorithm>
#include <optional>

#include "support/difference.h"
#include "support/fill.h"
#include "support/guarded_buffer.h"
#include "support/x87.h"

namespace ppl_compare {
namespace {

// Arguments of a step: the sizes, or as_stored in place of the first; alignments modulo 16, the
// source's for one buffer of three; fill, placements, how the reference field came about.
enum Argument {
  width_at,
  height_at,
  out_width_at,
  out_height_at,
  source_alignment_at,
  output_alignment_at,
  fill_at,
  placement_at,
  reference_at
};
constexpr int64_t as_stored = -1;

struct Size {
  uint32_t width, height;
};

size_t picture_bytes(PixelFormat format, size_t pixels) {
  switch (format) {
    case PixelFormat::i420:
      return pixels * 3 / 2;
    case PixelFormat::rgb24:
      return pixels * 3;
    case PixelFormat::rgb32:
      return pixels * 4;
    default:
      return pixels * 2;
  }
}

size_t source_bytes(VideoSource source, size_t width, size_t height) {
  switch (source) {
    case VideoSource::packed:
      return 2 * width * height;
    case VideoSource::yyyy:
      return 3 * width / 2 * height;
    case VideoSource::rgb24:
      return 3 * width * height;
    case VideoSource::fields:
      return 2 * width * (height / 2);
  }
  return 0;
}

// What a call that is not refused may write, as the header tells it.
size_t output_bytes(const VideoFunction &function, const ppl_model::PplContext *model,
                    const VideoCall &call) {
  const ppl_model::PlainState &stored = ppl_model::plain(model);
  const Size in{call.width, call.height};
  Size out{call.out_width, call.out_height};
  const auto same = [](uint32_t asked, int32_t kept) {
    return asked == static_cast<uint32_t>(kept);
  };
  const bool keeps_geometry =
      same(call.width, stored.frame_width) && same(call.height, stored.frame_height) &&
      same(call.out_width, stored.out_width) && same(call.out_height, stored.out_height);
  const bool packed_output =
      function.format == PixelFormat::yuyv || function.format == PixelFormat::uyvy;
  if (keeps_geometry && packed_output) {
    // All black lines are written, also where the height lacks them.
    const int32_t d = ppl_model::ppl_decimation(model);
    out.height = (d >= 0 ? in.height >> d : 2 * in.height) +
                 static_cast<uint32_t>(ppl_model::ppl_decimation_top_black_lines(model) +
                                       ppl_model::ppl_decimation_bottom_black_lines(model));
  }
  if (in.width == 640 && out.width == 352) out = in;  // runs unscaled
  size_t pixels = size_t{out.width} * out.height;
  // A progressive frame stands in RGB24 at its own size, whatever the decimation.
  if (function.source == VideoSource::packed && function.format == PixelFormat::rgb24)
    pixels = std::max(pixels, size_t{in.width} * in.height);
  return picture_bytes(function.format, pixels);
}

// The reference field: unrelated to the second one, the same, or changed a little.
void make_reference(int64_t kind, std::span<uint8_t> reference, std::span<const uint8_t> second,
                    ppl_test::Random &random) {
  if (kind == 0) return;
  memcpy(reference.data(), second.data(), reference.size());
  const int32_t step = random.between(-60, 60);
  const uint32_t noise = 1 + random.below(80);
  for (uint8_t &byte : reference) {
    int32_t change = 0;
    if (kind == 2) change = step;
    if (kind == 3) change = static_cast<int32_t>(random.below(noise));
    if (kind == 4 && random.one_in(40)) change = random.byte();
    byte = static_cast<uint8_t>(kind == 2 ? std::clamp(byte + change, 0, 255) : byte + change);
  }
}

std::string place_of(const ppl_test::Difference &difference, size_t lead, size_t pitch) {
  if (difference.offset < lead)
    return std::to_string(lead - difference.offset) + " bytes before the start";
  ppl_test::Difference inside = difference;
  inside.offset -= lead;
  return ppl_test::describe(inside, pitch);
}

}  // namespace

void generate_video_frame(Generator &generator, Step &step) {
  ppl_test::Random &random = generator.random;
  if (random.one_in(5))
    frame_sizes(generator, step);
  else
    step.arguments[width_at] = as_stored;
  step.arguments[source_alignment_at] = random.one_in(10) ? random.pick<int64_t>({8, 8, 4, 1}) : 0;
  step.arguments[output_alignment_at] = random.one_in(10) ? random.pick<int64_t>({8, 8, 4, 2}) : 0;
  step.arguments[fill_at] = random.below(ppl_test::all_fills.size());
  step.arguments[placement_at] = random.below(16);
  step.arguments[reference_at] = random.below(5);
}

std::string run_video_frame(Session &session, const Step &step, const VideoFunction &function) {
  using ppl_test::Placement;
  Pair *pair = session.stream(step);
  if (pair == nullptr) return {};
  // A driver trusts its caller to have tested for the tier.
  if (!function.is_entry && session.processor == Processor::none) return {};

  VideoCall call{};
  const auto argument = [&](Argument at) { return static_cast<uint32_t>(step.arguments[at]); };
  if (step.arguments[width_at] == as_stored) {
    const ppl_model::PlainState &stored = ppl_model::plain(pair->model);
    call.width = static_cast<uint32_t>(stored.frame_width);
    call.height = static_cast<uint32_t>(stored.frame_height);
    call.out_width = static_cast<uint32_t>(stored.out_width);
    call.out_height = static_cast<uint32_t>(stored.out_height);
  } else {
    call.width = argument(width_at);
    call.height = argument(height_at);
    call.out_width = argument(out_width_at);
    call.out_height = argument(out_height_at);
  }

  // Drivers are not bound to any alignment of their own, but vectors are.
  const unsigned lanes = function.is_entry ? 15 : 8;
  const unsigned source_alignment = argument(source_alignment_at) & lanes;
  const unsigned output_alignment = argument(output_alignment_at) & lanes;
  const size_t count = function.source == VideoSource::fields ? 3 : 1;
  const auto unaligned_source = static_cast<size_t>(step.seed % count);
  const auto placement = [&](size_t bit) {
    return (step.arguments[placement_at] >> bit & 1) != 0 ? Placement::begins_behind_guard
                                                          : Placement::ends_at_guard;
  };
  const bool may_fall_back =
      function.is_entry && (session.processor == Processor::none || source_alignment % 8 != 0 ||
                            output_alignment % 8 != 0 || session.failing_saves_left > 0);
  size_t input_size = source_bytes(function.source, call.width, call.height);
  size_t output_size = output_bytes(function, pair->model, call);
  if (may_fall_back) {
    const size_t pixels = size_t{call.out_width} * call.out_height;
    input_size = std::max(input_size, pixels);
    output_size = std::max(output_size, picture_bytes(function.format, pixels));
  }

  ppl_test::Random random(step.seed);
  Arena *const arenas[3] = {&session.library_source, &session.model_source, &session.third_source};
  for (size_t i = 0; i < count; ++i) {
    call.sources[i] =
        arenas[i]->open(input_size, placement(i), i == unaligned_source ? source_alignment : 0);
    ppl_test::fill_frame(arenas[i]->bytes(), 2 * call.width, 2 * call.width,
                         ppl_test::all_fills[argument(fill_at)], random);
  }
  if (count == 3)
    make_reference(step.arguments[reference_at], arenas[0]->bytes(), arenas[2]->bytes(), random);
  std::vector<uint8_t> sources_before[3];
  for (size_t i = 0; i < count; ++i)
    sources_before[i].assign(arenas[i]->watched().begin(), arenas[i]->watched().end());

  call.output = session.library_output.open(output_size, placement(3), output_alignment);
  const uint8_t actual = function.library(pair->library, call);
  if (!ppl_test::x87_is_clean()) return "left MMX state behind";
  call.output = session.model_output.open(output_size, placement(3), output_alignment);
  const uint8_t expected = function.model(pair->model, call);
  ++session.frames;
  session.pictures += expected;
  session.free_pictures += ppl_model::picture_is_free();

  if (expected != actual)
    return "result: expected " + std::to_string(expected) + ", got " + std::to_string(actual);
  for (size_t i = 0; i < count; ++i)
    if (auto difference = ppl_test::first_difference(sources_before[i], arenas[i]->watched()))
      return "source " + std::to_string(i + 1) + ": " +
             place_of(*difference, arenas[i]->bytes_watched_before(), 2 * call.width);

  const std::span<uint8_t> watched = session.model_output.watched();
  const size_t lead = session.model_output.bytes_watched_before();
  std::vector<uint8_t> free(watched.size());
  if (ppl_model::picture_is_free()) memset(&free[lead], 1, output_size);
  for (const ppl_model::FreeRange &range : ppl_model::free_bytes())
    memset(&free[lead + range.offset], 1, range.length);
  if (auto difference =
          ppl_test::first_difference(watched, session.library_output.watched(), free)) {
    const size_t pitch = picture_bytes(
        function.format, static_cast<size_t>(ppl_model::plain(pair->model).out_width));
    return "output: " + place_of(*difference, lead,
                                 function.format == PixelFormat::i420 ? pitch * 2 / 3 : pitch);
  }
  return {};
}

}  // namespace ppl_compare
