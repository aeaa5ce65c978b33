#include <fmt/core.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>

#include "commands/commands.h"
#include "library/controls_table.h"

namespace ppl::tool {
namespace {

void print_text() {
  size_t name_width = 0, range_width = 0;
  for (const Control &control : controls()) {
    name_width = std::max(name_width, std::strlen(control.name));
    range_width = std::max(range_width, control.range_in_words().size());
  }
  fmt::print("Set with ppl convert --set NAME=VALUE; lists with commas, tables with @FILE.\n");
  const char *family = "";
  for (const Control &control : controls()) {
    if (std::strcmp(family, control.family) != 0) {
      family = control.family;
      fmt::print("\n{}\n", family);
    }
    fmt::print("  {:<{}}  {}\n", control.name, name_width, control.text);
    fmt::print("  {:<{}}  range {}, default {}, unit {}\n", "", name_width,
               control.range_in_words(), control.initial, control.unit);
  }
}

void print_json() {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const Control &control : controls()) {
    nlohmann::ordered_json entry;
    entry["name"] = control.name;
    entry["family"] = control.family;
    if (control.table_bytes) {
      entry["table_bytes"] = control.table_bytes;
    } else {
      entry["numbers"] = control.numbers;
      if (control.optional_numbers) entry["optional_numbers"] = control.optional_numbers;
      nlohmann::ordered_json low = nlohmann::ordered_json::array(), high = low;
      for (size_t i = 0; i < control.numbers; ++i) {
        low.push_back(control.range(i).low);
        high.push_back(control.range(i).high);
      }
      entry["minimum"] = low;
      entry["maximum"] = high;
    }
    entry["range"] = control.range_in_words();
    entry["default"] = control.initial;
    entry["unit"] = control.unit;
    entry["text"] = control.text;
    entry["setters"] = control.setters;
    list.push_back(entry);
  }
  fmt::print("{}\n", list.dump(1));
}

}  // namespace

void add_controls(CLI::App &app) {
  CLI::App *command =
      app.add_subcommand("controls",
                         "Examples:\n"
                         "  ppl controls\n"
                         "  ppl controls --json\n"
                         "\n"
                         "Lists every control: name, range, default, unit, what it does.\n");
  const auto json = std::make_shared<bool>(false);
  command->add_flag("--json", *json, "as JSON, with the library functions behind each control");
  command->callback([json] { *json ? print_json() : print_text(); });
}

}  // namespace ppl::tool
