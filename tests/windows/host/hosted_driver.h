// The shipped image in this Linux program, as the system's loader would have it in memory: mapped,
// relocated, imports bound, pages protected as its sections say.
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

#include "loader/driver_calls.h"
#include "loader/kernel_functions.h"
#include "loader/pe_file.h"

namespace ppl_test {

// The image that the environment names in PPL_IMAGE, else ppl.sys.
std::string image_path();

std::vector<uint8_t> read_image(const std::string &path);

class HostedDriver {
 public:
  // Loads the image on the first call and ends the program with a message if that fails.
  static HostedDriver &get();

  const PeImage &image() const { return image_; }
  bool is_driver() const { return file_.header().subsystem == pe::subsystem_native; }

  // Calls the load entry.
  int32_t load(void *driver_object, void *registry_path) const;

  // Puts the image's memory back to what it was before anything ran, and loads it anew.
  void reload();

 private:
  explicit HostedDriver(const std::string &path);

  std::vector<uint8_t> bytes_;
  PeFile file_;
  PeImage image_;
  std::vector<uint8_t> loaded_;  // the memory right after loading
};

}  // namespace ppl_test
