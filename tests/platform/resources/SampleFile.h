// Licence: MIT, see LICENSE.
// A small resource file, byte by byte, with everything that the format has: two types, a resource
// without a name and one with, attributes, an empty resource, a negative ID.
#ifndef TESTS_PLATFORM_RESOURCES_SAMPLEFILE_H
#define TESTS_PLATFORM_RESOURCES_SAMPLEFILE_H

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tests {

using ByteVector = std::vector<std::byte>;

inline ByteVector bytesOf(std::string_view text) {
  const auto bytes = std::as_bytes(std::span(text));
  return {bytes.begin(), bytes.end()};
}

inline void writeFile(const std::filesystem::path& path, const ByteVector& bytes) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

namespace sample {

using namespace std::string_view_literals;

inline constexpr std::size_t kDataStart = 16;
inline constexpr std::size_t kMapStart = kDataStart + 18;
inline constexpr std::size_t kTypeList = kMapStart + 28;
inline constexpr std::size_t kReferences = kTypeList + 18;
inline constexpr std::size_t kNames = kReferences + 36;

inline ByteVector file() {
  return bytesOf(
      // Header: where data and map are, and how long.
      "\x00\x00\x00\x10\x00\x00\x00\x22\x00\x00\x00\x12\x00\x00\x00\x57"
      // Data.
      "\x00\x00\x00\x03"
      "abc"
      "\x00\x00\x00\x00"
      "\x00\x00\x00\x03"
      "xyz"
      // Map: reserved, attributes, type list, name list.
      "\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00"
      "\x00\x00\x00\x00\x00\x00\x00\x80\x00\x1C\x00\x52"
      // Types.
      "\x00\x01"
      "TEXT\x00\x01\x00\x12"
      "ICN#\x00\x00\x00\x2A"
      // References of TEXT, then of ICN#.
      "\x00\x80\x00\x00\x20\x00\x00\x00\x00\x00\x00\x00"
      "\x00\x81\xFF\xFF\x04\x00\x00\x07\x00\x00\x00\x00"
      "\xFF\xFF\x00\x00\x10\x00\x00\x0B\x00\x00\x00\x00"
      // Names.
      "\x04"
      "Name"sv);
}

}  // namespace sample
}  // namespace tests

#endif
