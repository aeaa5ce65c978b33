// The plain loop at -O3, for the instructions that every 64-bit processor has.
#define PLAIN_BUILD built_for_sse2
#include "plain_loop.inl.h"
