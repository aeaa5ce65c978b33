// The table of controls, setting and getting, profiles.
#include <fstream>
#include <iterator>
#include <regex>
#include <set>

#include "layer/layer_fixture.h"

namespace ppl_test {
namespace {

using ppl::Control;
using ppl::ControlKind;
using ppl::Controls;
using ppl::Pipeline;
using ppl::PixelFormat;
using ppl::Profile;
using ppl::RawFormat;

using Values = std::vector<int64_t>;

constexpr uint32_t width = 160, height = 48;
constexpr RawFormat bggr{.width = width, .height = height};

class LayerControls : public LayerTest {
 protected:
  void SetUp() override {
    LayerTest::SetUp();
    pipeline.emplace(bggr);
  }
  void TearDown() override {
    pipeline.reset();
    LayerTest::TearDown();
  }

  Controls &controls() { return pipeline->controls(); }

  std::string refusal(std::string_view name, Values values) {
    return sentence_of([&] { controls().set(name, values); });
  }

  std::optional<Pipeline> pipeline;
};

// Inside the control's range, and other than its default and than each other where that goes.
Values other_values(const Control &control) {
  Values values;
  for (size_t i = 0; i < control.count; ++i) {
    const ppl::Range &range = control.range(i);
    const auto number = static_cast<int64_t>(i);
    values.push_back(std::clamp<int64_t>(5 + number * 3 % 200, range.low, range.high));
  }
  if (control.kind == ControlKind::flag) values[0] = 1 - control.initial[0];
  if (control.name == "quality") values = {1};
  if (control.name == "sensor_type") values = {22856};
  if (control.name == "decimation") values = {1, 2, 4};
  return values;
}

// ---- The table ----

TEST_F(LayerControls, TheTableReachesEverySetterOfTheHeaderAndNoOther) {
  std::ifstream file(PPL_HEADER);
  const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  const std::regex setter("PPL_CALL (ppl_(set|copy|enable|disable)_\\w+)\\(");
  std::set<std::string_view> reached;
  std::set<std::string> declared;
  for (std::sregex_iterator it(text.begin(), text.end(), setter), end; it != end; ++it)
    declared.insert((*it)[1]);
  for (const Control &control : ppl::control_table())
    reached.insert(control.functions.begin(), control.functions.end());
  EXPECT_GE(declared.size(), 60u);
  EXPECT_EQ(reached, std::set<std::string_view>(declared.begin(), declared.end()));
}

TEST_F(LayerControls, EveryControlTellsWhatThereIsToKnow) {
  std::set<std::string_view> names;
  for (const Control &control : ppl::control_table()) {
    SCOPED_TRACE(control.name);
    EXPECT_TRUE(names.insert(control.name).second);
    EXPECT_EQ(ppl::find_control(control.name), &control);
    EXPECT_FALSE(control.family.empty());
    EXPECT_FALSE(control.unit.empty());
    EXPECT_FALSE(control.text.empty());
    EXPECT_FALSE(control.functions.empty());
    EXPECT_FALSE(control.range_text().empty());
    EXPECT_FALSE(control.default_text().empty());
    EXPECT_FALSE(ppl::name_of(control.kind).empty());
    EXPECT_EQ(control.initial.size(), control.count);
    EXPECT_TRUE(control.ranges.size() == 1 || control.ranges.size() == control.count);
    EXPECT_EQ(control.kind == ControlKind::choice, !control.choices.empty());
    for (const std::string_view other : control.stands_for)
      EXPECT_TRUE(ppl::control_named(other).in_profile());
    if (control.is_kept) {
      EXPECT_NO_THROW(ppl::require_values(control, control.initial));
    }
  }
}

TEST_F(LayerControls, DefaultsAreThoseOfAFreshContext) {
  for (const Control &control : ppl::control_table())
    EXPECT_EQ(controls().get(control.name), control.initial) << control.name;
  const PplContext *const ctx = pipeline->context();
  EXPECT_EQ(ppl_quality(ctx), 3u);
  EXPECT_EQ(ppl_mean_collection(ctx), 1);
  EXPECT_EQ(ppl_P3_only(ctx), 0);
  EXPECT_EQ(ppl_h_mirror(ctx) + ppl_v_mirror(ctx), 0);
  EXPECT_EQ(ppl_decimation(ctx), 0);
}

TEST_F(LayerControls, WhatIsSetReachesTheLibraryAndIsReadBackAndReset) {
  for (const Control &control : ppl::control_table()) {
    if (!control.is_kept) continue;
    SCOPED_TRACE(control.name);
    const Values before = controls().get(control.name), values = other_values(control);
    ASSERT_NE(values, before);
    controls().set(control.name, values);
    EXPECT_EQ(controls().get(control.name), values);
    EXPECT_EQ(controls().get_text(control.name), ppl::values_text(values));
    controls().reset(control.name);
    EXPECT_EQ(controls().get(control.name), before);
    controls().set_text(control.name, ppl::values_text(values));
    EXPECT_EQ(controls().get(control.name), values);
    controls().reset(control.name);
    controls().reset();
  }
  EXPECT_TRUE(controls().profile().empty());
}

TEST_F(LayerControls, TheOutputsControlsReachTheLibrary) {
  const PplContext *const ctx = pipeline->context();
  controls().set("quality", 14);
  EXPECT_EQ(ppl_quality(ctx), 14u);
  EXPECT_EQ(pipeline->output().quality, 14u);
  controls().set("P3_only", 1);
  EXPECT_EQ(ppl_P3_only(ctx), 1);
  EXPECT_EQ(pipeline->tier(), ppl::Tier::p3);
  controls().set("mean_collection", 0);
  EXPECT_EQ(ppl_mean_collection(ctx), 0);
  controls().set("h_mirror", 1);
  EXPECT_EQ(ppl_h_mirror(ctx), 1);
  controls().set_text("decimation", "1");
  EXPECT_EQ(ppl_decimation(ctx), 1);
  EXPECT_EQ(pipeline->layout().width, width / 2);
  pipeline->set_output({.quality = 2, .v_mirror = true});
  EXPECT_EQ(controls().get_number("quality"), 2);
  EXPECT_EQ(controls().get_number("v_mirror"), 1);
  EXPECT_EQ(controls().get_number("h_mirror"), 0);
}

TEST_F(LayerControls, MirrorsOfTheMosaicAreNobodysAffair) {
  Pipeline turned(RawFormat{.width = width, .height = height, .mosaic = ppl::Mosaic::gbrg});
  EXPECT_EQ(turned.controls().get_number("h_mirror"), 0);
  EXPECT_TRUE(turned.controls().profile().empty());
  turned.controls().set("h_mirror", 1);
  EXPECT_EQ(turned.controls().get_number("h_mirror"), 1);
  EXPECT_EQ(ppl_h_mirror(turned.context()), 0) << "two mirrors are none";
}

TEST_F(LayerControls, ValuesOutsideTheRangeAreRefusedEverywhere) {
  for (const Control &control : ppl::control_table()) {
    SCOPED_TRACE(control.name);
    const Values before = controls().get(control.name);
    const Values good = control.is_kept ? control.initial : Values{22356};
    for (size_t i = 0; i < std::min<size_t>(control.count, 20); ++i)
      for (const int64_t value : {control.range(i).low - 1, control.range(i).high + 1, INT64_MAX}) {
        Values values = good;
        values[i] = value;
        const std::string sentence = refusal(control.name, values);
        EXPECT_EQ(sentence.rfind(std::string(control.name) + "=", 0), 0u) << sentence;
        EXPECT_NE(sentence.find(control.range_text()), std::string::npos) << sentence;
      }
    Values longer = good;
    longer.push_back(0);
    EXPECT_NE(refusal(control.name, longer), "accepted");
    EXPECT_NE(refusal(control.name, {}), "accepted");
    EXPECT_EQ(controls().get(control.name), before);
  }
}

TEST_F(LayerControls, BothEndsOfEveryRangeAreTaken) {
  for (const Control &control : ppl::control_table()) {
    if (control.process_wide || control.name == "quality") continue;
    SCOPED_TRACE(control.name);
    Values low, high;
    for (size_t i = 0; i < control.count; ++i) {
      low.push_back(control.range(i).low);
      high.push_back(control.range(i).high);
    }
    if (control.name == "decimation") high[0] = 1;
    EXPECT_EQ(refusal(control.name, low), "accepted");
    EXPECT_EQ(refusal(control.name, high), "accepted");
    controls().reset();
  }
}

TEST_F(LayerControls, RefusalsSayWhatIsExpected) {
  EXPECT_EQ(refusal("qualty", {3}), "there is no control 'qualty'; did you mean 'quality'?");
  EXPECT_EQ(refusal("quality", {15}), "quality=15 is refused: the range is 0 to 14");
  EXPECT_EQ(refusal("quality", {3, 4}), "quality takes 1 number (0 to 14), not 2 values");
  EXPECT_EQ(refusal("qual_R", {20, 10}),
            "qual_R=20,10 is refused: the range is 0 to 255 each, the minimum first");
  EXPECT_EQ(refusal("qual_RGB", {0, 1, 0, 1, 3, 2}),
            "qual_RGB=0,1,0,1,3,2 is refused: the range is 0 to 255 each, each minimum first");
  EXPECT_EQ(refusal("rgb_gain", {2048, 0, 0}),
            "rgb_gain=2048,0,0 is refused: the range is 0 to 2047 each");
  EXPECT_EQ(refusal("sensor_type", {22357}),
            "sensor_type=22357 is refused: the range is 22356, 22856, 4347471 or 122965837");
  EXPECT_EQ(refusal("sensor_type", {22356}), "accepted");
  EXPECT_EQ(sentence_of([&] { controls().set_bytes("quality", Bytes(1)); }),
            "quality is no table: its range is 0 to 14");
  EXPECT_EQ(sentence_of([&] { controls().set_bytes("rgb_gamma_table", Bytes(255)); }),
            "rgb_gamma_table takes 256 numbers (256 bytes), not 255 values");
  EXPECT_EQ(sentence_of([&] { controls().get("gama"); }),
            "there is no control 'gama'; did you mean 'gamma'?");
  EXPECT_EQ(sentence_of([&] { controls().get_number("rgb_gain"); }),
            "rgb_gain has 3 values: ask for all of them");
}

TEST_F(LayerControls, TextTakesListsAndDecimalFractions) {
  const auto refused = [&](std::string_view name, std::string_view text) {
    return sentence_of([&] { controls().set_text(name, text); });
  };
  controls().set_text("rgb_gain", "1.5,1.0,+2");
  EXPECT_EQ(controls().get_text("rgb_gain"), "384,256,2");
  controls().set_text("decimation", "-1");
  EXPECT_EQ(controls().get_text("decimation"), "-1,0,0");
  EXPECT_EQ(refused("edge_threshold", "1.5"),
            "edge_threshold takes whole numbers (0 to 1530), not '1.5'");
  EXPECT_EQ(refused("quality", ""), "quality takes numbers (0 to 14), not ''");
  EXPECT_EQ(refused("quality", "three"), "quality takes numbers (0 to 14), not 'three'");
  EXPECT_EQ(refused("quality", "3,"), "quality takes 1 number (0 to 14), not '3,'");
  EXPECT_EQ(refused("rgb_gain", "256"), "rgb_gain takes 3 numbers (0 to 2047 each), not '256'");
  EXPECT_EQ(refused("decimation", "0,0,0,0"),
            "decimation takes 1 to 3 numbers (-1 to 2, 0 to 1024, 0 to 1024), not '0,0,0,0'");
  EXPECT_EQ(refused("hue_degree", "99999999999"),
            "hue_degree=99999999999 is refused: the range is any 32-bit number");
}

TEST_F(LayerControls, WhatTheStreamHasNoPictureForIsRefused) {
  pipeline->set_output({.format = PixelFormat::rgb24});
  EXPECT_EQ(refusal("quality", {14}),
            "quality 14 makes no rgb24: take i420, yuyv or uyvy, or quality 0");
  EXPECT_EQ(refusal("decimation", {2, 0, 0}),
            "raw frames have no picture at decimation 2, its lines run into each other: take 1");
  EXPECT_EQ(pipeline->output().quality, 3u);
  EXPECT_EQ(ppl_quality(pipeline->context()), 3u);
  EXPECT_EQ(pipeline->output().decimation, 0);
}

TEST_F(LayerControls, GammaAndContrastLeadTheirTables) {
  controls().set("gamma", -17);
  const Bytes identity_like = controls().get_bytes("rgb_gamma_table");
  EXPECT_EQ(identity_like[100], 100);
  controls().set_bytes("rgb_gamma_table", Bytes(256, 9));
  controls().reset("rgb_gamma_table");
  EXPECT_EQ(controls().get_bytes("rgb_gamma_table"), identity_like) << "the curve of gamma";

  controls().set("contrast_c", 20);
  EXPECT_EQ(controls().get("contrast_xy"), (Values{20, 0}));
  const Bytes curve = controls().get_bytes("contrast_table");
  controls().set("contrast_xy", {0, 30});
  EXPECT_NE(controls().get_bytes("contrast_table"), curve);
  controls().reset("contrast_table");
  EXPECT_EQ(controls().get_bytes("contrast_table"), curve);
  EXPECT_EQ(controls().get_number("contrast_c"), 20);

  // A reset also brings back what only they know.
  controls().set("contrast_c", 0);
  controls().set("contrast_xy", {0, 30});
  controls().set("gamma", 0);
  controls().set_bytes("rgb_gamma_table", Bytes(256, 9));
  controls().reset();
  EXPECT_EQ(controls().get("contrast_xy"), (Values{0, 0}));
  EXPECT_EQ(ppl_nf20_12_gamma(pipeline->context(), nullptr, nullptr, nullptr), 1843);
}

TEST_F(LayerControls, FamiliesOfCurvesBelongToAllAndComeBack) {
  Pipeline other(bggr);
  const Bytes family = controls().get_bytes("gamma_tables65x256");
  controls().set_bytes("gamma_tables65x256", Bytes(family.size(), 3));
  EXPECT_EQ(other.controls().get_bytes("gamma_tables65x256"), Bytes(family.size(), 3));
  EXPECT_TRUE(controls().profile().empty()) << "and are no part of a profile";
  // A curve of somebody's own is, whatever the families are where it is loaded.
  controls().set("gamma", 4);
  const Profile profile = controls().profile();
  EXPECT_EQ(profile.names(), (std::vector<std::string_view>{"gamma", "rgb_gamma_table"}));
  controls().reset("gamma_tables65x256");
  EXPECT_EQ(other.controls().get_bytes("gamma_tables65x256"), family);
  other.controls().load(profile);
  EXPECT_EQ(other.controls().get_bytes("rgb_gamma_table"), Bytes(256, 3));
  EXPECT_EQ(other.controls().profile(), profile);
}

TEST_F(LayerControls, AProfileOfABuiltInCurveDoesNotDependOnTheFamilies) {
  controls().set("gamma", 9);
  const Profile profile = controls().profile();
  const Bytes curve = controls().get_bytes("rgb_gamma_table");
  controls().set_bytes("gamma_tables65x256", Bytes(65 * 256, 3));
  Pipeline other(bggr);
  other.controls().load(profile);
  EXPECT_EQ(other.controls().get_bytes("rgb_gamma_table"), curve);
  other.controls().reset();
  EXPECT_TRUE(other.controls().profile().empty());
  controls().reset("gamma_tables65x256");
}

// ---- Profiles ----

void set_everything(Controls &controls) {
  for (const Control &control : ppl::control_table())
    if (control.in_profile()) controls.set(control.name, other_values(control));
}

TEST_F(LayerControls, AProfileBringsBackEverythingByteForByte) {
  set_everything(controls());
  const Profile saved = controls().profile();
  size_t in_profile = 0;
  for (const Control &control : ppl::control_table()) in_profile += control.in_profile() ? 1 : 0;
  EXPECT_EQ(saved.names().size(), in_profile);
  const std::string text = saved.to_json();
  const Profile loaded = Profile::from_json(text);
  EXPECT_EQ(loaded, saved);
  EXPECT_EQ(loaded.to_json(), text);

  Pipeline other(bggr);
  other.controls().set("edge_threshold", 7);
  other.controls().load(loaded);
  EXPECT_EQ(other.controls().profile().to_json(), text);
  EXPECT_EQ(other.output(), pipeline->output());
  const Bytes frame = noise(width * height, 1);
  EXPECT_EQ(run_guarded(other, frame), run_guarded(*pipeline, frame));
  other.controls().load(Profile());
  EXPECT_TRUE(other.controls().profile().empty());
}

TEST_F(LayerControls, AProfileHoldsWhatDiffersAndNothingElse) {
  EXPECT_EQ(controls().profile().to_json(), "{\n  \"ppl_profile\": 1,\n  \"controls\": {}\n}\n");
  controls().set("h_mirror", 1);
  controls().set("nf88_r_gain", 300);
  controls().set("hue_degree", -30);
  controls().set("edge_threshold", 100);
  EXPECT_EQ(controls().profile().to_json(),
            "{\n  \"ppl_profile\": 1,\n  \"controls\": {\n    \"rgb_gain\": [300, 256, 256],\n    "
            "\"h_mirror\": true,\n    \"hue_degree\": 330\n  }\n}\n");
}

TEST_F(LayerControls, ProfilesCanBeChangedByHand) {
  Profile profile;
  profile.set("rgb_gain", {300, 256, 256});
  profile.set("quality", {1});
  EXPECT_EQ(*profile.find("rgb_gain"), (Values{300, 256, 256}));
  EXPECT_TRUE(profile.erase("quality"));
  EXPECT_FALSE(profile.erase("quality"));
  EXPECT_EQ(profile.find("quality"), nullptr);
  EXPECT_EQ(sentence_of([&] { profile.set("r_delta", {1}); }),
            "r_delta is no part of a profile: set rgb_delta there");
  EXPECT_EQ(sentence_of([&] { profile.set("sensor_type", {22356}); }),
            "sensor_type is no part of a profile, since no stream owns it: leave it out");
}

TEST_F(LayerControls, TextThatIsNoProfileIsRefusedWithAReason) {
  const auto refused = [](std::string_view text) {
    return sentence_of([&] { Profile::from_json(text); });
  };
  const auto with = [&](std::string_view member) {
    return refused("{\"ppl_profile\": 1, \"controls\": {" + std::string(member) + "}}");
  };
  EXPECT_EQ(with(""), "accepted");
  EXPECT_EQ(with("\"qualty\": 3"), "there is no control 'qualty'; did you mean 'quality'?");
  EXPECT_EQ(with("\"quality\": 15"), "quality=15 is refused: the range is 0 to 14");
  EXPECT_EQ(with("\"quality\": 99999999999999999999"),
            "quality takes an integer in a profile, and the range is 0 to 14");
  EXPECT_EQ(with("\"quality\": 18446744073709551615"),
            "quality=9223372036854775807 is refused: the range is 0 to 14");
  EXPECT_EQ(with("\"quality\": 3.0"),
            "quality takes an integer in a profile, and the range is 0 to 14");
  EXPECT_EQ(with("\"quality\": true"),
            "quality takes an integer in a profile, and the range is 0 to 14");
  EXPECT_EQ(with("\"quality\": \"3\""),
            "quality takes an integer in a profile, and the range is 0 to 14");
  EXPECT_EQ(with("\"h_mirror\": 1"),
            "h_mirror takes true or false in a profile, and the range is 0 to 1");
  EXPECT_EQ(with("\"rgb_gain\": 256"),
            "rgb_gain takes an array of integers in a profile, and the range is 0 to 2047 each");
  EXPECT_EQ(with("\"rgb_gain\": [256, 256]"),
            "rgb_gain takes 3 numbers (0 to 2047 each), not 2 values");
  EXPECT_EQ(with("\"rgb_gain\": [256, 256, 2048]"),
            "rgb_gain=256,256,2048 is refused: the range is 0 to 2047 each");
  EXPECT_EQ(with("\"qual_R\": [2, 1]"),
            "qual_R=2,1 is refused: the range is 0 to 255 each, the minimum first");
  EXPECT_EQ(with("\"nf88_r_gain\": 256"),
            "nf88_r_gain is no part of a profile: set rgb_gain there");
  EXPECT_EQ(with("\"quality\": 3, \"quality\": 1"),
            "'quality' stands twice in the profile: remove one of them");
  EXPECT_EQ(refused(""), "the profile is no JSON text from byte 1 on: save it anew or mend it");
  EXPECT_EQ(refused("{\"ppl_profile\": 1, \"controls\": {}"),
            "the profile is no JSON text from byte 34 on: save it anew or mend it");
  EXPECT_EQ(refused("{\"ppl_profile\": 1e999}"),
            "the profile has a number that no control takes: save it anew or mend it");
  EXPECT_EQ(refused("[]"),
            "the text is no profile: it takes an object with the members ppl_profile and controls");
  EXPECT_EQ(refused("{\"ppl_profile\": 2, \"controls\": {}}"),
            "the profile is of version 2, and known is 1: save it anew");
  EXPECT_EQ(refused("{\"ppl_profile\": 1, \"controls\": []}"),
            "the member controls of a profile takes an object of names and values");
  EXPECT_EQ(refused("{\"ppl_profile\": 1, \"controls\": {}, \"more\": 1}"),
            "a profile has no member 'more': remove it, or put it among the controls");
}

TEST_F(LayerControls, NothingOfARefusedProfileIsSet) {
  pipeline->set_output({.format = PixelFormat::rgb24});
  controls().set("edge_threshold", 50);
  const Profile before = controls().profile();
  Profile profile;
  profile.set("rgb_gain", {300, 256, 256});
  profile.set("gamma", {5});
  profile.set("quality", {14});
  EXPECT_EQ(sentence_of([&] { controls().load(profile); }),
            "quality 14 makes no rgb24: take i420, yuyv or uyvy, or quality 0");
  EXPECT_EQ(controls().profile(), before);
  EXPECT_EQ(pipeline->output().quality, 3u);
}

}  // namespace
}  // namespace ppl_test
