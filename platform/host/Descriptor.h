// Licence: MIT, see LICENSE.
// An open file of the host, closed with its owner.
#ifndef PLATFORM_HOST_DESCRIPTOR_H
#define PLATFORM_HOST_DESCRIPTOR_H

#include <cstddef>
#include <utility>

namespace platform::host {

class Descriptor final {
 public:
  Descriptor() = default;
  /// Takes an open descriptor over; a negative number is none.
  explicit Descriptor(int number) : fd(number) {}
  Descriptor(Descriptor&& other) noexcept : fd(std::exchange(other.fd, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    if (this != &other) {
      reset();
      fd = std::exchange(other.fd, -1);
    }
    return *this;
  }
  ~Descriptor() { reset(); }

  explicit operator bool() const { return fd >= 0; }
  /// The host's number for it, for the calls of this folder; -1 if there is none.
  int number() const { return fd; }
  /// Closes it now.
  void reset();
  /// Hands it over to somebody who will close it.
  int release() { return std::exchange(fd, -1); }

 private:
  int fd = -1;
};

/// How many descriptors this process may have open.
std::size_t descriptorLimit();

}  // namespace platform::host

#endif
