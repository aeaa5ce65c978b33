// The steps that run a raw frame.
#pragma once

#include <stdint.h>

#include <string>

#include "compare/operations.h"

namespace ppl_compare {

enum class PixelFormat { i420, yuyv, uyvy, rgb24, rgb32 };

struct RawFunction {
  using Entry = uint8_t (*)(::PplContext *, uint8_t *, uint8_t *, uint32_t, uint32_t);
  using Driver = uint8_t (*)(::PplContext *, uint8_t *, uint8_t *, uint32_t, uint32_t, uint32_t);
  using ModelEntry = uint8_t (*)(ppl_model::PplContext *, uint8_t *, uint8_t *, uint32_t, uint32_t);
  using ModelDriver = uint8_t (*)(ppl_model::PplContext *, uint8_t *, uint8_t *, uint32_t, uint32_t,
                                  uint32_t);
  PixelFormat format;
  uint32_t stride_factor;  // of an entry; the driver's stride is an argument
  int32_t decimation;      // that an entry sets
  Entry entry = nullptr;
  ModelEntry model_entry = nullptr;
  Driver driver = nullptr;
  ModelDriver model_driver = nullptr;
};

void generate_raw_frame(Generator &generator, Step &step);
std::string run_raw_frame(Session &session, const Step &step, const RawFunction &function);

}  // namespace ppl_compare
