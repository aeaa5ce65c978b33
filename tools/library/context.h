// A context of the library, its frame size, and the tier that runs.
#pragma once

#include <ppl.h>

#include "base/frame_format.h"

namespace ppl::tool {

enum class Tier { none, p3, sse2 };

const char *tier_name(Tier tier);

// A context of the library, at its defaults.
class Context {
 public:
  Context();  // throws Failure if all contexts are taken
  ~Context() { ppl_free(context_); }
  Context(const Context &) = delete;
  Context &operator=(const Context &) = delete;

  operator PplContext *() const { return context_; }

 private:
  PplContext *context_;
};

// The best tier that the library can use on this processor, judged by the sizes that it accepts.
Tier usable_tier();

// The tier that the context's next aligned frame takes.
Tier tier_of(const PplContext *context);

// Throws Failure where the processor has no tier, so that no frame can be processed.
void require_tier();

// Gives the context the frame size. Do this before the controls: a size that is set later would
// take the black lines out of the scale again. Throws Failure for a size that the library refuses.
void set_frame_size(PplContext *context, Size size);

}  // namespace ppl::tool
