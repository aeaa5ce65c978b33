// The floating-point stack and the MMX registers share storage. A call that leaves MMX state
// behind breaks the caller's next floating-point instruction.
#pragma once

namespace ppl_test {

// True if a long double sum comes out right and the stack was empty before it. Call it right after
// the function under test. Clears the state, so that one failure is reported once.
bool x87_is_clean();

}  // namespace ppl_test
