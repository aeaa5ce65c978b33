#include "library/control_assignment.h"

#include <fmt/core.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <utility>
#include <vector>

#include "base/failure.h"
#include "library/controls_table.h"

namespace ppl::tool {
namespace {

size_t edit_distance(const std::string &a, const std::string &b) {
  std::vector<size_t> row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    size_t diagonal = std::exchange(row[0], i);
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t change = diagonal + (a[i - 1] != b[j - 1]);
      diagonal = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, change});
    }
  }
  return row.back();
}

std::vector<std::string> split_at_commas(const std::string &text) {
  std::vector<std::string> parts(1);
  for (const char c : text) {
    if (c == ',')
      parts.emplace_back();
    else
      parts.back() += c;
  }
  return parts;
}

int64_t parse_number(const Control &control, const std::string &text) {
  const char *begin = text.data(), *end = begin + text.size();
  if (begin != end && *begin == '+') ++begin;
  int64_t number = 0;
  const auto whole = std::from_chars(begin, end, number);
  if (begin != end && whole.ec == std::errc() && whole.ptr == end) return number;
  double fraction = 0;
  const auto decimal = std::from_chars(begin, end, fraction, std::chars_format::fixed);
  if (decimal.ec == std::errc() && decimal.ptr == end && std::fabs(fraction) < 1e6) {
    if (control.fixed88) return std::llround(fraction * 256);
    throw Failure(fmt::format("{} takes whole numbers, not '{}'", control.name, text));
  }
  throw Failure(fmt::format("{} takes numbers, not '{}'", control.name, text));
}

std::string amount(const Control &control) {
  const size_t least = control.numbers - control.optional_numbers;
  if (control.optional_numbers) return fmt::format("{} to {} numbers", least, control.numbers);
  return fmt::format("{} number{}", least, least == 1 ? "" : "s with commas in between");
}

[[noreturn]] void refuse(const Control &control, const std::string &value) {
  throw Failure(fmt::format(
      "{}={} is refused: the range is {}{}", control.name, value, control.range_in_words(),
      control.numbers == 2 && control.ranges.size() == 1 ? ", the minimum first" : ""));
}

std::vector<uint8_t> read_table_file(const Control &control, const std::string &value) {
  if (value.empty() || value[0] != '@')
    throw Failure(fmt::format("{0} is a table of {1} bytes: write {0}=@FILE", control.name,
                              control.table_bytes));
  const std::string path = value.substr(1);
  std::ifstream file(path, std::ios::binary);
  std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(file),
                             std::istreambuf_iterator<char>()};
  if (!file.is_open() || file.bad())
    throw Failure(fmt::format("cannot read '{}' for {}; check the name", path, control.name));
  if (bytes.size() != control.table_bytes)
    throw Failure(fmt::format("'{}' has {} bytes, but {} takes exactly {}", path, bytes.size(),
                              control.name, control.table_bytes));
  return bytes;
}

}  // namespace

std::string nearest_control(const std::string &name) {
  return std::min_element(controls().begin(), controls().end(),
                          [&](const Control &a, const Control &b) {
                            return edit_distance(name, a.name) < edit_distance(name, b.name);
                          })
      ->name;
}

void set_control(PplContext *context, const std::string &assignment) {
  const size_t equals = assignment.find('=');
  if (equals == std::string::npos)
    throw UsageError(fmt::format("--set takes NAME=VALUE, not '{}'", assignment));
  const std::string name = assignment.substr(0, equals), value = assignment.substr(equals + 1);
  const Control *control = find_control(name);
  if (!control)
    throw Failure(
        fmt::format("there is no control '{}'; did you mean '{}'? (ppl controls lists them all)",
                    name, nearest_control(name)));

  if (control->table_bytes) {
    if (!control->set_table(context, read_table_file(*control, value).data()))
      refuse(*control, value);
    return;
  }
  const std::vector<std::string> parts = split_at_commas(value);
  if (parts.size() > control->numbers ||
      parts.size() + control->optional_numbers < control->numbers)
    throw Failure(fmt::format("{} takes {}, not '{}'", name, amount(*control), value));
  std::vector<int64_t> numbers(control->numbers);
  for (size_t i = 0; i < parts.size(); ++i) {
    numbers[i] = parse_number(*control, parts[i]);
    if (numbers[i] < control->range(i).low || numbers[i] > control->range(i).high)
      refuse(*control, value);
  }
  if (!control->set_numbers(context, numbers.data())) refuse(*control, value);
}

}  // namespace ppl::tool
