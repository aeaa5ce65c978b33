// Values of controls, as text and on their way in.
#include <algorithm>
#include <charconv>
#include <cmath>

#include "control_access.h"
#include "words.h"

namespace ppl {
namespace {

using detail::refuse;

std::string amount(const Control &control) {
  const size_t least = control.count - control.optional_count;
  if (control.optional_count) return detail::words(least, " to ", control.count, " numbers");
  return detail::words(least, least == 1 ? " number" : " numbers");
}

// Long tables are not worth repeating.
std::string shown(std::span<const int64_t> values) {
  constexpr size_t most_shown = 18;
  return values.size() <= most_shown ? values_text(values)
                                     : detail::words(values.size(), " numbers");
}

// Bands: minimum, maximum; maybe several of them.
bool has_order(const Control &control) {
  return control.kind == ControlKind::band || control.name == "qual_RGB";
}

[[noreturn]] void refuse_values(const Control &control, std::span<const int64_t> values) {
  refuse(control.name, "=", shown(values), " is refused: the range is ", control.range_text(),
         has_order(control) ? ", " : "", has_order(control) ? control.limits : std::string_view());
}

[[noreturn]] void refuse_count(const Control &control, std::string_view given) {
  refuse(control.name, " takes ", amount(control), " (", control.range_text(), "), not ", given);
}

bool is_chosen(const Control &control, int64_t value) {
  for (const Choice &choice : control.choices)
    if (choice.value == value) return true;
  return false;
}

int64_t parse_number(const Control &control, std::string_view text) {
  const char *begin = text.data(), *const end = begin + text.size();
  if (begin != end && *begin == '+') ++begin;
  int64_t number = 0;
  const auto whole = std::from_chars(begin, end, number);
  if (begin != end && whole.ec == std::errc() && whole.ptr == end) return number;
  double fraction = 0;
  const auto decimal = std::from_chars(begin, end, fraction, std::chars_format::fixed);
  const bool is_fraction = decimal.ec == std::errc() && decimal.ptr == end;
  if (is_fraction && control.fixed88 && std::fabs(fraction) < 1e6)
    return std::llround(fraction * 256);
  refuse(control.name, " takes ", is_fraction ? "whole numbers" : "numbers", " (",
         control.range_text(), "), not '", text, "'");
}

}  // namespace

void require_values(const Control &control, std::span<const int64_t> values) {
  if (values.size() != control.count)
    refuse_count(control, detail::words(values.size(), values.size() == 1 ? " value" : " values"));
  for (size_t i = 0; i < values.size(); ++i)
    if (values[i] < control.range(i).low || values[i] > control.range(i).high)
      refuse_values(control, values);
  if (control.kind == ControlKind::choice && !is_chosen(control, values[0]))
    refuse_values(control, values);
  for (size_t i = 0; has_order(control) && i < values.size(); i += 2)
    if (values[i] > values[i + 1]) refuse_values(control, values);
}

std::vector<int64_t> parse_values(const Control &control, std::string_view text) {
  std::vector<int64_t> values;
  for (size_t begin = 0; begin <= text.size();) {
    const size_t end = std::min(text.find(',', begin), text.size());
    if (values.size() == control.count) refuse_count(control, detail::words("'", text, "'"));
    values.push_back(parse_number(control, text.substr(begin, end - begin)));
    begin = end + 1;
  }
  if (values.size() + control.optional_count < control.count)
    refuse_count(control, detail::words("'", text, "'"));
  values.resize(control.count);
  require_values(control, values);
  return values;
}

std::string values_text(std::span<const int64_t> values) {
  std::string text;
  for (const int64_t value : values) {
    if (!text.empty()) text += ',';
    text += std::to_string(value);
  }
  return text;
}

}  // namespace ppl
