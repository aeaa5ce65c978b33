#include <fmt/core.h>

#include <memory>
#include <string>

#include "commands/commands.h"
#include "commands/scene_source.h"
#include "library/context.h"
#include "library/control_assignment.h"
#include "library/raw_stream.h"
#include "pictures/file_formats.h"
#include "pictures/output.h"

namespace ppl::tool {
namespace {

constexpr const char *demo_size = "640x480";

void demo(const std::string &path) {
  const Size size = parse_size(demo_size);
  const Simulator simulator = simulate_scene("chart", size, 1);

  const Context context;
  set_frame_size(context, size);
  set_control(context, "quality=0");
  FrameRunner runner(context, size, Format::i420);
  ppl_simulator_render(simulator.get(), runner.raw());
  write_file(path, encode_png(to_picture(runner.run())));

  if (path == "-") return;
  const PplTriple &mean = *ppl_rgb_means_whole_frame(context);
  fmt::print("{} shows a simulated test chart, taken through the library. Step by step:\n", path);
  fmt::print("  ppl simulate -o chart.raw --size {} --hot 0 --dead 0\n", demo_size);
  fmt::print("  ppl convert chart.raw --size {} --format i420 --quality 0 -o {}\n", demo_size,
             path);
  fmt::print("The statistics say: mean of red {:.1f}, green {:.1f}, blue {:.1f} of 255; ",
             mean.r / 256.0, mean.g / 256.0, mean.b / 256.0);
  fmt::print("{} of {} cells are near grey.\n", ppl_n_qual_2x2_whole_frame(context),
             size.width / 2 * (size.height / 2));
}

}  // namespace

void add_demo(CLI::App &app) {
  CLI::App *command =
      app.add_subcommand("demo",
                         "Examples:\n"
                         "  ppl demo\n"
                         "  ppl demo -o first.png\n"
                         "\n"
                         "Makes a first picture: a test chart through the simulator and "
                         "the library.\n");
  const auto path = std::make_shared<std::string>("demo.png");
  command->add_option("-o,--output", *path, "picture to write (default demo.png)")
      ->type_name("FILE");
  command->callback([path] { demo(*path); });
}

}  // namespace ppl::tool
