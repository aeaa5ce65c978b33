// The plain loop at -O3 -mavx2: what the compiler alone makes of a newer processor.
#define PLAIN_BUILD built_for_avx2
#include "plain_loop.inl.h"
