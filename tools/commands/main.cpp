// ppl: the library's command-line tool.

#include <fmt/core.h>

#include <cstdio>
#include <exception>
#include <new>
#include <string>

#include "base/failure.h"
#include "commands/commands.h"

namespace {

constexpr int failed = 1, wrong_usage = 2;

// Messages are one line each, whatever they quote.
void complain(std::string message) {
  for (char &c : message)
    if (c == '\n' || c == '\r') c = ' ';
  fmt::print(stderr, "ppl: {}\n", message);
}

// "ppl convert" where that command was asked for.
std::string command_of(const CLI::App &app) {
  std::string name = "ppl";
  for (const CLI::App *command : app.get_subcommands()) name += " " + command->get_name();
  return name;
}

}  // namespace

int main(int argc, char **argv) {
  CLI::App app(
      "Examples:\n"
      "  ppl demo                                            a first picture\n"
      "  ppl simulate -o chart.raw                           a raw frame of a test chart\n"
      "  ppl convert chart.raw --size 640x480 -o chart.png   through the library into a picture\n"
      "  ppl stats chart.raw --size 640x480 -o sheet.png     its statistics as a picture\n"
      "  ppl compare chart.raw --size 640x480 -o all.png     every quality side by side\n"
      "  ppl controls                                        what can be set\n"
      "\n"
      "ppl turns raw sensor frames into pictures and video.\n",
      "ppl");
  app.set_version_flag("--version", "ppl " PPL_TOOL_VERSION);
  app.require_subcommand(1);
  ppl::tool::add_demo(app);
  ppl::tool::add_convert(app);
  ppl::tool::add_stats(app);
  ppl::tool::add_compare(app);
  ppl::tool::add_simulate(app);
  ppl::tool::add_controls(app);
  ppl::tool::add_info(app);

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError &error) {
    if (error.get_exit_code() == 0) return app.exit(error);  // --help, --version
    complain(fmt::format("{} (see {} --help)", error.what(), command_of(app)));
    return wrong_usage;
  } catch (const ppl::tool::UsageError &error) {
    complain(fmt::format("{} (see {} --help)", error.what(), command_of(app)));
    return wrong_usage;
  } catch (const ppl::tool::Failure &error) {
    complain(error.what());
    return failed;
  } catch (const std::bad_alloc &) {
    complain("there is not enough memory: use a smaller size");
    return failed;
  } catch (const std::exception &error) {
    complain(error.what());
    return failed;
  }
  return 0;
}
