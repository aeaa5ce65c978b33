#include "kernels/lanes/target_sse2.inl.h"
#include "kernels/targets/chains.inl.h"
