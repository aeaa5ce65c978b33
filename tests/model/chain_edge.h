// Edge enhancement: detail between two thresholds is amplified.
#pragma once

#include "model/chain_colour.h"

namespace ppl_model {

// The slope along one diagonal is added: a one-sided relief.
Plane enhance_by_gradient(const Parameters &params, const Plane &luma);

// Quality 12 in the YUV formats: the same on grey samples, while the luma that comes of it takes
// the place of the samples block by block, so that windows see it above and to the left.
YuvImage enhance_in_place(const Parameters &params, const Plane &samples, int B);

// Quality 14: four times the pixel less its neighbours.
Plane enhance_by_laplacian(const Parameters &params, const Plane &luma, int B);
// True for the few pixels of it that may hold anything.
bool laplacian_is_open(const Plane &luma, int B, int y, int x);

}  // namespace ppl_model
