// The plain loops at -O3, for the instructions that every 64-bit processor has.
#define PLAIN_BUILD built_for_sse2
#include "plain_chain.inl.h"
#include "plain_loop.inl.h"

extern const ppl::bench::PlainBuild ppl::bench::PLAIN_BUILD::plain_build = {
    loops<ByBytes>, loops<ByWords>, quality_0_to_i420};
