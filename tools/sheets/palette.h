// The colours of the sheets.
#pragma once

#include "sheets/canvas.h"

namespace ppl::tool::palette {

inline constexpr Colour background{24, 26, 30}, panel{34, 37, 43}, line{70, 75, 84};
inline constexpr Colour text{214, 217, 222}, faint{138, 144, 155}, white{240, 240, 240};
inline constexpr Colour red{214, 92, 86}, green{98, 178, 104}, blue{92, 142, 224};
inline constexpr Colour amber{214, 176, 88}, mark{255, 220, 60};

}  // namespace ppl::tool::palette
