#include "kernels/lanes/target_sse2.inl.h"
#include "kernels/passes.h"

namespace ppl::sse2 {

constinit const Kernels kernels = {single_passes, chain_passes, video_passes, leave};

}  // namespace ppl::sse2
