// Frames made of two fields, with and without the motion test.
#include <gtest/gtest.h>

#include "packed_video/packed_video_fixture.h"

namespace ppl_test {
namespace {

constexpr uint32_t width = 144, height = 20, field_lines = height / 2;

class FieldsTest : public PackedVideoTierTest {
 protected:
  void SetUp() override {
    PackedVideoTierTest::SetUp();
    use_size(width, height);
  }

  static Fields textured_fields() {
    return {textured_video(width, field_lines, 1), textured_video(width, field_lines, 2),
            textured_video(width, field_lines, 3)};
  }

  // Nothing moves between the second field and its reference.
  static Fields still_fields() {
    Fields fields = textured_fields();
    fields.reference = fields.second;
    return fields;
  }

  // All chroma 100, in the first field 60 and 81 by turns: their average is 71.
  static Fields flat_fields() {
    Fields fields = {flat_video(width, field_lines, 90, 100, 100),
                     flat_video(width, field_lines, 40, 60, 60),
                     flat_video(width, field_lines, 200, 100, 100)};
    for (size_t line = 1; line < field_lines; line += 2)
      for (size_t x = 0; x < width; ++x) fields.first.c(x, line) = 81;
    return fields;
  }

  Picture run_with_test(const FieldsConversion &conversion, const Fields &fields) {
    return run(conversion.with_test, conversion, fields);
  }

  // Columns of odd line 2 * line + 1 whose chroma is not the second field's, which is 100.
  std::vector<size_t> moved_columns(const Fields &fields, size_t line) {
    const Picture picture = run_with_test(fields_conversions[0], fields);
    std::vector<size_t> moved;
    for (size_t x = 0; x < width; ++x) {
      const int chroma = picture.c(x, 2 * line + 1);
      if (chroma == fields.second.c(x, line)) continue;
      EXPECT_EQ(chroma, (fields.first.c(x, line) + fields.first.c(x, line + 1) + 1) / 2);
      moved.push_back(x);
    }
    return moved;
  }

  // Field of a frame's line.
  static const Video &field_of(const Fields &fields, size_t line) {
    return line % 2 == 0 ? fields.first : fields.second;
  }

  static void expect_woven(const Picture &picture, const Fields &fields) {
    const auto luma = [&](size_t x, size_t line) { return field_of(fields, line).y(x, line / 2); };
    const auto chroma = [&](size_t x, size_t line) {
      return field_of(fields, line).c(x, line / 2);
    };
    for (size_t line = 0; line < height; ++line)
      for (size_t x = 0; x < width; ++x) {
        SCOPED_TRACE(testing::Message() << "column " << x << ", line " << line);
        if (picture.format == Format::rgb24) {
          // Odd columns take the average of the chroma on both sides, the last one its own.
          const size_t pair = x / 2, next = std::min(x % 2 + pair, size_t{width / 2 - 1});
          const auto between = [&](size_t component) {
            return (chroma(2 * pair + component, line) + chroma(2 * next + component, line) + 1) /
                   2;
          };
          ASSERT_EQ(picture.bgr(x, line), rgb_of(luma(x, line), between(0), between(1)));
          continue;
        }
        ASSERT_EQ(picture.y(x, line), luma(x, line));
        if (picture.format != Format::i420) {
          ASSERT_EQ(picture.c(x, line), chroma(x, line));
        } else if (line % 2 == 0) {
          const int average = (chroma(x, line) + chroma(x, line + 1) + 1) / 2;
          ASSERT_EQ(x % 2 == 0 ? picture.u(x / 2, line / 2) : picture.v(x / 2, line / 2), average);
        }
      }
  }

  static std::array<int, 3> rgb_of(int y, int u, int v) {
    const int luma = 74 * std::max(y - 16, 0);
    const auto level = [](int sum) {
      return std::clamp(int{static_cast<int16_t>(sum)} >> 6, 0, 255);
    };
    return {level(luma + 129 * (u - 128)), level(luma - 25 * (u - 128) - 52 * (v - 128)),
            level(luma + 102 * (v - 128))};
  }
};

INSTANTIATE_TEST_SUITE_P(Tiers, FieldsTest, testing::ValuesIn(both_tiers), tier_name);

TEST_P(FieldsTest, WithoutTheMotionTestFieldsAreWoven) {
  const Fields fields = textured_fields();
  for (const FieldsConversion &conversion : fields_conversions) {
    if (!conversion.weaves()) continue;
    SCOPED_TRACE(conversion.name);
    const uint32_t before = ppl_n_frame(ctx);
    const Picture picture = run(conversion.without_test, conversion, fields);
    EXPECT_EQ(picture.result, 1);
    EXPECT_EQ(ppl_n_frame(ctx), before + 1);
    expect_woven(picture, fields);
  }
}

TEST_P(FieldsTest, FieldsWithoutMotionAreWoven) {
  for (const FieldsConversion &conversion : fields_conversions) {
    SCOPED_TRACE(conversion.name);
    const Fields fields = still_fields();
    const Picture picture = run_with_test(conversion, fields);
    EXPECT_EQ(picture.result, 1);
    expect_woven(picture, fields);
  }
}

TEST_P(FieldsTest, ChangedLumaIsNoMotion) {
  Fields fields = still_fields();
  for (uint8_t &y : fields.reference.luma) y = static_cast<uint8_t>(y * 7 + 90);
  for (const FieldsConversion &conversion : fields_conversions) {
    SCOPED_TRACE(conversion.name);
    expect_woven(run_with_test(conversion, fields), fields);
  }
}

TEST_P(FieldsTest, TwoNamesConvertNothing) {
  const Fields fields = textured_fields();
  for (const FieldsConversion &conversion : fields_conversions) {
    if (conversion.weaves()) continue;
    use_size(width, height);
    const uint32_t before = ppl_n_frame(ctx);
    const Picture picture = run(conversion.without_test, conversion, fields);
    EXPECT_EQ(picture.result, 1);
    EXPECT_TRUE(picture.all(0, picture.bytes.size(), untouched));
    EXPECT_EQ(ppl_n_frame(ctx), before + 1);
    // Sizes come first.
    sizes.out_height = height + 1;
    EXPECT_EQ(run(conversion.without_test, conversion, fields).result, 0);
    EXPECT_EQ(ppl_n_frame(ctx), before + 1);
  }
}

TEST_P(FieldsTest, UniformChangeMovesNothingButAtTheEndsOfALine) {
  // The missing neighbour counts as unchanged, which makes four times the change there.
  for (const auto &[change, expected] :
       {std::pair{12, std::vector<size_t>{}}, {13, {0, width - 1}}, {100, {0, width - 1}}}) {
    Fields fields = flat_fields();
    for (uint8_t &c : fields.reference.chroma) c = static_cast<uint8_t>(100 - change);
    for (size_t line = 0; line + 1 < field_lines; ++line)
      EXPECT_EQ(moved_columns(fields, line), expected) << change;
  }
}

TEST_P(FieldsTest, SpreadMustExceedTheThreshold) {
  // One byte that changes by k has a spread of 4 k, and so have its neighbours.
  ASSERT_EQ(ppl_set_intl_3T_threshold(ctx, 80), 1);
  for (const size_t column : {size_t{1}, size_t{37}, size_t{64}, size_t{142}}) {
    Fields fields = flat_fields();
    fields.reference.c(column, 3) = 120;
    EXPECT_EQ(moved_columns(fields, 3), std::vector<size_t>{}) << column;
    for (const uint8_t moved : {uint8_t{121}, uint8_t{79}}) {
      fields.reference.c(column, 3) = moved;
      EXPECT_EQ(moved_columns(fields, 3), (std::vector<size_t>{column - 1, column, column + 1}));
      EXPECT_EQ(moved_columns(fields, 2), std::vector<size_t>{});
      EXPECT_EQ(moved_columns(fields, 4), std::vector<size_t>{});
    }
  }
}

TEST_P(FieldsTest, EveryColumnIsTestedWithItsNeighbours) {
  for (size_t column = 0; column < width; ++column) {
    Fields fields = flat_fields();
    fields.reference.c(column, 0) = 200;
    std::vector<size_t> expected = {column};
    if (column > 0) expected.insert(expected.begin(), column - 1);
    if (column + 1 < width) expected.push_back(column + 1);
    ASSERT_EQ(moved_columns(fields, 0), expected);
  }
}

TEST_P(FieldsTest, MovedChromaIsTheFirstFieldsAverage) {
  // Everything moves: every second byte changes.
  Fields fields = textured_fields();
  fields.reference = fields.second;
  for (size_t i = 0; i < fields.reference.chroma.size(); i += 2)
    fields.reference.chroma[i] = static_cast<uint8_t>(fields.second.chroma[i] ^ 128);
  for (const FieldsConversion &conversion : fields_conversions) {
    SCOPED_TRACE(conversion.name);
    // What it looks like is a weave with another second field.
    Fields merged = fields;
    for (size_t line = 0; line + 1 < field_lines; ++line)
      for (size_t x = 0; x < width; ++x)
        merged.second.c(x, line) =
            static_cast<uint8_t>((fields.first.c(x, line) + fields.first.c(x, line + 1) + 1) / 2);
    expect_woven(run_with_test(conversion, fields), merged);
  }
}

TEST_P(FieldsTest, HighestThresholdCanStillBeExceeded) {
  // Differences of 255, -255, 255: M is 2040.
  ASSERT_EQ(ppl_set_intl_3T_threshold(ctx, 765), 1);
  Fields fields = flat_fields();
  for (size_t i = 0; i < fields.second.chroma.size(); ++i) {
    fields.second.chroma[i] = i % 2 == 0 ? 255 : 0;
    fields.reference.chroma[i] = i % 2 == 0 ? 0 : 255;
  }
  EXPECT_EQ(moved_columns(fields, 0).size(), size_t{width});
  // A change of 191 in one byte has 764, one of 192 has 768.
  fields = flat_fields();
  fields.reference.c(40, 0) = 0;
  fields.second.c(40, 0) = 191;
  EXPECT_EQ(moved_columns(fields, 0), std::vector<size_t>{});
  fields.second.c(40, 0) = 192;
  EXPECT_EQ(moved_columns(fields, 0), (std::vector<size_t>{39, 40, 41}));
}

TEST_P(FieldsTest, LastLineIsTheSecondFieldsAtEveryThreshold) {
  const Fields fields = textured_fields();
  for (const int32_t threshold : {0, 50, 765}) {
    ASSERT_EQ(ppl_set_intl_3T_threshold(ctx, threshold), 1);
    for (const FieldsConversion &conversion : fields_conversions) {
      if (conversion.format != Format::yuyv && conversion.format != Format::uyvy) continue;
      const Picture picture = run_with_test(conversion, fields);
      for (size_t x = 0; x < width; ++x) {
        ASSERT_EQ(picture.y(x, height - 1), fields.second.y(x, field_lines - 1));
        ASSERT_EQ(picture.c(x, height - 1), fields.second.c(x, field_lines - 1));
      }
    }
  }
}

TEST_P(FieldsTest, MirrorsDoNotAct) {
  const Fields fields = textured_fields();
  for (const FieldsConversion &conversion : fields_conversions) {
    ppl_reset_mirrors(ctx);
    const Picture plain = run_with_test(conversion, fields);
    ppl_set_h_mirror(ctx, 1);
    ppl_set_v_mirror(ctx, 1);
    EXPECT_TRUE(run_with_test(conversion, fields).bytes == plain.bytes) << conversion.name;
  }
}

TEST_P(FieldsTest, DriversDoWhatTheirEntriesDo) {
  const Fields fields = textured_fields();
  for (const FieldsConversion &conversion : fields_conversions)
    if (conversion.driver != nullptr) {
      EXPECT_TRUE(run(conversion.driver, conversion, fields).bytes ==
                  run_with_test(conversion, fields).bytes)
          << conversion.name;
    }
}

// ---- Black lines

TEST_P(FieldsTest, BlackLinesFrameThePicture) {
  const Fields fields = textured_fields();
  for (const FieldsConversion &conversion : fields_conversions) {
    SCOPED_TRACE(conversion.name);
    use_size(width, height);
    const Picture plain = run_with_test(conversion, fields);
    use_size(width, height, 0, 3, 2);
    const Picture framed = run_with_test(conversion, fields);
    ASSERT_EQ(framed.height, 25u);
    // Bytes [from, to) hold the picture from plain_from on.
    const auto expect_picture = [&](size_t from, size_t to, size_t plain_from) {
      EXPECT_EQ(memcmp(&framed.bytes[from], &plain.bytes[plain_from], to - from), 0);
    };
    if (conversion.format == Format::i420) {
      const size_t luma = width * 25, quarter = luma / 4;  // 12.5 lines of chroma
      EXPECT_TRUE(framed.all(0, width * 3, 16));
      expect_picture(width * 3, width * 23, 0);
      EXPECT_TRUE(framed.all(width * 23, luma, 16));
      for (const size_t plane : {0u, 1u}) {  // one line above it, of 72 bytes
        const size_t start = luma + plane * quarter;
        EXPECT_TRUE(framed.all(start, start + 72, 128));
        expect_picture(start + 72, start + 72 + 720, width * 20 + plane * 720);
        EXPECT_TRUE(framed.all(start + 72 + 720, start + quarter, 128));
      }
    } else if (conversion.format == Format::rgb24) {
      const size_t line = width * 3;
      EXPECT_TRUE(framed.all(0, line * 2, 0));
      expect_picture(line * 2, line * 22, 0);
      EXPECT_TRUE(framed.all(line * 22, line * 25, 0));
    } else {
      const size_t line = width * 2;
      const uint8_t first = conversion.format == Format::yuyv ? 16 : 128;
      for (size_t i = 0; i < line * 25; ++i) {
        if (i >= line * 3 && i < line * 23) continue;
        ASSERT_EQ(framed.bytes[i], i % 2 == 0 ? first : 144 - first) << i;
      }
      expect_picture(line * 3, line * 23, 0);
    }
  }
}

TEST_P(FieldsTest, BlackLinesThatTheHeightLacksAreForPackedOutputAlone) {
  const Fields fields = textured_fields();
  for (const FieldsConversion &conversion : fields_conversions) {
    SCOPED_TRACE(conversion.name);
    const bool packed = conversion.format == Format::yuyv || conversion.format == Format::uyvy;
    use_size(width, height, 0, packed ? 3 : 0, packed ? 2 : 0);
    const Picture expected = run_with_test(conversion, fields);
    ASSERT_EQ(ppl_set_decimation(ctx, 0, 3, 2), 1);
    ASSERT_EQ(ppl_new_frame_size(ctx, width, height, width), 1);
    ASSERT_EQ(ctx->out_height, int{height});
    sizes.out_height = height;
    Buffers how;
    how.output_bytes = expected.bytes.size();
    EXPECT_TRUE(run(conversion.with_test, conversion, fields, how).bytes == expected.bytes);
  }
}

// ---- Scaling

TEST_P(FieldsTest, SmallPicturesComeFromTheFirstFieldAlone) {
  const Fields fields = textured_fields();
  Fields others = textured_fields();
  others.reference = textured_video(width, field_lines, 7);
  others.second = textured_video(width, field_lines, 8);
  for (const int32_t d : {1, 2})
    for (const FieldsConversion &conversion : fields_conversions) {
      use_size(width, height, d, 1, 1);
      const Picture picture = run_with_test(conversion, fields);
      EXPECT_EQ(picture.result, 1);
      EXPECT_TRUE(run_with_test(conversion, others).bytes == picture.bytes) << conversion.name;
      if (conversion.weaves()) {
        EXPECT_TRUE(run(conversion.without_test, conversion, fields).bytes == picture.bytes);
      }
      if (conversion.format != Format::yuyv && conversion.format != Format::uyvy) continue;
      // Every second (fourth) pair and line below one black line.
      for (size_t line = 0; line < size_t{height} >> d; ++line)
        for (size_t x = 0; x < size_t{width} >> d; ++x) {
          const size_t from = (x / 2 << d) * 2 + x % 2, from_line = (line << d) / 2;
          ASSERT_EQ(picture.y(x, 1 + line), fields.first.y(from, from_line));
          ASSERT_EQ(picture.c(x, 1 + line), fields.first.c(from, from_line));
        }
    }
}

TEST_P(FieldsTest, LargePicturesDoubleTheMergedFrame) {
  const Fields fields = textured_fields();
  const auto average = [](int a, int b) { return (a + b + 1) / 2; };
  for (const FieldsConversion &conversion : fields_conversions) {
    if (conversion.format != Format::yuyv && conversion.format != Format::uyvy) continue;
    use_size(width, height);
    const Picture frame = run_with_test(conversion, fields);
    use_size(width, height, -1, 2, 2);
    const Picture picture = run_with_test(conversion, fields);
    // Value k of a line stands at 2 k + 1, behind its average with the one before; so do lines.
    const auto along = [&](size_t x, size_t line) -> int {
      return x % 2 == 1 || x == 0 ? frame.y(x / 2, line)
                                  : average(frame.y(x / 2 - 1, line), frame.y(x / 2, line));
    };
    for (size_t line = 0; line < 2 * height; ++line)
      for (size_t x = 0; x < 2 * width; ++x)
        ASSERT_EQ(picture.y(x, 2 + line),
                  line % 2 == 1 || line == 0 ? along(x, line / 2)
                                             : average(along(x, line / 2 - 1), along(x, line / 2)));
    EXPECT_EQ(picture.y(0, 1), 16);
    EXPECT_EQ(picture.y(2 * width - 1, 2 * height + 3), 16);
  }
}

TEST_P(FieldsTest, FlatFieldsAreFlatAtEveryScale) {
  const Fields fields = {flat_video(width, field_lines, 100, 90, 200),
                         flat_video(width, field_lines, 100, 90, 200),
                         flat_video(width, field_lines, 100, 90, 200)};
  for (const int32_t d : {0, 1, 2, -1})
    for (const FieldsConversion &conversion : fields_conversions) {
      use_size(width, height, d);
      const Picture picture = run_with_test(conversion, fields);
      const size_t lines = picture.height;
      for (size_t line = 0; line < lines; ++line)
        for (size_t x = 0; x < picture.width; ++x)
          if (conversion.format == Format::rgb24) {
            ASSERT_EQ(picture.bgr(x, line), (std::array{20, 53, 211})) << d;
          } else {
            ASSERT_EQ(picture.y(x, line), 100) << d;
          }
    }
}

TEST_P(FieldsTest, OddWidthsGrowTheSameWhateverRanBefore) {
  const Fields fields = {textured_video(131, 7, 1), textured_video(131, 7, 2),
                         textured_video(131, 7, 3)};
  for (const FieldsConversion &conversion : fields_conversions) {
    use_size(131, 14, -1);
    memset(ctx->line_memory, 0x11, sizeof ctx->line_memory);
    const Picture picture = run_with_test(conversion, fields);
    memset(ctx->line_memory, 0xEE, sizeof ctx->line_memory);
    EXPECT_TRUE(run_with_test(conversion, fields).bytes == picture.bytes) << conversion.name;
  }
}

TEST_P(FieldsTest, WithoutTheMotionTestNothingGrows) {
  const Fields fields = textured_fields();
  for (const FieldsConversion &conversion : fields_conversions) {
    use_size(width, height, -1, 1, 1);
    const uint32_t before = ppl_n_frame(ctx);
    const Picture picture = run(conversion.without_test, conversion, fields);
    EXPECT_EQ(picture.result, 1);
    EXPECT_TRUE(picture.all(0, picture.bytes.size(), untouched)) << conversion.name;
    EXPECT_EQ(ppl_n_frame(ctx), before + 1);
  }
}

// ---- Sizes

TEST_P(FieldsTest, BroadcastFramesAreConvertedWhole) {
  for (const auto &[w, h, out_height] :
       {std::array{720u, 480u, 576u}, {720u, 576u, 576u}, {480u, 480u, 480u}}) {
    const Fields fields = {textured_video(w, h / 2, 1), textured_video(w, h / 2, 2),
                           textured_video(w, h / 2, 3)};
    sizes = {w, h, w, out_height};
    const FieldsConversion &conversion = fields_conversions[1];
    const Picture picture = run(conversion.without_test, conversion, fields);
    EXPECT_EQ(picture.result, 1);
    const size_t top = (out_height - h) / 2;
    for (size_t line = 0; line < h; ++line)
      for (size_t x = 0; x < w; ++x)
        ASSERT_EQ(picture.y(x, top + line), field_of(fields, line).y(x, line / 2));
  }
}

TEST_P(FieldsTest, RefusedSizesStopTheFrame) {
  const Fields fields = textured_fields();
  for (const FieldsConversion &conversion : fields_conversions)
    for (const FieldsFunction function : {conversion.with_test, conversion.without_test}) {
      sizes = {width, height, width, height + 2};
      const Picture picture = run(function, conversion, fields);
      EXPECT_EQ(picture.result, 0);
      EXPECT_TRUE(picture.all(0, picture.bytes.size(), untouched));
      EXPECT_EQ(ppl_n_frame(ctx), 0u);
    }
}

}  // namespace
}  // namespace ppl_test
