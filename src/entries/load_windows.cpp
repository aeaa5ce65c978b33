// The loader's entry of the driver for 32-bit Windows.
#include "context/pool.h"

extern "C" __attribute__((stdcall)) int32_t DriverEntry(void *driver_object, void *registry_path);

// It is not called when the image is loaded as another driver's import; the pool then is all zero
// because the image holds nothing else.
int32_t DriverEntry(void *, void *) {
  ppl::zero_pool();
  return 0;  // STATUS_SUCCESS
}
