// A frame and its statistics as one picture.
#pragma once

#include <ppl.h>

#include <string>

#include "pictures/picture.h"
#include "sheets/frame_report.h"

namespace ppl::tool {

inline constexpr Size statistics_sheet_size{1408, 1208};

// The context is the frame's: curves, gains and bands are read from it.
Picture statistics_sheet(const FrameReport &report, const PplContext *context,
                         const std::string &name);

}  // namespace ppl::tool
