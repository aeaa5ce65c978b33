#include "kernels/lanes/target_p3.inl.h"
#include "kernels/targets/chains.inl.h"
