// The two functions that the driver asks of the kernel, as strict as we can make them.
#pragma once

#include <stdint.h>

namespace ppl_test {

struct KernelCalls {
  uint32_t saves, restores;  // saves that succeeded
  uint32_t failed_saves;
  // What must stay 0: areas that are not on a 16-byte boundary, restores that do not match the last
  // save or whose area was written to, and restores and returns with an MMX register still in use.
  uint32_t misaligned, mismatched, unclean;
};

extern KernelCalls kernel_calls;
extern bool kernel_save_fails;  // every save from now on

// For PeImage::bind_imports.
const void *find_kernel_function(const char *library, const char *name);

// What a caller of the frame drivers does: holds the state while it lives.
class KernelBracket {
 public:
  KernelBracket();
  ~KernelBracket();
  KernelBracket(const KernelBracket &) = delete;
  KernelBracket &operator=(const KernelBracket &) = delete;

 private:
  alignas(16) uint8_t area_[32];
};

// True if no x87 or MMX register is in use.
bool floating_point_is_clean();

bool processor_has_fxsr();

}  // namespace ppl_test
