// Licence: MIT, see LICENSE.
// A folder of a test's own with FSSpecs in it.
#ifndef TESTS_PLATFORM_FILES_FILESFIXTURE_H
#define TESTS_PLATFORM_FILES_FILESFIXTURE_H

#include <CarbonCore/Files.h>
#include <CarbonCore/MacErrors.h>
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/PrivateRoot.h"

namespace tests {

/// A text as a Pascal string, which is to be of at most 255 characters.
class Pascal final {
 public:
  explicit Pascal(std::string_view text)
      : bytes(static_cast<char>(text.size()) + std::string(text)) {}
  operator ConstStr255Param() const { return reinterpret_cast<ConstStr255Param>(bytes.data()); }

 private:
  std::string bytes;
};

inline std::string nameOf(const FSSpec& spec) {
  return {reinterpret_cast<const char*>(spec.name) + 1, spec.name[0]};
}

class FilesFixture : public testing::Test {
 protected:
  std::string path(const std::string& name) const { return top / name; }
  std::string put(const std::string& name, std::string_view text = {}) const {
    std::filesystem::create_directories((top / name).parent_path());
    std::ofstream(path(name), std::ios::binary) << text;
    return path(name);
  }
  std::string makeFolder(const std::string& name) const {
    std::filesystem::create_directories(top / name);
    return path(name);
  }

  static FSRef refOf(const std::string& itsPath) {
    FSRef ref{};
    EXPECT_EQ(FSPathMakeRef(reinterpret_cast<const UInt8*>(itsPath.c_str()), &ref, nullptr), noErr)
        << itsPath;
    return ref;
  }
  static std::string pathOf(const FSRef& ref) {
    std::array<UInt8, 4096> text{};
    const OSStatus result = FSRefMakePath(&ref, text.data(), text.size());
    if (result != noErr) return "error " + std::to_string(result);
    return reinterpret_cast<const char*>(text.data());
  }
  static std::string pathOf(const FSSpec& spec) {
    FSRef ref;
    const OSErr result = FSpMakeFSRef(&spec, &ref);
    return result == noErr ? pathOf(ref) : "error " + std::to_string(result);
  }
  static SInt32 idOf(const std::string& folder) {
    const FSRef ref = refOf(folder);
    FSCatalogInfo info{};
    EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoNodeID, &info, nullptr, nullptr, nullptr), noErr);
    return static_cast<SInt32>(info.nodeID);
  }
  /// The FSSpec of a name in the test's folder.
  OSErr make(std::string_view name, FSSpec& spec) const {
    return FSMakeFSSpec(0, idOf(top), Pascal(name), &spec);
  }

  PrivateRoot root;
  std::filesystem::path top = std::filesystem::canonical(root.path());
};

}  // namespace tests

#endif
