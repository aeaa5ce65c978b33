#include "kernels/lanes/target_p3.inl.h"
#include "kernels/targets/single.inl.h"
