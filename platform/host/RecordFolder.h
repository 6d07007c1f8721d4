// Licence: MIT, see LICENSE.
// A folder in which processes leave records about themselves. A record is kept locked by its
// writer, so that everybody sees the writer's death at once, whatever it died of, without waking
// anybody: a record that is not locked is nobody's, and whoever finds one removes it. A record
// appears under its name only when it is complete and locked.
#ifndef PLATFORM_HOST_RECORDFOLDER_H
#define PLATFORM_HOST_RECORDFOLDER_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/host/Descriptor.h"
#include "platform/host/Result.h"

namespace platform::host {

class RecordFolder final {
 public:
  using Number = std::uint32_t;

  /// Keeps its records in an open folder that nobody else may write to.
  explicit RecordFolder(Descriptor opened) : folder(std::move(opened)) {}

  /// A number from 1 on that was never drawn from this folder before and never will be again.
  Result<Number> drawNumber() const;

  /// Writes the record of a number. It lasts as long as the result is open. kExists when that
  /// number has a record.
  Result<Descriptor> publish(Number number, std::span<const std::byte> contents) const;

  /// A live record's contents. kNotFound when there is none, kTooLarge when it is longer than asked
  /// for.
  Result<std::vector<std::byte>> read(Number number, std::size_t maximumSize) const;

  /// The numbers that have a record file, alive or not, in their order.
  std::vector<Number> numbers() const;

  /// Removes what dead writers have left.
  void reap() const;

 private:
  Descriptor folder;
};

}  // namespace platform::host

#endif
