// Licence: MIT, see LICENSE.
// Handles that tests make and look into.
#ifndef TESTS_UTIL_OWNEDHANDLE_H
#define TESTS_UTIL_OWNEDHANDLE_H

#include <Carbon/Carbon.h>

#include <cstring>
#include <string>
#include <string_view>

namespace tests {

/// A handle variable for calls that fill or clear it; what is in it at the end is disposed of.
class OwnedHandle final {
 public:
  OwnedHandle() = default;
  /// A handle with these contents.
  explicit OwnedHandle(std::string_view contents)
      : handle(NewHandle(static_cast<Size>(contents.size()))) {
    std::memcpy(*handle, contents.data(), contents.size());
  }
  ~OwnedHandle() {
    if (handle != nullptr) DisposeHandle(handle);
  }
  OwnedHandle(const OwnedHandle&) = delete;
  OwnedHandle& operator=(const OwnedHandle&) = delete;

  std::string contents() const {
    return {*handle, static_cast<std::size_t>(GetHandleSize(handle))};
  }
  bool isEmpty() const { return *handle == nullptr; }
  int state() const { return static_cast<UInt8>(HGetState(handle)); }

  char** handle = nullptr;
};

}  // namespace tests

#endif
