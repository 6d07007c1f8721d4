// Licence: MIT, see LICENSE.
#include "platform/host/FileContents.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>

#include "platform/host/Descriptor.h"
#include "platform/host/Retry.h"

namespace platform::host {
namespace {

constexpr std::size_t kChunk = 64 * 1024;

/// A file that is being made beside its final place; removed again unless it is moved there.
class Draft final {
 public:
  explicit Draft(const std::string& target) {
    constexpr int kMostLeftovers = 100;
    for (int i = 0; i < kMostLeftovers && !file; ++i) {
      path = target + ".new" + std::to_string(::getpid()) + "-" + std::to_string(i);
      file = Descriptor(retry([&] {
        return ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666);
      }));
      if (!file && errno != EEXIST) return;
    }
  }
  ~Draft() {
    if (file && !moved) ::unlink(path.c_str());
  }
  Draft(const Draft&) = delete;
  Draft& operator=(const Draft&) = delete;

  const Descriptor& descriptor() const { return file; }
  bool moveTo(const std::string& target) {
    moved = std::rename(path.c_str(), target.c_str()) == 0;
    return moved;
  }

 private:
  std::string path;
  Descriptor file;
  bool moved = false;
};

bool writeAll(const Descriptor& file, std::span<const std::byte> contents) {
  while (!contents.empty()) {
    const ssize_t written =
        retry([&] { return ::write(file.number(), contents.data(), contents.size()); });
    if (written < 0) return false;
    contents = contents.subspan(static_cast<std::size_t>(written));
  }
  return true;
}

/// Gives a file the mode of the one that it is to replace, if there is one.
bool copyMode(const std::string& from, const Descriptor& to) {
  struct stat status {};
  if (::stat(from.c_str(), &status) != 0) return true;
  return ::fchmod(to.number(), status.st_mode & 07777) == 0;
}

}  // namespace

Result<std::vector<std::byte>> readFile(const std::string& path, std::size_t limit) {
  // Without O_NONBLOCK a pipe that nobody writes to would hold us up.
  Descriptor file(retry([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK); }));
  if (!file) return lastError();
  struct stat status {};
  if (::fstat(file.number(), &status) != 0) return lastError();
  if (!S_ISREG(status.st_mode)) return Error::kInvalid;
  if (status.st_size > 0 && static_cast<std::uint64_t>(status.st_size) > limit) {
    return Error::kTooLarge;
  }

  std::vector<std::byte> contents;
  for (;;) {
    const std::size_t length = contents.size();
    const std::size_t room = std::min(kChunk, limit + 1 - length);
    contents.resize(length + room);
    const ssize_t got =
        retry([&] { return ::read(file.number(), contents.data() + length, room); });
    if (got < 0) return lastError();
    contents.resize(length + static_cast<std::size_t>(got));
    if (contents.size() > limit) return Error::kTooLarge;
    if (got == 0) return contents;
  }
}

Status replaceFile(const std::string& path, std::span<const std::byte> contents) {
  Draft draft(path);
  const Descriptor& file = draft.descriptor();
  if (!file) return lastError();
  if (!writeAll(file, contents) || !copyMode(path, file) || ::fsync(file.number()) != 0) {
    return lastError();
  }
  if (!draft.moveTo(path)) return lastError();
  return success();
}

}  // namespace platform::host
