// Raw frames: pictures against the plain functions, turned mosaics, bits and packings, buffers.
#include <atomic>
#include <cstdlib>
#include <new>

#include "layer/layer_fixture.h"

namespace {
std::atomic<size_t> allocations = 0;
}

// Counts what the whole program takes from the heap.
void *operator new(size_t size) {
  ++allocations;
  if (void *const memory = std::malloc(size ? size : 1)) return memory;
  throw std::bad_alloc();
}
void *operator new(size_t size, std::align_val_t alignment) {
  ++allocations;
  const auto a = static_cast<size_t>(alignment);
  if (void *const memory = std::aligned_alloc(a, (size + a - 1) / a * a)) return memory;
  throw std::bad_alloc();
}
void operator delete(void *memory) noexcept { std::free(memory); }
void operator delete(void *memory, size_t) noexcept { std::free(memory); }
void operator delete(void *memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void *memory, size_t, std::align_val_t) noexcept { std::free(memory); }

namespace ppl_test {
namespace {

using ppl::Mosaic;
using ppl::Output;
using ppl::Packing;
using ppl::Pipeline;
using ppl::PixelFormat;
using ppl::RawFormat;
using ppl::Tier;

class RawFrames : public LayerTest {};

// Of this width the grey copies have no marker, which moves from frame to frame.
constexpr uint32_t width = 144, height = 48;
constexpr RawFormat bggr{.width = width, .height = height};

std::vector<Tier> tiers() {
  return has_sse2() ? std::vector{Tier::p3, Tier::sse2} : std::vector{Tier::p3};
}

TEST_F(RawFrames, EveryQualityFormatAndScaleIsThatOfThePlainFunction) {
  const Bytes frame = noise(width * height, 1);
  size_t count = 0;
  for (const Tier tier : tiers())
    for (const Output &output : all_outputs(bggr, tier)) {
      SCOPED_TRACE(described(output));
      Pipeline pipeline(bggr, output);
      ASSERT_EQ(pipeline.tier(), tier);
      const Bytes picture = run_guarded(pipeline, frame);
      if (tier == Tier::p3 && output.format == PixelFormat::rgb24 && output.quality == 3) {
        // There the plain function has stripes.
        Output rgb32 = output;
        rgb32.format = PixelFormat::rgb32;
        const Bytes expected = run_plainly(frame, width, height, rgb32).picture;
        for (size_t i = 0; i < picture.size(); ++i)
          ASSERT_EQ(picture[i], expected[i / 3 * 4 + i % 3]) << i;
      } else {
        ASSERT_EQ(picture, run_plainly(frame, width, height, output).picture);
      }
      ++count;
    }
  EXPECT_GE(count, 90u * tiers().size());
}

TEST_F(RawFrames, NoFirstFrameIsDroppedAlsoAfterAnotherStreamOfAnotherSize) {
  const Bytes frame = noise(width * height, 2);
  for (const PixelFormat format : ppl::all_pixel_formats) {
    {
      Pipeline other(RawFormat{.width = 320, .height = 240}, {.format = format});
      run_guarded(other, noise(320 * 240, 3));
    }
    const Output output{.format = format, .quality = 2};
    Pipeline pipeline(bggr, output);
    EXPECT_EQ(run_guarded(pipeline, frame), run_plainly(frame, width, height, output).picture);
    EXPECT_EQ(pipeline.frames(), 1u);
  }
}

TEST_F(RawFrames, AMirroredPictureIsThePictureTurned) {
  const Bytes frame = noise(width * height, 4);
  for (const Tier tier : tiers())
    for (Output output : all_outputs(bggr, tier)) {
      Pipeline pipeline(bggr, output);
      const Bytes straight = run_guarded(pipeline, frame);
      for (const bool h : {false, true})
        for (const bool v : {false, true}) {
          output.h_mirror = h;
          output.v_mirror = v;
          SCOPED_TRACE(described(output));
          pipeline.set_output(output);
          ASSERT_EQ(run_guarded(pipeline, frame),
                    turned_picture(straight, pipeline.layout(), h, v));
        }
    }
}

// The frame that the library has to see for a mosaic, and the picture that it makes of it.
Bytes expected_picture(const Bytes &frame, uint32_t w, uint32_t h, Mosaic mosaic,
                       const Output &output) {
  const bool turn_h = mosaic == Mosaic::gbrg || mosaic == Mosaic::rggb;
  const bool turn_v = mosaic == Mosaic::grbg || mosaic == Mosaic::rggb;
  const ppl::Layout layout = ppl::layout_of(RawFormat{.width = w, .height = h}, output);
  const bool is_grey = output.quality == 4 || output.quality == 9;
  if (is_grey) return run_plainly(frame, w, h, output).picture;
  return turned_picture(
      run_plainly(turned_plane(frame, w, 1, turn_h, turn_v), w, h, output).picture, layout, turn_h,
      turn_v);
}

TEST_F(RawFrames, EveryMosaicGivesThePictureOfItsFrameTurned) {
  const Bytes frame = noise(width * height, 5);
  for (const Mosaic mosaic : {Mosaic::bggr, Mosaic::gbrg, Mosaic::grbg, Mosaic::rggb}) {
    const RawFormat format{.width = width, .height = height, .mosaic = mosaic};
    for (Output output : all_outputs(format)) {
      if (output.format == PixelFormat::rgb24 && !has_sse2()) continue;
      SCOPED_TRACE(format.name() + ": " + described(output));
      const Bytes expected = expected_picture(frame, width, height, mosaic, output);
      for (const bool h : {false, true})
        for (const bool v : {false, true}) {
          output.h_mirror = h;
          output.v_mirror = v;
          Pipeline pipeline(format, output);
          ASSERT_EQ(run_guarded(pipeline, frame), turned_picture(expected, pipeline.layout(), h, v))
              << h << v;
        }
    }
  }
}

// Coloured cells of 4 by 4 samples, as a sensor with that mosaic sees them.
Bytes scene(Mosaic mosaic, uint32_t w, uint32_t h) {
  constexpr size_t colour_at[4][4] = {{2, 1, 1, 0}, {1, 2, 0, 1}, {1, 0, 2, 1}, {0, 1, 1, 2}};
  Bytes frame;
  for (uint32_t y = 0; y < h; ++y)
    for (uint32_t x = 0; x < w; ++x) {
      Random random(7, x / 4 + y / 4 * 1000);
      const uint8_t colours[3] = {random.byte(), random.byte(), random.byte()};
      frame.push_back(colours[colour_at[static_cast<size_t>(mosaic)][y % 2 * 2 + x % 2]]);
    }
  return frame;
}

TEST_F(RawFrames, OneSceneIsOnePictureInEveryMosaic) {
  // 131 by 51: of an odd size the last column and line are left out, whichever way it is turned.
  for (const auto &[w, h] : {std::pair{144u, 48u}, {131u, 51u}})
    for (const PixelFormat format : ppl::all_pixel_formats)
      for (const int decimation : {0, 1}) {
        std::optional<Bytes> first;
        for (const Mosaic mosaic : {Mosaic::bggr, Mosaic::gbrg, Mosaic::grbg, Mosaic::rggb}) {
          const RawFormat raw{.width = w, .height = h, .mosaic = mosaic};
          const Output output{.format = format, .decimation = decimation};
          SCOPED_TRACE(raw.name() + ": " + described(output));
          Pipeline pipeline(raw, output);
          const Bytes picture = run_guarded(pipeline, scene(mosaic, w, h));
          if (!first) first = picture;
          ASSERT_EQ(picture, *first);
        }
      }
}

TEST_F(RawFrames, MultiPassQualitiesSeeOneFlatColourInEveryMosaic) {
  constexpr size_t colour_at[4][4] = {{2, 1, 1, 0}, {1, 2, 0, 1}, {1, 0, 2, 1}, {0, 1, 1, 2}};
  constexpr uint8_t colours[3] = {90, 120, 60};
  for (const Output &output : all_outputs(bggr)) {
    const bool shows_samples =
        output.quality == 4 || output.quality == 9 || output.quality == 12 || output.quality == 13;
    if (shows_samples) continue;
    std::optional<Bytes> first;
    for (size_t mosaic = 0; mosaic < 4; ++mosaic) {
      SCOPED_TRACE(described(output) + ", mosaic " + std::to_string(mosaic));
      Bytes frame;
      for (uint32_t i = 0; i < width * height; ++i)
        frame.push_back(colours[colour_at[mosaic][i / width % 2 * 2 + i % 2]]);
      Pipeline pipeline(
          RawFormat{.width = width, .height = height, .mosaic = static_cast<Mosaic>(mosaic)},
          output);
      const Bytes picture = run_guarded(pipeline, frame);
      if (!first) first = picture;
      // A step of rounding depends on the colour that a pixel has of its own.
      for (size_t i = 0; i < picture.size(); ++i) ASSERT_NEAR(picture[i], (*first)[i], 2) << i;
    }
  }
}

TEST_F(RawFrames, AVerbatimPictureIsThatOfThePlainFunctionWithItsMirrors) {
  const Bytes frame = noise(width * height, 6);
  const auto verbatim = [&](Output output) {
    const Bytes expected = run_plainly(frame, width, height, output).picture;
    output.verbatim = true;
    Pipeline pipeline(bggr, output);
    const Bytes picture = run_guarded(pipeline, frame);
    EXPECT_EQ(picture, run_guarded(pipeline, frame, {}, 7)) << "depends on what was there before";
    // Where the plain function writes nothing its buffer was 0.
    size_t differences = 0;
    for (size_t i = 0; i < picture.size(); ++i)
      differences += picture[i] != expected[i] && expected[i] != 0 ? 1 : 0;
    EXPECT_EQ(differences, 0u) << described(output);
    output.verbatim = false;
    pipeline.set_output(output);
    EXPECT_NE(picture, run_guarded(pipeline, frame)) << described(output);
    return picture;
  };
  const Bytes displaced = verbatim({.h_mirror = true, .v_mirror = true});
  EXPECT_TRUE(std::all_of(displaced.end() - width / 2, displaced.end(), [](uint8_t v) {
    return v == 128;
  })) << "the line of V that nothing writes is neutral";
  verbatim({.format = PixelFormat::rgb24, .quality = 0, .decimation = -1, .h_mirror = true});
  verbatim({.format = PixelFormat::rgb24, .quality = 2, .decimation = -1, .v_mirror = true});
  verbatim({.format = PixelFormat::rgb24, .tier = Tier::p3});
}

TEST_F(RawFrames, TopDownIsTheSamePictureTheOtherWayUp) {
  const Bytes frame = noise(width * height, 8);
  for (Output output : all_outputs(bggr)) {
    Pipeline pipeline(bggr, output);
    const Bytes picture = run_guarded(pipeline, frame);
    output.top_down = true;
    pipeline.set_output(output);
    const bool rgb = output.format == PixelFormat::rgb24 || output.format == PixelFormat::rgb32;
    ASSERT_EQ(run_guarded(pipeline, frame), turned_picture(picture, pipeline.layout(), false, rgb))
        << described(output);
  }
}

TEST_F(RawFrames, BlackLinesStandAboveAndBelowInEveryFormat) {
  const Bytes frame = noise(width * height, 9);
  for (const bool top_down : {false, true})
    for (const bool v : {false, true})
      for (const PixelFormat format : ppl::all_pixel_formats)
        for (const uint32_t quality : {3u, 4u}) {
          Output output{.format = format, .quality = quality, .v_mirror = v, .top_down = top_down};
          SCOPED_TRACE(described(output));
          Pipeline pipeline(bggr, output);
          const Bytes plain = run_guarded(pipeline, frame);
          const ppl::Layout before = pipeline.layout();
          output.black_lines_top = 6;
          output.black_lines_bottom = 2;
          pipeline.set_output(output);
          const ppl::Layout &layout = pipeline.layout();
          ASSERT_EQ(layout.height, height + 8);
          const Bytes picture = run_guarded(pipeline, frame);
          const bool rgb = format == PixelFormat::rgb24 || format == PixelFormat::rgb32;
          const uint32_t first = rgb && !top_down ? 2 : 6;
          for (size_t i = 0; i < layout.plane_count; ++i) {
            const ppl::PlaneLayout &plane = layout.planes[i];
            for (uint32_t line = 0; line < plane.lines; ++line) {
              const uint8_t *const is = &picture[plane.offset + line * plane.line_bytes];
              const uint32_t lines_before = i == 0 ? first : first / 2;
              const uint32_t of_picture = line - lines_before;  // wraps above the picture
              for (size_t x = 0; x < plane.line_bytes; ++x) {
                uint8_t expected = 0;
                if (of_picture < before.planes[i].lines)
                  expected = plain[before.planes[i].offset + of_picture * plane.line_bytes + x];
                else if (format == PixelFormat::i420)
                  expected = i == 0 ? 16 : 128;
                else if (!rgb)
                  expected = (x % 2 == 0) == (format == PixelFormat::yuyv) ? 16 : 128;
                ASSERT_EQ(is[x], expected) << "plane " << i << ", line " << line << ", byte " << x;
              }
            }
          }
        }
}

// ---- Sizes and buffers ----

TEST_F(RawFrames, OfAnyTakenSizeEveryByteOfThePictureIsWrittenAndNoneBeside) {
  for (const auto &[w, h] :
       {std::pair{128u, 14u}, {129u, 19u}, {134u, 22u}, {146u, 27u}, {190u, 50u}, {320u, 30u}})
    for (const Mosaic mosaic : {Mosaic::bggr, Mosaic::rggb}) {
      const RawFormat format{.width = w, .height = h, .mosaic = mosaic};
      const Bytes frame = noise(w * h, w);
      for (Output output : all_outputs(format)) {
        // The marker of the grey copy moves from frame to frame.
        const bool has_marker = output.quality == 4 && w == 320;
        if (output.quality == 9 || has_marker) continue;
        for (const bool mirror : {false, true})
          for (const bool verbatim : {false, true}) {
            if (verbatim && !mirror) continue;
            output.h_mirror = mirror;
            output.v_mirror = mirror && output.decimation == 0;
            output.verbatim = verbatim;
            SCOPED_TRACE(std::to_string(w) + "x" + std::to_string(h) + ", " + described(output));
            Pipeline pipeline(format, output);
            const Bytes picture = run_guarded(pipeline, frame, {}, 0x00);
            ASSERT_EQ(picture, run_guarded(pipeline, frame, {}, 0xFF));
            ASSERT_EQ(picture,
                      run_guarded(pipeline, frame, {Placement::begins_behind_guard, 3, 5}, 0x55));
            ASSERT_EQ(picture, run_guarded(pipeline, frame, {Placement::ends_at_guard, 8, 8}));
            ASSERT_EQ(picture, run_guarded(pipeline, frame, {}, 0, true));
            ASSERT_EQ(picture,
                      run_guarded(pipeline, frame, {Placement::ends_at_guard, 1}, 0, true));
          }
      }
    }
}

TEST_F(RawFrames, WhatDoesNotFillAChromaSampleIsLeftOut) {
  const auto size = [](uint32_t w, uint32_t h, const Output &output) {
    const ppl::Layout layout = Pipeline(RawFormat{.width = w, .height = h}, output).layout();
    return std::pair{layout.width, layout.height};
  };
  using Size = std::pair<uint32_t, uint32_t>;
  EXPECT_EQ(size(131, 51, {}), Size(130, 50));
  EXPECT_EQ(size(131, 51, {.decimation = -1}), Size(260, 100));
  EXPECT_EQ(size(130, 50, {.decimation = 1}), Size(64, 24));
  EXPECT_EQ(size(130, 50, {.format = PixelFormat::yuyv, .decimation = 1}), Size(64, 25));
  EXPECT_EQ(size(130, 50, {.format = PixelFormat::rgb24, .decimation = 1}), Size(65, 25));
}

TEST_F(RawFrames, LinesMayStandApart) {
  for (const uint32_t w : {144u, 142u})
    for (const size_t stride : {w + size_t{0}, w + size_t{3}, size_t{160}, size_t{2000}}) {
      const RawFormat apart{.width = w, .height = height, .stride = stride};
      EXPECT_EQ(apart.bytes(), stride * (height - 1) + w);
      const Bytes frame = noise(stride * height, stride);
      for (const uint32_t quality : {3u, 13u, 4u, 0u}) {
        const Output output{.quality = quality};
        Pipeline pipeline(apart, output);
        const Bytes expected =
            run_plainly(top_left(frame, stride, w, height), w, height, output).picture;
        ASSERT_EQ(run_guarded(pipeline, frame), expected) << w << ", " << stride << ", " << quality;
        // Consumed in place, copied, consumed again: the size goes with it.
        ASSERT_EQ(run_guarded(pipeline, frame, {}, 0, true), expected);
        ASSERT_EQ(run_guarded(pipeline, frame, {}, 0), expected);
        ASSERT_EQ(run_guarded(pipeline, frame, {}, 0, true), expected);
      }
    }
}

TEST_F(RawFrames, PlanesTakeAPitchOfTheirOwn) {
  const Bytes frame = noise(width * height, 10);
  for (Output output : all_outputs(bggr)) {
    output.black_lines_bottom = 2;
    output.v_mirror = true;
    SCOPED_TRACE(described(output));
    Pipeline pipeline(bggr, output);
    const Bytes expected = run_guarded(pipeline, frame);
    const ppl::Layout &layout = pipeline.layout();
    std::vector<GuardedBuffer> memory;
    std::vector<ppl::Plane> planes;
    for (size_t i = 0; i < layout.plane_count; ++i) {
      const ppl::PlaneLayout &plane = layout.planes[i];
      const size_t pitch = plane.line_bytes + 5 + 11 * i;
      memory.emplace_back(pitch * (plane.lines - 1) + plane.line_bytes, Placement::ends_at_guard,
                          static_cast<unsigned>(i));
      planes.push_back({{memory[i].data(), memory[i].size()}, pitch});
    }
    pipeline.process(frame, std::span<const ppl::Plane>(planes));
    for (size_t i = 0; i < layout.plane_count; ++i) {
      const ppl::PlaneLayout &plane = layout.planes[i];
      EXPECT_FALSE(memory[i].slack_damage());
      for (size_t at = 0; at < memory[i].size(); ++at) {
        const size_t line = at / planes[i].pitch, x = at % planes[i].pitch;
        ASSERT_EQ(memory[i][at], x < plane.line_bytes
                                     ? expected[plane.offset + line * plane.line_bytes + x]
                                     : GuardedBuffer::poison)
            << "plane " << i << ", line " << line << ", byte " << x;
      }
    }
  }
}

TEST_F(RawFrames, AFrameThatIsKeptIsCopiedAndAConsumedOneIsNot) {
  GuardedBuffer source(width * height, Placement::begins_behind_guard);
  Bytes picture(width * height * 3 / 2);
  const std::span<uint8_t> samples(source.data(), source.size());
  Pipeline pipeline(bggr);
  std::memset(source.data(), 100, source.size());
  pipeline.process(samples, picture);
  EXPECT_EQ(source[0], 100);
  pipeline.consume(samples, picture);
  EXPECT_NE(source[0], 100) << "worked in place, through gamma";
}

TEST_F(RawFrames, NoFrameButTheFirstTakesMemory) {
  const Bytes frame = noise(3 * width * height, 11);
  for (const RawFormat &format :
       {bggr, RawFormat{.width = width, .height = height, .mosaic = Mosaic::rggb, .bits = 12},
        RawFormat{.width = width + 1, .height = height, .stride = 200}})
    for (const Output &output : all_outputs(format)) {
      Pipeline pipeline(format, output);
      Bytes picture(pipeline.layout().bytes + 1);
      const std::span<uint8_t> target(picture.data() + 1, pipeline.layout().bytes);
      pipeline.process(frame, target);
      const size_t before = allocations;
      for (int i = 0; i < 3; ++i) pipeline.process(frame, target);
      ASSERT_EQ(allocations, before) << described(output);
    }
}

// ---- Bits and packings ----

// Samples of more than 8 bits in a packing, each line `gap` bytes longer than it has to be.
Bytes packed(const std::vector<uint32_t> &samples, const RawFormat &format) {
  Bytes bytes(format.bytes());
  const size_t stride = format.stride ? format.stride : format.line_bytes();
  for (size_t y = 0; y < format.height; ++y)
    for (size_t x = 0; x < format.width; ++x) {
      const uint32_t sample = samples[y * format.width + x];
      uint8_t *const line = &bytes[y * stride];
      if (format.packing == Packing::plain) {
        line[2 * x] = static_cast<uint8_t>(sample);
        line[2 * x + 1] = static_cast<uint8_t>(sample >> 8);
      } else if (format.bits == 10) {
        line[x / 4 * 5 + x % 4] = static_cast<uint8_t>(sample >> 2);
        line[x / 4 * 5 + 4] |= static_cast<uint8_t>((sample & 3) << (2 * (x % 4)));
      } else {
        line[x / 2 * 3 + x % 2] = static_cast<uint8_t>(sample >> 4);
        line[x / 2 * 3 + 2] |= static_cast<uint8_t>((sample & 15) << (4 * (x % 2)));
      }
    }
  return bytes;
}

TEST_F(RawFrames, TheEightHighestBitsCountCutOffOrRounded) {
  for (const char *name : {"gbrg10", "bggr10p", "grbg12", "rggb12p", "bggr14", "rggb16", "rggb10p"})
    for (const uint32_t w : {160u, 130u, 133u})
      for (const size_t gap : {0u, 7u})
        for (const bool rounds : {false, true}) {
          RawFormat format = RawFormat::named(name, w, height);
          format.rounds = rounds;
          if (gap != 0) format.stride = format.line_bytes() + gap;
          SCOPED_TRACE(format.name() + ", " + std::to_string(w));
          Random random(w, format.bits);
          std::vector<uint32_t> samples(w * height);
          Bytes high;
          const uint32_t shift = format.bits - 8;
          for (uint32_t &sample : samples) {
            sample = random.one_in(4) ? (1u << format.bits) - 1 - random.below(1u << shift)
                                      : random.below(1u << format.bits);
            const uint32_t value =
                rounds ? (sample + (1u << (shift - 1))) >> shift : sample >> shift;
            high.push_back(static_cast<uint8_t>(std::min(value, 255u)));
          }
          const RawFormat plain{.width = w, .height = height, .mosaic = format.mosaic};
          const Output output{.format = PixelFormat::yuyv, .quality = 2};
          Pipeline pipeline(format, output), of_bytes(plain, output);
          ASSERT_EQ(run_guarded(pipeline, packed(samples, format)), run_guarded(of_bytes, high));
          ASSERT_EQ(run_guarded(pipeline, packed(samples, format),
                                {Placement::begins_behind_guard, 5}, 0, true),
                    run_guarded(of_bytes, high));
        }
}

TEST_F(RawFrames, BitsAboveThoseOfAWordMakeItFullScale) {
  const RawFormat format = RawFormat::named("bggr10", width, height);
  Bytes frame(format.bytes()), full(width * height, 255);
  for (size_t i = 1; i < frame.size(); i += 2) frame[i] = 0x84;
  Pipeline words(format), bytes(bggr);
  EXPECT_EQ(run_guarded(words, frame), run_guarded(bytes, full));
}

// ---- What earlier frames leave ----

TEST_F(RawFrames, FlatCellsOfAnEarlierStreamDoNotShow) {
  for (const Tier tier : tiers()) {
    const Bytes flat(width * height, 60), frame = noise(width * height, 12);
    const Output sharp{.format = PixelFormat::rgb32, .quality = 1, .tier = tier};
    Output smoothed = sharp;
    smoothed.quality = 11;
    ppl::test_hooks::reload_pool();
    const Bytes expected = run_plainly(frame, width, height, sharp).picture;
    run_plainly(flat, width, height, smoothed);
    ASSERT_NE(run_plainly(frame, width, height, sharp).picture, expected)
        << "the plain function shows them";
    Pipeline pipeline(bggr, sharp);
    EXPECT_EQ(run_guarded(pipeline, frame), expected);
    // Nor those of the same stream, whatever its controls.
    pipeline.set_output(smoothed);
    run_guarded(pipeline, flat);
    const ppl::Profile before = pipeline.controls().profile();
    pipeline.controls().set("CFA_T0_threshold", 255);
    pipeline.controls().set("rgb_gain", {0, 0, 0});
    pipeline.controls().set_bytes("rgb_gamma_table", Bytes(256, 77));
    pipeline.set_output(sharp);
    EXPECT_EQ(pipeline.controls().get("rgb_gain"), (std::vector<int64_t>{0, 0, 0}));
    EXPECT_EQ(pipeline.controls().get_bytes("rgb_gamma_table"), Bytes(256, 77));
    EXPECT_EQ(pipeline.controls().get_number("CFA_T0_threshold"), 255);
    pipeline.controls().reset();
    pipeline.set_output(sharp);
    EXPECT_EQ(run_guarded(pipeline, frame), expected);
  }
}

// ---- Refusals ----

std::string refusal(const ppl::Input &input, const Output &output = {}) {
  return sentence_of([&] { Pipeline pipeline(input, output); });
}

TEST_F(RawFrames, WhatGivesNoPictureIsRefusedWithAdvice) {
  EXPECT_EQ(refusal(bggr, {.quality = 7}),
            "quality 7 makes no picture: take another one, such as 3");
  EXPECT_EQ(refusal(bggr, {.quality = 15}), "quality 15 is refused: the range is 0 to 14");
  EXPECT_EQ(refusal(bggr, {.format = PixelFormat::rgb24, .quality = 14}),
            "quality 14 makes no rgb24: take i420, yuyv or uyvy, or quality 0");
  EXPECT_EQ(refusal(bggr, {.format = PixelFormat::rgb32, .quality = 13}),
            "quality 13 makes no rgb32: take i420 or rgb24, or another quality");
  EXPECT_EQ(refusal(bggr, {.quality = 13, .decimation = -1}),
            "quality 13 is not doubled: take decimation 0 or 1, or another quality");
  EXPECT_EQ(refusal(bggr, {.quality = 9, .decimation = -1}),
            "quality 9 is not doubled: take decimation 0 or 1, or another quality");
  EXPECT_EQ(refusal(bggr, {.format = PixelFormat::rgb24, .quality = 4, .decimation = 1}),
            "quality 4 makes no rgb24 of half the size: take rgb32 or i420");
  EXPECT_EQ(refusal(bggr, {.format = PixelFormat::rgb32, .decimation = -1}),
            "rgb32 is not doubled: take rgb24, or decimation 0 or 1");
  EXPECT_EQ(refusal(bggr, {.format = PixelFormat::rgb24, .quality = 1, .decimation = 2}),
            "raw frames have no picture at decimation 2, its lines run into each other: take 1");
  EXPECT_EQ(refusal(bggr, {.decimation = 3}), "decimation 3 is refused: the range is -1 to 2");
  EXPECT_EQ(refusal(bggr, {.format = PixelFormat::rgb24, .decimation = -1, .tier = Tier::p3}),
            "in the p3 tier quality 3 spoils rgb24 at decimation -1 while statistics are gathered: "
            "switch the statistics off, or take i420");
  EXPECT_EQ(
      refusal(
          bggr,
          {.format = PixelFormat::rgb24, .decimation = -1, .tier = Tier::p3, .statistics = false}),
      "accepted");
}

TEST_F(RawFrames, BlackLinesThatWouldWrapAreRefused) {
  const RawFormat format{.width = 704, .height = 480};
  for (const uint32_t lines : {6100326u, 0x80000000u, 0xFFFFFFFEu, 1026u}) {
    EXPECT_EQ(refusal(format, {.black_lines_bottom = lines}),
              "black lines of 0 and " + std::to_string(lines) +
                  " are refused: the range is 0 to 1024 each");
    EXPECT_NE(refusal(format, {.black_lines_top = lines}), "accepted");
  }
  EXPECT_EQ(refusal(format, {.black_lines_top = 3}),
            "black lines of 3 and 0 are refused: i420 takes even numbers, since two lines share "
            "their chroma");
  EXPECT_EQ(refusal(format, {.format = PixelFormat::rgb24, .black_lines_top = 3}), "accepted");
}

TEST_F(RawFrames, SizesThatTheLibraryDoesNotTakeAreRefused) {
  const std::string least = has_sse2() ? "128" : "64";
  const std::string advice =
      " is refused: take widths from " + least + " to 1280 and heights of 14 or from 18 to 1024";
  const auto sized = [](uint32_t w, uint32_t h) { return RawFormat{.width = w, .height = h}; };
  if (has_sse2()) {
    EXPECT_EQ(refusal(sized(126, 48)), "the size 126x48" + advice);
    EXPECT_EQ(refusal(sized(130, 48), {.decimation = 1}), "accepted");
  }
  for (const auto &[w, h] : {std::pair{0u, 0u},
                             {1282u, 48u},
                             {160u, 12u},
                             {160u, 16u},
                             {160u, 17u},
                             {160u, 1026u},
                             {0xFFFFFFFFu, 0xFFFFFFFFu}})
    EXPECT_NE(refusal(sized(w, h)).find("is refused: take widths from"), std::string::npos)
        << w << "x" << h;
  EXPECT_EQ(refusal(sized(1281, 1025)), "accepted") << "but for the last column and line";
  EXPECT_EQ(refusal(RawFormat{.width = 160, .height = 48, .stride = 100}),
            "the stride 100 is refused: a line of 160 samples of bggr takes 160 bytes, and the "
            "largest stride is 1048576");
  EXPECT_NE(refusal(RawFormat{.width = 160, .height = 48, .stride = SIZE_MAX}), "accepted");
  EXPECT_EQ(refusal(RawFormat{.width = 160, .height = 48, .bits = 9}),
            "there are no raw frames of 9 bits: take 8, 10, 12, 14 or 16 bits, packed 10 or 12");
  EXPECT_EQ(refusal(RawFormat{.width = 160, .height = 48, .bits = 14, .packing = Packing::mipi}),
            "there are no raw frames of 14 bits in the packing of MIPI: take 8, 10, 12, 14 or 16 "
            "bits, packed 10 or 12");
}

TEST_F(RawFrames, BuffersThatAreTooSmallAreRefusedAndLeftAlone) {
  Pipeline pipeline(bggr);
  Bytes frame(width * height, 9), picture(pipeline.layout().bytes, 7);
  const std::span<uint8_t> whole(picture);
  EXPECT_EQ(sentence_of([&] { pipeline.process(std::span(frame).first(100), whole); }),
            "the buffer of the frame has 100 bytes and needs 6912: Pipeline tells the size of "
            "every buffer");
  EXPECT_EQ(sentence_of([&] { pipeline.process(frame, whole.first(10367)); }),
            "the buffer of the picture has 10367 bytes and needs 10368: Pipeline tells the size "
            "of every buffer");
  const auto planes = [&](size_t y, size_t u, size_t v, size_t pitch) {
    return sentence_of([&] {
      pipeline.process(frame, {{whole.first(y), pitch},
                               {whole.subspan(6912).first(u), 72},
                               {whole.subspan(8640).first(v), 72}});
    });
  };
  EXPECT_EQ(planes(6912, 1728, 1727, 144),
            "plane 2 has 1727 bytes: it takes 24 lines of 72 bytes, 72 bytes from line to line");
  EXPECT_EQ(planes(6912, 1728, 1728, 143),
            "the pitch 143 of plane 0 is refused: its lines take 144 bytes");
  // 47 of these are 1, modulo what a size can hold.
  size_t wrapping_pitch = 47;
  for (int i = 0; i < 6; ++i) wrapping_pitch *= 2 - 47 * wrapping_pitch;
  ASSERT_EQ(wrapping_pitch * 47, 1u);
  EXPECT_EQ(planes(6912, 1728, 1728, wrapping_pitch),
            "plane 0 has 6912 bytes: it takes 48 lines of 144 bytes, " +
                std::to_string(wrapping_pitch) + " bytes from line to line");
  EXPECT_EQ(sentence_of([&] {
              pipeline.process(frame, {{whole, 144}});
            }),
            "i420 takes 3 planes, not 1");
  EXPECT_EQ(sentence_of([&] { pipeline.process(whole, whole.first(10368)); }),
            "the frame and the picture overlap: give each memory of its own");
  EXPECT_EQ(picture, Bytes(picture.size(), 7));
  EXPECT_EQ(frame, Bytes(frame.size(), 9));
  EXPECT_EQ(pipeline.frames(), 0u);
  EXPECT_EQ(planes(6912, 1728, 1728, 144), "accepted");
}

}  // namespace
}  // namespace ppl_test
