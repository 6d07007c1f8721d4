// Licence: MIT, see LICENSE.
#include "platform/host/FileStream.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>

#include "platform/host/Retry.h"

namespace platform::host {

namespace {

// One call of the host takes no more.
constexpr std::size_t kMostAtOnce = std::size_t{1} << 30;

int flagsOf(FilePurpose purpose) {
  constexpr int kAlways = O_CLOEXEC | O_NONBLOCK;
  if (purpose == FilePurpose::kRead) return kAlways | O_RDONLY;
  return kAlways | O_WRONLY | O_CREAT | (purpose == FilePurpose::kAdd ? O_APPEND : O_TRUNC);
}

}  // namespace

Error FileStream::failed() {
  lastFailure = errno;
  return lastError();
}

Status FileStream::open(const std::string& path, FilePurpose purpose) {
  file = Descriptor(retry([&] { return ::open(path.c_str(), flagsOf(purpose), 0666); }));
  if (!file) return failed();
  return success();
}

Result<std::size_t> FileStream::read(std::span<std::byte> buffer) {
  const std::size_t most = std::min(buffer.size(), kMostAtOnce);
  const ssize_t got = retry([&] { return ::read(file.number(), buffer.data(), most); });
  if (got < 0) return failed();
  return static_cast<std::size_t>(got);
}

Result<std::size_t> FileStream::write(std::span<const std::byte> bytes) {
  const std::size_t most = std::min(bytes.size(), kMostAtOnce);
  const ssize_t put = retry([&] { return ::write(file.number(), bytes.data(), most); });
  if (put < 0) return failed();
  return static_cast<std::size_t>(put);
}

Result<std::uint64_t> FileStream::offset() {
  const off_t at = ::lseek(file.number(), 0, SEEK_CUR);
  if (at < 0) return failed();
  return static_cast<std::uint64_t>(at);
}

Status FileStream::moveTo(std::uint64_t offset) {
  if (offset > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max())) {
    errno = EINVAL;
    return failed();
  }
  if (::lseek(file.number(), static_cast<off_t>(offset), SEEK_SET) < 0) return failed();
  return success();
}

}  // namespace platform::host
