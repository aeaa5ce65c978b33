#include "kernels/lanes/target_p3.inl.h"
#include "kernels/targets/video.inl.h"
