// golden: runs the golden cases and compares their checksums with those that were reviewed.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "golden/golden_cases.h"
#include "model/model.h"
#include "platform/test_hooks.h"
#include "support/fingerprint.h"
#include "support/x87.h"

namespace {

struct Model {
  using Context = ppl_model::PplContext;
#define PPL_GOLDEN_FUNCTION(name) static constexpr auto name = &ppl_model::name;
  PPL_GOLDEN_API(PPL_GOLDEN_FUNCTION)
#undef PPL_GOLDEN_FUNCTION
};

std::string describe(const golden::Case &c) {
  static constexpr const char *formats[] = {"I420", "YUYV", "UYVY", "RGB24", "RGB32"};
  static constexpr const char *mirrors[] = {"-", "h", "v", "hv"};
  static constexpr const char *controls[] = {"defaults",   "front-end",     "curves",
                                             "own-curves", "colour",        "matrix",
                                             "bands",      "no-collection", "refused"};
  std::ostringstream out;
  out << formats[static_cast<size_t>(c.format)] << " " << c.width << "x" << c.height;
  if (c.stride != 0) out << "/" << c.stride;
  if (c.top + c.bottom != 0) out << "+" << int{c.top} << "+" << int{c.bottom};
  out << " quality=" << int{c.quality} << " d=" << int{c.decimation}
      << (c.tier == golden::Tier::p3 ? " p3 " : " sse2 ") << mirrors[c.mirrors] << " "
      << controls[static_cast<size_t>(c.controls)];
  if (c.frames != 1) out << " frames=" << int{c.frames};
  return out.str();
}

std::string checksums(const golden::Checksums &sums) {
  return std::to_string(sums.result) + " " + ppl_test::hexadecimal(sums.output) + " " +
         ppl_test::hexadecimal(sums.frame) + " " + ppl_test::hexadecimal(sums.statistics);
}

struct Line {
  std::string description, sums;
};

std::vector<Line> read_lines(const std::string &path) {
  std::vector<Line> lines;
  std::ifstream file(path);
  for (std::string text; std::getline(file, text);) {
    const size_t bar = text.find(" | ");
    if (text.empty() || text[0] == '#' || bar == text.npos) continue;
    lines.push_back({text.substr(0, bar), text.substr(bar + 3)});
  }
  return lines;
}

}  // namespace

int main(int argc, char **argv) {
  std::string path;
  bool update = false, with_model = false;
  for (int i = 1; i < argc; ++i) {
    const std::string option = argv[i];
    if (option == "--update") {
      update = with_model = true;
    } else if (option == "--model") {
      with_model = true;
    } else if (option[0] != '-' && path.empty()) {
      path = option;
    } else {
      path.clear();
      break;
    }
  }
  if (path.empty()) {
    fprintf(stderr,
            "golden golden.txt            compare this build with the file\n"
            "golden golden.txt --model    and the reference model too\n"
            "golden golden.txt --update   write the file anew, if library and model agree\n");
    return 2;
  }

  std::map<std::string, std::string> reviewed;
  for (const Line &line : read_lines(path)) reviewed[line.description] = line.sums;
  const bool has_sse2 = (ppl::test_hooks::processor_flags() & (1u << 26)) != 0;

  // Static storage is zero and aligned as the widest vectors want it.
  alignas(64) static uint8_t source[golden::largest_source_bytes];
  alignas(64) static uint8_t output[golden::largest_output_bytes];

  std::vector<Line> lines;
  unsigned failures = 0, skipped = 0;
  for (const golden::Case &c : golden::cases) {
    const std::string description = describe(c);
    if (c.tier == golden::Tier::sse2 && !has_sse2) {
      ++skipped;
      continue;
    }
    ppl::test_hooks::reload_pool();
    const std::string sums = checksums(golden::run<golden::Library>(c, source, output));
    if (!ppl_test::x87_is_clean()) {
      printf("FAILED %s: left MMX state behind\n", description.c_str());
      ++failures;
    }
    if (with_model) {
      ppl_model::machine::reload_pool();
      const std::string expected = checksums(golden::run<Model>(c, source, output));
      if (!ppl_model::free_bytes().empty() || ppl_model::picture_is_free() ||
          ppl_model::source_is_free() || ppl_model::statistics_are_free()) {
        printf("FAILED %s: has results that may be anything, so no checksum\n",
               description.c_str());
        ++failures;
      } else if (sums != expected) {
        printf("FAILED %s: the model gives\n  %s, the library\n  %s\n", description.c_str(),
               expected.c_str(), sums.c_str());
        ++failures;
      }
    }
    for (const Line &line : lines)
      if (line.description == description) {
        printf("FAILED %s: stands twice in the table\n", description.c_str());
        ++failures;
      }
    lines.push_back({description, sums});
    if (update) continue;
    const auto found = reviewed.find(description);
    if (found == reviewed.end()) {
      printf("FAILED %s: not in %s\n", description.c_str(), path.c_str());
      ++failures;
    } else if (found->second != sums) {
      printf("FAILED %s: reviewed\n  %s, now\n  %s\n", description.c_str(), found->second.c_str(),
             sums.c_str());
      ++failures;
    }
    reviewed.erase(description);
  }
  if (skipped != 0) printf("[  SKIPPED ] %u cases: no SSE2 tier on this processor\n", skipped);
  if (!update && skipped == 0)
    for (const auto &[description, sums] : reviewed) {
      printf("FAILED %s: in the file, but no such case\n", description.c_str());
      ++failures;
    }
  if (update && failures == 0 && skipped == 0) {
    std::ofstream file(path);
    file << "# Checksums (FNV-1a, 64 bits) of what a frame leaves behind: its result, the output\n"
            "# buffer, the consumed raw frame and all statistics. Written by golden --update, "
            "which\n"
            "# insists that the reference model gives the same. Review every line that changes.\n";
    for (const Line &line : lines) file << line.description << " | " << line.sums << "\n";
    file.close();
    if (!file) {
      printf("FAILED to write %s\n", path.c_str());
      ++failures;
    }
  }
  printf("%zu cases, %u failures\n", lines.size(), failures);
  return failures == 0 && !(update && skipped != 0) ? 0 : 1;
}
