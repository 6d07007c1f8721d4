// Licence: MIT, see LICENSE.
// Resource files in a folder of a test's own.
#ifndef TESTS_UTIL_RESOURCEFILES_H
#define TESTS_UTIL_RESOURCEFILES_H

#include <Carbon/Carbon.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "tests/support/PrivateRoot.h"

namespace tests {

class ResourceFilesFixture : public testing::Test {
 protected:
  ResourceFilesFixture() : bottom(CurResFile()) {}
  ~ResourceFilesFixture() override {
    while (CurResFile() != bottom) CloseResFile(CurResFile());
  }

  /// The FSSpec of a name in the test's folder.
  FSSpec specOf(const std::string& name) const {
    std::string full = "Host" + (top / name).string();
    std::replace(full.begin(), full.end(), '/', ':');
    const std::string pascal = static_cast<char>(full.size()) + full;
    FSSpec spec{};
    FSMakeFSSpec(0, 0, reinterpret_cast<ConstStr255Param>(pascal.data()), &spec);
    return spec;
  }
  /// Makes an empty resource file and leaves it open, the current one.
  SInt16 makeFile(const std::string& name) const {
    const FSSpec spec = specOf(name);
    FSpCreateResFile(&spec, 0, 0, 0);
    EXPECT_EQ(ResError(), noErr);
    return FSpOpenResFile(&spec, fsRdWrPerm);
  }
  static void add(ResType type, ResID id, std::string_view data) {
    Handle block = NewHandle(static_cast<Size>(data.size()));
    std::memcpy(*block, data.data(), data.size());
    AddResource(block, type, id, nullptr);
    EXPECT_EQ(ResError(), noErr);
  }
  /// Makes a file with one resource, TEXT 1, and closes it.
  FSSpec makeTextFile(const std::string& name, std::string_view text) const {
    const SInt16 file = makeFile(name);
    add('TEXT', 1, text);
    CloseResFile(file);
    return specOf(name);
  }
  static bool isOpen(SInt16 file) {
    GetResFileAttrs(file);
    return ResError() == noErr;
  }

  PrivateRoot root;
  std::filesystem::path top = std::filesystem::canonical(root.path());
  SInt16 bottom;
};

}  // namespace tests

#endif
