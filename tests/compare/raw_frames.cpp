#include "compare/raw_frames.h"

#include <string.h>

#include <algorithm>

#include "support/difference.h"
#include "support/fill.h"
#include "support/guarded_buffer.h"
#include "support/x87.h"

namespace ppl_compare {
namespace {

// Arguments of a step: width, height, stride, what is behind the alignments, fill, placements.
enum Argument {
  width_at,
  height_at,
  stride_at,
  source_alignment_at,
  output_alignment_at,
  fill_at,
  placement_at
};

// Bytes behind the documented buffers that are compared too. The copy qualities round up to whole
// groups, so they use them.
constexpr size_t slack = 64;

size_t scaled(size_t length, int32_t decimation) {
  return decimation >= 0 ? length >> decimation : length << 1;
}

size_t picture_bytes(PixelFormat format, size_t width, size_t height) {
  const size_t size = width * height;
  switch (format) {
    case PixelFormat::i420:
      return size + size / 2 + 1;
    case PixelFormat::yuyv:
    case PixelFormat::uyvy:
      return size * 2;
    case PixelFormat::rgb24:
      return size * 3;
    case PixelFormat::rgb32:
      return size * 4;
  }
  return 0;
}

// What the output of a frame of this size may take, by the widest reading: at decimation 2 the
// passes write half lines at a quarter's pitch, which ends far behind the declared picture.
size_t output_bytes(PixelFormat format, size_t width, size_t height, size_t black_lines,
                    int32_t decimation) {
  const size_t out_width = scaled(width, decimation) + (decimation == 2 ? 2 : 0);
  const size_t out_height = scaled(height, decimation) + black_lines + (decimation == 2 ? 2 : 0);
  return picture_bytes(format, out_width, out_height) * (decimation == 2 ? 4 : 1);
}

// Sizes that are refused by their limits alone stay out of the reckoning: nothing of theirs runs.
uint32_t within_limits(uint32_t length) { return length > 4096 ? 0 : length; }

}  // namespace

void generate_raw_frame(Generator &generator, Step &step) {
  ppl_test::Random &random = generator.random;
  Generator::Size size = generator.size();
  uint32_t stride = size.width;
  if (random.one_in(30)) {
    // Sizes that are refused, or that a caller gets wrong.
    switch (random.below(6)) {
      case 0:
        size.width = random.pick<uint32_t>({0, 2, 16, 40, 62, 126, 1282});
        break;
      case 1:
        size.height = random.pick<uint32_t>({0, 1, 4, 8, 10, 11, 12, 16, 1026});
        break;
      case 2:
        stride = random.pick<uint32_t>({1281, 1300});
        break;
      case 3:
        size = {0, 0};
        break;
      case 4:
        size.width |= 1;
        break;
      default:
        size.height |= 1;
        break;
    }
    if (random.one_in(2)) stride = size.width;
  }
  if (random.one_in(8)) stride = size.width + random.pick<uint32_t>({2, 8, 16, 32, 100});
  step.arguments = {size.width,
                    size.height,
                    stride,
                    random.one_in(10) ? random.pick<int64_t>({8, 8, 4, 1}) : 0,
                    random.one_in(10) ? random.pick<int64_t>({8, 8, 4, 2}) : 0,
                    static_cast<int64_t>(random.below(ppl_test::all_fills.size())),
                    random.below(4)};
}

std::string run_raw_frame(Session &session, const Step &step, const RawFunction &function) {
  using ppl_test::Placement;
  Pair *pair = session.stream(step);
  if (pair == nullptr) return {};
  const bool is_entry = function.entry != nullptr;
  // A driver trusts its caller to have tested for the tier.
  if (!is_entry && session.processor == Processor::none) return {};

  const auto width = static_cast<uint32_t>(step.arguments[width_at]);
  const auto height = static_cast<uint32_t>(step.arguments[height_at]);
  const uint32_t stride =
      is_entry ? width * function.stride_factor : static_cast<uint32_t>(step.arguments[stride_at]);
  // Drivers are not bound to any alignment of their own, but vectors are.
  const auto alignment = [&](Argument at) {
    const auto offset = static_cast<unsigned>(step.arguments[at]);
    return is_entry ? offset : offset & 8;
  };

  // Either the geometry of the arguments or the stored one will be in force.
  const ppl_model::PlainState &stored = ppl_model::plain(pair->model);
  const size_t lines = within_limits(height), columns = within_limits(width);
  const size_t stored_lines = static_cast<size_t>(stored.frame_height);
  const size_t stored_columns = static_cast<size_t>(stored.frame_width);
  size_t source_bytes = std::max(
      lines * std::max<size_t>(within_limits(stride), columns),
      stored_lines * std::max<size_t>(static_cast<size_t>(stored.frame_stride), stored_columns));
  const bool doubling_entry = is_entry && (function.decimation == -1 || function.stride_factor > 1);
  if (doubling_entry) source_bytes = std::max(source_bytes, 4 * lines * columns);

  const int32_t stored_decimation = ppl_model::ppl_decimation(pair->model);
  const size_t black_lines =
      static_cast<size_t>(ppl_model::ppl_decimation_top_black_lines(pair->model) +
                          ppl_model::ppl_decimation_bottom_black_lines(pair->model));
  size_t output_size = 0;
  for (const int32_t d : {stored_decimation, is_entry ? function.decimation : stored_decimation,
                          doubling_entry ? -1 : stored_decimation}) {
    const auto add = [&](size_t w, size_t h) {
      output_size = std::max(output_size, output_bytes(function.format, w, h, black_lines, d));
    };
    add(columns, lines);
    add(stored_columns, stored_lines);
  }
  if (is_entry) {
    // The fallback counts in pixels, not in lines.
    const size_t pixels = lines * columns;
    const size_t scaled_pixels = doubling_entry             ? 4 * pixels
                                 : function.decimation == 1 ? pixels / 4
                                                            : pixels;
    output_size = std::max(output_size, picture_bytes(function.format, scaled_pixels, 1));
  }

  // What the caller may own, as read before the call; both sides see the same bytes.
  const auto placement = [&](int bit) {
    return (step.arguments[placement_at] >> bit & 1) != 0 ? Placement::begins_behind_guard
                                                          : Placement::ends_at_guard;
  };
  uint8_t *library_source = session.library_source.open(source_bytes + slack, placement(0),
                                                        alignment(source_alignment_at));
  uint8_t *model_source =
      session.model_source.open(source_bytes + slack, placement(0), alignment(source_alignment_at));
  uint8_t *library_output = session.library_output.open(output_size + slack, placement(1),
                                                        alignment(output_alignment_at));
  uint8_t *model_output =
      session.model_output.open(output_size + slack, placement(1), alignment(output_alignment_at));
  ppl_test::Random random(step.seed);
  ppl_test::fill_frame(session.library_source.bytes(), columns, stride,
                       ppl_test::all_fills[static_cast<size_t>(step.arguments[fill_at])], random);
  memcpy(model_source, library_source, source_bytes + slack);

  const uint32_t frames_before = ppl_model::ppl_n_frame(pair->model);
  const uint8_t actual =
      is_entry
          ? function.entry(pair->library, library_source, library_output, width, height)
          : function.driver(pair->library, library_source, library_output, width, height, stride);
  if (!ppl_test::x87_is_clean()) return "left MMX state behind";
  const uint8_t expected =
      is_entry
          ? function.model_entry(pair->model, model_source, model_output, width, height)
          : function.model_driver(pair->model, model_source, model_output, width, height, stride);
  ++session.frames;
  session.pictures += expected;
  session.free_pictures += ppl_model::picture_is_free();
  if (ppl_model::ppl_n_frame(pair->model) != frames_before)
    pair->statistics_are_free = ppl_model::statistics_are_free();

  if (expected != actual)
    return "result: expected " + std::to_string(expected) + ", got " + std::to_string(actual);

  if (!ppl_model::picture_is_free()) {
    const std::span<uint8_t> expected_bytes = session.model_output.watched();
    const std::span<uint8_t> actual_bytes = session.library_output.watched();
    const size_t lead = session.model_output.bytes_watched_before();
    if (memcmp(expected_bytes.data(), actual_bytes.data(), expected_bytes.size()) != 0) {
      std::vector<uint8_t> free(expected_bytes.size());
      for (const ppl_model::FreeRange &range : ppl_model::free_bytes())
        memset(&free[lead + range.offset], 1, range.length);
      if (auto difference = ppl_test::first_difference(expected_bytes, actual_bytes, free)) {
        const bool before = difference->offset < lead;
        const size_t offset = before ? lead - difference->offset : difference->offset - lead;
        const size_t out_width = static_cast<size_t>(ppl_model::plain(pair->model).out_width);
        const size_t unit = function.format == PixelFormat::i420    ? 1
                            : function.format == PixelFormat::rgb24 ? 3
                            : function.format == PixelFormat::rgb32 ? 4
                                                                    : 2;
        std::string text =
            before ? "output, " + std::to_string(offset) + " bytes before its start" : "output";
        difference->offset = offset;
        return text + ": " + ppl_test::describe(*difference, out_width * unit) + " (out_width " +
               std::to_string(out_width) + ", unit " + std::to_string(unit) + ", out_size " +
               std::to_string(ppl_model::plain(pair->model).out_size) + ")";
      }
    }
  }
  if (!ppl_model::source_is_free()) {
    if (auto difference = ppl_test::first_difference(session.model_source.watched(),
                                                     session.library_source.watched())) {
      const size_t lead = session.model_source.bytes_watched_before();
      if (difference->offset < lead) return "raw frame: bytes before its start changed";
      difference->offset -= lead;
      return "raw frame: " + ppl_test::describe(*difference, stride);
    }
  }
  return {};
}

}  // namespace ppl_compare
