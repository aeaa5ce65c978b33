// From the planes of a chain to its output.
#pragma once

#include <functional>

#include "model/colour_stage.h"
#include "model/output.h"

namespace ppl_model {

// True for pixels whose luma may hold anything. Null: none.
using OpenLuma = std::function<bool(int line, int column)>;

void emit_chain(const PplContext *ctx, Format format, const ColourPlanes &planes,
                const OpenLuma &open_luma, Output &output);

}  // namespace ppl_model
