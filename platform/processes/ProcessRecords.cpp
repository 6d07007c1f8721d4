// Licence: MIT, see LICENSE.
#include "platform/processes/ProcessRecords.h"

#include <HIServices/Processes.h>

namespace platform::processes {
namespace {

using Number = host::RecordFolder::Number;

// The lowest serial numbers have a meaning of their own.
constexpr Serial kReserved = kCurrentProcess;

Number numberOf(Serial serial) { return serial <= kReserved ? 0 : serial - kReserved; }

}  // namespace

Serial ProcessRecords::draw() const {
  const host::Result<Number> number = folder.drawNumber();
  return number && *number <= ~kReserved ? *number + kReserved : 0;
}

host::Result<host::Descriptor> ProcessRecords::publish(Serial serial,
                                                       const ProcessRecord& record) const {
  return folder.publish(numberOf(serial), encodeRecord(record));
}

std::optional<ProcessRecord> ProcessRecords::find(Serial serial) const {
  if (numberOf(serial) == 0) return std::nullopt;
  const auto bytes = folder.read(numberOf(serial), kMaximumRecordSize);
  return bytes ? decodeRecord(*bytes) : std::nullopt;
}

Serial ProcessRecords::next(Serial serial) const {
  for (const Number number : folder.numbers()) {
    if (number > numberOf(serial) && find(number + kReserved)) return number + kReserved;
  }
  return 0;
}

Serial ProcessRecords::withProcessID(SInt32 pid) const {
  for (const Number number : folder.numbers()) {
    const std::optional<ProcessRecord> record = find(number + kReserved);
    if (record && record->pid == pid) return number + kReserved;
  }
  return 0;
}

}  // namespace platform::processes
