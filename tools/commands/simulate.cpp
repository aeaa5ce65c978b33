#include <fmt/core.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/failure.h"
#include "base/output_file.h"
#include "base/progress.h"
#include "commands/commands.h"
#include "commands/scene_source.h"
#include "pictures/file_formats.h"
#include "pictures/output.h"

namespace ppl::tool {
namespace {

struct Options {
  std::string output, scene = "chart";
  std::optional<std::string> png, size, truth;
  uint64_t frames = 1, seed = 1;
  double exposure = 0, illuminant = 6500, black = 0, full_well = 8000, read_noise = 20,
         crosstalk = 0.15;
  std::vector<double> gains;
  uint32_t hot = 4, dead = 4;
};

void check(uint8_t accepted, const char *option, const char *range) {
  if (!accepted) throw Failure(fmt::format("{} is out of range: give {}", option, range));
}

void apply(PplSimulator *simulator, const Options &options) {
  check(ppl_simulator_set_exposure(simulator, options.exposure), "--exposure", "-20 to 20 stops");
  check(ppl_simulator_set_illuminant(simulator, options.illuminant), "--illuminant",
        "1500 to 25000 kelvin");
  if (!options.gains.empty())
    check(ppl_simulator_set_channel_gains(simulator, options.gains[0], options.gains[1],
                                          options.gains[2]),
          "--gains", "three factors from 0 to 64");
  check(ppl_simulator_set_black_level(simulator, options.black), "--black",
        "0 to 128 sample steps");
  check(ppl_simulator_set_noise(simulator, options.full_well, options.read_noise),
        "--full-well or --read-noise", "0 or more electrons, at most 1e9 and 1e6");
  check(ppl_simulator_set_crosstalk(simulator, options.crosstalk), "--crosstalk", "0 to 0.333");
  check(ppl_simulator_set_defects(simulator, options.hot, options.dead), "--hot or --dead",
        "together at most a hundredth of the pixels");
}

void simulate(const Options &options) {
  if (options.frames == 0) throw UsageError("--frames takes at least 1");
  const Container container = container_of(options.output);
  if (container == Container::y4m) throw UsageError("raw frames are no .y4m: choose another name");
  if (container != Container::raw && options.frames > 1)
    throw UsageError("a grey picture holds one frame: leave out --frames");

  std::optional<Size> size;
  if (options.size) size = parse_size(*options.size);
  const Simulator simulator =
      options.png ? simulate_png(*options.png, size.value_or(Size{}), options.seed)
                  : simulate_scene(options.scene, size.value_or(Size{640, 480}), options.seed);
  apply(simulator.get(), options);
  const Size frame{ppl_simulator_width(simulator.get()), ppl_simulator_height(simulator.get())};

  OutputFile output(options.output);
  std::vector<uint8_t> raw(static_cast<size_t>(frame.width) * frame.height);
  {
    Progress progress("frame", options.frames);
    for (uint64_t i = 0; i < options.frames; ++i) {
      ppl_simulator_render(simulator.get(), raw.data());
      if (container == Container::raw)
        output.write(raw);
      else
        output.write(container == Container::png ? encode_png(grey_picture(raw.data(), frame))
                                                 : encode_ppm(grey_picture(raw.data(), frame)));
      progress.step();
    }
  }
  if (options.truth) {
    Picture truth(frame);
    ppl_simulator_scene_rgb(simulator.get(), truth.rgb.data());
    write_file(*options.truth, container_of(*options.truth) == Container::ppm ? encode_ppm(truth)
                                                                              : encode_png(truth));
  }
  output.commit();
}

std::string scene_list() {
  std::string text = "Scenes:\n";
  for (uint32_t i = 0; const char *name = ppl_simulator_scene_name(i); ++i)
    text += fmt::format("  {:<10} {}\n", name, ppl_simulator_scene_text(i));
  return text;
}

}  // namespace

void add_simulate(CLI::App &app) {
  CLI::App *command = app.add_subcommand(
      "simulate",
      "Examples:\n"
      "  ppl simulate -o chart.raw\n"
      "  ppl simulate -o dark.raw --scene patches --size 1280x1024 --exposure -3 --illuminant "
      "2850\n"
      "  ppl simulate -o photo.raw --png photo.png --size 640x480 --black 16\n"
      "  ppl simulate -o film.raw --frames 30 --seed 7\n"
      "  ppl simulate -o mosaic.png                          the mosaic as a grey picture\n"
      "\n"
      "Makes raw frames as a camera's sensor would: a scene through colour filters, with "
      "exposure,\n"
      "light, black level, noise and defect pixels. The same options give the same bytes "
      "everywhere.");
  const auto options = std::make_shared<Options>();
  command->add_option("-o,--output", options->output, "file to write; - for standard output")
      ->type_name("RAW")
      ->required();
  auto *scene =
      command->add_option("--scene", options->scene, "built-in scene (default chart; below)");
  scene->type_name("NAME");
  command->add_option("--png", options->png, "take a picture as the scene")
      ->type_name("FILE")
      ->excludes(scene);
  command->add_option("-s,--size", options->size, "frame size (default 640x480, or the picture's)")
      ->type_name("WxH");
  command->add_option("--frames", options->frames, "number of frames; noise differs (default 1)")
      ->type_name("N");
  command->add_option("--seed", options->seed, "of noise and defects (default 1)")->type_name("N");
  command
      ->add_option("--exposure", options->exposure,
                   "stops; at 0 white fills 80 percent of the range (default 0)")
      ->type_name("STOPS");
  command
      ->add_option("--illuminant", options->illuminant,
                   "colour temperature of the light (default 6500)")
      ->type_name("KELVIN");
  command->add_option("--gains", options->gains, "factors R,G,B instead of the light's own")
      ->type_name("R,G,B")
      ->delimiter(',')
      ->expected(3);
  command->add_option("--black", options->black, "black level in sample steps (default 0)")
      ->type_name("STEPS");
  command
      ->add_option("--full-well", options->full_well,
                   "electrons of a full sample; 0 turns shot noise off (default 8000)")
      ->type_name("N");
  command->add_option("--read-noise", options->read_noise, "electrons (default 20)")
      ->type_name("N");
  command
      ->add_option("--crosstalk", options->crosstalk,
                   "part of each other colour that a filter passes (default 0.15)")
      ->type_name("PART");
  command->add_option("--hot", options->hot, "number of hot pixels (default 4)")->type_name("N");
  command->add_option("--dead", options->dead, "number of dead pixels (default 4)")->type_name("N");
  command->add_option("--truth", options->truth, "also write the scene itself as a picture")
      ->type_name("FILE");
  command->footer(scene_list());
  command->callback([options] { simulate(*options); });
}

}  // namespace ppl::tool
