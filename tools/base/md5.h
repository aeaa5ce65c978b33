// Checksums of what a command writes.
#pragma once

#include <nettle/md5.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace ppl::tool {

// Collects the MD5 of what passes through it.
class Md5 {
 public:
  Md5() { md5_init(&state_); }
  void update(const uint8_t *data, size_t size) { md5_update(&state_, size, data); }
  std::string hex();  // ends the sum and starts anew

 private:
  md5_ctx state_;
};

}  // namespace ppl::tool
