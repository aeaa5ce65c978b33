#include <fmt/core.h>

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "commands.h"
#include "controls_table.h"
#include "failure.h"
#include "picture_output.h"
#include "progress.h"
#include "raw_input.h"
#include "statistics_json.h"
#include "stream.h"

namespace ppl::tool {
namespace {

struct Options {
  std::string input, size;
  std::optional<std::string> output, kind, statistics;
  std::optional<Format> format;
  std::optional<uint32_t> quality;
  std::optional<int> decimation;
  std::string mirror, tier;
  std::optional<uint64_t> frames;
  std::vector<std::string> assignments;
  bool md5 = false;
};

// The short options stand for controls of the same table; --set comes after them.
std::vector<std::string> assignments_of(const Options &options) {
  std::vector<std::string> list;
  if (options.quality) list.push_back(fmt::format("quality={}", *options.quality));
  if (options.decimation) list.push_back(fmt::format("decimation={}", *options.decimation));
  if (options.mirror.find('h') != std::string::npos) list.push_back("h_mirror=1");
  if (options.mirror.find('v') != std::string::npos) list.push_back("v_mirror=1");
  if (!options.tier.empty()) list.push_back(options.tier == "p3" ? "P3_only=1" : "P3_only=0");
  list.insert(list.end(), options.assignments.begin(), options.assignments.end());
  return list;
}

Format default_format(Container container, uint32_t quality) {
  const bool picture = container == Container::kPng || container == Container::kPpm;
  return picture && writes_picture(quality, Format::kRgb24) ? Format::kRgb24 : Format::kI420;
}

void note(const std::string &text) { fmt::print(stderr, "ppl: note: {}\n", text); }

void convert(const Options &options) {
  const Size size = parse_size(options.size);
  if (!options.output && !options.md5 && !options.statistics)
    throw UsageError("nothing to do: give -o OUT, --md5 or --stats FILE");
  if (options.frames && *options.frames == 0) throw UsageError("--frames takes at least 1");

  const Context context;
  set_frame_size(context, size);
  for (const std::string &assignment : assignments_of(options)) set_control(context, assignment);
  if (options.tier == "sse2" && tier_of(context) != Tier::kSse2)
    throw Failure("the sse2 tier cannot run here: leave out --tier, or use --tier p3");

  const Container container = options.kind     ? parse_container(*options.kind)
                              : options.output ? container_of(*options.output)
                                               : Container::kRaw;
  const Format format = options.format.value_or(default_format(container, ppl_quality(context)));
  if (!writes_picture(ppl_quality(context), format))
    note(fmt::format("quality {} writes no {}, so the picture stays black", ppl_quality(context),
                     format_name(format)));
  if (ppl_decimation(context) == 2)
    note("at decimation 2 lines of raw frames overlap; use 1 for a clean picture");

  RawInput input(options.input, size, options.frames);
  FrameRunner runner(context, size, format);
  FrameOutput output(options.output, container);
  std::optional<OutputFile> statistics_file;
  if (options.statistics) statistics_file.emplace(*options.statistics);

  nlohmann::ordered_json statistics;
  if (statistics_file) {
    statistics["size"] = {{"width", size.width}, {"height", size.height}};
    statistics["format"] = format_name(format);
    statistics["quality"] = ppl_quality(context);
    statistics["tier"] = tier_name(tier_of(context));
    statistics["units"] = statistics_units();
    statistics["frames"] = nlohmann::ordered_json::array();
  }

  {
    Progress progress("frame", input.frame_count());
    while (input.read(runner.raw())) {
      output.add(runner.run());
      if (statistics_file) statistics["frames"].push_back(statistics_of(context));
      progress.step();
    }
  }
  if (statistics_file) {
    const std::string text = statistics.dump(1) + "\n";
    statistics_file->write(text.data(), text.size());
  }
  output.finish();
  if (statistics_file) statistics_file->commit();

  if (options.md5) {
    const bool data_on_stdout = options.output == "-" || options.statistics == "-";
    fmt::print(data_on_stdout ? stderr : stdout, "{}  {}\n", output.md5(),
               options.output.value_or("-"));
  }
}

}  // namespace

void add_convert(CLI::App &app) {
  CLI::App *command =
      app.add_subcommand("convert",
                         "Examples:\n"
                         "  ppl convert frame.raw --size 640x480 -o frame.png\n"
                         "  ppl convert film.raw --size 640x480 -o film.y4m --quality 0\n"
                         "  ppl convert frame.raw --size 640x480 -o frame.yuv --format yuyv --set "
                         "rgb_gain=400,256,380\n"
                         "  ppl convert frame.raw --size 1280x1024 --stats frame.json --md5\n"
                         "  camera | ppl convert - --size 640x480 -o - --as y4m | player -\n"
                         "\n"
                         "Takes raw mosaic frames through the library. The output's kind follows "
                         "its name: .png, .ppm and\n"
                         ".y4m; all others get the frames' plain bytes.\n");
  const auto options = std::make_shared<Options>();
  std::map<std::string, Format> format_names;
  for (const FormatInfo &info : formats()) format_names[info.name] = info.format;

  command->add_option("input", options->input, "raw frames, 8 bits a sample; - for standard input")
      ->type_name("IN")
      ->required();
  command->add_option("-o,--output", options->output, "file to write; - for standard output")
      ->type_name("OUT");
  command->add_option("-s,--size", options->size, "size of the raw frames")
      ->type_name("WxH")
      ->required();
  command
      ->add_option("-f,--format", options->format,
                   "i420, yuyv, uyvy, rgb24 or rgb32 (default: rgb24 for .png and .ppm where the "
                   "quality writes it, else i420)")
      ->type_name("FORMAT")
      ->transform(CLI::CheckedTransformer(format_names, CLI::ignore_case).description(""));
  command
      ->add_option("--as", options->kind, "kind of file, whatever its name: raw, png, ppm or y4m")
      ->type_name("KIND");
  command->add_option("-q,--quality", options->quality, "pipeline 0 to 14 (default 3)")
      ->type_name("N");
  command
      ->add_option("--set", options->assignments,
                   "set a control; may be repeated (ppl controls lists them)")
      ->type_name("NAME=VALUE")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  command->add_option("--decimation", options->decimation, "scale: 1 halves, -1 doubles")
      ->type_name("D");
  command->add_option("--mirror", options->mirror, "h, v or hv")
      ->type_name("WAY")
      ->check(CLI::IsMember({"h", "v", "hv", "vh"}).description(""));
  command->add_option("--tier", options->tier, "p3 or sse2 (default: the best)")
      ->type_name("TIER")
      ->check(CLI::IsMember({"p3", "sse2"}).description(""));
  command->add_option("--frames", options->frames, "stop after so many frames (default: all)")
      ->type_name("N");
  command->add_option("--stats", options->statistics, "write every frame's statistics as JSON")
      ->type_name("FILE");
  command->add_flag("--md5", options->md5, "print the MD5 of the output data");
  command->callback([options] { convert(*options); });
}

}  // namespace ppl::tool
