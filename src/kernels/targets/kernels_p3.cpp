#include "kernels/lanes/target_p3.inl.h"
#include "kernels/passes.h"

namespace ppl::p3 {

constinit const Kernels kernels = {single_passes, chain_passes, video_passes, leave};

}  // namespace ppl::p3
