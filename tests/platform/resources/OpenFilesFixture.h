// Licence: MIT, see LICENSE.
// Resource files of a test's own, opened by their names.
#ifndef TESTS_PLATFORM_RESOURCES_OPENFILESFIXTURE_H
#define TESTS_PLATFORM_RESOURCES_OPENFILESFIXTURE_H

#include <CarbonCore/MacErrors.h>
#include <CarbonCore/MacMemory.h>
#include <CarbonCore/Resources.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include "platform/resources/ResourceFile.h"
#include "platform/resources/ResourceWriter.h"
#include "tests/platform/resources/SampleFile.h"
#include "tests/support/PrivateRoot.h"

namespace tests {

class OpenFilesFixture : public testing::Test {
 protected:
  using Contents = std::vector<platform::resources::ResourceContents>;

  OpenFilesFixture() : bottom(CurResFile()) {}
  ~OpenFilesFixture() override {
    SetResLoad(true);
    while (CurResFile() != bottom) CloseResFile(CurResFile());
  }

  std::string path(const std::string& name) const { return top / name; }
  std::string put(const std::string& name, const ByteVector& bytes) const {
    writeFile(top / name, bytes);
    return path(name);
  }
  std::string put(const std::string& name, const Contents& resources) const {
    return put(name, *platform::resources::writeResourceFile(resources));
  }
  ByteVector bytesIn(const std::string& name) const {
    std::ifstream file(top / name, std::ios::binary);
    const std::string text(std::istreambuf_iterator<char>(file), {});
    return bytesOf(text);
  }

  FSSpec specOf(const std::string& name) const {
    std::string full = "Host" + path(name);
    std::replace(full.begin(), full.end(), '/', ':');
    const std::string pascal = static_cast<char>(full.size()) + full;
    FSSpec spec{};
    const OSErr result =
        FSMakeFSSpec(0, 0, reinterpret_cast<ConstStr255Param>(pascal.data()), &spec);
    EXPECT_TRUE(result == noErr || result == fnfErr) << result;
    return spec;
  }
  SInt16 open(const std::string& name, SInt8 permission = fsCurPerm) const {
    const FSSpec spec = specOf(name);
    return FSpOpenResFile(&spec, permission);
  }
  SInt16 openNew(const std::string& name, const Contents& resources) const {
    put(name, resources);
    return open(name);
  }

  static Handle blockOf(std::string_view text) {
    Handle block = NewHandle(static_cast<Size>(text.size()));
    std::memcpy(*block, text.data(), text.size());
    return block;
  }
  static std::string textOf(Handle handle) {
    if (handle == nullptr) return "[none]";
    if (*handle == nullptr) return "[empty]";
    return {*handle, static_cast<std::size_t>(GetHandleSize(handle))};
  }
  /// Changes a resource of the current file in memory.
  static Handle change(ResType type, ResID id, std::string_view text) {
    Handle resource = Get1Resource(type, id);
    SetHandleSize(resource, static_cast<Size>(text.size()));
    std::memcpy(*resource, text.data(), text.size());
    ChangedResource(resource);
    return resource;
  }
  /// What the file on disk has, read afresh: "TYPE id name attributes text" for each resource.
  std::vector<std::string> onDisk(const std::string& name) const {
    const ByteVector bytes = bytesIn(name);
    const auto map = platform::resources::parseResourceFile(bytes);
    if (!map) return {"[no resources]"};
    std::vector<std::string> lines;
    for (const auto& entry : map->entries) {
      std::string line;
      for (int shift = 24; shift >= 0; shift -= 8) line += static_cast<char>(entry.type >> shift);
      line += " " + std::to_string(entry.id) + " " + entry.name + " " +
              std::to_string(entry.attributes) + " ";
      const auto data = std::span(bytes).subspan(entry.dataOffset, entry.dataSize);
      line.append(reinterpret_cast<const char*>(data.data()), data.size());
      lines.push_back(line);
    }
    return lines;
  }

  PrivateRoot root;
  std::filesystem::path top = std::filesystem::canonical(root.path());
  SInt16 bottom;
};

inline ConstStr255Param pascalName(const char* text) {
  return reinterpret_cast<ConstStr255Param>(text);
}

}  // namespace tests

#endif
