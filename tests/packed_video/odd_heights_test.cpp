// Two fields scaled down to an odd number of lines: all of them are written, and the black lines
// behind them, so that nothing of the output stays as it was.
#include <gtest/gtest.h>
#include <string.h>

#include <algorithm>

#include "model/model.h"
#include "packed_video/packed_video_fixture.h"
#include "support/difference.h"

namespace ppl_test {
namespace {

struct Scaled {
  uint32_t height;  // of the frame
  int32_t decimation;
  uint32_t lines;      // of the picture
  uint32_t line_step;  // in the first field
};
// 46 lines are two fields of 23, all of which are taken. 44 are two of 22, of which every second
// is.
constexpr std::array all_scaled = {Scaled{46, 1, 23, 1}, Scaled{44, 2, 11, 2}};

struct Bars {
  uint32_t top, bottom;
};
constexpr std::array<Bars, 5> all_bars = {{{0, 1}, {1, 0}, {1, 2}, {2, 3}, {1, 1}}};

struct ModelConversion {
  ppl_model::FieldsFunction *with_test, *without_test;
};
// In the order of fields_conversions.
constexpr std::array<ModelConversion, fields_conversions.size()> model_conversions = {{
    {ppl_model::IntlYUYVToYUYVMMX, ppl_model::IntlYUYVToYUYVMMX_no_motion},
    {ppl_model::IntlUYVYToUYVYMMX, ppl_model::IntlUYVYToUYVYMMX_no_motion},
    {ppl_model::IntlUYVYToYUYVMMX, ppl_model::IntlUYVYToYUYVMMX_no_motion},
    {ppl_model::IntlYUYVToUYVYMMX, ppl_model::IntlYUYVToUYVYMMX_no_motion},
    {ppl_model::IntlYUYVToI420MMX, ppl_model::IntlYUYVToI420MMX_no_motion},
    {ppl_model::IntlUYVYToI420MMX, ppl_model::IntlUYVYToI420MMX_no_motion},
    {ppl_model::IntlYUYVToRGB24MMX, ppl_model::IntlYUYVToRGB24MMX_no_motion},
    {ppl_model::IntlUYVYToRGB24MMX, ppl_model::IntlUYVYToRGB24MMX_no_motion},
}};

class OddHeightsTest : public PackedVideoTierTest {
 protected:
  static constexpr uint32_t width = 192;

  void SetUp() override {
    PackedVideoTierTest::SetUp();
    ppl_model::machine::set_flags(1u | 1u << 24 | 1u << 25 | 1u << 26);
    ppl_model::machine::reset_counts();
    ppl_model::machine::reload_pool();
    model_ = ppl_model::ppl_init();
    ppl_model::ppl_set_P3_only(model_, GetParam() == Tier::p3);
  }

  static Fields textured_fields(uint32_t frame_width, uint32_t frame_height) {
    return {textured_video(frame_width, frame_height / 2, 1),
            textured_video(frame_width, frame_height / 2, 2),
            textured_video(frame_width, frame_height / 2, 3)};
  }

  // On both sides.
  void use_size(uint32_t frame_width, uint32_t height, int32_t decimation, const Bars &bars) {
    const auto top = static_cast<int32_t>(bars.top), bottom = static_cast<int32_t>(bars.bottom);
    PackedVideoTierTest::use_size(frame_width, height, decimation, top, bottom);
    ppl_model::ppl_set_decimation(model_, 0, 0, 0);
    ASSERT_EQ(ppl_model::ppl_new_frame_size(model_, frame_width, height, frame_width), 1);
    ppl_model::ppl_set_decimation(model_, decimation, top, bottom);
  }
  void use(const Scaled &scaled, const Bars &bars) {
    use_size(width, scaled.height, scaled.decimation, bars);
    ASSERT_EQ(sizes.out_height, scaled.lines + bars.top + bars.bottom);
  }

  Picture run_model(ppl_model::FieldsFunction *function, const FieldsConversion &conversion,
                    const Fields &fields) {
    const auto source = [&](const Video &video) {
      const std::vector<uint8_t> bytes = video.bytes(conversion.packing);
      GuardedBuffer buffer(bytes.size(), Placement::begins_behind_guard);
      memcpy(buffer.data(), bytes.data(), bytes.size());
      return buffer;
    };
    const GuardedBuffer reference = source(fields.reference), first = source(fields.first),
                        second = source(fields.second);
    GuardedBuffer output(
        picture_bytes(conversion.format, size_t{sizes.out_width} * sizes.out_height),
        Placement::begins_behind_guard);
    const uint8_t result =
        function(model_, reference.data(), first.data(), second.data(), output.data(), sizes.width,
                 sizes.height, sizes.out_width, sizes.out_height);
    EXPECT_EQ(result, 1);
    EXPECT_TRUE(ppl_model::free_bytes().empty() && !ppl_model::picture_is_free());
    return {conversion.format,
            sizes.out_width,
            sizes.out_height,
            result,
            {output.begin(), output.end()}};
  }

  // Runs each conversion to `format`, with and without the motion test, on both sides.
  template <class Check>  // check(const Picture &)
  void run_all(Format format, const Fields &fields, Check check) {
    for (size_t i = 0; i < fields_conversions.size(); ++i) {
      const FieldsConversion &conversion = fields_conversions[i];
      if (conversion.format != format) continue;
      SCOPED_TRACE(conversion.name);
      check(run(conversion.with_test, conversion, fields));
      if (conversion.weaves()) check(run(conversion.without_test, conversion, fields));
      SCOPED_TRACE("in the model");
      check(run_model(model_conversions[i].with_test, conversion, fields));
      if (conversion.weaves())
        check(run_model(model_conversions[i].without_test, conversion, fields));
    }
  }

  // Column of the field that column x of the picture shows: pairs stay together.
  static size_t source_column(const Scaled &scaled, size_t x) {
    return (x / 2 << scaled.decimation) * 2 + x % 2;
  }

 private:
  ppl_model::PplContext *model_ = nullptr;
};
INSTANTIATE_TEST_SUITE_P(Tiers, OddHeightsTest, testing::ValuesIn(both_tiers), tier_name);

TEST_P(OddHeightsTest, PackedPicturesShowEveryLineBetweenTheirBars) {
  for (const Scaled &scaled : all_scaled)
    for (const Bars &bars : all_bars)
      for (const Format format : {Format::yuyv, Format::uyvy}) {
        use(scaled, bars);
        const Fields fields = textured_fields(width, scaled.height);
        run_all(format, fields, [&](const Picture &picture) {
          for (size_t line = 0; line < picture.height; ++line)
            for (size_t x = 0; x < picture.width; ++x) {
              const bool black = line < bars.top || line >= bars.top + scaled.lines;
              const size_t field_line = (line - bars.top) * scaled.line_step;
              const size_t column = source_column(scaled, x);
              ASSERT_EQ(picture.y(x, line), black ? 16 : fields.first.y(column, field_line))
                  << x << ", " << line;
              ASSERT_EQ(picture.c(x, line), black ? 128 : fields.first.c(column, field_line))
                  << x << ", " << line;
            }
        });
      }
}

TEST_P(OddHeightsTest, RgbPicturesShowEveryLineBetweenTheirBars) {
  for (const Scaled &scaled : all_scaled)
    for (const Bars &bars : all_bars) {
      use(scaled, bars);
      Fields fields = textured_fields(width, scaled.height);
      std::fill(fields.first.chroma.begin(), fields.first.chroma.end(), uint8_t{128});
      run_all(Format::rgb24, fields, [&](const Picture &picture) {
        for (size_t line = 0; line < picture.height; ++line)
          for (size_t x = 0; x < picture.width; ++x) {
            const bool black = line < bars.top || line >= bars.top + scaled.lines;
            int level = 0;
            if (!black) {
              const int y =
                  fields.first.y(source_column(scaled, x), (line - bars.top) * scaled.line_step);
              level = std::min(74 * std::max(y - 16, 0) >> 6, 255);
            }
            ASSERT_EQ(picture.bgr(x, line), (std::array{level, level, level})) << x << ", " << line;
          }
      });
    }
}

TEST_P(OddHeightsTest, PlanarPicturesShowEveryLineBetweenTheirBars) {
  for (const Scaled &scaled : all_scaled)
    for (const Bars &bars : all_bars) {
      SCOPED_TRACE(testing::Message()
                   << scaled.lines << " lines, bars of " << bars.top << " and " << bars.bottom);
      use(scaled, bars);
      const Fields fields = textured_fields(width, scaled.height);
      const Video &field = fields.first;
      run_all(Format::i420, fields, [&](const Picture &picture) {
        for (size_t line = 0; line < picture.height; ++line)
          for (size_t x = 0; x < picture.width; ++x) {
            const bool black = line < bars.top || line >= bars.top + scaled.lines;
            ASSERT_EQ(picture.y(x, line), black ? 16
                                                : field.y(source_column(scaled, x),
                                                          (line - bars.top) * scaled.line_step))
                << x << ", " << line;
          }
        // The picture's chroma stands half as far down as its luma. Behind the rows of its line
        // pairs comes one for the last line, then black to the plane's end, which may lie within a
        // line.
        const size_t chroma_width = picture.width / 2, plane_bytes = picture.size() / 4;
        const size_t first_row = bars.top / 2, rows = (scaled.lines + 1) / 2;
        for (size_t i = 0; i < plane_bytes; ++i) {
          const size_t row = i / chroma_width, x = i % chroma_width;
          int u = 128, v = 128;
          if (row >= first_row && row < first_row + rows) {
            const size_t line = 2 * (row - first_row);
            const size_t next = std::min<size_t>(line + 1, scaled.lines - 1);
            const size_t pair = x << scaled.decimation;
            u = (field.u(pair, line * scaled.line_step) + field.u(pair, next * scaled.line_step) +
                 1) /
                2;
            v = (field.v(pair, line * scaled.line_step) + field.v(pair, next * scaled.line_step) +
                 1) /
                2;
          }
          ASSERT_EQ(picture.bytes[picture.size() + i], u) << "U " << x << ", " << row;
          ASSERT_EQ(picture.bytes[picture.size() + plane_bytes + i], v) << "V " << x << ", " << row;
        }
      });
    }
}

TEST_P(OddHeightsTest, TheLastChromaRowOfAnOddHeightGoesAsFarAsItsPlane) {
  // 96 by 23 without bars: 552 bytes a plane, eleven rows of 48 and the first half of a twelfth.
  use(all_scaled[0], {0, 0});
  const Fields fields = textured_fields(width, 46);
  run_all(Format::i420, fields, [&](const Picture &picture) {
    ASSERT_EQ(picture.bytes.size(), 3312u);
    for (size_t x = 0; x < 96; ++x)
      ASSERT_EQ(picture.y(x, 22), fields.first.y(source_column(all_scaled[0], x), 22)) << x;
    for (size_t j = 0; j < 24; ++j) {
      ASSERT_EQ(picture.bytes[2208 + 528 + j], fields.first.u(2 * j, 22)) << j;
      ASSERT_EQ(picture.bytes[2760 + 528 + j], fields.first.v(2 * j, 22)) << j;
    }
  });
}

TEST_P(OddHeightsTest, TheModelSeesTheSameAtEveryHeight) {
  for (const uint32_t frame_width : {128u, 130u, 192u})
    for (uint32_t height = 20; height < 28; ++height)
      for (const int32_t decimation : {1, 2})
        for (const Bars &bars : {Bars{0, 0}, {0, 1}, {1, 0}, {2, 0}, {1, 1}, {3, 4}}) {
          use_size(frame_width, height, decimation, bars);
          const Fields fields = textured_fields(frame_width, height);
          for (size_t i = 0; i < fields_conversions.size(); ++i) {
            const FieldsConversion &conversion = fields_conversions[i];
            SCOPED_TRACE(testing::Message()
                         << conversion.name << " " << frame_width << " by " << height << " at "
                         << decimation << ", bars of " << bars.top << " and " << bars.bottom);
            const auto compare = [&](FieldsFunction function,
                                     ppl_model::FieldsFunction *model_function) {
              const Picture picture = run(function, conversion, fields);
              if (const auto difference = first_difference(
                      run_model(model_function, conversion, fields).bytes, picture.bytes))
                ADD_FAILURE() << describe(*difference, picture.width);
            };
            compare(conversion.with_test, model_conversions[i].with_test);
            compare(conversion.without_test, model_conversions[i].without_test);
          }
        }
}

}  // namespace
}  // namespace ppl_test
