#include <fmt/core.h>

#include "commands.h"
#include "stream.h"

namespace ppl::tool {
namespace {

#if defined(__i386__) || defined(__x86_64__)
std::string processor_features() {
  __builtin_cpu_init();
  std::string features;
  if (__builtin_cpu_supports("mmx")) features += " mmx";
  if (__builtin_cpu_supports("sse")) features += " sse";
  if (__builtin_cpu_supports("sse2")) features += " sse2";
  return features.empty() ? " none of mmx, sse, sse2" : features;
}
#else
std::string processor_features() { return " unknown"; }
#endif

void info() {
  const Tier tier = usable_tier();
  const char *meaning = tier == Tier::kSse2 ? "sse2 (--tier p3 for the other one)"
                        : tier == Tier::kP3 ? "p3"
                                            : "none: frames are copied unprocessed";
  fmt::print("version    {}\n", PPL_TOOL_VERSION);
  fmt::print("processor {}\n", processor_features());
  fmt::print("tier       {}\n", meaning);
  fmt::print("size       even width {} to 1280, even height 18 to 1024\n",
             tier == Tier::kSse2 ? 128 : 64);
  fmt::print("input      raw mosaic, 8 bits a sample: even lines B Gb, odd lines Gr R\n");
  for (const FormatInfo &format : formats())
    fmt::print("output     {:<6} {}\n", format.name, format.layout);
  fmt::print("files      .png .ppm .y4m, all others plain bytes\n");
}

}  // namespace

void add_info(CLI::App &app) {
  CLI::App *command = app.add_subcommand("info",
                                         "Examples:\n"
                                         "  ppl info\n"
                                         "\n"
                                         "Shows the version, the processor and the formats.\n");
  command->callback(info);
}

}  // namespace ppl::tool
