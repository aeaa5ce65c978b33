// golden: runs the golden cases and compares their checksums with those that were reviewed.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "golden/golden_text.h"
#include "support/machine.h"
#include "support/x87.h"

using golden::Line;

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
  for (const Line &line : golden::read_lines(path)) reviewed[line.description] = line.sums;

  // Static storage is zero and aligned as the widest vectors want it.
  alignas(64) static uint8_t source[golden::largest_source_bytes];
  alignas(64) static uint8_t output[golden::largest_output_bytes];

  std::vector<Line> lines;
  unsigned failures = 0, skipped = 0;
  for (const golden::Case &c : golden::cases) {
    const std::string description = golden::describe(c);
    if (!ppl_test::has_tier(c.tier)) {
      ++skipped;
      continue;
    }
    ppl::test_hooks::reload_pool();
    const std::string sums = golden::checksums(golden::run<golden::Library>(c, source, output));
    if (!ppl_test::x87_is_clean()) {
      printf("FAILED %s: left MMX state behind\n", description.c_str());
      ++failures;
    }
    if (with_model) {
      ppl_model::machine::reload_pool();
      const std::string expected = golden::checksums(golden::run<golden::Model>(c, source, output));
      if (!golden::model_is_definite()) {
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
  if (skipped != 0) printf("[  SKIPPED ] %u cases: their tier is not on this processor\n", skipped);
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
