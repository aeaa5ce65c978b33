// Quality 3 at half and at double size beside the unscaled pass.
#include "studio.h"

namespace ppl::bench {

void add_scaling(Suite &suite, Studio &studio) {
  Section section;
  section.name = "scaling";
  section.title = "Quality 3, scaled, statistics off";
  section.explanation =
      "deci_2_1 halves both ways, intp_1_2 doubles both ways. Pixels are those of the raw frame.";
  section.references = {"unscaled", "memcpy"};
  section.highlights = {{"deci_2_1", "unscaled"}, {"intp_1_2", "unscaled"}};
  for (const Size size : sizes) {
    for (const Format format :
         {Format::i420, Format::yuyv, Format::uyvy, Format::rgb24, Format::rgb32}) {
      for (const Tier tier : tiers) {
        const auto setting = [&](int decimation) {
          return Setting{.tier = tier, .format = format, .decimation = decimation};
        };
        Comparison c;
        c.name = to_string(size) + "/" + to_string(format) + "/" + to_string(tier);
        c.pixels = size.pixels();
        c.frame = studio.frame(size);
        c.output = studio.output(size, setting(-1));  // the largest
        c.routes = {studio.library_route("unscaled", size, setting(0)),
                    studio.library_route("deci_2_1", size, setting(1)),
                    studio.library_route("intp_1_2", size, setting(-1)), studio.copy_route(size)};
        section.comparisons.push_back(std::move(c));
      }
    }
  }
  suite.push_back(std::move(section));
}

}  // namespace ppl::bench
