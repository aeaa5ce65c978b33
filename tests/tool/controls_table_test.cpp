#include "library/controls_table.h"

#include <gtest/gtest.h>
#include <ppl.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "base/failure.h"
#include "library/control_assignment.h"
#include "tool/run_tool.h"

namespace ppl_test {
namespace {

using ppl::tool::Control;
using ppl::tool::controls;

std::string header() {
  std::ifstream file(PPL_HEADER);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::set<std::string> setters_of_the_header() {
  const std::string text = header();
  const std::regex setter("PPL_CALL (ppl_(set|copy|enable|disable)_\\w+)\\(");
  std::set<std::string> names;
  for (std::sregex_iterator it(text.begin(), text.end(), setter), end; it != end; ++it)
    names.insert((*it)[1]);
  return names;
}

std::vector<int64_t> numbers_in(const std::string &text) {
  std::vector<int64_t> numbers;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, ',');) numbers.push_back(std::stoll(part));
  return numbers;
}

class ControlsTable : public ToolTest {
 protected:
  void SetUp() override {
    ToolTest::SetUp();
    context_ = ppl_init();
    ASSERT_NE(context_, nullptr);
  }
  void TearDown() override {
    ppl_free(context_);
    ToolTest::TearDown();
  }

  std::vector<int64_t> get(const Control &control) {
    std::vector<int64_t> numbers(control.numbers);
    control.get_numbers(context_, numbers.data());
    return numbers;
  }

  // The default in the form that --set takes. Where the library has none: a value that it knows.
  std::string default_assignment(const Control &control) {
    if (std::string(control.name) == "sensor_type") return "sensor_type=22356";
    if (!control.table_bytes) return std::string(control.name) + "=" + control.initial;
    std::string table(control.table_bytes, '\0');
    control.get_table(context_, reinterpret_cast<uint8_t *>(table.data()));
    write("table", table);
    return std::string(control.name) + "=@" + path("table");
  }

  std::string failure_of(const std::string &assignment) {
    try {
      ppl::tool::set_control(context_, assignment);
    } catch (const ppl::tool::Failure &failure) {
      return failure.what();
    }
    return "accepted";
  }

  PplContext *context_ = nullptr;
};

TEST_F(ControlsTable, ReachesEverySetterOfTheHeaderAndNoOther) {
  std::set<std::string> reached;
  for (const Control &control : controls())
    reached.insert(control.setters.begin(), control.setters.end());
  const std::set<std::string> declared = setters_of_the_header();
  EXPECT_GE(declared.size(), 60u);
  EXPECT_EQ(reached, declared);
}

TEST_F(ControlsTable, ListingNamesEverySetterOfTheHeader) {
  const auto listing = nlohmann::json::parse(run_well({"controls", "--json"}).out);
  std::set<std::string> listed;
  for (const auto &control : listing)
    for (const auto &setter : control.at("setters")) listed.insert(setter.get<std::string>());
  EXPECT_EQ(listed, setters_of_the_header());
}

TEST_F(ControlsTable, ListingTellsNameRangeDefaultUnitAndMeaning) {
  const std::string text = run_well({"controls"}).out;
  const auto listing = nlohmann::json::parse(run_well({"controls", "--json"}).out);
  ASSERT_EQ(listing.size(), controls().size());
  for (const auto &control : listing)
    for (const char *member : {"name", "range", "default", "unit", "text"})
      EXPECT_NE(text.find(control.at(member).get<std::string>()), std::string::npos) << control;
}

TEST_F(ControlsTable, NamesAreUnique) {
  std::set<std::string> names;
  for (const Control &control : controls())
    EXPECT_TRUE(names.insert(control.name).second) << control.name;
}

TEST_F(ControlsTable, DefaultsAreThoseOfAFreshContext) {
  for (const Control &control : controls()) {
    if (!control.get_numbers || std::string(control.name) == "sensor_type") continue;
    EXPECT_EQ(get(control), numbers_in(control.initial)) << control.name;
  }
}

TEST_F(ControlsTable, EveryDefaultIsAccepted) {
  for (const Control &control : controls())
    EXPECT_EQ(failure_of(default_assignment(control)), "accepted") << control.name;
}

TEST_F(ControlsTable, WhatIsSetIsReadBack) {
  for (const Control &control : controls()) {
    if (std::string(control.name) == "sensor_type") continue;  // stores nothing
    if (control.get_table) {
      std::string table(control.table_bytes, '\0'), original = table;
      control.get_table(context_, reinterpret_cast<uint8_t *>(original.data()));
      for (size_t i = 0; i < table.size(); ++i) table[i] = static_cast<char>(i * 3 + 1);
      write("table", table);
      EXPECT_EQ(failure_of(std::string(control.name) + "=@" + path("table")), "accepted");
      std::string stored(control.table_bytes, '\0');
      control.get_table(context_, reinterpret_cast<uint8_t *>(stored.data()));
      EXPECT_EQ(stored, table) << control.name;
      // The families are shared by all contexts: leave them as they were.
      control.set_table(context_, reinterpret_cast<const uint8_t *>(original.data()));
    } else if (control.get_numbers) {
      // Different from each other and from the default, rising, and inside the range.
      std::vector<int64_t> numbers(control.numbers);
      for (size_t i = 0; i < numbers.size(); ++i)
        numbers[i] = std::min<int64_t>(control.range(i).high, 5 + static_cast<int64_t>(i));
      const bool flag = control.range(0).high == 1;
      if (flag) numbers[0] = 1 - get(control)[0];
      EXPECT_TRUE(control.set_numbers(context_, numbers.data())) << control.name;
      EXPECT_EQ(get(control), numbers) << control.name;
    }
  }
}

// The table states ranges for the messages and for what the library does not test; they must be the
// library's own.
TEST_F(ControlsTable, RangesAreThoseOfTheLibrary) {
  // Ranges of the tool alone, since the library takes any byte, line count or gain there.
  const std::set<std::string> looser = {
      "P3_only",           "mean_collection",       "h_mirror",
      "v_mirror",          "medium_filter_enabled", "quals_rgb_gain",
      "nf88_quals_r_gain", "nf88_quals_g_gain",     "nf88_quals_b_gain",
      "sensor_type"};
  for (const Control &control : controls()) {
    if (!control.set_numbers || control.name == std::string("sensor_type")) continue;
    for (size_t i = 0; i < control.numbers; ++i) {
      std::vector<int64_t> numbers = numbers_in(control.initial);
      const auto accepts = [&](int64_t value) {
        numbers[i] = value;
        const bool band = std::string(control.text).rfind("min,max", 0) == 0;
        if (band)
          numbers[i ^ 1] = i % 2 == 0 ? std::max(value, control.range(i).high)
                                      : std::min(value, control.range(i).low);
        return control.set_numbers(context_, numbers.data());
      };
      const int64_t low = control.range(i).low, high = control.range(i).high;
      EXPECT_TRUE(accepts(low)) << control.name;
      EXPECT_TRUE(accepts(high)) << control.name;
      const bool lines = control.name == std::string("decimation") && i > 0;
      if (looser.count(control.name) || lines) continue;
      const bool all_unsigned = low == 0 && high == UINT32_MAX;
      if (low > INT32_MIN && !all_unsigned) {
        EXPECT_FALSE(accepts(low - 1)) << control.name;
      }
      if (high < INT32_MAX) {
        EXPECT_FALSE(accepts(high + 1)) << control.name;
      }
      ppl_reset_all_controls(context_);
    }
  }
}

TEST_F(ControlsTable, FixedPointTakesDecimalFractions) {
  EXPECT_EQ(failure_of("rgb_gain=1.5,1.0,2"), "accepted");
  EXPECT_EQ(ppl_nf88_r_gain(context_), 384);
  EXPECT_EQ(ppl_nf88_g_gain(context_), 256);
  EXPECT_EQ(ppl_nf88_b_gain(context_), 2);
  EXPECT_EQ(failure_of("edge_threshold=1.5"), "edge_threshold takes whole numbers, not '1.5'");
}

TEST_F(ControlsTable, BlackLinesMayBeLeftOut) {
  EXPECT_EQ(failure_of("decimation=1,2,4"), "accepted");
  EXPECT_EQ(ppl_decimation_bottom_black_lines(context_), 4);
  EXPECT_EQ(failure_of("decimation=-1"), "accepted");
  EXPECT_EQ(ppl_decimation(context_), -1);
  EXPECT_EQ(ppl_decimation_bottom_black_lines(context_), 0);
}

TEST_F(ControlsTable, MisspeltNamesFindTheirNeighbour) {
  EXPECT_EQ(ppl::tool::nearest_control("edge_treshold"), "edge_threshold");
  EXPECT_EQ(ppl::tool::nearest_control("nf88_rgain"), "nf88_r_gain");
  EXPECT_EQ(ppl::tool::nearest_control("gama"), "gamma");
  EXPECT_NE(failure_of("qualty=3").find("did you mean 'quality'?"), std::string::npos);
}

TEST_F(ControlsTable, BadValuesSayWhatIsExpected) {
  EXPECT_EQ(failure_of("quality=15"), "quality=15 is refused: the range is 0 to 14");
  EXPECT_EQ(failure_of("quality=-1"), "quality=-1 is refused: the range is 0 to 14");
  EXPECT_EQ(failure_of("quality="), "quality takes numbers, not ''");
  EXPECT_EQ(failure_of("quality=three"), "quality takes numbers, not 'three'");
  EXPECT_EQ(failure_of("quality=3,4"), "quality takes 1 number, not '3,4'");
  EXPECT_EQ(failure_of("rgb_gain=256"),
            "rgb_gain takes 3 numbers with commas in between, not '256'");
  EXPECT_EQ(failure_of("qual_R=20,10"),
            "qual_R=20,10 is refused: the range is 0 to 255 each, the minimum first");
  EXPECT_EQ(failure_of("hue_degree=99999999999"),
            "hue_degree=99999999999 is refused: the range is any 32-bit number");
  EXPECT_EQ(failure_of("rgb_gamma_table=5"),
            "rgb_gamma_table is a table of 256 bytes: write rgb_gamma_table=@FILE");
  write("short", "abc");
  EXPECT_NE(failure_of("rgb_gamma_table=@" + path("short")).find("has 3 bytes"), std::string::npos);
  EXPECT_NE(failure_of("rgb_gamma_table=@" + path("none")).find("cannot read"), std::string::npos);
}

class ControlsFromTheCommandLine : public ControlsTable {};

TEST_F(ControlsFromTheCommandLine, EveryDefaultIsAccepted) {
  run_well({"simulate", "--scene", "flat", "--size", "128x32", "-o", "frame.raw"});
  const std::string plain = run_well({"convert", "frame.raw", "--size", "128x32", "--md5"}).out;
  for (const Control &control : controls())
    EXPECT_EQ(run_well({"convert", "frame.raw", "--size", "128x32", "--md5", "--set",
                        default_assignment(control)})
                  .out,
              plain)
        << control.name;
}

}  // namespace
}  // namespace ppl_test
