#include "library.h"

#include <memory>

#include "words.h"

namespace ppl {
namespace detail {

std::mutex &library_mutex() {
  static std::mutex mutex;
  return mutex;
}

Context::Context() {
  built_in_gamma();
  const std::lock_guard lock(library_mutex());
  context_ = ppl_init();
  if (!context_)
    refuse(
        "all eight contexts of the library are taken: destroy a pipeline that is no longer needed");
}

Context::~Context() {
  const std::lock_guard lock(library_mutex());
  ppl_free(context_);
}

Tier best_tier(PplContext *context) {
  // Each tier that is there refuses widths at which its statistics' windows would be empty.
  if (!ppl_new_frame_size(context, 64, 48, 64)) return Tier::sse2;
  if (!ppl_new_frame_size(context, 56, 48, 56)) return Tier::p3;
  refuse(
      "this processor has no MMX with the integer instructions of SSE, so no frame can be "
      "processed on it");
}

const GammaFamilies &built_in_gamma() {
  static const auto families = [] {
    auto copy = std::make_unique<GammaFamilies>();
    const std::lock_guard lock(library_mutex());
    ppl_get_gamma_tables65x256(nullptr, copy->full_range.data());
    ppl_get_gamma_tables65x256_16_235(nullptr, copy->studio.data());
    return copy;
  }();
  return *families;
}

}  // namespace detail

Tier processor_tier() {
  const detail::Context context;
  return detail::best_tier(context.get());
}

}  // namespace ppl
