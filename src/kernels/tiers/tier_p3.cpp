// The P3 tier: MMX with the integer SSE extensions. No SSE2 instruction may get in here.
#define TIER p3
#define TIER_BYTES 8
#include "kernels/tiers/kernels.inl.h"
