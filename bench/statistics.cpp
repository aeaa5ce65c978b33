// What gathering statistics costs.
#include "studio.h"

namespace ppl::bench {

void add_statistics(Suite &suite, Studio &studio) {
  Section section;
  section.name = "statistics";
  section.title = "Quality 3, statistics on and off";
  section.explanation = "The same frame with mean_collection 1 and 0.";
  section.references = {"off", "memcpy"};
  section.highlights = {{"on", "off"}};
  for (const Size size : sizes) {
    for (const Format format :
         {Format::i420, Format::yuyv, Format::uyvy, Format::rgb24, Format::rgb32}) {
      for (const Tier tier : tiers) {
        const Setting off = {.tier = tier, .format = format};
        Setting on = off;
        on.statistics = true;
        Comparison c;
        c.name = to_string(size) + "/" + to_string(format) + "/" + to_string(tier);
        c.pixels = size.pixels();
        c.frame = studio.frame(size);
        c.output = studio.output(size, off);
        c.routes = {studio.library_route("off", size, off), studio.library_route("on", size, on),
                    studio.copy_route(size)};
        // In the P3 tier to RGB24 statistics change the picture.
        if (tier != Tier::p3 || format != Format::rgb24) c.routes[1].same_as = "off";
        if (tier == Tier::sse2) section.targets.push_back({c.name, "on", "off", 1.35, 1.25});
        section.comparisons.push_back(std::move(c));
      }
    }
  }
  suite.push_back(std::move(section));
}

}  // namespace ppl::bench
