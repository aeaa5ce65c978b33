// What the qualities of the raw frames' pipeline do.
#pragma once

#include <ppl.h>

#include <cstdint>

#include "base/frame_format.h"

namespace ppl::tool {

// What a quality does, in a few words.
const char *quality_name(uint32_t quality);

// False where a quality does not write the format at all.
bool writes_picture(uint32_t quality, Format format);

// True where frames of the context lose the samples of even columns: RGB24 in the P3 tier while
// statistics are gathered.
bool shows_stripes(const PplContext *context, Format format);

// Tells the user of that, and how to do without it.
void note_stripes(uint32_t quality);

}  // namespace ppl::tool
