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

// Reads a file, or ends the program with a message.
std::vector<uint8_t> read_image(const std::string &path);

class HostedImage {
 public:
  // Ends the program with a message if the image cannot be loaded.
  HostedImage(const std::string &path, Importer importer);

  const PeImage &image() const { return image_; }
  bool is_driver() const { return file_.header().subsystem == pe::subsystem_native; }

  // Calls a driver's load entry.
  int32_t load(void *driver_object, void *registry_path) const;

 protected:
  // Puts the memory back to what it was before anything ran.
  void restore_memory();

 private:
  std::vector<uint8_t> bytes_;
  PeFile file_;
  PeImage image_;
  std::vector<uint8_t> loaded_;  // the memory right after loading
};

// The image under test, with the functions of ppl.h connected to it: the one that the environment
// names in PPL_IMAGE, else ppl.sys.
class HostedDriver : public HostedImage {
 public:
  static HostedDriver &get();  // loads it on the first call

  // As if loaded anew.
  void reload();

 private:
  HostedDriver();
};

}  // namespace ppl_test
