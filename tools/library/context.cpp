#include "library/context.h"

#include <fmt/core.h>

#include "base/failure.h"

namespace ppl::tool {

const char *tier_name(Tier tier) {
  switch (tier) {
    case Tier::none:
      return "none";
    case Tier::p3:
      return "p3";
    case Tier::sse2:
      return "sse2";
  }
  return "";
}

Context::Context() : context_(ppl_init()) {
  if (!context_) throw Failure("all contexts of the library are taken: free one first");
}

Tier usable_tier() {
  // Each tier that is there refuses widths for which its statistics grid would be empty.
  const Context context;
  if (!ppl_new_frame_size(context, 64, 48, 64)) return Tier::sse2;
  if (!ppl_new_frame_size(context, 56, 48, 56)) return Tier::p3;
  return Tier::none;
}

Tier tier_of(const PplContext *context) {
  const Tier best = usable_tier();
  return best == Tier::sse2 && ppl_P3_only(context) ? Tier::p3 : best;
}

void require_tier() {
  if (usable_tier() == Tier::none)
    throw Failure(
        "this processor has no MMX with the integer SSE instructions, so no frame can be "
        "processed");
}

void set_frame_size(PplContext *context, Size size) {
  const bool even = size.width % 2 == 0 && size.height % 2 == 0;
  if (even && ppl_new_frame_size(context, size.width, size.height, size.width)) return;
  const char *least = usable_tier() == Tier::sse2 ? "128" : "64";
  throw Failure(
      fmt::format("the size {}x{} is refused: give an even width from {} to 1280 and an even "
                  "height from 18 to 1024",
                  size.width, size.height, least));
}

}  // namespace ppl::tool
