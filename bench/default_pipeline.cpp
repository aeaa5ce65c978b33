// Quality 3, unscaled, statistics off: each tier beside a plain loop and a copy.
#include "studio.h"

namespace ppl::bench {
namespace {

PlainLoop loop_of(const PlainLoops &loops, Format format) {
  switch (format) {
    case Format::i420:
      return loops.i420;
    case Format::rgb24:
      return loops.rgb24;
    case Format::rgb32:
      return loops.rgb32;
    default:
      return loops.yuyv;
  }
}

Comparison comparison(Studio &studio, Size size, Format format) {
  Comparison c;
  c.name = to_string(size) + "/" + to_string(format);
  c.pixels = size.pixels();
  c.frame = studio.frame(size);
  c.output = studio.output(size, {.format = format});

  const auto add_plain = [&](const char *name, const PlainLoops &loops) {
    c.routes.push_back(studio.plain_route(name, size, loop_of(loops, format)));
  };
  add_plain("plain", built_for_sse2::plain_build.by_bytes);
  add_plain("plain-words", built_for_sse2::plain_build.by_words);
  if (__builtin_cpu_supports("avx2")) {
    add_plain("plain-avx2", built_for_avx2::plain_build.by_bytes);
    add_plain("plain-words-avx2", built_for_avx2::plain_build.by_words);
  }
  for (const Tier tier : tiers) {
    c.routes.push_back(
        studio.library_route(to_string(tier), size, {.tier = tier, .format = format}));
  }
  for (Route &route : c.routes) {
    if (route.name != "plain") route.same_as = "plain";
  }
  c.routes.push_back(studio.copy_route(size));
  return c;
}

}  // namespace

void add_default_pipeline(Suite &suite, Studio &studio) {
  Section section;
  section.name = "quality3";
  section.title = "Quality 3, statistics off";
  section.explanation =
      "P3, SSE2: the library's tiers. plain: look-ups byte by byte and a loop that the compiler\n"
      "vectorises, -O3 for SSE2; plain-words: the same, four look-ups joined before they are\n"
      "stored; ...-avx2: built with -mavx2. memcpy: a copy of the raw frame.";
  section.references = {"plain", "plain-words", "memcpy"};
  section.highlights = {{"SSE2", "plain"},      {"SSE2", "plain-words"},
                        {"SSE2", "plain-avx2"}, {"SSE2", "plain-words-avx2"},
                        {"P3", "plain"},        {"P3", "plain-words"}};
  for (const Size size : sizes) {
    for (const Format format : {Format::i420, Format::yuyv, Format::rgb24, Format::rgb32}) {
      section.comparisons.push_back(comparison(studio, size, format));
    }
    section.targets.push_back({to_string(size) + "/I420", "SSE2", "plain", 0.65, 0.5});
  }
  suite.push_back(std::move(section));
}

}  // namespace ppl::bench
