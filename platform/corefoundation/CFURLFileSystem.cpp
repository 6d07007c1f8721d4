// Licence: MIT, see LICENSE.
// URLs of files, and the paths that they stand for.
#include <CoreFoundation/CFURL.h>

#include <algorithm>

#include "platform/corefoundation/UrlObject.h"
#include "platform/corefoundation/WithoutMemory.h"
#include "platform/host/FileSystem.h"

namespace platform::corefoundation {

namespace {

constexpr std::string_view kFilePrefix = "file://localhost";

bool isStyle(CFURLPathStyle style) {
  return style == kCFURLPOSIXPathStyle || style == kCFURLHFSPathStyle;
}

std::string urlTextOf(std::string path, bool isDirectory) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  if (isDirectory && path.back() != '/') path += '/';
  if (path.front() == '/') return std::string(kFilePrefix) + escapePath(path);
  // What is before a colon in the first name would be taken for a scheme.
  const std::size_t colon = path.find(':');
  if (colon < path.find('/')) path.insert(0, "./");
  return escapePath(path);
}

Held<CFURLRef> currentFolder() {
  const host::Result<std::string> path = host::canonicalPath(".");
  return Held(path ? Url::make(nullptr, urlTextOf(*path, true), nullptr) : nullptr);
}

CFURLRef urlOfPath(CFAllocatorRef allocator, const std::string& path, bool isDirectory,
                   CFURLRef baseURL) {
  if (path.empty() || path.find('\0') != std::string::npos) return nullptr;
  Held<CFURLRef> base;
  if (path.front() != '/') {
    base = baseURL != nullptr ? Held<CFURLRef>::retaining(baseURL) : currentFolder();
    if (!base) return nullptr;
  }
  return Url::make(allocator, urlTextOf(path, isDirectory), base.get());
}

}  // namespace

}  // namespace platform::corefoundation

using namespace platform::corefoundation;

CFURLRef CFURLCreateWithFileSystemPathRelativeToBase(CFAllocatorRef allocator, CFStringRef path,
                                                     CFURLPathStyle style, Boolean isDirectory,
                                                     CFURLRef baseURL) {
  if (!isStyle(style) || (baseURL != nullptr && urlOf(baseURL) == nullptr)) return nullptr;
  return nullWithoutMemory([&]() -> CFURLRef {
    const std::optional<std::string> bytes = utf8Of(path);
    if (!bytes || bytes->empty()) return nullptr;
    return urlOfPath(allocator, style == kCFURLHFSPathStyle ? posixPathOf(*bytes) : *bytes,
                     isDirectory, baseURL);
  });
}

CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef allocator, CFStringRef path,
                                       CFURLPathStyle style, Boolean isDirectory) {
  return CFURLCreateWithFileSystemPathRelativeToBase(allocator, path, style, isDirectory, nullptr);
}

CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef allocator, const UInt8* path,
                                                 CFIndex length, Boolean isDirectory) {
  if (path == nullptr || length <= 0) return nullptr;
  return nullWithoutMemory([&] {
    const std::string bytes(reinterpret_cast<const char*>(path), static_cast<std::size_t>(length));
    return urlOfPath(allocator, bytes, isDirectory, nullptr);
  });
}

Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean resolveAgainstBase, UInt8* buffer,
                                         CFIndex bufferSize) {
  if (buffer == nullptr || bufferSize <= 0) return false;
  return nullWithoutMemory([&]() -> Boolean {
    const Held absolute(resolveAgainstBase ? CFURLCopyAbsoluteURL(url) : nullptr);
    const Url* object = urlOf(resolveAgainstBase ? absolute.get() : url);
    if (object == nullptr) return false;
    const std::optional<std::string> path = object->filePath();
    if (!path || path->size() >= static_cast<std::size_t>(bufferSize)) return false;
    std::ranges::copy(*path, buffer);
    buffer[path->size()] = 0;
    return true;
  });
}

CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFURLPathStyle style) {
  const Url* object = urlOf(url);
  if (object == nullptr || !isStyle(style)) return nullptr;
  return nullWithoutMemory([&]() -> CFStringRef {
    const std::optional<std::string> path = object->filePath();
    if (!path) return nullptr;
    return copyOfUTF8(nullptr, style == kCFURLHFSPathStyle ? hfsPathOf(*path) : *path);
  });
}
