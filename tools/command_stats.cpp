#include <fmt/core.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "commands.h"
#include "controls_table.h"
#include "failure.h"
#include "frame_report.h"
#include "picture_file.h"
#include "picture_output.h"
#include "raw_input.h"
#include "statistics_sheet.h"
#include "stream.h"

namespace ppl::tool {
namespace {

struct Options {
  std::string input, size, output, tier;
  std::optional<uint32_t> quality;
  std::optional<uint64_t> frames;
  std::vector<std::string> assignments;
};

void draw_statistics(const Options &options) {
  const Size size = parse_size(options.size);
  if (options.frames && *options.frames == 0) throw UsageError("--frames takes at least 1");
  const Container container = container_of(options.output);
  if (options.output != "-" && container != Container::kPng && container != Container::kPpm)
    throw UsageError(
        fmt::format("the sheet is a picture: name it .png or .ppm, not '{}'", options.output));

  std::vector<std::string> assignments;
  if (options.quality) assignments.push_back(fmt::format("quality={}", *options.quality));
  if (!options.tier.empty())
    assignments.push_back(options.tier == "p3" ? "P3_only=1" : "P3_only=0");
  assignments.insert(assignments.end(), options.assignments.begin(), options.assignments.end());

  const Context context;
  set_frame_size(context, size);
  for (const std::string &assignment : assignments) set_control(context, assignment);
  if (options.tier == "sse2" && tier_of(context) != Tier::kSse2)
    throw Failure("the sse2 tier cannot run here: leave out --tier, or use --tier p3");
  if (ppl_decimation(context) != 0 || ppl_decimation_top_black_lines(context) != 0 ||
      ppl_decimation_bottom_black_lines(context) != 0)
    throw Failure("the sheet shows the frame at its own size: leave out decimation");

  RawInput input(options.input, size, options.frames);
  FrameRunner runner(context, size, Format::kI420);
  const uint64_t last = options.frames.value_or(1);
  std::vector<uint8_t> raw;
  FrameView view{};
  for (uint64_t frame = 1; frame <= last; ++frame) {
    input.read(runner.raw());
    if (frame == last)
      raw.assign(runner.raw(), runner.raw() + static_cast<size_t>(size.width) * size.height);
    view = runner.run();
  }

  const FrameReport report =
      FrameReporter(size, assignments).report(context, to_picture(view), raw);
  const Picture sheet = statistics_sheet(report, context, options.input);
  write_file(options.output, container == Container::kPpm ? encode_ppm(sheet) : encode_png(sheet));
  if (options.output == "-") return;
  fmt::print("{}\n{}\n", report.exposure.text, report.white_balance.text);
}

}  // namespace

void add_stats(CLI::App &app) {
  CLI::App *command = app.add_subcommand(
      "stats",
      "Examples:\n"
      "  ppl stats frame.raw --size 640x480 -o sheet.png\n"
      "  ppl stats frame.raw --size 640x480 -o sheet.png --quality 0 --set rgb_gain=1.5,1.0,1.8\n"
      "  ppl stats film.raw --size 640x480 -o sheet.png --frames 10      the tenth frame\n"
      "\n"
      "Draws a frame and its statistics as one picture, and says whether exposure and white "
      "balance are right.\n");
  const auto options = std::make_shared<Options>();
  command->add_option("input", options->input, "raw frames, 8 bits a sample; - for standard input")
      ->type_name("IN")
      ->required();
  command
      ->add_option("-o,--output", options->output,
                   "picture to write, .png or .ppm; - for PNG on standard output")
      ->type_name("OUT")
      ->required();
  command->add_option("-s,--size", options->size, "size of the raw frames")
      ->type_name("WxH")
      ->required();
  command->add_option("-q,--quality", options->quality, "pipeline 0 to 14 (default 3)")
      ->type_name("N");
  command
      ->add_option("--set", options->assignments,
                   "set a control; may be repeated (ppl controls lists them)")
      ->type_name("NAME=VALUE")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  command->add_option("--tier", options->tier, "p3 or sse2 (default: the best)")
      ->type_name("TIER")
      ->check(CLI::IsMember({"p3", "sse2"}).description(""));
  command
      ->add_option("--frames", options->frames, "run so many frames and draw the last (default 1)")
      ->type_name("N");
  command->callback([options] { draw_statistics(*options); });
}

}  // namespace ppl::tool
