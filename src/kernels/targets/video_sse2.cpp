#include "kernels/lanes/target_sse2.inl.h"
#include "kernels/targets/video.inl.h"
