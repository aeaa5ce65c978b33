// Packed video, progressive and in fields.
#include "layer/layer_fixture.h"

namespace ppl_test {
namespace {

using ppl::FirstField;
using ppl::Output;
using ppl::Pipeline;
using ppl::PixelFormat;
using ppl::Scan;
using ppl::VideoFormat;
using ppl::VideoPacking;

constexpr uint32_t width = 176, height = 48;

using FrameFunction = uint8_t (*)(PplContext *, const uint8_t *, uint8_t *, uint32_t, uint32_t,
                                  uint32_t, uint32_t);
using FieldsFunction = uint8_t (*)(PplContext *, const uint8_t *, const uint8_t *, const uint8_t *,
                                   uint8_t *, uint32_t, uint32_t, uint32_t, uint32_t);

class LayerVideo : public LayerTest {
 protected:
  // By the plain functions, in the size that ppl_new_frame_size and ppl_set_decimation make.
  static Bytes frame_plainly(FrameFunction function, const Bytes &frame, uint32_t w, uint32_t h,
                             size_t bytes, bool mirror = false) {
    PplContext *const ctx = ppl_init();
    ppl_new_frame_size(ctx, w, h, w);
    ppl_set_h_mirror(ctx, mirror);
    Memory source(frame, 0), picture(bytes);
    EXPECT_EQ(function(ctx, source.data(), picture.data(), w, h, w, h), 1);
    ppl_free(ctx);
    return {picture.data(), picture.data() + bytes};
  }

  struct FieldsOf {
    Bytes reference, even, odd;
  };

  static Bytes fields_plainly(FieldsFunction function, const FieldsOf &fields, uint32_t w,
                              uint32_t h, const Output &output) {
    PplContext *const ctx = ppl_init();
    ppl_set_decimation(ctx, output.decimation, 0, 0);
    ppl_new_frame_size(ctx, w, h, w);
    const ppl::Layout layout =
        ppl::layout_of(VideoFormat{.width = w, .height = h, .scan = Scan::separate},
                       {.format = output.format, .decimation = output.decimation});
    Memory reference(fields.reference, 0), even(fields.even, 0), odd(fields.odd, 0),
        picture(layout.bytes);
    EXPECT_EQ(function(ctx, reference.data(), even.data(), odd.data(), picture.data(), w, h,
                       layout.width, layout.height),
              1);
    ppl_free(ctx);
    return {picture.data(), picture.data() + layout.bytes};
  }

  static Bytes run_fields(Pipeline &pipeline, const Bytes &first, const Bytes &second,
                          const Places &places = {}, uint8_t before = 0xA5) {
    const size_t bytes = pipeline.input_bytes();
    GuardedBuffer a(bytes, places.placement, places.source_alignment);
    GuardedBuffer b(bytes, places.placement, places.source_alignment);
    GuardedBuffer picture(pipeline.layout().bytes, places.placement, places.picture_alignment);
    std::memcpy(a.data(), first.data(), bytes);
    std::memcpy(b.data(), second.data(), bytes);
    std::memset(picture.data(), before, picture.size());
    pipeline.process_fields({a.data(), bytes}, {b.data(), bytes},
                            std::span<uint8_t>(picture.data(), picture.size()));
    EXPECT_FALSE(picture.slack_damage());
    return {picture.begin(), picture.end()};
  }
};

// Lines of one parity, or both fields line by line.
Bytes lines_of_parity(const Bytes &frame, size_t line_bytes, size_t parity) {
  Bytes field;
  for (size_t line = parity; line < frame.size() / line_bytes; line += 2) {
    const auto begin = frame.begin() + static_cast<ptrdiff_t>(line * line_bytes);
    field.insert(field.end(), begin, begin + static_cast<ptrdiff_t>(line_bytes));
  }
  return field;
}

struct FieldConversion {
  VideoPacking from;
  PixelFormat to;
  FieldsFunction motion, no_motion;
};

// The two that convert nothing without the motion test are null.
const FieldConversion field_conversions[] = {
    {VideoPacking::yuyv, PixelFormat::i420, IntlYUYVToI420MMX, IntlYUYVToI420MMX_no_motion},
    {VideoPacking::yuyv, PixelFormat::rgb24, IntlYUYVToRGB24MMX, IntlYUYVToRGB24MMX_no_motion},
    {VideoPacking::yuyv, PixelFormat::yuyv, IntlYUYVToYUYVMMX, IntlYUYVToYUYVMMX_no_motion},
    {VideoPacking::yuyv, PixelFormat::uyvy, IntlYUYVToUYVYMMX, nullptr},
    {VideoPacking::uyvy, PixelFormat::i420, IntlUYVYToI420MMX, IntlUYVYToI420MMX_no_motion},
    {VideoPacking::uyvy, PixelFormat::rgb24, IntlUYVYToRGB24MMX, IntlUYVYToRGB24MMX_no_motion},
    {VideoPacking::uyvy, PixelFormat::yuyv, IntlUYVYToYUYVMMX, nullptr},
    {VideoPacking::uyvy, PixelFormat::uyvy, IntlUYVYToUYVYMMX, IntlUYVYToUYVYMMX_no_motion}};

TEST_F(LayerVideo, ProgressiveFramesOfAnySizeAreThoseOfThePlainFunctions) {
  struct Row {
    VideoPacking from;
    PixelFormat to;
    FrameFunction function;
  };
  const Row rows[] = {{VideoPacking::yuyv, PixelFormat::i420, YUYVToI420MMX},
                      {VideoPacking::yuyv, PixelFormat::rgb24, YUYVToRGB24MMX},
                      {VideoPacking::uyvy, PixelFormat::i420, UYVYToI420MMX},
                      {VideoPacking::uyvy, PixelFormat::rgb24, UYVYToRGB24MMX}};
  for (const Row &row : rows)
    for (const auto &[w, h] : {std::pair{176u, 48u}, {130u, 14u}, {352u, 288u}, {131u, 19u}})
      for (const size_t gap : {0u, 10u}) {
        VideoFormat format{.width = w, .height = h, .packing = row.from};
        if (gap != 0) format.stride = format.line_bytes() + gap;
        const size_t stride = format.line_bytes() + gap;
        SCOPED_TRACE(format.name() + " to " + std::string(ppl::name_of(row.to)) + ", " +
                     std::to_string(w));
        const Bytes frame = noise(stride * h, w + gap);
        const uint32_t even_w = w & ~1u, even_h = h & ~1u;
        Pipeline pipeline(format, {.format = row.to});
        const Bytes expected =
            frame_plainly(row.function, top_left(frame, stride, 2 * even_w, even_h), even_w, even_h,
                          pipeline.layout().bytes);
        ASSERT_EQ(run_guarded(pipeline, frame), expected);
        ASSERT_EQ(run_guarded(pipeline, frame, {Placement::begins_behind_guard, 5, 9}, 0),
                  expected);
        for (const bool hm : {false, true})
          for (const bool vm : {false, true}) {
            pipeline.set_output({.format = row.to, .h_mirror = hm, .v_mirror = vm});
            ASSERT_EQ(run_guarded(pipeline, frame, {Placement::ends_at_guard, 8, 8}),
                      turned_picture(expected, pipeline.layout(), hm, vm))
                << hm << vm;
          }
      }
}

TEST_F(LayerVideo, ThePackingWithoutColourHasANeutralV) {
  const VideoFormat format{.width = width, .height = height, .packing = VideoPacking::yyyy};
  const Bytes frame = noise(format.bytes(), 1);
  for (const bool mirror : {false, true}) {
    Pipeline pipeline(format, {.h_mirror = mirror});
    Bytes expected =
        frame_plainly(YUYVYYYYToI420MMX, frame, width, height, pipeline.layout().bytes, mirror);
    std::fill_n(expected.begin() + width * height * 5 / 4, width * height / 4, 128);
    EXPECT_EQ(run_guarded(pipeline, frame), expected);
    EXPECT_EQ(run_guarded(pipeline, frame, {Placement::begins_behind_guard, 1, 1}), expected);
  }
}

TEST_F(LayerVideo, FieldsAreWovenAsThePlainFunctionsDo) {
  const Bytes film[] = {noise(2 * width * height, 2), noise(2 * width * height, 3)};
  for (const FieldConversion &row : field_conversions)
    for (const int decimation : {0, 1, 2, -1})
      for (const bool tests_motion : {false, true})
        for (const Scan scan : {Scan::interleaved, Scan::separate})
          for (const FirstField first : {FirstField::even_lines, FirstField::odd_lines}) {
            const VideoFormat format{.width = width,
                                     .height = height,
                                     .packing = row.from,
                                     .scan = scan,
                                     .first_field = first,
                                     .tests_motion = tests_motion};
            const Output output{.format = row.to, .decimation = decimation};
            SCOPED_TRACE(format.name() + " to " + std::string(ppl::name_of(row.to)) +
                         ", decimation " + std::to_string(decimation) +
                         (tests_motion ? ", motion" : ""));
            Pipeline pipeline(format, output);
            Bytes reference;
            for (const Bytes &frame : film) {
              const Bytes even = lines_of_parity(frame, 2 * width, 0);
              const Bytes odd = lines_of_parity(frame, 2 * width, 1);
              // Compared with itself a field has not moved: it is woven as it is.
              if (reference.empty() || !tests_motion) reference = odd;
              const bool weaves = !tests_motion && row.no_motion && decimation >= 0;
              const Bytes expected = fields_plainly(weaves ? row.no_motion : row.motion,
                                                    {reference, even, odd}, width, height, output);
              if (scan == Scan::interleaved) {
                ASSERT_EQ(run_guarded(pipeline, frame), expected);
              } else {
                const bool even_first = first == FirstField::even_lines;
                ASSERT_EQ(run_fields(pipeline, even_first ? even : odd, even_first ? odd : even),
                          expected);
              }
              reference = odd;
            }
          }
}

TEST_F(LayerVideo, MisalignedAndMirroredFieldsAreTheSamePicture) {
  const Bytes first = noise(width * height, 4), second = noise(width * height, 5);
  for (const FieldConversion &row : field_conversions)
    for (const int decimation : {0, 1, -1}) {
      const VideoFormat format{
          .width = width, .height = height, .packing = row.from, .scan = Scan::separate};
      Pipeline pipeline(format, {.format = row.to, .decimation = decimation});
      const Bytes expected = run_fields(pipeline, first, second);
      pipeline.forget_reference();
      ASSERT_EQ(run_fields(pipeline, first, second, {Placement::begins_behind_guard, 3, 7}, 0),
                expected);
      for (const bool h : {false, true}) {
        pipeline.set_output(
            {.format = row.to, .decimation = decimation, .h_mirror = h, .v_mirror = true});
        pipeline.forget_reference();
        ASSERT_EQ(run_fields(pipeline, first, second),
                  turned_picture(expected, pipeline.layout(), h, true));
      }
    }
}

TEST_F(LayerVideo, SizesThatDoNotFillAPictureAreCutAtTheRightAndAtTheBottom) {
  for (const auto &[w, h] : {std::pair{130u, 46u}, {134u, 50u}, {143u, 62u}})
    for (const FieldConversion &row : field_conversions)
      for (const int decimation : {0, 1, 2, -1}) {
        const uint32_t unit = 2u << std::max(decimation, 0);
        const uint32_t cut_w = w / unit * unit, cut_h = h / unit * unit;
        if (cut_w < 128) continue;
        const VideoFormat format{
            .width = w, .height = h, .packing = row.from, .scan = Scan::separate};
        const Output output{.format = row.to, .decimation = decimation};
        SCOPED_TRACE(std::to_string(w) + ", decimation " + std::to_string(decimation));
        const Bytes even = noise(format.bytes(), 6), odd = noise(format.bytes(), 7);
        Pipeline pipeline(format, output);
        const Bytes cut_odd = top_left(odd, 2 * w, 2 * cut_w, cut_h / 2);
        const Bytes expected = fields_plainly(
            row.motion, {cut_odd, top_left(even, 2 * w, 2 * cut_w, cut_h / 2), cut_odd}, cut_w,
            cut_h, output);
        ASSERT_EQ(run_fields(pipeline, even, odd), expected);
        pipeline.forget_reference();
        ASSERT_EQ(run_fields(pipeline, even, odd, {}, 0), expected);
      }
}

TEST_F(LayerVideo, AReferenceMayBeGivenBeforeTheFirstFrame) {
  const VideoFormat format{.width = width, .height = height, .scan = Scan::interleaved};
  const Bytes frame = noise(format.bytes(), 8), before = noise(format.bytes(), 9);
  Pipeline film(format), one(format);
  run_guarded(film, before);
  const Bytes second = run_guarded(film, frame);
  const Bytes reference = lines_of_parity(before, 2 * width, 1);
  const Bytes alone = run_guarded(one, frame);
  EXPECT_NE(alone, second);
  one.set_reference(reference);
  EXPECT_EQ(run_guarded(one, frame), second);
  one.forget_reference();
  EXPECT_EQ(run_guarded(one, frame), alone);
  EXPECT_EQ(sentence_of([&] { one.set_reference(std::span(reference).first(5)); }),
            "the buffer of the reference has 5 bytes and needs 8448: Pipeline tells the size of "
            "every buffer");
}

TEST_F(LayerVideo, BlackLinesStandAboveAndBelow) {
  const VideoFormat format{.width = width, .height = height};
  const Bytes frame = noise(format.bytes(), 10);
  for (const bool v : {false, true}) {
    Pipeline plain(format, {.v_mirror = v});
    Pipeline framed(format, {.v_mirror = v, .black_lines_top = 4, .black_lines_bottom = 8});
    const Bytes picture = run_guarded(plain, frame), with_lines = run_guarded(framed, frame);
    ASSERT_EQ(framed.layout().height, height + 12);
    const auto same = [&](size_t to, size_t from, size_t count) {
      return std::equal(picture.begin() + static_cast<ptrdiff_t>(from),
                        picture.begin() + static_cast<ptrdiff_t>(from + count),
                        with_lines.begin() + static_cast<ptrdiff_t>(to));
    };
    EXPECT_TRUE(same(4 * width, 0, width * height));
    const size_t u = framed.layout().planes[1].offset;
    EXPECT_TRUE(same(u + 2 * width / 2, width * height, width * height / 4));
    EXPECT_EQ(with_lines[0], 16);
    EXPECT_EQ(with_lines[(4 + height) * width], 16);
    EXPECT_EQ(with_lines[u], 128);
  }
}

TEST_F(LayerVideo, WhatThereIsNotIsRefusedWithAdvice) {
  const auto refused = [](const VideoFormat &format, const Output &output) {
    return sentence_of([&] { Pipeline pipeline(format, output); });
  };
  const VideoFormat frame{.width = width, .height = height};
  VideoFormat fields = frame, yyyy = frame;
  fields.scan = Scan::separate;
  yyyy.packing = VideoPacking::yyyy;
  EXPECT_EQ(refused(frame, {.format = PixelFormat::yuyv}),
            "progressive frames of yuyv do not become yuyv: take i420, rgb24");
  EXPECT_EQ(refused(fields, {.format = PixelFormat::rgb32}),
            "fields of yuyv do not become rgb32: take i420, rgb24, yuyv, uyvy");
  EXPECT_EQ(refused(yyyy, {.format = PixelFormat::rgb24}),
            "progressive frames of yyyy do not become rgb24: take i420");
  yyyy.scan = Scan::interleaved;
  EXPECT_EQ(refused(yyyy, {}), "yyyy has no fields: make it progressive");
  EXPECT_EQ(refused(frame, {.decimation = 1}),
            "progressive video is not scaled: take decimation 0");
  fields.height = 49;
  EXPECT_EQ(refused(fields, {}),
            "the height 49 is refused: two fields have an even number of lines between them");
  Pipeline pipeline(frame);
  Bytes bytes(2 * width * height), picture(pipeline.layout().bytes);
  EXPECT_EQ(sentence_of([&] { pipeline.process_fields(bytes, bytes, picture); }),
            "this pipeline takes whole frames: give them to process");
  EXPECT_EQ(sentence_of([&] { pipeline.set_reference(bytes); }),
            "only fields are compared with those before: this pipeline takes none");
  fields.height = height;
  Pipeline separate(fields);
  EXPECT_EQ(sentence_of([&] { separate.process(bytes, picture); }),
            "this pipeline takes fields by themselves: give both of them to process_fields");
}

TEST_F(LayerVideo, SizesThatNoModeKnowsAndModesThatWrapAreNoMatter) {
  // The plain functions know no 704 by 480 to 704 by 482, and would take a height that wraps.
  Pipeline pipeline(VideoFormat{.width = 704, .height = 480}, {.black_lines_bottom = 2});
  EXPECT_EQ(pipeline.layout().height, 482u);
  EXPECT_NE(sentence_of([] {
              Pipeline refused(VideoFormat{.width = 704, .height = 480},
                               {.black_lines_bottom = 6100806 - 480});
            }),
            "accepted");
}

}  // namespace
}  // namespace ppl_test
