#include "support/x87.h"

#include <stdint.h>

namespace ppl_test {

bool x87_is_clean() {
#if defined(__i386__) || defined(__x86_64__)
  struct {
    uint32_t control, status, tag, rest[4];
  } environment;
  // fnstenv masks the exceptions as a side effect; loading it back undoes that.
  asm volatile("fnstenv %0\n\tfldenv %0" : "+m"(environment));
  const bool empty = (environment.tag & 0xFFFF) == 0xFFFF;
#else
  const bool empty = true;
#endif
  volatile long double values[8] = {0.5L, 1.5L, 2.5L, 3.5L, 4.5L, 5.5L, 6.5L, 7.5L};
  const long double sum = ((values[0] + values[1]) + (values[2] + values[3])) +
                          ((values[4] + values[5]) + (values[6] + values[7]));
  const bool right = sum == 32.0L;  // a full stack yields NaN
#if defined(__i386__) || defined(__x86_64__)
  if (!empty || !right) asm volatile("fninit");
#endif
  return empty && right;
}

}  // namespace ppl_test
