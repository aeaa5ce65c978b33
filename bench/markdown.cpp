#include <fmt/core.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <iterator>
#include <string_view>
#include <vector>

#include "report.h"

namespace ppl::bench {
namespace {

constexpr std::string_view heading = "\n## Figures\n";

std::string row(const std::vector<std::string> &cells) {
  std::string line = "|";
  for (const std::string &cell : cells) line += " " + cell + " |";
  return line + "\n";
}

std::string header(const std::vector<std::string> &cells) {
  std::string line = row(cells) + "|---|";
  for (size_t i = 1; i < cells.size(); ++i) line += "---:|";
  return line + "\n";
}

struct Column {
  std::string title;
  std::function<std::string(const Comparison &)> cell;  // empty if the comparison has none
};

// A line for each comparison that has any of the columns; columns that no comparison has are left
// out.
std::string table(const Section &section, const std::string &corner, std::vector<Column> columns) {
  const auto &all = section.comparisons;
  std::erase_if(columns, [&all](const Column &column) {
    return std::all_of(all.begin(), all.end(),
                       [&column](const Comparison &c) { return column.cell(c).empty(); });
  });
  if (columns.empty()) return "";
  std::vector<std::string> titles = {corner};
  for (const Column &column : columns) titles.push_back(column.title);
  std::string text = "\n" + header(titles);
  for (const Comparison &comparison : all) {
    std::vector<std::string> cells = {comparison.name};
    std::replace(cells[0].begin(), cells[0].end(), '/', ' ');
    for (const Column &column : columns) cells.push_back(column.cell(comparison));
    text += row(cells);
  }
  return text;
}

std::vector<Column> times(const Section &section) {
  std::vector<Column> columns;
  std::vector<std::string> names;
  for (const Comparison &comparison : section.comparisons) {
    for (const Route &route : comparison.routes) {
      if (std::find(names.begin(), names.end(), route.name) == names.end()) {
        names.push_back(route.name);
      }
    }
  }
  columns.reserve(names.size());
  for (const std::string &name : names) {
    columns.push_back({name, [name](const Comparison &comparison) -> std::string {
                         const Route *const route = comparison.find(name);
                         if (route == nullptr || !route->measured()) return "";
                         return fmt::format("{:.3f}{}", route->summary.minimum / comparison.pixels,
                                            route->summary.noisy ? "*" : "");
                       }});
  }
  return columns;
}

std::vector<Column> ratios(const Section &section) {
  std::vector<Column> columns;
  for (const RoutePair &pair : section.highlights) {
    columns.push_back(
        {pair.route + " / " + pair.other, [pair](const Comparison &comparison) -> std::string {
           const Route *const route = comparison.find(pair.route);
           const double r = route != nullptr ? ratio(comparison, *route, pair.other) : 0;
           return r > 0 ? fmt::format("{:.2f}", r) : "";
         }});
  }
  return columns;
}

std::vector<Column> stage_costs(const Section &section) {
  std::vector<Column> columns;
  for (const StageCost &stage : section.stage_costs) {
    const auto &[with, without] = stage.with_and_without;
    columns.push_back({fmt::format("{} ({} - {})", stage.stage, with, without),
                       [stage](const Comparison &comparison) -> std::string {
                         const double time = cost(comparison, stage);
                         return time != 0 ? fmt::format("{:.3f}", time) : "";
                       }});
  }
  return columns;
}

std::string section_text(const Section &section) {
  std::string explanation = section.explanation;
  std::replace(explanation.begin(), explanation.end(), '\n', ' ');
  return fmt::format("\n### {}\n\n{}\n", section.title, explanation) +
         table(section, "ns/pixel", times(section)) + table(section, "ratio", ratios(section)) +
         table(section, "ns/pixel of a stage", stage_costs(section));
}

std::string targets_text(const Suite &suite) {
  const std::vector<TargetResult> results = target_results(suite);
  if (results.empty()) return "";
  std::string text = "\n### Targets\n\n" + header({"", "ratio", "at most", "reach", ""});
  for (const TargetResult &result : results) {
    text += row({result.name, result.ratio > 0 ? fmt::format("{:.3f}", result.ratio) : "",
                 fmt::format("{:.2f}", result.target.limit),
                 fmt::format("{:.2f}", result.target.reach), result.verdict});
  }
  return text;
}

}  // namespace

bool write_markdown(const std::string &path, const Suite &suite,
                    const RunDescription &description) {
  std::ifstream before(path);
  std::string text((std::istreambuf_iterator<char>(before)), std::istreambuf_iterator<char>());
  before.close();
  const size_t end = text.find(heading);
  if (end == std::string::npos) return false;
  text.resize(end + heading.size());

  text += fmt::format(
      "\n{}, compiler {}; at least {} quiet repetitions of each route, in turns. Times are minima; "
      "a\n"
      "* marks those with too few quiet repetitions.\n",
      description.processor, __VERSION__, description.rounds);
  for (const Section &section : suite) text += section_text(section);
  text += targets_text(suite);
  std::ofstream file(path);
  file << text;
  file.close();
  return !file.fail();
}

}  // namespace ppl::bench
