// The plain loops at -O3 -mavx2: what the compiler alone makes of a newer processor.
#define PLAIN_BUILD built_for_avx2
#include "plain_chain.inl.h"
#include "plain_loop.inl.h"

extern const ppl::bench::PlainBuild ppl::bench::PLAIN_BUILD::plain_build = {
    loops<ByBytes>, loops<ByWords>, quality_0_to_i420};
