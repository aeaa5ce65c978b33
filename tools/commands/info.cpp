#include <fmt/core.h>

#include <cstring>
#include <string>

#include "commands/commands.h"
#include "library/context.h"
#include "library/quality.h"

#if defined(__i386__) || defined(__x86_64__)
#include <cpuid.h>
#endif

namespace ppl::tool {
namespace {

#if defined(__i386__) || defined(__x86_64__)
// The flags that the library looks at, in its way: AMD's extensions count on AMD's processors, but
// 3DNow! itself on all. An operating system's list may have fewer.
std::string processor_flags() {
  struct Registers {
    uint32_t eax = 0, ebx = 0, ecx = 0, edx = 0;
  };
  const auto leaf = [](uint32_t number) {
    Registers r;
    __get_cpuid(number, &r.eax, &r.ebx, &r.ecx,
                &r.edx);  // leaves zeros where there is no such leaf
    return r;
  };
  const Registers vendor = leaf(0);
  const uint32_t standard = leaf(1).edx, extended = leaf(0x80000001).edx;
  const uint32_t name[3] = {vendor.ebx, vendor.edx, vendor.ecx};
  const bool amd = std::memcmp(name, "AuthenticAMD", sizeof name) == 0;
  const struct {
    bool present;
    const char *name;
  } flags[] = {
      {(standard >> 4 & 1) != 0, "tsc"},
      {(standard >> 23 & 1) != 0, "mmx"},
      {amd && (extended >> 22 & 1) != 0, "mmxext"},
      {(standard >> 25 & 1) != 0, "sse"},
      {(standard >> 26 & 1) != 0, "sse2"},
      {(extended >> 31 & 1) != 0, "3dnow"},
      {amd && (extended >> 30 & 1) != 0, "3dnowext"},
  };
  std::string text;
  for (const auto &flag : flags)
    if (flag.present) text += (text.empty() ? "" : " ") + std::string(flag.name);
  return text.empty() ? "none of the flags that matter" : text;
}
#else
std::string processor_flags() { return "unknown"; }
#endif

std::string formats_of_quality(uint32_t quality) {
  std::string names;
  bool all = true;
  for (const FormatInfo &info : formats()) {
    if (writes_picture(quality, info.format))
      names += (names.empty() ? "" : " ") + std::string(info.name);
    else
      all = false;
  }
  return all ? "all" : names;
}

void info() {
  const Tier tier = usable_tier();
  const char *meaning = tier == Tier::sse2 ? "sse2 (--tier p3 for the other one)"
                        : tier == Tier::p3 ? "p3"
                                           : "none: no frame can be processed";
  fmt::print("version    {}\n", PPL_TOOL_VERSION);
  fmt::print("processor  {}\n", processor_flags());
  fmt::print("tier       {}\n", meaning);
  fmt::print("size       even width {} to 1280, even height 18 to 1024\n",
             tier == Tier::sse2 ? 128 : 64);
  fmt::print("input      bggr8  raw mosaic, 8 bits a sample: even lines B Gb, odd lines Gr R\n");
  fmt::print("input      yuyv   packed video, progressive or interlaced\n");
  fmt::print("input      uyvy   packed video, progressive or interlaced\n");
  for (const FormatInfo &format : formats())
    fmt::print("output     {:<6} {}\n", format.name, format.layout);
  for (uint32_t quality = 0; quality <= 14; ++quality) {
    const std::string names = formats_of_quality(quality);
    if (!names.empty())
      fmt::print("quality    {:<6} {:<34} {}\n", quality, quality_name(quality), names);
  }
  fmt::print("files      .png .ppm .y4m, all others plain bytes\n");
}

}  // namespace

void add_info(CLI::App &app) {
  CLI::App *command =
      app.add_subcommand("info",
                         "Examples:\n"
                         "  ppl info\n"
                         "\n"
                         "Shows the version, the processor, formats and qualities.\n");
  command->callback(info);
}

}  // namespace ppl::tool
