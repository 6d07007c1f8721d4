// Licence: MIT, see LICENSE.
//
// A record is written to a file with a draft's name, locked from the start, and then renamed: the
// lock belongs to the open file, so it moves along. Locks of flock() end with the last descriptor
// of the open file, that is with the process; they are not lost when the process reads its own
// record, as those of fcntl() would be. Record numbers are never used twice, so that a file found
// unlocked can be removed by its name without fear for a new one.
#include "platform/host/RecordFolder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

#include "platform/host/Retry.h"

namespace platform::host {
namespace {

constexpr char kCounterName[] = "counter";
constexpr std::string_view kRecordPrefix = "record.";
constexpr std::string_view kDraftPrefix = "draft.";
constexpr int kPublishAttempts = 32;
constexpr int kSafeFlags = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;

std::string fileName(std::string_view prefix, RecordFolder::Number number) {
  return std::string(prefix) + std::to_string(number);
}

/// The number in a file's name, 0 if it has another form.
RecordFolder::Number numberIn(std::string_view name, std::string_view prefix) {
  if (!name.starts_with(prefix)) return 0;
  name.remove_prefix(prefix.size());
  RecordFolder::Number number = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
  const bool whole = error == std::errc() && end == name.data() + name.size();
  return whole && !name.starts_with('0') ? number : 0;
}

Result<Descriptor> openFile(const Descriptor& folder, const std::string& name, int flags) {
  Descriptor file(retry([&] {
    return openat(folder.number(), name.c_str(), flags | kSafeFlags, S_IRUSR | S_IWUSR);
  }));
  if (!file) return lastError();
  struct stat status;
  if (fstat(file.number(), &status) != 0) return lastError();
  if (!S_ISREG(status.st_mode)) return Error::kInvalid;
  return file;
}

/// Whether a live process holds the file.
bool isHeld(const Descriptor& file) {
  return retry([&] { return flock(file.number(), LOCK_SH | LOCK_NB); }) != 0;
}

bool writeAll(const Descriptor& file, std::span<const std::byte> bytes) {
  while (!bytes.empty()) {
    const ssize_t count = retry([&] { return write(file.number(), bytes.data(), bytes.size()); });
    if (count <= 0) return false;
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
  return true;
}

struct CloseFolder {
  void operator()(DIR* folder) const { closedir(folder); }
};

using FolderListing = std::unique_ptr<DIR, CloseFolder>;

/// A listing of its own for each caller: threads that share one would each see a part.
FolderListing listFolder(const Descriptor& folder) {
  const int number =
      retry([&] { return openat(folder.number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
  FolderListing listing(number < 0 ? nullptr : fdopendir(number));
  if (!listing && number >= 0) close(number);
  return listing;
}

/// The numbers of the files with a prefix, in no order.
std::vector<RecordFolder::Number> numbersIn(const Descriptor& folder, std::string_view prefix) {
  std::vector<RecordFolder::Number> numbers;
  const FolderListing listing = listFolder(folder);
  if (!listing) return numbers;
  while (const dirent* entry = readdir(listing.get())) {
    if (const auto number = numberIn(entry->d_name, prefix)) numbers.push_back(number);
  }
  return numbers;
}

/// Opens a file that a live process holds. One that nobody holds is removed: kNotFound.
Result<Descriptor> openHeld(const Descriptor& folder, const std::string& name) {
  Result<Descriptor> file = openFile(folder, name, O_RDONLY);
  if (!file || isHeld(*file)) return file;
  unlinkat(folder.number(), name.c_str(), 0);
  return Error::kNotFound;
}

/// One attempt to publish. kNotFound or kWouldBlock when somebody who reaps took the draft, which
/// was not locked for a moment, for a dead one.
Result<Descriptor> tryPublish(const Descriptor& folder, RecordFolder::Number number,
                              std::span<const std::byte> contents) {
  const std::string draft = fileName(kDraftPrefix, number);
  const std::string record = fileName(kRecordPrefix, number);
  Result<Descriptor> file = openFile(folder, draft, O_WRONLY | O_CREAT | O_EXCL);
  if (!file) return file;
  const int descriptor = file->number();
  const bool published =
      retry([&] { return flock(descriptor, LOCK_EX | LOCK_NB); }) == 0 &&
      writeAll(*file, contents) &&
      linkat(folder.number(), draft.c_str(), folder.number(), record.c_str(), 0) == 0;
  const Error error = lastError();
  unlinkat(folder.number(), draft.c_str(), 0);
  if (!published) return error;
  return file;
}

}  // namespace

// Each draw appends one byte: the kernel makes appending atomic and leaves the writer's own file
// position behind its byte, which is the number. No lock can be held by somebody who sleeps.
Result<RecordFolder::Number> RecordFolder::drawNumber() const {
  const Result<Descriptor> counter = openFile(folder, kCounterName, O_WRONLY | O_APPEND | O_CREAT);
  if (!counter) return counter.error();
  const std::byte mark{'.'};
  if (!writeAll(*counter, {&mark, 1})) return lastError();
  const off_t position = lseek(counter->number(), 0, SEEK_CUR);
  if (position <= 0) return lastError();
  if (static_cast<std::uint64_t>(position) > std::numeric_limits<Number>::max()) {
    return Error::kNoResources;
  }
  return static_cast<Number>(position);
}

Result<Descriptor> RecordFolder::publish(Number number, std::span<const std::byte> contents) const {
  Result<Descriptor> file = Error::kFailed;
  for (int attempt = 0; attempt < kPublishAttempts; ++attempt) {
    file = tryPublish(folder, number, contents);
    if (file || (file.error() != Error::kNotFound && file.error() != Error::kWouldBlock)) break;
  }
  return file;
}

Result<std::vector<std::byte>> RecordFolder::read(Number number, std::size_t maximumSize) const {
  const Result<Descriptor> file = openHeld(folder, fileName(kRecordPrefix, number));
  if (!file) return file.error();
  std::vector<std::byte> contents(maximumSize + 1);
  std::size_t size = 0;
  while (size < contents.size()) {
    const ssize_t count = retry(
        [&] { return ::read(file->number(), contents.data() + size, contents.size() - size); });
    if (count < 0) return lastError();
    if (count == 0) break;
    size += static_cast<std::size_t>(count);
  }
  if (size > maximumSize) return Error::kTooLarge;
  contents.resize(size);
  return contents;
}

std::vector<RecordFolder::Number> RecordFolder::numbers() const {
  std::vector<Number> found = numbersIn(folder, kRecordPrefix);
  std::sort(found.begin(), found.end());
  return found;
}

void RecordFolder::reap() const {
  for (std::string_view prefix : {kRecordPrefix, kDraftPrefix}) {
    for (Number number : numbersIn(folder, prefix)) {
      static_cast<void>(openHeld(folder, fileName(prefix, number)));
    }
  }
}

}  // namespace platform::host
