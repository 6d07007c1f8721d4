// Licence: MIT, see LICENSE.
// What a call of the host answers: a value, or one of our own error codes. The host's error numbers
// become these in one table (Error.cpp); no other folder sees an errno.
#ifndef PLATFORM_HOST_RESULT_H
#define PLATFORM_HOST_RESULT_H

#include <cstdint>
#include <utility>
#include <variant>

namespace platform::host {

enum class Error : std::uint8_t {
  kNotFound,      // no such file, name or process; a socket that nobody listens on
  kExists,        // somebody else has it already
  kPermission,    // the host refuses us, or a file or folder is not safe to use
  kWouldBlock,    // nothing now
  kTimedOut,      // the deadline passed
  kDisconnected,  // the other side is gone
  kTooLarge,
  kNoResources,  // descriptors, disk space or buffers are exhausted
  kNoMemory,
  kInvalid,      // a bad argument, or bytes that are not what they should be
  kUnsupported,  // this host cannot do it
  kFailed,       // anything else
};

/// The error that the calling thread's last failed system call means.
Error lastError();

/// A value of type T or the reason why there is none. Test it before use.
template <typename T>
class [[nodiscard]] Result {
 public:
  Result(T value) : state(std::in_place_index<0>, std::move(value)) {}
  Result(Error error) : state(std::in_place_index<1>, error) {}

  explicit operator bool() const { return state.index() == 0; }
  T& operator*() { return std::get<0>(state); }
  const T& operator*() const { return std::get<0>(state); }
  T* operator->() { return &std::get<0>(state); }
  const T* operator->() const { return &std::get<0>(state); }
  Error error() const { return std::get<1>(state); }

 private:
  std::variant<T, Error> state;
};

using Status = Result<std::monostate>;
inline Status success() { return std::monostate{}; }

}  // namespace platform::host

#endif
