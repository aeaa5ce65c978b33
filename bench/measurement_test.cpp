#include "measurement.h"

#include <fmt/core.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <utility>

#include "report.h"
#include "runner.h"

namespace ppl::bench {
namespace {

TEST(Measurement, TimingBesideSlowProbeDoesNotCount) {
  const Summary summary = summarize({{100, 10, false}, {50, 12, false}, {110, 10.5, false}}, 10, 2);
  EXPECT_FALSE(summary.noisy);
  EXPECT_EQ(summary.counted, 2);
  EXPECT_EQ(summary.minimum, 100);
  EXPECT_EQ(summary.median, 105);
}

TEST(Measurement, InterruptedTimingDoesNotCount) {
  const Summary summary = summarize({{100, 10, false}, {50, 10, true}}, 10, 1);
  EXPECT_EQ(summary.counted, 1);
  EXPECT_EQ(summary.minimum, 100);
}

TEST(Measurement, TooFewQuietTimingsAreCalledNoisyAndAllCount) {
  const Summary summary = summarize({{100, 10, false}, {90, 20, false}, {300, 20, true}}, 10, 2);
  EXPECT_TRUE(summary.noisy);
  EXPECT_EQ(summary.counted, 3);
  EXPECT_EQ(summary.minimum, 90);
  EXPECT_EQ(summary.median, 100);
}

TEST(Measurement, NothingTimedIsNotMeasured) { EXPECT_EQ(summarize({}, 10, 1).counted, 0); }

Route route_that_writes(std::span<uint8_t> output, std::string name, uint8_t value) {
  Route route;
  route.name = std::move(name);
  route.prepare = [] {};
  route.run = [output, value] { output[1] = value; };
  return route;
}

TEST(Runner, TellsWrongFromUnavailableRoutesAndTimesTheOthers) {
  uint8_t output[2], frame[1] = {};
  Comparison comparison;
  comparison.pixels = 1;
  comparison.output = output;
  comparison.frame = frame;
  comparison.routes = {route_that_writes(output, "model", 7),
                       route_that_writes(output, "same", 7),
                       route_that_writes(output, "other", 8),
                       {.name = "idle"}};
  comparison.routes[1].same_as = comparison.routes[2].same_as = "model";
  comparison.routes[3].prepare = comparison.routes[3].run = [] {};
  Runner(1).run(comparison);
  EXPECT_TRUE(comparison.routes[0].measured());
  EXPECT_TRUE(comparison.routes[1].measured());
  EXPECT_FALSE(comparison.routes[2].measured());
  EXPECT_EQ(comparison.routes[2].wrong, "output byte 1 is 8 instead of 7 in model");
  EXPECT_FALSE(comparison.routes[3].measured());
  EXPECT_NE(comparison.routes[3].not_available, "");
}

TEST(Runner, RouteThatConsumesTheFrameOtherwiseIsWrong) {
  uint8_t output[1], frame[1];
  Comparison comparison;
  comparison.pixels = 1;
  comparison.output = output;
  comparison.frame = frame;
  for (const uint8_t left : {uint8_t{1}, uint8_t{2}}) {
    Route route;
    route.name = std::string(1, static_cast<char>('0' + left));
    route.same_as = left == 2 ? "1" : "";
    route.prepare = [&frame] { frame[0] = 0; };
    route.run = [&output, &frame, left] {
      output[0] = 9;
      frame[0] = left;
    };
    comparison.routes.push_back(route);
  }
  Runner(1).run(comparison);
  EXPECT_EQ(comparison.routes[1].wrong, "raw frame byte 0 is 2 instead of 1 in 1");
}

TEST(Runner, TolerantRouteMayDifferOnAnAverageAndInTheFrame) {
  uint8_t output[4], frame[1] = {};
  for (const auto &[value, is_wrong] : {std::pair{uint8_t{15}, false}, {uint8_t{20}, true}}) {
    Comparison comparison;
    comparison.pixels = 4;
    comparison.output = output;
    comparison.frame = frame;
    comparison.routes = {route_that_writes(output, "model", 7),
                         route_that_writes(output, "like it", value)};
    comparison.routes[1].same_as = "model";
    comparison.routes[1].tolerance = 2;  // of 8 or 13 in one of 4 bytes
    Runner(1).run(comparison);
    EXPECT_EQ(!comparison.routes[1].wrong.empty(), is_wrong) << comparison.routes[1].wrong;
  }
}

Suite two_routes() {
  Comparison comparison;
  comparison.name = "small/I420";
  comparison.routes = {
      {.name = "reference"}, {.name = "model"}, {.name = "route"}, {.name = "other"}};
  comparison.routes[2].same_as = "model";
  Section section;
  section.name = "topic";
  section.references = {"reference"};
  section.comparisons = {comparison};
  return {section};
}

TEST(Filter, KeepsWhatItsRoutesAreComparedWith) {
  Suite suite = two_routes();
  select(suite, Filter("I420/route$"));
  ASSERT_EQ(suite.size(), 1u);
  EXPECT_NE(suite[0].comparisons[0].find("route"), nullptr);
  EXPECT_NE(suite[0].comparisons[0].find("reference"), nullptr);
  EXPECT_NE(suite[0].comparisons[0].find("model"), nullptr);
  EXPECT_EQ(suite[0].comparisons[0].find("other"), nullptr);
}

TEST(Filter, LeavesRoutesAloneIfAsked) {
  Suite suite = two_routes();
  select(suite, Filter("I420/route$"), Company::none);
  ASSERT_EQ(suite.size(), 1u);
  ASSERT_EQ(suite[0].comparisons[0].routes.size(), 1u);
  EXPECT_EQ(suite[0].comparisons[0].routes[0].name, "route");
}

TEST(Filter, MinusTakesTheOthers) {
  Suite suite = two_routes();
  select(suite, Filter("-route"));
  ASSERT_EQ(suite.size(), 1u);
  EXPECT_EQ(suite[0].comparisons[0].find("route"), nullptr);
  EXPECT_NE(suite[0].comparisons[0].find("other"), nullptr);
}

// Measured: 30 ns and 10 ns for 10 pixels.
Suite measured_routes() {
  Suite suite = two_routes();
  Comparison &comparison = suite[0].comparisons[0];
  comparison.pixels = 10;
  comparison.routes = {{.name = "reference"}, {.name = "route"}};
  comparison.routes[0].summary = {.minimum = 10, .median = 11, .counted = 1};
  comparison.routes[1].summary = {.minimum = 30, .median = 33, .counted = 1, .noisy = true};
  suite[0].highlights = {{"route", "reference"}};
  suite[0].stage_costs = {{"stage", {"route", "reference"}}};
  return suite;
}

TEST(Suite, StageCostsTheDifferenceOfItsRoutes) {
  const Suite suite = measured_routes();
  EXPECT_DOUBLE_EQ(cost(suite[0].comparisons[0], suite[0].stage_costs[0]), 2);
  EXPECT_EQ(cost(suite[0].comparisons[0], {"stage", {"route", "nobody"}}), 0);
}

TEST(Suite, TargetsAreReachedMetOrMissed) {
  Suite suite = measured_routes();
  suite[0].comparisons[0].routes[1].summary.noisy = false;
  const auto verdict = [&suite](double limit, double reach) {
    suite[0].targets = {{"small/I420", "route", "reference", limit, reach}};
    return target_results(suite)[0].verdict;
  };
  EXPECT_EQ(verdict(4, 3), "reached");
  EXPECT_EQ(verdict(3, 2), "met");
  EXPECT_EQ(verdict(2, 1), "missed");
  suite[0].comparisons[0].routes[0].summary.noisy = true;
  EXPECT_EQ(verdict(2, 1), "missed (noisy)");
  suite[0].targets[0].reference = "nobody";
  EXPECT_TRUE(target_results(suite).empty());
}

// A file of this process alone: the tests of two builds may run at the same time.
class Document {
 public:
  explicit Document(const std::string &text)
      : path_(fmt::format("{}ppl_bench_{}.md", testing::TempDir(), getpid())) {
    std::ofstream(path_) << text;
  }
  ~Document() { std::remove(path_.c_str()); }

  const std::string &path() const { return path_; }
  std::string text() const {
    std::ifstream file(path_);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  std::string path_;
};

TEST(Markdown, ReplacesWhatFollowsTheHeading) {
  const Document document("# Title\n\ntext\n\n## Figures\n\nold\n");
  ASSERT_TRUE(write_markdown(document.path(), measured_routes(), {"processor", 0, 1, 1}));
  const std::string text = document.text();
  EXPECT_EQ(text.find("# Title\n\ntext\n\n## Figures\n\n"), 0u);
  EXPECT_EQ(text.find("old"), std::string::npos);
  for (const char *row : {"1.000 | 3.000*", "3.00", "2.000"}) {  // times, ratio, cost of the stage
    EXPECT_NE(text.find(fmt::format("\n| small I420 | {} |\n", row)), std::string::npos) << text;
  }
}

TEST(Markdown, RefusesFileWithoutTheHeading) {
  const Document document("# Title\n");
  EXPECT_FALSE(write_markdown(document.path(), measured_routes(), {"processor", 0, 1, 1}));
  EXPECT_EQ(document.text(), "# Title\n");
}

TEST(Filter, WhatNothingIsCalledLeavesNothing) {
  Suite suite = two_routes();
  select(suite, Filter("nobody"));
  EXPECT_TRUE(suite.empty());
}

}  // namespace
}  // namespace ppl::bench
