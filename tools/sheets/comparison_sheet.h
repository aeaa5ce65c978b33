// A frame at every quality as one picture.
#pragma once

#include <optional>
#include <string>

#include "pictures/picture.h"
#include "sheets/quality_comparison.h"

namespace ppl::tool {

// Each quality with the whole picture and the crop, enlarged. Times are left out: the same frame
// gives the same sheet.
Picture comparison_sheet(const QualityComparison &comparison, const Crop &crop,
                         const std::optional<Picture> &truth, const std::string &name);

}  // namespace ppl::tool
