// Licence: MIT, see LICENSE.
// Streams in tests: made over text or a file, read to the end.
#ifndef TESTS_PLATFORM_COREFOUNDATION_STREAMTESTING_H
#define TESTS_PLATFORM_COREFOUNDATION_STREAMTESTING_H

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFStream.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/platform/corefoundation/ObjectTesting.h"

namespace tests {

inline const UInt8* startOf(const std::string& text) {
  return reinterpret_cast<const UInt8*>(text.data());
}

inline std::string bytesIn(CFDataRef data) {
  if (data == nullptr) return "<null>";
  return std::string(reinterpret_cast<const char*>(CFDataGetBytePtr(data)),
                     static_cast<std::size_t>(CFDataGetLength(data)));
}

/// The text must outlive the stream.
inline Held<CFReadStreamRef> streamOf(const std::string& text) {
  return Held<CFReadStreamRef>(CFReadStreamCreateWithBytesNoCopy(
      nullptr, startOf(text), static_cast<CFIndex>(text.size()), kCFAllocatorNull));
}

inline Held<CFURLRef> urlOfFile(const std::filesystem::path& path) {
  const std::string text = path.string();
  return Held<CFURLRef>(CFURLCreateFromFileSystemRepresentation(
      nullptr, startOf(text), static_cast<CFIndex>(text.size()), false));
}

inline std::string contentsOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void fillFile(const std::filesystem::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

/// What is left in an open stream, "<failed>" if reading fails.
inline std::string readAll(CFReadStreamRef stream, CFIndex each) {
  std::string text;
  std::string buffer(static_cast<std::size_t>(each), '\0');
  for (;;) {
    const CFIndex got = CFReadStreamRead(stream, reinterpret_cast<UInt8*>(buffer.data()), each);
    if (got < 0) return "<failed>";
    if (got == 0) return text;
    text.append(buffer, 0, static_cast<std::size_t>(got));
  }
}

}  // namespace tests

#endif
