#include <fmt/core.h>

#include <charconv>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "base/failure.h"
#include "base/output_file.h"
#include "base/raw_input.h"
#include "commands/commands.h"
#include "commands/options.h"
#include "library/context.h"
#include "library/quality.h"
#include "pictures/file_formats.h"
#include "pictures/output.h"
#include "sheets/comparison_sheet.h"
#include "sheets/quality_comparison.h"

namespace ppl::tool {
namespace {

constexpr uint32_t crop_side = 60;  // the sheet shows it four times as large

struct Options {
  std::string input, size, crop;
  std::optional<std::string> output, truth, json;
  std::optional<Format> format;
  ControlOptions controls;
  uint64_t frames = 20;
};

[[noreturn]] void refuse_crop(const std::string &text) {
  throw UsageError(
      fmt::format("'{}' is no crop: write X,Y or X,Y,WxH, such as 300,200,60x60", text));
}

// "X,Y" or "X,Y,WxH".
Crop parse_crop(const std::string &text) {
  uint32_t numbers[4] = {0, 0, crop_side, crop_side};
  const char *at = text.data(), *end = at + text.size();
  constexpr char behind[] = {',', ',', 'x', '\0'};
  for (size_t i = 0; i < 4; ++i) {
    const auto number = std::from_chars(at, end, numbers[i]);
    if (number.ec != std::errc()) refuse_crop(text);
    at = number.ptr;
    if (at == end && i % 2 == 1) return {numbers[0], numbers[1], numbers[2], numbers[3]};
    if (at == end || *at++ != behind[i]) break;
  }
  refuse_crop(text);
}

Crop choose_crop(const Options &options, Size size, const std::vector<uint8_t> &raw) {
  if (options.crop.empty())
    return most_detail(raw, size,
                       {std::min(crop_side, size.width), std::min(crop_side, size.height)});
  const Crop crop = parse_crop(options.crop);
  const auto fits = [](uint32_t start, uint32_t length, uint32_t whole) {
    return length > 0 && length <= whole && start <= whole - length;
  };
  if (!fits(crop.x, crop.width, size.width) || !fits(crop.y, crop.height, size.height))
    throw Failure(fmt::format("the crop {}x{} at {},{} does not lie inside the frame of {}x{}",
                              crop.width, crop.height, crop.x, crop.y, size.width, size.height));
  return crop;
}

std::optional<Picture> read_truth(const Options &options, Size size) {
  if (!options.truth) return std::nullopt;
  Picture truth = read_png(*options.truth);
  if (truth.size.width != size.width || truth.size.height != size.height)
    throw Failure(fmt::format("the truth '{}' is {}x{} and the frame {}x{}: they must be the same",
                              *options.truth, truth.size.width, truth.size.height, size.width,
                              size.height));
  if (!comparable(size))
    throw Failure("the frame is too small to be compared with a truth: 27 lines are the least");
  return truth;
}

std::string table_of(const QualityComparison &comparison, const Options &options,
                     const Crop &crop) {
  std::string text = fmt::format(
      "{}x{} to {}, tier {}, {} frame{} at each quality; x: the fastest against that of quality "
      "3\n",
      comparison.size.width, comparison.size.height, format_name(comparison.format),
      tier_name(comparison.tier), comparison.rounds, comparison.rounds == 1 ? "" : "s");
  if (options.truth)
    text += fmt::format(
        "against {}: PSNR in dB, SSIM of luma in 11x11 Gaussian windows, {} pixels left off at\n"
        "each side, at the shift of up to 1 pixel (right,down) that fits best\n",
        *options.truth, metric_border);
  text += fmt::format("crop {}x{} at {},{}\n\n", crop.width, crop.height, crop.x, crop.y);
  text += fmt::format("{:<42}{:>9} {:>9} {:>6}", "quality", "median ms", "fastest", "x");
  text += options.truth
              ? fmt::format(" {:>9} {:>9} {:>7}  {}\n", "PSNR RGB", "PSNR luma", "SSIM", "shift")
              : "\n";
  for (const QualityResult &result : comparison.results) {
    text += fmt::format("{:>5}  {:<35}{:>9.3f} {:>9.3f} {:>6.2f}", result.numbers,
                        quality_name(result.quality), result.median_milliseconds,
                        result.fastest_milliseconds, result.ratio);
    if (result.closeness)
      text += fmt::format(" {:>9.2f} {:>9.2f} {:>7.4f}  {},{}", result.closeness->psnr_rgb,
                          result.closeness->psnr_luma, result.closeness->ssim_luma,
                          result.closeness->shift_x, result.closeness->shift_y);
    text += "\n";
  }
  return text;
}

// Infinite figures are null.
nlohmann::ordered_json json_of(const QualityComparison &comparison, const Crop &crop) {
  nlohmann::ordered_json json;
  json["size"] = {{"width", comparison.size.width}, {"height", comparison.size.height}};
  json["format"] = format_name(comparison.format);
  json["tier"] = tier_name(comparison.tier);
  json["frames"] = comparison.rounds;
  json["crop"] = {{"x", crop.x}, {"y", crop.y}, {"width", crop.width}, {"height", crop.height}};
  json["border"] = metric_border;
  json["qualities"] = nlohmann::ordered_json::array();
  for (const QualityResult &result : comparison.results) {
    nlohmann::ordered_json row;
    row["quality"] = result.quality;
    row["name"] = quality_name(result.quality);
    row["median_milliseconds"] = result.median_milliseconds;
    row["fastest_milliseconds"] = result.fastest_milliseconds;
    row["ratio"] = result.ratio;
    if (result.closeness) {
      row["psnr_rgb"] = result.closeness->psnr_rgb;
      row["psnr_luma"] = result.closeness->psnr_luma;
      row["ssim_luma"] = result.closeness->ssim_luma;
      row["shift"] = {result.closeness->shift_x, result.closeness->shift_y};
    }
    json["qualities"].push_back(row);
  }
  return json;
}

void compare(const Options &options) {
  const Size size = parse_size(options.size);
  if (options.frames == 0) throw UsageError("--frames takes at least 1");
  if (!options.crop.empty()) parse_crop(options.crop);
  if (options.output == "-" && options.json == "-")
    throw UsageError("only one of sheet and table can go to standard output");
  Container container = Container::png;
  if (options.output && *options.output != "-") {
    container = container_of(*options.output);
    if (container != Container::png && container != Container::ppm)
      throw UsageError(
          fmt::format("the sheet is a picture: name it .png or .ppm, not '{}'", *options.output));
  }

  {
    const Context context;
    set_frame_size(context, size);
    options.controls.apply(context);
  }
  RawInput input(options.input, size, {raw_bytes(size)}, 1);
  std::vector<uint8_t> raw(raw_bytes(size));
  input.read(raw.data());
  const std::optional<Picture> truth = read_truth(options, size);
  const Crop crop = choose_crop(options, size, raw);
  std::optional<OutputFile> sheet_file, json_file;
  if (options.output) sheet_file.emplace(*options.output);
  if (options.json) json_file.emplace(*options.json);

  const QualityComparison comparison = compare_qualities(
      raw, size, options.format.value_or(Format::i420), options.controls, options.frames, truth);
  if (sheet_file) {
    const Picture sheet = comparison_sheet(comparison, crop, truth, options.input);
    sheet_file->write(container == Container::ppm ? encode_ppm(sheet) : encode_png(sheet));
    sheet_file->close();
  }
  if (json_file) {
    const std::string text = json_of(comparison, crop).dump(1) + "\n";
    json_file->write(text.data(), text.size());
    json_file->close();
  }
  if (sheet_file) sheet_file->commit();
  if (json_file) json_file->commit();
  const bool data_on_stdout = options.output == "-" || options.json == "-";
  fmt::print(data_on_stdout ? stderr : stdout, "{}", table_of(comparison, options, crop));
}

}  // namespace

void add_compare(CLI::App &app) {
  CLI::App *command = app.add_subcommand(
      "compare",
      "Examples:\n"
      "  ppl compare frame.raw --size 640x480 -o sheet.png\n"
      "  ppl compare frame.raw --size 640x480 -o sheet.png --crop 300,200 --set edge_threshold=60\n"
      "  ppl compare mosaic.raw --size 640x480 -o sheet.png --truth picture.png --neutral\n"
      "\n"
      "Draws a raw frame at every quality, whole and enlarged, as one picture, and prints how long "
      "each takes\n"
      "and, with a truth, how close it comes.\n");
  const auto options = std::make_shared<Options>();

  command
      ->add_option("input", options->input,
                   "raw frames, 8 bits a sample, of which the first is taken; - for standard input")
      ->type_name("IN")
      ->required();
  command
      ->add_option("-o,--output", options->output,
                   "picture to write, .png or .ppm; - for PNG on standard output")
      ->type_name("OUT");
  command->add_option("-s,--size", options->size, "size of the raw frame")
      ->type_name("WxH")
      ->required();
  command
      ->add_option("--truth", options->truth,
                   "what the frame should become: a PNG of the same size")
      ->type_name("PNG");
  command
      ->add_option("--crop", options->crop,
                   "what to enlarge (default: 60x60 where there is most detail)")
      ->type_name("X,Y[,WxH]");
  add_format_option(command, options->format, "i420, which all qualities write");
  add_control_options(command, options->controls);
  command
      ->add_option("--frames", options->frames,
                   "how many times the frame runs at each quality (default 20)")
      ->type_name("N");
  command->add_option("--json", options->json, "write the table as JSON")->type_name("FILE");
  command->callback([options] { compare(*options); });
}

}  // namespace ppl::tool
