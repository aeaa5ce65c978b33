#include "measurement.h"

#include <gtest/gtest.h>

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

TEST(Filter, MinusTakesTheOthers) {
  Suite suite = two_routes();
  select(suite, Filter("-route"));
  ASSERT_EQ(suite.size(), 1u);
  EXPECT_EQ(suite[0].comparisons[0].find("route"), nullptr);
  EXPECT_NE(suite[0].comparisons[0].find("other"), nullptr);
}

TEST(Filter, WhatNothingIsCalledLeavesNothing) {
  Suite suite = two_routes();
  select(suite, Filter("nobody"));
  EXPECT_TRUE(suite.empty());
}

}  // namespace
}  // namespace ppl::bench
