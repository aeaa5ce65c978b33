#include "commands/options.h"

#include <fmt/core.h>

#include <map>

namespace ppl::tool {

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
