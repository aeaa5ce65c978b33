#include "library/control_options.h"

#include <fmt/core.h>

#include <map>

#include "base/failure.h"
#include "library/context.h"
#include "library/control_assignment.h"

namespace ppl::tool {

std::vector<std::string> ControlOptions::all() const {
  std::vector<std::string> list;
  if (neutral) {
    list.push_back("gamma=-17");
    list.push_back("sensor_matrix=256,0,0,0,256,0,0,0,256,256,0,0,0,256,0,0,0,256");
  }
  if (quality) list.push_back(fmt::format("quality={}", *quality));
  if (decimation || !black_lines.empty())
    list.push_back(fmt::format("decimation={},{}", decimation.value_or(0),
                               black_lines.empty() ? "0,0" : black_lines));
  if (motion_threshold) list.push_back(fmt::format("intl_3T_threshold={}", *motion_threshold));
  if (mirror.find('h') != std::string::npos) list.push_back("h_mirror=1");
  if (mirror.find('v') != std::string::npos) list.push_back("v_mirror=1");
  if (!tier.empty()) list.push_back(tier == "p3" ? "P3_only=1" : "P3_only=0");
  list.insert(list.end(), assignments.begin(), assignments.end());
  return list;
}

void ControlOptions::apply(PplContext *context) const {
  for (const std::string &assignment : all()) set_control(context, assignment);
  if (tier == "sse2" && tier_of(context) != Tier::kSse2)
    throw Failure("the sse2 tier cannot run here: leave out --tier, or use --tier p3");
}

void add_control_options(CLI::App *command, ControlOptions &options) {
  command
      ->add_option("--set", options.assignments,
                   "set a control; may be repeated (ppl controls lists them)")
      ->type_name("NAME=VALUE")
      ->expected(1)
      ->allow_extra_args(false)  // a file name may follow
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  command->add_flag("--neutral", options.neutral,
                    "no gamma curve and no colour matrix, for mosaics made of finished pictures");
  command->add_option("--tier", options.tier, "p3 or sse2 (default: the best)")
      ->type_name("TIER")
      ->check(CLI::IsMember({"p3", "sse2"}).description(""));
}

void add_quality_option(CLI::App *command, ControlOptions &options) {
  command->add_option("-q,--quality", options.quality, "pipeline 0 to 14 (default 3)")
      ->type_name("N");
}

void add_format_option(CLI::App *command, std::optional<Format> &format,
                       const std::string &initial) {
  std::map<std::string, Format> names;
  for (const FormatInfo &info : formats()) names[info.name] = info.format;
  command
      ->add_option("-f,--format", format,
                   fmt::format("i420, yuyv, uyvy, rgb24 or rgb32 (default: {})", initial))
      ->type_name("FORMAT")
      ->transform(CLI::CheckedTransformer(names, CLI::ignore_case).description(""));
}

}  // namespace ppl::tool
