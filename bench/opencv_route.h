// The multi-pass qualities to I420 as one would put them together from OpenCV.
#pragma once

#include <cstdint>
#include <functional>

#include "plain_loop.h"

namespace ppl::bench {

struct OpenCvStages {
  bool demosaics_along_edges;  // instead of bilinearly
  bool sharpens;
};

// Look-up, demosaic, colour matrix, I420, sharpened luma; one thread. An empty function if the
// program was built without OpenCV.
std::function<void()> opencv_route(const OpenCvStages &stages, const PlainTables &tables,
                                   uint8_t *src, uint8_t *dst, int width, int height);

bool has_opencv();

}  // namespace ppl::bench
