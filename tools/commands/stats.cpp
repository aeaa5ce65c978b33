#include <fmt/core.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/failure.h"
#include "base/raw_input.h"
#include "commands/commands.h"
#include "commands/options.h"
#include "library/context.h"
#include "library/raw_stream.h"
#include "pictures/file_formats.h"
#include "pictures/output.h"
#include "sheets/frame_report.h"
#include "sheets/statistics_sheet.h"

namespace ppl::tool {
namespace {

struct Options {
  std::string input, size, output;
  ControlOptions controls;
  std::optional<uint64_t> frames;
};

void draw_statistics(const Options &options) {
  const Size size = parse_size(options.size);
  if (options.frames && *options.frames == 0) throw UsageError("--frames takes at least 1");
  const Container container = container_of(options.output);
  if (options.output != "-" && container != Container::png && container != Container::ppm)
    throw UsageError(
        fmt::format("the sheet is a picture: name it .png or .ppm, not '{}'", options.output));

  const Context context;
  set_frame_size(context, size);
  options.controls.apply(context);
  if (ppl_decimation(context) != 0 || ppl_decimation_top_black_lines(context) != 0 ||
      ppl_decimation_bottom_black_lines(context) != 0)
    throw Failure("the sheet shows the frame at its own size: leave out decimation");

  RawInput input(options.input, size, {raw_bytes(size)}, options.frames);
  FrameRunner runner(context, size, Format::i420);
  const uint64_t last = options.frames.value_or(1);
  std::vector<uint8_t> raw;
  FrameView view{};
  for (uint64_t frame = 1; frame <= last; ++frame) {
    input.read(runner.raw());
    if (frame == last) raw.assign(runner.raw(), runner.raw() + raw_bytes(size));
    view = runner.run();
  }

  const FrameReport report =
      FrameReporter(size, options.controls.all()).report(context, to_picture(view), raw);
  const Picture sheet = statistics_sheet(report, context, options.input);
  write_file(options.output, container == Container::ppm ? encode_ppm(sheet) : encode_png(sheet));
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
  add_quality_option(command, options->controls);
  add_control_options(command, options->controls);
  command
      ->add_option("--frames", options->frames, "run so many frames and draw the last (default 1)")
      ->type_name("N");
  command->callback([options] { draw_statistics(*options); });
}

}  // namespace ppl::tool
