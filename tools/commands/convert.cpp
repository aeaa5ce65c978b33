#include <fmt/core.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/failure.h"
#include "base/note.h"
#include "base/progress.h"
#include "commands/commands.h"
#include "commands/options.h"
#include "library/context.h"
#include "library/frame_source.h"
#include "library/quality.h"
#include "library/statistics_json.h"
#include "pictures/output.h"

namespace ppl::tool {
namespace {

constexpr const char *mosaic_format = "bggr8";

struct Options {
  std::vector<std::string> inputs;
  std::string size, from = mosaic_format;
  std::optional<std::string> output, kind, statistics;
  std::optional<Format> format;
  ControlOptions controls;
  std::optional<uint64_t> frames;
  bool interlaced = false, no_motion_test = false, md5 = false;

  bool mosaic() const { return from == mosaic_format; }
};

// What the kind of input has no use for.
void check_usage(const Options &options) {
  if (!options.output && !options.md5 && !options.statistics)
    throw UsageError("nothing to do: give -o OUT, --md5 or --stats FILE");
  if (options.frames && *options.frames == 0) throw UsageError("--frames takes at least 1");
  if (options.mosaic() && options.interlaced)
    throw UsageError("--interlaced is for packed video: give --from yuyv or --from uyvy as well");
  if (!options.mosaic() && (options.controls.quality || options.controls.neutral))
    throw UsageError("--quality and --neutral are for raw frames: packed video has one pipeline");
  if (!options.mosaic() && options.statistics)
    throw UsageError("--stats is for raw frames: packed video has no statistics");
  if ((options.no_motion_test || options.controls.motion_threshold) && !options.interlaced)
    throw UsageError("--no-motion-test and --motion-threshold are for --interlaced");
  if (options.inputs.size() > 3)
    throw UsageError("three files at the most: even lines, odd lines and reference");
  if (options.inputs.size() > 1 && !options.interlaced)
    throw UsageError("one file at a time: several are the fields of --interlaced");
  if (std::count(options.inputs.begin(), options.inputs.end(), "-") > 1)
    throw UsageError("only one of the files can be standard input");
}

std::unique_ptr<FrameSource> open_mosaic(PplContext *context, const FrameFiles &files,
                                         const Options &options, bool picture) {
  const uint32_t quality = ppl_quality(context);
  const bool rgb = picture && writes_picture(quality, Format::rgb24);
  const Format format = options.format.value_or(rgb ? Format::rgb24 : Format::i420);
  if (!writes_picture(quality, format))
    note(fmt::format("quality {} writes no {}, so the picture stays black", quality,
                     format_name(format)));
  if (ppl_decimation(context) == 2)
    note("at decimation 2 lines of raw frames overlap; use 1 for a clean picture");
  if (shows_stripes(context, format)) note_stripes(ppl_quality(context));
  return raw_frames(context, files, format);
}

std::unique_ptr<FrameSource> open_video(PplContext *context, const FrameFiles &files,
                                        const Options &options, bool picture) {
  VideoConversion conversion;
  conversion.from = options.from == "yuyv" ? Format::yuyv : Format::uyvy;
  conversion.to = options.format.value_or(picture ? Format::rgb24 : Format::i420);
  conversion.interlaced = options.interlaced;
  conversion.tests_motion = !options.no_motion_test;
  return video_frames(context, files, conversion);
}

void convert(const Options &options) {
  const Size size = parse_size(options.size);
  check_usage(options);

  const Context context;
  set_frame_size(context, size);
  options.controls.apply(context);

  const Container container = options.kind     ? parse_container(*options.kind)
                              : options.output ? container_of(*options.output)
                                               : Container::raw;
  const bool picture = container == Container::png || container == Container::ppm;
  const FrameFiles files{options.inputs, size, options.frames};
  const std::unique_ptr<FrameSource> source = options.mosaic()
                                                  ? open_mosaic(context, files, options, picture)
                                                  : open_video(context, files, options, picture);
  FrameOutput output(options.output, container);
  std::optional<OutputFile> statistics_file;
  if (options.statistics) statistics_file.emplace(*options.statistics);

  nlohmann::ordered_json statistics = nlohmann::ordered_json::array();
  std::optional<Format> format;
  {
    Progress progress("frame", source->frame_count());
    while (const std::optional<FrameView> frame = source->next()) {
      format = frame->format;
      output.add(*frame);
      if (statistics_file) statistics.push_back(statistics_of(context));
      progress.step();
    }
  }
  if (statistics_file) {
    nlohmann::ordered_json json;
    json["size"] = {{"width", size.width}, {"height", size.height}};
    json["format"] = format_name(format.value());
    json["quality"] = ppl_quality(context);
    json["tier"] = tier_name(tier_of(context));
    json["units"] = statistics_units();
    json["frames"] = std::move(statistics);
    const std::string text = json.dump(1) + "\n";
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
  CLI::App *command = app.add_subcommand(
      "convert",
      "Examples:\n"
      "  ppl convert frame.raw --size 640x480 -o frame.png\n"
      "  ppl convert film.raw --size 640x480 -o film.y4m --quality 0\n"
      "  ppl convert frame.raw --size 640x480 -o frame.yuv --format yuyv --set "
      "rgb_gain=400,256,380\n"
      "  ppl convert frame.raw --size 1280x1024 --stats frame.json --md5\n"
      "  camera | ppl convert - --size 640x480 -o - --as y4m | player -\n"
      "  ppl convert --from yuyv frame.yuyv --size 640x480 -o frame.png\n"
      "  ppl convert --from uyvy --interlaced film.uyvy --size 720x576 -o film.y4m\n"
      "  ppl convert --from uyvy --interlaced even.uyvy odd.uyvy --size 720x576 -o frame.png\n"
      "\n"
      "Takes raw mosaic frames or packed video through the library. The output's kind follows "
      "its name: .png,\n"
      ".ppm and .y4m; all others get the frames' plain bytes.\n");
  const auto options = std::make_shared<Options>();

  command
      ->add_option("input", options->inputs,
                   "frames; or, with --interlaced, EVEN ODD [REFERENCE] fields; - for standard "
                   "input")
      ->type_name("IN")
      ->required();
  command->add_option("-o,--output", options->output, "file to write; - for standard output")
      ->type_name("OUT");
  command->add_option("-s,--size", options->size, "size of the frames, also where fields are read")
      ->type_name("WxH")
      ->required();
  command
      ->add_option("--from", options->from,
                   "what the input is: bggr8 (raw mosaic, 8 bits a sample; the default), yuyv or "
                   "uyvy")
      ->type_name("FORMAT")
      ->check(CLI::IsMember({mosaic_format, "yuyv", "uyvy"}).description(""));
  add_format_option(command, options->format,
                    "rgb24 for .png and .ppm where it can be had, else i420");
  command
      ->add_option("--as", options->kind, "kind of file, whatever its name: raw, png, ppm or y4m")
      ->type_name("KIND");
  add_quality_option(command, options->controls);
  add_control_options(command, options->controls);
  command->add_option("--decimation", options->controls.decimation, "scale: 1 halves, -1 doubles")
      ->type_name("D");
  command
      ->add_option("--black-lines", options->controls.black_lines,
                   "lines of black above and below the picture")
      ->type_name("TOP,BOTTOM");
  command->add_option("--mirror", options->controls.mirror, "h, v or hv")
      ->type_name("WAY")
      ->check(CLI::IsMember({"h", "v", "hv", "vh"}).description(""));
  command->add_flag("--interlaced", options->interlaced, "weave two fields to a frame");
  command->add_flag("--no-motion-test", options->no_motion_test,
                    "with --interlaced: weave without looking at what moved");
  command
      ->add_option("--motion-threshold", options->controls.motion_threshold,
                   "with --interlaced: how much is motion, 0 to 765 (default 50)")
      ->type_name("N");
  command->add_option("--frames", options->frames, "stop after so many frames (default: all)")
      ->type_name("N");
  command->add_option("--stats", options->statistics, "write every frame's statistics as JSON")
      ->type_name("FILE");
  command->add_flag("--md5", options->md5, "print the MD5 of the output data");
  command->callback([options] { convert(*options); });
}

}  // namespace ppl::tool
