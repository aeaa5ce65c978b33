#include "stream.h"

#include <algorithm>
#include <cstring>

#include "mosaic_copy.h"
#include "words.h"

namespace ppl::detail {
namespace {

constexpr uint32_t largest_library_stride = 1280;

bool is_aligned(const void *pointer) { return reinterpret_cast<uintptr_t>(pointer) % 16 == 0; }

size_t extent(const PlaneLines &plane) {
  return plane.lines == 0 ? 0 : plane.pitch * (plane.lines - 1) + plane.line_bytes;
}

bool overlap(std::span<const uint8_t> bytes, const PlaneLines &plane) {
  const auto begin = reinterpret_cast<uintptr_t>(bytes.data());
  const auto plane_begin = reinterpret_cast<uintptr_t>(plane.data);
  return begin < plane_begin + extent(plane) && plane_begin < begin + bytes.size();
}

void require_apart(std::span<const uint8_t> source, const PictureLines &target) {
  for (size_t i = 0; i < target.plane_count; ++i)
    if (overlap(source, target.planes[i]))
      refuse("the frame and the picture overlap: give each memory of its own");
}

// The bytes that are needed, of those that are there.
std::span<const uint8_t> require_bytes(std::span<const uint8_t> bytes, size_t needed,
                                       std::string_view what) {
  if (bytes.size() < needed)
    refuse("the buffer of the ", what, " has ", bytes.size(), " bytes and needs ", needed,
           ": Pipeline tells the size of every buffer");
  return bytes.first(needed);
}

// What of the front end may make a frame flat, put aside for as long as this lives.
class PlainFrontEnd {
 public:
  explicit PlainFrontEnd(PplContext *context) : context_(context) {
    ppl_optical_black_b_gb_gr_r(context, &black_[0], &black_[1], &black_[2], &black_[3]);
    ppl_get_rgb_gamma_table(context, gamma_);
    ppl_set_optical_black_b_gb_gr_r(context, 0, 0, 0, 0);
    ppl_set_rgb_delta(context, 0, 0, 0);
    ppl_set_rgb_gain(context, 256, 256, 256);
    ppl_set_CFA_T0_threshold(context, 0);
    // Copied in only where it has to be, as the library then forgets the curve's exponent.
    if (gamma_is_flat()) {
      uint8_t steep[256] = {};
      steep[255] = 255;
      ppl_copy_rgb_gamma_table(context, steep);
    }
  }
  ~PlainFrontEnd() {
    ppl_set_optical_black_b_gb_gr_r(context_, black_[0], black_[1], black_[2], black_[3]);
    ppl_set_rgb_delta(context_, delta_[0], delta_[1], delta_[2]);
    ppl_set_rgb_gain(context_, gain_[0], gain_[1], gain_[2]);
    ppl_set_CFA_T0_threshold(context_, flat_threshold_);
    if (gamma_is_flat()) ppl_copy_rgb_gamma_table(context_, gamma_);
  }
  PlainFrontEnd(const PlainFrontEnd &) = delete;
  PlainFrontEnd &operator=(const PlainFrontEnd &) = delete;

 private:
  bool gamma_is_flat() const { return gamma_[0] == gamma_[255]; }

  PplContext *context_;
  uint32_t black_[4];
  int32_t delta_[3] = {ppl_r_delta(context_), ppl_g_delta(context_), ppl_b_delta(context_)};
  int32_t gain_[3] = {ppl_nf88_r_gain(context_), ppl_nf88_g_gain(context_),
                      ppl_nf88_b_gain(context_)};
  int32_t flat_threshold_ = ppl_CFA_T0_threshold(context_);
  uint8_t gamma_[256];
};

// A frame of quality 10 without a flat cell, on the tier that the context is set to. It leaves a
// size, a quality, a decimation and mirrors of its own.
void run_frame_without_flat_cells(PplContext *context) {
  constexpr uint32_t width = 128, height = 48;
  alignas(16) uint8_t frame[width * height];
  alignas(16) uint8_t picture[width * height * 3 / 2];
  for (uint32_t y = 0; y < height; ++y)
    for (uint32_t x = 0; x < width; ++x)
      frame[y * width + x] = ((x / 2 + y / 2) % 2 == 0) ? 0 : 255;
  const PlainFrontEnd plain(context);
  ppl_new_frame_size(context, width, height, width);
  ppl_set_decimation(context, 0, 0, 0);
  ppl_reset_mirrors(context);
  ppl_set_quality(context, 10);
  ppl_process_blrtoi420(context, frame, picture, width, height, width);
}

Mean mean_of(const PplTriple &triple) { return {triple.r, triple.g, triple.b}; }

}  // namespace

Stream::Stream(const Input &input, const Output &output)
    : best_(best_tier(context_.get())),
      input_(input),
      state_(fresh_state(context_.get())),
      controls_(*this) {
  set_output(output);
}

// ---- Output ----

Tier Stream::tier_of(const Output &output) const {
  return output.tier == Tier::best ? best_ : output.tier;
}

void Stream::require_tier(const Output &output) const {
  if (output.tier == Tier::sse2 && best_ != Tier::sse2)
    refuse("this processor has no SSE2: take the tier p3 or best");
}

// A new size would drop the first frame that has it.
void Stream::take_size(uint32_t stride) {
  if (!ppl_new_frame_size(context_.get(), plan_.width, plan_.height, stride))
    refuse("the library refused the size ", plan_.width, "x", plan_.height);
  stride_ = stride;
}

Stream::Memory &Stream::memory_of(const Output &output) {
  return tier_of(output) == Tier::p3 ? p3_memory_ : sse2_memory_;
}

// Flat cells of quality 10 or 11 stand in pictures of quality 0 and 1 that come after them on the
// same context and tier, and the statistics of the multi-pass qualities begin with samples of the
// frame before; also where that was another stream's.
void Stream::forget_earlier_frames(const Output &output) {
  Memory &memory = memory_of(output);
  const bool shows_cells = output.quality == 0 || output.quality == 1;
  if (!plan_.raw || !(memory.is_anothers || (memory.has_cells && shows_cells))) return;
  run_frame_without_flat_cells(context_.get());
  memory = {.is_anothers = false};
}

void Stream::set_output(const Output &output) {
  require_tier(output);
  Plan plan = make_plan(input_, output, tier_of(output));
  const uint32_t least_width = best_ == Tier::sse2 ? 128 : 64;
  if (plan.width < least_width)
    std::visit([&](const auto &f) { refuse_size(f.width, f.height, least_width); }, input_);

  const size_t samples = size_t{plan.width} * plan.height;
  const bool is_new_size = plan.width != plan_.width || plan.height != plan_.height;
  if (is_new_size) {
    // All memory first: what cannot be had then leaves everything as it was.
    AlignedBytes frame_copy, even, odd, reference;
    if (plan.raw) {
      frame_copy = AlignedBytes(samples + room_behind_source);
    } else if (plan.progressive) {
      frame_copy = AlignedBytes(2 * samples);
    } else {
      even = AlignedBytes(samples);
      odd = AlignedBytes(samples);
      reference = AlignedBytes(samples);
    }
    frame_copy_ = std::move(frame_copy);
    even_lines_ = std::move(even);
    odd_lines_ = std::move(odd);
    reference_ = std::move(reference);
    has_reference_ = false;
  }
  if (frames_ > 0 && plan_.raw && !kept_statistics_) kept_statistics_ = statistics();
  apply(plan, output);
}

void Stream::apply(const Plan &plan, const Output &output) {
  PplContext *const context = context_.get();
  plan_ = plan;
  output_ = output;
  ppl_set_P3_only(context, tier_of(output) == Tier::p3);
  ppl_set_mean_collection(context, output.statistics);
  forget_earlier_frames(output);
  ppl_set_quality(context, output.quality);
  ppl_set_h_mirror(context, plan.mirrors.h);
  ppl_set_v_mirror(context, plan.mirrors.v);
  ppl_set_decimation(context, output.decimation, 0, 0);
  take_size(plan.width);
}

// ---- Pictures ----

PictureLines Stream::target_lines(const Target &target) const {
  const Layout &layout = plan_.layout;
  if (target.is_whole()) {
    require_bytes(target.whole(), layout.bytes, "picture");
    return lines_of(layout, target.whole().data());
  }
  const auto planes = target.planes();
  if (planes.size() != layout.plane_count)
    refuse(name_of(layout.format), " takes ", layout.plane_count,
           layout.plane_count == 1 ? " plane" : " planes", ", not ", planes.size());
  PictureLines picture{layout.format, layout.plane_count, {}};
  for (size_t i = 0; i < planes.size(); ++i) {
    PlaneLines &plane = picture.planes[i];
    plane.line_bytes = layout.planes[i].line_bytes;
    plane.lines = layout.planes[i].lines;
    if (planes[i].pitch < plane.line_bytes)
      refuse("the pitch ", planes[i].pitch, " of plane ", i, " is refused: its lines take ",
             plane.line_bytes, " bytes");
    const size_t size = planes[i].bytes.size();
    const bool fits =
        size >= plane.line_bytes &&
        (plane.lines <= 1 || planes[i].pitch <= (size - plane.line_bytes) / (plane.lines - 1));
    if (!fits)
      refuse("plane ", i, " has ", size, " bytes: it takes ", plane.lines, " lines of ",
             plane.line_bytes, " bytes, ", planes[i].pitch, " bytes from line to line");
    plane.data = planes[i].bytes.data();
    plane.pitch = planes[i].pitch;
  }
  return picture;
}

// Where the library may write: straight to the picture if that stands as the library writes it.
uint8_t *Stream::place_for_library(const PictureLines &picture) {
  uint8_t *const first = picture.planes[0].data;
  bool fits =
      is_aligned(first) && plan_.library_format == output_.format && !plan_.writes_past_ends;
  for (size_t i = 0; i < picture.plane_count; ++i) {
    const PlaneLines &plane = picture.planes[i];
    fits = fits && plane.pitch == plane.line_bytes &&
           plane.data == first + plan_.library_layout.planes[i].offset;
  }
  if (fits) return first;
  const size_t needed = plan_.library_layout.bytes + room_behind_picture;
  if (picture_.size() < needed) picture_ = AlignedBytes(needed);
  return picture_.data();
}

void Stream::finish(const PictureLines &target, const PictureLines &picture, uint8_t *written) {
  Turn rest = plan_.picture;
  if (written != picture.planes[0].data) {
    copy_picture(lines_of(plan_.library_layout, written), picture, rest.v);
    rest.v = false;
  }
  if (rest.any()) turn_picture(picture, rest);

  const uint32_t before = plan_.lines_before, after = before + plan_.picture_height;
  if (before > 0) fill_black(target.lines(0, before));
  if (after < plan_.layout.height) fill_black(target.lines(after, plan_.layout.height - after));
}

// `run` calls the library with the place for the picture; it returns what the library returned.
template <class Run>
void Stream::make_picture(const PictureLines &target, Run run) {
  const PictureLines picture = target.lines(plan_.lines_before, plan_.picture_height);
  uint8_t *const place = place_for_library(picture);
  const PictureLines written = lines_of(plan_.library_layout, place);
  if (plan_.leaves_gaps) fill_black(written);
  if (!run(place) && !plan_.grey_copy)
    refuse("the library did not run the frame: make the pipeline anew");
  if (plan_.lacks_v_plane) std::fill_n(written.planes[2].data, extent(written.planes[2]), 128);
  ++frames_;
  kept_statistics_.reset();
  finish(target, picture, place);
}

// ---- Raw frames ----

Stream::Source Stream::raw_source(std::span<const uint8_t> frame, bool may_change) {
  const auto &format = std::get<RawFormat>(input_);
  const size_t stride = format.stride ? format.stride : format.line_bytes();
  const bool has_lines =
      stride == plan_.width || (plan_.takes_any_stride && stride <= largest_library_stride);
  // The grey copy changes nothing.
  if ((may_change || plan_.grey_copy) && format.bits == 8 && !plan_.frame.any() && has_lines &&
      !plan_.writes_past_ends && is_aligned(frame.data()))
    return {const_cast<uint8_t *>(frame.data()), static_cast<uint32_t>(stride)};
  copy_mosaic(format, frame.data(), frame_copy_.data(), plan_.width, plan_.height, plan_.frame);
  return {frame_copy_.data(), plan_.width};
}

void Stream::run_raw(std::span<const uint8_t> frame, bool may_change, const Target &target) {
  frame = require_bytes(frame, std::get<RawFormat>(input_).bytes(), "frame");
  const PictureLines lines = target_lines(target);
  require_apart(frame, lines);
  make_picture(lines, [&](uint8_t *place) {
    const Source source = raw_source(frame, may_change);
    if (source.stride != stride_) take_size(source.stride);
    return plan_.raw(context_.get(), source.samples, place, plan_.width, plan_.height,
                     source.stride);
  });
  if (output_.quality == 10 || output_.quality == 11) memory_of(output_).has_cells = true;
}

// ---- Packed video ----

// Lines of the size that is used, without gaps, aligned.
const uint8_t *Stream::packed_source(PackedLines lines, uint32_t count, AlignedBytes &copy) {
  const bool has_half_bytes = std::get<VideoFormat>(input_).packing == VideoPacking::yyyy;
  const size_t line_bytes = has_half_bytes ? size_t{3} * plan_.width / 2 : size_t{2} * plan_.width;
  if (is_aligned(lines.data) && lines.stride == line_bytes) return lines.data;
  for (uint32_t y = 0; y < count; ++y)
    std::memcpy(copy.data() + line_bytes * y, lines.data + lines.stride * y, line_bytes);
  return copy.data();
}

void Stream::run_video(std::span<const uint8_t> frame, const Target &target) {
  const auto &format = std::get<VideoFormat>(input_);
  if (format.scan == Scan::separate)
    refuse("this pipeline takes fields by themselves: give both of them to process_fields");
  frame = require_bytes(frame, format.bytes(), "frame");
  const PictureLines lines = target_lines(target);
  require_apart(frame, lines);
  const size_t stride = format.stride ? format.stride : format.line_bytes();
  if (format.scan == Scan::interleaved)
    return run_fields({frame.data(), 2 * stride}, {frame.data() + stride, 2 * stride}, lines);
  const uint8_t *const source = packed_source({frame.data(), stride}, plan_.height, frame_copy_);
  make_picture(lines, [&](uint8_t *place) {
    return plan_.progressive(context_.get(), source, place, plan_.width, plan_.height,
                             plan_.picture_width, plan_.picture_height);
  });
}

void Stream::run_fields(PackedLines even, PackedLines odd, const PictureLines &target) {
  const uint32_t pairs = plan_.height / 2;
  const uint8_t *const first = packed_source(even, pairs, even_lines_);
  // Smaller pictures have nothing of the odd lines.
  const uint8_t *second = output_.decimation > 0 ? first : packed_source(odd, pairs, odd_lines_);
  if (plan_.keeps_odd_lines && second != odd_lines_.data()) {
    std::memcpy(odd_lines_.data(), second, size_t{2} * plan_.width * pairs);
    second = odd_lines_.data();
  }
  // Compared with themselves, nothing has moved.
  const bool compares = plan_.keeps_odd_lines && has_reference_;
  const uint8_t *const reference = compares ? reference_.data() : second;
  make_picture(target, [&](uint8_t *place) {
    return plan_.fields(context_.get(), reference, first, second, place, plan_.width, plan_.height,
                        plan_.picture_width, plan_.picture_height);
  });
  if (!plan_.keeps_odd_lines) return;
  std::swap(odd_lines_, reference_);
  has_reference_ = true;
}

void Stream::process_fields(std::span<const uint8_t> first, std::span<const uint8_t> second,
                            const Target &target) {
  const auto *format = std::get_if<VideoFormat>(&input_);
  if (!format || format->scan != Scan::separate)
    refuse("this pipeline takes whole frames: give them to process");
  first = require_bytes(first, format->bytes(), "first field");
  second = require_bytes(second, format->bytes(), "second field");
  const PictureLines lines = target_lines(target);
  require_apart(first, lines);
  require_apart(second, lines);
  const size_t stride = format->stride ? format->stride : format->line_bytes();
  const bool even_first = format->first_field == FirstField::even_lines;
  run_fields({(even_first ? first : second).data(), stride},
             {(even_first ? second : first).data(), stride}, lines);
}

void Stream::set_reference(std::span<const uint8_t> odd_lines) {
  const auto *format = std::get_if<VideoFormat>(&input_);
  if (!format || format->scan == Scan::progressive)
    refuse("only fields are compared with those before: this pipeline takes none");
  require_bytes(odd_lines, format->field_bytes(), "reference");
  const size_t stride = format->stride ? format->stride : format->line_bytes();
  const size_t line_bytes = size_t{2} * plan_.width;
  for (uint32_t y = 0; y < plan_.height / 2; ++y)
    std::memcpy(reference_.data() + line_bytes * y, odd_lines.data() + stride * y, line_bytes);
  has_reference_ = true;
}

// ---- Any ----

void Stream::process(std::span<const uint8_t> frame, const Target &target) {
  std::holds_alternative<RawFormat>(input_) ? run_raw(frame, false, target)
                                            : run_video(frame, target);
}

void Stream::consume(std::span<uint8_t> frame, const Target &target) {
  std::holds_alternative<RawFormat>(input_) ? run_raw(frame, true, target)
                                            : run_video(frame, target);
}

Statistics Stream::statistics() const {
  if (!plan_.raw) refuse("packed video has no statistics: take them from raw frames");
  if (frames_ == 0) refuse("there are no statistics before the first frame: run one");
  if (kept_statistics_) return *kept_statistics_;

  const PplContext *const context = context_.get();
  Statistics result;
  result.frame = frames_;
  result.quality = output_.quality;
  result.cells = plan_.width * plan_.height / 4;
  result.has_means = plan_.gathers_means;
  result.has_windows = plan_.gathers_windows;
  result.has_bands = plan_.gathers_bands;
  result.whole_frame = mean_of(*ppl_rgb_means_whole_frame(context));
  const PplTriple *const windows = ppl_rgb_means_sub_windows(context);
  // The windows stand as in the frame that the library saw: turned.
  for (size_t row = 0; row < 6; ++row)
    for (size_t column = 0; column < 8; ++column)
      result.windows[plan_.frame.v ? 5 - row : row][plan_.frame.h ? 7 - column : column] =
          mean_of(windows[8 * row + column]);
  result.outside_windows = mean_of(*ppl_rgb_means_outside_all_sub_windows(context));
  result.all_windows = mean_of(*ppl_rgb_means_all_sub_windows(context));
  result.exposure = mean_of(*ppl_qAE_rgb_means_whole_frame(context));
  result.exposure_cells = ppl_n_qAE_2x2_whole_frame(context);
  result.qualified = mean_of(*ppl_qual_rgb_means_whole_frame(context));
  result.qualified_cells = ppl_n_qual_2x2_whole_frame(context);
  const uint32_t *const histograms[] = {ppl_r_histogram(context), ppl_g_histogram(context),
                                        ppl_b_histogram(context)};
  for (size_t channel = 0; channel < 3; ++channel)
    std::copy_n(histograms[channel], 256, result.histograms[channel].begin());
  return result;
}

}  // namespace ppl::detail
