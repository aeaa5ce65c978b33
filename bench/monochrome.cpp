// Quality 13 beside quality 3.
#include "studio.h"

namespace ppl::bench {

void add_monochrome(Suite &suite, Studio &studio) {
  Section section;
  section.name = "quality13";
  section.title = "Quality 13 (monochrome), statistics off";
  section.explanation =
      "Beside quality 3 of the same tier. deci_2_1 is quality 13 at half size both ways.";
  section.references = {"quality3", "memcpy"};
  section.highlights = {{"quality13", "quality3"}, {"deci_2_1", "quality3"}};
  for (const Size size : sizes) {
    for (const Format format : {Format::i420, Format::rgb24}) {  // the formats it exists in
      for (const Tier tier : tiers) {
        const auto setting = [&](uint32_t quality, int decimation) {
          return Setting{
              .tier = tier, .format = format, .quality = quality, .decimation = decimation};
        };
        Comparison c;
        c.name = to_string(size) + "/" + to_string(format) + "/" + to_string(tier);
        c.pixels = size.pixels();
        c.frame = studio.frame(size);
        c.output = studio.output(size, setting(13, 0));
        c.routes = {studio.library_route("quality3", size, setting(3, 0)),
                    studio.library_route("quality13", size, setting(13, 0)),
                    studio.library_route("deci_2_1", size, setting(13, 1)),
                    studio.copy_route(size)};
        section.comparisons.push_back(std::move(c));
      }
    }
  }
  suite.push_back(std::move(section));
}

}  // namespace ppl::bench
