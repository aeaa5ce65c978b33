// What the images are, by their headers.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "host/hosted_driver.h"

namespace ppl_test {
namespace {

struct LoadedFile {
  explicit LoadedFile(const char *path)
      : bytes(read_image(path)),
        file(bytes.data(), bytes.size()),
        memory(file.header().image_size) {
    mapping_error = file.map(memory.data());
  }

  std::vector<PeSection> sections() const {
    std::vector<PeSection> all;
    for (uint32_t i = 0; i < file.header().section_count; ++i) all.push_back(file.section(i));
    return all;
  }

  std::vector<uint8_t> bytes;
  PeFile file;
  std::vector<uint8_t> memory;
  const char *mapping_error;
};

const LoadedFile &driver() {
  static const LoadedFile loaded(PPL_SYS);
  return loaded;
}

const LoadedFile &library() {
  static const LoadedFile loaded(PPL_DLL);
  return loaded;
}

std::vector<std::string> imports;

std::vector<std::string> imports_of(const LoadedFile &loaded) {
  imports.clear();
  std::vector<uint8_t> memory = loaded.memory;
  PeImage(loaded.file, memory.data()).bind_imports([](const char *from, const char *name) {
    imports.push_back(std::string(from) + ":" + name);
    return static_cast<const void *>(&imports);
  });
  std::ranges::sort(imports);
  return imports;
}

std::vector<std::string> exports_of(const LoadedFile &loaded) {
  std::vector<uint8_t> memory = loaded.memory;
  const PeImage image(loaded.file, memory.data());
  std::vector<std::string> names;
  for (uint32_t i = 0; i < image.export_count(); ++i) names.emplace_back(image.export_name(i));
  std::ranges::sort(names);
  return names;
}

std::vector<std::string> declared_names() {
  std::vector<std::string> names(driver_function_names,
                                 driver_function_names + driver_function_count);
  std::ranges::sort(names);
  return names;
}

TEST(DriverImage, RunsInTheKernel) {
  const PeHeader &header = driver().file.header();
  EXPECT_EQ(header.subsystem, pe::subsystem_native);
  EXPECT_EQ(header.machine, pe::machine_i386);
  EXPECT_EQ(header.characteristics & pe::is_dll, 0);
  EXPECT_NE(header.entry, 0u);
}

TEST(DriverImage, ImportsTheFloatingPointFunctionsAndNothingElse) {
  EXPECT_EQ(imports_of(driver()),
            (std::vector<std::string>{"ntoskrnl.exe:KeRestoreFloatingPointState",
                                      "ntoskrnl.exe:KeSaveFloatingPointState"}));
}

TEST(DriverImage, ExportsWhatTheHeaderDeclaresUndecorated) {
  EXPECT_EQ(exports_of(driver()), declared_names());
}

TEST(DriverImage, CanBeMoved) {
  EXPECT_EQ(driver().file.header().characteristics & pe::relocations_stripped, 0);
  EXPECT_EQ(driver().mapping_error, nullptr);
  EXPECT_NE(driver().file.header().dll_characteristics & pe::dynamic_base, 0);
}

TEST(DriverImage, NoSectionIsBothWritableAndExecutable) {
  EXPECT_NE(driver().file.header().dll_characteristics & pe::nx_compatible, 0);
  for (const PeSection &section : driver().sections()) {
    EXPECT_FALSE((section.flags & pe::writable) != 0 && (section.flags & pe::executable) != 0)
        << section.name;
  }
}

// The system may take away pages of a section whose name begins with PAGE, and all of a discardable
// one after the start. A frame can come at a time when neither may be missing.
TEST(DriverImage, WholeImageStaysInMemoryButTheRelocations) {
  for (const PeSection &section : driver().sections()) {
    const std::string name = section.name;
    EXPECT_NE(name.rfind("PAGE", 0), 0u) << name;
    EXPECT_NE(name.rfind("INIT", 0), 0u) << name;
    EXPECT_EQ((section.flags & pe::discardable) != 0, name == ".reloc") << name;
  }
}

TEST(DriverImage, SectionsStandOnPagesInFileAndMemory) {
  EXPECT_EQ(driver().file.header().section_alignment, 0x1000u);
  EXPECT_EQ(driver().file.header().file_alignment, 0x1000u);
}

// The kernel refuses a driver whose checksum is wrong.
TEST(DriverImage, ChecksumIsRight) {
  EXPECT_EQ(driver().file.header().checksum, driver().file.computed_checksum());
}

TEST(DriverImage, TellsNeitherTimeNorDebugInformation) {
  EXPECT_EQ(driver().file.header().time_stamp, 0u);
  EXPECT_EQ(driver().file.directory_size(pe::debug), 0u);
  for (const PeSection &section : driver().sections()) {
    EXPECT_NE(std::string(section.name).rfind("/", 0), 0u)
        << section.name;  // a long name: .debug_*
  }
}

TEST(LibraryImage, IsALibraryThatImportsNothing) {
  EXPECT_NE(library().file.header().characteristics & pe::is_dll, 0);
  EXPECT_NE(library().file.header().subsystem, pe::subsystem_native);
  EXPECT_EQ(imports_of(library()), std::vector<std::string>{});
}

TEST(LibraryImage, ExportsWhatTheHeaderDeclaresUndecorated) {
  EXPECT_EQ(exports_of(library()), declared_names());
}

TEST(LibraryImage, NoSectionIsBothWritableAndExecutable) {
  for (const PeSection &section : library().sections()) {
    EXPECT_FALSE((section.flags & pe::writable) != 0 && (section.flags & pe::executable) != 0)
        << section.name;
  }
}

TEST(LibraryImage, ChecksumIsRight) {
  EXPECT_EQ(library().file.header().checksum, library().file.computed_checksum());
}

}  // namespace
}  // namespace ppl_test
