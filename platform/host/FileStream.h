// Licence: MIT, see LICENSE.
// A file that is read or written bit by bit.
#ifndef PLATFORM_HOST_FILESTREAM_H
#define PLATFORM_HOST_FILESTREAM_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "platform/host/Descriptor.h"
#include "platform/host/Result.h"

namespace platform::host {

/// Writing makes the file if there is none; it loses what it has unless it is added to.
enum class FilePurpose { kRead, kReplace, kAdd };

class FileStream final {
 public:
  /// Does not wait for the other end of a pipe.
  Status open(const std::string& path, FilePurpose purpose);
  /// The number of bytes, 0 at the end of the file.
  Result<std::size_t> read(std::span<std::byte> buffer);
  /// The number of bytes, which may be fewer than given.
  Result<std::size_t> write(std::span<const std::byte> bytes);
  /// Where the next byte is; what is added goes to the end all the same.
  Result<std::uint64_t> offset();
  Status moveTo(std::uint64_t offset);
  void close() { file.reset(); }

  /// The host's number for the last failure, which programs know from <errno.h>; 0 if there was
  /// none.
  int failure() const { return lastFailure; }

 private:
  Error failed();

  Descriptor file;
  int lastFailure = 0;
};

}  // namespace platform::host

#endif
