#include "base/md5.h"

#include <fmt/core.h>

namespace ppl::tool {

std::string Md5::hex() {
  uint8_t digest[MD5_DIGEST_SIZE];
  md5_digest(&state_, sizeof digest, digest);
  std::string text;
  for (const uint8_t byte : digest) text += fmt::format("{:02x}", byte);
  return text;
}

}  // namespace ppl::tool
