#include <nlohmann/json.hpp>
#include <set>

#include "control_access.h"
#include "words.h"

namespace ppl {
namespace {

using Json = nlohmann::json;
using detail::refuse;

constexpr const char *version_name = "ppl_profile";
constexpr const char *controls_name = "controls";
constexpr int version = 1;

const Control &profile_control(std::string_view name) {
  const Control &control = control_named(name);
  if (control.in_profile()) return control;
  if (!control.stands_for.empty())
    refuse(name, " is no part of a profile: set ", control.stands_for.front(), " there");
  refuse(name, " is no part of a profile, since no stream owns it: leave it out");
}

// ---- Reading ----

// A later member of the same name would replace the earlier one without a word.
Json parse_unambiguously(std::string_view text) {
  std::vector<std::set<std::string>> names;
  const auto watch = [&names](int, Json::parse_event_t event, Json &parsed) {
    if (event == Json::parse_event_t::object_start) names.emplace_back();
    if (event == Json::parse_event_t::object_end) names.pop_back();
    if (event == Json::parse_event_t::key && !names.back().insert(parsed.get<std::string>()).second)
      refuse("'", parsed.get<std::string>(), "' stands twice in the profile: remove one of them");
    return true;
  };
  try {
    return Json::parse(text.begin(), text.end(), watch);
  } catch (const Json::parse_error &error) {
    refuse("the profile is no JSON text from byte ", error.byte, " on: save it anew or mend it");
  } catch (const Json::exception &) {
    refuse("the profile has a number that no control takes: save it anew or mend it");
  }
}

std::string_view expected(const Control &control) {
  switch (control.kind) {
    case ControlKind::flag:
      return "true or false";
    case ControlKind::integer:
    case ControlKind::choice:
      return "an integer";
    default:
      return "an array of integers";
  }
}

[[noreturn]] void refuse_kind(const Control &control) {
  refuse(control.name, " takes ", expected(control), " in a profile, and the range is ",
         control.range_text());
}

int64_t number_of(const Control &control, const Json &value) {
  if (!value.is_number_integer()) refuse_kind(control);
  // What does not fit a signed one is out of any range.
  if (value.is_number_unsigned() && value.get<uint64_t>() > INT64_MAX) return INT64_MAX;
  return value.get<int64_t>();
}

std::vector<int64_t> values_of(const Control &control, const Json &value) {
  if (control.kind == ControlKind::flag) {
    if (!value.is_boolean()) refuse_kind(control);
    return {value.get<bool>() ? 1 : 0};
  }
  if (control.count == 1) return {number_of(control, value)};
  if (!value.is_array()) refuse_kind(control);
  std::vector<int64_t> values;
  for (const Json &element : value) values.push_back(number_of(control, element));
  return values;
}

// ---- Writing ----

std::string json_text(const Control &control, std::span<const int64_t> values) {
  if (control.kind == ControlKind::flag) return values[0] ? "true" : "false";
  if (control.count == 1) return std::to_string(values[0]);
  std::string text = "[";
  for (const int64_t value : values) {
    if (text.size() > 1) text += ", ";
    text += std::to_string(value);
  }
  return text + "]";
}

}  // namespace

Profile Profile::from_json(std::string_view text) {
  const Json json = parse_unambiguously(text);
  if (!json.is_object() || !json.contains(version_name) || !json.contains(controls_name))
    refuse("the text is no profile: it takes an object with the members ", version_name, " and ",
           controls_name);
  for (const auto &[name, member] : json.items())
    if (name != version_name && name != controls_name)
      refuse("a profile has no member '", name, "': remove it, or put it among the controls");
  if (json[version_name] != version)
    refuse("the profile is of version ", json[version_name].dump(), ", and known is ", version,
           ": save it anew");
  if (!json[controls_name].is_object())
    refuse("the member ", controls_name, " of a profile takes an object of names and values");
  Profile profile;
  for (const auto &[name, value] : json[controls_name].items())
    profile.set(name, values_of(profile_control(name), value));
  return profile;
}

std::string Profile::to_json() const {
  std::string text =
      detail::words("{\n  \"", version_name, "\": ", version, ",\n  \"", controls_name, "\": {");
  const char *separator = "\n";
  for (const auto &[place, values] : values_) {
    const Control &control = control_table()[place];
    detail::add_words(
        text, detail::words(separator, "    \"", control.name, "\": ", json_text(control, values)));
    separator = ",\n";
  }
  return text + (values_.empty() ? "}\n}\n" : "\n  }\n}\n");
}

void Profile::set(std::string_view name, std::span<const int64_t> values) {
  const Control &control = profile_control(name);
  require_values(control, values);
  values_[detail::place_of(control)].assign(values.begin(), values.end());
}

void Profile::set(std::string_view name, std::initializer_list<int64_t> values) {
  set(name, std::span<const int64_t>(values.begin(), values.size()));
}

bool Profile::erase(std::string_view name) {
  const Control *control = find_control(name);
  return control != nullptr && values_.erase(detail::place_of(*control)) != 0;
}

const std::vector<int64_t> *Profile::find(std::string_view name) const {
  const Control *control = find_control(name);
  if (control == nullptr) return nullptr;
  const auto found = values_.find(detail::place_of(*control));
  return found == values_.end() ? nullptr : &found->second;
}

std::vector<std::string_view> Profile::names() const {
  std::vector<std::string_view> names;
  for (const auto &[place, values] : values_) names.push_back(control_table()[place].name);
  return names;
}

}  // namespace ppl
