// Licence: MIT, see LICENSE.
// The records of the processes that have checked in to one name space, by serial number. Those of
// dead processes are as good as absent. Any thread.
#ifndef PLATFORM_PROCESSES_PROCESSRECORDS_H
#define PLATFORM_PROCESSES_PROCESSRECORDS_H

#include <CarbonCore/MacTypes.h>

#include <optional>

#include "platform/host/RecordFolder.h"
#include "platform/processes/ProcessRecord.h"

namespace platform::processes {

/// The low word of a serial number; the high word of all of them is 0.
using Serial = UInt32;

class ProcessRecords final {
 public:
  explicit ProcessRecords(host::RecordFolder opened) : folder(std::move(opened)) {}

  /// A serial number that no process of the name space had or will have, or 0 if it cannot be had.
  Serial draw() const;
  /// Makes a record visible, for as long as the result is open.
  host::Result<host::Descriptor> publish(Serial serial, const ProcessRecord& record) const;

  std::optional<ProcessRecord> find(Serial serial) const;
  /// The live process with the next higher serial number, 0 if there is none.
  Serial next(Serial serial) const;
  /// The live process with a process ID, 0 if there is none.
  Serial withProcessID(SInt32 pid) const;
  void reap() const { folder.reap(); }

 private:
  host::RecordFolder folder;
};

}  // namespace platform::processes

#endif
