// The SSE2 tier.
#define TIER sse2
#define TIER_BYTES 16
#include "kernels/tiers/kernels.inl.h"
